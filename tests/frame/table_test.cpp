// Material tables against an interpolation of the user's rows in long double with linear searches, on hand-made and random
// tables; closed forms of integrals and transforms; the messages of what is rejected.
#include "host/tables/material_table.h"
#include "spx.h"
#include "tests/support/random.h"
#include "tests/support/recording_host.h"

namespace {

using namespace sharedanalysis::test;
using namespace sharedanalysis::tables;
using Real = long double;

// ---- the truth

struct Truth {
  Real value, derivatives[11]; // by variables 1, 2, ...
};

Real scaled(const Variable& v, Real x) {
  if (v.scale == Scale::Logarithm) return x > v.reference ? std::log10(x) : std::trunc(std::log10(Real{v.reference}));
  return v.scale == Scale::Root ? std::sqrt(x) : x;
}

// Interpolates along the last of the first `count` variables between tables of the others.
using Rows = std::vector<const Row*>;
Truth interpolated(const std::vector<Variable>& variables, std::size_t count, const Rows& rows, const double* x) {
  if (count == 0) return {(*rows[0])[0], {}};
  const Variable& variable = variables[count - 1];
  std::vector<std::pair<Real, Rows>> groups;
  for (const Row* row : rows) {
    const Real abscissa = scaled(variable, (*row)[count]);
    auto at = groups.begin();
    while (at != groups.end() && at->first <= abscissa) ++at;
    const bool isNew = count == 1 || at == groups.begin() || (at - 1)->first != abscissa; // equal rows are a jump
    at = isNew ? groups.insert(at, {abscissa, {}}) : at - 1;
    at->second.push_back(row);
  }
  const Real X = scaled(variable, x[count - 1]);
  const bool below = X<groups.front().first, above = X> groups.back().first;
  const auto end = [&](const auto& group) { return interpolated(variables, count - 1, group.second, x); };
  if (groups.size() == 1 || (below && !variable.extrapolatesBelow)) return end(groups.front());
  if (above && !variable.extrapolatesAbove) return end(groups.back());
  std::size_t i = 0;
  while (i + 2 < groups.size() && groups[i + 1].first <= X) ++i;
  const Truth a = end(groups[i]), b = end(groups[i + 1]);
  const Real width = groups[i + 1].first - groups[i].first, w = (X - groups[i].first) / width;
  if (width == 0) return b;
  Truth result = {(1 - w) * a.value + w * b.value, {}};
  for (std::size_t v = 0; v < std::size(a.derivatives); ++v)
    result.derivatives[v] = (1 - w) * a.derivatives[v] + w * b.derivatives[v];
  Real chain = 1;
  if (variable.scale == Scale::Logarithm)
    chain = x[count - 1] > variable.reference ? 0.43429448 / Real{x[count - 1]} : 0;
  result.derivatives[count - 1] = (b.value - a.value) / width * chain;
  return result;
}

// ---- calls

// Points with eight field variables, two state variables and a temperature; what a lookup leaves of them.
struct Points {
  int32_t n;
  std::vector<double> fields, states, temperature, value, dField, dTemperature;
  explicit Points(int points)
      : n(points), fields(8 * n), states(2 * n), temperature(n), value(n, -77), dField(8 * n, -77),
        dTemperature(n, -77) {}
  double& at(int32_t source, int i) {
    const int at = (std::abs(source) - 1) * n + i;
    return source == 0 ? temperature[i] : source > 0 ? fields[at] : states[at];
  }
  double derivative(int32_t source, int i) const {
    return source == 0 ? dTemperature[i] : dField[(source - 1) * n + i];
  }
  template <class Lookup, class... List>
  Points& look(Lookup lookup, const Pools& p, const Table& t, const List*... list) {
    const int32_t derivatives = 1;
    lookup(&derivatives, p.ints.data(), p.reals.data(), t.header.data(), &n, &t.option, fields.data(), states.data(),
           temperature.data(), value.data(), dField.data(), dTemperature.data(), list...);
    return *this;
  }
  using Lookup = decltype(&SPX_GET_GETVALUE);
};

// A table of one temperature at some temperatures.
Points atTemperatures(const Pools& pools, const Table& table, const std::vector<double>& x,
                      Points::Lookup lookup = SPX_GET_GETVALUE) {
  Points points(static_cast<int>(x.size()));
  points.temperature = x;
  return points.look(lookup, pools, table);
}

// ---- lookups

TEST(Tables, RandomTablesOfOneToElevenVariables) {
  Random random(41);
  const auto either = [&] { return random.integer(0, 1) == 1; };
  for (int round = 0; round < 424; ++round) {
    const int count = 1 + (round < 400 ? round % 5 : 5 + round % 6);
    std::vector<Variable> variables;
    std::vector<int32_t> sources = {kTemperature, field(2), state(1), field(1), state(2)};
    for (int32_t column = 3; column <= 8 && count > 5; ++column) sources.push_back(field(column));
    for (int v = 0; v < count; ++v) {
      const auto pick = sources.begin() + random.integer(0, static_cast<int>(sources.size()) - 1);
      variables.push_back({*pick, either(), either()});
      sources.erase(pick);
    }
    const int special = random.integer(0, 4);
    const bool isScaled = special < count, hasRoot = isScaled && round % 2 == 0 && count > 1;
    if (isScaled) variables[special].scale = Scale::Logarithm, variables[special].reference = 0.05;
    if (hasRoot) variables[(special + 1) % count].scale = Scale::Root;
    // groups of different lengths and breakpoints; few values of the slower variables, so that there are groups
    std::vector<Row> rows(random.integer(1, count > 5 ? 300 : 60));
    for (Row& row : rows) {
      row = {random.uniform(-5, 5), random.uniform(0, 2)};
      for (int v = 1; v < count; ++v) row.push_back(0.5 * random.integer(0, v > 5 ? 1 : 3));
    }
    Pools pools{std::vector<int32_t>(3, 99), std::vector<double>(5, 99)}; // other tables come before
    const Table table = addTable(pools, variables, rows);
    EXPECT_EQ(table.option, hasRoot ? 300 : 500);

    Points points(150);
    std::vector<std::array<double, 11>> x(150);
    for (int i = 0; i < points.n; ++i)
      for (int v = 0; v < count; ++v) {
        const Scale scale = variables[v].scale; // rounding of a logarithm may cross a breakpoint
        const bool isOnRow = random.integer(0, 4) == 0 && scale != Scale::Logarithm;
        x[i][v] = isOnRow ? rows[i % rows.size()][v + 1] : random.uniform(scale == Scale::Root ? 0.0 : -0.5, 2.5);
        points.at(variables[v].source, i) = x[i][v];
      }
    points.look(SPX_GET_GETVALUE, pools, table);
    Rows all;
    for (const Row& row : rows) all.push_back(&row);
    for (int i = 0; i < points.n; ++i) {
      const Truth truth = interpolated(variables, count, all, x[i].data());
      // close breakpoints make steep lines, which magnify the rounding of their ends
      Real scale = 50;
      for (int v = 0; v < count; ++v) scale += 5 * std::abs(truth.derivatives[v]) + std::abs(truth.value);
      ASSERT_LE(std::abs(points.value[i] - truth.value), 1e-10 * scale) << "round " << round << " point " << i;
      for (int v = 0; v < count; ++v)
        if (variables[v].source >= 0) {
          ASSERT_LE(std::abs(points.derivative(variables[v].source, i) - truth.derivatives[v]), 1e-7 * scale * scale)
              << "round " << round << " point " << i << " variable " << v + 1;
        }
    }
  }
}

TEST(Tables, PoolsLaidOutByHand) {
  // columns: value, field 1, temperature; the table is of temperature alone
  const double reals[] = {99, 10, 7, 1, 20, 7, 2, 50, 7, 4, 0, 1};
  const int32_t ints[] = {99, 0, 3, /* record */ 3, 2, 0, 2, 1, 3, 0, 0, 0, 0, 0, 0, 11};
  const int32_t header[] = {4, 1, 0, 1, 0, 0, 0}, option = 500, n = 5, yes = 1, no = 2;
  const double x[] = {0, 1.5, 2, 4, 5};
  double value[5], derivative[5] = {9, 9, 9, 9, 9};
  SPX_GET_GETVALUE(&no, ints, reals, header, &n, &option, nullptr, nullptr, x, value, nullptr, derivative);
  EXPECT_EQ(derivative[0], 9); // only a flag of 1 asks for them
  SPX_GET_GETVALUE(&yes, ints, reals, header, &n, &option, nullptr, nullptr, x, value, nullptr, derivative);
  double alone[5];
  SPX_GET_GETVAL(ints, reals, header, &n, &option, nullptr, nullptr, x, alone);
  const double values[] = {10, 15, 20, 50, 65}, derivatives[] = {0, 10, 15, 15, 15};
  for (int i = 0; i < n; ++i) {
    EXPECT_DOUBLE_EQ(value[i], values[i]);
    EXPECT_DOUBLE_EQ(derivative[i], derivatives[i]);
    EXPECT_EQ(alone[i], value[i]);
  }
}

TEST(Tables, BreakpointsEndsJumpsAndSingleRows) {
  Pools pools;
  Random random(3);
  for (int rows = 2; rows < 80; ++rows) { // short tables are searched in another way than long ones
    std::vector<Row> data;
    std::vector<double> at = {-kInf, kInf};
    for (double x = random.uniform(-1, 1); static_cast<int>(data.size()) < rows; x += random.uniform(0.1, 1)) {
      data.push_back({random.uniform(-1e9, 1e9), x});
      at.push_back(x);
    }
    const Points points = atTemperatures(pools, addTable(pools, {{}}, data), at);
    EXPECT_EQ(points.value[0], data.front()[0]);
    EXPECT_EQ(points.value[1], data.back()[0]);
    EXPECT_EQ(points.dTemperature[0], 0);
    for (int r = 0; r < rows; ++r) {
      EXPECT_EQ(points.value[r + 2], data[r][0]); // to the last bit
      const Row &a = data[std::min(r, rows - 2)], &b = data[std::min(r, rows - 2) + 1];
      EXPECT_DOUBLE_EQ(points.dTemperature[r + 2], (b[0] - a[0]) / (b[1] - a[1]));
    }
  }
  const Variable extrapolated{kTemperature, true, true};
  const Points single = atTemperatures(pools, addTable(pools, {extrapolated}, {{42, 1}}), {-5, 1, 7, kNaN, kInf});
  EXPECT_EQ(single.value, std::vector<double>(5, 42));
  EXPECT_EQ(single.dTemperature, std::vector<double>(5, 0));
  const Table jump = addTable(pools, {{}}, {{1, 0}, {3, 1}, {7, 1}, {9, 2}, {5, 2}}),
              steep = addTable(pools, {extrapolated}, {{1, 0}, {3, 0}, {4, 1}, {8, 1}});
  std::vector<double> x, more, atJump, atSteep;
  for (int repeat = 0; repeat < 3; ++repeat) { // blocks below and above the length from which searches are vectorised
    x.insert(x.end(), {0.5, 1, 1.5, 2, 3}), atJump.insert(atJump.end(), {2, 7, 8, 5, 5});
    more.insert(more.end(), {-1, 0.5, 1, 2}), atSteep.insert(atSteep.end(), {3, 3.5, 8, 8});
    const Points jumps = atTemperatures(pools, jump, x);
    EXPECT_EQ(jumps.value, atJump);
    EXPECT_EQ(jumps.dTemperature[3], 0); // an interval without width
    EXPECT_EQ(atTemperatures(pools, steep, more).value, atSteep);
  }
}

// The points that are NaN, in their value and in all derivatives.
void expectNaN(const Points& points, const std::vector<int32_t>& sources, const std::set<int>& wanted) {
  for (int i = 0; i < points.n; ++i) {
    EXPECT_EQ(std::isnan(points.value[i]), wanted.contains(i)) << i;
    for (int32_t source : sources)
      EXPECT_EQ(std::isnan(points.derivative(source, i)), wanted.contains(i)) << i << " " << source;
  }
}
bool isSame(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

TEST(Tables, NaNIsOfItsPointAlone) {
  Pools pools;
  for (int rows : {2, 5, 33, 1000}) {
    std::vector<Row> data;
    for (int r = 0; r < rows; ++r) data.push_back({std::sin(r), 1.0 * r});
    for (const Variable& x : {Variable{kTemperature, true, true}, {kTemperature, false, false, Scale::Logarithm, 0.5}})
      expectNaN(atTemperatures(pools, addTable(pools, {x}, data), {0.25, kNaN, 0.75, 1, kNaN, 0, 1, 1, 1, 1}), {0},
                {1, 4});
  }
  // of several variables, by the walk through the rows as well: value and derivatives by all
  for (int32_t count : {2, 8, 9}) {
    std::vector<Variable> variables;
    std::vector<int32_t> sources(count);
    std::iota(sources.begin(), sources.end(), 0);
    for (int32_t v = 1; v <= count; ++v) variables.push_back({field(v % count), true, true});
    std::vector<Row> rows;
    for (int r = 0; r < 1 << count; ++r) {
      rows.push_back({std::sin(r)});
      for (int32_t v = 0; v < count; ++v) rows.back().push_back((r >> v) % 2);
    }
    const Table table = addTable(pools, variables, rows);
    for (int32_t spoiled : sources) {
      Points points(9);
      points.at(spoiled, 4) = kNaN;
      expectNaN(points.look(SPX_GET_GETVALUE, pools, table), sources, {4});
    }
  }
  // rows in any order, and with NaN: a point gives the same alone and in a block
  Random random(77);
  for (int round = 0; round < 200; ++round) {
    std::vector<double> reals;
    const int32_t rows = random.integer(2, 40);
    for (int r = 0; r < rows; ++r)
      reals.insert(reals.end(), {random.uniform(-1, 1), random.integer(0, 9) == 0 ? kNaN : random.uniform(0, 1)});
    const int32_t held = static_cast<int32_t>(reals.size()) + 1;
    reals.insert(reals.end(), {1.0 * (round % 2), 1.0 * (round / 2 % 2)});
    const Pools own{{rows, 1, 0, 14, 1, 15, 0, 0, 0, 0, 0, 0, held, 0, 2}, reals};
    const Table table{500, {1, 0, 0, 1, 0, 0, 0}};
    std::vector<double> x(9);
    for (double& at : x) at = random.uniform(-0.5, 1.5);
    const Points block = atTemperatures(own, table, x);
    for (int i = 0; i < block.n; ++i) {
      const Points alone = atTemperatures(own, table, {x[i]});
      EXPECT_TRUE(isSame(alone.value[0], block.value[i]) && isSame(alone.dTemperature[0], block.dTemperature[i]));
    }
  }
  // NaN among the abscissas of a short and a long table: searches end, within the rows
  for (int count : {20, 60}) {
    std::vector<Row> rows;
    for (int r = 0; r < count; ++r) rows.push_back({1.0, 1.0 * r});
    Pools own;
    const Table table = addTable(own, {{}}, rows);
    for (int bad : {0, 3, count - 1}) {
      own.reals[2 * bad + 1] = kNaN;
      for (double x = -0.5; x < count; x += 0.5) {
        const double value = atTemperatures(own, table, std::vector<double>(9, x)).value[8];
        EXPECT_TRUE(value == 1 || std::isnan(value));
        const int32_t lo = 1, length = 2, spare = 0, pos = 2;
        const double none = 0;
        int32_t i1 = 0, i2 = 0;
        SPX_GET_SEGFIND(&lo, &count, &none, &none, &length, &spare, own.reals.data(), &pos, &x, &i1, &i2);
        EXPECT_TRUE(i1 >= 1 && i2 <= count && (i2 == i1 || i2 == i1 + 1));
      }
    }
  }
}

TEST(Tables, AHundredThousandRows) {
  Pools pools;
  std::vector<Row> rows;
  for (int r = 0; r < 100000; ++r) rows.push_back({0.5 * r * r, 1.0 * r});
  const Table table = addTable(pools, {{}}, rows, true);
  std::vector<double> x;
  Random random(8);
  for (int i = 0; i < 5000; ++i) x.push_back(random.uniform(0, 99999));
  const Points points = atTemperatures(pools, table, x), integrals = atTemperatures(pools, table, x, SPX_GET_INTEGRATE);
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double k = std::floor(x[i]);
    EXPECT_NEAR(points.dTemperature[i], k + 0.5, 1e-6);
    EXPECT_NEAR(points.value[i], 0.5 * k * k + (x[i] - k) * (k + 0.5), 1e-4);
    EXPECT_NEAR(integrals.value[i], x[i] * x[i] * x[i] / 6, 1e-7 * x[i] * x[i] * x[i] + x[i]);
  }
}

TEST(Tables, ConstantsAndLookupsByOtherNames) {
  Pools pools;
  const Table constant = addConstant(pools, 4.5, 2), line = addTable(pools, {{field(1)}}, {{1, 0}, {2, 1}});
  for (const Table& table : {constant, line}) {
    Points points(300);
    for (int32_t i = 0; i < points.n; ++i) points.at(field(1), i) = i / 250.0;
    const Points asked = points;
    points.look(SPX_GET_GETVALUE, pools, table);
    for (Points::Lookup lookup : {SPX_GET_GETVALUEDBL, SPX_TAB_GETVALUE}) {
      Points other = asked;
      other.look(lookup, pools, table);
      EXPECT_TRUE(other.value == points.value && other.dField == points.dField &&
                  other.dTemperature == points.dTemperature);
    }
    for (int32_t i = 0; i < points.n && table.option == 100; ++i) {
      EXPECT_EQ(points.value[i], 4.5);
      for (int32_t source : {kTemperature, field(1), field(2)}) EXPECT_EQ(points.derivative(source, i), 0);
    }
  }
}

// ---- transforms and integrals

TEST(Tables, LogarithmicVariables) {
  Pools pools;
  const auto value = [&](double reference, double x) {
    const Table table =
        addTable(pools, {{kTemperature, true, true, Scale::Logarithm, reference}}, {{1, 1e3}, {3, 1e5}});
    const Points points = atTemperatures(pools, table, {x});
    return std::pair(points.value[0], points.dTemperature[0]);
  };
  EXPECT_EQ(value(1, 1e4), std::pair(2.0, 0.43429448 * 1e-4)); // halfway in decades; the factor has eight digits
  for (const auto& [reference, cutOff] :
       {std::pair(0.5, 0.0), {0.05, -1.0}, {0.01, -2.0}, {1e-5, -5.0}, {300.0, 2.0}}) {
    for (double x : {reference, reference / 2, 0.0, -1.0, -kInf}) {
      EXPECT_EQ(value(reference, x).first, 1 + (cutOff - 3)) << reference << " " << x;
      EXPECT_EQ(value(reference, x).second, 0);
    }
    EXPECT_DOUBLE_EQ(value(reference, 1.01 * reference).first, 1 + (std::log10(1.01 * reference) - 3));
  }
}

TEST(Tables, IntegralsOfLines) {
  Pools pools;
  const std::vector<Row> rows = {{1, -1}, {3, 0}, {2, 2}, {6, 2}, {4, 3}};
  // by hand: up to the breakpoints 0 2 7 7 12
  const std::vector<double> at = {-2, -1, -0.5, 0, 1, 2, 2.5, 3, 4}, held = {-1, 0, 0.75, 2, 4.75, 7, 9.75, 12, 16},
                            lines = {0, 0, 0.75, 2, 4.75, 7, 9.75, 12, 15}, f = {-1, 1, 2, 3, 2.5, 6, 5, 4, 2};
  for (bool extrapolates : {false, true}) {
    const Variable x = {kTemperature, extrapolates, extrapolates};
    const Table summed = addTable(pools, {x}, rows), stored = addTable(pools, {x}, rows, true);
    const Points a = atTemperatures(pools, summed, at, SPX_GET_INTEGRATE), values = atTemperatures(pools, summed, at);
    EXPECT_EQ(atTemperatures(pools, stored, at, SPX_GET_INTEGRATE).value, a.value);
    EXPECT_EQ(a.dTemperature, values.value);
    for (std::size_t i = 0; i < at.size(); ++i) {
      EXPECT_DOUBLE_EQ(a.value[i], extrapolates ? lines[i] : held[i]) << at[i];
      if (extrapolates || (i > 0 && i < 8)) {
        EXPECT_DOUBLE_EQ(values.value[i], f[i]);
      }
    }
  }
  const Table one = addTable(pools, {{}}, {{4, 1}});
  EXPECT_EQ(atTemperatures(pools, one, {3, 1, 2.5}, SPX_GET_INTEGRATE).value, (std::vector<double>{8, 0, 6}));

  // over a root: 2 times the integral of (1 + s) ds; the derivative is the one by the root
  const Table root = addTable(pools, {{kTemperature, false, false, Scale::Root, 0}}, {{1, 0}, {2, 1}, {3, 4}, {5, 16}});
  const Points roots = atTemperatures(pools, root, {0.25, 1, 9}, SPX_GET_INTEGRATE);
  for (int i = 0; i < roots.n; ++i) {
    const double s = std::sqrt(roots.temperature[i]);
    EXPECT_DOUBLE_EQ(roots.value[i], 2 * (s + s * s / 2));
    EXPECT_DOUBLE_EQ(roots.dTemperature[i], 2 * (1 + s));
  }
  // of two variables and of nine: f = s (1 + y) from s = 1, on a grid, where s is x or its root; the rest does not matter
  for (int kind = 0; kind < 8; ++kind) {
    const bool running = kind % 2 == 1, isRoot = kind / 2 % 2 == 1;
    std::vector<Variable> variables = {{kTemperature, false, false, isRoot ? Scale::Root : Scale::Linear}, {field(1)}};
    for (int32_t v = 2; v <= 8 && kind >= 4; ++v) variables.push_back({field(v)});
    std::vector<Row> grid;
    for (double y : {0.0, 1.0, 3.0})
      for (double s : {1.0, 2.0, 4.0})
        for (double rest = 0; rest < (kind < 4 ? 1 : 2); ++rest) {
          grid.push_back({s * (1 + y), isRoot ? s * s : s, y});
          grid.back().resize(variables.size() + 1, rest);
        }
    const Table table = addTable(pools, variables, grid, running);
    Points points(50);
    Random random(5);
    for (double& any : points.fields) any = random.uniform(0, 1);
    for (int i = 0; i < points.n; ++i) points.at(0, i) = random.uniform(1, 4), points.at(1, i) = random.uniform(0, 3);
    points.look(SPX_GET_INTEGRATE, pools, table);
    const double factor = isRoot ? 2 : 1;
    for (int i = 0; i < points.n; ++i) {
      const double x = points.temperature[i], s = isRoot ? std::sqrt(x) : x, y = points.fields[i];
      EXPECT_NEAR(points.value[i], factor * (s * s - 1) / 2 * (1 + y), 1e-12) << kind;
      EXPECT_NEAR(points.dTemperature[i], factor * s * (1 + y), 1e-12) << kind;
      EXPECT_NEAR(points.dField[i], factor * (s * s - 1) / 2, 1e-12) << kind;
    }
  }
}

// ---- regular tables and the search

TEST(Tables, RegularTablesAgreeWithGeneralOnes) {
  Random random(6);
  for (int option = 0; option <= 2; ++option)
    for (int32_t dependencies = 0; dependencies <= 3; ++dependencies) {
      Points points(200);
      for (int32_t source : {0, 1, 2})
        for (int i = 0; i < points.n; ++i) points.at(source, i) = random.uniform(-2, 7);
      points.at(dependencies == 0 ? 0 : 1, 17) = kNaN;
      points.at(0, 18) = kInf, points.at(1, 18) = -kInf;
      Points expected = points, extra = points;
      Pools pools;
      const auto look = [&](Points& p, const Table& t, int32_t more) {
        const int32_t derivatives = 1, one = 2;
        SPX_GET_GETTAB(&derivatives, pools.ints.data(), pools.reals.data(), t.header.data(), &p.n, &option,
                       &dependencies, &more, &one, &one, p.fields.data(), p.states.data(), p.temperature.data(),
                       p.value.data(), p.dField.data(), p.dTemperature.data());
      };
      if (option == 2 || dependencies == 3 || option + dependencies == 0) { // there are none
        look(points, Table(), 0);
        EXPECT_EQ(points.value, expected.value);
        continue;
      }
      const int count = option + dependencies;
      std::vector<Axis> axes;
      std::vector<Variable> variables;
      int size = 1;
      for (int v = 0; v < count; ++v) {
        axes.push_back({random.uniform(-1, 0), std::ldexp(1.0, -random.integer(0, 2)), random.integer(1, 6)});
        variables.push_back({v + (option == 1 ? 0 : 1)});
        size *= axes.back().points;
      }
      std::vector<double> values;
      std::vector<Row> rows;
      for (int r = 0, rest = 0; r < size; ++r) {
        values.push_back(random.uniform(-5, 5));
        rows.push_back({values[r]});
        rest = r;
        for (const Axis& axis : axes) {
          rows.back().push_back(axis.first + rest % axis.points * axis.spacing);
          rest /= axis.points;
        }
      }
      const Table regular = addRegularTable(pools, option == 1, axes, values),
                  general = addTable(pools, variables, rows);
      look(points, regular, 0);
      expected.look(SPX_GET_GETVALUE, pools, general);
      look(extra, general, 1);
      EXPECT_TRUE(std::isnan(points.value[17]));
      for (int i = 0; i < points.n; ++i) {
        if (i == 17) continue;
        EXPECT_NEAR(points.value[i], expected.value[i], 1e-12);
        EXPECT_EQ(extra.value[i], expected.value[i]);
        for (const Variable& v : variables) {
          EXPECT_NEAR(points.derivative(v.source, i), expected.derivative(v.source, i), 1e-12);
          EXPECT_EQ(extra.derivative(v.source, i), expected.derivative(v.source, i));
        }
        EXPECT_EQ(extra.dField[200 + i], count > 1 && variables.back().source == 2 ? expected.dField[200 + i] : 0);
      }
    }
}

TEST(Tables, SegmentsOfOneColumn) {
  Random random(2);
  for (int rows = 0; rows < 40; ++rows) {
    std::vector<double> table(3 * 42, kNaN);
    double next = 0;
    for (int r = 1; r <= rows; ++r) table[3 * (r + 1) + 1] = next += random.integer(0, 2);
    const int32_t lo = 3, hi = rows + 2, length = 3, spare = -5, pos = 2; // rows 1 and 2 are not asked about
    const auto abscissa = [&](int32_t r) { return table[3 * (r - 1) + 1]; };
    for (double x = -1; x < next + 1.5; x += 0.5)
      for (int flags = 0; flags < 4; ++flags) {
        const double below = flags % 2 == 0 ? -1 : 1e-300, above = flags / 2 == 0 ? 0 : 2;
        int32_t i1 = 0, i2 = 0, w1 = lo;
        SPX_GET_SEGFIND(&lo, &hi, &below, &above, &length, &spare, table.data(), &pos, &x, &i1, &i2);
        while (w1 + 2 <= hi && abscissa(w1 + 1) <= x) ++w1;
        int32_t w2 = w1 + 1;
        if (rows < 2)
          w1 = w2 = lo;
        else if (x < abscissa(lo) && flags % 2 == 0)
          w2 = w1 = lo;
        else if (x > abscissa(hi) && flags / 2 == 0)
          w1 = w2 = hi;
        EXPECT_TRUE(i1 == w1 && i2 == w2) << rows << " rows, " << x << ": " << i1 << " " << i2;
      }
  }
}

// ---- what is rejected

TEST(Tables, UnknownOptionsEndTheAnalysisAndLeaveTheArrays) {
  const char *const plain = "Unsupported table option",
                    *const separable = "Separable table format not yet implemented.",
                    *const branch = "Unsupported table option in the spx_tab branch";
  const struct {
    Points::Lookup whole;
    decltype(&SPX_GET_GETVALUEINDX) listed;
    std::vector<std::pair<int32_t, const char*>> unknown;
  } cases[] = {{SPX_GET_GETVALUE,
                SPX_GET_GETVALUEINDX,
                {{200, plain}, {0, plain}, {-300, plain}, {301, plain}, {400, separable}}},
               {SPX_GET_GETVALUEDBL, nullptr, {{7, plain}, {400, separable}}},
               {SPX_TAB_GETVALUE, SPX_TAB_GETVALUEINDX, {{200, branch}, {1, branch}, {400, separable}}},
               {SPX_GET_INTEGRATE, SPX_GET_INTEGRATEINDX, {{100, plain}, {200, plain}, {400, plain}}}};
  Pools pools;
  Table table = addTable(pools, {{kTemperature, false, false, Scale::Logarithm, 0.1}}, {{1, 1}, {2, 10}});
  Points points(20);
  std::iota(points.temperature.begin(), points.temperature.end(), 1.0);
  const Points before = points;
  const int32_t count = 2, list[] = {3, 4};
  for (const auto& c : cases)
    for (const auto& [option, text] : c.unknown) {
      table.option = option;
      points.look(c.whole, pools, table);
      expectEnd(text);
      if (c.listed != nullptr) points.look(c.listed, pools, table, &count, list), expectEnd(text);
      EXPECT_TRUE(points.value == before.value && points.dTemperature == before.dTemperature &&
                  points.temperature == before.temperature);
    }
  const int32_t n = 0, option = 5; // also without points, and without derivatives
  SPX_GET_GETVAL(nullptr, nullptr, nullptr, &n, &option, nullptr, nullptr, nullptr, nullptr);
  expectEnd(plain);
}

TEST(Tables, TheBuilderSaysWhatIsWrong) {
  Pools pools;
  const Variable logarithm = {kTemperature, false, false, Scale::Logarithm, 1},
                 root = {state(1), false, false, Scale::Root};
  EXPECT_THROW(addTable(pools, {{}}, {}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {}, {{1}}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {{}}, {{1, 2}, {1, 2, 3}}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {{}}, {{1, kNaN}}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {logarithm, logarithm}, {{1, 2, 3}}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {root}, {{1, -2}}), std::invalid_argument);
  EXPECT_THROW(addTable(pools, {{kTemperature, false, false, Scale::Logarithm, 0}}, {{1, 2}}), std::invalid_argument);
  EXPECT_THROW(addRegularTable(pools, false, {}, {}), std::invalid_argument);
  EXPECT_THROW(addRegularTable(pools, true, {{0, 1, 3}}, {1, 2}), std::invalid_argument);
  EXPECT_TRUE(pools.ints.empty() && pools.reals.empty());
}

// ---- accessors

TEST(Tables, ConductivityAndIdentifiers) {
  const double constants[] = {1, 2, 3, 4, 5, 6};
  const int32_t n = 3;
  const struct {
    decltype(&SPX_GET_CONSTCONDUCTIVITY2D) fill;
    int32_t ncons;
    std::vector<double> K;
  } cases[] = {{SPX_GET_CONSTCONDUCTIVITY2D, 1, {1, 0, 0, 1}},
               {SPX_GET_CONSTCONDUCTIVITY2D, 2, {1, 0, 0, 2}},
               {SPX_GET_CONSTCONDUCTIVITY2D, 3, {1, 3, 3, 2}},
               {SPX_GET_CONSTCONDUCTIVITY3D, 1, {1, 0, 0, 0, 1, 0, 0, 0, 1}},
               {SPX_GET_CONSTCONDUCTIVITY3D, 3, {1, 0, 0, 0, 2, 0, 0, 0, 3}},
               {SPX_GET_CONSTCONDUCTIVITY3D, 6, {1, 4, 6, 4, 2, 5, 6, 5, 3}}};
  for (const auto& c : cases) {
    double K[27];
    c.fill(&n, &c.ncons, constants, K);
    for (std::size_t k = 0; k < 3 * c.K.size(); ++k) EXPECT_EQ(K[k], c.K[k / 3]);
  }
  int32_t ids[4];
  SPX_GET_SOLIDNFORCID(ids), SPX_GET_SHELLNFORCID(ids + 1), SPX_GET_BEAMNFORCID(ids + 2), SPX_GET_USERNFORCID(ids + 3);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(ids[k], k + 1);
}

} // namespace
