"""The page of a report: one HTML file that needs nothing beside it."""
import base64
import hashlib
import json
import math
import pathlib

from charts import ENERGIES, Charts, escape, families, short

HERE = pathlib.Path(__file__).resolve().parent
MOST_EVENTS = 1000  # that are listed
MOST_PLACES = 60  # of a problem, before the rest is folded
STATES = {"complete": ("complete", "Complete"), "interrupted": ("early", "Interrupted"), "ended early": ("early", "Ended early"),
          "not ended": ("open", "Not ended"), "unknown": ("open", "Ending unknown")}


def paragraphs(notes):
    return "".join(f'<p class="note">{escape(note)}</p>' for note in notes)


def section(title, content):
    return f"<section><h2>{escape(title)}</h2>{content}</section>" if content else ""


def facts(pairs):
    cells = "".join(f"<div><dt>{escape(name)}</dt><dd>{escape(value)}</dd></div>" for name, value in pairs)
    return f'<dl class="facts">{cells}</dl>'


def table(heads, rows, kind=""):
    body = "".join(f'<tr>{"".join(f"<td>{cell}</td>" for cell in row)}</tr>' for row in rows)
    return (f'<div class="scroll"><table class="{kind}"><tr>{"".join(f"<th>{escape(h)}</th>" for h in heads)}</tr>'
            f"{body}</table></div>")


def last_finite(values):
    return next((v for v in reversed(values) if math.isfinite(v)), math.nan)


def head(job):
    kind, text = STATES[job.state]
    columns = dict(zip(job.names, job.columns))
    pairs = [(name, f"{count:,}") for name, count in (("nodes", job.model.get("nodes")), ("bricks", job.model.get("elements")))
             if count]
    if columns:
        pairs += [("time reached", f"{short(last_finite(columns['time']))} s")]
        if "increment" in columns:
            pairs += [("increments", f"{last_finite(columns['increment']):.0f}")]
        if "balance_error" in columns:
            pairs += [("energy balance off by", relative_error(columns))]
    if job.diagnostics:
        pairs += [("problems", str(job.diagnostics.get("problem_count", 0)))]
        elapsed = job.diagnostics.get("run", {}).get("elapsed")
        pairs += [("elapsed time", f"{elapsed:.3g} s")] if elapsed is not None else []
    partial = ' <span class="note">The results are partial.</span>' if job.is_partial else ""
    origin = " ".join(job.model.get("origin", []))
    return (f'<header><h1>{escape(job.title)}</h1><p class="origin">job {escape(job.name)}'
            f'{escape(f", {origin}") if origin else ""}</p><p><span class="state {kind}">{text}</span>{escape(job.reason)}'
            f"{partial}</p>{facts(pairs)}</header>")


def largest_energy(columns):
    return max((abs(v) for name in ENERGIES for v in columns.get(name, []) if math.isfinite(v)), default=0)


def relative_error(columns):
    error, energy = last_finite(columns["balance_error"]), largest_energy(columns)
    return f"{short(100 * error / energy)} %" if energy > 0 else f"{short(error)} J"


def model_section(job):
    lines = job.description[:]
    parts = [paragraphs(job.notes["model"])]
    rows = []
    for line in lines:
        kind, _, rest = line.partition(" ")
        if line.startswith("  ") and rows:
            rows[-1] = (rows[-1][0], rows[-1][1] + "<br>" + escape(line.strip()))
        elif kind in ("job", "mesh", "groups", "material", "force", "pressure", "traction", "plane", "symmetry", "end") and rest:
            rows.append((escape(kind if kind != "end" else "course"), escape(rest if kind != "end" else line)))
        else:
            rows.append(("", escape(line)))
    if rows:
        parts.append(table(["", "as the run described it"], rows))
    if job.model.get("blocks"):
        parts.append(table(["block", "bricks"], [(escape(n), f"{c:,}") for n, c in job.model["blocks"]]))
    if job.model.get("node sets"):
        parts.append(table(["node set", "nodes"], [(escape(n), f"{c:,}") for n, c in job.model["node sets"]]))
    if job.case:
        parts.append(f"<details><summary>Case file, 80 characters of each line</summary><pre>{escape(chr(10).join(job.case))}"
                     "</pre></details>")
    return section("Model", "".join(parts))


