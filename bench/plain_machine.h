// What the machine gives at most, measured: the limits of the kernels.
#pragma once

#include <cstdint>

namespace plain {

struct Machine {
  double operations; // sums and products a nanosecond, by vectors, none fused
  double divisions, roots;
  double accesses; // single loads and stores a nanosecond, where a map says
};
const Machine& machine();

// Bytes read and written a nanosecond by a copy within so many bytes.
double copiedBytes(int64_t bytes);

} // namespace plain
