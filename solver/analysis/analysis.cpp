// The loop over increments, and the analysis as the program sees it.
#include "solver/analysis/analysis.h"

#include "solver/analysis/collected.h"
#include "solver/analysis/contact.h"
#include "solver/analysis/damping.h"
#include "solver/analysis/increment.h"
#include "solver/analysis/loads.h"
#include "solver/analysis/saved_state.h"
#include "solver/analysis/set_up.h"
#include "solver/analysis/team.h"
#include "solver/model/memory.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace sharedanalysis::solver {

struct Analysis::Data {
  Layout layout;
  NodeState nodes;
  std::vector<DomainState> domains; // of this rank
  Team team;                        // a thread a domain
  Outside outside;
  Course course;
  Ending ending = Ending::Running;
  Distortion distortion;
  std::vector<BrickEvent> events;      // of this rank, that were not taken yet
  std::vector<double> firstIncrements; // of the materials
  double energyScale = 0;
  int64_t updates = 0;
  std::function<void(const Progress&, double)> observer;
  std::optional<Collected> collected; // of the present time
  FieldArrays fields;
  std::exception_ptr failed; // first exception of the loop over increments

  Data(const Mesh& mesh, const Case& definition, int threads)
      : layout(mesh, definition), nodes(referenceNodes(layout)), domains(makeDomainStates(layout, nodes.x, threads)),
        team(static_cast<int>(domains.size())) {
    setMasses(layout, domains, nodes);
    Prescribed& prescribed = outside.prescribed = makePrescribed(layout, domains);
    outside.loads = makeLoads(layout, nodes.x, domains);
    outside.contacts = makeContacts(layout, nodes.x, prescribed, domains);
    setVelocities(layout, prescribed, nodes);
    sendMotion(layout, nodes);
    receiveMotion(layout, nodes);
    for (DomainState& state : domains) {
      evaluateInner(definition, nodes, 0.0, state);
      evaluateRest(definition, nodes, 0.0, state, outside.loads);
    }
    ending = findEnding(layout, nodes, domains, outcomeOf(layout.ranks, domains), course, distortion);
    if (!(course.stable > 0) && ending != Ending::Failed) {
      checkIncrements(layout, nodes, domains);
      if (ending == Ending::Running) ending = Ending::NotFinite; // by its velocities
    }
    firstIncrements = incrementsOfMaterials(layout, domains);
    energyScale = energyScaleOf(layout, nodes);
    release(layout.numbering.connectivity); // blocks have what they need of it
    course.firstStable = course.stable;
    course.damping = definition.damping;
    if (definition.isDamped()) nodes.dampingEnergy.resize(nodes.mass.size());
    returnFreeMemory();
  }

  BrickEvent eventOf(const BlockEvent& event) const {
    const Mesh& mesh = layout.mesh;
    const int32_t brick = layout.meshBrick(event.brick);
    const auto& sections = layout.definition.sections;
    const auto own = std::find_if(sections.begin(), sections.end(), [&](const Section& section) {
      const std::vector<int32_t>& elements = mesh.findGroup(section.group)->elements;
      return std::binary_search(elements.begin(), elements.end(), brick);
    });
    return {course.increment,
            course.time,
            mesh.elementPosition(brick),
            event.kind,
            event.value,
            mesh.elementNumbers[static_cast<std::size_t>(brick)],
            own - sections.begin()};
  }
  void keepEvents() {
    for (const DomainState& state : domains)
      for (const BlockEvent& event : state.work.events)
        if (state.speaksFor(layout, event.brick)) events.push_back(eventOf(event));
  }
  const Collected& collectedNow() {
    if (!collected) collected = solver::collect(layout, nodes, outside, course, domains, team);
    return *collected;
  }
  Changing changing() { return {layout, nodes, domains, outside, course}; }
  // Exceptions must not leave the work of a team: keeps the first one for after the loop.
  template <class Body>
  void guarded(Body body) noexcept {
    try {
      if (!failed) body();
    } catch (...) {
      failed = std::current_exception();
    }
  }
};

double Energies::total() const {
  const FloatingPointMode mode;
  return kinetic + strain + hourglass + viscous + damage + damping + contact;
}

Analysis::Analysis(const Mesh& mesh, const Case& definition, int threads) {
  const FloatingPointMode mode;
  data_ = std::make_unique<Data>(mesh, definition, std::max(threads, 1));
}

Analysis::~Analysis() = default;

