// Tables with regularly spaced abscissas of one, two or three variables: the interval is computed, not searched.
#pragma once

#include "spx/impl/table_data.h"

namespace sa::table {

// One variable of such a table.
struct Axis {
  double first, reciprocalSpacing; // x0, 1/dx
  int32_t points, stride;          // rows from one point to the next
};

// Header fields of a regularly spaced table.
enum RegularField { kSpacing = 1, kExtents, kValues };

template <int variables>
struct Regular {
  Axis axis[variables];
  const double* values;

  explicit Regular(const Pools& pools) : values(pools.realsAt(pools.header[kValues - 1])) {
    const double* spacing = pools.realsAt(pools.header[kSpacing - 1]);
    const int32_t* extents = pools.intsAt(pools.header[kExtents - 1]);
    for (int v = 0; v < variables; ++v)
      axis[v] = {spacing[2 * v], spacing[2 * v + 1], extents[2 * v], extents[2 * v + 1]};
  }
};

using Scratch = double[kScratchPoints];

// Where the points stand on one axis: rows counted from 0 and the weight of the upper one.
struct Position {
  int32_t lower[kScratchPoints], upper[kScratchPoints];
  Scratch weight, slope; // slope: 1/dx, NaN where the abscissa is
};

SA_INLINE void locate(int n, const Axis& axis, const double* x, Position& at) {
  const double x0 = axis.first, rdx = axis.reciprocalSpacing, last = axis.points;
  forPoints(n, [=, &at](int i) SA_POINT {
    const double X = x[i], s = (X - x0) * rdx + 2.0;
    const double p = vm::min(vm::max(s - 1.0, 1.0), last), q = vm::min(vm::max(s, 1.0), last); // a NaN gives 1
    const int32_t lower = static_cast<int32_t>(p), upper = static_cast<int32_t>(q);
    const double w = p - static_cast<double>(lower);
    const bool isNumber = X == X;
    at.lower[i] = lower - 1;
    at.upper[i] = upper - 1;
    at.weight[i] = vm::select(isNumber, w, X);
    at.slope[i] = vm::select(isNumber, rdx, X);
  });
}

// Interpolation over the corners of a cell; bit v of a corner's index says upper for variable v, counted from 0.  Variable
// `differenced` is not interpolated: the difference of its upper and lower corners is taken.
template <int variables, int differenced>
SA_INLINE double overCorners(const double (&f)[1 << variables], const double (&w)[variables]) {
  double g[1 << variables];
  for (int c = 0; c < 1 << variables; ++c) g[c] = f[c];
  for (int v = 0; v < variables; ++v)
    for (int c = 0; c < (1 << variables) >> (v + 1); ++c)
      g[c] = v == differenced ? g[2 * c + 1] - g[2 * c] : (1.0 - w[v]) * g[2 * c] + w[v] * g[2 * c + 1];
  return g[0];
}

template <int variables>
using CornerValues = Scratch[1 << variables];

constexpr int kNone = -1; // no variable is differenced: the value itself

// The value, then the derivatives that are asked for.
template <int variables, int differenced = kNone>
SA_INLINE void reduce(int n, const CornerValues<variables>& f, const Position (&at)[variables], double* value,
                      const Source* sources, int64_t start) {
  if constexpr (differenced < variables) {
    double* out = value;
    if constexpr (differenced != kNone) out = sources[differenced].derivative;
    if (out != nullptr) {
      forPoints(n, [=, &f, &at](int i) SA_POINT {
        double corner[1 << variables], w[variables];
        for (int c = 0; c < 1 << variables; ++c) corner[c] = f[c][i];
        for (int v = 0; v < variables; ++v) w[v] = at[v].weight[i];
        const double result = overCorners<variables, differenced>(corner, w);
        if constexpr (differenced == kNone)
          out[start + i] = result;
        else
          out[start + i] = result * at[differenced].slope[i];
      });
    }
    reduce<variables, differenced + 1>(n, f, at, value, sources, start);
  }
}

// sources[v]: where variable v is in the caller's arrays.
template <int variables>
SA_INLINE void evaluateRegular(const Regular<variables>& table, int nblock, const Source* sources, double* value) {
  const double* values = table.values;
  forPieces(nblock, [=, &table](int start, int n) SA_POINT {
    Position at[variables];
    for (int v = 0; v < variables; ++v) locate(n, table.axis[v], sources[v].x + start, at[v]);
    CornerValues<variables> f;
    for (int i = 0; i < n; ++i)
      for (int c = 0; c < 1 << variables; ++c) {
        int64_t row = 0;
        for (int v = 0; v < variables; ++v)
          row += int64_t{(c >> v) % 2 == 0 ? at[v].lower[i] : at[v].upper[i]} * table.axis[v].stride;
        f[c][i] = values[row];
      }
    reduce<variables>(n, f, at, value, sources, start);
  });
}

} // namespace sa::table
