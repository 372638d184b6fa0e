// Brittle materials whose strength depends on pressure, rate and damage: the update that ceramics and concrete share.
//
// A model gives, for one point,
//   pressure(mu, history)   pressure of the compression mu, and the history variable that goes with it
//   strength<kProportional>(P, rate)   the two surfaces between which damage moves the strength, and the plastic strain that
//                           damages fully; kProportional: where its exponent is 1
//   slopes(P, strength)     how both surfaces move with the pressure (where kGradual)
//   near(strength, P)       surfaces close to those at P without powers, and their slope (where kGradual and kBulks): an object
//                           with strength(rise, D) and slope(D)
//   recoverable(mu, history, limit)   per undeformed volume, the work of the pressure on the way from here to where it is zero,
//                           tension being no larger than the limit; where kCompacts, before the limit, where it is zero
// and says by constants
//   kGradual     strength goes with damage in a straight line from intact to fractured, else it stays intact until D = 1
//   kCapped      strength never exceeds model.cap
//   kBulks       elastic energy that damage sets free becomes pressure (model.beta, model.K1); the history is that pressure
//   kCompacts    the history is the largest mu so far; one more state variable is the permanent compaction
//   kTransforms  one more state variable is the largest mu so far, which bulking does not enter; the pressure and the way to
//                zero hang on it: pressure(mu, history, top), recoverable(mu, top, offset, zero, from, limit)
#pragma once

#include "spx/impl/user/bracket.h"
#include "spx/impl/user/frame.h"

