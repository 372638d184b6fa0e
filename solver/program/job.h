// One run of the program, from the case file to the results.
#pragma once

#include "exit_codes.h"

#include <filesystem>
#include <optional>

namespace sharedanalysis::solver {

struct JobOptions {
  std::filesystem::path caseFile;
  std::optional<std::filesystem::path> outputDirectory; // instead of the one of the case
  int threads = 0; // of each rank; 0: OMP_NUM_THREADS, else the cores, of several ranks 1
  bool checkOnly = false, quiet = false;
  bool digest = false;                               // also write hashes of all fields
  double rankTimeout = 0;                            // s that a rank waits for another one; 0: forever
  bool rankFiles = false;                            // message files of every rank, also of one with nothing to say
  std::optional<bool> filesByRank = {};              // instead of the choice of the case
  std::optional<std::filesystem::path> restart = {}; // file to go on from; empty: the one of the job
};

// Reports errors on standard error; throws nothing.  The library must be initialised.  Every rank calls it and gets the same
// code.
ExitCode runJob(const JobOptions& options);

} // namespace sharedanalysis::solver
