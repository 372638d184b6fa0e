// What a rank reads of a mesh in an Exodus II file.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct ExodusShare {
  // An element block, or a set of nodes or sides.
  struct Collection {
    std::string name;
    int64_t count = 0;                       // of its members in the file
    std::vector<int64_t> entries{}, sides{}; // the share of a set: nodes or bricks from 0; sides from 1
  };
  int64_t nodes = 0, elements = 0; // in the file
  std::vector<Collection> blocks, nodeSets, sideSets;
  // Of the shares (firstOfShare) of nodes and of elements, in the order of the file.
  std::vector<int64_t> nodeNumbers, elementNumbers, connectivity; // nodes from 0
  std::vector<double> coordinates;                                // (3, nodes)
};

// Reads in a process of its own.  Throws InputError naming the file when it cannot be read, is not whole, has other elements
// than 8-node bricks or is not one of three dimensions; what the numbers say is not looked at.
ExodusShare readExodus(const std::filesystem::path& file, int64_t rank, int64_t size);

} // namespace sharedanalysis::solver
