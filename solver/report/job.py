"""What a run of sharedanalysis-explicit has left: its files, its history, how it ended, its problems."""
import csv
import json
import math
import os
import pathlib
import re
import shutil
import subprocess

import exodus

PARTIAL = ".partial"
EVENTS = ".events.csv"
SUFFIXES = (".exo", ".csv", EVENTS, ".exo" + PARTIAL, ".csv" + PARTIAL, EVENTS + PARTIAL, ".sta", ".msg", ".log",
            ".diagnostics.sqlite")
OF_RANK = re.compile(r"\.exo\.\d+\.\d+(\.partial)?$")  # a file of fields of one of several ranks
LONGEST_LIST = 1000  # of problems, and of the places of each


class InputError(Exception):
    pass


def jobs_in(directory):
    jobs = set()
    for file in directory.iterdir():
        if file.name.endswith((EVENTS, EVENTS + PARTIAL)):
            continue
        for suffix in (".exo", ".csv", ".exo" + PARTIAL, ".csv" + PARTIAL):
            if file.name.endswith(suffix):
                jobs.add(file.name[:-len(suffix)])
    return sorted(jobs)


def find_job(results):
    """(directory, job) of a directory with one job or of one of its files."""
    path = pathlib.Path(results)
    try:
        if path.is_dir():
            jobs = jobs_in(path)
            if not jobs:
                raise InputError(f"{path} holds no results, expected JOB.exo or JOB.csv, also with {PARTIAL} behind it")
            if len(jobs) > 1:
                raise InputError(f"{path} holds several jobs, expected a file of one of {', '.join(jobs)}")
            return path, jobs[0]
        os.stat(path)
    except OSError as error:
        raise InputError(f"{path}: {error.strerror}") from error
    for suffix in sorted(SUFFIXES, key=len, reverse=True):
        if path.name.endswith(suffix):
            return path.parent, path.name[:-len(suffix)]
    if OF_RANK.search(path.name):
        return path.parent, OF_RANK.sub("", path.name)
    raise InputError(f"{path} is no result, expected JOB.exo or JOB.csv, also with {PARTIAL} behind it")


def _number(cell):
    try:
        return float(cell)
    except ValueError:
        return math.nan


def read_history(path):
    """(names, columns, lines that were left out): a run that goes on may have written its last line in part."""
    with open(path, encoding="utf-8", errors="replace", newline="") as file:
        rows = list(csv.reader((line.replace("\0", "") for line in file), quoting=csv.QUOTE_NONE))
    names = rows[0] if rows else []
    whole = [row for row in rows[1:] if len(row) == len(names)]
    return names, [[_number(row[c]) for row in whole] for c in range(len(names))], len(rows[1:]) - len(whole)


def read_events(path):
    """(events, how many the file leaves out): of each what its line has; lines that are not whole are left out."""
    with open(path, encoding="utf-8", errors="replace", newline="") as file:
        rows = list(csv.reader(line.replace("\0", "") for line in file))
    names = rows[0] if rows else []
    if not {"time", "element", "group", "event", "value"} <= set(names):
        raise ValueError("it does not begin with the names of its columns")
    events = [dict(zip(names, row)) for row in rows[1:] if len(row) == len(names)]
    events = [event for event in events if math.isfinite(_number(event["time"]))]
    omitted = sum(_number(event["value"]) for event in events if event["event"] == "omitted")
    return [event for event in events if event["event"] != "omitted"], omitted


def _lines(path):
    try:
        return path.read_text(encoding="utf-8", errors="replace").split("\n")
    except OSError:
        return []


def read_ending(status_file):
    """(state, text): how the last lines of the status file say that the run ended."""
    lines = [line for line in _lines(status_file) if line.strip()]
    said = [line.partition("message=")[2] for line in lines if line.startswith("Error ")]
    last = lines[-1].split(" ")[0] if lines else ""
    if last == "Completed":
        return "complete", ""
    if last == "Interrupted":
        return "interrupted", lines[-1].partition("message=")[2]
    if last == "Aborted":
        return "ended early", said[-1] if said else lines[-1].partition("message=")[2]
    if not lines:
        return "unknown", f"there is no status file {status_file.name}"
    return "not ended", "the status file has no ending: the run goes on, or its process was killed"


def read_description(message_file):
    """The lines of the message file that describe the model, whole where the information records cut them off."""
    lines = _lines(message_file)
    first = next((k for k, line in enumerate(lines) if line.startswith("job ")), None)
    if first is None:
        return []
    last = next((k for k, line in enumerate(lines) if k > first and line.startswith("end time ")), None)
    return [line.rstrip() for line in lines[first:last + 1]] if last else []


