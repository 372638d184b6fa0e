// The update of moulded plastics: elastic trial, return to the surface, failure, energies.
#include "spx/impl/user/plastic.h"

#include "glo/tensors/trigonometric_values.h"
#include "spx.h"
#include "spx/impl/user/bracket.h"

namespace sa::user {
namespace {

// Where the return of a point ends, at x = 1/(1 + 3 G h) of 0 to 1.
struct Returned {
  double size;   // sqrt(q^2 + f3 p^2)
  double p;      // pressure
  double growth; // of the plastic strain
};

// Solids: the trial stress is its von Mises stress and its pressure.
struct SolidReturn {
  static SA_INLINE Returned at(const Plastic& m, double q, double pressure, double, double x) {
    const double rest = 1.0 - x, y = x + m.volumetric * rest;
    const double perX = vm::select(m.volumetric > 0.0, pressure / y, 0.0); // of the pressure, where the flow moves it
    const double p = vm::select(m.volumetric > 0.0, x * perX, pressure);
    return {vm::sqrt(q * x * (q * x) + m.f3 * (p * p)), p, m.uniaxial * rest * vm::sqrt(q * q + m.f5 * (perX * perX))};
  }
};

// Plane stress: the trial stress is its components 11, 22 and 12.
struct InPlane {
  double s11, s22, s12;
};
struct PlaneReturn {
  // The stress, in parts of x.
  static SA_INLINE InPlane stressPerX(const Plastic& m, double s11, double s22, double s12, double x) {
    const double rest = 1.0 - x, a11 = x + rest * m.B11, a22 = x + rest * m.B22, a12 = rest * m.B12, a21 = rest * m.B21;
    const double perDeterminant = 1.0 / (a11 * a22 - a12 * a21);
    return {(a22 * s11 - a12 * s22) * perDeterminant, (a11 * s22 - a21 * s11) * perDeterminant,
            s12 / (x + rest * m.B33)};
  }
  static SA_INLINE Returned at(const Plastic& m, double s11, double s22, double s12, double x) {
    const InPlane u = stressPerX(m, s11, s22, s12, x);
    const double sum = u.s11 + u.s22, p = -x * sum * (1.0 / 3.0);
    const double q2 =
        m.M11 * (u.s11 * u.s11) + 2.0 * m.M12 * (u.s11 * u.s22) + m.M22 * (u.s22 * u.s22) + 2.0 * m.N * (u.s12 * u.s12);
    const double g2 = q2 + m.f5 * (1.0 / 9.0) * (sum * sum);
    return {vm::sqrt(x * x * vm::max(0.0, q2) + m.f3 * (p * p)), p,
            m.uniaxial * (1.0 - x) * vm::sqrt(vm::max(0.0, g2))};
  }
};

// Points that return, side by side: their trial stress, the plastic strain before and the factor of the rate.
struct Trials {
  Lane a, b, c, strain, factor;
};

// What the passes over a piece hand on.
struct PlasticScratch {
  Trials trial;
  Lane rate, logRate, read;           // read: NaN where a number that was read is none
  Lane x, p, growth;                  // of the return
  double stress[6 * kScratchPoints];  // at the end
  Lane q, ductileGrowth, shearGrowth; // von Mises stress, growth of the damages
};

// The Mohr circle of 11, 22, 12.
struct Circle {
  double centre, radius;
};
SA_INLINE Circle circleOf(double s11, double s22, double s12) {
  const double half = 0.5 * (s11 - s22);
  return {0.5 * (s11 + s22), vm::sqrt(half * half + s12 * s12)};
}

// Elastic trial stress, and the rate of the deviator of the strain through the filter.
template <bool kPlaneStress, class Storage>
SA_INLINE void findTrial(const Block& b, const Plastic& model, int start, int length, PlasticScratch& w) {
  const Plastic m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *state = b.stateOld;
  const double perTime = b.dt <= 0.0 ? 0.0 : 1.0 / b.dt; // that of a NaN is a NaN
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i);
    const Sym<Storage> old = loadTensor<Storage>(stressOld, N, i);
    if constexpr (kPlaneStress) {
      w.trial.a[k] = old.s11 + (m.C11 * strain.s11 + m.C12 * strain.s22);
      w.trial.b[k] = old.s22 + (m.C12 * strain.s11 + m.C11 * strain.s22);
      w.trial.c[k] = old.s12 + 2.0 * m.G * strain.s12;
      strain.s33 = -m.nu / (1.0 - m.nu) * (strain.s11 + strain.s22);
    }
    const Sym<Storage> e = deviator(strain);
    if constexpr (!kPlaneStress) {
      const Sym<Storage> s = sum(deviator(old), 2.0 * m.G, e);
      w.trial.a[k] = vm::sqrt(1.5 * product(s, s));
      w.trial.b[k] = -(trace(old) * (1.0 / 3.0) + m.K * trace(strain));
      w.trial.c[k] = 0.0;
    }
    const double rate = vm::sqrt(2.0 / 3.0 * product(e, e)) * perTime;
    w.rate[k] = (1.0 - m.share) * state[i + Plastic::kRate * N] + m.share * rate;
    w.trial.strain[k] = state[i];
    w.read[k] = state[i] + state[i + Plastic::kDuctile * N] + state[i + Plastic::kShear * N] + w.rate[k] +
                (w.trial.a[k] + w.trial.b[k] + w.trial.c[k]);
  });
}

