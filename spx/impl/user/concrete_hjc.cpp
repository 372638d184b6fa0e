// Holmquist-Johnson-Cook concrete: pores are crushed on the way to the dense material, and damage takes the cohesion.
#include "spx.h"
#include "spx/impl/user/brittle.h"

namespace sa::user {
namespace {

struct Hjc : BrittleConstants {
  static constexpr bool kGradual = true, kBulks = false, kCompacts = true, kTransforms = false, kCapped = true;
  static constexpr int kProperties = 21, kStates = 5;
  double A, B, N, fc, perStrength, perTension, smallestFailureStrain, cap, D1, D2;
  double crushStrain, crushPressure, elasticModulus, crushSlope, stiffening; // d(unloading modulus)/d(largest mu)
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
    crushPressure = p[10], crushStrain = p[11], elasticModulus = crushPressure / crushStrain;
    // the compression of the dense material at Pl, and where that lies for the block
    const double lockPressure = p[12], x = solveIncreasing(lockPressure, [this](double mu) { return cubic(mu); });
    const bool isTotal = p[20] != 0.0;
    denseStrain = isTotal ? (p[13] - x) / (1.0 + x) : p[13];
    denseFrom = isTotal ? p[13] : denseStrain + (1.0 + denseStrain) * x;
    perDense = 1.0 / (1.0 + denseStrain);
    crushSlope = (lockPressure - crushPressure) / (denseFrom - crushStrain);
    stiffening = (K1 - elasticModulus) / (denseFrom - crushStrain);
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
  // The line of unloading from the largest mu so far: to zero pressure with a modulus.
  struct Unloading {
    double zero, modulus, top;
    bool isDense;
  };
  SA_INLINE Unloading unloading(double largest) const {
    const double beyond = largest - crushStrain;
    const double top = crushPressure + crushSlope * beyond, modulus = elasticModulus + stiffening * beyond;
    const bool isDense = largest > denseFrom, isElastic = largest <= crushStrain;
    return {vm::select(isDense, denseStrain, vm::select(isElastic, 0.0, largest - top / modulus)),
            vm::select(isDense, K1 * perDense, vm::select(isElastic, elasticModulus, modulus)), top, isDense};
  }
  SA_INLINE Pressure pressure(double mu, double largestBefore) const {
    const double largest = vm::max(largestBefore, mu), dense = (mu - denseStrain) * perDense;
    const Unloading u = unloading(largest);
    const double full = vm::select(dense > 0.0, cubic(dense), K1 * dense);
    const double crushing = vm::select(largest <= crushStrain, elasticModulus * mu, u.top - u.modulus * (largest - mu));
    // the cubic leaves a little less than the last of the straight lines: no more than that is permanent on any way
    return {vm::select(u.isDense, full, crushing), largest, vm::min(denseStrain, u.zero), u.zero};
  }
  // On the line of unloading, whose place without pressure is given; one division for four.
  SA_INLINE double recoverable(double mu, double largest, double zero, double limit) const {
    const bool isDense = largest > denseFrom, isElastic = largest <= crushStrain;
    const double modulus =
        vm::select(isDense, K1 * perDense,
                   vm::select(isElastic, elasticModulus, elasticModulus + stiffening * (largest - crushStrain)));
    const double fromZero = 1.0 + zero, end = 1.0 + mu;
    const double from = vm::max(mu, zero - limit / modulus), atFrom = 1.0 + from, per = 1.0 / (fromZero * end * atFrom),
                 perFrom = fromZero * end * per;
    const double x = (from - zero) * (end * atFrom * per);
    const VolumeEnergy e = volumeEnergy(x, vm::logPositive(1.0 + x), (from - zero) * perFrom);
    const double inTheCubic = vm::select(x > 0.0, perDense * (K2 * e.square + K3 * e.cube), 0.0);
    return modulus * e.linear + vm::select(isDense, inTheCubic, 0.0) + limit * (fromZero * atFrom * per - perFrom);
  }
  template <bool kProportional>
  SA_INLINE Strength strength(double p, double rateFactor) const {
    const double scale = fc * rateFactor, cohesion = scale * A, friction = scale * B * power(p * perStrength, N);
    const double failureStrain =
        vm::max(smallestFailureStrain, D1 * powerOrItself<kProportional>((p + T) * perStrength, D2));
    const bool isTension = p < 0.0;
    // in tension the line of both surfaces ends at -T (1 - D)
    const double fractured = vm::select(isTension, cohesion * p * perTension, friction);
    return {cohesion + fractured, fractured, failureStrain};
  }
  SA_INLINE StrengthSlopes slopes(double p, const Strength& s) const {
    const double slope =
        vm::select(p < 0.0, (s.intact - s.fractured) * perTension, N * s.fractured / vm::max(1e-12 * T, p));
    return {slope, slope};
  }
  double elasticBulkModulus() const { return elasticModulus; }
};

} // namespace

SA_USER_MATERIAL(SPX_USR_HJCCONCRETE, Hjc)

} // namespace sa::user
