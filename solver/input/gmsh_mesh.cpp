#include "solver/input/gmsh_mesh.h"

#include "solver/input/brick_shape.h"
#include "solver/model/text.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <gmsh.h>
#include <iomanip>
#include <iterator>
#include <limits>
#include <numeric>
#include <sstream>
#include <string_view>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

using Tags = std::vector<std::size_t>;

constexpr int brickType =
    5; // Gmsh's number of the 8-node hexahedron; its nodes stand in the order of the brick kernels
constexpr std::size_t brickNodes = 8;

// Gmsh is on for the time of one reading, without configuration files and without terminal output.
class GmshSession {
public:
  GmshSession() {
    gmsh::initialize(0, nullptr, false);
    gmsh::option::setNumber("General.Terminal", 0);
  }
  ~GmshSession() {
    try {
      gmsh::finalize();
    } catch (...) {
      // the mesh is read or an exception is under way: ignore errors
    }
  }
  GmshSession(const GmshSession&) = delete;
  GmshSession& operator=(const GmshSession&) = delete;
};

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& text) {
  throw InputError(file.string() + ": " + text);
}

// How a mesh may begin; anything else that begins with $ is a picture of results or a script.
constexpr std::string_view kHeads[] = {"$MeshFormat", "$NOD", "$Comments"};
constexpr int kLongestHead = 20;

// A section of text has one line an entry, and its first line counts them: a count that is too small would hide the rest.
//   version 2      count
//   version 4      blocks, count; a line for each block; of nodes, from 4.1 on, first the numbers and then the coordinates
void checkCounts(const std::filesystem::path& file, std::istream& stream) {
  stream.clear();
  stream.seekg(0);
  double version = 0;
  int isBinary = 0;
  for (std::string line, word; std::getline(stream, line);) {
    std::istringstream words(line);
    if (!(words >> word) || word[0] != '$' || word.starts_with("$End")) continue;
    std::getline(stream, line);
    std::istringstream first(line);
    if (word == "$MeshFormat") first >> version >> isBinary;
    if (isBinary != 0 || (word != "$Nodes" && word != "$Elements")) continue;
    std::int64_t blocks = 0, count = 0, lines = 0;
    if (version >= 4) first >> blocks;
    if (!(first >> count)) continue;
    const std::string end = "$End" + word.substr(1);
    while (std::getline(stream, line) && !line.starts_with(end)) lines += line.find_first_not_of(" \t\r") != line.npos;
    const std::int64_t expected = blocks + count * (version >= 4.1 && word == "$Nodes" ? 2 : 1);
    if (lines != expected)
      fail(file,
           word + " has " + std::to_string(lines) + " lines, its first one announces " + std::to_string(expected));
  }
}

// A section ends with $End and its name.  In a file that is cut off within the last number Gmsh reads what is left of
// the number.
void checkEnd(const std::filesystem::path& file, std::istream& stream) {
  constexpr std::streamoff longestEnd = 100;
  stream.seekg(0, std::ios::end);
  stream.seekg(-std::min<std::streamoff>(stream.tellg(), longestEnd), std::ios::end);
  std::string end{std::istreambuf_iterator<char>(stream), {}};
  end.erase(end.find_last_not_of(" \t\r\n") + 1);
  const std::string last = end.substr(end.find_last_of('\n') + 1);
  if (!last.starts_with("$End") && !last.starts_with("$END"))
    fail(file, "is cut off, its last line is no end of a section ($End...)");
}

// By a name under which nothing can stand beside it: Gmsh would run the commands of a file of options beside a mesh.
class OpenFile {
public:
  explicit OpenFile(const std::filesystem::path& file) : descriptor_(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (descriptor_ < 0) fail(file, std::string("cannot be opened: ") + std::strerror(errno));
  }
  ~OpenFile() { close(descriptor_); }
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

private:
  int descriptor_;
};

void open(const std::filesystem::path& file) {
  const OpenFile opened(file);
  try {
    gmsh::merge(opened.name());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
    std::string reason;
    gmsh::logger::getLastError(reason);
    // the name that it was given says nothing to a reader
    for (std::size_t at; (at = reason.find(opened.name())) != std::string::npos;)
      reason.replace(at, opened.name().size(), file.string());
    fail(file,
         "Gmsh cannot read this mesh, it is broken or not whole" + (reason.empty() ? std::string() : ": " + reason));
  }
}

struct Bricks {
  Tags numbers, nodes;
};

