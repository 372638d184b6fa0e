#include "solver/model/loads.h"

#include "solver/model/model.h"
#include "solver/model/text.h"

#include <algorithm>
#include <optional>

namespace sharedanalysis::solver {
namespace {

// "2 N", or "0 to 2 N within 0 to 0.1 s".
std::string describe(const History& history, const std::string& unit) {
  const std::string last = shortNumber(history.value.back()) + " " + unit;
  if (history.time.size() == 1) return last;
  const auto span = [](const std::vector<double>& ends) {
    return shortNumber(ends.front()) + " to " + shortNumber(ends.back());
  };
  return counted(history.time.size(), "value") + ", " + span(history.value) + " " + unit + " within " +
         span(history.time) + " s";
}

} // namespace

std::string describe(const std::array<double, 3>& vector) {
  return '(' + joined({shortNumber(vector[0]), shortNumber(vector[1]), shortNumber(vector[2])}, ", ") + ')';
}

std::string describe(const Load& load) {
  std::string text = std::string(load.kind->key) + " " + load.name + " on " + load.group + ": " +
                     describe(load.history, load.kind->unit);
  if (load.perNode) text += " on each node";
  if (load.kind->directed) text += " along " + describe(load.direction);
  return text;
}

std::string describe(const RigidPlane& plane) {
  std::string text = "plane " + plane.name + " through " + describe(plane.point) + ": normal " +
                     describe(plane.normal) + ", friction " + shortNumber(plane.friction);
  if (!plane.velocity.time.empty())
    text += ", velocity " + describe(plane.velocity, "m/s") + " along " + describe(plane.direction);
  return text;
}

bool isMoved(const Case& definition) {
  const auto acts = [&](const History& history) { return !isRest(history, definition.endTime); };
  const auto moves = [&](const PrescribedMotion& motion) {
    return std::any_of(motion.velocity.begin(), motion.velocity.end(),
                       [&](const std::optional<History>& history) { return history && acts(*history); });
  };
  return std::any_of(definition.loads.begin(), definition.loads.end(),
                     [&](const Load& load) { return acts(load.history); }) ||
         !definition.initialVelocities.empty() || definition.gravity != std::array<double, 3>{} ||
         std::any_of(definition.motions.begin(), definition.motions.end(), moves) ||
         std::any_of(definition.planes.begin(), definition.planes.end(),
                     [&](const RigidPlane& plane) { return acts(plane.velocity); });
}

std::vector<std::string> changesTooLate(const Case& definition) {
  std::vector<std::string> lines;
  const auto look = [&](const std::string& what, const History& history, const std::string& unit) {
    if (history.time.size() < 2 || history.time.front() < definition.endTime) return;
    lines.push_back(what + " changes from " + shortNumber(history.time.front()) + " s on, and end_time is " +
                    shortNumber(definition.endTime) + " s: it is " + shortNumber(history.value.front()) + " " + unit +
                    " throughout");
  };
  for (const Load& load : definition.loads)
    look(std::string(load.kind->key) + " " + load.name, load.history, load.kind->unit);
  for (const PrescribedMotion& motion : definition.motions)
    for (const std::optional<History>& history : motion.velocity)
      if (history)
        look(std::string(kindOf(history->quantity).key) + " of " + motion.group, *history,
             kindOf(history->quantity).unit);
  for (const RigidPlane& plane : definition.planes) look("velocity of " + plane.name, plane.velocity, "m/s");
  return lines;
}

std::vector<std::string> measureNames(const Case& definition) {
  std::vector<std::string> names;
  for (const Load& load : definition.loads) names.push_back("work_" + load.name);
  for (const RigidPlane& plane : definition.planes)
    for (const char* measure : {"work_", "force_x_", "force_y_", "force_z_"}) names.push_back(measure + plane.name);
  if (!definition.planes.empty()) names.insert(names.end(), {"friction_energy", "impact_energy"});
  if (definition.isDamped()) names.push_back("damping_energy");
  if (definition.quasiStatic) names.insert(names.end(), {"damping", "stillness"});
  for (const GroupHistory& history : definition.groupHistories)
    for (const GroupQuantity* quantity : history.quantities)
      for (int k = 0; k < quantity->count; ++k)
        names.push_back(quantity->columns[static_cast<std::size_t>(k)] + history.name);
  return names;
}

} // namespace sharedanalysis::solver
