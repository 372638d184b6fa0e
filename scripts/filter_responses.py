#!/usr/bin/python3
"""Draws the responses of output filters, as measured by examples/filter_design.cpp, to an SVG file.

    filter_responses.py build/release/bin/filter_design docs/images/filter_responses.svg
"""
import argparse
import math
import subprocess

CUTOFF, INCREMENT = 1000, 1e-5  # Hz, s
PANELS = [
    ("Butterworth", "butterworth", None),
    ("Chebyshev I, 1 dB of ripple", "chebyshev1", 1),
    ("Chebyshev II, 40 dB of attenuation", "chebyshev2", 40),
]
ORDERS = [(2, "#4477aa"), (4, "#228833"), (8, "#cc3311")]
LOW, HIGH, FLOOR, TOP = 0.1, 10, -80, 10  # of the cut-off, dB
WIDTH, HEIGHT, GAP, LEFT, UPPER = 300, 300, 26, 58, 40


def response(program, kind, order, decibels):
    command = [program, kind, str(order), str(CUTOFF), str(INCREMENT)] + ([] if decibels is None else [str(decibels)])
    lines = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return [(float(f) / CUTOFF, float(db)) for f, _, db in (line.split(",") for line in lines if line[0] != "#")]


def place(panel, ratio, db):
    x = LEFT + panel * (WIDTH + GAP) + WIDTH * math.log(ratio / LOW) / math.log(HIGH / LOW)
    return x, UPPER + HEIGHT * (TOP - db) / (TOP - FLOOR)


def text(x, y, words, anchor="middle", size=12, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" {more}>{words}</text>'


def line(start, end, colour, width=1):
    return (f'<line x1="{start[0]:.1f}" y1="{start[1]:.1f}" x2="{end[0]:.1f}" y2="{end[1]:.1f}" '
            f'stroke="{colour}" stroke-width="{width}"/>')


def grid(panel, title):
    parts = [text(place(panel, math.sqrt(LOW * HIGH), TOP)[0], UPPER - 14, title, size=14)]
    for decade in range(round(math.log10(LOW)), round(math.log10(HIGH))):
        for digit in range(1, 10):
            ratio = digit * 10.0**decade
            parts.append(line(place(panel, ratio, TOP), place(panel, ratio, FLOOR), "#e4e4e8"))
    for ratio in (0.1, 1, 10):
        x, y = place(panel, ratio, FLOOR)
        parts.append(line((x, UPPER), (x, y), "#9a9aa2"))
        parts.append(text(x, y + 17, f"{ratio:g}"))
    for db in range(FLOOR, TOP + 1, 10):
        parts.append(line(place(panel, LOW, db), place(panel, HIGH, db), "#9a9aa2" if db == 0 else "#e4e4e8"))
        if panel == 0 and db % 20 == 0:
            x, y = place(panel, LOW, db)
            parts.append(text(x - 7, y + 4, f"{db}", "end"))
    return parts


def curve(panel, points, colour):
    """The part inside the picture; a curve leaves it at the floor."""
    shown, pieces = [], []
    for ratio, db in points:
        if LOW <= ratio <= HIGH and db > FLOOR:
            shown.append("%.1f,%.1f" % place(panel, ratio, min(db, TOP)))
        elif shown:
            pieces.append(shown)
            shown = []
    pieces.append(shown)
    return [f'<polyline points="{" ".join(piece)}" fill="none" stroke="{colour}" stroke-width="1.8"/>'
            for piece in pieces if len(piece) > 1]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("program")
    parser.add_argument("picture")
    arguments = parser.parse_args()
    width, height = LEFT + 3 * (WIDTH + GAP), UPPER + HEIGHT + 52
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
             f'viewBox="0 0 {width} {height}" font-family="sans-serif" fill="#1a1a20">',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for panel, (title, kind, decibels) in enumerate(PANELS):
        parts += grid(panel, title)
        for order, colour in ORDERS:
            parts += curve(panel, response(arguments.program, kind, order, decibels), colour)
        parts.append(text(place(panel, 1, FLOOR)[0], height - 14, "frequency / cut-off"))
    for k, (order, colour) in enumerate(ORDERS):
        x, y = place(0, 0.115, -52 - 7 * k)
        parts += [line((x, y), (x + 24, y), colour, 2.5), text(x + 30, y + 4, f"order {order}", "start")]
    middle = UPPER + HEIGHT / 2
    parts.append(text(16, middle, "gain, dB", more=f'transform="rotate(-90 16 {middle})"'))
    with open(arguments.picture, "w", encoding="utf-8") as file:
        file.write("\n".join(parts + ["</svg>", ""]))


if __name__ == "__main__":
    main()
