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
  int64_t element = 0; // counted from 0 in the order of the mesh
  EventKind kind = EventKind::Failed;
  double value = kNoValue;
};

// Those of all ranks, by increment, element and kind, on every rank.
std::vector<BrickEvent> allEvents(const Ranks& ranks, const std::vector<BrickEvent>& own);

} // namespace sharedanalysis::solver
