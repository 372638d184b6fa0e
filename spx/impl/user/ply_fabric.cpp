// Fabric-reinforced composite ply: damage of the fibres in both directions, plasticity and damage of the matrix in shear.
#include "spx.h"
#include "spx/impl/user/tables.h"

namespace sa::user {
namespace {

constexpr int kDirections = 2, kSigns = 2, kModes = kDirections * kSigns; // 1 tension, 1 compression, 2 ...

// State variables, from 0.
constexpr int kDamage = 0, kShearDamage = 4, kPlasticStrain = 5, kReached = 6, kShearReached = 10, kPlasticShear = 11,
              kStrain = 12, kStatus = 15;

// How one sign of one direction softens: d = 1 - exp(-A (r - 1))/r, A from the length of the element, so that the work to
// the end is the fracture energy per length.
struct Softening {
  double perStrength, density, fractureEnergy; // density: of the elastic energy at the strength

  static constexpr double kSteepest = 500.0;
  SA_INLINE double steepness(double length) const {
    const double spent = density * length;
    return 2.0 * spent / vm::max(fractureEnergy - spent, 2.0 / kSteepest * spent);
  }
};

struct PlyFabric {
  static constexpr int kProperties = 21, kStates = 16;
  double E1, E2, G2, nu12, nu21, coupling; // 2 G12; nu12 nu21
  Softening modes[kModes];
  double perShearStrength, alpha, largestShearDamage, yield, hardening, exponent, largest, deletionStrain;
  double failedToDelete; // directions

  static bool isRefused(const Block& b);
  bool isWrong(const Block& b) const;
  explicit PlyFabric(const Block& b) {
    const double* p = b.props;
    E1 = p[0], E2 = p[1], nu12 = p[2], nu21 = nu12 * E2 / E1, coupling = nu12 * nu21, G2 = 2.0 * p[3];
    for (int k = 0; k < kModes; ++k)
      modes[k] = {1.0 / p[4 + k], 0.5 * p[4 + k] * (p[4 + k] / (k < kSigns ? E1 : E2)), p[8 + k]};
    perShearStrength = 1.0 / p[12], alpha = p[13], largestShearDamage = p[14], yield = p[15], hardening = p[16],
    exponent = p[17], largest = p[18] > 0.0 ? p[18] : 0.999;
    failedToDelete = p[19] > 0.0 ? p[19] : 3.0, deletionStrain = p[20] > 0.0 ? p[20] : vm::kInfinity;
  }
};

bool PlyFabric::isRefused(const Block& b) {
  if (refuseUnless(b, b.isPlane(),
                   "Subroutine VUMAT for fabric reinforced composite materials only supports "
                   "plane stress elements.") ||
      refuseStates(b, kStates,
                   "Subroutine VUMAT for fabric reinforced composite materials requires the "
                   "specification of %I state variables. Check the "
                   "definition of *DEPVAR in the input file.") ||
      refuseProperties(b, kProperties,
                       "Subroutine VUMAT for fabric reinforced composite materials requires the "
                       "specification of %I material properties. Check the "
                       "*USER MATERIAL option for material %S.") ||
      refuseValues(b, {1, 2, 4, 5, 6, 7, 8, 13, 16, 18}) || refuseNegative(b, {9, 10, 11, 12, 14, 15, 17, 19, 20, 21}))
    return true;
  const double* p = b.props;
  return refuseUnless(b, p[2] * p[2] * p[1] < p[0],
                      "nu12 nu21 of material %S must be less than 1: nu12 is property 3, nu21 = nu12 E2/E1.") ||
         refuseUnless(b, p[14] < 1.0 && p[18] < 1.0,
                      "The largest damages of material %S, properties 15 and 19, must be less than 1.") ||
         refuseUnless(b, p[17] <= 1.0,
                      "The hardening exponent of material %S, property 18, must not be greater than 1.") ||
         refuseUnless(b, p[19] == 0.0 || p[19] == 1.0 || p[19] == 2.0,
                      "The deletion of material %S, property 20, must be 0, 1 or 2.") ||
         refuseNotFinite(b, 1, kProperties);
}

// Nothing is wrong; long elements cannot soften slowly enough.
bool PlyFabric::isWrong(const Block& b) const {
  bool isLong = false;
  for (int i = 0; b.isDataCheck && i < b.points; ++i)
    for (const Softening& mode : modes)
      isLong = isLong || (mode.fractureEnergy > 0.0 && mode.density * b.length[i] > mode.fractureEnergy);
  if (isLong)
    warn(b,
         "Elements of material %S are longer than its fracture energies, properties 9 to 12, over the elastic energies "
         "at its strengths: they lose more energy than that.");
  return false;
}

// Fibres: strains, damage and r of the four modes before and at the end, steepness, and of both directions the sign and the
// effective stress.
struct Fibers {
  Lane e11, e22, steepness[kModes], damageOld[kModes], reachedOld[kModes], damage[kModes], reached[kModes],
      tension[kDirections], effective[kDirections];
};

// What the passes over a piece hand on.  Of the fibres' modes before and steepness, only points that soften have a copy.
struct PlyScratch {
  Fibers fibers;
  Lane e12, t, slip;          // shear strain at the end, effective shear stress, growth of the plastic strain
  Lane plasticShear, plastic; // at the end
  Lane isOpen;                // 1 where a point goes on to a pass of its own
  Lane reached, damage;       // shear, at the end
  Lane isDead;                // 1 where the point was deleted before
};

// A virgin point starts from the strain of the stress that it has.
SA_INLINE void addStrain(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *state = b.stateOld;
  const double perE1 = 1.0 / m.E1, perE2 = 1.0 / m.E2, perG2 = 1.0 / m.G2, nu = m.nu12 * perE1;
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    double past = 0.0;
    for (int k = kPlasticStrain; k < kStatus; ++k) past += vm::abs(state[i + k * N]);
    const bool isVirgin = past == 0.0;
    const double spoil = past - past; // a NaN there is no past either
    const double s11 = stressOld[i], s22 = stressOld[i + N], s12 = stressOld[i + 3 * N];
    const double was11 = state[i + kStrain * N], was22 = state[i + (kStrain + 1) * N],
                 was12 = state[i + (kStrain + 2) * N];
    w.fibers.e11[j] = vm::select(isVirgin, s11 * perE1 - nu * s22, was11) + (strainInc[i] + spoil);
    w.fibers.e22[j] = vm::select(isVirgin, s22 * perE2 - nu * s11, was22) + strainInc[i + N];
    w.e12[j] = vm::select(isVirgin, s12 * perG2, was12) + strainInc[i + 3 * N];
  });
}

