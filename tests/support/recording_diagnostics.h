// A host that records the diagnostics it is given: extractors, metadata, part map, error status and a communicator whose
// messages a test writes and reads.
#pragma once

#include "recording_host.h"

#include <deque>

namespace sharedanalysis::test {

struct RecordingDiagnostics {
  Calls calls; // of both extractors, the resource monitor and the error status, in order

  // what the services answer
  bool inParts = false;
  int32_t executionCode = 0, executionCodeXpl = 0;
  int32_t rank = 0, ranks = 1;
  bool failSends = false;

  // messages: those that ranks have sent to this process, and those that it has sent
  std::map<int32_t, std::deque<std::string>> incoming;
  struct Sent {
    int32_t destination, type, tag;
    std::string bytes;
  };
  std::vector<Sent> sent;
};

RecordingDiagnostics& recordingDiagnostics();
void resetRecordingDiagnostics();

// Tests that begin with both hosts as they are at the start.
class RecordedDiagnostics : public testing::Test {
protected:
  void SetUp() override {
    resetRecordingHost();
    resetRecordingDiagnostics();
  }
  template <class Body>
  static Calls callsOf(Body body) {
    recordingDiagnostics().calls.clear();
    body();
    return recordingDiagnostics().calls;
  }
};

// Codes of the recorder's metadata.
namespace codes {
constexpr int32_t Error = 0x41000100;        // 3 integers, 2 reals, 1 node; goes to the status channel
constexpr int32_t Warning = 0x01000200;      // 1 string, 1 element
constexpr int32_t ErrorOfTexts = 0x41000300; // 2 strings
constexpr int32_t Element = 0x02000400;      // 1 element; no error
constexpr int32_t Contact = 0x03000500;      // table 1: 1 real, 2 nodes
constexpr int32_t Unknown = 0x01000600;
} // namespace codes

// The bytes of a number.
template <class Number>
std::string word(Number value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

} // namespace sharedanalysis::test
