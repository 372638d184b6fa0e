// Threads that compute the domains of a rank together, and the floating-point mode in which all of them compute.
#pragma once

#include <atomic>
#include <cfenv>
#include <functional>
#include <thread>
#include <vector>

namespace sharedanalysis::solver {

// Rounding to nearest, subnormal numbers kept, nothing trapped, as long as it lives; then the caller's mode again.
class FloatingPointMode {
public:
  FloatingPointMode() {
    std::fegetenv(&callers_);
    std::fesetenv(FE_DFL_ENV);
  }
  ~FloatingPointMode() { std::fesetenv(&callers_); }
  FloatingPointMode(const FloatingPointMode&) = delete;
  FloatingPointMode& operator=(const FloatingPointMode&) = delete;

private:
  std::fenv_t callers_;
};

// The caller's thread and others, which sleep between two pieces of work.  There are fewer than asked for where the system gives
// no more.
class Team {
public:
  explicit Team(int threads);
  ~Team();
  Team(const Team&) = delete;
  Team& operator=(const Team&) = delete;

  unsigned size() const { return static_cast<unsigned>(others_.size()) + 1; }

  // work(thread) by every thread, 0 by the caller; it must not throw.
  void run(const std::function<void(int)>& work);

  // Within the work: waits until all threads are here; the last one calls `then` before any of them goes on.
  template <class Then>
  void meet(Then then) {
    const unsigned meeting = meetings_.load(std::memory_order_acquire);
    if (arrived_.fetch_add(1, std::memory_order_acq_rel) + 1 == size()) {
      arrived_.store(0, std::memory_order_relaxed);
      then();
      meetings_.store(meeting + 1, std::memory_order_release);
      meetings_.notify_all();
    } else {
      waitWhile(meetings_, meeting);
    }
  }
  void meet() {
    meet([] {});
  }

private:
  // First in a loop, if every thread can have a core: others arrive within microseconds as a rule.
  void waitWhile(const std::atomic<unsigned>& count, unsigned value) const;

  const std::function<void(int)>* work_ = nullptr;               // none: the end
  std::atomic<unsigned> begun_ = 0, arrived_ = 0, meetings_ = 0; // pieces of work, then within one of them
  int patience_ = 0;
  std::vector<std::thread> others_;
};

} // namespace sharedanalysis::solver
