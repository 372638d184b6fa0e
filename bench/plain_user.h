// Built-in user materials, point after point, with the branches and the mathematics of the C library.
#pragma once

#include <cstdint>

namespace plain {

// The block of a solid material: 11 22 33 12 23 13, deformation gradient of nine components.
struct MaterialBlock {
  const double *props, *density, *strainInc, *defgrad, *stressOld, *stateOld, *internalOld, *inelasticOld;
  double *stress, *state, *internal, *inelastic;
  double dt;
};
void jh2(int32_t n, const MaterialBlock& b);
void hjcConcrete(int32_t n, const MaterialBlock& b);
void superelastic(int32_t n, const MaterialBlock& b);

} // namespace plain
