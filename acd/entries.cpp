// The entries of the diagnostics: each in its lower-case form and as the upper-case twin that calls it.
#include "acd.h"
#include "acd/recording.h"
#include "acd/succeeds.h"
#include "acd_block_handler.h"
#include "bcu_ResourceMonitor.h"
#include "dia_MetadataTable.h"
#include "dxt_DiagnosticExtractor.h"
#include "dxt_DiagnosticExtractorXpl.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "message_template.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

namespace {

using sa::acd::Arrays;
using sa::acd::Kind;
using sa::acd::Solver;

dxt_DiagnosticExtractor& implicitExtractor() { return dxt_DiagnosticExtractor::Instance(); }
dxt_DiagnosticExtractorXpl& explicitExtractor() { return dxt_DiagnosticExtractorXpl::Instance(); }

void mark(const char* text) { bcu_ResourceMonitor::Mark(text); }

constexpr std::size_t kLongestName = 1024;

// use(text) with a zero-terminated copy of a name, of which the first 1024 characters count.
template <class Use>
void withName(std::string_view name, Use use) {
  char text[kLongestName + 1];
  const std::size_t length = name.copy(text, kLongestName);
  text[length] = '\0';
  use(text);
}
// The same with a text of any length; of one for which there is no memory, with its beginning.
template <class Use>
void withText(std::string_view text, Use use) {
  std::string copy;
  if (text.size() <= kLongestName || !sa::acd::succeeds([&] { copy = text; })) return withName(text, use);
  use(copy.c_str());
}
std::string_view padded(const char* text, int64_t length) {
  return sharedanalysis::host::withoutTrailingBlanks(sharedanalysis::host::fixedText(text, length));
}
std::string_view terminated(const char* text) { return sharedanalysis::host::terminatedText(text); }

} // namespace

// ---- entries of one call: lower-case form, twin, what the twin does with its arguments

// without arguments
#define SA_TWIN(lower, UPPER, action)                                                                                  \
  SA_EXPORT void lower(void) { action; }                                                                               \
  SA_EXPORT void UPPER(void) { lower(); }
// one value
#define SA_TWIN_VALUE(lower, UPPER, Type, value, action)                                                               \
  SA_EXPORT void lower(Type value) { action; }                                                                         \
  SA_EXPORT void UPPER(const Type* value) { lower(*value); }
#define SA_TWIN_FLAG(lower, UPPER, set) SA_TWIN_VALUE(lower, UPPER, int32_t, flag, set(flag != 0))
// two values
#define SA_TWIN_VALUES(lower, UPPER, Type1, value1, Type2, value2, action)                                             \
  SA_EXPORT void lower(Type1 value1, Type2 value2) { action; }                                                         \
  SA_EXPORT void UPPER(const Type1* value1, const Type2* value2) { lower(*value1, *value2); }
// a name
#define SA_TWIN_NAME(lower, UPPER, set)                                                                                \
  SA_EXPORT void lower(const char* name) {                                                                             \
    withName(terminated(name), [](const char* text) { set(text); });                                                   \
  }                                                                                                                    \
  SA_EXPORT void UPPER(const char* name, int64_t nameLength) { withName(padded(name, nameLength), lower); }
// without arguments, with marks of the resource monitor by the twin
#define SA_TWIN_MARKED(lower, UPPER, text, action)                                                                     \
  SA_EXPORT void lower(void) { action; }                                                                               \
  SA_EXPORT void UPPER(void) {                                                                                         \
    mark(text);                                                                                                        \
    lower();                                                                                                           \
  }

// ---- course of the analysis

SA_EXPORT void acd_begin_step_c(int32_t number, const char* name, int32_t procedure, int32_t flag1, int32_t flag2) {
  withName(terminated(name),
           [=](const char* text) { implicitExtractor().BeginStep(number, text, procedure, flag1 != 0, flag2 != 0); });
}
SA_EXPORT void ACD_BEGIN_STEP(const int32_t* number, const char* name, const int32_t* procedure, const int32_t* flag1,
                              const int32_t* flag2, int64_t nameLength) {
  withName(padded(name, nameLength),
           [=](const char* text) { acd_begin_step_c(*number, text, *procedure, *flag1, *flag2); });
}
SA_EXPORT void acd_begin_step_xpl_c(int32_t number, const char* name, int32_t procedure) {
  withName(terminated(name), [=](const char* text) { explicitExtractor().BeginStep(number, text, procedure); });
}
SA_EXPORT void ACD_BEGIN_STEP_XPL(const int32_t* number, const char* name, const int32_t* procedure,
                                  int64_t nameLength) {
  withName(padded(name, nameLength), [=](const char* text) { acd_begin_step_xpl_c(*number, text, *procedure); });
}
SA_TWIN(acd_end_step_c, ACD_END_STEP, implicitExtractor().EndStep())
SA_TWIN(acd_end_step_xpl_c, ACD_END_STEP_XPL, explicitExtractor().EndStep())

