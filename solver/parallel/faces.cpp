#include "solver/parallel/faces.h"

#include "solver/model/text.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <map>

namespace sharedanalysis::solver {
namespace {

using Corners = std::array<int32_t, 4>;

// Counter-clockwise as seen from outside.
constexpr int kCorners[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};

Corners sorted(Corners corners) {
  std::sort(corners.begin(), corners.end());
  return corners;
}

} // namespace

std::vector<BrickFace> facesOf(const Mesh& mesh, const Group& group, const Ranks& ranks) {
  struct Wanted {
    int64_t times = 0; // in the group
    std::vector<BrickFace> owners;
  };
  std::map<Corners, Wanted> wanted;
  for (std::size_t k = 0; k + 4 <= group.faces.size(); k += 4)
    ++wanted[sorted({group.faces[k], group.faces[k + 1], group.faces[k + 2], group.faces[k + 3]})].times;
  std::vector<bool> touched(mesh.nodeNumbers.size(), false);
  for (const int32_t node : group.nodes) touched[static_cast<std::size_t>(node)] = true;
  for (int32_t brick = 0; brick < mesh.elements(); ++brick) {
    const int32_t* nodes = &mesh.connectivity[8 * static_cast<std::size_t>(brick)];
    for (const auto& corners : kCorners) {
      const Corners face{nodes[corners[0]], nodes[corners[1]], nodes[corners[2]], nodes[corners[3]]};
      if (!touched[static_cast<std::size_t>(face[0])] || !touched[static_cast<std::size_t>(face[1])]) continue;
      const auto found = wanted.find(sorted(face));
      if (found != wanted.end()) found->second.owners.push_back({brick, face});
    }
  }
  std::vector<BrickFace> faces;
  Faults faults;
  int64_t known = 0;
  for (const auto& [corners, face] : wanted) {
    const std::vector<BrickFace>& owners = face.owners;
    if (owners.size() > 1)
      faults.add(mesh.elementPosition(owners[0].brick),
                 "a face of group \"" + group.name + "\" is between bricks " +
                     std::to_string(mesh.elementNumbers[static_cast<std::size_t>(owners[0].brick)]) + " and " +
                     std::to_string(mesh.elementNumbers[static_cast<std::size_t>(owners[1].brick)]) +
                     ", expected faces with a brick on one side");
    if (!owners.empty() && mesh.ownsNode(corners[0])) known += face.times; // one rank alone counts it
    faces.insert(faces.end(), owners.begin(), owners.end());
  }
  faults.throwFirst(ranks);
  const int64_t strange = mesh.membersOf(group).faces - ranks.sum(known);
  if (strange > 0)
    throw InputError("group \"" + group.name + "\" has " + counted(static_cast<std::size_t>(strange), "face") +
                     " that no brick has, expected quadrilaterals on the four corners of a brick's face");
  std::sort(faces.begin(), faces.end());
  return faces;
}

} // namespace sharedanalysis::solver
