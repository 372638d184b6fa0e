// Records of results: which points of a block are written, where their records lie, and how they get there.
//
// A member of the output families is a walk (whole block, or the members of an element set that lie in the block), a place
// (records one after another, or interleaved with others of the same element) and a conversion of one point.  What is made in
// several passes goes through columns of a scratch; the records are written from there.
#pragma once

#include "glo/tensors/jacobi.h"
#include "glo/kernel/kernel.h"

namespace sa {

// ---- which points are written
//
// A walk calls piece(point, n, first) for runs of at most kScratchPoints entries: point(j) is the point in the block of entry
// j, and `first` the number of the first entry, from 0, in the output as a whole.  Afterwards it moves the counter, unless
// other records of the same elements are still to come.

// Every point; entries are counted on from block to block.
struct WholeBlock {
  const int32_t* nblock;
  int32_t* counter;

  template <class Piece>
  SA_INLINE void operator()(bool isLast, Piece piece) const {
    const int n = *nblock;
    if (n < 1) return;
    const int64_t first = static_cast<int64_t>(*counter) - 1;
    forPieces(n, [=](int start, int length) SA_POINT { piece(Consecutive{start}, length, first + start); });
    if (isLast) *counter = static_cast<int32_t>(first + 1 + n);
  }
};

// The number of the element before the first one of a block.
SA_INLINE int64_t elementsBefore(const int32_t* blockNumber, const int32_t* blockSize, const int32_t* groupNumber,
                                 const int32_t* groupSize) {
  return (static_cast<int64_t>(*blockNumber) - 1) * *blockSize + (static_cast<int64_t>(*groupNumber) - 1) * *groupSize;
}

// The members of a sorted set that lie in this block; entries are positions in the set.
struct ElementSet {
  const int32_t* nblock;
  int64_t before; // number of the element before the block
  const int32_t *set, *last;
  int32_t* counter;

  template <class Piece>
  SA_INLINE void operator()(bool isLast, Piece piece) const {
    const int64_t n = *nblock, end = *last;
    if (n < 1) return;
    int64_t at = *counter;
    int32_t points[kScratchPoints];
    while (at <= end) {
      const int64_t point = set[at - 1] - before;
      if (point > n) break; // of a later block
      if (point < 1) {      // of an earlier block, whose turn has passed
        ++at;
        continue;
      }
      int length = 0;
      for (; length < kScratchPoints && at + length <= end; ++length) {
        const int64_t next = set[at + length - 1] - before;
        if (next < 1 || next > n) break;
        points[length] = static_cast<int32_t>(next);
      }
      piece(Listed{points}, length, at - 1);
      at += length;
    }
    if (isLast) *counter = static_cast<int32_t>(at);
  }
};

// ---- columns of a piece and records

template <int kReals>
struct RecordScratch {
  double column[kReals][kScratchPoints];
};

// One record for each entry, `distance` reals apart.  Records without a gap are written with full vectors.
template <int kReals>
SA_INLINE void writeRecords(int n, const RecordScratch<kReals>& from, double* out, int64_t distance) {
  if (distance == kReals)
    forPoints(n, [=, &from](int j) SA_POINT {
      for (int k = 0; k < kReals; ++k) out[int64_t{kReals} * j + k] = from.column[k][j];
    });
  else
    for (int j = 0; j < n; ++j)
      for (int k = 0; k < kReals; ++k) out[j * distance + k] = from.column[k][j];
}

} // namespace sa

// ---- argument lists

// A second name of a kernel of the same file.
#define SA_SAME_KERNEL(name, kernel, parameters, arguments)                                                            \
  SA_EXPORT void name parameters {                                                                                     \
    const OwnArithmetic arithmetic;                                                                                    \
    kernel##_clones arguments;                                                                                         \
  }

// Where a block stands among the elements that sets name.
#define SA_BLOCK_PLACE                                                                                                 \
  const int32_t *blockNumber, const int32_t *blockSize, const int32_t *groupNumber, const int32_t *groupSize
#define SA_BLOCK_PLACE_NAMES blockNumber, blockSize, groupNumber, groupSize
#define SA_ELEMENTS_BEFORE elementsBefore(blockNumber, blockSize, groupNumber, groupSize)
