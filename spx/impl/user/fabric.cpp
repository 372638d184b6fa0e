// Fabric: two families of fibres with curves of stress, and trellis shear between them.
#include "spx.h"
#include "spx/impl/user/curves.h"

#include <array>

namespace sa::user {
namespace {

constexpr int kFibers = 2;
constexpr double kSmallestStretch = 1e-6, kSmallestSine = 1e-3, kDegree = 0x1.921fb54442d18p+1 / 180.0;

// State variables, from 0: two of each where the fibres have their own.
constexpr int kLargest = 0, kShift = 2, kFriction = 4, kStrainNow = 5, kAngle = 7, kInitialStress = 8,
              kInitialTime = 11;

// Cosine of an angle in degrees, exact at right angles.
double cosineOf(double degrees) {
  const double c = vm::cos(degrees * kDegree);
  return vm::abs(c) < 1e-14 ? 0.0 : c;
}

struct Fiber {
  Table loading, unloading;          // without rows of the second it is elastic
  double n1 = 0.0, n2 = 0.0;         // its direction
  double modulus = 0.0, slack = 0.0; // at the beginning; while it is slack
  SA_INLINE bool isElastic() const { return unloading.rows == 0; }
};

// What is left of two directions in the plane: f (sym(n1 n2) - (n1.n2)/2 (n1 n1 + n2 n2)), whose product with a strain increment
// is the one of the trellis angle for f = 2/sin.
SA_INLINE double sineOf(double a1, double a2, double b1, double b2) {
  return vm::max(kSmallestSine, vm::abs(a1 * b2 - a2 * b1));
}
SA_INLINE Sym<S31> trellis(double a1, double a2, double b1, double b2, double f) {
  const double cosine = a1 * b1 + a2 * b2, half = 0.5 * cosine;
  Sym<S31> t{};
  t.s11 = f * (a1 * b1 - half * (a1 * a1 + b1 * b1));
  t.s22 = f * (a2 * b2 - half * (a2 * a2 + b2 * b2));
  t.s12 = f * (0.5 * (a1 * b2 + a2 * b1) - half * (a1 * a2 + b1 * b2));
  return t;
}
SA_INLINE Sym<S31> dyad(double n1, double n2) {
  Sym<S31> t{};
  t.s11 = n1 * n1, t.s22 = n2 * n2, t.s12 = n1 * n2;
  return t;
}
// The plane part of a tensor of the block.
SA_INLINE Sym<S31> loadPlane(const double* block, int64_t n, int64_t i) {
  Sym<S31> t{};
  t.s11 = block[i], t.s22 = block[i + n], t.s12 = block[i + 3 * n];
  return t;
}
SA_INLINE double areaRatio(const Sym<S31>& U) { return vm::max(kSmallestStretch, U.s11 * U.s22 - U.s12 * U.s12); }

struct Fabric {
  static constexpr int kProperties = 14, kStates = 8, kStatesWithInitialStress = 12;
  std::array<Fiber, kFibers> fibers;
  double G0, lock, lockG, frictionG, yield, perFrictionG, ramp, rupture,
      straight; // straight: trellis angle of no shear
  bool ramps;

