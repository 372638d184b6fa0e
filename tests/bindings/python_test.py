"""The Python package against the description of the interface, the calls of the generic tests and closed forms."""
import concurrent.futures
import functools
import json
import math
import os
import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import threading
import time
import unittest
import warnings

import numpy as np
import sharedanalysis as sa

ROUTINES = {name: sa.describe(name) for name in sa._routines}
DTYPES = {"F8": np.float64, "F4": np.float32, "I4": np.int32, "I8": np.int64}


def read_cases():
    """(routine, {name: (array before, array after)}) of every call in the file."""
    data, at = open(os.environ["SA_CASES"], "rb").read(), 0
    def number():
        nonlocal at
        at += 8
        return struct.unpack_from("<q", data, at - 8)[0]
    def take(size):
        nonlocal at
        at += size
        return data[at - size:at]
    while at < len(data):
        routine, count, result = ROUTINES[take(number()).decode()], number(), number()
        values = {}
        for argument in routine.arguments[:count]:
            is_written, size = number(), number()
            before = take(size)
            values[argument.name] = before, take(size) if is_written else before
        yield routine, result, values


@functools.lru_cache(None)
def formula(dimension):
    return re.findall(r"[A-Za-z_]\w*", dimension), compile(dimension, dimension, "eval")


def size_of(dimension, values):
    names, code = formula(dimension)
    return eval(code, {name: int.from_bytes(values[name][0][:4], "little", signed=True) for name in names})


