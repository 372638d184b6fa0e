// Internal numbering and domains.
//
// Bricks are sorted along the longest axis of the model and nodes are numbered as the sorted bricks first touch them, so that
// a block of bricks works on neighbouring nodes.  A domain owns a range of these nodes and computes every brick that touches
// one of them, in increasing brick order.  Its nodes then get the contributions of all their bricks, always in the same
// order: results do not depend on the number of domains, and domains exchange nothing but nodal motion.
#pragma once

#include "model.h"

#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

struct Numbering {
  std::vector<int32_t> elements;      // mesh position of each internal brick
  std::vector<int32_t> nodes;         // mesh position of each internal node; nodes of no brick come last
  std::vector<int32_t> internalNodes; // internal number of each mesh node
  std::vector<int32_t> connectivity;  // (8, bricks), internal node numbers
};

Numbering numberModel(const Mesh& mesh);

struct Domain {
  int64_t firstNode = 0, endNode = 0;       // owned internal nodes
  int64_t firstTouched = 0, endTouched = 0; // range of the nodes of its bricks
  std::vector<int32_t> elements;            // internal bricks, increasing
};

// At most `count` domains, fewer for small models; together they own every node once.
std::vector<Domain> makeDomains(const Numbering& numbering, int count);

} // namespace sharedanalysis::solver