// Yield stresses at the plastic strains of points.
SA_INLINE void yieldStresses(const Plastic& model, int n, const double* strain, const double* factor, double* tension,
                             double* compression) {
  const double least = model.smallestYield;
  stressAt(model.tension, n, strain, tension);
  forPoints(n, [=](int i) SA_POINT { tension[i] = vm::max(least, factor[i] * tension[i]); });
  if (model.hasOneCurve) return;
  stressAt(model.compression, n, strain, compression);
  forPoints(n, [=](int i) SA_POINT { compression[i] = vm::max(least, factor[i] * compression[i]); });
}

// By how much the stress at x lies beyond the surface, in parts of the strength without pressure.
template <class Form>
SA_INLINE void excess(const Plastic& model, int n, const Trials& t, const double* x, double* value) {
  const Plastic m = model;
  Lane strain, tension, otherCompression;
  forPoints(n, [=, &t, &strain](int i)
                   SA_POINT { strain[i] = t.strain[i] + Form::at(m, t.a[i], t.b[i], t.c[i], x[i]).growth; });
  yieldStresses(m, n, strain, t.factor, tension, otherCompression);
  const double* compression = m.hasOneCurve ? tension : otherCompression;
  forPoints(n, [=, &t, &tension](int i) SA_POINT {
    const Returned r = Form::at(m, t.a[i], t.b[i], t.c[i], x[i]);
    const double st = tension[i], sc = compression[i], f1 = m.k * (st * sc), f2 = 3.0 * m.k * (sc - st);
    const double inside = f1 + f2 * r.p, root = vm::copysign(vm::sqrt(vm::abs(inside)), inside);
    value[i] = (r.size - root) / vm::sqrt(f1);
  });
}

// The pressures between which a stress without shear is inside the surface.
SA_INLINE double clipToApex(const Plastic& m, double p, double st, double sc) {
  const double f1 = m.k * (st * sc), f2 = 3.0 * m.k * (sc - st), root = vm::sqrt(f2 * f2 + 4.0 * m.f3 * f1);
  const double sum = vm::abs(f2) + root, near = 2.0 * f1 / sum;
  const double far = vm::select(m.f3 > 0.0, sum / (2.0 * m.f3), vm::kInfinity);
  const double least = vm::select(f2 >= 0.0, -near, -far), most = vm::select(f2 >= 0.0, far, near);
  return vm::max(least, vm::min(most, p));
}

