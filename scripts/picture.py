#!/usr/bin/python3
"""Draws the deformed model of a result file at several times, side by side: coloured by the von Mises stress, or with the
directions of the principal stresses on its surface.

    picture.py results.exo picture.png [--directions] [--times 0 0.05 0.1] [--size 1800 1200]

Bricks that have failed are left out.  Needs VTK for Python; where there is no display it starts again under xvfb-run.
"""
import argparse
import math
import os
import shutil
import sys

try:
    import numpy
    import vtk
    from vtk.util.numpy_support import numpy_to_vtk, vtk_to_numpy
except ImportError as error:
    if __name__ != "__main__":
        raise
    sys.exit(f"error: {error}; install python3-vtk9 and python3-numpy")

VIEW = numpy.array([3.0, -20.0, 3.5])  # from the model to the eye
STRESSES = ["xx", "yy", "zz", "xy", "yz", "xz"]


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("results")
    parser.add_argument("picture")
    parser.add_argument("--directions", action="store_true", help="principal stresses instead of the von Mises stress")
    parser.add_argument("--times", type=float, nargs="+", help="s; six evenly spread ones otherwise")
    parser.add_argument("--size", type=int, nargs=2, default=[1600, 950], help="pixels")
    return parser.parse_args()


def go_to_a_display():
    """Starts the program again under xvfb-run where there is no display."""
    if os.environ.get("DISPLAY"):
        return
    if shutil.which("xvfb-run") is None:
        sys.exit("error: there is no display; install xvfb and xauth, or set DISPLAY")
    os.execvp("xvfb-run", ["xvfb-run", "-a", sys.executable, *sys.argv])


def nodal_reader(path):
    reader = vtk.vtkExodusIIReader()
    if not reader.CanReadFile(path):
        sys.exit(f"error: {path} is not a readable Exodus II file")
    reader.SetFileName(path)
    reader.UpdateInformation()
    reader.SetAllArrayStatus(reader.NODAL, 1)
    return reader


def open_results(path):
    reader = nodal_reader(path)
    reader.SetAllArrayStatus(reader.ELEM_BLOCK, 1)
    reader.ApplyDisplacementsOn()
    reader.SetDisplacementMagnitude(1.0)
    return reader


def von_mises(cells):
    xx, yy, zz, xy, yz, xz = components(cells, "stress", STRESSES).T
    return numpy.sqrt(0.5 * ((xx - yy) ** 2 + (yy - zz) ** 2 + (zz - xx) ** 2) + 3 * (xy**2 + yz**2 + xz**2))


def components(cells, name, suffixes):
    """Values of the variables name_suffix by cell; readers may join them to one array.  KeyError where there are none."""
    for joined in (name + "_", name):
        if cells.GetArray(joined) is not None:
            return vtk_to_numpy(cells.GetArray(joined))
    if any(cells.GetArray(f"{name}_{suffix}") is None for suffix in suffixes):
        raise KeyError(name)
    return numpy.column_stack([vtk_to_numpy(cells.GetArray(f"{name}_{suffix}")) for suffix in suffixes])


def without_failed(grid):
    if grid.GetCellData().GetArray("mask") is None:
        return grid
    whole = vtk.vtkThreshold()
    whole.SetInputData(grid)
    whole.SetInputArrayToProcess(0, 0, 0, vtk.vtkDataObject.FIELD_ASSOCIATION_CELLS, "mask")
    whole.SetLowerThreshold(-0.5)
    whole.SetUpperThreshold(0.5)
    whole.SetThresholdFunction(vtk.vtkThreshold.THRESHOLD_BETWEEN)
    whole.Update()
    return whole.GetOutput()


def stress_in_mpa(grid):
    return von_mises(grid.GetCellData()) / 1e6


def merged_blocks(reader, values_of=stress_in_mpa, name="von Mises"):
    """All element blocks as one grid with a quantity of the cells at the nodes, the von Mises stress in MPa or what `values_of`
    makes of a grid; the written fields stay at the cells."""
    blocks = reader.GetOutput().GetBlock(0)
    append = vtk.vtkAppendFilter()
    append.MergePointsOn()
    for index in range(blocks.GetNumberOfBlocks()):
        block = blocks.GetBlock(index)
        if block is None or block.GetNumberOfCells() == 0:
            continue
        grid = vtk.vtkUnstructuredGrid()
        grid.DeepCopy(block)
        values = numpy_to_vtk(values_of(grid), deep=True)
        values.SetName(name)
        grid.GetCellData().AddArray(values)
        append.AddInputData(without_failed(grid))
    to_nodes = vtk.vtkCellDataToPointData()
    to_nodes.SetInputConnection(append.GetOutputPort())
    to_nodes.PassCellDataOn()
    to_nodes.Update()
    grid = vtk.vtkUnstructuredGrid()
    grid.DeepCopy(to_nodes.GetOutput())
    grid.GetPointData().SetActiveScalars(name)
    return grid


