// The times of output, and the energy error that goes with them.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/model/archive.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace sharedanalysis::solver {

// Output times: exact multiples of an interval (no accumulated rounding), and the end time.
class Schedule {
public:
  Schedule(double interval, double end) : interval_(interval), end_(end) {}
  // The next output time; one within rounding of the end is the end.
  double next() const {
    const double time = static_cast<double>(passed_ + 1) * interval_;
    return time < end_ - 1e-6 * interval_ ? time : end_;
  }
  // Returns whether `time` has reached the next output time, and advances to the one after it.
  bool reach(double time) {
    if (time < next() - 1e-6 * interval_) return false;
    ++passed_;
    return true;
  }
  void visit(Archive& archive) {
    archive(passed_);
    constexpr int64_t kMost = 1000000000;
    if (passed_ < 0 || passed_ > kMost) throw InputError("its output times are none that a run has");
  }

private:
  double interval_, end_;
  int64_t passed_ = 0;
};

// The change of total - external energy since the start, also relative to the largest energy so far.
class EnergyCheck {
public:
  // Energies up to `rounding` are those of a model in which nothing happens.
  explicit EnergyCheck(double rounding = 0) : rounding_(rounding) {}
  void update(const Energies& energies) {
    if (!started_) first_ = energies.balance();
    started_ = true;
    error_ = energies.balance() - first_;
    largest_ = std::max({largest_, energies.total(), std::abs(energies.external)});
  }
  void visit(Archive& archive) {
    int64_t started = started_ ? 1 : 0;
    archive(started, first_, error_, largest_);
    started_ = started != 0;
  }
  double error() const { return error_; }
  bool isRounding() const { return !(largest_ > rounding_); }
  double relative() const { return isRounding() ? 0 : std::abs(error_) / largest_; }

private:
  bool started_ = false;
  double rounding_, first_ = 0, error_ = 0, largest_ = 0;
};

} // namespace sharedanalysis::solver
