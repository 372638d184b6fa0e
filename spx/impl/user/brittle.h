// Brittle materials whose strength depends on pressure, rate and damage: the update that ceramics and concrete share.
// Here are the passes over a piece; brittle_point.h has what they share, brittle_open.h the points that the return leaves open,
// brittle_release.h what comes back.
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

#include "spx/impl/user/brittle_open.h"
#include "spx/impl/user/brittle_release.h"

namespace sa::user {

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