// The growth d of the plastic strain of points that slip: |t| - 2 G d = sy + C (plastic strain + d)^p.  In terms of y, the power,
// 2 G y^(1/p) + C y grows ever faster, so that Newton's steps come down from above to the root and never pass it; the slope of
// the power itself is infinite at 0.  Where p is 1/2 or more Halley's steps do so too: the Schwarzian derivative is negative.
// Starts no further than twice the root's share: at the y without hardening or that of hardening alone, whichever is less.
SA_INLINE void findSlip(const PlyFabric& m, int n, const Lane& open, const Lane& before, Lane& slip) {
  const double G2 = m.G2, perG2 = 1.0 / m.G2, C = m.hardening, p = m.exponent, perP = 1.0 / m.exponent,
               perC = C > 0.0 ? 1.0 / C : 0.0, bend = p >= 0.5 ? 0.5 * (perP - 1.0) : 0.0;
  Lane y, moves;
  forPoints(n, [=, &open, &before, &y, &moves](int j) SA_POINT {
    const double most = vm::power(before[j] + open[j] * perG2, p), alone = open[j] * perC;
    y[j] = vm::select((perC > 0.0) & (alone < most), alone, most);
    moves[j] = 1.0;
  });
  constexpr int kMostSteps = 100; // four are usual, some more where p is small
  for (int step = 0; step < kMostSteps && C > 0.0 && isAnySet(n, moves); ++step)
    forPoints(n, [=, &open, &before, &y, &moves](int j) SA_POINT {
      const double at = y[j], x = vm::power(at, perP), error = G2 * (x - before[j]) + C * at - open[j];
      const double power1 = G2 * perP * x, slope = power1 + C * at; // y times the slope
      const double next = at - at * (error * slope / (slope * slope - bend * (error * power1)));
      const bool goes = (next < at) & (error > 1e-15 * open[j]);
      y[j] = vm::select(goes, next, at);
      moves[j] = vm::select(goes, 1.0, 0.0);
    });
  forPoints(n, [=, &open, &before, &y, &slip](int j) SA_POINT {
    // of two forms of d the one that takes the smaller difference of large numbers
    const double hard = C * y[j], byStress = (open[j] - hard) * perG2, byStrain = vm::power(y[j], perP) - before[j];
    slip[j] = vm::max(0.0, vm::select(hard > 0.5 * open[j], byStrain, byStress));
  });
}

