#include "solver/input/box_mesh.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

constexpr Range kCount{"a whole number from 1 to 1000000", // products of three have 64 bits
                       [](double x) { return x >= 1 && x <= 1e6 && std::floor(x) == x; }};
const Names kAxes{"x", "y", "z"};

// Three numbers of a range.
std::array<double, 3> readTriple(const Table& table, const char* key, const Range& range, const std::string& unit) {
  const std::array<double, 3> values = table.vector(key, unit);
  for (std::size_t k = 0; k < 3; ++k)
    if (!range.holds(values[k]))
      throw InputError(table.place(key, k) + ": " + key + " has " + shortNumber(values[k]) + ", expected three times " +
                       range.expected + (unit.empty() ? "" : " in " + unit));
  return values;
}

// The planes of an axis.
std::vector<double> planesOf(const BoxMesh& box, std::size_t axis) {
  std::vector<double> planes{box.origin[axis]};
  double from = 0;
  for (const BoxMesh::Layer& layer : box.layers[axis]) {
    const auto n = static_cast<double>(layer.bricks);
    for (int64_t k = 1; k <= layer.bricks; ++k) {
      const auto i = static_cast<double>(k);
      double inside = layer.size * i / n;
      if (layer.grading != 1 && k < layer.bricks) // the sum of the progression up to here, in parts of the whole one
        inside =
            layer.size * ((i + (layer.grading - 1) * (i * (i - 1) / (2 * (n - 1)))) / (n * (1 + layer.grading) / 2));
      planes.push_back(box.origin[axis] + (from + inside));
    }
    from += layer.size;
  }
  return planes;
}

// Layers along one axis, which add up to the bricks and the size of the box.
void readLayers(const Table& table, BoxMesh& box) {
  const std::vector<Table> tables = table.tables("layer", {"group", "bricks", "size", "grading"});
  if (tables.empty() && table.has("layers_along")) table.fail("layers_along", "layers_along is given without layers");
  if (!tables.empty() && table.has("volume"))
    table.fail("volume", "volume is given with layers, which have groups of their own");
  if (tables.empty()) {
    for (BoxMesh::Layer& layer : box.layers[box.axis]) layer.volume = table.text("volume", "all");
    return;
  }
  const std::string along = table.text("layers_along", "z");
  const auto found = std::find(kAxes.begin(), kAxes.end(), along);
  if (found == kAxes.end())
    table.fail("layers_along", "\"" + printable(along) + R"(" is no axis, expected "x", "y" or "z")");
  box.axis = static_cast<std::size_t>(found - kAxes.begin());
  const BoxMesh::Layer whole = box.layers[box.axis][0];
  if (whole.grading != 1)
    throw InputError(table.place("grading", box.axis) + ": grading along " + along +
                     " is given with layers, which have their own");
  box.layers[box.axis].clear();
  double size = 0;
  for (const Table& one : tables) {
    BoxMesh::Layer layer;
    layer.volume = one.text("group");
    layer.bricks = static_cast<int64_t>(one.real("bricks", kCount, ""));
    layer.size = one.real("size", positive, "m");
    layer.grading = one.real("grading", positive, "", 1);
    size += layer.size;
    box.layers[box.axis].push_back(std::move(layer));
  }
  if (box.bricks(box.axis) != whole.bricks)
    throw InputError(table.place("bricks", box.axis) + ": bricks has " + std::to_string(whole.bricks) + " along " +
                     along + ", expected the " + std::to_string(box.bricks(box.axis)) + " of the layers");
  constexpr double kRoundOff = 1e-9;
  if (!(std::abs(size - whole.size) <= kRoundOff * whole.size))
    throw InputError(table.place("size", box.axis) + ": size has " + shortNumber(whole.size) + " m along " + along +
                     ", expected the " + shortNumber(size) + " m of the layers");
}

// The names of volumes, in the order of the first layer of each.
Names volumesOf(const BoxMesh& box) {
  Names names;
  for (const BoxMesh::Layer& layer : box.layers[box.axis])
    if (std::find(names.begin(), names.end(), layer.volume) == names.end()) names.push_back(layer.volume);
  return names;
}

// Numbers of bricks or of planes along the axes, and the three of an entity.
struct Grid {
  std::array<int64_t, 3> count{};

  int64_t size() const { return count[0] * count[1] * count[2]; }
  std::array<int64_t, 3> indices(int64_t place) const {
    return {place % count[0], place / count[0] % count[1], place / count[0] / count[1]};
  }
  int64_t place(int64_t x, int64_t y, int64_t z) const { return x + count[0] * (y + count[1] * z); }
};

// Which volume each brick along the axis of layers is in.
std::vector<std::size_t> volumeAlong(const BoxMesh& box, const Names& volumes) {
  std::vector<std::size_t> result;
  for (const BoxMesh::Layer& layer : box.layers[box.axis])
    result.insert(result.end(), static_cast<std::size_t>(layer.bricks),
                  static_cast<std::size_t>(std::find(volumes.begin(), volumes.end(), layer.volume) - volumes.begin()));
  return result;
}

constexpr std::size_t kFaces = 6;

