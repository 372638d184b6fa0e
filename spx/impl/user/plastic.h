// Moulded plastics: yield stresses in tension and compression that differ, a plastic change of volume, two failures.
#pragma once

#include "spx/impl/user/curves.h"

namespace sa::user {

// sinh(b u)/sinh(b) for b > 0.
struct SinhRatio {
  double b, perWidth; // 1/(exp(-2 b) - 1)
  explicit SinhRatio(double value = 1.0) : b(value), perWidth(1.0 / vm::expm1(-2.0 * value)) {}
  SA_INLINE double operator()(double u) const {
    const double size = vm::abs(u);
    return vm::copysign(vm::exp(b * (size - 1.0)) * (vm::expm1(-2.0 * b * size) * perWidth), u);
  }
};

// With q the von Mises stress (of plane stress: Hill's) and p the pressure, positive in compression,
//   surface   sqrt(q^2 + f3 p^2) = root(f1 + f2 p),  f1 = k st sc,  f2 = 3 k (sc - st),  k = 1 + f3/9,
//   flow      along the derivative of g^2 = q^2 + f5 p^2 by the stress, of the amount h,
// st and sc the yield stresses at the plastic strain of a uniaxial test, which grows by sqrt(1 + f5/9) h g.
struct Plastic {
  static constexpr int kStates = 14, kConstants = 21;
  enum State { kPlasticStrain, kTensor, kRate = 7, kDuctile, kShear, kThickness, kMises, kTriaxiality, kStatus };
  enum TableColumn {
    kInTension,
    kInCompression,
    kFailureRate,
    kFailureColumns,
    kFactor = 0,
    kFactorRate,
    kFactorColumns
  };

  Table tension, compression, ductile, shear, factors;
  bool isPlaneStress, hasOneCurve;
  double E, nu, G, K, perG3, smallestYield;
  double f3, f5, k, volumetric;                     // K f5/(3 G)
  double uniaxial;                                  // sqrt(1 + f5/9), in parts of 3 G
  double C11, C12, M11, M22, M12, N, Q11, Q22, Q12; // plane stress: elasticity, Hill's ellipse, that of the flow
  double B11, B12, B21, B22, B33;                   // elasticity times the flow, in parts of 3 G
  double k1, k2, kS;
  SinhRatio ductileBend, shearBend; // 4 k0 and 8 f kS, at least so much that a straight line has its digits
  double thetaStart, thetaScale; // from theta to its part of the way from 2 + 4 kS to 2 - 4 kS; all of it where kS = 0
  double share;                  // of the way of the filter to the rate of the increment

  Plastic(const Block& block, bool isThermoplastic);
  static bool isRefused(const Block& block, bool isThermoplastic);
  bool isWrong(const Block& block) const;

  // The failure strain by shear at theta.  It is the strain in compression at 2 + 4 kS and that in tension at 2 - 4 kS.
  SA_INLINE double shearFailure(double inTension, double inCompression, double theta) const;
};

SA_INLINE double Plastic::shearFailure(double inTension, double inCompression, double theta) const {
  const double u = thetaStart - thetaScale * theta;
  return inTension * shearBend(u) + inCompression * shearBend(1.0 - u);
}

// Thermoplastic reads f3 and f5.
template <bool kIsThermoplastic>
struct PlasticModel : Plastic {
  explicit PlasticModel(const Block& block) : Plastic(block, kIsThermoplastic) {}
  static bool isRefused(const Block& block) { return Plastic::isRefused(block, kIsThermoplastic); }
};

} // namespace sa::user
