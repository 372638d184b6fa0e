"""The library, its host, and what the host has to say."""
import ctypes
import logging
import os
import pathlib
import threading
import warnings

_LAZY, _GLOBAL = os.RTLD_LAZY, os.RTLD_GLOBAL
_log = logging.getLogger("sharedanalysis")

# Events of the reference host (reference_host_c.h)
_LINE, _STATUS, _ABORT, _END = range(4)
_Listener = ctypes.CFUNCTYPE(None, ctypes.c_int32, ctypes.c_int32, ctypes.c_int32, ctypes.c_void_p, ctypes.c_int64)
_STATES = {0: "ended", 1: "completed", 2: "aborted", 3: "interrupted"}


class AnalysisWarning(UserWarning):
    """A warning that the library has written."""


class AnalysisError(RuntimeError):
    """An error that the library has written.  `result` is what the call would have returned."""

    result = None


class AnalysisEnded(AnalysisError):
    """The library has ended the analysis.  `status`: 0 unknown, 1 completed, 2 aborted, 3 interrupted."""

    status = 0


class Events:
    """What the host heard while a thread was in a call.  It is told to Python when the call has returned: nothing is raised
    through the library."""

    def __init__(self):
        self._threads = threading.local()
        self.pending = []  # not empty while any thread has heard something
        self.listener = _Listener(self._hear)  # stays as long as the host may call it

    def _hear(self, event, number, message, text, length):
        try:
            heard = self._threads.__dict__.setdefault("heard", [])
            self.pending.append(None)
            heard.append((event, number, message, ctypes.string_at(text, length).decode(errors="replace") if length else ""))
        except Exception:  # the caller is the library
            pass

    def settle(self, value, routine):
        heard = self._threads.__dict__.get("heard")
        return self._tell(heard, value, routine) if heard else value

    def _tell(self, heard, value, routine):
        messages, ended, aborted = {}, None, False
        for event, number, message, text in heard:
            if event == _LINE:
                messages.setdefault((number, message), []).append(text.strip())
            elif event == _STATUS:
                _log.debug("status: %s", text.strip())
            elif event == _ABORT:
                aborted = True
            else:
                ended = number
        del self.pending[:len(heard)]
        heard.clear()
        errors = []
        for lines in messages.values():
            text = " ".join(filter(None, lines))
            if text.startswith("***ERROR:"):
                errors.append(text[9:].strip())
            elif text.startswith("***WARNING:"):
                warnings.warn(AnalysisWarning(text[11:].strip()), stacklevel=4)
            elif text:
                _log.info("%s", text)
        if ended is None and not errors and not aborted:
            return value
        if ended is not None or aborted:
            status = 2 if aborted else ended
            error = AnalysisEnded("; ".join(errors) or f"the analysis was {_STATES.get(status, 'ended')} by {routine}")
            error.status = status
        else:
            error = AnalysisError("; ".join(errors))
        error.result = value
        raise error


def _candidates(folder, name):
    """Beside the package, in the build tree that it stands in, or wherever the loader finds it."""
    for place in (folder / "lib", folder.parent.parent / "lib"):
        for file in (place / f"{name}.so.1", place / f"{name}.so"):
            if file.exists():
                return str(file)
    return f"{name}.so.1"


def _open(file, mode):
    """ctypes binds every service of a library when it opens it; a host may lack what is never called."""
    process = ctypes.CDLL(None)
    process.dlopen.restype, process.dlopen.argtypes = ctypes.c_void_p, [ctypes.c_char_p, ctypes.c_int]
    process.dlerror.restype = ctypes.c_char_p
    handle = process.dlopen(os.fsencode(file), mode)
    if not handle:
        raise OSError(process.dlerror().decode(errors="replace"))
    return ctypes.CDLL(file, handle=handle)


host = None  # the reference host, or a host that speaks as it does


def load(folder, library, host_file):
    """The library behind its host, and the events of the host."""
    global host
    events = Events()
    library = library or os.environ.get("SHAREDANALYSIS_LIBRARY") or _candidates(folder, "libSharedAnalysis")
    host_file = host_file or os.environ.get("SHAREDANALYSIS_HOST")
    if host_file != "process":
        opened = _open(host_file or _candidates(folder, "libSharedAnalysisHost"), _LAZY | _GLOBAL)
        if hasattr(opened, "SharedAnalysisHost_listen"):
            host = opened
            host.SharedAnalysisHost_listen.argtypes = [ctypes.c_void_p]
            host.SharedAnalysisHost_openJob.argtypes = [ctypes.c_char_p] * 2
            host.SharedAnalysisHost_closeJob.argtypes = []
            host.SharedAnalysisHost_lastFailure.argtypes, host.SharedAnalysisHost_lastFailure.restype = [], ctypes.c_char_p
    opened = _open(str(library), _LAZY)
    if host is not None:
        host.SharedAnalysisHost_listen(ctypes.cast(events.listener, ctypes.c_void_p))
    return opened, events


_components = ctypes.c_int32(0)


def start(library):
    """A program with a host of its own starts the library itself."""
    if host is not None:
        library.Shared_Analysis_XP_initialize(ctypes.byref(_components))


def stop(library):
    if host is not None:
        library.Shared_Analysis_XP_finalize(ctypes.byref(_components))
        host.SharedAnalysisHost_closeJob()
        host.SharedAnalysisHost_listen(None)


class Job:
    """Files of the reference host: NAME.msg, NAME.log, NAME.sta and the diagnostics."""

    def __init__(self, name, directory):
        if host is None:
            raise RuntimeError("the host of this program has no jobs")
        self.name, self.directory = str(name), pathlib.Path(directory)
        if host.SharedAnalysisHost_openJob(os.fsencode(self.name), os.fsencode(self.directory)):
            raise OSError(host.SharedAnalysisHost_lastFailure().decode(errors="replace"))

    def close(self):
        if host.SharedAnalysisHost_closeJob():
            raise OSError(host.SharedAnalysisHost_lastFailure().decode(errors="replace"))

    def __enter__(self):
        return self

    def __exit__(self, kind, value, trace):
        self.close()
