// One increment in parts: forces, motion, exchange between ranks, and the decision about the next increment.
#pragma once

#include "solver/analysis/state.h"

namespace sharedanalysis::solver {

// The result of an increment for the decision about the next one, on this rank or on all of them.
struct Outcome {
  double smallest = kInfinity; // stable increment; NaN when something is not a number
  bool masked = false, killed = false;
  bool stopped = false; // the library has ended the analysis
};

// Forces, stable increment and masked bricks of a domain; `step` is the increment that ends now.
void evaluateForces(const Case& definition, const NodeState& nodes, double step, DomainState& domain, Loads& loads);

// Velocities to the next half step and positions to the next time, for the nodes of one domain; work of all that acts
// on them from outside.
void move(const Case& definition, const Course& course, double step, DomainState& domain, NodeState& nodes,
          Outside& outside);

// Positions and velocities of the nodes on the boundaries between ranks.
void exchangeMotion(const Layout& layout, NodeState& nodes);

// The stable increment, approached by 5 % an increment, and cut so that `end` is met with two equal increments at the last.
double nextIncrement(const Course& course, double end);

// Of all domains of all ranks.
Outcome outcomeOf(const Ranks& ranks, const std::vector<DomainState>& domains);

// Whether and why the analysis ends; sets the stable increment and the distorted bricks.
Ending findEnding(const Layout& layout, const NodeState& nodes, const std::vector<DomainState>& domains,
                  const Outcome& all, Course& course, Distortion& distortion);

} // namespace sharedanalysis::solver
