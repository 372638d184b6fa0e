// Cases: what is done with a mesh, from a TOML file.  docs/explicit-solver.md lists the keys.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/ranks.h"

#include <filesystem>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Where the case names a group of the mesh.
struct GroupReference {
  std::string group;
  std::string place; // file:line:column
  Members members;   // what it must consist of
};

struct CaseFile {
  Case definition;
  std::vector<GroupReference> groups;         // the sections first, in their order
  std::vector<std::string> lines;             // the text of the file
  std::vector<std::filesystem::path> files{}; // that are read: the case, mesh and curves
};

// Relative paths in the file count from its directory; without output.directory results go to the working directory.
// Throws InputError "file:line:column: what is wrong, what is expected": broken TOML, unknown keys, wrong types, numbers
// that make no sense.
CaseFile readCase(const std::filesystem::path& file);

// Throws InputError when a named group is not in the mesh, has no node or is no volume where bricks are asked for, or when
// the sections do not cover every brick exactly once.  All ranks call it, and end with the same text.
void checkGroups(const CaseFile& caseFile, const Mesh& mesh, const Ranks& ranks);

} // namespace sharedanalysis::solver
