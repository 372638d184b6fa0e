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
template <class Law>
SA_INLINE UniaxialState advance(const Law& m, const UniaxialState& from, double strain, double tempOld,
                                double tempNew) {
  const double total = from.strain + strain;
  const Limits limits = limitsAt(m, uniaxialNorm(m, from.strain).norm(from.xi), tempOld, tempNew);
  const UniaxialPart now = uniaxialNorm(m, total);
  const double xi = transform(m, now.norm, from.xi, limits).xi;
  return {total, xi, (m.E + xi * m.dE) * vm::copysign(1.0, total) * (vm::abs(total) - now.part * xi)};
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

  forPoints(b.points, [=](int i) SA_POINT {
    const double xi = stateOld[i], change = stateOld[i + n], old = stressOld[i], strain = strainInc[i];
    const double temp0 = tempOld[i], temp1 = tempNew[i];
    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const UniaxialState start{old / (m.E + xi * m.dE) + change, xi, old};
    // an increment through zero strain is taken in two
    const double crossing = -start.strain / vm::select(strain == 0.0, 1.0, strain);
    const double t = vm::select((crossing > 0.0) & (crossing < 1.0), crossing, 0.0);
    const double tempMiddle = temp0 + t * (temp1 - temp0);
    const UniaxialState middle = advance(m, start, t * strain, temp0, tempMiddle);
    const UniaxialState end = advance(m, middle, (1.0 - t) * strain, tempMiddle, temp1);
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
  keepStates(b, Superelastic::kStates);
}

} // namespace sa::user::alloy
