#include "received_blocks.h"

#include "acd.h"
#include "tests/support/recording_diagnostics.h"

namespace sharedanalysis::test {

// Messages: a control byte, whose low bit says whether a word of the true length comes before the block, and the block's
// length in two bytes.  The owner takes them until nothing is left.
void receiveAnything(const uint8_t* data, std::size_t size) {
  RecordingDiagnostics& host = recordingDiagnostics();
  host.calls.clear();
  host.rank = 0;
  host.ranks = 2;
  auto& queue = host.incoming[1];
  queue.clear();
  for (std::size_t at = 0; at + 3 <= size;) {
    std::size_t length = data[at + 1] + 256u * data[at + 2];
    const bool announced = (data[at] & 1) != 0;
    at += 3;
    length = std::min(length, size - at);
    if (announced) queue.push_back(word(static_cast<int32_t>(length)));
    queue.emplace_back(reinterpret_cast<const char*>(data + at), length);
    at += length;
  }
  acd_handler_setactive_xpl_c();
  acd_comm_blocks();
}

} // namespace sharedanalysis::test

#ifdef SA_FUZZ
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  sharedanalysis::test::receiveAnything(data, size);
  return 0;
}
#endif
