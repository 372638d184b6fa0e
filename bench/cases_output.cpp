// Records of results: principal values with quaternions, strains, orientations.
#include "bench_case.h"
#include "glo.h"
#include "plain_output.h"
#include "spx.h"

namespace bench {
namespace {

constexpr int32_t kOne = 1, kTwo = 2, kThree = 3, kFour = 4, kSix = 6, kNone = 0;

// Direction cosines of random turns in the columns of an axes array.
void fillAxes(int n, double* axes, Random& random) {
  for (int i = 0; i < n; ++i) {
    const sharedanalysis::test::Matrix R = sharedanalysis::test::randomRotation(random);
    for (int b = 0; b < 3; ++b)
      for (int a = 0; a < 3; ++a) axes[(3 * b + a) * n + i] = R[a][b];
  }
}

} // namespace

void addOutputCases(std::vector<Case>& list) {
  list.push_back({"GLO_UTI_ODBPRINC31QUAT",
                  {4, 3, 2},
                  [](int n, const Arrays& a, Random& random) { uniform(4 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) {
                    int32_t cursor = 1;
                    GLO_UTI_ODBPRINC31QUAT(&n, &cursor, a[0], &kThree, &kTwo, a[1], a[2]);
                  },
                  [](int32_t n, const Arrays& a) { plain::odbprinc31quat(n, a[0], a[1], a[2]); },
                  40,
                  {5, 3}});
  // two of three points
  list.push_back({"GLO_UTI_ODBPRINC31QUATELSET",
                  {4, 3, 2, 1},
                  [](int n, const Arrays& a, Random& random) {
                    uniform(4 * n, a[0], random, -1, 1);
                    for (int k = 0; k < n; ++k) integers(a[3])[k] = k + 1 + k / 2;
                  },
                  [](int32_t n, const Arrays& a) {
                    int32_t cursor = 1;
                    GLO_UTI_ODBPRINC31QUATELSET(&n, &kOne, &n, &kOne, &n, integers(a[3]), &cursor, a[0], &kThree, &kTwo,
                                                a[1], a[2], &n);
                  },
                  [](int32_t n, const Arrays& a) {
                    plain::odbprinc31quatelset(n, (2 * n + 1) / 3, integers(a[3]), a[0], a[1], a[2]);
                  },
                  27,
                  {3, 2},
                  50});
  list.push_back({"GLO_UTI_ODBPRINC33QUATMULT",
                  {6, 4, 3, 4},
                  [](int n, const Arrays& a, Random& random) {
                    fillTensors(n, a, random);
                    uniform(4 * n, a[1], random, -1, 1);
                  },
                  [](int32_t n, const Arrays& a) {
                    int32_t cursor = 1;
                    GLO_UTI_ODBPRINC33QUATMULT(&n, &cursor, a[0], a[1], &kThree, &kFour, a[2], a[3]);
                  },
                  [](int32_t n, const Arrays& a) { plain::odbprinc33quatmult(n, a[0], a[1], a[2], a[3]); },
                  4 * 3 * 40 + 90,
                  {4 * 3 * 3 + 1, 4 * 3 * 2 + 1}});
  list.push_back({"GLO_UTI_ODB3DSTRAIN",
                  {6, 6},
                  fillTensors,
                  [](int32_t n, const Arrays& a) {
                    int32_t cursor = 1;
                    GLO_UTI_ODB3DSTRAIN(&n, &cursor, a[0], &kSix, a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::odb3dstrain(n, a[0], a[1]); },
                  3,
                  0});
  list.push_back({"SPX_ODB_ORIENT3D",
                  {4, 4},
                  [](int n, const Arrays& a, Random& random) { uniform(4 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) {
                    int32_t counter = 1;
                    SPX_ODB_ORIENT3D(&n, &counter, a[0], a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::orient3d(n, a[0], a[1]); },
                  8,
                  0});
  list.push_back({"SPX_ODB_ORIENT2DBEAM",
                  {4, 2},
                  [](int n, const Arrays& a, Random& random) { uniform(4 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) {
                    int32_t counter = 1;
                    SPX_ODB_ORIENT2DBEAM(&n, &counter, a[0], &kOne, a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::orient2dbeam(n, a[0], a[1]); },
                  15,
                  {4, 2}});
  list.push_back({"SPX_ODB_ORIENTCNE3D",
                  {18, 8},
                  [](int n, const Arrays& a, Random& random) {
                    // columns 11 22 33 12 23 31 21 32 13 of turns
                    constexpr int column[] = {0, 6, 5, 3, 1, 7, 8, 4, 2};
                    std::vector<double> axes(static_cast<std::size_t>(9 * n));
                    for (int side = 0; side < 2; ++side) {
                      fillAxes(n, axes.data(), random);
                      for (int k = 0; k < 9; ++k)
                        std::copy_n(axes.data() + k * n, n, a[0] + (9 * side + column[k]) * n);
                    }
                  },
                  [](int32_t n, const Arrays& a) {
                    int32_t counter = 1;
                    SPX_ODB_ORIENTCNE3D(&n, &counter, &kOne, &kFour, &kNone, nullptr, nullptr, nullptr, a[0], a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::orientcne3d(n, a[0], a[1]); },
                  36,
                  {2, 2}});
  list.push_back({"SPX_ODB_ORIENTREBAR",
                  {9, 4},
                  [](int n, const Arrays& a, Random& random) { fillAxes(n, a[0], random); },
                  [](int32_t n, const Arrays& a) {
                    int32_t counter = 1;
                    SPX_ODB_ORIENTREBAR(&n, &counter, a[0], a[1]);
                  },
                  [](int32_t n, const Arrays& a) { plain::orientrebar(n, a[0], a[1]); },
                  50,
                  {1, 1}});
}

} // namespace bench
