#include "solver/analysis/collected.h"

#include "solver/analysis/contact.h"
#include "solver/analysis/damping.h"
#include "solver/analysis/loads.h"

#include <algorithm>
#include <iterator>

namespace sharedanalysis::solver {
namespace {

// (kBrickValues, bricks) of the bricks for which the domains of this rank speak.
std::vector<double> brickValues(const Layout& layout, const std::vector<double>& x, std::vector<DomainState>& domains,
                                Team& team) {
  std::vector<double> values(kBrickValues * static_cast<size_t>(layout.bricks()));
  const auto ofDomain = [&](DomainState& state) {
    double density[kBlockLength], spring[kBlockLength], damage[kBlockLength];
    for (Block& block : state.blocks) {
      block.energies(x, state.work, density, spring, damage);
      for (int e = 0; e < block.count(); ++e) {
        const int32_t brick = block.bricks()[e];
        if (!state.speaksFor(layout, brick)) continue;
        double* own = &values[kBrickValues * static_cast<size_t>(brick)];
        const double first[] = {block.volume(e),        density[e], spring[e],
                                block.viscousEnergy(e), damage[e],  block.mask(e)};
        std::copy(std::begin(first), std::end(first), own);
        for (int c = 0; c < 6; ++c) own[6 + c] = block.mask(e) == 0.0 ? block.stress(c, e) : 0.0;
      }
    }
  };
  team.run([&](int thread) {
    for (size_t k = static_cast<size_t>(thread); k < domains.size(); k += team.size()) ofDomain(domains[k]);
  });
  return values;
}

// The bricks of each rank, in increasing order, to the root.
void collectBricks(const Layout& layout, std::vector<double>& bricks) {
  const Ranks& ranks = layout.ranks;
  for (int32_t rank = 1; rank < ranks.size(); ++rank) {
    if (!ranks.isRoot() && rank != layout.ranks.rank()) continue;
    std::vector<int64_t> theirs;
    for (int64_t e = 0; e < layout.bricks(); ++e) {
      const int64_t node = layout.numbering.lowestNode(e);
      if (node >= layout.numbering.firstOfRank[static_cast<size_t>(rank)] &&
          node < layout.numbering.firstOfRank[static_cast<size_t>(rank) + 1])
        theirs.push_back(e);
    }
    std::vector<double> values(kBrickValues * theirs.size());
    const auto each = [&](auto copy) {
      for (size_t k = 0; k < theirs.size(); ++k)
        for (int c = 0; c < kBrickValues; ++c)
          copy(values[kBrickValues * k + c], bricks[kBrickValues * static_cast<size_t>(theirs[k]) + c]);
    };
    if (ranks.isRoot()) {
      ranks.receive(values, rank);
      each([](double received, double& kept) { kept = received; });
    } else {
      each([](double& sent, double own) { sent = own; });
      ranks.send(values, 0);
    }
  }
}

// At the present time, half an increment beyond the last half step; prescribed components follow their history.
std::vector<double> velocitiesNow(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                                  const Course& course, const std::vector<DomainState>& domains) {
  const std::vector<double>& v = nodes.v;
  std::vector<double> now(v.size());
  for (const DomainState& state : domains)
    for (int64_t i = state.domain.firstNode; i < state.domain.endNode; ++i)
      for (int c = 0; c < 3; ++c) {
        const double f = state.force[3 * (i - state.domain.firstNode) + c];
        now[3 * i + c] =
            (v[3 * i + c] + 0.5 * course.lastIncrement * (layout.definition.gravity[c] - f * nodes.rMass[i])) /
            (1.0 + 0.5 * course.lastIncrement * course.damping);
      }
  for (const PrescribedComponent& p : prescribed.components) p.set(p.speed(course), now.data());
  return now;
}

// At the present time, with the acceleration that the histories have there.
std::vector<double> reactionsNow(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                                 const Course& course, const std::vector<DomainState>& domains) {
  std::vector<double> now(prescribed.components.size());
  const double h = 0.5 * (course.lastIncrement > 0 ? course.lastIncrement : course.stable);
  for (const DomainState& state : domains)
    for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) {
      const PrescribedComponent& p = prescribed.components[k];
      const double a = (p.speed(course.time + h, h) - p.speed(course.time - h, h)) / (2 * h);
      now[k] = p.of(state.force.data(), state.domain.firstNode) +
               nodes.mass[p.position / 3] * (a - p.of(layout.definition.gravity));
      if (course.damping > 0) now[k] += nodes.mass[p.position / 3] * course.damping * p.speed(course);
    }
  return now;
}

// Sums run in the order of one rank and domain, so that they have one value for any number of them.
Energies sumEnergies(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed, const Course& course,
                     const Collected& collected) {
  const std::vector<double>& mass = nodes.mass;
  Energies sum;
  for (const int32_t i : layout.numbering.order) {
    const size_t at = 3 * static_cast<size_t>(i);
    const double* w = &collected.velocity[at];
    sum.kinetic += 0.5 * mass[i] * (w[0] * w[0] + w[1] * w[1] + w[2] * w[2]);
    for (size_t c = 0; c < 3; ++c)
      sum.external += mass[i] * layout.definition.gravity[c] * (collected.x[at + c] - nodes.X[at + c]);
  }
  // work up to the present time: add the last half increment
  for (const size_t k : prescribed.order)
    sum.external +=
        collected.work[k] + 0.5 * collected.reactions[k] * collected.prescribedSpeed[k] * course.lastIncrement;
  for (int64_t e = 0; e < layout.bricks(); ++e) {
    const double* brick = &collected.bricks[kBrickValues * static_cast<size_t>(e)];
    sum.strain += brick[0] * brick[1];
    sum.hourglass += brick[2];
    sum.viscous += brick[3];
    sum.damage += brick[4];
  }
  return sum;
}

// Of a group, over its nodes or bricks in the order of the mesh: means of motion, sums of the rest.
void addGroup(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed, const GroupHistory& history,
              Collected& collected) {
  const Group* group = layout.mesh.findGroup(history.group);
  if (!group) throw InputError("history: the mesh has no group \"" + history.group + "\"");
  const auto count = static_cast<double>(group->nodes.size());
  for (const GroupQuantity* quantity : history.quantities) {
    std::array<double, 5> sum{};
    if (quantity->kind == GroupQuantityKind::Energy)
      for (const int32_t element : group->elements) {
        const double* brick =
            &collected.bricks[kBrickValues * static_cast<size_t>(layout.internalBricks[static_cast<size_t>(element)])];
        const double values[] = {brick[0] * brick[1], brick[2], brick[3], brick[4], brick[5]};
        for (size_t k = 0; k < 5; ++k) sum[k] += values[k];
      }
    else
      for (const int32_t node : group->nodes) {
        const int32_t internal = layout.numbering.internalNodes[static_cast<size_t>(node)];
        const size_t at = 3 * static_cast<size_t>(internal);
        for (size_t c = 0; c < 3; ++c) {
          if (quantity->kind == GroupQuantityKind::Displacement)
            sum[c] += (collected.x[at + c] - nodes.X[at + c]) / count;
          if (quantity->kind == GroupQuantityKind::Velocity) sum[c] += collected.velocity[at + c] / count;
        }
        if (quantity->kind != GroupQuantityKind::Reaction) continue;
        for (size_t k = prescribed.firstOf(internal); k < prescribed.firstOf(internal + int64_t{1}); ++k)
          prescribed.components[k].addTo(&sum[0], collected.reactions[k]);
      }
    collected.measures.insert(collected.measures.end(), sum.begin(), sum.begin() + quantity->count);
  }
}

} // namespace

