#include "solver/model/histories.h"

#include <algorithm>
#include <cstddef>

namespace sharedanalysis::solver {
namespace {

// The part of a step that is done at s from 0 to 1, and its slope and its integral from 0; both curves have the mean 1/2.
double stepAt(Curve curve, double s) { return curve == Curve::Linear ? s : s * s * s * (10.0 + s * (6.0 * s - 15.0)); }
double stepSlope(Curve curve, double s) { return curve == Curve::Linear ? 1.0 : 30.0 * s * s * (1.0 - s) * (1.0 - s); }
double stepIntegral(Curve curve, double s) {
  return curve == Curve::Linear ? 0.5 * s * s : s * s * s * s * (2.5 + s * (s - 3.0));
}

// Integral from the first point to a time.
double integralFromFirst(const History& history, double time) {
  const std::vector<double>&t = history.time, &value = history.value;
  if (time <= t.front()) return value.front() * (time - t.front());
  double sum = 0;
  for (std::size_t k = 1; k < t.size(); ++k) {
    const double length = t[k] - t[k - 1], rise = value[k] - value[k - 1];
    if (time < t[k]) {
      const double s = (time - t[k - 1]) / length;
      return sum + length * (value[k - 1] * s + rise * stepIntegral(history.curve, s));
    }
    sum += length * (value[k - 1] + 0.5 * rise);
  }
  return sum + value.back() * (time - t.back());
}

} // namespace

bool isRest(const History& history, double end) {
  if (history.quantity == Quantity::Acceleration) return false;
  for (std::size_t k = 0; k < history.value.size() && (k == 0 || history.time[k - 1] < end); ++k)
    if (history.value[k] != 0) return false;
  return true;
}

double valueAt(const History& history, double time) {
  const auto& t = history.time;
  if (t.empty()) return 0;
  const auto after = std::upper_bound(t.begin(), t.end(), time) - t.begin();
  if (after == 0) return history.value.front();
  if (after == static_cast<std::ptrdiff_t>(t.size())) return history.value.back();
  const double part = (time - t[after - 1]) / (t[after] - t[after - 1]);
  return history.value[after - 1] + stepAt(history.curve, part) * (history.value[after] - history.value[after - 1]);
}

double integralTo(const History& history, double time) {
  if (history.time.empty()) return 0;
  return integralFromFirst(history, time) - integralFromFirst(history, 0);
}

double speedAtStart(const History& history, double start) {
  if (history.quantity == Quantity::Velocity) return valueAt(history, 0);
  if (history.quantity == Quantity::Acceleration) return start;
  const std::vector<double>&t = history.time, &value = history.value;
  const auto after = static_cast<std::size_t>(std::upper_bound(t.begin(), t.end(), 0.0) - t.begin());
  if (after == 0 || after == t.size()) return 0;
  const double length = t[after] - t[after - 1];
  return (value[after] - value[after - 1]) / length * stepSlope(history.curve, -t[after - 1] / length);
}

double speedAround(const History& history, double time, double half, double start) {
  if (history.quantity == Quantity::Velocity) return valueAt(history, time);
  if (history.quantity == Quantity::Acceleration) return start + integralTo(history, time);
  return half > 0 ? (valueAt(history, time + half) - valueAt(history, time - half)) / (2 * half) : 0;
}

} // namespace sharedanalysis::solver
