// Brittle materials whose strength depends on pressure, rate and damage: the update that ceramics and concrete share.
//
// A model gives, for one point,
//   pressure(mu, history)   pressure of the compression mu, and the history variable that goes with it
//   findTerms<kProportional>(n, P, terms)   what its surfaces take of powers and exponentials, one a pass
//   findBroken(n, P, terms) those of them that the lower surface takes
//   strength<kProportional>(P, rate, terms)   the two surfaces between which damage moves the strength, and the plastic strain
//                           that damages fully; kProportional: where its exponent is 1
//   broken(P, rate, terms)  the lower of both at a pressure of zero or more
//   slopes(P, strength)     how both surfaces move with the pressure (where kGradual and kBulks)
//   near(strength, ...)     surfaces close to those at P without powers (there too): an object whose at(rise, D, ...) has
//                           strength, its drop to D = 1 and its slope with the pressure
//   recoverable<kNear>(...) per volume, the work of the pressure on the way from here to where it is zero, tension being no
//                           larger than the limit; isNear(...) of the same arguments, whether kNear may do without the
//                           logarithms of large changes of volume.  The arguments: mu, history and the limit; where kCompacts,
//                           mu, history, the line of unloading and the limit
// and says by constants
//   kGradual     strength goes with damage in a straight line from intact to fractured, else it stays intact until D = 1
//   kCapped      strength never exceeds model.cap
//   kBulks       elastic energy that damage sets free becomes pressure (model.beta, model.K1); the history is that pressure.
//                Where a model is gradual without, its strength ends at the limit of tension that damage leaves, T (1 - D)
//   kCompacts    the history is the largest mu so far; one more state variable is the permanent compaction
//   kTransforms  one more state variable is the largest mu so far, which bulking does not enter; the pressure and the way to
//                zero hang on it: pressure(mu, history, top), recoverable<kNear>(mu, release, way, limit); mixed(mu, fraction),
//                its curves as one, and straightRoot(fraction, offset), where they would be zero if they were straight
#pragma once

#include "spx/impl/user/bracket.h"
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
  });
  forPoints(length, [=, &w](int k) SA_POINT {
    const double mu = 1.0 / vm::max(m.leastVolume, volumeRatio<Storage>(defgrad, N, start + k)) - 1.0;
    w.mu[k] = mu;
    if constexpr (!Model::kTransforms) storePressure<Model>(w, k, pressureAt(m, mu, stateOld, N, start + k));
  });
  if constexpr (Model::kTransforms) // two curves: a pass of their own
    forPoints(length,
              [=, &w](int k) SA_POINT { storePressure<Model>(w, k, pressureAt(m, w.mu[k], stateOld, N, start + k)); });
}

// The factor of the rate, and what the surfaces take at the pressure without what the increment does to it.
template <bool kProportional, class Model>
SA_INLINE void findSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const double* damageOld = b.stateOld + kDamage * int64_t{b.points};
  forPoints(length, [=, &w](int k) SA_POINT {
    // half the logarithm of the square spares a root; rates end at 1e150 of the reference
    const double square = w.rate[k] * m.perReferenceRate * m.perReferenceRate;
    const double factor =
        1.0 + (0.5 * vm::kLn2 * m.C) * vm::log2Positive(vm::min(m.mostSquare, vm::max(m.all, square)));
    w.rate[k] = vm::select(w.rate[k] == w.rate[k], factor, vm::kNaN);
    w.limited[k] = vm::max(-tensionLimit(m, damageOld[start + k]), w.pressure[k]);
  });
  m.template findTerms<kProportional>(length, w.limited, w.terms);
}

// The damage that the return begins with.
template <class Model>
SA_INLINE double damageBefore(const Block& b, int start, const BrittleScratch& w, int k) {
  if constexpr (Model::kCompacts)
    return w.damageBefore[k];
  else
    return b.stateOld[start + k + kDamage * int64_t{b.points}];
}

