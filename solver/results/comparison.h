// Whether two runs are the same to the last bit, by their digests and, where they differ, by their fields.
#pragma once

#include "exit_codes.h"

#include <filesystem>
#include <string>

namespace sharedanalysis::solver {

enum class Verdict { Same = exitDone, Different = exitDifferent, Incomplete = exitInput };

struct Comparison {
  Verdict verdict;
  std::string text; // lines for people
};

// Each of the two is a digest or a directory with one.  Throws nothing but memory errors: what is missing or cannot be read
// makes the comparison incomplete.
Comparison compareRuns(const std::filesystem::path& a, const std::filesystem::path& b);

} // namespace sharedanalysis::solver
