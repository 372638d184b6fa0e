// The superelastic alloy: checks, the first call, and the linear law.
#include "spx.h"
#include "spx/impl/user/superelastic_run.h"

#include <array>

namespace sa::user::alloy {
namespace {

// ---- the first call

SA_INLINE void uniaxialElasticAnswer(const Block& b, const Superelastic& m) {
  const int64_t n = b.points;
  const double E = m.E, G2 = 2.0 * m.G;
  const double *strainInc = b.strainInc, *stressOld = b.stressOld, *internalOld = b.internalOld,
               *inelasticOld = b.inelasticOld;
  double *stress = b.stress, *internal = b.internal, *inelastic = b.inelastic;
  const bool hasShear = b.nshr == 1;
  forPoints(b.points, [=](int i) SA_POINT {
    stress[i] = stressOld[i] + E * strainInc[i];
    internal[i] = internalOld[i];
    inelastic[i] = inelasticOld[i];
  });
  if (hasShear) forPoints(b.points, [=](int i) SA_POINT { stress[i + n] = stressOld[i + n] + G2 * strainInc[i + n]; });
}

// ---- checks

bool isPoissonsRatio(double nu) { return nu > -1.0 && nu < 0.5; }

// Beyond, martensite in compression would be longer than austenite.
bool refuseRatio(const Block& b) {
  const double given[] = {b.props[13], b.props[4]};
  return !(given[0] < 1.5 * given[1]) &&
         refuse(b,
                "The volume change of material %S, property 14, must be less than 1.5 times its transformation "
                "strain, property 5: they are %R and %R.",
                0, given);
}

// The exponential law takes all at once where it finishes: on a plateau it would be a jump.
bool refuseExponential(const Block& b) {
  const double given[] = {b.props[5], b.props[6], b.props[7], b.props[8]};
  return refuseValues(b, {13, 14}) ||
         (!(given[0] < given[1]) &&
          refuse(
              b,
              "The exponential law of material %S needs a start of the transformation to martensite, property 6, below "
              "its finish, property 7: they are %R and %R.",
              0, given)) ||
         (!(given[3] < given[2]) &&
          refuse(
              b,
              "The exponential law of material %S needs a finish of the transformation to austenite, property 9, below "
              "its start, property 8: they are %R and %R.",
              0, std::array{given[3], given[2]}.data()));
}

} // namespace

bool isExponentialOf(std::string_view name) {
  constexpr std::string_view kWord = "_EXP";
  const auto isOfWord = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
  };
  for (std::size_t at = name.find(kWord); at != std::string_view::npos; at = name.find(kWord, at + 1)) {
    const std::size_t next = at + kWord.size();
    if (next >= name.size() || !isOfWord(name[next])) return true;
  }
  return false;
}

Superelastic::Superelastic(const Block& block) : kind(kindOf(block.name)) {
  const double* p = block.props;
  const auto shear = [](double e, double nu) { return e / (2.0 * (1.0 + nu)); };
  const auto bulk = [](double e, double nu) { return e / (3.0 * (1.0 - 2.0 * nu)); };
  E = p[0], G = shear(p[0], p[1]), K = bulk(p[0], p[1]);
  dE = p[2] - E, dG = shear(p[2], p[3]) - G, dK = bulk(p[2], p[3]) - K;
  startAM = p[5], finishAM = p[6], startMA = p[7], finishMA = p[8];
  alpha = p[9] > 0.0 ? kRoot * (p[9] - startAM) / (p[9] + startAM) : 0.0;
  isExponential = isExponentialOf(block.name);
  T0 = p[10], slopeAM = p[11], slopeMA = isExponential ? slopeAM : p[12];
  speedAM = isExponential ? (kRoot + alpha) * p[12] : 0.0, speedMA = isExponential ? (kRoot + alpha) * p[13] : 0.0;
  eTension = p[4];
  // eps_L = sqrt(2/3) e_D + e_V/3
  eV = isExponential || p[13] < 0.0 ? 3.0 * alpha * eTension / (kRoot + alpha) : p[13];
  eD = (eTension - eV / 3.0) / kRoot;
  eCompression = kRoot * eD - eV / 3.0;
  moves = vm::abs(dK * G - dG * K) > 1e-12 * G * K;
  // what xi itself does to the moduli: s^2/2 d(1/E)
  const auto change = [](double modulus, double dM, double sign, double at) {
    return vm::max(0.0, sign * dM) / ((modulus + at * dM) * (modulus + at * dM));
  };
  const bool isWire = kind == Kind::uniaxial;
  const double rising = isWire ? change(E, dE, -1, 1) : change(G, dG, -1, 1) / 3.0 + change(K, dK, -1, 1) / 9.0;
  const double falling = isWire ? change(E, dE, 1, 0) : change(G, dG, 1, 0) / 3.0 + change(K, dK, 1, 0) / 9.0;
  const double ratio = (kRoot + alpha) / (kRoot - alpha);
  workTension = eTension, workCompression = ratio * eCompression;
  risingTension = 0.5 * rising, risingCompression = ratio * ratio * risingTension;
  fallingTension = 0.5 * falling, fallingCompression = ratio * ratio * fallingTension;
}

