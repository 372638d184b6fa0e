// Modes of tests of a material: the stretches of a point, and the nominal stress that a test measures.
#pragma once

#include "solver/model/materials.h"

#include <array>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

//   Uniaxial     (s, a, a), a free          Equibiaxial  (s, s, a), a free
//   Planar       (s, 1, a), a free          Volumetric   (s, s, s)
//   Shear        simple shear by the amount s, the volume kept
//   Confined     (s, 1, 1)
enum class Mode { Uniaxial, Equibiaxial, Planar, Volumetric, Shear, Confined };
const std::vector<std::string>& modeNames();

using Stretch = std::array<double, 6>;  // left stretch, S33
using Gradient = std::array<double, 9>; // deformation gradient, row by row

// A sheet, whose model knows no stress across, keeps its thickness.
int freeDirections(Mode mode, bool isSheet);
Stretch stretchOf(Mode mode, double s, double free, bool isSheet);
Gradient gradientOf(Mode mode, double s, const Stretch& V);
// The free stretch that keeps the volume.
double isochoric(Mode mode, double s);
// Of the Cauchy stress: that over the undeformed area; of shear the shear stress.
double nominalStress(Mode mode, double s, double free, bool isSheet, const std::array<double, 6>& cauchy);

// Nominal stresses of a material that keeps no history, at any stretches, each on its own; NaN where no free stretch without
// stress is found.  `free` holds free stretches to start from, 0 for those that keep the volume, and takes the ones found.
std::vector<double> nominalStresses(const Material& material, Mode mode, const std::vector<double>& stretches,
                                    std::vector<double>& free);

} // namespace sharedanalysis::solver
