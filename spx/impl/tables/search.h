// The interval search of every general table.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/shuffles.h"

#include <cstdint>

namespace sa::table {

// The two rows of an interval; the same row twice where the end value is held.
struct Segment {
  int64_t lower, upper;
};

// Rows lo .. hi in ascending order of abscissa(row).  A value equal to a breakpoint belongs to the interval above it, one equal
// to the last abscissa to the last interval.
template <class Abscissa>
SA_INLINE Segment findSegment(int64_t lo, int64_t hi, bool extrapolatesBelow, bool extrapolatesAbove, double x,
                              Abscissa abscissa) {
  if (hi <= lo) return {lo, lo};
  if (abscissa(lo) > x) return {lo, extrapolatesBelow ? lo + 1 : lo};
  if (x > abscissa(hi)) return {extrapolatesAbove ? hi - 1 : hi, hi};
  int64_t middle = (lo + hi) / 2;
  middle = middle < hi - 1 ? middle : hi - 1;
  while (hi - lo > 1) {
    const bool isAbove = x >= abscissa(middle);
    lo = isAbove ? middle : lo;
    hi = isAbove ? hi : middle;
    middle = isAbove ? middle + (hi - middle) / 2 : middle - (middle - lo) / 2;
  }
  return {lo, hi};
}

// The same interval in rows that ascend: the last row but the last whose abscissa is not above x, the first one where there is
// none.  That does not depend on how it is found: here all points take the same steps, so that no branch depends on the data
// and the searches of several points overlap.
template <class Abscissa>
SA_INLINE int64_t findLowerRow(int64_t lo, int64_t hi, double x, Abscissa abscissa) {
  int64_t lower = lo;
  for (int64_t left = hi - lo; left > 1;) { // rows that may still be the lower one
    const int64_t half = left / 2, middle = lower + half;
    lower = x >= abscissa(middle) ? middle : lower;
    left -= half;
  }
  return lower;
}
// The same for sixteen points: where the abscissa of the lower row lies, from the first row on, of rows `distance` apart.  What the
// points are compared with is loaded one by one; the steps themselves are vectors.
constexpr int kSearched = 16;
SA_INLINE void findLowerPlaces(int64_t rowCount, const double* x, int64_t* places, const double* abscissas,
                               int64_t distance) {
  using Places = int64_t __attribute__((vector_size(32)));
  constexpr int kFours = kSearched / 4;
  Places passed[kFours];
  for (int v = 0; v < kFours; ++v) passed[v] = Places{};
  for (int64_t left = rowCount - 1; left > 1;) {
    const int64_t half = left / 2, step = half * distance;
    const double* next = abscissas + step;
#pragma GCC unroll 4
    for (int v = 0; v < kFours; ++v) {
      const Places p = passed[v];
      const Four middle{next[p[0]], next[p[1]], next[p[2]], next[p[3]]};
      passed[v] = p + ((loadVector<Four>(x + 4 * v) >= middle) & step);
    }
    left -= half;
  }
  for (int v = 0; v < kFours; ++v)
    for (int k = 0; k < 4; ++k) places[4 * v + k] = passed[v][k];
}

} // namespace sa::table
