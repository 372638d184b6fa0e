// Recorded calls: the exact arguments and results, as docs/checking-and-replay.md describes the file.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "table.h"

namespace sa::checked {

constexpr char kMagic[8] = {'S', 'H', 'A', 'N', 'R', 'E', 'C', '\n'};
constexpr std::uint32_t kVersion = 1, kOrder = 0x01020304U, kMark = 0x43455253U;
constexpr std::size_t kFileHead = 16, kRecordHead = 16;
// What no recording of a solver reaches, so that a damaged one fills no memory.
constexpr std::uint64_t kMostBytes = std::uint64_t{1} << 30, kMostReach = std::uint64_t{1} << 36;

// Elements first .. first + count - 1 of an array.
struct Run {
  std::uint64_t first = 0, count = 0;
  std::uint64_t end() const { return first + count; }
};

struct RecordedArgument {
  enum class State : std::uint8_t { null, notKept, kept };
  State state = State::notKept;
  Type type = Type::none;
  Direction direction = Direction::in;
  std::vector<Run> runs; // increasing, apart
  std::vector<unsigned char> before, after;

  std::uint64_t elements() const {
    std::uint64_t sum = 0;
    for (const Run& run : runs) sum += run.count;
    return sum;
  }
  bool isRead() const { return direction != Direction::out; }
  bool isWritten() const { return direction != Direction::in; }
};

struct RecordedCall {
  std::uint64_t number = 0, thread = 0, nanoseconds = 0;
  std::int64_t increment = 0;
  std::string routine;
  std::uint32_t declaration = 0; // digest of the routine's declaration
  std::vector<RecordedArgument> arguments;
  std::vector<unsigned char> result;
};

std::uint32_t digestOf(const Routine& routine);
std::uint64_t checksum(std::string_view bytes);
std::string fileHead();
// With mark, length and checksum.
std::string encode(const RecordedCall& call);
// Nothing, and why, for a body that holds no call.
std::optional<RecordedCall> decode(std::string_view body, std::string& fault);

// Reads a recording call by call.
class Recording {
public:
  explicit Recording(std::string bytes);
  static std::optional<Recording> open(const std::string& file, std::string& fault);
  std::optional<RecordedCall> next();
  void rewind() { at_ = kFileHead; }
  // What was passed over: damaged calls, an unfinished one at the end.
  const std::vector<std::string>& faults() const { return faults_; }

private:
  std::string bytes_;
  std::size_t at_ = kFileHead;
  std::vector<std::string> faults_;
};

} // namespace sa::checked
