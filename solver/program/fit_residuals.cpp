#include "solver/program/fit_residuals.h"

#include "reference_host.h"
#include "solver/model/text.h"

#include <algorithm>
#include <cmath>

namespace sharedanalysis::solver {

bool keepsHistory(const Material& material) { return material.model->isUser() || material.mullins; }

double largest(const std::vector<double>& values) {
  double most = 0;
  for (const double value : values) most = std::max(most, std::abs(value));
  return most;
}

namespace {

// A residual of a state that cannot be computed.
constexpr double kFailed = 1e6;
// Relative residuals are those of a stress that is at least this part of the largest of its path.
constexpr double kSmallestPart = 0.01;

// Points follow one another along the legs; on a path of one leg their order does not matter.
std::vector<std::size_t> legsOf(const MaterialPath& path, const std::vector<double>& stretches) {
  if (path.byStress)
    throw InputError("path \"" + path.name +
                     "\" is led by stress, which a fit of a material with a history cannot "
                     "follow, expected stretch = [...]");
  std::vector<double> ends{path.mode == Mode::Shear ? 0.0 : 1.0};
  ends.insert(ends.end(), path.turns.begin(), path.turns.end());
  std::vector<std::size_t> legs;
  std::size_t leg = 0;
  double last = ends[0];
  for (const double s : stretches) {
    const auto lies = [&](std::size_t k) {
      const bool isInside = (s - ends[k]) * (s - ends[k + 1]) <= 0;
      return isInside && (path.turns.size() == 1 || (s - last) * (ends[k + 1] - ends[k]) >= 0);
    };
    while (leg < path.turns.size() && !lies(leg)) {
      ++leg;
      last = ends[leg];
    }
    if (leg == path.turns.size())
      throw InputError("path \"" + path.name + "\" does not pass stretch " + shortNumber(s) +
                       " of its data, expected data in the order of the path");
    legs.push_back(leg);
    last = s;
  }
  return legs;
}

TestData thinned(const TestData& data, std::size_t mostPoints) {
  const std::size_t count = data.stretch.size();
  if (count <= mostPoints) return data;
  TestData result;
  for (std::size_t k = 0; k < mostPoints; ++k) {
    const std::size_t from = k * (count - 1) / (mostPoints - 1);
    result.stretch.push_back(data.stretch[from]);
    result.stress.push_back(data.stress[from]);
  }
  return result;
}

// What a neo-Hookean material multiplies its shear modulus with; 0 where the volume rules.
double strainOf(Mode mode, double s) {
  if (mode == Mode::Shear) return s;
  if (mode == Mode::Volumetric || mode == Mode::Confined) return 0;
  const double a = isochoric(mode, s);
  return s - a * a / s;
}

} // namespace

FitResiduals::FitResiduals(const PathCase& definition, const FitCase& fitCase, std::size_t mostPoints)
    : definition_(definition), case_(fitCase), material_(definition.materials[fitCase.material]) {
  for (const MaterialPath& path : definition.paths)
    if (path.material == case_.material && !path.data.stretch.empty())
      tests_.push_back({&path, thinned(path.data, mostPoints), {}, {}, {}});
  if (tests_.empty())
    throw InputError(definition.file.string() + ": no data of material \"" + material_.name +
                     "\", expected a path with [path.data]");
  weigh();
  free_.resize(tests_.size());
  if (points_ < case_.free.size())
    throw InputError(definition.file.string() + ": " + counted(points_, "point") + " of tests and " +
                     counted(case_.free.size(), "free constant") + ", expected at least as many points");
}

void FitResiduals::weigh() {
  double most = 0;
  for (const DataOfPath& test : tests_) most = std::max(most, largest(test.data.stress));
  if (!(most > 0)) throw InputError(definition_.file.string() + ": all stresses of the data are 0");
  double sum = 0, count = 0;
  for (DataOfPath& test : tests_) {
    const std::vector<double>& stress = test.data.stress;
    const double floor = kSmallestPart * (largest(stress) > 0 ? largest(stress) : most);
    for (std::size_t k = 0; k < stress.size(); ++k) {
      test.floors.push_back(std::max(std::abs(stress[k]), floor));
      test.weights.push_back(1 / (case_.isRelative ? test.floors[k] : most));
      const double s = test.data.stretch[k], strain = strainOf(test.path->mode, s);
      if (std::abs(strain) > 1e-3) sum += std::abs(stress[k] / strain), count += 1;
    }
    if (keepsHistory(material_)) test.legs = legsOf(*test.path, test.data.stretch);
    points_ += stress.size();
  }
  modulus_ = count > 0 && sum > 0 ? sum / count : material_.shearModulus();
}

Material FitResiduals::materialOf(const std::vector<double>& values) const {
  Material material = material_;
  for (std::size_t k = 0; k < values.size(); ++k) {
    const FitConstant& c = case_.free[k];
    material.constants[c.index] = !c.isReciprocal ? values[k] : values[k] > 0 ? 1 / values[k] : 0;
  }
  return material;
}

bool FitResiduals::isSound(const std::vector<double>& values, const Material& material) const {
  for (std::size_t k = 0; k < values.size(); ++k)
    if (!std::isfinite(values[k]) || !case_.free[k].range.holds(values[k])) return false;
  const double G = material.shearModulus(), K = material.bulkModulus();
  return G > 0 && K > 0 && std::isfinite(G) && std::isfinite(K);
}

std::vector<PathPoint> FitResiduals::statesOf(const MaterialPath& path, const Material& material) const {
  try {
    return follow(path, material);
  } catch (const InputError&) {
    if (host::threadError()) host::openJob(definition_.job, definition_.outputDirectory); // takes the mark away
    return {};
  }
}

std::vector<double> FitResiduals::stressesOf(const DataOfPath& test, const Material& material,
                                             std::vector<double>& free) const {
  if (!keepsHistory(material)) {
    std::vector<double> stresses = nominalStresses(material, test.path->mode, test.data.stretch, free);
    if (std::all_of(stresses.begin(), stresses.end(), [](double x) { return std::isfinite(x); })) return stresses;
    free.clear(); // the last ones may have led astray
    return nominalStresses(material, test.path->mode, test.data.stretch, free);
  }
  const std::vector<PathPoint> states = statesOf(*test.path, material);
  if (states.empty()) return {};
  std::vector<double> stresses;
  const auto steps = static_cast<std::size_t>(test.path->steps);
  for (std::size_t k = 0; k < test.legs.size(); ++k) {
    const double s = test.data.stretch[k];
    const PathPoint* from = &states[test.legs[k] * steps];
    for (std::size_t j = 1; j < steps && (from[1].stretch - s) * (from[0].stretch - s) > 0; ++j) ++from;
    const double width = from[1].stretch - from[0].stretch, part = width != 0 ? (s - from[0].stretch) / width : 0;
    stresses.push_back(from[0].nominal + part * (from[1].nominal - from[0].nominal));
  }
  return stresses;
}

bool FitResiduals::evaluate(const std::vector<double>& values, std::vector<double>& r) const {
  const Material material = materialOf(values);
  std::fill(r.begin(), r.end(), kFailed);
  if (!isSound(values, material)) return false;
  bool isComputed = true;
  std::size_t at = 0;
  for (const DataOfPath& test : tests_) {
    const std::vector<double> computed =
        stressesOf(test, material, free_[static_cast<std::size_t>(&test - tests_.data())]);
    for (std::size_t k = 0; k < test.weights.size(); ++k, ++at) {
      const double residual = computed.empty() ? kFailed : (computed[k] - test.data.stress[k]) * test.weights[k];
      if (std::abs(residual) < kFailed)
        r[at] = residual;
      else
        isComputed = false;
    }
  }
  return isComputed;
}
bool FitResiduals::isComputable(const std::vector<double>& values) const {
  std::vector<double> r(points_);
  return evaluate(values, r);
}

} // namespace sharedanalysis::solver
