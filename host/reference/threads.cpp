// Identity of threads, and the lines that they hold back.
#include "threads.h"

#include "host_services.h"
#include "job.h"
#include "thr_ErrorInThread.h"

#include <list>

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
