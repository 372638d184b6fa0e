// Built-in user materials of which this build carries the checks and no model.  The order within each: element support, state
// variables, properties and their values, then the refusal.
#include "spx.h"
#include "spx/impl/user/frame.h"

#include <array>

namespace sa::user {
namespace {

#define SA_CHECK_DEPVAR "Check the definition of *DEPVAR in the input file."

// Property `number`, counted from 1; one that is not given counts as zero.
double property(const Block& block, int number) { return number <= block.properties ? block.props[number - 1] : 0.0; }

// Tables stand one after another behind the constants; a constant gives the number of rows of each.
class Tables {
public:
  Tables(const Block& block, int constants) : block_(block), next_(constants) {}

  // The table whose rows property `rowsAt` counts; false when the properties end before it does.
  bool take(int rowsAt, int64_t columns, const double*& values, int& rows) {
    const double count = property(block_, rowsAt), room = static_cast<double>(block_.properties - next_);
    if (!(count >= 0.0 && count * static_cast<double>(columns) <= room)) return false;
    rows = static_cast<int>(count);
    values = block_.props + next_;
    next_ += rows * columns;
    return true;
  }

private:
  const Block& block_;
  int64_t next_;
};

constexpr std::string_view kTablesCutOff = "The properties of material %S end before its tables do.";

// Values of one column that increase from row to row.
bool isIncreasing(const double* values, int rows, int64_t columns, int column) {
  for (int r = 1; r < rows; ++r)
    if (!(values[r * columns + column] > values[(r - 1) * columns + column])) return false;
  return true;
}
bool isPositive(const double* values, int rows, int64_t columns, int column) {
  for (int r = 0; r < rows; ++r)
    if (!(values[r * columns + column] > 0.0)) return false;
  return true;
}

}

// ---- molded plastic and thermoplastic

// Failure strains for tension and compression and the rate they hold for: strains positive, rates increasing and positive.
// One row alone holds for every rate.
struct FailureTexts {
  std::string_view strains, increasing, positive;
};
bool checkFailure(const Block& block, const double* values, int rows, const FailureTexts& texts) {
  constexpr int kTension = 0, kCompression = 1, kRate = 2, kColumns = 3;
  if (!isPositive(values, rows, kColumns, kTension) || !isPositive(values, rows, kColumns, kCompression))
    return refuse(block, texts.strains);
  if (rows < 2) return false;
  if (!isIncreasing(values, rows, kColumns, kRate)) return refuse(block, texts.increasing);
  return !isPositive(values, rows, kColumns, kRate) && refuse(block, texts.positive);
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

constexpr FailureTexts kDuctile = {
    "The values of the ductile failure strains, eps_T+ and eps_T-, must be greater than zero",
    "Rate-dependent ductile failure properties must be specified in terms of increasing strain rates",
    "Rate-dependent ductile failure properties must be specified in terms of possitive strain rates"};
constexpr FailureTexts kShear = {
    "The values of the shear failure strains, eps_S+ and eps_S-, must be greater than zero",
    "Rate-dependent shear failure properties must be specified in terms of increasing strain rates",
    "Rate-dependent shear failure properties must be specified in terms of possitive strain rates"};

bool checkPlastic(const Block& block, const PlasticTexts& texts, bool isThermoplastic) {
  constexpr int32_t kStates = 14;
  constexpr int kFirstRatio = 3, kRatios = 6, kK1 = 9, kK2 = 10, kTension = 11, kCompression = 12, kDuctileRows = 13,
                kShearRows = 14, kF3 = 15, kF5 = 16, kConstants = 16;
  if (refuseUnless(block, block.isSolid() || block.isPlane(), texts.elements)) return true;
  if (refuseStates(block, kStates, texts.states)) return true;

  const double *curve = nullptr, *ductile = nullptr, *shear = nullptr;
  int tensionRows = 0, compressionRows = 0, ductileRows = 0, shearRows = 0;
  Tables tables(block, kConstants < block.properties ? kConstants : block.properties);
  if (!tables.take(kTension, 2, curve, tensionRows) || !tables.take(kCompression, 2, curve, compressionRows) ||
      !tables.take(kDuctileRows, 3, ductile, ductileRows) || !tables.take(kShearRows, 3, shear, shearRows))
    return refuse(block, kTablesCutOff);
  if (tensionRows == 0 && compressionRows == 0) return refuse(block, texts.data);

  bool isOrthotropic = false;
  for (int k = 0; k < kRatios; ++k) {
    const double ratio = property(block, kFirstRatio + k);
    if (!(ratio > 0.0)) return refuse(block, "The yield ratios must be greater than zero.");
    isOrthotropic = isOrthotropic || ratio != 1.0;
  }
  if (checkFailure(block, ductile, ductileRows, kDuctile) || checkFailure(block, shear, shearRows, kShear)) return true;
  if (isThermoplastic && !(property(block, kF3) >= 0.0 && property(block, kF5) >= 0.0))
    return refuse(block, "Coefficients f3 and f5 for the thermoplastic material cannot be negative");

  if (isOrthotropic && block.isSolid())
    warn(block, "The orthotropic plasticity option is only supported for elements with plane stress state. "
                "All yield ratios will be assumed to be equal "
                "to one.");
  if ((property(block, kK1) != 0.0 || property(block, kK2) != 0.0) && block.isSolid())
    warn(block, "The orientation-dependent orthotropic ductile failure criterion is not "
                "supported for 3D solid elements. The values of "
                "coefficients k1 and k2 will be ignored.");
  return false;
}

bool checkMoldedPlastic(const Block& block) { return checkPlastic(block, kMoldedPlastic, false); }
bool checkThermoplastic(const Block& block) { return checkPlastic(block, kThermoplastic, true); }

} // namespace
} // namespace sa::user

// One that passes its checks ends the analysis all the same.
#define SA_REFUSE(name, check, material)                                                                               \
  SA_EXPORT void name SA_USER_PARAMETERS {                                                                             \
    const sa::user::Block block = SA_USER_BLOCK;                                                                       \
    if (sa::user::check(block)) return;                                                                                \
    sa::user::refuse(block, "Material %S asks for the built-in user material \"" material                              \
                            "\", of which this build of the library carries no model.");                               \
  }

SA_REFUSE(SPX_USR_THERMOPLASTIC, checkThermoplastic, "thermoplastic")
SA_REFUSE(SPX_USR_MOLDEDPLASTIC, checkMoldedPlastic, "molded plastic")

#undef SA_CHECK_DEPVAR
#undef SA_PLASTIC_TEXTS
#undef SA_REFUSE
