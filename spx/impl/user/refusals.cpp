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
// ---- foams and honeycomb

bool checkNothing(const Block&) { return false; }

bool checkRateSensitiveFoam(const Block& block) {
  constexpr int32_t kStates = 2, kDampedStates = 8, kBetaDamping = 3;
  if (property(block, kBetaDamping) != 0.0)
    return refuseStates(block, kDampedStates,
                        "The rate sensitive foam user material requires the specification of %I "
                        "state variables when beta damping is specified. " SA_CHECK_DEPVAR);
  return refuseStates(block, kStates,
                      "The rate sensitive foam user material requires the specification of %I "
                      "state variables. Check the definition of  "
                      "*DEPVAR in the input file.");
}

bool checkHoneycomb(const Block& block) {
  constexpr int32_t kProperties = 11, kTensileStrain = 11, kStates = 1, kStatesWithDeletion = 2;
  if (refuseProperties(block, kProperties,
                       "The honeycomb user material requires the specification of %I material "
                       "in the *USER MATERIAL option for material %S."))
    return true;
  if (property(block, kTensileStrain) != 0.0)
    return refuseStates(block, kStatesWithDeletion,
                        "The honeycomb user material requires the specification of %I state "
                        "variables when a tensile strain for element "
                        "deletion is defined in the model. Check the "
                        "definition of *DEPVAR for material %S.");
  return refuseStates(block, kStates,
                      "The honeycomb user material requires the specification of %I state "
                      "variables. Check the definition of "
                      "*DEPVAR for material %S.");
}

// ---- fabrics

bool checkFabric(const Block& block) {
  constexpr int32_t kStates = 8, kStatesWithInitialStress = 12;
  constexpr int kConstants = 4, kStrain = 1, kColumns = 2;
  if (refuseUnless(block, block.isPlane(),
                   "Subroutine VUMAT for fabric material is implemented only for plane stress "
                   "elements (ndir=3 and nshr=1)"))
    return true;
  if (block.name.find("_INITENER") != std::string_view::npos) {
    if (refuseStates(block, kStatesWithInitialStress,
                     "Subroutine VUMAT for fabric material requires the specification of %I "
                     "state variables when used in combination "
                     "with option to ramp initial stresses. " SA_CHECK_DEPVAR))
      return true;
  } else if (refuseStates(block, kStates,
                          "Subroutine VUMAT for fabric material requires the specification of %I "
                          "state variables. Check the definition of *DEPVAR "
                          "in the input file.")) {
    return true;
  }
#define SA_CURVE(kind, fiber)                                                                                          \
  "The " kind " stress-strain curve for fiber " fiber " of material %S must be specified "                             \
  "using increasing strain values"
  constexpr std::array<std::string_view, 4> kCurves = {SA_CURVE("loading", "1"), SA_CURVE("loading", "2"),
                                                       SA_CURVE("unloading", "1"), SA_CURVE("unloading", "2")};
  Tables tables(block, kConstants);
  int curve = 0;
  for (const std::string_view text : kCurves) {
    const double* values = nullptr;
    int rows = 0;
    if (!tables.take(++curve, kColumns, values, rows)) return refuse(block, kTablesCutOff);
    if (!isIncreasing(values, rows, kColumns, kStrain)) return refuse(block, text);
  }
  return false;
}

bool checkPlyFabric(const Block& block) {
  constexpr int32_t kStates = 16;
  return refuseUnless(block, block.isPlane(),
                      "Subroutine VUMAT for fabric reinforced composite materials only supports "
                      "plane stress elements.") ||
         refuseStates(block, kStates,
                      "Subroutine VUMAT for fabric reinforced composite materials requires the "
                      "specification of %I state variables. Check the "
                      "definition of *DEPVAR in the input file.");
}

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

SA_REFUSE(SPX_USR_VISCOUSFOAM, checkNothing, "viscous foam")
SA_REFUSE(SPX_USR_RATESENSFOAM, checkRateSensitiveFoam, "rate-sensitive foam")
SA_REFUSE(SPX_USR_FUCHANGISOFOAM, checkNothing, "Fu-Chang isotropic foam")
SA_REFUSE(SPX_USR_FUCHANGANISOFOAM, checkNothing, "Fu-Chang anisotropic foam")
SA_REFUSE(SPX_USR_HONEYCOMB, checkHoneycomb, "honeycomb")
SA_REFUSE(SPX_USR_FABRIC, checkFabric, "fabric")
SA_REFUSE(SPX_USR_PLYFABRIC, checkPlyFabric, "fabric-reinforced composite ply")

#undef SA_CHECK_DEPVAR
#undef SA_CURVE
#undef SA_REFUSE
