#include "solver/analysis/collected.h"

#include "solver/analysis/contact.h"
#include "solver/analysis/damping.h"
#include "solver/analysis/increment.h"
#include "solver/analysis/loads.h"
#include "solver/model/memory.h"
#include "solver/parallel/exact_sum.h"

#include <algorithm>
#include <array>

namespace sharedanalysis::solver {
namespace {

// A brick for which a domain of this rank speaks.
struct BrickNow {
  const Block& block;
  int place;                         // in the block
  std::size_t brick;                 // internal number
  double density, hourglass, damage; // strain energy per undeformed volume, and energies

  double strainEnergy() const { return block.volume(place) * density; }
};

// body(d) for each domain, by the thread that has it.
template <class Body>
void eachDomain(const std::vector<DomainState>& domains, Team& team, Body body) {
  team.run([&](int thread) {
    for (std::size_t d = static_cast<std::size_t>(thread); d < domains.size(); d += team.size()) body(d);
  });
}

// take(block, place, brick) for each brick for which a domain of this rank speaks; `brick` is that of the mesh.
template <class Take>
void eachBrick(const Layout& layout, const std::vector<DomainState>& domains, Team& team, Take take) {
  eachDomain(domains, team, [&](std::size_t d) {
    for (const Block& block : domains[d].blocks)
      for (int e = 0; e < block.count(); ++e)
        if (domains[d].speaksFor(layout, block.bricks()[static_cast<std::size_t>(e)]))
          take(block, e, static_cast<std::size_t>(layout.meshBrick(block.bricks()[static_cast<std::size_t>(e)])));
  });
}

// take(domain, brick) for each of them, by the threads that have the domains; `domain` counts from 0.
template <class Take>
void eachBrickNow(const Layout& layout, const std::vector<double>& x, std::vector<DomainState>& domains, Team& team,
                  Take take) {
  eachDomain(domains, team, [&](std::size_t d) {
    DomainState& state = domains[d];
    double density[kBlockLength], hourglass[kBlockLength], damage[kBlockLength];
    for (Block& block : state.blocks) {
      block.energies(x, state.work, density, hourglass, damage);
      for (int e = 0; e < block.count(); ++e)
        if (state.speaksFor(layout, block.bricks()[e]))
          take(d, BrickNow{block, e, static_cast<std::size_t>(block.bricks()[e]), density[e], hourglass[e], damage[e]});
    }
  });
}

// At the present time, half an increment beyond the last half step; prescribed components follow their history.
std::vector<double> velocitiesNow(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                                  const Course& course, const std::vector<DomainState>& domains) {
  const std::vector<double>& v = nodes.v;
  std::vector<double> now(v.size()); // zero for nodes of other ranks
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

// Vectors of mesh nodes, (3, nodes): those of other ranks from their owners.
void exchangeOfMesh(const Layout& layout, std::vector<double>& field) {
  exchangeNodes(
      layout,
      [&](int32_t node, auto&& visit) {
        for (std::size_t c = 0; c < 3; ++c) visit(field[3 * static_cast<std::size_t>(layout.meshNode(node)) + c]);
      },
      3);
}

// The sums of energies, momenta and histories of groups, which are exact: no order of nodes, bricks or ranks shows in them.
class Sums {
public:
  Sums(const Layout& layout, const NodeState& nodes, const Prescribed& prescribed, const Course& course,
       Collected& collected)
      : layout_(layout), nodes_(nodes), prescribed_(prescribed), course_(course), collected_(collected),
        sums_(kGroups + groupColumns()) {}

  void add(std::vector<DomainState>& domains, Team& team) {
    std::vector<Parts> ofDomains(domains.size());
    eachDomain(domains, team, [&](std::size_t d) { addNodes(domains[d].domain, ofDomains[d]); });
    addBricks(domains, team, ofDomains);
    for (Parts& parts : ofDomains)
      for (std::size_t k = 0; k < parts.size(); ++k) sums_[k].add(parts[k].sum());
    addReactions();
    std::size_t column = kGroups;
    for (const GroupHistory& history : layout_.definition.groupHistories) addGroup(history, column);
  }
  // Into what was collected; groups to the end of the measures.
  void store(double damped, double contact) {
    const std::vector<double> all = sumOverRanks(sums_, layout_.ranks);
    collected_.energies = {all[kKinetic], all[kStrain],   all[kHourglass], all[kViscous],
                           all[kDamage],  all[kExternal], damped,          contact};
    std::copy_n(all.begin() + kLinear, 3, collected_.linearMomentum.begin());
    std::copy_n(all.begin() + kAngular, 3, collected_.angularMomentum.begin());
    groups_.assign(all.begin() + kGroups, all.end());
  }
  const std::vector<double>& groups() const { return groups_; }

private:
  enum Place {
    kKinetic,
    kExternal,
    kStrain,
    kHourglass,
    kViscous,
    kDamage,
    kLinear,
    kAngular = kLinear + 3,
    kGroups = kAngular + 3
  };

  std::size_t groupColumns() const {
    std::size_t count = 0;
    for (const GroupHistory& history : layout_.definition.groupHistories)
      for (const GroupQuantity* quantity : history.quantities) count += static_cast<std::size_t>(quantity->count);
    return count;
  }

  using Parts = std::array<ExactSumOfMany, kGroups>; // of one domain

  void addNodes(const Domain& domain, Parts& sums) const {
    const std::array<double, 3>& gravity = layout_.definition.gravity;
    for (auto i = static_cast<std::size_t>(domain.firstNode); i < static_cast<std::size_t>(domain.endNode); ++i) {
      const double *x = &nodes_.x[3 * i], *X = layout_.referenceOf(static_cast<int64_t>(i)),
                   *w = &collected_.velocity[3 * i], m = nodes_.mass[i];
      sums[kKinetic].add(0.5 * m * (w[0] * w[0] + w[1] * w[1] + w[2] * w[2]));
      for (std::size_t c = 0; c < 3; ++c) {
        const std::size_t c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        if (gravity[c] != 0) sums[kExternal].add(m * gravity[c] * (x[c] - X[c]));
        sums[kLinear + c].add(m * w[c]);
        sums[kAngular + c].add(m * (x[c1] * w[c2] - x[c2] * w[c1]));
      }
    }
  }
  // Work up to the present time: with the last half increment.
  void addReactions() {
    for (std::size_t k = 0; k < prescribed_.components.size(); ++k) {
      const PrescribedComponent& p = prescribed_.components[k];
      sums_[kExternal].add(p.work + 0.5 * collected_.reactions[k] * p.of(nodes_.v.data()) * course_.lastIncrement);
    }
  }
  // Energies of single bricks are kept where a history of a group asks for them.
  void addBricks(std::vector<DomainState>& domains, Team& team, std::vector<Parts>& ofDomains) {
    const bool keeps = std::any_of(
        layout_.definition.groupHistories.begin(), layout_.definition.groupHistories.end(),
        [](const GroupHistory& history) {
          return std::any_of(history.quantities.begin(), history.quantities.end(),
                             [](const GroupQuantity* quantity) { return quantity->kind == GroupQuantityKind::Energy; });
        });
    if (keeps) bricks_.resize(static_cast<std::size_t>(layout_.bricks())); // zeros where another domain speaks
    eachBrickNow(layout_, nodes_.x, domains, team, [&](std::size_t domain, const BrickNow& now) {
      const BrickEnergies all{now.strainEnergy(), now.hourglass, now.block.viscousEnergy(now.place), now.damage,
                              now.block.mask(now.place)};
      for (std::size_t k = 0; k < 4; ++k) ofDomains[domain][kStrain + k].add(all[k]);
      if (keeps) bricks_[now.brick] = all;
    });
  }
  // Over its nodes or bricks: means of motion, sums of the rest.
  void addGroup(const GroupHistory& history, std::size_t& column) {
    const Group* group = layout_.mesh.findGroup(history.group);
    if (!group) throw InputError("history: the mesh has no group \"" + history.group + "\"");
    for (const GroupQuantity* quantity : history.quantities) {
      ExactSum* sum = &sums_[column];
      column += static_cast<std::size_t>(quantity->count);
      if (quantity->kind == GroupQuantityKind::Energy)
        addBricksOf(*group, sum);
      else
        addNodesOf(*group, quantity->kind, sum);
    }
  }
  void addBricksOf(const Group& group, ExactSum* sum) {
    for (const int32_t element : group.elements) {
      const auto internal = static_cast<std::size_t>(layout_.internalBricks[static_cast<std::size_t>(element)]);
      for (std::size_t k = 0; k < bricks_[internal].size(); ++k) sum[k].add(bricks_[internal][k]);
    }
  }
  void addNodesOf(const Group& group, GroupQuantityKind kind, ExactSum* sum) {
    const auto count = static_cast<double>(layout_.mesh.membersOf(group).nodes);
    for (const int32_t node : group.nodes) {
      if (!layout_.mesh.ownsNode(node)) continue;
      const int32_t internal = layout_.internalNode(node);
      const std::size_t at = 3 * static_cast<std::size_t>(internal);
      std::array<double, 3> value{};
      for (std::size_t c = 0; c < 3; ++c) {
        if (kind == GroupQuantityKind::Displacement)
          value[c] = (nodes_.x[at + c] - layout_.referenceOf(internal)[c]) / count;
        if (kind == GroupQuantityKind::Velocity) value[c] = collected_.velocity[at + c] / count;
      }
      if (kind == GroupQuantityKind::Reaction)
        for (std::size_t k = prescribed_.firstOf(internal); k < prescribed_.firstOf(internal + int64_t{1}); ++k)
          prescribed_.components[k].addTo(value.data(), collected_.reactions[k]);
      for (std::size_t c = 0; c < 3; ++c) sum[c].add(value[c]);
    }
  }

  const Layout& layout_;
  const NodeState& nodes_;
  const Prescribed& prescribed_;
  const Course& course_;
  Collected& collected_;
  using BrickEnergies = std::array<double, 5>; // strain, hourglass, viscous, damage, and whether the brick is out
  std::vector<ExactSum> sums_;
  std::vector<BrickEnergies> bricks_;
  std::vector<double> groups_;
};

} // namespace

Collected collect(const Layout& layout, const NodeState& nodes, Outside& outside, const Course& course,
                  std::vector<DomainState>& domains, Team& team) {
  const FloatingPointMode mode;
  const Prescribed& prescribed = outside.prescribed;
  Collected collected;
  collected.velocity = velocitiesNow(layout, nodes, prescribed, course, domains);
  for (const DomainState& state : domains)
    touchNow(layout.definition, course, state, prescribed, nodes, collected.velocity, outside.contacts);
  collected.reactions = reactionsNow(layout, nodes, prescribed, course, domains);
  for (const Contact& contact : outside.contacts.all) // what supports take of the pressure of planes
    for (size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k)
      collected.reactions[k] -= prescribed.components[k].of(contact.normalForce);
  collected.measures = workOfLoads(layout, nodes, course, outside.loads);
  const ContactSums contacts = sumContacts(layout, course, nodes, outside.contacts);
  const bool isDamped = layout.definition.isDamped();
  const double damped = isDamped ? dampingEnergy(layout, nodes, course, collected.velocity) : 0;
  Sums sums(layout, nodes, prescribed, course, collected);
  sums.add(domains, team);
  sums.store(damped, contacts.friction + contacts.impact);
  for (const double work : collected.measures) collected.energies.external += work;
  for (const ContactSums::OfPlane& plane : contacts.planes) collected.energies.external += plane.work;
  std::vector<double>& measures = collected.measures;
  for (const ContactSums::OfPlane& plane : contacts.planes)
    measures.insert(measures.end(), {plane.work, plane.force[0], plane.force[1], plane.force[2]});
  if (!contacts.planes.empty()) measures.insert(measures.end(), {contacts.friction, contacts.impact});
  if (isDamped) measures.push_back(damped);
  if (layout.definition.quasiStatic) measures.insert(measures.end(), {course.damping, collected.energies.stillness()});
  measures.insert(measures.end(), sums.groups().begin(), sums.groups().end());
  if (outside.contacts.all.empty()) release(collected.velocity);
  return collected;
}

void FieldArrays::fill(unsigned choice, const Layout& layout, const NodeState& nodes, const Prescribed& prescribed,
                       const Course& course, const Collected& collected, std::vector<DomainState>& domains,
                       Team& team) {
  *this = {};
  const size_t count = static_cast<size_t>(layout.nodes()), bricks = static_cast<size_t>(layout.bricks());
  const auto make = [choice](unsigned field, std::vector<double>& values, size_t size) {
    if ((choice & field) != 0) values.resize(size);
    return (choice & field) != 0;
  };
  const auto ofMesh = [&](int64_t node) { return 3 * static_cast<size_t>(layout.meshNode(node)); };
  if (make(kDisplacement, displacement, 3 * count))
    for (size_t i = 0; i < count; ++i)
      for (size_t c = 0, at = ofMesh(static_cast<int64_t>(i)); c < 3; ++c, ++at)
        displacement[at] = nodes.x[3 * i + c] - layout.mesh.coordinates[at];
  if (make(kVelocity, velocity, 3 * count)) {
    const std::vector<double> found =
        collected.velocity.empty() ? velocitiesNow(layout, nodes, prescribed, course, domains) : std::vector<double>();
    const std::vector<double>& now = collected.velocity.empty() ? found : collected.velocity;
    for (size_t i = 0; i < count; ++i) std::copy_n(&now[3 * i], 3, &velocity[ofMesh(static_cast<int64_t>(i))]);
    exchangeOfMesh(layout, velocity);
  }
  if (make(kReaction, reaction, 3 * count)) {
    for (size_t k = 0; k < prescribed.components.size(); ++k) {
      const PrescribedComponent& p = prescribed.components[k];
      double* ofNode = &reaction[ofMesh(p.position / 3)];
      if (p.isAxis)
        ofNode[p.position % 3] = collected.reactions[k];
      else
        p.addTo(ofNode, collected.reactions[k]);
    }
    exchangeOfMesh(layout, reaction);
  }
  const bool hasStress = make(kStress, stress, 6 * bricks), hasMask = make(kMask, elementMask, bricks);
  const auto each = [&](const Block& block, int place, size_t at) {
    const double mask = block.mask(place);
    if (hasMask) elementMask[at] = mask;
    for (int k = 0; hasStress && k < 6; ++k)
      stress[6 * at + static_cast<size_t>(k)] = mask == 0.0 ? block.stress(k, place) : 0.0;
  };
  if (hasStress || hasMask) eachBrick(layout, domains, team, each);
  if (make(kStrainEnergy, elementEnergy, bricks))
    eachBrickNow(layout, nodes.x, domains, team, [&](std::size_t, const BrickNow& now) {
      elementEnergy[static_cast<size_t>(layout.meshBrick(static_cast<int64_t>(now.brick)))] = now.density;
    });
}

} // namespace sharedanalysis::solver
