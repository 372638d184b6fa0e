#include "solver/program/fit.h"

#include "solver/model/text.h"
#include "solver/program/fit_residuals.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>

namespace sharedanalysis::solver {
namespace {

// Points of a path on which starts are tried.
constexpr std::size_t kFew = 40;
// Derivatives for standard errors are taken by this part of a constant.
constexpr double kPart = 1e-4;
// Squares of residuals, each, of data that a model meets.
constexpr double kExact = 1e-18;

// Numbers from 0 to 1 that are the same everywhere.
class Numbers {
public:
  double next() {
    state_ += 0x9e3779b97f4a7c15U;
    uint64_t z = state_;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9U;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebU;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * 0x1p-53;
  }
  double between(double low, double high) { return low + (high - low) * next(); }
  // A power of two with an exponent between these, nearly.
  double power(int low, int high) {
    const double exponent = between(low, high), whole = std::floor(exponent);
    return std::ldexp(1 + exponent - whole, static_cast<int>(whole));
  }

private:
  uint64_t state_ = 0x5a17;
};

// An unknown of any size for a value between bounds.  Roots alone, so that all machines agree.
class Unknown {
public:
  Unknown(const FitConstant& constant, double width) : low_(constant.low), high_(constant.high), width_(width) {}

  double value(double q) const {
    const double root = std::sqrt(1 + q * q), grown = q >= 0 ? root + q : 1 / (root - q);
    if (std::isfinite(low_) && std::isfinite(high_)) return low_ + (high_ - low_) * 0.5 * (1 + q / root);
    if (std::isfinite(low_)) return low_ + width_ * grown;
    if (std::isfinite(high_)) return high_ - width_ * grown;
    return width_ * q;
  }
  // A value at its bound is moved inside, where there is a slope.
  double unknown(double value) const {
    if (std::isfinite(low_) && std::isfinite(high_)) {
      const double t = std::clamp(2 * (value - low_) / (high_ - low_) - 1, -0.99, 0.99);
      return t / std::sqrt(1 - t * t);
    }
    if (!std::isfinite(low_) && !std::isfinite(high_)) return value / width_;
    const double grown = std::max(std::isfinite(low_) ? value - low_ : high_ - value, 0.01 * width_) / width_;
    return 0.5 * (grown - 1 / grown);
  }

private:
  double low_, high_, width_;
};

class Fit {
public:
  explicit Fit(const PathCase& definition)
      : definition_(definition), case_(fitCaseOf(definition)), residuals_(definition, case_),
        few_(definition, case_, std::max(kFew, case_.free.size())), material_(definition.materials[case_.material]) {}

  // All starts are led near their minima, the best of them to the end.
  FitResult run() {
    std::vector<double> sums, best;
    double least = std::numeric_limits<double>::infinity();
    const double exact = kExact * static_cast<double>(few_.points());
    std::vector<std::size_t> all(case_.free.size()), moduli;
    std::iota(all.begin(), all.end(), std::size_t{0});
    for (const std::size_t k : all) // stress is linear in them, nearly
      if (std::string_view(case_.free[k].unit) == "Pa") moduli.push_back(k);
    for (int k = 0; k < case_.starts && !(least < exact); ++k) {
      std::vector<double> values = startValues(k);
      if (!few_.isComputable(values)) continue;
      if (k > 0 && !moduli.empty()) improve(few_, values, moduli, 1e-3, 5);
      sums.push_back(improve(few_, values, all, 1e-6, 15));
      if (!(sums.back() < least) || !residuals_.isComputable(values)) continue;
      least = sums.back();
      best = values;
    }
    if (best.empty())
      throw PathFailed("material \"" + material_.name +
                       "\": no start leads to stresses that can be computed, expected other constants to start from");
    const double same = 1.01 * least + exact;
    least = std::numeric_limits<double>::infinity();
    for (int k = 0; k < 3; ++k) { // anew, with the scales of the last result
      const double before = least;
      least = improve(residuals_, best, all, 1e-13, 40);
      if (!(least < (1 - 1e-9) * before)) break;
    }
    FitResult result{};
    result.starts = static_cast<int>(sums.size());
    result.reached = static_cast<int>(std::count_if(sums.begin(), sums.end(), [&](double s) { return s <= same; }));
    order(best);
    describe(best, least, result);
    return result;
  }

private:
  template <class Values>
  static LeastSquares problemOf(const FitResiduals& residuals, std::size_t unknowns, Values valuesOf) {
    return {static_cast<int>(unknowns), static_cast<int>(residuals.points()),
            [&residuals, valuesOf](const std::vector<double>& x, std::vector<double>& r) {
              residuals.evaluate(valuesOf(x), r);
            }};
  }