// Return to those surfaces, and whether the pressure moves with it: bulking, or damage that lowers the limit of tension.
template <bool kProportional, class Model>
SA_INLINE void returnToSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double* stateOld = b.stateOld;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Strength s = m.template strength<kProportional>(w.limited[k], w.rate[k], w.terms[k]);
    const double trial = w.trial[k], pressure = w.pressure[k], damageOld = stateOld[i + kDamage * N];
    const DamageRates rates = ratesOf(m, s);
    // compaction damages by itself, then the plastic strain does
    double D = damageOld;
    if constexpr (Model::kCompacts) {
      D = vm::min(m.all, D + vm::max(m.none, w.compaction[k] - stateOld[i + kCompaction * N]) * rates.perFailure);
      w.damageBefore[k] = D;
    }
    const Returned r = returnTo(m, s, rates, trial, D);
    bool moves = pressure < -tensionLimit(m, r.damage);
    if constexpr (Model::kBulks) {
      const bool isCompressed = armAt(m, w, k) >= 0.0, falls = strengthAt(m, s, D) > r.q, bulks = m.beta > 0.0;
      moves = moves | (bulks & isCompressed & falls);
      w.growth[k] = 0.0;
      w.intact[k] = s.intact;
      w.fractured[k] = s.fractured;
    }
    double kind = kBroken;
    if constexpr (Model::kGradual) {
      kind = vm::select(rates.slope > 0.0, kMoving, kBroken);
      w.failureStrain[k] = s.failureStrain;
    } else {
      moves = moves & (r.damage >= 1.0);
    }
    w.q[k] = r.q;
    w.plasticStrain[k] = r.plasticStrain;
    w.damage[k] = r.damage;
    w.open[k] = vm::select(moves & (r.damage > damageOld), kind, kSettled);
  });
}

// Points that the return leaves open, side by side.
struct alignas(64) OpenPoints {
  Lane trial, factor, kind, damage, G3ef, intact, fractured, pressure, arm;
  Lane before, atMost;                   // strength at the damage before; what is left over at D = 1
  Lane x, low, high, runs;               // of the iteration
  Lane p, rise, perDamage, slope, error; // between loops: short chains, so that several vectors overlap
  Lane q, plasticStrain, end, growth;    // results; end: the damage
  int count, place[kScratchPoints];

  SA_INLINE double drop(int j) const { return intact[j] - fractured[j]; }
};

template <class Model>
SA_INLINE void gatherOpen(const Block& b, const Model& m, int start, const BrittleScratch& w, OpenPoints& a) {
  for (int j = 0; j < packedLength(a.count); ++j) {
    const int k = a.place[j];
    a.trial[j] = w.trial[k], a.factor[j] = w.rate[k], a.damage[j] = damageBefore<Model>(b, start, w, k);
    if constexpr (Model::kGradual) a.kind[j] = w.open[k], a.G3ef[j] = 3.0 * m.G * w.failureStrain[k];
    if constexpr (Model::kBulks)
      a.intact[j] = w.intact[k], a.fractured[j] = w.fractured[k], a.pressure[j] = w.pressure[k],
      a.arm[j] = armAt(m, w, k);
  }
}
template <class Model>
SA_INLINE void scatterOpen(const OpenPoints& a, int j, BrittleScratch& w) {
  const int k = a.place[j];
  w.q[k] = a.q[j], w.plasticStrain[k] = a.plasticStrain[j], w.damage[k] = a.end[j];
  if constexpr (Model::kBulks) w.growth[k] = a.growth[j];
}

