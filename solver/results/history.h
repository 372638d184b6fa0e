// The history of a run: one line of numbers for each history time, as comma-separated values.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/results/partial_file.h"

#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

namespace sharedanalysis::solver {

// Every number is written with the digits that bring back its bits.  Each line is in the file when write returns.
class HistoryFile {
public:
  // Each line also has the measures that the case adds, and with its filter the filtered energies and momenta.
  HistoryFile(const std::filesystem::path& name, const Case& definition, Start start = Start::New);

  // How far the file has come, and the filter.
  void visit(Archive& archive);

  // Runs the filter over the present values: at the start, which it takes as a steady state, and after each increment.
  void filter(const Analysis& analysis);

  // balanceError: change of the energy balance since the start, in J.
  void write(const Analysis& analysis, double balanceError);
  // No line can be written afterwards.
  void close();
  const PartialFile& file() const { return file_; }

private:
  PartialTextFile file_;
  std::optional<host::LowPass> lowPass_;
  double filteredTime_ = 0;
  std::vector<double> filtered_, filterHistory_; // empty before the start
};

} // namespace sharedanalysis::solver