  // Leads some of the values to a minimum; returns the sum of squares.
  double improve(const FitResiduals& residuals, std::vector<double>& values, const std::vector<std::size_t>& places,
                 double part, int evaluations) const {
    const std::vector<Unknown> unknowns = unknownsOf(values);
    const std::vector<double> start = values;
    const auto valuesOf = [&](const std::vector<double>& x) {
      std::vector<double> result = start;
      for (std::size_t k = 0; k < x.size(); ++k) result[places[k]] = unknowns[places[k]].value(x[k]);
      return result;
    };
    std::vector<double> x;
    for (const std::size_t k : places) x.push_back(unknowns[k].unknown(values[k]));
    const double sum =
        problemOf(residuals, x.size(), valuesOf).minimise(x, part, evaluations * static_cast<int>(x.size() + 1));
    values = valuesOf(x);
    return sum;
  }

  // ---- starts

  // The first one is that of the case, the others are spread over what such constants are.
  std::vector<double> startValues(int number) {
    std::vector<double> values;
    for (const FitConstant& c : case_.free) {
      if (number == 0)
        values.push_back(c.start);
      else
        values.push_back(std::clamp(spread(c), c.low, c.high));
    }
    return values;
  }
  double spread(const FitConstant& c) {
    const std::string unit = c.unit;
    if (std::isfinite(c.low) && std::isfinite(c.high)) return numbers_.between(c.low, c.high);
    if (material_.model->isUser()) return c.start != 0 ? c.start * numbers_.power(-1, 1) : numbers_.next();
    if (unit == "Pa") {
      const double size = residuals_.modulus() * numbers_.power(-9, 1);
      return c.low >= 0 || numbers_.next() < 0.75 ? size : -size;
    }
    if (unit == "1/Pa") return (c.start > 0 ? c.start : 1e-3 / residuals_.modulus()) * numbers_.power(-3, 3);
    if (std::isfinite(c.low)) return c.low + std::max(c.start - c.low, 0.1) * numbers_.power(-2, 2);
    return c.key == "alpha" ? numbers_.between(-5, 8) : numbers_.between(-0.3, 1);
  }
  double sizeOf(const FitConstant& c, double value) const {
    const double own = std::abs(value - (std::isfinite(c.low) ? c.low : std::isfinite(c.high) ? c.high : 0));
    if (own > 0) return own;
    const std::string unit = c.unit;
    return unit == "Pa" ? residuals_.modulus() : unit == "1/Pa" ? 1e-3 / residuals_.modulus() : 1;
  }
  std::vector<Unknown> unknownsOf(const std::vector<double>& values) const {
    std::vector<Unknown> unknowns;
    for (std::size_t k = 0; k < values.size(); ++k)
      unknowns.emplace_back(case_.free[k], sizeOf(case_.free[k], values[k]));
    return unknowns;
  }

  // ---- the result