// Shear: the return of the points that slip.
SA_INLINE void returnShear(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const double *plasticOld = b.stateOld + kPlasticStrain * N + start,
               *plasticShearOld = b.stateOld + kPlasticShear * N + start;
  const double G2 = m.G2, C = m.hardening, p = m.exponent, yield = m.yield;
  forPoints(n, [=, &w](int j) SA_POINT {
    const double before = vm::max(0.0, plasticOld[j]), trial = vm::abs(G2 * (w.e12[j] - plasticShearOld[j]));
    const double now = vm::select(before > 0.0, vm::power(before, p), 0.0);
    w.t[j] = trial;
    w.slip[j] = 0.0;
    w.isOpen[j] = vm::select(trial - (yield + C * now) > 0.0, 1.0, 0.0);
  });
  int place[kScratchPoints];
  const int count = pack(n, w.isOpen, place), length = packedLength(count);
  if (count > 0) {
    Lane open, before, slip;
    for (int j = 0; j < length; ++j) open[j] = w.t[place[j]] - yield, before[j] = vm::max(0.0, plasticOld[place[j]]);
    findSlip(m, length, open, before, slip);
    for (int j = 0; j < count; ++j) w.slip[place[j]] = slip[j];
  }
  forPoints(n, [=, &w](int j) SA_POINT {
    const double wasShear = plasticShearOld[j], was = plasticOld[j], d = w.slip[j], direction = w.e12[j] - wasShear;
    w.t[j] = vm::copysign(w.t[j] - G2 * d, direction) + (was - was);
    w.plasticShear[j] = wasShear + vm::copysign(d, direction);
    w.plastic[j] = was + d;
  });
}

// Signs and effective stresses of both directions, of the damages of the signs that act.  The sign of one may hang on the damage
// of the other, through nu; of the undamaged signs that of the larger stretching is right always, and so the other one is in
// the second look.
struct FiberStress {
  double is1, is2, effective1, effective2;
};
SA_INLINE FiberStress fiberStress(const PlyFabric& m, double e11, double e22, double d1t, double d1c, double d2t,
                                  double d2c) {
  const double left1 = 1.0 - vm::select(e11 + m.nu21 * e22 >= 0.0, d1t, d1c),
               left2 = 1.0 - vm::select(e22 + m.nu12 * e11 >= 0.0, d2t, d2c);
  const double is1 = vm::select(e11 + left2 * m.nu21 * e22 >= 0.0, 1.0, 0.0),
               is2 = vm::select(e22 + left1 * m.nu12 * e11 >= 0.0, 1.0, 0.0);
  const double now1 = 1.0 - vm::select(is1 > 0.0, d1t, d1c), now2 = 1.0 - vm::select(is2 > 0.0, d2t, d2c);
  const double perD = 1.0 / (1.0 - now1 * now2 * m.coupling);
  return {is1, is2, m.E1 * (e11 + now2 * m.nu21 * e22) * perD, m.E2 * (e22 + now1 * m.nu12 * e11) * perD};
}
SA_INLINE void findFiberStress(const PlyFabric& model, int n, Fibers& f) {
  const PlyFabric m = model;
  forPoints(n, [=, &f](int j) SA_POINT {
    const FiberStress s =
        fiberStress(m, f.e11[j], f.e22[j], f.damage[0][j], f.damage[1][j], f.damage[2][j], f.damage[3][j]);
    f.tension[0][j] = s.is1, f.effective[0][j] = s.effective1;
    f.tension[1][j] = s.is2, f.effective[1][j] = s.effective2;
  });
}

