// The input of a run: the case, the same on all ranks, the mesh or the part of it that this rank has, and the number of threads.
#pragma once

#include "solver/input/case_reader.h"
#include "solver/parallel/ranks.h"
#include "solver/program/job.h"

namespace sharedanalysis::solver {

struct JobInput {
  // Throws InputError, also when ranks have read different cases.
  JobInput(const JobOptions& options, const Ranks& ranks);

  int threads; // of each rank
  CaseFile caseFile;
  Mesh mesh;
  uint64_t hash; // of all that was read, the same on all ranks
};

} // namespace sharedanalysis::solver