// The points as if they broke: bulking takes what the whole fall sets free, and the strength is the fractured one at the pressure
// then.  What does break has these results; where no more of the trial stress is left than damage takes, `runs` is 1.
template <class Model>
SA_INLINE void breakOpen(const Model& model, OpenPoints& open, SurfaceTerms& terms) {
  const Model m = model;
  OpenPoints& a = open;
  forPack(a.count, [=, &a](int j) SA_POINT {
    a.p[j] = 0.0; // at the limit of tension that is left
    if constexpr (Model::kBulks) {
      const double before = strengthAt(m, {a.intact[j], a.fractured[j], 0.0}, a.damage[j]),
                   left = vm::max(m.none, a.fractured[j]);
      const double rise = bulking(a.arm[j], m.beta * m.K1, (before - left) * (before + left) * (0.5 * m.perG3));
      a.p[j] = vm::max(m.none, a.pressure[j] + rise);
      a.before[j] = before;
      a.growth[j] = rise;
    }
  });
  m.findBroken(packedLength(a.count), a.p, terms);
  forPack(a.count, [m, &a, &terms](int j) SA_POINT {
    const double trial = a.trial[j], D = a.damage[j];
    const double full = brokenStrength(m, m.broken(a.p[j], a.factor[j], terms.broken[j]));
    double q = vm::min(trial, full), plasticStrain = (trial - q) * m.perG3, end = 1.0;
    if constexpr (Model::kGradual) {
      const double G3ef = a.G3ef[j], atMost = full + G3ef * (1.0 - D) - trial;
      const bool breaks = (a.kind[j] == kBroken) | (atMost <= 0.0);
      a.atMost[j] = atMost;
      a.runs[j] = vm::select(breaks, 0.0, 1.0);
      if constexpr (!Model::kBulks) { // what does not break ends at the limit of tension, where it has no strength
        q = vm::select(breaks, q, 0.0);
        plasticStrain = vm::select(breaks, plasticStrain, trial * m.perG3);
        end = vm::select(breaks, 1.0, vm::min(1.0, D + trial / G3ef));
      }
    }
    a.q[j] = q;
    a.plasticStrain[j] = plasticStrain;
    a.end[j] = end;
  });
}

// What does not break: the growth d of damage solves
//   strength(P(d), D + d) + 3 G ef d = trial stress,
// P(d) with the bulking of what the damage takes at the pressure before it, or at the limit of tension that it leaves.  The
// strength grows with the pressure and the pressure with d, so that the left side rises and there is one solution.

// Only the points that go on.
SA_INLINE void keepRunning(OpenPoints& a) {
  int count = 0;
  const auto move = [&a](int from, int to) SA_POINT {
    a.trial[to] = a.trial[from], a.factor[to] = a.factor[from], a.damage[to] = a.damage[from];
    a.G3ef[to] = a.G3ef[from], a.intact[to] = a.intact[from], a.fractured[to] = a.fractured[from];
    a.pressure[to] = a.pressure[from], a.arm[to] = a.arm[from], a.before[to] = a.before[from];
    a.atMost[to] = a.atMost[from], a.x[to] = a.x[from], a.low[to] = a.low[from], a.high[to] = a.high[from];
  };
  for (int j = 0; j < a.count; ++j) {
    if (!(a.runs[j] > 0.0)) continue;
    move(j, count);
    a.place[count++] = a.place[j];
  }
  for (int j = count; count > 0 && j < packedLength(count); ++j) move(count - 1, j);
  a.count = count;
}

