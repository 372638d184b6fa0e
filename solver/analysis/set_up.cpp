#include "solver/analysis/set_up.h"

#include "solver/model/memory.h"
#include "solver/parallel/exact_sum.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <sstream>

namespace sharedanalysis::solver {
namespace {

const Group& groupOf(const Mesh& mesh, const std::string& name, const char* what) {
  const Group* group = mesh.findGroup(name);
  if (group == nullptr) throw InputError(std::string(what) + ": the mesh has no group \"" + name + "\"");
  return *group;
}

// Own nodes of a group, internal numbers, in the order of the mesh.
std::vector<int32_t> ownNodesOf(const Layout& layout, const std::string& group, const char* what) {
  std::vector<int32_t> own;
  for (const int32_t node : groupOf(layout.mesh, group, what).nodes)
    if (layout.mesh.ownsNode(node)) own.push_back(layout.internalNode(node));
  return own;
}

// The material of each brick, in internal numbering.
std::vector<int32_t> materialsOf(const Layout& layout) {
  std::vector<int32_t> ofMeshBrick(layout.mesh.elements(), -1), result(layout.mesh.elements());
  Faults faults;
  for (const Section& section : layout.definition.sections) {
    for (int32_t e : groupOf(layout.mesh, section.group, "section").elements) {
      if (ofMeshBrick[e] >= 0)
        faults.add(layout.mesh.elementPosition(e), "brick " + std::to_string(layout.mesh.elementNumbers[e]) +
                                                       " belongs to two sections, the second one of group \"" +
                                                       section.group + "\"");
      ofMeshBrick[e] = static_cast<int32_t>(section.material);
    }
  }
  faults.throwFirst(layout.ranks);
  Found bare;
  for (int32_t e = 0; e < layout.mesh.elements(); ++e)
    if (ofMeshBrick[e] < 0 && layout.mesh.ownsElement(e))
      bare.add(layout.mesh.elementPosition(e), layout.mesh.elementNumbers[e]);
  bare.join(layout.ranks);
  if (bare.count > 0)
    throw InputError("brick " + std::to_string(bare.number) + " belongs to no section; " + std::to_string(bare.count) +
                     " bricks have none");
  for (int64_t e = 0; e < layout.bricks(); ++e) result[e] = ofMeshBrick[layout.numbering.elements[e]];
  return result;
}

// "brick 7 of material "rubber" has a mass of 0 kg"
std::string faultOf(const Layout& layout, const Material& material, int32_t brick, const char* quantity, double value,
                    const char* unit) {
  std::ostringstream text;
  text << "brick " << layout.mesh.elementNumbers[static_cast<size_t>(layout.meshBrick(brick))] << " of material \""
       << material.name << "\" has a " << quantity << " of " << std::abs(value) << ' ' << unit
       << ", with which nothing can be computed: look at the unit of its lengths, at its density, constants and "
          "viscosity";
  return text.str();
}

bool isSound(double value) { return value >= std::numeric_limits<double>::min() && std::isfinite(value); }

} // namespace

void checkIncrements(const Layout& layout, const NodeState& nodes, std::vector<DomainState>& domains) {
  const std::vector<double> atRest(nodes.v.size());
  Faults faults;
  for (DomainState& state : domains) {
    if (isSound(state.stableIncrement) || state.stableIncrement == kInfinity) continue;
    for (Block& block : state.blocks) {
      const double increment =
          block.evaluate(nodes.x, atRest, 0.0, layout.definition, state.work, state.force.data()).stableIncrement;
      const int32_t brick = block.bricks()[0];
      if (!isSound(increment) && increment != kInfinity)
        faults.add(layout.mesh.elementPosition(layout.meshBrick(brick)),
                   faultOf(layout, block.material(), brick, "stable increment", increment, "s"));
    }
  }
  faults.throwFirst(layout.ranks);
}

std::vector<double> incrementsOfMaterials(const Layout& layout, const std::vector<DomainState>& domains) {
  const std::vector<Material>& materials = layout.definition.materials;
  std::vector<double> smallest(materials.size(), kInfinity);
  for (const DomainState& state : domains)
    for (const Block& block : state.blocks) {
      double& own = smallest[static_cast<size_t>(&block.material() - materials.data())];
      own = smallerOf(own, block.stableIncrement());
    }
  layout.ranks.smallest(smallest);
  for (double& increment : smallest) increment *= layout.definition.safetyFactor;
  return smallest;
}

double energyScaleOf(const Layout& layout, const NodeState& nodes) {
  double fastest = 0;
  for (const Material& material : layout.definition.materials) fastest = std::max(fastest, material.waveSpeed());
  ExactSumOfMany mass;
  for (int64_t i = 0; i < layout.numbering.owned; ++i) mass.add(nodes.mass[static_cast<size_t>(i)]);
  return sumOverRanks({mass.sum()}, layout.ranks)[0] * fastest * fastest;
}

NodeState referenceNodes(const Layout& layout) {
  NodeState nodes;
  nodes.x.resize(layout.mesh.coordinates.size());
  for (int64_t i = 0; i < layout.nodes(); ++i)
    for (int c = 0; c < 3; ++c) nodes.x[3 * i + c] = layout.referenceOf(i)[c];
  return nodes;
}

std::vector<DomainState> makeDomainStates(const Layout& layout, const std::vector<double>& X, int threads) {
  const std::vector<int32_t> material = materialsOf(layout);
  std::vector<Domain> parts = makeDomains(layout.numbering, threads);
  std::vector<DomainState> domains(parts.size());
  std::vector<int64_t> bad;
  MaterialPoints::SharedConstants constants;
  for (size_t d = 0; d < parts.size(); ++d) {
    DomainState& state = domains[d];
    state.domain = std::move(parts[d]);
    state.force.resize(3 * static_cast<size_t>(state.domain.recordCount));
    const std::span<const int32_t> elements(state.domain.elements), records(state.domain.records);
    const auto inner = static_cast<size_t>(state.domain.inner);
    state.blocks.reserve(elements.size() / kBlockLength + 2); // of one material
    for (size_t first = 0, count = 0; first < elements.size(); first += count) {
      // consecutive bricks of one material; their order is kept
      const int32_t own = material[elements[first]];
      const size_t most = std::min<size_t>(kBlockLength, (first < inner ? inner : elements.size()) - first);
      for (count = 1; count < most && material[elements[first + count]] == own;) ++count;
      state.blocks.emplace_back(elements.subspan(first, count), records.subspan(8 * first, 8 * count), layout.numbering,
                                layout.definition.materials[own], layout.definition, constants);
      if (first < inner) ++state.innerBlocks;
      Block& block = state.blocks.back();
      block.setReference(X, state.work);
      for (int e = 0; e < block.count(); ++e)
        if (block.mask(e) != 0.0 && state.speaksFor(layout, block.bricks()[e]))
          bad.push_back(layout.mesh.elementNumbers[layout.meshBrick(block.bricks()[e])]);
    }
    release(state.domain.records); // blocks have them
    release(state.domain.elements);
  }
  const int64_t count = layout.ranks.sum(static_cast<int64_t>(bad.size()));
  if (count == 0) return domains;
  constexpr std::size_t kShown = 8;
  bad = firstOfAll(layout.ranks, std::move(bad), kShown);
  std::string text = "bricks with zero or negative volume: ";
  for (size_t k = 0; k < bad.size(); ++k) text += (k > 0 ? ", " : "") + std::to_string(bad[k]);
  throw InputError(text + (count > static_cast<int64_t>(kShown) ? ", ..." : "") + " (" + std::to_string(count) +
                   " in all)");
}

void setMasses(const Layout& layout, const std::vector<DomainState>& domains, NodeState& nodes) {
  std::vector<double>&mass = nodes.mass, &rMass = nodes.rMass;
  std::vector<double> ofBrick(static_cast<size_t>(layout.bricks()));
  Faults faults;
  for (const DomainState& state : domains)
    for (const Block& block : state.blocks)
      for (int e = 0; e < block.count(); ++e) {
        const int32_t brick = block.bricks()[e];
        ofBrick[brick] = block.mass(e);
        if (!isSound(block.mass(e) / 8) || !isSound(8 / block.mass(e)))
          faults.add(layout.mesh.elementPosition(layout.meshBrick(brick)),
                     faultOf(layout, block.material(), brick, "mass", block.mass(e), "kg"));
      }
  faults.throwFirst(layout.ranks);
  mass.assign(static_cast<size_t>(layout.nodes()), 0.0);
  for (int64_t e = 0; e < layout.bricks(); ++e)
    for (int corner = 0; corner < 8; ++corner) mass[layout.numbering.connectivity[8 * e + corner]] += ofBrick[e] / 8.0;
  rMass.resize(mass.size());
  // a node without bricks has no mass and does not accelerate
  for (size_t i = 0; i < mass.size(); ++i) rMass[i] = mass[i] > 0.0 ? 1.0 / mass[i] : 0.0;
}

namespace {

// Adds the part of a normal that the prescribed components of its node leave free; planes that differ by less than kSamePlane
// are one.
void addNormal(const SymmetryPlane& plane, const Layout& layout, int32_t node, std::vector<PrescribedComponent>& ofNode,
               Faults& faults) {
  constexpr double kSamePlane = 1e-6;
  PrescribedComponent rest{.position = 0, .direction = plane.normal, .isAxis = false};
  std::array<double, 3> factors{};
  std::array<const History*, 3> histories{};
  std::array<bool, 3> taken{};
  for (const PrescribedComponent& p : ofNode) {
    const double common = p.of(plane.normal);
    taken[static_cast<size_t>(p.position % 3)] = true;
    for (int k = 0; k < p.partCount; ++k) {
      const auto axis = static_cast<size_t>(p.parts[static_cast<size_t>(k)].axis);
      histories[axis] = p.parts[static_cast<size_t>(k)].history;
      factors[axis] -= common * p.parts[static_cast<size_t>(k)].factor;
    }
    if (p.isAxis)
      rest.direction[static_cast<size_t>(p.position % 3)] = 0;
    else
      for (size_t c = 0; c < 3; ++c) rest.direction[c] -= common * p.direction[c];
  }
  const std::array<double, 3>& d = rest.direction;
  const double length = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
  const bool isNew = length > kSamePlane;
  for (size_t axis = 0; axis < 3; ++axis) {
    if (!histories[axis] || factors[axis] == 0 || isRest(*histories[axis])) continue;
    if (!isNew && std::abs(factors[axis]) > kSamePlane)
      faults.add(layout.placeOfNode(node), "node " + std::to_string(layout.mesh.nodeNumbers[layout.meshNode(node)]) +
                                               " is moved out of the symmetry plane of group \"" + plane.group + "\"");
    rest.parts[static_cast<size_t>(rest.partCount++)] = {histories[axis], static_cast<int>(axis),
                                                         factors[axis] / length};
  }
  if (!isNew) return;
  for (double& component : rest.direction) component /= length;
  rest.position = 3 * static_cast<int64_t>(node) + (std::find(taken.begin(), taken.end(), false) - taken.begin());
  ofNode.push_back(rest);
}

void addSymmetryPlanes(const Layout& layout, std::vector<PrescribedComponent>& prescribed, Faults& faults) {
  std::map<int32_t, std::vector<PrescribedComponent>> ofNodes; // where planes are
  for (const SymmetryPlane& plane : layout.definition.symmetryPlanes)
    for (const int32_t node : ownNodesOf(layout, plane.group, "symmetry")) ofNodes[node];
  for (const PrescribedComponent& p : prescribed) {
    const auto found = ofNodes.find(static_cast<int32_t>(p.position / 3));
    if (found != ofNodes.end()) found->second.push_back(p);
  }
  for (const SymmetryPlane& plane : layout.definition.symmetryPlanes)
    for (const int32_t node : ownNodesOf(layout, plane.group, "symmetry"))
      addNormal(plane, layout, node, ofNodes[node], faults);
  for (const auto& [node, all] : ofNodes)
    for (const PrescribedComponent& p : all)
      if (!p.isAxis) prescribed.push_back(p);
  std::sort(prescribed.begin(), prescribed.end(),
            [](const PrescribedComponent& a, const PrescribedComponent& b) { return a.position < b.position; });
}

} // namespace

std::size_t Prescribed::firstOf(int64_t node) const {
  return static_cast<size_t>(
      std::lower_bound(components.begin(), components.end(), 3 * node,
                       [](const PrescribedComponent& p, int64_t position) { return p.position < position; }) -
      components.begin());
}

Prescribed makePrescribed(const Layout& layout, std::vector<DomainState>& domains) {
  Prescribed result;
  std::vector<PrescribedComponent>& prescribed = result.components;
  struct Origin {
    const History* history;
    const std::string* group;
  };
  std::map<int64_t, Origin> components;
  Faults faults;
  for (const PrescribedMotion& motion : layout.definition.motions)
    for (const int32_t node : ownNodesOf(layout, motion.group, "prescribed motion"))
      for (int c = 0; c < 3; ++c) {
        if (!motion.velocity[c]) continue;
        const History& history = *motion.velocity[c];
        const auto [found, isNew] =
            components.try_emplace(3 * static_cast<int64_t>(node) + c, Origin{&history, &motion.group});
        const History& other = *found->second.history;
        if (!isNew && !(other == history))
          faults.add(layout.placeOfNode(node), "groups \"" + *found->second.group + "\" and \"" + motion.group +
                                                   "\" prescribe different motion of component " + "xyz"[c] +
                                                   " of node " +
                                                   std::to_string(layout.mesh.nodeNumbers[layout.meshNode(node)]));
      }
  for (const auto& [position, origin] : components) {
    prescribed.push_back({.position = position});
    prescribed.back().parts[0] = {origin.history, static_cast<int>(position % 3)};
    prescribed.back().partCount = 1;
  }
  faults.throwFirst(layout.ranks);
  addSymmetryPlanes(layout, prescribed, faults);
  faults.throwFirst(layout.ranks);
  for (DomainState& state : domains) {
    state.firstPrescribed = result.firstOf(state.domain.firstNode);
    state.endPrescribed = result.firstOf(state.domain.endNode);
  }
  return result;
}

void setVelocities(const Layout& layout, Prescribed& prescribed, NodeState& nodes) {
  std::vector<double>& v = nodes.v;
  v.assign(3 * static_cast<size_t>(layout.nodes()), 0.0);
  for (const InitialVelocity& initial : layout.definition.initialVelocities) {
    std::vector<int32_t> all;
    if (initial.group.empty()) {
      all.resize(layout.mesh.nodes());
      for (int32_t i = 0; i < layout.mesh.nodes(); ++i) all[i] = i;
    }
    const double length = std::hypot(initial.axis[0], initial.axis[1], initial.axis[2]);
    const std::array<double, 3> a = {initial.axis[0] / length, initial.axis[1] / length, initial.axis[2] / length};
    for (int32_t node : initial.group.empty() ? all : groupOf(layout.mesh, initial.group, "initial velocity").nodes) {
      std::array<double, 3> r;
      for (int c = 0; c < 3; ++c) r[c] = layout.mesh.coordinates[3 * static_cast<size_t>(node) + c] - initial.origin[c];
      const double s = a[0] * r[0] + a[1] * r[1] + a[2] * r[2];
      const double rate =
          initial.profileLength ? initial.rate * std::sin(std::numbers::pi * s / *initial.profileLength) : initial.rate;
      double* velocityOfNode = &v[3 * static_cast<size_t>(layout.numbering.internalNodes[node])];
      for (int c = 0; c < 3; ++c) {
        const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        velocityOfNode[c] = initial.velocity[c] + (rate == 0.0 ? 0.0 : rate * (a[c1] * r[c2] - a[c2] * r[c1]));
      }
    }
  }
  for (PrescribedComponent& p : prescribed.components)
    for (PrescribedComponent::Part& part : p.parts) part.start = v[3 * (p.position / 3) + part.axis];
  for (const PrescribedComponent& p : prescribed.components) p.set(p.startSpeed(), v.data());
}

} // namespace sharedanalysis::solver
