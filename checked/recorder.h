// Writes calls to a file while they are made: SHAREDANALYSIS_RECORD.
#pragma once

#include <atomic>
#include <chrono>
#include <limits>

#include "layout.h"
#include "memory.h"
#include "record.h"

namespace sa::checked {

// FILE, then words behind commas: routine=PATTERN, call=N or N-M (of each routine), increment=N or N-M, element=N, nan,
// limit=MEGABYTES.  %p in the name is the process.
struct RecordFilter {
  struct Range {
    std::int64_t low = std::numeric_limits<std::int64_t>::min(), high = std::numeric_limits<std::int64_t>::max();
    bool has(std::int64_t value) const { return value >= low && value <= high; }
  };
  std::string file, routine = "*";
  Range calls, increments;
  std::int64_t element = 0; // 0 for any
  bool notFinite = false;
  std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();
  std::vector<std::string> errors;

  static RecordFilter read(const char* variable);
};

class Recorder {
public:
  explicit Recorder(const RecordFilter& filter);
  // Counts the call.  The routine decides, its number, and the increment; the rest is seen later.
  bool wants(unsigned number);
  void setIncrement(std::int64_t increment) { increment_ = increment; }
  std::int64_t increment() const { return increment_; }

  // Before and after the call that is recorded; nothing of it is kept where it does not pass the filter.
  bool begin(RecordedCall& call, const Layout& layout, Memory& memory) const;
  void finish(RecordedCall& call, const Layout& layout, const void* result, std::chrono::nanoseconds time);

private:
  void write(const std::string& record);
  RecordFilter filter_;
  std::vector<bool> fits_;
  std::vector<std::atomic<std::int64_t>> calls_;
  std::atomic<std::int64_t> increment_{0};
  std::atomic<std::uint64_t> number_{0}, written_{0};
  std::atomic<bool> isOff_{false};
};

// Elements of the argument that the call may use, where they are known and may be read.
std::vector<Run> runsOf(const Layout& layout, std::size_t k, Memory& memory);

} // namespace sa::checked
