// The files that a run goes on from.
//
// A run of one rank has one file.  Each rank of several writes what it owns into a part of its own, <file>.G.R: G counts the
// states that were written, R is the rank.  The file names the state whose parts belong to it, and is replaced when all of them
// are whole and on the device; then those of earlier states go.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/parallel/ranks.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace sharedanalysis::solver {

struct RestartState {
  std::vector<double> run;    // output times and how far the results have come
  std::vector<double> course; // of the analysis
};

// `save` puts the records of this rank.  `input` is the hash of case and mesh; the state is that of the root.  Every rank calls
// it.  Throws WriteError.
void writeRestart(const std::filesystem::path& file, uint64_t input, const RestartState& state, const Ranks& ranks,
                  const std::function<void(const RecordSink&)>& save);

// The file and its parts, where there are any.  Throws WriteError.
void removeRestart(const std::filesystem::path& file);

// Reads a state on any number of ranks: each reads some of the parts, piece by piece.
class RestartReader {
public:
  // Every rank calls it.  Throws InputError "file: what is wrong" on all of them for a file or a part that is missing, no such
  // file, of another release, of another case or mesh, cut off or damaged; files are read whole for that.  No more memory is
  // taken than they have.
  RestartReader(const std::filesystem::path& file, uint64_t input, const Ranks& ranks);
  ~RestartReader();
  RestartReader(const RestartReader&) = delete;
  RestartReader& operator=(const RestartReader&) = delete;

  // On every rank.
  const RestartState& state() const { return state_; }
  // Further records from the files of this rank; nothing when there are no more.
  std::vector<double> next();

private:
  class File;

  RestartState state_;
  std::vector<std::function<std::unique_ptr<File>()>>
      parts_; // those that this rank has not read yet, the next one last
  std::unique_ptr<File> present_;
};

} // namespace sharedanalysis::solver
