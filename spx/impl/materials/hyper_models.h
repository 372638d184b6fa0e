// Strain-energy models of hyperelasticity: the constants of one point and its energy derivatives in the invariants I1, I2 of
// the isochoric left Cauchy-Green tensor.  A model is
//   energy(I1, I2)                    isochoric strain energy per undeformed volume
//   first(I1, I2)    {U1, U2}         dU/dI1, dU/dI2
//   second(I1, I2)   {U11, U12, U22}
//   volumetric(J)    {p, dp/dJ}       volumetric stress and its slope
// and, where the chains of the material lock at a finite stretch,
//   locked(I1, I2)                    1.0 where the point is beyond it
// A kernel asks for what it needs; constants that it does not pass stay 0.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"

namespace sa {

struct FirstDerivatives {
  double U1, U2;
};
struct SecondDerivatives {
  double U11, U12, U22;
};
struct VolumetricStress {
  double p, slope;
};

// Constants of a model as a list, from which its kernels make parameters, arguments and the values of a point.
#define SA_POLYNOMIAL2(X) X(C10) X(C01) X(C20) X(C11) X(C02)
#define SA_POLYNOMIAL2_VOLUME(X) SA_POLYNOMIAL2(X) X(rD1) X(rD2)
// clang-format off
#define SA_POLYNOMIAL6(X)                                                                                              \
  X(C10) X(C01) X(C20) X(C11) X(C02) X(C30) X(C21) X(C12) X(C03) X(C40) X(C31) X(C22) X(C13) X(C04)                    \
  X(C50) X(C41) X(C32) X(C23) X(C14) X(C05) X(C60) X(C51) X(C42) X(C33) X(C24) X(C15) X(C06)
// clang-format on
#define SA_POLYNOMIAL6_VOLUME(X) SA_POLYNOMIAL6(X) X(rD1) X(rD2) X(rD3) X(rD4) X(rD5) X(rD6)
#define SA_ARRUDA_BOYCE(X) X(mu) X(lambdaM)
#define SA_ARRUDA_BOYCE_VOLUME(X) SA_ARRUDA_BOYCE(X) X(D)
#define SA_VAN_DER_WAALS(X) X(mu) X(lambdaM) X(a) X(beta)
#define SA_VAN_DER_WAALS_VOLUME(X) SA_VAN_DER_WAALS(X) X(D)
#define SA_GIVEN_ISOCHORIC(X) X(U1) X(U2)
#define SA_GIVEN_FIRST(X) SA_GIVEN_ISOCHORIC(X) X(p)
#define SA_GIVEN_SECOND(X) SA_GIVEN_FIRST(X) X(U11) X(U12) X(U22) X(dp)
#define SA_CURVE_ISOCHORIC(X) X(U1)
#define SA_CURVE_FIRST(X) X(U1) X(p)
#define SA_CURVE_SECOND(X) X(U1) X(p) X(U11) X(dp)

// U = C10 x + C01 y + C20 x x + C11 x y + C02 y y with x = I1 - 3, y = I2 - 3, and (J-1)^2/D1 + (J-1)^4/D2.
struct Polynomial2 {
  static constexpr bool kLocks = false;
  double C10, C01, C20, C11, C02, rD1 = 0.0, rD2 = 0.0;

  SA_INLINE double energy(double I1, double I2) const {
    const double x = I1 - 3.0, y = I2 - 3.0;
    return C10 * x + C01 * y + C20 * x * x + C11 * x * y + C02 * y * y;
  }
  SA_INLINE FirstDerivatives first(double I1, double I2) const {
    const double x = I1 - 3.0, y = I2 - 3.0;
    return {C10 + 2.0 * C20 * x + C11 * y, C01 + C11 * x + 2.0 * C02 * y};
  }
  SA_INLINE SecondDerivatives second(double, double) const { return {2.0 * C20, C11, 2.0 * C02}; }
  SA_INLINE VolumetricStress volumetric(double J) const {
    const double e = J - 1.0;
    return {2.0 * e * rD1 + 4.0 * (e * e * e) * rD2, 2.0 * rD1 + 12.0 * (e * e) * rD2};
  }
};

// c0 + c1 t + c2 t^2 + ... by the rule of Horner; below, its first derivative without c0 and its second without c0 and c1.
template <class... Rest>
SA_INLINE double series(double t, double c, Rest... rest) {
  if constexpr (sizeof...(rest) == 0)
    return c;
  else
    return c + t * series(t, rest...);
}
template <int k = 1, class... Rest>
SA_INLINE double slopeSeries(double t, double c, Rest... rest) {
  if constexpr (sizeof...(rest) == 0)
    return k * c;
  else
    return k * c + t * slopeSeries<k + 1>(t, rest...);
}
template <int k = 2, class... Rest>
SA_INLINE double curvatureSeries(double t, double c, Rest... rest) {
  if constexpr (sizeof...(rest) == 0)
    return k * (k - 1) * c;
  else
    return k * (k - 1) * c + t * curvatureSeries<k + 1>(t, rest...);
}

// U = sum of Cij x^i y^j over 1 <= i + j <= 6, and the sum of (J-1)^(2i)/Di.
struct Polynomial6 {
  static constexpr bool kLocks = false;
  double C10, C01, C20, C11, C02, C30, C21, C12, C03, C40, C31, C22, C13, C04;
  double C50, C41, C32, C23, C14, C05, C60, C51, C42, C33, C24, C15, C06;
  double rD1 = 0.0, rD2 = 0.0, rD3 = 0.0, rD4 = 0.0, rD5 = 0.0, rD6 = 0.0;

