#include "solver/analysis/saved_state.h"

#include "solver/model/archive.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

// The bindings name every member: one more does not compile until it is decided here whether it belongs to the state.

void visit(Archive& archive, Course& course) {
  auto& [time, lastIncrement, stable, firstStable, increment, damping] = course;
  archive(time, lastIncrement, stable, firstStable, increment, damping);
}

void visit(Archive& archive, PrescribedComponent& component) {
  [[maybe_unused]] auto& [position, direction, parts, partCount, isAxis, reaction, work] = component;
  archive(reaction, work);
}

void visit(Archive& archive, LoadedNode& loaded) {
  [[maybe_unused]] auto& [node, load, share, force, work] = loaded;
  archive(force, work);
}

void visit(Archive& archive, Contact& contact) {
  [[maybe_unused]] auto& [node, plane, firstPrescribed, endPrescribed, normalForce, friction, work, impact, rubbed] =
      contact;
  archive(normalForce, friction, work, impact, rubbed);
}

// Of one node; internal number.  What its domain keeps of it is left as it is where the domain is that of another rank.
void visitNode(Archive& archive, const Changing& state, DomainState* owner, int64_t node) {
  [[maybe_unused]] auto& [X, x, v, mass, rMass, dampingEnergy] = state.nodes;
  const auto at = static_cast<std::size_t>(node);
  for (std::size_t c = 0; c < 3; ++c) archive(x[3 * at + c], v[3 * at + c]);
  if (!dampingEnergy.empty()) archive(dampingEnergy[at]);

  std::array<double, 3> elsewhere{};
  const auto ofDomain = [&](std::vector<double> DomainState::*values) {
    if (owner == nullptr) return archive(elsewhere);
    double* own = &(owner->*values)[3 * static_cast<std::size_t>(node - owner->domain.firstNode)];
    archive(own[0], own[1], own[2]);
  };
  ofDomain(&DomainState::force);
  if (state.layout.definition.quasiStatic) ofDomain(&DomainState::internal); // the one before is not read any more

  Prescribed& prescribed = state.outside.prescribed;
  for (std::size_t k = prescribed.firstOf(node); k < prescribed.firstOf(node + 1); ++k)
    visit(archive, prescribed.components[k]);
  const auto ofNode = [&](auto& all) {
    auto first =
        std::lower_bound(all.begin(), all.end(), node, [](const auto& one, int64_t n) { return one.node < n; });
    for (; first != all.end() && first->node == node; ++first) visit(archive, *first);
  };
  ofNode(state.outside.loads.nodes);
  ofNode(state.outside.contacts.all);
}

// One that owns a node of this rank.
DomainState* ownerOf(std::vector<DomainState>& domains, int64_t node) {
  for (DomainState& state : domains)
    if (node >= state.domain.firstNode && node < state.domain.endNode) return &state;
  return nullptr;
}

} // namespace

SavedState::SavedState(const Changing& state) : first_{0}, owners_{0} {
  const Layout& layout = state.layout;
  Archive archive;
  solver::visit(archive, state.course);
  for (const int32_t node : layout.numbering.internalNodes) {
    first_.push_back(archive.count());
    visitNode(archive, state, nullptr, node);
    owners_.push_back(0);
  }
  // those who have a brick know how much its material remembers
  std::vector<double> sizes(static_cast<std::size_t>(layout.bricks()), kInfinity);
  for (DomainState& domain : state.domains)
    for (Block& block : domain.blocks)
      for (int32_t e = 0; e < block.count(); ++e) {
        Archive ofBrick;
        block.visit(ofBrick, e);
        sizes[static_cast<std::size_t>(block.bricks()[static_cast<std::size_t>(e)])] =
            static_cast<double>(ofBrick.count());
      }
  layout.ranks.smallest(sizes);
  std::size_t end = archive.count();
  for (const int32_t brick : layout.internalBricks) {
    first_.push_back(end);
    end += static_cast<std::size_t>(sizes[static_cast<std::size_t>(brick)]);
    owners_.push_back(0);
  }
  first_.push_back(end);
}

void SavedState::visit(bool restores, double* words, const Changing& state) const {
  const auto archiveOf = [&](std::size_t entity) {
    return Archive(restores ? Archive::Task::Restore : Archive::Task::Save, words + first_[entity],
                   first_[entity + 1] - first_[entity]);
  };
  const Layout& layout = state.layout;
  Archive ofCourse = archiveOf(0);
  solver::visit(ofCourse, state.course);
  for (std::size_t node = 0; node < layout.numbering.internalNodes.size(); ++node) {
    Archive archive = archiveOf(1 + node);
    const int64_t internal = layout.numbering.internalNodes[node];
    visitNode(archive, state, ownerOf(state.domains, internal), internal);
  }
  for (DomainState& domain : state.domains)
    for (Block& block : domain.blocks)
      for (int32_t e = 0; e < block.count(); ++e) {
        const auto brick = static_cast<std::size_t>(block.bricks()[static_cast<std::size_t>(e)]);
        Archive archive =
            archiveOf(1 + layout.numbering.nodes.size() + static_cast<std::size_t>(layout.numbering.elements[brick]));
        block.visit(archive, e);
      }
}

// The words of each rank's own nodes and bricks to the root.
void SavedState::collect(const Ranks& ranks, std::vector<double>& words) const {
  for (int32_t rank = 1; rank < ranks.size(); ++rank) {
    if (!ranks.isRoot() && rank != ranks.rank()) continue;
    const auto each = [&](auto&& body) {
      for (std::size_t k = 0; k < owners_.size(); ++k)
        if (owners_[k] == rank)
          for (std::size_t at = first_[k]; at < first_[k + 1]; ++at) body(words[at]);
    };
    std::vector<double> theirs;
    if (ranks.isRoot()) {
      std::size_t count = 0;
      each([&](double&) { ++count; });
      theirs.resize(count);
      ranks.receive(theirs, rank);
      auto next = theirs.begin();
      each([&](double& word) { word = *next++; });
    } else {
      each([&](double& word) { theirs.push_back(word); });
      ranks.send(theirs, 0);
    }
  }
}

std::vector<double> SavedState::save(const Changing& state) const {
  std::vector<double> words(size());
  visit(false, words.data(), state);
  collect(state.layout.ranks, words);
  return words;
}

void SavedState::restore(const std::vector<double>& words, const Changing& state) const {
  std::vector<double> copy = words;
  visit(true, copy.data(), state);
  const Course& now = state.course;
  const bool isSound = now.time > 0 && now.time < state.layout.definition.endTime && now.lastIncrement > 0 &&
                       std::isfinite(now.lastIncrement) && now.stable > 0 && std::isfinite(now.stable) &&
                       now.increment > 0 && std::isfinite(now.damping) && now.damping >= 0;
  if (!isSound) throw InputError("its time, increment or damping are none that an analysis has");
  for (DomainState& one : state.domains) {
    [[maybe_unused]] auto& [domain, blocks, innerBlocks, force, time, firstPrescribed, endPrescribed, firstLoaded,
                            endLoaded, firstContact, endContact, faces, internal, internalBefore, work, stable,
                            masked] = one;
    time = now.time;
  }
}

} // namespace sharedanalysis::solver
