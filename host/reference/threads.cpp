// Identity of threads, and the lines that they hold back.
#include "threads.h"

#include "host_services.h"
#include "job.h"
#include "thr_ErrorInThread.h"
#include "thr_GlobalLock.h"
#include "thr_ThrSingletonRegistry.h"

#include <algorithm>
#include <list>
#include <vector>

namespace sharedanalysis::host {
namespace {

constexpr std::size_t kMostHeldBack = 1 << 16;

struct Registry {
  std::mutex mutex;
  std::list<ThreadRecord> records;
  int32_t nextNumber = 0;
};

// Outlives the threads and the static objects of the program.
Registry& registry() {
  static Registry& instance = *new Registry;
  return instance;
}

thread_local ThreadRecord* current = nullptr;

// Ends the record with its thread.  A message after that, from the destructor of another thread-local object, begins a
// record that stays.
struct ThreadEnd {
  ~ThreadEnd() {
    if (current == nullptr) return;
    ThreadRecord* ended = current;
    current = nullptr;
    ended->deliver();
    const std::lock_guard lock(registry().mutex);
    registry().records.remove_if([=](const ThreadRecord& record) { return &record == ended; });
  }
  void watch() {}
};
thread_local ThreadEnd threadEnd;

// Outlives the static objects of the program.
std::mutex& globalMutex() {
  static std::mutex& instance = *new std::mutex;
  return instance;
}

// What the thread owns is released at its end, the last first; for the main thread, when the program returns or exits.
thread_local bool releasesAreOver = false;
class Releases {
public:
  ~Releases() {
    // a release may register another one
    for (std::size_t next = routines_.size(); next > 0; next = routines_.size()) {
      void (*const release)() = routines_.back();
      routines_.pop_back();
      release();
    }
    releasesAreOver = true;
  }
  void add(void (*release)()) {
    if (std::find(routines_.begin(), routines_.end(), release) == routines_.end()) routines_.push_back(release);
  }

private:
  std::vector<void (*)()> routines_;
};
thread_local Releases releases;

} // namespace

void ThreadRecord::addLine(int32_t unit, int32_t message, std::string_view line) {
  const std::lock_guard lock(mutex_);
  if (unit != unit_ || message != message_ || lines_.size() > kMostHeldBack) deliverLocked();
  unit_ = unit;
  message_ = message;
  lines_.append(line);
  lines_.push_back('\n');
  ++count_;
}

void ThreadRecord::deliver() {
  const std::lock_guard lock(mutex_);
  deliverLocked();
}

void ThreadRecord::deliverLocked() {
  if (count_ == 0) return;
  job().write(unit_, lines_, count_);
  lines_.clear();
  count_ = 0;
}

ThreadRecord& thisThread() {
  if (current == nullptr) {
    const std::lock_guard lock(registry().mutex);
    current = &registry().records.emplace_back(registry().nextNumber++);
    threadEnd.watch();
  }
  return *current;
}

void deliverAll() {
  const std::lock_guard lock(registry().mutex);
  for (ThreadRecord& record : registry().records) record.deliver();
}

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

template <>
dsm_ker_ThreadData& thr_ThreadSingleton<dsm_ker_ThreadData>::Instance() {
  return thisThread().data;
}

int32_t DSM_KER_THREADID(void) { return thisThread().data.threadNumber; }
int32_t DSM_KER_MESSAGEID(void) { return thisThread().data.messageNumber++; }
int32_t DSM_KER_LASTMESSAGEID(void) { return thisThread().data.messageNumber - 1; }

void thr_ErrorInThread(int32_t state) {
  if (state != 0) job().threadError = true;
}

thr_GlobalLock::thr_GlobalLock() { globalMutex().lock(); }
thr_GlobalLock::~thr_GlobalLock() { globalMutex().unlock(); }

// After the releases, from the destructor of another thread-local object, it is too late: the object stays.
void thr_ThrSingletonRegistry::Register(void (*release)()) {
  if (!releasesAreOver) releases.add(release);
}
