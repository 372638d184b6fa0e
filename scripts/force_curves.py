#!/usr/bin/python3
"""Draws forces of node sets over their displacement, or over time, from result files to an SVG file, a panel for each title.

    force_curves.py picture.svg PANEL...      PANEL = "title;x label;y label;CURVE;CURVE..."
    CURVE = "name,results.exo,set,component,per x,per y[,time]", or "name,history.csv,column,column,per x,per y"

Displacement and force are divided by `per x` and `per y`, which makes strain and stress of them; a negative one turns the sign.
Needs VTK for Python.
"""
import csv
import math
import sys

import vtk
from vtk.util.numpy_support import vtk_to_numpy

from picture import nodal_reader

COLOURS = ["#4477aa", "#cc3311", "#228833", "#aa3377"]
WIDTH, HEIGHT, GAP, LEFT, UPPER, BELOW, COLUMNS = 300, 240, 86, 70, 40, 62, 2


def history(path, node_set, component, over_time):
    """Mean displacement, or the time, and the sum of the reactions of a node set at all written times."""
    reader = nodal_reader(path)
    reader.ApplyDisplacementsOff()
    sets = [reader.GetObjectName(reader.NODE_SET, k) for k in range(reader.GetNumberOfObjects(reader.NODE_SET))]
    if node_set not in sets:
        sys.exit(f"error: {path} has no node set {node_set}, expected one of {', '.join(sets)}")
    reader.SetObjectStatus(reader.NODE_SET, sets.index(node_set), 1)
    axis = "xyz".index(component)
    moved, force = [], []
    for time in reader.GetOutputInformation(0).Get(vtk.vtkStreamingDemandDrivenPipeline.TIME_STEPS()):
        reader.UpdateTimeStep(time)
        blocks = reader.GetOutput()
        group = next(blocks.GetBlock(k) for k in range(blocks.GetNumberOfBlocks())
                     if blocks.GetMetaData(k).Get(vtk.vtkCompositeDataSet.NAME()) == "Node Sets")
        data = group.GetBlock(sets.index(node_set)).GetPointData()
        moved.append(time if over_time else float(vtk_to_numpy(data.GetArray("displacement_"))[:, axis].mean()))
        force.append(float(vtk_to_numpy(data.GetArray("reaction_"))[:, axis].sum()))
    return moved, force


def columns(path, x, y):
    """Two columns of a history."""
    with open(path, encoding="utf-8", newline="") as file:
        rows = list(csv.DictReader(file))
    return [float(row[x]) for row in rows], [float(row[y]) for row in rows]


def ticks(low, high):
    """Round numbers, five or so."""
    rough = (high - low) / 5
    power = 10.0 ** math.floor(math.log10(rough))
    step = next(f * power for f in (1, 2, 5, 10) if f * power >= rough)
    return [k * step for k in range(math.ceil(low / step - 1e-9), math.floor(high / step + 1e-9) + 1)]


def text(x, y, words, anchor="middle", size=12, more=""):
    return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}" {more}>{words}</text>'


def panel(index, description):
    title, x_label, y_label, *curves = description.split(";")
    drawn = []
    for curve in curves:
        name, path, node_set, component, per_x, per_y, *time = curve.split(",")
        moved, force = (columns(path, node_set, component) if path.endswith(".csv") else
                        history(path, node_set, component, bool(time)))
        drawn.append((name, [m / float(per_x) for m in moved], [f / float(per_y) for f in force]))
    low_x, high_x = min(min(x) for _, x, _ in drawn), max(max(x) for _, x, _ in drawn)
    low_y, high_y = min(min(y) for *_, y in drawn), max(max(y) for *_, y in drawn)
    left = LEFT + index % COLUMNS * (WIDTH + GAP)
    upper = UPPER + index // COLUMNS * (HEIGHT + UPPER + BELOW)

    def place(x, y):
        return left + WIDTH * (x - low_x) / (high_x - low_x), upper + HEIGHT * (high_y - y) / (high_y - low_y)

    parts = [text(left + WIDTH / 2, upper - 14, title, size=14),
             text(left + WIDTH / 2, upper + HEIGHT + 38, x_label),
             text(left - 48, upper + HEIGHT / 2, y_label, more=f'transform="rotate(-90 {left - 48} {upper + HEIGHT / 2})"')]
    for x in ticks(low_x, high_x):
        at = place(x, low_y)[0]
        parts.append(f'<line x1="{at:.1f}" y1="{upper}" x2="{at:.1f}" y2="{upper + HEIGHT}" stroke="#e4e4e8"/>')
        parts.append(text(at, upper + HEIGHT + 17, f"{x:.6g}"))
    for y in ticks(low_y, high_y):
        at = place(low_x, y)[1]
        parts.append(f'<line x1="{left}" y1="{at:.1f}" x2="{left + WIDTH}" y2="{at:.1f}" stroke="#e4e4e8"/>')
        parts.append(text(left - 7, at + 4, f"{y:.6g}", "end"))
    for k, (name, xs, ys) in enumerate(drawn):
        points = " ".join("%.1f,%.1f" % place(x, y) for x, y in zip(xs, ys))
        parts.append(f'<polyline points="{points}" fill="none" stroke="{COLOURS[k]}" stroke-width="1.8"/>')
        if name:
            parts.append(text(left + 10, upper + 18 + 17 * k, name, "start", more=f'style="fill:{COLOURS[k]}"'))
    return parts


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    count = len(sys.argv) - 2
    rows = (count + COLUMNS - 1) // COLUMNS
    width, height = LEFT + COLUMNS * (WIDTH + GAP) - GAP + 20, rows * (HEIGHT + UPPER + BELOW)
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
             f'viewBox="0 0 {width} {height}" font-family="sans-serif" fill="#1a1a20">',
             f'<rect width="{width}" height="{height}" fill="white"/>']
    for index, description in enumerate(sys.argv[2:]):
        parts += panel(index, description)
    with open(sys.argv[1], "w", encoding="utf-8") as file:
        file.write("\n".join(parts + ["</svg>", ""]))


if __name__ == "__main__":
    main()
