// Internal numbering, domains and neighbours.
//
// Bricks are sorted along the longest axis of the model and nodes are numbered as the sorted bricks first touch them, so that
// a block of bricks works on neighbouring nodes.  Of several ranks each owns the nodes of one part of the mesh; they come first, and
// the nodes of other ranks that its bricks have come after them.  A domain owns a range of the nodes of a rank, is worked on by one
// thread, and computes every brick that touches one of its nodes.  Every node gets the contributions of all its bricks, always in
// increasing brick order, which is the same for every partition: results depend neither on ranks nor on domains, which exchange
// nothing but nodal motion.
#pragma once

#include "solver/model/model.h"
#include "solver/parallel/ranks.h"

#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

struct Numbering {
  std::vector<int32_t> elements; // place in the mesh of each internal brick
  std::vector<int32_t> nodes;    // place in the mesh of each internal node; of the own ones nodes of no brick come last
  std::vector<int32_t> internalNodes; // internal number of each mesh node
  std::vector<int32_t> connectivity;  // (8, bricks), internal node numbers; of the set-up
  int64_t owned = 0;                  // so many nodes belong to this rank

  bool isOwned(int64_t node) const { return node < owned; }
};

// Of a whole mesh, or of the part of this rank.
Numbering numberModel(const Mesh& mesh);

// The force array of a domain has records of its own nodes, of the others that it touches, and of the parts that bricks have in the
// forces of border nodes.  These are nodes of its own whose bricks are not all computed at the same time: bricks with a node of
// another rank wait for its motion, the inner ones do not.  Their parts are kept apart and added in brick order at the end.
struct Domain {
  int64_t firstNode = 0, endNode = 0; // owned internal nodes
  std::vector<int32_t> others;        // nodes of its bricks that it does not own, increasing
  std::vector<int32_t> elements;      // internal bricks: the inner ones, then the others, each increasing
  int64_t inner = 0;                  // so many bricks have no node of another rank
  std::vector<int32_t> records;       // (8, elements): of each corner in the force array
  struct Border {
    int32_t node;               // record of the node
    int32_t firstPart, endPart; // records of the parts of its bricks, in brick order
  };
  std::vector<Border> border;
  int64_t recordCount = 0;

  int64_t owned() const { return endNode - firstNode; }
};

// At most `count` domains, fewer for small models; together they own every node of the rank once.
std::vector<Domain> makeDomains(const Numbering& numbering, int count);

// Nodes whose motion is exchanged with one other rank.
struct Neighbour {
  int32_t rank;
  std::vector<int32_t> sent, received; // internal nodes: own ones that it needs, its own that are needed here
};
std::vector<Neighbour> findNeighbours(const Mesh& mesh, const Numbering& numbering, const Ranks& ranks);

} // namespace sharedanalysis::solver
