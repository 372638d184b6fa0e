#pragma once

#include <string>

namespace sharedanalysis::solver {

// The instruction set that kernels run with on this machine: "AVX-512", "AVX2" or "SSE2".
std::string instructionSet();
// What --version shows: program, version, instruction set.
std::string versionText(const std::string& program);

} // namespace sharedanalysis::solver
