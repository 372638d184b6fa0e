/** @file material_table.h
 *  Lays a user's material table out in the two pools from which the SPX_GET_ and SPX_TAB_ routines read.
 *
 *    using namespace sharedanalysis::tables;
 *    Pools pools;                                       // of all tables of the analysis
 *    const Table E = addTable(pools, {{.source = kTemperature}}, {{210e9, 293}, {180e9, 773}});
 *    SPX_GET_GETVALUE(&derivatives, pools.ints.data(), pools.reals.data(), E.header.data(), &nblock, &E.option, ...);
 *
 *  Headers hold positions, so they stay right while the pools grow; addresses of the pools do not.  The layout itself is
 *  documented in spx.h, section "Material tables".  Faults in what the user gives are std::invalid_argument.
 */
#ifndef SHAREDANALYSIS_MATERIAL_TABLE_H
#define SHAREDANALYSIS_MATERIAL_TABLE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace sharedanalysis::tables {

struct Pools {
  std::vector<std::int32_t> ints;
  std::vector<double> reals;
};

/** What a lookup needs beside the pools. */
struct Table {
  std::int32_t option = 0; // 100, 300 or 500; for a regular table whether it depends on temperature
  std::array<std::int32_t, 7> header{};
  std::int32_t dependencies = 0; // field variables of a regular table
};

/** Source codes: a column of the field variables, a column of the state variables, the temperature. */
constexpr std::int32_t kTemperature = 0;
constexpr std::int32_t field(std::int32_t column) { return column; }
constexpr std::int32_t state(std::int32_t column) { return -column; }

enum class Scale { Linear, Logarithm, Root };

/** An independent variable of a general table.  Beyond the table the end value is held unless extrapolation is asked for. */
struct Variable {
  std::int32_t source = kTemperature;
  bool extrapolatesBelow = false, extrapolatesAbove = false;
  Scale scale = Scale::Linear;
  double reference =
      0.0; // of a logarithm: at and below it the variable counts as 10 to the integer part of its logarithm
};

/** A line of the table as a user writes it: the dependent value, then the independent ones in the order of the variables. */
using Row = std::vector<double>;

/** A variable of a regular table: points at first, first + spacing, ... */
struct Axis {
  double first, spacing;
  std::int32_t points;
};

