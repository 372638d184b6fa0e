// Exact scaling by powers of two.  A formula whose squares or sums would overflow, or whose products would sink into the
// subnormal numbers, takes its data times `factor` and gives its results times `back`.  Ordinary data have the factor 1, so
// that they keep their bits; what is not finite stays so.
#pragma once

#include "glo/kernel/vmath.h"

namespace sa {

struct Scale {
  double factor, back;
};

SA_INLINE double magnitude(double x, double y) { return vm::max(__builtin_fabs(x), __builtin_fabs(y)); }
SA_INLINE double magnitude(double x, double y, double z) { return vm::max(magnitude(x, y), __builtin_fabs(z)); }

// For a few sums and products with numbers below 1 of data up to `largest`.  Scaling up is exact; data that are scaled down
// lose what lies below 2^-1070.
SA_INLINE Scale scaleForSums(double largest) {
  const bool tiny = largest<0x1p-500, huge = largest> 0x1p+1019;
  return {tiny ? 0x1p+600 : (huge ? 0x1p-4 : 1.0), tiny ? 0x1p-600 : (huge ? 0x1p+4 : 1.0)};
}

// For sums of squares of data up to `largest`.
SA_INLINE Scale scaleForSquares(double largest) {
  const bool tiny = largest<0x1p-500, huge = largest> 0x1p+500;
  return {tiny ? 0x1p+600 : (huge ? 0x1p-520 : 1.0), tiny ? 0x1p-600 : (huge ? 0x1p+520 : 1.0)};
}

// 0 where all three are finite, else NaN.
SA_INLINE double spoiled(double x, double y, double z) { return (x - x) + (y - y) + (z - z); }

} // namespace sa
