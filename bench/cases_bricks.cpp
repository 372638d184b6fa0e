// Brick operators, strain output and output filters.
#include "bench_case.h"
#include "plain_bricks.h"
#include "plain_kernels.h"
#include "spx.h"

#include <cmath>
#include <map>

namespace bench {
namespace {

// dN/dxi, dN/deta, dN/dzeta at the eight integration points (-1, -1, -1)/sqrt(3), ..., times a factor.
const std::vector<double>& brickTables(int factor = 1) {
  static std::map<int, std::vector<double>> all;
  std::vector<double>& tables = all[factor];
  if (!tables.empty()) return tables;
  constexpr int sign[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                              {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
  for (int d = 0; d < 3; ++d)
    for (const auto& point : sign)
      for (const auto& s : sign) {
        double product = factor * s[d] / 8.0;
        for (int c = 0; c < 3; ++c) product *= c == d ? 1 : 1 + point[c] * s[c] / std::sqrt(3.0);
        tables.push_back(product);
      }
  return tables;
}
} // namespace

void addBrickCases(std::vector<Case>& list) {
  const auto bricks = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t point = 1, points = 8;
      const double* dN = brickTables().data();
      call(&n, &point, &points, dN, dN + 64, dN + 128, a[0], a[1], a[2], a[3], a[4]);
    };
  };
  const auto fillX = [](int n, const Arrays& a, Random& random) { fillBricks(n, a[0], random); };
  list.push_back(
      {"SPX_OPE_C3D8OPER", {24, 24, 1, 1, 1}, fillX, bricks(SPX_OPE_C3D8OPER), bricks(plain::c3d8oper), 290, 1});
  const double* const tables[] = {brickTables().data(), brickTables().data() + 64, brickTables().data() + 128};
  list.back().peers = peerIf("xsimd", peer::c3d8oper(tables));
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

  const auto twelve = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      call(&n, &n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9]);
    };
  };
  list.push_back({"SPX_OPE_C3DH8OPER",
                  {24, 24, 24, 1, 1, 1, 1, 12, 32, 1},
                  fillX,
                  twelve(SPX_OPE_C3DH8OPER),
                  twelve(plain::c3dh8oper),
                  600,
                  2});
  const auto average = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t point = 1, points = 8;
      const double* dN = brickTables(8).data();
      call(&n, &point, &points, dN, dN + 64, dN + 128, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]);
    };
  };
  list.push_back({"SPX_OPE_C3D8IOPER",
                  {24, 24, 1, 1, 24, 1, 1, 1},
                  fillX,
                  average(SPX_OPE_C3D8IOPER),
                  average(plain::c3d8ioper),
                  2500,
                  3});
  const auto area = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t face = 3;
      call(&n, &n, &face, a[0], a[1], a[2], a[3]);
    };
  };
  list.push_back({"SPX_OPE_C3D8FACEAREA",
                  {24, 1, 3, 1},
                  fillX,
                  area(SPX_OPE_C3D8FACEAREA),
                  area(plain::c3d8facearea),
                  170,
                  {0, 9},
                  8 * (12 + 1 + 3 + 1)});
  const auto gradient = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, &n, a[0], a[1], a[2]); };
  };
  list.push_back({"SPX_OPE_C3DH8TGRAD",
                  {24, 8, 3},
                  [](int n, const Arrays& a, Random& random) {
                    uniform(24 * n, a[0], random, -1, 1);
                    uniform(8 * n, a[1], random, 280, 320);
                  },
                  gradient(SPX_OPE_C3DH8TGRAD),
                  gradient(plain::c3dh8tgrad),
                  60,
                  0});
  const auto heat = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, a[0], a[1], a[2], a[3], a[4], a[5]); };
  };
  list.push_back({"SPX_ASM_C3D8RTDIVER",
                  {24, 8, 3, 1, 8, 1},
                  [](int n, const Arrays& a, Random& random) {
                    fillBricks(n, a[0], random);
                    for (int k = 1; k < 4; ++k) uniform((k == 1 ? 8 : k == 2 ? 3 : 1) * n, a[k], random, 1, 2);
                  },
                  heat(SPX_ASM_C3D8RTDIVER),
                  heat(plain::c3d8rtdiver),
                  450,
                  1});
  list.push_back({"SPX_OPE_STRETCHSTRAIN3DH8 logarithmic",
                  {6, 6, 3},
                  [](int n, const Arrays& a, Random& random) { fillStretch(n, a[0], random); },
                  [](int32_t n, const Arrays& a) {
                    const int32_t logarithmic = 3;
                    SPX_OPE_STRETCHSTRAIN3DH8(&n, &logarithmic, a[0], a[2], a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::logarithmicStrain(&n, a[0], a[1]); },
                  4 * 3 * 63 + 3 * 31 + 2 * 45 + 180,
                  {4 * 3 + 3 * 2 + 1, 1}});
  // four sections of order 2 on a tensor: Butterworth, at 1/50 of the rate
  static constexpr int32_t components = 6, sections = 4, unread = 0;
  static constexpr double coefficients[20] = {.0036, .0072, .0036, -1.864, .8784, .0036, .0072, .0036, -1.864, .8784,
                                              .0036, .0072, .0036, -1.864, .8784, .0036, .0072, .0036, -1.864, .8784};
  list.push_back(
      {"SPX_OPE_FILTERFLD 4 sections, 6 values",
       {6, 60},
       [](int n, const Arrays& a, Random& random) {
         uniform(6 * n, a[0], random, -1, 1);
         uniform(60 * n, a[1], random, -1, 1);
       },
       [](int32_t n, const Arrays& a) {
         SPX_OPE_FILTERFLD(&n, &components, &unread, &sections, a[0], &unread, coefficients, a[1]);
       },
       [](int32_t n, const Arrays& a) { plain::filterfld(&n, &components, &sections, a[0], coefficients, a[1]); },
       6 * 4 * 9,
       0,
       0,
       0,
       {{"Eigen", peer::filter(components, sections, coefficients)}}});
  list.push_back({"SPX_OPE_ONLYOPERATORFLD maximum, 6 values",
                  {6, 6},
                  [](int n, const Arrays& a, Random& random) { uniform(6 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) {
                    const int32_t maximum = 1;
                    SPX_OPE_ONLYOPERATORFLD(&n, &components, &maximum, a[0], a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::runningMaximum(&n, &components, a[0], a[1]); },
                  6,
                  0});
}

} // namespace bench