def read_messages(message_file):
    """Warnings, errors and notes of the message file, each on one line again."""
    texts = []
    for line in _lines(message_file):
        if line.startswith(" ***"):
            texts.append(line.strip())
        elif texts and line.startswith("      ") and line.strip():
            texts[-1] += " " + line.strip()
        elif texts and line.strip():
            break
    return texts


def read_diagnostics(database, programs):
    """(record of sharedanalysis-diagnostics, "") or (None, why there is none)."""
    if not database.exists():
        return None, "There is no diagnostics database beside the results."
    program = shutil.which("sharedanalysis-diagnostics", path=programs) or shutil.which("sharedanalysis-diagnostics")
    if program is None:
        return None, "The diagnostics database was not read: there is no sharedanalysis-diagnostics."
    call = [program, "--json", "--limit", str(LONGEST_LIST), os.path.abspath(database)]
    done = subprocess.run(call, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    try:
        if done.returncode == 0:
            return json.loads(done.stdout), ""
    except ValueError:
        pass
    said = done.stderr.decode("utf-8", "replace").strip() or f"it ended with {done.returncode}"
    return None, f"The diagnostics database was not read: {said}"


class Job:
    """All of one run.  What is missing or cannot be read stands in `notes`, by the part of the page that it is missing in."""

    def __init__(self, results, programs):
        self.directory, self.name = find_job(results)
        self.notes = {"model": [], "history": [], "events": [], "pictures": []}
        self.fields, self.history = self._results(".exo"), self._results(".csv")
        if self.fields is None and self.history is None:
            raise InputError(f"{self._file('.exo')} and {self._file('.csv')} are missing, also with {PARTIAL} behind them")
        self.is_partial = any(file is not None and file.name.endswith(PARTIAL) for file in (self.fields, self.history))
        self.state, self.reason = read_ending(self._file(".sta"))
        self.model = self._read_model()
        self.description = read_description(self._file(".msg"))
        information = self.model.get("information", [])
        end = next((k for k, line in enumerate(information) if line.startswith("end time ")), -1)
        self.description = self.description or information[:end + 1]
        self.case = information[end + 1:]
        self.title = self.model.get("title") or (self.description or [""])[0].partition(": ")[2] or self.name
        self.names, self.columns = self._read_history()
        self.events = self._read_events()
        self.diagnostics, self.no_diagnostics = read_diagnostics(self._file(".diagnostics.sqlite"), programs)
        self.messages = read_messages(self._file(".msg"))

    def _file(self, suffix):
        return self.directory / (self.name + suffix)

    def _results(self, suffix):
        return next((file for file in (self._file(suffix), self._file(suffix + PARTIAL)) if file.is_file()), None)

    def is_of_the_run(self, path):
        """Whether a file is one of the run, which a report must not replace."""
        return any(self._file(s).exists() and path.exists() and os.path.samefile(self._file(s), path) for s in SUFFIXES)

    def _read_model(self):
        if self.fields is None:
            part = next((file.name for file in sorted(self.directory.iterdir())
                         if OF_RANK.search(file.name) and OF_RANK.sub("", file.name) == self.name), None)
            self.notes["model"].append(f"The fields are in files of ranks: sharedanalysis-join {part} makes one of them."
                                       if part else "There is no file of fields.")
            return {}
        try:
            return exodus.read_model(self.fields)
        except (OSError, ValueError) as error:
            self.notes["model"].append(f"{self.fields.name} was not read: it {error}" if isinstance(error, ValueError)
                                       else f"{self.fields.name} was not read: {error.strerror}")
            return {}

    def _read_events(self):
        path = self._results(EVENTS)
        if path is None:
            return []
        try:
            events, omitted = read_events(path)
        except (OSError, csv.Error, ValueError) as error:
            self.notes["events"].append(f"{path.name} was not read: {error}")
            return []
        if omitted:
            self.notes["events"].append(f"{omitted:.0f} further events were counted only.")
        return events

    def _read_history(self):
        if self.history is None:
            self.notes["history"].append("There is no history.")
            return [], []
        try:
            names, columns, left_out = read_history(self.history)
        except (OSError, csv.Error) as error:
            self.notes["history"].append(f"{self.history.name} was not read: {error}")
            return [], []
        if left_out:
            self.notes["history"].append(f"Incomplete lines of {self.history.name} were left out: {left_out}.")
        if not columns or not columns[0] or names[0] != "time":
            self.notes["history"].append(f"{self.history.name} holds no numbers, expected a line of names that begins with time "
                                         "and lines of as many numbers.")
            return [], []
        return names, columns
