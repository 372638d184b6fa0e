// From slices of a mesh, as an input gives them, to the parts that ranks compute.
//
// Planes divide the nodes among the ranks, as many for each; then each rank gets the bricks that touch a node of its own, their nodes,
// and the members of groups among both.  Who holds what is found by the shares of the places (shareOf): the rank that has a node in its
// slice knows its owner.  No rank has a table of all nodes, bricks or ranks.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/mesh_slice.h"
#include "solver/parallel/ranks.h"

namespace sharedanalysis::solver {

// The part of this rank; the whole mesh, without a part, where there is one rank.  All ranks call it.
Mesh distribute(MeshSlice slice, const Ranks& ranks);

// One mesh of the slices that all ranks have.  Throws InputError when it has more than one rank can count.
Mesh joinedMesh(const std::vector<MeshSlice>& slices);

// How well a mesh is divided, on every rank.
struct Balance {
  int64_t fewestBricks = 0, mostBricks = 0; // computed by a rank, those on borders by several
  int64_t computed = 0;                     // by all
  int64_t sharedNodes = 0;                  // whose motion is sent, as often as it is
  int64_t mostNeighbours = 0;               // of a rank
};
Balance balanceOf(const Mesh& mesh, const Ranks& ranks);

} // namespace sharedanalysis::solver