// r and damage of one direction at the end under an effective stress: of the sign that acts, what it was or more.  Without
// kSoftens for points whose r is 1 at most, which do not need the law.
template <bool kSoftens>
SA_INLINE void damageDirection(const PlyFabric& m, int direction, int n, const double* const* damageOld,
                               const double* const* reachedOld, Fibers& f, Lane& isOpen) {
  const std::size_t t = std::size_t{kSigns} * direction, c = t + 1;
  const double *damageT = damageOld[t], *damageC = damageOld[c], *reachedT = reachedOld[t], *reachedC = reachedOld[c];
  const double perTension = m.modes[t].perStrength, perCompression = m.modes[c].perStrength,
               tensionEnergy = m.modes[t].fractureEnergy, compressionEnergy = m.modes[c].fractureEnergy,
               largest = m.largest;
  Lane &effective = f.effective[direction], &tension = f.tension[direction], &steepT = f.steepness[t],
       &steepC = f.steepness[c], &rTNow = f.reached[t], &rCNow = f.reached[c], &dTNow = f.damage[t],
       &dCNow = f.damage[c];
  forPoints(n, [=, &effective, &tension, &steepT, &steepC, &rTNow, &rCNow, &dTNow, &dCNow, &isOpen](int j) SA_POINT {
    const bool isTension = tension[j] > 0.0;
    const double rT = reachedT[j], rC = reachedC[j], dT = damageT[j], dC = damageC[j];
    const double perStrength = vm::select(isTension, perTension, perCompression);
    const double r = grown(vm::select(isTension, rT, rC), vm::abs(effective[j]) * perStrength);
    double now = r - r;
    if constexpr (kSoftens) {
      const double A1 = steepT[j], A2 = steepC[j], A = vm::select(isTension, A1, A2),
                   energy = vm::select(isTension, tensionEnergy, compressionEnergy);
      const double soft = vm::min(largest, 1.0 - vm::expBelow(-A * (r - 1.0)) / vm::max(1.0, r));
      now = vm::select(r > 1.0, vm::select(energy > 0.0, soft, largest), now);
    }
    const double before = vm::select(isTension, dT, dC), d = grown(before, now);
    const double spoil = d - d; // that of a NaN spoils both signs: which one acts next is chosen by comparisons
    rTNow[j] = vm::select(isTension, r, rT);
    rCNow[j] = vm::select(isTension, rC, r);
    dTNow[j] = vm::select(isTension, d, dT + spoil);
    dCNow[j] = vm::select(isTension, dC + spoil, d);
    if constexpr (!kSoftens) {
      const double wasOpen = isOpen[j];
      isOpen[j] = vm::select((r <= 1.0) & (d == before), wasOpen, 1.0);
    }
  });
}

