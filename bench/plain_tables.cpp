#include "plain_tables.h"

#include <algorithm>
#include <cmath>

namespace plain {
namespace {

struct Line {
  double value, derivative;
};

Line lineIn(int32_t rows, const double* table, int stride, double x) {
  const auto abscissa = [&](int32_t row) { return table[row * stride + 1]; };
  if (rows == 1 || x < abscissa(0)) return {table[0], 0};
  if (x > abscissa(rows - 1)) return {table[(rows - 1) * stride], 0};
  int32_t lo = 0, hi = rows - 1;
  while (hi - lo > 1) {
    const int32_t middle = (lo + hi) / 2;
    if (x >= abscissa(middle))
      lo = middle;
    else
      hi = middle;
  }
  const double x1 = abscissa(lo), x2 = abscissa(hi), f1 = table[lo * stride], f2 = table[hi * stride];
  return {(x2 - x) * f1 / (x2 - x1) + (x - x1) * f2 / (x2 - x1), (f2 - f1) / (x2 - x1)};
}

} // namespace

void tableValue(int32_t n, int32_t rows, const double* table, double reference, const double* x, double* value,
                double* derivative) {
  for (int32_t i = 0; i < n; ++i) {
    double abscissa = x[i], factor = 1;
    if (reference > 0) {
      const bool above = x[i] > reference;
      abscissa = above ? std::log10(x[i]) : std::trunc(std::log10(reference));
      factor = above ? 0.43429448 / x[i] : 0;
    }
    const Line line = lineIn(rows, table, 2, abscissa);
    value[i] = line.value;
    derivative[i] = line.derivative * factor;
  }
}

void tableValue2(int32_t n, int32_t groups, int32_t rows, const double* table, const double* x, const double* y,
                 double* value, double* dx, double* dy) {
  const int32_t length = 3 * rows;
  for (int32_t i = 0; i < n; ++i) {
    const auto abscissa = [&](int32_t group) { return table[group * length + 2]; };
    int32_t lo = 0, hi = groups - 1;
    if (y[i] < abscissa(0) || y[i] > abscissa(hi)) {
      const Line line = lineIn(rows, table + (y[i] < abscissa(0) ? 0 : hi) * length, 3, x[i]);
      value[i] = line.value, dx[i] = line.derivative, dy[i] = 0;
      continue;
    }
    while (hi - lo > 1) {
      const int32_t middle = (lo + hi) / 2;
      if (y[i] >= abscissa(middle))
        lo = middle;
      else
        hi = middle;
    }
    const Line a = lineIn(rows, table + lo * length, 3, x[i]), b = lineIn(rows, table + hi * length, 3, x[i]);
    const double w = (y[i] - abscissa(lo)) / (abscissa(hi) - abscissa(lo));
    value[i] = (1 - w) * a.value + w * b.value;
    dx[i] = (1 - w) * a.derivative + w * b.derivative;
    dy[i] = (b.value - a.value) / (abscissa(hi) - abscissa(lo));
  }
}

void regularTable(int32_t n, int32_t points, double x0, double rdx, const double* values, const double* x,
                  double* value, double* derivative) {
  for (int32_t i = 0; i < n; ++i) {
    const double s = (x[i] - x0) * rdx + 2;
    const double p = std::min(std::max(s - 1, 1.0), static_cast<double>(points));
    const int32_t i1 = static_cast<int32_t>(p);
    const int32_t i2 = static_cast<int32_t>(std::min(std::max(s, 1.0), static_cast<double>(points)));
    const double w = p - i1, v1 = values[i1 - 1], v2 = values[i2 - 1];
    value[i] = (1 - w) * v1 + w * v2;
    derivative[i] = (v2 - v1) * rdx;
  }
}

void massChecks(int32_t n, int32_t nodes, int32_t dofs, const double* mass, double* fails) {
  const int32_t ndof = nodes * dofs;
  for (int32_t e = 0; e < n; ++e) {
    const auto entry = [&](int32_t i, int32_t j) { return mass[(i + static_cast<int64_t>(j) * ndof) * n + e]; };
    bool bad = false;
    for (int32_t i = 0; i < ndof && !bad; ++i) {
      for (int32_t j = 0; j < ndof && !bad; ++j) bad = i != j && (entry(i, j) != entry(j, i) || entry(i, j) != 0);
      bad = bad || entry(i, i) != entry(i / dofs * dofs, i / dofs * dofs);
    }
    fails[e] = bad ? 1 : 0;
  }
}

} // namespace plain
