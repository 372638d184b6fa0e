// Curves and families of curves of the built-in user materials, over the points of a piece.  The rows are the outer loop and
// the points the inner one: no search, no gather, no branch on data, and the bits of a point depend on it alone.
#pragma once

#include "glo/kernel/points.h"
#include "glo/kernel/vmath.h"
#include "spx/impl/user/tables.h"

namespace sa::user {

// Rows of (stress, strain) with increasing strain, straight between; the first and the last slope go on outside, one row is a
// constant.  No rows: zero.
constexpr int kStress = 0, kStrain = 1, kCurveColumns = 2;

// The column kY over the column kX, which increases, at x; and the area under it from zero to x, where asked for.
template <int kX, int kY, bool kArea>
SA_INLINE void evaluateCurve(const Table& curve, int n, const double* x, double* value, double* area) {
  double start = curve.rows > 0 ? curve.at(0, kX) : 0.0, height = curve.rows > 0 ? curve.at(0, kY) : 0.0;
  double below = 0.0, belowZero = 0.0; // areas from the first row: to this one, and to zero
  const int segments = curve.rows > 1 ? curve.rows - 1 : 1;
  for (int r = 0; r < segments; ++r) {
    const double end = r + 1 < curve.rows ? curve.at(r + 1, kX) : start,
                 top = r + 1 < curve.rows ? curve.at(r + 1, kY) : height;
    const double slope = end > start ? (top - height) / (end - start) : 0.0;
    const bool isFirst = r == 0;
    forPoints(n, [=](int i) SA_POINT {
      const double at = x[i], dx = at - start;
      const bool isHere = isFirst | (at >= start);
      const double before = isFirst ? 0.0 : value[i];
      value[i] = vm::select(isHere, height + slope * dx, before);
      if constexpr (kArea) {
        const double areaBefore = isFirst ? 0.0 : area[i];
        area[i] = vm::select(isHere, below + dx * (height + 0.5 * slope * dx), areaBefore);
      }
    });
    if (isFirst || start <= 0.0) belowZero = below - start * (height - 0.5 * slope * start);
    below += (end - start) * (0.5 * (height + top));
    start = end, height = top;
  }
  if constexpr (kArea) {
    const double offset = belowZero;
    forPoints(n, [=](int i) SA_POINT { area[i] -= offset; });
  }
}
// Stress at a strain.
SA_INLINE void stressAt(const Table& curve, int n, const double* strain, double* stress) {
  evaluateCurve<kStrain, kStress, false>(curve, n, strain, stress, nullptr);
}
// Stress at a strain, and the work per volume to that strain from zero.
SA_INLINE void stressAndWorkAt(const Table& curve, int n, const double* strain, double* stress, double* work) {
  evaluateCurve<kStrain, kStress, true>(curve, n, strain, stress, work);
}
// Strain at a stress, of a curve whose stress increases as well.
SA_INLINE void strainAt(const Table& curve, int n, const double* stress, double* strain) {
  evaluateCurve<kStress, kStrain, false>(curve, n, stress, strain, nullptr);
}

// How far the logarithm of a rate has gone from that of one row to that of the next; held outside.
SA_INLINE double rateWeight(double logRate, double logFrom, double perSpan) {
  const double weight = (logRate - logFrom) * perSpan;
  return vm::select(weight > 0.0, vm::min(1.0, weight), weight + (0.0 - weight)); // a NaN stays one
}

// One over the way; that of neighbours, whose logarithms may be one number, is as steep as a step.
SA_INLINE double perSpanOf(double logFrom, double logTo) { return logTo > logFrom ? 1.0 / (logTo - logFrom) : 1e300; }

// A column of a table with a column of rates, straight in the logarithm of the rate and held outside; no rows: `none`.  One row
// holds for every rate, and then the logarithm is not read.
SA_INLINE void valueAtRate(const Table& table, int column, int rateColumn, int n, const double* logRate, double none,
                           double* value) {
  const double first = table.rows > 0 ? table.at(0, column) : none;
  forPoints(n, [=](int i) SA_POINT { value[i] = first; });
  for (int r = 1; r < table.rows; ++r) {
    const double from = vm::log(table.at(r - 1, rateColumn)), to = vm::log(table.at(r, rateColumn));
    const double perSpan = perSpanOf(from, to), rise = table.at(r, column) - table.at(r - 1, column);
    forPoints(n, [=](int i) SA_POINT { value[i] += rateWeight(logRate[i], from, perSpan) * rise; });
  }
}

// Curves at several rates, straight in the logarithm of the rate and held outside: `rates` has rows of (rate, number of rows),
// the curves follow one another.
struct RateFamily {
  Table rates;
  const double* curves = nullptr;

  Table curve(int number, const double* values) const {
    return {values, static_cast<int>(rates.at(number, 1)), kCurveColumns};
  }
  Table slowest() const { return curve(0, curves); }
};

// From the stress of the slowest curve at the strain, which `stress` holds, to that of the family at (strain, rate); a rate
// below the first counts as the first.
SA_INLINE void raiseToRate(const RateFamily& family, int n, const double* strain, const double* rate, double* stress) {
  if (family.rates.rows < 2) {
    forPoints(n, [=](int i) SA_POINT { stress[i] += rate[i] - rate[i]; }); // a NaN spoils its point
    return;
  }
  Lane logRate, below, above;
  const double first = family.rates.at(0, 0);
  forPoints(n, [=, &logRate, &below](int i) SA_POINT {
    const double r = rate[i];
    logRate[i] = vm::log(vm::select(r < first, first, r));
    below[i] = stress[i];
  });
  const double* values = family.curves;
  for (int k = 1; k < family.rates.rows; ++k) {
    values += int64_t{kCurveColumns} * static_cast<int>(family.rates.at(k - 1, 1));
    stressAt(family.curve(k, values), n, strain, above);
    const double from = vm::log(family.rates.at(k - 1, 0)), to = vm::log(family.rates.at(k, 0)),
                 perSpan = perSpanOf(from, to);
    forPoints(n, [=, &logRate, &below, &above](int i) SA_POINT {
      const double b = below[i], a = above[i];
      stress[i] += rateWeight(logRate[i], from, perSpan) * (a - b);
      below[i] = a;
    });
  }
}

// Stress of the family at (strain, rate).
SA_INLINE void stressAt(const RateFamily& family, int n, const double* strain, const double* rate, double* stress) {
  stressAt(family.slowest(), n, strain, stress);
  raiseToRate(family, n, strain, rate, stress);
}

// The part of the way to a rate that a first-order filter goes in an increment: exact for a constant rate, whole without a
// filter.
inline double filterShare(double dt, double relaxationTime) {
  return relaxationTime > 0.0 ? -vm::expm1(-dt / relaxationTime) : 1.0;
}

// What can go wrong with a family, in the order in which it is looked for.
enum class FamilyFault { none, cutOff, noCurve, rates, strains };
FamilyFault takeFamily(Tables& tables, double count, RateFamily& family);

} // namespace sa::user
