"""Curves over time as inline SVG, with the numbers behind them for the page's own script."""
import html
import math
import re
from decimal import Decimal

WIDTH, HEIGHT, LEFT, RIGHT, UPPER, BELOW = 400, 236, 60, 12, 20, 34
MOST_POINTS = 2000  # of a chart; longer histories are drawn by the extremes of short stretches
ENERGIES = ["kinetic_energy", "strain_energy", "hourglass_energy", "viscous_energy", "damage_energy", "friction_energy",
            "impact_energy", "damping_energy", "external_work", "total_energy"]
_COMPONENT = re.compile(r"^(displacement|velocity|reaction|force|momentum|angular_momentum)_([xyz])(_.*)?$", re.S)
_UNITS = [("angular_momentum", "kg m2/s"), ("momentum", "kg m/s"), ("displacement", "m"), ("velocity", "m/s"), ("reaction", "N"),
          ("force", "N"), ("stable_increment", "s"), ("balance_error", "J"), ("work_", "J"), ("external_work", "J"),
          ("stillness", ""), ("failed_bricks", ""), ("increment", ""), ("time", "s")]


def escape(text):
    """For HTML; control characters and those that turn the direction of writing are shown as replaced."""
    plain = re.sub("[\x00-\x08\x0b-\x1f\x7f-\x9f\u200e\u200f\u202a-\u202e\u2066-\u2069\ud800-\udfff]", "\ufffd", str(text))
    return html.escape(plain)


def unit_of(name):
    name = name.removeprefix("filtered_")
    for stem, unit in _UNITS:
        if name.startswith(stem):
            return unit
    return "1/s" if name == "damping" else "J" if "energy" in name else ""


def families(names):
    """Columns that belong into one chart: the components of a vector, and a column with its filtered one."""
    result = {}
    for name in names:
        plain = name.removeprefix("filtered_")
        match = _COMPONENT.match(plain)
        result.setdefault(match[1] + (match[3] or "") if match else plain, []).append(name)
    return result


def short(value):
    return f"{value:.4g}"


def bounds(values):
    """A range with room for the values; one around them where they are all but the same."""
    finite = [min(max(v, -8e307), 8e307) for v in values if math.isfinite(v)]
    low, high = (min(finite), max(finite)) if finite else (0.0, 1.0)
    size = max(abs(low), abs(high))
    if high - low <= max(1e-12 * size, 1e-290):
        room = 0.05 * size if size > 1e-288 else 1.0
        return low - room, high + room
    return low, high


def ticks(low, high, count):
    """Round numbers in a range with their texts, and the power of ten that all of them are to be multiplied by."""
    rough = (high / count - low / count)
    power = 10.0 ** math.floor(math.log10(rough))
    step = next((f * power for f in (1, 2, 2.5, 5) if f * power >= rough), 10 * power)
    places = [k * step for k in range(math.ceil(low / step - 1e-9), math.floor(high / step + 1e-9) + 1)]
    size = max(abs(low), abs(high))
    exponent = 0 if 1e-3 <= size < 1e5 else 3 * math.floor(math.log10(size) / 3)
    digits = 6
    while digits < 17 and len({f"{p:.{digits}g}" for p in places}) < len(places):
        digits += 1
    shifted = lambda value: float(Decimal(value).scaleb(-exponent)) + 0.0
    return [(p, f"{shifted(p):.{digits}g}") for p in places], exponent


