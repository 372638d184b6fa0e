#include "solver/analysis/damping.h"

#include "solver/parallel/exact_sum.h"

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
  ExactSumOfMany sum;
  for (std::size_t i = 0; i < static_cast<std::size_t>(layout.numbering.owned); ++i) {
    const double *a = &now[3 * i], *b = &nodes.v[3 * i];
    sum.add(nodes.dampingEnergy[i] +
            0.5 * course.lastIncrement * course.damping * nodes.mass[i] * (a[0] * b[0] + a[1] * b[1] + a[2] * b[2]));
  }
  return sumOverRanks({sum.sum()}, layout.ranks)[0];
}

void adaptDamping(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                  const std::vector<DomainState>& domains, Course& course) {
  constexpr int64_t kEvery = 10;
  if (course.increment % kEvery != 0) return;
  std::vector<double> motion = nodes.v;
  for (const PrescribedComponent& p : prescribed.components) p.set(0, motion.data());
  ExactSumOfMany stiffnesses, inertias; // of the nodes
  for (const DomainState& state : domains)
    for (int64_t i = state.domain.firstNode; i < state.domain.endNode; ++i) {
      const auto node = static_cast<std::size_t>(i);
      double stiffness = 0, inertia = 0;
      for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t at = 3 * static_cast<std::size_t>(i - state.domain.firstNode) + c;
        const double way = motion[3 * node + c] * course.lastIncrement;
        stiffness += way * (state.internal[at] - state.internalBefore[at]);
        inertia += nodes.mass[node] * way * way;
      }
      stiffnesses.add(stiffness);
      inertias.add(inertia);
    }
  const std::vector<double> all = sumOverRanks({stiffnesses.sum(), inertias.sum()}, layout.ranks);
  // a motion that no stiffness resists, or none at all, leaves it; nothing moves faster than the stable increment allows
  if (all[0] > 0 && all[1] > 0) course.damping = std::min(2 * std::sqrt(all[0] / all[1]), 4 / course.stable);
}

} // namespace sharedanalysis::solver
