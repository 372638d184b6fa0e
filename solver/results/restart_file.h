// The file that a run goes on from.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace sharedanalysis::solver {

struct RestartState {
  std::vector<double> run;   // output times and how far the results have come
  std::vector<double> model; // of Analysis::state()
};

// Beside the file, which is replaced when the new one is whole and on the device.  `input` is the hash of case and mesh.  Throws
// WriteError.
void writeRestart(const std::filesystem::path& file, uint64_t input, const RestartState& state);

// Throws InputError "file: what is wrong" for a file that is missing, no such file, of another release, of another case or mesh,
// cut off or damaged.  `modelSize` words of the model are expected; no more memory is taken than the file has.
RestartState readRestart(const std::filesystem::path& file, uint64_t input, std::size_t modelSize);

} // namespace sharedanalysis::solver
