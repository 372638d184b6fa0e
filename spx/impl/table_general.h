// The general evaluators: one variable in passes over the block, several variables point by point.
#pragma once

#include "spx/impl/table_data.h"
#include "spx/impl/table_search.h"

namespace sa::table {

// ---- what is computed on an interval

// The straight line through the ends of an interval; without width it is the upper value.
struct Line {
  double x1, f1, slope;
  SA_INLINE double operator()(double x) const { return f1 + (x - x1) * slope; }
};
SA_INLINE Line lineThrough(double x1, double x2, double f1, double f2) {
  const double width = x2 - x1, slope = (f2 - f1) / width;
  const bool hasWidth = width != 0.0;
  return {x1, vm::select(hasWidth, f1, f2), vm::select(hasWidth, slope, 0.0)};
}

struct Result {
  double value, derivative;
};

// A quantity of a table: what a line gives, and what the ends give where they are held.  f is the value of the table, `before`
// the integral from the first abscissa to the lower one.
struct Value {
  static constexpr bool kIsIntegral = false;
  SA_INLINE static Result on(double, const Line& line, double f, double) { return {f, line.slope}; }
  SA_INLINE static Result held(double, double, double f, double) { return {f, 0.0}; }
};
struct Integral {
  static constexpr bool kIsIntegral = true;
  SA_INLINE static Result on(double x, const Line& line, double f, double before) {
    return {before + (x - line.x1) * (0.5 * (line.f1 + f)), f};
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

// Lines of the intervals in which the points lie; what lies outside the table gets the first or last one.
struct Lines {
  int64_t lower[kScratchPoints]; // rows, from 1
  Scratch x1, f1, slope;
};

SA_INLINE void findLinesInLongTable(int n, const General& t, const Scratch& x, Lines& lines) {
  const int64_t length = t.rowLength, column = t.columns[0] - 1;
  const double* abscissas = t.rows + column;
  const auto abscissa = [=](int64_t row) SA_POINT { return abscissas[(row - 1) * length]; };
  constexpr int kAtATime = 4;
  int first = 0;
  for (; first + kAtATime <= n; first += kAtATime)
    findLowerRows<kAtATime>(1, t.rowCount, x + first, lines.lower + first, abscissa);
  for (; first < n; ++first) findLowerRows<1>(1, t.rowCount, x + first, lines.lower + first, abscissa);
  Scratch x2, f2;
  for (int i = 0; i < n; ++i) {
    const double* row = t.rows + (lines.lower[i] - 1) * length;
    lines.x1[i] = row[column], x2[i] = row[column + length];
    lines.f1[i] = row[0], f2[i] = row[length];
  }
  forPoints(n, [=, &lines, &x2, &f2](int i) SA_POINT {
    const Line line = lineThrough(lines.x1[i], x2[i], lines.f1[i], f2[i]);
    lines.f1[i] = line.f1, lines.slope[i] = line.slope;
  });
}

// In a short table the lines of all intervals are laid out first, and the interval of a point is the number of breakpoints that
// are not above it: a sum of comparisons, which is vectorised.
constexpr int64_t kMostRowsCompared = 32;

struct ShortTable {
  double x1[kMostRowsCompared], f1[kMostRowsCompared], slope[kMostRowsCompared];

  SA_INLINE void layOut(const General& t) {
    for (int64_t r = 1; r < t.rowCount; ++r) {
      const Line line = lineThrough(t.abscissa(r, 1), t.abscissa(r + 1, 1), t.value(r), t.value(r + 1));
      x1[r - 1] = line.x1, f1[r - 1] = line.f1, slope[r - 1] = line.slope;
    }
  }
};

SA_INLINE void findLinesInShortTable(int n, const General& t, const ShortTable& table, const Scratch& x, Lines& lines) {
  Scratch row;
  forPoints(n, [=, &row](int i) SA_POINT { row[i] = 1.0; });
  for (int64_t r = 2; r < t.rowCount; ++r) {
    const double breakpoint = table.x1[r - 1];
    forPoints(n, [=, &row, &x](int i) SA_POINT { row[i] += vm::select(x[i] >= breakpoint, 1.0, 0.0); });
  }
  forPoints(n, [=, &row, &lines](int i) SA_POINT { lines.lower[i] = static_cast<int32_t>(row[i]); });
  for (int i = 0; i < n; ++i) {
    const int64_t r = lines.lower[i] - 1;
    lines.x1[i] = table.x1[r], lines.f1[i] = table.f1[r], lines.slope[i] = table.slope[r];
  }
}

// Value and derivative, by the variable as transformed, for the n points of a piece.
template <class Quantity>
SA_INLINE void evaluatePiece(int n, const General& t, const ShortTable* shortTable, const Scratch& x, Scratch& y,
                             Scratch& d) {
  const int64_t rows = t.rowCount;
  const double firstX = t.abscissa(1, 1), firstF = t.value(1), lastX = t.abscissa(rows, 1), lastF = t.value(rows);
  if (rows == 1) {
    forPoints(n, [=, &x, &y, &d](int i) SA_POINT {
      const Result result = Quantity::held(x[i], firstX, firstF, 0.0);
      y[i] = result.value, d[i] = result.derivative;
    });
    return;
  }
  const bool holdsBelow = !t.extrapolatesBelow(1), holdsAbove = !t.extrapolatesAbove(1);
  const double whole = before<Quantity>(t, 1, rows);
  Lines lines;
  Scratch sum;
  if (shortTable != nullptr)
    findLinesInShortTable(n, t, *shortTable, x, lines);
  else
    findLinesInLongTable(n, t, x, lines);
  if constexpr (Quantity::kIsIntegral)
    for (int i = 0; i < n; ++i) sum[i] = integralUpTo(t, 1, lines.lower[i]);

  forPoints(n, [=, &x, &lines, &sum, &y, &d](int i) SA_POINT {
    const double X = x[i];
    const Line line = {lines.x1[i], lines.f1[i], lines.slope[i]};
    // a line meets its lower end exactly, and so each breakpoint but the last
    const double onLine = line(X), f = vm::select(X == lastX, lastF, onLine);
    const Result inside = Quantity::on(X, line, f, Quantity::kIsIntegral ? sum[i] : 0.0);
    const Result first = Quantity::held(X, firstX, firstF, 0.0), last = Quantity::held(X, lastX, lastF, whole);
    const bool isBelow = holdsBelow & (X < firstX), isAbove = holdsAbove & (X > lastX);
    y[i] = vm::select(isBelow, first.value, vm::select(isAbove, last.value, inside.value));
    d[i] = vm::select(isBelow, first.derivative, vm::select(isAbove, last.derivative, inside.derivative));
  });
}

template <class Quantity, class Place>
SA_INLINE void evaluateOneVariable(const General& t, const PerPoint& points, const Place& place) {
  const Source source = points.source(t.sources[0]);
  const bool isLogarithmic = t.logVariable == 1, isRoot = t.rootVariable == 1;
  const Logarithm logarithm = t.logarithm;
  // Laying out a short table pays from a few points on; the results are the same.
  ShortTable lineTable;
  const bool isShort = t.rowCount <= kMostRowsCompared && place.count >= 8;
  if (isShort) lineTable.layOut(t);

  forPieces(place.count, [=, &t, &place, &points, &lineTable](int start, int n) SA_POINT {
    Scratch raw, x, y, d;
    for (int i = 0; i < n; ++i) x[i] = raw[i] = source.x[place(start + i)];
    if (isLogarithmic) forPoints(n, [=, &x](int i) SA_POINT { x[i] = logarithm(x[i]); });
    if (isRoot) forPoints(n, [=, &x](int i) SA_POINT { x[i] = vm::sqrt(x[i]); });
    evaluatePiece<Quantity>(n, t, isShort ? &lineTable : nullptr, x, y, d);
    if (Quantity::kIsIntegral && isRoot) forPoints(n, [=, &y, &d](int i) SA_POINT { y[i] *= 2.0, d[i] *= 2.0; });
    for (int i = 0; i < n; ++i) points.value[place(start + i)] = y[i];
    if (source.derivative == nullptr) return;
    if (isLogarithmic) forPoints(n, [=, &raw, &d](int i) SA_POINT { d[i] *= logarithm.factor(raw[i]); });
    for (int i = 0; i < n; ++i) source.derivative[place(start + i)] = d[i];
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
// their slopes times the weights with which they enter; it is summed where it is returned.
template <class Quantity>
class ManyVariables {
public:
  ManyVariables(const General& table, const PerPoint& points, int64_t point)
      : t_(table), points_(points), point_(point) {
    if (t_.logVariable != 0) logarithm_ = t_.logarithm(given(t_.logVariable));
    if (t_.rootVariable != 0) root_ = vm::sqrt(t_.rootVariable == t_.logVariable ? logarithm_ : given(t_.rootVariable));
  }

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
  double evaluate(const Level& level, int64_t first, int64_t last, double weight) const {
    const int v = level.variable;
    const double* column = t_.rows + (t_.columns[v - 1] - 1);
    const int64_t length = t_.rowLength;
    const auto at = [&](int64_t node) { return column[(level.firstRow(node) - 1) * length]; };
    const double x = transformed(v);
    int64_t lower;
    findLowerRows<1>(first, last, &x, &lower, at);
    int64_t upper = lower + 1;
    if (last == first || (x < at(first) && !t_.extrapolatesBelow(v))) lower = upper = first;
    if (last > first && x > at(last) && !t_.extrapolatesAbove(v)) lower = upper = last;
    if (v > 1 && lower == upper) return inner(level, lower, weight);
    const double x1 = at(lower), x2 = at(upper);
    if (v == 1) {
      const double sum = before<Quantity>(t_, first, lower);
      Result result;
      if (lower == upper) {
        result = Quantity::held(x, x1, t_.value(lower), sum);
      } else {
        const Line line = lineThrough(x1, x2, t_.value(lower), t_.value(upper));
        result = Quantity::on(x, line, x == x2 ? t_.value(upper) : line(x), sum);
      }
      const double scale = Quantity::kIsIntegral && t_.rootVariable == 1 ? 2.0 : 1.0;
      addDerivative(v, weight * scale * result.derivative);
      return scale * result.value;
    }
    const double part = x1 == x2 ? 1.0 : (x - x1) / (x2 - x1);
    const double f2 = inner(level, upper, weight * part);
    const double f1 = x1 == x2 ? f2 : inner(level, lower, weight * (1.0 - part));
    const Line line = lineThrough(x1, x2, f1, f2);
    addDerivative(v, weight * line.slope);
    return x == x2 ? f2 : line(x);
  }
  double inner(const Level& level, int64_t node, double weight) const {
    return evaluate(level.next(), level.firstChild(node), level.firstChild(node + 1) - 1, weight);
  }

  double given(int variable) const { return points_.source(t_.sources[variable - 1]).x[point_]; }
  double transformed(int variable) const {
    if (variable == t_.rootVariable) return root_;
    return variable == t_.logVariable ? logarithm_ : given(variable);
  }
  void addDerivative(int variable, double derivative) const {
    const Source source = points_.source(t_.sources[variable - 1]);
    if (source.derivative == nullptr) return;
    if (variable == t_.logVariable) derivative *= t_.logarithm.factor(given(variable));
    source.derivative[point_] += derivative;
  }

  const General& t_;
  const PerPoint& points_;
  int64_t point_;
  double logarithm_ = 0.0, root_ = 0.0;
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
