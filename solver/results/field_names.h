// Names of the arrays that a run writes, and of their components as they are called in the file of fields.
#pragma once

#include <array>
#include <string_view>

namespace sharedanalysis::solver {

enum class Entity { Model, Node, Element };

struct FieldName {
  Entity entity;
  std::string_view array;
  std::array<std::string_view, 7> components; // as many as there are
  int count;
};

// In the order in which they are written.
constexpr std::array<FieldName, 7> fieldNames{{
    {Entity::Model,
     "energy",
     {"kinetic_energy", "strain_energy", "hourglass_energy", "viscous_energy", "damage_energy", "external_work",
      "total_energy"},
     7},
    {Entity::Node, "displacement", {"displacement_x", "displacement_y", "displacement_z"}, 3},
    {Entity::Node, "velocity", {"velocity_x", "velocity_y", "velocity_z"}, 3},
    {Entity::Node, "reaction", {"reaction_x", "reaction_y", "reaction_z"}, 3},
    {Entity::Element, "stress", {"stress_xx", "stress_yy", "stress_zz", "stress_xy", "stress_yz", "stress_xz"}, 6},
    {Entity::Element, "strain_energy_density", {"strain_energy_density"}, 1},
    {Entity::Element, "mask", {"mask"}, 1},
}};

} // namespace sharedanalysis::solver
