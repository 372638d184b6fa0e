// Foams from stress-strain curves at several strain rates, with hysteresis: rate-sensitive, Fu-Chang isotropic and anisotropic.
//
// The curves give the Biot stress T (uniaxial: nominal stress over nominal strain), by principal direction of the right stretch
// U or by component.  The slowest curve is the elastic one: its work W softens all stress below the largest W so far, and what
// faster curves add is lost.
#include "spx.h"
#include "spx/impl/user/curves.h"
#include "spx/impl/user/stretch_frame.h"

namespace sa::user {
namespace {

// ---- the curves

// A curve that starts with a negative strain has tension of its own.
bool hasTension(const Table& curve) { return curve.at(0, kStrain) < 0.0; }

double stressOf(const Table& curve, double strain) {
  double stress = 0.0;
  stressAt(curve, 1, &strain, &stress);
  return stress;
}

// Zero stress at zero strain, to rounding; the rows are finite.
bool startsFromZero(const Table& curve, bool mayHaveTension) {
  double largest = 0.0;
  for (int r = 0; r < curve.rows; ++r) {
    if (!(vm::abs(curve.at(r, kStress)) < vm::kInfinity && vm::abs(curve.at(r, kStrain)) < vm::kInfinity)) return false;
    largest = vm::max(largest, vm::abs(curve.at(r, kStress)));
  }
  if (!hasTension(curve)) return curve.at(0, kStrain) == 0.0 && curve.at(0, kStress) == 0.0;
  return mayHaveTension && vm::abs(stressOf(curve, 0.0)) <= 1e-12 * largest;
}

template <class Check>
bool holdsForCurves(const RateFamily& family, Check check) {
  const double* values = family.curves;
  for (int k = 0; k < family.rates.rows; ++k) {
    const Table curve = family.curve(k, values);
    if (!check(curve)) return false;
    values += int64_t{kCurveColumns} * curve.rows;
  }
  return true;
}

// Whether some curve carries less than the one before it, at a row of its own.
bool hasFallingRate(const RateFamily& family) {
  Table before = family.slowest();
  return !holdsForCurves(family, [&before](const Table& curve) {
    bool isFalling = false;
    for (int r = 0; r < curve.rows; ++r) {
      const double strain = curve.at(r, kStrain), more = curve.at(r, kStress) - stressOf(before, strain);
      isFalling |= strain < 0.0 ? more > 0.0 : more < 0.0;
    }
    before = curve;
    return !isFalling;
  });
}

bool refuseFamily(const Block& block, FamilyFault fault, const RateFamily& family, bool mayHaveTension) {
  if (fault == FamilyFault::cutOff) return refuse(block, kTablesCutOff);
  if (fault == FamilyFault::noCurve)
    return refuse(block, "Material %S needs a stress-strain curve of at least one row for each strain rate.");
  if (fault == FamilyFault::strains)
    return refuse(block, "The stress-strain curves of material %S must be specified using increasing strain values.");
  if (fault == FamilyFault::rates)
    return refuse(block, "The strain rates of the curves of material %S must be positive and increasing.");
  const bool isFromZero =
      holdsForCurves(family, [=](const Table& curve) { return startsFromZero(curve, mayHaveTension); });
  if (!isFromZero && mayHaveTension)
    return refuse(block, "The stress-strain curves of material %S must be finite and either begin with zero strain and "
                         "zero stress or begin in tension and pass through zero stress at zero strain.");
  if (!isFromZero)
    return refuse(block, "The stress-strain curves of material %S must be finite and begin with zero strain and zero "
                         "stress.");
  const bool isTension = hasTension(family.slowest());
  return !holdsForCurves(family, [=](const Table& curve) { return hasTension(curve) == isTension; }) &&
         refuse(block, "Either all or none of the stress-strain curves of one family of material %S must begin in "
                       "tension.");
}

// ---- the three foams

enum class Foam { rateSensitive, isotropic, anisotropic };

#define SA_CHECK_DEPVAR "Check the definition of *DEPVAR in the input file."
struct FoamTexts {
  std::string_view elements, states, properties;
};
#define SA_FOAM_TEXTS(foam, depvar)                                                                                    \
  {                                                                                                                    \
    "The " foam " user material only supports 3D, plane strain and axisymmetric elements.",                            \
        "The " foam " user material requires the specification of %I state variables. " depvar,                        \
        "The " foam " user material requires the specification of %I material properties in the "                      \
        "*USER MATERIAL option for material %S."                                                                       \
  }
// two blanks after "of", which are kept
constexpr FoamTexts kFoamTexts[] = {
    SA_FOAM_TEXTS("rate sensitive foam", "Check the definition of  *DEPVAR in the input file."),
    SA_FOAM_TEXTS("Fu-Chang isotropic foam", SA_CHECK_DEPVAR),
    SA_FOAM_TEXTS("Fu-Chang anisotropic foam", SA_CHECK_DEPVAR)};

template <Foam kFoam>
struct TabulatedFoam {
  static constexpr bool kByComponent = kFoam == Foam::anisotropic, kByDirection = kFoam == Foam::isotropic,
                        kIsDamped = kFoam == Foam::rateSensitive;
  static constexpr int kFamilies = kByComponent ? 6 : 1;
  // numbers of the properties; HU, its exponent and the time of the filter follow one another
  static constexpr int kCutOff = 2, kDamping = 3, kHysteresis = kIsDamped ? 4 : 3, kCounts = kHysteresis + 3,
                       kConstants = kCounts + kFamilies - 1;
  // state variables, from 0: the largest work of the past, then the filtered rate
  static constexpr int kRate = kFamilies, kDampingStress = 2, kStates = kIsDamped ? 2 : kRate + 6, kDampedStates = 8;

