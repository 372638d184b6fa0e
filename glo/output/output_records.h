// Records of results: which points of a block are written, where their records lie, and how they get there.
//
// A member of the output families is a walk (whole block, or the members of an element set that lie in the block), a place
// (records one after another, or interleaved with others of the same element) and a conversion of one point.  What is made in
// several passes goes through columns of a scratch; the records are written from there.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/points.h"
#include "glo/kernel/shuffles.h"

#include <type_traits>

namespace sa {

// ---- which points are written

// The walk over the points of a block, AllPoints or SetMembers, whose entries are counted on from block to block.  piece is that
// of forEntries.  Afterwards the counter moves, unless other records of the same elements are still to come.
template <class Points>
struct Walk {
  Points points;
  int32_t* counter;

  template <class Piece>
  SA_INLINE void operator()(bool isLast, Piece piece) const {
    if (points.count < 1) return;
    const int64_t next = points.forEntries(*counter, piece);
    if (isLast) *counter = static_cast<int32_t>(next);
  }
};
template <class Points>
Walk(Points, int32_t*) -> Walk<Points>;

// The number of the element before the first one of a block.
SA_INLINE int64_t elementsBefore(const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
                                 const int32_t* groupSize) {
  return (static_cast<int64_t>(*blockNumber) - 1) * *blockSize + (static_cast<int64_t>(*groupNumber) - 1) * *groupSize;
}

// ---- columns of a piece and records

template <int kReals>
struct RecordScratch {
  double column[kReals][kScratchPoints];
};

// One record for each entry, `distance` reals apart: component(j, k) gives component k of the four entries from j on,
// one(j, distance) writes one record.  Records of up to four reals without a gap are left to the compiler, which has
// the longest vectors for them.
template <int kReals>
SA_INLINE void writeRecords(int n, double* out, int64_t distance, auto component, auto one) {
  if (kReals <= 4 && distance == kReals)
    forPoints(n, [=](int j) SA_POINT { one(j, kReals); });
  else
    forFours(
        n,
        [=](int j) SA_POINT {
          storeFourRecords<kReals>(out + j * distance, distance, [=](int k) SA_POINT { return component(j, k); });
        },
        [=](int j) SA_POINT { one(j, distance); });
}
template <int kReals>
SA_INLINE void writeRecords(int n, const RecordScratch<kReals>& from, double* out, int64_t distance) {
  writeRecords<kReals>(
      n, out, distance, [&from](int j, int k) SA_POINT { return loadVector<Four>(&from.column[k][j]); },
      [=, &from](int j, int64_t d) SA_POINT {
        for (int k = 0; k < kReals; ++k) out[j * d + k] = from.column[k][j];
      });
}

} // namespace sa

// ---- argument lists

// A second name of a kernel of the same file.
#define SA_SAME_KERNEL(name, kernel, parameters)                                                                       \
  SA_EXPORT void name parameters { SA_IN_OWN_ARITHMETIC(kernel##_clones SA_ARGUMENTS_##name); }

// Where a block stands among the elements that sets name.
#define SA_BLOCK_PLACE                                                                                                 \
  const int32_t *blockNumber, const int32_t *blockSize, const int32_t *groupNumber, const int32_t *groupSize
#define SA_ELEMENTS_BEFORE elementsBefore(blockNumber, blockSize, groupNumber, groupSize)