Collected collect(const Layout& layout, const NodeState& nodes, Outside& outside, const Course& course,
                  std::vector<DomainState>& domains, Team& team) {
  const Ranks& ranks = layout.ranks;
  const FloatingPointMode mode;
  const Prescribed& prescribed = outside.prescribed;
  Collected collected;
  const auto ofNodes = [&](std::vector<double>& values) {
    std::vector<int64_t> first = layout.numbering.firstOfRank;
    for (int64_t& node : first) node *= 3;
    ranks.gatherRanges(values, first);
  };
  collected.x = nodes.x;
  collected.velocity = velocitiesNow(layout, nodes, prescribed, course, domains);
  for (const DomainState& state : domains)
    touchNow(layout.definition, course, state, prescribed, nodes, collected.velocity, outside.contacts);
  ofNodes(collected.x);
  ofNodes(collected.velocity);
  collected.reactions = reactionsNow(layout, nodes, prescribed, course, domains);
  for (const Contact& contact : outside.contacts.all) // what supports take of the pressure of planes
    for (size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k)
      collected.reactions[k] -= prescribed.components[k].of(contact.normalForce);
  for (const PrescribedComponent& p : prescribed.components) {
    collected.work.push_back(p.work);
    collected.prescribedSpeed.push_back(p.of(nodes.v.data()));
  }
  for (std::vector<double>* values : {&collected.reactions, &collected.work, &collected.prescribedSpeed})
    ranks.gatherRanges(*values, prescribed.firstOfRank);

  collected.measures = workOfLoads(layout, nodes, course, outside.loads);
  const ContactSums contacts = sumContacts(layout, course, nodes, outside.contacts);
  collected.bricks = brickValues(layout, nodes.x, domains, team);
  if (ranks.areSeveral()) collectBricks(layout, collected.bricks);
  const bool isDamped = layout.definition.isDamped();
  const double damped = isDamped ? dampingEnergy(layout, nodes, course, collected.velocity) : 0;
  std::vector<double> sums(8);
  if (ranks.isRoot()) {
    Energies all = sumEnergies(layout, nodes, prescribed, course, collected);
    for (const double work : collected.measures) all.external += work;
    for (const ContactSums::OfPlane& plane : contacts.planes) all.external += plane.work;
    sums = {all.kinetic, all.strain,   all.hourglass, all.viscous,
            all.damage,  all.external, damped,        contacts.friction + contacts.impact};
  }
  ranks.broadcast(sums);
  collected.energies = {sums[0], sums[1], sums[2], sums[3], sums[4], sums[5], sums[6], sums[7]};
  std::vector<double>& measures = collected.measures;
  for (const ContactSums::OfPlane& plane : contacts.planes)
    measures.insert(measures.end(), {plane.work, plane.force[0], plane.force[1], plane.force[2]});
  if (!contacts.planes.empty()) measures.insert(measures.end(), {contacts.friction, contacts.impact});
  if (isDamped) measures.push_back(damped);
  if (layout.definition.quasiStatic) measures.insert(measures.end(), {course.damping, collected.energies.stillness()});
  for (const GroupHistory& history : layout.definition.groupHistories)
    addGroup(layout, nodes, prescribed, history, collected);
  return collected;
}

