// What the passes of the brittle update share: what is known of a point, strength and return to it, and the scratch of a piece.
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user {

// Where a model compacts, the line of unloading: mu without pressure, modulus and one over it.
struct Unloading {
  double zero, modulus, perModulus;
};
// Where it transforms: the part that has, and the pressure beside the mixed curves.
struct Release {
  double fraction, offset;
};
struct Way {                           // from the limit of tension, or from here, to zero pressure
  double zero, from, logZero, logFrom; // logarithms of the volume
};
struct Curve {
  double value, slope, bend, twist; // coefficients of its powers from 0 to 3 about a place
};
struct Pressure {
  double p;          // before the limit of tension
  double history;    // at the end of the increment
  double compaction; // permanent part of mu, or where the model transforms the largest mu; 0.0 where it does neither
  Unloading line = {};
  Release release = {};
};
struct Strength {
  double intact, fractured; // von Mises stress
  double failureStrain;     // plastic strain from D = 0 to D = 1
};

// How intact and fractured strength move with the pressure.
struct StrengthSlopes {
  double intact, fractured;
};

// State variables, from 0.
constexpr int kPlasticStrain = 0, kDamage = 1, kStatus = 2, kHistory = 3, kCompaction = 4, kTop = 4;

// The x > 0 at which an increasing function that is 0 at 0 has this value: Newton's steps within bounds.
struct ValueAndSlope {
  double value, slope;
};
template <class Function>
double solveIncreasing(double value, double guess, Function function) {
  double x = guess, low = 0.0, high = vm::kInfinity;
  for (int k = 0; k < 200 && high - low > 1e-15 * low; ++k) {
    const ValueAndSlope at = function(x);
    const double difference = at.value - value;
    if (difference == 0.0) break;
    (difference > 0.0 ? high : low) = x;
    const double next = x - difference / at.slope;
    if (vm::abs(next - x) <= 1e-9 * x) return next; // the error of which is the square of that
    x = next > low && next < high ? next : high < vm::kInfinity ? 0.5 * (low + high) : 2.0 * x;
  }
  return x;
}

// Bounds that a compiler does not know: one instruction keeps a number within them, where constants take a comparison and a
// blend.  Failure strains have squares that are numbers; an element that is turned inside out is for others to report, here it
// counts as compressed to a millionth.
struct Bounds {
  double none = 0.0, all = 1.0, leastFailure = 1e-30, mostFailure = 1e100, leastVolume = 1e-6, mostSquare = 1e300;
};
// Constants that all have.
struct BrittleConstants : Bounds {
  double G, perG3, C, perReferenceRate, T, K1, K2, K3, deletionStrain;
  bool isProportional; // the failure strain has the exponent 1
  SA_INLINE double cubic(double mu) const { return mu * (K1 + mu * (K2 + mu * K3)); }
  SA_INLINE double cubicSlope(double mu) const { return K1 + mu * (2.0 * K2 + 3.0 * K3 * mu); }
  // The compression with this pressure.
  double cubicInverse(double pressure) const {
    const auto function = [this](double mu) { return ValueAndSlope{cubic(mu), cubicSlope(mu)}; };
    const double straight = pressure / K1, bent = straight * (1.0 - straight * (K2 / K1));
    return solveIncreasing(pressure, bent > 0.0 ? bent : straight, function);
  }
};
// Powers and exponentials of the surfaces.  One function a pass: chains of two in a row leave most of the machine idle.
struct SurfaceTerm {
  double broken, intact, failure;
};
struct SurfaceTerms {
  Lane log, broken, intact, failure;
  SA_INLINE SurfaceTerm operator[](int k) const { return {broken[k], intact[k], failure[k]}; }
};
// Both together give vm::power of base(k).
template <class Base>
SA_INLINE void findLogs(int n, Lane& log, Base base) {
  forPoints(n, [base, &log](int k) SA_POINT { log[k] = vm::log2Positive(vm::max(1e-300, base(k))); });
}
SA_INLINE void findPowers(int n, const Lane& log, double y, Lane& power) {
  forPoints(n, [y, &log, &power](int k) SA_POINT { power[k] = vm::exp2Clamped(y * log[k]); });
}
// x^y of which the power is known; where y is 1, as it mostly is for failure strains, x to the bit.
template <bool kIsOne>
SA_INLINE double powerOrItself(const Bounds& bounds, double x, double power) {
  if constexpr (kIsOne)
    return vm::max(bounds.none, x);
  else
    return power;
}
// Energies per undeformed volume V0 of pressures mu, mu^2 and mu^3: the integrals of them over -dV/V0 = dmu/(1 + mu)^2 from 0.
struct VolumeEnergy {
  double linear, square, cube;
};
// L = ln(1 + mu), w = mu/(1 + mu)
SA_INLINE VolumeEnergy volumeEnergy(double mu, double L, double w) {
  return {L - w, (mu - 2.0 * L) + w, mu * (0.5 * mu - 2.0) + (3.0 * L - w)};
}
// ln(1 + mu), with s = mu/(2 + mu): for all but very large changes of volume by its series in s.  kNear: this mu is known to be
// within those.
SA_INLINE bool isNearVolume(double mu) { return (mu >= -0.375) & (mu <= 0.6); }
SA_INLINE double nearLogRest(double s) { return s * s * vm::polynomial(s * s, vm::kNearLogCoefficients); }
template <bool kNear>
SA_INLINE double logNear(double mu, double s) {
  const double L = s * (2.0 + nearLogRest(s));
  if constexpr (kNear)
    return L;
  else
    return vm::select(isNearVolume(mu), L, vm::logPositive(1.0 + mu));
}
// The energies by that, the first without a difference of nearly equal numbers.
template <bool kNear>
SA_INLINE VolumeEnergy volumeEnergyNear(double mu, double s, double w) {
  const double L = logNear<kNear>(mu, s), linear = s * (w + nearLogRest(s));
  VolumeEnergy energy = volumeEnergy(mu, L, w);
  energy.linear = kNear ? linear : vm::select(isNearVolume(mu), linear, energy.linear);
  return energy;
}
// Whether mu is within those with a margin for round-off; by a reference volume.
SA_INLINE bool isNearVolume(double mu, double reference) {
  return (mu >= -0.37 * reference) & (mu <= 0.59 * reference);
}
inline double strainOrNone(double property) { return property > 0.0 ? property : vm::kInfinity; }

// Strain and damage at the end of the return from the trial stress.
struct Returned {
  double q, plasticStrain, damage;
};

// The strength of what is broken.
template <class Model>
SA_INLINE double brokenStrength(const Model& m, double fractured) {
  const double strength = vm::max(m.none, fractured);
  if constexpr (Model::kCapped)
    return vm::min(m.cap, strength);
  else
    return strength;
}
// Strength at damage D; never below zero, where a straight line through tension leads before D = 1.
template <class Model>
SA_INLINE double strengthAt(const Model& m, const Strength& s, double D) {
  if constexpr (Model::kGradual)
    return brokenStrength(m, s.intact - D * (s.intact - s.fractured));
  else
    return vm::select(D >= 1.0, s.fractured, s.intact);
}

// The largest tension that damage leaves.
template <class Model>
SA_INLINE double tensionLimit(const Model& m, double D) {
  if constexpr (Model::kGradual)
    return m.T * (1.0 - D);
  else
    return vm::select(D >= 1.0, 0.0, m.T);
}

// How far damage goes with the plastic strain, and plastic strain with what the trial stress is beyond the strength; by one
// division.  Damage that moves the strength faster than the stress can follow has no slope above zero, and next to no strain on it.
struct DamageRates {
  double slope, perFailure, strainPerStress; // 3 G ef - (intact - fractured); 1/ef; ef/slope
};
template <class Model>
SA_INLINE DamageRates ratesOf(const Model& m, const Strength& s) {
  const double ef = vm::max(m.leastFailure, vm::min(m.mostFailure, s.failureStrain));
  if constexpr (Model::kGradual) {
    const double slope = 3.0 * m.G * ef - (s.intact - s.fractured), divisor = vm::select(slope > 0.0, slope, 1e200);
    const double per = 1.0 / (ef * divisor);
    return {slope, divisor * per, ef * (ef * per)};
  } else {
    return {0.0, 1.0 / ef, 0.0};
  }
}

// From the trial stress q0 and the damage D: q = q0 - 3 G dep, q = q(D + dep/ef).  Where D moves the strength faster than the
// stress can follow, 3 G ef <= intact - fractured, there is no state between and D = 1.
template <class Model>
SA_INLINE Returned returnTo(const Model& m, const Strength& s, const DamageRates& rates, double q0, double D) {
  const double G3 = 3.0 * m.G, perG3 = m.perG3, perFailure = rates.perFailure;
  const double broken = brokenStrength(m, s.fractured), q = strengthAt(m, s, D);
  // round-off is no shear: at the limit of tension, where strength and failure strain are zero, it would break the point
  const bool yields = q0 > q + 1e-12 * m.G;
  const double strainToBroken = vm::max(m.none, (q0 - broken) * perG3);
  if constexpr (Model::kGradual) {
    const double drop = s.intact - s.fractured, line = s.intact - D * drop;
    // on the straight line, no further than to zero stress; in one step to D = 1 where that is passed or no state lies between
    double strain = vm::min(q0 * perG3, (q0 - line) * rates.strainPerStress);
    bool fails = rates.slope <= 0.0;
    if constexpr (Model::kCapped) { // under the cap the strength does not move, which the line is above to the end
      const double strainAtCap = (q0 - m.cap) * perG3;
      strain = vm::max(strain, strainAtCap);
      fails = fails & !(line - drop * (strainAtCap * perFailure) >= m.cap);
    }
    const double damage = D + strain * perFailure;
    fails = fails | (damage >= 1.0);
    const double taken = vm::select(yields, vm::select(fails, strainToBroken, strain), 0.0);
    return {q0 - G3 * taken, taken, vm::select(yields, vm::select(fails, 1.0, damage), D)};
  } else {
    // the point that breaks goes on to the fractured surface
    const double strain = (q0 - q) * perG3, damage = vm::min(m.all, D + strain * perFailure);
    const double taken = vm::select(yields, vm::select(damage >= 1.0, strainToBroken, strain), 0.0);
    return {q0 - G3 * taken, taken, vm::select(yields, damage, D)};
  }
}

// Growth of the bulking pressure, for a = K1 mu + dP: (a + growth)^2 = a^2 + 2 beta K1 energy.
SA_INLINE double bulking(double a, double betaK1, double energy) {
  const double gain = 2.0 * betaK1 * vm::max(0.0, energy);
  const double growth = gain / (a + vm::sqrt(a * a + gain) + 1e-300);
  return vm::select(a >= 0.0, growth, 0.0);
}

// What the end of an increment asks for beyond the return at the pressure without it: nothing, damage and pressure that move
// each other, or the pressure of a point that is broken.
constexpr double kSettled = 0.0, kMoving = 1.0, kBroken = 2.0;

// What the passes over a piece hand on.
struct alignas(64) BrittleScratch {
  Lane mu, pressure, history, compaction, trial, rate; // the square of the rate, then its factor
  Lane limited;                                        // pressure at which the surfaces are taken
  SurfaceTerms terms;
  Lane intact, fractured, failureStrain;
  Lane damageBefore;                           // where the model compacts, which damages: before the return
  Lane q, plasticStrain, damage, growth, open; // open: one of the three above
  // Where the model compacts: the line of unloading.
  Lane zero, modulus, perModulus;
  // Where it transforms: its release, the offset with bulking; in `zero` mu without pressure, mu at the limit of tension, and the
  // logarithms of both volumes.
  Lane fraction, offset, from, logZero, logFrom;
  Lane recoverable;
};

template <class Model>
SA_INLINE Pressure pressureAt(const Model& m, double mu, const double* stateOld, int64_t N, int64_t i) {
  if constexpr (Model::kTransforms)
    return m.pressure(mu, stateOld[i + kHistory * N], stateOld[i + kTop * N]);
  else
    return m.pressure(mu, stateOld[i + kHistory * N]);
}

// K1 mu + dP, of what is compressed elastically.
template <class Model>
SA_INLINE double armAt(const Model& m, const BrittleScratch& w, int k) {
  if constexpr (Model::kTransforms)
    return m.K1 * (w.mu[k] - w.fraction[k] * m.mu0) + w.history[k];
  else
    return m.K1 * w.mu[k] + w.history[k];
}

template <class Model>
SA_INLINE void storePressure(BrittleScratch& w, int k, const Pressure& p) {
  w.pressure[k] = p.p;
  w.history[k] = p.history;
  if constexpr (Model::kCompacts || Model::kTransforms) w.compaction[k] = p.compaction;
  if constexpr (Model::kCompacts)
    w.zero[k] = p.line.zero, w.modulus[k] = p.line.modulus, w.perModulus[k] = p.line.perModulus;
  if constexpr (Model::kTransforms) w.fraction[k] = p.release.fraction, w.offset[k] = p.release.offset;
}

// The damage that the return begins with.
template <class Model>
SA_INLINE double damageBefore(const Block& b, int start, const BrittleScratch& w, int k) {
  if constexpr (Model::kCompacts)
    return w.damageBefore[k];
  else
    return b.stateOld[start + k + kDamage * int64_t{b.points}];
}

} // namespace sa::user
