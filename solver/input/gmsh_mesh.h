// Meshes of 8-node bricks from Gmsh's .msh files.
#pragma once

#include "solver/input/apart.h"
#include "solver/model/model.h"

#include <filesystem>

namespace sharedanalysis::solver {

// A mesh that Gmsh has read and that has been checked; a large one is kept in a file without a name.
//
// Any version of the format that Gmsh reads.  Bricks stand in the order of their numbers, and so do the nodes; nodes of no brick
// are left out.  Every physical group is a group of the mesh; one without a name is called volume_<tag>, surface_<tag>,
// curve_<tag> or point_<tag>.
class GmshMesh {
public:
  // Throws InputError naming the file: unreadable, elements of dimension 3 other than 8-node bricks, bricks in no physical volume,
  // on the same nodes or turned over, numbers or names given twice, counts that do not fit the lines that follow, coordinates
  // that are not finite.  Gmsh works in a process of its own: a file that it crashes, hangs or takes too much memory over is
  // an InputError as well; nothing that stands beside the file is read.
  explicit GmshMesh(const std::filesystem::path& file);

  // Nodes, bricks and members of groups in order, a share of each.
  MeshSlice share(int64_t rank, int64_t size) const;

private:
  static HandOver read(const std::filesystem::path& file);
  HandOver mesh_;
};

// What is looked at before Gmsh has the file: its beginning and its end, counts of sections against their lines.
void checkMeshText(const std::filesystem::path& file);

} // namespace sharedanalysis::solver