def states(reader, times, *quantity):
    """(time, grid) at the written times next to those asked for; the quantity as in merged_blocks."""
    key = vtk.vtkStreamingDemandDrivenPipeline.TIME_STEPS()
    written = list(reader.GetOutputInformation(0).Get(key) or [])
    if not times:
        count = min(6, len(written))
        times = [written[round(k * (len(written) - 1) / max(count - 1, 1))] for k in range(count)]
    for wanted in times:
        time = min(written, key=lambda t: abs(t - wanted))
        reader.UpdateTimeStep(time)
        yield time, merged_blocks(reader, *quantity)


def reference(reader, *quantity):
    reader.ApplyDisplacementsOff()
    reader.Update()
    grid = merged_blocks(reader, *quantity)
    reader.ApplyDisplacementsOn()
    return grid


def surface(grid):
    filter_ = vtk.vtkDataSetSurfaceFilter()
    filter_.SetInputData(grid)
    filter_.Update()
    return filter_.GetOutput()


def colours():
    """From a pale blue over green and yellow to a deep red, even in brightness steps."""
    table = vtk.vtkColorTransferFunction()
    table.SetColorSpaceToLab()
    for place, rgb in [(0, (0.23, 0.30, 0.60)), (0.25, (0.20, 0.60, 0.71)), (0.5, (0.72, 0.84, 0.52)),
                       (0.75, (0.96, 0.68, 0.30)), (1, (0.70, 0.09, 0.12))]:
        table.AddRGBPoint(place, *rgb)
    lookup = vtk.vtkLookupTable()
    lookup.SetNumberOfTableValues(256)
    for k in range(256):
        lookup.SetTableValue(k, *table.GetColor(k / 255), 1)
    return lookup


def place(actor, offset):
    actor.SetPosition(offset, 0, 0)
    return actor


def deformed_actor(grid, lookup, limit):
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputData(surface(grid))
    mapper.SetLookupTable(lookup)
    mapper.SetScalarRange(0, limit)
    mapper.InterpolateScalarsBeforeMappingOn()
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    looks = actor.GetProperty()
    looks.EdgeVisibilityOn()
    looks.SetEdgeColor(0.15, 0.15, 0.2)
    looks.SetLineWidth(1.0)
    looks.SetAmbient(0.35)
    looks.SetDiffuse(0.7)
    return actor


def outline_actor(grid):
    edges = vtk.vtkFeatureEdges()
    edges.SetInputData(surface(grid))
    edges.SetFeatureAngle(40)
    edges.BoundaryEdgesOff()
    edges.ColoringOff()
    mapper = vtk.vtkPolyDataMapper()
    mapper.SetInputConnection(edges.GetOutputPort())
    mapper.ScalarVisibilityOff()
    actor = vtk.vtkActor()
    actor.SetMapper(mapper)
    actor.GetProperty().SetColor(0.55, 0.55, 0.58)
    actor.GetProperty().SetLineWidth(1.6)
    actor.GetProperty().SetLighting(False)
    return actor


def plain_actor(grid):
    actor = deformed_actor(grid, None, 1)
    actor.GetMapper().ScalarVisibilityOff()
    actor.GetProperty().SetColor(0.93, 0.93, 0.90)
    actor.GetProperty().SetEdgeColor(0.78, 0.78, 0.76)
    return actor


def apart(points, distance):
    """Indices of points of which no two are closer than the distance."""
    chosen = []
    for index, point in enumerate(points):
        if not chosen or numpy.min(numpy.linalg.norm(points[chosen] - point, axis=1)) >= distance:
            chosen.append(index)
    return chosen


def largest_principal(grid):
    stresses = components(grid.GetCellData(), "principal_stress", "123")
    return numpy.percentile(numpy.abs(stresses), 98) / 1e6


