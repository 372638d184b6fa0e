// Brick operators.
#include "bench_case.h"
#include "plain_kernels.h"
#include "spx.h"

#include <cmath>

namespace bench {
namespace {

// dN/dxi, dN/deta, dN/dzeta at the integration point (-1, -1, -1)/sqrt(3).
const std::vector<double>& brickTables() {
  static const std::vector<double> tables = [] {
    constexpr int sign[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    const double at = -1 / std::sqrt(3.0);
    std::vector<double> values;
    for (int d = 0; d < 3; ++d)
      for (const auto& s : sign) {
        double product = s[d] / 8.0;
        for (int c = 0; c < 3; ++c) product *= c == d ? 1 : 1 + at * s[c];
        values.push_back(product);
      }
    return values;
  }();
  return tables;
}
} // namespace

void addBrickCases(std::vector<Case>& list) {
  const auto bricks = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t point = 1, points = 1;
      const double* dN = brickTables().data();
      call(&n, &point, &points, dN, dN + 8, dN + 16, a[0], a[1], a[2], a[3], a[4]);
    };
  };
  const auto fillX = [](int n, const Arrays& a, Random& random) { fillBricks(n, a[0], random); };
  list.push_back(
      {"SPX_OPE_C3D8OPER", {24, 24, 1, 1, 1}, fillX, bricks(SPX_OPE_C3D8OPER), bricks(plain::c3d8oper), 290, 1});
  const auto oneless = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, &n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]); };
  };
  list.push_back({"SPX_OPE_C3D8ROPER2",
                  {24, 24, 1, 1, 1, 1, 32, 1},
                  fillX,
                  oneless(SPX_OPE_C3D8ROPER2),
                  oneless(plain::c3d8roper2),
                  550,
                  2});
  list.push_back({"SPX_OPE_C3DSYMGRAD",
                  {9, 6, 3},
                  [](int n, const Arrays& a, Random& random) { uniform(9 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { SPX_OPE_C3DSYMGRAD(&n, a[0], a[1], a[2]); },
                  [](int32_t n, const Arrays& a) { plain::c3dsymgrad(&n, a[0], a[1], a[2]); },
                  12,
                  0});
}

} // namespace bench
