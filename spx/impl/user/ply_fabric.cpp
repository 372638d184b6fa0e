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

// The largest part of its strength that one direction has reached, and its damage, in tension and in compression.
struct Direction {
  double reached[kSigns], damage[kSigns];
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
                      "The deletion of material %S, property 20, must be 0, 1 or 2.");
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

// What the passes over a piece hand on.
struct PlyScratch {
  Lane e11, e22, e12, t;      // strains at the end; effective shear stress
  Lane open, hardened, y;     // of the return: stress to spend, plastic strain so far, (plastic strain)^p
  Lane plasticShear, plastic; // at the end
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
    w.e11[j] = vm::select(isVirgin, s11 * perE1 - nu * s22, was11) + (strainInc[i] + spoil);
    w.e22[j] = vm::select(isVirgin, s22 * perE2 - nu * s11, was22) + strainInc[i + N];
    w.e12[j] = vm::select(isVirgin, s12 * perG2, was12) + strainInc[i + 3 * N];
  });
}

// Shear: |t| - 2 G d = sy + C (plastic strain + d)^p.  In terms of y, the power, 2 G y^(1/p) + C y grows ever faster, so that
// Newton's steps come down from above to the root and never pass it; the slope of the power itself is infinite at 0.  Starts no
// further than twice the root's share: at the y without hardening or that of hardening alone, whichever is less.
SA_INLINE void returnShear(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const double *plasticOld = b.stateOld + kPlasticStrain * N, *plasticShearOld = b.stateOld + kPlasticShear * N;
  const double G2 = m.G2, perG2 = 1.0 / m.G2, C = m.hardening, p = m.exponent, perP = 1.0 / m.exponent, yield = m.yield,
               perC = C > 0.0 ? 1.0 / C : 0.0;
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    const double before = vm::max(0.0, plasticOld[i]), trial = vm::abs(G2 * (w.e12[j] - plasticShearOld[i]));
    const double now = vm::select(before > 0.0, power(before, p), 0.0), over = trial - (yield + C * now);
    w.t[j] = trial;
    w.open[j] = vm::select(over > 0.0, trial - yield, 0.0);
    w.hardened[j] = before;
    const double most = power(before + (trial - yield) * perG2, p), alone = (trial - yield) * perC;
    w.y[j] = vm::select(over > 0.0, vm::select((perC > 0.0) & (alone < most), alone, most), now);
  });
  if (C > 0.0) {
    constexpr int kMostSteps = 100; // six are usual, some more where p is small
    double moved = 1.0;
    for (int step = 0; step < kMostSteps && moved > 0.0; ++step) {
      Lane moves;
      forPoints(n, [=, &w, &moves](int j) SA_POINT {
        const double y = w.y[j], x = power(y, perP), error = G2 * (x - w.hardened[j]) + C * y - w.open[j];
        const double next = y - error / (G2 * perP * x / vm::max(1e-300, y) + C);
        const bool goes = (w.open[j] > 0.0) & (next < y) & (error > 1e-15 * w.open[j]);
        w.y[j] = vm::select(goes, next, y);
        moves[j] = vm::select(goes, 1.0, 0.0);
      });
      moved = 0.0;
      for (int j = 0; j < n; ++j) moved += moves[j];
    }
  }
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    const double wasShear = plasticShearOld[i], was = plasticOld[i];
    // of two forms of d the one that takes the smaller difference of large numbers
    const double hard = C * w.y[j], byStress = (w.open[j] - hard) * perG2,
                 byStrain = power(w.y[j], perP) - w.hardened[j];
    const double d =
        vm::select(w.open[j] > 0.0, vm::max(0.0, vm::select(hard > 0.5 * w.open[j], byStrain, byStress)), 0.0);
    const double direction = w.e12[j] - wasShear;
    w.t[j] = vm::copysign(w.t[j] - G2 * d, direction) + (was - was);
    w.plasticShear[j] = wasShear + vm::copysign(d, direction);
    w.plastic[j] = was + d;
  });
}

