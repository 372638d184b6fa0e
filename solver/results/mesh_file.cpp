#include "solver/results/mesh_file.h"

#include "solver/model/text.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <exodusII.h>
#include <limits>

namespace sharedanalysis::solver {
namespace {

using Integers = std::vector<int64_t>;
using Corners = std::array<int32_t, 4>;

constexpr std::size_t brickNodes = 8;
// Corners of the sides of a HEX8, in the order of their numbers from 1.
constexpr std::size_t kSides[6][4] = {{0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6},
                                      {0, 4, 7, 3}, {0, 3, 2, 1}, {4, 5, 6, 7}};

// Bricks and sides from 1, in the order of the file.
struct Sides {
  Integers bricks, sides;
};

// In what order bricks stand in the file: those of one volume after those of another.
struct Order {
  std::vector<const Group*> volumes;
  std::vector<int32_t> bricks;
};

std::size_t asSize(int32_t index) { return static_cast<std::size_t>(index); }

Order orderOf(const std::string& input, const Mesh& mesh) {
  const std::string rule = "; an Exodus file has every brick in one element block";
  Order order;
  std::vector<const Group*> owner(mesh.elementNumbers.size(), nullptr);
  for (const Group& group : mesh.groups) {
    if (group.dimension != 3) continue;
    order.volumes.push_back(&group);
    for (const int32_t brick : group.elements) {
      const Group*& holder = owner[asSize(brick)];
      if (holder)
        throw InputError(input + ": brick " + std::to_string(mesh.elementNumbers[asSize(brick)]) + " is in volumes \"" +
                         holder->name + "\" and \"" + group.name + "\"" + rule);
      holder = &group;
      order.bricks.push_back(brick);
    }
  }
  const auto free = std::find(owner.begin(), owner.end(), nullptr);
  if (free != owner.end())
    throw InputError(input + ": brick " +
                     std::to_string(mesh.elementNumbers[static_cast<std::size_t>(free - owner.begin())]) +
                     " is in no volume" + rule);
  return order;
}

Corners sorted(Corners corners) {
  std::sort(corners.begin(), corners.end());
  return corners;
}

// Nothing where a face of the group is not one of a brick, or where the group has nodes of no face.
std::optional<Sides> sidesOf(const Mesh& mesh, const Order& order, const Group& group) {
  std::vector<Corners> wanted;
  std::vector<bool> touched(mesh.nodeNumbers.size(), false);
  for (std::size_t k = 0; k + 4 <= group.faces.size(); k += 4) {
    wanted.push_back(sorted({group.faces[k], group.faces[k + 1], group.faces[k + 2], group.faces[k + 3]}));
    if (wanted.back()[0] < 0) return std::nullopt;
    for (const int32_t node : wanted.back()) touched[asSize(node)] = true;
  }
  if (std::count(touched.begin(), touched.end(), true) != static_cast<std::ptrdiff_t>(group.nodes.size()))
    return std::nullopt;
  std::sort(wanted.begin(), wanted.end());
  wanted.erase(std::unique(wanted.begin(), wanted.end()), wanted.end());
  std::vector<bool> found(wanted.size(), false);
  Sides sides;
  for (std::size_t place = 0; place < order.bricks.size(); ++place) {
    const int32_t* nodes = &mesh.connectivity[brickNodes * asSize(order.bricks[place])];
    for (std::size_t side = 0; side < std::size(kSides); ++side) {
      const auto& corners = kSides[side];
      if (!touched[asSize(nodes[corners[0]])] || !touched[asSize(nodes[corners[2]])]) continue;
      const Corners face = sorted({nodes[corners[0]], nodes[corners[1]], nodes[corners[2]], nodes[corners[3]]});
      const auto at = std::lower_bound(wanted.begin(), wanted.end(), face);
      if (at == wanted.end() || *at != face || found[static_cast<std::size_t>(at - wanted.begin())]) continue;
      found[static_cast<std::size_t>(at - wanted.begin())] = true;
      sides.bricks.push_back(static_cast<int64_t>(place) + 1);
      sides.sides.push_back(static_cast<int64_t>(side) + 1);
    }
  }
  if (std::find(found.begin(), found.end(), false) != found.end()) return std::nullopt;
  return sides;
}

class Writer {
public:
  Writer(const std::filesystem::path& file, const Mesh& mesh, const Order& order)
      : file_(file), mesh_(mesh), order_(order) {
    ex_opts(0); // errors come back as codes, nothing is printed
    int memoryWord = sizeof(double), fileWord = sizeof(double);
    constexpr int64_t largest = std::numeric_limits<int32_t>::max();
    const bool isLarge = *std::max_element(mesh.nodeNumbers.begin(), mesh.nodeNumbers.end()) > largest ||
                         *std::max_element(mesh.elementNumbers.begin(), mesh.elementNumbers.end()) > largest;
    const int format = isLarge ? EX_NETCDF4 | EX_ALL_INT64_DB : EX_LARGE_MODEL;
    id_ = ex_create(file_.path().c_str(), EX_CLOBBER | EX_ALL_INT64_API | format, &memoryWord, &fileWord);
    check(id_);
  }
  ~Writer() {
    if (id_ >= 0) ex_close(id_);
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void write(const std::string& title, const std::vector<const Group*>& nodeSets,
             const std::vector<std::pair<const Group*, Sides>>& sideSets) {
    std::size_t longest = MAX_NAME_LENGTH;
    for (const Group& group : mesh_.groups) longest = std::max(longest, group.name.size());
    check(ex_set_max_name_length(id_, static_cast<int>(longest)));
    check(ex_put_init(id_, title.substr(0, MAX_LINE_LENGTH).c_str(), 3, mesh_.nodes(), mesh_.elements(),
                      static_cast<int64_t>(order_.volumes.size()), static_cast<int64_t>(nodeSets.size()),
                      static_cast<int64_t>(sideSets.size())));
    writeNodes();
    writeBlocks();
    int64_t id = 0;
    for (const Group* group : nodeSets) {
      Integers nodes(group->nodes.begin(), group->nodes.end());
      for (int64_t& node : nodes) ++node;
      putSet(EX_NODE_SET, ++id, *group, nodes, nullptr);
    }
    id = 0;
    for (const auto& [group, sides] : sideSets) putSet(EX_SIDE_SET, ++id, *group, sides.bricks, sides.sides.data());
    const int status = ex_close(id_);
    id_ = -1;
    check(status);
    file_.synchronise();
    file_.complete();
  }

private:
  void check(int status) const {
    if (status >= 0) return;
    const char *text = "", *routine = "";
    int code = 0;
    ex_get_err(&text, &routine, &code);
    throw WriteError(file_.name(), code > 0 ? std::strerror(code) : text);
  }

  void writeNodes() {
    std::array<std::vector<double>, 3> coordinates;
    for (std::size_t k = 0; k < mesh_.coordinates.size(); ++k) coordinates[k % 3].push_back(mesh_.coordinates[k]);
    check(ex_put_coord(id_, coordinates[0].data(), coordinates[1].data(), coordinates[2].data()));
    check(ex_put_id_map(id_, EX_NODE_MAP, mesh_.nodeNumbers.data()));
  }

  void writeBlocks() {
    auto brick = order_.bricks.begin();
    Integers numbers;
    int64_t id = 0;
    for (const Group* volume : order_.volumes) {
      Integers corners;
      for (std::size_t k = 0; k < volume->elements.size(); ++k, ++brick) {
        numbers.push_back(mesh_.elementNumbers[asSize(*brick)]);
        for (std::size_t c = 0; c < brickNodes; ++c)
          corners.push_back(mesh_.connectivity[brickNodes * asSize(*brick) + c] + int64_t{1});
      }
      check(ex_put_block(id_, EX_ELEM_BLOCK, ++id, "HEX8", static_cast<int64_t>(volume->elements.size()), brickNodes, 0,
                         0, 0));
      if (!corners.empty()) check(ex_put_conn(id_, EX_ELEM_BLOCK, id, corners.data(), nullptr, nullptr));
      check(ex_put_name(id_, EX_ELEM_BLOCK, id, volume->name.c_str()));
    }
    check(ex_put_id_map(id_, EX_ELEM_MAP, numbers.data()));
  }

  void putSet(ex_entity_type type, int64_t id, const Group& group, const Integers& entries, const int64_t* sides) {
    check(ex_put_set_param(id_, type, id, static_cast<int64_t>(entries.size()), 0));
    if (!entries.empty()) check(ex_put_set(id_, type, id, entries.data(), sides));
    check(ex_put_name(id_, type, id, group.name.c_str()));
  }

  PartialFile file_;
  const Mesh& mesh_;
  const Order& order_;
  int id_ = -1;
};

} // namespace

std::vector<std::string> writeMesh(const std::filesystem::path& file, const std::string& input, const Mesh& mesh) {
  const Order order = orderOf(input, mesh);
  std::vector<const Group*> nodeSets;
  std::vector<std::pair<const Group*, Sides>> sideSets;
  std::vector<std::string> notes;
  for (const Group& group : mesh.groups) {
    if (group.dimension == 3) continue;
    std::optional<Sides> sides;
    if (group.dimension == 2) sides = sidesOf(mesh, order, group);
    if (sides) {
      sideSets.emplace_back(&group, *std::move(sides));
      continue;
    }
    nodeSets.push_back(&group);
    if (group.dimension == 2)
      notes.push_back("group \"" + group.name + "\" has faces that no brick has, only its nodes are written");
  }
  Writer(file, mesh, order).write(input, nodeSets, sideSets);
  return notes;
}

} // namespace sharedanalysis::solver
