#include "solver/program/terminal.h"

#include "solver/model/text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sys/ioctl.h>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

bool takesBar() {
  const char* kind = std::getenv("TERM");
  return ::isatty(STDOUT_FILENO) == 1 && kind && std::string(kind) != "dumb";
}

std::size_t columns() {
  winsize size{};
  const bool known = ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
  return known ? size.ws_col : 80;
}

} // namespace

std::string clockText(double seconds) {
  const int64_t whole = static_cast<int64_t>(std::ceil(std::clamp(seconds, 0.0, 3.6e8)));
  const auto two = [](int64_t value) { return padded(std::to_string(value), 2, '0'); };
  const int64_t hours = whole / 3600, minutes = whole / 60 % 60;
  return (hours > 0 ? std::to_string(hours) + ":" + two(minutes) : std::to_string(minutes)) + ":" + two(whole % 60);
}

Terminal::Terminal(bool quiet, bool plain) : quiet_(quiet), live_(!quiet && !plain && takesBar()) {}

void Terminal::put(const std::string& text) const {
  std::fwrite(text.data(), 1, text.size(), stdout);
  std::fflush(stdout);
}

void Terminal::line(const std::string& text) {
  if (quiet_) return;
  endProgress();
  put(printable(text) + '\n');
}

std::string Terminal::timeLeft(const State& state) const {
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
  return clockText(elapsed.count() * (state.endTime - state.time) / state.time);
}

void Terminal::progress(const State& state) {
  if (quiet_) return;
  if (state.time <= 0) {
    start_ = std::chrono::steady_clock::now();
    if (!live_) return;
  }
  const double done = state.time / state.endTime;
  // tolerate a rounding error just below a tenth
  const int percent = static_cast<int>(100 * done + 1e-9);
  std::string text = padded(std::to_string(percent), 3) + " %  time " + padded(shortNumber(state.time), 9) +
                     " s  increment " + std::to_string(state.increment) + "  step " +
                     shortNumber(state.stableIncrement) + " s  energy error " + shortNumber(100 * state.energyError) +
                     " %";
  const std::string left = state.time > 0 && done < 1 ? "  " + timeLeft(state) + " left" : "";
  if (!live_) {
    if (percent < 10 * nextTenth_) return;
    nextTenth_ = percent / 10 + 1;
    put(text + '\n');
    return;
  }
  // what does not fit goes, the least first; the bar fills the rest of the line, up to 40 characters
  const std::size_t room = columns() - 1;
  const std::string brief[] = {text.substr(0, text.find("  step")), text.substr(0, text.find("  increment"))};
  for (const std::string& shorter : brief)
    if (text.size() + left.size() > room) text = shorter;
  const std::size_t used = text.size() + left.size() + 3;
  const std::size_t length = std::min<std::size_t>(room > used ? room - used : 0, 40);
  std::string bar;
  if (length >= 5) {
    const std::size_t filled = static_cast<std::size_t>(done * static_cast<double>(length));
    bar = padded("] ", length - filled + 2, '.');
    bar = padded(bar, length + 2, '#');
    bar.insert(bar.begin(), '[');
  }
  std::string shown = "\r\033[K"; // to the beginning of the line, which is emptied
  shown += (bar + text + left).substr(0, room);
  put(shown);
  barShown_ = true;
}

void Terminal::endProgress() {
  if (barShown_) put("\n");
  barShown_ = false;
}

} // namespace sharedanalysis::solver
