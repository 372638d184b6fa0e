// Johnson-Holmquist-Beissel ceramic: intact strength to the last, then that of the failed material; with a change of phase
// where asked for.
#include "spx.h"
#include "spx/impl/user/ceramic.h"
#include "spx/impl/user/tables.h"

namespace sa::user {
namespace {

// A straight line from zero at `root` to (knee, value), then an exponential of the same slope towards the largest value.
struct StrengthCurve {
  double root, knee, value, rise, steepness, slope;

  StrengthCurve(double zeroAt, double kneeAt, double kneeValue, double largest)
      : root(zeroAt), knee(kneeAt), value(kneeValue), rise(largest > kneeValue ? largest - kneeValue : 0.0),
        slope(kneeValue / (kneeAt - zeroAt)) {
    steepness = rise > 0.0 ? slope / rise : 0.0;
  }
  SA_INLINE double operator()(double p) const {
    const double line = vm::max(0.0, (p - root) * slope);
    const double beyond = value + rise * (1.0 - vm::expBelow(vm::min(0.0, -steepness * (p - knee))));
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
  template <bool kProportional>
  SA_INLINE Strength strength(double p, double rateFactor) const {
    const double failureStrain = D1 * powerOrItself<kProportional>((p + T) * perLargest, exponent);
    return {rateFactor * intact(p), rateFactor * failed(p), vm::min(largestFailureStrain, failureStrain)};
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
    mu1 = solveIncreasing(P1, [this](double mu) { return cubic(mu); });
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
  SA_INLINE double fraction(double top) const { return vm::min(1.0, vm::max(0.0, (top - mu1) * perWidth)); }
  SA_INLINE double compactionAt(double top) const { return fraction(top) * mu0; }
  SA_INLINE double mix(double mu, double f) const { return (1.0 - f) * low(mu) + f * dense(mu); }
  SA_INLINE double mixSlope(double mu, double f) const {
    const double m = vm::max(0.0, (mu - mu0) * perMu0), x = vm::max(0.0, mu);
    return (1.0 - f) * (K1 + x * (2.0 * K2 + 3.0 * K3 * x)) + f * perMu0 * (H1 + m * (2.0 * H2 + 3.0 * H3 * m));
  }
  SA_INLINE double mixBend(double mu, double f) const { // half of the second derivative
    const double m = (mu - mu0) * perMu0, a = K2 + 3.0 * K3 * mu, b = perMu0 * perMu0 * (H2 + 3.0 * H3 * m);
    return (1.0 - f) * vm::select(mu > 0.0, a, 0.0) + f * vm::select(m > 0.0, b, 0.0);
  }
  // Where mix(mu, f) + c would be zero with K1 and H1 alone.
  SA_INLINE double straightRoot(double f, double c) const {
    const double line = f * perMu0 * H1;
    return (line * mu0 - c) / ((1.0 - f) * K1 + line);
  }
  // What both curves together lie apart from the straight line between P1 and P2, at the largest compression.
  SA_INLINE double offset(double top, double f) const {
    const double between = (P1 + f * rise) - mix(top, f);
    return vm::select(f > 0.0, vm::select(f < 1.0, between, 0.0), 0.0);
  }
  // The pressure without bulking at mu, on the way from the largest compression.
  SA_INLINE double onWay(double mu, double top) const {
    const double f = fraction(top);
    return mix(mu, f) + offset(top, f);
  }
  SA_INLINE Pressure pressure(double mu, double bulkingPressure, double topOld) const {
    const double top = grown(vm::max(0.0, topOld), mu);
    return {onWay(mu, top) + bulkingPressure, bulkingPressure, top, 0.0};
  }
  // Work per undeformed volume of both curves from 0, each its own, to mu; per is 1/(1 + mu).  1 + m = (1 + mu)/(1 + mu0).
  SA_INLINE double workTo(double mu, double per, double f) const {
    const double m = (mu - mu0) * perMu0, L = vm::logPositive(1.0 + mu);
    const VolumeEnergy a = volumeEnergy(mu, L, mu * per), b = volumeEnergy(m, L - logMu0, (mu - mu0) * per);
    const double lowWork = K1 * a.linear + vm::select(mu > 0.0, K2 * a.square + K3 * a.cube, 0.0);
    const double denseWork = H1 * b.linear + vm::select(m > 0.0, H2 * b.square + H3 * b.cube, 0.0);
    return (1.0 - f) * lowWork + f * perMu0 * denseWork;
  }
  SA_INLINE double recoverable(double mu, double top, double bulkingPressure, double zero, double from,
                               double limit) const {
    const double f = fraction(top), constant = offset(top, f) + bulkingPressure, per = 1.0 / (1.0 + from),
                 perZero = 1.0 / (1.0 + zero);
    const double way = (workTo(from, per, f) - workTo(zero, perZero, f)) + constant * ((from - zero) * (per * perZero));
    return way + limit * (1.0 / (1.0 + mu) - per);
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