namespace sa::user {

struct Pressure {
  double p;          // before the limit of tension
  double history;    // at the end of the increment
  double compaction; // permanent part of mu, or where the model transforms the largest mu; 0.0 where it does neither
  double zero;       // where the model compacts: mu without pressure on the line of unloading
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

// Constants that all have.
struct BrittleConstants {
  double G, perG3, C, perReferenceRate, T, K1, K2, K3, deletionStrain;
  bool isProportional; // the failure strain has the exponent 1
  SA_INLINE double cubic(double mu) const { return mu * (K1 + mu * (K2 + mu * K3)); }
};
// x^y; where y is 1, as it mostly is for failure strains, x to the bit without a logarithm.
template <bool kIsOne>
SA_INLINE double powerOrItself(double x, double y) {
  if constexpr (kIsOne)
    return vm::max(0.0, x);
  else
    return power(x, y);
}
// Energies per undeformed volume V0 of pressures mu, mu^2 and mu^3: the integrals of them over -dV/V0 = dmu/(1 + mu)^2 from 0.
struct VolumeEnergy {
  double linear, square, cube;
};
// L = ln(1 + mu), w = mu/(1 + mu)
SA_INLINE VolumeEnergy volumeEnergy(double mu, double L, double w) {
  return {L - w, (mu - 2.0 * L) + w, mu * (0.5 * mu - 2.0) + (3.0 * L - w)};
}
SA_INLINE VolumeEnergy volumeEnergy(double mu) { return volumeEnergy(mu, vm::logPositive(1.0 + mu), mu / (1.0 + mu)); }
inline double strainOrNone(double property) { return property > 0.0 ? property : vm::kInfinity; }

// The x > 0 at which an increasing function that is 0 at 0 has this value: false position that halves the weight of an end
// that stays (Illinois).
template <class Function>
double solveIncreasing(double value, Function function) {
  double low = 0.0, high = 1e-3, below = -value, above = function(high) - value;
  for (int k = 0; k < 60 && above < 0.0; ++k) {
    low = high, below = above;
    high *= 2.0, above = function(high) - value;
  }
  double x = high;
  for (int k = 0, side = 0; k < 100 && high - low > 1e-15 * high; ++k) {
    x = (low * above - high * below) / (above - below);
    const double difference = function(x) - value;
    if (difference == 0.0) break;
    if (difference > 0.0) {
      high = x, above = difference;
      if (side > 0) below *= 0.5;
      side = 1;
    } else {
      low = x, below = difference;
      if (side < 0) above *= 0.5;
      side = -1;
    }
  }
  return x;
}

// Strain and damage at the end of the return from the trial stress.
struct Returned {
  double q, plasticStrain, damage;
};

// Strength at damage D; never below zero, where a straight line through tension leads before D = 1.
template <class Model>
SA_INLINE double strengthAt(const Model& m, const Strength& s, double D) {
  if constexpr (Model::kGradual) {
    const double line = vm::max(0.0, s.intact - D * (s.intact - s.fractured));
    if constexpr (Model::kCapped) return vm::min(m.cap, line);
    return line;
  } else {
    return vm::select(D >= 1.0, s.fractured, s.intact);
  }
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
// division.  Damage that moves the strength faster than the stress can follow has no slope above zero.
struct DamageRates {
  double slope, perFailure, strainPerStress; // 3 G ef - (intact - fractured); 1/ef; ef/slope
};
template <class Model>
SA_INLINE DamageRates ratesOf(const Model& m, const Strength& s) {
  const double ef = vm::max(1e-30, vm::min(1e100, s.failureStrain)); // its square stays a number
  if constexpr (Model::kGradual) {
    const double slope = 3.0 * m.G * ef - (s.intact - s.fractured), divisor = vm::select(slope > 0.0, slope, 1.0);
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
  const double broken = strengthAt(m, s, 1.0), q = strengthAt(m, s, D);
  // round-off is no shear: at the limit of tension, where strength and failure strain are zero, it would break the point
  const bool yields = q0 > q + 1e-12 * m.G;
  if constexpr (Model::kGradual) {
    const double drop = s.intact - s.fractured, line = s.intact - D * drop, slope = rates.slope;
    // on the straight line, no further than to zero stress; in one step to D = 1 where that is passed or no state lies between
    const double strainOnLine = vm::min(q0 * perG3, (q0 - line) * rates.strainPerStress);
    const double damageOnLine = D + strainOnLine * perFailure;
    // under the cap the strength does not move
    double strain = strainOnLine, damage = damageOnLine;
    bool fails = slope <= 0.0;
    if constexpr (Model::kCapped) {
      const double strainAtCap = (q0 - m.cap) * perG3, damageAtCap = D + strainAtCap * perFailure;
      const bool isCapped = s.intact - vm::min(1.0, damageAtCap) * drop >= m.cap;
      strain = vm::select(isCapped, strainAtCap, strain);
      damage = vm::select(isCapped, damageAtCap, damage);
      fails = fails & !isCapped;
    }
    fails = fails | (damage >= 1.0);
    const double strainToBroken = vm::max(0.0, (q0 - broken) * perG3);
    strain = vm::select(yields, vm::select(fails, strainToBroken, strain), 0.0);
    damage = vm::select(yields, vm::select(fails, 1.0, damage), D);
    return {q0 - G3 * strain, strain, damage};
  } else {
    const double strain = (q0 - q) * perG3, damage = vm::min(1.0, D + strain * perFailure);
    // the point that breaks goes on to the fractured surface
    const double strainToBroken = vm::max(0.0, (q0 - broken) * perG3);
    const double dep = vm::select(yields, vm::select(damage >= 1.0, strainToBroken, strain), 0.0);
    return {q0 - G3 * dep, dep, vm::select(yields, damage, D)};
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
  double mu[kScratchPoints], pressure[kScratchPoints], history[kScratchPoints], compaction[kScratchPoints],
      trial[kScratchPoints], rate[kScratchPoints]; // the square of the rate, then its factor
  double intact[kScratchPoints], fractured[kScratchPoints], failureStrain[kScratchPoints];
  double damageBefore[kScratchPoints], before[kScratchPoints], q[kScratchPoints], plasticStrain[kScratchPoints],
      damage[kScratchPoints], growth[kScratchPoints], open[kScratchPoints]; // one of the three above
  double low[kScratchPoints], high[kScratchPoints];                         // bounds of the growth of damage
  // mu without pressure; where the model transforms, that at the limit, and what comes back on the way there
  double zero[kScratchPoints], from[kScratchPoints], recoverable[kScratchPoints];
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
    return m.K1 * (w.mu[k] - m.compactionAt(w.compaction[k])) + w.history[k];
  else
    return m.K1 * w.mu[k] + w.history[k];
}

template <bool kCompacts>
SA_INLINE void storePressure(BrittleScratch& w, int k, const Pressure& p) {
  w.pressure[k] = p.p;
  w.history[k] = p.history;
  w.compaction[k] = p.compaction;
  if constexpr (kCompacts) w.zero[k] = p.zero;
}

// Pressure, trial stress and rate.
template <class Storage, class Model>
SA_INLINE void findTrial(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *defgrad = b.defgrad, *stressOld = b.stressOld, *stateOld = b.stateOld;
  const double perTime = b.dt <= 0.0 ? 0.0 : 1.0 / b.dt; // that of a NaN is a NaN
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Sym<Storage> e = deviator(loadTensor<Storage>(strainInc, N, i));
    const Sym<Storage> s = sum(deviator(loadTensor<Storage>(stressOld, N, i)), 2.0 * m.G, e);
    w.trial[k] = vm::sqrt(1.5 * product(s, s));
    w.rate[k] = 2.0 / 3.0 * product(e, e) * perTime * perTime;
    // an element that is turned inside out is for others to report: here it counts as compressed to a millionth
    w.mu[k] = 1.0 / vm::max(1e-6, volumeRatio<Storage>(defgrad, N, i)) - 1.0;
    if constexpr (!Model::kTransforms) storePressure<Model::kCompacts>(w, k, pressureAt(m, w.mu[k], stateOld, N, i));
  });
  if constexpr (Model::kTransforms) // two curves: a pass of their own
    forPoints(length, [=, &w](int k) SA_POINT {
      storePressure<Model::kCompacts>(w, k, pressureAt(m, w.mu[k], stateOld, N, start + k));
    });
}

// The surfaces at the pressure without what the increment does to it.
template <bool kProportional, class Model>
SA_INLINE void findSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const double* damageOld = b.stateOld + kDamage * int64_t{b.points};
  forPoints(length, [=, &w](int k) SA_POINT {
    const double p = vm::max(-tensionLimit(m, damageOld[start + k]), w.pressure[k]);
    // half the logarithm of the square spares a root; rates end at 1e150 of the reference
    const double square = w.rate[k] * m.perReferenceRate * m.perReferenceRate;
    const double factor = 1.0 + (0.5 * m.C) * vm::logPositive(vm::min(1e300, vm::max(1.0, square)));
    const Strength s = m.template strength<kProportional>(p, factor);
    w.rate[k] = vm::select(w.rate[k] == w.rate[k], factor, vm::kNaN);
    w.intact[k] = s.intact;
    w.fractured[k] = s.fractured;
    w.failureStrain[k] = s.failureStrain;
  });
}

// Return to those surfaces, and whether the pressure moves with it: bulking, or damage that lowers the limit of tension.
template <class Model>
SA_INLINE void returnToSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double* stateOld = b.stateOld;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Strength s{w.intact[k], w.fractured[k], w.failureStrain[k]};
    const double trial = w.trial[k], pressure = w.pressure[k], damageOld = stateOld[i + kDamage * N];
    const DamageRates rates = ratesOf(m, s);
    // compaction damages by itself, then the plastic strain does
    double D = damageOld;
    if constexpr (Model::kCompacts)
      D = vm::min(1.0, D + vm::max(0.0, w.compaction[k] - stateOld[i + kCompaction * N]) * rates.perFailure);
    const Returned r = returnTo(m, s, rates, trial, D);
    const double arm = armAt(m, w, k), before = strengthAt(m, s, D);
    const double cut = vm::select(pressure < -tensionLimit(m, r.damage), 1.0, 0.0);
    double moves = cut;
    if constexpr (Model::kBulks) moves = vm::select((m.beta > 0.0) & (arm >= 0.0) & (before > r.q), 1.0, moves);
    double kind = kBroken;
    if constexpr (Model::kGradual) {
      kind = vm::select(rates.slope > 0.0, kMoving, kBroken);
    } else {
      moves = vm::select(r.damage >= 1.0, moves, 0.0);
    }
    w.damageBefore[k] = D;
    w.before[k] = before;
    w.q[k] = r.q;
    w.plasticStrain[k] = r.plasticStrain;
    w.damage[k] = r.damage;
    w.growth[k] = 0.0;
    w.low[k] = 0.0;
    w.high[k] = 1.0 - D;
    w.open[k] = vm::select(r.damage > damageOld, moves * kind, kSettled);
  });
}

