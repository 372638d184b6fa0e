#include "solver/analysis/analysis.h"

#include "solver/analysis/block.h"
#include "solver/analysis/block_kernels.h"
#include "glo.h"
#include "host_services.h"
#include "solver/analysis/partition.h"
#include "reference_host.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>
#include <map>
#include <numbers>
#include <numeric>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace sharedanalysis::solver {
namespace {

constexpr double kGrowth = 1.05; // of the increment from one step to the next
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// NaN when one of them is: whichever comes first, it is found.
double smallerOf(double a, double b) { return b < a || b != b ? b : a; }

double valueAt(const History& history, double time) {
  const auto& t = history.time;
  if (t.empty()) return 0;
  const auto after = std::upper_bound(t.begin(), t.end(), time) - t.begin();
  if (after == 0) return history.value.front();
  if (after == static_cast<std::ptrdiff_t>(t.size())) return history.value.back();
  const double part = (time - t[after - 1]) / (t[after] - t[after - 1]);
  return history.value[after - 1] + part * (history.value[after] - history.value[after - 1]);
}

// One prescribed component of one node, and the work of its reaction.
struct PrescribedComponent {
  int64_t position; // in (3, nodes), internal numbering
  const History* history;
  double reaction = 0, work = 0;
};

// What one thread works on: a domain's blocks, its force array and its prescribed components.
struct DomainState {
  Domain domain;
  std::vector<Block> blocks;
  std::vector<double> force; // records of the nodes that it touches, its own first
  size_t firstPrescribed = 0, endPrescribed = 0;
  BlockWork work;
  double stableIncrement = kInfinity;
  int64_t masked = 0;

  bool owns(int32_t node) const { return node >= domain.firstNode && node < domain.endNode; }
};

// What an increment leaves for the decision about the next one, on this rank or on all of them.
struct Outcome {
  double smallest = kInfinity; // stable increment; NaN when something is not a number
  bool masked = false, killed = false;
  bool stopped = false; // the library has ended the analysis
};

// What sums and fields are made of, whole on the root.
struct Collected {
  std::vector<double> x, velocity;                      // (3, nodes), internal numbering
  std::vector<double> reactions, work, prescribedSpeed; // of the prescribed components
  std::vector<double> bricks;                           // (kBrickValues, bricks)
};
constexpr int kBrickValues = 12; // volume, strain energy density, hourglass, viscous and damage energy, mask, stress

} // namespace

struct Analysis::Data {
  const Mesh& mesh;
  const Case& definition;
  Ranks ranks;
  Numbering numbering;
  std::vector<Neighbour> neighbours;
  std::vector<DomainState> domains;            // of this rank
  std::vector<double> X, x, v, mass, rMass;    // internal numbering; v at the last half step
  std::vector<PrescribedComponent> prescribed; // by position
  double time = 0, lastIncrement = 0, stable = 0, firstStable = 0;
  int64_t increment = 0, updates = 0;
  Ending ending = Ending::Running;
  std::vector<int64_t> distorted, ownDistorted;
  std::function<void(const Progress&, double)> observer;
  std::vector<int64_t> firstPrescribedOfRank;
  std::vector<size_t> prescribedOrder; // as one rank has them: sums run in this order
  Collected collected;
  Energies energies;
  bool isCollected = false;
  std::exception_ptr failed; // in the loop over increments
  std::vector<double> displacement, velocity, reaction, stress, elementEnergy, elementMask;

  Data(const Mesh& m, const Case& c) : mesh(m), definition(c) {}

  int64_t nodes() const { return static_cast<int64_t>(numbering.nodes.size()); }
  int64_t bricks() const { return static_cast<int64_t>(numbering.elements.size()); }
  // No exception leaves the loop over increments: it goes on after it.
  template <class Body>
  void guarded(Body body) noexcept {
    try {
      if (!failed) body();
    } catch (...) {
      failed = std::current_exception();
    }
  }
  bool speaksFor(const DomainState& state, int32_t brick) const { return state.owns(numbering.lowestNode(brick)); }

