// Entries of the material tables: what the option code asks for, and what is told when there is no such table.
#include "glo.h"
#include "spx.h"
#include "spx/impl/elements/element_message.h"
#include "spx/impl/tables/general.h"
#include "spx/impl/tables/regular.h"

namespace sa {
namespace {

using namespace table;

// ---- the loops, compiled for each instruction set

#define SA_GENERAL(name, Quantity, Place)                                                                              \
  SA_CLONES                                                                                                            \
  static void name##_clones(const General& table, const PerPoint& points, const Place& place) {                        \
    if (table.variables == 1)                                                                                          \
      evaluateOneVariable<Quantity>(table, points, place);                                                             \
    else if (table.variables <= kMostVariablesOfTree)                                                                  \
      evaluateManyVariables<Quantity>(table, points, place);                                                           \
    else                                                                                                               \
      evaluateBeyondTree<Quantity>(table, points, place);                                                              \
  }                                                                                                                    \
  inline void evaluate(Quantity, const General& table, const PerPoint& points, const Place& place) {                   \
    name##_clones(table, points, place);                                                                               \
  }

SA_GENERAL(tableValue, Value, WholeBlock)
SA_GENERAL(tableValueListed, Value, Listed)
SA_GENERAL(tableIntegral, Integral, WholeBlock)
SA_GENERAL(tableIntegralListed, Integral, Listed)

#define SA_REGULAR(variables)                                                                                          \
  SA_CLONES                                                                                                            \
  static void tableRegular##variables##_clones(const Regular<variables>& table, int nblock, const Source* sources,     \
                                               double* value) {                                                        \
    evaluateRegular(table, nblock, sources, value);                                                                    \
  }                                                                                                                    \
  inline void regular(const Pools& pools, int nblock, const Source(&sources)[variables], double* value) {              \
    tableRegular##variables##_clones(Regular<variables>(pools), nblock, sources, value);                               \
  }

SA_REGULAR(1)
SA_REGULAR(2)
SA_REGULAR(3)

// ---- option codes

constexpr std::string_view kUnsupported = "Unsupported table option";
constexpr std::string_view kUnsupportedObject = "Unsupported table option in the spx_tab branch";
constexpr std::string_view kSeparableText = "Separable table format not yet implemented.";

void endWith(std::string_view text) {
  constexpr int32_t kErrors = GLO_EXIT_ERRORS;
  writeMessage("Error", text);
  GLO_UTI_EXIT(&kErrors);
}

template <class Place>
void copyConstant(const Pools& pools, const PerPoint& points, const Place& place) {
  const double constant = *pools.realsAt(pools.field(kRecord));
  const int64_t columns = points.fieldDerivatives != nullptr ? pools.field(kFieldCount) : 0;
  for (int i = 0; i < place.count; ++i) points.value[place(i)] = constant;
  for (int64_t k = 0; k < columns; ++k)
    for (int i = 0; i < place.count; ++i) points.fieldDerivatives[k * points.nblock + place(i)] = 0.0;
  if (points.temperatureDerivative == nullptr) return;
  for (int i = 0; i < place.count; ++i) points.temperatureDerivative[place(i)] = 0.0;
}

// A general table has a variable at least.
template <class Quantity, class Place>
void evaluateGeneral(const General& table, const PerPoint& points, const Place& place, std::string_view unsupported) {
  if (table.variables < 1)
    endWith(unsupported);
  else if (place.count > 0)
    evaluate(Quantity(), table, points, place);
}

// The caller's arrays are never written: transformed variables live in scratch, so that there is nothing to put back when
// the analysis ends here.
template <class Quantity, class Place>
void lookUp(const Pools& pools, int32_t option, const PerPoint& points, const Place& place,
            std::string_view unsupported) {
  constexpr bool isValue = !Quantity::kIsIntegral;
  if (option == kLogarithmAndRoot || option == kLogarithm) {
    evaluateGeneral<Quantity>(General(pools, option), points, place, unsupported);
  } else if (isValue && option == kConstant) {
    copyConstant(pools, points, place);
  } else if (isValue && option == kSeparable) {
    endWith(kSeparableText);
  } else {
    endWith(unsupported);
  }
}

} // namespace

// ---- entries

#define SA_TABLE_PARAMETERS                                                                                            \
  const int32_t *ints, const double *reals, const int32_t *header, const int32_t *nblock, const int32_t *option,       \
      const double *fields, const double *states, const double *temperature, double *value
#define SA_DERIVATIVE_PARAMETERS double *fieldDerivatives, double *temperatureDerivative