// The points of one kind, side by side; up to a multiple of the longest vector the last one is repeated, so that no loop over
// them has a rest.
constexpr int kVector = 8;
static_assert(kScratchPoints % kVector == 0);
SA_INLINE void fillUp(int count, int* place) {
  for (int j = count; count > 0 && j % kVector != 0; ++j) place[j] = place[count - 1];
}
SA_INLINE int pack(const BrittleScratch& w, double kind, int length, int* place) {
  double those = 0.0; // often none, which vectors tell
#pragma omp simd reduction(+ : those)
  for (int k = 0; k < length; ++k) those += w.open[k] == kind ? 1.0 : 0.0;
  if (!(those > 0.0)) return 0;
  int count = 0;
  for (int k = 0; k < length; ++k) {
    place[count] = k;
    count += w.open[k] == kind ? 1 : 0;
  }
  fillUp(count, place);
  return count;
}
// Those of a pack that are still of the kind.
SA_INLINE int repack(const BrittleScratch& w, double kind, int length, int* place) {
  int count = 0;
  for (int j = 0; j < length; ++j) {
    const int k = place[j];
    place[count] = k;
    count += w.open[k] == kind ? 1 : 0;
  }
  fillUp(count, place);
  return count;
}
// body(j) for the points of a pack.
template <class Body>
SA_INLINE void forPack(int count, Body body) {
  forPoints((count + kVector - 1) / kVector * kVector, body);
}

