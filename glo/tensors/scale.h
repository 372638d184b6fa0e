// Exact scaling by powers of two.  A formula whose squares or sums would overflow, or whose products would sink into the
// subnormal numbers, takes its data times `factor` and multiplies its results by `back`.  Ordinary data have the factor 1, so
// that they keep their bits; infinities and NaN stay what they are.
#pragma once

#include "glo/kernel/vmath.h"

#include <type_traits>

namespace sa {

struct Scale {
  double factor, back;
};

SA_INLINE double magnitude(double x, double y) { return vm::max(__builtin_fabs(x), __builtin_fabs(y)); }
SA_INLINE double magnitude(double x, double y, double z) { return vm::max(magnitude(x, y), __builtin_fabs(z)); }

// A power of two that brings a number to between 1 and 2; for numbers up to 2^1022.  Zero and the subnormal numbers get 2^1023.
SA_INLINE double powerBelow(double size) {
  return vm::fromBits(0x7fe0000000000000u - (vm::toBits(size) & 0x7ff0000000000000u));
}

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

// 1 where scaling changes a result: outside the ordinary range of sums, or of squares, and not zero.
SA_INLINE uint64_t isBeyondSums(double largest) {
  return static_cast<uint64_t>((largest < 0x1p-500) & (largest > 0.0)) | static_cast<uint64_t>(largest > 0x1p+1019);
}
SA_INLINE uint64_t isBeyondSquares(double largest) {
  return static_cast<uint64_t>((largest < 0x1p-500) & (largest > 0.0)) | static_cast<uint64_t>(largest > 0x1p+500);
}

// body(scaled, i) for the points i = 0 .. n - 1: without scaling first, where body returns 1 for a point that needs it, and
// once more with scaling if any does.  Both ways give an ordinary point the same bits.
template <class Body>
SA_INLINE void forPointsOfAnyScale(int n, Body body) {
  uint64_t beyond = 0;
#pragma omp simd reduction(| : beyond)
  for (int i = 0; i < n; ++i) beyond |= body(std::false_type{}, i);
  if (beyond != 0) forPoints(n, [=](int i) SA_POINT { body(std::true_type{}, i); });
}

// 0 where all three are finite, else NaN.
SA_INLINE double spoiled(double x, double y, double z) { return (x - x) + (y - y) + (z - z); }

} // namespace sa
