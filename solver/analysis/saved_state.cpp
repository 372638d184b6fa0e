#include "solver/analysis/saved_state.h"

#include "solver/model/archive.h"
#include "solver/parallel/mesh_slice.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <map>

namespace sharedanalysis::solver {
namespace {

// The bindings name every member: one more does not compile until it is decided here whether it belongs to the state.

void visit(Archive& archive, Course& course) {
  auto& [time, lastIncrement, stable, firstStable, increment, damping, pace] = course;
  archive(time, lastIncrement, stable, firstStable, increment, damping, pace);
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

// Of one node; internal number.  Of the node of another rank only its motion is there, with which the record begins.
void visitNode(Archive& archive, const Changing& state, DomainState* owner, int64_t node) {
  [[maybe_unused]] auto& [x, v, mass, rMass, dampingEnergy] = state.nodes;
  const auto at = static_cast<std::size_t>(node);
  for (std::size_t c = 0; c < 3; ++c) archive(x[3 * at + c], v[3 * at + c]);
  if (owner == nullptr) return;
  if (!dampingEnergy.empty()) archive(dampingEnergy[at]);
  const auto ofDomain = [&](std::vector<double> DomainState::*values) {
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

constexpr std::size_t kHeading = 2, kPiece = 1 << 17; // words of a record before its own; of a piece, about

// The nodes of the whole mesh by their places, then its bricks.
int64_t countOf(const Mesh& mesh) { return mesh.wholeNodes() + mesh.wholeElements(); }

// The nodes and bricks that this rank has.
class Present {
public:
  explicit Present(const Changing& state) : state_(state) {
    for (DomainState& domain : state.domains)
      for (Block& block : domain.blocks)
        for (int32_t e = 0; e < block.count(); ++e)
          bricks_.push_back({state.layout.numbering.elements[static_cast<std::size_t>(block.bricks()[e])], e, &block});
    std::stable_sort(bricks_.begin(), bricks_.end(),
                     [](const Brick& a, const Brick& b) { return a.element < b.element; });
  }

  // In increasing order.
  std::vector<int64_t> entities() const {
    const Mesh& mesh = state_.layout.mesh;
    std::vector<int64_t> all;
    for (int32_t node = 0; node < mesh.nodes(); ++node) all.push_back(mesh.nodePosition(node));
    for (std::size_t k = 0; k < bricks_.size(); ++k)
      if (k == 0 || bricks_[k].element != bricks_[k - 1].element)
        all.push_back(mesh.wholeNodes() + mesh.elementPosition(bricks_[k].element));
    return all;
  }

  // Calls body(entity, visit) for each one that this rank owns, in increasing order.
  template <class Body>
  void eachOwn(Body body) {
    const Mesh& mesh = state_.layout.mesh;
    for (int32_t node = 0; node < mesh.nodes(); ++node)
      if (ownerOfNode(node)) body(mesh.nodePosition(node), [&](Archive& archive) { visitOf(archive, node); });
    for (std::size_t k = 0; k < bricks_.size(); ++k) {
      const Brick& brick = bricks_[k];
      if ((k > 0 && brick.element == bricks_[k - 1].element) || !ownerOfNode(mesh.firstCorner(brick.element))) continue;
      body(mesh.wholeNodes() + mesh.elementPosition(brick.element),
           [&](Archive& archive) { brick.block->visit(archive, brick.place); });
    }
  }

  // The k-th of entities(), from its words; whether they are those of such a one.
  bool restore(std::size_t k, double* words, std::size_t count) {
    const auto nodes = static_cast<std::size_t>(state_.layout.mesh.nodes());
    const auto restoreBy = [&](bool isWhole, const auto& visit) {
      Archive archive(Archive::Task::Restore, words, count);
      visit(archive);
      return !isWhole || archive.count() == count;
    };
    try {
      if (k < nodes) {
        const auto node = static_cast<int32_t>(k);
        return restoreBy(ownerOfNode(node) != nullptr, [&](Archive& archive) { visitOf(archive, node); });
      }
      // every domain that computes the brick has it
      bool isSound = true;
      for (std::size_t b = firstOfBrick(k - nodes); isSound && b < firstOfBrick(k - nodes + 1); ++b)
        isSound = restoreBy(true, [&](Archive& archive) { bricks_[b].block->visit(archive, bricks_[b].place); });
      return isSound;
    } catch (const InputError&) {
      return false;
    }
  }

private:
  struct Brick {
    int32_t element, place; // of the mesh; in the block
    Block* block;
  };

  DomainState* ownerOfNode(int32_t node) const {
    return ownerOf(state_.domains, state_.layout.numbering.internalNodes[static_cast<std::size_t>(node)]);
  }
  void visitOf(Archive& archive, int32_t node) const {
    visitNode(archive, state_, ownerOfNode(node),
              state_.layout.numbering.internalNodes[static_cast<std::size_t>(node)]);
  }
  std::size_t firstOfBrick(std::size_t k) {
    if (firstOfBrick_.empty()) {
      for (std::size_t b = 0; b < bricks_.size(); ++b)
        if (b == 0 || bricks_[b].element != bricks_[b - 1].element) firstOfBrick_.push_back(b);
      firstOfBrick_.push_back(bricks_.size());
    }
    return firstOfBrick_[k];
  }

  const Changing& state_;
  std::vector<Brick> bricks_; // of all domains, by their place in the mesh
  std::vector<std::size_t> firstOfBrick_;
};

template <class T>
std::vector<Parcel<T>> parcelsOf(std::map<int32_t, std::vector<T>>& lists) {
  std::vector<Parcel<T>> parcels;
  for (auto& [rank, values] : lists) parcels.push_back({rank, std::move(values)});
  return parcels;
}

// Knows which ranks have an entity; of each one the rank in whose share it is.
class Directory {
public:
  Directory(const Ranks& ranks, int64_t count, const std::vector<int64_t>& present) : ranks_(ranks), count_(count) {
    std::map<int32_t, std::vector<int64_t>> told;
    for (const int64_t entity : present) told[shareOf(entity, count, ranks.size())].push_back(entity);
    first_ = firstOfShare(count, ranks.rank(), ranks.size());
    const std::vector<Parcel<int64_t>> all = ranks.exchange(parcelsOf(told));
    begin_.assign(static_cast<std::size_t>(firstOfShare(count, ranks.rank() + int64_t{1}, ranks.size()) - first_) + 1,
                  0);
    for (const Parcel<int64_t>& parcel : all)
      for (const int64_t entity : parcel.values) ++begin_[at(entity) + 1];
    for (std::size_t k = 1; k < begin_.size(); ++k) begin_[k] += begin_[k - 1];
    having_.resize(begin_.back());
    std::vector<std::size_t> next(begin_);
    for (const Parcel<int64_t>& parcel : all)
      for (const int64_t entity : parcel.values) having_[next[at(entity)]++] = parcel.rank;
  }

  // Of each entity, in any order, the ranks that have it.  Every rank calls it.
  std::vector<std::vector<int32_t>> find(const std::vector<int64_t>& entities) const {
    std::map<int32_t, std::vector<int64_t>> asked, askedFor;
    for (std::size_t k = 0; k < entities.size(); ++k) {
      const int32_t rank = shareOf(entities[k], count_, ranks_.size());
      asked[rank].push_back(entities[k]);
      askedFor[rank].push_back(static_cast<int64_t>(k));
    }
    std::vector<Parcel<int32_t>> answers;
    for (const Parcel<int64_t>& parcel : ranks_.exchange(parcelsOf(asked))) {
      std::vector<int32_t>& answer = answers.emplace_back(Parcel<int32_t>{parcel.rank}).values;
      for (const int64_t entity : parcel.values) {
        const std::size_t begin = begin_[at(entity)], end = begin_[at(entity) + 1];
        answer.push_back(static_cast<int32_t>(end - begin));
        answer.insert(answer.end(), having_.begin() + static_cast<std::ptrdiff_t>(begin),
                      having_.begin() + static_cast<std::ptrdiff_t>(end));
      }
    }
    std::vector<std::vector<int32_t>> found(entities.size());
    for (const Parcel<int32_t>& parcel : ranks_.exchange(answers)) {
      auto next = parcel.values.begin();
      for (const int64_t k : askedFor[parcel.rank]) {
        const int32_t count = *next++;
        found[static_cast<std::size_t>(k)].assign(next, next + count);
        next += count;
      }
    }
    return found;
  }

private:
  std::size_t at(int64_t entity) const { return static_cast<std::size_t>(entity - first_); }

  const Ranks& ranks_;
  int64_t count_, first_ = 0;      // of all; of the share
  std::vector<std::size_t> begin_; // in having_, of each entity of the share
  std::vector<int32_t> having_;
};

struct Record {
  int64_t entity;
  std::size_t begin, end; // with its heading, among the words
};

// Until they end or are none; `isSound` tells it.
std::vector<Record> recordsOf(const std::vector<double>& words, int64_t entities, bool& isSound) {
  std::vector<Record> records;
  for (std::size_t k = 0; k < words.size();) {
    const auto rest = static_cast<int64_t>(words.size() - k) - static_cast<int64_t>(kHeading);
    const int64_t entity = rest < 0 ? -1 : std::bit_cast<int64_t>(words[k]),
                  size = rest < 0 ? -1 : std::bit_cast<int64_t>(words[k + 1]);
    if (entity < 0 || entity >= entities || size < 0 || size > rest) {
      isSound = false;
      break;
    }
    records.push_back({entity, k, k + kHeading + static_cast<std::size_t>(size)});
    k = records.back().end;
  }
  return records;
}

// Piece by piece, so that no rank has more of it than its share.
bool restoreRecords(const Changing& state, const RecordSource& next) {
  const Ranks& ranks = state.layout.ranks;
  Present present(state);
  const std::vector<int64_t> entities = present.entities();
  const Directory directory(ranks, countOf(state.layout.mesh), entities);
  std::vector<bool> isRestored(entities.size());
  bool isSound = true;
  for (;;) {
    const std::vector<double> words = next();
    if (ranks.sum(static_cast<int64_t>(words.size())) == 0) break;
    const std::vector<Record> records = recordsOf(words, countOf(state.layout.mesh), isSound);
    std::vector<int64_t> named;
    for (const Record& record : records) named.push_back(record.entity);
    const std::vector<std::vector<int32_t>> having = directory.find(named);
    std::map<int32_t, std::vector<double>> sent;
    for (std::size_t k = 0; k < records.size(); ++k)
      for (const int32_t rank : having[k])
        sent[rank].insert(sent[rank].end(), words.begin() + static_cast<std::ptrdiff_t>(records[k].begin),
                          words.begin() + static_cast<std::ptrdiff_t>(records[k].end));
    for (Parcel<double>& parcel : ranks.exchange(parcelsOf(sent)))
      for (const Record& record : recordsOf(parcel.values, countOf(state.layout.mesh), isSound)) {
        const auto k = static_cast<std::size_t>(std::lower_bound(entities.begin(), entities.end(), record.entity) -
                                                entities.begin());
        const std::size_t first = record.begin + kHeading;
        isSound = !isRestored[k] && present.restore(k, parcel.values.data() + first, record.end - first) && isSound;
        isRestored[k] = true;
      }
  }
  return isSound && std::find(isRestored.begin(), isRestored.end(), false) == isRestored.end();
}

} // namespace

std::vector<double> saveCourse(const Changing& state) {
  Archive counted;
  visit(counted, state.course);
  std::vector<double> words(counted.count());
  Archive archive(Archive::Task::Save, words.data(), words.size());
  visit(archive, state.course);
  return words;
}

void saveRecords(const Changing& state, const RecordSink& put) {
  std::vector<double> words;
  Present(state).eachOwn([&](int64_t entity, const auto& visit) {
    Archive counted;
    visit(counted);
    words.push_back(std::bit_cast<double>(entity));
    words.push_back(std::bit_cast<double>(static_cast<int64_t>(counted.count())));
    const std::size_t first = words.size();
    words.resize(first + counted.count());
    Archive archive(Archive::Task::Save, words.data() + first, counted.count());
    visit(archive);
    if (words.size() < kPiece) return;
    put(words);
    words.clear();
  });
  if (!words.empty()) put(words);
}

void restoreState(const Changing& state, const std::vector<double>& course, const RecordSource& next) {
  std::vector<double> words = course;
  Archive archive(Archive::Task::Restore, words.data(), words.size());
  visit(archive, state.course);
  const Course& now = state.course;
  const bool isSound = now.time > 0 && now.time < state.layout.definition.endTime && now.lastIncrement > 0 &&
                       std::isfinite(now.lastIncrement) && now.stable > 0 && std::isfinite(now.stable) &&
                       now.increment > 0 && std::isfinite(now.damping) && now.damping >= 0 && now.pace > 0 &&
                       std::isfinite(now.pace);
  if (!isSound) throw InputError("its time, increment or damping are none that an analysis has");
  if (!state.layout.ranks.allAgree(restoreRecords(state, next)))
    throw InputError("its nodes and bricks are not those of the case and its mesh");
  for (DomainState& one : state.domains) {
    [[maybe_unused]] auto& [domain, blocks, innerBlocks, force, time, firstPrescribed, endPrescribed, firstLoaded,
                            endLoaded, firstContact, endContact, faces, internal, internalBefore, work, stable,
                            masked] = one;
    time = now.time;
  }
}

} // namespace sharedanalysis::solver
