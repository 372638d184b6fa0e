// A host that records what the library asks of it.  The test program defines the services itself.
#pragma once

#include "tests/support/test.h"

namespace sharedanalysis::test {

using Calls = std::vector<std::string>; // and lines, and messages

// One line of a channel.
struct RecordedLine {
  std::string service, text;
  int32_t unit, width, thread, message;
};

// One record of the status channel, with the argument arrays as they came.
struct RecordedStatus {
  std::string service, type, text;
  std::string firstString; // empty without strings
  const int32_t* ints;
  const double* reals;
  const void* strings;
  int32_t thread, message;
};

struct RecordingHost {
  std::vector<RecordedLine> lines;
  std::vector<RecordedStatus> statuses;
  Calls calls; // every other service with its arguments, in order

  // what the services answer
  int32_t rank = 0, killSignal = 0;
  int32_t thread = 3, nextMessage = 100;
  std::string date = "21-Nov-2026", time = "08:03:28";
};

// Records are made under a lock; read them when no other thread is inside the library.
RecordingHost& recordingHost();
void resetRecordingHost();
// Texts of the lines so far, all on one channel where it is given.  What is taken is no longer there.
Calls takeLines(int32_t unit = 0);
// Messages of the message file, each as one text: the header, and without their blanks the lines that are continued under it.
Calls takeMessages();
// "service|type|text|first string" of the records of the status channel so far, and every other call so far.
Calls takeStatuses();
Calls takeCalls();
// One error, between blank lines, has ended the analysis by the exit code of errors.  The host forgets all.
void expectEnd(const std::string& text);
void expectSilence();

} // namespace sharedanalysis::test
