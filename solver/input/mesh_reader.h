// Meshes of cases, from any input: Gmsh's .msh, Exodus II, a box that the case describes.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/mesh_slice.h"
#include "solver/parallel/ranks.h"

namespace sharedanalysis::solver {

// The mesh over the ranks of a job, which all call it.  A box is made by each rank; an Exodus file is read by all ranks, each its
// part of it, and has to be the same for all, which its size and pieces of it must show; a Gmsh file is read by the root, which hands out the shares.  No rank has more than
// its share at any time.  Throws InputError naming the file, the same on all ranks.
MeshSlice sliceOf(const MeshInput& input, const Ranks& ranks);

// The whole mesh, by this process alone.
Mesh readMesh(const MeshInput& input);

} // namespace sharedanalysis::solver
