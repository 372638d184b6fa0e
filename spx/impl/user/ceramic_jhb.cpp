// Johnson-Holmquist-Beissel ceramic: intact strength to the last, then that of the failed material; with a change of phase
// where asked for.
#include "spx.h"
#include "spx/impl/user/ceramic.h"
#include "spx/impl/user/tables.h"

namespace sa::user {
namespace {

// A straight line from zero at `root` to (knee, value), then an exponential of the same slope towards the largest value.
struct StrengthCurve : Bounds {
  double root, knee, value, rise, steepness, slope; // steepness: of the exponential with base 2

  StrengthCurve(double zeroAt, double kneeAt, double kneeValue, double largest)
      : root(zeroAt), knee(kneeAt), value(kneeValue), rise(largest > kneeValue ? largest - kneeValue : 0.0),
        slope(kneeValue / (kneeAt - zeroAt)) {
    steepness = rise > 0.0 ? vm::kLog2E * slope / rise : 0.0;
  }
  SA_INLINE void findTerm(int n, const Lane& p, Lane& term) const {
    forPoints(n, [per = -steepness, from = knee, &p, &term](int k)
                     SA_POINT { term[k] = vm::exp2Clamped(vm::min(0.0, per * (p[k] - from))); });
  }
  SA_INLINE double operator()(double p, double term) const {
    const double line = vm::max(none, (p - root) * slope), beyond = value + rise * (1.0 - term);
    return vm::select(p < knee, line, beyond);
  }
};

struct Jhb : CeramicConstants {
  static constexpr bool kGradual = false;
  static constexpr int kProperties = 18, kPropertiesOfPhases = 24, kStatesOfPhases = 5;
  StrengthCurve intact, failed;
  double perLargest, D1, exponent, largestFailureStrain;

  static bool changesPhase(const Block& b) { return property(b, kProperties + 1) != 0.0; }
  static bool isRefused(const Block& b) {
    return refuseUnless(b, b.isSolid() || b.isPlane(),
                        "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material only "
                        "supports 3D and plane strain elements.") ||
           refuseStates(b, changesPhase(b) ? kStatesOfPhases : kStates,
                        "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires "
                        "the specification of %I state variables. Check the "
                        "definition of *DEPVAR in the input file.") ||
           refuseProperties(b, changesPhase(b) ? kPropertiesOfPhases : kProperties,
                            "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires "
                            "the specification of %I material properties. Check the "
                            "*USER MATERIAL option for material %S.") ||
           refuseValues(b, {1, 3, 4, 5, 9, 10, 14}) ||
           refuseUnless(b, b.props[1] > -b.props[9],
                        "Pi of material %S, property 2, must be greater than -T, T its property 10.") ||
           refuseNotFinite(b, 1, changesPhase(b) ? kPropertiesOfPhases : kProperties);
  }
  explicit Jhb(const Block& block) : Jhb(block.props) {}
  explicit Jhb(const double* p)
      : intact(-p[9], p[1], p[2], p[3]), failed(0.0, p[4], p[5], p[6]), perLargest(1.0 / p[3]), D1(p[10]),
        exponent(p[11]), largestFailureStrain(strainOrNone(p[12])) {
    G = p[0], perG3 = 1.0 / (3.0 * G), C = p[7], perReferenceRate = 1.0 / p[8], T = p[9];
    K1 = p[13], perK1 = 1.0 / p[13], K2 = p[14], K3 = p[15], beta = p[16], deletionStrain = strainOrNone(p[17]);
    isProportional = exponent == 1.0;
  }
  SA_INLINE void findBroken(int n, const Lane& p, SurfaceTerms& t) const { failed.findTerm(n, p, t.broken); }
  template <bool kProportional>
  SA_INLINE void findTerms(int n, const Lane& p, SurfaceTerms& t) const {
    findBroken(n, p, t);
    intact.findTerm(n, p, t.intact);
    if constexpr (!kProportional) {
      findLogs(n, t.log, [per = perLargest, tension = T, &p](int k) SA_POINT { return (p[k] + tension) * per; });
      findPowers(n, t.log, exponent, t.failure);
    }
  }
  SA_INLINE double broken(double p, double rateFactor, double term) const { return rateFactor * failed(p, term); }
  template <bool kProportional>
  SA_INLINE Strength strength(double p, double rateFactor, const SurfaceTerm& t) const {
    const double failureStrain = D1 * powerOrItself<kProportional>(*this, (p + T) * perLargest, t.failure);
    return {rateFactor * intact(p, t.intact), broken(p, rateFactor, t.broken),
            vm::min(largestFailureStrain, failureStrain)};
  }
};

// With a change of phase.  The largest compression so far tells how much is dense, f from 0 at mu1 to 1 at mu2; the pressure
// goes up in a straight line between both curves, and back on both in parallel.
struct JhbOfPhases : Jhb {
  static constexpr bool kTransforms = true;
  static constexpr int kStates = kStatesOfPhases;
  double P1 = 0.0, rise = 0.0, mu1 = 0.0, mu2 = 0.0, perWidth = 0.0, H1 = 0.0, H2 = 0.0, H3 = 0.0, mu0 = 0.0,
         perMu0 = 1.0, logMu0 = 0.0; // of 1 + mu0

