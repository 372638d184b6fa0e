// What results are made of, brought from all ranks to the root: motion, reactions and values of bricks, and their sums.
#pragma once

#include "solver/analysis/state.h"
#include "solver/analysis/team.h"

#include <array>

namespace sharedanalysis::solver {

struct Collected {
  std::vector<double> x, velocity;                      // (3, nodes), internal numbering, at the present time
  std::vector<double> reactions, work, prescribedSpeed; // of the prescribed components
  std::vector<double> bricks;                           // (kBrickValues, bricks)
  std::vector<double> measures;                         // those of the case: of its loads, planes and damping
  Energies energies;                                    // on every rank
};
// Volume, strain energy density, hourglass, viscous and damage energy, mask, stress.
inline constexpr int kBrickValues = 12;

// Every rank calls it.  The domains change in their work arrays alone, contacts in their present forces.
Collected collect(const Layout& layout, const NodeState& nodes, Outside& outside, const Course& course,
                  std::vector<DomainState>& domains, Team& team);

// On the root.
std::array<double, 3> linearMomentum(const Layout& layout, const NodeState& nodes, const Collected& collected);
std::array<double, 3> angularMomentum(const Layout& layout, const NodeState& nodes, const Collected& collected);

// The fields in the numbering of the mesh.
struct FieldArrays {
  std::vector<double> displacement, velocity, reaction, stress, elementEnergy, elementMask;

  void fill(const Layout& layout, const std::vector<double>& X, const Prescribed& prescribed,
            const Collected& collected);
  Fields spans() const { return {displacement, velocity, reaction, stress, elementEnergy, elementMask}; }
};

} // namespace sharedanalysis::solver
