// Columns and records, four points at a time.
//
// A record is moved by pairs of neighbouring components, and by one alone where their number is odd: never a byte beyond it.
// Vectors of two and four doubles serve every instruction set and both compilers; on the oldest the longer are two of the
// shorter.  Compilers left to themselves move records component by component, or by permutations across whole vectors, which
// cost up to three times as much.  No vector crosses a call, so that it does not matter that instruction sets pass them in
// different registers (-Wno-psabi).
#pragma once

#include "glo/kernel/kernel.h"

#include <cstdint>
#include <type_traits>

namespace sa {

using Two = double __attribute__((vector_size(16)));
using Four = double __attribute__((vector_size(32)));

template <class Vector>
SA_INLINE Vector loadVector(const double* from) {
  if constexpr (std::is_same_v<Vector, double>)
    return *from;
  else {
    Vector v;
    __builtin_memcpy(&v, from, sizeof v);
    return v;
  }
}
template <class Vector>
SA_INLINE void storeVector(double* to, Vector v) {
  if constexpr (std::is_same_v<Vector, double>)
    *to = v;
  else
    __builtin_memcpy(to, &v, sizeof v);
}

// Pair 0 or 1 of four.  (As a copy of bytes: of a shuffle g++ makes a permutation of the whole vector.)
template <int which>
SA_INLINE Two half(const Four& a) {
  Two pair;
  __builtin_memcpy(&pair, reinterpret_cast<const double*>(&a) + 2 * which, sizeof pair);
  return pair;
}
SA_INLINE Four joined(Two a, Two b) { return __builtin_shufflevector(a, b, 0, 1, 2, 3); }

// Two components of four points as pairs: those of the points 0 and 2, and those of 1 and 3.  They are their own inverse.
SA_INLINE Four evens(Four a, Four b) { return __builtin_shufflevector(a, b, 0, 4, 2, 6); }
SA_INLINE Four odds(Four a, Four b) { return __builtin_shufflevector(a, b, 1, 5, 3, 7); }

// Components k and k + 1 of four points, whose records `record(point)` gives.
struct FourPairs {
  Four first, second; // columns
  SA_INLINE FourPairs(auto record, int k) {
    const Four even = joined(loadVector<Two>(record(0) + k), loadVector<Two>(record(2) + k));
    const Four odd = joined(loadVector<Two>(record(1) + k), loadVector<Two>(record(3) + k));
    first = evens(even, odd);
    second = odds(even, odd);
  }
};
// pair(point, the components of this point) for the four points in order.
SA_INLINE void forFourPairs(Four first, Four second, auto pair) {
  const Four even = evens(first, second), odd = odds(first, second);
  pair(0, half<0>(even));
  pair(1, half<0>(odd));
  pair(2, half<1>(even));
  pair(3, half<1>(odd));
}

// Four records of kReals, `distance` apart: column(k) gives component k of the four points.
template <int kReals>
SA_INLINE void storeFourRecords(double* out, int64_t distance, auto column) {
#pragma GCC unroll 8
  for (int p = 0; p < kReals / 2; ++p) {
    const int k = p + p;
    forFourPairs(column(k), column(k + 1),
                 [&](int r, Two pair) SA_POINT { storeVector(out + r * distance + k, pair); });
  }
  if constexpr (kReals % 2 == 1) {
    const Four last = column(kReals - 1);
    for (int r = 0; r < 4; ++r) out[r * distance + kReals - 1] = last[r];
  }
}

// Calls four(i) for the points i, i + 1, i + 2, i + 3 from 0 on, and one(i) for each of those that remain.
template <class Count>
SA_INLINE void forFours(Count n, auto four, auto one) {
  Count i = 0;
  for (Count rest = n; rest > 3; rest -= 4) {
    four(i);
    i += 4;
  }
  for (; i < n; ++i) one(i);
}

} // namespace sa
