// Brittle materials whose strength depends on pressure, rate and damage: the update that ceramics and concrete share.
//
// A model gives, for one point,
//   pressure(mu, history)   pressure of the compression mu, and the history variable that goes with it
//   strength(P, rate)       the two surfaces between which damage moves the strength, and the plastic strain that damages fully
//   recoverable(mu, history, limit)   per undeformed volume, the work of the pressure on the way from here to where it is zero,
//                           tension being no larger than the limit
//   isSudden(strength)      strength falls at once, not with the plastic strain (where kBulks)
// and says by constants
//   kGradual     strength goes with damage in a straight line from intact to fractured, else it stays intact until D = 1
//   kCapped      strength never exceeds model.cap
//   kBulks       elastic energy that damage sets free becomes pressure (model.beta, model.K1); the history is that pressure
//   kCompacts    the history is the largest mu so far; one more state variable is the permanent compaction
#pragma once

#include "spx/impl/user/frame.h"

namespace sa::user {

struct Pressure {
  double p;          // before the limit of tension
  double history;    // at the end of the increment
  double compaction; // permanent part of mu; 0.0 where the model has none
};
struct Strength {
  double intact, fractured; // von Mises stress
  double failureStrain;     // plastic strain from D = 0 to D = 1
};

// State variables, from 0.
constexpr int kPlasticStrain = 0, kDamage = 1, kStatus = 2, kHistory = 3, kCompaction = 4;

// Constants that all have.
struct BrittleConstants {
  double G, perG3, C, perReferenceRate, T, K1, K2, K3, deletionStrain;
  SA_INLINE double cubic(double mu) const { return mu * (K1 + mu * (K2 + mu * K3)); }
};
// Energies per undeformed volume V0 of pressures mu, mu^2 and mu^3: the integrals of them over -dV/V0 = dmu/(1 + mu)^2 from 0.
struct VolumeEnergy {
  double linear, square, cube;
};
SA_INLINE VolumeEnergy volumeEnergy(double mu) {
  const double L = vm::logPositive(1.0 + mu), w = mu / (1.0 + mu);
  return {L - w, (mu - 2.0 * L) + w, mu * (0.5 * mu - 2.0) + (3.0 * L - w)};
}
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

// From the trial stress q0 and the damage D: q = q0 - 3 G dep, q = q(D + dep/ef).  Where D moves the strength faster than the
// stress can follow, 3 G ef <= intact - fractured, there is no state between and D = 1.
template <class Model>
SA_INLINE Returned returnTo(const Model& m, const Strength& s, double q0, double D) {
  const double G3 = 3.0 * m.G, perG3 = m.perG3, ef = vm::max(1e-30, s.failureStrain), perFailure = 1.0 / ef;
  const double broken = strengthAt(m, s, 1.0), q = strengthAt(m, s, D);
  // round-off is no shear: at the limit of tension, where strength and failure strain are zero, it would break the point
  const bool yields = q0 > q + 1e-12 * m.G;
  if constexpr (Model::kGradual) {
    const double drop = s.intact - s.fractured, line = s.intact - D * drop, slope = G3 * ef - drop;
    // on the straight line, no further than to zero stress; in one step to D = 1 where that is passed or no state lies between
    const double strainOnLine = vm::min(q0 * perG3, (q0 - line) * ef / vm::select(slope > 0.0, slope, 1.0));
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

// Where a point stands before its return, and what its answer at a pressure needs.
struct BeforeReturn {
  double trial, damage, rateFactor;
  double pressure;      // before the limit of tension, without the bulking of the increment
  double limited;       // not below the largest tension that the damage at the start leaves
  double bulkingArm;    // K1 mu + dP
  double failureStrain; // at that
  double fallsFrom;     // the strength that a sudden failure leaves, 0.0 where there is none
};
// The end of the increment, if the strength is that of one pressure; the pressure that follows is larger by bulking or because
// damage lowers the limit of tension.
struct AtPressure {
  Returned returned;
  double growth, pressure;
  double sudden; // 1.0 where the strength falls at once
};

template <class Model>
SA_INLINE AtPressure finish(const Model& m, const BeforeReturn& point, const Strength& s, const Returned& r) {
  double growth = 0.0;
  if constexpr (Model::kBulks) {
    // what damage takes of the elastic energy at this pressure
    const double before =
        vm::select(point.fallsFrom > 0.0, point.fallsFrom, vm::min(point.trial, strengthAt(m, s, point.damage)));
    const double lost = vm::select(r.damage > point.damage, (before * before - r.q * r.q) * (0.5 * m.perG3), 0.0);
    growth = bulking(point.bulkingArm, m.beta * m.K1, lost);
  }
  double sudden = 0.0;
  if constexpr (Model::kBulks) sudden = vm::select((r.damage >= 1.0) & (point.damage < 1.0) & m.isSudden(s), 1.0, 0.0);
  return {r, growth, vm::max(-tensionLimit(m, r.damage), point.pressure + growth), sudden};
}

// A failure that was sudden stays one.
template <class Model>
SA_INLINE AtPressure atPressure(const Model& m, const BeforeReturn& point, double p) {
  Strength s = m.strength(p, point.rateFactor);
  s.failureStrain = point.failureStrain;
  const Returned r = returnTo(m, s, point.trial, point.damage);
  const double broken = vm::min(point.trial, strengthAt(m, s, 1.0));
  const bool falls = point.fallsFrom > 0.0;
  return finish(m, point, s,
                Returned{vm::select(falls, broken, r.q),
                         vm::select(falls, (point.trial - broken) * m.perG3, r.plasticStrain),
                         vm::select(falls, 1.0, r.damage)});
}

// What the passes over a piece hand on.
struct BrittleScratch {
  double mu[kScratchPoints], pressure[kScratchPoints], history[kScratchPoints], compaction[kScratchPoints],
      trial[kScratchPoints], rate[kScratchPoints]; // the rate, then its factor
  double intact[kScratchPoints], fractured[kScratchPoints], failureStrain[kScratchPoints];
  double damageBefore[kScratchPoints], q[kScratchPoints], plasticStrain[kScratchPoints], damage[kScratchPoints],
      growth[kScratchPoints], fallsFrom[kScratchPoints], before[kScratchPoints], limited[kScratchPoints],
      rise[kScratchPoints];
};

// Pressure, trial stress and rate.
template <class Storage, class Model>
SA_INLINE void findTrial(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *defgrad = b.defgrad, *stressOld = b.stressOld, *stateOld = b.stateOld;
  const double perTime = b.dt <= 0.0 ? 0.0 : 1.0 / b.dt;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Sym<Storage> e = deviator(loadTensor<Storage>(strainInc, N, i));
    const Sym<Storage> s = sum(deviator(loadTensor<Storage>(stressOld, N, i)), 2.0 * m.G, e);
    w.trial[k] = vm::sqrt(1.5 * product(s, s));
    w.rate[k] = vm::sqrt(2.0 / 3.0 * product(e, e)) * perTime;
    // an element that is turned inside out is for others to report: here it counts as compressed to a millionth
    w.mu[k] = 1.0 / vm::max(1e-6, volumeRatio<Storage>(defgrad, N, i)) - 1.0;
    const Pressure p = m.pressure(w.mu[k], stateOld[i + kHistory * N]);
    w.pressure[k] = p.p;
    w.history[k] = p.history;
    w.compaction[k] = p.compaction;
  });
}

// The surfaces at the pressure without what the increment does to it.
template <class Model>
SA_INLINE void findSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const double* damageOld = b.stateOld + kDamage * int64_t{b.points};
  forPoints(length, [=, &w](int k) SA_POINT {
    const double p = vm::max(-tensionLimit(m, damageOld[start + k]), w.pressure[k]);
    const double factor = 1.0 + m.C * vm::logPositive(vm::max(1.0, w.rate[k] * m.perReferenceRate));
    const Strength s = m.strength(p, factor);
    w.limited[k] = p;
    w.rate[k] = vm::select(w.rate[k] == w.rate[k], factor, vm::kNaN);
    w.intact[k] = s.intact;
    w.fractured[k] = s.fractured;
    w.failureStrain[k] = s.failureStrain;
  });
}

