// Values over time: of prescribed motion and of loads.
#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <vector>

namespace sharedanalysis::solver {

// Between two points: a straight line, or the step 10 s^3 - 15 s^4 + 6 s^5, without slope and curvature at either end.
enum class Curve { Linear, Smooth };

// What the values of a prescribed motion are.
enum class Quantity { Velocity, Displacement, Acceleration };

// A key of the case for each of them, in their order.
struct MotionKind {
  const char *key, *unit;
  Quantity quantity;
};
inline constexpr std::array<MotionKind, 3> motionKinds{{{"velocity", "m/s", Quantity::Velocity},
                                                        {"displacement", "m", Quantity::Displacement},
                                                        {"acceleration", "m/s2", Quantity::Acceleration}}};
inline const MotionKind& kindOf(Quantity quantity) { return motionKinds[static_cast<std::size_t>(quantity)]; }

// Constant before the first and after the last point; 0 without points.
struct History {
  std::vector<double> time, value;
  Curve curve = Curve::Linear;
  Quantity quantity = Quantity::Velocity;
  bool operator==(const History&) const = default;
};

double valueAt(const History& history, double time);

// No value but 0 before a time; of motion: there is none.
bool isRest(const History& history, double end = std::numeric_limits<double>::infinity());

// The integral from time 0 on, in closed form.
double integralTo(const History& history, double time);

// The velocity with which a prescribed motion leaves time 0; accelerations leave it with `start`.
double speedAtStart(const History& history, double start);

// The velocity that a motion prescribes around a time: over the increment from time - half to time + half.  Displacements are met
// exactly at its ends; accelerations are integrated in closed form.
double speedAround(const History& history, double time, double half, double start);

} // namespace sharedanalysis::solver
