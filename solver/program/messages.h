// What a run tells the host: lines of its message and status files, and the end of the analysis.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Codes of GLO_UTI_EXIT.
enum EndCode : int32_t { exitErrors = 20, exitErrorsElsewhere = 21, exitPhaseComplete = 22 };

// To the message file, or to the status file when the type is "Status".
void message(const char* type, const char* text, const std::vector<std::string>& strings = {},
             std::initializer_list<double> reals = {});

void endAnalysis(EndCode code);

} // namespace sharedanalysis::solver