SA_EXPORT void acd_begin_increment_c(int32_t number, double timeIncrement) {
  implicitExtractor().BeginIncrement(number, timeIncrement);
}
SA_EXPORT void ACD_BEGIN_INCREMENT(const int32_t* number, const double* timeIncrement) {
  mark("Increment-Start");
  acd_begin_increment_c(*number, *timeIncrement);
}
SA_TWIN_VALUES(acd_begin_increment_xpl_c, ACD_BEGIN_INCREMENT_XPL, int32_t, number, double, timeIncrement,
               explicitExtractor().BeginIncrement(number, timeIncrement))
SA_EXPORT void acd_end_increment_c(double time, int32_t converged) {
  implicitExtractor().EndIncrement(time, converged >= 1);
}
SA_EXPORT void ACD_END_INCREMENT(const double* time, const int32_t* converged) {
  mark("Diagnostics-Start");
  acd_end_increment_c(*time, *converged);
  mark("Diagnostics-End");
  mark("Increment-End");
}
SA_TWIN_VALUES(acd_end_increment_xpl_c, ACD_END_INCREMENT_XPL, double, time, int32_t, flag,
               explicitExtractor().EndIncrement(time, flag != 0))

SA_EXPORT void acd_begin_attempt_c(double timeIncrement) { implicitExtractor().BeginAttempt(timeIncrement); }
SA_EXPORT void ACD_BEGIN_ATTEMPT(const double* timeIncrement) {
  mark("Attempt-Start");
  acd_begin_attempt_c(*timeIncrement);
}
SA_TWIN_MARKED(acd_end_attempt_c, ACD_END_ATTEMPT, "Attempt-End", implicitExtractor().EndAttempt())
SA_TWIN_MARKED(acd_begin_iteration_c, ACD_BEGIN_ITERATION, "Iteration-Start", implicitExtractor().BeginIteration())
SA_TWIN_MARKED(acd_end_iteration_c, ACD_END_ITERATION, "Iteration-End", implicitExtractor().EndIteration())
SA_TWIN(acd_begin_contact_iteration_c, ACD_BEGIN_CONTACT_ITERATION, implicitExtractor().BeginContactIteration())
SA_TWIN(acd_end_contact_iteration_c, ACD_END_CONTACT_ITERATION, implicitExtractor().EndContactIteration())

// ---- settings

SA_TWIN_FLAG(acd_set_iter_converged_c, ACD_SET_ITER_CONVERGED, implicitExtractor().SetIterationConverged)
SA_TWIN_FLAG(acd_set_contiter_converged_c, ACD_SET_CONTITER_CONVERGED, implicitExtractor().SetContactIterationConverged)
SA_TWIN_FLAG(acd_set_attm_needsreordering_c, ACD_SET_ATTM_NEEDSREORDERING,
             implicitExtractor().SetAttemptNeedsReordering)
SA_TWIN_FLAG(acd_set_iter_severediscont_c, ACD_SET_ITER_SEVEREDISCONT,
             implicitExtractor().SetIterationSevereDiscontinuity)
SA_TWIN_FLAG(acd_set_iter_pentolexceeded_c, ACD_SET_ITER_PENTOLEXCEEDED,
             implicitExtractor().SetIterationPenetrationToleranceExceeded)
SA_TWIN_FLAG(acd_set_iter_septoltoolarge_c, ACD_SET_ITER_SEPTOLTOOLARGE,
             implicitExtractor().SetIterationSeparationToleranceTooLarge)
