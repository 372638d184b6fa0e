// What the library that reads Gmsh's files offers to the one that loads it.
#pragma once

#include "solver/model/model.h"

#include <filesystem>

// The bricks, nodes and groups of a file that has been looked at.  Throws InputError naming the file.
extern "C" void sharedanalysis_read_gmsh(const std::filesystem::path& file, sharedanalysis::solver::Mesh& mesh);
