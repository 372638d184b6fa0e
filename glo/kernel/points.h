// Which points of a block a kernel treats: all of them, those of a list, or the members of a sorted set.
//
// AllPoints and ListedPoints give the point of entry i, both counted from 0.  AllPoints and SetMembers also cut the entries of
// an output into pieces: forEntries(at, piece) calls piece(point, n, first) for runs of at most kScratchPoints entries, `first`
// being the number of the run's first entry in the output as a whole, from 0, and point(j) the point of entry first + j.  `at`
// is the number of the next entry, from 1; what it has become is returned.
#pragma once

#include "glo/kernel/kernel.h"

#include <cstdint>

namespace sa {

// `count` consecutive points, from point `start` on: a whole block, or a piece of it.
struct AllPoints {
  int count;
  int start = 0;

  SA_INLINE int operator()(int i) const { return start + i; }

  template <class Piece>
  SA_INLINE int64_t forEntries(int64_t at, Piece piece) const {
    forPieces(count, [=](int from, int n) SA_POINT { piece(AllPoints{n, from}, n, at - 1 + from); });
    return at + count;
  }
};

// The points of a list, which counts from 1.
struct ListedPoints {
  int count;
  const int32_t* list;

  SA_INLINE int operator()(int i) const { return list[i] - 1; }
};

// Whether a list holds all points of a block in order.
SA_INLINE bool listsAll(int64_t nblock, int count, const int32_t* list) {
  if (count != nblock) return false;
  uint32_t gaps = 0;
#pragma omp simd reduction(| : gaps)
  for (int i = 0; i < count; ++i) gaps |= static_cast<uint32_t>(list[i]) - static_cast<uint32_t>(i + 1);
  return gaps == 0;
}

// The members of a sorted set of elements that lie in a block of `count` elements, of which `before` come before the block.
// Entries are positions in the set.
struct SetMembers {
  int count;
  int64_t before;
  const int32_t* set;
  int64_t last; // position of the last member, from 1

  template <class Piece>
  SA_INLINE int64_t forEntries(int64_t at, Piece piece) const {
    int32_t points[kScratchPoints];
    while (at <= last) {
      const int64_t point = set[at - 1] - before;
      if (point > count) break; // of a later block
      if (point < 1) {          // of an earlier block
        ++at;
        continue;
      }
      int length = 0;
      for (; length < kScratchPoints && at + length <= last; ++length) {
        const int64_t next = set[at + length - 1] - before;
        if (next < 1 || next > count) break;
        points[length] = static_cast<int32_t>(next);
      }
      piece(ListedPoints{length, points}, length, at - 1);
      at += length;
    }
    return at;
  }
};

} // namespace sa