// Points whose damage and pressure move each other, side by side.  The growth d of damage solves
//   strength(P(d), D + d) + 3 G ef d = trial stress,
// P(d) with the bulking of what the damage takes at the pressure before it, or at the limit of tension that it leaves.  The
// strength grows with the pressure and the pressure with d, so that the left side rises and there is one solution.
struct alignas(64) Moving {
  Lane trial, damage, factor, pressure, arm, G3ef, before, intact, fractured, failureStrain;
  Lane x, low, high, runs, strength, atEnd; // of the iteration
  Lane rise, perDamage, slope, error, root; // between loops: short chains, so that several vectors overlap
  int count, place[kScratchPoints];

  SA_INLINE double drop(int j) const { return intact[j] - fractured[j]; }
  template <class Model>
  SA_INLINE double bulkingOf(const Model& m, int j, double d) const {
    if constexpr (Model::kBulks) {
      const double left = vm::max(0.0, before[j] - drop(j) * d);
      return bulking(arm[j], m.beta * m.K1, (before[j] - left) * (before[j] + left) * (0.5 * m.perG3));
    } else {
      return 0.0;
    }
  }
};

// Where the iteration begins, with strengths near those at the pressure before, which need no power: the point breaks, or a
// parabola through d = 0 and 1 - D and then a cubic through its root too, with the slope at 0.  Where the trial stress
// is a thousandth above the strength it is the solution to 1e-9.  What leaves the range begins where it would have without.
template <class Model>
SA_INLINE void beginDamage(const Model& model, Moving& moving) {
  const Model m = model;
  Moving& a = moving;
  const auto nearOf = [m, &a](int j) SA_POINT {
    return m.near({a.intact[j], a.fractured[j], a.failureStrain[j]}, a.rise[j], a.perDamage[j]);
  };
  const auto errorOf = [m, &a, nearOf](int j, double d) SA_POINT {
    // bulking as a difference, which a beginning may be
    const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * d),
                 gain = 2.0 * m.beta * m.K1 * ((a.before[j] - left) * (a.before[j] + left) * (0.5 * m.perG3));
    const double rise = vm::select(arm >= 0.0, vm::sqrt(arm * arm + gain) - arm, 0.0);
    return vm::max(0.0, nearOf(j).strength(rise, a.damage[j] + d)) + a.G3ef[j] * d - a.trial[j];
  };
  forPack(a.count, [m, &a, nearOf](int j) SA_POINT {
    const double shifted = m.aboveTension(a.pressure[j]), pressure = m.aboveZero(a.pressure[j]);
    const double per = 1.0 / (shifted * pressure), perArm = 1.0 / a.arm[j];
    a.rise[j] = pressure * per;
    a.perDamage[j] = shifted * per;
    a.slope[j] = (a.G3ef[j] - a.drop(j)) +
                 nearOf(j).slope(a.damage[j]) * (m.beta * m.K1 * m.perG3 * a.before[j] * a.drop(j) * perArm);
  });
  forPack(a.count, [&a, errorOf](int j) SA_POINT { a.error[j] = errorOf(j, 1.0 - a.damage[j]); });
  forPack(a.count, [&a](int j) SA_POINT {
    const double most = 1.0 - a.damage[j], atZero = a.before[j] - a.trial[j];
    const double linear = a.slope[j] * most, bend = (a.error[j] - atZero) - linear;
    a.root[j] = -2.0 * atZero * most / (linear + vm::sqrt(vm::max(0.0, linear * linear - 4.0 * bend * atZero)));
  });
  forPack(a.count, [&a, errorOf](int j) SA_POINT { a.strength[j] = errorOf(j, a.root[j]); });
  forPack(a.count, [&a](int j) SA_POINT {
    const double most = 1.0 - a.damage[j], atZero = a.before[j] - a.trial[j], slope = a.slope[j], root = a.root[j];
    // d^2 (b + c (d - root)) is the rest at root and at 1 - D
    const double atMost = a.error[j], restAtMost = (atMost - atZero) - slope * most,
                 rest = (a.strength[j] - atZero) - slope * root;
    const double root2 = root * root, most2 = most * most, gap = most - root, per = 1.0 / (root2 * most2 * gap);
    const double b = rest * (most2 * gap * per), c = (restAtMost * root2 - rest * most2) * per;
    double d = root;
    for (int k = 0; k < 2; ++k)
      d -= (atZero + d * (slope + d * (b + c * (d - root)))) / (slope + d * (2.0 * b + c * (3.0 * d - 2.0 * root)));
    const double otherwise = a.x[j], simple = vm::select((root > 0.0) & (root < most), root, otherwise);
    a.x[j] = vm::select(atMost <= 0.0, most, vm::select((d > 0.0) & (d < most), d, simple));
  });
}

