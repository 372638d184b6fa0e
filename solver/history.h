// The history of a run: one line of numbers for each history time, as comma-separated values.
#pragma once

#include "analysis.h"
#include "partial_file.h"

#include <cstdio>
#include <memory>

namespace sharedanalysis::solver {

// Every number is written with the digits that bring back its bits.  Each line is in the file when write returns.
class HistoryFile {
public:
  explicit HistoryFile(const std::filesystem::path& name);

  // balanceError: change of the energy balance since the start, in J.
  void write(const Analysis& analysis, double balanceError);
  // No line can be written afterwards.
  void close();
  const PartialFile& file() const { return file_; }

private:
  PartialTextFile file_;
};

} // namespace sharedanalysis::solver
