// What results hold beyond the fields of the analysis: principal stresses with their directions, and how the material has
// turned.  Both are found from the fields when these are written.
#pragma once

#include "solver/analysis/analysis.h"

#include <array>
#include <string_view>
#include <vector>

namespace sharedanalysis::solver {

// Of bricks, in the order in which they are written.  Rotations are unit quaternions, the scalar w last, that turn the global
// axes into the principal or the material ones; direction k is the unit vector of principal stress k.
constexpr std::array<std::string_view, 20> derivedFieldNames{
    "principal_stress_1",      "principal_stress_2",      "principal_stress_3", // Pa, decreasing
    "principal_rotation_x",    "principal_rotation_y",    "principal_rotation_z",    "principal_rotation_w",
    "principal_direction_1_x", "principal_direction_1_y", "principal_direction_1_z", //
    "principal_direction_2_x", "principal_direction_2_y", "principal_direction_2_z", //
    "principal_direction_3_x", "principal_direction_3_y", "principal_direction_3_z", //
    "material_orientation_x",  "material_orientation_y",  "material_orientation_z",  "material_orientation_w"};

// The derived fields of the listed bricks (indices of the mesh, increasing): (elements, derivedFieldNames), brick fastest.
// The material's axes are the global ones of the undeformed model, turned by the rotation R of F = V R, the mean deformation
// gradient of the brick.  A masked brick has no stress and keeps the global axes.
// Without stress or displacement the fields that are made of them are 0.
std::vector<double> derivedFields(const Mesh& mesh, const std::vector<int32_t>& elements, const Fields& fields);

} // namespace sharedanalysis::solver
