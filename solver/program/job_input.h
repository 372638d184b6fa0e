// The input of a run: case and mesh, the same on all ranks, and the number of threads.
#pragma once

#include "solver/parallel/ranks.h"
#include "solver/input/case_reader.h"
#include "solver/program/job.h"

namespace sharedanalysis::solver {

struct JobInput {
  // Throws InputError, also when ranks have read different files.
  JobInput(const JobOptions& options, const Ranks& ranks);

  int threads; // of each rank
  CaseFile caseFile;
  Mesh mesh;
  uint64_t hash; // of all that was read
};

} // namespace sharedanalysis::solver
