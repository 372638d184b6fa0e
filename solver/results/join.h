// One file of fields from those that the ranks of a run have written.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace sharedanalysis::solver {

struct JoinedFile {
  std::filesystem::path file;
  int64_t parts = 0, times = 0, nodes = 0, elements = 0;
};

// `part` is any file of the set, also one of a run that has not come to its end; the times that all of them have are joined.
// Without `file` the result has the name of the set.  It is what the root would have written alone.  Holds 16 bytes for each node
// and element of each file and 16 for each of the model.  Throws InputError for files that are missing, damaged or of different
// runs, and std::runtime_error where the result cannot be written.
JoinedFile joinFiles(const std::filesystem::path& part, const std::optional<std::filesystem::path>& file);

// "JOB.exo" for "JOB.exo.4.0" and "JOB.exo.4.0.partial", nothing for other names.
std::optional<std::filesystem::path> setOf(const std::filesystem::path& part);

} // namespace sharedanalysis::solver