void addNodes(const BoxMesh& box, const Grid& bricks, const std::vector<std::size_t>& volumes, int64_t end,
              MeshSlice& slice) {
  const Grid nodes{{bricks.count[0] + 1, bricks.count[1] + 1, bricks.count[2] + 1}};
  const std::array<std::vector<double>, 3> planes{planesOf(box, 0), planesOf(box, 1), planesOf(box, 2)};
  slice.nodeNumbers.reserve(static_cast<std::size_t>(end - slice.firstNode));
  slice.coordinates.reserve(static_cast<std::size_t>(3 * (end - slice.firstNode)));
  for (int64_t node = slice.firstNode; node < end; ++node) {
    const std::array<int64_t, 3> index = nodes.indices(node);
    slice.nodeNumbers.push_back(node + 1);
    for (std::size_t c = 0; c < 3; ++c) {
      slice.coordinates.push_back(planes[c][static_cast<std::size_t>(index[c])]);
      if (index[c] == 0) slice.groups[2 * c].nodes.push_back(node);
      if (index[c] == bricks.count[c]) slice.groups[2 * c + 1].nodes.push_back(node);
    }
    // a node between two layers is one of both volumes
    const auto plane = static_cast<std::size_t>(index[box.axis]);
    const std::size_t below = volumes[plane == 0 ? 0 : plane - 1], above = volumes[std::min(plane, volumes.size() - 1)];
    slice.groups[kFaces + below].nodes.push_back(node);
    if (above != below) slice.groups[kFaces + above].nodes.push_back(node);
  }
}

void addBricks(const BoxMesh& box, const Grid& bricks, const std::vector<std::size_t>& volumes, int64_t first,
               int64_t end, MeshSlice& slice) {
  static constexpr std::size_t corners[kFaces][4] = {{0, 3, 7, 4}, {1, 2, 6, 5}, {0, 1, 5, 4},
                                                     {3, 2, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}};
  const Grid nodes{{bricks.count[0] + 1, bricks.count[1] + 1, bricks.count[2] + 1}};
  const int64_t layer = nodes.count[0] * nodes.count[1];
  slice.connectivity.reserve(static_cast<std::size_t>(8 * (end - first)));
  for (int64_t brick = first; brick < end; ++brick) {
    const std::array<int64_t, 3> index = bricks.indices(brick);
    const int64_t node = nodes.place(index[0], index[1], index[2]);
    slice.elementPositions.push_back(brick);
    slice.elementNumbers.push_back(brick + 1);
    for (const int64_t below : {node, node + layer})
      for (const int64_t corner : {int64_t{0}, int64_t{1}, nodes.count[0] + 1, nodes.count[0]})
        slice.connectivity.push_back(below + corner);
    const int64_t* own = &slice.connectivity[slice.connectivity.size() - 8];
    for (std::size_t f = 0; f < kFaces; ++f)
      if (index[f / 2] == (f % 2 == 0 ? 0 : bricks.count[f / 2] - 1))
        for (const std::size_t corner : corners[f]) slice.groups[f].faces.push_back(own[corner]);
    slice.groups[kFaces + volumes[static_cast<std::size_t>(index[box.axis])]].elements.push_back(brick);
  }
}

} // namespace

BoxMesh readBox(const Table& mesh) {
  if (!mesh.has("box")) mesh.fail("box", "box is missing in mesh, expected [mesh.box]");
  const Table table =
      mesh.table("box", {"bricks", "size", "origin", "grading", "faces", "volume", "layers_along", "layer"});
  BoxMesh box;
  const std::array<double, 3> bricks = readTriple(table, "bricks", kCount, ""),
                              size = readTriple(table, "size", positive, "m");
  box.origin = table.vector("origin", "m", {});
  std::array<double, 3> grading{1, 1, 1};
  if (table.has("grading")) grading = readTriple(table, "grading", positive, "");
  for (std::size_t c = 0; c < 3; ++c) box.layers[c] = {{static_cast<int64_t>(bricks[c]), size[c], grading[c]}};
  readLayers(table, box);
  Names names(box.faces.begin(), box.faces.end());
  if (table.has("faces")) names = table.texts("faces", "an array of six names");
  if (names.size() != box.faces.size())
    table.fail("faces", "faces has " + counted(names.size(), "name") + ", expected six (two across each of x, y, z)");
  std::copy(names.begin(), names.end(), box.faces.begin());
  const Names volumes = volumesOf(box);
  names.insert(names.end(), volumes.begin(), volumes.end());
  for (auto name = names.begin(); name != names.end(); ++name)
    if (name->empty() || std::find(names.begin(), name, *name) != name)
      table.fail(table.has("faces") ? "faces" : nullptr,
                 name->empty() ? "a face has an empty name" : "two groups have the name \"" + printable(*name) + "\"");
  for (std::size_t c = 0; c < 3; ++c) {
    const std::vector<double> planes = planesOf(box, c);
    if (std::adjacent_find(planes.begin(), planes.end(),
                           [](double a, double b) { return !(a < b && std::isfinite(b)); }) != planes.end())
      table.fail("size", "bricks along " + kAxes[c] + " are too thin to be told apart at their coordinates");
  }
  return box;
}

MeshSlice shareOfBox(const BoxMesh& box, int64_t rank, int64_t size) {
  const Grid bricks{{box.bricks(0), box.bricks(1), box.bricks(2)}};
  const Names volumes = volumesOf(box);
  MeshSlice slice;
  slice.nodes = Grid{{bricks.count[0] + 1, bricks.count[1] + 1, bricks.count[2] + 1}}.size();
  slice.elements = bricks.size();
  slice.firstNode = firstOfShare(slice.nodes, rank, size);
  slice.groupNames.assign(box.faces.begin(), box.faces.end());
  slice.groupNames.insert(slice.groupNames.end(), volumes.begin(), volumes.end());
  slice.groupDimensions.assign(slice.groupNames.size(), 3);
  std::fill_n(slice.groupDimensions.begin(), kFaces, 2);
  slice.groups.resize(slice.groupNames.size());
  const std::vector<std::size_t> along = volumeAlong(box, volumes);
  addNodes(box, bricks, along, firstOfShare(slice.nodes, rank + 1, size), slice);
  addBricks(box, bricks, along, firstOfShare(slice.elements, rank, size), firstOfShare(slice.elements, rank + 1, size),
            slice);
  return slice;
}

} // namespace sharedanalysis::solver