// The return of points that yield, into x, pressure and growth of the plastic strain.
template <class Form>
SA_INLINE void returnToSurface(const Plastic& model, int n, const Trials& t, const double* atOne, double* x, double* p,
                               double* growth) {
  constexpr double kTolerance = 1e-14;
  constexpr bool kIsSolid = std::is_same_v<Form, SolidReturn>;
  const Plastic m = model;
  Bracket bracket;
  forPoints(n, [=, &bracket](int i) SA_POINT { bracket.low[i] = 0.0; });
  excess<Form>(m, n, t, bracket.low, bracket.atLow);
  forPoints(n, [=, &bracket](int i) SA_POINT {
    // beyond the apex there is nothing to look for: x = 0
    bracket.high[i] = vm::select(kIsSolid & (bracket.atLow[i] >= 0.0), 0.0, 1.0);
    bracket.atHigh[i] = atOne[i];
  });
  if constexpr (kIsSolid)
    forPoints(n, [=](int i) SA_POINT { growth[i] = vm::select(bracket.atLow[i] >= 0.0, 1.0, 0.0); });
  solveBracketed(n, bracket, kTolerance,
                 [&](const double* place, double* value) SA_POINT { excess<Form>(m, n, t, place, value); });
  Lane tension, otherCompression;
  if constexpr (kIsSolid) yieldStresses(m, n, t.strain, t.factor, tension, otherCompression);
  const double* compression = m.hasOneCurve ? tension : otherCompression;
  forPoints(n, [&](int i) SA_POINT {
    const double root = bracket.root[i];
    Returned r = Form::at(m, t.a[i], t.b[i], t.c[i], root);
    if constexpr (kIsSolid) {
      const bool isBeyond = growth[i] > 0.0;
      const double apex = clipToApex(m, t.b[i], tension[i], compression[i]);
      r.growth = vm::select(isBeyond, t.a[i] * m.perG3 + vm::abs(t.b[i] - apex) / (3.0 * m.K), r.growth);
      r.p = vm::select(isBeyond, apex, r.p);
    }
    x[i] = root;
    p[i] = r.p;
    growth[i] = r.growth;
  });
}

// The rate factor, and the return of those points that lie beyond the surface; how many they are.
template <class Form>
SA_INLINE int findReturn(const Plastic& m, int length, PlasticScratch& w) {
  Trials& trial = w.trial;
  constexpr double kLeastRate = 1e-300;
  if (m.factors.rows > 1 || m.ductile.rows > 1 || m.shear.rows > 1)
    forPoints(length, [=, &w](int k) SA_POINT {
      const double rate = w.rate[k];
      w.logRate[k] = vm::log(vm::select(rate < kLeastRate, kLeastRate, rate));
    });
  valueAtRate(m.factors, Plastic::kFactor, Plastic::kFactorRate, length, w.logRate, 1.0, trial.factor);
  Lane beyond;
  forPoints(length, [=, &w](int k) SA_POINT { w.x[k] = 1.0; });
  excess<Form>(m, length, trial, w.x, beyond);
  forPoints(length, [=, &w](int k) SA_POINT {
    w.p[k] = Form::at(m, w.trial.a[k], w.trial.b[k], w.trial.c[k], 1.0).p;
    w.growth[k] = 0.0;
  });
  int place[kScratchPoints];
  const int count = pack(length, beyond, place);
  if (count == 0) return 0;
  Trials those;
  Lane atOne, x, p, growth;
  for (int j = 0; j < packedLength(count); ++j) {
    const int k = place[j];
    those.a[j] = trial.a[k], those.b[j] = trial.b[k], those.c[j] = trial.c[k];
    those.strain[j] = trial.strain[k], those.factor[j] = trial.factor[k], atOne[j] = beyond[k];
  }
  returnToSurface<Form>(m, packedLength(count), those, atOne, x, p, growth);
  for (int j = 0; j < count; ++j) w.x[place[j]] = x[j], w.p[place[j]] = p[j], w.growth[place[j]] = growth[j];
  return count;
}

