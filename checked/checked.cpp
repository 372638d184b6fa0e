// The checking library: each routine is looked up in the library behind it, checked, and called.
#include "checked.h"

#include "checks.h"
#include "options.h"
#include "recorder.h"
#include "report.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <memory>
#include <unistd.h>

namespace sa::checked {
namespace {

constexpr std::size_t kMostRoutines = 1024;
// Cheap: values are checked in the first calls of a routine and then in every so manieth, while all of that takes less than its
// share of the thread's time.
constexpr unsigned kAlways = 8, kEvery = 64, kShare = 50;
using Clock = std::chrono::steady_clock;

struct Library {
  std::array<std::atomic<void*>, kMostRoutines> addresses{};
  std::array<Level, kMostRoutines> levels{};
  Options options;
  std::atomic<int> started{0}; // hosts: the whole library, or the shared services alone
  std::unique_ptr<Recorder> recorder;

  Library();
  void* addressOf(unsigned number);
};

// What a thread keeps from call to call.
struct Thread {
  static constexpr std::size_t kSlots = 4096;
  struct Slot {
    std::uint64_t pointers = 0, numbers = 0;
  };
  int depth = 0;
  bool hasEnded = false;
  Clock::time_point start = Clock::now();
  Clock::duration spent{0}; // on values
  Memory memory;
  std::unique_ptr<Slot[]> slots = std::make_unique<Slot[]>(kSlots);
  std::array<std::uint32_t, kMostRoutines> calls{};
};
// Whether the next call of a routine is one whose values are checked.
bool isTurn(const Thread& thread, unsigned number, bool isFull) {
  const std::uint32_t call = thread.calls[number];
  if (isFull || call < kAlways) return true;
  return call % kEvery == 0 && thread.spent * kShare < Clock::now() - thread.start;
}

// Null where the thread's own objects have been destroyed already.
Thread* ownThread() {
  struct Holder {
    Thread* thread = new Thread;
    ~Holder() {
      delete thread;
      thread = nullptr;
    }
  };
  static thread_local Holder holder;
  return holder.thread;
}

Library& library();

// Messages through the library behind, so that they are not checked in turn.
struct MessageFile final : Writer {
  void write(const std::string& text) override {
    static const int number = routineNumber("GLO_UTI_WRITE");
    void* const routine = library().addressOf(static_cast<unsigned>(number));
    if (library().started.load() <= 0 || routine == nullptr || dlsym(RTLD_DEFAULT, "LFC_XUT_XPLMSGC") == nullptr)
      return;
    const std::int32_t unit = GLO_UNIT, status = 1;
    const std::string type = "Warning", form = "%S";
    const std::int64_t typeLength = 7, formLength = 2, length = static_cast<std::int64_t>(text.size());
    const void* const arguments[] = {&unit,   &status,     type.data(), form.data(), nullptr,
                                     nullptr, text.data(), &typeLength, &formLength, &length};
    const Nested nested;
    routines()[static_cast<std::size_t>(number)].call(routine, arguments, nullptr);
  }
  void endAnalysis() override {
    static const int number = routineNumber("GLO_UTI_EXIT");
    void* const routine = library().addressOf(static_cast<unsigned>(number));
    if (library().started.load() > 0 && routine != nullptr) {
      const std::int32_t code = kErrors;
      const void* const arguments[] = {&code};
      const Nested nested;
      routines()[static_cast<std::size_t>(number)].call(routine, arguments, nullptr);
    }
    std::exit(kErrors);
  }

private:
  static constexpr std::int32_t GLO_UNIT = -6, kErrors = 20;
  struct Nested {
    Nested() {
      if (thread != nullptr) ++thread->depth;
    }
    ~Nested() {
      if (thread != nullptr) --thread->depth;
    }
    Thread* thread = ownThread();
  };
};

Library::Library() {
  options = Options::read(std::getenv("SHAREDANALYSIS_CHECK"), std::getenv("SHAREDANALYSIS_RECORD") != nullptr);
  if (const char* const record = std::getenv("SHAREDANALYSIS_RECORD"); record != nullptr && *record != '\0')
    recorder = std::make_unique<Recorder>(RecordFilter::read(record));
  for (std::size_t n = 0; n < routines().size() && n < kMostRoutines; ++n)
    levels[n] = options.levelOf(routines()[n].name);
}

Library& library() {
  static Library* const library = [] {
    auto* const made = new Library; // used by destructors of others to the end
    static MessageFile writer;
    setUp(made->options, writer);
    std::atexit([] { summarize(false); });
    return made;
  }();
  return *library;
}

void* Library::addressOf(unsigned number) {
  void* address = addresses[number].load(std::memory_order_acquire);
  if (address != nullptr) return address;
  const char* const name = routines()[number].name;
  // one of the user's choice, then the one that comes next among the libraries loaded
  static void* const chosen = [] {
    const char* const path = std::getenv("SHAREDANALYSIS_CHECKED_LIBRARY");
    return path != nullptr ? dlopen(path, RTLD_LAZY | RTLD_LOCAL) : nullptr;
  }();
  if (chosen != nullptr) address = dlsym(chosen, name);
  if (address == nullptr) address = dlsym(RTLD_NEXT, name);
  if (address == nullptr) { // opened by the program for itself, or not yet
    static void* const beside = dlopen("libSharedAnalysis.so.1", RTLD_LAZY | RTLD_LOCAL);
    if (beside != nullptr) address = dlsym(beside, name);
  }
  addresses[number].store(address, std::memory_order_release);
  return address;
}

std::uint64_t mixed(std::uint64_t h, std::uint64_t x) {
  h = (h ^ x) * 0x9e3779b97f4a7c15ULL;
  return h ^ (h >> 29);
}

// Whether the same addresses with the same numbers have been found sound before.
class Known {
public:
  Known(Thread& thread, unsigned number, const Routine& routine, const void* const* arguments) {
    std::uint64_t h = number + 1;
    const Argument* a = argumentsOf(routine).data();
    for (unsigned k = 0; k < routine.count; ++k)
      if (!a[k].has(kByValue)) h = mixed(h, reinterpret_cast<std::uintptr_t>(arguments[k]));
    slot_ = &thread.slots[h % Thread::kSlots];
    pointers_ = h;
    if (slot_->pointers == h && slot_->numbers == numbersOf(routine, arguments)) isKnown_ = true;
  }
  bool isKnown() const { return isKnown_; }
  // Only after the checks have found the numbers readable.
  void remember(const Routine& routine, const void* const* arguments) {
    slot_->pointers = pointers_;
    slot_->numbers = numbersOf(routine, arguments);
  }
  void forget() { slot_->pointers = 0; }

private:
  static std::uint64_t numbersOf(const Routine& routine, const void* const* arguments) {
    std::uint64_t h = 1;
    const Argument* a = argumentsOf(routine).data();
    for (unsigned k = 0; k < routine.count; ++k) {
      if (a[k].type != Type::int32 || !a[k].has(kScalar) || a[k].isWritten() || a[k].has(kOptional)) continue;
      std::int32_t value;
      std::memcpy(&value, arguments[k], sizeof value);
      h = mixed(h, static_cast<std::uint32_t>(value));
    }
    return h;
  }
  Thread::Slot* slot_;
  std::uint64_t pointers_;
  bool isKnown_ = false;
};

struct Inside {
  explicit Inside(Thread& own) : thread(own) { ++thread.depth; }
  ~Inside() { --thread.depth; }
  Thread& thread;
};

} // namespace

namespace {

// Calls that tell the library of something besides what they do.
enum class Event : unsigned char { none, start, stop, exit, beginIncrement, endIncrement };
const std::vector<Event>& events() {
  static const std::vector<Event> events = [] {
    std::vector<Event> all;
    for (const Routine& routine : routines()) {
      const std::string_view name = routine.name;
      all.push_back(name == "GLO_UTI_EXIT"                                                     ? Event::exit
                    : name == "Shared_Analysis_XP_initialize" || name == "glo_initialize"      ? Event::start
                    : name == "Shared_Analysis_XP_finalize" || name == "glo_finalize"          ? Event::stop
                    : fits(name, "acd_begin_increment*") || fits(name, "ACD_BEGIN_INCREMENT*") ? Event::beginIncrement
                    : fits(name, "acd_end_increment*") || fits(name, "ACD_END_INCREMENT*")     ? Event::endIncrement
                                                                                               : Event::none);
    }
    return all;
  }();
  return events;
}

// What a call takes part in: checks before and after, a recording.
class Watch {
public:
  // False when the call must not be made.
  bool begin(Library& lib, Thread& thread, unsigned number, const void* const* arguments, const void* place) {
    const Routine& routine = routines()[number];
    const Inside inside(thread);
    const Clock::time_point began = Clock::now();
    const Level level = lib.levels[number];
    const bool isRecorded = lib.recorder != nullptr && lib.recorder->wants(number);
    if (level != Level::off) {
      const bool isFull = level == Level::full;
      const bool hasValues = isTurn(thread, number, isFull);
      ++thread.calls[number];
      Known known(thread, number, routine, arguments);
      if (hasValues || isRecorded || !known.isKnown()) {
        checks_.emplace(routine, arguments, place, thread.memory, Depth{isFull, hasValues, isFull});
        known.forget();
        if (!checks_->before()) return false;
        known.remember(routine, arguments);
      }
    } else if (isRecorded) {
      layout_.emplace(routine, arguments);
    }
    const Layout* const layout = checks_ ? &*checks_->layout() : layout_ ? &*layout_ : nullptr;
    if (isRecorded && layout != nullptr) {
      recorded_.emplace();
      if (!lib.recorder->begin(*recorded_, *layout, thread.memory)) recorded_.reset();
    }
    if (checks_ && !checks_->isEmpty()) checks_->keep();
    start_ = Clock::now();
    thread.spent += start_ - began;
    return true;
  }
  void end(Library& lib, Thread& thread, const void* result) {
    const Clock::time_point now = Clock::now();
    const auto time = now - start_;
    if (checks_) checks_->after(thread.hasEnded);
    thread.spent += Clock::now() - now;
    if (recorded_) lib.recorder->finish(*recorded_, checks_ ? *checks_->layout() : *layout_, result, time);
  }

private:
  std::optional<Checks> checks_;
  std::optional<Layout> layout_;
  std::optional<RecordedCall> recorded_;
  Clock::time_point start_;
};

// Whether nothing is to be done but the call: the same addresses with the same numbers, in a turn without values.
bool isQuick(Library& lib, Thread& thread, unsigned number, const void* const* arguments) {
  if (lib.recorder != nullptr) return false;
  if (lib.levels[number] == Level::off) return true;
  if (isTurn(thread, number, lib.levels[number] == Level::full)) return false;
  if (!Known(thread, number, routines()[number], arguments).isKnown()) return false;
  ++thread.calls[number];
  return true;
}

} // namespace

void run(unsigned number, const void* const* arguments, void* result, const void* place) {
  Library& lib = library();
  const Routine& routine = routines()[number];
  void* const address = lib.addressOf(number);
  Thread* const own = ownThread();
  if (address == nullptr) {
    report({Kind::missing, routine.name, "", "", "is not in the library behind", ""}, place);
    return;
  }
  if (own == nullptr) {
    routine.call(address, arguments, result);
    return;
  }
  Thread& thread = *own;
  const Event event = events()[number];
  if (event == Event::exit) thread.hasEnded = true;
  if (thread.depth > 0 || (event == Event::none && isQuick(lib, thread, number, arguments))) {
    const Inside inside(thread); // of the library itself, or checked before
    routine.call(address, arguments, result);
    return;
  }
  if (event == Event::stop) {
    if (lib.started.load() == 1) summarize(true);
    --lib.started;
  }
  Watch watch;
  if (!watch.begin(lib, thread, number, arguments, place)) return;
  if (lib.recorder != nullptr && event == Event::beginIncrement)
    lib.recorder->setIncrement(*static_cast<const std::int32_t*>(arguments[0]));
  thread.hasEnded = false;
  {
    const Inside inside(thread);
    routine.call(address, arguments, result);
    watch.end(lib, thread, result);
  }
  if (lib.recorder != nullptr && event == Event::endIncrement)
    lib.recorder->setIncrement(lib.recorder->increment() + 1);
  if (event == Event::start) ++lib.started;
}

} // namespace sa::checked
