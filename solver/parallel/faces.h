// Faces of bricks that groups of quadrilaterals name.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/ranks.h"

#include <array>
#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

struct BrickFace {
  int32_t brick;                // in the order of the mesh
  std::array<int32_t, 4> nodes; // counter-clockwise as seen from outside
  bool operator<(const BrickFace& other) const {
    return brick != other.brick ? brick < other.brick : nodes < other.nodes;
  }
};

// The faces of a group by brick, whatever their order and orientation in the mesh file; of a part of a mesh those with a node of this
// rank.  All ranks call it.  Throws InputError for a face that no brick has, or that lies between two.
std::vector<BrickFace> facesOf(const Mesh& mesh, const Group& group, const Ranks& ranks);

} // namespace sharedanalysis::solver
