#include "recording_host.h"

#include "dsm_ker_ThreadData.h"
#include "host_services.h"
#include "ipm_MessageTransmit.h"
#include "kprC_Step.h"
#include "thr_ErrorInThread.h"
#include "utl_Version.h"
#include "utl_getDate.h"
#include "utl_getTime.h"

#include <mutex>

namespace sharedanalysis::test {
namespace {

std::mutex mutex;
RecordingHost host;
dsm_ker_ThreadData threadData{7, 500};

void record(std::string call) {
  const std::lock_guard lock(mutex);
  host.calls.push_back(std::move(call));
}

std::string text(const char* start, int64_t length) { return {start, start + length}; }

int32_t copyField(const std::string& field, char* destination, int32_t capacity) {
  const auto length = std::min(static_cast<int32_t>(field.size()), capacity);
  std::copy_n(field.data(), length, destination);
  return length;
}

// The component's own part of the contract, without its count: the library is to call it once.
void startOrStop(const char* call, int32_t* counter, int32_t step) {
  record(std::string(call) + " " + std::to_string(*counter));
  *counter += step;
}

} // namespace

RecordingHost& recordingHost() { return host; }
void resetRecordingHost() {
  host = RecordingHost();
  threadData = {7, 500};
}

Calls takeLines(int32_t unit) {
  Calls texts;
  for (const RecordedLine& line : host.lines) {
    EXPECT_TRUE(unit == 0 || line.unit == unit) << line.unit;
    texts.push_back(line.text);
  }
  host.lines.clear();
  return texts;
}
Calls takeMessages() {
  Calls messages;
  for (const std::string& line : takeLines(-6))
    if (line.starts_with("***"))
      messages.push_back(line);
    else if (line != " ")
      messages.back() += line.substr(line.find_first_not_of(' '));
  return messages;
}
Calls takeStatuses() {
  Calls texts;
  for (const RecordedStatus& s : host.statuses)
    texts.push_back(s.service + "|" + s.type + "|" + s.text + "|" + s.firstString);
  host.statuses.clear();
  return texts;
}
Calls takeCalls() { return std::exchange(host.calls, {}); }
void expectEnd(const std::string& text) {
  EXPECT_TRUE(host.lines.size() >= 3 && host.lines.front().text == " " && host.lines.back().text == " ");
  EXPECT_EQ(takeMessages(), Calls{"***ERROR: " + text});
  EXPECT_EQ(host.statuses.size(), 2u);
  EXPECT_TRUE(!host.statuses.empty() && host.statuses.back().type.starts_with("Aborted"));
  EXPECT_EQ(std::count(host.calls.begin(), host.calls.end(), "DMPC_TERMINATECOMM 1"), 1);
  resetRecordingHost();
}
void expectSilence() { EXPECT_TRUE(host.lines.empty() && host.statuses.empty() && host.calls.empty()); }

} // namespace sharedanalysis::test

using namespace sharedanalysis::test;

void LFC_XUT_XPLMSGC(const char* line, const int32_t* unit, const int32_t* width, const int32_t* thread,
                     const int32_t* message, int64_t lineLength) {
  const std::lock_guard lock(mutex);
  host.lines.push_back({__func__, text(line, lineLength), *unit, *width, *thread, *message});
}

void lfc_xut_xplmsgC_c(const char* line, int32_t unit, int32_t width, int32_t thread, int32_t message,
                       int64_t lineLength) {
  const std::lock_guard lock(mutex);
  // Both ways to find the end of the line agree, or the recorded text shows it.
  const std::string counted = text(line, lineLength);
  host.lines.push_back(
      {__func__, counted == line ? counted : "unterminated: " + counted, unit, width, thread, message});
}

void LFC_XUT_XPLMSGFLUSH(const int32_t* unit) { record(std::string(__func__) + " " + std::to_string(*unit)); }

void IPM_MESSAGE(const char* type, const char* messageTemplate, const int32_t* ints, const double* reals,
                 const char* strings, const int32_t* identity, int64_t typeLength, int64_t textLength,
                 int64_t stringLength) {
  const std::lock_guard lock(mutex);
  host.statuses.push_back({__func__, text(type, typeLength), text(messageTemplate, textLength),
                           strings == nullptr ? "" : text(strings, stringLength), ints, reals, strings, identity[0],
                           identity[1]});
  host.calls.emplace_back(__func__);
}

void ipm_message_c(const char* type, const char* messageTemplate, const int32_t* ints, const double* reals,
                   const char* const* strings, const int32_t* identity) {
  const std::lock_guard lock(mutex);
  host.statuses.push_back({__func__, type, messageTemplate, strings == nullptr ? "" : *strings, ints, reals, strings,
                           identity[0], identity[1]});
}

void tvkerrC(int32_t severity, const char* messageTemplate, const int32_t* ints, const double*, const char* const*) {
  record(std::string(__func__) + " " + std::to_string(severity) + " " + messageTemplate + std::to_string(*ints));
}

int32_t DSM_KER_THREADID(void) { return host.thread; }
int32_t DSM_KER_MESSAGEID(void) {
  const std::lock_guard lock(mutex);
  return host.nextMessage++;
}
int32_t DSM_KER_LASTMESSAGEID(void) { return host.nextMessage - 1; }

template <>
dsm_ker_ThreadData& thr_ThreadSingleton<dsm_ker_ThreadData>::Instance() {
  return threadData;
}

void LFC_XUT_ERRMSG(const char* message, int64_t length) {
  record(std::string(__func__) + " " + text(message, length));
}
void LFC_XUT_ABORT(void) { record(__func__); }

int32_t DMPC_GETRANK(void) { return host.rank; }
int32_t ELI_GETKILLSIGNAL(void) { return host.killSignal; }
void DXT_SETJOBSTATUS_XPL(const int32_t* status) { record(std::string(__func__) + " " + std::to_string(*status)); }
void DMPC_TERMINATECOMM(const int32_t* code) { record(std::string(__func__) + " " + std::to_string(*code)); }
void thr_ErrorInThread(int32_t state) { record(std::string(__func__) + " " + std::to_string(state)); }

ipm_MessageTransmit& ipm_MessageTransmit::Instance() {
  static ipm_MessageTransmit transmit;
  return transmit;
}
void ipm_MessageTransmit::SetClosing(bool closing) {
  record(std::string(__func__) + " " + (closing ? "true" : "false"));
}

#define SA_RECORD_COMPONENT(component)                                                                                 \
  void component##_initialize(int32_t* counter) { startOrStop(__func__, counter, 1); }                                 \
  void component##_finalize(int32_t* counter) { startOrStop(__func__, counter, -1); }
SA_HOST_COMPONENTS(SA_RECORD_COMPONENT)

// The keyword of a step class is its name here.
#define SA_RECORD_STEP(step)                                                                                           \
  const char* step::constructorCmd() { return #step; }
SA_HOST_STEPS(SA_RECORD_STEP)

const utl_Version& utl_Version::Instance() {
  static const utl_Version version;
  return version;
}
const char* utl_Version::Title(bool withOptionalPart) const {
  return withOptionalPart ? "Recorder 2 (beta)" : "Recorder 2";
}
int32_t utl_getDate(char* destination, int32_t capacity) { return copyField(host.date, destination, capacity); }
int32_t utl_getTime(char* destination, int32_t capacity) { return copyField(host.time, destination, capacity); }
