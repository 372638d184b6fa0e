// Set-up of the analysis: blocks and domains, masses, prescribed motion and initial velocities.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Coordinates of the nodes; masses and velocities follow.
NodeState referenceNodes(const Layout& layout);

// Throws InputError for bricks without volume and for sections that do not cover every brick once.
std::vector<DomainState> makeDomainStates(const Layout& layout, const std::vector<double>& X, int threads);

// Where the first stable increment is none: throws InputError that names a brick whose own one is zero, NaN or too small for a double
// even at rest.  Every rank calls it; forces and history are spoilt afterwards.
void checkIncrements(const Layout& layout, const NodeState& nodes, std::vector<DomainState>& domains);

// The smallest increment that the bricks of each material had last, times the safety factor, and the energy that a strain of one takes.
// Every rank calls them.
std::vector<double> incrementsOfMaterials(const Layout& layout, const std::vector<DomainState>& domains);
double energyScaleOf(const Layout& layout, const NodeState& nodes);

// Masses of the nodes; of those that other ranks own only a part.  Throws InputError for a brick whose mass is zero or no number.
void setMasses(const Layout& layout, const std::vector<DomainState>& domains, NodeState& nodes);

// Also tells the domains which components are theirs.
Prescribed makePrescribed(const Layout& layout, std::vector<DomainState>& domains);

// Of all nodes that this rank has; those of other ranks still lack what is prescribed there.
void setVelocities(const Layout& layout, Prescribed& prescribed, NodeState& nodes);

} // namespace sharedanalysis::solver