// A step of the iteration: a parabola through d = 0 with the value and the slope of the moment gives the next d, between bounds;
// where even d = 1 - D is too little, the point breaks.
template <class Model>
SA_INLINE void stepDamage(const Model& model, Moving& moving) {
  const Model m = model;
  Moving& a = moving;
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double d = vm::min(a.x[j], 1.0 - a.damage[j]);
    double rise = 0.0, perDamage = 0.0;
    if constexpr (Model::kBulks) { // as `bulking`, with its slope by the same division
      const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * d), betaK1 = m.beta * m.K1;
      const double gain = betaK1 * ((a.before[j] - left) * (a.before[j] + left) * m.perG3);
      const double end = vm::sqrt(arm * arm + gain), per = 1.0 / (end * (arm + end) + 1e-300);
      rise = vm::select(arm >= 0.0, gain * end * per, 0.0);
      perDamage = vm::select(arm >= 0.0, betaK1 * m.perG3 * left * a.drop(j) * ((arm + end) * per), 0.0);
    }
    a.x[j] = d;
    a.rise[j] = rise;
    a.perDamage[j] = perDamage;
  });
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double d = a.x[j], D = a.damage[j] + d, limit = -m.T * (1.0 - D), free = a.pressure[j] + a.rise[j],
                 perDamage = a.perDamage[j];
    const double p = vm::max(limit, free);
    const Strength s = m.template strength<true>(p, a.factor[j]);
    const StrengthSlopes ds = m.slopes(p, s);
    const double fall = s.intact - s.fractured, line = s.intact - D * fall, q = strengthAt(m, s, D);
    const double withPressure = (ds.intact - D * (ds.intact - ds.fractured)) * vm::select(free > limit, perDamage, m.T);
    a.strength[j] = q;
    a.error[j] = q + a.G3ef[j] * d - a.trial[j];
    a.slope[j] = a.G3ef[j] + vm::select(q == line, withPressure - fall, 0.0);
  });
  forPack(a.count, [&a](int j) SA_POINT {
    const double d = a.x[j], error = a.error[j], lowOld = a.low[j], highOld = a.high[j], ran = a.runs[j];
    const double lower = vm::select(error < 0.0, d, lowOld), upper = vm::select(error > 0.0, d, highOld);
    // of the parabola all terms are those at d
    const double atZero = a.before[j] - a.trial[j], linear = a.slope[j] * d, bend = linear - (error - atZero),
                 linearAtZero = linear - 2.0 * bend;
    const double root =
        -2.0 * atZero * d / (linearAtZero + vm::sqrt(vm::max(0.0, linearAtZero * linearAtZero - 4.0 * bend * atZero)));
    const double next = vm::select((root >= lower) & (root <= upper), root, 0.5 * (lower + upper));
    const bool moves = ran > 0.0;
    a.x[j] = vm::select(moves, next, d);
    a.atEnd[j] = vm::select(next == d, 1.0, 0.0);
    a.low[j] = vm::select(moves, lower, lowOld);
    a.high[j] = vm::select(moves, upper, highOld);
    a.runs[j] = vm::select(moves & (vm::abs(next - d) > 2e-6 * next), 1.0, 0.0);
  });
}

