// Set-up of the analysis: blocks and domains, masses, prescribed motion and initial velocities.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Coordinates of the nodes; masses and velocities follow.
NodeState referenceNodes(const Layout& layout);

// Throws InputError for bricks without volume and for sections that do not cover every brick once.
std::vector<DomainState> makeDomainStates(const Layout& layout, const std::vector<double>& X, int threads);

// Masses of the nodes; of those that other ranks own only a part.
void setMasses(const Layout& layout, const std::vector<DomainState>& domains, NodeState& nodes);

// Also tells the domains which components are theirs.
Prescribed makePrescribed(const Layout& layout, std::vector<DomainState>& domains);

// Of all nodes that this rank has; those of other ranks still lack what is prescribed there.
void setVelocities(const Layout& layout, Prescribed& prescribed, NodeState& nodes);

} // namespace sharedanalysis::solver