Ending Analysis::advanceTo(double end, int64_t increments, double pause) {
  const FloatingPointMode mode;
  Data& d = *data_;
  Course& now = d.course;
  if (d.ending != Ending::Running && d.ending != Ending::Complete) return d.ending;
  d.collected.reset();
  d.fields = {};
  bool running = d.ending == Ending::Running && now.time < end;
  double step = nextIncrement(now, end);
  const size_t threads = d.team.size();
  // Each domain is moved and evaluated by one thread.  An evaluation reads positions that neighbours have moved, and a move
  // changes positions that neighbours have read: everyone waits between them.  Ranks exchange motion in between.
  d.team.run([&](int thread) {
    const auto eachDomain = [&](auto&& body) {
      for (size_t k = static_cast<size_t>(thread); k < d.domains.size(); k += threads) body(d.domains[k]);
    };
    while (running) {
      eachDomain([&](DomainState& own) { move(d.layout.definition, now, step, own, d.nodes, d.outside); });
      d.team.meet([&] { d.guarded([&] { sendMotion(d.layout, d.nodes); }); });
      eachDomain([&](DomainState& own) { evaluateInner(d.layout.definition, d.nodes, step, own); });
      if (!d.layout.neighbours.empty()) d.team.meet([&] { d.guarded([&] { receiveMotion(d.layout, d.nodes); }); });
      eachDomain([&](DomainState& own) { evaluateRest(d.layout.definition, d.nodes, step, own, d.outside.loads); });
      d.team.meet([&] {
        now.time = step >= end - now.time ? end : now.time + step;
        now.lastIncrement = step;
        now.pace = nextPace(now);
        ++now.increment;
        d.updates += d.layout.mesh.wholeElements();
        d.guarded([&] {
          d.keepEvents();
          const Outcome all = outcomeOf(d.layout.ranks, d.domains);
          d.ending = findEnding(d.layout, d.nodes, d.domains, all, now, d.distortion);
          if (d.layout.definition.quasiStatic) adaptDamping(d.layout, d.nodes, d.outside.prescribed, d.domains, now);
          if (d.ending == Ending::Running && all.killed) d.ending = Ending::Killed;
          if (d.observer) d.observer(progress(), step);
        });
        running = d.ending == Ending::Running && now.time < end && now.time < pause && !d.failed && --increments > 0;
        step = nextIncrement(now, end);
      });
    }
  });
  if (d.failed) std::rethrow_exception(d.failed);
  if (d.ending == Ending::Running && now.time >= d.layout.definition.endTime) return Ending::Complete;
  return d.ending;
}

std::vector<double> Analysis::course() const { return saveCourse(data_->changing()); }

void Analysis::saveRecords(const RecordSink& put) const { solver::saveRecords(data_->changing(), put); }

void Analysis::restore(const std::vector<double>& course, const RecordSource& next) {
  data_->collected.reset();
  data_->events.clear();
  restoreState(data_->changing(), course, next);
}

BrickEvents Analysis::takeEvents(int64_t most) {
  return gatherEvents(data_->layout.ranks, std::exchange(data_->events, {}), most);
}

Progress Analysis::progress() const {
  const Course& now = data_->course;
  return {now.time, now.stable, now.increment};
}

const std::vector<double>& Analysis::firstIncrements() const { return data_->firstIncrements; }
double Analysis::energyScale() const { return data_->energyScale; }
int Analysis::threads() const { return static_cast<int>(data_->team.size()); }

int64_t Analysis::elementUpdates() const { return data_->updates; }

int64_t Analysis::distortedCount() const { return data_->distortion.count; }
const std::vector<int64_t>& Analysis::distortedElements() const { return data_->distortion.first; }
const std::vector<int64_t>& Analysis::ownDistortedElements() const { return data_->distortion.own; }

void Analysis::setObserver(std::function<void(const Progress&, double)> observer) {
  data_->observer = std::move(observer);
}

void Analysis::collect() { data_->collectedNow(); }

Energies Analysis::energies() const { return data_->collectedNow().energies; }

const std::vector<double>& Analysis::measures() const { return data_->collectedNow().measures; }

std::array<double, 3> Analysis::linearMomentum() const { return data_->collectedNow().linearMomentum; }
std::array<double, 3> Analysis::angularMomentum() const { return data_->collectedNow().angularMomentum; }

Fields Analysis::fields(unsigned choice) const {
  const FloatingPointMode mode;
  Data& d = *data_;
  d.fields.fill(choice, d.layout, d.nodes, d.outside.prescribed, d.course, d.collectedNow(), d.domains, d.team);
  return d.fields.spans();
}

} // namespace sharedanalysis::solver