  SA_INLINE double energy(double I1, double I2) const {
    const double x = I1 - 3.0, y = I2 - 3.0;
    return series(x, series(y, 0.0, C01, C02, C03, C04, C05, C06), series(y, C10, C11, C12, C13, C14, C15),
                  series(y, C20, C21, C22, C23, C24), series(y, C30, C31, C32, C33), series(y, C40, C41, C42),
                  series(y, C50, C51), C60);
  }
  SA_INLINE FirstDerivatives first(double I1, double I2) const {
    const double x = I1 - 3.0, y = I2 - 3.0;
    return {slopeSeries(x, series(y, C10, C11, C12, C13, C14, C15), series(y, C20, C21, C22, C23, C24),
                        series(y, C30, C31, C32, C33), series(y, C40, C41, C42), series(y, C50, C51), C60),
            series(x, slopeSeries(y, C01, C02, C03, C04, C05, C06), slopeSeries(y, C11, C12, C13, C14, C15),
                   slopeSeries(y, C21, C22, C23, C24), slopeSeries(y, C31, C32, C33), slopeSeries(y, C41, C42), C51)};
  }
  SA_INLINE SecondDerivatives second(double I1, double I2) const {
    const double x = I1 - 3.0, y = I2 - 3.0;
    return {curvatureSeries(x, series(y, C20, C21, C22, C23, C24), series(y, C30, C31, C32, C33),
                            series(y, C40, C41, C42), series(y, C50, C51), C60),
            slopeSeries(x, slopeSeries(y, C11, C12, C13, C14, C15), slopeSeries(y, C21, C22, C23, C24),
                        slopeSeries(y, C31, C32, C33), slopeSeries(y, C41, C42), C51),
            series(x, curvatureSeries(y, C02, C03, C04, C05, C06), curvatureSeries(y, C12, C13, C14, C15),
                   curvatureSeries(y, C22, C23, C24), curvatureSeries(y, C32, C33), 2.0 * C42)};
  }
  SA_INLINE VolumetricStress volumetric(double J) const {
    // with e = (J-1)^2: p = (J-1) (2/D1 + 4 e/D2 + ...), dp/dJ = 2/D1 + 3 * 4 e/D2 + ...
    const double d = J - 1.0, e = d * d;
    return {2.0 * d * slopeSeries(e, rD1, rD2, rD3, rD4, rD5, rD6),
            series(e, 2.0 * rD1, 12.0 * rD2, 30.0 * rD3, 56.0 * rD4, 90.0 * rD5, 132.0 * rD6)};
  }
};

// ((J^2 - 1)/2 - ln J)/D, the volumetric energy of the models of chains.
SA_INLINE VolumetricStress chainVolume(double J, double D) {
  const double rJ = 1.0 / J, rD = 1.0 / D;
  return {(J - rJ) * rD, (1.0 + rJ * rJ) * rD};
}

// Chains in eight directions: five terms of the series of the inverse Langevin function, k = 1/lambdaM^2.
struct ArrudaBoyce {
  static constexpr bool kLocks = false;
  static constexpr double c3 = 0.010476190476190476, c4 = 0.0027142857142857142, c5 = 0.0007703153988868275;
  double mu, lambdaM, D = 0.0;

