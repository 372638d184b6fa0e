// What a hyperelastic kernel reads and writes in each state of stress: where the left stretch of a point comes from, what
// guards its volume, and how the stress is stored.
//   solid                       V in S33, six components of stress
//   generalised plane strain    V in S31, out-of-plane stretch among it; 11 22 33 12
//   plane stress                V in the plane in S21 and the stretch of the thickness; 11 22 12
//   uniaxial                    axial stretch and the lateral one, equal in both directions; the axial stress
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/tensor.h"

namespace sa {

// The stretch of the thickness that keeps the volume of a plane area ratio; 1 where the area is nothing or turned over.
SA_INLINE double isochoricThickness(double area) {
  const bool sound = area > vm::kSmallestNormal;
  const double r = 1.0 / (sound ? area : 1.0);
  return area != area ? area : r;
}

// ---- stretch of point k

template <class S>
struct StretchIn {
  using Storage = S;
  const double* V;
  int64_t n;
  SA_INLINE Sym<S> operator()(int64_t k) const { return loadTensor<S>(V, n, k); }
};
struct PlaneStretchIn {
  using Storage = S31;
  const double *V, *thickness;
  int64_t n;
  SA_INLINE Sym<S31> operator()(int64_t k) const { return {V[k], V[k + n], thickness[k], V[k + 2 * n], 0.0, 0.0}; }
};
struct AxialStretchIn {
  using Storage = S30;
  const double *axial, *lateral;
  SA_INLINE Sym<S30> operator()(int64_t k) const { return {axial[k], lateral[k], lateral[k], 0.0, 0.0, 0.0}; }
};
// Two principal stretches of an incompressible membrane.
struct MembraneIn {
  using Storage = S30;
  const double* V;
  int64_t n;
  SA_INLINE Sym<S30> operator()(int64_t k) const {
    const double a = V[k], b = V[k + n];
    return {a, b, isochoricThickness(a * b), 0.0, 0.0, 0.0};
  }
};
// The elastic stretch: free expansion by the strain of the point is taken out.
template <class In>
struct HeatedIn {
  using Storage = typename In::Storage;
  In stretch;
  const double* expansion;
  SA_INLINE Sym<Storage> operator()(int64_t k) const { return (1.0 / (1.0 + expansion[k])) * stretch(k); }
};

// ---- volume ratio of point k from its determinant

// A determinant below the bound is raised by one.
struct AddOne {
  double bound;
  SA_INLINE double operator()(int64_t, double det) const { return det < bound ? det + 1.0 : det; }
};
// The stretches keep the volume by their making.
struct Isochoric {
  SA_INLINE double operator()(int64_t, double) const { return 1.0; }
};
// A determinant below 1e-9 sets the flag of its point, and a flagged point is undeformed in volume from then on.
struct VolumeFlag {
  double* flag;
  SA_INLINE double operator()(int64_t k, double det) const {
    const double old = flag[k], guard = det < 1e-9 ? 1.0 : old;
    flag[k] = guard;
    return guard + (1.0 - guard) * det;
  }
};

// ---- stress of point k

template <class S>
struct StressOut {
  double* stress;
  int64_t n;
  SA_INLINE void operator()(int64_t k, const Sym<S>& t) const { storeTensor<S>(stress, n, k, t); }
};
// The directions without stress are closed by a pressure: what the stretches leave there is taken off.
struct PlaneStressOut {
  double* stress;
  int64_t n;
  SA_INLINE void operator()(int64_t k, const Sym<S31>& t) const {
    stress[k] = t.s11 - t.s33;
    stress[k + n] = t.s22 - t.s33;
    stress[k + 2 * n] = t.s12;
  }
};
struct AxialStressOut {
  double* stress;
  SA_INLINE void operator()(int64_t k, const Sym<S30>& t) const { stress[k] = t.s11 - t.s22; }
};

// ---- free stretches

// Newton's step in the logarithm of a free stretch, at most a half either way.  Where the material has no stiffness the step is
// a quarter against the residual: a direction in tension contracts.
SA_INLINE double stretchStep(double residual, double slope) {
  const bool stiff = slope > vm::kSmallestNormal;
  const double step = residual / vm::select(stiff, slope, 1.0);
  const double against = vm::select(residual == 0.0, 0.0, vm::copysign(0.25, residual) + 0.0 * residual); // NaN stays
  const double chosen = vm::select(stiff, vm::max(-0.5, vm::min(0.5, step)), against);
  return vm::select(slope == slope, chosen, slope);
}

} // namespace sa