  std::vector<int32_t> materials() const;
  void setUpDomains(int threads);
  void setUpMasses();
  void setUpMotion();
  void setUpVelocities();
  void evaluateForces(DomainState& state, double step);
  void move(DomainState& state, double step);
  void exchangeMotion();
  double nextIncrement(double end) const;
  Outcome outcome() const;
  Ending findEnding(const Outcome& all);
  std::vector<double> brickValues();
  void collect();
  void collectBricks();
  Energies sumEnergies() const;
  // Velocities at the present time, half an increment beyond the last half step; prescribed components follow their history.
  std::vector<double> velocitiesNow() const;
  // Reactions of the prescribed components at the present time, with the acceleration that their history has there.
  std::vector<double> reactionsNow() const;
};

namespace {

const Group& groupOf(const Mesh& mesh, const std::string& name, const char* what) {
  const Group* group = mesh.findGroup(name);
  if (group == nullptr) throw InputError(std::string(what) + ": the mesh has no group \"" + name + "\"");
  return *group;
}

} // namespace

// ---- set-up

std::vector<int32_t> Analysis::Data::materials() const {
  std::vector<int32_t> ofMeshBrick(mesh.elements(), -1), result(mesh.elements());
  for (const Section& section : definition.sections) {
    for (int32_t e : groupOf(mesh, section.group, "section").elements) {
      if (ofMeshBrick[e] >= 0)
        throw InputError("brick " + std::to_string(mesh.elementNumbers[e]) +
                         " belongs to two sections, the second one of group \"" + section.group + "\"");
      ofMeshBrick[e] = static_cast<int32_t>(section.material);
    }
  }
  const auto bare = std::find(ofMeshBrick.begin(), ofMeshBrick.end(), -1);
  if (bare != ofMeshBrick.end())
    throw InputError("brick " + std::to_string(mesh.elementNumbers[bare - ofMeshBrick.begin()]) +
                     " belongs to no section; " + std::to_string(std::count(bare, ofMeshBrick.end(), -1)) +
                     " bricks have none");
  for (int64_t e = 0; e < bricks(); ++e) result[e] = ofMeshBrick[numbering.elements[e]];
  return result;
}

void Analysis::Data::setUpDomains(int threads) {
  const std::vector<int32_t> material = materials();
  const std::vector<Domain> parts = makeDomains(numbering, ranks.rank(), threads);
  domains.resize(parts.size());
  std::vector<int64_t> bad;
  for (size_t d = 0; d < parts.size(); ++d) {
    DomainState& state = domains[d];
    state.domain = parts[d];
    state.force.resize(3 * static_cast<size_t>(state.domain.touched()));
    const std::span<const int32_t> elements(state.domain.elements);
    for (size_t first = 0, count = 0; first < elements.size(); first += count) {
      // a run of bricks of one material; the order of the bricks stays
      const int32_t own = material[elements[first]];
      const size_t most = std::min<size_t>(kBlockLength, elements.size() - first);
      for (count = 1; count < most && material[elements[first + count]] == own;) ++count;
      state.blocks.emplace_back(elements.subspan(first, count), numbering, definition.materials[own], definition,
                                state.domain);
      Block& block = state.blocks.back();
      block.setReference(X, state.work);
      for (int e = 0; e < block.count(); ++e)
        if (block.mask(e) != 0.0) bad.push_back(mesh.elementNumbers[numbering.elements[block.bricks()[e]]]);
    }
  }
  bad = ranks.joined(bad);
  if (!bad.empty()) {
    std::sort(bad.begin(), bad.end());
    bad.erase(std::unique(bad.begin(), bad.end()), bad.end());
    std::string text = "bricks with zero or negative volume: ";
    for (size_t k = 0; k < bad.size() && k < 8; ++k) text += (k > 0 ? ", " : "") + std::to_string(bad[k]);
    throw InputError(text + (bad.size() > 8 ? ", ..." : "") + " (" + std::to_string(bad.size()) + " in all)");
  }
}

// Those of nodes that other ranks own are theirs to know; the root gets them for its sums.
void Analysis::Data::setUpMasses() {
  std::vector<double> ofBrick(static_cast<size_t>(bricks()));
  for (const DomainState& state : domains)
    for (const Block& block : state.blocks)
      for (int e = 0; e < block.count(); ++e) ofBrick[block.bricks()[e]] = block.mass(e);
  mass.assign(static_cast<size_t>(nodes()), 0.0);
  for (int64_t e = 0; e < bricks(); ++e)
    for (int corner = 0; corner < 8; ++corner) mass[numbering.connectivity[8 * e + corner]] += ofBrick[e] / 8.0;
  ranks.gatherRanges(mass, numbering.firstOfRank);
  rMass.resize(mass.size());
  // a node of no brick has nothing to move it
  for (size_t i = 0; i < mass.size(); ++i) rMass[i] = mass[i] > 0.0 ? 1.0 / mass[i] : 0.0;
}

