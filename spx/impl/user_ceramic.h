// What the two Johnson-Holmquist ceramics have in common: checks, pressure and bulking.
#pragma once

#include "spx/impl/user_brittle.h"

namespace sa::user {

struct CeramicConstants : BrittleConstants {
  static constexpr bool kBulks = true, kCompacts = false, kCapped = false;
  static constexpr int kStates = 4;
  double beta;

  SA_INLINE Pressure pressure(double mu, double bulkingPressure) const {
    return {vm::select(mu > 0.0, cubic(mu), K1 * mu) + bulkingPressure, bulkingPressure, 0.0};
  }
  // From zero pressure, which bulking moves into tension, along K1 mu + dP and in compression the cubic.
  SA_INLINE double recoverable(double mu, double bulkingPressure, double limit) const {
    const double zero = vm::max(-0.5, -bulkingPressure / K1), from = vm::max(mu, vm::max(-0.9, zero - limit / K1));
    const double tension = vm::min(0.0, from), compression = vm::max(0.0, from);
    const VolumeEnergy t = volumeEnergy((tension - zero) / (1.0 + zero)), c = volumeEnergy(compression);
    return K1 * (t.linear + c.linear) + (K2 * c.square + K3 * c.cube) +
           bulkingPressure * (compression / (1.0 + compression)) + limit * (1.0 / (1.0 + mu) - 1.0 / (1.0 + from));
  }
  double elasticBulkModulus() const { return K1; }
};

} // namespace sa::user
