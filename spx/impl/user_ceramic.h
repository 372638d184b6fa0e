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
  double elasticBulkModulus() const { return K1; }
};

} // namespace sa::user
