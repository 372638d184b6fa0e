// The reading of Gmsh's files by Gmsh.  A library of its own, which the process that reads one of them loads: nothing else needs Gmsh,
// which brings 40 MB of code and a tenth of a second with it.
#include "solver/input/gmsh_reader.h"

#include "solver/model/text.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <gmsh.h>
#include <limits>
#include <numeric>
#include <unistd.h>
#include <utility>

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

} // namespace
} // namespace sharedanalysis::solver

extern "C" __attribute__((visibility("default"))) void sharedanalysis_read_gmsh(const std::filesystem::path& file,
                                                                                sharedanalysis::solver::Mesh& mesh) {
  mesh = sharedanalysis::solver::readByGmsh(file);
}
