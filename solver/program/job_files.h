// The message, status and log files of a run on every rank, and what earlier runs have left in their place.
#pragma once

#include "solver/analysis/ranks.h"
#include "solver/model/model.h"

#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Makes the directory, removes files of earlier runs, opens those of this rank and writes their first lines.  Every rank
// calls it.  Throws WriteError.
void openJobFiles(const Case& definition, const Ranks& ranks, const std::vector<std::string>& description);

// Failures of the message file itself go to standard error.
void closeJobFiles() noexcept;

// After a failure of this rank or of others.  closeJob reports the file that could not be written; the run then fails with
// that error.
void closeJobFiles(RankFailure& failure, const Ranks& ranks) noexcept;

} // namespace sharedanalysis::solver
