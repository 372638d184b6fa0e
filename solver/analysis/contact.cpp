#include "solver/analysis/contact.h"

#include "solver/analysis/set_up.h"
#include "solver/model/text.h"
#include "solver/parallel/exact_sum.h"
#include "solver/parallel/faults.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

using Vector = std::array<double, 3>;

double dot(const Vector& a, const Vector& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
double length(const Vector& a) { return std::sqrt(dot(a, a)); }
Vector vectorAt(const std::vector<double>& all, std::size_t node) {
  return {all[3 * node], all[3 * node + 1], all[3 * node + 2]};
}

// What the prescribed components of a node leave of a vector; their directions are orthogonal.
Vector freePart(Vector vector, const Prescribed& prescribed, const Contact& contact) {
  const Vector whole = vector;
  for (std::size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k) {
    const PrescribedComponent& p = prescribed.components[k];
    if (p.isAxis)
      vector[static_cast<std::size_t>(p.position % 3)] = 0;
    else
      for (std::size_t c = 0; c < 3; ++c) vector[c] -= p.of(whole) * p.direction[c];
  }
  return vector;
}

// Changes of the velocity of a node by the plane's pressure and against sliding.  Of a pressure along the normal, prescribed
// components take their part: `pressure` is the change that it would make of a free node.
struct Push {
  Vector normal{}, tangent{};
  double pressure = 0;
};

Push pushOf(const RigidPlane& plane, const PlaneMotion& motion, const Vector& x, const Vector& v, double step,
            const Prescribed& prescribed, const Contact& contact) {
  constexpr double kHeld = 1e-12; // prescribed components leave nothing of the normal
  Push push;
  double gap = 0;
  for (std::size_t c = 0; c < 3; ++c) gap += plane.normal[c] * (x[c] + v[c] * step - motion.end[c]);
  if (!(gap < 0)) return push;
  const Vector way = freePart(plane.normal, prescribed, contact);
  const double part = dot(way, plane.normal);
  if (part < kHeld) return push;
  push.pressure = -gap / (step * part);
  for (std::size_t c = 0; c < 3; ++c) push.normal[c] = push.pressure * way[c];
  if (plane.friction == 0) return push;
  Vector slip;
  for (std::size_t c = 0; c < 3; ++c) slip[c] = v[c] + push.normal[c] - motion.way[c] / step;
  const double along = dot(slip, plane.normal);
  for (std::size_t c = 0; c < 3; ++c) slip[c] -= along * plane.normal[c];
  slip = freePart(slip, prescribed, contact);
  const double most = plane.friction * push.pressure, speed = length(slip);
  const double factor = speed > most ? most / speed : 1.0;
  for (std::size_t c = 0; c < 3; ++c) push.tangent[c] = -factor * slip[c];
  return push;
}

std::vector<PlaneMotion> motionsOf(const Case& definition, double time, double step) {
  std::vector<PlaneMotion> motions;
  for (const RigidPlane& plane : definition.planes) motions.push_back(motionOf(plane, time, step));
  return motions;
}

void addTo(std::vector<double>& all, std::size_t node, const Push& push, double factor) {
  for (std::size_t c = 0; c < 3; ++c) all[3 * node + c] += factor * (push.normal[c] + push.tangent[c]);
}

// Forces that change the velocity of a mass in a time.
void setForces(const Push& push, const RigidPlane& plane, double massPerTime, Contact& contact) {
  for (std::size_t c = 0; c < 3; ++c) {
    contact.normalForce[c] = massPerTime * push.pressure * plane.normal[c];
    contact.friction[c] = massPerTime * push.tangent[c];
  }
}

// How far behind the plane its prescribed components alone lead a node, where they leave it hardly a direction in which the plane
// could push it; 0 where they do not.  Looked at in even steps and at the times of histories.
double ledBehind(const Case& definition, const RigidPlane& plane, const Vector& X, const Prescribed& prescribed,
                 const Contact& contact) {
  constexpr double kFreeEnough = 0.01; // of the normal, squared: six degrees
  constexpr int kSteps = 256;
  if (dot(freePart(plane.normal, prescribed, contact), plane.normal) >= kFreeEnough) return 0;
  bool allRest = isRest(plane.velocity);
  for (std::size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k)
    for (const PrescribedComponent::Part& part : prescribed.components[k].parts)
      allRest = allRest && (part.history == nullptr || isRest(*part.history));
  if (allRest) return 0;
  std::vector<double> times = plane.velocity.time;
  for (int k = 1; k <= kSteps; ++k) times.push_back(definition.endTime * k / kSteps);
  for (std::size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k)
    for (const PrescribedComponent::Part& part : prescribed.components[k].parts)
      if (part.history != nullptr) times.insert(times.end(), part.history->time.begin(), part.history->time.end());
  std::sort(times.begin(), times.end());
  double deepest = 0, before = 0, way = 0;
  for (const double time : times) {
    if (!(time > before && time <= definition.endTime)) continue;
    const double half = 0.5 * (time - before);
    for (std::size_t k = contact.firstPrescribed; k < contact.endPrescribed; ++k) {
      const PrescribedComponent& p = prescribed.components[k];
      way += 2 * half * p.speed(before + half, half) * p.of(plane.normal);
    }
    before = time;
    deepest = std::max(deepest, dot(motionOf(plane, 0, time).end, plane.normal) - dot(X, plane.normal) - way);
  }
  return deepest;
}

// From the smallest to the largest of all coordinates.
double sizeOf(const Layout& layout, const std::vector<double>& X) {
  if (const auto& part = layout.mesh.part)
    return *std::max_element(part->high.begin(), part->high.end()) -
           *std::min_element(part->low.begin(), part->low.end());
  const auto [low, high] = std::minmax_element(X.begin(), X.end());
  return *high - *low;
}

} // namespace