std::array<double, 3> linearMomentum(const Layout& layout, const NodeState& nodes, const Collected& collected) {
  std::array<double, 3> sum{};
  for (const int32_t i : layout.numbering.order)
    for (size_t c = 0; c < 3; ++c) sum[c] += nodes.mass[i] * collected.velocity[3 * static_cast<size_t>(i) + c];
  return sum;
}

std::array<double, 3> angularMomentum(const Layout& layout, const NodeState& nodes, const Collected& collected) {
  std::array<double, 3> sum{};
  for (const int32_t i : layout.numbering.order) {
    const double *x = &collected.x[3 * static_cast<size_t>(i)], *w = &collected.velocity[3 * static_cast<size_t>(i)];
    for (int c = 0; c < 3; ++c) {
      const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      sum[c] += nodes.mass[i] * (x[c1] * w[c2] - x[c2] * w[c1]);
    }
  }
  return sum;
}

void FieldArrays::fill(const Layout& layout, const std::vector<double>& X, const Prescribed& prescribed,
                       const Collected& collected) {
  const size_t nodes = static_cast<size_t>(layout.nodes()), bricks = static_cast<size_t>(layout.bricks());
  displacement.resize(3 * nodes);
  velocity.resize(3 * nodes);
  reaction.assign(3 * nodes, 0.0);
  stress.resize(6 * bricks);
  elementEnergy.resize(bricks);
  elementMask.resize(bricks);
  for (size_t i = 0; i < nodes; ++i)
    for (size_t c = 0; c < 3; ++c) {
      const size_t at = 3 * static_cast<size_t>(layout.numbering.nodes[i]) + c;
      displacement[at] = collected.x[3 * i + c] - X[3 * i + c];
      velocity[at] = collected.velocity[3 * i + c];
    }
  for (size_t k = 0; k < prescribed.components.size(); ++k) {
    const PrescribedComponent& p = prescribed.components[k];
    double* ofNode = &reaction[3 * static_cast<size_t>(layout.numbering.nodes[p.position / 3])];
    if (p.isAxis)
      ofNode[p.position % 3] = collected.reactions[k];
    else
      p.addTo(ofNode, collected.reactions[k]);
  }
  for (size_t e = 0; e < bricks; ++e) {
    const double* brick = &collected.bricks[kBrickValues * e];
    const size_t at = static_cast<size_t>(layout.numbering.elements[e]);
    elementEnergy[at] = brick[1];
    elementMask[at] = brick[5];
    for (size_t k = 0; k < 6; ++k) stress[6 * at + k] = brick[6 + k];
  }
}

} // namespace sharedanalysis::solver
