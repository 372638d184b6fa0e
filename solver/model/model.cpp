#include "solver/model/model.h"

#include <algorithm>

namespace sharedanalysis::solver {

const Group* Mesh::findGroup(const std::string& name) const {
  const auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& group) { return group.name == name; });
  return found == groups.end() ? nullptr : &*found;
}

MeshPart::Members Mesh::membersOf(const Group& group) const {
  if (part) return part->groups.at(static_cast<std::size_t>(&group - groups.data()));
  return {static_cast<int64_t>(group.nodes.size()), static_cast<int64_t>(group.elements.size()),
          static_cast<int64_t>(group.faces.size() / 4)};
}

} // namespace sharedanalysis::solver