void Analysis::Data::setUpMotion() {
  struct Origin {
    const History* history;
    const std::string* group;
  };
  std::map<int64_t, Origin> components;
  for (const PrescribedMotion& motion : definition.motions)
    for (int32_t node : groupOf(mesh, motion.group, "prescribed motion").nodes)
      for (int c = 0; c < 3; ++c) {
        if (!motion.velocity[c]) continue;
        const History& history = *motion.velocity[c];
        const auto [found, isNew] = components.try_emplace(3 * static_cast<int64_t>(numbering.internalNodes[node]) + c,
                                                           Origin{&history, &motion.group});
        const History& other = *found->second.history;
        if (!isNew && (other.time != history.time || other.value != history.value))
          throw InputError("groups \"" + *found->second.group + "\" and \"" + motion.group +
                           "\" prescribe different motion of component " + "xyz"[c] + " of node " +
                           std::to_string(mesh.nodeNumbers[node]));
      }
  for (const auto& [position, origin] : components) prescribed.push_back({position, origin.history});
  const auto at = [&](int64_t node) {
    return static_cast<size_t>(
        std::lower_bound(prescribed.begin(), prescribed.end(), 3 * node,
                         [](const PrescribedComponent& p, int64_t position) { return p.position < position; }) -
        prescribed.begin());
  };
  for (DomainState& state : domains) {
    state.firstPrescribed = at(state.domain.firstNode);
    state.endPrescribed = at(state.domain.endNode);
  }
  std::vector<int64_t> alone(numbering.order.size());
  for (size_t k = 0; k < alone.size(); ++k) alone[numbering.order[k]] = static_cast<int64_t>(k);
  prescribedOrder.resize(prescribed.size());
  std::iota(prescribedOrder.begin(), prescribedOrder.end(), size_t{0});
  const auto placeOf = [&](size_t k) { return 3 * alone[prescribed[k].position / 3] + prescribed[k].position % 3; };
  std::sort(prescribedOrder.begin(), prescribedOrder.end(),
            [&](size_t a, size_t b) { return placeOf(a) < placeOf(b); });
  for (const int64_t node : numbering.firstOfRank) firstPrescribedOfRank.push_back(static_cast<int64_t>(at(node)));
}

void Analysis::Data::setUpVelocities() {
  v.assign(3 * static_cast<size_t>(nodes()), 0.0);
  for (const InitialVelocity& initial : definition.initialVelocities) {
    std::vector<int32_t> all;
    if (initial.group.empty()) {
      all.resize(mesh.nodes());
      for (int32_t i = 0; i < mesh.nodes(); ++i) all[i] = i;
    }
    const double length = std::hypot(initial.axis[0], initial.axis[1], initial.axis[2]);
    const std::array<double, 3> a = {initial.axis[0] / length, initial.axis[1] / length, initial.axis[2] / length};
    for (int32_t node : initial.group.empty() ? all : groupOf(mesh, initial.group, "initial velocity").nodes) {
      std::array<double, 3> r;
      for (int c = 0; c < 3; ++c) r[c] = mesh.coordinates[3 * static_cast<size_t>(node) + c] - initial.origin[c];
      const double s = a[0] * r[0] + a[1] * r[1] + a[2] * r[2];
      const double rate =
          initial.profileLength ? initial.rate * std::sin(std::numbers::pi * s / *initial.profileLength) : initial.rate;
      double* velocityOfNode = &v[3 * static_cast<size_t>(numbering.internalNodes[node])];
      for (int c = 0; c < 3; ++c) {
        const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        velocityOfNode[c] = initial.velocity[c] + (rate == 0.0 ? 0.0 : rate * (a[c1] * r[c2] - a[c2] * r[c1]));
      }
    }
  }
  for (const PrescribedComponent& p : prescribed) v[p.position] = valueAt(*p.history, 0.0);
}