def as_given(argument, values, order="F"):
    """What the caller gives for an argument: a number, a text, or an array of its own."""
    data = values[argument.name][0]
    if argument.is_text:
        return data
    dtype = np.dtype(DTYPES[argument.dtype])
    if argument.is_scalar:
        return np.frombuffer(data, dtype)[0].item()
    shape = [None if d == "*" else size_of(d, values) for d in argument.shape]
    known = math.prod(d for d in shape if d is not None)
    count = len(data) // dtype.itemsize
    shape = [count // max(known, 1) if d is None else d for d in shape]
    return np.array(np.frombuffer(data, dtype)[:math.prod(shape)].reshape(shape, order="F"), order=order)


def all_given(routine, values, order="F"):
    return {a.name: as_given(a, values, order) for a in routine.arguments if not a.is_length}


def call(routine, given, may_copy=True, **changed):
    """The call of the case with every argument given; the values of its written ones, in a dictionary."""
    given = {**given, **changed}
    taken = {a.python: given[a.name] for a in routine.arguments if a.name in given and (a.is_read or a.is_array)}
    if any(a.is_array for a in routine.arguments):
        taken["copy"] = may_copy
    result = getattr(sa, routine.name)(**taken)
    names = routine.returned()
    results = dict(zip(names, result if len(names) > 1 else [result]))
    return {**{a.name: given[a.name] for a in routine.arguments if a.is_array and a.is_written}, **results}


CASES = list(read_cases())
FIRST = {routine.name: (routine, values) for routine, _, values in reversed(CASES)}  # the first call of each


class Everything(unittest.TestCase):
    def refuses(self, kinds, start, function):
        self.assertRaisesRegex(kinds, "^" + re.escape(start), function)

    def test_every_routine_is_a_function_with_its_documentation(self):
        self.assertGreaterEqual(len(ROUTINES), 550)
        listed = set(dir(sa))
        for name, routine in ROUTINES.items():
            with self.subTest(name):
                function = getattr(sa, name)
                self.assertIs(function, getattr(sa, name.lower()))
                self.assertTrue({name, name.lower()} <= listed)
                self.assertIn(routine.text.split("\n")[0], function.__doc__)
                self.assertEqual(len(sa.raw(name).argtypes), len(routine.arguments))
                for argument in routine.arguments:
                    if not argument.is_length:
                        self.assertRegex(function.__doc__, rf"\b{argument.python}\b")
                        self.assertIn(argument.meaning, function.__doc__)

    def test_calls_of_all_kernels_give_the_bits_of_c(self):
        self.assertGreater(len(FIRST), 300)
        for routine, result, values in CASES:
            with self.subTest(routine.name):
                for order in "FFC":  # twice as it is, so that the second call follows a plan, then with copies
                    written = call(routine, all_given(routine, values, order))
                    for a in routine.arguments:
                        if a.is_array and a.is_written:
                            wanted = as_given(a, {**values, a.name: values[a.name][1:]})
                            if written[a.name].tobytes("F") != wanted.tobytes("F"):  # but for NaN, which are all alike
                                np.testing.assert_array_equal(written[a.name], wanted, a.name)
                                zeros = wanted == 0
                                self.assertEqual((np.signbit(written[a.name]) != np.signbit(wanted))[zeros].sum(), 0)
                        elif a.is_scalar and a.is_written:
                            self.assertEqual(written[a.python], as_given(a, {a.name: values[a.name][1:]}))
                if routine.result == "double":
                    self.assertEqual(struct.pack("<d", written["result"]), struct.pack("<q", result))

    def test_counts_and_outputs_come_from_the_arrays(self):
        checked = 0
        for routine, values in FIRST.values():
            outputs = routine.new_arrays()
            if not outputs or any("*" in a.shape for a in outputs) or any(a.role in ("list", "first") for a in routine.arguments):
                continue
            given = {a.python: as_given(a, values) for a in routine.required()}
            try:
                result = getattr(sa, routine.name)(**given)
            except TypeError as error:
                self.assertRegex(str(error), r"needs \w+, or the array", routine.name)
                continue
            want = call(routine, all_given(routine, values))
            names = routine.returned()
            results = dict(zip(names, result if len(names) > 1 else [result]))
            for a in outputs:
                with self.subTest(routine.name, output=a.name):
                    got = results[a.python]
                    rows = slice(0, min(size_of(b.name, values) for b in routine.arguments if b.role in ("block", "length")))
                    np.testing.assert_array_equal(got[rows], want[a.name][rows])
                    checked += 1
        self.assertGreater(checked, 300)

    def test_wrong_arrays_are_refused_by_name(self):
        for routine, values in FIRST.values():
            given = all_given(routine, values)
            for a in routine.arguments:
                if not a.is_array:
                    continue
                good = given[a.name]
                with self.subTest(routine.name, argument=a.name):
                    wrong = [np.zeros(good.shape, complex, "F"), "text"] + ([good.astype(float) + 0.5] if a.dtype == "I4" else [])
                    for other in wrong:
                        self.refuses(TypeError, a.python + ":", lambda: call(routine, given, **{a.name: other}))
                    self.refuses(ValueError, a.python + ":", lambda: call(routine, given, **{a.name: good[..., None]}))
                    for place, dimension in enumerate(a.shape):
                        if dimension != "*" and good.shape[place]:
                            less = np.asfortranarray(np.delete(good, 0, place))
                            self.refuses(ValueError, a.python + ":", lambda: call(routine, given, **{a.name: less}))
                    if a.is_written:
                        fixed = good.copy("F")
                        fixed.flags.writeable = False
                        self.refuses(ValueError, a.python + ":", lambda: call(routine, given, **{a.name: fixed}))
                    wide = np.repeat(good, 2, 0)[::2]  # the same numbers, not next to each other
                    if not wide.flags.f_contiguous:
                        self.refuses(TypeError, a.python + ": needs a copy",
                                     lambda: call(routine, given, may_copy=False, **{a.name: wide}))

    def test_numbers_that_lead_out_of_an_array_are_refused_by_name(self):
        checked = 0
        for routine, values in FIRST.values():
            given = all_given(routine, values)
            for a in routine.arguments:
                if a.is_array and a.role in ("entity", "list") and as_given(a, values).size:
                    with self.subTest(routine.name, argument=a.name):
                        wrong = as_given(a, values)
                        wrong.flat[-1] = 10**6
                        self.refuses(IndexError, a.python + ":", lambda: call(routine, given, **{a.name: wrong}))
                        checked += 1
                elif a.is_scalar and a.is_read and a.role in ("index", "cursor"):
                    with self.subTest(routine.name, argument=a.name):
                        # a set ends where it ends, whatever the cursor
                        for wrong in (0,) if any(b.role == "set" for b in routine.arguments) else (0, 10**6):
                            self.refuses(IndexError, a.python + ":", lambda: call(routine, given, **{a.name: wrong}))
                        checked += 1
        self.assertGreater(checked, 100)

    def test_a_changed_declaration_changes_both_languages(self):
        def made(folder):
            headers = sorted(str(file) for file in pathlib.Path(folder).glob("*.h"))
            return [subprocess.run([os.environ["SA_INTERFACE"], mode, *headers], capture_output=True, text=True, check=True).stdout
                    for mode in ("fortran", "description")]
        include = pathlib.Path(__file__).parents[2] / "include"
        before = made(include)
        self.assertEqual(json.loads(before[1]), sa._description)
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([os.environ["SA_INTERFACE"], "manual", folder, *include.glob("*.h")], check=True)
            self.assertEqual({file.stem for file in pathlib.Path(folder).iterdir()}, set(ROUTINES))
            for name, routine in ROUTINES.items():
                page = pathlib.Path(folder, name + ".3").read_text()
                self.assertEqual(re.findall(r"^\\fB(\w+)\\fP", page, re.M), [a.name for a in routine.arguments], name)
        with tempfile.TemporaryDirectory() as folder:
            shutil.copytree(include, folder, dirs_exist_ok=True)
            file = pathlib.Path(folder) / "glo/linear.h"
            file.write_text(file.read_text().replace("GLO_UTI_DET31(const int32_t* nblock, const double* S, double* det)",
                                                     "GLO_UTI_DET31(const int32_t* nblock, const double* S, int32_t* det)"))
            for old, new, word in zip(before, made(folder), ("integer(c_int32_t), intent(out) :: det(nblock)", '"int32_t*"')):
                self.assertEqual(old.count(word) + 1, new.count(word), set(new.splitlines()) - set(old.splitlines()))

    def test_routines_that_are_no_kernels(self):  # the bits of kernels are those of C
        self.assertEqual([sa.GLO_UTI_SQ2TRSTORAGE(i, j) for j in (1, 2, 3) for i in range(1, j + 1)], [1, 2, 3, 4, 5, 6])
        self.assertEqual(tuple(sa.GLO_UTI_NUMTENSORCOMP(300, 0)), (3, 3, 4))
        self.assertEqual(sa.GLO_UTI_BROADCASTC(3, "x", "........"), "xxx.....")
        np.testing.assert_array_equal(sa.GLO_UTI_BROADCASTR(np.float64(1.5), n=7), np.full(7, 1.5))  # whose array is made
        np.testing.assert_array_equal(sa.SPX_GET_CONSTCONDUCTIVITY3D(1, [2.0, 0, 0, 0, 0, 0], nblock=2), np.array([np.eye(3)*2]*2))

    def test_what_goes_through_and_what_is_copied(self):
        S = np.zeros((4, 6), order="F")
        det = np.full(4, -1.0)
        self.assertIs(sa.GLO_UTI_DET33(S, out=det), det)
        self.assertIs(sa.GLO_UTI_DET33(S, det=det, copy=False), det)
        rows = np.zeros((4, 6))
        self.assertIs(sa.GLO_UTI_SQRTV(rows, V=rows), rows)  # copied, and written back
        wide = np.full(8, -1.0)[::2]
        self.assertIs(sa.GLO_UTI_DET33(S, det=wide), wide)
        np.testing.assert_array_equal(wide, 0)
        np.testing.assert_array_equal(sa.GLO_UTI_DET33([[1, 2, 3, 0, 0, 0]]), [6])
        self.refuses(TypeError, "S: the library", lambda: sa.GLO_UTI_DET33(np.ma.masked_less(S, 1)))
        self.refuses(TypeError, "timeIncrement:", lambda: sa.ACD_BEGIN_ATTEMPT("0.5"))
        self.refuses(OverflowError, "map:", lambda: sa.GLO_UTI_GATHERR([2**40], S))
        self.refuses(TypeError, "out:", lambda: sa.GLO_UTI_DET33(S, out={"nothing": det}))
        self.refuses(TypeError, "out:", lambda: sa.GLO_UTI_DET33(S, out=(det, det)))
        # a plan serves the very same arrays only
        A, B, x, flag = np.zeros((4, 3, 3), order="F"), np.zeros((4, 3, 3), order="F"), np.zeros((4, 3), order="F"), np.zeros(4)
        for _ in range(3):
            sa.GLO_UTI_VSOLVE(A, x, singular=flag)
        self.refuses(ValueError, "b:", lambda: sa.GLO_UTI_VSOLVE(A, np.zeros((3, 3), order="F"), singular=flag))
        self.refuses(ValueError, "singular:", lambda: sa.GLO_UTI_VSOLVE(A, x, singular=np.zeros(3)))
        self.assertTrue(sa.GLO_UTI_VSOLVE(A, x).singular.all())

    def test_messages_become_warnings_and_errors_behind_the_call(self):
        write = lambda kind, *values: sa.glo_uti_CWrite(sa.GLO_UNIT_MESSAGE_FILE, 0, kind, *values)
        with self.assertWarnsRegex(sa.AnalysisWarning, "^point 7 at 2.50000e.00 in part A$"):
            write("Warning", "point %I at %R in part %S", [7], [2.5], ["A"])
        with self.assertRaisesRegex(sa.AnalysisError, "^3 of 5$"):
            write("Error", "%I of %I", [3, 5], None, None)
        write("Info", "%I and no more", None, None, None)  # missing values count as zeros
        with self.assertRaises(sa.AnalysisEnded) as ended:
            sa.GLO_UTI_EXIT(sa.GLO_EXIT_PHASE_COMPLETE)
        self.assertEqual(ended.exception.status, 1)
        with self.assertRaises(sa.AnalysisEnded) as ended:
            sa.GLO_UTI_ALLO(0, -5)
        self.assertEqual((ended.exception.status, ended.exception.result.position), (2, 134217729))
        with warnings.catch_warnings():  # as errors, they still come when the call is over
            warnings.simplefilter("error")
            self.assertRaises(sa.AnalysisWarning, write, "Warning", "now", None, None, None)
        self.assertEqual(sa.GLO_UTI_ALLO(0, 5), (5, 1))
        self.assertTrue(sa.GLO_GETPROCEDURETYPE(17).startswith("*DYNAMIC"))
        with tempfile.TemporaryDirectory() as folder, sa.job("told", folder):
            write("Info", "into the file", None, None, None)
            sa.SPX_OPE_USERELEMPROCESSMASS([3], [1], np.eye(3)[None])
            sa.acd_flush(sa.GLO_UNIT_MESSAGE_FILE)
            self.assertIn("into the file", pathlib.Path(folder, "told.msg").read_text())
            mass = np.eye(3)[None] + [[0, 1, 0], [0, 0, 0], [0, 0, 0]]
            self.assertRaisesRegex(sa.AnalysisError, "1", sa.SPX_OPE_USERELEMPROCESSMASS, [3], [1], mass)
        one = np.zeros(1)
        self.assertEqual(sa.GLO_UTI_GETPOINTER(sa.GLO_UTI_SETPOINTERR(one)), one.ctypes.data)
        self.refuses(TypeError, "x: needs a copy", lambda: sa.GLO_UTI_SETPOINTERR([1.0]))
        self.assertFalse(sa._names["_h_pending"])
        with concurrent.futures.ThreadPoolExecutor(1) as other:
            heard = other.submit(write, "Error", "of another thread", None, None, None)
            self.assertRaisesRegex(sa.AnalysisError, "^of another thread$", heard.result)

    def test_a_program_without_the_reference_host_has_kernels(self):
        code = "import numpy as np, sharedanalysis as sa; sa.load(host='process'); print(sa.GLO_UTI_DET33([[1., 2, 3, 0, 0, 0]]))"
        run = subprocess.run([sys.executable, "-B", "-c", code], capture_output=True, text=True)
        self.assertEqual(run.stdout, "[6.]\n", run.stderr)

    def test_other_threads_run_during_a_call(self):
        S = np.asfortranarray(np.tile([4.0, 5, 6, 0.1, 0.2, 0.3], (400000, 1)))
        V, spans = np.zeros_like(S), []
        def work():
            begin = time.perf_counter()
            sa.GLO_UTI_LOGV(S, L=V)
            spans.append((begin, time.perf_counter()))
        thread = threading.Thread(target=work)
        thread.start()
        ticks = []
        while thread.is_alive():
            ticks.append(time.perf_counter())
        during = [t for t in ticks if spans[0][0] + 0.02 < t < spans[0][1]]
        self.assertGreater(len(during), 100)  # this thread had the interpreter meanwhile


if __name__ == "__main__":
    unittest.main()