// Stress at the end.
template <bool kPlaneStress, class Storage>
SA_INLINE void findStress(const Block& b, const Plastic& model, int start, int length, PlasticScratch& w) {
  const Plastic m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const double x = w.x[k];
    Sym<Storage> s{};
    if constexpr (kPlaneStress) {
      const InPlane u = PlaneReturn::stressPerX(m, w.trial.a[k], w.trial.b[k], w.trial.c[k], x);
      s.s11 = x * u.s11, s.s22 = x * u.s22, s.s33 = 0.0, s.s12 = x * u.s12;
      w.q[k] = vm::sqrt(vm::max(0.0, s.s11 * s.s11 - s.s11 * s.s22 + s.s22 * s.s22 + 3.0 * (s.s12 * s.s12)));
    } else {
      const Sym<Storage> trial = sum(deviator(loadTensor<Storage>(stressOld, N, i)), 2.0 * m.G,
                                     deviator(loadTensor<Storage>(strainInc, N, i)));
      s = sum(x * trial, -w.p[k]);
      w.q[k] = x * w.trial.a[k];
    }
    storeTensor(w.stress, kScratchPoints, k, s);
    w.ductileGrowth[k] = 0.0;
    w.shearGrowth[k] = 0.0;
  });
}

// sigma_m/q times 3, between uniform biaxial compression and tension.
SA_INLINE double triaxiality(double p, double q) { return vm::max(-2.0, vm::min(2.0, -3.0 * p / vm::max(1e-300, q))); }

template <bool kPlaneStress>
SA_INLINE void growDuctile(const Plastic& model, int length, PlasticScratch& w) {
  const Plastic m = model;
  Lane inTension, inCompression;
  valueAtRate(m.ductile, Plastic::kInTension, Plastic::kFailureRate, length, w.logRate, 0.0, inTension);
  valueAtRate(m.ductile, Plastic::kInCompression, Plastic::kFailureRate, length, w.logRate, 0.0, inCompression);
  forPoints(length, [=, &w, &inTension, &inCompression](int k) SA_POINT {
    const double eta = triaxiality(w.p[k], w.q[k]);
    double strain =
        inTension[k] * m.ductileBend(0.25 * (2.0 + eta)) + inCompression[k] * m.ductileBend(0.25 * (2.0 - eta));
    if constexpr (kPlaneStress) {
      // a is the angle from axis 1 to the larger stress
      const double s11 = w.stress[k], s22 = w.stress[k + kScratchPoints], s12 = w.stress[k + 3 * kScratchPoints];
      const double r = circleOf(s11, s22, s12).radius, perR = 1.0 / vm::select(r > 0.0, r, 1.0);
      const double cos2 = vm::select(r > 0.0, 0.5 * (s11 - s22) * perR, 1.0), sin2 = s12 * perR;
      strain *= vm::max(1e-3, 1.0 + m.k1 * (0.5 * (1.0 - cos2)) + m.k2 * (sin2 * sin2));
    }
    w.ductileGrowth[k] = w.growth[k] / strain;
  });
}

// The largest shear stress.
template <class Storage>
SA_INLINE void largestShear(int length, const PlasticScratch& w, double* largest) {
  if constexpr (Storage::k23and13) {
    double values[3 * kScratchPoints];
    const double* stress = w.stress;
    trigonometricValues(
        AllPoints{length}, length, [=](int64_t k) SA_POINT { return loadTensor<S33>(stress, kScratchPoints, k); },
        kScratchPoints, values);
    forPoints(length, [=, &values](int k) SA_POINT {
      const double a = values[k], b = values[k + kScratchPoints], c = values[k + 2 * kScratchPoints];
      largest[k] = 0.5 * (vm::max(vm::max(a, b), c) - vm::min(vm::min(a, b), c));
    });
  } else {
    forPoints(length, [=, &w](int k) SA_POINT {
      const Circle circle = circleOf(w.stress[k], w.stress[k + kScratchPoints], w.stress[k + 3 * kScratchPoints]);
      const double across = vm::abs(w.stress[k + 2 * kScratchPoints] - circle.centre);
      largest[k] = vm::max(circle.radius, 0.5 * (across + circle.radius));
    });
  }
}

