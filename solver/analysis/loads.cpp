#include "solver/analysis/loads.h"

#include "solver/analysis/set_up.h"
#include "solver/parallel/exact_sum.h"
#include "solver/parallel/faces.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <tuple>

namespace sharedanalysis::solver {
namespace {

using Vector = std::array<double, 3>;

Vector cross(const Vector& a, const Vector& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// The bilinear face x = m + a xi + c eta + b xi eta, corners counter-clockwise from (-1, -1).
struct FaceShape {
  Vector a, b, c;

  FaceShape(const std::vector<double>& x, const std::array<int32_t, 4>& nodes) {
    for (std::size_t k = 0; k < 3; ++k) {
      const auto at = [&](std::size_t corner) { return x[3 * static_cast<std::size_t>(nodes[corner]) + k]; };
      a[k] = 0.25 * ((at(1) - at(0)) + (at(2) - at(3)));
      c[k] = 0.25 * ((at(3) - at(0)) + (at(2) - at(1)));
      b[k] = 0.25 * ((at(2) - at(3)) - (at(1) - at(0)));
    }
  }
};

constexpr double kXi[4] = {-1, 1, 1, -1}, kEta[4] = {-1, -1, 1, 1};

// The integrals of the shape functions times the normal: the normal a x c + xi a x b + eta b x c is linear, so they are exact.
std::array<Vector, 4> normalShares(const FaceShape& face) {
  const Vector middle = cross(face.a, face.c), alongXi = cross(face.a, face.b), alongEta = cross(face.b, face.c);
  std::array<Vector, 4> shares;
  for (std::size_t i = 0; i < 4; ++i)
    for (std::size_t k = 0; k < 3; ++k) shares[i][k] = middle[k] + (kXi[i] * alongXi[k] + kEta[i] * alongEta[k]) / 3.0;
  return shares;
}

// The integrals of the shape functions, at 2 x 2 Gauss points: exact for plane faces.
std::array<double, 4> areaShares(const FaceShape& face) {
  const double g = 1 / std::sqrt(3.0);
  const Vector middle = cross(face.a, face.c), alongXi = cross(face.a, face.b), alongEta = cross(face.b, face.c);
  std::array<double, 4> shares{};
  for (std::size_t p = 0; p < 4; ++p) {
    const double xi = g * kXi[p], eta = g * kEta[p];
    double squares = 0;
    for (std::size_t k = 0; k < 3; ++k) {
      const double n = middle[k] + xi * alongXi[k] + eta * alongEta[k];
      squares += n * n;
    }
    for (std::size_t i = 0; i < 4; ++i)
      shares[i] += std::sqrt(squares) * 0.25 * (1 + kXi[i] * xi) * (1 + kEta[i] * eta);
  }
  return shares;
}

// What the set-up keeps while it goes on.
struct Builder {
  const Layout& layout;
  std::vector<DomainState>& domains;
  Loads loads;
  std::vector<std::vector<BrickFace>> faces; // of each load, internal numbers

  Builder(const Layout& l, std::vector<DomainState>& d) : layout(l), domains(d) {}

  int32_t internalNode(int32_t node) const { return layout.internalNode(node); }
  bool isOwned(int32_t node) const { return layout.numbering.isOwned(node); }

  const Group& groupOf(const Load& load) const {
    const Group* group = layout.mesh.findGroup(load.group);
    if (!group) throw InputError(std::string(load.kind->key) + ": the mesh has no group \"" + load.group + "\"");
    return *group;
  }

  // Own nodes of loads that shares are known of, and faces of the others.
  void addNodes() {
    std::vector<std::pair<int32_t, int32_t>> places; // node, load
    const auto count = static_cast<int32_t>(layout.definition.loads.size());
    faces.resize(layout.definition.loads.size());
    for (int32_t k = 0; k < count; ++k) {
      const Load& load = layout.definition.loads[static_cast<std::size_t>(k)];
      const Group& group = groupOf(load);
      if (load.kind->members == Members::Faces) {
        for (BrickFace face : facesOf(layout.mesh, group, layout.ranks)) {
          face.brick = layout.internalBricks[static_cast<std::size_t>(face.brick)];
          for (int32_t& node : face.nodes) {
            node = internalNode(node);
            if (isOwned(node)) places.emplace_back(node, k);
          }
          faces[static_cast<std::size_t>(k)].push_back(face);
        }
      } else {
        for (const int32_t node : group.nodes)
          if (layout.mesh.ownsNode(node)) places.emplace_back(internalNode(node), k);
      }
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    for (const auto& [node, load] : places) loads.nodes.push_back({node, load});
  }

  std::size_t firstOf(int64_t node) const {
    return static_cast<std::size_t>(
        std::lower_bound(loads.nodes.begin(), loads.nodes.end(), node,
                         [](const LoadedNode& loaded, int64_t wanted) { return loaded.node < wanted; }) -
        loads.nodes.begin());
  }
  std::size_t entry(int32_t node, int32_t load) const {
    std::size_t k = firstOf(node);
    while (loads.nodes[k].load != load) ++k;
    return k;
  }

  void setShares() {
    std::vector<double> massOf(layout.mesh.elementNumbers.size());
    for (const DomainState& state : domains)
      for (const Block& block : state.blocks)
        for (int e = 0; e < block.count(); ++e) massOf[static_cast<std::size_t>(block.bricks()[e])] = block.mass(e);
    const std::vector<Load>& all = layout.definition.loads;
    for (LoadedNode& node : loads.nodes) {
      const Load& load = all[static_cast<std::size_t>(node.load)];
      if (load.kind->share == Share::Nodes)
        node.share = load.perNode ? 1 : 1 / static_cast<double>(layout.mesh.membersOf(groupOf(load)).nodes);
    }
    for (std::size_t k = 0; k < all.size(); ++k)
      if (all[k].kind->share == Share::Masses)
        for (const int32_t element : groupOf(all[k]).elements) {
          const auto brick = static_cast<std::size_t>(layout.internalBricks[static_cast<std::size_t>(element)]);
          for (std::size_t corner = 0; corner < 8; ++corner) {
            const int32_t node = layout.numbering.connectivity[8 * brick + corner];
            if (isOwned(node)) loads.nodes[entry(node, static_cast<int32_t>(k))].share += massOf[brick] / 8;
          }
        }
  }

  // The faces that touch a node of the domain, whose bricks it computes.
  void setFaces(DomainState& state, const std::vector<double>& X) const {
    std::map<int32_t, std::pair<std::size_t, int>> places;
    for (std::size_t b = 0; b < state.blocks.size(); ++b)
      for (int e = 0; e < state.blocks[b].count(); ++e) places[state.blocks[b].bricks()[e]] = {b, e};
    for (std::size_t k = 0; k < faces.size(); ++k)
      for (const BrickFace& face : faces[k]) {
        LoadedFace loaded{static_cast<int32_t>(k), face.nodes, areaShares(FaceShape(X, face.nodes)), {}, 0, 0};
        bool isOwn = false;
        for (std::size_t i = 0; i < 4; ++i) {
          const int32_t node = face.nodes[i];
          const bool own = node >= state.domain.firstNode && node < state.domain.endNode;
          loaded.entries[i] = own ? entry(node, loaded.load) : LoadedFace::kElsewhere;
          isOwn = isOwn || own;
        }
        if (!isOwn) continue;
        std::tie(loaded.block, loaded.place) = places.at(face.brick);
        state.faces.push_back(loaded);
      }
  }
};

} // namespace

Loads makeLoads(const Layout& layout, const std::vector<double>& X, std::vector<DomainState>& domains) {
  if (layout.definition.loads.empty()) return {};
  Builder builder(layout, domains);
  builder.addNodes();
  builder.setShares();
  for (DomainState& state : domains) {
    state.firstLoaded = builder.firstOf(state.domain.firstNode);
    state.endLoaded = builder.firstOf(state.domain.endNode);
    builder.setFaces(state, X);
  }
  return std::move(builder.loads);
}

void applyLoads(const Case& definition, const NodeState& nodes, DomainState& state, Loads& loads) {
  std::vector<double> values;
  for (const Load& load : definition.loads) values.push_back(valueAt(load.history, state.time));
  for (std::size_t k = state.firstLoaded; k < state.endLoaded; ++k) {
    LoadedNode& node = loads.nodes[k];
    const auto load = static_cast<std::size_t>(node.load);
    for (std::size_t c = 0; c < 3; ++c) node.force[c] = node.share * values[load] * definition.loads[load].direction[c];
  }
  for (const LoadedFace& face : state.faces) {
    if (state.blocks[face.block].mask(face.place) != 0.0) continue; // a brick that is out carries no load
    const auto load = static_cast<std::size_t>(face.load);
    std::array<Vector, 4> forces{};
    if (definition.loads[load].kind->share == Share::Normals) {
      forces = normalShares(FaceShape(nodes.x, face.nodes));
      for (Vector& force : forces)
        for (double& component : force) component *= -values[load];
    } else {
      for (std::size_t i = 0; i < 4; ++i)
        for (std::size_t c = 0; c < 3; ++c)
          forces[i][c] = face.areas[i] * values[load] * definition.loads[load].direction[c];
    }
    for (std::size_t i = 0; i < 4; ++i)
      if (face.entries[i] != LoadedFace::kElsewhere)
        for (std::size_t c = 0; c < 3; ++c) loads.nodes[face.entries[i]].force[c] += forces[i][c];
  }
  for (std::size_t k = state.firstLoaded; k < state.endLoaded; ++k) {
    const LoadedNode& node = loads.nodes[k];
    for (std::size_t c = 0; c < 3; ++c)
      state.force[3 * static_cast<std::size_t>(node.node - state.domain.firstNode) + c] -= node.force[c];
  }
}

namespace {

double power(const LoadedNode& node, const std::vector<double>& v) {
  const double* velocity = &v[3 * static_cast<std::size_t>(node.node)];
  return node.force[0] * velocity[0] + node.force[1] * velocity[1] + node.force[2] * velocity[2];
}

} // namespace

void addWork(const DomainState& state, const std::vector<double>& v, double duration, Loads& loads) {
  for (std::size_t k = state.firstLoaded; k < state.endLoaded; ++k)
    loads.nodes[k].work += power(loads.nodes[k], v) * duration;
}

std::vector<double> workOfLoads(const Layout& layout, const NodeState& nodes, const Course& course,
                                const Loads& loads) {
  std::vector<ExactSum> sums(layout.definition.loads.size());
  // up to the present time: with the last half increment
  for (const LoadedNode& node : loads.nodes)
    sums[static_cast<std::size_t>(node.load)].add(node.work + 0.5 * power(node, nodes.v) * course.lastIncrement);
  return sumOverRanks(sums, layout.ranks);
}

} // namespace sharedanalysis::solver
