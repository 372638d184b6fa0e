#include "solver/program/problems.h"

#include "acd.h"
#include "diagnostic_codes.h"
#include "solver/model/text.h"
#include "solver/parallel/faults.h"
#include "solver/program/diagnostics.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace sharedanalysis::solver {
namespace {

namespace codes = host::codes;

// Beyond these a result deserves a look.
constexpr double kHourglassShare = 0.1, kEnergyShare = 0.05; // of the strain energy, of the largest energy
constexpr double kSmallestAngle = 20, kLargestAspect = 20;   // degrees from 0 or 180; longest to shortest edge

constexpr double kDegree = std::numbers::pi / 180;

struct Shape {
  double angle = 90; // the corner angle that is the furthest from 90 degrees
  double aspect = 1;
};

// Of the 24 angles between edges that meet in a corner, and of the 12 edges.
Shape shapeOf(const Mesh& mesh, size_t element) {
  static constexpr int kNext[8][3] = {{1, 3, 4}, {2, 0, 5}, {3, 1, 6}, {0, 2, 7},
                                      {7, 5, 0}, {4, 6, 1}, {5, 7, 2}, {6, 4, 3}};
  using Vector = std::array<double, 3>;
  const int32_t* nodes = &mesh.connectivity[8 * element];
  const auto edge = [&](int from, int to) {
    Vector v;
    for (size_t c = 0; c < 3; ++c)
      v[c] = mesh.coordinates[3 * static_cast<size_t>(nodes[to]) + c] -
             mesh.coordinates[3 * static_cast<size_t>(nodes[from]) + c];
    return v;
  };
  const auto dot = [](const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; };
  Shape shape;
  double shortest = HUGE_VAL, longest = 0;
  for (int corner = 0; corner < 8; ++corner) {
    Vector edges[3];
    double lengths[3];
    for (int k = 0; k < 3; ++k) {
      edges[k] = edge(corner, kNext[corner][k]);
      lengths[k] = std::sqrt(dot(edges[k], edges[k]));
      shortest = std::min(shortest, lengths[k]);
      longest = std::max(longest, lengths[k]);
    }
    for (int k = 0; k < 3; ++k) {
      const int l = (k + 1) % 3;
      const double cosine = std::clamp(dot(edges[k], edges[l]) / (lengths[k] * lengths[l]), -1.0, 1.0);
      const double angle = std::acos(cosine) / kDegree;
      if (std::abs(angle - 90) > std::abs(shape.angle - 90)) shape.angle = angle;
    }
  }
  shape.aspect = longest / shortest;
  return shape;
}

void record(int32_t code, std::initializer_list<double> reals, const int32_t* element) {
  acd_warning_xpl_c(code, 0, nullptr, reals.begin(), nullptr, nullptr, element);
}

// A number that diagnostics have no room for is left out.
void record(int32_t code, std::initializer_list<double> reals, int64_t number) {
  const std::optional<int32_t> label = labelOf(number);
  record(code, reals, label ? &*label : nullptr);
}

std::string percent(double share) { return shortNumber(100 * share) + " %"; }

} // namespace

void Problems::checkMesh(const Ranks& ranks) {
  Found found;
  const int64_t most = mostOfRank(kMostRecorded, ranks);
  for (int32_t e = 0; e < mesh_.elements(); ++e) {
    if (!mesh_.ownsElement(e)) continue;
    const Shape shape = shapeOf(mesh_, static_cast<size_t>(e));
    if (std::abs(shape.angle - 90) <= 90 - kSmallestAngle && shape.aspect <= kLargestAspect) continue;
    const int64_t number = mesh_.elementNumbers[static_cast<size_t>(e)];
    found.add(mesh_.elementPosition(e), number);
    if (found.count <= most) record(codes::DistortedAtStart, {shape.angle, shape.aspect}, number);
  }
  found.join(ranks);
  if (!ranks.isRoot()) return;
  distorted_ = found.count;
  firstDistorted_ = found.number;
}

void Problems::add(const BrickEvents& events) {
  if (events.failures > 0 && failures_ == 0) {
    firstFailed_ = events.firstFailure.number;
    failureTime_ = events.firstFailure.time;
  }
  failures_ += events.failures;
  for (const BrickEvent& event : events.first) {
    if (event.kind != EventKind::Failed || failuresRecorded_ == kMostRecorded) continue;
    ++failuresRecorded_;
    record(codes::ElementDeleted, {}, event.number);
  }
}

// The bindings name every member, so that none is forgotten.
void Problems::visit(Archive& archive) {
  [[maybe_unused]] auto& [mesh, distorted, failures, firstDistorted, firstFailed, failuresRecorded, hourglassRecorded,
                          energyRecorded, failureTime, hourglass, hourglassTime, energyError, energyTime] = *this;
  archive(failures, firstFailed, failureTime, hourglass, hourglassTime, energyError, energyTime);
}

void Problems::check(double time, const Energies& energies, double energyError) {
  const double share = energies.strain > 0 ? energies.hourglass / energies.strain : 0;
  // of a model that hardly deforms both are rounding errors
  if (share > kHourglassShare && energies.hourglass > 1e-3 * energies.total()) {
    if (!std::exchange(hourglassRecorded_, true)) record(codes::HourglassEnergyLarge, {share}, nullptr);
    if (share > hourglass_) hourglass_ = share, hourglassTime_ = time;
  }
  if (energyError > kEnergyShare) {
    if (!std::exchange(energyRecorded_, true)) record(codes::EnergyErrorLarge, {energyError, kEnergyShare}, nullptr);
    if (energyError > energyError_) energyError_ = energyError, energyTime_ = time;
  }
}

std::vector<std::string> Problems::lines() const {
  std::vector<std::string> lines;
  const auto at = [](double time) { return " at " + shortNumber(time) + " s"; };
  if (distorted_ > 0)
    lines.push_back(counted(static_cast<size_t>(distorted_), "brick") +
                    " distorted at the start, the first is number " + std::to_string(firstDistorted_));
  if (failures_ > 0)
    lines.push_back(counted(static_cast<size_t>(failures_), "brick") + " of " + std::to_string(mesh_.wholeElements()) +
                    " failed, the first is number " + std::to_string(firstFailed_) + at(failureTime_));
  if (hourglass_ > 0)
    lines.push_back("the hourglass energy reached " + percent(hourglass_) + " of the strain energy" +
                    at(hourglassTime_));
  if (energyError_ > 0) lines.push_back("the energy balance was off by " + percent(energyError_) + at(energyTime_));
  return lines;
}

} // namespace sharedanalysis::solver
