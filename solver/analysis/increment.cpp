#include "solver/analysis/increment.h"

#include "glo.h"
#include "host_services.h"
#include "reference_host.h"
#include "solver/analysis/block_kernels.h"
#include "solver/analysis/contact.h"
#include "solver/analysis/damping.h"
#include "solver/analysis/loads.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

constexpr double kGrowth = 1.05; // largest ratio of an increment to the one before

void evaluate(const Case& definition, const NodeState& nodes, double step, DomainState& state, std::size_t first,
              std::size_t end) {
  for (std::size_t k = first; k < end; ++k) {
    const Block::Outcome outcome =
        state.blocks[k].evaluate(nodes.x, nodes.v, step, definition, state.work, state.force.data());
    state.stableIncrement = smallerOf(state.stableIncrement, outcome.stableIncrement);
    state.masked += outcome.masked;
  }
}

} // namespace

void evaluateInner(const Case& definition, const NodeState& nodes, double step, DomainState& state) {
  const int32_t values = static_cast<int32_t>(state.force.size());
  GLO_UTI_BROADCAST0D(&values, state.force.data());
  state.stableIncrement = kInfinity;
  state.masked = 0;
  state.work.events.clear();
  evaluate(definition, nodes, step, state, 0, state.innerBlocks);
}

void evaluateRest(const Case& definition, const NodeState& nodes, double step, DomainState& state, Loads& loads) {
  evaluate(definition, nodes, step, state, state.innerBlocks, state.blocks.size());
  for (const Domain::Border& border : state.domain.border)
    for (int32_t part = border.firstPart; part < border.endPart; ++part)
      for (std::size_t c = 0; c < 3; ++c)
        state.force[3 * static_cast<std::size_t>(border.node) + c] +=
            state.force[3 * static_cast<std::size_t>(part) + c];
  if (definition.quasiStatic) {
    std::swap(state.internal, state.internalBefore);
    state.internal.assign(state.force.begin(),
                          state.force.begin() + 3 * (state.domain.endNode - state.domain.firstNode));
    state.internalBefore.resize(state.internal.size());
  }
  applyLoads(definition, nodes, state, loads);
}

void move(const Case& definition, const Course& course, double step, DomainState& state, NodeState& nodes,
          Outside& outside) {
  Prescribed& prescribed = outside.prescribed;
  Loads& loads = outside.loads;
  const bool touches = !definition.planes.empty();
  const double lastIncrement = course.lastIncrement;
  std::vector<PrescribedComponent>& components = prescribed.components;
  std::vector<double>& v = nodes.v;
  const Domain& domain = state.domain;
  const double between = 0.5 * (lastIncrement + step);
  const double gravity[3] = {definition.gravity[0], definition.gravity[1], definition.gravity[2]};
  addWork(state, v, 0.5 * lastIncrement, loads);
  std::vector<double> before;
  before.reserve(state.endPrescribed - state.firstPrescribed);
  for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) before.push_back(components[k].of(v.data()));
  std::vector<double> allBefore; // velocities before, of all components
  if (definition.isDamped() || touches)
    allBefore.assign(&v[3 * domain.firstNode], &v[3 * domain.firstNode] + 3 * (domain.endNode - domain.firstNode));
  kick(domain.firstNode, domain.endNode, state.force.data(), domain.firstNode, nodes.rMass.data(), gravity, between,
       v.data());
  if (definition.isDamped()) damp(state, allBefore, course.damping, between, v);
  for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) {
    PrescribedComponent& p = components[k];
    const double old = before[k - state.firstPrescribed], now = p.speed(course.time + 0.5 * step, 0.5 * step);
    p.reaction = p.of(state.force.data(), domain.firstNode) +
                 nodes.mass[p.position / 3] * ((now - old) / between - p.of(definition.gravity));
    if (definition.isDamped()) p.reaction += nodes.mass[p.position / 3] * course.damping * 0.5 * (old + now);
    p.work += p.reaction * 0.5 * (old * lastIncrement + now * step);
    p.set(now, v.data());
  }
  if (touches) touch(definition, course, step, state, allBefore, prescribed, nodes, outside.contacts);
  addWork(state, v, 0.5 * step, loads);
  if (definition.isDamped()) addDampingEnergy(state, allBefore, course.damping, lastIncrement, step, nodes);
  state.time = course.time + step;
  drift(domain.firstNode, domain.endNode, v.data(), step, nodes.x.data());
}

