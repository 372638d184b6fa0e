// What the solver tells the diagnostics: the course of its one step, and why an analysis ended early.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/parallel/ranks.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Of bricks that are recorded one by one, `most` of them by one rank alone: so many by each of several, at least eight.
int64_t mostOfRank(int64_t most, const Ranks& ranks);

// The number of a brick as diagnostics have it, in 32 bits; none for a larger one.
inline std::optional<int32_t> labelOf(int64_t number) {
  return number <= std::numeric_limits<int32_t>::max() ? std::optional(static_cast<int32_t>(number)) : std::nullopt;
}

// One for a job, on every rank.  The root records the course; problems of all ranks end in its database.
class DiagnosticCourse {
public:
  DiagnosticCourse(const Case& definition, const Ranks& ranks);

  void increment(const Progress& now, double timeIncrement);
  // Bricks of this rank, by their numbers in the mesh: eight messages at most; the first are recorded, 1000 of all ranks together
  // or eight of each.
  void reportDistortion(const std::vector<int64_t>& bricks);
  // Endings other than distorted bricks.
  void reportEnding(Ending ending, const std::string& reason);
  // Brings what all ranks have recorded to the root and ends the step.  Every rank calls it.
  void end();

private:
  const Ranks& ranks_;
};

} // namespace sharedanalysis::solver