SA_TWIN_FLAG(acd_set_renumbered_c, ACD_SET_RENUMBERED, implicitExtractor().SetRenumbered)
SA_TWIN_FLAG(acd_set_renumbered_xpl_c, ACD_SET_RENUMBERED_XPL, explicitExtractor().SetRenumbered)
SA_TWIN_FLAG(acd_set_precision_xpl_c, ACD_SET_PRECISION_XPL, explicitExtractor().SetXplDoublePrecision)
SA_TWIN_NAME(acd_set_ddbname_c, ACD_SET_DDBNAME, implicitExtractor().SetDdbName)
SA_TWIN_NAME(acd_set_ddbname_xpl_c, ACD_SET_DDBNAME_XPL, explicitExtractor().SetDdbName)
SA_TWIN_VALUE(acd_set_execode_c, ACD_SET_EXECODE, int32_t, code, implicitExtractor().SetExecutionCode(code))
SA_TWIN_VALUE(acd_set_execode_xpl_c, ACD_SET_EXECODE_XPL, int32_t, code, explicitExtractor().SetExecutionCode(code))
SA_TWIN_VALUE(acd_set_numdomains_xpl_c, ACD_SET_NUMDOMAINS_XPL, int32_t, domains,
              explicitExtractor().SetNumDomains(domains))
SA_TWIN_VALUE(acd_set_step_stabilizefactor_c, ACD_SET_STEP_STABILIZEFACTOR, double, factor,
              implicitExtractor().SetStepStabilizeFactor(factor))
SA_TWIN(acd_set_valid_xpl_c, ACD_SET_VALID_XPL, explicitExtractor().SetValid(true))
SA_TWIN(acd_enable_c, ACD_ENABLE, implicitExtractor().Enable())
SA_TWIN(acd_enable_xpl_c, ACD_ENABLE_XPL, explicitExtractor().Enable())
SA_TWIN(acd_disable_c, ACD_DISABLE, implicitExtractor().Disable())
SA_TWIN(acd_disable_xpl_c, ACD_DISABLE_XPL, explicitExtractor().Disable())

SA_EXPORT void acd_set_step_attributes_c(int32_t fixedIncrementation, int32_t directUser, int32_t nlgeom,
                                         int32_t unsymmetric, int32_t extrapolation, int32_t solver, double r1,
                                         double r2, double r3, double r4, int32_t n, double characteristicLength) {
  const int32_t automatic = directUser == 1 ? 3 : 2, mode = fixedIncrementation != 0 ? 1 : automatic;
  dxt_DiagnosticExtractor& extractor = implicitExtractor();
  extractor.SetStepIncrementationControls(mode, r1, r2, r3, r4, n);
  extractor.SetStepSolver(solver < 0 || solver > 1 ? 0 : solver);
  extractor.SetStepExtrapolation(extrapolation < 0 || extrapolation > 2 ? 1 : extrapolation);
  extractor.SetStepCharacteristicElementLength(characteristicLength);
  if (unsymmetric != 0) extractor.SetStepUnsymm();
  if (nlgeom != 0) extractor.SetStepNlgeom();
}
SA_EXPORT void ACD_SET_STEP_ATTRIBUTES(const int32_t* fixedIncrementation, const int32_t* directUser,
                                       const int32_t* nlgeom, const int32_t* unsymmetric, const int32_t* extrapolation,
                                       const int32_t* solver, const double* r1, const double* r2, const double* r3,
                                       const double* r4, const int32_t* n, const double* characteristicLength) {
  const auto flag = [](const int32_t* value) { return *value != 0 ? 1 : 0; };
  acd_set_step_attributes_c(flag(fixedIncrementation), flag(directUser), flag(nlgeom), flag(unsymmetric),
                            *extrapolation, *solver, *r1, *r2, *r3, *r4, *n, *characteristicLength);
}

// ---- counts

#define SA_COUNT(lower, UPPER, get)                                                                                    \
  SA_EXPORT int32_t lower(void) { return explicitExtractor().get(); }                                                  \
  SA_EXPORT int32_t UPPER(void) { return lower(); }
SA_COUNT(acd_get_numerrors_xpl_c, ACD_GET_NUMERRORS_XPL, GetNumberOfErrors)
SA_COUNT(acd_get_numwarnings_xpl_c, ACD_GET_NUMWARNINGS_XPL, GetNumberOfWarnings)
SA_COUNT(acd_get_numelemdiagnostics_xpl_c, ACD_GET_NUMELEMDIAGNOSTICS_XPL, GetNumberOfElementDiagnostics)

#define SA_INCREASE(UPPER, block, place)                                                                               \
  SA_EXPORT void UPPER(void) { sa::acd::addOne(block, place); }
SA_INCREASE(ACD_INC_KNPSOL, CWARN, 1)
SA_INCREASE(ACD_INC_KNESOL, CWARN, 2)
SA_INCREASE(ACD_INC_KWARN, CLINES, 17)

// ---- diagnostics with a code

