#include "solver/model/model.h"

#include <algorithm>

namespace sharedanalysis::solver {

const Group* Mesh::findGroup(const std::string& name) const {
  const auto found = std::find_if(groups.begin(), groups.end(), [&](const Group& group) { return group.name == name; });
  return found == groups.end() ? nullptr : &*found;
}

} // namespace sharedanalysis::solver