  // Terms that are free as a whole and alike in their bounds come in the order of falling mu.
  void order(std::vector<double>& values) const {
    if (material_.model->reading != Reading::Terms) return;
    std::vector<std::vector<std::size_t>> terms; // of the places of mu, alpha and, of foam, beta
    for (std::size_t k = 0; k < case_.free.size(); ++k) {
      const FitConstant& c = case_.free[k];
      if (c.isReciprocal) continue;
      if (c.low != c.range.low || c.high != c.range.high) return;
      terms.resize(std::max(terms.size(), c.element + 1));
      terms[c.element].push_back(k);
    }
    const std::size_t width = material_.model->keys[2].isReciprocal ? 2 : 3;
    std::size_t count = definition_.materialTables[case_.material].reals("mu", "Pa").size();
    if (terms.size() != count) return;
    for (const auto& term : terms)
      if (term.size() != width) return;
    std::vector<std::size_t> places(count);
    std::iota(places.begin(), places.end(), std::size_t{0});
    const std::vector<double> old = values;
    const auto mu = [&](std::size_t t) {
      for (const std::size_t k : terms[t])
        if (case_.free[k].key == "mu") return old[k];
      return 0.0;
    };
    std::stable_sort(places.begin(), places.end(), [&](std::size_t a, std::size_t b) { return mu(a) > mu(b); });
    for (std::size_t t = 0; t < count; ++t)
      for (const std::size_t to : terms[t])
        for (const std::size_t from : terms[places[t]])
          if (case_.free[from].key == case_.free[to].key) values[to] = old[from];
  }

  void describe(const std::vector<double>& values, double sum, FitResult& result) const {
    result.material = residuals_.materialOf(values);
    const Table& table = definition_.materialTables[case_.material];
    for (std::size_t k = 0; k < values.size(); ++k) {
      const FitConstant& c = case_.free[k];
      std::vector<double>& all = result.numbers[c.key];
      if (all.empty()) all = table.isArray(c.key.c_str()) ? table.reals(c.key.c_str(), c.unit) : std::vector<double>{0};
      all[c.element] = values[k];
    }
    addConstants(values, sum, result);
    addMisfits(result);
    addNotes(result);
    for (const MaterialPath& path : definition_.paths)
      if (path.material == case_.material) addStability(path, result);
  }

  void addConstants(const std::vector<double>& values, double sum, FitResult& result) const {
    // derivatives by each constant in parts of its size, well inside its range
    std::vector<double> sizes, inside(values.size());
    for (std::size_t k = 0; k < values.size(); ++k) {
      const FitConstant& c = case_.free[k];
      sizes.push_back(values[k] != 0 ? std::abs(values[k]) : sizeOf(c, c.low));
      const double margin = std::min(2 * kPart * sizes[k], 0.25 * (c.range.high - c.range.low));
      inside[k] = std::clamp(values[k], c.range.low + margin, c.range.high - margin);
    }
    const LeastSquares problem = problemOf(residuals_, values.size(), [&](const std::vector<double>& x) {
      std::vector<double> at(x);
      for (std::size_t k = 0; k < at.size(); ++k) at[k] *= sizes[k];
      return at;
    });
    for (std::size_t k = 0; k < inside.size(); ++k) inside[k] /= sizes[k];
    const std::vector<double> J = problem.derivatives(inside, std::vector<double>(values.size(), kPart));
    const std::vector<double> parts =
        variances(J, static_cast<int>(residuals_.points()), static_cast<int>(values.size()));
    for (std::size_t k = 0; k < values.size(); ++k) {
      const FitConstant& c = case_.free[k];
      FitResult::Constant constant{c.name, c.unit, values[k], {}, parts[k] > 0};
      if (residuals_.points() > values.size() && parts[k] > 0)
        constant.error =
            sizes[k] * std::sqrt(parts[k] * sum / static_cast<double>(residuals_.points() - values.size()));
      if (constant.error && values[k] != 0 && !(*constant.error < std::abs(values[k]))) constant.isDetermined = false;
      result.constants.push_back(constant);
    }
  }

  void addMisfits(FitResult& result) const {
    FitResult::Misfit all{"all", 0, 0, 0};
    for (const DataOfPath& test : residuals_.tests()) {
      FitResult::Misfit one{test.path->name, test.weights.size(), 0, 0};
      std::vector<double> free;
      const std::vector<double> computed = residuals_.stressesOf(test, result.material, free);
      for (std::size_t k = 0; k < one.points; ++k) {
        const double error = computed[k] - test.data.stress[k], part = error / test.floors[k];
        one.rms += error * error;
        one.relative += part * part;
      }
      all.points += one.points;
      all.rms += one.rms;
      all.relative += one.relative;
      result.misfits.push_back(one);
    }
    result.misfits.push_back(all);
    for (FitResult::Misfit& m : result.misfits) {
      m.rms = std::sqrt(m.rms / static_cast<double>(m.points));
      m.relative = std::sqrt(m.relative / static_cast<double>(m.points));
    }
  }

