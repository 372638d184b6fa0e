#include "recorder.h"

#include "checks.h"
#include "options.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace sa::checked {
namespace {

// State of the library or of its host is no argument: such calls cannot be made again.
bool isRecordable(const Routine& routine) {
  const std::string_view file = routine.file;
  for (const char* family : {"acd/", "lifecycle.h", "messages.h", "storage.h", "material_variables.h"})
    if (file.find(family) != std::string_view::npos) return false;
  return true;
}

void say(const std::string& text) {
  const std::string line = "SHAREDANALYSIS_RECORD: " + text + "\n";
  [[maybe_unused]] const ssize_t n = ::write(STDERR_FILENO, line.data(), line.size());
}

std::vector<unsigned char> valuesOf(const unsigned char* address, const std::vector<Run>& runs, std::size_t size) {
  std::vector<unsigned char> bytes;
  for (const Run& run : runs) bytes.insert(bytes.end(), address + run.first * size, address + run.end() * size);
  return bytes;
}

bool names(const RecordedArgument& a, std::int64_t element) {
  for (std::size_t at = 0; at + 4 <= a.before.size(); at += 4) {
    std::int32_t value;
    std::memcpy(&value, &a.before[at], sizeof value);
    if (value == element) return true;
  }
  return false;
}

bool isFinite(const RecordedArgument& a) {
  for (std::size_t at = 0; at + 8 <= a.after.size() && a.type == Type::real; at += 8) {
    double value;
    std::memcpy(&value, &a.after[at], sizeof value);
    if (!std::isfinite(value)) return false;
  }
  return true;
}

} // namespace

RecordFilter RecordFilter::read(const char* variable) {
  RecordFilter filter;
  std::string_view rest = variable;
  for (bool isFirst = true; !rest.empty(); isFirst = false) {
    const std::size_t end = std::min(rest.find(','), rest.size());
    const std::string word(rest.substr(0, end));
    rest.remove_prefix(std::min(end + 1, rest.size()));
    const std::size_t equals = word.find('=');
    const std::string name = word.substr(0, equals), value = equals == std::string::npos ? "" : word.substr(equals + 1);
    char* next = nullptr;
    Range range;
    range.low = range.high = std::strtoll(value.c_str(), &next, 10);
    if (*next == '-') range.high = std::strtoll(next + 1, &next, 10);
    const bool isNumber = !value.empty() && *next == '\0';
    if (isFirst)
      filter.file = word;
    else if (name == "routine")
      filter.routine = value;
    else if (name == "nan" && value.empty())
      filter.notFinite = true;
    else if (name == "call" && isNumber)
      filter.calls = range;
    else if (name == "increment" && isNumber)
      filter.increments = range;
    else if (name == "element" && isNumber)
      filter.element = range.low;
    else if (name == "limit" && isNumber)
      filter.limit = static_cast<std::uint64_t>(range.low) << 20;
    else
      filter.errors.push_back("do not understand \"" + word + "\"");
  }
  if (const std::size_t mark = filter.file.find("%p"); mark != std::string::npos)
    filter.file.replace(mark, 2, std::to_string(getpid()));
  return filter;
}

Recorder::Recorder(const RecordFilter& filter) : filter_(filter), calls_(routines().size()) {
  for (const Routine& routine : routines())
    fits_.push_back(isRecordable(routine) && fits(routine.name, filter.routine));
  for (const std::string& error : filter.errors) say(error);
}

bool Recorder::wants(unsigned number) {
  if (!fits_[number] || isOff_.load(std::memory_order_relaxed)) return false;
  const std::int64_t call = ++calls_[number];
  return filter_.calls.has(call) && filter_.increments.has(increment_);
}

std::vector<Run> runsOf(const Layout& layout, std::size_t k, Memory& memory) {
  const Argument& a = layout.arguments()[k];
  const Array& array = layout.array(k);
  std::vector<Run> runs;
  const std::size_t size = array.elementSize;
  if (a.type == Type::texts || size == 0) return runs;
  const auto known = [&](std::uint64_t count) {
    if (count > 0 && memory.canRead(array.address, count * size)) runs.push_back({0, count});
    return runs;
  };
  if (a.has(kScalar) || a.has(kByValue)) return known(1);
  if (layout.isEmpty()) return runs;
  if (a.is(Role::table) && array.isOpen) {
    for (const TableUse& use : usesOfTable(layout, memory))
      if (use.argument == k)
        runs.push_back({static_cast<std::uint64_t>(use.first - 1), static_cast<std::uint64_t>(use.count)});
    std::sort(runs.begin(), runs.end(), [](const Run& x, const Run& y) { return x.first < y.first; });
    std::vector<Run> joined;
    for (const Run& run : runs) {
      if (run.count == 0) continue;
      if (joined.empty() || run.first > joined.back().end())
        joined.push_back(run);
      else
        joined.back().count = std::max(joined.back().end(), run.end()) - joined.back().first;
    }
    return joined;
  }
  if (array.isAmbiguous) {
    // columns that a table names, or the first number
    std::int64_t columns = 1;
    for (const TableUse& use : usesOfTable(layout, memory))
      if (use.argument == k) columns = std::max(columns, use.count);
    return known(static_cast<std::uint64_t>(array.lines == Lines::points ? columns * array.lineCount : 1));
  }
  for (const Interval& i : layout.intervals(k, layout.linesOf(k))) {
    if (!memory.canRead(i.begin, static_cast<std::size_t>(i.end - i.begin))) return {};
    if (i.begin < i.end)
      runs.push_back({static_cast<std::uint64_t>(i.begin - array.address) / size,
                      static_cast<std::uint64_t>(i.end - i.begin) / size});
  }
  return runs;
}