namespace detail {

// Position, counted from 1, of what is appended.
template <class T>
std::int32_t append(std::vector<T>& pool, const std::vector<T>& values) {
  if (pool.size() + values.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
    throw std::invalid_argument("the pool of material tables is full");
  const auto position = static_cast<std::int32_t>(pool.size() + 1);
  pool.insert(pool.end(), values.begin(), values.end());
  return position;
}

// The abscissa as the lookup sees it.
inline double scaled(const Variable& variable, double x) {
  if (variable.scale == Scale::Logarithm)
    return x > variable.reference ? std::log10(x) : std::trunc(std::log10(variable.reference));
  return variable.scale == Scale::Root ? std::sqrt(x) : x;
}

inline void check(const std::vector<Variable>& variables, const std::vector<Row>& rows) {
  if (variables.empty()) throw std::invalid_argument("a material table without variables");
  if (rows.empty()) throw std::invalid_argument("a material table without rows");
  for (const Scale once : {Scale::Logarithm, Scale::Root})
    if (std::count_if(variables.begin(), variables.end(), [=](const Variable& v) { return v.scale == once; }) > 1)
      throw std::invalid_argument("a material table with two logarithmic or two square-root variables");
  for (const Variable& v : variables)
    if (v.scale == Scale::Logarithm && !(v.reference > 0.0 && std::isfinite(v.reference)))
      throw std::invalid_argument("the reference value of a logarithmic variable is not positive");
  for (std::size_t r = 0; r < rows.size(); ++r) {
    const std::string name = "row " + std::to_string(r + 1) + " of a material table ";
    if (rows[r].size() != variables.size() + 1)
      throw std::invalid_argument(name + "has " + std::to_string(rows[r].size()) + " values, not " +
                                  std::to_string(variables.size() + 1));
    for (const double x : rows[r])
      if (!std::isfinite(x)) throw std::invalid_argument(name + "holds a value that is not a number");
    for (std::size_t v = 0; v < variables.size(); ++v)
      if (variables[v].scale == Scale::Root && rows[r][v + 1] < 0.0)
        throw std::invalid_argument(name + "has a negative value of its square-root variable");
  }
}

// For each variable from the last down to 2 the number of its groups and the first member of each, and one beyond.  A group of
// variable v are the rows that agree in the variables from v on; its members are groups of v - 1, or rows.
inline std::vector<std::int32_t> groups(const std::vector<Row>& rows) {
  std::vector<std::int32_t> lists;
  const std::size_t variables = rows[0].size() - 1;
  for (std::size_t v = variables; v >= 2; --v) {
    std::vector<std::int32_t> first;
    std::int32_t member = 0;
    for (std::size_t r = 0; r < rows.size(); ++r) {
      const auto startsGroupOf = [&](std::size_t of) {
        return r == 0 || of == 1 ||
               !std::equal(rows[r].begin() + static_cast<std::ptrdiff_t>(of), rows[r].end(),
                           rows[r - 1].begin() + static_cast<std::ptrdiff_t>(of));
      };
      if (startsGroupOf(v - 1)) ++member;
      if (startsGroupOf(v)) first.push_back(member);
    }
    lists.push_back(static_cast<std::int32_t>(first.size()));
    lists.insert(lists.end(), first.begin(), first.end());
    lists.push_back(member + 1);
  }
  return lists;
}

// The integral from the first row of each group of variable 1, in the order of the library's own sum.
inline std::vector<double> runningIntegrals(const std::vector<Row>& rows) {
  std::vector<double> running(rows.size(), 0.0);
  for (std::size_t r = 1; r < rows.size(); ++r)
    if (std::equal(rows[r].begin() + 2, rows[r].end(), rows[r - 1].begin() + 2))
      running[r] = running[r - 1] + 0.5 * (rows[r][1] - rows[r - 1][1]) * (rows[r - 1][0] + rows[r][0]);
  return running;
}

} // namespace detail

/** A value that depends on nothing.  Its derivatives by so many field variables, and by the temperature, are set to 0. */
inline Table addConstant(Pools& pools, double value, std::int32_t fieldVariables = 0) {
  return {100, {detail::append(pools.reals, {value}), fieldVariables, 0, 0, 0, 0, 0}};
}

/** A general table.  Rows may come in any order; of two rows with the same abscissas the one given first stays below, which
 *  makes a jump.  Running integrals, one real for each row, make SPX_GET_INTEGRATE as fast as a lookup. */
inline Table addTable(Pools& pools, const std::vector<Variable>& variables, std::vector<Row> rows,
                      bool withIntegrals = false) {
  detail::check(variables, rows);
  const std::size_t n = variables.size();
  for (Row& row : rows)
    for (std::size_t v = 0; v < n; ++v) row[v + 1] = detail::scaled(variables[v], row[v + 1]);
  std::stable_sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) { // the last variable is the slowest
    return std::lexicographical_compare(a.rbegin(), a.rend() - 1, b.rbegin(), b.rend() - 1);
  });

  Table table;
  table.option = 500;
  std::vector<std::int32_t> record(13, 0), sources, columns;
  std::vector<double> flags, flat;
  for (std::size_t v = 0; v < n; ++v) {
    const Variable& variable = variables[v];
    sources.push_back(variable.source);
    columns.push_back(static_cast<std::int32_t>(v + 2));
    flags.push_back(variable.extrapolatesBelow ? 1.0 : 0.0);
    flags.push_back(variable.extrapolatesAbove ? 1.0 : 0.0);
    ++table.header[variable.source > 0 ? 1 : variable.source < 0 ? 2 : 3];
    if (variable.scale == Scale::Logarithm) {
      table.header[4] = static_cast<std::int32_t>(v + 1);
      table.header[5] = detail::append(pools.reals, {variable.reference});
    }
    if (variable.scale == Scale::Root) {
      table.option = 300;
      table.header[6] = static_cast<std::int32_t>(v + 1);
    }
  }
  for (const Row& row : rows) flat.insert(flat.end(), row.begin(), row.end());

  record[0] = static_cast<std::int32_t>(rows.size());
  record[1] = detail::append(pools.reals, flat);
  if (n > 1) record[2] = detail::append(pools.ints, detail::groups(rows));
  record[3] = detail::append(pools.ints, sources);
  record[4] = static_cast<std::int32_t>(n);
  record[5] = detail::append(pools.ints, columns);
  if (withIntegrals) record[6] = detail::append(pools.reals, detail::runningIntegrals(rows));
  record[12] = detail::append(pools.reals, flags);
  table.header[0] = detail::append(pools.ints, record);
  return table;
}

/** A table for SPX_GET_GETTAB: of the temperature and up to two field variables, or of one or two field variables alone.  The
 *  axes are in this order; the values have the first variable fastest. */
inline Table addRegularTable(Pools& pools, bool ofTemperature, const std::vector<Axis>& axes,
                             const std::vector<double>& values) {
  const std::size_t fieldVariables = axes.size() - (ofTemperature ? 1 : 0);
  if (axes.empty() || fieldVariables > 2)
    throw std::invalid_argument("a regular table has one or two field variables, or the temperature and up to two");
  std::vector<double> spacing;
  std::vector<std::int32_t> extents;
  std::size_t stride = 1;
  for (const Axis& axis : axes) {
    if (axis.points < 1 || !(axis.spacing > 0.0))
      throw std::invalid_argument("a regular table without points or with a spacing that is not positive");
    spacing.insert(spacing.end(), {axis.first, 1.0 / axis.spacing});
    extents.insert(extents.end(), {axis.points, static_cast<std::int32_t>(stride)});
    stride *= static_cast<std::size_t>(axis.points);
    if (stride > values.size()) break;
  }
  if (stride != values.size())
    throw std::invalid_argument("a regular table does not have as many values as its axes say");
  Table table;
  table.option = ofTemperature ? 1 : 0;
  table.dependencies = static_cast<std::int32_t>(fieldVariables);
  table.header[0] = detail::append(pools.reals, spacing);
  table.header[1] = detail::append(pools.ints, extents);
  table.header[2] = detail::append(pools.reals, values);
  return table;
}

} // namespace sharedanalysis::tables

#endif