// Return to those surfaces, and by how much the pressure rises with it.
template <class Model>
SA_INLINE void returnToSurfaces(const Block& b, const Model& model, int start, int length, BrittleScratch& w) {
  const Model m = model;
  const int64_t N = b.points;
  const double* stateOld = b.stateOld;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const double intact = w.intact[k], fractured = w.fractured[k], failureStrain = w.failureStrain[k];
    const double trial = w.trial[k], factor = w.rate[k], pressure = w.pressure[k], limited = w.limited[k];
    const double arm = m.K1 * w.mu[k] + w.history[k];
    const Strength s{intact, fractured, failureStrain};
    // compaction damages by itself, then the plastic strain does
    double D = stateOld[i + kDamage * N];
    if constexpr (Model::kCompacts)
      D = vm::min(1.0, D + vm::max(0.0, w.compaction[k] - stateOld[i + kCompaction * N]) / s.failureStrain);
    const Returned r = returnTo(m, s, trial, D);
    double falls = 0.0;
    if constexpr (Model::kBulks)
      falls = vm::select((r.damage >= 1.0) & (D < 1.0) & m.isSudden(s), strengthAt(m, s, D), 0.0);
    const AtPressure end =
        finish(m, BeforeReturn{trial, D, factor, pressure, limited, arm, failureStrain, falls}, s, r);
    w.damageBefore[k] = D;
    w.q[k] = r.q;
    w.plasticStrain[k] = r.plasticStrain;
    w.damage[k] = r.damage;
    w.growth[k] = end.growth;
    w.fallsFrom[k] = falls;
    w.before[k] = strengthAt(m, s, D);
    w.rise[k] = end.pressure - limited;
  });
}

