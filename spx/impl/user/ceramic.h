// What the two Johnson-Holmquist ceramics have in common: checks, pressure and bulking.
#pragma once

#include "spx/impl/user/brittle.h"

namespace sa::user {

struct CeramicConstants : BrittleConstants {
  static constexpr bool kBulks = true, kCompacts = false, kTransforms = false, kCapped = false;
  static constexpr int kStates = 4;
  double beta, perK1;

  SA_INLINE Pressure pressure(double mu, double bulkingPressure) const {
    return {vm::select(mu > 0.0, cubic(mu), K1 * mu) + bulkingPressure, bulkingPressure, 0.0, 0.0};
  }
  // From zero pressure, which bulking moves into tension, along K1 mu + dP and in compression the cubic.
  SA_INLINE double recoverable(double mu, double bulkingPressure, double limit) const {
    const double zero = vm::max(-0.5, -bulkingPressure * perK1),
                 from = vm::max(mu, vm::max(-0.9, zero - limit * perK1));
    const double end = 1.0 + mu, atFrom = 1.0 + from, both = 1.0 / (end * atFrom), per = end * both;
    const double c = vm::max(0.0, from), w = c * per;
    const double L = vm::logPositive(1.0 + from), fromZero = vm::logPositive(1.0 + zero);
    // the straight line from zero pressure, behind mu = 0 with the rest of the cubic and dP beside it
    const double line = K1 * ((L - fromZero) - vm::select(from > 0.0, w - zero, (from - zero) * per));
    const double rest = K2 * ((c - 2.0 * L) + w) + K3 * (c * (0.5 * c - 2.0) + (3.0 * L - w));
    const double cut = limit * (atFrom * both - per);
    return line + vm::select(from > 0.0, rest, 0.0) + bulkingPressure * w + cut;
  }
  bool isWrong(const Block&) const { return false; }
  double elasticBulkModulus() const { return K1; }
};

} // namespace sa::user
