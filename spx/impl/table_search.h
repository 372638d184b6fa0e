// The interval search of every general table.
#pragma once

#include "glo/kernel.h"

#include <cstdint>

namespace sa::table {

// The two rows of an interval; the same row twice where the end value is held.
struct Segment {
  int64_t lower, upper;
};

// One step of the bisection of lower < upper; nothing once they are neighbours.  Written with blends: which half comes next is as
// good as random, and a wrong guess of a branch costs as much as several steps.
struct Bisection {
  int64_t lower, upper, middle;

  SA_INLINE Bisection(int64_t lo, int64_t hi) : lower(lo), upper(hi) {
    middle = (lo + hi) / 2;
    middle = middle < hi - 1 ? middle : hi - 1;
  }
  SA_INLINE bool isOpen() const { return upper - lower > 1; }
  SA_INLINE void step(bool isAbove) { // the abscissa of the middle or beyond it
    const bool open = isOpen();
    lower = (open & isAbove) ? middle : lower;
    upper = (open & !isAbove) ? middle : upper;
    const int64_t half = (upper - lower) / 2;
    middle = isAbove ? lower + half : upper - half;
  }
};

// Rows lo .. hi in ascending order of abscissa(row).  A value equal to a breakpoint belongs to the interval above it, one equal
// to the last abscissa to the last interval.
template <class Abscissa>
SA_INLINE Segment findSegment(int64_t lo, int64_t hi, bool extrapolatesBelow, bool extrapolatesAbove, double x,
                              Abscissa abscissa) {
  if (hi <= lo) return {lo, lo};
  if (abscissa(lo) > x) return {lo, extrapolatesBelow ? lo + 1 : lo};
  if (x > abscissa(hi)) return {extrapolatesAbove ? hi - 1 : hi, hi};
  Bisection search(lo, hi);
  while (search.isOpen()) search.step(x >= abscissa(search.middle));
  return {search.lower, search.upper};
}

} // namespace sa::table
