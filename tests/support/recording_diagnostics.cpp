#include "recording_diagnostics.h"

#include "bcu_ErrorStatus.h"
#include "bcu_ResourceMonitor.h"
#include "dia_Codes.h"
#include "dia_FormatUtils.h"
#include "dia_MetadataTable.h"
#include "dia_TypeCodeUtils.h"
#include "dmpC_CommContainer.h"
#include "dxt_DiagnosticExtractor.h"
#include "dxt_DiagnosticExtractorXpl.h"
#include "host_services.h"
#include "inpM_SolverPartMap.h"
#include "thr_GlobalLock.h"
#include "thr_ThrSingletonRegistry.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <mutex>
#include <sstream>

namespace sharedanalysis::test {
namespace {

std::recursive_mutex mutex;
RecordingDiagnostics host;

void append(std::ostringstream&) {}
template <class First, class... Rest>
void append(std::ostringstream& stream, const First& first, const Rest&... rest) {
  stream << ' ' << first;
  append(stream, rest...);
}
template <class... Values>
void record(const char* call, const Values&... values) {
  std::ostringstream stream;
  stream << call;
  append(stream, values...);
  const std::lock_guard lock(mutex);
  host.calls.push_back(stream.str());
}

std::string hexadecimal(int32_t code) {
  char digits[16];
  return {digits, std::to_chars(digits, digits + sizeof digits, code, 16).ptr};
}

std::string text(const dia_Values& values) {
  std::ostringstream stream;
  stream << '(';
  for (int32_t value : values.ints) stream << " i" << value;
  for (double value : values.reals) stream << " r" << value;
  for (const std::string& value : values.strings) stream << " \"" << value << '"';
  for (const dia_Entity& node : values.nodes) stream << " n" << node.instance << ":" << node.label;
  for (const dia_Entity& element : values.elements) stream << " e" << element.instance << ":" << element.label;
  stream << " )";
  return stream.str();
}

struct Known {
  int32_t code, table;
  dia_Counts counts;
  bool toStatusChannel;
  std::vector<std::string> details;
};
const std::vector<Known>& metadata() {
  static const std::vector<Known> known = {
      {codes::Error, 0, {3, 2, 0, 1, 0}, true, {"Error %I of %I"}},
      {codes::Error + 1, 0, {0, 0, 0, 0, 0}, false, {"variation 0", "Variation one"}},
      {codes::Warning, 0, {0, 0, 1, 0, 1}, true, {"Beware of %S"}},
      {codes::ErrorOfTexts, 0, {0, 0, 2, 0, 0}, false, {"Texts %S and %S"}},
      {codes::Element, 0, {0, 0, 0, 0, 1}, false, {"Element"}},
      {codes::Contact, 1, {0, 1, 0, 2, 0}, false, {"Contact"}},
      {dia_Codes::ExcessiveDistortion, 0, {0, 0, 0, 0, 1}, false, {"Distorted"}},
      {dia_Codes::ExcessiveRotation, 0, {0, 0, 0, 0, 1}, false, {"Rotated"}},
      {dia_Codes::InternalError, 0, {0, 0, 0, 0, 0}, true, {"An internal error has occurred"}},
  };
  return known;
}
const Known* find(int32_t table, int32_t code) {
  for (const Known& known : metadata())
    if (known.code == code && known.table == table) return &known;
  return nullptr;
}

struct Table : dia_MetadataTable {
  int32_t number;
};
Table tables[2] = {{{}, 0}, {{}, 1}};

dia_MetadataTable& tableOf(int32_t number) { return tables[number == 1]; }
int32_t numberOf(const dia_MetadataTable* table) { return static_cast<const Table*>(table)->number; }

struct Communicator : dmpC_Communicator {
  Communicator() = default;
};

} // namespace

RecordingDiagnostics& recordingDiagnostics() { return host; }
void resetRecordingDiagnostics() {
  const auto releases = host.releases;
  host = RecordingDiagnostics();
  host.releases = releases; // what lives in a thread stays registered
  std::fill_n(CWARN, 2, 0);
  std::fill_n(CLINES, 20, 0);
}

} // namespace sharedanalysis::test

