"""Functions made from the description of the interface, one a routine.

Each is a small piece of Python source, made and compiled when it is first asked for: it checks its arrays, takes counts and
leading dimensions from them, hands addresses to the routine and returns what the routine has written.
"""
import collections
import ctypes
import keyword
import re
import textwrap

from ._checks import INPUT, OUTPUT, SMALL

# ---- the source of a function

_MOST_PLANS = 128  # of a routine, and arrays that were seen once

_TERM = re.compile(r"^(?:(\d+)\*)?([A-Za-z_]\w*)$")

def _terms(dimension):
    """A dimension as factors of names and a constant: 2*K+2 is ({'K': 2}, 2)."""
    names, constant = collections.Counter(), 0
    for sign, term in re.findall(r"([+-]?)([^+-]+)", dimension.replace(" ", "")):
        factor = -1 if sign == "-" else 1
        found = _TERM.match(term)
        if found:
            names[found.group(2)] += factor * int(found.group(1) or 1)
        else:
            constant += factor * int(term)
    return names, constant

class Argument:
    def __init__(self, data):
        self.name, self.type, self.direction = data["name"], data["type"], data["direction"]
        self.shape, self.unit, self.role, self.meaning = data["shape"], data["unit"], data["role"], data["meaning"]
        self.by_value = not self.type.endswith("*")
        self.is_text = self.unit == "text"
        self.is_scalar = self.shape == ["1"] and not self.is_text
        self.is_array = not self.is_scalar and not self.is_text
        self.is_length = self.is_addressed = False
        self.dtype = "F8" if "double" in self.type else "F4" if "float" in self.type else "I8" if "int64" in self.type else "I4"
        self.python = self.name + "_" if keyword.iskeyword(self.name) or self.name == "copy" else self.name

    @property
    def is_written(self):
        return self.direction != "in"

    @property
    def is_read(self):
        return self.direction != "out"

    def dimensions(self):
        return ", ".join(self.shape) + ("," if len(self.shape) == 1 else "")