// Where the iteration begins, with strengths near those at the pressure before, which need no power: a parabola through d = 0
// with the slope there and 1 - D, then a cubic through its root too, then Newton's step from the root of that.  For pressures that
// rise by a tenth it is the solution to 1e-6.  What leaves the range begins on the straight line.
template <class Model>
SA_INLINE void beginDamage(const Model& model, OpenPoints& open) {
  const Model m = model;
  OpenPoints& a = open;
  // left over at d, bulking as a difference, which a beginning may be; and its slope
  struct Rest {
    double error, slope;
  };
  const auto restOf = [m, &a](int j, double d) SA_POINT {
    const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * d), betaK1 = m.beta * m.K1;
    const double end = vm::sqrt(arm * arm + betaK1 * m.perG3 * ((a.before[j] - left) * (a.before[j] + left)));
    const bool isCompressed = arm >= 0.0;
    const auto near = m.near({a.intact[j], a.fractured[j], 0.0}, a.rise[j], a.perDamage[j])
                          .at(vm::select(isCompressed, end - arm, 0.0), a.damage[j] + d, end);
    const double perDamage = vm::select(isCompressed, betaK1 * m.perG3 * (left * a.drop(j)) * near.per, 0.0);
    return Rest{vm::max(0.0, near.strength) + a.G3ef[j] * d - a.trial[j],
                a.G3ef[j] - near.drop + near.slope * perDamage};
  };
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double shifted = m.aboveTension(a.pressure[j]), pressure = m.aboveZero(a.pressure[j]);
    const double per = 1.0 / (shifted * pressure);
    a.rise[j] = pressure * per;
    a.perDamage[j] = shifted * per;
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT {
    const double most = 1.0 - a.damage[j], atZero = a.before[j] - a.trial[j];
    const double slope = restOf(j, 0.0).slope, linear = slope * most, bend = (a.atMost[j] - atZero) - linear;
    a.slope[j] = slope;
    a.low[j] = 0.0;
    a.high[j] = most;
    a.x[j] = -2.0 * atZero * most / (linear + vm::sqrt(vm::max(0.0, linear * linear - 4.0 * bend * atZero)));
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT { a.error[j] = restOf(j, a.x[j]).error; });
  forPack(a.count, [&a](int j) SA_POINT {
    const double most = a.high[j], atZero = a.before[j] - a.trial[j], slope = a.slope[j], root = a.x[j];
    // d^2 (b + c (d - root)) is the rest at root and at 1 - D
    const double atMost = a.atMost[j], restAtMost = (atMost - atZero) - slope * most,
                 rest = (a.error[j] - atZero) - slope * root;
    const double root2 = root * root, most2 = most * most, gap = most - root, per = 1.0 / (root2 * most2 * gap);
    const double b = rest * (most2 * gap * per), c = (restAtMost * root2 - rest * most2) * per;
    double d = root;
    for (int k = 0; k < 2; ++k)
      d -= (atZero + d * (slope + d * (b + c * (d - root)))) / (slope + d * (2.0 * b + c * (3.0 * d - 2.0 * root)));
    const double straight = most * (-atZero / (atMost - atZero)),
                 simple = vm::select((root > 0.0) & (root < most), root, straight);
    a.x[j] = vm::select((d > 0.0) & (d < most), d, simple);
  });
  forPack(a.count, [&a, restOf](int j) SA_POINT {
    const double d = a.x[j];
    const Rest rest = restOf(j, d);
    const double next = d - rest.error / rest.slope;
    a.x[j] = vm::select((next > 0.0) & (next < a.high[j]), next, d);
  });
}