// A step of the points of the pack.
constexpr int kDamageRounds = 60;
template <class Model>
SA_INLINE void settleDamage(const Model& model, BrittleScratch& w, Moving& a, bool isFirst) {
  const Model m = model;
  forPack(a.count, [m, &w, &a](int j) SA_POINT {
    const int k = a.place[j];
    const double ef = w.failureStrain[k], damage = w.damageBefore[k];
    a.trial[j] = w.trial[k], a.factor[j] = w.rate[k], a.pressure[j] = w.pressure[k], a.before[j] = w.before[k];
    a.intact[j] = w.intact[k], a.fractured[j] = w.fractured[k], a.failureStrain[j] = ef, a.G3ef[j] = 3.0 * m.G * ef;
    a.damage[j] = damage, a.arm[j] = armAt(m, w, k);
    a.x[j] = w.damage[k] - damage, a.low[j] = w.low[k], a.high[j] = w.high[k], a.runs[j] = 1.0;
  });
  if constexpr (Model::kBulks)
    if (isFirst) beginDamage(m, a);
  stepDamage(m, a);
  // results take the places of what is not needed any more
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double d = a.x[j], D = a.damage[j] + d, trial = a.trial[j], strength = a.strength[j], ef = a.failureStrain[j];
    const double known = vm::min(strength, trial), growth = a.bulkingOf(m, j, d), runs = a.runs[j], atEnd = a.atEnd[j];
    const bool isFull = !(runs > 0.0) & (D >= 1.0), isKnown = isFull & (atEnd > 0.0); // the strength there
    const double kind = vm::select(isFull, kBroken, vm::select(runs > 0.0, kMoving, kSettled));
    a.rise[j] = growth;
    a.runs[j] = vm::select(isKnown, kSettled, kind);
    a.x[j] = vm::select(isKnown, 1.0, D);
    a.strength[j] = vm::select(isKnown, known, trial - a.G3ef[j] * d);
    a.slope[j] = vm::select(isKnown, (trial - known) * m.perG3, d * ef);
  });
  for (int j = 0; j < a.count; ++j) {
    const int k = a.place[j];
    w.low[k] = a.low[j], w.high[k] = a.high[j], w.open[k] = a.runs[j];
    w.damage[k] = a.x[j], w.growth[k] = a.rise[j], w.q[k] = a.strength[j], w.plasticStrain[k] = a.slope[j];
  }
}
// Steps, until no point goes on; after each those that do are packed anew.
template <class Model>
SA_INLINE void settleMoving(const Model& model, int length, BrittleScratch& w) {
  Moving a;
  a.count = pack(w, kMoving, length, a.place);
  for (int round = 0; round < kDamageRounds && a.count > 0; ++round) {
    settleDamage(model, w, a, round == 0);
    a.count = repack(w, kMoving, a.count, a.place);
  }
}

// Points that break: bulking takes what the whole fall sets free, and the strength is the fractured one at the pressure then.
template <class Model>
SA_INLINE void settleBroken(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  int place[kScratchPoints];
  const int count = pack(w, kBroken, length, place);
  if (count == 0) return;
  double trial[kScratchPoints], factor[kScratchPoints], pressure[kScratchPoints], arm[kScratchPoints],
      before[kScratchPoints], after[kScratchPoints], q[kScratchPoints], growth[kScratchPoints];
  for (int j = 0; j < count; ++j) {
    const int k = place[j];
    trial[j] = w.trial[k], factor[j] = w.rate[k], pressure[j] = w.pressure[k], before[j] = w.before[k];
    after[j] = w.fractured[k], arm[j] = armAt(m, w, k);
  }
  forPoints(count, [=, &trial, &factor, &pressure, &arm, &before, &after, &q, &growth](int j) SA_POINT {
    double rise = 0.0;
    if constexpr (Model::kBulks) {
      const double left = vm::max(0.0, after[j]);
      rise = bulking(arm[j], m.beta * m.K1, (before[j] - left) * (before[j] + left) * (0.5 * m.perG3));
    }
    const Strength s = m.template strength<true>(vm::max(0.0, pressure[j] + rise), factor[j]);
    growth[j] = rise;
    q[j] = vm::min(trial[j], strengthAt(m, s, 1.0));
  });
  for (int j = 0; j < count; ++j) {
    const int k = place[j];
    w.q[k] = q[j];
    w.plasticStrain[k] = (trial[j] - q[j]) * m.perG3;
    w.damage[k] = 1.0;
    w.growth[k] = growth[j];
  }
}

