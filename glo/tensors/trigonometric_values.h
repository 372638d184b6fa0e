// Principal values by the trigonometric solution of the characteristic equation of the scaled deviator.
#pragma once

#include "glo/kernel/fetch.h"
#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/tensor.h"

namespace sa {

// A third of the arcsine of x, to 1e-16.
SA_INLINE double thirdOfArcsine(double x) {
  const double a = __builtin_fabs(x);
  const bool outer = a > 0.5; // there arcsin a = pi/2 - 2 arcsin(sqrt((1 - a)/2))
  const double z = outer ? (1.0 - a) * 0.5 : a * a, s = outer ? __builtin_sqrt(z) : a;
  const double arcsine = s + s * (z * vm::polynomial(z, vm::kAsinCoefficients));
  const double third = outer ? 0.5235987755982988 - 0.6666666666666666 * arcsine : 0.3333333333333333 * arcsine;
  return vm::copysign(third, x);
}

// cos(acos(x)/3), its partners a third of a turn further on, and the third that is minus their sum, in terms of the angle
// phi = asin(x)/3, |phi| <= pi/6, which needs no reduction: (cos phi sqrt 3 + sin phi)/2, (-cos phi sqrt 3 + sin phi)/2 and
// -sin phi.
struct ThirdsOfTurn {
  double k1, k2, k3;
};
SA_INLINE ThirdsOfTurn thirdsOfTurn(double phi) {
  const double z = phi * phi, sine = phi + phi * (z * vm::polynomial(z, vm::kSinCoefficients));
  const double cosine = 1.0 - (0.5 * z - z * z * vm::polynomial(z, vm::kCosCoefficients));
  const double c = 0.8660254037844386 * cosine, s = 0.5 * sine;
  return {s + c, s - c, -sine};
}

// What the passes of the trigonometric solution hand on.
struct TrigonometricScratch {
  double mean[kScratchPoints], radius[kScratchPoints]; // of the tensor scaled by its largest component
  double scale[kScratchPoints];                        // that component
  double x[kScratchPoints];                            // half the determinant of the normalised deviator
  double angle[kScratchPoints];
  double diagonal[kScratchPoints]; // 1.0: the tensor counts as diagonal
};

// load(k) is the tensor of point k, in whatever storage it has.
template <class Points, class Load>
SA_INLINE void trigonometricValues(Points point, int n, Load load, int64_t nblock, double* P) {
  constexpr double kThird = 0.3333333333333333;
  TrigonometricScratch w;
  fetch(point, n, P, P + nblock, P + 2 * nblock);

  forPoints(n, [=, &w](int i) SA_POINT {
    const int k = point(i);
    const Sym<S33> t = load(k);
    const double s11 = t.s11, s22 = t.s22, s33 = t.s33, s12 = t.s12, s23 = t.s23, s13 = t.s13;
    const double direct = vm::max(vm::max(__builtin_fabs(s11), __builtin_fabs(s22)), __builtin_fabs(s33));
    const double shear = vm::max(vm::max(__builtin_fabs(s12), __builtin_fabs(s23)), __builtin_fabs(s13));
    const double largest = vm::max(direct, shear);
    const bool nothing = largest <= vm::kSmallestNormal;
    const double f = nothing ? 0.0 : 1.0 / (largest + (nothing ? 1.0 : 0.0));

    const double b11 = f * s11, b22 = f * s22, b33 = f * s33, b12 = f * s12, b23 = f * s23, b13 = f * s13;
    const double mean = (b11 + b22 + b33) * kThird;
    const double d1 = b11 - mean, d2 = b22 - mean, d3 = b33 - mean;
    const double deviator = vm::max(vm::max(__builtin_fabs(d1), __builtin_fabs(d2)), __builtin_fabs(d3));
    const bool diagonal = deviator * 1.1102230246251565e-12 > shear * f;

    const double q = __builtin_sqrt(((d1 * d1 + d2 * d2 + d3 * d3) * 0.5 + b12 * b12 + b23 * b23 + b13 * b13) * kThird);
    const double r = 2.0 * q;
    const bool spread = r > 1.1102230246251565e-16;
    const double g = spread ? 2.0 / (spread ? r : 1.0) : 0.0;
    const double e1 = g * d1, e2 = g * d2, e3 = g * d3, e12 = g * b12, e23 = g * b23, e13 = g * b13;
    w.mean[i] = mean;
    w.radius[i] = r;
    w.scale[i] = largest;
    const double x = 0.5 * ((e2 * e3 - e23 * e23) * e1 - e3 * e12 * e12 - e2 * e13 * e13) + e12 * e13 * e23;
    w.x[i] = x;
    w.diagonal[i] = diagonal && x == x ? 1.0 : 0.0; // a NaN in the shear passes the comparison
  });
  forPoints(n, [=, &w](int i) SA_POINT { w.angle[i] = thirdOfArcsine(w.x[i]); });
  forPoints(n, [=, &w](int i) SA_POINT {
    // At x = 1 and -1 two values coincide and the angle loses half its digits: they are set exactly.
    const bool upper = w.x[i] >= 0.9999999999999999, lower = w.x[i] <= -0.9999999999999999;
    const ThirdsOfTurn k = thirdsOfTurn(w.angle[i]);
    const double k1 = upper ? -0.5 : (lower ? -1.0 : k.k1);
    const double k2 = upper ? -0.5 : (lower ? 0.5 : k.k2);
    const double k3 = upper ? 1.0 : (lower ? 0.5 : k.k3);
    const double mean = w.mean[i], r = w.radius[i], scale = w.scale[i];
    const bool diagonal = w.diagonal[i] != 0.0;
    const int at = point(i);
    const Sym<S33> t = load(at);
    P[at] = diagonal ? t.s11 : (mean + r * k1) * scale;
    P[at + nblock] = diagonal ? t.s22 : (mean + r * k2) * scale;
    P[at + 2 * nblock] = diagonal ? t.s33 : (mean + r * k3) * scale;
  });
}

template <class Points>
SA_INLINE void valuesS33(Points point, int n, int64_t nblock, const double* S, double* P) {
  trigonometricValues(
      point, n, [=](int64_t k) SA_POINT { return loadTensor<S33>(S, nblock, k); }, nblock, P);
}

} // namespace sa