def direction_actors(grid, limit):
    """Bars through the middles of faces along the principal directions, as long as the stress is large: red for tension and
    blue for compression."""
    faces = surface(grid)
    size = math.sqrt(vtk_to_numpy(cell_sizes(faces)).mean())
    normals = vtk.vtkPolyDataNormals()
    normals.SetInputData(faces)
    normals.ComputePointNormalsOff()
    normals.ComputeCellNormalsOn()
    normals.SplittingOff()
    normals.Update()
    faces = normals.GetOutput()
    centres = vtk.vtkCellCenters()
    centres.SetInputData(faces)
    centres.Update()
    outward = vtk_to_numpy(faces.GetCellData().GetNormals())
    points = vtk_to_numpy(centres.GetOutput().GetPoints().GetData()) + 0.15 * size * outward
    cells = faces.GetCellData()
    stresses = components(cells, "principal_stress", "123") / 1e6 / limit
    directions = [components(cells, f"principal_direction_{k}", "xyz") for k in (1, 2, 3)]
    chosen = apart(points, 1.8 * size)
    for sign, colour in ((1, (0.75, 0.10, 0.12)), (-1, (0.10, 0.25, 0.65))):
        ends, lines = vtk.vtkPoints(), vtk.vtkCellArray()
        for face in chosen:
            for k in range(3):
                length = stresses[face, k]
                if sign * length < 0.04:
                    continue
                half = size * min(abs(length), 1.3) * directions[k][face]
                lines.InsertNextCell(2)
                for end in (points[face] - half, points[face] + half):
                    lines.InsertCellPoint(ends.InsertNextPoint(*end))
        bars = vtk.vtkPolyData()
        bars.SetPoints(ends)
        bars.SetLines(lines)
        tubes = vtk.vtkTubeFilter()
        tubes.SetInputData(bars)
        tubes.SetRadius(0.11 * size)
        tubes.SetNumberOfSides(12)
        tubes.CappingOn()
        mapper = vtk.vtkPolyDataMapper()
        mapper.SetInputConnection(tubes.GetOutputPort())
        actor = vtk.vtkActor()
        actor.SetMapper(mapper)
        actor.GetProperty().SetColor(*colour)
        actor.GetProperty().SetAmbient(0.4)
        yield actor


def cell_sizes(faces):
    filter_ = vtk.vtkCellSizeFilter()
    filter_.SetInputData(faces)
    filter_.ComputeAreaOn()
    filter_.Update()
    return filter_.GetOutput().GetCellData().GetArray("Area")