#define SA_POINTS                                                                                                      \
  {                                                                                                                    \
    *nblock, fields, states, temperature, value, *derivatives == 1 ? fieldDerivatives : nullptr,                       \
        *derivatives == 1 ? temperatureDerivative : nullptr                                                            \
  }

#define SA_TABLE(name, Quantity, unsupported)                                                                          \
  SA_EXPORT void name(const int32_t* derivatives, SA_TABLE_PARAMETERS, SA_DERIVATIVE_PARAMETERS) {                     \
    const OwnArithmetic arithmetic;                                                                                    \
    lookUp<Quantity>({ints, reals, header}, *option, SA_POINTS, WholeBlock{*nblock}, unsupported);                     \
  }
#define SA_TABLE_LISTED(name, Quantity, unsupported)                                                                   \
  SA_EXPORT void name(const int32_t* derivatives, SA_TABLE_PARAMETERS, SA_DERIVATIVE_PARAMETERS, const int32_t* count, \
                      const int32_t* list) {                                                                           \
    const OwnArithmetic arithmetic;                                                                                    \
    const Listed place = {*nblock < 1 ? 0 : *count, list};                                                             \
    lookUp<Quantity>({ints, reals, header}, *option, SA_POINTS, place, unsupported);                                   \
  }

SA_TABLE(SPX_GET_GETVALUE, Value, kUnsupported)
SA_TABLE(SPX_GET_GETVALUEDBL, Value, kUnsupported)
SA_TABLE(SPX_TAB_GETVALUE, Value, kUnsupportedObject)
SA_TABLE(SPX_GET_INTEGRATE, Integral, kUnsupported)
SA_TABLE_LISTED(SPX_GET_GETVALUEINDX, Value, kUnsupported)
SA_TABLE_LISTED(SPX_TAB_GETVALUEINDX, Value, kUnsupportedObject)
SA_TABLE_LISTED(SPX_GET_INTEGRATEINDX, Integral, kUnsupported)

SA_EXPORT void SPX_GET_GETVAL(SA_TABLE_PARAMETERS) {
  constexpr int32_t kNoDerivatives = 0;
  SPX_GET_GETVALUE(&kNoDerivatives, ints, reals, header, nblock, option, fields, states, temperature, value, nullptr,
                   nullptr);
}

SA_EXPORT void SPX_GET_GETTAB(const int32_t* derivatives, const int32_t* ints, const double* reals,
                              const int32_t* header, const int32_t* nblock, const int32_t* option,
                              const int32_t* dependencies, const int32_t* extra, const int32_t* nfields,
                              const int32_t* nstates, const double* fields, const double* states,
                              const double* temperature, double* value, SA_DERIVATIVE_PARAMETERS) {
  const OwnArithmetic arithmetic;
  const Pools pools = {ints, reals, header};
  const PerPoint points = SA_POINTS;
  if (*nblock < 1) return;
  if (*extra != 0) {
    // Columns that the table does not name have derivative 0.  The second dimension, that of the states, has none.
    const int64_t columns = *nfields > 1 ? *nfields : 1;
    (void)nstates;
    for (int64_t i = 0; points.fieldDerivatives != nullptr && i < columns * points.nblock; ++i)
      fieldDerivatives[i] = 0.0;
    evaluateGeneral<Value>(General(pools), points, WholeBlock{*nblock}, kUnsupported);
    return;
  }
  const Source field1 = points.source(1), field2 = points.source(2), heat = points.source(0);
  const bool ofTemperature = *option == 1;
  if (*option != 0 && !ofTemperature) return;
  switch (*dependencies) {
  case 0:
    if (ofTemperature) regular(pools, *nblock, {heat}, value);
    return;
  case 1:
    return ofTemperature ? regular(pools, *nblock, {heat, field1}, value) : regular(pools, *nblock, {field1}, value);
  case 2:
    return ofTemperature ? regular(pools, *nblock, {heat, field1, field2}, value)
                         : regular(pools, *nblock, {field1, field2}, value);
  default:
    return;
  }
}

SA_EXPORT void SPX_GET_SEGFIND(const int32_t* lo, const int32_t* hi, const double* extrapBelow,
                               const double* extrapAbove, const int32_t* rowlen, SA_UNREAD spare, const double* table,
                               const int32_t* pos, const double* x, int32_t* i1, int32_t* i2) {
  const OwnArithmetic arithmetic;
  const int64_t length = *rowlen, first = int64_t{*pos} - 1;
  const Segment found = findSegment(*lo, *hi, *extrapBelow > 0.0, *extrapAbove > 0.0, *x,
                                    [=](int64_t row) SA_POINT { return table[(row - 1) * length + first]; });
  *i1 = static_cast<int32_t>(found.lower);
  *i2 = static_cast<int32_t>(found.upper);
}

} // namespace sa
