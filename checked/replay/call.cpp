#include "call.h"

#include "checked/checks.h"

#include <algorithm>
#include <cmath>
#include <csetjmp>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <stdexcept>
#include <sys/mman.h>
#include <unistd.h>

namespace sa::checked {

// What the checks of a recorded call find is the reason why it is not made.
namespace {
std::string reason;
} // namespace
void report(const Finding& finding, const void*) {
  if (!reason.empty()) return;
  reason = finding.argument + finding.entry + ": " + word(finding.kind) + ": " + finding.text;
}

} // namespace sa::checked

namespace sa::replay {
namespace {

constexpr std::size_t kPage = 4096, kFilled = std::size_t{1} << 22;
constexpr std::ptrdiff_t kMostAdded = std::ptrdiff_t{1} << 26; // bytes that are not recorded
alignas(64) unsigned char nothing[kPage];

std::size_t pagesOf(std::size_t bytes) { return (bytes + kPage - 1) / kPage * kPage; }

sigjmp_buf* jump = nullptr;
void leave(int signal) {
  if (jump != nullptr) siglongjmp(*jump, signal);
  std::_Exit(128 + signal);
}

// Signals of a routine that meets arguments which nobody could have given it.
class Guard {
public:
  Guard() {
    struct sigaction action = {};
    action.sa_handler = leave;
    sigemptyset(&action.sa_mask);
    action.sa_flags = static_cast<int>(SA_NODEFER);
    for (std::size_t n = 0; n < std::size(kSignals); ++n) sigaction(kSignals[n], &action, &old_[n]);
  }
  ~Guard() {
    jump = nullptr;
    for (std::size_t n = 0; n < std::size(kSignals); ++n) sigaction(kSignals[n], &old_[n], nullptr);
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

private:
  static constexpr int kSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGALRM};
  struct sigaction old_[std::size(kSignals)] = {};
};

} // namespace

Library::Library(const std::string& path)
    : name_(path.empty() ? "libSharedAnalysis.so.1" : path), handle_(dlopen(name_.c_str(), RTLD_LAZY | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(dlerror());
}

void* Library::routine(const std::string& name) const {
  void* const address = dlsym(handle_, name.c_str());
  if (address == nullptr) throw std::runtime_error(name_ + " has no " + name);
  return address;
}

Call::Call(const RecordedCall& recorded) : recorded_(&recorded) {
  const int number = checked::routineNumber(recorded.routine);
  if (number < 0) throw std::runtime_error("no routine " + recorded.routine);
  routine_ = &checked::routines()[static_cast<std::size_t>(number)];
  if (recorded.declaration != checked::digestOf(*routine_))
    throw std::runtime_error("of another declaration of " + recorded.routine);
  const std::span<const checked::Argument> arguments = checked::argumentsOf(*routine_);
  if (arguments.size() != recorded.arguments.size())
    throw std::runtime_error("with other arguments than " + recorded.routine);
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const RecordedArgument& a = recorded.arguments[k];
    const bool isKept = a.state == RecordedArgument::State::kept;
    const bool isSingle = arguments[k].has(checked::kScalar) || arguments[k].has(checked::kByValue);
    if (a.type != arguments[k].type || a.direction != arguments[k].direction ||
        (isKept && isSingle && (a.runs.size() != 1 || a.runs[0].first != 0 || a.runs[0].count != 1)) ||
        (!isKept && isSingle && !arguments[k].has(checked::kOptional)))
      throw std::runtime_error(std::string("with another kind of ") + arguments[k].name);
  }
  memory_.resize(arguments.size());
  addresses_.resize(arguments.size() + 1);
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    const RecordedArgument& a = recorded.arguments[k];
    addresses_[k] = a.state == RecordedArgument::State::null ? nullptr : nothing;
    if (a.state != RecordedArgument::State::kept) continue;
    allocate(k, static_cast<std::size_t>(a.runs.empty() ? 0 : a.runs.back().end()) * checked::sizeOf(a.type));
  }
  // Of listed points alone some are recorded, yet the arrays have all.
  reset();
  const checked::Layout layout(*routine_, addresses_.data());
  for (std::size_t k = 0; k < arguments.size(); ++k) {
    checked::Interval extent{};
    if (memory_[k].data == nullptr || !arguments[k].isArray() || !layout.extent(k, extent)) continue;
    const std::ptrdiff_t bytes = extent.end - memory_[k].data;
    if (bytes > static_cast<std::ptrdiff_t>(memory_[k].bytes) && bytes <= kMostAdded)
      allocate(k, static_cast<std::size_t>(bytes));
  }
}

