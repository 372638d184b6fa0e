// The extractors of the implicit and of the explicit solver: two doors of one store.
#include "dia_Codes.h"
#include "diagnostic_store.h"
#include "dxt_DiagnosticExtractor.h"
#include "dxt_DiagnosticExtractorXpl.h"
#include "guarded.h"

using namespace sharedanalysis::host;

namespace {

void add(Solver solver, const DiagnosticRecord& record) noexcept {
  guarded([&] { diagnostics().add(solver, record); });
}

void addInternalError(Solver solver, const char* message) noexcept {
  guarded([&] {
    dia_Values values;
    values.strings.emplace_back(message == nullptr ? "" : message);
    diagnostics().add(solver, {DiagnosticClass::Internal, dia_Codes::InternalError, {}, {}, values});
  });
}

template <class Change>
void setStepAttributes(Change change) noexcept {
  guarded([&] { diagnostics().setStepAttributes(Solver::Implicit, change); });
}

template <class Change>
void setRun(Change change) noexcept {
  guarded([&] { diagnostics().setRun(change); });
}

std::string_view nameOrNone(const char* name) { return name == nullptr ? "" : name; }

} // namespace

// ---- what both have

#define SA_BOTH_EXTRACTORS(Class, solver)                                                                              \
  Class& Class::Instance() {                                                                                           \
    static Class extractor;                                                                                            \
    return extractor;                                                                                                  \
  }                                                                                                                    \
  void Class::Enable() {                                                                                               \
    guarded([] { diagnostics().enable(solver, true); });                                                               \
  }                                                                                                                    \
  void Class::Disable() {                                                                                              \
    guarded([] { diagnostics().enable(solver, false); });                                                              \
  }                                                                                                                    \
  void Class::SetDdbName(const char* name) {                                                                           \
    guarded([=] { diagnostics().setName(name); });                                                                     \
  }                                                                                                                    \
  void Class::SetExecutionCode(int32_t code) {                                                                         \
    guarded([=] { diagnostics().setExecutionCode(solver, code); });                                                    \
  }                                                                                                                    \
  int32_t Class::GetExecutionCode() const { return diagnostics().executionCode(solver); }                              \
  bool Class::IsModelInParts() const { return modelIsInParts(); }                                                      \
  void Class::SetRenumbered(bool renumbered) {                                                                         \
    setRun([=](RunRecord& run) { run.renumbered = renumbered; });                                                      \
  }                                                                                                                    \
  void Class::EndStep() {                                                                                              \
    guarded([] { diagnostics().endStep(solver); });                                                                    \
  }                                                                                                                    \
  void Class::BeginIncrement(int32_t number, double timeIncrement) {                                                   \
    guarded([=] { diagnostics().beginIncrement(solver, number, timeIncrement); });                                     \
  }                                                                                                                    \
  void Class::EndIncrement(double time, bool converged) {                                                              \
    guarded([=] { diagnostics().endIncrement(solver, time, converged); });                                             \
  }                                                                                                                    \
  void Class::AddInternalError(const char* message) { addInternalError(solver, message); }

SA_BOTH_EXTRACTORS(dxt_DiagnosticExtractor, Solver::Implicit)
SA_BOTH_EXTRACTORS(dxt_DiagnosticExtractorXpl, Solver::Explicit)

// ---- implicit

void dxt_DiagnosticExtractor::BeginStep(int32_t number, const char* name, int32_t procedure, bool flag1, bool flag2) {
  guarded([&] {
    diagnostics().beginStep(Solver::Implicit, {"implicit", number, nameOrNone(name), procedure, flag1, flag2});
  });
}

#define SA_COURSE(Method, function)                                                                                    \
  void dxt_DiagnosticExtractor::Method() {                                                                             \
    guarded([] { diagnostics().function(Solver::Implicit); });                                                         \
  }
SA_COURSE(EndAttempt, endAttempt)
SA_COURSE(BeginIteration, beginIteration)
SA_COURSE(EndIteration, endIteration)
SA_COURSE(BeginContactIteration, beginContactIteration)
SA_COURSE(EndContactIteration, endContactIteration)

void dxt_DiagnosticExtractor::BeginAttempt(double timeIncrement) {
  guarded([=] { diagnostics().beginAttempt(Solver::Implicit, timeIncrement); });
}

#define SA_FLAG(Method, function)                                                                                      \
  void dxt_DiagnosticExtractor::Method(bool value) {                                                                   \
    guarded([=] { diagnostics().function(Solver::Implicit, value); });                                                 \
  }
SA_FLAG(SetIterationConverged, setIterationConverged)
SA_FLAG(SetContactIterationConverged, setContactIterationConverged)
SA_FLAG(SetAttemptNeedsReordering, setAttemptNeedsReordering)
SA_FLAG(SetIterationSevereDiscontinuity, setIterationSevereDiscontinuity)
SA_FLAG(SetIterationPenetrationToleranceExceeded, setIterationPenetrationExceeded)
SA_FLAG(SetIterationSeparationToleranceTooLarge, setIterationSeparationTooLarge)