template <class Storage>
SA_INLINE void growShear(const Plastic& model, int length, PlasticScratch& w) {
  const Plastic m = model;
  Lane inTension, inCompression, largest;
  valueAtRate(m.shear, Plastic::kInTension, Plastic::kFailureRate, length, w.logRate, 0.0, inTension);
  valueAtRate(m.shear, Plastic::kInCompression, Plastic::kFailureRate, length, w.logRate, 0.0, inCompression);
  largestShear<Storage>(length, w, largest);
  forPoints(length, [=, &w, &inTension, &inCompression, &largest](int k) SA_POINT {
    constexpr double kPerRoot3 = 0x1.279a74590331dp-1;
    const double eta = triaxiality(w.p[k], w.q[k]);
    const double phi = vm::max(0.5, vm::min(kPerRoot3, largest[k] / vm::max(1e-300, w.q[k])));
    const double strain = m.shearFailure(inTension[k], inCompression[k], (1.0 - m.kS * eta) / phi);
    w.shearGrowth[k] = w.growth[k] / strain;
  });
}

// Stress, state variables and energies.
template <bool kPlaneStress, class Storage>
SA_INLINE void storeEnd(const Block& b, const Plastic& model, int start, int length, const PlasticScratch& w) {
  using P = Plastic;
  const Plastic m = model;
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(length, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const auto spoil = [read = w.read[k]](double v) SA_POINT { return vm::select(read == read, v, vm::kNaN); };
    Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i), old = loadTensor<Storage>(stressOld, N, i);
    const double ductileOld = stateOld[i + P::kDuctile * N], shearOld = stateOld[i + P::kShear * N];
    // a point that is deleted keeps what it had; one that is deleted now loses its stress
    const bool wasAlive = !((ductileOld >= 1.0) | (shearOld >= 1.0));
    // where nothing flows nothing else counts: the growths are found only in pieces where something does
    const double ductileGrowth = w.ductileGrowth[k], shearGrowth = w.shearGrowth[k];
    const bool flows = w.growth[k] > 0.0;
    const double ductile = ductileOld + vm::select(flows, ductileGrowth, 0.0),
                 shear = shearOld + vm::select(flows, shearGrowth, 0.0);
    const bool isAlive = !((ductile >= 1.0) | (shear >= 1.0)) & wasAlive;
    const double x = w.x[k], rest = 1.0 - x, p = spoil(w.p[k]), q = spoil(w.q[k]);
    const Sym<Storage> reached = loadTensor<Storage>(w.stress, kScratchPoints, k);
    Sym<Storage> now = select(isAlive, sum(reached, p - p), Sym<Storage>{}), flow{};
    double elastic, thickness = stateOld[i + P::kThickness * N];
    if constexpr (kPlaneStress) {
      old.s33 = strain.s33 = now.s33 = 0.0;
      const InPlane u = PlaneReturn::stressPerX(m, w.trial.a[k], w.trial.b[k], w.trial.c[k], x);
      const double h = rest * m.perG3; // for the stress in parts of x
      flow.s11 = h * (m.Q11 * u.s11 + m.Q12 * u.s22);
      flow.s22 = h * (m.Q12 * u.s11 + m.Q22 * u.s22);
      flow.s33 = h * (m.f5 * (1.0 / 3.0)) * (u.s11 + u.s22) - flow.s11 - flow.s22;
      flow.s12 = h * m.N * u.s12;
      thickness += flow.s33 - m.nu / m.E * ((reached.s11 - old.s11) + (reached.s22 - old.s22));
      elastic = (0.5 * (now.s11 * now.s11 + now.s22 * now.s22) - m.nu * (now.s11 * now.s22)) / m.E +
                now.s12 * now.s12 * (0.5 / m.G);
    } else {
      const Sym<Storage> trial = sum(deviator(old), 2.0 * m.G, deviator(strain));
      flow = sum((rest * (0.5 / m.G)) * trial, (w.p[k] - w.trial.b[k]) / (3.0 * m.K));
      elastic = vm::select(isAlive, q * q * (0.5 * m.perG3) + p * p * (0.5 / m.K), 0.0);
    }
    const auto keep = [wasAlive](double v, double before) SA_POINT { return vm::select(wasAlive, v, before); };
    const auto store = [=](int number, double v)
                           SA_POINT { state[i + number * N] = keep(v, stateOld[i + number * N]); };
    const Sym<Storage> before = loadTensor<Storage>(stateOld + P::kTensor * N, N, i);
    store(P::kPlasticStrain, stateOld[i] + spoil(w.growth[k]));
    storeTensor(state + P::kTensor * N, N, i, select(wasAlive, sum(before, 1.0, sum(flow, p - p)), before));
    if constexpr (!Storage::k23and13) {
      state[i + 5 * N] = stateOld[i + 5 * N];
      state[i + 6 * N] = stateOld[i + 6 * N];
    }
    store(P::kRate, spoil(w.rate[k]));
    store(P::kDuctile, spoil(ductile));
    store(P::kShear, spoil(shear));
    store(P::kThickness, kPlaneStress ? spoil(thickness) : thickness);
    store(P::kMises, q);
    const bool isShear = q > 1e-15 * vm::abs(p);
    store(P::kTriaxiality, vm::select(isShear, -p / vm::select(isShear, q, 1.0), p - p));
    state[i + P::kStatus * N] = vm::select(isAlive, 1.0, 0.0);
    storeTensor(stress, N, i, now);

    const double intOld = internalOld[i], inelOld = inelasticOld[i], perDensity = 1.0 / density[i];
    const double internalNow = intOld + 0.5 * (product(old, strain) + product(now, strain)) * perDensity;
    internal[i] = keep(internalNow, intOld);
    inelastic[i] = keep(grown(inelOld, internalNow - elastic * perDensity), inelOld);
  });
}