Bricks readBricks(const std::filesystem::path& file) {
  std::vector<int> types;
  std::vector<Tags> elements, nodes;
  gmsh::model::mesh::getElements(types, elements, nodes, 3);
  Bricks bricks;
  std::vector<std::string> others;
  for (std::size_t t = 0; t < types.size(); ++t) {
    if (types[t] == brickType) {
      bricks.numbers = std::move(elements[t]);
      bricks.nodes = std::move(nodes[t]);
    } else {
      std::string name;
      int dimension = 0, order = 0, nodeCount = 0, corners = 0;
      std::vector<double> parametric;
      gmsh::model::mesh::getElementProperties(types[t], name, dimension, order, nodeCount, parametric, corners);
      others.push_back(counted(elements[t].size(), "element") + " of type \"" + name + "\"");
    }
  }
  if (!others.empty())
    fail(file, "the mesh has " + joined(others, ", ") + "; solids must be 8-node bricks (\"Hexahedron 8\")");
  if (bricks.numbers.empty()) fail(file, "the mesh has no 8-node bricks");
  // 3 * nodes and 8 * bricks are counted in 32 bits
  if (bricks.numbers.size() > std::numeric_limits<int32_t>::max() / (2 * brickNodes))
    fail(file, "the mesh has " + counted(bricks.numbers.size(), "brick") + ", more than can be counted");
  return bricks;
}

// Sorts the bricks by number.
void storeBricks(const std::filesystem::path& file, const Bricks& bricks, Mesh& mesh, Tags& brickNodeNumbers) {
  const std::size_t count = bricks.numbers.size();
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t a, std::size_t b) { return bricks.numbers[a] < bricks.numbers[b]; });
  brickNodeNumbers.reserve(bricks.nodes.size());
  for (const std::size_t brick : order) {
    const std::size_t number = bricks.numbers[brick];
    if (!mesh.elementNumbers.empty() && mesh.elementNumbers.back() == static_cast<int64_t>(number))
      fail(file, "two bricks have the number " + std::to_string(number));
    mesh.elementNumbers.push_back(static_cast<int64_t>(number));
    Tags corners(bricks.nodes.begin() + static_cast<std::ptrdiff_t>(brickNodes * brick),
                 bricks.nodes.begin() + static_cast<std::ptrdiff_t>(brickNodes * (brick + 1)));
    brickNodeNumbers.insert(brickNodeNumbers.end(), corners.begin(), corners.end());
    std::sort(corners.begin(), corners.end());
    if (std::adjacent_find(corners.begin(), corners.end()) != corners.end())
      fail(file, "brick " + std::to_string(number) + " has the same node at two corners");
  }
}

// The nodes of bricks in the order of their numbers, and the connectivity in terms of them.
void storeNodes(const std::filesystem::path& file, const Tags& brickNodeNumbers, Mesh& mesh) {
  Tags used = brickNodeNumbers;
  std::sort(used.begin(), used.end());
  used.erase(std::unique(used.begin(), used.end()), used.end());
  constexpr std::size_t largest = std::numeric_limits<int32_t>::max();
  if (used.back() > largest || static_cast<std::size_t>(mesh.elementNumbers.back()) > largest)
    fail(file, "a node or element number is above " + std::to_string(largest) + ", the largest a result file holds");

  const auto indexOf = [&](std::size_t number) {
    return static_cast<int32_t>(std::lower_bound(used.begin(), used.end(), number) - used.begin());
  };
  mesh.nodeNumbers.assign(used.begin(), used.end());
  mesh.connectivity.reserve(brickNodeNumbers.size());
  for (const std::size_t number : brickNodeNumbers) mesh.connectivity.push_back(indexOf(number));

  Tags numbers;
  std::vector<double> coordinates, parametric;
  gmsh::model::mesh::getNodes(numbers, coordinates, parametric, -1, -1, false, false);
  std::vector<bool> found(used.size(), false);
  mesh.coordinates.resize(3 * used.size());
  for (std::size_t n = 0; n < numbers.size(); ++n) {
    const std::size_t index = static_cast<std::size_t>(indexOf(numbers[n]));
    if (index == used.size() || used[index] != numbers[n]) continue;
    found[index] = true;
    for (std::size_t c = 0; c < 3; ++c) {
      if (!std::isfinite(coordinates[3 * n + c]))
        fail(file, "a coordinate of node " + std::to_string(numbers[n]) + " is not a finite number");
      mesh.coordinates[3 * index + c] = coordinates[3 * n + c];
    }
  }
  const auto missing = std::find(found.begin(), found.end(), false);
  if (missing != found.end())
    fail(file, "node " + std::to_string(used[static_cast<std::size_t>(missing - found.begin())]) + " is not defined");
}

