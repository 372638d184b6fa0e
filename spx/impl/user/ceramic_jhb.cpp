// Johnson-Holmquist-Beissel ceramic: intact strength to the last, then that of the failed material.
#include "spx.h"
#include "spx/impl/user/ceramic.h"

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
    const double beyond = value + rise * (1.0 - vm::exp(-steepness * (p - knee)));
    return vm::select(p < knee, line, beyond);
  }
};

struct Jhb : CeramicConstants {
  static constexpr bool kGradual = false;
  static constexpr int kProperties = 18;
  StrengthCurve intact, failed;
  double perLargest, D1, exponent, largestFailureStrain;

  static bool isRefused(const Block& b) {
    return refuseUnless(b, b.isSolid() || b.isPlane(),
                        "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material only "
                        "supports 3D and plane strain elements.") ||
           refuseStates(b, kStates,
                        "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires "
                        "the specification of %I state variables. Check the "
                        "definition of *DEPVAR in the input file.") ||
           refuseProperties(b, kProperties,
                            "Subroutine VUMAT for the Johnson-Holmquist-Beissel ceramic material requires "
                            "the specification of %I material properties. Check the "
                            "*USER MATERIAL option for material %S.") ||
           refuseValues(b, {1, 3, 4, 5, 9, 10, 14});
  }
  explicit Jhb(const Block& block) : Jhb(block.props) {}
  explicit Jhb(const double* p)
      : intact(-p[9], p[1], p[2], p[3]), failed(0.0, p[4], p[5], p[6]), perLargest(1.0 / p[3]), D1(p[10]),
        exponent(p[11]), largestFailureStrain(strainOrNone(p[12])) {
    G = p[0], perG3 = 1.0 / (3.0 * G), C = p[7], perReferenceRate = 1.0 / p[8], T = p[9];
    K1 = p[13], perK1 = 1.0 / p[13], K2 = p[14], K3 = p[15], beta = p[16], deletionStrain = strainOrNone(p[17]);
  }
  SA_INLINE Strength strength(double p, double rateFactor) const {
    const double failureStrain = D1 * power((p + T) * perLargest, exponent);
    return {rateFactor * intact(p), rateFactor * failed(p), vm::min(largestFailureStrain, failureStrain)};
  }
};

} // namespace

SA_USER_MATERIAL(SPX_USR_JHB, Jhb)

} // namespace sa::user