template <bool kPlaneStress, class Storage>
SA_INLINE void plastic(const Block& b, const Plastic& model) {
  using Form = std::conditional_t<kPlaneStress, PlaneReturn, SolidReturn>;
  forPieces(b.points, [&b, &model](int start, int length) SA_POINT {
    PlasticScratch w;
    findTrial<kPlaneStress, Storage>(b, model, start, length, w);
    const int count = findReturn<Form>(model, length, w);
    findStress<kPlaneStress, Storage>(b, model, start, length, w);
    if (count > 0 && model.ductile.rows > 0) growDuctile<kPlaneStress>(model, length, w);
    if (count > 0 && model.shear.rows > 0) growShear<Storage>(model, length, w);
    storeEnd<kPlaneStress, Storage>(b, model, start, length, w);
  });
  keepStates(b, Plastic::kStates);
}

SA_INLINE void compute(const Block& b, const Plastic& m) {
  if (b.isDataCheck) {
    if (m.isPlaneStress)
      planeStressElasticAnswer(b, m.K, m.G);
    else if (b.isSolid())
      elasticAnswer<S33>(b, m.K, m.G);
    else
      elasticAnswer<S31>(b, m.K, m.G);
    keepStates(b, 0);
  } else if (m.isPlaneStress) {
    plastic<true, S31>(b, m);
  } else if (b.isSolid()) {
    plastic<false, S33>(b, m);
  } else {
    plastic<false, S31>(b, m);
  }
}

} // namespace

// One body for both.
SA_CLONES
static void plasticClones(const Block& block, const Plastic& model) { compute(block, model); }

SA_USER_ENTRY(SPX_USR_MOLDEDPLASTIC, PlasticModel<false>, plasticClones)
SA_USER_ENTRY(SPX_USR_THERMOPLASTIC, PlasticModel<true>, plasticClones)

} // namespace sa::user
