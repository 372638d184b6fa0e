// A mesh as an input gives it to the ranks of a job, before it is divided by places in space: each has some of its nodes and bricks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Shares of `count` entities: rank r of `size` ranks has those from firstOfShare(r) to firstOfShare(r + 1), as many as the others
// or one more.  rank may be size, for the end of the last share.
constexpr int64_t firstOfShare(int64_t count, int64_t rank, int64_t size) {
  return count / size * rank + count % size * rank / size; // ranks have 31 bits: nothing overflows
}

// The rank whose share an entity is in.
constexpr int32_t shareOf(int64_t place, int64_t count, int64_t size) {
  int64_t rank = place / (count / size + 1); // the share of this rank begins at the place or before it
  for (int64_t step = 1; step > 0;) {        // and those behind it are found by steps that double, then halve
    if (rank + step < size && firstOfShare(count, rank + step, size) <= place)
      rank += step, step *= 2;
    else
      step /= 2;
  }
  return static_cast<int32_t>(rank);
}

// A share of a whole mesh as an input gives it: any of its nodes and bricks, each given by exactly one rank, with their places,
// which count from 0 in the order of numbers.  Nodes are the share of the rank (firstOfShare), bricks are where they were read.
struct MeshSlice {
  // Members of a group, in any order, each given by exactly one rank.
  struct Members {
    std::vector<int64_t> nodes, elements, faces; // places; faces (4, n), -1 for a node of no brick and for other shapes
  };
  int64_t nodes = 0, elements = 0; // of the whole mesh
  int64_t firstNode = 0;           // nodes are consecutive
  std::vector<int64_t> nodeNumbers;
  std::vector<double> coordinates; // (3, own nodes)
  std::vector<int64_t> elementPositions, elementNumbers;
  std::vector<int64_t> connectivity;   // (8, own bricks): places of nodes, which other ranks may have
  std::vector<std::string> groupNames; // the same on all ranks, like the next
  std::vector<int> groupDimensions;    // 3: bricks, 2: faces, 1: edges, 0: points
  std::vector<Members> groups;
};

} // namespace sharedanalysis::solver
