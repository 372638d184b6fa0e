// Meshes of 8-node bricks from Exodus II files.
#pragma once

#include "solver/parallel/mesh_slice.h"
#include "solver/parallel/ranks.h"

#include <filesystem>

namespace sharedanalysis::solver {

// All ranks read their shares of coordinates, corners, maps of numbers and sets, each in a process of its own, which a damaged
// file may crash; then they find the places by number together.  Nodes of no brick are left out.  Groups: node sets
// (dimension 0), side sets (2), element blocks (3), in the order of the file; one without a name is called nodeset_<id>,
// sideset_<id> or block_<id>.  Throws InputError naming the file, the same on all ranks: unreadable or cut off, elements other than
// 8-node bricks, bricks on the same nodes or turned over, numbers or names given twice, indices that lead nowhere,
// coordinates that are not finite.
MeshSlice sliceOfExodus(const std::filesystem::path& file, const Ranks& ranks);

} // namespace sharedanalysis::solver
