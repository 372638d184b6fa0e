// Meshes as Exodus II files.
#pragma once

#include "solver/model/model.h"

#include <filesystem>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Writes a whole mesh with the numbers of its nodes and bricks, so that it is the same when it is read again: volumes as element
// blocks, groups of faces as side sets, other groups as node sets.  A group of faces that bricks do not have becomes a node set;
// the lines that are returned say so.  Throws InputError, which begins with `input`, for bricks that are in no volume or in several, and WriteError.
std::vector<std::string> writeMesh(const std::filesystem::path& file, const std::string& input, const Mesh& mesh);

} // namespace sharedanalysis::solver