def energy_charts(columns, charts):
    present = [name for name in ENERGIES if name in columns]
    some = [name for name in present if any(columns[name])] or present
    none = [name for name in present if name not in some]
    parts = []
    if present:
        parts.append(charts.chart("Energies", columns["time"], [(name, columns[name]) for name in some],
                                  f"Zero all the time: {', '.join(none)}." if none else ""))
    if "balance_error" in columns:
        note = f"At the end {relative_error(columns)} of the largest energy." if largest_energy(columns) > 0 else ""
        parts.append(charts.chart("Energy balance is off by", columns["time"], [("balance_error", columns["balance_error"])], note))
    return parts


def course_section(job, charts):
    columns = dict(zip(job.names, job.columns))
    parts = energy_charts(columns, charts)
    parts += [charts.chart(title, columns["time"], [(name, columns[name])])
              for title, name in (("Stable increment", "stable_increment"), ("Increments done", "increment")) if name in columns]
    steps = (job.diagnostics or {}).get("steps", [])
    keys = [("name", "step"), ("increments", "increments"), ("cutbacks", "cutbacks"), ("errors", "errors"), ("warnings", "warnings"),
            ("time", "time, s"), ("smallest_time_increment", "smallest increment, s"),
            ("largest_time_increment", "largest increment, s")]
    cell = lambda v: "" if v is None else short(v) if isinstance(v, float) else v
    rows = [[escape(cell(step.get(key))) for key, _ in keys] for step in steps]
    return section("Energies and course", f'<div class="charts">{"".join(parts)}</div>' * bool(parts) +
                   (table([text for _, text in keys], rows) if rows else ""))


def history_section(job, charts):
    columns = dict(zip(job.names, job.columns))
    shown_above = ("time", "increment", "stable_increment", "balance_error")
    parts = [charts.chart(title, columns["time"], [(name, columns[name]) for name in names])
             for title, names in families(name for name in columns if name not in shown_above).items()]
    return section("History", paragraphs(job.notes["history"]) + (f'<div class="charts">{"".join(parts)}</div>' if parts else ""))


def event_section(job, charts):
    parts, kinds = [], {}
    for event in job.events:
        kinds.setdefault((event["event"], event["group"]), []).append(event)
    place = lambda event: f"brick {escape(event['element'])} at {short(float(event['time']))} s"
    rows = [(escape(kind), escape(group), f"{len(some):,}", place(some[0]), place(some[-1]))
            for (kind, group), some in kinds.items()]
    if rows:
        parts.append(table(["event", "group", "bricks", "first", "last"], rows))
        series, times = {kind: [0] for kind, _ in sorted(kinds)}, [0.0]
        for event in job.events:
            time = float(event["time"])
            if time > times[-1]:  # a step: the counts before it, then those behind
                times += [time, time]
                for values in series.values():
                    values += [values[-1], values[-1]]
            series[event["event"]][-1] += 1
        parts.append(f'<div class="charts">{charts.chart("Bricks with events", times, list(series.items()))}</div>')
        lines = [",".join(str(cell) for cell in event.values()) for event in job.events[:MOST_EVENTS]]
        hidden = len(job.events) - len(lines)
        more = [f"and {hidden} more in the file"] if hidden > 0 else []
        parts.append(f"<details><summary>One by one</summary><pre>{escape(chr(10).join([','.join(job.events[0])] + lines + more))}"
                     "</pre></details>")
    return section("Events", paragraphs(job.notes["events"]) + "".join(parts))


def place_text(place):
    times = f" ({place['count']} times)" if place.get("count", 1) > 1 else ""
    return f"{place.get('label')}{times}"


def places(problem):
    kinds = {}
    for place in problem.get("places", []):
        kinds.setdefault(str(place.get("kind")), []).append(place_text(place))
    parts = []
    for kind, labels in kinds.items():
        parts.append(f"{escape(kind)} {escape(', '.join(labels[:MOST_PLACES]))}")
        if len(labels) > MOST_PLACES:
            parts.append(f"<details><summary>{len(labels) - MOST_PLACES} more</summary>{escape(', '.join(labels[MOST_PLACES:]))}"
                         "</details>")
    hidden = problem.get("place_count", 0) - len(problem.get("places", []))
    return "<br>".join(parts) + (f"<br>and {hidden} that are not listed here" if hidden > 0 else "")


