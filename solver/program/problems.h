// What a user must know of a run that came to its end: bricks that failed or were bad from the start, energies that say that the
// results are not what they look like.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/model/archive.h"

#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Kept by the root, which has energies and events; the first of every kind also go to the diagnostics.
class Problems {
public:
  // So many bricks of a kind are recorded one by one; all are counted.
  static constexpr int64_t kMostRecorded = 1000;

  explicit Problems(const Mesh& mesh) : mesh_(mesh) {}

  // Bricks whose corners are far from right angles, or with edges of very different length.  Every rank calls it, and records
  // those that it owns.
  void checkMesh(const Ranks& ranks);
  // Of the bricks, the failures among them.
  void add(const BrickEvents& events);
  // At the times of fields; `energyError` relative to the largest energy.
  void check(double time, const Energies& energies, double energyError);
  // Of the course; what was wrong with the mesh is found again.
  void visit(Archive& archive);

  bool found() const { return !lines().empty(); }
  // One line a kind of problem, for the end of the run.
  std::vector<std::string> lines() const;

private:
  const Mesh& mesh_;
  int64_t distorted_ = 0, failures_ = 0, firstDistorted_ = 0, firstFailed_ = 0; // how many; numbers of the mesh
  int64_t failuresRecorded_ = 0;
  bool hourglassRecorded_ = false,
       energyRecorded_ = false; // in the diagnostics, which begin anew with a run that goes on
  double failureTime_ = 0, hourglass_ = 0, hourglassTime_ = 0, energyError_ = 0, energyTime_ = 0;
};

} // namespace sharedanalysis::solver
