// Properties of moulded plastics: what is refused, and the constants that follow from them.
#include "spx/impl/user/plastic.h"

#include <array>

namespace sa::user {
namespace {

// Numbers of the properties.
constexpr int kE = 1, kNu = 2, kFirstRatio = 3, kRatios = 6, kK1 = 9, kK2 = 10, kTensionRows = 11,
              kCompressionRows = 12, kDuctileRows = 13, kShearRows = 14, kF3 = 15, kF5 = 16, kK0 = 17, kKS = 18,
              kF = 19, kTau = 20, kFactorRows = 21;

// The first number of the information about the call says what elements without two shears are: all components are theirs in
// generalised plane strain, plane strain and axisymmetry.
bool isPlaneStressOf(const Block& block) {
  constexpr int32_t kGeneralisedPlaneStrain = 2;
  return !block.isSolid() && block.callInfo[0] != kGeneralisedPlaneStrain;
}

struct PlasticTables {
  Table tension, compression, ductile, shear, factors;
  int32_t last = 0; // property of theirs

  bool take(const Block& block) {
    Tables tables(block, Plastic::kConstants);
    const bool areWhole = tables.take(property(block, kTensionRows), kCurveColumns, tension) &&
                          tables.take(property(block, kCompressionRows), kCurveColumns, compression) &&
                          tables.take(property(block, kDuctileRows), Plastic::kFailureColumns, ductile) &&
                          tables.take(property(block, kShearRows), Plastic::kFailureColumns, shear) &&
                          tables.take(property(block, kFactorRows), Plastic::kFactorColumns, factors);
    last = tables.last();
    return areWhole;
  }
};

// Failure strains for tension and compression and the rate they hold for: strains positive, rates increasing and positive.
// One row alone holds for every rate.
struct FailureTexts {
  std::string_view strains, increasing, positive;
};
bool refuseFailure(const Block& block, const Table& table, const FailureTexts& texts) {
  if (!table.isPositive(Plastic::kInTension) || !table.isPositive(Plastic::kInCompression))
    return refuse(block, texts.strains);
  if (table.rows < 2) return false;
  if (!table.isIncreasing(Plastic::kFailureRate)) return refuse(block, texts.increasing);
  return !table.isPositive(Plastic::kFailureRate) && refuse(block, texts.positive);
}

struct PlasticTexts {
  std::string_view elements, states, data;
};
#define SA_PLASTIC_TEXTS(material)                                                                                     \
  {                                                                                                                    \
    "Subroutine VUMAT for " material " materials only supports solid, plane stress, "                                  \
    "and generalized plane strain elements.",                                                                          \
        "Subroutine VUMAT for " material " materials requires the specification of %I "                                \
        "state variables. Check the definition of *DEPVAR "                                                            \
        "in the input file.",                                                                                          \
        "Subroutine VUMAT for " material " materials requires the specification of uniaxial "                          \
        "tension or compression data."                                                                                 \
  }
constexpr PlasticTexts kMoldedPlastic = SA_PLASTIC_TEXTS("molded plastic");
constexpr PlasticTexts kThermoplastic = SA_PLASTIC_TEXTS("thermoplastic");
#undef SA_PLASTIC_TEXTS

constexpr FailureTexts kDuctileTexts = {
    "The values of the ductile failure strains, eps_T+ and eps_T-, must be greater than zero",
    "Rate-dependent ductile failure properties must be specified in terms of increasing strain rates",
    "Rate-dependent ductile failure properties must be specified in terms of possitive strain rates"};
constexpr FailureTexts kShearTexts = {
    "The values of the shear failure strains, eps_S+ and eps_S-, must be greater than zero",
    "Rate-dependent shear failure properties must be specified in terms of increasing strain rates",
    "Rate-dependent shear failure properties must be specified in terms of possitive strain rates"};

bool isCurve(const Table& curve) { return curve.isIncreasing(kStrain) && curve.isPositive(kStress); }

bool refuseConstants(const Block& block, const PlasticTables& tables) {
  if (refuseValues(block, {kE})) return true;
  const double nu = property(block, kNu);
  if (!(nu > -1.0 && nu < 0.5))
    return refuse(block, "Poisson's ratio of material %S, property 2, must lie between -1 and 0.5: it is %R.", 0, &nu);
  if (refuseNegative(block, {kK0, kF, kTau})) return true;
  const auto& factors = tables.factors;
  return refuseUnless(block, isCurve(tables.tension),
                      "The tension curve of material %S must be specified using increasing plastic strain values "
                      "and yield stresses greater than zero.") ||
         refuseUnless(block, isCurve(tables.compression),
                      "The compression curve of material %S must be specified using increasing plastic strain values "
                      "and yield stresses greater than zero.") ||
         refuseUnless(block,
                      factors.isPositive(Plastic::kFactor) &&
                          (factors.rows < 2 ||
                           (factors.isIncreasing(Plastic::kFactorRate) && factors.isPositive(Plastic::kFactorRate))),
                      "The rate factors of material %S must be greater than zero, and given in terms of increasing "
                      "positive strain rates.");
}

} // namespace

bool Plastic::isRefused(const Block& block, bool isThermoplastic) {
  const PlasticTexts& texts = isThermoplastic ? kThermoplastic : kMoldedPlastic;
  if (refuseUnless(block, block.isSolid() || block.isPlane(), texts.elements)) return true;
  if (refuseStates(block, kStates, texts.states)) return true;
  PlasticTables tables;
  if (!tables.take(block)) return refuse(block, kTablesCutOff);
  if (tables.tension.rows == 0 && tables.compression.rows == 0) return refuse(block, texts.data);

  bool isOrthotropic = false;
  for (int number = kFirstRatio; number < kFirstRatio + kRatios; ++number) {
    const double ratio = property(block, number);
    if (!(ratio > 0.0)) return refuse(block, "The yield ratios must be greater than zero.");
    isOrthotropic = isOrthotropic || ratio != 1.0;
  }
  if (refuseFailure(block, tables.ductile, kDuctileTexts) || refuseFailure(block, tables.shear, kShearTexts))
    return true;
  if (isThermoplastic && !(property(block, kF3) >= 0.0 && property(block, kF5) >= 0.0))
    return refuse(block, "Coefficients f3 and f5 for the thermoplastic material cannot be negative");
  if (refuseConstants(block, tables) || refuseNotFinite(block, kE, kF3 - 1) ||
      (isThermoplastic && refuseNotFinite(block, kF3, kF5)) || refuseNotFinite(block, kF5 + 1, tables.last))
    return true;

  if (isOrthotropic && !isPlaneStressOf(block))
    warn(block, "The orthotropic plasticity option is only supported for elements with plane stress state. "
                "All yield ratios will be assumed to be equal "
                "to one.");
  if ((property(block, kK1) != 0.0 || property(block, kK2) != 0.0) && !isPlaneStressOf(block))
    warn(block, "The orientation-dependent orthotropic ductile failure criterion is not "
                "supported for 3D solid elements. The values of "
                "coefficients k1 and k2 will be ignored.");
  return false;
}

Plastic::Plastic(const Block& block, bool isThermoplastic) {
  PlasticTables tables;
  tables.take(block);
  tension = tables.tension.rows > 0 ? tables.tension : tables.compression;
  compression = tables.compression.rows > 0 ? tables.compression : tables.tension;
  hasOneCurve = tension.values == compression.values;
  ductile = tables.ductile, shear = tables.shear, factors = tables.factors;
  isPlaneStress = isPlaneStressOf(block);

  const auto get = [&block](int number) { return property(block, number); };
  E = get(kE), nu = get(kNu), G = E / (2.0 * (1.0 + nu)), K = E / (3.0 * (1.0 - 2.0 * nu)), perG3 = 1.0 / (3.0 * G);
  smallestYield = 1e-9 * E;
  f3 = isThermoplastic ? get(kF3) : 0.0, f5 = isThermoplastic ? get(kF5) : 0.0;
  k = 1.0 + f3 / 9.0, volumetric = K * f5 * perG3, uniaxial = vm::sqrt(1.0 + f5 / 9.0) * perG3;
  k1 = get(kK1), k2 = get(kK2), kS = get(kKS);
  constexpr double kStraight = 1e-8; // sinh(b) = b to round-off
  ductileBend = SinhRatio(vm::max(kStraight, 4.0 * get(kK0)));
  shearBend = SinhRatio(vm::max(kStraight, 8.0 * get(kF) * vm::abs(kS)));
  thetaStart = kS == 0.0 ? 1.0 : (2.0 + 4.0 * kS) / (8.0 * kS), thetaScale = kS == 0.0 ? 0.0 : 1.0 / (8.0 * kS);
  share = filterShare(block.dt, get(kTau));

  const auto perSquare = [&get](int ratio) { return 1.0 / (get(kFirstRatio + ratio) * get(kFirstRatio + ratio)); };
  const double r11 = perSquare(0), r22 = perSquare(1), r33 = perSquare(2);
  M11 = r11, M22 = r22, M12 = -0.5 * (r11 + r22 - r33), N = 1.5 * perSquare(3);
  Q11 = M11 + f5 / 9.0, Q22 = M22 + f5 / 9.0, Q12 = M12 + f5 / 9.0;
  C11 = E / (1.0 - nu * nu), C12 = nu * C11;
  B11 = (C11 * Q11 + C12 * Q12) * perG3, B12 = (C11 * Q12 + C12 * Q22) * perG3;
  B21 = (C12 * Q11 + C11 * Q12) * perG3, B22 = (C12 * Q12 + C11 * Q22) * perG3, B33 = 2.0 / 3.0 * N;
}

bool Plastic::isWrong(const Block& block) const {
  const bool isClosed = M11 * M22 > M12 * M12 && N > 0.0;
  if (isPlaneStress && refuseUnless(block, isClosed, "The yield ratios of material %S do not give a closed surface."))
    return true;
  // between the ends of theta the strain is convex, so that it is positive where both ends are
  constexpr double kRoot3 = 0x1.bb67ae8584caap+0;
  for (int row = 0; row < shear.rows; ++row)
    for (const double sign : {-1.0, 1.0})
      for (const double end : {kRoot3, 2.0})
        if (!(shearFailure(shear.at(row, kInTension), shear.at(row, kInCompression), end * (1.0 + sign * 2.0 * kS)) >
              0.0))
          return refuse(block,
                        "The shear failure strains of material %S must be greater than zero for every state of "
                        "stress: kS, property 18, or f, property 19, is too large for their ratio: they are "
                        "%R and %R.",
                        0, std::array{kS, property(block, kF)}.data());
  return false;
}

} // namespace sa::user