// A step of the iteration: a parabola through d = 0 with the value and the slope of the moment gives the next d, between bounds.
template <class Model>
SA_INLINE void stepDamage(const Model& model, OpenPoints& open, SurfaceTerms& terms) {
  const Model m = model;
  OpenPoints& a = open;
  forPack(a.count, [m, &a](int j) SA_POINT { // as `bulking`, with its slope by the same division
    const double arm = a.arm[j], left = vm::max(0.0, a.before[j] - a.drop(j) * a.x[j]), betaK1 = m.beta * m.K1;
    const double gain = betaK1 * ((a.before[j] - left) * (a.before[j] + left) * m.perG3);
    const double end = vm::sqrt(arm * arm + gain), per = 1.0 / (end * (arm + end) + 1e-300);
    const double limit = -m.T * (1.0 - (a.damage[j] + a.x[j])),
                 free = a.pressure[j] + vm::select(arm >= 0.0, gain * end * per, 0.0);
    const double perDamage = vm::select(arm >= 0.0, betaK1 * m.perG3 * left * a.drop(j) * ((arm + end) * per), 0.0);
    a.p[j] = vm::max(limit, free);
    a.perDamage[j] = vm::select(free > limit, perDamage, m.T);
  });
  m.template findTerms<true>(packedLength(a.count), a.p, terms);
  forPack(a.count, [m, &a, &terms](int j) SA_POINT {
    const double d = a.x[j], D = a.damage[j] + d, p = a.p[j];
    const Strength s = m.template strength<true>(p, a.factor[j], terms[j]);
    const StrengthSlopes ds = m.slopes(p, s);
    const double fall = s.intact - s.fractured, line = s.intact - D * fall, q = strengthAt(m, s, D);
    const double withPressure = (ds.intact - D * (ds.intact - ds.fractured)) * a.perDamage[j];
    a.error[j] = q + a.G3ef[j] * d - a.trial[j];
    a.slope[j] = a.G3ef[j] + vm::select(q == line, withPressure - fall, 0.0);
  });
  forPack(a.count, [&a](int j) SA_POINT {
    const double d = a.x[j], error = a.error[j], lowOld = a.low[j], highOld = a.high[j];
    const double lower = vm::select(error < 0.0, d, lowOld), upper = vm::select(error > 0.0, d, highOld);
    // of the parabola all terms are those at d
    const double atZero = a.before[j] - a.trial[j], linear = a.slope[j] * d, bend = linear - (error - atZero),
                 linearAtZero = linear - 2.0 * bend;
    const double root =
        -2.0 * atZero * d / (linearAtZero + vm::sqrt(vm::max(0.0, linearAtZero * linearAtZero - 4.0 * bend * atZero)));
    const double next = vm::select((root >= lower) & (root <= upper), root, 0.5 * (lower + upper));
    a.x[j] = next;
    a.low[j] = lower;
    a.high[j] = upper;
    a.runs[j] = vm::select(vm::abs(next - d) > 2e-6 * next, 1.0, 0.0);
  });
  forPack(a.count, [m, &a](int j) SA_POINT {
    const double d = a.x[j], trial = a.trial[j], ef = a.G3ef[j] * m.perG3,
                 left = vm::max(0.0, a.before[j] - a.drop(j) * d);
    a.growth[j] = bulking(a.arm[j], m.beta * m.K1, (a.before[j] - left) * (a.before[j] + left) * (0.5 * m.perG3));
    a.end[j] = a.damage[j] + d;
    a.q[j] = trial - a.G3ef[j] * d;
    a.plasticStrain[j] = d * ef;
  });
}

// Steps, until no point goes on; after each those that are there leave the others.
constexpr int kDamageRounds = 60;
template <class Model>
SA_INLINE void settleOpen(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  OpenPoints a;
  a.count = pack(length, w.open, a.place);
  if (a.count == 0) return;
  gatherOpen(b, m, start, w, a);
  breakOpen(m, a, w.terms);
  for (int j = 0; j < a.count; ++j) scatterOpen<Model>(a, j, w); // overwritten where the point does not break
  if constexpr (Model::kGradual && Model::kBulks) {
    keepRunning(a);
    if (a.count > 0) beginDamage(m, a);
    for (int round = 0; round < kDamageRounds && a.count > 0; ++round) {
      stepDamage(m, a, w.terms);
      for (int j = 0; j < a.count; ++j) scatterOpen<Model>(a, j, w);
      keepRunning(a);
    }
  }
}

// A pressure and what bulking adds.
template <class Model>
SA_INLINE double withGrowth(const BrittleScratch& w, int k, double pressure) {
  if constexpr (Model::kBulks)
    return pressure + w.growth[k];
  else
    return pressure;
}

