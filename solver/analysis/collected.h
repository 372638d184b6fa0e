// What results are made of: motion, reactions and values of bricks of this rank, and their sums over all.
#pragma once

#include "solver/analysis/state.h"
#include "solver/analysis/team.h"

#include <array>

namespace sharedanalysis::solver {

struct Collected {
  std::vector<double>
      velocity; // (3, nodes), internal numbering, of the own nodes, at the present time; none without contacts,
                // where it is found again when it is asked for
  std::vector<double> reactions; // of the prescribed components
  // Sums over the whole model, on every rank.
  Energies energies;
  std::array<double, 3> linearMomentum{}, angularMomentum{}; // the latter about the origin
  std::vector<double> measures;                              // those of the case: of its loads, planes and damping
};

// Every rank calls it.  The domains change in their work arrays alone, contacts in their present forces.
Collected collect(const Layout& layout, const NodeState& nodes, Outside& outside, const Course& course,
                  std::vector<DomainState>& domains, Team& team);

// The chosen fields in the numbering of the mesh, of its part with several ranks: of all its nodes, and of the bricks that this rank
// speaks for.
struct FieldArrays {
  std::vector<double> displacement, velocity, reaction, stress, elementEnergy, elementMask;

  // Every rank calls it.  The domains change in their work arrays alone.
  void fill(unsigned choice, const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
            const Course& course, const Collected& collected, std::vector<DomainState>& domains, Team& team);
  Fields spans() const { return {displacement, velocity, reaction, stress, elementEnergy, elementMask}; }
};

} // namespace sharedanalysis::solver
