// Meshes of 8-node bricks from Gmsh's .msh files.
#pragma once

#include "solver/model/model.h"

#include <filesystem>

namespace sharedanalysis::solver {

// Reads any version of the format that Gmsh reads.  Bricks stand in the order of their numbers, and so do the nodes; nodes
// of no brick are left out.  Every physical group is a group of the mesh; one without a name is called volume_<tag>,
// surface_<tag>, curve_<tag> or point_<tag>.  Throws InputError naming the file: unreadable, elements of dimension 3 other
// than 8-node bricks, bricks in no physical volume or on the same nodes, numbers or names given twice, counts that do not fit the
// lines that follow, coordinates that are not finite.  Gmsh works in a process of its own: a file that it crashes, hangs or
// takes too much memory over is an InputError as well; nothing that stands beside the file is read.
Mesh readMesh(const std::filesystem::path& file);

// What is looked at before Gmsh has the file: its beginning and its end, counts of sections against their lines.
void checkMeshText(const std::filesystem::path& file);

} // namespace sharedanalysis::solver
