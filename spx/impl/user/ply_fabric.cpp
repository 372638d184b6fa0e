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
  // of the fibres: steepness, r and damage of the four modes, and of both directions the sign and the effective stress
  Lane steepness[kModes], reached[kModes], damage[kModes], tension[kDirections], effective[kDirections];
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

// Signs and effective stresses of both directions, of the damages of the signs that act.  The sign of one may hang on the damage
// of the other, through nu; of the undamaged signs that of the larger stretching is right always, and so the other one is in
// the second look.
SA_INLINE void findFiberStress(const PlyFabric& m, int n, PlyScratch& w) {
  const double E1 = m.E1, E2 = m.E2, nu12 = m.nu12, nu21 = m.nu21, coupling = m.coupling;
  forPoints(n, [=, &w](int j) SA_POINT {
    const double e11 = w.e11[j], e22 = w.e22[j], d1t = w.damage[0][j], d1c = w.damage[1][j], d2t = w.damage[2][j],
                 d2c = w.damage[3][j];
    const double left1 = 1.0 - vm::select(e11 + nu21 * e22 >= 0.0, d1t, d1c),
                 left2 = 1.0 - vm::select(e22 + nu12 * e11 >= 0.0, d2t, d2c);
    const double is1 = vm::select(e11 + left2 * nu21 * e22 >= 0.0, 1.0, 0.0),
                 is2 = vm::select(e22 + left1 * nu12 * e11 >= 0.0, 1.0, 0.0);
    const double now1 = 1.0 - vm::select(is1 > 0.0, d1t, d1c), now2 = 1.0 - vm::select(is2 > 0.0, d2t, d2c);
    const double perD = 1.0 / (1.0 - now1 * now2 * coupling);
    w.tension[0][j] = is1;
    w.tension[1][j] = is2;
    w.effective[0][j] = E1 * (e11 + now2 * nu21 * e22) * perD;
    w.effective[1][j] = E2 * (e22 + now1 * nu12 * e11) * perD;
  });
}

// r and damage of one direction at the end under an effective stress: of the sign that acts, what it was or more.
SA_INLINE void damageDirection(const Block& b, const PlyFabric& m, int direction, int start, int n, PlyScratch& w) {
  const int64_t N = b.points;
  const int64_t t = int64_t{kSigns} * direction, c = t + 1;
  const double *damageOld = b.stateOld + (kDamage + t) * N, *reachedOld = b.stateOld + (kReached + t) * N;
  const double perTension = m.modes[t].perStrength, perCompression = m.modes[c].perStrength,
               tensionEnergy = m.modes[t].fractureEnergy, compressionEnergy = m.modes[c].fractureEnergy,
               largest = m.largest;
  Lane &effective = w.effective[direction], &tension = w.tension[direction];
  Lane &steepT = w.steepness[t], &steepC = w.steepness[c], &reachedT = w.reached[t], &reachedC = w.reached[c],
       &damageT = w.damage[t], &damageC = w.damage[c];
  forPoints(n, [=, &effective, &tension, &steepT, &steepC, &reachedT, &reachedC, &damageT, &damageC](int j) SA_POINT {
    const int i = start + j;
    const bool isTension = tension[j] > 0.0;
    const double rT = reachedOld[i], rC = reachedOld[i + N], dT = damageOld[i], dC = damageOld[i + N], A1 = steepT[j],
                 A2 = steepC[j];
    const double A = vm::select(isTension, A1, A2), perStrength = vm::select(isTension, perTension, perCompression),
                 energy = vm::select(isTension, tensionEnergy, compressionEnergy);
    const double r = grown(vm::select(isTension, rT, rC), vm::abs(effective[j]) * perStrength);
    const double soft = vm::min(largest, 1.0 - vm::exp(-A * (r - 1.0)) / vm::max(1.0, r));
    const double now = vm::select(r > 1.0, vm::select(energy > 0.0, soft, largest), r - r);
    const double d = grown(vm::select(isTension, dT, dC), now);
    const double spoil = d - d; // that of a NaN spoils both signs: which one acts next is chosen by comparisons
    reachedT[j] = vm::select(isTension, r, rT);
    reachedC[j] = vm::select(isTension, rC, r);
    damageT[j] = vm::select(isTension, d, dT + spoil);
    damageC[j] = vm::select(isTension, dC + spoil, d);
  });
}

// Damage and stress of the fibres hang on each other through nu alone, so that sweeps settle them: each begins with the past,
// under the stress that the damage of the one before leaves.
constexpr int kSweeps = 3;
SA_INLINE void damageFibers(const Block& b, const PlyFabric& m, int start, int n, PlyScratch& w) {
  const double* lengths = b.length;
  for (int k = 0; k < kModes; ++k) {
    const double* damageOld = b.stateOld + (kDamage + k) * int64_t{b.points};
    const Softening mode = m.modes[k];
    Lane &steepness = w.steepness[k], &damage = w.damage[k];
    forPoints(n, [=, &steepness, &damage](int j) SA_POINT {
      steepness[j] = mode.steepness(vm::max(0.0, lengths[start + j]));
      damage[j] = damageOld[start + j];
    });
  }
  for (int sweep = 0; sweep < kSweeps; ++sweep) {
    findFiberStress(m, n, w);
    damageDirection(b, m, 0, start, n, w);
    damageDirection(b, m, 1, start, n, w);
  }
  findFiberStress(m, n, w);
}

