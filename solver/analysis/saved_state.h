// All that an analysis needs to go on, as words of the course and a record of each node and brick: the same on any number of ranks
// and threads.  Every rank saves those that it owns, and restores those that it has.
#pragma once

#include "solver/analysis/state.h"

#include <vector>

namespace sharedanalysis::solver {

// What changes from increment to increment; what follows from case and mesh alone is not among it.
struct Changing {
  const Layout& layout;
  NodeState& nodes;
  std::vector<DomainState>& domains;
  Outside& outside;
  Course& course;
};

// The same on every rank.
std::vector<double> saveCourse(const Changing& state);
// Those of this rank.
void saveRecords(const Changing& state, const RecordSink& put);
// Every rank calls it, with the course and with any of the records, which find their ways to those that need them.  Throws
// InputError on all of them for a course that no analysis has, and for records that are not those of case and mesh.
void restoreState(const Changing& state, const std::vector<double>& course, const RecordSource& next);

} // namespace sharedanalysis::solver