  void addNotes(FitResult& result) const {
    for (std::size_t k = 0; k < result.constants.size(); ++k) {
      const FitResult::Constant& c = result.constants[k];
      const FitConstant& free = case_.free[k];
      for (const double end : {free.low, free.high})
        if (std::abs(c.value - end) <
            1e-5 * (std::isfinite(free.high - free.low) ? free.high - free.low : sizeOf(free, free.start)))
          result.notes.push_back(c.name + " is at its bound, " + shortNumber(end));
      if (c.isDetermined) continue;
      result.notes.push_back(c.name + " is not determined by the data" +
                             (c.error && *c.error > 0 ? ": its standard error is " + shortNumber(*c.error) : ""));
    }
    if (const double G = result.material.shearModulus(); hasShearTest() && G < 1e-3 * residuals_.modulus())
      result.notes.push_back("the shear modulus without strain has come to " + shortNumber(G) +
                             " Pa, its limit: the data ask for a softer start than the model may have");
    if (result.starts > 1 && result.reached == 1)
      result.notes.push_back("one of " + std::to_string(result.starts) +
                             " starts alone has led here, more starts may find better");
  }

  bool hasShearTest() const {
    return std::any_of(residuals_.tests().begin(), residuals_.tests().end(), [](const DataOfPath& test) {
      return test.path->mode != Mode::Volumetric && test.path->mode != Mode::Confined;
    });
  }

  // A falling nominal stress is one that the material cannot hold.
  void addStability(const MaterialPath& path, FitResult& result) const {
    const double origin = path.mode == Mode::Shear ? 0.0 : 1.0;
    std::vector<double> ends = !path.data.stretch.empty() ? path.data.stretch : path.turns;
    if (path.byStress && path.data.stretch.empty()) return;
    ends.push_back(origin);
    const auto [low, high] = std::minmax_element(ends.begin(), ends.end());
    std::vector<double> s, P;
    if (keepsHistory(result.material)) {
      std::vector<PathPoint> states = residuals_.statesOf(path, result.material);
      if (states.empty()) {
        result.notes.push_back("the material cannot be led along path \"" + path.name + "\"");
        return;
      }
      states.resize(std::min(states.size(), static_cast<std::size_t>(path.steps) + 1)); // the first leg
      for (const PathPoint& state : states)
        if (state.stretch >= *low && state.stretch <= *high) s.push_back(state.stretch), P.push_back(state.nominal);
    } else {
      constexpr std::size_t parts = 200;
      for (std::size_t k = 0; k <= parts; ++k) s.push_back(*low + (*high - *low) * static_cast<double>(k) / parts);
      std::vector<double> free;
      P = nominalStresses(result.material, path.mode, s, free);
    }
    const double small = 1e-9 * largest(P);
    for (std::size_t k = 1; k < s.size(); ++k) {
      const double rise = s[k] > s[k - 1] ? P[k] - P[k - 1] : P[k - 1] - P[k];
      if (rise > -small) continue;
      result.notes.push_back("the material is not stable: on path \"" + path.name + "\" its nominal stress " +
                             (rise <= -small ? "falls with the stretch" : "cannot be computed") + " at " +
                             shortNumber(s[k]));
      return;
    }
  }

  const PathCase& definition_;
  FitCase case_;
  FitResiduals residuals_, few_; // of all points, and of some, on which starts are tried
  const Material& material_;
  Numbers numbers_;
};

} // namespace

FitResult fit(const PathCase& definition) { return Fit(definition).run(); }

std::string fittedCase(const PathCase& definition, const FitResult& result) {
  const FitCase fitCase = fitCaseOf(definition);
  const FitResult::Misfit& all = result.misfits.back();
  std::string text = "# Fitted to " + counted(all.points, "point") + " of tests: relative residual " +
                     shortNumber(100 * all.relative) + " %, " + shortNumber(all.rms / 1e6) + " MPa (rms)\n";
  for (const std::string& note : result.notes) text += "# " + printable(note) + "\n";
  return text + definition.materialTables[fitCase.material].written("material", result.numbers);
}

} // namespace sharedanalysis::solver
