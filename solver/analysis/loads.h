// Loads in the analysis: the forces of nodes that they make, and their work.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Nodes in internal numbering at undeformed coordinates X, with the shares that do not change; also tells the domains which nodes and faces are theirs.
// The domains know their blocks and masses.  Throws InputError for faces that no brick has or that lie between two.
Loads makeLoads(const Layout& layout, const std::vector<double>& X, std::vector<DomainState>& domains);

// Sets the loads at the present positions and the time of the domain, and takes them from its forces, which then are internal
// less external ones.
void applyLoads(const Case& definition, const NodeState& nodes, DomainState& state, Loads& loads);

// Work of the loads of a domain at velocities v over a time.
void addWork(const DomainState& state, const std::vector<double>& v, double duration, Loads& loads);

// Work of each load so far, on the root; every rank calls it.
std::vector<double> workOfLoads(const Layout& layout, const NodeState& nodes, const Course& course, const Loads& loads);

} // namespace sharedanalysis::solver
