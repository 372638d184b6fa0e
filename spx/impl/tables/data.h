// A material table as it lies in the two pools, and the per-point arrays that it is looked up with.
//
// The positions are those of the section "Material tables" of spx.h; everything is read in place.
#pragma once

#include "glo/kernel/points.h"
#include "glo/kernel/vmath.h"

#include <cstdint>

namespace sa::table {

enum OptionCode { kConstant = 100, kLogarithmAndRoot = 300, kSeparable = 400, kLogarithm = 500 };

// Fields of the header and of the evaluator record, from 1.
enum HeaderField {
  kRecord = 1,
  kFieldCount,
  kStateCount,
  kTemperatureCount,
  kLogVariable,
  kLogReference,
  kRootVariable
};
enum RecordField { kRows = 1, kRowData, kGroups, kSources, kVariables, kColumns, kRunning, kExtrapolation = 13 };

constexpr double kLog10OfE = 0.43429448; // the factor of derivatives by logarithmic variables, to these eight digits

struct Pools {
  const int32_t* ints;
  const double* reals;
  const int32_t* header;

  int32_t field(HeaderField f) const { return header[f - 1]; }
  const int32_t* intsAt(int32_t position) const { return ints + (position - 1); }
  const double* realsAt(int32_t position) const { return reals + (position - 1); }
};

// log10 above the reference, below it a constant.  NaN is not below, and stays.
struct Logarithm {
  double reference, cutOff;

  SA_INLINE double operator()(double x) const {
    const double logarithm = vm::log10(x);
    return vm::select(x <= reference, cutOff, logarithm);
  }
  // What the derivative is multiplied by.
  SA_INLINE double factor(double x) const {
    const double reciprocal = 1.0 / x;
    return kLog10OfE * vm::select(x <= reference, 0.0, reciprocal);
  }
};

// The cut-off is an integer, toward zero.  That of a positive number fits any integer; others stay infinite or NaN.
inline Logarithm logarithmOf(double reference) {
  const double exact = vm::log10(reference);
  return {reference, vm::abs(exact) < 1000.0 ? static_cast<double>(static_cast<int32_t>(exact)) : exact};
}

// A general table: rows of equal length, entry 1 the dependent value.
struct General {
  const double* rows;
  int64_t rowCount, rowLength;
  int32_t variables;
  const int32_t *sources, *columns;
  const double* extrapolation; // below and above, for each variable
  const int32_t* groups;       // of more than one variable: see spx.h
  const double* running;       // integrals up to each row, null where they are summed
  int32_t logVariable = 0, rootVariable = 0;
  Logarithm logarithm = {};

  explicit General(const Pools& pools) {
    const int32_t* record = pools.intsAt(pools.field(kRecord));
    const auto at = [record](RecordField f) { return record[f - 1]; };
    rows = pools.realsAt(at(kRowData));
    rowCount = at(kRows);
    rowLength = int64_t{1} + pools.field(kFieldCount) + pools.field(kStateCount) + pools.field(kTemperatureCount);
    variables = at(kVariables);
    sources = pools.intsAt(at(kSources));
    columns = pools.intsAt(at(kColumns));
    extrapolation = pools.realsAt(at(kExtrapolation));
    groups = variables > 1 ? pools.intsAt(at(kGroups)) : nullptr;
    running = at(kRunning) > 0 ? pools.realsAt(at(kRunning)) : nullptr;
  }
  General(const Pools& pools, int32_t option) : General(pools) {
    logVariable = pools.field(kLogVariable);
    if (logVariable != 0) logarithm = logarithmOf(*pools.realsAt(pools.field(kLogReference)));
    if (option == kLogarithmAndRoot) rootVariable = pools.field(kRootVariable);
  }

  // Rows count from 1.
  SA_INLINE double value(int64_t row) const { return rows[(row - 1) * rowLength]; }
  SA_INLINE double abscissa(int64_t row, int variable) const {
    return rows[(row - 1) * rowLength + columns[variable - 1] - 1];
  }
  bool extrapolatesBelow(int variable) const { return extrapolation[int64_t{2} * variable - 2] > 0.0; }
  bool extrapolatesAbove(int variable) const { return extrapolation[int64_t{2} * variable - 1] > 0.0; }
};

// Where the values of a variable come from and where its derivative goes, both over the points of the block.
struct Source {
  const double* x;
  double* derivative; // null: none is returned
};

struct PerPoint {
  int64_t nblock;
  const double *fields, *states, *temperature;
  double *value, *fieldDerivatives, *temperatureDerivative; // null: derivatives are not asked for

  SA_INLINE Source source(int32_t code) const {
    const int64_t column = (code < 0 ? -int64_t{code} : int64_t{code}) - 1;
    if (code < 0) return {states + column * nblock, nullptr};
    if (code == 0) return {temperature, temperatureDerivative};
    return {fields + column * nblock, fieldDerivatives == nullptr ? nullptr : fieldDerivatives + column * nblock};
  }
};

} // namespace sa::table
