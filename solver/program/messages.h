// What a run tells the host: lines of its message and status files, and the end of the analysis.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// To the message file, or to the status file when the type is "Status".
void message(const char* type, const char* text, const std::vector<std::string>& strings = {},
             std::initializer_list<double> reals = {});

// By GLO_UTI_EXIT, with one of its codes.
void endAnalysis(int32_t code);

} // namespace sharedanalysis::solver
