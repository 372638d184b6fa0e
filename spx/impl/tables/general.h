// The general evaluators, of one variable and of several: passes over the block, of which the searches go point by point.
#pragma once

#include "spx/impl/tables/data.h"
#include "spx/impl/tables/search.h"

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

// Lines of the intervals in which the points lie; what lies outside the table gets the first or last one.
struct Lines {
  int64_t lower[kScratchPoints]; // rows, from 1; of a long table only those of integrals
  Lane x1, f1, slope;
};

template <bool kWithRows>
SA_INLINE void findLinesInLongTable(int n, const General& t, const Lane& x, Lines& lines) {
  int64_t places[kScratchPoints];
  const int64_t length = t.rowLength, column = t.columns[0] - 1;
  const double* abscissas = t.rows + column;
  int first = 0;
  for (int rest = n; rest >= kSearched; rest -= kSearched) {
    findLowerPlaces(t.rowCount, x + first, places + first, abscissas, length);
    first += kSearched;
  }
  const auto abscissa = [=](int64_t row) SA_POINT { return abscissas[row * length]; };
  for (; first < n; ++first) places[first] = findLowerRow(0, t.rowCount - 1, x[first], abscissa) * length;
  Lane x2, f2;
  for (int i = 0; i < n; ++i) {
    const double* row = t.rows + places[i];
    lines.x1[i] = row[column], x2[i] = row[column + length];
    lines.f1[i] = row[0], f2[i] = row[length];
  }
  if constexpr (kWithRows)
    for (int i = 0; i < n; ++i) lines.lower[i] = 1 + places[i] / length;
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

  // Whether the rows ascend: in others the count is not what the bisection finds, which a few points alone would get.
  SA_INLINE bool layOut(const General& t) {
    bool ascends = true;
    for (int64_t r = 1; r < t.rowCount; ++r) {
      const double lower = t.abscissa(r, 1), upper = t.abscissa(r + 1, 1);
      const Line line = lineThrough(lower, upper, t.value(r), t.value(r + 1));
      x1[r - 1] = line.x1, f1[r - 1] = line.f1, slope[r - 1] = line.slope;
      ascends = ascends && lower <= upper;
    }
    return ascends;
  }
};

SA_INLINE void findLinesInShortTable(int n, const General& t, const ShortTable& table, const Lane& x, Lines& lines) {
  Lane row;
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
SA_INLINE void evaluatePiece(int n, const General& t, const ShortTable* shortTable, const Lane& x, Lane& y, Lane& d) {
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
  Lane sum;
  if (shortTable != nullptr)
    findLinesInShortTable(n, t, *shortTable, x, lines);
  else
    findLinesInLongTable<Quantity::kIsIntegral>(n, t, x, lines);
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
    const double slope = vm::select(isBelow, first.derivative, vm::select(isAbove, last.derivative, inside.derivative));
    d[i] = vm::select(X == X, slope, X);
  });
}

