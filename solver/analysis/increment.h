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

// Forces, stable increment and masked bricks of a domain; `step` is the increment that ends now.  First of the bricks that need
// nothing of other ranks, then of the rest, after which the forces are whole.
void evaluateInner(const Case& definition, const NodeState& nodes, double step, DomainState& domain);
void evaluateRest(const Case& definition, const NodeState& nodes, double step, DomainState& domain, Loads& loads);

// Velocities to the next half step and positions to the next time, for the nodes of one domain; work of all that acts
// on them from outside.
void move(const Case& definition, const Course& course, double step, DomainState& domain, NodeState& nodes,
          Outside& outside);

// Values of nodes on the boundaries between ranks, from their owners to the ranks that have a brick there: sent at once, and received
// later.  `visit` calls its second argument with a reference to each of `count` values of an internal node.
template <class Visit>
void sendNodes(const Layout& layout, Visit visit, std::size_t count) {
  std::vector<double> values;
  for (const Neighbour& neighbour : layout.neighbours) {
    if (neighbour.sent.empty()) continue;
    values.clear();
    values.reserve(count * neighbour.sent.size());
    for (const int32_t node : neighbour.sent) visit(node, [&](const double& value) { values.push_back(value); });
    layout.ranks.send(values, neighbour.rank);
  }
}
template <class Visit>
void receiveNodes(const Layout& layout, Visit visit, std::size_t count) {
  std::vector<double> values;
  for (const Neighbour& neighbour : layout.neighbours) {
    if (neighbour.received.empty()) continue;
    values.resize(count * neighbour.received.size());
    layout.ranks.receive(values, neighbour.rank);
    const double* next = values.data();
    for (const int32_t node : neighbour.received) visit(node, [&](double& value) { value = *next++; });
  }
}
template <class Visit>
void exchangeNodes(const Layout& layout, Visit visit, std::size_t count) {
  sendNodes(layout, visit, count);
  receiveNodes(layout, visit, count);
}

// Positions and velocities.
void sendMotion(const Layout& layout, NodeState& nodes);
void receiveMotion(const Layout& layout, NodeState& nodes);

// The stable increment, approached by 5 % an increment: the longest one that the next increment may have.
double nextPace(const Course& course);
// As long, or shortened so that as few increments as can be meet `end`.
double nextIncrement(const Course& course, double end);

// Of all domains of all ranks.
Outcome outcomeOf(const Ranks& ranks, const std::vector<DomainState>& domains);

// Whether and why the analysis ends; sets the stable increment and the distorted bricks.
Ending findEnding(const Layout& layout, const NodeState& nodes, const std::vector<DomainState>& domains,
                  const Outcome& all, Course& course, Distortion& distortion);

} // namespace sharedanalysis::solver
