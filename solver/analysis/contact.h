// Contact of nodes with rigid planes: a node that would end an increment behind a plane ends it on the plane.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Also tells the domains which contacts are theirs.  Throws InputError for nodes that are behind a plane at the start,
// and for those that what is prescribed leads behind it.
Contacts makeContacts(const Layout& layout, const std::vector<double>& X, const Prescribed& prescribed,
                      std::vector<DomainState>& domains);

// The course of a plane over one increment.
struct PlaneMotion {
  std::array<double, 3> end{}; // a point of it at the end of the increment
  std::array<double, 3> way{}; // that it went in the increment
};
PlaneMotion motionOf(const RigidPlane& plane, double time, double step);

// Corrects velocities over the increment that begins at `course` and lasts `step`, and adds up energies; `before` are those of
// the domain's nodes in the increment before.
void touch(const Case& definition, const Course& course, double step, const DomainState& state,
           const std::vector<double>& before, Prescribed& prescribed, NodeState& nodes, Contacts& contacts);

// The forces at the present time, as those of an increment like the last one would be; `now` are velocities without them,
// which they change.
void touchNow(const Case& definition, const Course& course, const DomainState& state, const Prescribed& prescribed,
              const NodeState& nodes, std::vector<double>& now, Contacts& contacts);

// Of each plane and of all, on the root.
struct ContactSums {
  struct OfPlane {
    double work = 0; // of the plane on the body
    std::array<double, 3> force{};
  };
  std::vector<OfPlane> planes;
  double friction = 0, impact = 0; // J, taken from the body
};
// Every rank calls it after touchNow.
ContactSums sumContacts(const Layout& layout, const Course& course, const NodeState& nodes, const Contacts& contacts);

} // namespace sharedanalysis::solver
