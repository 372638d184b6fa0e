#include "solver/program/description.h"

#include "solver/model/text.h"
#include "solver/parallel/distribution.h"
#include "solver/program/instruction_set.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {
namespace {

double elasticModulus(const Material& material) {
  const double G = material.shearModulus(), K = material.bulkModulus();
  return 9 * K * G / (3 * K + G);
}

std::string describe(const Balance& balance, const Mesh& mesh, const Ranks& ranks) {
  const auto all = static_cast<double>(mesh.wholeElements());
  const double even = static_cast<double>(balance.computed) / ranks.size();
  return "parts: " + std::to_string(balance.fewestBricks) + " to " +
         counted(static_cast<std::size_t>(balance.mostBricks), "brick") + ", the largest " +
         shortNumber(100 * (static_cast<double>(balance.mostBricks) / even - 1)) + " % above the mean; " +
         shortNumber(100 * (static_cast<double>(balance.computed) / all - 1)) +
         " % of the bricks computed more than once; " + std::to_string(balance.sharedNodes) +
         " nodes exchanged, with up to " + counted(static_cast<std::size_t>(balance.mostNeighbours), "other rank");
}

// Those that compute, of all ranks the most.
std::string describeThreads(const Ranks& ranks, int own, int askedFor) {
  std::vector<double> most{-static_cast<double>(own)};
  ranks.smallest(most);
  const auto used = static_cast<std::size_t>(-most[0]);
  return counted(used, "thread") +
         (used < static_cast<std::size_t>(askedFor) ? ", too few nodes for " + std::to_string(askedFor) : "");
}

} // namespace

double poissonRatio(const Material& material) {
  const double G = material.shearModulus(), K = material.bulkModulus(), nu = (3 * K - 2 * G) / (2 * (3 * K + G));
  return std::abs(nu) < 1e-9 ? 0 : nu; // the rounding of constants
}

std::vector<std::string> describe(const Case& definition, const Mesh& mesh, const Ranks& ranks,
                                  const Analysis& analysis, int askedFor) {
  std::vector<std::string> lines{"job " + definition.job + ": " + definition.title,
                                 "mesh " + definition.mesh.name() + ": " + std::to_string(mesh.wholeNodes()) +
                                     " nodes, " + std::to_string(mesh.wholeElements()) + " bricks"};
  std::vector<std::string> groups;
  for (const Group& group : mesh.groups) {
    const MeshPart::Members members = mesh.membersOf(group);
    groups.push_back(group.name + " (" +
                     (group.dimension == 3 ? counted(static_cast<std::size_t>(members.elements), "brick")
                                           : counted(static_cast<std::size_t>(members.nodes), "node")) +
                     ")");
  }
  lines.push_back("groups " + joined(groups, ", "));
  for (std::size_t m = 0; m < definition.materials.size(); ++m) {
    const Material& material = definition.materials[m];
    const double increment = analysis.firstIncrements()[m]; // by which a user sees what makes a run long
    lines.push_back("material " + material.name + ": E " + shortNumber(elasticModulus(material) / 1e6) + " MPa, nu " +
                    shortNumber(poissonRatio(material)) + ", density " + shortNumber(material.density) +
                    " kg/m3, wave speed " + shortNumber(material.waveSpeed()) + " m/s" +
                    (definition.materials.size() > 1 && std::isfinite(increment)
                         ? ", stable increment " + shortNumber(increment) + " s"
                         : ""));
    for (const std::string& curve : describeCurves(material)) lines.push_back("  " + curve);
  }
  for (const SymmetryPlane& plane : definition.symmetryPlanes)
    lines.push_back("symmetry on " + plane.group + ": normal " + describe(plane.normal));
  for (const Load& load : definition.loads) lines.push_back(describe(load));
  for (const RigidPlane& plane : definition.planes) lines.push_back(describe(plane));
  if (definition.isDamped())
    lines.push_back(definition.quasiStatic
                        ? "quasi-static: damping follows the lowest frequency of the motion"
                        : "damping in proportion to mass, " + shortNumber(definition.damping) + " 1/s");
  const double first = analysis.progress().stableIncrement;
  lines.push_back("end time " + shortNumber(definition.endTime) + " s, " +
                  (first > 0 ? "first stable increment " + shortNumber(first) + " s" : "no stable increment") +
                  ", kernels with " + instructionSet() + ", " +
                  (ranks.areSeveral() ? counted(static_cast<std::size_t>(ranks.size()), "rank") + " of " : "") +
                  describeThreads(ranks, analysis.threads(), askedFor));
  if (ranks.areSeveral()) lines.push_back(describe(balanceOf(mesh, ranks), mesh, ranks));
  return lines;
}

std::string describeRest(const Analysis& analysis) {
  constexpr double kStill = 0.01;
  const double stillness = analysis.energies().stillness();
  return std::string(stillness <= kStill ? "the body is at rest" : "the body still moves") +
         ": its kinetic energy is " + shortNumber(stillness) + " of its strain energy";
}

std::string describeEnding(Ending ending, const Analysis& analysis, const Case& definition, double firstIncrement) {
  const Progress now = analysis.progress();
  const std::string at = " at time " + shortNumber(now.time) + " s, increment " + std::to_string(now.increment);
  switch (ending) {
  case Ending::Distorted: {
    std::vector<std::string> numbers;
    for (const int64_t brick : analysis.distortedElements()) numbers.push_back(std::to_string(brick));
    const auto count = static_cast<std::size_t>(analysis.distortedCount());
    return counted(count, "brick") + " distorted beyond computing" + at + ": number " + joined(numbers, ", ") +
           (count > numbers.size() ? ", ..." : "");
  }
  case Ending::IncrementCollapsed:
    return "the stable increment fell to " + shortNumber(now.stableIncrement) + " s" + at + ", below " +
           shortNumber(definition.smallestIncrementRatio) + " of the first one (" + shortNumber(firstIncrement) + " s)";
  case Ending::Stopped:
    return "a material could not go on" + at + "; the message file says why";
  case Ending::NotFinite:
    return "a position, velocity or energy is no longer a finite number" + at;
  case Ending::Failed:
    return "every brick has failed" + at + ": nothing carries load any more";
  default:
    return "interrupted" + at;
  }
}

} // namespace sharedanalysis::solver