// Damage and stress of the fibres hang on each other through nu alone, so that sweeps settle them: each begins with the past,
// under the stress that the damage of the one before leaves.  Where the first stress leaves all as it was, so do the others:
// only the points that soften are swept, side by side.
constexpr int kSweeps = 3;
SA_INLINE void damageFibers(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const double *lengths = b.length + start, *damageOld[kModes], *reachedOld[kModes];
  for (int k = 0; k < kModes; ++k)
    damageOld[k] = b.stateOld + (kDamage + k) * N + start, reachedOld[k] = b.stateOld + (kReached + k) * N + start;
  Fibers& all = w.fibers;
  const PlyFabric model = m;
  const double *d1t = damageOld[0], *d1c = damageOld[1], *d2t = damageOld[2], *d2c = damageOld[3];
  forPoints(n, [=, &all, &w](int j) SA_POINT {
    const FiberStress s = fiberStress(model, all.e11[j], all.e22[j], d1t[j], d1c[j], d2t[j], d2c[j]);
    all.tension[0][j] = s.is1, all.effective[0][j] = s.effective1;
    all.tension[1][j] = s.is2, all.effective[1][j] = s.effective2;
    w.isOpen[j] = 0.0;
  });
  damageDirection<false>(m, 0, n, damageOld, reachedOld, all, w.isOpen);
  damageDirection<false>(m, 1, n, damageOld, reachedOld, all, w.isOpen);
  int place[kScratchPoints];
  const int count = pack(n, w.isOpen, place), those = packedLength(count);
  if (count == 0) return;
  Fibers some;
  Lane length;
  for (int j = 0; j < those; ++j) {
    const int k = place[j];
    some.e11[j] = all.e11[k], some.e22[j] = all.e22[k], length[j] = lengths[k];
  }
  const double *damageThere[kModes], *reachedThere[kModes];
  for (int k = 0; k < kModes; ++k) {
    damageThere[k] = some.damageOld[k], reachedThere[k] = some.reachedOld[k];
    for (int j = 0; j < those; ++j) {
      some.damageOld[k][j] = some.damage[k][j] = damageOld[k][place[j]];
      some.reachedOld[k][j] = reachedOld[k][place[j]];
    }
    const Softening mode = m.modes[k];
    Lane& steepness = some.steepness[k];
    forPoints(those,
              [=, &steepness, &length](int j) SA_POINT { steepness[j] = mode.steepness(vm::max(0.0, length[j])); });
  }
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    findFiberStress(m, those, some);
    damageDirection<true>(m, 0, those, damageThere, reachedThere, some, w.isOpen);
    damageDirection<true>(m, 1, those, damageThere, reachedThere, some, w.isOpen);
  }
  findFiberStress(m, those, some);
  for (int j = 0; j < count; ++j) {
    const int to = place[j];
    for (int k = 0; k < kModes; ++k) all.damage[k][to] = some.damage[k][j], all.reached[k][to] = some.reached[k][j];
    for (int k = 0; k < kDirections; ++k)
      all.tension[k][to] = some.tension[k][j], all.effective[k][to] = some.effective[k][j];
  }
}

SA_INLINE bool isDeleted(const PlyFabric& m, double d1t, double d1c, double d2t, double d2c, double plastic) {
  const double failed = vm::select((d1t >= m.largest) | (d1c >= m.largest), 1.0, 0.0) +
                        vm::select((d2t >= m.largest) | (d2c >= m.largest), 1.0, 0.0);
  const double all = (d1t + d1c) + (d2t + d2c);
  return ((failed >= m.failedToDelete) | (plastic >= m.deletionStrain)) & (all == all); // a NaN is to be seen
}

// Damage of the matrix in shear.
SA_INLINE void damageShear(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const double *reachedOld = b.stateOld + kShearReached * N + start, *damageOld = b.stateOld + kShearDamage * N + start;
  const double perStrength = m.perShearStrength, alpha = m.alpha, largest = m.largestShearDamage;
  forPoints(n, [=, &w](int j) SA_POINT {
    const double reached = grown(reachedOld[j], vm::abs(w.t[j]) * perStrength);
    w.reached[j] = reached;
    w.damage[j] = grown(damageOld[j], vm::min(largest, alpha * vm::logAbove(vm::max(1.0, reached))));
  });
}

