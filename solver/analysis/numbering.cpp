#include "solver/analysis/numbering.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <tuple>

namespace sharedanalysis::solver {
namespace {

// Of all coordinates, of a part those of the whole mesh.
std::pair<std::array<double, 3>, std::array<double, 3>> boundsOf(const Mesh& mesh) {
  if (mesh.part) return {mesh.part->low, mesh.part->high};
  std::array<double, 3> low{}, high{};
  for (std::size_t c = 0; c < 3; ++c) {
    low[c] = high[c] = mesh.nodes() > 0 ? mesh.coordinates[c] : 0;
    for (std::size_t k = c; k < mesh.coordinates.size(); k += 3) {
      low[c] = std::min(low[c], mesh.coordinates[k]);
      high[c] = std::max(high[c], mesh.coordinates[k]);
    }
  }
  return {low, high};
}

} // namespace

Numbering numberModel(const Mesh& mesh) {
  const int32_t bricks = mesh.elements(), nodes = mesh.nodes();
  const std::pair bounds = boundsOf(mesh);
  const std::array<double, 3>&low = bounds.first, &high = bounds.second; // clang 14 captures no bindings
  std::array<int, 3> axes = {0, 1, 2};                                   // longest first
  std::stable_sort(axes.begin(), axes.end(), [&](int a, int b) { return high[a] - low[a] > high[b] - low[b]; });

  // coordinates that differ by rounding alone are no order: they are compared on a grid much finer than any brick
  const double grid = std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]}) * 1e-7;
  std::vector<std::array<double, 3>> keys(bricks); // of the centres
  for (std::size_t e = 0; e < keys.size(); ++e)
    for (std::size_t c = 0; c < 3; ++c) {
      double sum = 0;
      for (std::size_t corner = 0; corner < 8; ++corner)
        sum += mesh.coordinates[3 * static_cast<std::size_t>(mesh.connectivity[8 * e + corner]) +
                                static_cast<std::size_t>(axes[c])];
      keys[e][c] = grid > 0 ? static_cast<double>(static_cast<int64_t>(sum / grid)) : 0;
    }
  Numbering result;
  result.elements.resize(bricks);
  std::iota(result.elements.begin(), result.elements.end(), 0);
  std::stable_sort(result.elements.begin(), result.elements.end(),
                   [&](int32_t a, int32_t b) { return keys[a] < keys[b]; });

  result.internalNodes.assign(nodes, -1);
  result.nodes.reserve(static_cast<std::size_t>(nodes));
  const auto number = [&](int32_t node) {
    result.internalNodes[node] = static_cast<int32_t>(result.nodes.size());
    result.nodes.push_back(node);
  };
  const auto numberCorners = [&](bool own) {
    for (const int32_t e : result.elements)
      for (std::size_t corner = 0; corner < 8; ++corner) {
        const int32_t node = mesh.connectivity[8 * static_cast<size_t>(e) + corner];
        if (result.internalNodes[node] < 0 && mesh.ownsNode(node) == own) number(node);
      }
  };
  numberCorners(true);
  for (int32_t node = 0; node < nodes; ++node)
    if (result.internalNodes[node] < 0 && mesh.ownsNode(node)) number(node);
  result.owned = static_cast<int64_t>(result.nodes.size());
  numberCorners(false);
  result.connectivity.reserve(8 * static_cast<size_t>(bricks));
  for (const int32_t e : result.elements)
    for (std::size_t corner = 0; corner < 8; ++corner)
      result.connectivity.push_back(result.internalNodes[mesh.connectivity[8 * static_cast<size_t>(e) + corner]]);
  return result;
}