// Strength and pressure of the end belong together: the rise x of the pressure solves rise(limited + x) = x, which lies between
// 0 and what the whole elastic energy would give.  False position with halved weights (Illinois), with a bisection every fourth
// step.  Where strength falls at once at a pressure on the way, the point falls from what it had at the start of the way.  The
// points with a rise stand side by side, so that the others cost nothing; each stops by itself.
constexpr int kRiseSteps = 30;
template <class Model>
SA_INLINE void balancePressure(const Model& model, int length, BrittleScratch& w) {
  const Model m = model;
  int place[kScratchPoints], count = 0;
  for (int k = 0; k < length; ++k) {
    place[count] = k;
    count += w.rise[k] > 0.0 ? 1 : 0;
  }
  if (count == 0) return;
  double trial[kScratchPoints], damage[kScratchPoints], factor[kScratchPoints], pressure[kScratchPoints],
      limited[kScratchPoints], arm[kScratchPoints], failureStrain[kScratchPoints], falls[kScratchPoints],
      before[kScratchPoints];
  double x[kScratchPoints], low[kScratchPoints], high[kScratchPoints], atLow[kScratchPoints], atHigh[kScratchPoints],
      side[kScratchPoints], runs[kScratchPoints], bounds[kScratchPoints];
  for (int j = 0; j < count; ++j) {
    const int k = place[j];
    trial[j] = w.trial[k], damage[j] = w.damageBefore[k], factor[j] = w.rate[k], pressure[j] = w.pressure[k];
    limited[j] = w.limited[k], failureStrain[j] = w.failureStrain[k], falls[j] = w.fallsFrom[k],
    before[j] = w.before[k];
    arm[j] = m.K1 * w.mu[k] + w.history[k];
    x[j] = atLow[j] = w.rise[k];
  }
  const auto point = [&](int j) SA_POINT {
    return BeforeReturn{trial[j], damage[j], factor[j], pressure[j], limited[j], arm[j], failureStrain[j], falls[j]};
  };
  forPoints(count, [=, &limited, &arm, &trial, &x, &low, &high, &atHigh, &side, &runs, &bounds](int j) SA_POINT {
    double bound = vm::max(0.0, -limited[j]);
    if constexpr (Model::kBulks) bound += bulking(arm[j], m.beta * m.K1, trial[j] * trial[j] * (0.5 * m.perG3));
    x[j] = vm::min(x[j], bound);
    low[j] = 0.0;
    high[j] = bound;
    bounds[j] = bound;
    atHigh[j] = -bound;
    side[j] = 0.0;
    runs[j] = 1.0;
  });
  double running = 1.0;
  for (int step = 0; step < kRiseSteps && running > 0.0; ++step) {
    const bool bisects = step % 4 == 3;
    forPoints(count, [=, &point, &x, &low, &high, &atLow, &atHigh, &side, &runs, &falls, &before,
                      &bounds](int j) SA_POINT {
      const BeforeReturn at = point(j);
      const double rise = x[j], lower = low[j], upper = high[j], below = atLow[j], above = atHigh[j], last = side[j];
      const AtPressure end = atPressure(m, at, at.limited + rise);
      const double left = end.pressure - at.limited - rise;
      const bool isLow = left > 0.0;
      const double a = vm::select(isLow, rise, lower), b = vm::select(isLow, upper, rise);
      const double fa = vm::select(isLow, left, below * vm::select(last < 0.0, 0.5, 1.0)),
                   fb = vm::select(isLow, above * vm::select(last > 0.0, 0.5, 1.0), left);
      const double middle = 0.5 * (a + b), secant = (a * fb - b * fa) / vm::select(fb < fa, fb - fa, -1e-300);
      const double next = vm::select(!bisects & (secant >= a) & (secant <= b), secant, middle);
      const double scale = 1e-14 * (m.T + vm::abs(at.limited) + rise);
      const bool goes = (vm::abs(left) > scale) & (b - a > scale) & (runs[j] > 0.0);
      // what was found before a sudden fall does not hold behind it
      const bool turns = (end.sudden > 0.0) & !(at.fallsFrom > 0.0) & (runs[j] > 0.0);
      falls[j] = vm::select(turns, before[j], at.fallsFrom);
      x[j] = vm::select(goes & !turns, next, rise);
      low[j] = vm::select(turns, 0.0, vm::select(goes, a, lower));
      high[j] = vm::select(turns, bounds[j], vm::select(goes, b, upper));
      atLow[j] = vm::select(turns, bounds[j], vm::select(goes, fa, below));
      atHigh[j] = vm::select(turns, -bounds[j], vm::select(goes, fb, above));
      side[j] = vm::select(isLow, 1.0, -1.0);
      runs[j] = vm::select(goes | turns, 1.0, 0.0);
    });
    running = 0.0;
    for (int j = 0; j < count; ++j) running += runs[j];
  }
  forPoints(count, [=, &point, &x, &low, &high, &atLow, &atHigh](int j) SA_POINT {
    const BeforeReturn at = point(j);
    const AtPressure end = atPressure(m, at, at.limited + x[j]);
    low[j] = end.returned.q;
    high[j] = end.returned.plasticStrain;
    atLow[j] = end.returned.damage;
    atHigh[j] = end.growth;
  });
  for (int j = 0; j < count; ++j) {
    const int k = place[j];
    w.q[k] = low[j], w.plasticStrain[k] = high[j], w.damage[k] = atLow[j], w.growth[k] = atHigh[j];
  }
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
    if constexpr (Model::kCompacts) crushedOld = stateOld[i + kCompaction * N];
    const double read = strainOld + damageOld + historyOld + crushedOld + w.mu[k] + w.trial[k] + w.rate[k];
    const auto spoil = [read](double x) SA_POINT { return vm::select(read == read, x, vm::kNaN); };
    const double trial = w.trial[k], q = w.q[k], D = spoil(w.damage[k]), h = spoil(w.history[k] + w.growth[k]);
    const double limit = tensionLimit(m, D), p = spoil(vm::max(-limit, w.pressure[k] + w.growth[k]));

    // a point that is deleted keeps what it had; one that is deleted now loses its stress
    const bool wasAlive = !(strainOld >= m.deletionStrain);
    const double strainNew = vm::select(wasAlive, strainOld + spoil(w.plasticStrain[k]), strainOld);
    const bool isAlive = !(strainNew >= m.deletionStrain);
    const double keep = vm::select(trial > q, q / trial, 1.0);
    const Sym<Storage> sTrial = sum(deviator(old), 2.0 * m.G, deviator(strain));
    const Sym<Storage> now = select(isAlive, sum(keep * sTrial, -p), Sym<Storage>{});
    storeTensor(stress, N, i, now);
    state[i] = strainNew;
    state[i + kDamage * N] = vm::select(wasAlive, D, damageOld);
    state[i + kStatus * N] = vm::select(isAlive, 1.0, 0.0);
    state[i + kHistory * N] = vm::select(wasAlive, h, historyOld);
    if constexpr (Model::kCompacts) {
      state[i + kCompaction * N] = vm::select(wasAlive, vm::max(w.compaction[k], crushedOld), crushedOld);
    }

    // lost is what the stress has worked and the point does not give back on its way to zero stress
    const double left = keep * trial, volume = 1.0 + w.mu[k];
    const double elastic = left * left * (0.5 * m.perG3) + m.recoverable(w.mu[k], h, limit) * volume;
    const double work = 0.5 * (product(old, strain) + product(now, strain));
    const double internalNow = intOld + work * perDensity;
    const double lost = vm::max(inelOld, internalNow - vm::select(isAlive, elastic, 0.0) * perDensity);
    internal[i] = vm::select(wasAlive, internalNow, intOld);
    inelastic[i] = vm::select(wasAlive, lost, inelOld);
  });
}

template <class Storage, class Model>
SA_INLINE void brittle(const Block& b, const Model& model) {
  forPieces(b.points, [&b, &model](int start, int length) SA_POINT {
    BrittleScratch w;
    findTrial<Storage>(b, model, start, length, w);
    findSurfaces(b, model, start, length, w);
    returnToSurfaces(b, model, start, length, w);
    balancePressure(model, length, w);
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
