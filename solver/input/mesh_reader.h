// Meshes of 8-node bricks from Gmsh's .msh files.
#pragma once

#include "solver/model/model.h"

#include <filesystem>

namespace sharedanalysis::solver {

// Reads any version of the format that Gmsh reads.  Bricks stand in the order of their numbers, and so do the nodes; nodes
// of no brick are left out.  Every physical group is a group of the mesh; one without a name is called volume_<tag>,
// surface_<tag>, curve_<tag> or point_<tag>.  Throws InputError naming the file: unreadable, elements of dimension 3 other
// than 8-node bricks, bricks in no physical volume, numbers or names given twice, coordinates that are not finite.
// Uses Gmsh's one global model: call it from one thread.
Mesh readMesh(const std::filesystem::path& file);

} // namespace sharedanalysis::solver
