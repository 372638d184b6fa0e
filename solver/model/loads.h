// Loads of a case: what kinds there are, in one table, and what one of them is.
#pragma once

#include "solver/model/histories.h"

#include <array>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

struct Case;
struct RigidPlane;

// What the group of a table must consist of.
enum class Members { Any, Bricks, Faces };

// How the value of a load becomes forces of nodes: shared among the nodes of its group, times the masses of its bricks, over
// the undeformed area of its faces, or over their present area against the outward normal.
enum class Share { Nodes, Masses, Areas, Normals };

struct LoadKind {
  const char *key, *unit; // of the case file; unit of the value
  Members members;
  Share share;
  bool directed; // acts along a direction that the case gives
};
inline constexpr std::array<LoadKind, 4> loadKinds{{
    {"force", "N", Members::Any, Share::Nodes, true},
    {"local_gravity", "m/s2", Members::Bricks, Share::Masses, true},
    {"traction", "Pa", Members::Faces, Share::Areas, true},
    {"pressure", "Pa", Members::Faces, Share::Normals, false},
}};

struct Load {
  const LoadKind* kind = &loadKinds[0];
  std::string name, group;
  History history;
  std::array<double, 3> direction{}; // unit vector, where the kind is directed
  bool perNode = false;              // of a force: on each node, not in all
};

// For people: one line, and "(x, y, z)".
std::string describe(const Load& load);
std::string describe(const RigidPlane& plane);
std::string describe(const std::array<double, 3>& vector);

// Whether anything acts that could move a body at rest.
bool isMoved(const Case& definition);

// What changes after the end of the analysis alone, a line each: its points of time may be in another unit.
std::vector<std::string> changesTooLate(const Case& definition);

// The columns that a case adds to the history, in the order in which an analysis has their values.
std::vector<std::string> measureNames(const Case& definition);

} // namespace sharedanalysis::solver