// Where release from the largest compression has a pressure, that which `constant` takes to zero.  The straight lines of both
// curves lead near it, and Halley's steps to it, between bounds; every fourth halves them, which few points live to see.  What can
// come back is smallest there, so that a place good to 1e-7 and one step more leave no trace in it.
template <class Model>
SA_INLINE void findOnWay(const Model& model, int length, const Lane& largest, const Lane& mu, const Lane& constant,
                         double* root) {
  constexpr int kMostSteps = 4 * 54;
  const Model m = model;
  Lane fraction, low, high, runs;
  forPoints(length, [=, &largest, &mu, &constant, &fraction, &low, &high, &runs](int k) SA_POINT {
    const double top = largest[k], f = m.fraction(top), c = m.offset(top, f) + constant[k];
    const double least = -0.9, most = vm::max(mu[k], top);
    const double guess = vm::max(least, vm::min(most, m.straightRoot(f, c)));
    const bool isBelow = m.mix(most, f) + c <= 0.0, isAbove = m.mix(least, f) + c >= 0.0; // one sign everywhere
    fraction[k] = f;
    low[k] = least;
    high[k] = most;
    root[k] = vm::select(isBelow, most, vm::select(isAbove, least, guess));
    runs[k] = vm::select(isBelow | isAbove, 0.0, 1.0);
  });
  for (int step = 0; step < kMostSteps && isAnySet(length, runs); ++step) {
    const bool halves = step % 4 == 3;
    forPoints(length, [=, &largest, &constant, &fraction, &low, &high, &runs](int k) SA_POINT {
      const double x = root[k], f = fraction[k], lowOld = low[k], highOld = high[k];
      const double value = m.mix(x, f) + (m.offset(largest[k], f) + constant[k]);
      const double lower = vm::select(value < 0.0, x, lowOld), upper = vm::select(value > 0.0, x, highOld);
      const double slope = m.mixSlope(x, f), next = x - value * slope / (slope * slope - value * m.mixBend(x, f)),
                   middle = 0.5 * (lower + upper);
      const bool ran = runs[k] > 0.0, isNear = vm::abs(value) <= 1e-7 * m.K1,
                 isInside = (next >= lower) & (next <= upper);
      const double far = vm::select(halves, middle, vm::select(isInside, next, middle)),
                   near = vm::select(isInside, next, x);
      root[k] = vm::select(ran, vm::select(isNear, near, far), x);
      low[k] = lower;
      high[k] = upper;
      runs[k] = vm::select(ran & !isNear & (upper - lower > 1e-15), 1.0, 0.0);
    });
  }
}

// Where release ends: at zero pressure, and where tension reaches its limit, if the point is beyond.
template <class Model>
SA_INLINE void findWayBack(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  Lane constant, isCut;
  forPoints(length, [m, &w, &constant, &isCut](int k) SA_POINT {
    constant[k] = w.history[k] + w.growth[k];
    w.from[k] = w.mu[k];
    isCut[k] = vm::select(w.pressure[k] + w.growth[k] < -tensionLimit(m, w.damage[k]), 1.0, 0.0);
  });
  findOnWay(m, length, w.compaction, w.mu, constant, w.zero);
  if (!isAnySet(length, isCut)) return;
  Lane top, mu, here, from;
  int place[kScratchPoints], count = 0;
  for (int k = 0; k < length; ++k) {
    place[count] = k;
    count += isCut[k] > 0.0 ? 1 : 0;
  }
  for (int j = 0; j < count; ++j) {
    const int k = place[j];
    top[j] = w.compaction[k], mu[j] = w.mu[k], here[j] = constant[k] + tensionLimit(m, w.damage[k]);
  }
  findOnWay(m, count, top, mu, here, from);
  for (int j = 0; j < count; ++j) w.from[place[j]] = vm::max(mu[j], from[j]);
}

// What the pressure gives back on that way.
template <class Model>
SA_INLINE void findRecoverable(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  forPoints(length, [m, &w](int k) SA_POINT {
    w.recoverable[k] = m.recoverable(w.mu[k], w.compaction[k], w.history[k] + w.growth[k], w.zero[k], w.from[k],
                                     tensionLimit(m, w.damage[k]));
  });
}