void Call::allocate(std::size_t k, std::size_t bytes) {
  Memory& m = memory_[k];
  free(m);
  const std::size_t body = pagesOf(bytes);
  void* const pages = mmap(nullptr, body + 2 * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (pages == MAP_FAILED) throw std::runtime_error("no memory for its arrays");
  m = {static_cast<unsigned char*>(pages), nullptr, bytes};
  if (body > 0 && mprotect(m.pages + kPage, body, PROT_READ | PROT_WRITE) != 0)
    throw std::runtime_error("no memory for its arrays");
  m.data = m.pages + kPage + body - bytes;
  addresses_[k] = m.data;
}

void Call::free(Memory& m) {
  if (m.pages != nullptr) munmap(m.pages, pagesOf(m.bytes) + 2 * kPage);
  m = {};
}

Call::~Call() {
  for (Memory& m : memory_) free(m);
}

void Call::reset() {
  for (std::size_t k = 0; k < memory_.size(); ++k) {
    const RecordedArgument& a = recorded_->arguments[k];
    const Memory& m = memory_[k];
    if (m.data == nullptr) continue;
    const std::size_t size = checked::sizeOf(a.type);
    if (m.bytes <= kFilled) // what was not recorded must not matter
      for (std::size_t at = 0; at < m.bytes; ++at) m.data[at] = at % 8 == 7 ? 0x7f : 0xf4;
    const unsigned char* from = a.before.data();
    for (const checked::Run& run : a.runs) {
      if (!a.isRead()) break;
      std::memcpy(m.data + run.first * size, from, run.count * size);
      from += run.count * size;
    }
  }
}

bool Call::run(void* routine, std::string& fault) {
  reset();
  checked::Memory memory;
  checked::reason.clear();
  checked::Checks checks(*routine_, addresses_.data(), nullptr, memory, {false, true, false});
  if (!checks.before()) {
    fault = checked::reason;
    return false;
  }
  result_.assign(8, 0);
  const Guard guard;
  sigjmp_buf here;
  jump = &here;
  if (const int signal = sigsetjmp(here, 1); signal != 0) {
    alarm(0);
    fault = std::string("ended by a signal: ") + strsignal(signal);
    return false;
  }
  alarm(60);
  routine_->call(routine, addresses_.data(), result_.data());
  alarm(0);
  result_.resize(checked::sizeOf(routine_->result));
  return true;
}

std::vector<unsigned char> Call::written(std::size_t k) const {
  const RecordedArgument& a = recorded_->arguments[k];
  const std::size_t size = checked::sizeOf(a.type);
  std::vector<unsigned char> bytes;
  for (const checked::Run& run : a.runs)
    bytes.insert(bytes.end(), memory_[k].data + run.first * size, memory_[k].data + run.end() * size);
  return bytes;
}

bool isSameValue(const unsigned char* a, const unsigned char* b, checked::Type type) {
  if (std::memcmp(a, b, checked::sizeOf(type)) == 0) return true;
  if (type == checked::Type::real) {
    double x, y;
    std::memcpy(&x, a, 8);
    std::memcpy(&y, b, 8);
    return std::isnan(x) && std::isnan(y);
  }
  float x, y;
  std::memcpy(&x, a, type == checked::Type::single ? 4 : 0);
  std::memcpy(&y, b, type == checked::Type::single ? 4 : 0);
  return type == checked::Type::single && std::isnan(x) && std::isnan(y);
}

std::string valueText(const unsigned char* at, checked::Type type) {
  char text[80];
  if (type == checked::Type::real) {
    double value;
    std::memcpy(&value, at, 8);
    std::snprintf(text, sizeof text, "%s (%a)", checked::textOf(value).c_str(), value);
  } else if (type == checked::Type::single) {
    float value;
    std::memcpy(&value, at, 4);
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
  } else if (type == checked::Type::int32) {
    std::int32_t value;
    std::memcpy(&value, at, 4);
    std::snprintf(text, sizeof text, "%d", value);
  } else if (type == checked::Type::character) {
    std::snprintf(text, sizeof text, "'%c'", *at >= 0x20 && *at < 0x7f ? *at : '?');
  } else {
    std::int64_t value;
    std::memcpy(&value, at, 8);
    std::snprintf(text, sizeof text, "%lld", static_cast<long long>(value));
  }
  return text;
}

namespace {

std::uint64_t elementAt(const RecordedArgument& a, std::uint64_t position) {
  for (const checked::Run& run : a.runs) {
    if (position < run.count) return run.first + position;
    position -= run.count;
  }
  return 0;
}

bool differs(const RecordedCall& call, std::size_t k, const std::vector<unsigned char>& first,
             const std::vector<unsigned char>& second, Difference& difference) {
  const RecordedArgument& a = call.arguments[k];
  const std::size_t size = checked::sizeOf(a.type);
  const char* const name =
      checked::argumentsOf(checked::routines()[static_cast<std::size_t>(checked::routineNumber(call.routine))])[k].name;
  for (std::size_t at = 0; at + size <= std::min(first.size(), second.size()); at += size) {
    if (isSameValue(&first[at], &second[at], a.type)) continue;
    const std::uint64_t element = elementAt(a, at / size);
    difference = {
        k, name, entryText(call, k, element), valueText(&first[at], a.type), valueText(&second[at], a.type), element};
    return true;
  }
  if (first.size() == second.size()) return false;
  difference = {
      k, name, "", std::to_string(first.size() / size) + " values", std::to_string(second.size() / size) + " values",
      0};
  return true;
}

bool resultDiffers(const RecordedCall& call, const std::vector<unsigned char>& first,
                   const std::vector<unsigned char>& second, checked::Type type, Difference& difference) {
  if (first.size() != second.size() || first.empty() || isSameValue(first.data(), second.data(), type)) return false;
  difference = {
      call.arguments.size(), "the result", "", valueText(first.data(), type), valueText(second.data(), type), 0};
  return true;
}

} // namespace

std::string entryText(const RecordedCall& call, std::size_t argument, std::uint64_t element) {
  const checked::Routine& routine = checked::routines()[static_cast<std::size_t>(checked::routineNumber(call.routine))];
  const checked::Argument& a = checked::argumentsOf(routine)[argument];
  if (a.has(checked::kScalar) || a.has(checked::kByValue)) return "";
  std::string text = "(";
  for (int d = 0; d < a.rank; ++d) {
    const checked::Dimension& dimension = a.shape[d];
    std::int64_t size = dimension.isOpen() ? 0 : dimension.constant;
    for (int n = 0; n < 3; ++n) {
      const int k = dimension.arguments[n];
      if (k < 0 || call.arguments[static_cast<std::size_t>(k)].before.size() < 4) break;
      std::int32_t value;
      std::memcpy(&value, call.arguments[static_cast<std::size_t>(k)].before.data(), 4);
      size += (n == 0 ? dimension.factor : 1) * std::int64_t{value};
    }
    const bool isLast = d + 1 == a.rank || size < 1;
    text += (d > 0 ? "," : "") + std::to_string((isLast ? element : element % static_cast<std::uint64_t>(size)) + 1);
    if (isLast) break;
    element /= static_cast<std::uint64_t>(size);
  }
  return text + ")";
}

bool firstDifference(const Call& call, Difference& difference) {
  const RecordedCall& recorded = call.recorded();
  for (std::size_t k = 0; k < recorded.arguments.size(); ++k) {
    const RecordedArgument& a = recorded.arguments[k];
    if (a.state == RecordedArgument::State::kept && a.isWritten() &&
        differs(recorded, k, a.after, call.written(k), difference))
      return true;
  }
  return resultDiffers(recorded, recorded.result, call.result(), call.routine().result, difference);
}

bool firstDifference(const RecordedCall& a, const RecordedCall& b, bool isOfInputs, Difference& difference) {
  for (std::size_t k = 0; k < std::min(a.arguments.size(), b.arguments.size()); ++k) {
    const RecordedArgument &x = a.arguments[k], &y = b.arguments[k];
    if (x.type != y.type || x.state == RecordedArgument::State::notKept || y.state == RecordedArgument::State::notKept)
      continue;
    const bool isSamePlace = std::equal(
        x.runs.begin(), x.runs.end(), y.runs.begin(), y.runs.end(),
        [](const checked::Run& p, const checked::Run& q) { return p.first == q.first && p.count == q.count; });
    if (isOfInputs && !isSamePlace) {
      differs(a, k, x.before, y.before, difference);
      if (difference.name.empty())
        difference = {k, "argument " + std::to_string(k + 1), "", "other entries", "other entries", 0};
      return true;
    }
    if (differs(a, k, isOfInputs ? x.before : x.after, isOfInputs ? y.before : y.after, difference)) return true;
  }
  const int number = checked::routineNumber(a.routine);
  return !isOfInputs &&
         resultDiffers(a, a.result, b.result, checked::routines()[static_cast<std::size_t>(number)].result, difference);
}

bool firstNotFinite(const RecordedCall& call, Difference& difference) {
  for (std::size_t k = 0; k < call.arguments.size(); ++k) {
    const RecordedArgument& a = call.arguments[k];
    if (a.type != checked::Type::real || !a.isWritten()) continue;
    for (std::size_t at = 0; at + 8 <= a.after.size(); at += 8) {
      double value;
      std::memcpy(&value, &a.after[at], 8);
      if (std::isfinite(value)) continue;
      const std::uint64_t element = elementAt(a, at / 8);
      const checked::Routine& routine =
          checked::routines()[static_cast<std::size_t>(checked::routineNumber(call.routine))];
      difference = {k,
                    checked::argumentsOf(routine)[k].name,
                    entryText(call, k, element),
                    valueText(&a.after[at], a.type),
                    "",
                    element};
      return true;
    }
  }
  return false;
}

} // namespace sa::replay
