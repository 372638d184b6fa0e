"""What the functions of the routines call, and the names that they see."""
import collections
import ctypes
import operator
import weakref

import numpy as np

F8, F4, I4, I8 = map(np.dtype, (np.float64, np.float32, np.int32, np.int64))
INPUT, OUTPUT = 0x102, 0x502  # NumPy's flags: column order and aligned; writeable as well
SMALL = 1 << 16  # integers below it stand in memory
_HIGHEST = 2**31 - 1

# ---- checks that the functions call; the argument's name is in every error

def array(value, name, dtype, copy):
    """`value` as an array of the type in column order: itself if it is one, else a copy."""
    if isinstance(value, np.ndarray) and value.dtype == dtype and value.flags.num & INPUT == INPUT and \
            not np.ma.is_masked(value):
        return np.asarray(value)
    if not copy:
        raise TypeError(f"{name}: needs a copy: give an array of {dtype.name} in column order (order='F')")
    if np.ma.is_masked(value):
        raise TypeError(f"{name}: the library knows no masked values")
    try:
        given = np.asarray(value)
        if given.dtype == dtype:
            return np.require(given, requirements="FA")
        if not np.can_cast(given.dtype, dtype, "same_kind") or (dtype.kind == "i" and given.dtype.kind not in "iub"):
            raise TypeError
        taken = given.astype(dtype, order="F")
        if dtype.kind == "i" and not np.array_equal(taken, given):
            raise OverflowError
        return taken
    except OverflowError:
        raise OverflowError(f"{name}: holds numbers beyond {dtype.name}") from None
    except (TypeError, ValueError):
        raise TypeError(f"{name}: cannot be an array of {dtype.name}: {type(value).__name__}"
                        f"{' of ' + value.dtype.name if isinstance(value, np.ndarray) else ''}") from None

def writeable(value, name, dtype, copy):
    """An array that the routine writes, and where the values go afterwards if it needs another one meanwhile."""
    if not isinstance(value, np.ndarray):
        raise TypeError(f"{name}: is written in place: give a NumPy array, not {type(value).__name__}")
    if value.dtype != dtype:
        raise TypeError(f"{name}: is written in place: give an array of {dtype.name}, not {value.dtype.name}")
    if not value.flags.writeable:
        raise ValueError(f"{name}: is written in place, but cannot be written to")
    if value.flags.num & OUTPUT == OUTPUT:
        return np.asarray(value), None
    if not copy:
        raise TypeError(f"{name}: needs a copy: give an array of {dtype.name} in column order (order='F')")
    return np.array(value, order="F"), value

def outputs(given, names):
    """The arrays of `out=`: one, a sequence in order, or a mapping by name."""
    if isinstance(given, collections.abc.Mapping):
        for name in given:
            if name not in names:
                raise TypeError(f"out: {name} is no output; they are {', '.join(names)}")
        return [given.get(name) for name in names]
    given = (given,) if isinstance(given, np.ndarray) else tuple(given)
    if len(given) != len(names):
        raise TypeError(f"out: {len(given)} arrays for {len(names)} outputs: {', '.join(names)}")
    return given

def wrong_shape(name, shape, declared, wanted, lax):
    """Complains of a shape, unless the last dimension alone is longer than it need be and `lax` allows that."""
    if wanted is not None and len(shape) == len(wanted):
        fits = [has == needs or needs is None or needs < 0 == has for has, needs in zip(shape, wanted)]
        if all(fits) or lax and all(fits[:-1]) and shape[-1] >= wanted[-1]:
            return
    sizes = "" if wanted is None else f" = ({', '.join('any' if size is None else str(size) for size in wanted)})"
    raise ValueError(f"{name}: has the shape {tuple(shape)}, not ({declared}){sizes}")

def integer(value, name):
    try:
        number = operator.index(value)
    except TypeError:
        raise TypeError(f"{name}: needs an integer, not {type(value).__name__}") from None
    if not -2**31 <= number <= _HIGHEST:
        raise OverflowError(f"{name}: {number} is beyond 32 bits")
    return number

def counted(value, name):
    """A count that may come from an array, in memory."""
    return ctypes.byref(ctypes.c_int32(integer(value, name)))

def long_integer(value, name):
    try:
        return operator.index(value)
    except TypeError:
        raise TypeError(f"{name}: needs an integer, not {type(value).__name__}") from None