SA_INLINE bool isDeleted(const PlyFabric& m, double d1t, double d1c, double d2t, double d2c, double plastic) {
  const double failed = vm::select((d1t >= m.largest) | (d1c >= m.largest), 1.0, 0.0) +
                        vm::select((d2t >= m.largest) | (d2c >= m.largest), 1.0, 0.0);
  const double all = (d1t + d1c) + (d2t + d2c);
  return ((failed >= m.failedToDelete) | (plastic >= m.deletionStrain)) & (all == all); // a NaN is to be seen
}

// Stress, state and energies at the end.
SA_INLINE void storePly(const Block& b, const PlyFabric& ply, int start, int n, const PlyScratch& w) {
  const int64_t N = b.points;
  const PlyFabric m = ply;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *stateOld = b.stateOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld, *density = b.density;
  double *stress = b.stress, *state = b.state, *internal = b.internal, *inelastic = b.inelastic;
  forPoints(n, [=, &w](int j) SA_POINT {
    const int i = start + j;
    const double d1tOld = stateOld[i], d1cOld = stateOld[i + N], d2tOld = stateOld[i + 2 * N],
                 d2cOld = stateOld[i + 3 * N], plasticOld = stateOld[i + kPlasticStrain * N];
    const double d1t = w.damage[0][j], d1c = w.damage[1][j], d2t = w.damage[2][j], d2c = w.damage[3][j],
                 plastic = w.plastic[j], t = w.t[j];
    const double shearDamageOld = stateOld[i + kShearDamage * N], shearReachedOld = stateOld[i + kShearReached * N];
    const double reached = grown(shearReachedOld, vm::abs(t) * m.perShearStrength);
    const double growth = m.alpha * vm::log(vm::max(1.0, reached));
    const double shearDamage = grown(shearDamageOld, vm::min(m.largestShearDamage, growth));

    const bool wasAlive = !isDeleted(m, d1tOld, d1cOld, d2tOld, d2cOld, plasticOld),
               isAlive = wasAlive & !isDeleted(m, d1t, d1c, d2t, d2c, plastic);
    // a NaN in the damage of the other sign would only have kept the point from being deleted
    const double past = (d1tOld + d1cOld) + (d2tOld + d2cOld), spoil = past - past;
    const double left1 = 1.0 - vm::select(w.tension[0][j] > 0.0, d1t, d1c),
                 left2 = 1.0 - vm::select(w.tension[1][j] > 0.0, d2t, d2c);
    const double s11 = vm::select(isAlive, left1 * w.effective[0][j] + spoil, 0.0),
                 s22 = vm::select(isAlive, left2 * w.effective[1][j], 0.0),
                 s12 = vm::select(isAlive, (1.0 - shearDamage) * t, 0.0);
    const double e11 = w.e11[j], e22 = w.e22[j], e12 = w.e12[j], plasticShear = w.plasticShear[j];
    const double perDensity = 1.0 / density[i], intOld = internalOld[i], inelOld = inelasticOld[i];
    const double work = 0.5 * ((stressOld[i] + s11) * strainInc[i] + (stressOld[i + N] + s22) * strainInc[i + N]) +
                        (stressOld[i + 3 * N] + s12) * strainInc[i + 3 * N];
    const double stored = 0.5 * (s11 * e11 + s22 * e22) + s12 * (e12 - plasticShear);
    const double internalNow = intOld + work * perDensity,
                 inelasticNow = grown(inelOld, internalNow - stored * perDensity);
    internal[i] = vm::select(wasAlive, internalNow, intOld);
    inelastic[i] = vm::select(wasAlive, inelasticNow, inelOld);
    stress[i] = s11, stress[i + N] = s22, stress[i + 2 * N] = 0.0, stress[i + 3 * N] = s12;
    const auto keep = [=](int k, double now) SA_POINT {
      const double old = stateOld[i + k * N];
      state[i + k * N] = vm::select(wasAlive, now, old);
    };
    keep(kDamage, d1t), keep(kDamage + 1, d1c), keep(kDamage + 2, d2t), keep(kDamage + 3, d2c);
    keep(kReached, w.reached[0][j]), keep(kReached + 1, w.reached[1][j]);
    keep(kReached + 2, w.reached[2][j]), keep(kReached + 3, w.reached[3][j]);
    keep(kShearDamage, shearDamage), keep(kShearReached, reached);
    keep(kPlasticStrain, plastic), keep(kPlasticShear, plasticShear);
    keep(kStrain, e11), keep(kStrain + 1, e22), keep(kStrain + 2, e12);
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
    damageFibers(b, m, start, n, w);
    storePly(b, m, start, n, w);
  });
  keepStates(b, PlyFabric::kStates);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_PLYFABRIC, PlyFabric)

} // namespace sa::user
