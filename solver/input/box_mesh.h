// Meshes that a few lines of a case describe.
#pragma once

#include "solver/input/case_table.h"
#include "solver/model/mesh_input.h"
#include "solver/parallel/mesh_slice.h"

namespace sharedanalysis::solver {

// The table [mesh.box].  Throws InputError with the place of what is wrong.
BoxMesh readBox(const Table& mesh);

// Nodes and bricks are numbered from 1, along x first, then y, then z; their shares are consecutive.  Groups: the six faces with
// their quadrilaterals, then the volumes in the order in which layers name them.
MeshSlice shareOfBox(const BoxMesh& box, int64_t rank, int64_t size);

} // namespace sharedanalysis::solver