  explicit JhbOfPhases(const Block& b) : Jhb(b) {
    if (!changesPhase(b)) return;
    const double* p = b.props;
    P1 = p[18], mu2 = p[19], H1 = p[20], H2 = p[21], H3 = p[22], mu0 = p[23], perMu0 = 1.0 / (1.0 + mu0),
    logMu0 = vm::log(1.0 + mu0);
    mu1 = cubicInverse(P1);
    rise = dense(mu2) - P1, perWidth = 1.0 / (mu2 - mu1);
  }
  bool isWrong(const Block& b) const {
    return changesPhase(b) &&
           (refuseValues(b, {19, 20, 21}) || refuseNegative(b, {24}) ||
            refuseUnless(
                b, vm::abs(cubic(mu1) - P1) <= 1e-6 * P1,
                "K1 mu + K2 mu^2 + K3 mu^3 of material %S, properties 14 to 16, never reaches its P1, property 19.") ||
            refuseUnless(
                b, mu2 > mu1,
                "mu2 of material %S, property 20, must be greater than the compression at which it reaches its P1, "
                "property 19.") ||
            refuseUnless(
                b, rise > 0.0,
                "The pressure of the dense phase of material %S at mu2, property 20, must be greater than its P1, "
                "property 19."));
  }
  SA_INLINE double low(double mu) const { return vm::select(mu > 0.0, cubic(mu), K1 * mu); }
  SA_INLINE double dense(double mu) const {
    const double m = (mu - mu0) * perMu0;
    return vm::select(m > 0.0, m * (H1 + m * (H2 + m * H3)), H1 * m);
  }
  SA_INLINE double fraction(double top) const { return vm::min(all, vm::max(none, (top - mu1) * perWidth)); }
  SA_INLINE double mix(double mu, double f) const { return (1.0 - f) * low(mu) + f * dense(mu); }
  SA_INLINE Curve mixed(double mu, double f) const {
    const double m = (mu - mu0) * perMu0, x = vm::max(none, mu), y = vm::max(none, m);
    const double part = 1.0 - f, partDense = f * perMu0, twist = vm::select(mu > 0.0, part * K3, 0.0),
                 twistDense = vm::select(m > 0.0, f * H3, 0.0);
    const double bend = vm::select(mu > 0.0, part * K2, 0.0), bendDense = vm::select(m > 0.0, f * H2, 0.0);
    const double low = part * K1 * mu + x * x * (bend + twist * x),
                 dense = f * H1 * m + y * y * (bendDense + twistDense * y);
    const double a = bend + 3.0 * twist * x, b = bendDense + 3.0 * twistDense * y;
    return {low + dense, (part * K1 + x * (a + bend)) + (partDense * H1 + perMu0 * (y * (b + bendDense))),
            a + perMu0 * perMu0 * b, twist + perMu0 * perMu0 * perMu0 * twistDense};
  }
  // Where mix(mu, f) + c would be zero with K1 and H1 alone.
  SA_INLINE double straightRoot(double f, double c) const {
    const double line = f * perMu0 * H1;
    return (line * mu0 - c) / ((1.0 - f) * K1 + line);
  }
  // What both curves together lie apart from the straight line between P1 and P2, at the largest compression.
  SA_INLINE double offset(double top, double f) const {
    const double between = (P1 + f * rise) - mix(top, f);
    return vm::select((f > 0.0) & (f < 1.0), between, 0.0);
  }
  // Without bulking that of both curves on the way from the largest compression.
  SA_INLINE Pressure pressure(double mu, double bulkingPressure, double topOld) const {
    const double top = grown(vm::max(none, topOld), mu), f = fraction(top), beside = offset(top, f);
    return {mix(mu, f) + beside + bulkingPressure, bulkingPressure, top, {}, {f, beside}};
  }
  // Work per undeformed volume of both curves from 0, each its own, to mu; L is the logarithm of the volume, per 1/(1 + mu).
  // 1 + m = (1 + mu)/(1 + mu0).
  SA_INLINE double workTo(double mu, double L, double per, double f) const {
    const double m = (mu - mu0) * perMu0;
    const VolumeEnergy a = volumeEnergy(mu, L, mu * per), b = volumeEnergy(m, L - logMu0, (mu - mu0) * per);
    const double lowWork = K1 * a.linear + vm::select(mu > 0.0, K2 * a.square + K3 * a.cube, 0.0);
    const double denseWork = H1 * b.linear + vm::select(m > 0.0, H2 * b.square + H3 * b.cube, 0.0);
    return (1.0 - f) * lowWork + f * perMu0 * denseWork;
  }
  template <bool kNear>
  SA_INLINE double recoverable(double mu, const Release& r, const Way& way, double limit) const {
    const double atFrom = 1.0 + way.from, atZero = 1.0 + way.zero, both = 1.0 / (atFrom * atZero), per = both * atZero;
    const double work =
        (workTo(way.from, way.logFrom, per, r.fraction) - workTo(way.zero, way.logZero, both * atFrom, r.fraction)) +
        r.offset * ((way.from - way.zero) * both);
    return work * (1.0 + mu) + limit * ((way.from - mu) * per);
  }
  SA_INLINE bool isNear(double, const Release&, const Way& way, double) const {
    const bool isZeroNear = isNearVolume(way.zero, 1.0), isFromNear = isNearVolume(way.from, 1.0);
    return isZeroNear & isFromNear;
  }
};

// One of both, as the properties say.
struct AnyJhb : JhbOfPhases {
  bool hasPhases;
  explicit AnyJhb(const Block& b) : JhbOfPhases(b), hasPhases(changesPhase(b)) {}
};
SA_INLINE void compute(const Block& b, const AnyJhb& model) {
  if (model.hasPhases)
    compute<JhbOfPhases>(b, model);
  else
    compute<Jhb>(b, model);
}

} // namespace

SA_USER_MATERIAL(SPX_USR_JHB, AnyJhb)

} // namespace sa::user
