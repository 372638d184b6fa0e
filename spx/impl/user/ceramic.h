// What the two Johnson-Holmquist ceramics have in common: checks, pressure and bulking.
#pragma once

#include "spx/impl/user/brittle.h"

namespace sa::user {

struct CeramicConstants : BrittleConstants {
  static constexpr bool kBulks = true, kCompacts = false, kTransforms = false, kCapped = false;
  static constexpr int kStates = 4;
  double beta, perK1;

  SA_INLINE Pressure pressure(double mu, double bulkingPressure) const {
    return {vm::select(mu > 0.0, cubic(mu), K1 * mu) + bulkingPressure, bulkingPressure, 0.0};
  }
  // Without pressure, which bulking moves into tension.
  SA_INLINE double zeroOf(double bulkingPressure) const { return vm::max(-0.5, -bulkingPressure * perK1); }
  // From there along K1 mu + dP, and in compression what the cubic has beside it; one division for all.
  template <bool kNear>
  SA_INLINE double recoverable(double mu, double bulkingPressure, double limit) const {
    const double zero = zeroOf(bulkingPressure), from = vm::max(mu, vm::max(-0.9, zero - limit * perK1));
    const double c = vm::max(none, from), way = from - zero, atFrom = 1.0 + from, fromZero = 1.0 + zero;
    const double both = fromZero + atFrom, atC = 2.0 + c, first = fromZero * atFrom, second = both * atC,
                 per = 1.0 / (first * second), perFirst = per * second, perSecond = per * first;
    const double perFrom = perFirst * fromZero;
    const VolumeEnergy line =
        volumeEnergyNear<kNear>(way * (perFirst * atFrom), way * (perSecond * atC), way * perFrom);
    const double w = c * perFrom;
    const VolumeEnergy rest = volumeEnergyNear<kNear>(c, c * (perSecond * both), w);
    // dP is more than -K1 zero only where that is bounded
    const double energy = (K1 * line.linear + (bulkingPressure + K1 * zero) * w) + (K2 * rest.square + K3 * rest.cube);
    return energy * (1.0 + mu) + limit * ((from - mu) * perFrom);
  }
  SA_INLINE bool isNear(double mu, double bulkingPressure, double) const {
    const double zero = zeroOf(bulkingPressure);
    const bool isWayNear = isNearVolume(mu - zero, 1.0 + zero), isNearBoth = vm::max(mu, zero) <= 0.59;
    return isWayNear & isNearBoth;
  }
  bool isWrong(const Block&) const { return false; }
  double elasticBulkModulus() const { return K1; }
};

} // namespace sa::user
