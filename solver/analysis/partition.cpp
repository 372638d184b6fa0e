#include "solver/analysis/partition.h"

#include <algorithm>
#include <array>
#include <metis.h>
#include <numeric>
#include <set>

namespace sharedanalysis::solver {
namespace {

// As one rank numbers it.
Numbering numberAlone(const Mesh& mesh) {
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

// The rank of every node, by its number alone: METIS keeps the parts even and their common surfaces small.  Computed by the
// root, so that ranks on different machines agree.
std::vector<int32_t> ranksOfNodes(const Numbering& alone, const Ranks& ranks) {
  const int64_t nodes = static_cast<int64_t>(alone.nodes.size());
  std::vector<int32_t> result(alone.nodes.size(), 0);
  if (!ranks.areSeveral()) return result;
  if (ranks.isRoot()) {
    // nodes without bricks come last and belong to the root
    const auto highest = std::max_element(alone.connectivity.begin(), alone.connectivity.end());
    idx_t bricks = static_cast<idx_t>(alone.elements.size()), used = *highest + 1, parts = ranks.size(), cut = 0;
    std::vector<idx_t> begins(alone.elements.size() + 1), corners(alone.connectivity.begin(), alone.connectivity.end());
    for (std::size_t e = 0; e < begins.size(); ++e) begins[e] = static_cast<idx_t>(8 * e);
    std::vector<idx_t> brickParts(alone.elements.size()), nodeParts(static_cast<std::size_t>(used));
    idx_t options[METIS_NOPTIONS];
    METIS_SetDefaultOptions(options);
    options[METIS_OPTION_SEED] = 1;
    const int status = METIS_PartMeshNodal(&bricks, &used, begins.data(), corners.data(), nullptr, nullptr, &parts,
                                           nullptr, options, &cut, brickParts.data(), nodeParts.data());
    for (int64_t node = 0; node < used; ++node) // ranges of equal length will do where there is no better partition
      result[static_cast<std::size_t>(node)] = status == METIS_OK
                                                   ? static_cast<int32_t>(nodeParts[static_cast<std::size_t>(node)])
                                                   : static_cast<int32_t>(node * ranks.size() / nodes);
  }
  ranks.broadcast(result);
  return result;
}

} // namespace

int32_t Numbering::lowestNode(int64_t brick) const {
  const auto corners = connectivity.begin() + 8 * brick;
  return *std::min_element(corners, corners + 8);
}

Numbering numberModel(const Mesh& mesh, const Ranks& ranks) {
  Numbering result = numberAlone(mesh);
  const std::vector<int32_t> rankOf = ranksOfNodes(result, ranks);
  std::vector<int32_t> sorted(result.nodes.size());
  std::iota(sorted.begin(), sorted.end(), 0);
  std::stable_sort(sorted.begin(), sorted.end(), [&](int32_t a, int32_t b) { return rankOf[a] < rankOf[b]; });

  result.order.resize(sorted.size());
  const std::vector<int32_t> alone = result.nodes;
  for (std::size_t node = 0; node < sorted.size(); ++node) {
    result.order[sorted[node]] = static_cast<int32_t>(node);
    result.nodes[node] = alone[sorted[node]];
    result.internalNodes[result.nodes[node]] = static_cast<int32_t>(node);
  }
  for (int32_t& node : result.connectivity) node = result.order[node];
  result.firstOfRank.assign(static_cast<std::size_t>(ranks.size()) + 1, 0);
  for (const int32_t rank : rankOf) ++result.firstOfRank[static_cast<std::size_t>(rank) + 1];
  std::partial_sum(result.firstOfRank.begin(), result.firstOfRank.end(), result.firstOfRank.begin());
  return result;
}

int32_t Domain::place(int32_t node) const {
  if (node >= firstNode && node < endNode) return static_cast<int32_t>(node - firstNode);
  const auto found = std::lower_bound(others.begin(), others.end(), node);
  return static_cast<int32_t>(endNode - firstNode + (found - others.begin()));
}

std::vector<Domain> makeDomains(const Numbering& numbering, int32_t rank, int count) {
  const int64_t first = numbering.firstOfRank[static_cast<std::size_t>(rank)];
  const int64_t nodes = numbering.firstOfRank[static_cast<std::size_t>(rank) + 1] - first;
  const int64_t bricks = static_cast<int64_t>(numbering.elements.size());
  constexpr int64_t kFewestNodes = 128; // a domain below one block is not worth its barrier
  const int64_t domains = std::clamp<int64_t>(nodes / kFewestNodes, 1, std::max(count, 1));
  std::vector<Domain> result(static_cast<size_t>(domains));
  for (int64_t d = 0; d < domains; ++d) {
    Domain& domain = result[static_cast<size_t>(d)];
    domain.firstNode = first + nodes * d / domains;
    domain.endNode = first + nodes * (d + 1) / domains;
    const auto owns = [&](int32_t node) { return node >= domain.firstNode && node < domain.endNode; };
    for (int64_t e = 0; e < bricks; ++e) {
      const auto corners = numbering.connectivity.begin() + 8 * e;
      if (std::none_of(corners, corners + 8, owns)) continue;
      domain.elements.push_back(static_cast<int32_t>(e));
      for (int corner = 0; corner < 8; ++corner)
        if (!owns(corners[corner])) domain.others.push_back(corners[corner]);
    }
    std::sort(domain.others.begin(), domain.others.end());
    domain.others.erase(std::unique(domain.others.begin(), domain.others.end()), domain.others.end());
  }
  return result;
}

std::vector<Neighbour> findNeighbours(const Numbering& numbering, const Ranks& ranks) {
  const auto rankOf = [&](int32_t node) {
    const auto after = std::upper_bound(numbering.firstOfRank.begin(), numbering.firstOfRank.end(), node);
    return static_cast<int32_t>(after - numbering.firstOfRank.begin()) - 1;
  };
  std::vector<std::set<int32_t>> sent(static_cast<std::size_t>(ranks.size())), received(sent.size());
  for (std::size_t e = 0; e < numbering.elements.size() && ranks.areSeveral(); ++e) {
    const auto corners = numbering.connectivity.begin() + static_cast<std::ptrdiff_t>(8 * e);
    std::set<int32_t> owners;
    for (int corner = 0; corner < 8; ++corner) owners.insert(rankOf(corners[corner]));
    if (owners.size() < 2 || owners.count(ranks.rank()) == 0) continue;
    for (int corner = 0; corner < 8; ++corner) {
      const int32_t owner = rankOf(corners[corner]);
      if (owner != ranks.rank())
        received[static_cast<std::size_t>(owner)].insert(corners[corner]);
      else
        for (const int32_t other : owners)
          if (other != owner) sent[static_cast<std::size_t>(other)].insert(corners[corner]);
    }
  }
  std::vector<Neighbour> result;
  for (int32_t rank = 0; rank < ranks.size(); ++rank) {
    const auto& out = sent[static_cast<std::size_t>(rank)];
    const auto& in = received[static_cast<std::size_t>(rank)];
    if (!out.empty() || !in.empty()) result.push_back({rank, {out.begin(), out.end()}, {in.begin(), in.end()}});
  }
  return result;
}

} // namespace sharedanalysis::solver
