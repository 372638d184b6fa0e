#include "partition.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace sharedanalysis::solver {

Numbering numberModel(const Mesh& mesh) {
  const int32_t bricks = mesh.elements(), nodes = mesh.nodes();
  std::array<double, 3> low{}, high{};
  for (int c = 0; c < 3; ++c) {
    low[c] = high[c] = nodes > 0 ? mesh.coordinates[c] : 0;
    for (int32_t i = 0; i < nodes; ++i) {
      low[c] = std::min(low[c], mesh.coordinates[3 * i + c]);
      high[c] = std::max(high[c], mesh.coordinates[3 * i + c]);
    }
  }
  std::array<int, 3> axes = {0, 1, 2}; // longest first
  std::stable_sort(axes.begin(), axes.end(), [&](int a, int b) { return high[a] - low[a] > high[b] - low[b]; });

  std::vector<std::array<double, 3>> centres(bricks);
  for (int32_t e = 0; e < bricks; ++e)
    for (int c = 0; c < 3; ++c) {
      double sum = 0;
      for (int corner = 0; corner < 8; ++corner)
        sum += mesh.coordinates[3 * mesh.connectivity[8 * e + corner] + axes[c]];
      centres[e][c] = sum;
    }
  Numbering result;
  result.elements.resize(bricks);
  std::iota(result.elements.begin(), result.elements.end(), 0);
  // coordinates that differ by rounding alone are no order: they are compared on a grid much finer than any brick
  const double grid = std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]}) * 1e-7;
  std::vector<std::array<double, 3>> keys = centres;
  for (auto& key : keys)
    for (double& x : key) x = grid > 0 ? static_cast<double>(static_cast<int64_t>(x / grid)) : 0;
  std::stable_sort(result.elements.begin(), result.elements.end(),
                   [&](int32_t a, int32_t b) { return keys[a] < keys[b]; });

  result.internalNodes.assign(nodes, -1);
  result.connectivity.resize(8 * static_cast<size_t>(bricks));
  for (int32_t e = 0; e < bricks; ++e)
    for (int corner = 0; corner < 8; ++corner) {
      const int32_t node = mesh.connectivity[8 * static_cast<size_t>(result.elements[e]) + corner];
      if (result.internalNodes[node] < 0) {
        result.internalNodes[node] = static_cast<int32_t>(result.nodes.size());
        result.nodes.push_back(node);
      }
      result.connectivity[8 * static_cast<size_t>(e) + corner] = result.internalNodes[node];
    }
  for (int32_t node = 0; node < nodes; ++node)
    if (result.internalNodes[node] < 0) {
      result.internalNodes[node] = static_cast<int32_t>(result.nodes.size());
      result.nodes.push_back(node);
    }
  return result;
}

std::vector<Domain> makeDomains(const Numbering& numbering, int count) {
  const int64_t nodes = static_cast<int64_t>(numbering.nodes.size());
  const int64_t bricks = static_cast<int64_t>(numbering.elements.size());
  constexpr int64_t kFewestBricks = 128; // a domain below one block is not worth its barrier
  const int64_t domains = std::clamp<int64_t>(bricks / kFewestBricks, 1, std::max(count, 1));
  std::vector<Domain> result(static_cast<size_t>(domains));
  for (int64_t d = 0; d < domains; ++d) {
    Domain& domain = result[static_cast<size_t>(d)];
    domain.firstNode = nodes * d / domains;
    domain.endNode = nodes * (d + 1) / domains;
    domain.firstTouched = domain.firstNode;
    domain.endTouched = domain.endNode;
    for (int64_t e = 0; e < bricks; ++e) {
      const auto corners = numbering.connectivity.begin() + 8 * e;
      if (std::none_of(corners, corners + 8,
                       [&](int32_t node) { return node >= domain.firstNode && node < domain.endNode; }))
        continue;
      domain.elements.push_back(static_cast<int32_t>(e));
      const auto [lowest, highest] = std::minmax_element(corners, corners + 8);
      domain.firstTouched = std::min<int64_t>(domain.firstTouched, *lowest);
      domain.endTouched = std::max<int64_t>(domain.endTouched, *highest + 1);
    }
  }
  return result;
}

} // namespace sharedanalysis::solver
