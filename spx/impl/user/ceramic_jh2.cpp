// Johnson-Holmquist ceramic, the second model of the two authors: strength falls gradually with damage.
#include "spx.h"
#include "spx/impl/user/ceramic.h"

namespace sa::user {
namespace {

struct Jh2 : CeramicConstants {
  static constexpr bool kGradual = true;
  static constexpr int kProperties = 18;
  double A, B, M, N, largestFractured, elasticPressure, perPressure, elasticStrength, D1, D2;

  static bool isRefused(const Block& b) {
    return refuseUnless(b, b.isSolid() || b.isPlane(),
                        "Subroutine VUMAT for Johnson-Holmquist ceramic materials only supports 3D and "
                        "plane strain elements.") ||
           refuseStates(b, kStates,
                        "Subroutine VUMAT for Johnson-Holmquist ceramic materials requires the "
                        "specification of %I state variables. Check the "
                        "definition of *DEPVAR in the input file.") ||
           refuseProperties(b, kProperties,
                            "Subroutine VUMAT for Johnson-Holmquist ceramic materials requires the "
                            "specification of %I material properties. Check the "
                            "*USER MATERIAL option for material %S.") ||
           refuseValues(b, {1, 7, 8, 10, 14}) ||
           refuseUnless(b, b.props[9] > b.props[10],
                        "HEL of material %S, property 10, must be greater than its PHEL, property 11.") ||
           refuseNotFinite(b, 1, kProperties);
  }
  explicit Jh2(const Block& block) {
    const double* p = block.props;
    G = p[0], perG3 = 1.0 / (3.0 * G), A = p[1], B = p[2], C = p[3], M = p[4], N = p[5], perReferenceRate = 1.0 / p[6],
    T = p[7];
    largestFractured = p[8] > 0.0 ? p[8] : vm::kInfinity;
    D1 = p[11], D2 = p[12], isProportional = D2 == 1.0, K1 = p[13], perK1 = 1.0 / p[13], K2 = p[14], K3 = p[15],
    beta = p[16], deletionStrain = strainOrNone(p[17]);
    // the elastic limit in uniaxial strain, HEL = P + 2/3 sHEL
    const double limit = p[9];
    const auto axial = [this](double mu) {
      const double shear = 4.0 / 3.0 * G / (1.0 + mu);
      return ValueAndSlope{cubic(mu) + shear * mu, cubicSlope(mu) + shear / (1.0 + mu)};
    };
    elasticPressure = p[10] > 0.0 ? p[10] : cubic(solveIncreasing(limit, limit / (K1 + 4.0 / 3.0 * G), axial));
    perPressure = 1.0 / elasticPressure;
    elasticStrength = 1.5 * (limit - elasticPressure);
  }
  SA_INLINE void findBroken(int n, const Lane& p, SurfaceTerms& t) const {
    findLogs(n, t.log, [per = perPressure, &p](int k) SA_POINT { return p[k] * per; });
    findPowers(n, t.log, M, t.broken);
  }
  template <bool kProportional>
  SA_INLINE void findTerms(int n, const Lane& p, SurfaceTerms& t) const {
    findBroken(n, p, t);
    findLogs(n, t.log, [per = perPressure, tension = T, &p](int k) SA_POINT { return (p[k] + tension) * per; });
    findPowers(n, t.log, N, t.intact);
    if constexpr (!kProportional) findPowers(n, t.log, D2, t.failure);
  }
  SA_INLINE double broken(double p, double rateFactor, double term) const {
    const double grows = elasticStrength * rateFactor * B * term;
    return vm::select(p > 0.0, vm::min(largestFractured * elasticStrength, grows), 0.0);
  }
  template <bool kProportional>
  SA_INLINE Strength strength(double p, double rateFactor, const SurfaceTerm& t) const {
    return {elasticStrength * rateFactor * A * t.intact, broken(p, rateFactor, t.broken),
            D1 * powerOrItself<kProportional>(*this, (p + T) * perPressure, t.failure)};
  }
  SA_INLINE StrengthSlopes slopes(double p, const Strength& s) const {
    const bool isBelowCap = s.fractured < largestFractured * elasticStrength;
    const double above = aboveTension(p), pressure = aboveZero(p), per = 1.0 / (above * pressure);
    return {N * s.intact * (pressure * per), vm::select((p > 0.0) & isBelowCap, M * s.fractured * (above * per), 0.0)};
  }
  // What slopes divide by, never zero.
  SA_INLINE double aboveTension(double p) const { return vm::max(1e-12 * T, p + T); }
  SA_INLINE double aboveZero(double p) const { return vm::max(1e-12 * T, p); }

  // The powers of 1 + u as (12 + 6 (2 + N) u + (1 + N)(2 + N) u^2) / (12 + 6 (2 - N) u + (1 - N)(2 - N) u^2), Pade's fraction: to
  // 1e-15 for a pressure that rises by 1/300, 3e-4 where it doubles.
  struct Near {
    double M, N, cap, intact, fractured, perShifted, perPressure;
    SA_INLINE static double numerator(double y, double u) {
      return 12.0 + u * (6.0 * (2.0 + y) + u * ((1.0 + y) * (2.0 + y)));
    }
    struct At {
      double strength, drop, slope, per; // per: one over the divisor
    };
    // With a division of the caller's in the same.
    SA_INLINE At at(double rise, double D, double divisor) const {
      const double u = rise * perShifted, v = rise * perPressure, above = 1.0 + u, aboveZero = 1.0 + v;
      const double below = numerator(-N, u), belowFractured = numerator(-M, v), powers = below * belowFractured,
                   bases = above * aboveZero, both = powers * divisor, per = 1.0 / (both * bases);
      const double perPowers = per * (bases * divisor), perBases = per * both;
      const double i = intact * (numerator(N, u) * belowFractured * perPowers);
      const double free = fractured * (numerator(M, v) * below * perPowers), f = vm::min(cap, free);
      const double slopeOfIntact = N * i * (perShifted * aboveZero * perBases),
                   slopeOfFractured = vm::select(free < cap, M * f * (perPressure * above * perBases), 0.0);
      return {i - D * (i - f), i - f, slopeOfIntact - D * (slopeOfIntact - slopeOfFractured), per * (powers * bases)};
    }
  };
  // perTension, perZero: one over the two above
  SA_INLINE Near near(const Strength& s, double perTension, double perZero) const {
    return {M, N, largestFractured * elasticStrength, s.intact, s.fractured, perTension, perZero};
  }
};

} // namespace

SA_USER_MATERIAL(SPX_USR_JH2, Jh2)

} // namespace sa::user
