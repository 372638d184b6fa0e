// What is wrong with an input, found by ranks in their parts of it: all of them end with the same text, about what comes first in
// the whole mesh.
#pragma once

#include "solver/parallel/ranks.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace sharedanalysis::solver {

class Faults {
public:
  // At a place of the mesh; the first one is kept.
  void add(int64_t place, const std::string& text) {
    if (place >= place_) return;
    place_ = place;
    text_ = text;
  }
  // InputError on every rank when one of them has a fault.  All ranks call it.
  void throwFirst(const Ranks& ranks) const;

private:
  static constexpr int64_t kNowhere = std::numeric_limits<int64_t>::max();
  int64_t place_ = kNowhere;
  std::string text_;
};

// How many nodes or bricks are of some kind, and the number of the first.
struct Found {
  int64_t count = 0, place = std::numeric_limits<int64_t>::max(), number = 0;

  void add(int64_t where, int64_t what) {
    ++count;
    if (where >= place) return;
    place = where;
    number = what;
  }
  // Those of all ranks, of which each has added its own ones.
  void join(const Ranks& ranks);
};

// The first rank that has another word than the root, nothing when there is none.
std::optional<int64_t> firstUnlike(const Ranks& ranks, uint64_t own);

// The smallest numbers of all ranks, `most` of them.
std::vector<int64_t> firstOfAll(const Ranks& ranks, std::vector<int64_t> own, std::size_t most);

} // namespace sharedanalysis::solver