def real(value, name):
    try:
        if isinstance(value, (str, bytes)):
            raise TypeError
        return float(value)
    except (TypeError, ValueError):
        raise TypeError(f"{name}: needs a number, not {type(value).__name__}") from None

def missing(routine, name, why):
    raise TypeError(f"{routine}() needs {name}{why}")

def in_range(value, name, low, high):
    raise IndexError(f"{name}: {value} is not one of {low} to {high}")

_highest = np.maximum.reduce
_UNSIGNED = np.dtype(np.uint32)

def numbers(values, name, high, of, low=1):
    """Numbers of points or entities stay within what they name: the routine reads and writes there."""
    if not values.size:
        return
    if low == 1:  # as unsigned numbers 0 and what is below are the largest
        unsigned = (values - 1).view(_UNSIGNED)
        fits = (_highest(unsigned) if values.ndim == 1 else _highest(unsigned, None)) < high
    else:
        fits = _highest(values, None) <= high
    if not fits:
        wrong = values[(values > high) | (values < low)]
        raise IndexError(f"{name}: {wrong.flat[0]} is not one of 1 to {high}, the entries of {of}")

def text(value, name):
    if isinstance(value, str):
        value = value.encode()
    if not isinstance(value, bytes):
        raise TypeError(f"{name}: needs a text, not {type(value).__name__}")
    return value

def terminated(value, name):
    value = text(value, name)
    if b"\0" in value:
        raise ValueError(f"{name}: a text with a zero inside")
    return value

# The codes of a text say how many values a message takes; it ends after 1000 characters.
_MOST_VALUES = 1001

def padded(values, name):
    """Values for a message, zeros behind them."""
    if values is None:
        return None
    if values.ndim != 1:
        wrong_shape(name, values.shape, "*", None, False)
    if values.size >= _MOST_VALUES:
        return values
    longer = np.zeros(_MOST_VALUES, values.dtype)
    longer[:values.size] = values
    return longer

def texts(values, name):
    """Texts of one length, padded with blanks, and that length."""
    values = [text(value, name) for value in ([values] if isinstance(values, (str, bytes)) else values or ())]
    length = max(map(len, values), default=0)
    return b"".join(value.ljust(length) for value in values).ljust(_MOST_VALUES * length), length

def addresses(values, name):
    values = [terminated(value, name) for value in ([values] if isinstance(values, (str, bytes)) else values or ())]
    values += [b""] * (_MOST_VALUES - len(values))
    return (ctypes.c_char_p * len(values))(*values)

# ---- the address of an array's data: NumPy's own ways to it take longer than most calls

def _direct_addresses():
    """Memory as one array of words, which begins where an array object holds the address of its data: behind what every object
    has."""
    try:
        words = (ctypes.c_size_t * (1 << 59)).from_address(object.__basicsize__)
        for probe in (np.zeros((3, 2), order="F"), np.zeros(5, np.int32)[1:]):
            if id(probe) & 7 or words[id(probe) >> 3] != probe.ctypes.data:
                return None
        return words
    except (TypeError, ValueError, AttributeError, OverflowError):
        return None

# Small integers in memory: a routine only reads what stands behind a count.
_SMALL_INTEGERS = np.arange(SMALL, dtype=np.int32)

class Globals(dict):
    """What the functions see."""

    def __init__(self, library, events):
        super().__init__()
        self.library = library
        helpers = dict(ndarray=np.ndarray, F8=F8, F4=F4, I4=I4, I8=I8, zeros=np.zeros, ctypes=ctypes, byref=ctypes.byref,
                       Int=ctypes.c_int32, Long=ctypes.c_int64, Real=ctypes.c_double, small=_SMALL_INTEGERS.ctypes.data,
                       events=events, pending=events.pending, checks=True, ref=weakref.ref, nothing=lambda: None,
                       type=type, len=len, id=id, tuple=tuple.__new__, max=max, min=min)
        for check in (array, writeable, outputs, wrong_shape, padded, integer, counted, long_integer, real, missing, in_range,
                      numbers, text, terminated, texts, addresses):
            helpers[check.__name__] = check
        direct = _direct_addresses()
        self.address = "{}.ctypes.data"
        if direct is not None:
            helpers["data"] = direct
            self.address = "_h_data[_h_id({})>>3]"
        # Arguments may have any name: what is not theirs begins with _h_.
        self.update({"_h_" + name: helper for name, helper in helpers.items()})
