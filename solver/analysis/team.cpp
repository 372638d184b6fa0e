#include "solver/analysis/team.h"

#include "solver/parallel/cores.h"

#include <system_error>

namespace sharedanalysis::solver {

Team::Team(int threads) {
  // Some hundreds of microseconds: the others are rarely later, and those that are have lost their core to another program, to which
  // looking on would cost as much again.
  constexpr int kLooks = 20000;
  if (threads <= usableCores()) patience_ = kLooks;
  others_.reserve(static_cast<size_t>(threads > 1 ? threads - 1 : 0));
  for (int k = 1; k < threads; ++k) {
    const auto body = [this, k] {
      const FloatingPointMode mode;
      for (unsigned done = 0;; ++done) {
        begun_.wait(done, std::memory_order_acquire);
        if (!work_) return;
        (*work_)(k);
        meet();
      }
    };
    try {
      others_.emplace_back(body);
    } catch (const std::system_error&) {
      return;
    }
  }
}

Team::~Team() {
  work_ = nullptr;
  begun_.fetch_add(1, std::memory_order_release);
  begun_.notify_all();
  for (std::thread& thread : others_) thread.join();
}

void Team::run(const std::function<void(int)>& work) {
  const FloatingPointMode mode;
  work_ = &work;
  begun_.fetch_add(1, std::memory_order_release);
  begun_.notify_all();
  work(0);
  meet();
}

void Team::waitWhile(const std::atomic<unsigned>& count, unsigned value) const {
  constexpr int kLooksBetweenYields = 256; // some microseconds
  for (int look = 0; look < patience_; ++look) {
    if (count.load(std::memory_order_acquire) != value) return;
#if defined(__x86_64__)
    __builtin_ia32_pause();
#endif
    // the one that is waited for may have to share this core, on a machine that others use as well
    if (look % kLooksBetweenYields == kLooksBetweenYields - 1) std::this_thread::yield();
  }
  count.wait(value, std::memory_order_acquire);
}

} // namespace sharedanalysis::solver
