// Internal numbering, ranks and domains.
//
// Bricks are sorted along the longest axis of the model and nodes are numbered as the sorted bricks first touch them, so that
// a block of bricks works on neighbouring nodes.  Of several ranks each owns the nodes of one part of the mesh, and they are
// numbered rank by rank, in that order within each.  A domain owns a range of the nodes of a rank, is worked on by one
// thread, and computes every brick that touches one of its nodes, in increasing brick order.  So every node gets the
// contributions of all its bricks, always in the same order: results depend neither on ranks nor on domains, which exchange
// nothing but nodal motion.
#pragma once

#include "solver/parallel/ranks.h"
#include "solver/model/model.h"

#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

struct Numbering {
  std::vector<int32_t> elements;      // mesh position of each internal brick
  std::vector<int32_t> nodes;         // mesh position of each internal node; nodes of no brick come last
  std::vector<int32_t> internalNodes; // internal number of each mesh node
  std::vector<int32_t> connectivity;  // (8, bricks), internal node numbers
  std::vector<int32_t> order;         // internal nodes as one rank would number them: sums run in this order
  std::vector<int64_t> firstOfRank;   // first internal node of each rank, and the number of nodes

  int32_t lowestNode(int64_t brick) const; // whose owner speaks for the brick
};

// Every rank gets the same numbering.
Numbering numberModel(const Mesh& mesh, const Ranks& ranks);

struct Domain {
  int64_t firstNode = 0, endNode = 0; // owned internal nodes
  std::vector<int32_t> others;        // nodes of its bricks that it does not own, increasing
  std::vector<int32_t> elements;      // internal bricks, increasing

  int64_t touched() const { return endNode - firstNode + static_cast<int64_t>(others.size()); }
  // Place of a node among the touched ones, the owned ones coming first.
  int32_t place(int32_t node) const;
};

// At most `count` domains of a rank, fewer for small models; together they own every node of the rank once.
std::vector<Domain> makeDomains(const Numbering& numbering, int32_t rank, int count);

// Nodes whose motion is exchanged with one other rank.
struct Neighbour {
  int32_t rank;
  std::vector<int32_t> sent, received; // internal nodes: own ones that it needs, its own that are needed here
};
std::vector<Neighbour> findNeighbours(const Numbering& numbering, const Ranks& ranks);

} // namespace sharedanalysis::solver