namespace {

// What an entry is: where it goes, what its code must be, and what it says when the code is something else.
struct Entry {
  Solver solver;
  Kind kind;
  const char* invalid;
};

void invalidCode(const Entry& entry) {
  if (entry.solver == Solver::Implicit)
    acd_error_internal_c(entry.invalid);
  else
    acd_error_internal_xpl_c(entry.invalid);
}

void recordValid(const Entry& entry, int32_t code, int32_t domain, const Arrays& arrays, int32_t print) {
  if (!sa::acd::isValid(entry.kind, code)) return invalidCode(entry);
  sa::acd::record(entry.solver, {entry.kind, code, domain, print, arrays});
}

// use(strings) with the fixed-length strings of a code as zero-terminated ones.
template <class Use>
void withStrings(const Entry& entry, int32_t code, const char* strings, int64_t stringLength, Use use) {
  if (!sa::acd::isValid(entry.kind, code)) return invalidCode(entry);
  std::string texts; // one after the other, each with its zero
  std::vector<const char*> pointers;
  const bool converted = sa::acd::succeeds([&] {
    const int32_t table = entry.kind == Kind::Contact ? 1 : 0;
    const int32_t count = dia_MetadataTable::Instance(table).GetNumStringValues(code);
    const sharedanalysis::host::FixedStrings fixed{strings, stringLength};
    std::vector<std::size_t> begins;
    for (int32_t k = 0; k < count; ++k) {
      begins.push_back(texts.size());
      texts.append(sharedanalysis::host::withoutTrailingBlanks(fixed[k])).push_back('\0');
    }
    for (const std::size_t begin : begins) pointers.push_back(texts.data() + begin);
  });
  use(converted ? pointers.data() : nullptr); // without memory for the texts recorded without them
}

} // namespace

// The arrays of values, with the words that come before and after them.
#define SA_ARRAYS                                                                                                      \
  const int32_t *ints, const double *reals, const char *const *strings, const int32_t *nodes, const int32_t *elements
#define SA_FIXED_ARRAYS                                                                                                \
  const int32_t *ints, const double *reals, const char *strings, const int32_t *nodes, const int32_t *elements