// Where the pressure that release leaves would be that which `constant` takes to zero.  The straight lines of both curves lead
// near it, and Householder's steps of the fourth order to it, between bounds; every fourth halves them, which few points live to
// see.  What can come back is smallest there, so that a place good to 1e-8 leaves no trace in it: the step that leads so far is
// the last.  Mostly it is the first.
template <class Model>
SA_INLINE void findOnWay(const Model& model, int length, const Lane& fraction, const Lane& constant,
                         const Lane& largest, const Lane& mu, double* root) {
  constexpr int kMostSteps = 4 * 54;
  constexpr double kLeast = -0.9;
  const Model m = model;
  Lane low, high, runs;
  struct Place {
    double x, lower, upper, runs;
  };
  const auto stepFrom = [m](double x, double lowOld, double highOld, double f, double c, bool halves) SA_POINT {
    const Curve at = m.mixed(x, f);
    const double value = at.value + c, slope = at.slope, square = slope * slope, bend = value * at.bend;
    const double lower = vm::select(value < 0.0, x, lowOld), upper = vm::select(value > 0.0, x, highOld);
    const double twist = value * (value * at.twist);
    const double next = x - value * (square - bend) / (slope * (square - 2.0 * bend) + twist);
    const double middle = 0.5 * (lower + upper);
    const bool isInside = (next >= lower) & (next <= upper);
    // no corner of the curves between
    const bool isSmooth = (x * next >= 0.0) & ((x - m.mu0) * (next - m.mu0) >= 0.0);
    const bool isLow = vm::abs(value) <= 0.01 * m.K1, isStraight = vm::abs(bend) <= 0.01 * square,
               isEven = vm::abs(twist) <= 5e-5 * (square * slope),
               isLast = isLow & isStraight & isEven & isSmooth & isInside;
    const double far = vm::select(halves, middle, vm::select(isInside, next, middle));
    return Place{vm::select(isLast, next, far), lower, upper,
                 vm::select(isLast, 0.0, vm::select(upper - lower > 1e-15, 1.0, 0.0))};
  };
  forPoints(length, [=, &fraction, &constant, &largest, &mu, &low, &high, &runs](int k) SA_POINT {
    const double f = fraction[k], c = constant[k], most = vm::max(mu[k], largest[k]);
    const Place to = stepFrom(vm::max(kLeast, vm::min(most, m.straightRoot(f, c))), kLeast, most, f, c, false);
    root[k] = to.x;
    low[k] = to.lower;
    high[k] = to.upper;
    runs[k] = to.runs;
  });
  for (int step = 1; step < kMostSteps && isAnySet(length, runs); ++step) {
    const bool halves = step % 4 == 3;
    forPoints(length, [=, &fraction, &constant, &low, &high, &runs](int k) SA_POINT {
      const double x = root[k], ran = runs[k];
      const Place to = stepFrom(x, low[k], high[k], fraction[k], constant[k], halves);
      root[k] = vm::select(ran > 0.0, to.x, x);
      low[k] = to.lower;
      high[k] = to.upper;
      runs[k] = vm::select(ran > 0.0, to.runs, 0.0);
    });
  }
}

// Where release ends: at zero pressure, and where tension reaches its limit, if the point is beyond.
template <class Model>
SA_INLINE void findWayBack(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  Lane isCut;
  forPoints(length, [m, &w, &isCut](int k) SA_POINT {
    w.offset[k] = w.offset[k] + withGrowth<Model>(w, k, w.history[k]);
    w.from[k] = w.mu[k];
    isCut[k] = vm::select(withGrowth<Model>(w, k, w.pressure[k]) < -tensionLimit(m, w.damage[k]), 1.0, 0.0);
  });
  findOnWay(m, length, w.fraction, w.offset, w.compaction, w.mu, w.zero);
  int place[kScratchPoints];
  const int count = pack(length, isCut, place);
  if (count > 0) {
    Lane fraction, top, mu, here, from;
    for (int j = 0; j < packedLength(count); ++j) {
      const int k = place[j];
      fraction[j] = w.fraction[k], top[j] = w.compaction[k], mu[j] = w.mu[k];
      here[j] = w.offset[k] + tensionLimit(m, w.damage[k]);
    }
    findOnWay(m, packedLength(count), fraction, here, top, mu, from);
    for (int j = 0; j < count; ++j) w.from[place[j]] = vm::max(mu[j], from[j]);
  }
}

