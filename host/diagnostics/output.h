// The two ways of showing a record.
#pragma once

#include "record.h"

#include <string>

namespace sharedanalysis::diagnostics {

struct Terminal {
  std::size_t width = SIZE_MAX; // columns; unlimited if the output is no terminal
  bool colours = false;
};

// For an analyst.
std::string listing(const Record& record, const Selection& selection, const Terminal& terminal);

// For programs.
std::string json(const Record& record);

} // namespace sharedanalysis::diagnostics
