// What happens to single bricks on the way: damage begins, they fail, they are distorted beyond computing.
#pragma once

#include "solver/parallel/ranks.h"

#include <array>
#include <cstdint>
#include <limits>
#include <vector>

namespace sharedanalysis::solver {

// Damage: the damage of the material leaves 0.  Failed: the material has failed, the brick carries nothing any more.  Distorted:
// the volume of the brick or of its mean deformation is not positive, with which the analysis ends.
enum class EventKind { Damage, Failed, Distorted };
inline constexpr std::array<const char*, 3> eventNames{"damage", "failed", "distorted"};

// What has decided: the damage, the sum over the failure strain, the ratio of volumes.  NaN where the material does not tell.
inline constexpr double kNoValue = std::numeric_limits<double>::quiet_NaN();

// In one increment, of a brick in internal numbering.
struct BlockEvent {
  int32_t brick;
  EventKind kind;
  double value;
};

struct BrickEvent {
  int64_t increment = 0;
  double time = 0;
  int64_t element = 0; // counted from 0 in the order of the whole mesh
  EventKind kind = EventKind::Failed;
  double value = kNoValue;
  int64_t number = 0;  // of the brick in the mesh file
  int64_t section = 0; // its place in the case
};

// Some of many events, by increment, element and kind, and what is known of all.
struct BrickEvents {
  std::vector<BrickEvent> first;   // the first of them
  int64_t count = 0, failures = 0; // of all, of those that are Failed
  BrickEvent firstFailure, last;   // when there are any

  BrickEvents() = default;
  BrickEvents(std::vector<BrickEvent> all, std::size_t most);
  // Others join them.
  void add(const BrickEvents& others, std::size_t most);
};

// Those of all ranks, the first `most` of them in full, on the root, which alone says how many these are.  They go up a tree: no
// rank ever has more than two lists of others.
BrickEvents gatherEvents(const Ranks& ranks, std::vector<BrickEvent> own, int64_t most);

} // namespace sharedanalysis::solver