template <class Quantity, class Place>
SA_INLINE void evaluateOneVariable(const General& t, const PerPoint& points, const Place& place) {
  const Source source = points.source(t.sources[0]);
  const bool isLogarithmic = t.logVariable == 1, isRoot = t.rootVariable == 1;
  const Logarithm logarithm = t.logarithm;
  // Laying out a short table pays from a few points on; the results are the same.
  ShortTable lineTable;
  const bool isShort = t.rowCount <= kMostRowsCompared && place.count >= 8 && lineTable.layOut(t);

  forPieces(place.count, [=, &t, &place, &points, &lineTable](int start, int n) SA_POINT {
    Lane raw, x, y, d;
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

// The groups of a variable, from which each list of spx.h is read: a group of variable v > 1 holds those of variable v - 1 from
// firstMember(k) to firstMember(k + 1) - 1; the groups of variable 1 are the rows.
struct Groups {
  int variable;
  const int32_t* list; // (count, first member of each, one beyond); not read for variable 1

  SA_INLINE Groups members() const { return {variable - 1, list + list[0] + 2}; }
  SA_INLINE int64_t firstMember(int64_t group) const { return list[group]; }
  SA_INLINE int64_t firstRow(int64_t group) const {
    Groups level = *this;
    for (; level.variable > 1; level = level.members()) group = level.firstMember(group);
    return group;
  }
};

// Every point descends through a tree of intervals: node 1 is that of the last variable, nodes 2k and 2k + 1 are those of the
// next variable in the lower and the upper group of node k; below variable 1 they are rows.
constexpr int kMostVariablesOfTree = 8;
constexpr int kNodeSlots = 2 << kMostVariablesOfTree;
constexpr int kTreePoints = 64; // at a time, at most

struct Tree {
  int points;                                     // of a piece: as many as fit
  int64_t first[kNodeSlots], last[kNodeSlots];    // groups or rows among which the interval is
  double distance[kNodeSlots], width[kNodeSlots]; // x - x1 and x2 - x1, zero where an end is held
  double value[kNodeSlots], slope[kNodeSlots];    // of the table along the node's variable
  double weight[kNodeSlots]; // share of the node in the result; on the way up the integral to the lower row

  SA_INLINE explicit Tree(int variables) {
    const int most = kNodeSlots >> (variables + 1);
    points = most < kTreePoints ? most : kTreePoints;
  }
  SA_INLINE int64_t at(int64_t node) const { return node * points; }
  SA_INLINE static int lower(int node) {
    return node + node;
  } // the first of the two nodes that a node has for its ends
};

// Where x lies among the groups or rows first .. last of variable v: the two that bracket it, or twice the one that is held.
struct Interval {
  int64_t lower, upper;
  double distance, width; // x - x1 and x2 - x1
  bool isHeld;
};
template <class Abscissa>
SA_INLINE Interval intervalOf(const General& t, int v, int64_t first, int64_t last, double x, Abscissa abscissa) {
  const bool holdsBelow = !t.extrapolatesBelow(v), holdsAbove = !t.extrapolatesAbove(v);
  int64_t lower = findLowerRow(first, last, x, abscissa);
  // an end that is held, or the only one
  const bool isBelow = holdsBelow & (x < abscissa(first)), isAbove = holdsAbove & (x > abscissa(last));
  const bool isHeld = isBelow | isAbove | (first == last);
  lower = isAbove ? last : lower;
  const int64_t upper = isHeld ? lower : lower + 1;
  const double x1 = abscissa(lower);
  return {lower, upper, x - x1, abscissa(upper) - x1, isHeld};
}

// The abscissa of a group of a variable: that of its first row.
SA_INLINE auto abscissasOf(const General& t, const Groups& groups) {
  return [column = t.rows + (t.columns[groups.variable - 1] - 1), length = t.rowLength, groups](int64_t group)
             SA_POINT { return column[(groups.firstRow(group) - 1) * length]; };
}

// Breakpoints that all groups of a variable share, as in a grid.  The interval of a point is then the same in each of them and is
// found once, as in a short table: by a sum of comparisons.
struct SharedBreakpoints {
  int64_t count = 0; // 0: the groups have breakpoints of their own
  double x[kMostRowsCompared];

  // Those of the members of `parents`, or of all groups of the last variable.  Looking at them must pay for `points` points.
  void layOut(const General& t, const Groups& members, const Groups* parents, int64_t points) {
    const auto abscissa = abscissasOf(t, members);
    const int64_t parentCount = parents == nullptr ? 1 : parents->list[0];
    const auto firstOf = [&](int64_t parent) { return parents == nullptr ? parent : parents->firstMember(parent); };
    const auto endOf = [&](int64_t parent) {
      return parents == nullptr ? 1 + members.list[0] : parents->firstMember(parent + 1);
    };
    const int64_t length = endOf(1) - firstOf(1);
    if (length > kMostRowsCompared || length * parentCount > 4 * points) return;
    for (int64_t k = 0; k < length; ++k) x[k] = abscissa(firstOf(1) + k);
    bool isShared = true;
    for (int64_t k = 1; k < length; ++k) isShared = isShared && x[k - 1] <= x[k];
    for (int64_t parent = 2; parent <= parentCount && isShared; ++parent) {
      const int64_t first = firstOf(parent);
      isShared = endOf(parent) - first == length;
      for (int64_t k = 0; k < length && isShared; ++k) isShared = abscissa(first + k) == x[k];
    }
    if (isShared) count = length;
  }
};

// The intervals of a piece's points in one variable; lower and upper count from the first group.
struct SharedIntervals {
  int32_t lower[kTreePoints], upper[kTreePoints];
  double distance[kTreePoints], width[kTreePoints], isHeld[kTreePoints];

  SA_INLINE Interval of(int i, int64_t first) const {
    return {first + lower[i], first + upper[i], distance[i], width[i], isHeld[i] != 0.0};
  }
};
SA_INLINE void findIntervals(int n, const General& t, int v, const SharedBreakpoints& b, const double* x,
                             SharedIntervals& found) {
  const double first = b.x[0], last = b.x[b.count - 1], holdsBelow = t.extrapolatesBelow(v) ? -vm::kInfinity : first,
               holdsAbove = t.extrapolatesAbove(v) ? vm::kInfinity : last;
  double row[kTreePoints];
  forPoints(n, [&](int i) SA_POINT { row[i] = 0.0; });
  for (int64_t k = 1; k < b.count - 1; ++k) {
    const double next = b.x[k];
    forPoints(n, [&](int i) SA_POINT { row[i] += vm::select(x[i] >= next, 1.0, 0.0); });
  }
  const double lastRow = static_cast<double>(b.count - 1), single = b.count == 1 ? 1.0 : 0.0;
  forPoints(n, [&](int i) SA_POINT {
    const bool isBelow = x[i]<holdsBelow, isAbove = x[i]> holdsAbove;
    const double held = (isBelow | isAbove) ? 1.0 : single, lower = isAbove ? lastRow : row[i];
    found.isHeld[i] = held;
    found.lower[i] = static_cast<int32_t>(lower);
    found.upper[i] = static_cast<int32_t>(lower + (1.0 - held));
  });
  for (int i = 0; i < n; ++i) {
    const double x1 = b.x[found.lower[i]];
    found.distance[i] = x[i] - x1, found.width[i] = b.x[found.upper[i]] - x1;
  }
}

// The intervals of one node; its variable's values are x.  Point by point, unless the intervals are shared: where the search goes
// on differs between them.
template <class Quantity, bool isRow>
SA_INLINE void descend(int n, const General& t, const Groups& groups, int node, const double* x,
                       const SharedIntervals* shared, Tree& tree) {
  const auto abscissa = abscissasOf(t, groups);
  const int64_t self = tree.at(node), lowerNode = tree.at(Tree::lower(node)),
                upperNode = tree.at(Tree::lower(node) + 1);
  for (int i = 0; i < n; ++i) {
    const int64_t first = tree.first[self + i];
    const auto [lower, upper, distance, width, isHeld] =
        shared != nullptr ? shared->of(i, first)
                          : intervalOf(t, groups.variable, first, tree.last[self + i], x[i], abscissa);
    tree.distance[self + i] = isHeld && !(Quantity::kIsIntegral && isRow) ? 0.0 : distance;
    tree.width[self + i] = width;
    if constexpr (isRow) {
      tree.value[lowerNode + i] = t.value(lower), tree.value[upperNode + i] = t.value(upper);
      if constexpr (Quantity::kIsIntegral) tree.weight[self + i] = integralUpTo(t, first, lower);
    } else {
      tree.first[lowerNode + i] = groups.firstMember(lower);
      tree.last[lowerNode + i] = groups.firstMember(lower + 1) - 1;
      tree.first[upperNode + i] = groups.firstMember(upper);
      tree.last[upperNode + i] = groups.firstMember(upper + 1) - 1;
    }
  }
}

// A quantity on an interval of variable 1, at a distance from its lower end.
template <class Quantity>
SA_INLINE Result onRows(double distance, double width, double f1, double f2, double before) {
  const Line line = lineThrough(0.0, width, f1, f2);
  const double onLine = line(distance), f = vm::select(distance == width, f2, onLine);
  return Quantity::on(distance, line, f, before);
}
// The share of the upper end of an interval in what lies between; without width it is the upper end that counts.
SA_INLINE double shareOfUpper(double distance, double width) {
  const double quotient = distance / width, share = vm::select(width != 0.0, quotient, 1.0);
  return vm::select(distance == distance, share, distance);
}

// The value of a node from those of its ends.
template <class Quantity, bool isRow>
SA_INLINE void interpolate(int n, int node, Tree& tree) {
  const int64_t self = tree.at(node), lower = tree.at(Tree::lower(node)), upper = tree.at(Tree::lower(node) + 1);
  forPoints(n, [=, &tree](int i) SA_POINT {
    const double distance = tree.distance[self + i], width = tree.width[self + i];
    const double f2 = tree.value[upper + i];
    double before = 0.0;
    if constexpr (Quantity::kIsIntegral && isRow) before = tree.weight[self + i];
    const double f1 = tree.value[lower + i];
    const Result result =
        isRow ? onRows<Quantity>(distance, width, f1, f2, before) : onRows<Value>(distance, width, f1, f2, 0.0);
    tree.value[self + i] = result.value;
    tree.slope[self + i] = vm::select(distance == distance, result.derivative, distance);
  });
}

// Adds the node's share in the derivative by its variable, and hands its weight on.
SA_INLINE void addSlope(int n, int node, bool isRow, Tree& tree, double* sum) {
  const int64_t self = tree.at(node), lower = tree.at(Tree::lower(node)), upper = tree.at(Tree::lower(node) + 1);
  forPoints(n, [=, &tree](int i) SA_POINT { sum[i] += tree.weight[self + i] * tree.slope[self + i]; });
  if (isRow) return;
  forPoints(n, [=, &tree](int i) SA_POINT {
    const double weight = tree.weight[self + i], width = tree.width[self + i];
    const double part = shareOfUpper(tree.distance[self + i], width);
    tree.weight[lower + i] = weight * (1.0 - part);
    tree.weight[upper + i] = weight * part;
  });
}

// A variable as it is looked up, and what its derivative is multiplied by.
SA_INLINE double transformed(const General& t, int v, double x) {
  if (v == t.logVariable) x = t.logarithm(x);
  return v == t.rootVariable ? vm::sqrt(x) : x;
}

// The groups of variable 1 that bracket a point, one after another, whose values are added up with the product of their shares.
// Where each stands is found from its first row, so that nothing is kept of the way through the variables: there may be any
// number of them.  With `differenced` above 0 the share by that variable is replaced by its derivative.
template <class Quantity>
SA_INLINE double sumOfRows(const General& t, const PerPoint& points, int64_t point, int differenced) {
  double sum = 0.0;
  for (int64_t row = 1; row <= t.rowCount;) {
    Groups groups = {t.variables, t.groups};
    int64_t first = 1, last = groups.list[0], next = 0; // the row to go on with
    double weight = 1.0;
    for (; groups.variable > 1 && next == 0; groups = groups.members()) {
      const int v = groups.variable;
      const double x = transformed(t, v, points.source(t.sources[v - 1]).x[point]);
      const Interval at = intervalOf(t, v, first, last, x, abscissasOf(t, groups));
      int64_t low = at.lower, high = last + 1; // the group that holds the row is among the upper ones
      while (high - low > 1) {
        const int64_t middle = low + (high - low) / 2;
        if (groups.firstRow(middle) <= row)
          low = middle;
        else
          high = middle;
      }
      const double perWidth = at.width != 0.0 ? 1.0 / at.width : 0.0;
      const double slope = at.distance == at.distance ? perWidth : at.distance;
      const double share = shareOfUpper(at.isHeld ? 0.0 : at.distance, at.width), isUpper = low == at.lower ? 0.0 : 1.0;
      double factor = isUpper != 0.0 ? share : 1.0 - share;
      if (at.isHeld) factor = 1.0;
      if (v == differenced) factor = at.isHeld ? 0.0 : isUpper != 0.0 ? slope : -slope;
      weight *= factor;
      if (low > at.upper || (weight == 0.0 && low == at.upper))
        next = groups.firstRow(last + 1);
      else if (weight == 0.0)
        next = groups.firstRow(low + 1);
      first = groups.firstMember(low), last = groups.firstMember(low + 1) - 1;
    }
    if (next == 0) {
      const double x = transformed(t, 1, points.source(t.sources[0]).x[point]);
      const Interval at = intervalOf(t, 1, first, last, x, abscissasOf(t, Groups{1, nullptr}));
      const double distance = at.isHeld && !Quantity::kIsIntegral ? 0.0 : at.distance;
      const Result result = onRows<Quantity>(distance, at.width, t.value(at.lower), t.value(at.upper),
                                             before<Quantity>(t, first, at.lower));
      sum += weight * (differenced == 1 ? vm::select(distance == distance, result.derivative, distance) : result.value);
      next = last + 1;
    }
    row = next > row ? next : row + 1; // groups that do not ascend end the walk as well
  }
  return sum;
}

// An integral over a root takes the factor 2.
template <class Quantity>
SA_INLINE double rootFactor(const General& t) {
  return Quantity::kIsIntegral && t.rootVariable == 1 ? 2.0 : 1.0;
}

template <class Quantity, class Place>
SA_INLINE void evaluateBeyondTree(const General& t, const PerPoint& points, const Place& place) {
  const double scale = rootFactor<Quantity>(t);
  const bool differentiates = points.fieldDerivatives != nullptr || points.temperatureDerivative != nullptr;
  for (int i = 0; i < place.count; ++i) {
    const int64_t point = place(i);
    points.value[point] = scale * sumOfRows<Quantity>(t, points, point, 0);
    if (!differentiates) continue;
    for (const bool adds : {false, true})
      for (int v = 1; v <= t.variables; ++v) {
        const Source source = points.source(t.sources[v - 1]);
        if (source.derivative == nullptr) continue;
        const double factor = v == t.logVariable ? scale * t.logarithm.factor(source.x[point]) : scale;
        source.derivative[point] =
            adds ? source.derivative[point] + factor * sumOfRows<Quantity>(t, points, point, v) : 0.0;
      }
  }
}

template <class Quantity, class Place>
SA_INLINE void evaluateManyVariables(const General& t, const PerPoint& points, const Place& place) {
  const int variables = t.variables;
  const double scale = rootFactor<Quantity>(t);
  Tree tree(variables);
  SharedBreakpoints breakpoints[kMostVariablesOfTree];
  SharedIntervals intervals;
  {
    Groups parents = {variables, t.groups};
    breakpoints[variables - 1].layOut(t, parents, nullptr, place.count);
    for (int v = variables - 1; v >= 1; --v, parents = parents.members())
      breakpoints[v - 1].layOut(t, parents.members(), &parents, place.count);
  }
  for (int64_t from = 0; from < place.count; from += tree.points) {
    const int start = static_cast<int>(from), rest = place.count - start, n = rest < tree.points ? rest : tree.points;
    double raw[kTreePoints], x[kTreePoints];
    // down: intervals
    Groups groups = {variables, t.groups};
    for (int i = 0; i < n; ++i) tree.first[tree.at(1) + i] = 1, tree.last[tree.at(1) + i] = groups.list[0];
    for (int v = variables, node = 1; v >= 1; --v) {
      const double* source = points.source(t.sources[v - 1]).x;
      for (int i = 0; i < n; ++i) x[i] = source[place(start + i)];
      const Logarithm logarithm = t.logarithm;
      if (v == t.logVariable) forPoints(n, [=, &x](int i) SA_POINT { x[i] = logarithm(x[i]); });
      if (v == t.rootVariable) forPoints(n, [=, &x](int i) SA_POINT { x[i] = vm::sqrt(x[i]); });
      const SharedBreakpoints& every = breakpoints[v - 1];
      const SharedIntervals* shared = every.count > 0 ? &intervals : nullptr;
      if (shared != nullptr) findIntervals(n, t, v, every, x, intervals);
      for (const int end = Tree::lower(node); node < end; ++node)
        if (v == 1)
          descend<Quantity, true>(n, t, groups, node, x, shared, tree);
        else
          descend<Quantity, false>(n, t, groups, node, x, shared, tree);
      if (v > 1) groups = groups.members();
    }
    // up: values
    const int rows = 1 << (variables - 1); // the first node of variable 1
    for (int node = rows + rows - 1; node >= rows; --node) interpolate<Quantity, true>(n, node, tree);
    for (int node = rows - 1; node >= 1; --node) interpolate<Quantity, false>(n, node, tree);
    for (int i = 0; i < n; ++i) points.value[place(start + i)] = scale * tree.value[tree.at(1) + i];
    if (points.fieldDerivatives == nullptr && points.temperatureDerivative == nullptr) continue;
    // down again: derivatives; several variables may have the same source
    for (int v = 1; v <= variables; ++v) {
      double* out = points.source(t.sources[v - 1]).derivative;
      for (int i = 0; out != nullptr && i < n; ++i) out[place(start + i)] = 0.0;
    }
    for (int i = 0; i < n; ++i) tree.weight[tree.at(1) + i] = scale;
    for (int v = variables, node = 1; v >= 1; --v) {
      const Source source = points.source(t.sources[v - 1]);
      double sum[kTreePoints] = {};
      for (const int end = Tree::lower(node); node < end; ++node) addSlope(n, node, node >= rows, tree, sum);
      if (source.derivative == nullptr) continue;
      if (v == t.logVariable) {
        const Logarithm logarithm = t.logarithm;
        for (int i = 0; i < n; ++i) raw[i] = source.x[place(start + i)];
        forPoints(n, [=, &raw, &sum](int i) SA_POINT { sum[i] *= logarithm.factor(raw[i]); });
      }
      for (int i = 0; i < n; ++i) source.derivative[place(start + i)] += sum[i];
    }
  }
}

} // namespace sa::table
