// Memory that works while a kernel computes.  A kernel of several passes comes to some columns of a piece late; when they are not
// in the cache, the passes before would leave the memory idle and the last one wait for it.  Asked for at the start they are there:
// a tenth to a quarter of the time of such kernels over arrays in memory, for half a percent in the cache.  Nothing is read, so
// that any address will do.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/points.h"

#include <cstdint>

namespace sa {

// Asks for n numbers of each column.
template <class... Columns>
SA_INLINE void fetch(int n, const Columns*... columns) {
  constexpr int kLine = 8;
  for (int64_t i = 0; i < n; i += kLine) (__builtin_prefetch(columns + i), ...);
}

// Those of the points of a piece, where they lie one after the other.
template <class... Columns>
SA_INLINE void fetch(AllPoints point, int n, const Columns*... columns) {
  fetch(n, (columns + point.start)...);
}
template <class... Columns>
SA_INLINE void fetch(const ListedPoints&, int, const Columns*...) {}

} // namespace sa