class Routine:
    """One routine of the description: what its function takes, in which order, and where the rest comes from."""

    def __init__(self, data, section):
        self.name, self.text, self.result, self.file = data["name"], data["text"], data["result"], data["file"]
        self.section, self.section_text = section["title"], section["text"]
        self.arguments = [Argument(argument) for argument in data["arguments"]]
        self.by_name = {argument.name: argument for argument in self.arguments}
        for argument in self.arguments:
            if argument.is_text and argument.shape[0] in self.by_name:
                self.by_name[argument.shape[0]].is_length = True
        if any(a.unit == "address" and a.direction == "out" for a in self.arguments):
            for argument in self.arguments:  # its address is asked for: that of an array, which stays where it is
                if argument.is_scalar and argument.unit != "address":
                    argument.is_scalar, argument.is_array, argument.shape = False, True, ["*"]
                    argument.is_addressed = True
        roles = {argument.role for argument in self.arguments}
        self.is_kernel = bool(roles & {"block", "length", "last"})
        self._find_sources()

    def _find_sources(self):
        """Where each scalar that an array tells comes from: {name: [(array, dimension, factor, rest of the terms)]}."""
        self.sources = {}
        for argument in self.arguments:
            if not argument.is_array:
                continue
            for place, dimension in enumerate(argument.shape):
                if dimension == "*":
                    continue
                names, constant = _terms(dimension)
                if len(names) == 1:
                    (name, factor), = names.items()
                    if self.by_name[name].is_read and self.by_name[name].is_scalar:
                        self.sources.setdefault(name, []).append((argument, place, factor, constant))
        stride = [a for a in self.arguments if a.role == "stride"]
        for argument in self.arguments:
            argument.is_derived = argument.name in self.sources or (argument.role == "block" and bool(stride))
            argument.is_optional = argument.is_derived or argument.role == "unread"
            argument.fallback = stride[0] if argument.role == "block" and argument.name not in self.sources and stride else None

    # what the caller gives
    def required(self):
        return [a for a in self.arguments if not a.is_length and a.is_read and not a.is_optional]

    def optional(self):
        return [a for a in self.arguments if not a.is_length and a.is_scalar and a.is_read and a.is_optional]

    def new_arrays(self):
        return [a for a in self.arguments if a.is_array and a.direction == "out"]

    def new_texts(self):
        return [a for a in self.arguments if a.is_text and a.is_written]

    def returned(self):
        """Names of what the function returns."""
        names = [a.python for a in self.arguments
                 if a.is_array and a.direction == "out" or a.is_written and not a.is_array]
        return names + (["result"] if self.result != "void" else [])

    def signature(self):
        words = [a.python for a in self.required()]
        more = [f"{a.python}=None" for a in self.new_arrays()] + [f"{a.python}=None" for a in self.optional()]
        more += [f"{a.shape[0]}=80" for a in self.new_texts() if not a.is_read]
        if self.new_arrays() and "out" not in self.by_name:
            more.append("out=None")
        if any(a.is_array for a in self.arguments):
            more.append("copy=True")
        return ", ".join(words + (["*"] + more if more else []))

    def documentation(self):
        lines = [f"{self.name}({self.signature()})", "", self.text, "", "Parameters", "----------"]
        for a in self.required() + self.new_arrays() + self.optional():
            shape = "" if not a.is_array else f"({', '.join(a.shape)}) "
            kind = {"F8": "float64", "F4": "float32", "I4": "int32", "I8": "int64"}[a.dtype] if a.is_array else (
                "str" if a.is_text else "float" if a.dtype == "F8" else "int")
            use = {"in": "", "out": ", output", "in,out": ", changed in place" if a.is_array else ", returned"}[a.direction]
            if a.is_derived:
                use += ", from the arrays if not given"
            lines += [f"{a.python} : {shape}{kind}{use}", f"    {a.unit}: {a.meaning}"]
        if self.returned():
            lines += ["", "Returns", "-------", ", ".join(self.returned())]
            lines += [f"    {a.python}: {a.meaning}" for a in self.arguments if not a.is_array and a.direction == "out"]
        lines += ["", f"{self.section} ({self.file})", "", self.section_text]
        return "\n".join(lines)

