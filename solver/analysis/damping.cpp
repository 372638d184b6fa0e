#include "solver/analysis/damping.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {

void damp(const DomainState& state, const std::vector<double>& before, double coefficient, double between,
          std::vector<double>& v) {
  const double half = 0.5 * coefficient * between;
  double* own = &v[3 * static_cast<std::size_t>(state.domain.firstNode)];
  for (std::size_t k = 0; k < before.size(); ++k) own[k] = (own[k] - half * before[k]) / (1.0 + half);
}

void addDampingEnergy(const DomainState& state, const std::vector<double>& before, double coefficient,
                      double lastIncrement, double step, NodeState& nodes) {
  const auto first = static_cast<std::size_t>(state.domain.firstNode);
  for (std::size_t k = 0; k < before.size(); ++k) {
    const double now = nodes.v[3 * first + k];
    nodes.dampingEnergy[first + k / 3] +=
        nodes.mass[first + k / 3] * coefficient * 0.25 * (before[k] + now) * (before[k] * lastIncrement + now * step);
  }
}

double dampingEnergy(const Layout& layout, const NodeState& nodes, const Course& course,
                     const std::vector<double>& now) {
  std::vector<double> all = nodes.dampingEnergy, last(nodes.v);
  layout.ranks.gatherRanges(all, layout.numbering.firstOfRank);
  std::vector<int64_t> first = layout.numbering.firstOfRank;
  for (int64_t& node : first) node *= 3;
  layout.ranks.gatherRanges(last, first);
  double sum = 0;
  for (const int32_t i : layout.numbering.order) {
    const double *a = &now[3 * static_cast<std::size_t>(i)], *b = &last[3 * static_cast<std::size_t>(i)];
    sum += all[static_cast<std::size_t>(i)] + 0.5 * course.lastIncrement * course.damping *
                                                  nodes.mass[static_cast<std::size_t>(i)] *
                                                  (a[0] * b[0] + a[1] * b[1] + a[2] * b[2]);
  }
  return sum;
}

void adaptDamping(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                  const std::vector<DomainState>& domains, Course& course) {
  constexpr int64_t kEvery = 10;
  if (course.increment % kEvery != 0) return;
  std::vector<double> motion = nodes.v;
  for (const PrescribedComponent& p : prescribed.components) p.set(0, motion.data());
  std::vector<double> stiffness(nodes.mass.size()), inertia(nodes.mass.size());
  for (const DomainState& state : domains)
    for (int64_t i = state.domain.firstNode; i < state.domain.endNode; ++i) {
      const auto node = static_cast<std::size_t>(i);
      for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t at = 3 * static_cast<std::size_t>(i - state.domain.firstNode) + c;
        const double way = motion[3 * node + c] * course.lastIncrement;
        stiffness[node] += way * (state.internal[at] - state.internalBefore[at]);
        inertia[node] += nodes.mass[node] * way * way;
      }
    }
  layout.ranks.gatherRanges(stiffness, layout.numbering.firstOfRank);
  layout.ranks.gatherRanges(inertia, layout.numbering.firstOfRank);
  std::vector<double> result{course.damping};
  double numerator = 0, denominator = 0;
  for (const int32_t i : layout.numbering.order) {
    numerator += stiffness[static_cast<std::size_t>(i)];
    denominator += inertia[static_cast<std::size_t>(i)];
  }
  // a motion that no stiffness resists, or none at all, leaves it; nothing moves faster than the stable increment allows
  if (numerator > 0 && denominator > 0) result[0] = std::min(2 * std::sqrt(numerator / denominator), 4 / course.stable);
  layout.ranks.broadcast(result);
  course.damping = result[0];
}

} // namespace sharedanalysis::solver