bool Superelastic::isRefused(const Block& b) {
  const Kind kind = kindOf(b.name);
  if (kind == Kind::unknown)
    return refuse(b, "The material name used with the VUMAT for superelastic materials must start with one of "
                     "the strings TVK_SUPER_ELASTIC_N1D, "
                     "TVK_SUPER_ELASTIC_N2D, or TVK_SUPER_ELASTIC_N3D");
  const bool isSupported = kind == Kind::uniaxial      ? b.ndir == 1 && (b.nshr == 0 || b.nshr == 1)
                           : kind == Kind::planeStress ? b.isPlane()
                                                       : b.isSolid() || b.isPlane();
  if (refuseUnless(b, isSupported,
                   "The elements of material %S do not have the stress components that its name asks for: "
                   "TVK_SUPER_ELASTIC_N1D needs one direct component, "
                   "TVK_SUPER_ELASTIC_N2D needs plane stress elements, and "
                   "TVK_SUPER_ELASTIC_N3D needs solid or plane strain elements."))
    return true;
  if (b.properties != kProperties)
    return refuse(b, "Subroutine VUMAT for superelastic materials should be used with 14 material  "
                     "properties.");
  return refuseStates(b, kStates,
                      "Subroutine VUMAT for superelastic materials requires the specification of %I "
                      "state variables. Check the definition of *DEPVAR "
                      "in the input file.") ||
         refuseValues(b, {1, 3, 5, 6}) ||
         refuseUnless(b, isPoissonsRatio(b.props[1]) && isPoissonsRatio(b.props[3]),
                      "Poisson's ratios of material %S, properties 2 and 4, must lie between -1 and 0.5.") ||
         refuseAbove(b, 6, 7,
                     "The start of the transformation to martensite of material %S, property 6, must not be greater "
                     "than its finish, property 7: they are %R and %R.") ||
         refuseAbove(b, 9, 8,
                     "The finish of the transformation to austenite of material %S, property 9, must not be greater "
                     "than its start, property 8: they are %R and %R.") ||
         refuseAbove(b, 9, 6,
                     "The finish of the transformation to austenite of material %S, property 9, must not be greater "
                     "than the start of that to martensite, property 6: they are %R and %R.") ||
         refuseAbove(b, 8, 7,
                     "The start of the transformation to austenite of material %S, property 8, must not be greater "
                     "than the finish of that to martensite, property 7: they are %R and %R.") ||
         (isExponentialOf(b.name) ? refuseExponential(b) : refuseRatio(b)) || refuseNotFinite(b, 1, kProperties);
}

SA_INLINE void compute(const Block& b, const Superelastic& m) {
  const Kind kind = m.kind;
  if (b.isDataCheck) {
    if (kind == Kind::uniaxial)
      uniaxialElasticAnswer(b, m);
    else if (kind == Kind::planeStress)
      planeStressElasticAnswer(b, m.K, m.G);
    else if (b.isSolid())
      elasticAnswer<S33>(b, m.K, m.G);
    else
      elasticAnswer<S31>(b, m.K, m.G);
    keepStates(b, 0);
  } else if (m.isExponential) {
    runExponential(b, m);
  } else {
    run(b, LinearLaw(m));
  }
}

} // namespace sa::user::alloy

namespace sa::user {

using alloy::compute;
SA_USER_MATERIAL(SPX_USR_SUPERELASTIC, alloy::Superelastic)

} // namespace sa::user
