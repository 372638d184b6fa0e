#include "solver/program/material_path.h"

#include "reference_host.h"
#include "solver/input/columns.h"
#include "solver/input/material_reader.h"
#include "solver/model/materials.h"
#include "solver/model/user_materials.h"
#include "solver/program/fit_case.h"
#include "solver/results/drawing.h"
#include "solver/results/partial_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

namespace sharedanalysis::solver {
namespace {

// The material at one point.  Evaluations do not change its state until remember() is called.
class Point {
public:
  Point(const Material& material, double stepTime) : points_(material, 1), stepTime_(stepTime) {}

  std::array<double, 6> stress(const Stretch& V, const Gradient& F) {
    std::array<double, 6> s{};
    double bound = 0, bulk = 0;
    points_.respond(V.data(), F.data(), stepTime_, s.data(), &bound, &bulk, work_);
    return s;
  }
  void remember(const Stretch& V, const Gradient& F, PathPoint& p) {
    stress(V, F);
    points_.remember();
    points_.energies(V.data(), &p.stored, &p.lost, work_);
  }
  bool isFlat() const { return points_.flag()[0] != 0; }

private:
  MaterialPoints points_;
  MaterialWork work_;
  double stepTime_;
};

// Where f, which rises as stresses do with their stretch, passes zero: a bracket that grows by factors from x towards it, then
// halved.  A NaN on the way ends the search.
template <class Function>
bool findRoot(Function f, double& x, double growth) {
  const double start = f(x);
  if (start == 0) return true;
  const bool up = start < 0;
  double before = x, beyond = x, value = start;
  for (int k = 0; k < 400 && (value < 0) == up; ++k) {
    const double factor = std::pow(growth, 1 + k / 20);
    before = beyond;
    beyond = up ? beyond * factor : beyond / factor;
    value = f(beyond);
    if (value != value) return false;
  }
  if ((value < 0) == up && value != 0) return false;
  for (int k = 0; k < 200; ++k) {
    const double middle = 0.5 * (before + beyond);
    if (middle == before || middle == beyond) break;
    ((f(middle) < 0) == up ? before : beyond) = middle;
  }
  x = 0.5 * (before + beyond);
  return true;
}

class Follower {
public:
  Follower(const MaterialPath& path, const Material& material)
      : path_(path), point_(material, path.stepTime), isSheet_(material.isSheet()) {}

  std::vector<PathPoint> run() {
    const double start = path_.mode == Mode::Shear ? 0.0 : 1.0;
    stretch_ = start;
    std::vector<PathPoint> points{record()};
    double from = path_.byStress ? 0.0 : start;
    for (const double to : path_.turns) {
      for (int k = 1; k <= path_.steps; ++k) {
        const double target = from + (to - from) * k / path_.steps;
        if (path_.byStress)
          reach(target);
        else
          stretch_ = target;
        points.push_back(record());
        if (host::threadError()) fail("a kernel ended the analysis");
      }
      from = to;
    }
    return points;
  }

private:
  [[noreturn]] void fail(const std::string& what) const {
    throw PathFailed("path \"" + path_.name + "\" at stretch " + shortNumber(stretch_) + ": " + what);
  }

  // The free stretch at which its stress is zero, by iteration from the last one; NaN if it is not found.
  double close(double s) {
    if (freeDirections(path_.mode, isSheet_) == 0) return 1;
    double a = free_ > 0 ? free_ : isochoric(path_.mode, s);
    const auto left = [&](double trial) { return stressAt(s, trial)[isSheet_ ? 1 : 2]; };
    return findRoot(left, a, 1.01) ? a : std::numeric_limits<double>::quiet_NaN();
  }

  double nominalAt(double s, double a) { return nominalStress(path_.mode, s, a, isSheet_, stressAt(s, a)); }
  std::array<double, 6> stressAt(double s, double a) {
    const Stretch V = stretchOf(path_.mode, s, a, isSheet_);
    return point_.stress(V, gradientOf(path_.mode, s, V));
  }

  void reach(double target) {
    const bool shear = path_.mode == Mode::Shear;
    double x = shear ? std::exp(stretch_) : stretch_; // an amount of shear may pass zero: by its exponential
    const auto missing = [&](double trial) {
      const double s = shear ? std::log(trial) : trial;
      return nominalAt(s, close(s)) - target;
    };
    if (!findRoot(missing, x, 1.005)) fail("a nominal stress of " + shortNumber(target) + " Pa is not reached");
    stretch_ = shear ? std::log(x) : x;
  }

  PathPoint record() {
    PathPoint p{};
    p.stretch = stretch_;
    p.free = free_ = close(stretch_);
    if (free_ != free_) fail("no free stretch leaves its direction without stress");
    const Stretch V = stretchOf(path_.mode, stretch_, free_, isSheet_);
    const Gradient F = gradientOf(path_.mode, stretch_, V);
    const std::array<double, 6> t = point_.stress(V, F);
    if (point_.isFlat()) fail("there is no volume left");
    std::copy(t.begin(), t.end(), p.cauchy);
    p.J = path_.mode == Mode::Shear ? 1 : V[0] * V[1] * V[2];
    p.nominal = nominalStress(path_.mode, stretch_, free_, isSheet_, t);
    point_.remember(V, F, p);
    if (!std::isfinite(p.nominal + p.stored + p.lost) ||
        !std::all_of(p.cauchy, p.cauchy + std::size(p.cauchy), [](double x) { return std::isfinite(x); }))
      fail("the stress or the energy is no finite number");
    return p;
  }

