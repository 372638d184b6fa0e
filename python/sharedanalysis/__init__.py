"""SharedAnalysis from Python: every routine of the library as a function.

    import numpy as np, sharedanalysis as sa
    S = np.zeros((1000, 6), order="F")     # tensors S33 of 1000 points: 11 22 33 12 23 13
    det = sa.GLO_UTI_DET33(S)

Arrays have the shapes of the declarations and the library's own order, which is Fortran's: order="F".  Such arrays go through
as they are; others are copied, and refused with copy=False.  Counts and leading dimensions come from the arrays, outputs are
returned, or written into arrays that are given by name or as out=.  What a routine changes in place must be an array.
help(sa.GLO_UTI_DET33) shows the declaration.  Names may be written in lower case too.
"""
import atexit
import functools
import json
import pathlib
import threading

from . import _calls, _checks, _library
from ._library import AnalysisEnded, AnalysisError, AnalysisWarning, Job

__version__ = "1.0.0"

_FOLDER = pathlib.Path(__file__).absolute().parent
_description = json.loads((_FOLDER / "interface.json").read_text())
_sections = {(section["file"], section["title"]): section for section in _description["sections"]}
_routines = {routine["name"]: routine for routine in _description["routines"]}
_spellings = {name.lower(): name for name in _routines}
_lock = threading.RLock()
_names = None

globals().update({constant["name"]: constant["value"] for constant in _description["constants"]})


def load(library=None, host=None):
    """Loads the library, which otherwise happens when the first routine is asked for.

    library: path of libSharedAnalysis.so; else $SHAREDANALYSIS_LIBRARY, the package's own, or the loader's.
    host: path of a library with the services of a host; "process" for a program that has them itself, else
    $SHAREDANALYSIS_HOST or the reference host, whose messages become warnings and exceptions.
    """
    global _names
    with _lock:
        if _names is not None:
            if library is not None or host is not None:
                raise RuntimeError("the library is loaded already")
            return
        _names = _checks.Globals(*_library.load(_FOLDER, library, host))
        _library.start(_names.library)


def checks(on=None):
    """Whether numbers of entities, points and records are held against the arrays before a call; on unless switched off."""
    load()
    if on is not None:
        _names["_h_checks"] = bool(on)
    return _names["_h_checks"]


def describe(name):
    """The routine as the description has it."""
    data = _routines[_spellings[name.lower()]]
    return _calls.Routine(data, _sections[data["file"], data["section"]])


def raw(name):
    """The routine without checks: a ctypes function that takes addresses, and values where C passes values."""
    load()
    return _calls.bound(_names.library, describe(name))


def job(name, directory="."):
    """The files of an analysis, for a with statement: messages and diagnostics go there.  Of the reference host."""
    load()
    return Job(name, directory)


def __getattr__(name):
    routine = name if name in _routines else _spellings.get(name)
    if routine is None:
        raise AttributeError(f"sharedanalysis has no routine {name}")
    with _lock:
        load()
        function = globals().get(routine) or _calls.make(describe(routine), _names)
        globals()[routine] = globals()[name] = function
    return function


@functools.lru_cache(None)
def _directory():
    own = [name for name in globals() if not name.startswith("_")]
    return sorted(set(own) | set(_routines) | set(_spellings))


def __dir__():
    return list(_directory())


@atexit.register
def _leave():
    if _names is not None:
        _library.stop(_names.library)