def problem_section(job):
    parts = []
    if job.diagnostics is None:
        parts.append(paragraphs([job.no_diagnostics]))
    else:
        rows = []
        for problem in job.diagnostics.get("problems", []):
            kind = "error" if problem.get("is_error") else "warning"
            first = problem.get("first", {})
            when = ", ".join(f"{name} {short(first[name]) if name == 'time' else first[name]}" + (" s" if name == "time" else "")
                             for name in ("increment", "time") if first.get(name) is not None)
            times = f"{problem.get('count')} times" + (f", first at {when}" if when else "")
            rows.append((f'<span class="{kind}">{kind}</span>', f"{escape(problem.get('name'))}, {escape(times)}<br>"
                         f"{escape(problem.get('text'))}", places(problem)))
        if rows:
            parts.append(table(["", "problem", "where"], rows, "problems"))
        hidden = job.diagnostics.get("problem_count", 0) - len(rows)
        if not rows:
            parts.append(paragraphs(["The diagnostics database has none."]))
        elif hidden > 0:
            parts.append(paragraphs([f"{hidden} more in the diagnostics database."]))
    if job.messages:
        shown = chr(10).join(job.messages[:200])
        opened = " open" if job.diagnostics is None else ""
        parts.append(f"<details{opened}><summary>{len(job.messages)} notes, warnings and errors of the message file</summary>"
                     f"<pre>{escape(shown)}</pre></details>")
    return section("Problems", "".join(parts))


def picture_section(job, pictures):
    parts = [paragraphs(job.notes["pictures"])]
    if pictures:
        gradient = ", ".join(pictures["colours"])
        parts.append(f'<div class="scale">{escape(pictures["caption"])}<span style="background: linear-gradient(90deg, {gradient})">'
                     f'</span><div><b>{short(pictures["low"])}</b><b>{short((pictures["low"] + pictures["high"]) / 2)}</b>'
                     f'<b>{short(pictures["high"])}</b></div></div>')
        figures = []
        for picture in pictures["pictures"]:
            data = base64.b64encode(picture["data"]).decode()
            width, height = picture["size"]
            figures.append(f'<figure><img width="{width}" height="{height}" alt="The deformed model at {short(picture["time"])} s" '
                           f'src="data:image/png;base64,{data}"><figcaption>{short(picture["time"])} s</figcaption></figure>')
        least = "130px" if width < 0.6 * height else "230px" if width < 1.3 * height else "320px"
        parts.append(f'<div class="pictures" style="--least: {least}">{"".join(figures)}</div>')
    return section("Pictures", "".join(parts))


def page(job, pictures, version):
    charts = Charts()
    body = "".join([head(job), problem_section(job), event_section(job, charts), picture_section(job, pictures), course_section(job, charts),
                    history_section(job, charts), model_section(job)])
    style, script = (HERE / "page.css").read_text(encoding="utf-8"), (HERE / "page.js").read_text(encoding="utf-8")
    # no text of the run may end the element that holds the numbers
    numbers = json.dumps(charts.data, allow_nan=False, separators=(",", ":")).replace("<", "\\u003c")
    digest = base64.b64encode(hashlib.sha256(script.encode()).digest()).decode()
    policy = f"default-src 'none'; img-src data:; style-src 'unsafe-inline'; script-src 'sha256-{digest}'"
    return (f'<!DOCTYPE html>\n<html lang="en"><head><meta charset="utf-8">\n'
            f'<meta http-equiv="Content-Security-Policy" content="{policy}">\n'
            f'<meta name="viewport" content="width=device-width, initial-scale=1">\n'
            f"<title>{escape(job.title)}</title>\n<style>\n{style}</style></head>\n<body>{body}\n"
            f'<footer class="note"><p>sharedanalysis-report {escape(version)}</p></footer>\n'
            f'<script type="application/json" id="numbers">{numbers}</script>\n<script>{script}</script></body></html>\n')