Analysis::Analysis(const Mesh& mesh, const Case& definition, int threads)
    : data_(std::make_unique<Data>(mesh, definition)) {
  Data& d = *data_;
  d.numbering = numberModel(mesh, d.ranks);
  d.neighbours = findNeighbours(d.numbering, d.ranks);
  d.X.resize(mesh.coordinates.size());
  for (int64_t i = 0; i < d.nodes(); ++i)
    for (int c = 0; c < 3; ++c) d.X[3 * i + c] = mesh.coordinates[3 * static_cast<size_t>(d.numbering.nodes[i]) + c];
  d.x = d.X;
  d.setUpDomains(std::max(threads, 1));
  d.setUpMasses();
  d.setUpMotion();
  d.setUpVelocities();
  for (DomainState& state : d.domains) d.evaluateForces(state, 0.0);
  d.ending = d.findEnding(d.outcome());
  d.firstStable = d.stable;
}

Analysis::~Analysis() = default;

// ---- one increment

void Analysis::Data::evaluateForces(DomainState& state, double step) {
  const int32_t values = static_cast<int32_t>(state.force.size());
  GLO_UTI_BROADCAST0D(&values, state.force.data());
  state.stableIncrement = kInfinity;
  state.masked = 0;
  for (Block& block : state.blocks) {
    const Block::Outcome outcome = block.evaluate(x, v, step, definition, state.work, state.force.data());
    state.stableIncrement = smallerOf(state.stableIncrement, outcome.stableIncrement);
    state.masked += outcome.masked;
  }
}

// Velocities to the next half step and positions to the next time, for the nodes of one domain.
void Analysis::Data::move(DomainState& state, double step) {
  const Domain& domain = state.domain;
  const double between = 0.5 * (lastIncrement + step);
  const double gravity[3] = {definition.gravity[0], definition.gravity[1], definition.gravity[2]};
  std::vector<double> before;
  before.reserve(state.endPrescribed - state.firstPrescribed);
  for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) before.push_back(v[prescribed[k].position]);
  kick(domain.firstNode, domain.endNode, state.force.data(), domain.firstNode, rMass.data(), gravity, between,
       v.data());
  for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) {
    PrescribedComponent& p = prescribed[k];
    const double old = before[k - state.firstPrescribed], now = valueAt(*p.history, time + 0.5 * step);
    const int64_t node = p.position / 3;
    const int c = static_cast<int>(p.position % 3);
    p.reaction = state.force[p.position - 3 * domain.firstNode] + mass[node] * ((now - old) / between - gravity[c]);
    p.work += p.reaction * 0.5 * (old * lastIncrement + now * step);
    v[p.position] = now;
  }
  drift(domain.firstNode, domain.endNode, v.data(), step, x.data());
}

// The next increment: the stable one, reached by little growth, and cut so that `end` is met with two equal steps at the last.
double Analysis::Data::nextIncrement(double end) const {
  const double step = std::min(stable, std::max(kGrowth * lastIncrement, 0.5 * stable)), rest = end - time;
  if (rest <= step) return rest;
  return rest < 2 * step ? 0.5 * rest : step;
}

// Positions and velocities of the nodes that other ranks' bricks need, and of theirs that are needed here.
void Analysis::Data::exchangeMotion() {
  const auto packed = [&](const std::vector<int32_t>& nodes) {
    std::vector<double> values;
    values.reserve(6 * nodes.size());
    for (const int32_t node : nodes)
      for (const std::vector<double>* field : {&x, &v})
        for (int c = 0; c < 3; ++c) values.push_back((*field)[3 * static_cast<size_t>(node) + c]);
    return values;
  };
  for (const Neighbour& neighbour : neighbours) ranks.send(packed(neighbour.sent), neighbour.rank);
  for (const Neighbour& neighbour : neighbours) {
    std::vector<double> values(6 * neighbour.received.size());
    ranks.receive(values, neighbour.rank);
    const double* next = values.data();
    for (const int32_t node : neighbour.received)
      for (std::vector<double>* field : {&x, &v})
        for (int c = 0; c < 3; ++c) (*field)[3 * static_cast<size_t>(node) + c] = *next++;
  }
}

