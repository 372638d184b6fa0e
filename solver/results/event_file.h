// The events of a run: a line for each, as comma-separated values.
#pragma once

#include "solver/analysis/analysis.h"
#include "solver/results/partial_file.h"

#include <vector>

namespace sharedanalysis::solver {

// So many lines are written at most; further events are counted, and the count is the last line.
inline constexpr int64_t kMostEvents = 100000;

class EventFile {
public:
  EventFile(const std::filesystem::path& name, const Case& definition, Start start = Start::New);

  void visit(Archive& archive); // how far it has come

  // Each call brings its lines into the file.
  void write(const BrickEvents& events);
  int64_t room() const { return kMostEvents - lines_; } // for so many lines
  // No line can be written afterwards.
  void close();
  int64_t count() const { return lines_ + omitted_; }
  const PartialFile& file() const { return file_; }

private:
  PartialTextFile file_;
  std::vector<std::string> names_; // group and material of each section, as cells
  int64_t lines_ = 0, omitted_ = 0;
  BrickEvent last_; // that was omitted
};

} // namespace sharedanalysis::solver