  double E, cutOff, HU, exponent, filter, perTime, damping; // filter: its share
  RateFamily family[kFamilies];

  // Of component k, from 0: 0.0 as its count stands for the family of the component before.
  static FamilyFault takeFamilies(const Block& block, RateFamily (&family)[kFamilies], int& number) {
    Tables tables(block, kConstants);
    for (number = 0; number < kFamilies; ++number) {
      const double count = property(block, kCounts + number);
      if (number > 0 && count == 0.0) {
        family[number] = family[number - 1];
        continue;
      }
      const FamilyFault fault = takeFamily(tables, count, family[number]);
      if (fault != FamilyFault::none) return fault;
    }
    return FamilyFault::none;
  }
  static bool isRefused(const Block& b) {
    const FoamTexts& texts = kFoamTexts[static_cast<int>(kFoam)];
    if (refuseUnless(b, b.isSolid() || b.isPlane(), texts.elements)) return true;
    if (kIsDamped && property(b, kDamping) != 0.0) {
      if (refuseStates(b, kDampedStates,
                       "The rate sensitive foam user material requires the specification of %I "
                       "state variables when beta damping is specified. " SA_CHECK_DEPVAR))
        return true;
    } else if (refuseStates(b, kStates, texts.states)) {
      return true;
    }
    if (refuseProperties(b, kConstants, texts.properties)) return true;
    RateFamily family[kFamilies];
    int number = 0;
    const FamilyFault fault = takeFamilies(b, family, number);
    if (fault != FamilyFault::none) return refuseFamily(b, fault, family[number], true);
    for (number = 0; number < kFamilies; ++number) {
      const bool isShear = number >= 3 && property(b, kCounts + number) != 0.0;
      if (refuseFamily(b, FamilyFault::none, family[number], !kIsDamped && !isShear)) return true;
    }
    return refuseValues(b, {1}) || refuseOutside(b, kCutOff, 0.0) || (kIsDamped && refuseOutside(b, kDamping, 0.0)) ||
           refuseOutside(b, kHysteresis, 0.0, 1.0) || refuseOutside(b, kHysteresis + 1, 0.0) ||
           refuseOutside(b, kHysteresis + 2, 0.0) || refuseNotFinite(b, 1, kConstants);
  }
  explicit TabulatedFoam(const Block& b) {
    const double* p = b.props;
    const auto orOne = [](double x) { return x == 0.0 ? 1.0 : x; };
    E = p[0], cutOff = p[kCutOff - 1] > 0.0 ? p[kCutOff - 1] : 1e300;
    HU = orOne(p[kHysteresis - 1]), exponent = orOne(p[kHysteresis]);
    const double relaxationTime = p[kHysteresis + 1];
    perTime = b.dt < 1e-100 ? 0.0 : 1.0 / b.dt; // no rate in no time; that of a NaN is a NaN
    filter = filterShare(b.dt < 0.0 ? 0.0 : b.dt, relaxationTime);
    damping = kIsDamped ? p[kDamping - 1] * E : 0.0;
    int number = 0;
    takeFamilies(b, family, number);
  }
  bool isWrong(const Block& b) const {
    bool isFalling = false;
    for (const RateFamily& f : family) isFalling |= b.isDataCheck && hasFallingRate(f);
    if (isFalling)
      warn(
          b,
          "A stress-strain curve of material %S carries less than the curve of the strain rate before it: the foam may "
          "give back more energy than it has taken.");
    return false;
  }
};

template <class Storage>
struct FoamScratch {
  StretchFrame<Storage> frame;
  Lane strain[6], rate[6]; // positive in compression
  Lane stress[6], work[6]; // of the slowest curve, then of the family
  Lane soft[6], psi;       // factor of the stress, energy that comes back
};

// Nominal strains and their rates, along the principal directions or by component.
template <class Storage, Foam kFoam>
SA_INLINE void findStrains(const Block& b, const TabulatedFoam<kFoam>& m, int start, int n, FoamScratch<Storage>& w) {
  using Model = TabulatedFoam<kFoam>;
  const int64_t N = b.points;
  const double perTime = m.perTime, filter = m.filter;
  const double *before = b.stretchOld, *now = b.stretch;
  const double* rateOld = b.stateOld + Model::kRate * N;
  double* rateNew = b.state + Model::kRate * N;
  findFrame(now, N, start, n, w.frame);
  forPoints(n, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Sym<Storage> U = loadTensor<Storage>(now, N, i);
    Sym<Storage> D = perTime * sum(U, -1.0, loadTensor<Storage>(before, N, i));
    if constexpr (!Model::kIsDamped) {
      const Sym<Storage> old = loadTensor<Storage>(rateOld, N, i);
      D = sum(old, filter, sum(D, -1.0, old));
      storeTensor(rateNew, N, i, D);
    }
    if constexpr (Model::kByComponent) {
      w.strain[0][k] = limitedNominal(1.0 - U.s11), w.rate[0][k] = -D.s11;
      w.strain[1][k] = limitedNominal(1.0 - U.s22), w.rate[1][k] = -D.s22;
      w.strain[2][k] = limitedNominal(1.0 - U.s33), w.rate[2][k] = -D.s33;
      w.strain[3][k] = 2.0 * vm::abs(U.s12), w.rate[3][k] = vm::select(U.s12 < 0.0, -2.0, 2.0) * D.s12;
      if constexpr (Storage::k23and13) {
        w.strain[4][k] = 2.0 * vm::abs(U.s23), w.rate[4][k] = vm::select(U.s23 < 0.0, -2.0, 2.0) * D.s23;
        w.strain[5][k] = 2.0 * vm::abs(U.s13), w.rate[5][k] = vm::select(U.s13 < 0.0, -2.0, 2.0) * D.s13;
      }
    } else {
      const Sym<Storage> d = intoFrame(w.frame.directions(k), D);
      w.strain[0][k] = w.frame.e1[k], w.rate[0][k] = -d.s11;
      w.strain[1][k] = w.frame.e2[k], w.rate[1][k] = -d.s22;
      w.strain[2][k] = w.frame.e3[k], w.rate[2][k] = -d.s33;
    }
  });
}

// Stress in the tension of foams whose curves have none: a line that ends in a plateau.
SA_INLINE double tension(double E, double cutOff, double e) { return vm::max(-cutOff, E * e); }

// Stress and work of the slowest curve.
template <class Storage, Foam kFoam>
SA_INLINE void followSlowest(const TabulatedFoam<kFoam>& m, const RateFamily& family, int n, int c,
                             FoamScratch<Storage>& w) {
  const Table curve = family.slowest();
  stressAndWorkAt(curve, n, w.strain[c], w.stress[c], w.work[c]);
  if (curve.at(0, kStrain) < 0.0) return;
  const double E = m.E, cutOff = m.cutOff, end = -m.cutOff / m.E;
  const double* strain = w.strain[c];
  double *stress = w.stress[c], *work = w.work[c];
  forPoints(n, [=](int k) SA_POINT {
    const double e = strain[k], s = stress[k], a = work[k], on = vm::max(end, e);
    stress[k] = vm::select(e < 0.0, tension(E, cutOff, e), s);
    work[k] = vm::select(e < 0.0, 0.5 * E * on * on - cutOff * vm::min(0.0, e - on), a);
  });
}

// The factor of the stress below the largest work of the past, and the energy that comes back.
struct Softening {
  double largest, factor, psi;
};
SA_INLINE Softening soften(double HU, double exponent, double area, double largestBefore) {
  const double W = vm::max(0.0, area), largest = grown(largestBefore, W);
  const bool isLargest = W >= largest;
  const double part = W / vm::select(largest == 0.0, 1.0, largest);
  const double powered = vm::power(part, exponent) + (part - part);
  const double rest = vm::select(isLargest, 1.0, powered);
  return {largest, vm::select(isLargest, 1.0, HU + (1.0 - HU) * powered),
          W * (HU + (1.0 - HU) / (exponent + 1.0) * rest)};
}

// The rate of loading; none in unloading.
SA_INLINE double loadingRate(double stress, double rate) {
  return vm::max(0.0, vm::select(stress < 0.0, -rate, vm::select(stress > 0.0, rate, 0.0 * rate)));
}

template <class Storage, Foam kFoam>
SA_INLINE void findSoftening(const Block& b, const TabulatedFoam<kFoam>& m, int start, int n, FoamScratch<Storage>& w) {
  using Model = TabulatedFoam<kFoam>;
  constexpr int kComponents = Model::kByComponent ? (Storage::k23and13 ? 6 : 4) : 3;
  const int64_t N = b.points;
  const double HU = m.HU, exponent = m.exponent, filter = m.filter;
  const double* stateOld = b.stateOld;
  double* state = b.state;
  if constexpr (!Model::kByComponent)
    forPoints(n, [=, &w](int k) SA_POINT {
      const int i = start + k;
      const Softening s = soften(HU, exponent, (w.work[0][k] + w.work[1][k]) + w.work[2][k], stateOld[i]);
      state[i] = s.largest;
      w.soft[0][k] = s.factor;
      w.psi[k] = s.psi;
    });
  else
    for (int c = 0; c < kComponents; ++c)
      forPoints(n, [=, &w](int k) SA_POINT {
        const int64_t i = start + k + c * N;
        const double before = c == 0 ? 0.0 : w.psi[k];
        const Softening s = soften(HU, exponent, w.work[c][k], stateOld[i]);
        state[i] = s.largest;
        w.soft[c][k] = s.factor;
        w.psi[k] = before + s.psi;
      });
  if constexpr (Model::kIsDamped)
    forPoints(n, [=, &w](int k) SA_POINT {
      const int64_t i = start + k + Model::kRate * N;
      const double T1 = w.stress[0][k], T2 = w.stress[1][k], T3 = w.stress[2][k], old = stateOld[i];
      const double size = vm::sqrt(T1 * T1 + T2 * T2 + T3 * T3),
                   power = T1 * w.rate[0][k] + T2 * w.rate[1][k] + T3 * w.rate[2][k];
      const double rate = vm::max(0.0, power) / vm::select(size == 0.0, 1.0, size), now = old + filter * (rate - old);
      state[i] = now;
      w.rate[0][k] = now;
    });
  else
    for (int c = 0; c < kComponents; ++c)
      forPoints(n, [=, &w](int k) SA_POINT { w.rate[c][k] = loadingRate(w.stress[c][k], w.rate[c][k]); });
}

// Stress at the rate of loading, softened.
template <class Storage, Foam kFoam>
SA_INLINE void followFamily(const TabulatedFoam<kFoam>& m, const RateFamily& family, int n, int c,
                            FoamScratch<Storage>& w) {
  const double *strain = w.strain[c], *rate = w.rate[TabulatedFoam<kFoam>::kIsDamped ? 0 : c],
               *soft = w.soft[TabulatedFoam<kFoam>::kByComponent ? c : 0];
  double* stress = w.stress[c];
  raiseToRate(family, n, strain, rate, stress);
  const double E = m.E, cutOff = m.cutOff;
  const bool isLine = !(family.slowest().at(0, kStrain) < 0.0);
  forPoints(n, [=](int k) SA_POINT {
    const double e = strain[k], s = stress[k];
    stress[k] = soft[k] * vm::select(isLine & (e < 0.0), tension(E, cutOff, e), s);
  });
}

// Cauchy stress and energies.
template <class Storage, Foam kFoam>
SA_INLINE void storeStress(const Block& b, const TabulatedFoam<kFoam>& m, int start, int n, FoamScratch<Storage>& w) {
  using Model = TabulatedFoam<kFoam>;
  const int64_t N = b.points;
  const double damping = m.damping * m.perTime;
  const bool isDamped = Model::kIsDamped && m.damping != 0.0;
  const double *stretchOld = b.stretchOld, *stretch = b.stretch, *strainInc = b.strainInc, *stressOld = b.stressOld,
               *density = b.density, *internalOld = b.internalOld, *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  double* dampingStress = b.state + Model::kDampingStress * N;
  forPoints(n, [=, &w](int k) SA_POINT {
    const int i = start + k;
    const Sym<Storage> U = loadTensor<Storage>(stretch, N, i);
    const auto directions = w.frame.directions(k);
    const double l1 = 1.0 - w.frame.e1[k], l2 = 1.0 - w.frame.e2[k], l3 = 1.0 - w.frame.e3[k];
    double perVolume = 0.0;
    const double T1 = -w.stress[0][k], T2 = -w.stress[1][k], T3 = -w.stress[2][k];
    Sym<Storage> now{};
    if constexpr (Model::kByComponent) {
      now.s11 = T1, now.s22 = T2, now.s33 = T3;
      now.s12 = vm::select(U.s12 < 0.0, -1.0, 1.0) * w.stress[3][k];
      if constexpr (Storage::k23and13) {
        now.s23 = vm::select(U.s23 < 0.0, -1.0, 1.0) * w.stress[4][k];
        now.s13 = vm::select(U.s13 < 0.0, -1.0, 1.0) * w.stress[5][k];
      }
      now = intoFrame(directions, now);
      // one division for all: by the volume and the means of two stretches
      const double sum12 = l1 + l2;
      if constexpr (Storage::k23and13) {
        const double sum23 = l2 + l3, sum13 = l1 + l3, sums = sum12 * sum23 * sum13, per = 1.0 / (l1 * l2 * l3 * sums),
                     perSums = 2.0 * per;
        perVolume = sums * per;
        now.s12 *= l1 * l2 * (perSums * (sum23 * sum13));
        now.s23 *= l2 * l3 * (perSums * (sum12 * sum13));
        now.s13 *= l1 * l3 * (perSums * (sum12 * sum23));
      } else {
        const double per = 1.0 / (l1 * l2 * l3 * sum12);
        perVolume = sum12 * per;
        now.s12 *= 2.0 * (l1 * l2 * per);
      }
      now.s11 *= l1 * perVolume, now.s22 *= l2 * perVolume, now.s33 *= l3 * perVolume;
      now = outOfFrame(directions, now);
    } else {
      perVolume = 1.0 / (l1 * l2 * l3);
      now = outOfFrame(directions, T1 * (l1 * perVolume), T2 * (l2 * perVolume), T3 * (l3 * perVolume));
    }
    const Sym<Storage> strain = loadTensor<Storage>(strainInc, N, i);
    if (isDamped) {
      const Sym<Storage> viscous = damping * strain;
      storeTensor(dampingStress, N, i, viscous);
      now = sum(now, 1.0, viscous);
    }
    storeTensor(stress, N, i, now);
    const double rho = density[i], volume = stretchVolume(U),
                 volumeOld = stretchVolume(loadTensor<Storage>(stretchOld, N, i));
    const double inelOld = inelasticOld[i], perMass = 1.0 / (rho * volume);
    const double internalNow =
        internalOld[i] + kirchhoffWork(volumeOld, loadTensor<Storage>(stressOld, N, i), volume, now, strain) * perMass;
    internal[i] = internalNow;
    inelastic[i] = grown(inelOld, internalNow - w.psi[k] * perMass);
  });
}

template <class Storage, Foam kFoam>
SA_INLINE void follow(const Block& b, const TabulatedFoam<kFoam>& model) {
  using Model = TabulatedFoam<kFoam>;
  constexpr int kComponents = Model::kByComponent ? (Storage::k23and13 ? 6 : 4) : 3, kLaid = Storage::k23and13 ? 6 : 4;
  forPieces(b.points, [&b, &model](int start, int n) SA_POINT {
    FoamScratch<Storage> w;
    findStrains(b, model, start, n, w);
    for (int c = 0; c < kComponents; ++c) followSlowest(model, model.family[Model::kByComponent ? c : 0], n, c, w);
    findSoftening(b, model, start, n, w);
    for (int c = 0; c < kComponents; ++c) followFamily(model, model.family[Model::kByComponent ? c : 0], n, c, w);
    storeStress(b, model, start, n, w);
  });
  if constexpr (Model::kIsDamped)
    keepStates(b, model.damping != 0.0 ? Model::kDampingStress + kLaid : Model::kStates);
  else
    keepStates(b, Model::kRate + kLaid);
  if constexpr (Model::kByComponent) keepStates(b, kLaid, Model::kRate);
}

template <Foam kFoam>
SA_INLINE void compute(const Block& b, const TabulatedFoam<kFoam>& model) {
  if (b.isDataCheck) {
    if (b.isSolid())
      elasticAnswer<S33>(b, model.E / 3.0, 0.5 * model.E);
    else
      elasticAnswer<S31>(b, model.E / 3.0, 0.5 * model.E);
    keepStates(b, 0);
  } else if (b.isSolid()) {
    follow<S33>(b, model);
  } else {
    follow<S31>(b, model);
  }
}

using RateSensitiveFoam = TabulatedFoam<Foam::rateSensitive>;
using IsotropicFoam = TabulatedFoam<Foam::isotropic>;
using AnisotropicFoam = TabulatedFoam<Foam::anisotropic>;

} // namespace

SA_USER_MATERIAL(SPX_USR_RATESENSFOAM, RateSensitiveFoam)
SA_USER_MATERIAL(SPX_USR_FUCHANGISOFOAM, IsotropicFoam)
SA_USER_MATERIAL(SPX_USR_FUCHANGANISOFOAM, AnisotropicFoam)

#undef SA_CHECK_DEPVAR
#undef SA_FOAM_TEXTS

} // namespace sa::user