// Of all domains of all ranks.
Outcome Analysis::Data::outcome() const {
  Outcome own;
  own.killed = ELI_GETKILLSIGNAL() != 0;
  own.stopped = host::threadError();
  for (const DomainState& state : domains) {
    own.masked = own.masked || state.masked > 0;
    own.smallest = smallerOf(own.smallest, state.stableIncrement);
  }
  std::vector<double> all{own.smallest, own.masked ? 0.0 : 1.0, own.killed ? 0.0 : 1.0, own.stopped ? 0.0 : 1.0};
  ranks.smallest(all);
  return {all[0], all[1] == 0.0, all[2] == 0.0, all[3] == 0.0};
}

// Also sets the stable increment.
Ending Analysis::Data::findEnding(const Outcome& all) {
  stable = all.smallest * definition.safetyFactor;
  if (all.stopped) return Ending::Stopped;
  if (all.masked) {
    bool finite = true;
    for (const DomainState& state : domains)
      for (int64_t k = 3 * state.domain.firstNode; k < 3 * state.domain.endNode; ++k)
        finite = finite && std::isfinite(x[static_cast<size_t>(k)]);
    distorted.clear();
    for (const DomainState& state : domains)
      for (const Block& block : state.blocks)
        for (int e = 0; e < block.count(); ++e)
          if (block.isDistorted(e) && speaksFor(state, block.bricks()[e]))
            distorted.push_back(mesh.elementNumbers[numbering.elements[block.bricks()[e]]]);
    std::sort(distorted.begin(), distorted.end());
    ownDistorted = distorted;
    distorted = ranks.joined(ownDistorted);
    std::sort(distorted.begin(), distorted.end());
    return ranks.allAgree(finite) ? Ending::Distorted : Ending::NotFinite;
  }
  if (std::isnan(all.smallest)) return Ending::NotFinite;
  if (firstStable > 0 && stable < definition.smallestIncrementRatio * firstStable) return Ending::IncrementCollapsed;
  return Ending::Running;
}

Ending Analysis::advanceTo(double end, int64_t increments) {
  Data& d = *data_;
  if (d.ending != Ending::Running && d.ending != Ending::Complete) return d.ending;
  d.isCollected = false;
  bool running = d.ending == Ending::Running && d.time < end;
  const int domains = static_cast<int>(d.domains.size());
  double step = d.nextIncrement(end);
  // Each domain is moved and evaluated by one thread.  An evaluation reads positions that neighbours have moved, and a move
  // changes positions that neighbours have read: everyone waits between them.  Ranks exchange motion in between.
#pragma omp parallel num_threads(domains) default(shared)
  {
#ifdef _OPENMP
    const int thread = omp_get_thread_num(), threads = omp_get_num_threads();
#else
    const int thread = 0, threads = 1;
#endif
    while (running) {
      for (int k = thread; k < domains; k += threads) d.move(d.domains[k], step);
#pragma omp barrier
      if (d.ranks.areSeveral()) {
#pragma omp single
        d.guarded([&] { d.exchangeMotion(); });
      }
      for (int k = thread; k < domains; k += threads) d.evaluateForces(d.domains[k], step);
#pragma omp barrier
#pragma omp single
      {
        d.time = step >= end - d.time ? end : d.time + step;
        d.lastIncrement = step;
        ++d.increment;
        d.updates += d.bricks();
        d.guarded([&] {
          const Outcome all = d.outcome();
          d.ending = d.findEnding(all);
          if (d.ending == Ending::Running && all.killed) d.ending = Ending::Killed;
          if (d.observer) d.observer({d.time, d.stable, d.increment}, step);
        });
        running = d.ending == Ending::Running && d.time < end && !d.failed && --increments > 0;
        step = d.nextIncrement(end);
      }
    }
  }
  if (d.failed) std::rethrow_exception(d.failed);
  if (d.ending == Ending::Running && d.time >= d.definition.endTime) return Ending::Complete;
  return d.ending;
}

// ---- results

Progress Analysis::progress() const { return {data_->time, data_->stable, data_->increment}; }

int64_t Analysis::elementUpdates() const { return data_->updates; }

const std::vector<int64_t>& Analysis::distortedElements() const { return data_->distorted; }
const std::vector<int64_t>& Analysis::ownDistortedElements() const { return data_->ownDistorted; }

void Analysis::setObserver(std::function<void(const Progress&, double)> observer) {
  data_->observer = std::move(observer);
}