  const MaterialPath& path_;
  Point point_;
  bool isSheet_;
  double stretch_ = 1, free_ = 1;
};

MaterialPath readPath(const Table& table, const std::vector<Material>& materials) {
  MaterialPath path;
  path.name = table.text("name");
  const auto index = [&](const char* key, const std::string& value, const Names& names) {
    const auto found = std::find(names.begin(), names.end(), value);
    if (found == names.end())
      table.fail(key, "no " + std::string(key) + " \"" + value + "\", expected " + joined(names, " or "));
    return static_cast<std::size_t>(found - names.begin());
  };
  Names names;
  for (const Material& material : materials) names.push_back(material.name);
  path.material = index("material", table.text("material", names.front()), names);
  path.mode = static_cast<Mode>(index("mode", table.text("mode"), modeNames()));
  path.byStress = table.has("stress");
  if (path.byStress == table.has("stretch"))
    table.fail(nullptr, "path \"" + path.name + "\" has " + (path.byStress ? "both stretch and stress" : "no turns") +
                            ", expected stretch = [...] or stress = [...]");
  path.turns = path.byStress ? table.reals("stress", "Pa") : table.reals("stretch", "");
  if (!path.byStress && path.mode != Mode::Shear)
    for (const double s : path.turns)
      if (!(s > 0)) table.fail("stretch", "stretch has " + shortNumber(s) + ", expected positive numbers");
  path.steps = static_cast<int>(table.real("steps", stepCount, "", path.steps));
  path.stepTime = table.real("step_time", positive, "s", path.stepTime);
  if (table.has("data")) {
    Columns data(table.table("data", {"stretch", "stress", "file"}), {{"stretch", ""}, {"stress", "Pa"}});
    for (std::size_t k = 0; k < data.rows(); ++k)
      if (path.mode != Mode::Shear && !(data.column(0)[k] > 0))
        data.fail(0, k, "stretch is " + shortNumber(data.column(0)[k]) + ", expected a positive number");
    path.data = {data.take(0), data.take(1)};
  }
  return path;
}

} // namespace

PathCase readPathCase(const std::filesystem::path& file) {
  const Table table(file, readText(file), {"title", "job", "material", "path", "output", "fit"});
  PathCase result;
  result.file = file;
  result.job = table.job();
  result.title = table.text("title", result.job);
  const Table output = table.table("output", {"directory"});
  result.outputDirectory = output.has("directory") ? file.parent_path() / output.path("directory") : ".";
  result.materialTables = table.tables("material", materialKeys());
  for (const Table& material : result.materialTables) result.materials.push_back(readMaterial(material));
  if (result.materials.empty()) throw InputError(file.string() + ": no material, expected [[material]]");
  for (const Table& path :
       table.tables("path", {"name", "material", "mode", "stretch", "stress", "steps", "step_time", "data"}))
    result.paths.push_back(readPath(path, result.materials));
  if (result.paths.empty()) throw InputError(file.string() + ": no path, expected [[path]]");
  result.fit = table.table("fit", fitKeys());
  if (table.has("fit")) fitCaseOf(result); // is it sound?
  result.files = table.files();
  return result;
}

std::vector<PathPoint> follow(const MaterialPath& path, const Material& material) {
  checkData(material);
  return Follower(path, material).run();
}

void writeTable(const std::filesystem::path& name, const PathCase& definition,
                const std::vector<std::vector<PathPoint>>& results) {
  PartialTextFile file(name);
  file.put(
      "path,stretch,free_stretch,volume_ratio,nominal_stress,stress_xx,stress_yy,stress_zz,stress_xy,stored_energy,"
      "lost_energy");
  for (std::size_t k = 0; k < results.size(); ++k)
    for (const PathPoint& p : results[k]) {
      std::string line = quotedCell(definition.paths[k].name);
      for (const double value :
           {p.stretch, p.free, p.J, p.nominal, p.cauchy[0], p.cauchy[1], p.cauchy[2], p.cauchy[3], p.stored, p.lost})
        appendCell(line, value);
      file.put(line);
    }
  file.close();
  file.complete();
}

void writeDrawing(const std::filesystem::path& name, const PathCase& definition,
                  const std::vector<std::vector<PathPoint>>& results) {
  const auto shears = std::count_if(definition.paths.begin(), definition.paths.end(),
                                    [](const auto& path) { return path.mode == Mode::Shear; });
  const bool areAll = static_cast<std::size_t>(shears) == definition.paths.size();
  Drawing drawing(definition.title, shears == 0 ? "stretch" : (areAll ? "shear" : "stretch or shear"),
                  "nominal stress in MPa");
  for (std::size_t k = 0; k < results.size(); ++k) {
    std::vector<double> x, y;
    for (const PathPoint& p : results[k]) {
      x.push_back(p.stretch);
      y.push_back(p.nominal / 1e6);
    }
    drawing.curve(definition.paths[k].name, x, y);
    std::vector<double> stress = definition.paths[k].data.stress;
    for (double& s : stress) s /= 1e6;
    if (!stress.empty()) drawing.marks(definition.paths[k].data.stretch, stress);
  }
  drawing.write(name);
}

} // namespace sharedanalysis::solver
