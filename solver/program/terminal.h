// What a run shows on standard output.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace sharedanalysis::solver {

// Lines of text, and progress: one bar that is drawn over itself on a terminal, a line for each tenth of the run elsewhere.
// Output for people, not results: a closed pipe or a full disk does not end the run.
class Terminal {
public:
  // plain: lines only, even on a terminal.
  Terminal(bool quiet, bool plain);

  struct State {
    double time = 0, endTime = 0, stableIncrement = 0, energyError = 0; // s, relative
    int64_t increment = 0;
  };

  void line(const std::string& text);
  void progress(const State& state);
  // Ends the bar; later lines start below it.
  void endProgress();

private:
  void put(const std::string& text) const;
  std::string timeLeft(const State& state) const;

  bool quiet_, live_;
  bool barShown_ = false;
  int nextTenth_ = 1;
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// "1:02:03" or "2:03"
std::string clockText(double seconds);

} // namespace sharedanalysis::solver
