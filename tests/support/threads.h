// Threads that work at once.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace sharedanalysis::test {

// Calls work(0), work(1), ... in threads that wait for each other before they begin; returns when all have ended.
template <class Work>
void runThreads(int count, Work work) {
  std::atomic<int> ready{0};
  std::vector<std::jthread> threads;
  for (int t = 0; t < count; ++t)
    threads.emplace_back([&, t] {
      ++ready;
      while (ready < count) std::this_thread::yield();
      work(t);
    });
}

} // namespace sharedanalysis::test
