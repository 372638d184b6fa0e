// What hyperelastic kernels compute, for any model and state of stress: energy, invariants, stress, moduli.
//
// Each works through a piece of the block in short passes, split at the logarithm and the exponential of J^(-2/3): their
// chains of dependent operations are long, and short bodies let several vectors overlap.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/tensor.h"
#include "spx/impl/materials/hyper_models.h"
#include "spx/impl/materials/hyper_states.h"

namespace sa {

// J^(-2/3) for the n volume ratios of a piece.
SA_INLINE void isochoricFactors(int n, const double (&J)[kScratchPoints], double (&factor)[kScratchPoints]) {
  forPoints(n, [&](int i) SA_POINT { factor[i] = J[i]; });
  if (vm::logOfPiece(n, factor)) // at most 710, so that the exponential is far from its ends
    forPoints(n, [&](int i) SA_POINT { factor[i] = vm::expInside(-0.6666666666666666 * factor[i]); });
  else
    forPoints(n, [&](int i) SA_POINT { factor[i] = vm::expClamped(-0.6666666666666666 * factor[i]); });
}

// body(k, J, Bbar) for every point k: volume ratio and isochoric left Cauchy-Green tensor.  What it returns marks the point;
// whether a point is marked.
template <class In, class Guard, class Body>
SA_INLINE bool forDeformations(int nblock, In stretch, Guard guard, Body body) {
  bool marked = false;
  forPieces(nblock, [=, &marked](int start, int n) SA_POINT {
    double J[kScratchPoints], factor[kScratchPoints], mark[kScratchPoints];
    forPoints(n, [=, &J](int i) SA_POINT { J[i] = guard(start + i, determinant(stretch(start + i))); });
    isochoricFactors(n, J, factor);
    forPoints(n, [=, &J, &factor, &mark](int i)
                     SA_POINT { mark[i] = body(start + i, J[i], factor[i] * square(stretch(start + i))); });
    for (int i = 0; i < n; ++i) marked = marked || mark[i] != 0.0;
  });
  return marked;
}

// Isochoric energy and 1/J.
template <class In, class Model>
SA_INLINE void isochoricEnergy(int nblock, In stretch, Model model, double* energy, double* rJ) {
  forDeformations(nblock, stretch, AddOne{vm::kSmallestNormal}, [=](int k, double J, const auto& Bbar) SA_POINT {
    energy[k] = model(k).energy(trace(Bbar), secondInvariant(Bbar));
    rJ[k] = 1.0 / J;
    return 0.0;
  });
}

template <class In, class Guard>
SA_INLINE void isochoricInvariants(int nblock, In stretch, Guard guard, double* I1, double* I2, double* rJ) {
  forDeformations(nblock, stretch, guard, [=](int k, double J, const auto& Bbar) SA_POINT {
    I1[k] = trace(Bbar);
    I2[k] = secondInvariant(Bbar);
    rJ[k] = 1.0 / J;
    return 0.0;
  });
}

// Isochoric Cauchy stress of a point: dev((2/J)[(U1 + I1 U2) Bbar - U2 Q]), Q = Bbar Bbar, plus p in the direct components.
template <class Storage>
SA_INLINE Sym<Storage> cauchyStress(const Sym<Storage>& Bbar, const Sym<Storage>& Q, double I1, double I2, double rJ,
                                    const FirstDerivatives& U, double p) {
  const double a = 2.0 * U.U2 * rJ, b = 2.0 * U.U1 * rJ + I1 * a;
  const double third = (I1 * I1 - 2.0 * I2) * 0.3333333333333333, mean = I1 * 0.3333333333333333;
  Sym<Storage> t{};
  t.s11 = p - (Q.s11 - third) * a + (Bbar.s11 - mean) * b;
  t.s22 = p - (Q.s22 - third) * a + (Bbar.s22 - mean) * b;
  t.s33 = p - (Q.s33 - third) * a + (Bbar.s33 - mean) * b;
  if constexpr (Storage::k12) t.s12 = Bbar.s12 * b - Q.s12 * a;
  if constexpr (Storage::k23and13) {
    t.s23 = Bbar.s23 * b - Q.s23 * a;
    t.s13 = Bbar.s13 * b - Q.s13 * a;
  }
  return t;
}

// The largest of the diagonal terms of the isochoric tangent that the storage has: 11, 22, 33, 12, 13, 23.
template <class Storage>
SA_INLINE double stiffnessBound(const Sym<Storage>& Bbar, const Sym<Storage>& Q, double I1, double rJ,
                                const FirstDerivatives& U, const SecondDerivatives& W) {
  const double w4 = 4.0 * rJ, w2 = 2.0 * rJ;
  const double A = w4 * (W.U11 + 2.0 * I1 * W.U12 + I1 * I1 * W.U22);
  const double Bq = w4 * W.U22, Cm = -w4 * (I1 * W.U22 + W.U12);
  const double E = w2 * (U.U1 + I1 * U.U2), F = -w2 * U.U2, G = w4 * U.U2;
  const auto direct = [=](double b, double q)
                          SA_POINT { return (b * A + 2.0 * E + 2.0 * q * Cm) * b + (q * Bq + 2.0 * F) * q; };
  const auto shear = [=](double b, double q, double bi, double bj, double qi, double qj) SA_POINT {
    return (2.0 * A * b + 4.0 * Cm * q) * b + (bi + bj) * E + (qi + qj) * F + (b * b - bi * bj) * G + 2.0 * Bq * q * q;
  };
  const double d = vm::max(vm::max(direct(Bbar.s11, Q.s11), direct(Bbar.s22, Q.s22)), direct(Bbar.s33, Q.s33));
  if constexpr (!Storage::k12)
    return d;
  else {
    const double s12 = shear(Bbar.s12, Q.s12, Bbar.s11, Bbar.s22, Q.s11, Q.s22);
    if constexpr (!Storage::k23and13)
      return vm::max(d, s12);
    else {
      const double s13 = shear(Bbar.s13, Q.s13, Bbar.s11, Bbar.s33, Q.s11, Q.s33);
      const double s23 = shear(Bbar.s23, Q.s23, Bbar.s22, Bbar.s33, Q.s22, Q.s33);
      return vm::max(d, vm::max(vm::max(s12, s13), s23));
    }
  }
}

// Cauchy stress into `stress(k, tensor)`.
template <class In, class Guard, class Model, class Out>
SA_INLINE void isochoricStress(int nblock, In stretch, Guard guard, Model model, Out stress) {
  forDeformations(nblock, stretch, guard, [=](int k, double J, const auto& Bbar) SA_POINT {
    const double I1 = trace(Bbar), I2 = secondInvariant(Bbar);
    const auto material = model(k);
    stress(k, cauchyStress(Bbar, square(Bbar), I1, I2, 1.0 / J, material.first(I1, I2), material.volumetric(J).p));
    return 0.0;
  });
}

// Stiffness bound and bulk term, and, where `stress` has somewhere to put it, Cauchy stress; whether a point is locked.
struct NoStress {};
template <class In, class Guard, class Model, class Out>
SA_INLINE bool stressAndModuli(int nblock, In stretch, Guard guard, Model model, Out stress, double* bound,
                               double* bulk) {
  return forDeformations(nblock, stretch, guard, [=](int k, double J, const auto& Bbar) SA_POINT {
    const auto Q = square(Bbar);
    const double I1 = trace(Bbar), I2 = secondInvariant(Bbar), rJ = 1.0 / J;
    const auto material = model(k);
    const FirstDerivatives U = material.first(I1, I2);
    const VolumetricStress volume = material.volumetric(J);
    if constexpr (!__is_same(Out, NoStress)) stress(k, cauchyStress(Bbar, Q, I1, I2, rJ, U, volume.p));
    bound[k] = stiffnessBound(Bbar, Q, I1, rJ, U, material.second(I1, I2));
    bulk[k] = 3.0 * J * (volume.p + volume.slope);
    if constexpr (material.kLocks)
      return material.locked(I1, I2);
    else
      return 0.0;
  });
}

// The Kirchhoff stress of the free directions, and its derivative with respect to the logarithm of the free stretch while the
// others stay: what a step towards a state without that stress needs.  kFree is 1 (the thickness) or 2 (both lateral ones).
template <int kFree, class In, class Guard, class Model>
SA_INLINE void freeStress(int nblock, In stretch, Guard guard, Model model, double* residual, double* slope) {
  constexpr double third = 1.0 / 3.0, step = 2.0 - 2.0 * kFree * third; // d ln b for the logarithm of the free stretch
  forDeformations(nblock, stretch, guard, [=](int k, double J, const auto& Bbar) SA_POINT {
    const double I1 = trace(Bbar), I2 = secondInvariant(Bbar), b = Bbar.s33;
    const auto material = model(k);
    const FirstDerivatives U = material.first(I1, I2);
    const SecondDerivatives W = material.second(I1, I2);
    const VolumetricStress volume = material.volumetric(J);
    // tau = J p + 2 (U1 A1 + U2 A2), and dI1 = 2 kFree A1, dI2 = 2 kFree A2
    const double A1 = b - third * I1, A2 = (I1 - b) * b - 2.0 * third * I2;
    const double dI1 = 2.0 * kFree * A1, dI2 = 2.0 * kFree * A2;
    const double dA1 = step * b - third * dI1;
    const double dA2 = (dI1 - step * b) * b + (I1 - b) * step * b - 2.0 * third * dI2;
    residual[k] = J * volume.p + 2.0 * (U.U1 * A1 + U.U2 * A2);
    slope[k] = kFree * J * (volume.p + J * volume.slope) +
               2.0 * ((W.U11 * dI1 + W.U12 * dI2) * A1 + (W.U12 * dI1 + W.U22 * dI2) * A2 + U.U1 * dA1 + U.U2 * dA2);
    return 0.0;
  });
}

} // namespace sa
