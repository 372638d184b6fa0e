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

#include <charconv>
#include <mutex>

namespace sharedanalysis::test {
namespace {

std::recursive_mutex mutex;
RecordingDiagnostics host;

template <class... Values>
void record(const char* call, const Values&... values) {
  std::ostringstream stream;
  stream << call;
  ((stream << ' ' << values), ...);
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
struct Table : dia_MetadataTable {
  int32_t number;
};
const Table tables[2] = {{{}, 0}, {{}, 1}};

const Known unknown{};
const Known& find(const dia_MetadataTable* table, int32_t code) {
  for (const Known& known : metadata())
    if (known.code == code && known.table == static_cast<const Table*>(table)->number) return known;
  return unknown;
}

struct Communicator : dmpC_Communicator {
  Communicator() = default;
};

} // namespace

RecordingDiagnostics& recordingDiagnostics() { return host; }
void resetRecordingDiagnostics() {
  host = RecordingDiagnostics();
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
void thr_ThrSingletonRegistry::Register(void (*release)()) { threadEnd.releases.insert(release); }

// ---- metadata and model

const dia_MetadataTable& dia_MetadataTable::Instance(int32_t table) { return tables[table == 1]; }
bool dia_MetadataTable::IsValid(int32_t code) const { return &find(this, code) != &unknown; }
dia_Counts dia_MetadataTable::GetCounts(int32_t code) const { return find(this, code).counts; }
int32_t dia_MetadataTable::GetNumStringValues(int32_t code) const { return GetCounts(code).strings; }
const std::vector<std::string>& dia_MetadataTable::GetDetailStrings(int32_t code) const {
  return find(this, code).details;
}
bool dia_MetadataTable::IsForStatusChannel(int32_t code) const { return find(this, code).toStatusChannel; }
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

// clang-format off
#define SA_RECORD(method, parameters, ...)                                                                           \
  void dxt_DiagnosticExtractor::method parameters { record(#method __VA_OPT__(, ) __VA_ARGS__); }
#define SA_RECORD_XPL(method, parameters, ...)                                                                       \
  void dxt_DiagnosticExtractorXpl::method parameters { record("Xpl " #method __VA_OPT__(, ) __VA_ARGS__); }
#define SA_RECORD_BOTH(...) SA_RECORD(__VA_ARGS__) SA_RECORD_XPL(__VA_ARGS__)
#define SA_RECORD_CODES(method)                                                                                      \
  SA_RECORD(method, (int32_t code, const dia_Values& values), hexadecimal(code), text(values))                       \
  SA_RECORD_XPL(method, (int32_t code, int32_t domain, const dia_Values& v), hexadecimal(code), domain, text(v))
#define SA_EXTRACTOR(Class, code)                                                                                    \
  Class& Class::Instance() {                                                                                         \
    static Class extractor;                                                                                          \
    return extractor;                                                                                                \
  }                                                                                                                  \
  void Class::SetExecutionCode(int32_t value) { code = value; }                                                      \
  int32_t Class::GetExecutionCode() const { return code; }                                                           \
  bool Class::IsModelInParts() const { return host.inParts; }
SA_EXTRACTOR(dxt_DiagnosticExtractor, host.executionCode)
SA_EXTRACTOR(dxt_DiagnosticExtractorXpl, host.executionCodeXpl)
SA_RECORD_BOTH(Enable, ())
SA_RECORD_BOTH(Disable, ())
SA_RECORD_BOTH(SetDdbName, (const char* name), name)
SA_RECORD_BOTH(SetRenumbered, (bool flag), flag)
SA_RECORD_BOTH(EndStep, ())
SA_RECORD_BOTH(BeginIncrement, (int32_t number, double increment), number, increment)
SA_RECORD_BOTH(EndIncrement, (double time, bool converged), time, converged)
SA_RECORD_BOTH(AddInternalError, (const char* message), message)
SA_RECORD_CODES(AddError)
SA_RECORD_CODES(AddWarning)
SA_RECORD_CODES(AddElementDiagnostic)
SA_RECORD_CODES(AddContactDiagnostic)
SA_RECORD(BeginStep, (int32_t number, const char* name, int32_t procedure, bool flag1, bool flag2),
          number, name, procedure, flag1, flag2)
SA_RECORD(BeginAttempt, (double increment), increment)
SA_RECORD(EndAttempt, ())
SA_RECORD(BeginIteration, ())
SA_RECORD(EndIteration, ())
SA_RECORD(BeginContactIteration, ())
SA_RECORD(EndContactIteration, ())
SA_RECORD(SetIterationConverged, (bool flag), flag)
SA_RECORD(SetContactIterationConverged, (bool flag), flag)
SA_RECORD(SetAttemptNeedsReordering, (bool flag), flag)
SA_RECORD(SetIterationSevereDiscontinuity, (bool flag), flag)
SA_RECORD(SetIterationPenetrationToleranceExceeded, (bool flag), flag)
SA_RECORD(SetIterationSeparationToleranceTooLarge, (bool flag), flag)
SA_RECORD(SetStepIncrementationControls, (int32_t mode, double r1, double r2, double r3, double r4, int32_t n),
          mode, r1, r2, r3, r4, n)
SA_RECORD(SetStepSolver, (int32_t solver), solver)
SA_RECORD(SetStepExtrapolation, (int32_t extrapolation), extrapolation)
SA_RECORD(SetStepCharacteristicElementLength, (double length), length)
SA_RECORD(SetStepUnsymm, ())
SA_RECORD(SetStepNlgeom, ())
SA_RECORD(SetStepStabilizeFactor, (double factor), factor)
SA_RECORD(AddResidualDiagnostic, (int32_t field, int32_t kind, const dia_Values& values), field, kind, text(values))
SA_RECORD(AddCompatibilityDiagnostic, (int32_t constraint, const dia_Values& values), constraint, text(values))
SA_RECORD(AddCutbackDiagnostic, (int32_t code), code)
SA_RECORD_XPL(SetNumDomains, (int32_t domains), domains)
SA_RECORD_XPL(SetXplDoublePrecision, (bool flag), flag)
SA_RECORD_XPL(SetValid, (bool flag), flag)
SA_RECORD_XPL(BeginStep, (int32_t number, const char* name, int32_t procedure), number, name, procedure)
using StatusReals = std::array<double, 9>;
using StatusFlags = std::array<int32_t, 9>;
SA_RECORD_XPL(AddXplStatus, (int32_t status, int32_t node, const std::string& instance, const StatusReals& reals),
              status, node, instance, reals.front(), reals.back())
SA_RECORD_XPL(SetActiveXplStatus, (const StatusFlags& active), active.front(), active.back())
// clang-format on
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