// What the pressure gives back on the way to zero: body(of, ...) with the arguments of the model's functions for it.
template <class Model, class Body>
SA_INLINE auto onRelease(const Model& m, const BrittleScratch& w, int k, Body body) {
  const double limit = tensionLimit(m, w.damage[k]), history = withGrowth<Model>(w, k, w.history[k]);
  if constexpr (Model::kTransforms)
    return body(w.mu[k], Release{w.fraction[k], w.offset[k]}, Way{w.zero[k], w.from[k], w.logZero[k], w.logFrom[k]},
                limit);
  else if constexpr (Model::kCompacts)
    return body(w.mu[k], history, Unloading{w.zero[k], w.modulus[k], w.perModulus[k]}, limit);
  else
    return body(w.mu[k], history, limit);
}
template <bool kNear, class Model>
SA_INLINE void findRecoverable(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  if constexpr (Model::kTransforms) // with four energies the logarithms are a pass of their own
    forPoints(length, [&w](int k) SA_POINT {
      const double from = w.from[k], zero = w.zero[k], both = 2.0 + from, bothZero = 2.0 + zero,
                   per = 1.0 / (both * bothZero);
      w.logFrom[k] = logNear<kNear>(from, from * (per * bothZero));
      w.logZero[k] = logNear<kNear>(zero, zero * (per * both));
    });
  forPoints(length, [m, &w](int k) SA_POINT {
    w.recoverable[k] =
        onRelease(m, w, k, [&m](auto... release) SA_POINT { return m.template recoverable<kNear>(release...); });
  });
}
// Pieces without large changes of volume do without the general logarithm, with the same bits either way.
template <class Model>
SA_INLINE void findRecoverable(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  double far = 0.0;
#pragma omp simd reduction(+ : far)
  for (int k = 0; k < length; ++k)
    far += onRelease(m, w, k, [&m](auto... release) SA_POINT { return m.isNear(release...); }) ? 0.0 : 1.0;
  if (far == 0.0)
    findRecoverable<true>(m, length, w);
  else
    findRecoverable<false>(m, length, w);
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
    const double read = ((strainOld + damageOld) + (historyOld + crushedOld)) + (w.mu[k] + w.trial[k] + w.rate[k]);
    const auto spoil = [read](double x) SA_POINT { return vm::select(read == read, x, vm::kNaN); };
    const double trial = w.trial[k], q = w.q[k], D = spoil(w.damage[k]),
                 h = spoil(withGrowth<Model>(w, k, w.history[k]));
    const double limit = tensionLimit(m, D), p = spoil(vm::max(-limit, withGrowth<Model>(w, k, w.pressure[k])));

    // a point that is deleted keeps what it had; one that is deleted now loses its stress
    const bool wasAlive = !(strainOld >= m.deletionStrain);
    const double strainNew = vm::select(wasAlive, strainOld + spoil(w.plasticStrain[k]), strainOld);
    const bool isAlive = !(strainNew >= m.deletionStrain);
    const double keep = spoil(vm::select(trial > q, q / trial, 1.0));
    const Sym<Storage> elasticStress = sum(old, 2.0 * m.G, strain);
    const double shift = keep * (trace(elasticStress) * (-1.0 / 3.0)) - p;
    const Sym<Storage> now = select(isAlive, sum(keep * elasticStress, shift), Sym<Storage>{});
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
    const double left = keep * trial;
    const double elastic = vm::select(isAlive, (left * left * (0.5 * m.perG3) + w.recoverable[k]) * perDensity, 0.0);
    const double work = 0.5 * product(sum(old, 1.0, now), strain) * perDensity;
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
    if (model.isProportional) {
      findSurfaces<true>(b, model, start, length, w);
      returnToSurfaces<true>(b, model, start, length, w);
    } else {
      findSurfaces<false>(b, model, start, length, w);
      returnToSurfaces<false>(b, model, start, length, w);
    }
    settleOpen(b, model, start, length, w);
    if constexpr (Model::kTransforms) findWayBack(model, length, w);
    findRecoverable(model, length, w);
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