  SA_INLINE double energy(double I1, double) const {
    const double k = 1.0 / (lambdaM * lambdaM), k2 = k * k, k3 = k2 * k;
    const double s2 = I1 * I1, s3 = s2 * I1, s4 = s3 * I1, s5 = s4 * I1;
    return mu * (0.5 * (I1 - 3.0) + k * (0.05 * (s2 - 9.0) + k3 * c5 * (s5 - 243.0)) + k2 * c3 * (s3 - 27.0) +
                 k3 * c4 * (s4 - 81.0));
  }
  SA_INLINE FirstDerivatives first(double I1, double) const {
    const double k = 1.0 / (lambdaM * lambdaM), t = k * I1;
    return {mu * series(t, 0.5, 0.1, 3.0 * c3, 4.0 * c4, 5.0 * c5), 0.0};
  }
  SA_INLINE SecondDerivatives second(double I1, double) const {
    const double k = 1.0 / (lambdaM * lambdaM), t = k * I1;
    return {mu * k * series(t, 0.1, 6.0 * c3, 12.0 * c4, 20.0 * c5), 0.0, 0.0};
  }
  SA_INLINE VolumetricStress volumetric(double J) const { return chainVolume(J, D); }
};

// A real gas of chains: with s = (1-beta) I1 + beta I2 - 3 and eta = sqrt(s/(lambdaM^2 - 3)),
//   U = mu (-(lambdaM^2 - 3) (ln(1 - eta) + eta) - (2/3) a (s/2)^(3/2)).
// eta is kept from reaching one.
struct VanDerWaals {
  static constexpr bool kLocks = true;
  static constexpr double kLargestEta = 0.99999;
  double mu, lambdaM, a, beta, D = 0.0;

  struct State {
    double s, root, eta, range; // root = sqrt(s), range = sqrt(lambdaM^2 - 3)
    double r;                   // 1/sqrt(s), not above its value at the largest eta
    double locked;
  };
  SA_INLINE State state(double I1, double I2) const { return stateOf((1.0 - beta) * I1 + beta * I2 - 3.0); }
  SA_INLINE State stateOf(double t) const {
    const bool deformed = !(t <= vm::kSmallestNormal); // a NaN is kept
    const double s = vm::select(deformed, t, 0.0), root = vm::sqrt(s), range = vm::sqrt(lambdaM * lambdaM - 3.0);
    const double eta = root / range;
    const bool beyond = eta > kLargestEta;
    const double r = 1.0 / vm::max(vm::select(deformed, root, 1.0), kLargestEta * range);
    return {s,
            root,
            vm::select(beyond, kLargestEta, eta),
            range,
            vm::select(deformed, r, 0.0),
            vm::select(beyond, 1.0, 0.0)};
  }

  SA_INLINE double locked(double I1, double I2) const { return state(I1, I2).locked; }
  SA_INLINE double energy(double I1, double I2) const {
    const State q = stateOf((1.0 - beta) * (I1 - 3.0) + beta * (I2 - 3.0)); // exactly 0 without deformation
    const double chains = q.range * q.range * (vm::log(1.0 - q.eta) + q.eta), half = 0.5 * q.s;
    return mu * (-chains - 0.6666666666666666 * a * (half * vm::sqrt(half)));
  }
  SA_INLINE FirstDerivatives first(double I1, double I2) const {
    const State q = state(I1, I2);
    const double g = 1.0 / (1.0 - q.eta) - a * (0.7071067811865476 * q.root);
    return {0.5 * (1.0 - beta) * mu * g, 0.5 * beta * mu * g};
  }
  SA_INLINE SecondDerivatives second(double I1, double I2) const {
    const State q = state(I1, I2);
    const double pole = 1.0 / (1.0 - q.eta);
    const double h = 0.25 * mu * q.r * (pole * pole / q.range - a * 0.70710678);
    return {(1.0 - beta) * (1.0 - beta) * h, beta * (1.0 - beta) * h, beta * beta * h};
  }
  SA_INLINE VolumetricStress volumetric(double J) const { return chainVolume(J, D); }
};

// Derivatives that the caller took from a model of its own; those that a kernel does not ask for stay 0.
struct GivenDerivatives {
  static constexpr bool kLocks = false;
  double U1, U2, p = 0.0, U11 = 0.0, U12 = 0.0, U22 = 0.0, dp = 0.0;

  SA_INLINE FirstDerivatives first(double, double) const { return {U1, U2}; }
  SA_INLINE SecondDerivatives second(double, double) const { return {U11, U12, U22}; }
  SA_INLINE VolumetricStress volumetric(double) const { return {p, dp}; }
};

// The same of a model that follows one test curve, a function of I1 alone.
struct CurveDerivatives {
  static constexpr bool kLocks = false;
  double U1, p = 0.0, U11 = 0.0, dp = 0.0;

  SA_INLINE FirstDerivatives first(double, double) const { return {U1, 0.0}; }
  SA_INLINE SecondDerivatives second(double, double) const { return {U11, 0.0, 0.0}; }
  SA_INLINE VolumetricStress volumetric(double) const { return {p, dp}; }
};

} // namespace sa