void dxt_DiagnosticExtractor::SetStepIncrementationControls(int32_t mode, double r1, double r2, double r3, double r4,
                                                            int32_t n) {
  setStepAttributes([=](StepAttributes& attributes) {
    attributes.incrementation = mode;
    attributes.controls = {r1, r2, r3, r4};
    attributes.controlCount = n;
  });
}

#define SA_ATTRIBUTE(Method, Type, attribute)                                                                          \
  void dxt_DiagnosticExtractor::Method(Type value) {                                                                   \
    setStepAttributes([=](StepAttributes& attributes) { attributes.attribute = value; });                              \
  }
SA_ATTRIBUTE(SetStepSolver, int32_t, equationSolver)
SA_ATTRIBUTE(SetStepExtrapolation, int32_t, extrapolation)
SA_ATTRIBUTE(SetStepCharacteristicElementLength, double, characteristicLength)
SA_ATTRIBUTE(SetStepStabilizeFactor, double, stabilizeFactor)

void dxt_DiagnosticExtractor::SetStepUnsymm() {
  setStepAttributes([](StepAttributes& attributes) { attributes.unsymmetric = true; });
}
void dxt_DiagnosticExtractor::SetStepNlgeom() {
  setStepAttributes([](StepAttributes& attributes) { attributes.nlgeom = true; });
}

#define SA_ADD(Method, diagnosticClass)                                                                                \
  void dxt_DiagnosticExtractor::Method(int32_t code, const dia_Values& values) {                                       \
    add(Solver::Implicit, {DiagnosticClass::diagnosticClass, code, {}, {}, values});                                   \
  }
SA_ADD(AddError, Error)
SA_ADD(AddWarning, Warning)
SA_ADD(AddElementDiagnostic, Element)
SA_ADD(AddContactDiagnostic, Contact)
SA_ADD(AddCompatibilityDiagnostic, Compatibility)

void dxt_DiagnosticExtractor::AddResidualDiagnostic(int32_t field, int32_t kind, const dia_Values& values) {
  add(Solver::Implicit, {DiagnosticClass::Residual, field, {}, kind, values});
}
void dxt_DiagnosticExtractor::AddCutbackDiagnostic(int32_t code) {
  const dia_Values none;
  add(Solver::Implicit, {DiagnosticClass::Cutback, code, {}, {}, none});
}

// ---- explicit

void dxt_DiagnosticExtractorXpl::BeginStep(int32_t number, const char* name, int32_t procedure) {
  guarded([&] {
    diagnostics().beginStep(Solver::Explicit, {"explicit", number, nameOrNone(name), procedure, {}, {}});
  });
}

void dxt_DiagnosticExtractorXpl::SetNumDomains(int32_t domains) {
  setRun([=](RunRecord& run) { run.domains = domains; });
}
void dxt_DiagnosticExtractorXpl::SetXplDoublePrecision(bool isDouble) {
  setRun([=](RunRecord& run) { run.doublePrecision = isDouble; });
}
void dxt_DiagnosticExtractorXpl::SetValid(bool valid) {
  setRun([=](RunRecord& run) { run.valid = valid; });
}
void dxt_DiagnosticExtractorXpl::SetActiveXplStatus(const std::array<int32_t, 9>& active) {
  setRun([&](RunRecord& run) { run.activeStatus = active; });
}

#define SA_ADD_XPL(Method, diagnosticClass)                                                                            \
  void dxt_DiagnosticExtractorXpl::Method(int32_t code, int32_t domain, const dia_Values& values) {                    \
    add(Solver::Explicit, {DiagnosticClass::diagnosticClass, code, domain, {}, values});                               \
  }
SA_ADD_XPL(AddError, Error)
SA_ADD_XPL(AddWarning, Warning)
SA_ADD_XPL(AddElementDiagnostic, Element)
SA_ADD_XPL(AddContactDiagnostic, Contact)

void dxt_DiagnosticExtractorXpl::AddXplStatus(int32_t status, int32_t node, const std::string& instance,
                                              const std::array<double, 9>& reals) {
  guarded([&] { diagnostics().addStatus(status, {instance, node}, reals); });
}

int32_t dxt_DiagnosticExtractorXpl::GetNumberOfErrors() const {
  return diagnostics().storedCounts(Solver::Explicit).errors;
}
int32_t dxt_DiagnosticExtractorXpl::GetNumberOfWarnings() const {
  return diagnostics().storedCounts(Solver::Explicit).warnings;
}
int32_t dxt_DiagnosticExtractorXpl::GetNumberOfElementDiagnostics() const {
  return diagnostics().storedCounts(Solver::Explicit).elementDiagnostics;
}