// Of both directions: damage of the sign that acts, effective stress, and how far that is beyond the strengths.
struct FiberStress {
  double damage1, damage2, effective1, effective2;
  bool isTension1, isTension2;
};
// The sign of one direction may hang on the damage of the other, through nu; of the undamaged signs that of the larger
// stretching is right always, and so the other one is in the second look.
SA_INLINE FiberStress fiberStress(const PlyFabric& m, double e11, double e22, const Direction& one,
                                  const Direction& two) {
  FiberStress s{};
  s.isTension1 = e11 + m.nu21 * e22 >= 0.0;
  s.isTension2 = e22 + m.nu12 * e11 >= 0.0;
  for (int look = 0; look < 2; ++look) {
    s.damage1 = vm::select(s.isTension1, one.damage[0], one.damage[1]);
    s.damage2 = vm::select(s.isTension2, two.damage[0], two.damage[1]);
    const double x1 = e11 + (1.0 - s.damage2) * m.nu21 * e22, x2 = e22 + (1.0 - s.damage1) * m.nu12 * e11;
    const double perD = 1.0 / (1.0 - (1.0 - s.damage1) * (1.0 - s.damage2) * m.coupling);
    s.isTension1 = x1 >= 0.0;
    s.isTension2 = x2 >= 0.0;
    s.effective1 = m.E1 * x1 * perD;
    s.effective2 = m.E2 * x2 * perD;
  }
  return s;
}
// The direction at the end under an effective stress: of the sign that acts, what it was or more.
SA_INLINE Direction damaged(const Softening* modes, const double* steepness, double largest, double effective,
                            bool isTension, const Direction& old) {
  const auto acting = [=](double tension, double compression)
                          SA_POINT { return vm::select(isTension, tension, compression); };
  const double perStrength = acting(modes[0].perStrength, modes[1].perStrength),
               energy = acting(modes[0].fractureEnergy, modes[1].fractureEnergy),
               A = acting(steepness[0], steepness[1]);
  const double r = grown(acting(old.reached[0], old.reached[1]), vm::abs(effective) * perStrength);
  const double soft = vm::min(largest, 1.0 - vm::exp(-A * (r - 1.0)) / vm::max(1.0, r));
  const double now = vm::select(r > 1.0, vm::select(energy > 0.0, soft, largest), r - r);
  const double d = grown(acting(old.damage[0], old.damage[1]), now);
  const double spoil = d - d; // that of a NaN spoils both signs: which one acts next is chosen by comparisons
  return {{acting(r, old.reached[0]), acting(old.reached[1], r)},
          {acting(d, old.damage[0] + spoil), acting(old.damage[1] + spoil, d)}};
}

SA_INLINE bool isDeleted(const PlyFabric& m, const Direction& one, const Direction& two, double plastic) {
  const double failed = vm::select((one.damage[0] >= m.largest) | (one.damage[1] >= m.largest), 1.0, 0.0) +
                        vm::select((two.damage[0] >= m.largest) | (two.damage[1] >= m.largest), 1.0, 0.0);
  const double all = (one.damage[0] + one.damage[1]) + (two.damage[0] + two.damage[1]);
  return ((failed >= m.failedToDelete) | (plastic >= m.deletionStrain)) & (all == all); // a NaN is to be seen
}

SA_INLINE Direction loadDirection(const double* state, int64_t N, int64_t i, int direction) {
  Direction d{};
  for (int sign = 0; sign < kSigns; ++sign) {
    d.damage[sign] = state[i + (kDamage + kSigns * direction + sign) * N];
    d.reached[sign] = state[i + (kReached + kSigns * direction + sign) * N];
  }
  return d;
}
SA_INLINE void storeDirection(const Direction& d, double* state, int64_t N, int64_t i, int direction) {
  for (int sign = 0; sign < kSigns; ++sign) {
    state[i + (kDamage + kSigns * direction + sign) * N] = d.damage[sign];
    state[i + (kReached + kSigns * direction + sign) * N] = d.reached[sign];
  }
}

