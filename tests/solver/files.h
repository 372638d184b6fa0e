// Meshes as text, and a case that others are made from.
#pragma once

#include "tests/solver/models.h"
#include "tests/support/files.h"

#include <chrono>

namespace sharedanalysis::test {

// A mesh in Gmsh's text format 2.2: a quadrilateral for each brick face whose corners are all in a group of faces, and
// the bricks, each in the one volume group that has it.
inline std::string meshText(const solver::Mesh& mesh) {
  static constexpr int faces[6][4] = {{0, 1, 2, 3}, {4, 5, 6, 7}, {0, 1, 5, 4},
                                      {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
  std::ostringstream names, elements;
  int64_t count = 0, faceNumber = mesh.elementNumbers.back();
  const auto element = [&](int64_t number, int type, std::size_t group, int32_t brick, auto corners) {
    ++count;
    elements << number << ' ' << type << " 2 " << group + 1 << ' ' << group + 1;
    for (int corner : corners) elements << ' ' << mesh.nodeNumbers[mesh.connectivity[8 * brick + corner]];
    elements << '\n';
  };
  for (std::size_t g = 0; g < mesh.groups.size(); ++g) {
    const solver::Group& group = mesh.groups[g];
    names << group.dimension << ' ' << g + 1 << " \"" << group.name << "\"\n";
    for (int32_t brick : group.elements)
      element(mesh.elementNumbers[brick], 5, g, brick, std::array{0, 1, 2, 3, 4, 5, 6, 7});
    if (group.dimension != 2) continue;
    const std::set<int32_t> nodes(group.nodes.begin(), group.nodes.end());
    for (int32_t brick = 0; brick < mesh.elements(); ++brick)
      for (const auto& face : faces) {
        bool inside = true;
        for (int corner : face) inside = inside && nodes.contains(mesh.connectivity[8 * brick + corner]);
        if (inside) element(++faceNumber, 3, g, brick, std::to_array(face));
      }
  }
  std::ostringstream text;
  text.precision(17);
  text << "$MeshFormat\n2.2 0 8\n$EndMeshFormat\n$PhysicalNames\n" << mesh.groups.size() << '\n' << names.str();
  text << "$EndPhysicalNames\n$Nodes\n" << mesh.nodes() << '\n';
  for (std::size_t i = 0; i < mesh.nodeNumbers.size(); ++i)
    text << mesh.nodeNumbers[i] << ' ' << mesh.coordinates[3 * i] << ' ' << mesh.coordinates[3 * i + 1] << ' '
         << mesh.coordinates[3 * i + 2] << '\n';
  text << "$EndNodes\n$Elements\n" << count << '\n' << elements.str() << "$EndElements\n";
  return text.str();
}

// A box as above, with numbers that are not counted from 1 and "lower" and "upper" halves in place of "all".
inline solver::Mesh numberedBox(std::array<int, 3> bricks, std::array<double, 3> size) {
  solver::Mesh mesh = box(bricks, size);
  for (int64_t& number : mesh.nodeNumbers) number = 7 + 10 * number;
  for (int64_t& number : mesh.elementNumbers) number = 100 + 3 * number;
  solver::Group lower{"lower", 3, {}, {}}, upper{"upper", 3, {}, {}};
  for (int32_t e = 0; e < mesh.elements(); ++e) (2 * e < mesh.elements() ? lower : upper).elements.push_back(e);
  std::erase_if(mesh.groups, [](const solver::Group& group) { return group.name == "all" || group.name == "surface"; });
  mesh.groups.push_back(lower);
  mesh.groups.push_back(upper);
  return mesh;
}

// A bar that stands on its fixed foot and is thrown downwards; box.msh stands beside the case.
constexpr const char* barCase = R"(mesh = "box.msh"

[[material]]
name = "rubber"
density = 1000
C10 = 1e6
D1 = 1e-7

[[section]]
group = "lower"
material = "rubber"

[[section]]
group = "upper"
material = "rubber"

[[fix]]
group = "z0"
components = ["x", "y", "z"]

[[initial_velocity]]
velocity = [0, 0, -1]

[control]
end_time = 0.05
)";

// Columns of a history by their names.
inline std::map<std::string, std::vector<double>> readHistory(const std::filesystem::path& file) {
  const std::vector<std::string> lines = linesOf(readFile(file));
  const std::vector<std::string> names = partsOf(lines.at(0), ",");
  std::map<std::string, std::vector<double>> columns;
  for (std::size_t k = 1; k < lines.size(); ++k) {
    const std::vector<std::string> values = partsOf(lines[k], ",");
    if (values.size() != names.size()) throw std::runtime_error("line of another length: " + lines[k]);
    for (std::size_t c = 0; c < names.size(); ++c) columns[names[c]].push_back(std::stod(values[c]));
  }
  return columns;
}

// Waits for the second time of fields; false when it does not come.
inline bool isUnderWay(const std::filesystem::path& statusFile) {
  for (int wait = 0; wait < 3000; ++wait) {
    if (std::filesystem::exists(statusFile) && countOf("Status ", readFile(statusFile)) > 1) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  return false;
}

} // namespace sharedanalysis::test
