// The message, status and log files of a run on every rank, and what earlier runs have left in their place.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/ranks.h"
#include "solver/results/partial_file.h"

#include <memory>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Keeps a second run of a job out of its directory, until it goes or its process ends, however that ends: a locked file
// <job>.lock, which goes with it; one that a killed run has left locks nobody out.
class JobLock {
public:
  // Throws WriteError when another run has it.
  explicit JobLock(const Case& definition);
  ~JobLock();
  JobLock(const JobLock&) = delete;
  JobLock& operator=(const JobLock&) = delete;

private:
  std::filesystem::path file_;
  int descriptor_ = -1;
};

// Makes the directory of a new run, and locks the job in it; the root has the lock.  Throws WriteError, and InputError where a run is
// to go on that has no directory.
std::unique_ptr<JobLock> lockJob(const Case& definition, const Ranks& ranks, Start start);

// Opens the files of this rank and writes their first lines; when all ranks have theirs, results of earlier runs are removed, but
// those that the run goes on with.  Files of other ranks than the root are made when one of them has something to say, or at once
// with `rankFiles`.  Every rank calls it, under the lock.  Throws WriteError.
void openJobFiles(const Case& definition, const Ranks& ranks, const std::vector<std::string>& description, Start start,
                  bool rankFiles);

// Failures of the message file itself go to standard error.
void closeJobFiles() noexcept;

// After a failure of this rank or of others.  closeJob reports the file that could not be written; the run then fails with
// that error.
void closeJobFiles(RankFailure& failure, const Ranks& ranks) noexcept;

} // namespace sharedanalysis::solver