bool Recorder::begin(RecordedCall& call, const Layout& layout, Memory& memory) const {
  const Routine& routine = layout.routine();
  call.increment = increment_;
  call.routine = routine.name;
  call.declaration = digestOf(routine);
  call.thread = static_cast<std::uint64_t>(syscall(SYS_gettid));
  bool isNamed = filter_.element == 0;
  for (std::size_t k = 0; k < layout.arguments().size(); ++k) {
    const Argument& a = layout.arguments()[k];
    RecordedArgument kept;
    kept.type = a.type;
    kept.direction = a.direction;
    const auto* address = static_cast<const unsigned char*>(layout.address(k));
    if (address == nullptr) {
      kept.state = RecordedArgument::State::null;
    } else if (!a.is(Role::unread)) {
      kept.runs = runsOf(layout, k, memory);
      if (!kept.runs.empty()) {
        kept.state = RecordedArgument::State::kept;
        if (a.isRead()) kept.before = valuesOf(address, kept.runs, sizeOf(a.type));
      }
    }
    const bool isNumbers = a.is(Role::entity) || a.is(Role::set) || std::string_view(a.name) == "elements";
    isNamed = isNamed || (isNumbers && names(kept, filter_.element));
    call.arguments.push_back(std::move(kept));
  }
  return isNamed;
}

void Recorder::finish(RecordedCall& call, const Layout& layout, const void* result, std::chrono::nanoseconds time) {
  bool areFinite = true;
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    RecordedArgument& kept = call.arguments[k];
    if (kept.state != RecordedArgument::State::kept || !kept.isWritten()) continue;
    kept.after = valuesOf(static_cast<const unsigned char*>(layout.address(k)), kept.runs, sizeOf(kept.type));
    areFinite = areFinite && isFinite(kept);
  }
  if (filter_.notFinite && areFinite) return;
  const auto* bytes = static_cast<const unsigned char*>(result);
  if (result != nullptr) call.result.assign(bytes, bytes + sizeOf(layout.routine().result));
  call.nanoseconds = static_cast<std::uint64_t>(time.count());
  call.number = ++number_;
  write(encode(call));
}

namespace {

// Nothing but an older recording is written over.
bool mayBeReplaced(int file) {
  char head[sizeof kMagic];
  const ssize_t size = pread(file, head, sizeof head, 0);
  return size == 0 || (size == sizeof head && std::memcmp(head, kMagic, sizeof head) == 0);
}

} // namespace

// One write for each call, at the end of the file: whole calls, whatever the threads do and whenever the process is killed.
void Recorder::write(const std::string& record) {
  static const int file = [this] {
    std::string name = filter_.file;
    int opened = open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (opened >= 0 && flock(opened, LOCK_EX | LOCK_NB) != 0) { // of another process of the analysis
      close(opened);
      name += "." + std::to_string(getpid());
      opened = open(name.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    }
    if (opened >= 0 && !mayBeReplaced(opened)) {
      say(name + " is no recording and stays as it is; nothing is recorded");
      return -1;
    }
    const std::string head = fileHead();
    if (opened < 0 || ftruncate(opened, 0) != 0 ||
        ::write(opened, head.data(), head.size()) != static_cast<ssize_t>(head.size())) {
      say("cannot write " + name);
      return -1;
    }
    return opened;
  }();
  if (file < 0 || isOff_) return;
  if (written_ += record.size(); written_ > filter_.limit) {
    if (!isOff_.exchange(true)) say("the limit is reached, nothing more is recorded");
    return;
  }
  if (::write(file, record.data(), record.size()) != static_cast<ssize_t>(record.size()) && !isOff_.exchange(true))
    say("a call could not be written, nothing more is recorded");
}

} // namespace sa::checked