def legend(limit, width, height):
    actor = vtk.vtkTextActor()
    actor.SetInput(f"principal stresses\nred: tension\nblue: compression\n\nbars of two edges:\n{limit:.3g} MPa")
    style(actor.GetTextProperty(), height // 56)
    actor.SetPosition(int(0.85 * width), int(0.5 * height))
    return actor


def label(renderer, text, position, size):
    actor = vtk.vtkBillboardTextActor3D()
    actor.SetInput(text)
    actor.SetPosition(*position)
    style(actor.GetTextProperty(), size)
    actor.GetTextProperty().SetJustificationToCentered()
    actor.GetTextProperty().SetVerticalJustificationToTop()
    renderer.AddActor(actor)


def style(properties, size):
    properties.SetFontFamilyToArial()
    properties.SetFontSize(size)
    properties.SetColor(0.1, 0.1, 0.12)
    properties.ItalicOff()
    properties.BoldOff()
    properties.ShadowOff()


def scalar_bar(lookup, limit, height):
    lookup.SetRange(0, limit)
    bar = vtk.vtkScalarBarActor()
    bar.SetLookupTable(lookup)
    bar.SetTitle("von Mises\nMPa\n ")
    bar.SetNumberOfLabels(5)
    bar.SetLabelFormat("%.4g")
    bar.SetOrientationToVertical()
    bar.SetPosition(0.915, 0.22)
    bar.SetWidth(0.08)
    bar.SetHeight(0.56)
    bar.SetBarRatio(0.28)
    bar.UnconstrainedFontSizeOn()
    style(bar.GetTitleTextProperty(), height // 52)
    style(bar.GetLabelTextProperty(), height // 48)
    return bar


def title(text, width, height):
    actor = vtk.vtkTextActor()
    actor.SetInput(text)
    style(actor.GetTextProperty(), height // 32)
    actor.GetTextProperty().SetJustificationToCentered()
    actor.SetPosition(width // 2, height - height // 13)
    return actor


def nice_limit(value):
    """The next number above value of the form 1, 1.2, 1.5, 2, 2.5, 3, 4, 5, 6 or 8 times a power of ten."""
    if value <= 0:
        return 1.0
    power = 10.0 ** math.floor(math.log10(value))
    return next(step * power for step in (1, 1.2, 1.5, 2, 2.5, 3, 4, 5, 6, 8, 10) if step * power >= value)


def main():
    arguments = parse_arguments()
    go_to_a_display()
    reader = open_results(arguments.results)
    undeformed = reference(reader)
    shown = list(states(reader, arguments.times))

    if arguments.directions:
        limit = nice_limit(max(largest_principal(grid) for _, grid in shown))
        draw(arguments, reader, undeformed, shown, legend(limit, *arguments.size),
             lambda grid: [plain_actor(grid), *direction_actors(grid, limit)])
        return

    # a few corner nodes may stand far above the rest: the scale ends at the 99.5th percentile
    stresses = numpy.concatenate([vtk_to_numpy(grid.GetPointData().GetScalars()) for _, grid in shown])
    limit = nice_limit(numpy.percentile(stresses, 99.5))
    lookup = colours()
    draw(arguments, reader, undeformed, shown, scalar_bar(lookup, limit, arguments.size[1]),
         lambda grid: [deformed_actor(grid, lookup, limit)])


def below(boxes, gap):
    """The place under the middle of the first box that is drawn lower than all of them by a gap."""
    eye = VIEW / numpy.linalg.norm(VIEW)
    upward = numpy.array([0.0, 0.0, 1.0]) - eye[2] * eye
    upward /= numpy.linalg.norm(upward)
    corners = [(x, y, z) for b in boxes for x in b[0:2] for y in b[2:4] for z in b[4:6]]
    box = boxes[0]
    place = numpy.array([0.5 * (box[0] + box[1]), 0.5 * (box[2] + box[3]), box[4]])
    place[2] -= (place @ upward - min(numpy.array(corners) @ upward) + gap) / upward[2]
    return place


def draw(arguments, reader, undeformed, shown, explanation, actors_of):
    renderer = vtk.vtkRenderer()
    renderer.SetBackground(1, 1, 1)
    box = undeformed.GetBounds()
    reach = [max([box[2 * c + 1]] + [g.GetBounds()[2 * c + 1] for _, g in shown]) -
             min([box[2 * c]] + [g.GetBounds()[2 * c] for _, g in shown]) for c in range(3)]
    tall = max(1.34 * (box[5] - box[4]), 1.2 * reach[2])
    pitch = max(1.35 * max(reach[0], reach[1]), 0.21 * tall)  # room for the times below, in letters of 1/38 of the height
    width, height = arguments.size
    span = max(tall, (pitch * len(shown)) * height / (0.86 * width))
    for index, (time, grid) in enumerate(shown):
        for actor in actors_of(grid):
            renderer.AddActor(place(actor, index * pitch))
        renderer.AddActor(place(outline_actor(undeformed), index * pitch))
        place_below = below([box, grid.GetBounds()], 0.015 * span)
        label(renderer, f"t = {time:.4g} s", (place_below[0] + index * pitch, *place_below[1:]), height // 38)

    renderer.AddActor2D(explanation)
    renderer.AddActor2D(title(reader.GetTitle().strip(), width, height))

    # a parallel view from the front, a little from the right and above
    camera = renderer.GetActiveCamera()
    camera.ParallelProjectionOn()
    middle = [0.5 * (box[0] + box[1]) + 0.5 * pitch * (len(shown) - 1), 0.5 * (box[2] + box[3]), 0.5 * (box[4] + box[5])]
    camera.SetFocalPoint(*middle)
    camera.SetPosition(*(numpy.array(middle) + VIEW))
    camera.SetViewUp(0, 0, 1)
    renderer.ResetCamera()
    camera.SetParallelScale(0.5 * span)
    camera.SetWindowCenter(0.09, 0)
    light(renderer, middle)
    write_png(renderer, arguments.size, arguments.picture)


def light(renderer, middle):
    """A light from the camera and one from above, so that top faces are not black."""
    sky = vtk.vtkLight()
    sky.SetLightTypeToSceneLight()
    sky.SetPosition(middle[0], middle[1], middle[2] + 100)
    sky.SetFocalPoint(*middle)
    sky.SetIntensity(0.5)
    eye = vtk.vtkLight()
    eye.SetLightTypeToHeadlight()
    eye.SetIntensity(0.85)
    renderer.AddLight(sky)
    renderer.AddLight(eye)


def write_png(renderer, size, path, transparent=False):
    renderer.ResetCameraClippingRange()
    window = vtk.vtkRenderWindow()
    window.SetOffScreenRendering(1)
    window.SetMultiSamples(8)
    window.SetSize(*size)
    window.SetAlphaBitPlanes(transparent)
    window.AddRenderer(renderer)
    window.Render()

    grab = vtk.vtkWindowToImageFilter()
    grab.SetInput(window)
    if transparent:
        grab.SetInputBufferTypeToRGBA()
    grab.ReadFrontBufferOff()
    writer = vtk.vtkPNGWriter()
    writer.SetFileName(path)
    writer.SetCompressionLevel(9)
    writer.SetInputConnection(grab.GetOutputPort())
    writer.Write()


if __name__ == "__main__":
    main()
