// Holmquist-Johnson-Cook concrete: pores are crushed on the way to the dense material, and damage takes the cohesion.
#include "spx.h"
#include "spx/impl/user/brittle.h"

namespace sa::user {
namespace {

struct Hjc : BrittleConstants {
  static constexpr bool kGradual = true, kBulks = false, kCompacts = true, kTransforms = false, kCapped = true;
  static constexpr int kProperties = 21, kStates = 5;
  double A, B, N, fc, perStrength, perTension, smallestFailureStrain, cap, D1, D2;
  double crushStrain, elasticModulus, stiffening; // d(unloading modulus)/d(largest mu)
  double softer;                           // elastic modulus and what it rises by to the limit, less that of crushing
  double denseFrom, denseStrain, perDense; // mu at which all pores are closed; their part

  static bool isRefused(const Block& b) {
    return refuseUnless(b, b.isSolid() || b.isPlane(),
                        "Subroutine VUMAT for  the Holmquist-Johnson-Cook (HJC) concrete material "
                        "only supports 3D and plane strain elements.") ||
           refuseStates(b, kStates,
                        "Subroutine VUMAT for the Holmquist-Johnson-Cook (HJC) concrete material "
                        "requires the specification of %I state variables. "
                        "Check the definition of *DEPVAR in the input file.") ||
           refuseProperties(b, kProperties,
                            "Subroutine VUMAT for the Holmquist-Johnson-Cook (HJC) concrete material "
                            "requires the specification of %I material properties. "
                            "Check the *USER MATERIAL option for material %S.") ||
           refuseValues(b, {1, 6, 7, 8, 9, 10, 11, 12, 13, 14, 17}) ||
           refuseUnless(b, b.props[12] > b.props[10],
                        "Pl of material %S, property 13, must be greater than its Pc, property 11.") ||
           refuseNotFinite(b, 1, kProperties);
  }
  explicit Hjc(const Block& block) {
    const double* p = block.props;
    G = p[0], perG3 = 1.0 / (3.0 * G), A = p[1], B = p[2], C = p[3], N = p[4], fc = p[5], T = p[6],
    perReferenceRate = 1.0 / p[7];
    perStrength = 1.0 / fc, isProportional = p[15] == 1.0, perTension = 1.0 / T, smallestFailureStrain = p[8],
    cap = p[9] * fc, D1 = p[14], D2 = p[15];
    K1 = p[16], K2 = p[17], K3 = p[18], deletionStrain = strainOrNone(p[19]);
    const double crushPressure = p[10];
    crushStrain = p[11], elasticModulus = crushPressure / crushStrain;
    // the compression of the dense material at Pl, and where that lies for the block
    const double lockPressure = p[12], x = cubicInverse(lockPressure);
    const bool isTotal = p[20] != 0.0;
    denseStrain = isTotal ? (p[13] - x) / (1.0 + x) : p[13];
    denseFrom = isTotal ? p[13] : denseStrain + (1.0 + denseStrain) * x;
    perDense = 1.0 / (1.0 + denseStrain);
    stiffening = (K1 - elasticModulus) / (denseFrom - crushStrain);
    softer = (elasticModulus + stiffening * crushStrain) - (lockPressure - crushPressure) / (denseFrom - crushStrain);
  }
  bool isWrong(const Block& b) const {
    const double lockPressure = b.props[12], reached = cubic((denseFrom - denseStrain) / (1.0 + denseStrain));
    return refuseUnless(
               b, vm::abs(reached - lockPressure) <= 1e-6 * lockPressure,
               "K1 m + K2 m^2 + K3 m^3 of material %S, properties 17 to 19, never reaches its Pl, property 13.") ||
           refuseUnless(
               b, denseFrom > crushStrain,
               "The compression at which material %S reaches its Pl, property 13, must be greater than its muc, "
               "property 12.");
  }
  // Crushing and unloading are both the line of unloading from the largest mu so far, as mu can be no further.  What lies
  // beyond the elastic limit is a factor of its place without pressure, which is exactly zero before.
  SA_INLINE Pressure pressure(double mu, double largestBefore) const {
    const double largest = vm::max(largestBefore, mu), beyond = vm::max(none, largest - crushStrain),
                 stiffer = stiffening * beyond;
    const bool isDense = largest > denseFrom;
    const double modulus = vm::select(isDense, K1 * perDense, elasticModulus + stiffer), perModulus = 1.0 / modulus;
    const double zero = vm::select(isDense, denseStrain, beyond * ((softer + stiffer) * perModulus));
    const double dense = vm::max(none, (mu - denseStrain) * perDense);
    const double curved = vm::select(isDense, dense * dense * (K2 + dense * K3), 0.0);
    // the cubic leaves a little less than the last of the straight lines: no more than that is permanent on any way
    return {modulus * (mu - zero) + curved, largest, vm::min(denseStrain, zero), {zero, modulus, perModulus}};
  }
  // On the line of unloading; one division for all.
  template <bool kNear>
  SA_INLINE double recoverable(double mu, double largest, const Unloading& u, double limit) const {
    const double from = vm::max(mu, u.zero - limit * u.perModulus), way = from - u.zero;
    const double fromZero = 1.0 + u.zero, atFrom = 1.0 + from, both = fromZero + atFrom, first = fromZero * atFrom,
                 per = 1.0 / (first * both), perFirst = per * both, perFrom = perFirst * fromZero;
    const double x = way * (perFirst * atFrom);
    const VolumeEnergy e = volumeEnergyNear<kNear>(x, way * (per * first), way * perFrom);
    const bool isInTheCubic = (x > 0.0) & (largest > denseFrom);
    const double energy =
        u.modulus * e.linear + vm::select(isInTheCubic, perDense * (K2 * e.square + K3 * e.cube), 0.0);
    return energy * (1.0 + mu) + limit * ((from - mu) * perFrom);
  }
  SA_INLINE bool isNear(double mu, double, const Unloading& u, double) const {
    return isNearVolume(mu - u.zero, 1.0 + u.zero);
  }
  SA_INLINE void findBroken(int n, const Lane& p, SurfaceTerms& t) const {
    findLogs(n, t.log, [per = perStrength, &p](int k) SA_POINT { return p[k] * per; });
    findPowers(n, t.log, N, t.broken);
  }
  template <bool kProportional>
  SA_INLINE void findTerms(int n, const Lane& p, SurfaceTerms& t) const {
    findBroken(n, p, t);
    if constexpr (!kProportional) {
      findLogs(n, t.log, [per = perStrength, tension = T, &p](int k) SA_POINT { return (p[k] + tension) * per; });
      findPowers(n, t.log, D2, t.failure);
    }
  }
  SA_INLINE double broken(double, double rateFactor, double term) const { return fc * rateFactor * B * term; }
  template <bool kProportional>
  SA_INLINE Strength strength(double p, double rateFactor, const SurfaceTerm& t) const {
    const double cohesion = fc * rateFactor * A;
    const double failureStrain =
        vm::max(smallestFailureStrain, D1 * powerOrItself<kProportional>(*this, (p + T) * perStrength, t.failure));
    // in tension the line of both surfaces ends at -T (1 - D)
    const double fractured = vm::select(p < 0.0, cohesion * p * perTension, broken(p, rateFactor, t.broken));
    return {cohesion + fractured, fractured, failureStrain};
  }
  double elasticBulkModulus() const { return elasticModulus; }
};

} // namespace

SA_USER_MATERIAL(SPX_USR_HJCCONCRETE, Hjc)

} // namespace sa::user
