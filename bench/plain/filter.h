// One increment of a filter; how these headers are used: materials.h.
#pragma once

namespace plain {

// The output of a section of second order from this and two earlier inputs x and two earlier outputs y.
inline double filterSection(const double* c, double x, double x1, double x2, double y1, double y2) {
  return c[0] * x + c[1] * x1 + c[2] * x2 - c[3] * y1 - c[4] * y2;
}

} // namespace plain
