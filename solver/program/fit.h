// Constants of a material that bring it closest to the data of tests.
#pragma once

#include "solver/program/material_path.h"

#include <functional>
#include <map>
#include <optional>

namespace sharedanalysis::solver {

// Fits constants of the case's [fit] to the data of all its paths that lead the material.  Residuals are those of the nominal
// stress at the stretches of the data; a material that keeps a history is led along the path as the case has it.
// Throws InputError when data and constants do not go together, or no start leads to a state that can be computed.
struct FitResult {
  struct Constant {
    std::string name;
    const char* unit;
    double value;
    std::optional<double> error; // standard error, by the residuals; none with as many constants as points
    bool isDetermined;
  };
  struct Misfit { // of a path, or of all
    std::string path;
    std::size_t points;
    double rms, relative; // Pa; of relative residuals, as FitCase describes them
  };

  Material material;
  std::map<std::string, std::vector<double>> numbers; // by key of the material's table, whole arrays
  std::vector<Constant> constants;
  std::vector<Misfit> misfits; // of the paths, then of all
  int starts, reached;         // and how many of them have led to this result
  std::vector<std::string> notes;
};
FitResult fit(const PathCase& definition);

// The material's table with the fitted constants, ready for a case.
std::string fittedCase(const PathCase& definition, const FitResult& result);

// Least squares of m residuals in n unknowns by the method of Levenberg and Marquardt.  `residuals` fills its last argument for
// any finite unknowns.
struct LeastSquares {
  int unknowns, residuals;
  std::function<void(const std::vector<double>& x, std::vector<double>& r)> evaluate;

  // From x to a minimum, until the sum of squares or the unknowns change by less than a part of themselves; returns the sum.
  double minimise(std::vector<double>& x, double part, int mostEvaluations) const;
  // Columns are the derivatives by each unknown with its step, from both sides.
  std::vector<double> derivatives(const std::vector<double>& x, const std::vector<double>& steps) const;
};

// Of the inverse of J'J, J having as many rows as residuals: the diagonal, 0 for unknowns that the columns do not determine.
std::vector<double> variances(std::vector<double> J, int residuals, int unknowns);

} // namespace sharedanalysis::solver