// (kBrickValues, bricks) of the bricks for which the domains of this rank speak.
std::vector<double> Analysis::Data::brickValues() {
  std::vector<double> values(kBrickValues * static_cast<size_t>(bricks()));
  const int count = static_cast<int>(domains.size());
#pragma omp parallel for num_threads(count) schedule(static, 1)
  for (int k = 0; k < count; ++k) {
    DomainState& state = domains[k];
    double density[kBlockLength], spring[kBlockLength], damage[kBlockLength];
    for (Block& block : state.blocks) {
      block.energies(x, state.work, density, spring, damage);
      for (int e = 0; e < block.count(); ++e) {
        const int32_t brick = block.bricks()[e];
        if (!speaksFor(state, brick)) continue;
        double* own = &values[kBrickValues * static_cast<size_t>(brick)];
        const double first[] = {block.volume(e),        density[e], spring[e],
                                block.viscousEnergy(e), damage[e],  block.mask(e)};
        std::copy(std::begin(first), std::end(first), own);
        for (int c = 0; c < 6; ++c) own[6 + c] = block.mask(e) == 0.0 ? block.stress(c, e) : 0.0;
      }
    }
  }
  return values;
}

// Everything that a result is made of comes to the root, and the energies from there to every rank.
void Analysis::Data::collect() {
  if (isCollected) return;
  const auto ofNodes = [&](std::vector<double>& values) {
    std::vector<int64_t> first = numbering.firstOfRank;
    for (int64_t& node : first) node *= 3;
    ranks.gatherRanges(values, first);
  };
  collected.x = x;
  collected.velocity = velocitiesNow();
  ofNodes(collected.x);
  ofNodes(collected.velocity);
  collected.reactions = reactionsNow();
  collected.work.clear();
  collected.prescribedSpeed.clear();
  for (const PrescribedComponent& p : prescribed) {
    collected.work.push_back(p.work);
    collected.prescribedSpeed.push_back(v[p.position]);
  }
  for (std::vector<double>* values : {&collected.reactions, &collected.work, &collected.prescribedSpeed})
    ranks.gatherRanges(*values, firstPrescribedOfRank);

  collected.bricks = brickValues();
  if (ranks.areSeveral()) collectBricks();
  std::vector<double> sums(6);
  if (ranks.isRoot()) {
    const Energies all = sumEnergies();
    sums = {all.kinetic, all.strain, all.hourglass, all.viscous, all.damage, all.external};
  }
  ranks.broadcast(sums);
  energies = {sums[0], sums[1], sums[2], sums[3], sums[4], sums[5]};
  isCollected = true;
}