// errors and warnings of the implicit solver end with a print flag, but for acd_error, which always prints
#define SA_DIAGNOSTIC(lower, UPPER, kind, invalid)                                                                     \
  static constexpr Entry lower##_entry{Solver::Implicit, kind, invalid};                                               \
  SA_EXPORT void lower(int32_t code, SA_ARRAYS, int32_t print) {                                                       \
    recordValid(lower##_entry, code, 0, {ints, reals, strings, nodes, elements}, print);                               \
  }                                                                                                                    \
  SA_EXPORT void UPPER(const int32_t* code, SA_FIXED_ARRAYS, const int32_t* print, int64_t stringLength) {             \
    withStrings(lower##_entry, *code, strings, stringLength,                                                           \
                [=](const char* const* texts) { lower(*code, ints, reals, texts, nodes, elements, *print); });         \
  }
#define SA_DIAGNOSTIC_XPL(lower, UPPER, kind, invalid)                                                                 \
  static constexpr Entry lower##_entry{Solver::Explicit, kind, invalid};                                               \
  SA_EXPORT void lower(int32_t code, int32_t domain, SA_ARRAYS) {                                                      \
    recordValid(lower##_entry, code, domain, {ints, reals, strings, nodes, elements}, 1);                              \
  }                                                                                                                    \
  SA_EXPORT void UPPER(const int32_t* code, const int32_t* domain, SA_FIXED_ARRAYS, int64_t stringLength) {            \
    withStrings(lower##_entry, *code, strings, stringLength,                                                           \
                [=](const char* const* texts) { lower(*code, *domain, ints, reals, texts, nodes, elements); });        \
  }

static constexpr Entry acd_error_entry{Solver::Implicit, Kind::Error, "Invalid error code in call to acd_error"};
SA_EXPORT void acd_error_c(int32_t code, SA_ARRAYS) {
  recordValid(acd_error_entry, code, 0, {ints, reals, strings, nodes, elements}, 1);
}
SA_EXPORT void ACD_ERROR(const int32_t* code, SA_FIXED_ARRAYS, int64_t stringLength) {
  withStrings(acd_error_entry, *code, strings, stringLength,
              [=](const char* const* texts) { acd_error_c(*code, ints, reals, texts, nodes, elements); });
}
SA_DIAGNOSTIC(acd_warning_c, ACD_WARNING, Kind::Warning, "Invalid warning code in call to acd_warning")
SA_DIAGNOSTIC(acd_element_diagnostic_c, ACD_ELEMENT_DIAGNOSTIC, Kind::Element,
              "Invalid code in call to acd_element_diagnostic")
SA_DIAGNOSTIC(acd_contact_diagnostic_c, ACD_CONTACT_DIAGNOSTIC, Kind::Contact,
              "Invalid code in call to acd_contact_diagnostic")
SA_DIAGNOSTIC_XPL(acd_error_xpl_c, ACD_ERROR_XPL, Kind::Error, "Invalid code in call to acd_error_xpl")
SA_DIAGNOSTIC_XPL(acd_warning_xpl_c, ACD_WARNING_XPL, Kind::Warning, "Invalid code in call to acd_warning_xpl")
SA_DIAGNOSTIC_XPL(acd_element_diagnostic_xpl_c, ACD_ELEMENT_DIAGNOSTIC_XPL, Kind::Element,
                  "Invalid code in call to acd_element_diagnostic_xpl")
SA_DIAGNOSTIC_XPL(acd_contact_diagnostic_xpl_c, ACD_CONTACT_DIAGNOSTIC_XPL, Kind::Contact,
                  "Invalid code in call to acd_contact_diagnostic_xpl")

// ---- other diagnostics

namespace {

constexpr int kResiduals = 4, kCompatibilities = 2, kStatusValues = 9;

// body(values), values holding the given reals; without memory the record is lost.
template <class Body>
void withReals(const double* reals, int count, Body body) {
  sa::acd::succeeds([&] {
    dia_Values values;
    values.reals.assign(static_cast<std::size_t>(count), 0.0); // as a null pointer counts
    if (reals != nullptr) std::copy_n(reals, count, values.reals.begin());
    body(values);
  });
}

} // namespace

SA_EXPORT void acd_residual_diagnostic_c(int32_t field, int32_t kind, const double* values) {
  withReals(values, kResiduals,
            [=](const dia_Values& list) { implicitExtractor().AddResidualDiagnostic(field, kind, list); });
}
SA_EXPORT void ACD_RESIDUAL_DIAGNOSTIC(const int32_t* field, const int32_t* kind, const double* values) {
  acd_residual_diagnostic_c(*field, *kind, values);
}
SA_EXPORT void acd_compatibility_diagnostic_c(int32_t constraint, const double* values) {
  withReals(values, kCompatibilities,
            [=](const dia_Values& list) { implicitExtractor().AddCompatibilityDiagnostic(constraint, list); });
}
SA_EXPORT void ACD_COMPATIBILITY_DIAGNOSTIC(const int32_t* constraint, const double* values) {
  acd_compatibility_diagnostic_c(*constraint, values);
}
SA_TWIN_VALUES(acd_cutback_diagnostic_c, ACD_CUTBACK_DIAGNOSTIC, int32_t, code, int32_t, print,
               sa::acd::cutback(code, print == 1))

SA_EXPORT void acd_status_xpl_c(int32_t status, int32_t node, const double* reals) {
  sa::acd::succeeds([=] { // without memory for a name the record is lost
    std::array<double, kStatusValues> values{};
    if (reals != nullptr) std::copy_n(reals, values.size(), values.begin());
    const dia_Entity entity = sa::acd::nodeOf(explicitExtractor().IsModelInParts(), node);
    explicitExtractor().AddXplStatus(status, entity.label, entity.instance, values);
  });
}
SA_EXPORT void ACD_STATUS_XPL(const int32_t* status, const int32_t* node, const double* reals) {
  acd_status_xpl_c(*status, *node, reals);
}
SA_EXPORT void acd_activestatus_xpl_c(const int32_t* active) {
  std::array<int32_t, kStatusValues> values{};
  if (active != nullptr) std::copy_n(active, values.size(), values.begin());
  explicitExtractor().SetActiveXplStatus(values);
}
SA_EXPORT void ACD_ACTIVESTATUS_XPL(const int32_t* active) { acd_activestatus_xpl_c(active); }

// ---- errors of the program itself

#define SA_INTERNAL(lower, UPPER, solver)                                                                              \
  SA_EXPORT void lower(const char* message) { sa::acd::internalError(solver, message); }                               \
  SA_EXPORT void UPPER(const char* message, int64_t messageLength) { withText(padded(message, messageLength), lower); }
SA_INTERNAL(acd_error_internal_c, ACD_ERROR_INTERNAL, Solver::Implicit)
SA_INTERNAL(acd_error_internal_xpl_c, ACD_ERROR_INTERNAL_XPL, Solver::Explicit)