def thinned(rows, columns):
    """Indices of the lines to draw: of long histories the first, the last, and lowest and highest of each stretch."""
    if rows <= MOST_POINTS:
        return list(range(rows))
    kept, stretches = {0, rows - 1}, max(MOST_POINTS // (2 * len(columns)), 50)
    for k in range(stretches):
        stretch = range(k * rows // stretches, (k + 1) * rows // stretches)
        for column in columns:
            finite = [i for i in stretch if math.isfinite(column[i])]
            if finite:
                kept |= {min(finite, key=column.__getitem__), max(finite, key=column.__getitem__)}
    return sorted(kept)


class Charts:
    """Collects the numbers of all charts of a page."""

    def __init__(self):
        self.data = []

    def chart(self, title, times, series, note=""):
        """A figure of curves [(name, values)] over time."""
        rows = thinned(len(times), [values for _, values in series])
        times = [times[i] for i in rows]
        series = [(name, [values[i] for i in rows]) for name, values in series]
        (x0, x1), (y0, y1) = bounds(times), bounds([v for _, values in series for v in values])
        room = 0.04 * y1 - 0.04 * y0
        y0, y1 = y0 - room, y1 + room
        unit = unit_of(series[0][0])
        number = len(self.data)
        finite = lambda values: [v if math.isfinite(v) else None for v in values]
        self.data.append({"names": [escape_controls(name) for name, _ in series], "unit": unit, "time": finite(times),
                          "values": [finite(values) for _, values in series], "range": [x0, x1, y0, y1],
                          "box": [LEFT, UPPER, WIDTH - LEFT - RIGHT, HEIGHT - UPPER - BELOW]})
        unknown = sum(v is None for values in self.data[-1]["values"] for v in values)
        if unknown:
            note = f"{note} {unknown} {'value is no finite number' if unknown == 1 else 'values are not finite numbers'}.".strip()
        label = f"{title}{', ' + unit if unit else ''}"
        legend = "".join(f'<li><i class="s{k % 10}"></i>{escape(name)}</li>' for k, (name, _) in enumerate(series))
        return (f'<figure class="chart" data-chart="{number}"><figcaption>{escape(label)}</figcaption>'
                f'<svg viewBox="0 0 {WIDTH} {HEIGHT}" role="img" tabindex="0" aria-label="{escape(label)} over time">'
                f'{self._axes(x0, x1, y0, y1)}{self._curves(number)}</svg>'
                f'<ul class="legend">{legend}</ul>{f"<p class=note>{escape(note)}</p>" if note else ""}</figure>')

    @staticmethod
    def _axes(x0, x1, y0, y1):
        width, height = WIDTH - LEFT - RIGHT, HEIGHT - UPPER - BELOW
        parts = []
        places, exponent = ticks(x0, x1, 4)
        for value, text in places:
            x = LEFT + width * _part(value, x0, x1)
            parts.append(f'<path class="grid" d="M{x:.2f} {UPPER}v{height}"/>'
                         f'<text x="{x:.2f}" y="{HEIGHT - BELOW + 16}" text-anchor="middle">{text}</text>')
        parts.append(f'<text x="{LEFT + width / 2}" y="{HEIGHT - 3}" text-anchor="middle">time, {_power(exponent)}s</text>')
        places, exponent = ticks(y0, y1, 4)
        for value, text in places:
            y = UPPER + height * (1 - _part(value, y0, y1))
            parts.append(f'<path class="{"zero" if value == 0 else "grid"}" d="M{LEFT} {y:.2f}h{width}"/>'
                         f'<text x="{LEFT - 6}" y="{y + 4:.2f}" text-anchor="end">{text}</text>')
        if exponent:
            parts.append(f'<text x="{LEFT}" y="12">{_power(exponent)}</text>')
        return "".join(parts)

    def _curves(self, number):
        data = self.data[number]
        x0, x1, y0, y1 = data["range"]
        left, upper, width, height = data["box"]
        parts = []
        for k, values in enumerate(data["values"]):
            path, pen = [], "M"
            for t, v in zip(data["time"], values):
                if t is None or v is None:
                    pen = "M"
                    continue
                path.append(f"{pen}{left + width * _part(t, x0, x1):.2f} {upper + height * (1 - _part(v, y0, y1)):.2f}")
                pen = "L"
            if path:
                parts.append(f'<path class="curve s{k % 10}" d="{"".join(path)}"/>')
        return "".join(parts)


def _part(value, low, high):
    """Where a value lies between two, without overflow."""
    return (value / 4 - low / 4) / (high / 4 - low / 4)


def _power(exponent):
    return f"10<tspan dy='-4' font-size='9'>{exponent}</tspan><tspan dy='4'> </tspan>" if exponent else ""


def escape_controls(text):
    return html.unescape(escape(text))
