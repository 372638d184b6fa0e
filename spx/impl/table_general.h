// The general evaluators: one variable in passes over the block, several variables point by point.
#pragma once

#include "spx/impl/table_data.h"
#include "spx/impl/table_search.h"

namespace sa::table {

// ---- what is computed on an interval

struct Interval {
  double x1, x2, f1, f2;
};
struct Result {
  double value, derivative;
};

// The straight line through both ends.  In the form of two weights the ends come back exactly.  An interval without width
// gives its upper value, and NaN for NaN.
SA_INLINE Result interpolate(double x, const Interval& s) {
  const double width = s.x2 - s.x1;
  const double line = (s.x2 - x) / width * s.f1 + (x - s.x1) / width * s.f2, slope = (s.f2 - s.f1) / width;
  const bool hasWidth = width != 0.0, isNumber = x == x;
  const double upper = vm::select(isNumber, s.f2, x);
  return {vm::select(hasWidth, line, upper), vm::select(hasWidth, slope, 0.0)};
}

// A quantity of a table: what an interval gives, and what the ends give where they are held.  `before` is the integral from
// the first abscissa to the lower one.
struct Value {
  static constexpr bool kIsIntegral = false;
  SA_INLINE static Result on(double x, const Interval& s, double) { return interpolate(x, s); }
  SA_INLINE static Result held(double, double, double f, double) { return {f, 0.0}; }
};
struct Integral {
  static constexpr bool kIsIntegral = true;
  SA_INLINE static Result on(double x, const Interval& s, double before) {
    const double f = interpolate(x, s).value;
    const double mean = vm::select(s.x2 != s.x1, 0.5 * (s.f1 + f), f);
    return {before + (x - s.x1) * mean, f};
  }
  SA_INLINE static Result held(double x, double end, double f, double before) { return {before + (x - end) * f, f}; }
};

// The integral from row `first` to `row`, by the trapezium rule, which is exact here; in the order of the rows.
SA_INLINE double integralUpTo(const General& t, int64_t first, int64_t row) {
  if (t.running != nullptr) return t.running[row - 1];
  double sum = 0.0;
  for (int64_t r = first; r < row; ++r)
    sum += 0.5 * (t.abscissa(r + 1, 1) - t.abscissa(r, 1)) * (t.value(r) + t.value(r + 1));
  return sum;
}
template <class Quantity>
SA_INLINE double before(const General& t, int64_t first, int64_t row) {
  if constexpr (Quantity::kIsIntegral) return integralUpTo(t, first, row);
  return 0.0;
}

// ---- one variable

using Scratch = double[kScratchPoints];

// The piece of the abscissas below which a sum of comparisons over all rows is faster than a search of each point: it is
// vectorised.
constexpr int64_t kMostComparedRows = 32;

// Lower rows of the intervals, from 1 to rowCount - 1; what lies outside the table gets the first or last interval.
SA_INLINE void findLowerRows(int n, const General& t, const Scratch& x, int32_t (&lower)[kScratchPoints]) {
  bool ascends = t.rowCount <= kMostComparedRows && n >= 8;
  if (ascends)
    for (int64_t r = 2; r <= t.rowCount; ++r) ascends = ascends && t.abscissa(r, 1) >= t.abscissa(r - 1, 1);
  if (ascends) {
    // In rows that ascend, the bisection ends at the last row but the last whose abscissa is not above x.
    Scratch row;
    forPoints(n, [=, &row](int i) SA_POINT { row[i] = 1.0; });
    for (int64_t r = 2; r < t.rowCount; ++r) {
      const double breakpoint = t.abscissa(r, 1);
      forPoints(n, [=, &row, &x](int i) SA_POINT { row[i] += vm::select(x[i] >= breakpoint, 1.0, 0.0); });
    }
    forPoints(n, [=, &row, &lower](int i) SA_POINT { lower[i] = static_cast<int32_t>(row[i]); });
    return;
  }
  const double* column = t.rows + (t.columns[0] - 1);
  const int64_t length = t.rowLength, rows = t.rowCount;
  for (int i = 0; i < n; ++i) {
    Bisection search(1, rows);
    while (search.isOpen()) search.step(x[i] >= column[(search.middle - 1) * length]);
    lower[i] = static_cast<int32_t>(search.lower);
  }
}

template <class Quantity, class Place>
SA_INLINE void evaluateOneVariable(const General& table, const PerPoint& points, Place place) {
  const General t = table;
  const Source source = points.source(t.sources[0]);
  const int64_t rows = t.rowCount;
  const double firstX = t.abscissa(1, 1), firstF = t.value(1), lastX = t.abscissa(rows, 1), lastF = t.value(rows);
  const bool holdsBelow = !t.extrapolatesBelow(1), holdsAbove = !t.extrapolatesAbove(1);
  const double whole = before<Quantity>(t, 1, rows);
  const double scale = Quantity::kIsIntegral && t.rootVariable == 1 ? 2.0 : 1.0;
  double* const value = points.value;

  forPieces(place.count, [=](int start, int n) SA_POINT {
    Scratch x, factor, y, d;
    for (int i = 0; i < n; ++i) x[i] = source.x[place(start + i)];
    forPoints(n, [=, &factor](int i) SA_POINT { factor[i] = 1.0; });
    if (t.logVariable == 1) {
      const Logarithm logarithm = t.logarithm;
      forPoints(n, [=, &x, &factor](int i) SA_POINT {
        const Transformed transformed = logarithm(x[i]);
        x[i] = transformed.x;
        factor[i] = transformed.factor;
      });
    }
    if (t.rootVariable == 1) forPoints(n, [=, &x](int i) SA_POINT { x[i] = vm::sqrt(x[i]); });

    if (rows == 1) {
      forPoints(n, [=, &x, &y, &d](int i) SA_POINT {
        const Result result = Quantity::held(x[i], firstX, firstF, 0.0);
        y[i] = result.value, d[i] = result.derivative;
      });
    } else {
      int32_t lower[kScratchPoints];
      Scratch x1, x2, f1, f2, sum;
      findLowerRows(n, t, x, lower);
      for (int i = 0; i < n; ++i) {
        const double* row = t.rows + (lower[i] - 1) * t.rowLength;
        const int64_t column = t.columns[0] - 1;
        x1[i] = row[column], x2[i] = row[column + t.rowLength];
        f1[i] = row[0], f2[i] = row[t.rowLength];
        if constexpr (Quantity::kIsIntegral) sum[i] = integralUpTo(t, 1, lower[i]);
      }
      forPoints(n, [=, &x, &x1, &x2, &f1, &f2, &sum, &y, &d](int i) SA_POINT {
        const double X = x[i];
        const Interval interval = {x1[i], x2[i], f1[i], f2[i]};
        const Result inside = Quantity::on(X, interval, Quantity::kIsIntegral ? sum[i] : 0.0);
        const Result first = Quantity::held(X, firstX, firstF, 0.0), last = Quantity::held(X, lastX, lastF, whole);
        const bool isBelow = holdsBelow & (X < firstX), isAbove = holdsAbove & (X > lastX);
        y[i] = vm::select(isBelow, first.value, vm::select(isAbove, last.value, inside.value));
        d[i] = vm::select(isBelow, first.derivative, vm::select(isAbove, last.derivative, inside.derivative));
      });
    }
    for (int i = 0; i < n; ++i) value[place(start + i)] = scale * y[i];
    if (source.derivative != nullptr)
      for (int i = 0; i < n; ++i) source.derivative[place(start + i)] = scale * d[i] * factor[i];
  });
}

// ---- several variables

// The groups of the rows as a tree: a node of variable v > 1 holds the nodes of variable v - 1 from `first(k)` up to, without,
// `first(k + 1)`; the nodes of variable 1 are the rows.  A list (count, first(1), .. first(count + 1)) for each v, the highest
// first.
struct Level {
  int variable;
  const int32_t* list; // of this variable; not read for variable 1

