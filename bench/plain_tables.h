// Plain table lookups and mass checks: one point after the other, as the formulas stand.
#pragma once

#include <cstdint>

namespace plain {

// Rows of value and abscissa, ends held; with a reference above 0 the abscissa is logarithmic.
void tableValue(int32_t n, int32_t rows, const double* table, double reference, const double* x, double* value,
                double* derivative);
// Rows of value, x and y, in `groups` of y with `rows` rows each, ends held.
void tableValue2(int32_t n, int32_t groups, int32_t rows, const double* table, const double* x, const double* y,
                 double* value, double* dx, double* dy);
void regularTable(int32_t n, int32_t points, double x0, double rdx, const double* values, const double* x,
                  double* value, double* derivative);
// The four checks: 1 for an element that fails one.
void massChecks(int32_t n, int32_t nodes, int32_t dofs, const double* mass, double* fails);

} // namespace plain