  static bool isRamped(const Block& b) { return b.name.find("_INITENER") != std::string_view::npos; }
  // The four curves, in the order in which they stand; the number of those that are whole.
  static int takeCurves(const Block& b, std::array<Table, 2 * kFibers>& curves) {
    Tables tables(b, kProperties);
    int count = 0;
    for (Table& curve : curves) {
      if (!tables.take(property(b, count + 1), kCurveColumns, curve)) break;
      ++count;
    }
    return count;
  }
  static bool isRefused(const Block& b);
  static bool isCurveRefused(const Block& b);
  explicit Fabric(const Block& b) {
    std::array<Table, 2 * kFibers> curves;
    takeCurves(b, curves);
    const double* p = b.props;
    const bool isRight = p[4] == 0.0 && p[5] == 0.0;
    const double angles[kFibers] = {p[4], isRight ? 90.0 : p[5]};
    for (int k = 0; k < kFibers; ++k) {
      Fiber& f = fibers[k];
      f.loading = curves[k], f.unloading = curves[k + kFibers];
      f.n1 = cosineOf(angles[k]), f.n2 = cosineOf(angles[k] - 90.0);
      f.modulus = f.loading.at(1, kStress) / f.loading.at(1, kStrain);
      const Table& back = f.isElastic() ? f.loading : f.unloading;
      f.slack = p[11] * (back.at(1, kStress) / back.at(1, kStrain));
    }
    straight = vm::acos(vm::min(1.0, vm::max(-1.0, fibers[0].n1 * fibers[1].n1 + fibers[0].n2 * fibers[1].n2)));
    G0 = p[6], lock = p[7] > 0.0 ? p[7] * kDegree : vm::kInfinity, lockG = p[7] > 0.0 ? p[8] : 0.0, yield = p[10];
    frictionG = yield > 0.0 ? p[9] : 0.0, perFrictionG = frictionG > 0.0 ? 1.0 / frictionG : 0.0;
    ramp = p[12], rupture = p[13] > 0.0 ? p[13] : vm::kInfinity, ramps = isRamped(b);
  }
  bool isWrong(const Block& b) const {
    const double crossing = fibers[0].n1 * fibers[1].n2 - fibers[0].n2 * fibers[1].n1;
    return refuseUnless(b, vm::abs(crossing) > kSmallestSine,
                        "The fibers of material %S must cross: their angles, properties 5 and 6, are the same.");
  }
};

bool Fabric::isCurveRefused(const Block& b) {
#define SA_CURVE(kind, fiber, rule) "The " kind " stress-strain curve for fiber " fiber " of material %S must " rule
#define SA_CURVES(rule)                                                                                                \
  {                                                                                                                    \
    SA_CURVE("loading", "1", rule), SA_CURVE("loading", "2", rule), SA_CURVE("unloading", "1", rule),                  \
        SA_CURVE("unloading", "2", rule)                                                                               \
  }
  using Texts = std::array<std::string_view, 2 * kFibers>;
  constexpr Texts kStrains = SA_CURVES("be specified using increasing strain values"),
                  kStresses = SA_CURVES("be specified using increasing stress values"),
                  kStarts = SA_CURVES("start at zero stress and strain, with a second row or more behind");
#undef SA_CURVES
#undef SA_CURVE
  std::array<Table, 2 * kFibers> curves;
  const int whole = takeCurves(b, curves);
  for (int k = 0; k < whole; ++k)
    if (!curves[k].isIncreasing(kStrain)) return refuse(b, kStrains[k]);
  if (whole < 2 * kFibers) return refuse(b, kTablesCutOff);
  for (int k = 0; k < 2 * kFibers; ++k) {
    const Table& curve = curves[k];
    const bool isLoading = k < kFibers;
    if (!isLoading && curve.rows == 0) continue;
    if (curve.rows < 2 || curve.at(0, kStress) != 0.0 || curve.at(0, kStrain) != 0.0) return refuse(b, kStarts[k]);
    if (!isLoading && !curve.isIncreasing(kStress)) return refuse(b, kStresses[k]);
  }
  int32_t last = kProperties;
  for (const Table& curve : curves) last += curve.rows * curve.columns; // NOLINT(counts): no more than properties
  return refuseNotFinite(b, kProperties + 1, last);
}

bool Fabric::isRefused(const Block& b) {
  if (refuseUnless(b, b.isPlane(),
                   "Subroutine VUMAT for fabric material is implemented only for plane stress "
                   "elements (ndir=3 and nshr=1)"))
    return true;
  if (isRamped(b) ? refuseStates(b, kStatesWithInitialStress,
                                 "Subroutine VUMAT for fabric material requires the specification of %I "
                                 "state variables when used in combination "
                                 "with option to ramp initial stresses. "
                                 "Check the definition of *DEPVAR in the input file.")
                  : refuseStates(b, kStates,
                                 "Subroutine VUMAT for fabric material requires the specification of %I "
                                 "state variables. Check the definition of *DEPVAR "
                                 "in the input file."))
    return true;
  return refuseProperties(b, kProperties,
                          "Subroutine VUMAT for fabric material requires the specification of %I "
                          "material properties. Check the *USER MATERIAL option for material %S.") ||
         isCurveRefused(b) || refuseNegative(b, {7, 8, 9, 10, 11, 12, 13, 14}) ||
         refuseUnless(b, b.props[11] <= 1.0,
                      "The stiffness in compression of material %S, property 12, must not be greater than 1.");
}

// A fibre over the points of a piece: what it was given, and its force and energy per reference area and thickness.
struct FiberScratch {
  Lane length, strain, largest, shift, stress, energy; // length: of the stretched fibre
};

// Along the loading curve where the strain is the largest so far, else back along the unloading curve, moved so that it begins
// there; up again on the same way.
SA_INLINE void pullFiber(const Fiber& fiber, double rupture, int n, FiberScratch& w) {
  Lane load, work;
  stressAndWorkAt(fiber.loading, n, w.strain, load, work);
  const double slack = fiber.slack;
  if (fiber.isElastic()) {
    forPoints(n, [=, &w, &load, &work](int i) SA_POINT {
      const double e = w.strain[i], pushed = slack * e;
      w.shift[i] = w.largest[i] - w.largest[i];
      w.stress[i] = vm::select(e > 0.0, vm::max(0.0, load[i]), pushed);
      w.energy[i] = vm::select(e > 0.0, work[i], 0.5 * pushed * e);
    });
  } else {
    Lane top, start, back, unload, returned;
    stressAt(fiber.loading, n, w.largest, top);
    forPoints(n, [&top](int i) SA_POINT { top[i] = vm::max(0.0, top[i]); });
    strainAt(fiber.unloading, n, top, start);
    forPoints(n, [&w, &start, &back](int i) SA_POINT {
      const double shift = vm::max(0.0, w.largest[i] - start[i]);
      w.shift[i] = shift;
      back[i] = w.strain[i] - shift;
    });
    stressAndWorkAt(fiber.unloading, n, back, unload, returned);
    forPoints(n, [=, &w, &load, &work, &back, &unload, &returned](int i) SA_POINT {
      const double e = w.strain[i], x = back[i], pushed = slack * x, up = vm::max(0.0, load[i]);
      const double pulled = vm::select(e >= w.largest[i], up, vm::min(up, unload[i]));
      w.stress[i] = vm::select(x > 0.0, pulled, pushed);
      w.energy[i] = vm::select(x > 0.0, vm::min(work[i], returned[i]), 0.5 * pushed * x);
    });
  }
  forPoints(n, [=, &w](int i) SA_POINT {
    const bool isBroken = w.largest[i] >= rupture;
    w.stress[i] = vm::select(isBroken, 0.0, w.stress[i]);
    w.energy[i] = vm::select(isBroken, 0.0, w.energy[i]);
  });
}

// A stretched fibre.
struct Stretched {
  double v1, v2;
  SA_INLINE double length() const { return vm::max(kSmallestStretch, vm::sqrt(v1 * v1 + v2 * v2)); }
};
SA_INLINE Stretched stretched(const Sym<S31>& U, double n1, double n2) {
  return {U.s11 * n1 + U.s12 * n2, U.s12 * n1 + U.s22 * n2};
}

SA_INLINE void pullFibers(const Block& b, const Fabric& m, int start, int n, std::array<FiberScratch, kFibers>& w) {
  const int64_t N = b.points;
  for (int k = 0; k < kFibers; ++k) {
    const double n1 = m.fibers[k].n1, n2 = m.fibers[k].n2, *stretch = b.stretch,
                 *largestOld = b.stateOld + (kLargest + k) * N;
    FiberScratch& f = w[k];
    forPoints(n, [=, &f](int j) SA_POINT {
      const int i = start + j;
      const double length = stretched(loadPlane(stretch, N, i), n1, n2).length(), e = length - 1.0;
      f.length[j] = length;
      f.strain[j] = e;
      f.largest[j] = grown(largestOld[i], e);
    });
    pullFiber(m.fibers[k], m.rupture, n, f);
  }
}

// Initial stress, which the first increment finds and a smooth ramp brings back.
SA_INLINE void rampInitialStress(const Block& b, double ramp, int start, int n) {
  const int64_t N = b.points;
  const double dt = b.dt, perRamp = ramp > 0.0 ? 1.0 / ramp : vm::kInfinity, *stressOld = b.stressOld,
               *stateOld = b.stateOld;
  double *stress = b.stress, *state = b.state;
  forPoints(n, [=](int j) SA_POINT {
    const int i = start + j;
    const double before = stateOld[i + kInitialTime * N], now = before + dt;
    const bool isFirst = before == 0.0;
    const double part = vm::select(ramp > 0.0, now * perRamp, 1.0 + (now - now)), x = vm::min(1.0, part),
                 factor = x * x * (3.0 - 2.0 * x);
    const int64_t s0 = i + kInitialStress * N;
    const double s11 = vm::select(isFirst, stressOld[i], stateOld[s0]),
                 s22 = vm::select(isFirst, stressOld[i + N], stateOld[s0 + N]),
                 s12 = vm::select(isFirst, stressOld[i + 3 * N], stateOld[s0 + 2 * N]);
    state[s0] = s11, state[s0 + N] = s22, state[s0 + 2 * N] = s12;
    state[i + kInitialTime * N] = now;
    stress[i] += factor * s11;
    stress[i + N] += factor * s22;
    stress[i + 3 * N] += factor * s12;
  });
}

SA_INLINE void shearFibers(const Block& b, const Fabric& fabric, int start, int n,
                           const std::array<FiberScratch, kFibers>& w, Lane& energy) {
  const int64_t N = b.points;
  const FiberScratch &first = w[0], &second = w[1];
  const double a1 = fabric.fibers[0].n1, a2 = fabric.fibers[0].n2, b1 = fabric.fibers[1].n1, b2 = fabric.fibers[1].n2;
  const double G0 = fabric.G0, lock = fabric.lock, lockG = fabric.lockG, frictionG = fabric.frictionG,
               yield = fabric.yield, perFrictionG = fabric.perFrictionG, straight = fabric.straight;
  const double *stretch = b.stretch, *stateOld = b.stateOld;
  double *stress = b.stress, *state = b.state;
  forPoints(n, [=, &first, &second, &energy](int j) SA_POINT {
    const int i = start + j;
    const Sym<S31> U = loadPlane(stretch, N, i);
    const Stretched f = stretched(U, a1, a2), g = stretched(U, b1, b2);
    const double lengthF = first.length[j], lengthG = second.length[j], per = 1.0 / (lengthF * lengthG);
    const double f1 = f.v1 * (lengthG * per), f2 = f.v2 * (lengthG * per), g1 = g.v1 * (lengthF * per),
                 g2 = g.v2 * (lengthF * per);
    const double cosine = vm::min(1.0, vm::max(-1.0, f1 * g1 + f2 * g2));
    const double gamma = straight - vm::acos(cosine), turned = gamma - stateOld[i + kAngle * N];
    const double beyond = vm::max(0.0, vm::abs(gamma) - lock);
    const double friction = vm::max(-yield, vm::min(yield, stateOld[i + kFriction * N] + frictionG * turned));
    const double tau = G0 * gamma + vm::copysign(lockG * beyond, gamma) + friction;
    const double sine = sineOf(f1, f2, g1, g2), perBoth = 1.0 / (areaRatio(U) * sine), perArea = sine * perBoth;
    Sym<S31> s = (first.stress[j] * lengthF * perArea) * dyad(f1, f2);
    s = sum(s, second.stress[j] * lengthG * perArea, dyad(g1, g2));
    storeTensor(stress, N, i, sum(s, tau, trellis(f1, f2, g1, g2, 2.0 * perBoth)));
    energy[j] = (first.energy[j] + second.energy[j]) +
                0.5 * (G0 * gamma * gamma + lockG * beyond * beyond + friction * friction * perFrictionG);
    state[i + kLargest * N] = first.largest[j], state[i + (kLargest + 1) * N] = second.largest[j];
    state[i + kShift * N] = first.shift[j], state[i + (kShift + 1) * N] = second.shift[j];
    state[i + kStrainNow * N] = first.strain[j], state[i + (kStrainNow + 1) * N] = second.strain[j];
    state[i + kFriction * N] = friction;
    state[i + kAngle * N] = gamma;
  });
}

SA_INLINE void countEnergy(const Block& b, int start, int n, const Lane& energy) {
  const int64_t N = b.points;
  const double *stretchOld = b.stretchOld, *stretch = b.stretch, *strainInc = b.strainInc, *stressOld = b.stressOld,
               *density = b.density, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld, *stress = b.stress;
  double *internal = b.internal, *inelastic = b.inelastic;
  forPoints(n, [=, &energy](int j) SA_POINT {
    const int i = start + j;
    const double before = areaRatio(loadPlane(stretchOld, N, i)), now = areaRatio(loadPlane(stretch, N, i));
    const double perMass = 1.0 / (density[i] * now),
                 work = kirchhoffWork(before, loadPlane(stressOld, N, i), now, loadPlane(stress, N, i),
                                      loadPlane(strainInc, N, i));
    const double internalNow = internalOld[i] + work * perMass;
    internal[i] = internalNow;
    inelastic[i] = grown(inelasticOld[i], internalNow - energy[j] * perMass);
  });
}

// The answer of the first call.
SA_INLINE void elasticFabric(const Block& b, const Fabric& m) {
  const int64_t N = b.points;
  const Fiber &f = m.fibers[0], &g = m.fibers[1];
  const Sym<S31> along = dyad(f.n1, f.n2), across = dyad(g.n1, g.n2),
                 shear = trellis(f.n1, f.n2, g.n1, g.n2, 2.0 / sineOf(f.n1, f.n2, g.n1, g.n2));
  const double E1 = f.modulus, E2 = g.modulus, G = m.G0 + m.frictionG;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    const Sym<S31> e = loadPlane(strainInc, N, i);
    Sym<S31> s = sum(loadPlane(stressOld, N, i), E1 * product(along, e), along);
    s = sum(s, E2 * product(across, e), across);
    storeTensor(stress, N, i, sum(s, G * product(shear, e), shear));
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
  keepStates(b, 0);
}

SA_INLINE void compute(const Block& b, const Fabric& m) {
  if (b.isDataCheck) return elasticFabric(b, m);
  forPieces(b.points, [&b, &m](int start, int n) SA_POINT {
    std::array<FiberScratch, kFibers> w;
    Lane energy;
    pullFibers(b, m, start, n, w);
    shearFibers(b, m, start, n, w, energy);
    if (m.ramps) rampInitialStress(b, m.ramp, start, n);
    countEnergy(b, start, n, energy);
  });
  keepStates(b, m.ramps ? Fabric::kStatesWithInitialStress : Fabric::kStates);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_FABRIC, Fabric)

} // namespace sa::user
