// Bounds for the stable increment of built-in user materials that more than a few constants decide.
#pragma once

#include "solver/model/user_materials.h"

namespace sharedanalysis::solver {

// The steepest slope of curves of (stress, strain).
double steepest(const double* rows, std::size_t count);

// Viscosity of foams whose curves go with the rate: change of the Cauchy stress with the rate of deformation, Pa s.
double rateSensitiveViscosity(const UserState& s);
double fuChangViscosity(const UserState& s);
double orthotropicFuChangViscosity(const UserState& s);

// Spatial stiffness of sheets in their plane.
double fabricStiffness(const UserState& s);
double plyStiffness(const UserState& s);

} // namespace sharedanalysis::solver