PlaneMotion motionOf(const RigidPlane& plane, double time, double step) {
  const double before = integralTo(plane.velocity, time), after = integralTo(plane.velocity, time + step);
  PlaneMotion motion;
  for (std::size_t c = 0; c < 3; ++c) {
    motion.end[c] = plane.point[c] + after * plane.direction[c];
    motion.way[c] = (after - before) * plane.direction[c];
  }
  return motion;
}

Contacts makeContacts(const Layout& layout, const std::vector<double>& X, const Prescribed& prescribed,
                      std::vector<DomainState>& domains) {
  constexpr double kRoundOff = 1e-9; // of the size of the model
  Contacts contacts;
  const double size = sizeOf(layout, X);
  std::vector<std::pair<int32_t, int32_t>> places;
  for (std::size_t k = 0; k < layout.definition.planes.size(); ++k) {
    const RigidPlane& plane = layout.definition.planes[k];
    const Group* group = layout.mesh.findGroup(plane.group);
    if (!plane.group.empty() && !group) throw InputError("plane: the mesh has no group \"" + plane.group + "\"");
    Found behind, led;
    double deepest = 0;
    for (int32_t node = 0; node < layout.mesh.nodes(); ++node) {
      if (!layout.mesh.ownsNode(node)) continue;
      if (group && !std::binary_search(group->nodes.begin(), group->nodes.end(), node)) continue;
      const int32_t internal = layout.internalNode(node);
      const int64_t place = layout.mesh.nodePosition(node);
      const int64_t number = layout.mesh.nodeNumbers[static_cast<std::size_t>(node)];
      const Vector x = vectorAt(X, static_cast<std::size_t>(internal));
      if (dot(x, plane.normal) - dot(plane.point, plane.normal) < -kRoundOff * size) behind.add(place, number);
      places.emplace_back(internal, static_cast<int32_t>(k));
      const double depth = ledBehind(
          layout.definition, plane, x, prescribed,
          {internal, static_cast<int32_t>(k), prescribed.firstOf(internal), prescribed.firstOf(internal + int64_t{1})});
      if (depth > kRoundOff * size) led.add(place, number);
      deepest = std::max(deepest, depth);
    }
    behind.join(layout.ranks);
    led.join(layout.ranks);
    std::vector<double> depths{-deepest};
    layout.ranks.smallest(depths);
    if (behind.count > 0)
      throw InputError(counted(static_cast<std::size_t>(behind.count), "node") + " behind plane \"" + plane.name +
                       "\" at the start, the first is number " + std::to_string(behind.number) +
                       ", expected all on the side of its normal");
    if (led.count > 0)
      throw InputError(counted(static_cast<std::size_t>(led.count), "node") +
                       " that supports or prescribed motion lead behind plane \"" + plane.name +
                       "\", the first is number " + std::to_string(led.number) + ", by up to " +
                       shortNumber(-depths[0]) +
                       " m; expected a group of the plane without them, or room for their motion");
  }
  std::sort(places.begin(), places.end());
  for (const auto& [node, plane] : places)
    contacts.all.push_back({node, plane, prescribed.firstOf(node), prescribed.firstOf(node + int64_t{1})});
  const auto at = [&](int64_t node) {
    return static_cast<std::size_t>(
        std::lower_bound(places.begin(), places.end(), std::pair(static_cast<int32_t>(node), -1)) - places.begin());
  };
  for (DomainState& state : domains) {
    state.firstContact = at(state.domain.firstNode);
    state.endContact = at(state.domain.endNode);
  }
  return contacts;
}