// Counted from 0 in the order of `sorted`; numbers that are missing are skipped.
std::vector<int32_t> indicesOf(Tags numbers, const std::vector<int64_t>& sorted) {
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  std::vector<int32_t> indices;
  for (const std::size_t number : numbers) {
    const auto place = std::lower_bound(sorted.begin(), sorted.end(), static_cast<int64_t>(number));
    if (place != sorted.end() && *place == static_cast<int64_t>(number))
      indices.push_back(static_cast<int32_t>(place - sorted.begin()));
  }
  return indices;
}

// Corners of the quadrilaterals of an entity; -1 for a node that bricks do not have, and for all corners of other shapes.
void addFaces(int entity, const std::vector<int64_t>& nodeNumbers, std::vector<int32_t>& faces) {
  constexpr int quadrilateral = 3;
  std::vector<int> types;
  std::vector<Tags> elements, nodes;
  gmsh::model::mesh::getElements(types, elements, nodes, 2, entity);
  for (std::size_t t = 0; t < types.size(); ++t)
    for (std::size_t k = 0; k < 4 * elements[t].size(); ++k) {
      const auto number = types[t] == quadrilateral ? static_cast<int64_t>(nodes[t][k]) : 0;
      const auto place = std::lower_bound(nodeNumbers.begin(), nodeNumbers.end(), number);
      const bool isKnown = place != nodeNumbers.end() && *place == number && types[t] == quadrilateral;
      faces.push_back(isKnown ? static_cast<int32_t>(place - nodeNumbers.begin()) : -1);
    }
}

std::string groupName(int dimension, int tag) {
  static constexpr std::array kinds{"point_", "curve_", "surface_", "volume_"};
  std::string name;
  gmsh::model::getPhysicalName(dimension, tag, name);
  return name.empty() ? kinds.at(static_cast<std::size_t>(dimension)) + std::to_string(tag) : name;
}

void readGroups(const std::filesystem::path& file, Mesh& mesh) {
  gmsh::vectorpair physical;
  gmsh::model::getPhysicalGroups(physical);
  std::sort(physical.begin(), physical.end());
  for (const auto& [dimension, tag] : physical) {
    Group group{.name = groupName(dimension, tag), .dimension = dimension, .nodes = {}, .elements = {}};
    if (mesh.findGroup(group.name)) fail(file, "two physical groups have the name \"" + group.name + "\"");

    Tags nodes;
    std::vector<double> coordinates;
    gmsh::model::mesh::getNodesForPhysicalGroup(dimension, tag, nodes, coordinates);
    group.nodes = indicesOf(std::move(nodes), mesh.nodeNumbers);
    std::vector<int> entities;
    gmsh::model::getEntitiesForPhysicalGroup(dimension, tag, entities);
    if (dimension == 2)
      for (const int entity : entities) addFaces(entity, mesh.nodeNumbers, group.faces);
    if (dimension == 3) {
      Tags elements;
      for (const int entity : entities) {
        Tags numbers, corners;
        gmsh::model::mesh::getElementsByType(brickType, numbers, corners, entity);
        elements.insert(elements.end(), numbers.begin(), numbers.end());
      }
      group.elements = indicesOf(std::move(elements), mesh.elementNumbers);
    }
    mesh.groups.push_back(std::move(group));
  }
}

void checkCoverage(const std::filesystem::path& file, const Mesh& mesh) {
  std::vector<bool> grouped(mesh.elementNumbers.size(), false);
  for (const Group& group : mesh.groups)
    for (const int32_t element : group.elements) grouped[static_cast<std::size_t>(element)] = true;
  const auto free = std::count(grouped.begin(), grouped.end(), false);
  if (free == 0) return;
  const auto first = static_cast<std::size_t>(std::find(grouped.begin(), grouped.end(), false) - grouped.begin());
  fail(file, counted(static_cast<std::size_t>(free), "brick") + " of " + std::to_string(grouped.size()) +
                 " in no physical volume, the first is number " + std::to_string(mesh.elementNumbers[first]));
}

// Arrays of counts, coordinates, numbers and corners; of each group its name, dimension and members.
void handOver(const Mesh& mesh, Sink& sink) {
  sink.put(std::vector<int64_t>{mesh.nodes(), mesh.elements()});
  sink.put(mesh.coordinates), sink.put(mesh.nodeNumbers), sink.put(mesh.connectivity), sink.put(mesh.elementNumbers);
  sink.put(std::vector<std::uint64_t>{mesh.groups.size()});
  for (const Group& group : mesh.groups) {
    sink.put(group.name);
    sink.put(std::vector<int>{group.dimension});
    sink.put(group.nodes), sink.put(group.elements), sink.put(group.faces);
  }
}
Mesh readByGmsh(const std::filesystem::path& file) {
  const GmshSession session;
  open(file);
  Mesh mesh;
  Tags brickNodeNumbers;
  storeBricks(file, readBricks(file), mesh, brickNodeNumbers);
  storeNodes(file, brickNodeNumbers, mesh);
  readGroups(file, mesh);
  return mesh;
}

