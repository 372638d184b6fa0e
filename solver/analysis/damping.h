// Damping in proportion to mass: a force -a m v on every node, with its energy, and the coefficient that brings a body to rest.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// Velocities of the nodes of a domain after a kick without damping over the time `between`: those with it.  The force goes with
// the mean of the velocities before and after, which leaves the stable increment as it is.
void damp(const DomainState& state, const std::vector<double>& before, double coefficient, double between,
          std::vector<double>& v);

// Adds what damping takes from the nodes of a domain over the second half of the increment before and the first of the next.
void addDampingEnergy(const DomainState& state, const std::vector<double>& before, double coefficient,
                      double lastIncrement, double step, NodeState& nodes);

// All of it so far, on the root, from the present velocities of all nodes there; every rank calls it.
double dampingEnergy(const Layout& layout, const NodeState& nodes, const Course& course,
                     const std::vector<double>& now);

// Twice the frequency that the present motion has by its Rayleigh quotient, from the change of internal forces in the last
// increment: near the critical damping of the lowest mode once the others are gone (P. Underwood, Dynamic relaxation, in:
// Computational methods for transient analysis, 1983).  Every rank calls it after every increment; it looks at every tenth.
void adaptDamping(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                  const std::vector<DomainState>& domains, Course& course);

} // namespace sharedanalysis::solver
