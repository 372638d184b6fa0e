// Faults of input that one rank finds and all ranks answer with.
#pragma once

#include "solver/parallel/ranks.h"

#include <limits>
#include <string>

namespace sharedanalysis::solver {

// Something is wrong at a place of the input.
struct Fault {
  int64_t position = std::numeric_limits<int64_t>::max(); // of what there is nothing wrong with
  std::string text{};
};

// Throws InputError with the fault of smallest position, on all ranks with the same text; of the lowest rank where several have
// one there.
void agree(const Ranks& ranks, const Fault& own);

} // namespace sharedanalysis::solver