void touch(const Case& definition, const Course& course, double step, const DomainState& state,
           const std::vector<double>& before, Prescribed& prescribed, NodeState& nodes, Contacts& contacts) {
  const std::vector<PlaneMotion> last = motionsOf(definition, course.time - course.lastIncrement, course.lastIncrement),
                                 next = motionsOf(definition, course.time, step);
  const double between = 0.5 * (course.lastIncrement + step);
  for (std::size_t k = state.firstContact; k < state.endContact; ++k) {
    Contact& contact = contacts.all[k];
    const auto node = static_cast<std::size_t>(contact.node), plane = static_cast<std::size_t>(contact.plane);
    const Push push = pushOf(definition.planes[plane], next[plane], vectorAt(nodes.x, node), vectorAt(nodes.v, node),
                             step, prescribed, contact);
    addTo(nodes.v, node, push, 1);
    setForces(push, definition.planes[plane], nodes.mass[node] * (1 / between + 0.5 * course.damping), contact);
  }
  // when all planes have pushed
  for (std::size_t k = state.firstContact; k < state.endContact; ++k) {
    Contact& contact = contacts.all[k];
    const auto node = static_cast<std::size_t>(contact.node), plane = static_cast<std::size_t>(contact.plane);
    const Vector old = vectorAt(before, node - static_cast<std::size_t>(state.domain.firstNode)),
                 now = vectorAt(nodes.v, node);
    for (std::size_t c = 0; c < 3; ++c) {
      double led = 0.5 * (last[plane].way[c] + next[plane].way[c]);
      double way = 0.5 * (old[c] * course.lastIncrement + now[c] * step);
      if (course.lastIncrement == 0) { // the blow of a body that comes in touching loses the energy of its velocity
        led = 0.5 * next[plane].way[c];
        way = 0.5 * between * (old[c] + now[c]);
      }
      contact.work += (contact.normalForce[c] + contact.friction[c]) * led;
      contact.impactEnergy += contact.normalForce[c] * (led - way);
      contact.frictionEnergy += contact.friction[c] * (led - way);
    }
    // what supports of the node take of the pressure
    for (std::size_t p = contact.firstPrescribed; p < contact.endPrescribed; ++p) {
      PrescribedComponent& support = prescribed.components[p];
      const double force = -support.of(contact.normalForce);
      support.reaction += force;
      support.work += force * 0.5 * (support.of(old) * course.lastIncrement + support.of(now) * step);
    }
  }
}

void touchNow(const Case& definition, const Course& course, const DomainState& state, const Prescribed& prescribed,
              const NodeState& nodes, std::vector<double>& now, Contacts& contacts) {
  const double step = course.lastIncrement;
  if (step <= 0) return;
  const std::vector<PlaneMotion> next = motionsOf(definition, course.time, step);
  for (std::size_t k = state.firstContact; k < state.endContact; ++k) {
    Contact& contact = contacts.all[k];
    const auto node = static_cast<std::size_t>(contact.node), plane = static_cast<std::size_t>(contact.plane);
    Vector coming = vectorAt(now, node); // in the next increment
    for (std::size_t c = 0; c < 3; ++c) coming[c] = 2 * coming[c] - nodes.v[3 * node + c];
    const Push push =
        pushOf(definition.planes[plane], next[plane], vectorAt(nodes.x, node), coming, step, prescribed, contact);
    addTo(now, node, push, 0.5);
    setForces(push, definition.planes[plane], nodes.mass[node] * (1 / step + 0.5 * course.damping), contact);
  }
}

ContactSums sumContacts(const Layout& layout, const Course& course, const NodeState& nodes, const Contacts& contacts) {
  ContactSums sums;
  sums.planes.resize(layout.definition.planes.size());
  if (sums.planes.empty()) return sums;
  // up to the present time: with the last half increment
  const std::vector<PlaneMotion> last =
      motionsOf(layout.definition, course.time - course.lastIncrement, course.lastIncrement);
  constexpr std::size_t kOfPlane = 4; // work and force
  std::vector<ExactSum> parts(2 + kOfPlane * sums.planes.size());
  for (const Contact& contact : contacts.all) {
    double work = contact.work, impact = contact.impactEnergy, friction = contact.frictionEnergy;
    for (std::size_t c = 0; c < 3; ++c) {
      const double led = 0.5 * last[static_cast<std::size_t>(contact.plane)].way[c];
      const double way = 0.5 * course.lastIncrement * nodes.v[3 * static_cast<std::size_t>(contact.node) + c];
      work += (contact.normalForce[c] + contact.friction[c]) * led;
      impact += contact.normalForce[c] * (led - way);
      friction += contact.friction[c] * (led - way);
    }
    parts[0].add(impact);
    parts[1].add(friction);
    ExactSum* ofPlane = &parts[2 + kOfPlane * static_cast<std::size_t>(contact.plane)];
    ofPlane[0].add(work);
    for (std::size_t c = 0; c < 3; ++c) ofPlane[1 + c].add(contact.normalForce[c] + contact.friction[c]);
  }
  const std::vector<double> values = sumOverRanks(parts, layout.ranks);
  sums.impact = values[0];
  sums.friction = values[1];
  for (std::size_t k = 0; k < sums.planes.size(); ++k) {
    const double* value = &values[2 + kOfPlane * k];
    sums.planes[k] = {value[0], {value[1], value[2], value[3]}};
  }
  return sums;
}

} // namespace sharedanalysis::solver