using namespace sharedanalysis::test;

int32_t CWARN[2];
int32_t CLINES[20];

// ---- error status, monitor, threads

void bcu_ErrorStatus::setErrorCode(int32_t code) { record("setErrorCode", code); }
int32_t bcu_ErrorStatus::getErrorCode() { return 0; }
void bcu_ResourceMonitor::Mark(const char* text) { record("Mark", text); }
static std::mutex globalLock;
thr_GlobalLock::thr_GlobalLock() { globalLock.lock(); }
thr_GlobalLock::~thr_GlobalLock() { globalLock.unlock(); }
namespace {
struct ThreadEnd {
  std::set<void (*)()> releases;
  ~ThreadEnd() {
    for (void (*release)() : releases) release();
  }
};
thread_local ThreadEnd threadEnd;
} // namespace
void thr_ThrSingletonRegistry::Register(void (*release)()) {
  const std::lock_guard lock(mutex);
  host.releases.insert(release);
  threadEnd.releases.insert(release);
}

// ---- metadata and model

const dia_MetadataTable& dia_MetadataTable::Instance(int32_t table) { return tableOf(table); }
bool dia_MetadataTable::IsValid(int32_t code) const { return find(numberOf(this), code) != nullptr; }
dia_Counts dia_MetadataTable::GetCounts(int32_t code) const {
  const Known* known = find(numberOf(this), code);
  return known == nullptr ? dia_Counts() : known->counts;
}
int32_t dia_MetadataTable::GetNumStringValues(int32_t code) const { return GetCounts(code).strings; }
const std::vector<std::string>& dia_MetadataTable::GetDetailStrings(int32_t code) const {
  static const std::vector<std::string> none;
  const Known* known = find(numberOf(this), code);
  return known == nullptr ? none : known->details;
}
bool dia_MetadataTable::IsForStatusChannel(int32_t code) const {
  const Known* known = find(numberOf(this), code);
  return known != nullptr && known->toStatusChannel;
}
bool dia_TypeCodeUtils::IsError(int32_t code) { return (code & 0x40000000) != 0; }
int32_t dia_TypeCodeUtils::GetVariationNumber(int32_t code) { return code & 31; }
std::string dia_FormatUtils::Substitute(const std::string& detail, const dia_Values& values) {
  std::string result = detail;
  const auto replace = [&](const char* mark, const std::string& by) {
    const std::size_t at = result.find(mark);
    if (at != std::string::npos) result.replace(at, 2, by);
  };
  for (int32_t value : values.ints) replace("%I", std::to_string(value));
  for (const std::string& value : values.strings) replace("%S", value);
  return result;
}
const inpM_SolverPartMap& inpM_SolverPartMap::Instance() {
  static const inpM_SolverPartMap map;
  return map;
}
dia_Entity inpM_SolverPartMap::ConstGetInstanceNodeIdPair(int32_t node) const { return {"INST", node - 1000}; }
dia_Entity inpM_SolverPartMap::ConstGetInstanceElementIdPair(int32_t element) const { return {"INST", element - 2000}; }
std::string inpM_SolverPartMap::GetLabelName(const std::string& reference) const { return "<" + reference + ">"; }
int32_t DSM_VAR_GETI(const int32_t*) { return host.inParts ? 1 : 0; }
void INPM_GETPARTINFOI(const int32_t* element, char* instance, int32_t* local, int64_t length) {
  std::fill_n(instance, length, ' ');
  if (*element >= 9000) return; // of no instance
  std::memcpy(instance, "Wheel-1", 7);
  *local = *element - 2000;
}

// ---- extractors

