// Set-up of the analysis: blocks and domains, masses, prescribed motion and initial velocities.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Coordinates of the nodes; masses and velocities follow.
NodeState referenceNodes(const Layout& layout);

// Throws InputError for bricks without volume and for sections that do not cover every brick once.
std::vector<DomainState> makeDomainStates(const Layout& layout, const std::vector<double>& X, int threads);

// Masses of the nodes that this rank owns; the root has all of them.
void setMasses(const Layout& layout, const std::vector<DomainState>& domains, NodeState& nodes);

// The order of (node, minor) pairs, by position, that one rank alone would have.
std::vector<std::size_t> orderOfOneRank(const Layout& layout, const std::vector<std::pair<int32_t, int32_t>>& places);

// Also tells the domains which components are theirs.
Prescribed makePrescribed(const Layout& layout, std::vector<DomainState>& domains);

void setVelocities(const Layout& layout, Prescribed& prescribed, NodeState& nodes);

} // namespace sharedanalysis::solver