  Level next() const { return {variable - 1, list + list[0] + 2}; }
  int64_t firstChild(int64_t node) const { return list[node]; }
  int64_t firstRow(int64_t node) const {
    for (Level level = *this; level.variable > 1; level = level.next()) node = level.firstChild(node);
    return node;
  }
};

// One point: descends through the brackets of all variables.  The derivative by variable v is the sum over its intervals of
// (f2 - f1) / (x2 - x1) times the weight with which the interval enters; it is summed where it is returned.
template <class Quantity>
class ManyVariables {
public:
  ManyVariables(const General& table, const PerPoint& points, int64_t point)
      : t_(table), points_(points), point_(point) {}

  double evaluate() const {
    for (int v = 1; v <= t_.variables; ++v) {
      const Source source = points_.source(t_.sources[v - 1]);
      if (source.derivative != nullptr) source.derivative[point_] = 0.0;
    }
    const Level top = {t_.variables, t_.groups};
    return evaluate(top, 1, top.variable > 1 ? top.list[0] : t_.rowCount, 1.0);
  }

private:
  // The nodes first .. last, which share the values of all higher variables.
  double evaluate(Level level, int64_t first, int64_t last, double weight) const {
    const int v = level.variable;
    const Source source = points_.source(t_.sources[v - 1]);
    const Transformed abscissa = transformed(v, source.x[point_]);
    const double x = abscissa.x;
    const auto at = [&](int64_t node) { return t_.abscissa(level.firstRow(node), v); };
    const auto [lower, upper] = findSegment(first, last, t_.extrapolatesBelow(v), t_.extrapolatesAbove(v), x, at);
    Result result;
    if (v == 1) {
      const double sum = before<Quantity>(t_, first, lower);
      result = lower == upper ? Quantity::held(x, at(lower), t_.value(lower), sum)
                              : Quantity::on(x, {at(lower), at(upper), t_.value(lower), t_.value(upper)}, sum);
      const double scale = Quantity::kIsIntegral && t_.rootVariable == 1 ? 2.0 : 1.0;
      result.value *= scale, result.derivative *= scale;
    } else {
      const auto inner = [&](int64_t node, double part) {
        return evaluate(level.next(), level.firstChild(node), level.firstChild(node + 1) - 1, weight * part);
      };
      const double x1 = at(lower), x2 = at(upper);
      if (lower == upper) return inner(upper, 1.0);
      const double width = x2 - x1;
      const bool hasWidth = width != 0.0;
      const double f2 = inner(upper, hasWidth ? (x - x1) / width : 1.0);
      const double f1 = hasWidth ? inner(lower, (x2 - x) / width) : f2;
      result = interpolate(x, {x1, x2, f1, f2});
    }
    if (source.derivative != nullptr) source.derivative[point_] += weight * result.derivative * abscissa.factor;
    return result.value;
  }

  Transformed transformed(int variable, double x) const {
    Transformed result = {x, 1.0};
    if (variable == t_.logVariable) result = t_.logarithm(x);
    if (variable == t_.rootVariable) result.x = vm::sqrt(result.x);
    return result;
  }

  const General& t_;
  const PerPoint& points_;
  int64_t point_;
};

// Nothing here is vectorised: the brackets of the inner variables differ from point to point, and what is left to do with
// them is little.
template <class Quantity, class Place>
void evaluateManyVariables(const General& table, const PerPoint& points, Place place) {
  for (int i = 0; i < place.count; ++i) {
    const int64_t point = place(i);
    points.value[point] = ManyVariables<Quantity>(table, points, point).evaluate();
  }
}

} // namespace sa::table