#define SA_RECORD(Class, method, parameters, ...)                                                                      \
  void Class::method parameters { record(#method __VA_OPT__(, ) __VA_ARGS__); }
dxt_DiagnosticExtractor& dxt_DiagnosticExtractor::Instance() {
  static dxt_DiagnosticExtractor extractor;
  return extractor;
}
SA_RECORD(dxt_DiagnosticExtractor, Enable, ())
SA_RECORD(dxt_DiagnosticExtractor, Disable, ())
SA_RECORD(dxt_DiagnosticExtractor, SetDdbName, (const char* name), name)
void dxt_DiagnosticExtractor::SetExecutionCode(int32_t code) { host.executionCode = code; }
int32_t dxt_DiagnosticExtractor::GetExecutionCode() const { return host.executionCode; }
bool dxt_DiagnosticExtractor::IsModelInParts() const { return host.inParts; }
SA_RECORD(dxt_DiagnosticExtractor, BeginStep,
          (int32_t number, const char* name, int32_t procedure, bool flag1, bool flag2), number, name, procedure, flag1,
          flag2)
SA_RECORD(dxt_DiagnosticExtractor, EndStep, ())
SA_RECORD(dxt_DiagnosticExtractor, BeginIncrement, (int32_t number, double increment), number, increment)
SA_RECORD(dxt_DiagnosticExtractor, EndIncrement, (double time, bool converged), time, converged)
SA_RECORD(dxt_DiagnosticExtractor, BeginAttempt, (double increment), increment)
SA_RECORD(dxt_DiagnosticExtractor, EndAttempt, ())
SA_RECORD(dxt_DiagnosticExtractor, BeginIteration, ())
SA_RECORD(dxt_DiagnosticExtractor, EndIteration, ())
SA_RECORD(dxt_DiagnosticExtractor, BeginContactIteration, ())
SA_RECORD(dxt_DiagnosticExtractor, EndContactIteration, ())
SA_RECORD(dxt_DiagnosticExtractor, SetIterationConverged, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetContactIterationConverged, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetAttemptNeedsReordering, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetIterationSevereDiscontinuity, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetIterationPenetrationToleranceExceeded, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetIterationSeparationToleranceTooLarge, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetRenumbered, (bool flag), flag)
SA_RECORD(dxt_DiagnosticExtractor, SetStepIncrementationControls,
          (int32_t mode, double r1, double r2, double r3, double r4, int32_t n), mode, r1, r2, r3, r4, n)
SA_RECORD(dxt_DiagnosticExtractor, SetStepSolver, (int32_t solver), solver)
SA_RECORD(dxt_DiagnosticExtractor, SetStepExtrapolation, (int32_t extrapolation), extrapolation)
SA_RECORD(dxt_DiagnosticExtractor, SetStepCharacteristicElementLength, (double length), length)
SA_RECORD(dxt_DiagnosticExtractor, SetStepUnsymm, ())
SA_RECORD(dxt_DiagnosticExtractor, SetStepNlgeom, ())
SA_RECORD(dxt_DiagnosticExtractor, SetStepStabilizeFactor, (double factor), factor)
SA_RECORD(dxt_DiagnosticExtractor, AddError, (int32_t code, const dia_Values& values), hexadecimal(code), text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddWarning, (int32_t code, const dia_Values& values), hexadecimal(code),
          text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddElementDiagnostic, (int32_t code, const dia_Values& values), hexadecimal(code),
          text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddContactDiagnostic, (int32_t code, const dia_Values& values), hexadecimal(code),
          text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddResidualDiagnostic, (int32_t field, int32_t kind, const dia_Values& values),
          field, kind, text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddCompatibilityDiagnostic, (int32_t constraint, const dia_Values& values),
          constraint, text(values))
SA_RECORD(dxt_DiagnosticExtractor, AddCutbackDiagnostic, (int32_t code), code)
SA_RECORD(dxt_DiagnosticExtractor, AddInternalError, (const char* message), message)

#define SA_RECORD_XPL(method, parameters, ...)                                                                         \
  void dxt_DiagnosticExtractorXpl::method parameters { record("Xpl " #method __VA_OPT__(, ) __VA_ARGS__); }
dxt_DiagnosticExtractorXpl& dxt_DiagnosticExtractorXpl::Instance() {
  static dxt_DiagnosticExtractorXpl extractor;
  return extractor;
}
SA_RECORD_XPL(Enable, ())
SA_RECORD_XPL(Disable, ())
SA_RECORD_XPL(SetDdbName, (const char* name), name)
void dxt_DiagnosticExtractorXpl::SetExecutionCode(int32_t code) { host.executionCodeXpl = code; }
int32_t dxt_DiagnosticExtractorXpl::GetExecutionCode() const { return host.executionCodeXpl; }
bool dxt_DiagnosticExtractorXpl::IsModelInParts() const { return host.inParts; }
SA_RECORD_XPL(SetNumDomains, (int32_t domains), domains)
SA_RECORD_XPL(SetXplDoublePrecision, (bool flag), flag)
SA_RECORD_XPL(SetRenumbered, (bool flag), flag)
SA_RECORD_XPL(SetValid, (bool flag), flag)
SA_RECORD_XPL(BeginStep, (int32_t number, const char* name, int32_t procedure), number, name, procedure)
SA_RECORD_XPL(EndStep, ())
SA_RECORD_XPL(BeginIncrement, (int32_t number, double increment), number, increment)
SA_RECORD_XPL(EndIncrement, (double time, bool flag), time, flag)
SA_RECORD_XPL(AddError, (int32_t code, int32_t domain, const dia_Values& values), hexadecimal(code), domain,
              text(values))
SA_RECORD_XPL(AddWarning, (int32_t code, int32_t domain, const dia_Values& values), hexadecimal(code), domain,
              text(values))
SA_RECORD_XPL(AddElementDiagnostic, (int32_t code, int32_t domain, const dia_Values& values), hexadecimal(code), domain,
              text(values))
SA_RECORD_XPL(AddContactDiagnostic, (int32_t code, int32_t domain, const dia_Values& values), hexadecimal(code), domain,
              text(values))
SA_RECORD_XPL(AddInternalError, (const char* message), message)
void dxt_DiagnosticExtractorXpl::AddXplStatus(int32_t status, int32_t node, const std::string& instance,
                                              const std::array<double, 9>& reals) {
  record("Xpl AddXplStatus", status, node, instance, reals.front(), reals.back());
}
void dxt_DiagnosticExtractorXpl::SetActiveXplStatus(const std::array<int32_t, 9>& active) {
  record("Xpl SetActiveXplStatus", active.front(), active.back());
}
int32_t dxt_DiagnosticExtractorXpl::GetNumberOfErrors() const { return 11; }
int32_t dxt_DiagnosticExtractorXpl::GetNumberOfWarnings() const { return 12; }
int32_t dxt_DiagnosticExtractorXpl::GetNumberOfElementDiagnostics() const { return 13; }

// ---- communication

dmpC_Communicator& dmpC_CommContainer::GetCommunicator() {
  static Communicator communicator;
  return communicator;
}
int32_t dmpC_Communicator::GetRank() const { return host.rank; }
int32_t dmpC_Communicator::GetSize() const { return host.ranks; }
bool dmpC_Communicator::Send(const void* data, int64_t bytes, int32_t destination, int32_t type, int32_t tag) {
  if (host.failSends) return false;
  host.sent.push_back({destination, type, tag, std::string(static_cast<const char*>(data), bytes)});
  return true;
}
int64_t dmpC_Communicator::Receive(void* data, int64_t capacity, int32_t source, int32_t, int32_t) {
  auto& queue = host.incoming[source];
  if (queue.empty()) return -1;
  const std::string message = queue.front();
  queue.pop_front();
  const auto bytes = static_cast<int64_t>(message.size());
  if (bytes <= capacity) std::memcpy(data, message.data(), message.size());
  return bytes;
}
