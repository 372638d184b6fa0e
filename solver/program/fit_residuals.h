// Residuals of a fit: computed less measured nominal stresses of all tests of a material.
#pragma once

#include "solver/program/fit_case.h"

#include <limits>

namespace sharedanalysis::solver {

// A path with its data.
struct DataOfPath {
  const MaterialPath* path;
  TestData data;
  std::vector<double> weights;   // of each point, 1/Pa
  std::vector<double> floors;    // stresses that relative misfits divide by, Pa
  std::vector<std::size_t> legs; // of each point, where the material keeps a history
};

// Materials whose stress depends on what was before are led along the path of a test.
bool keepsHistory(const Material& material);
// The largest magnitude.
double largest(const std::vector<double>& values);

class FitResiduals {
public:
  // Throws InputError where the data are too few, or do not go with their path.
  // Of each path so many points at most are taken, spread over its data.
  FitResiduals(const PathCase& definition, const FitCase& fitCase,
               std::size_t mostPoints = std::numeric_limits<std::size_t>::max());

  const std::vector<DataOfPath>& tests() const { return tests_; }
  std::size_t points() const { return points_; }
  double modulus() const { return modulus_; } // of shear, of the size that the data show

  // The material with values of the free constants.
  Material materialOf(const std::vector<double>& values) const;
  // Weighed residuals; those of states that cannot be computed are large.  False if there are any.
  bool evaluate(const std::vector<double>& values, std::vector<double>& residuals) const;
  bool isComputable(const std::vector<double>& values) const;
  // Computed stresses at the data of a test; empty when the path cannot be followed.  `free` as nominalStresses takes it.
  std::vector<double> stressesOf(const DataOfPath& test, const Material& material, std::vector<double>& free) const;
  // The states of a path, none when it cannot be followed.
  std::vector<PathPoint> statesOf(const MaterialPath& path, const Material& material) const;

private:
  void weigh();
  bool isSound(const std::vector<double>& values, const Material& material) const;

  const PathCase& definition_;
  const FitCase& case_;
  const Material& material_;
  std::vector<DataOfPath> tests_;
  mutable std::vector<std::vector<double>> free_; // stretches found last, from which the next search starts
  std::size_t points_ = 0;
  double modulus_ = 1;
};

} // namespace sharedanalysis::solver