// Stress, state variables and energies at the end.
template <class Storage, class Model>
SA_INLINE void storeEnd(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const double strainOld = stateOld[i], damageOld = stateOld[i + N], historyOld = stateOld[i + kHistory * N];
    const Sym<Storage> old = loadTensor<Storage>(stressOld, N, i), strain = loadTensor<Storage>(strainInc, N, i);
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    // strengths and limits are chosen by comparisons, which a NaN passes: it spoils stress and state of its point here
    double crushedOld = 0.0;
    if constexpr (Model::kCompacts || Model::kTransforms) crushedOld = stateOld[i + kCompaction * N];
    const double read = strainOld + damageOld + historyOld + crushedOld + w.mu[k] + w.trial[k] + w.rate[k];
    const auto spoil = [read](double x) SA_POINT { return vm::select(read == read, x, vm::kNaN); };
    const double trial = w.trial[k], q = w.q[k], D = spoil(w.damage[k]), h = spoil(w.history[k] + w.growth[k]);
    const double limit = tensionLimit(m, D), p = spoil(vm::max(-limit, w.pressure[k] + w.growth[k]));

    // a point that is deleted keeps what it had; one that is deleted now loses its stress
    const bool wasAlive = !(strainOld >= m.deletionStrain);
    const double strainNew = vm::select(wasAlive, strainOld + spoil(w.plasticStrain[k]), strainOld);
    const bool isAlive = !(strainNew >= m.deletionStrain);
    const double keep = spoil(vm::select(trial > q, q / trial, 1.0));
    const Sym<Storage> sTrial = sum(deviator(old), 2.0 * m.G, deviator(strain));
    const Sym<Storage> now = select(isAlive, sum(keep * sTrial, -p), Sym<Storage>{});
    storeTensor(stress, N, i, now);
    state[i] = strainNew;
    state[i + kDamage * N] = vm::select(wasAlive, D, damageOld);
    state[i + kStatus * N] = vm::select(isAlive, 1.0, 0.0);
    state[i + kHistory * N] = vm::select(wasAlive, h, historyOld);
    if constexpr (Model::kCompacts || Model::kTransforms) {
      state[i + kCompaction * N] = vm::select(wasAlive, vm::max(w.compaction[k], crushedOld), crushedOld);
    }

    // What is lost where something has yielded: the work of the mean stress less what can come back, at least nothing.  An
    // elastic increment loses nothing and stores exactly, so the internal energy is always what was lost and what can come back.
    const double left = keep * trial, volume = 1.0 + w.mu[k];
    double backwards = 0.0;
    if constexpr (Model::kTransforms)
      backwards = w.recoverable[k];
    else if constexpr (Model::kCompacts)
      backwards = m.recoverable(w.mu[k], h, w.zero[k], limit);
    else
      backwards = m.recoverable(w.mu[k], h, limit);
    const double elastic = vm::select(isAlive, (left * left * (0.5 * m.perG3) + backwards * volume) * perDensity, 0.0);
    const double work = 0.5 * (product(old, strain) + product(now, strain)) * perDensity;
    double yielded = w.plasticStrain[k] + (D - damageOld) + (h - historyOld) + vm::select(isAlive, 0.0, 1.0);
    if constexpr (Model::kTransforms) yielded += m.fraction(w.compaction[k]) - m.fraction(crushedOld);
    const double lost = vm::select(yielded == 0.0, 0.0, work - (elastic - (intOld - inelOld)));
    const double inelasticNow = inelOld + vm::select(lost < 0.0, 0.0, lost);
    const double internalNow = inelasticNow + elastic;
    internal[i] = vm::select(wasAlive, internalNow, intOld);
    inelastic[i] = vm::select(wasAlive, inelasticNow, inelOld);
  });
}

template <class Storage, class Model>
SA_INLINE void brittle(const Block& b, const Model& model) {
  forPieces(b.points, [&b, &model](int start, int length) SA_POINT {
    BrittleScratch w;
    findTrial<Storage>(b, model, start, length, w);
    if (model.isProportional)
      findSurfaces<true>(b, model, start, length, w);
    else
      findSurfaces<false>(b, model, start, length, w);
    returnToSurfaces(b, model, start, length, w);
    if constexpr (Model::kGradual) settleMoving(model, length, w);
    settleBroken(model, length, w);
    if constexpr (Model::kTransforms) {
      findWayBack(model, length, w);
      findRecoverable(model, length, w);
    }
    storeEnd<Storage>(b, model, start, length, w);
  });
  keepStates(b, Model::kStates);
}

template <class Model>
SA_INLINE void compute(const Block& b, const Model& model) {
  if (b.isDataCheck) {
    if (b.isSolid())
      elasticAnswer<S33>(b, model.elasticBulkModulus(), model.G);
    else
      elasticAnswer<S31>(b, model.elasticBulkModulus(), model.G);
    keepStates(b, 0);
  } else if (b.isSolid()) {
    brittle<S33>(b, model);
  } else {
    brittle<S31>(b, model);
  }
}

} // namespace sa::user
