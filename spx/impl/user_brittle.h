// Brittle materials whose strength depends on pressure, rate and damage: the update that ceramics and concrete share.
//
// A model gives, for one point,
//   pressure(mu, history)   pressure of the compression mu, and the history variable that goes with it
//   strength(P, rate)       the two surfaces between which damage moves the strength, and the plastic strain that damages fully
// and says by constants
//   kGradual     strength goes with damage in a straight line from intact to fractured, else it stays intact until D = 1
//   kCapped      strength never exceeds model.cap
//   kBulks       elastic energy that damage sets free becomes pressure (model.beta, model.K1); the history is that pressure
//   kCompacts    the history is the largest mu so far; one more state variable is the permanent compaction
#pragma once

#include "spx/impl/user_frame.h"

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

template <class Storage, class Model>
SA_INLINE void brittle(const Block& b, const Model& model) {
  const Model m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *defgrad = b.defgrad, *stressOld = b.stressOld, *stateOld = b.stateOld,
               *internalOld = b.internalOld, *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  const double perTime = b.dt <= 0.0 ? 0.0 : 1.0 / b.dt;

  // Three passes of straight code, so that several vectors overlap: pressure and trial stress, powers and logarithm, return.
  forPieces(b.points, [=](int start, int length) SA_POINT {
    double mu[kScratchPoints], pressure[kScratchPoints], history[kScratchPoints], compaction[kScratchPoints],
        trial[kScratchPoints], rate[kScratchPoints];
    double intact[kScratchPoints], fractured[kScratchPoints], failureStrain[kScratchPoints];

    forPoints(length, [=, &mu, &pressure, &history, &compaction, &trial, &rate](int k) SA_POINT {
      const int i = start + k;
      const Sym<Storage> e = deviator(loadTensor<Storage>(strainInc, N, i));
      const Sym<Storage> s = sum(deviator(loadTensor<Storage>(stressOld, N, i)), 2.0 * m.G, e);
      trial[k] = vm::sqrt(1.5 * product(s, s));
      rate[k] = vm::sqrt(2.0 / 3.0 * product(e, e)) * perTime;
      // an element that is turned inside out is for others to report: here it counts as compressed to a millionth
      mu[k] = 1.0 / vm::max(1e-6, volumeRatio<Storage>(defgrad, N, i)) - 1.0;
      const Pressure p = m.pressure(mu[k], stateOld[i + kHistory * N]);
      pressure[k] = p.p;
      history[k] = p.history;
      compaction[k] = p.compaction;
    });

    forPoints(length, [=, &pressure, &rate, &intact, &fractured, &failureStrain](int k) SA_POINT {
      const double D = stateOld[start + k + kDamage * N];
      const double p = vm::max(-tensionLimit(m, D), pressure[k]);
      const double factor = 1.0 + m.C * vm::logPositive(vm::max(1.0, rate[k] * m.perReferenceRate));
      const Strength s = m.strength(p, factor);
      intact[k] = s.intact;
      fractured[k] = s.fractured;
      failureStrain[k] = s.failureStrain;
    });

    forPoints(length, [=, &mu, &pressure, &history, &compaction, &trial, &rate, &intact, &fractured,
                       &failureStrain](int k) SA_POINT {
      const int i = start + k;
      const double strainOld = stateOld[i], damageOld = stateOld[i + N], historyOld = stateOld[i + kHistory * N];
      const Sym<Storage> old = loadTensor<Storage>(stressOld, N, i), strain = loadTensor<Storage>(strainInc, N, i);
      const Sym<Storage> sOld = deviator(old);
      const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];

      // compaction damages by itself, then the plastic strain does
      [[maybe_unused]] const double left = compaction[k];
      double D = damageOld, crushed = 0.0, crushedOld = 0.0;
      if constexpr (Model::kCompacts) {
        crushedOld = stateOld[i + kCompaction * N];
        crushed = vm::max(0.0, left - crushedOld);
        D = vm::min(1.0, D + crushed / failureStrain[k]);
      }
      Returned r = returnTo(m, Strength{intact[k], fractured[k], failureStrain[k]}, trial[k], D);

      double p = pressure[k], h = history[k];
      if constexpr (Model::kBulks) {
        const double before = strengthAt(m, Strength{intact[k], fractured[k], failureStrain[k]}, D);
        const double lost = vm::select(r.damage > D, (before * before - r.q * r.q) * (0.5 * m.perG3), 0.0);
        const double growth = bulking(m.K1 * mu[k] + h, m.beta * m.K1, lost);
        p += growth;
        h += growth;
      }
      p = vm::max(-tensionLimit(m, r.damage), p);

      // strengths and limits are chosen by comparisons, which a NaN passes: it spoils stress and state of its point here
      const double read = strainOld + damageOld + historyOld + crushedOld + mu[k] + trial[k] + rate[k];
      const auto spoil = [read](double x) SA_POINT { return vm::select(read == read, x, vm::kNaN); };
      p = spoil(p);
      h = spoil(h);
      r.plasticStrain = spoil(r.plasticStrain);
      r.damage = spoil(r.damage);

      // a point that is deleted keeps what it had; one that is deleted now loses its stress
      const bool wasAlive = !(strainOld >= m.deletionStrain);
      const double strainNew = vm::select(wasAlive, strainOld + r.plasticStrain, strainOld);
      const bool isAlive = !(strainNew >= m.deletionStrain);
      const double keep = vm::select(trial[k] > r.q, r.q / trial[k], 1.0);
      const Sym<Storage> sTrial = sum(sOld, 2.0 * m.G, deviator(strain)), sNew = keep * sTrial;
      const Sym<Storage> now = select(isAlive, sum(sNew, -p), Sym<Storage>{});
      storeTensor(stress, N, i, now);
      state[i] = strainNew;
      state[i + kDamage * N] = vm::select(wasAlive, r.damage, damageOld);
      state[i + kStatus * N] = vm::select(isAlive, 1.0, 0.0);
      state[i + kHistory * N] = vm::select(wasAlive, h, historyOld);

      // mean deviator times plastic strain, which has the direction of the trial stress: what is left of the work is elastic
      const double qOld = 1.5 * product(sOld, sTrial) / vm::max(1e-300, trial[k]);
      double dissipated = 0.5 * (qOld + r.q) * r.plasticStrain;
      if constexpr (Model::kCompacts) {
        state[i + kCompaction * N] = vm::select(wasAlive, crushedOld + crushed, crushedOld);
        const double pOld = trace(old) * (-1.0 / 3.0);
        dissipated += 0.5 * (pOld + p) * crushed / (1.0 + mu[k]);
      }
      const double work = 0.5 * (product(old, strain) + product(now, strain));
      internal[i] = vm::select(wasAlive, intOld + work * perDensity, intOld);
      inelastic[i] = vm::select(wasAlive, inelOld + dissipated * perDensity, inelOld);
    });
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
