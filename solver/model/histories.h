// Values over time: of prescribed motion and of loads.
#pragma once

#include <vector>

namespace sharedanalysis::solver {

// Between two points: a straight line, or the step 10 s^3 - 15 s^4 + 6 s^5, without slope and curvature at either end.
enum class Curve { Linear, Smooth };

// What the values of a prescribed motion are.
enum class Quantity { Velocity, Displacement, Acceleration };

// Constant before the first and after the last point; 0 without points.
struct History {
  std::vector<double> time, value;
  Curve curve = Curve::Linear;
  Quantity quantity = Quantity::Velocity;
  bool operator==(const History&) const = default;
};

double valueAt(const History& history, double time);

// Of motion: there is none.
bool isRest(const History& history);

// The integral from time 0 on, in closed form.
double integralTo(const History& history, double time);

// The velocity with which a prescribed motion leaves time 0; accelerations leave it with `start`.
double speedAtStart(const History& history, double start);

// The velocity that a motion prescribes around a time: over the increment from time - half to time + half.  Displacements are met
// exactly at its ends; accelerations are integrated in closed form.
double speedAround(const History& history, double time, double half, double start);

} // namespace sharedanalysis::solver