namespace {

// The bricks of a domain, and the nodes that it does not own.
void addBricks(const Numbering& numbering, Domain& domain) {
  const auto owns = [&](int32_t node) { return node >= domain.firstNode && node < domain.endNode; };
  const auto isElsewhere = [&](int32_t node) { return !numbering.isOwned(node); };
  const int64_t bricks = static_cast<int64_t>(numbering.elements.size());
  for (const bool waits : {false, true}) {
    for (int64_t e = 0; e < bricks; ++e) {
      const auto corners = numbering.connectivity.begin() + 8 * e;
      if (std::none_of(corners, corners + 8, owns) || std::any_of(corners, corners + 8, isElsewhere) != waits) continue;
      domain.elements.push_back(static_cast<int32_t>(e));
      for (int corner = 0; corner < 8; ++corner)
        if (!owns(corners[corner])) domain.others.push_back(corners[corner]);
    }
    if (!waits) domain.inner = static_cast<int64_t>(domain.elements.size());
  }
  std::sort(domain.others.begin(), domain.others.end());
  domain.others.erase(std::unique(domain.others.begin(), domain.others.end()), domain.others.end());
}

// Where bricks add their forces.
void addRecords(const Numbering& numbering, Domain& domain) {
  const auto owned = static_cast<int32_t>(domain.owned());
  const auto cornersOf = [&](std::size_t k) {
    return numbering.connectivity.begin() + 8 * static_cast<std::ptrdiff_t>(domain.elements[k]);
  };
  domain.records.resize(8 * domain.elements.size());
  for (std::size_t k = 0; k < domain.elements.size(); ++k)
    for (std::ptrdiff_t corner = 0; corner < 8; ++corner) {
      const int32_t node = cornersOf(k)[corner];
      const auto other = std::lower_bound(domain.others.begin(), domain.others.end(), node) - domain.others.begin();
      domain.records[8 * k + static_cast<std::size_t>(corner)] = node >= domain.firstNode && node < domain.endNode
                                                                     ? static_cast<int32_t>(node - domain.firstNode)
                                                                     : owned + static_cast<int32_t>(other);
    }
  domain.recordCount = owned + static_cast<int64_t>(domain.others.size());
  const auto inner = static_cast<std::size_t>(domain.inner);
  if (inner == 0 || inner == domain.elements.size()) return; // all are computed at the same time, in their order
  std::vector<bool> isBorder(static_cast<std::size_t>(owned), false);
  for (std::size_t k = 8 * inner; k < domain.records.size(); ++k)
    if (domain.records[k] < owned) isBorder[static_cast<std::size_t>(domain.records[k])] = true;
  struct Part {
    int32_t node, brick;
    std::size_t place; // in `records`
  };
  std::vector<Part> parts;
  for (std::size_t k = 0; k < domain.records.size(); ++k)
    if (domain.records[k] < owned && isBorder[static_cast<std::size_t>(domain.records[k])])
      parts.push_back({domain.records[k], domain.elements[k / 8], k});
  std::sort(parts.begin(), parts.end(),
            [](const Part& a, const Part& b) { return std::tie(a.node, a.brick) < std::tie(b.node, b.brick); });
  for (const Part& part : parts) {
    const auto record = static_cast<int32_t>(domain.recordCount++);
    domain.records[part.place] = record;
    if (domain.border.empty() || domain.border.back().node != part.node)
      domain.border.push_back({part.node, record, record});
    domain.border.back().endPart = record + 1;
  }
}

} // namespace

std::vector<Domain> makeDomains(const Numbering& numbering, int count) {
  constexpr int64_t kFewestNodes = 128; // a domain below one block is not worth its barrier
  const int64_t domains = std::clamp<int64_t>(numbering.owned / kFewestNodes, 1, std::max(count, 1));
  std::vector<Domain> result(static_cast<size_t>(domains));
  for (int64_t d = 0; d < domains; ++d) {
    Domain& domain = result[static_cast<size_t>(d)];
    domain.firstNode = numbering.owned * d / domains;
    domain.endNode = numbering.owned * (d + 1) / domains;
    addBricks(numbering, domain);
    addRecords(numbering, domain);
  }
  return result;
}

std::vector<Neighbour> findNeighbours(const Mesh& mesh, const Numbering& numbering, const Ranks& ranks) {
  std::vector<Neighbour> result;
  if (!mesh.part) return result;
  const MeshPart& part = *mesh.part;
  const auto with = [&](int32_t rank) -> Neighbour& {
    const auto at = std::lower_bound(result.begin(), result.end(), rank,
                                     [](const Neighbour& one, int32_t wanted) { return one.rank < wanted; });
    return at != result.end() && at->rank == rank ? *at : *result.insert(at, {rank, {}, {}});
  };
  // by their places, which both sides know
  for (int32_t node = 0; node < mesh.nodes(); ++node)
    if (!mesh.ownsNode(node))
      with(part.owners[static_cast<std::size_t>(node)])
          .received.push_back(numbering.internalNodes[static_cast<std::size_t>(node)]);
  std::vector<Parcel<int64_t>> wanted;
  for (const Neighbour& neighbour : result) {
    wanted.push_back({neighbour.rank});
    for (const int32_t node : neighbour.received)
      wanted.back().values.push_back(mesh.nodePosition(numbering.nodes[static_cast<std::size_t>(node)]));
  }
  for (const Parcel<int64_t>& theirs : ranks.exchange(wanted))
    for (const int64_t position : theirs.values) {
      const auto node =
          std::lower_bound(part.nodePositions.begin(), part.nodePositions.end(), position) - part.nodePositions.begin();
      with(theirs.rank).sent.push_back(numbering.internalNodes[static_cast<std::size_t>(node)]);
    }
  return result;
}

} // namespace sharedanalysis::solver
