// The interval search of every general table.
#pragma once

#include "glo/kernel/kernel.h"

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
template <int points, class Abscissa>
SA_INLINE void findLowerRows(int64_t lo, int64_t hi, const double* x, int64_t* lower, Abscissa abscissa) {
  for (int i = 0; i < points; ++i) lower[i] = lo;
  for (int64_t left = hi - lo; left > 1;) { // rows that may still be the lower one
    const int64_t half = left / 2;
    for (int i = 0; i < points; ++i) {
      const int64_t middle = lower[i] + half;
      lower[i] = x[i] >= abscissa(middle) ? middle : lower[i];
    }
    left -= half;
  }
}

} // namespace sa::table
