// Material tables and mass checks of user elements.
#include "bench_case.h"
#include "host/tables/material_table.h"
#include "plain_tables.h"
#include "spx.h"

#include <cmath>

namespace bench {
namespace {

using namespace sharedanalysis::tables;

// Tables live as long as the program; the plain loops read the same rows.
Pools& pools() {
  static Pools instance;
  return instance;
}
const double* rowsOf(const Table& table) {
  return &pools().reals[static_cast<size_t>(pools().ints[static_cast<size_t>(table.header[0])]) - 1];
}

void lookUp(const Table& table, int32_t n, const double* field, const double* temperature, double* value,
            double* dField, double* dTemperature) {
  const int32_t derivatives = 1;
  SPX_GET_GETVALUE(&derivatives, pools().ints.data(), pools().reals.data(), table.header.data(), &n, &table.option,
                   field, nullptr, temperature, value, dField, dTemperature);
}

// Abscissas a little beyond both ends.
auto fillPoints(int arrays, double low, double high) {
  return [=](int n, const Arrays& a, Random& random) {
    for (int k = 0; k < arrays; ++k) uniform(n, a[k], random, low - 0.05 * (high - low), high + 0.05 * (high - low));
  };
}

void addGeneral(std::vector<Case>& list, int rowCount) {
  std::vector<Row> rows;
  for (int r = 0; r < rowCount; ++r) rows.push_back({std::sin(r), r + 0.3 * std::sin(3.0 * r)});
  const Table table = addTable(pools(), {{}}, rows);
  const auto name = "SPX_GET_GETVALUE " + std::to_string(rowCount) + " rows";
  list.push_back(
      {name,
       {1, 1, 1},
       fillPoints(1, 0, rowCount),
       [=](int32_t n, const Arrays& a) { lookUp(table, n, nullptr, a[0], a[1], nullptr, a[2]); },
       [=](int32_t n, const Arrays& a) { plain::tableValue(n, rowCount, rowsOf(table), 0, a[0], a[1], a[2]); },
       9,
       0,
       24,
       (rowCount > 32 ? 5 : 3) + static_cast<int>(std::ceil(std::log2(rowCount))), // a row each step
       peerIf("GSL", peer::gslLine(rowCount, rowsOf(table)))});
}

} // namespace

void addTableCases(std::vector<Case>& list) {
  for (int rows : {5, 20, 33, 200, 100000}) addGeneral(list, rows);

  std::vector<Row> decades;
  for (int r = 0; r < 8; ++r) decades.push_back({1.0 + r * r, std::pow(10.0, r - 3)});
  const Table rates = addTable(pools(), {{kTemperature, false, false, Scale::Logarithm, 1e-3}}, decades);
  list.push_back({"SPX_GET_GETVALUE logarithmic, 8 rows",
                  {1, 1, 1},
                  [](int n, const Arrays& a, Random& random) {
                    for (int i = 0; i < n; ++i) a[0][i] = std::pow(10.0, random.uniform(-3, 4));
                  },
                  [=](int32_t n, const Arrays& a) { lookUp(rates, n, nullptr, a[0], a[1], nullptr, a[2]); },
                  [=](int32_t n, const Arrays& a) { plain::tableValue(n, 8, rowsOf(rates), 1e-3, a[0], a[1], a[2]); },
                  45,
                  2,
                  24,
                  3 + 3});

  std::vector<Row> grid;
  for (int y = 0; y < 6; ++y)
    for (int x = 0; x < 20; ++x) grid.push_back({std::sin(x + 2 * y), 1.0 * x, 1.0 * y});
  const Table two = addTable(pools(), {{kTemperature}, {field(1)}}, grid);
  list.push_back(
      {"SPX_GET_GETVALUE 2 variables, 6 x 20 rows",
       {1, 1, 1, 1, 1},
       [](int n, const Arrays& a, Random& random) {
         uniform(n, a[0], random, -1, 20);
         uniform(n, a[1], random, -0.5, 5.5);
       },
       [=](int32_t n, const Arrays& a) { lookUp(two, n, a[1], a[0], a[2], a[4], a[3]); },
       [=](int32_t n, const Arrays& a) { plain::tableValue2(n, 6, 20, rowsOf(two), a[0], a[1], a[2], a[3], a[4]); },
       30,
       5,
       40,
       23, // steps of three searches, and the ends of three intervals
       peerIf("GSL", peer::gslGrid(6, 20, rowsOf(two)))});

  std::vector<double> values(50);
  for (size_t k = 0; k < 50; ++k) values[k] = std::sin(static_cast<double>(k));
  const Table regular = addRegularTable(pools(), true, {{0.0, 0.5, 50}}, values);
  list.push_back({"SPX_GET_GETTAB 50 points",
                  {1, 1, 1},
                  fillPoints(1, 0, 25),
                  [=](int32_t n, const Arrays& a) {
                    const int32_t derivatives = 1, none = 0;
                    SPX_GET_GETTAB(&derivatives, pools().ints.data(), pools().reals.data(), regular.header.data(), &n,
                                   &regular.option, &none, &none, &none, &none, nullptr, nullptr, a[0], a[1], nullptr,
                                   a[2]);
                  },
                  [=](int32_t n, const Arrays& a) {
                    const double* v = &pools().reals[static_cast<size_t>(regular.header[2]) - 1];
                    plain::regularTable(n, 50, 0, 2, v, a[0], a[1], a[2]);
                  },
                  10,
                  0,
                  24,
                  2});

  const auto diagonal = [](int n, const Arrays& a, Random& random) {
    std::fill_n(a[0], 576 * n, 0.0);
    for (int node = 0; node < 8; ++node)
      for (int e = 0; e < n; ++e) {
        const double m = random.uniform(1, 2);
        for (int i = 3 * node; i < 3 * node + 3; ++i) a[0][25 * i * n + e] = m;
      }
  };
  list.push_back({"SPX_OPE_USERELEMPROCESSMASS 24 x 24",
                  {576, 1},
                  diagonal,
                  [](int32_t n, const Arrays& a) {
                    static const std::vector<int32_t> three(8, 3), numbers(200, 1);
                    const int32_t ndof = 24, nodes = 8;
                    SPX_OPE_USERELEMPROCESSMASS(&n, &ndof, &nodes, three.data(), numbers.data(), a[0]);
                  },
                  [](int32_t n, const Arrays& a) { plain::massChecks(n, 8, 3, a[0], a[1]); },
                  600,
                  0});
}

} // namespace bench