// The bricks of each rank, in increasing order, to the root.
void Analysis::Data::collectBricks() {
  for (int32_t rank = 1; rank < ranks.size(); ++rank) {
    if (!ranks.isRoot() && rank != ranks.rank()) continue;
    std::vector<int64_t> theirs;
    for (int64_t e = 0; e < bricks(); ++e) {
      const int64_t node = numbering.lowestNode(e);
      if (node >= numbering.firstOfRank[static_cast<size_t>(rank)] &&
          node < numbering.firstOfRank[static_cast<size_t>(rank) + 1])
        theirs.push_back(e);
    }
    std::vector<double> values(kBrickValues * theirs.size());
    const auto each = [&](auto copy) {
      for (size_t k = 0; k < theirs.size(); ++k)
        for (int c = 0; c < kBrickValues; ++c)
          copy(values[kBrickValues * k + c], collected.bricks[kBrickValues * static_cast<size_t>(theirs[k]) + c]);
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

std::vector<double> Analysis::Data::velocitiesNow() const {
  std::vector<double> now(v.size());
  for (const DomainState& state : domains)
    for (int64_t i = state.domain.firstNode; i < state.domain.endNode; ++i)
      for (int c = 0; c < 3; ++c) {
        const double f = state.force[3 * (i - state.domain.firstNode) + c];
        now[3 * i + c] = v[3 * i + c] + 0.5 * lastIncrement * (definition.gravity[c] - f * rMass[i]);
      }
  for (const PrescribedComponent& p : prescribed) now[p.position] = valueAt(*p.history, time);
  return now;
}

std::vector<double> Analysis::Data::reactionsNow() const {
  std::vector<double> now(prescribed.size());
  const double h = 0.5 * (lastIncrement > 0 ? lastIncrement : stable);
  for (const DomainState& state : domains)
    for (size_t k = state.firstPrescribed; k < state.endPrescribed; ++k) {
      const PrescribedComponent& p = prescribed[k];
      const double a = (valueAt(*p.history, time + h) - valueAt(*p.history, time - h)) / (2 * h);
      now[k] = state.force[p.position - 3 * state.domain.firstNode] +
               mass[p.position / 3] * (a - definition.gravity[p.position % 3]);
    }
  return now;
}

// Sums run in one order, one after the other, so that they have one value for any number of ranks and domains.
Energies Analysis::Data::sumEnergies() const {
  Energies sum;
  for (const int32_t i : numbering.order) {
    const size_t at = 3 * static_cast<size_t>(i);
    const double* w = &collected.velocity[at];
    sum.kinetic += 0.5 * mass[i] * (w[0] * w[0] + w[1] * w[1] + w[2] * w[2]);
    for (size_t c = 0; c < 3; ++c) sum.external += mass[i] * definition.gravity[c] * (collected.x[at + c] - X[at + c]);
  }
  // up to the present time: the last half increment is still to be counted
  for (const size_t k : prescribedOrder)
    sum.external += collected.work[k] + 0.5 * collected.reactions[k] * collected.prescribedSpeed[k] * lastIncrement;
  for (int64_t e = 0; e < bricks(); ++e) {
    const double* brick = &collected.bricks[kBrickValues * static_cast<size_t>(e)];
    sum.strain += brick[0] * brick[1];
    sum.hourglass += brick[2];
    sum.viscous += brick[3];
    sum.damage += brick[4];
  }
  return sum;
}

void Analysis::collect() { data_->collect(); }

Energies Analysis::energies() const {
  data_->collect();
  return data_->energies;
}

std::array<double, 3> Analysis::linearMomentum() const {
  Data& d = *data_;
  d.collect();
  std::array<double, 3> sum{};
  for (const int32_t i : d.numbering.order)
    for (size_t c = 0; c < 3; ++c) sum[c] += d.mass[i] * d.collected.velocity[3 * static_cast<size_t>(i) + c];
  return sum;
}

std::array<double, 3> Analysis::angularMomentum() const {
  Data& d = *data_;
  d.collect();
  std::array<double, 3> sum{};
  for (const int32_t i : d.numbering.order) {
    const double *x = &d.collected.x[3 * static_cast<size_t>(i)],
                 *w = &d.collected.velocity[3 * static_cast<size_t>(i)];
    for (int c = 0; c < 3; ++c) {
      const int c1 = (c + 1) % 3, c2 = (c + 2) % 3;
      sum[c] += d.mass[i] * (x[c1] * w[c2] - x[c2] * w[c1]);
    }
  }
  return sum;
}

Fields Analysis::fields() const {
  Data& d = *data_;
  d.collect();
  const size_t nodes = static_cast<size_t>(d.nodes()), bricks = static_cast<size_t>(d.bricks());
  d.displacement.resize(3 * nodes);
  d.velocity.resize(3 * nodes);
  d.reaction.assign(3 * nodes, 0.0);
  d.stress.resize(6 * bricks);
  d.elementEnergy.resize(bricks);
  d.elementMask.resize(bricks);
  for (size_t i = 0; i < nodes; ++i)
    for (size_t c = 0; c < 3; ++c) {
      const size_t at = 3 * static_cast<size_t>(d.numbering.nodes[i]) + c;
      d.displacement[at] = d.collected.x[3 * i + c] - d.X[3 * i + c];
      d.velocity[at] = d.collected.velocity[3 * i + c];
    }
  for (size_t k = 0; k < d.prescribed.size(); ++k) {
    const int64_t position = d.prescribed[k].position;
    d.reaction[3 * static_cast<size_t>(d.numbering.nodes[position / 3]) + position % 3] = d.collected.reactions[k];
  }
  for (size_t e = 0; e < bricks; ++e) {
    const double* brick = &d.collected.bricks[kBrickValues * e];
    const size_t at = static_cast<size_t>(d.numbering.elements[e]);
    d.elementEnergy[at] = brick[1];
    d.elementMask[at] = brick[5];
    for (size_t k = 0; k < 6; ++k) d.stress[6 * at + k] = brick[6 + k];
  }
  return {d.displacement, d.velocity, d.reaction, d.stress, d.elementEnergy, d.elementMask};
}

} // namespace sharedanalysis::solver
