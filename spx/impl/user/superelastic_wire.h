// Superelastic alloy in one dimension.
#pragma once

#include "spx/impl/user/superelastic_law.h"

namespace sa::user::alloy {

struct UniaxialState {
  double strain, xi, stress;
};

// As in three dimensions, with n fixed: the sign of the strain tells tension from compression.
struct UniaxialPart {
  double part;
  Norm norm;
};
SA_INLINE UniaxialPart uniaxialNorm(const Superelastic& m, double strain) {
  const double factor = kRoot + vm::select(strain < 0.0, -m.alpha, m.alpha);
  const double part = vm::select(strain < 0.0, m.eCompression, m.eTension);
  return {part, normPart(factor, m.E, m.dE, vm::abs(strain), part)};
}
// A part of an increment: from a strain and a fraction, by so much.
struct UniaxialStep {
  double before, xi, strain, tempOld, tempNew;
};
// The fractions after the steps of points.
template <class Law, class StepOf>
SA_INLINE void findFractions(const Law& model, int count, StepOf stepOf, Lane& xi) {
  const Law m = model;
  [[maybe_unused]] Ways ways;
  forPoints(count, [=, &ways, &xi](int k) SA_POINT {
    const UniaxialStep s = stepOf(k);
    const Norm F = uniaxialNorm(m, s.before + s.strain).norm;
    const Limits limits = limitsAt(m, uniaxialNorm(m, s.before).norm(s.xi), s.tempOld, s.tempNew);
    if constexpr (Law::kIterates)
      xi[k] = ways.set(k, F, moveOf(F, s.xi, limits));
    else
      xi[k] = transform(m, F, s.xi, limits).xi;
  });
  if constexpr (Law::kIterates) {
    Lane perNorm;
    goWays(m, count, ways, xi, perNorm);
  }
}
SA_INLINE UniaxialState stateAt(const Superelastic& m, double strain, double xi) {
  return {strain, xi,
          (m.E + xi * m.dE) * vm::copysign(1.0, strain) * (vm::abs(strain) - uniaxialNorm(m, strain).part * xi)};
}
// Where an increment starts, and the part of it up to zero strain, which is taken on its own.
struct UniaxialStart {
  UniaxialState state;
  double crossing, tempMiddle;
};
SA_INLINE UniaxialStart startOf(const Superelastic& m, double xi, double change, double stress, double strain,
                                double tempOld, double tempNew) {
  const UniaxialState start{stress / (m.E + xi * m.dE) + change, xi, stress};
  const double crossing = -start.strain / vm::select(strain == 0.0, 1.0, strain);
  const double t = vm::select((crossing > 0.0) & (crossing < 1.0), crossing, 0.0);
  return {start, t, tempOld + t * (tempNew - tempOld)};
}
SA_INLINE double transformation(const Superelastic& m, const UniaxialState& s) {
  return s.xi * vm::select(s.strain < 0.0, -m.eCompression, m.eTension);
}

template <bool kHasShear, class Law>
SA_INLINE void uniaxial(const Block& b, const Law& model) {
  const Law m = model;
  const int64_t n = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *tempOld = b.tempOld,
               *tempNew = b.tempNew, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;

  forPieces(b.points, [=](int from, int length) SA_POINT {
    const auto startAt = [=](int i) SA_POINT {
      return startOf(m, stateOld[i], stateOld[i + n], stressOld[i], strainInc[i], tempOld[i], tempNew[i]);
    };
    Lane xiMiddle, xiEnd;
    findFractions(
        m, length,
        [=](int k) SA_POINT {
          const int i = from + k;
          const UniaxialStart s = startAt(i);
          return UniaxialStep{s.state.strain, s.state.xi, s.crossing * strainInc[i], tempOld[i], s.tempMiddle};
        },
        xiMiddle);
    findFractions(
        m, length,
        [=, &xiMiddle](int k) SA_POINT {
          const int i = from + k;
          const UniaxialStart s = startAt(i);
          const double strain = strainInc[i];
          return UniaxialStep{s.state.strain + s.crossing * strain, xiMiddle[k], (1.0 - s.crossing) * strain,
                              s.tempMiddle, tempNew[i]};
        },
        xiEnd);
    forPoints(length, [=, &xiMiddle, &xiEnd](int k) SA_POINT {
      const int i = from + k;
      const double xi = stateOld[i], old = stressOld[i], strain = strainInc[i], temp1 = tempNew[i];
      const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
      const UniaxialStart start = startAt(i);
      const double t = start.crossing;
      const UniaxialState middle = stateAt(m, start.state.strain + t * strain, xiMiddle[k]),
                          end = stateAt(m, middle.strain + (1.0 - t) * strain, xiEnd[k]);
      const double changeEnd = transformation(m, end);
      const double first = 0.5 * (old + middle.stress), second = 0.5 * (middle.stress + end.stress);
      double work = first * (t * strain) + second * ((1.0 - t) * strain);
      const double elasticStrain = end.strain - transformation(m, end);
      double stored = 0.5 * end.stress * elasticStrain + end.xi * m.storedPerXi(temp1);

      stress[i] = end.stress;
      if constexpr (kHasShear) {
        // elastic, whatever the fraction
        const double oldShear = stressOld[i + n], shear = strainInc[i + n];
        const double elastic = oldShear / (m.G + xi * m.dG) + 2.0 * shear, newShear = (m.G + end.xi * m.dG) * elastic;
        work += (oldShear + newShear) * shear;
        stored += 0.5 * newShear * elastic;
        stress[i + n] = newShear;
      }
      const double lateral = 0.5 * (m.eV * end.xi - changeEnd);
      state[i] = end.xi;
      state[i + n] = changeEnd;
      state[i + 2 * n] = lateral;
      state[i + 3 * n] = lateral;
      state[i + 4 * n] = 0.0;
      state[i + 5 * n] = 0.0;
      state[i + 6 * n] = 0.0;
      state[i + kEquivalentStress * n] = uniaxialNorm(m, end.strain).norm(end.xi) / (kRoot + m.alpha);
      const double internalNow = intOld + work * perDensity;
      internal[i] = internalNow;
      // lost is what the stress has worked and the point can not give back
      inelastic[i] = grown(inelOld, internalNow - stored * perDensity);
    });
  });
  keepStates(b, Superelastic::kStates);
}

} // namespace sa::user::alloy