// Bricks on the same eight nodes, whatever their order.
void checkTwins(const std::filesystem::path& file, const Mesh& mesh) {
  using Corners = std::array<int32_t, 8>;
  const auto bricks = static_cast<std::size_t>(mesh.elements());
  std::vector<std::pair<Corners, std::size_t>> sorted(bricks);
  for (std::size_t e = 0; e < bricks; ++e) {
    sorted[e].second = e;
    std::copy_n(mesh.connectivity.begin() + static_cast<std::ptrdiff_t>(8 * e), 8, sorted[e].first.begin());
    std::sort(sorted[e].first.begin(), sorted[e].first.end());
  }
  std::sort(sorted.begin(), sorted.end());
  const auto twin =
      std::adjacent_find(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.first == b.first; });
  if (twin != sorted.end())
    fail(file, "bricks " + std::to_string(mesh.elementNumbers[twin->second]) + " and " +
                   std::to_string(mesh.elementNumbers[(twin + 1)->second]) + " have the same nodes");
}

void checkCorners(const std::filesystem::path& file, const Mesh& mesh) {
  for (std::size_t e = 0; e < mesh.elementNumbers.size(); ++e) {
    const int32_t* nodes = &mesh.connectivity[8 * e];
    BrickCorners corners;
    for (std::size_t c = 0; c < 8; ++c)
      std::copy_n(&mesh.coordinates[3 * static_cast<std::size_t>(nodes[c])], 3, corners[c].begin());
    if (const auto worst = turnedCorner(corners))
      fail(file, "brick " + std::to_string(mesh.elementNumbers[e]) + " is turned over at its node " +
                     std::to_string(mesh.nodeNumbers[static_cast<std::size_t>(nodes[*worst])]));
  }
}

} // namespace

// Gmsh takes a file that does not look like one of its formats for a script and would run it.  A pipe or a device would be
// waited for.
void checkMeshText(const std::filesystem::path& file) {
  std::error_code unknown;
  const std::filesystem::file_status status = std::filesystem::status(file, unknown);
  if (!unknown && std::filesystem::is_other(status)) fail(file, "is no file with a mesh but a pipe or a device");
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) fail(file, std::string("cannot be opened: ") + std::strerror(errno));
  std::string first;
  if (std::filesystem::is_directory(status) || !(stream >> std::setw(kLongestHead) >> first) ||
      std::find(std::begin(kHeads), std::end(kHeads), first) == std::end(kHeads))
    fail(file, "is neither a Gmsh mesh file (.msh), which begins with $MeshFormat, nor an Exodus II file");
  checkEnd(file, stream);
  checkCounts(file, stream);
}

GmshMesh::GmshMesh(const std::filesystem::path& file) {
  checkMeshText(file);
  const auto read = [&](Sink& sink) {
    const Mesh mesh = readByGmsh(file);
    checkCoverage(file, mesh);
    checkTwins(file, mesh);
    checkCorners(file, mesh);
    handOver(mesh, sink);
  };
  runApart(file, "Gmsh", read, mesh_);
}

MeshSlice GmshMesh::share(int64_t rank, int64_t size) const {
  Source source(mesh_);
  MeshSlice slice;
  std::vector<int64_t> counts;
  std::vector<std::uint64_t> groups;
  std::vector<int32_t> indices;
  const auto takePlaces = [&](std::vector<int64_t>& places, int64_t numbers) {
    source.takeShare(indices, numbers, rank, size);
    places.assign(indices.begin(), indices.end());
  };
  source.take(counts);
  slice.nodes = counts.at(0), slice.elements = counts.at(1);
  slice.firstNode = firstOfShare(slice.nodes, rank, size);
  source.takeShare(slice.coordinates, 3, rank, size);
  source.takeShare(slice.nodeNumbers, 1, rank, size);
  takePlaces(slice.connectivity, 8);
  source.takeShare(slice.elementNumbers, 1, rank, size);
  slice.elementPositions.resize(slice.elementNumbers.size());
  std::iota(slice.elementPositions.begin(), slice.elementPositions.end(), firstOfShare(slice.elements, rank, size));
  source.take(groups);
  for (std::uint64_t k = 0; k < groups.at(0); ++k) {
    std::vector<int> dimension;
    source.take(slice.groupNames.emplace_back()), source.take(dimension);
    slice.groupDimensions.push_back(dimension.at(0));
    MeshSlice::Members& members = slice.groups.emplace_back();
    takePlaces(members.nodes, 1), takePlaces(members.elements, 1), takePlaces(members.faces, 4);
  }
  return slice;
}

} // namespace sharedanalysis::solver