double nextPace(const Course& course) {
  return std::min(course.stable, std::max(kGrowth * course.pace, 0.5 * course.stable));
}

// All increments to the end are shortened by the same ratio: outputs at equal intervals then have equal increments.  Long and short
// ones in turns would feed modes whose period is near four of their mean.
double nextIncrement(const Course& course, double end) {
  const double first = nextPace(course), rest = end - course.time;
  if (rest <= first) return rest;
  double one = first, sum = first; // of the fewest increments that get there
  for (; sum < rest && one < course.stable; sum += one) one = std::min(course.stable, kGrowth * one);
  if (sum < rest) sum += one * std::ceil((rest - sum) / one);
  return std::min(first, first * (rest / sum));
}

namespace {

constexpr std::size_t kMotionValues = 6;
auto motionOf(NodeState& nodes) {
  return [&nodes](int32_t node, auto&& visit) {
    for (std::vector<double>* field : {&nodes.x, &nodes.v})
      for (std::size_t c = 0; c < 3; ++c) visit((*field)[3 * static_cast<std::size_t>(node) + c]);
  };
}

} // namespace

void sendMotion(const Layout& layout, NodeState& nodes) { sendNodes(layout, motionOf(nodes), kMotionValues); }
void receiveMotion(const Layout& layout, NodeState& nodes) { receiveNodes(layout, motionOf(nodes), kMotionValues); }

Outcome outcomeOf(const Ranks& ranks, const std::vector<DomainState>& domains) {
  Outcome own;
  own.killed = ELI_GETKILLSIGNAL() != 0;
  own.stopped = host::threadError();
  for (const DomainState& state : domains) {
    own.masked = own.masked || state.masked > 0;
    own.smallest = smallerOf(own.smallest, state.stableIncrement);
  }
  std::vector<double> all{own.smallest, own.masked ? 0.0 : 1.0, own.killed ? 0.0 : 1.0, own.stopped ? 0.0 : 1.0};
  ranks.smallest(all);
  return {all[0], all[1] == 0.0, all[2] == 0.0, all[3] == 0.0};
}

Ending findEnding(const Layout& layout, const NodeState& nodes, const std::vector<DomainState>& domains,
                  const Outcome& all, Course& course, Distortion& distortion) {
  // none bounds the increment: it stays what it was
  const bool nothingLeft = all.smallest == kInfinity;
  if (!nothingLeft) course.stable = all.smallest * layout.definition.safetyFactor;
  if (all.stopped) return Ending::Stopped;
  if (all.masked) {
    bool finite = true;
    for (const DomainState& state : domains)
      for (int64_t k = 3 * state.domain.firstNode; k < 3 * state.domain.endNode; ++k)
        finite = finite && std::isfinite(nodes.x[static_cast<size_t>(k)]);
    distortion.own.clear();
    for (const DomainState& state : domains)
      for (const Block& block : state.blocks)
        for (int e = 0; e < block.count(); ++e)
          if (block.isDistorted(e) && state.speaksFor(layout, block.bricks()[e]))
            distortion.own.push_back(layout.mesh.elementNumbers[layout.meshBrick(block.bricks()[e])]);
    std::sort(distortion.own.begin(), distortion.own.end());
    distortion.count = layout.ranks.sum(static_cast<int64_t>(distortion.own.size()));
    distortion.first = firstOfAll(layout.ranks, distortion.own, kMostNamed);
    return layout.ranks.allAgree(finite) ? Ending::Distorted : Ending::NotFinite;
  }
  if (std::isnan(all.smallest)) return Ending::NotFinite;
  if (nothingLeft) return Ending::Failed;
  if (course.firstStable > 0 && course.stable < layout.definition.smallestIncrementRatio * course.firstStable)
    return Ending::IncrementCollapsed;
  return Ending::Running;
}

} // namespace sharedanalysis::solver
