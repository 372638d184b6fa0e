// What a case asks to be followed of a group of the mesh over time.
#pragma once

#include "solver/model/loads.h"

#include <array>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// In the order of the columns that they make.
enum class GroupQuantityKind { Displacement, Velocity, Reaction, Energy };
struct GroupQuantity {
  const char* key;
  GroupQuantityKind kind;
  Members members;
  std::array<const char*, 5> columns; // as many as there are, before the name of the group
  int count;
};
inline constexpr std::array<GroupQuantity, 4> groupQuantities{{
    {"displacement",
     GroupQuantityKind::Displacement,
     Members::Any,
     {"displacement_x_", "displacement_y_", "displacement_z_"},
     3},
    {"velocity", GroupQuantityKind::Velocity, Members::Any, {"velocity_x_", "velocity_y_", "velocity_z_"}, 3},
    {"reaction", GroupQuantityKind::Reaction, Members::Any, {"reaction_x_", "reaction_y_", "reaction_z_"}, 3},
    {"energy",
     GroupQuantityKind::Energy,
     Members::Bricks,
     {"strain_energy_", "hourglass_energy_", "viscous_energy_", "damage_energy_", "failed_bricks_"},
     5},
}};

struct GroupHistory {
  std::string name, group;
  std::vector<const GroupQuantity*> quantities;
};

} // namespace sharedanalysis::solver
