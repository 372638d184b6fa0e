// Vectors, fills, systems of three equations, and the tables of data movement that a loop can check.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

namespace {

using namespace sharedanalysis::test;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

TEST(Vectors, ElementwiseOperations) {
  const int32_t n = 3;
  const double a[] = {1, -2, 3}, b[] = {4, 5, -6}, c[] = {0.5, 2, 1}, d[] = {2, 2, 2}, two = 2, half = 0.5;
  const auto expect = [](const double* found, double x, double y, double z) {
    EXPECT_TRUE(found[0] == x && found[1] == y && found[2] == z) << found[0] << " " << found[1] << " " << found[2];
  };
  double r[3] = {};
  GLO_UTI_VADDR(&n, r, a, b), expect(r, 5, 3, -3);
  GLO_UTI_VSUBR(&n, r, a, b), expect(r, -3, -7, 9);
  GLO_UTI_VMULTR(&n, r, a, b), expect(r, 4, -10, -18);
  GLO_UTI_VMULTADDR(&n, r, a, d), expect(r, 6, -14, -12);
  GLO_UTI_V2MULTADDR(&n, r, a, d, c, d), expect(r, 9, -14, -4);
  GLO_UTI_VDIRECTMULTR(&n, r, c), expect(r, 4.5, -28, -4);
  GLO_UTI_VSCALER(&n, r, &half, a), expect(r, 0.5, -1, 1.5);
  GLO_UTI_VSCALEADDR(&n, r, &two, a), expect(r, 2.5, -5, 7.5);
  GLO_UTI_VADDC(&n, r, &two, a), expect(r, 3, 0, 5);
  GLO_UTI_VECTOREQUATION(&n, r, &two, a, &half, b), expect(r, 4, -1.5, 3);
  GLO_UTI_MAXR(&n, r, a, b), expect(r, 4, 5, 3);
  GLO_UTI_MINR(&n, r, a, b), expect(r, 1, -2, -6);
  const double spoiled[] = {kNaN, 1, 1};
  for (auto pick : {GLO_UTI_MAXR, GLO_UTI_MINR})
    for (const auto& [x, y] : {std::pair(a, spoiled), std::pair(spoiled, a)}) {
      pick(&n, r, x, y);
      EXPECT_TRUE(std::isnan(r[0]) && !std::isnan(r[1]));
    }
  const int32_t list[] = {3, 1}, count = 2;
  double copy[] = {7, 7, 7};
  GLO_UTI_VCOPYRINDX(&n, &count, list, a, copy), expect(copy, 1, 7, 3);
}

TEST(Vectors, SumsHaveTheDocumentedOrder) {
  Random random(11);
  for (int32_t n : {1, 7, 8, 9, 63, 64, 65, 250, 999, 1000, 1001, 5000}) {
    std::vector<double> a(static_cast<std::size_t>(n));
    std::vector<int32_t> whole(a.size());
    double part[8] = {}, sum = 0, more = 3;
    uint32_t expected = 0;
    int32_t total = 0;
    for (int i = 0; i < n; ++i) {
      a[static_cast<std::size_t>(i)] = random.uniform(-1, 1) / 3; // all bits in use: no sum is exact
      part[i % 8] += a[static_cast<std::size_t>(i)];
      whole[static_cast<std::size_t>(i)] = random.integer(-1000000000, 1000000000);
      expected += static_cast<uint32_t>(whole[static_cast<std::size_t>(i)]);
    }
    GLO_UTI_VSUMR(&n, &sum, a.data());
    EXPECT_EQ(sum, ((part[0] + part[1]) + (part[2] + part[3])) + ((part[4] + part[5]) + (part[6] + part[7])));
    GLO_UTI_VSUMR1(&n, &more, a.data());
    EXPECT_EQ(more, 3 + sum);
    GLO_UTI_VSUMI(&n, &total, whole.data());
    EXPECT_EQ(total, static_cast<int32_t>(expected));
  }
}

TEST(Vectors, ExtremaOfArrays) {
  Random random(12);
  for (int32_t n : {1, 5, 8, 17, 300}) {
    std::vector<double> a(static_cast<std::size_t>(n));
    for (double& value : a) value = random.integer(0, 3) == 0 ? 0.0 : random.uniform(-1, 1);
    a[static_cast<std::size_t>(n) / 2] = -2;
    double least = 9, most = 9, nonzero = 9;
    GLO_UTI_MAXARRAYR(&n, a.data(), &most);
    GLO_UTI_MINARRAYR(&n, a.data(), &least);
    GLO_UTI_MINNONZEROR(&n, a.data(), &nonzero);
    EXPECT_EQ(most, *std::max_element(a.begin(), a.end()));
    EXPECT_EQ(least, -2);
    EXPECT_EQ(nonzero, -2);
    for (int32_t at = 0; at < n; ++at) { // a NaN anywhere shows
      const double kept = a[static_cast<std::size_t>(at)];
      a[static_cast<std::size_t>(at)] = kNaN;
      double found[3] = {};
      GLO_UTI_MAXARRAYR(&n, a.data(), &found[0]);
      GLO_UTI_MINARRAYR(&n, a.data(), &found[1]);
      GLO_UTI_MINNONZEROR(&n, a.data(), &found[2]);
      for (double value : found) EXPECT_TRUE(std::isnan(value)) << at;
      a[static_cast<std::size_t>(at)] = kept;
    }
  }
  const double positive[] = {0, 3, 0, 2, -0.0}, zeros[] = {0, -0.0, 0}, infinite[] = {0, kInf};
  const int32_t five = 5, three = 3, two = 2;
  double result = 9;
  GLO_UTI_MINNONZEROR(&five, positive, &result);
  EXPECT_EQ(result, 2);
  GLO_UTI_MINNONZEROR(&three, zeros, &result);
  EXPECT_EQ(result, 2);
  GLO_UTI_MINNONZEROR(&two, infinite, &result);
  EXPECT_EQ(result, kInf);
}

TEST(Vectors, BlocksOfVectors) {
  const int32_t n = 2;
  const double A[] = {3, 0, 4, 5, 0, 12}, B[] = {1, 2, 1, 2, 1, 2}, s[] = {2, -1};
  double r[6];
  GLO_UTI_VMULTR3D(&n, r, s, A);
  EXPECT_TRUE(r[0] == 6 && r[1] == 0 && r[2] == 8 && r[3] == -5 && r[5] == -12);
  GLO_UTI_VECTORDOTPRODUCT3D(&n, r, A, B);
  EXPECT_TRUE(r[0] == 7 && r[1] == 34);
  GLO_UTI_VECTORDOTPRODUCT2D(&n, r, A, B);
  EXPECT_TRUE(r[0] == 7 && r[1] == 10);
  // unit length whatever the length was
  const int32_t one = 1, three = 3;
  for (double scale : {1.0, 1e-300, 1e300, 1e-200}) {
    double v[] = {2 * scale, -3 * scale, 6 * scale}, w[] = {-3 * scale, 4 * scale};
    GLO_UTI_VNORMALIZE(&one, v);
    GLO_UTI_VNORMALIZE2(&one, w);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(v[k], (k == 0 ? 2 : k == 1 ? -3 : 6) / 7.0, 3e-16);
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(w[k], (k == 0 ? -3 : 4) / 5.0, 3e-16);
  }
  double zero[] = {0, -0.0, 1e-310};
  GLO_UTI_VNORMALIZE(&one, zero);
  EXPECT_TRUE(zero[0] == 0 && zero[1] == 0 && zero[2] == 0);
  double along[] = {-5, 0, 0, 0, -5, 0, 0, 0, -5};
  GLO_UTI_VNORMALIZE(&three, along);
  for (int k = 0; k < 9; ++k) EXPECT_EQ(along[k], k % 4 == 0 ? -1 : 0);
}

TEST(Fills, OfEveryType) {
  const int32_t n = 5, seven = 7, three = 3, two = 2, ld = 4;
  const double value = 2.5, vector[] = {1, 2, 3};
  std::vector<double> r(12, 9), r2(12, 9);
  const auto all = [](const auto& a, std::size_t count, auto v) {
    for (std::size_t k = 0; k < a.size(); ++k) EXPECT_EQ(a[k], k < count ? v : static_cast<decltype(v)>(9)) << k;
  };
  GLO_UTI_BROADCASTRDBL(&n, &value, r.data()), all(r, 5, 2.5);
  GLO_UTI_BROADCAST0R(&n, r.data()), all(r, 5, 0.0);
  GLO_UTI_BROADCAST2R(&n, &value, r.data(), r2.data()), all(r, 5, 2.5), all(r2, 5, 2.5);
  GLO_UTI_BROADCASTNAN(&n, r.data());
  EXPECT_TRUE(std::isnan(r[0]) && std::isnan(r[4]) && r[5] == 9);
  std::vector<int32_t> i(8, 9);
  GLO_UTI_BROADCASTI(&n, &seven, i.data()), all(i, 5, 7);
  GLO_UTI_BROADCAST0I(&n, i.data()), all(i, 5, 0);
  GLO_UTI_BROADCASTL(&n, &seven, i.data()), all(i, 5, 7);
  std::vector<float> f(8, 9);
  GLO_UTI_BROADCAST0S(&n, f.data()), all(f, 5, 0.0F);
  char text[] = "abcdefgh";
  GLO_UTI_BROADCASTC(&three, "-+", text, 2, 8);
  EXPECT_STREQ(text, "---defgh");
  GLO_UTI_BROADCASTC(&two, "+", text, 1, 8); // a single character
  EXPECT_STREQ(text, "++-defgh");
  GLO_UTI_BROADCASTC(&seven, "", text, 0, 2); // never beyond the text; no character is a blank
  EXPECT_STREQ(text, "  -defgh");
  std::vector<double> block(6, 9), wide(8, 9);
  GLO_UTI_BROADCASTR3D(&two, vector, block.data());
  EXPECT_EQ(block, (std::vector<double>{1, 1, 2, 2, 3, 3}));
  GLO_UTI_GENBROADCASTR(&three, &two, &ld, &value, wide.data());
  EXPECT_EQ(wide, (std::vector<double>{2.5, 2.5, 2.5, 9, 2.5, 2.5, 2.5, 9}));
}

// ---- three equations

struct System {
  double A[9], b[3]; // row fastest
};

TEST(LinearSystems, SolutionsAndInverses) {
  Random random(13);
  const int32_t one = 1;
  for (int round = 0; round < 20000; ++round) {
    System s{};
    for (double& a : s.A) a = random.uniform(-1, 1);
    for (double& b : s.b) b = random.uniform(-1, 1);
    // rows and columns of any scale, zeros on the diagonal
    for (int k = 0; k < 3; ++k) {
      const double row = std::ldexp(1, random.integer(-200, 200));
      for (int j = 0; j < 3; ++j) s.A[3 * j + k] *= row;
      s.b[k] *= row;
    }
    if (round % 3 == 0) s.A[0] = 0;
    if (round % 5 == 0) s.A[4] = s.A[0] = 0;
    double x[3], B[9], singular = 9, inverseSingular = 9;
    GLO_UTI_VSOLVE(&one, s.A, s.b, x, &singular);
    GLO_UTI_INVERSER(&one, s.A, B, &inverseSingular);
    ASSERT_EQ(singular, 0);
    ASSERT_EQ(inverseSingular, 0);
    for (int i = 0; i < 3; ++i) {
      long double residual = -static_cast<long double>(s.b[i]), size = std::abs(s.b[i]);
      for (int j = 0; j < 3; ++j) {
        residual += static_cast<long double>(s.A[3 * j + i]) * x[j];
        size += std::abs(static_cast<long double>(s.A[3 * j + i]) * x[j]);
      }
      EXPECT_LE(std::abs(residual), 2e-14L * size); // backward stable, row by row
      for (int j = 0; j < 3; ++j) {
        long double product = i == j ? -1 : 0, weight = 0;
        for (int k = 0; k < 3; ++k) {
          product += static_cast<long double>(s.A[3 * k + i]) * B[3 * j + k];
          weight += std::abs(static_cast<long double>(s.A[3 * k + i]) * B[3 * j + k]);
        }
        EXPECT_LE(std::abs(product), 1e-13L * (1 + weight));
      }
    }
  }
}

// Rows that differ by e: solved however close they are, as long as the difference is more than rounding; every number is exact.
TEST(LinearSystems, NearlySingularOnesAreSolved) {
  const int32_t one = 1;
  for (const int power : {-10, -33, -48}) {
    const double e = std::ldexp(1, power), bound = 4e-16 / e;
    for (const double row : {1.0, 0x1p-900, 0x1p+900}) {
      const double A[] = {row, row, row, row, row + e * row, row, row, row, row + e * row};
      const double b[] = {6 * row, (6 + 2 * e) * row, (6 + 3 * e) * row};
      double x[3], B[9], singular = 9, inverse = 9;
      GLO_UTI_VSOLVE(&one, A, b, x, &singular);
      GLO_UTI_INVERSER(&one, A, B, &inverse);
      EXPECT_TRUE(singular == 0 && inverse == 0) << power;
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(x[k], k + 1, bound) << power;
      EXPECT_NEAR(B[8] * row * e, 1, bound) << power;
    }
  }
}

TEST(LinearSystems, CoefficientsThatAreNoNumbersLeaveNaN) {
  const int32_t one = 1;
  for (const double bad : {kNaN, kInf, -kInf})
    for (int at = 0; at < 9; ++at) {
      double A[] = {1, 0, 2, 0, 3, 0, 1, 0, 1}, x[3], y[3], B[9], flags[3];
      A[at] = bad;
      const double b[] = {1, 2, 3};
      GLO_UTI_VSOLVE(&one, A, b, x, &flags[0]);
      GLO_UTI_VSOLVEDBL(&one, A, b, y, &flags[1]);
      GLO_UTI_INVERSER(&one, A, B, &flags[2]);
      for (const double flag : flags) EXPECT_EQ(flag, 1) << at;
      for (int k = 0; k < 3; ++k) EXPECT_TRUE(std::isnan(x[k]) && std::isnan(y[k])) << at;
      for (const double value : B) EXPECT_TRUE(std::isnan(value)) << at;
    }
}

TEST(LinearSystems, SingularOnesSaySo) {
  const int32_t one = 1;
  const double cases[][9] = {{0, 0, 0, 0, 0, 0, 0, 0, 0},
                             {1, 2, 3, 2, 4, 6, 1, 0, 1},
                             {1, 4, 7, 2, 5, 8, 3, 6, 9},
                             {1, 0, 0, 0, 1, 0, 0, 0, 0},
                             {1e-200, 1e-200, 1e-200, 1e-200, 1e-200, 1e-200, 1, 2, 3}};
  for (const auto& A : cases) {
    const double b[] = {1, 2, 3};
    double x[] = {9, 9, 9}, B[9], singular = 0, inverse = 0;
    GLO_UTI_VSOLVEDBL(&one, A, b, x, &singular);
    GLO_UTI_INVERSER(&one, A, B, &inverse);
    EXPECT_EQ(singular, 1);
    EXPECT_EQ(inverse, 1);
    for (double value : x) EXPECT_EQ(value, 0);
    for (double value : B) EXPECT_EQ(value, 0);
  }
}

TEST(LinearSystems, DeterminantsOfTensors) {
  Random random(14);
  const int32_t one = 1;
  for (int round = 0; round < 1000; ++round) {
    Matrix R;
    randomRotation(random, R);
    const double values[3] = {random.uniform(-2, 2), random.uniform(-2, 2), random.uniform(-2, 2)};
    double S[6], det = 0;
    setPrincipal(S, 1, 0, values, R);
    GLO_UTI_DET33(&one, S, &det);
    EXPECT_NEAR(det, values[0] * values[1] * values[2], 1e-14);
    const double plane[4] = {S[0], S[1], S[2], S[3]};
    GLO_UTI_DET31(&one, plane, &det);
    EXPECT_NEAR(det, S[2] * (S[0] * S[1] - S[3] * S[3]), 1e-14);
  }
}

// ---- data movement by elements and by parts of records

TEST(ElementRecords, AreGatheredNodeByNodeAndAddedBack) {
  using Gather = void (*)(const int32_t*, const int32_t*, const int32_t*, const int32_t*, double*, const double*);
  const struct {
    Gather gather;
    int nodes;
  } cases[] = {{GLO_UTI_C3D10MGATHER, 10},   {GLO_UTI_C3D10MFACEGATHER, 6}, {GLO_UTI_COH2DGATHERR, 4},
               {GLO_UTI_COH3DGATHEREXFV, 8}, {GLO_UTI_ACOINFGATHERR, 4},    {GLO_UTI_GENGATHERRCONTSHELL, 8}};
  Random random(15);
  const int32_t n = 7, ncomp = 3, ld = 5, entities = 20;
  std::vector<double> G(ld * entities);
  for (std::size_t k = 0; k < G.size(); ++k) G[k] = static_cast<double>(k);
  for (const auto& c : cases) {
    const std::size_t points = static_cast<std::size_t>(n) * static_cast<std::size_t>(c.nodes);
    std::vector<int32_t> map(points);
    for (int32_t& entity : map) entity = random.integer(1, entities);
    std::vector<double> L(3 * points, -1);
    c.gather(&n, &ncomp, &ld, map.data(), L.data(), G.data());
    for (std::size_t k = 0; k < 3; ++k)
      for (std::size_t p = 0; p < points; ++p) ASSERT_EQ(L[k * points + p], (map[p] - 1) * ld + static_cast<double>(k));
    if (c.gather != GLO_UTI_GENGATHERRCONTSHELL) continue;
    std::vector<double> sums(G.size(), 0), expected(G.size(), 0);
    const int32_t unread = 0;
    GLO_OPE_GENASSEMCONTSHELL(&n, &ncomp, &ld, &unread, sums.data(), L.data(), map.data());
    for (std::size_t k = 0; k < 3; ++k)
      for (std::size_t p = 0; p < points; ++p)
        expected[static_cast<std::size_t>((map[p] - 1) * ld) + k] += L[k * points + p];
    EXPECT_EQ(sums, expected); // whole numbers: the order of adding does not show
  }
}

TEST(PartsOfRecords, MoveAlone) {
  const int32_t n = 2, ld = 7, ncomp = 2, comp = 3, unread = -5, map[] = {2, 1};
  std::vector<double> G(14);
  for (std::size_t k = 0; k < 14; ++k) G[k] = static_cast<double>(k + 1);
  double L[6];
  GLO_UTI_EXFVGATHERR(&n, &ncomp, &ld, map, L, G.data());
  EXPECT_TRUE(L[0] == 8 && L[1] == 1 && L[2] == 9 && L[3] == 2);
  GLO_UTI_GATHERLASTCOMPR(&n, &ld, map, L, G.data());
  EXPECT_TRUE(L[0] == 14 && L[1] == 7);
  GLO_UTI_ROTVECTGATHERR(&n, &ld, map, L, G.data());
  EXPECT_TRUE(L[0] == 11 && L[1] == 4 && L[4] == 13 && L[5] == 6);
  const double in[] = {10, 20, 30, 40};
  for (auto scatter : {GLO_UTI_INFLSCATTERR, GLO_UTI_EULINFLSCATTERR, GLO_UTI_EXCHSCATTERR}) {
    std::vector<double> target(14, 0);
    scatter(&n, &ncomp, &ld, map, in, target.data());
    EXPECT_TRUE(target[7] == 10 && target[8] == 30 && target[0] == 20 && target[1] == 40 && target[2] == 0);
  }
  std::vector<double> sum(14, 1);
  GLO_OPE_GENASSEM1(&n, &comp, &ld, &unread, sum.data(), in, map);
  GLO_OPE_GENASSEM2(&n, &unread, &ld, &unread, sum.data(), in, map);
  GLO_OPE_GENASSEMACOINF(&n, &unread, &ld, &unread, sum.data(), in, map);
  EXPECT_EQ(sum, (std::vector<double>{21, 41, 21, 1, 1, 1, 21, 11, 31, 11, 1, 1, 1, 11}));
  const int32_t whole[] = {2147483647, 5, 1, 1}, same[] = {1, 1};
  int32_t target[] = {1, 0, 0, 0, 0, 0, 0};
  GLO_OPE_GENASSEMINT(&n, &ncomp, &ld, &unread, target, whole, same);
  EXPECT_TRUE(target[0] == -2147483647 + 4 && target[1] == 2);
}

TEST(FixedRecords, MassesFluxesAndMoments) {
  const int32_t n = 2, unread = 0, map[] = {3, 1};
  double G[18], L[12];
  for (int k = 0; k < 18; ++k) G[k] = k + 1;
  for (auto gather : {GLO_ASM_GATHERMASS, GLO_ASM_GATHERHFLUX}) {
    gather(&n, &unread, L, G, map);
    EXPECT_TRUE(L[0] == 3 && L[1] == 1);
  }
  GLO_ASM_GATHERNIR2NDMOM(&n, &unread, L, G, map);
  for (int k = 0; k < 6; ++k) EXPECT_TRUE(L[k] == 13 + k && L[6 + k] == 1 + k);
  double back[18] = {};
  GLO_ASM_SCATTERNIR2NDMOM(&n, &unread, L, back, map);
  for (int k = 0; k < 18; ++k) EXPECT_EQ(back[k], k >= 6 && k < 12 ? 0 : G[k]);
  const double mass[] = {5, 6};
  int components = 0;
  for (auto scatter : {GLO_ASM_SCATTERMASS1, GLO_ASM_SCATTERMASS2, GLO_ASM_SCATTERMASS3}) {
    ++components;
    double target[9] = {};
    scatter(&n, &unread, mass, target, map);
    for (int k = 0; k < 3 * components; ++k)
      EXPECT_EQ(target[k], k < components ? 6 : k >= 2 * components ? 5 : 0) << components;
  }
}

} // namespace