// Stress and energies at the end.
SA_INLINE void storePly(const Block& b, const PlyFabric& ply, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const PlyFabric m = ply;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *status = b.state + kStatus * N, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    const double d1tOld = stateOld[i], d1cOld = stateOld[i + N], d2tOld = stateOld[i + 2 * N],
                 d2cOld = stateOld[i + 3 * N], plasticOld = stateOld[i + kPlasticStrain * N];
    const double d1t = w.fibers.damage[0][j], d1c = w.fibers.damage[1][j], d2t = w.fibers.damage[2][j],
                 d2c = w.fibers.damage[3][j], plastic = w.plastic[j], t = w.t[j];
    const bool wasAlive = !isDeleted(m, d1tOld, d1cOld, d2tOld, d2cOld, plasticOld),
               isAlive = wasAlive & !isDeleted(m, d1t, d1c, d2t, d2c, plastic);
    // a NaN in the damage of the other sign would only have kept the point from being deleted
    const double past = (d1tOld + d1cOld) + (d2tOld + d2cOld), spoil = past - past;
    const double left1 = 1.0 - vm::select(w.fibers.tension[0][j] > 0.0, d1t, d1c),
                 left2 = 1.0 - vm::select(w.fibers.tension[1][j] > 0.0, d2t, d2c);
    const double s11 = vm::select(isAlive, left1 * w.fibers.effective[0][j] + spoil, 0.0),
                 s22 = vm::select(isAlive, left2 * w.fibers.effective[1][j], 0.0),
                 s12 = vm::select(isAlive, (1.0 - w.damage[j]) * t, 0.0);
    const double perDensity = 1.0 / density[i], intOld = internalOld[i], inelOld = inelasticOld[i];
    const double work = 0.5 * ((stressOld[i] + s11) * strainInc[i] + (stressOld[i + N] + s22) * strainInc[i + N]) +
                        (stressOld[i + 3 * N] + s12) * strainInc[i + 3 * N];
    const double stored = 0.5 * (s11 * w.fibers.e11[j] + s22 * w.fibers.e22[j]) + s12 * (w.e12[j] - w.plasticShear[j]);
    const double internalNow = intOld + work * perDensity,
                 inelasticNow = grown(inelOld, internalNow - stored * perDensity);
    internal[i] = vm::select(wasAlive, internalNow, intOld);
    inelastic[i] = vm::select(wasAlive, inelasticNow, inelOld);
    stress[i] = s11, stress[i + N] = s22, stress[i + 2 * N] = 0.0, stress[i + 3 * N] = s12;
    w.isDead[j] = vm::select(wasAlive, 0.0, 1.0);
    status[i] = vm::select(isAlive, 1.0, 0.0);
  });
}

// The state at the end; deleted points keep theirs.
SA_INLINE void storeStates(const Block& b, int start, int n, const PlyScratch& w) {
  const double* const lanes[] = {
      w.fibers.damage[0], w.fibers.damage[1],  w.fibers.damage[2],  w.fibers.damage[3],  w.damage,
      w.plastic,          w.fibers.reached[0], w.fibers.reached[1], w.fibers.reached[2], w.fibers.reached[3],
      w.reached,          w.plasticShear,      w.fibers.e11,        w.fibers.e22,        w.e12};
  const bool areAlive = !isAnySet(n, w.isDead);
  for (int k = 0; k < kStatus; ++k) {
    const int64_t from = k * int64_t{b.points} + start;
    const double *now = lanes[k], *old = b.stateOld + from, *isDead = w.isDead;
    double* state = b.state + from;
    if (areAlive)
      forPoints(n, [=](int j) SA_POINT { state[j] = now[j]; });
    else
      forPoints(n, [=](int j) SA_POINT {
        const double kept = old[j], value = now[j];
        state[j] = vm::select(isDead[j] > 0.0, kept, value);
      });
  }
}

// The answer of the first call.
SA_INLINE void elasticPly(const Block& b, const PlyFabric& m) {
  const int64_t N = b.points;
  const double perD = 1.0 / (1.0 - m.coupling), C11 = m.E1 * perD, C22 = m.E2 * perD, C12 = C11 * m.nu21, G2 = m.G2;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(b.points, [=](int i) SA_POINT {
    const double e11 = strainInc[i], e22 = strainInc[i + N];
    stress[i] = stressOld[i] + (C11 * e11 + C12 * e22);
    stress[i + N] = stressOld[i + N] + (C12 * e11 + C22 * e22);
    stress[i + 2 * N] = 0.0;
    stress[i + 3 * N] = stressOld[i + 3 * N] + G2 * strainInc[i + 3 * N];
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
  keepStates(b, 0);
}

SA_INLINE void compute(const Block& b, const PlyFabric& m) {
  if (b.isDataCheck) return elasticPly(b, m);
  forPieces(b.points, [&b, &m](int start, int n) SA_POINT {
    PlyScratch w;
    addStrain(b, m, start, n, w);
    returnShear(b, m, start, n, w);
    damageFibers(b, m, start, n, w);
    damageShear(b, m, start, n, w);
    storePly(b, m, start, n, w);
    storeStates(b, start, n, w);
  });
  keepStates(b, PlyFabric::kStates);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_PLYFABRIC, PlyFabric)

} // namespace sa::user
