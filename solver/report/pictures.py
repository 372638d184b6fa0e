"""Draws the deformed model of a result file at several times, each time into a picture of its own, and prints a description as
JSON.  sharedanalysis-report starts it as a process of its own, under xvfb-run where there is no display.

    pictures.py RESULTS.exo DIRECTORY FIELD [TIME...]

FIELD may be empty: the von Mises stress then, or the first of others that is written.
"""
import json
import math
import sys

try:
    import numpy
    import picture
    import vtk
    from vtk.util.numpy_support import vtk_to_numpy
except ImportError as error:
    sys.exit(f"error: {error}; install python3-vtk9 and python3-numpy")

PIXELS = 320000
SUFFIXES = (("x", "y", "z"), ("x", "y", "z", "w"), ("1", "2", "3"), tuple(picture.STRESSES))
DIRECTION, UP = numpy.array([7.0, -20.0, 8.0]), numpy.array([0.0, 0.0, 1.0])
UNITS = {"displacement": "m", "velocity": "m/s", "reaction": "N", "strain_energy_density": "J/m3"}
MOST_EDGES = 30000  # faces; edges of more would blacken the model


def array_of(grid, name):
    """Values by cell or by node: a variable, a component of one, the length of a vector.  KeyError where there is none."""
    for data in (grid.GetCellData(), grid.GetPointData()):
        array = data.GetArray(name)
        if array is not None and array.GetNumberOfComponents() == 1:
            return data, vtk_to_numpy(array)
        stem, _, last = name.rpartition("_")
        for suffixes in SUFFIXES:
            if last in suffixes and stem:
                try:
                    values = picture.components(data, stem, suffixes)
                except (KeyError, ValueError):
                    continue
                if values.ndim == 2 and values.shape[1] == len(suffixes):
                    return data, values[:, suffixes.index(last)]
        try:
            return data, numpy.linalg.norm(picture.components(data, name, ("x", "y", "z")), axis=1)
        except (KeyError, ValueError):
            continue
    raise KeyError(name)


def quantity(field):
    """(function of a grid that gives values by cell, caption)."""
    if field == "von Mises":
        return picture.stress_in_mpa, "von Mises stress, MPa"
    stress = field.startswith(("stress", "principal_stress"))

    def values_of(grid):
        data, values = array_of(grid, field)
        if data is grid.GetPointData():  # mean over the corners
            corners = vtk_to_numpy(grid.GetCells().GetConnectivityArray()).reshape(grid.GetNumberOfCells(), -1)
            values = values[corners].mean(axis=1)
        return numpy.ascontiguousarray(values / 1e6 if stress else values, dtype=float)

    unit = "MPa" if stress else next((unit for stem, unit in UNITS.items() if field.startswith(stem)), "")
    return values_of, f"{field}, {unit}" if unit else field


def basis():
    towards = DIRECTION / numpy.linalg.norm(DIRECTION)
    right = numpy.cross(UP, towards)
    right /= numpy.linalg.norm(right)
    return right, numpy.cross(towards, right), towards


def view(boxes):
    """(centre, width, height) of the boxes of all times as the camera sees them."""
    right, up, towards = basis()
    corners = numpy.array([[box[i], box[2 + j], box[4 + k]] for box in boxes for i in (0, 1) for j in (0, 1) for k in (0, 1)])
    low = [(corners @ axis).min() for axis in (right, up, towards)]
    high = [(corners @ axis).max() for axis in (right, up, towards)]
    centre = sum((0.5 * (a + b) * axis for a, b, axis in zip(low, high, (right, up, towards))), numpy.zeros(3))
    return centre, high[0] - low[0], high[1] - low[1], high[2] - low[2]


def draw(path, actors, seen):
    centre, width, height, depth = seen
    renderer = vtk.vtkRenderer()
    renderer.SetBackground(1, 1, 1)
    renderer.SetBackgroundAlpha(0)
    for actor in actors:
        renderer.AddActor(actor)
    aspect = min(max(width / max(height, 1e-300), 0.35), 2.5)
    size = [round(math.sqrt(PIXELS * aspect)), round(math.sqrt(PIXELS / aspect))]
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    camera.SetFocalPoint(*centre)
    camera.SetPosition(*(centre + basis()[2] * 2 * (width + height + depth)))
    camera.SetViewUp(*UP)
    camera.SetParallelScale(0.53 * max(height, width / aspect))
    picture.light(renderer, list(centre))
    picture.write_png(renderer, size, path, transparent=True)
    return size


def limits(shown):
    """Of the scale: a few values may stand far outside, so that it ends at the percentiles 0.5 and 99.5."""
    values = numpy.concatenate([vtk_to_numpy(grid.GetPointData().GetScalars()) for _, grid in shown])
    values = values[numpy.isfinite(values)]
    low, high = numpy.percentile(values, [0.5, 99.5]) if len(values) else (0, 0)
    return (-picture.nice_limit(-low) if low < 0 else 0.0), picture.nice_limit(high)


def main():
    path, directory, chosen, *times = sys.argv[1:]
    reader = picture.open_results(path)
    candidates = [chosen] if chosen else ["von Mises", "strain_energy_density", "displacement", "velocity"]
    for field in candidates:
        values_of, caption = quantity(field)
        try:
            undeformed = picture.reference(reader, values_of, field)
            shown = list(picture.states(reader, [float(time) for time in times], values_of, field))
            break
        except KeyError as error:
            missing = error.args[0]
    else:
        sys.exit(f"error: the fields have no {missing if chosen else ' or '.join(candidates)}")
    shown = [(time, grid) for time, grid in shown if grid.GetNumberOfCells()]
    if not shown:
        sys.exit("error: there are no bricks to draw")
    low, high = limits(shown)
    lookup = picture.colours()
    seen = view([undeformed.GetBounds()] + [grid.GetBounds() for _, grid in shown])
    drawn = []
    for index, (time, grid) in enumerate(shown):
        actor = picture.deformed_actor(grid, lookup, high)
        actor.GetMapper().SetScalarRange(low, high)
        if picture.surface(grid).GetNumberOfCells() > MOST_EDGES:
            actor.GetProperty().EdgeVisibilityOff()
        file = f"{directory}/{index}.png"
        drawn.append({"time": time, "file": file, "size": draw(file, [actor, picture.outline_actor(undeformed)], seen)})
    stops = ["#%02x%02x%02x" % tuple(round(255 * c) for c in lookup.GetTableValue(k)[:3]) for k in range(0, 256, 15)]
    print(json.dumps({"pictures": drawn, "caption": caption, "low": low, "high": high, "colours": stops}))


if __name__ == "__main__":
    main()