// Stress, state and energies at the end.  Stress and damage of the fibres hang on each other through nu alone, so that sweeps
// settle them: each begins with the past, under the stress that the damage of the one before leaves.
constexpr int kSweeps = 3;
SA_INLINE void damagePly(const Block& b, const PlyFabric& ply, int start, int n, const PlyScratch& w) {
  const int64_t N = b.points;
  const PlyFabric m = ply;
  const double *lengths = b.length, *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld,
               *internalOld = b.internalOld, *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    const double e11 = w.e11[j], e22 = w.e22[j], e12 = w.e12[j], t = w.t[j], length = vm::max(0.0, lengths[i]);
    const Direction oneOld = loadDirection(stateOld, N, i, 0), twoOld = loadDirection(stateOld, N, i, 1);
    const double shearDamageOld = stateOld[i + kShearDamage * N], shearReachedOld = stateOld[i + kShearReached * N],
                 plasticOld = stateOld[i + kPlasticStrain * N];
    Direction one = oneOld, two = twoOld;
    double steepness[kModes];
    for (int k = 0; k < kModes; ++k) steepness[k] = m.modes[k].steepness(length);
    for (int sweep = 0; sweep < kSweeps; ++sweep) {
      const FiberStress s = fiberStress(m, e11, e22, one, two);
      one = damaged(&m.modes[0], &steepness[0], m.largest, s.effective1, s.isTension1, oneOld);
      two = damaged(&m.modes[kSigns], &steepness[kSigns], m.largest, s.effective2, s.isTension2, twoOld);
    }
    const FiberStress s = fiberStress(m, e11, e22, one, two);
    const double reached = grown(shearReachedOld, vm::abs(t) * m.perShearStrength);
    const double growth = m.alpha * vm::log(vm::max(1.0, reached));
    const double shearDamage = grown(shearDamageOld, vm::min(m.largestShearDamage, growth));

    const bool wasAlive = !isDeleted(m, oneOld, twoOld, plasticOld),
               isAlive = wasAlive & !isDeleted(m, one, two, w.plastic[j]);
    // a NaN in the damage of the other sign would only have kept the point from being deleted
    const double past = (oneOld.damage[0] + oneOld.damage[1]) + (twoOld.damage[0] + twoOld.damage[1]),
                 spoil = past - past;
    const double s11 = vm::select(isAlive, (1.0 - s.damage1) * s.effective1 + spoil, 0.0),
                 s22 = vm::select(isAlive, (1.0 - s.damage2) * s.effective2, 0.0),
                 s12 = vm::select(isAlive, (1.0 - shearDamage) * t, 0.0);
    const double plasticShear = w.plasticShear[j];
    const auto keep = [=](double now, double old) SA_POINT { return vm::select(wasAlive, now, old); };
    for (int k = 0; k < kSigns; ++k) {
      one.damage[k] = keep(one.damage[k], oneOld.damage[k]), one.reached[k] = keep(one.reached[k], oneOld.reached[k]);
      two.damage[k] = keep(two.damage[k], twoOld.damage[k]), two.reached[k] = keep(two.reached[k], twoOld.reached[k]);
    }
    const double perDensity = 1.0 / density[i], intOld = internalOld[i], inelOld = inelasticOld[i];
    const double work = 0.5 * ((stressOld[i] + s11) * strainInc[i] + (stressOld[i + N] + s22) * strainInc[i + N]) +
                        (stressOld[i + 3 * N] + s12) * strainInc[i + 3 * N];
    const double stored = 0.5 * (s11 * e11 + s22 * e22) + s12 * (e12 - plasticShear);
    const double internalNow = intOld + work * perDensity;
    internal[i] = keep(internalNow, intOld);
    inelastic[i] = keep(grown(inelOld, internalNow - stored * perDensity), inelOld);
    const double plasticShearOld = stateOld[i + kPlasticShear * N], was11 = stateOld[i + kStrain * N],
                 was22 = stateOld[i + (kStrain + 1) * N], was12 = stateOld[i + (kStrain + 2) * N];
    stress[i] = s11, stress[i + N] = s22, stress[i + 2 * N] = 0.0, stress[i + 3 * N] = s12;
    storeDirection(one, state, N, i, 0);
    storeDirection(two, state, N, i, 1);
    state[i + kShearDamage * N] = keep(shearDamage, shearDamageOld);
    state[i + kPlasticStrain * N] = keep(w.plastic[j], plasticOld);
    state[i + kShearReached * N] = keep(reached, shearReachedOld);
    state[i + kPlasticShear * N] = keep(plasticShear, plasticShearOld);
    state[i + kStrain * N] = keep(e11, was11);
    state[i + (kStrain + 1) * N] = keep(e22, was22);
    state[i + (kStrain + 2) * N] = keep(e12, was12);
    state[i + kStatus * N] = vm::select(isAlive, 1.0, 0.0);
  });
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
    damagePly(b, m, start, n, w);
  });
  keepStates(b, PlyFabric::kStates);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_PLYFABRIC, PlyFabric)

} // namespace sa::user
