// Slow-recovering flexible foam: a hyperelastic skeleton, and a Maxwell branch whose viscosity grows with compaction.
#include "spx.h"
#include "spx/impl/user/stretch_frame.h"
#include "spx/impl/user/tables.h"

namespace sa::user {
namespace {

constexpr int kTermColumns = 3, kTerms = 2; // mu, alpha, beta

struct ViscousFoam {
  static constexpr int kStates = 6, kProperties = 10;
  struct Term {
    double mu, alpha, beta;
  };
  Term term[kTerms];
  int terms;
  double E, eta, exponent, largest, dt; // of the branch
  bool isViscous;

  static bool isRefused(const Block& b) {
    if (refuseUnless(b, b.isSolid() || b.isPlane(),
                     "The viscous foam user material only supports 3D, plane strain and axisymmetric elements.") ||
        refuseStates(b, kStates,
                     "The viscous foam user material requires the specification of %I state variables. "
                     "Check the definition of *DEPVAR in the input file.") ||
        refuseProperties(b, kProperties,
                         "The viscous foam user material requires the specification of %I material properties in the "
                         "*USER MATERIAL option for material %S.") ||
        refuseValues(b, {1}))
      return true;
    for (int32_t number = 1; number <= kTerms * kTermColumns; ++number)
      if (refuseOutside(b, number, number % kTermColumns == 1 ? 0.0 : -1e300, vm::kInfinity)) return true;
    for (int32_t t = 0; t < kTerms; ++t) {
      const double *p = b.props + kTermColumns * t, beta = p[2];
      if (p[0] == 0.0) continue;
      if (refuseUnless(b, p[1] != 0.0, "An exponent alpha of material %S, property 2 or 5, is zero.")) return true;
      if (!(beta > -1.0 / 3.0))
        return refuse(b, "Beta of a term of material %S, property %I, must be greater than -1/3: it is %R.",
                      kTermColumns * (t + 1), &beta);
    }
    for (int32_t number = kTerms * kTermColumns + 1; number <= kProperties; ++number)
      if (refuseOutside(b, number, 0.0)) return true;
    return false;
  }
  explicit ViscousFoam(const Block& b) {
    const double* p = b.props;
    for (int t = 0; t < kTerms; ++t) term[t] = {p[kTermColumns * t], p[kTermColumns * t + 1], p[kTermColumns * t + 2]};
    terms = term[1].mu != 0.0 ? 2 : 1;
    E = p[6], eta = p[7], exponent = p[8], largest = p[9] > 0.0 ? p[9] : 1e100;
    isViscous = E > 0.0 && eta > 0.0;
    dt = b.dt < 0.0 ? 0.0 : b.dt;
  }
  bool isWrong(const Block&) const { return false; }
  // At rest the branch is as stiff as its spring, and does not move the sides.
  double shearModulus() const { return (term[0].mu + (terms > 1 ? term[1].mu : 0.0)) + (isViscous ? 0.5 * E : 0.0); }
  double bulkModulus() const {
    double K = isViscous ? E / 3.0 : 0.0;
    for (int t = 0; t < terms; ++t) K += 2.0 * term[t].mu * (term[t].beta + 1.0 / 3.0);
    return K;
  }
  SA_INLINE double viscosity(double logVolume) const {
    const double grown = vm::min(largest, eta * vm::expClamped(-exponent * logVolume));
    return vm::max(1e-100, grown);
  }
};

// Of the branch over an increment, with x = dt/theta: exp(-x), (1 - exp(-x))/x, (1 - that)/x.
struct Relaxation {
  double left, mean, ramp;
};
SA_INLINE Relaxation relaxation(double x) {
  constexpr double kSeries[] = {1.0 / 2.0,     -1.0 / 6.0,    1.0 / 24.0,      -1.0 / 120.0,    1.0 / 720.0,
                                -1.0 / 5040.0, 1.0 / 40320.0, -1.0 / 362880.0, 1.0 / 3628800.0, -1.0 / 39916800.0};
  constexpr double kNone = 1e-100;
  const double gone = -vm::expm1(-x), per = 1.0 / vm::select(x < kNone, kNone, x),
               mean = vm::select(x < kNone, 1.0, gone * per);
  return {vm::exp(-x), mean, vm::select(x < 0.1, vm::polynomial(x, kSeries), (1.0 - mean) * per)};
}

template <class Storage>
struct ViscousScratch {
  StretchFrame<Storage> frame;
  Lane log1, log2, log3;          // of the stretches
  Lane volume;                    // J^(-alpha beta) - 1 of a term
  Lane stress1, stress2, stress3; // principal Kirchhoff stress
  Lane energy;
  Lane atStart, atEnd, perMiddle; // viscosities: at both ends, one over that between
};

// Principal Kirchhoff stresses and the energy per undeformed volume of the skeleton.
template <class Storage>
SA_INLINE void strainSkeleton(const Block& b, const ViscousFoam& m, int start, int n, ViscousScratch<Storage>& w) {
  findFrame(b.stretch, b.points, start, n, w.frame);
  forPoints(n, [&w](int k) SA_POINT { w.log1[k] = logAboutOne(-w.frame.e1[k], 1.0); });
  forPoints(n, [&w](int k) SA_POINT { w.log2[k] = logAboutOne(-w.frame.e2[k], 1.0); });
  forPoints(n, [&w](int k) SA_POINT { w.log3[k] = logAboutOne(-w.frame.e3[k], 1.0); });
  for (int t = 0; t < m.terms; ++t) {
    const double mu = m.term[t].mu, alpha = m.term[t].alpha, beta = m.term[t].beta;
    const bool isFirst = t == 0, moves = beta != 0.0;
    const double perBeta = moves ? 1.0 / beta : 0.0, factor = 2.0 * mu / alpha, energyFactor = factor / alpha;
    if (moves)
      forPoints(n, [=, &w](int k)
                       SA_POINT { w.volume[k] = vm::expm1(-alpha * beta * ((w.log1[k] + w.log2[k]) + w.log3[k])); });
    else
      forPoints(n, [&w](int k) SA_POINT { w.volume[k] = 0.0; });
    forPoints(n, [=, &w](int k) SA_POINT {
      const double l1 = w.log1[k], l2 = w.log2[k], l3 = w.log3[k], J = (l1 + l2) + l3, volume = w.volume[k];
      const double x1 = vm::expm1(alpha * l1), x2 = vm::expm1(alpha * l2), x3 = vm::expm1(alpha * l3);
      const double volumeEnergy = vm::select(moves, volume * perBeta, -alpha * J);
      const double t1 = isFirst ? 0.0 : w.stress1[k], t2 = isFirst ? 0.0 : w.stress2[k],
                   t3 = isFirst ? 0.0 : w.stress3[k], W = isFirst ? 0.0 : w.energy[k];
      w.stress1[k] = t1 + factor * (x1 - volume);
      w.stress2[k] = t2 + factor * (x2 - volume);
      w.stress3[k] = t3 + factor * (x3 - volume);
      w.energy[k] = W + energyFactor * (((x1 + x2) + x3) + volumeEnergy);
    });
  }
}

// At both ends of the increment and at the volume in the middle, the root of the product of those there.
template <class Storage>
SA_INLINE void findViscosities(const Block& b, const ViscousFoam& model, int start, int n, ViscousScratch<Storage>& w) {
  const ViscousFoam m = model;
  const int64_t N = b.points;
  const double *stretchOld = b.stretchOld, *stretch = b.stretch;
  forPoints(n, [=, &w](int k) SA_POINT {
    const double volumeOld = stretchVolume(loadTensor<Storage>(stretchOld, N, start + k)),
                 volume = stretchVolume(loadTensor<Storage>(stretch, N, start + k));
    // a NaN stays one
    w.atStart[k] = vm::logPositive(volumeOld) + (volumeOld - volumeOld);
    w.atEnd[k] = vm::logPositive(volume) + (volume - volume);
  });
  forPoints(n, [=, &w](int k) SA_POINT {
    const double before = w.atStart[k], now = w.atEnd[k];
    w.perMiddle[k] = 1.0 / m.viscosity(0.5 * (before + now));
    w.atStart[k] = m.viscosity(before);
    w.atEnd[k] = m.viscosity(now);
  });
}

// The branch dq/dt = E d - q/theta, theta = eta/E with eta straight over the increment, in closed form: of second order, right at
// once where the increment is long, elastic where it takes no time.  Its loss is that of the viscosity in the middle.
template <class Storage, bool kViscous>
SA_INLINE void storeViscous(const Block& b, const ViscousFoam& model, int start, int n, ViscousScratch<Storage>& w) {
  const ViscousFoam m = model;
  const int64_t N = b.points;
  [[maybe_unused]] const double perE = kViscous ? 1.0 / m.E : 0.0;
  if constexpr (kViscous) findViscosities(b, m, start, n, w);
  const double *stretchOld = b.stretchOld, *stretch = b.stretch, *strainInc = b.strainInc, *stressOld = b.stressOld,
               *density = b.density, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld,
               *stateOld = b.stateOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic, *state = b.state;
  forPoints(n, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const double volumeOld = stretchVolume(loadTensor<Storage>(stretchOld, N, i)),
                 volume = stretchVolume(loadTensor<Storage>(stretch, N, i));
    const Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i);
    Sym<Storage> kirchhoff = outOfFrame(w.frame.directions(k), w.stress1[k], w.stress2[k], w.stress3[k]);
    double loss = 0.0;
    if constexpr (kViscous) {
      const double perMiddle = w.perMiddle[k];
      const Relaxation r = relaxation(vm::min(1e100, m.dt * (m.E * perMiddle)));
      const Sym<Storage> before = loadTensor<Storage>(stateOld, N, i), load = m.E * strain;
      const double start1 = w.atStart[k] * perMiddle, end1 = w.atEnd[k] * perMiddle;
      const Sym<Storage> q = sum(r.left * before, start1 * r.mean + (end1 - start1) * r.ramp, load);
      storeTensor(state, N, i, q);
      kirchhoff = sum(kirchhoff, 1.0, q);
      const double gone = 1.0 - r.left, fromBefore = 0.5 * gone * (1.0 + r.left),
                   fromLoad = vm::max(0.0, r.ramp - 0.5 * r.mean * r.mean);
      loss = vm::max(0.0, (fromBefore * product(before, before) + gone * r.mean * product(before, load)) +
                              fromLoad * product(load, load)) *
             perE;
    }
    const Sym<Storage> now = (1.0 / volume) * kirchhoff;
    storeTensor(stress, N, i, now);
    const double perMass = 1.0 / (density[i] * volume);
    internal[i] =
        internalOld[i] + kirchhoffWork(volumeOld, loadTensor<Storage>(stressOld, N, i), volume, now, strain) * perMass;
    inelastic[i] = inelasticOld[i] + loss * perMass;
  });
}

template <class Storage>
SA_INLINE void follow(const Block& b, const ViscousFoam& model) {
  forPieces(b.points, [&b, &model](int start, int n) SA_POINT {
    ViscousScratch<Storage> w;
    strainSkeleton(b, model, start, n, w);
    if (model.isViscous)
      storeViscous<Storage, true>(b, model, start, n, w);
    else
      storeViscous<Storage, false>(b, model, start, n, w);
  });
  keepStates(b, model.isViscous ? (Storage::k23and13 ? 6 : 4) : 0);
}

SA_INLINE void compute(const Block& b, const ViscousFoam& model) {
  if (b.isDataCheck) {
    if (b.isSolid())
      elasticAnswer<S33>(b, model.bulkModulus(), model.shearModulus());
    else
      elasticAnswer<S31>(b, model.bulkModulus(), model.shearModulus());
    keepStates(b, 0);
  } else if (b.isSolid()) {
    follow<S33>(b, model);
  } else {
    follow<S31>(b, model);
  }
}

} // namespace

SA_USER_MATERIAL(SPX_USR_VISCOUSFOAM, ViscousFoam)

} // namespace sa::user
