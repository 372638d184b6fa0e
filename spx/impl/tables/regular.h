// Tables with regularly spaced abscissas of one, two or three variables: the interval is computed, not searched.
#pragma once

#include "spx/impl/tables/data.h"

#include <type_traits>

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

// Where the points stand on one axis: rows counted from 0, in strides, and the weight of the upper one.  A pool holds no more
// values than a 32-bit integer counts.
struct Position {
  int32_t lower[kScratchPoints], upper[kScratchPoints];
  Lane weight; // NaN where the abscissa is
};

// Integer part of a number from 1 to 2^31, without a conversion: loops that mix integers and reals are not vectorised.
SA_INLINE double integerPart(double x) {
  const double nearest = (x + 0x1p52) - 0x1p52;
  return nearest - vm::select(nearest > x, 1.0, 0.0);
}

SA_INLINE void locate(int n, const Axis& axis, const double* x, Position& at) {
  const double x0 = axis.first, rdx = axis.reciprocalSpacing, last = axis.points, stride = axis.stride;
  Lane lower, upper;
  forPoints(n, [=, &at, &lower, &upper](int i) SA_POINT {
    const double X = x[i], s = (X - x0) * rdx + 2.0;
    const double p = vm::min(vm::max(s - 1.0, 1.0), last), q = vm::min(vm::max(s, 1.0), last); // a NaN gives 1
    const double i1 = integerPart(p), w = p - i1;
    lower[i] = (i1 - 1.0) * stride;
    upper[i] = (integerPart(q) - 1.0) * stride;
    at.weight[i] = vm::select(X == X, w, X);
  });
  forPoints(n, [=, &at, &lower](int i) SA_POINT { at.lower[i] = static_cast<int32_t>(lower[i]); });
  forPoints(n, [=, &at, &upper](int i) SA_POINT { at.upper[i] = static_cast<int32_t>(upper[i]); });
}

template <int variables>
struct Cells {
  Position at[variables];
  double reciprocalSpacing[variables];
  Lane corner[1 << variables]; // bit v of the index says upper for variable v, counted from 0
};

constexpr int kNone = -1; // no variable is differenced: the value itself

// Interpolates along the first `count` variables at point i; of variable `differenced` the upper minus the lower corner is
// taken instead.  `corner` holds the bits of the other variables.
template <int variables, int differenced, int count = variables>
SA_INLINE double overCorners(const Cells<variables>& cells, int i, int corner = 0) {
  if constexpr (count == 0) {
    return cells.corner[corner][i];
  } else {
    const double lower = overCorners<variables, differenced, count - 1>(cells, i, corner + corner);
    const double upper = overCorners<variables, differenced, count - 1>(cells, i, corner + corner + 1);
    const double w = cells.at[count - 1].weight[i];
    return count - 1 == differenced ? upper - lower : (1.0 - w) * lower + w * upper;
  }
}

// The derivatives at one point.
template <int variables, int differenced = 0>
SA_INLINE void storeDerivatives(const Cells<variables>& cells, int i, const Source* sources, int64_t point) {
  if constexpr (differenced < variables) {
    const double slope = overCorners<variables, differenced>(cells, i) * cells.reciprocalSpacing[differenced];
    sources[differenced].derivative[point] = slope + 0.0 * cells.at[differenced].weight[i]; // NaN for NaN
    storeDerivatives<variables, differenced + 1>(cells, i, sources, point);
  }
}

// sources[v]: where variable v is in the caller's arrays.
template <int variables>
SA_INLINE void evaluateRegular(const Regular<variables>& table, int nblock, const Source* sources, double* value) {
  const double* values = table.values;
  forPieces(nblock, [=, &table](int start, int n) SA_POINT {
    Cells<variables> cells;
    for (int v = 0; v < variables; ++v) {
      locate(n, table.axis[v], sources[v].x + start, cells.at[v]);
      cells.reciprocalSpacing[v] = table.axis[v].reciprocalSpacing;
    }
    for (int i = 0; i < n; ++i)
      for (int c = 0; c < 1 << variables; ++c) {
        int32_t row = 0;
        for (int v = 0; v < variables; ++v) row += (c >> v) % 2 == 0 ? cells.at[v].lower[i] : cells.at[v].upper[i];
        cells.corner[c][i] = values[row];
      }
    const auto interpolate = [=, &cells](auto withDerivatives) SA_POINT {
      forPoints(n, [=, &cells](int i) SA_POINT {
        value[start + i] = overCorners<variables, kNone>(cells, i);
        if constexpr (withDerivatives) storeDerivatives(cells, i, sources, start + i);
      });
    };
    if (sources[0].derivative == nullptr)
      interpolate(std::false_type());
    else
      interpolate(std::true_type());
  });
}

} // namespace sa::table
