// Strain-energy models of hyperelasticity: the constants of one point and its energy derivatives in the invariants I1, I2 of
// the isochoric left Cauchy-Green tensor.  A model is
//   energy(I1, I2)                    isochoric strain energy per undeformed volume
//   first(I1, I2)    {U1, U2}         dU/dI1, dU/dI2
//   second(I1, I2)   {U11, U12, U22}
//   volumetric(J)    {p, dp/dJ}       volumetric stress and its slope
// A kernel asks for what it needs; constants that it does not pass stay 0.
#pragma once

#include "glo/kernel.h"

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

// U = C10 x + C01 y + C20 x x + C11 x y + C02 y y with x = I1 - 3, y = I2 - 3, and (J-1)^2/D1 + (J-1)^4/D2.
struct Polynomial2 {
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

} // namespace sa