class _Writer:
    """Writes the body of one function."""

    def __init__(self, routine, address):
        self.routine, self.address = routine, address
        self.shapes = {}  # of arrays, as text, and the names that they have in the function
        self.lines = []
        self.kept = []  # copies that are written back

    def add(self, line, depth=1):
        self.lines.append("    " * depth + line)

    def source(self):
        r = self.routine
        self.add(f"def {r.name}({r.signature()}):", 0)
        arrays = r.new_arrays()
        self.plan_again()
        if arrays and "out" not in r.by_name:
            names = ", ".join(a.python for a in arrays)
            self.add("if out is not None:")
            self.add(f"{names}, = _h_outputs(out, {tuple(a.python for a in arrays)!r})", 2)
        for a in r.arguments:
            if a.is_array:
                self.take(a)
        for a in r.required():
            self.given_scalar(a)
        self.counts()
        self.name_shapes()
        for a in r.arguments:
            if a.is_array and a.direction != "out":
                self.check_shape(a)
        for a in arrays:
            if "*" in a.shape:
                self.add(f"if {a.python} is None: _h_missing({r.name!r}, {a.python!r}, ', an array to write into')")
        self.keep_plan()
        for a in arrays:
            self.make(a)
        self.check_numbers()
        self.call({a.name: self.address_of(a) for a in r.arguments if a.is_array})
        return "\n".join(self.lines)

    # Arrays that came before go through unchecked: a plan keeps weak references to those of a call, what was found out about
    # them, and their addresses.  A routine of few arrays is faster without.

    def planned(self):
        """The array by which plans are found, arrays, scalars that sizes depend on, and counts from arrays."""
        r = self.routine
        arrays = [a for a in r.arguments if a.is_array]
        key = [a for a in arrays if a.is_read and not self.may_be_none(a)]
        if not r.is_kernel or len(arrays) < 3 or not key or any(a.is_text for a in r.arguments):
            return None
        used = set(re.findall(r"[A-Za-z_]\w*", " ".join(" ".join(a.shape) for a in arrays)))
        scalars = [a for a in r.arguments if a.is_scalar and a.is_read and (a.name in used or a.is_derived)]
        return key[0], arrays, scalars

    def plan_again(self):
        r, plan = self.routine, self.planned()
        if plan is None:
            return
        key, arrays, scalars = plan
        self.add(f"_h_plan = _{r.name}_plans.get(_h_id({key.python}))")
        self.add("if _h_plan is not None" + (" and out is None:" if r.new_arrays() and "out" not in r.by_name else ":"))
        self.add("".join(f"_r_{a.python}, _a_{a.python}, " for a in arrays) +
                 "".join(f"_p_{a.python}, " + (f"_n_{a.python}, " if a.is_optional else "") for a in scalars) + "= _h_plan", 2)
        tests = [f"_r_{a.python}() is {a.python}" for a in arrays]
        tests += [f"{a.python} {'is' if a.is_optional else '=='} _p_{a.python}" for a in scalars]
        self.add(f"if {' and '.join(tests)}:", 2)
        for a in r.required():
            if a not in scalars:
                self.given_scalar(a, 3)
        for a in r.optional():
            if a not in scalars:
                self.unread_scalar(a, 3)
        for a in r.new_arrays():
            if "*" not in a.shape:
                self.add(f"if {a.python} is None:", 3)
                self.add(f"{a.python} = {self.zeros(a)}", 4)
                self.add(f"_a_{a.python} = {self.address.format(a.python)}", 4)
        self.check_numbers(3)
        places = {a.name: f"_a_{a.python}" + (f" if {a.python} is not None else None" if self.may_be_none(a) else "")
                  for a in arrays}
        self.call(places, 3)

    def keep_plan(self):
        """At the second call with the same array; its first leaves a reference."""
        r, plan = self.routine, self.planned()
        if plan is None:
            return
        key, arrays, scalars = plan
        seen = f"~_h_id({key.python})"
        self.add(f"if _{r.name}_plans.get({seen}, _h_nothing)() is not {key.python}:")
        self.add(f"if _h_len(_{r.name}_plans) > {_MOST_PLANS}: _{r.name}_plans.clear()", 2)
        self.add(f"_{r.name}_plans[{seen}] = _h_ref({key.python})", 2)
        copied = " or ".join(f"_{name}_back is not None" for name in self.kept)
        if copied:
            self.add(f"elif {copied}: pass")
        self.add("else:")
        entries = []
        for a in arrays:
            may_be_missing = a.direction == "out" or self.may_be_none(a)
            for text, missing in ((f"_h_ref({a.python})", "_h_nothing"), (self.address.format(a.python), "None")):
                entries.append(f"{text} if {a.python} is not None else {missing}" if may_be_missing else text)
        for a in scalars:
            entries += [a.python] + ([self.value(a)] if a.is_optional else [])
        if any(a.direction == "out" for a in arrays):
            # arrays of outputs are checked with the call; a plan is made of checked ones alone
            for a in r.new_arrays():
                self.add(f"if {a.python} is not None:", 2)
                self.check_shape(a, 3)
        self.add(f"_{r.name}_plans[_h_id({key.python})] = ({', '.join(entries)})", 2)

    def value(self, a):
        """Counts that arrays may tell get a name of their own: the argument still says whether one was given."""
        return f"_n_{a.python}" if a.is_scalar and a.is_read and a.is_optional else a.python

    def may_be_none(self, a):
        """Arrays of which the declaration does not tell the length may be missing, where no numbers lead into them."""
        return (a.direction == "in" and "*" in a.shape and a.role != "entity" and
                all(other.unit != "entity of " + a.name for other in self.routine.arguments))

    def take(self, a):
        name, flags = a.python, OUTPUT if a.is_written else INPUT
        condition = (f"_h_type({name}) is not _h_ndarray or {name}.dtype is not _h_{a.dtype} or "
                     f"{name}.flags.num & {flags} != {flags}")
        if a.direction == "out" or self.may_be_none(a):
            condition = f"{name} is not None and ({condition})"
        if a.is_written:
            self.add(f"_{name}_back = None")
            self.add(f"if {condition}: {name}, _{name}_back = _h_writeable({name}, {a.python!r}, _h_{a.dtype}, copy)")
            self.kept.append(name)
        else:
            copy = "False" if a.is_addressed else "copy"
            self.add(f"if {condition}: {name} = _h_array({name}, {a.python!r}, _h_{a.dtype}, {copy})")
            if a.shape == ["*"] and not self.routine.is_kernel and not a.is_addressed:
                self.add(f"{name} = _h_padded({name}, {name!r})")

    def given_scalar(self, a, depth=1):
        if a.is_scalar:
            check = {"F8": "real", "I4": "integer", "I8": "long_integer"}[a.dtype]
            self.add(f"{a.python} = _h_{check}({a.python}, {a.python!r})", depth)

    def unread_scalar(self, a, depth=1):
        check = "real" if a.dtype == "F8" else "integer"
        self.add(f"{self.value(a)} = 0 if {a.python} is None else _h_{check}({a.python}, {a.python!r})", depth)

    def counts(self):
        """Counts from arrays that are there; outputs that are not given come last."""
        r = self.routine
        for a in sorted(r.optional(), key=lambda a: a.fallback is not None):
            name, value = a.python, self.value(a)
            if not a.is_derived:
                self.unread_scalar(a)
                continue
            self.add(f"if {name} is not None: {value} = _h_integer({name}, {name!r})")
            if a.fallback is not None:
                self.add(f"else: {value} = {self.value(a.fallback)}")
                continue
            sources = r.sources[a.name]
            sure = [s for s in sources if s[0].direction != "out" and not self.may_be_none(s[0])]
            if sure:
                array, *source = sure[0]
                self.add("else:")
                self.add(f"if {array.python}.ndim != {len(array.shape)}: {self.complaint(array)}", 2)
                self.add(f"{value} = {self.solved(array, *source)}", 2)
            else:
                for array, *source in sources:
                    self.add(f"elif {array.python} is not None and {array.python}.ndim == {len(array.shape)}: "
                             f"{value} = {self.solved(array, *source)}")
                arrays = " or ".join(array.python for array, *_ in sources)
                self.add(f"else: _h_missing({r.name!r}, {name!r}, ', or the array {arrays}')")

    def solved(self, array, place, factor, constant):
        text = f"{array.python}.shape[{place}]"
        if constant:
            text = f"{text} - {constant}" if constant > 0 else f"{text} + {-constant}"
        return text if factor == 1 else f"({text}) // {factor}"

    def in_python(self, dimension):
        return re.sub(r"[A-Za-z_]\w*", lambda match: self.value(self.routine.by_name[match.group()]), dimension)

    def complaint(self, a, wanted=None, lax=False):
        return f"_h_wrong_shape({a.python!r}, {a.python}.shape, {', '.join(a.shape)!r}, {wanted}, {lax})"

    def name_shapes(self):
        """Shapes that are known whole, each made once."""
        for a in self.routine.arguments:
            if a.is_array and "*" not in a.shape:
                text = "(" + ", ".join(map(self.in_python, a.shape)) + ",)"
                if text not in self.shapes:
                    self.shapes[text] = f"_h_s{len(self.shapes)}"
                    self.add(f"{self.shapes[text]} = {text}")

    def check_shape(self, a, depth=1):
        """Every dimension as declared; the last one may be longer than a count that the caller gave."""
        tests, wanted, lax = [f"_h_len(_h_s) != {len(a.shape)}"], [], "False"
        for place, dimension in enumerate(a.shape):
            if dimension == "*":
                wanted.append("None")
                continue
            wanted.append(self.in_python(dimension))
            tests.append(f"_h_s[{place}] != {wanted[-1]}")
            counts = [self.routine.by_name[n] for n in _terms(dimension)[0]]
            if place == len(a.shape) - 1 and counts and all(n.role in ("block", "length", "count", "last") for n in counts):
                lax = " and ".join(f"{n.python} is not None" for n in counts)
        if self.may_be_none(a):
            self.add(f"if {a.python} is not None:", depth)
            depth += 1
        whole = "(" + ", ".join(wanted) + ",)"
        if "*" not in a.shape:
            self.add(f"if {a.python}.shape != {self.shapes[whole]}: {self.complaint(a, whole, lax)}", depth)
            return
        self.add(f"_h_s = {a.python}.shape", depth)
        self.add(f"if {' or '.join(tests)}: {self.complaint(a, whole, lax)}", depth)

    def make(self, a):
        if "*" in a.shape:
            return self.check_shape(a)
        self.add(f"if {a.python} is None: {a.python} = {self.zeros(a)}")
        self.add("else:")
        self.check_shape(a, 2)

    def zeros(self, a):
        sizes = []
        for dimension in a.shape:
            text = self.in_python(dimension)
            sizes.append(text if dimension.isdigit() else f"{text} if {text} > 0 else 0")
        return f"_h_zeros({sizes[0] if len(sizes) == 1 else '(' + ', '.join(sizes) + ')'}, _h_{a.dtype}, 'F')"

    def address_of(self, a):
        place = self.address.format(a.python)
        return f"{place} if {a.python} is not None else None" if self.may_be_none(a) else place

    def check_numbers(self, depth=1):
        """What routines use as indices and sizes without asking."""
        r = self.routine
        lines = []
        block = [a for a in r.arguments if a.role in ("block", "length") and a.is_scalar]
        for a in r.arguments:
            if not a.is_read:
                continue
            if a.role == "index":
                high = self.in_python(a.unit[3:])
                lines.append(f"if not 1 <= {self.value(a)} <= {high}: _h_in_range({self.value(a)}, {a.python!r}, 1, {high})")
            elif a.role == "count" and a.unit.startswith("count>="):
                low = self.in_python(a.unit[7:])
                lines.append(f"if {self.value(a)} < {low}: _h_in_range({self.value(a)}, {a.python!r}, {low}, 'more')")
            elif a.role == "entity" and a.is_array:
                target = r.by_name[a.unit[10:]]
                place = target.shape.index("*") if "*" in target.shape else 0
                low = ", -2147483648" if "0 or less" in a.meaning else ""
                lines.append(f"_h_numbers({a.python}, {a.python!r}, {target.python}.shape[{place}], {target.python!r}{low})")
            elif a.role == "list" and a.is_array and block:
                lines.append(f"_h_numbers({a.python}, {a.python!r}, {self.value(block[0])}, 'the block')")
            elif a.role in ("first", "cursor"):
                lines.append(f"if {a.python} < 1: _h_in_range({a.python}, {a.python!r}, 1, 'more')")
        for a in r.arguments:
            if a.role == "block" and a.fallback is not None:
                lines.append(f"if {self.value(a)} > {self.value(a.fallback)}: "
                             f"_h_in_range({self.value(a)}, {a.python!r}, 0, {self.value(a.fallback)})")
            if a.role == "record" and a.is_array:
                cursor, = [c for c in r.arguments if c.role == "cursor"]
                sets = [s for s in r.arguments if s.role == "set"]
                count = self.value(block[0])
                if sets:
                    count = f"_h_min({count}, {sets[0].python}.shape[0] + 1 - {cursor.python})"
                place = a.shape.index("*")
                lines.append(f"if {cursor.python} - 1 + {count} > {a.python}.shape[{place}]: "
                             f"_h_in_range({cursor.python}, {cursor.python!r}, 1, {a.python}.shape[{place}])")
        if lines:
            self.add("if _h_checks:", depth)
            for line in lines:
                self.add(line, depth + 1)

    def call(self, places, depth=1):
        """The call with these addresses of arrays, and what comes back."""
        r = self.routine
        actual, results = [], []
        for a in r.arguments:
            name, value = a.python, self.value(a)
            if a.is_length:
                actual.append(f"_{a.name}")
            elif a.is_text:
                actual.append(self.text(a))
            elif a.is_array:
                actual.append(places[a.name])
            elif a.by_value:
                actual.append(value)
            elif a.direction == "in" and a.dtype == "I4":
                actual.append(f"_h_small+4*{value} if 0 <= {value} < {SMALL} else _h_counted({value}, {name!r})")
            else:
                kind = {"F8": "Real", "I4": "Int", "I8": "Long"}[a.dtype]
                if a.is_written:
                    self.add(f"_{name} = _h_{kind}({value if a.is_read else ''})", depth)
                    actual.append(f"_h_byref(_{name})")
                else:
                    actual.append(f"_h_byref(_h_{kind}({value}))")
        call = f"_{r.name}({', '.join(actual)})"
        self.add(call if r.result == "void" else f"_h_result = {call}", depth)
        for name in self.kept:  # none yet where a plan is followed
            self.add(f"if _{name}_back is not None: _{name}_back[...] = {name}; {name} = _{name}_back", depth)
        for a in r.arguments:
            if a.is_array and a.direction == "out":
                results.append(a.python)
            elif a.is_text and a.is_written:
                results.append(f"_{a.python}.raw.decode(errors='replace').rstrip()")
            elif a.is_scalar and a.is_written:
                results.append(f"_{a.python}.value")
        if r.result != "void":
            results.append("_h_result")
        value = "None" if not results else results[0] if len(results) == 1 else f"_h_tuple(_{r.name}_results, ({', '.join(results)}))"
        # What the host has heard by now is told here, behind the call.
        self.add(f"if _h_pending: return _h_events.settle({value}, {r.name!r})", depth)
        self.add(f"return {value}", depth)

    def text(self, a):
        """Makes bytes of a text, and its length."""
        name, length = a.python, a.shape[0]
        if "* const*" in a.type:
            self.add(f"_{name} = _h_addresses({name}, {name!r})")
        elif len(a.shape) > 1:
            self.add(f"_{name}, _{length} = _h_texts({name}, {name!r})")
        elif a.is_written:
            if a.is_read:
                self.add(f"{name} = _h_text({name}, {name!r})")
                self.add(f"_{length} = _h_len({name})")
                self.add(f"_{name} = _h_ctypes.create_string_buffer({name}, _h_max(1, _{length}))")
            else:
                self.add(f"_{length} = _h_integer({length}, {length!r})")
                self.add(f"_{name} = _h_ctypes.create_string_buffer(_h_max(1, _{length}))")
        elif length == "*":
            self.add(f"_{name} = _h_terminated({name}, {name!r})")
        else:
            self.add(f"_{name} = _h_text({name}, {name!r})")
            self.add(f"_{length} = _h_len(_{name})")
        return f"_{name}"

_RESULTS = {"void": None, "int32_t": ctypes.c_int32, "double": ctypes.c_double}
_VALUES = {"int32_t": ctypes.c_int32, "int64_t": ctypes.c_int64, "double": ctypes.c_double}

def bound(library, routine):
    """The routine itself, as ctypes has it: addresses and values in the order of the declaration."""
    function = library[routine.name]
    function.restype = _RESULTS.get(routine.result, ctypes.c_void_p)
    function.argtypes = [_VALUES[a.type] if a.by_value else ctypes.c_void_p for a in routine.arguments]
    return function

def make(routine, names):
    """The function of a routine."""
    source = _Writer(routine, names.address).source()
    names[f"_{routine.name}_plans"] = {}
    names[f"_{routine.name}"] = bound(names.library, routine)
    if len(routine.returned()) > 1:
        names[f"_{routine.name}_results"] = collections.namedtuple(f"{routine.name}_results", routine.returned())
    exec(compile(source, f"<{routine.name}>", "exec"), names)
    function = names[routine.name]
    function.__doc__ = routine.documentation()
    function.__module__ = "sharedanalysis"
    function.source = textwrap.dedent(source)
    return function
