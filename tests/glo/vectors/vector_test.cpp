// Vectors, fills and systems of three equations.
#include "glo.h"
#include "tests/support/call.h"
#include "tests/support/random.h"

namespace {

using namespace sharedanalysis::test;

TEST(Vectors, ElementwiseOperations) {
  const Values a = {1, -2, 3}, b = {4, 5, -6}, c = {0.5, 2, 1}, d = {2, 2, 2};
  const int32_t list[] = {3, 1};
  Values r(3);
  const auto gives = [&](auto kernel, const Values& expected, const auto&... arguments) {
    call(kernel, 3, r, arguments...);
    EXPECT_EQ(r, expected);
  };
  gives(GLO_UTI_VADDR, {5, 3, -3}, a, b);
  gives(GLO_UTI_VSUBR, {-3, -7, 9}, a, b);
  gives(GLO_UTI_VMULTR, {4, -10, -18}, a, b);
  gives(GLO_UTI_VMULTADDR, {6, -14, -12}, a, d);
  gives(GLO_UTI_V2MULTADDR, {9, -14, -4}, a, d, c, d);
  gives(GLO_UTI_VDIRECTMULTR, {4.5, -28, -4}, c);
  gives(GLO_UTI_VSCALER, {0.5, -1, 1.5}, 0.5, a);
  gives(GLO_UTI_VSCALEADDR, {2.5, -5, 7.5}, 2.0, a);
  gives(GLO_UTI_VADDC, {3, 0, 5}, 2.0, a);
  gives(GLO_UTI_VECTOREQUATION, {4, -1.5, 3}, 2.0, a, 0.5, b);
  gives(GLO_UTI_MAXR, {4, 5, 3}, a, b);
  gives(GLO_UTI_MINR, {1, -2, -6}, a, b);
  call(GLO_UTI_VCOPYRINDX, 3, 2, list, b, r);
  EXPECT_EQ(r, (Values{4, -2, -6}));
  call(GLO_UTI_COPYR, 3, a, r);
  EXPECT_EQ(r, a);
}

TEST(Vectors, SumsHaveTheDocumentedOrder) {
  Random random(11);
  for (int32_t n : {1, 7, 8, 9, 63, 64, 65, 250, 999, 1000, 1001, 5000}) {
    Values a(n);
    std::vector<int32_t> whole(n);
    double part[8] = {}, sum = 0, more = 3;
    uint32_t expected = 0;
    int32_t total = 0;
    for (int i = 0; i < n; ++i) {
      part[i % 8] += a[i] = random.uniform(-1, 1) / 3; // all bits in use: no sum is exact
      expected += static_cast<uint32_t>(whole[i] = random.integer(-1000000000, 1000000000));
    }
    call(GLO_UTI_VSUMR, n, sum, a);
    EXPECT_EQ(sum, ((part[0] + part[1]) + (part[2] + part[3])) + ((part[4] + part[5]) + (part[6] + part[7])));
    call(GLO_UTI_VSUMR1, n, more, a);
    EXPECT_EQ(more, 3 + sum);
    call(GLO_UTI_VSUMI, n, total, whole);
    EXPECT_EQ(total, static_cast<int32_t>(expected));
  }
}

TEST(Vectors, ExtremaOfArrays) {
  // largest, least, and least that is not zero, which stays as it was where all are zero
  const auto extrema = [](const Values& a) {
    Values found(3, 9);
    int k = 0;
    for (auto kernel : {GLO_UTI_MAXARRAYR, GLO_UTI_MINARRAYR, GLO_UTI_MINNONZEROR})
      call(kernel, static_cast<int32_t>(a.size()), a, found[k++]);
    return found;
  };
  Random random(12);
  for (int n : {1, 5, 8, 17, 300}) {
    Values a(n);
    for (double& value : a) value = random.integer(0, 3) == 0 ? 0.0 : random.uniform(-1, 1);
    a[n / 2] = -2;
    EXPECT_EQ(extrema(a), (Values{*std::max_element(a.begin(), a.end()), -2, -2}));
    for (int at = 0; at < n; ++at) { // a NaN anywhere shows
      Values spoiled = a;
      spoiled[at] = kNaN;
      for (double value : extrema(spoiled)) EXPECT_TRUE(std::isnan(value)) << at;
    }
  }
  EXPECT_EQ(extrema({0, 3, 0, 2, -0.0}), (Values{3, 0, 2}));
  EXPECT_EQ(extrema({0, -0.0, 0}), (Values{0, 0, 9}));
  EXPECT_EQ(extrema({0, kInf}), (Values{kInf, 0, kInf}));
}

TEST(Vectors, BlocksOfVectors) {
  const Values A = {3, 0, 4, 5, 0, 12}, B = {1, 2, 1, 2, 1, 2}, s = {2, -1};
  Values r(6), dot(2);
  call(GLO_UTI_VMULTR3D, 2, r, s, A);
  EXPECT_EQ(r, (Values{6, 0, 8, -5, 0, -12}));
  call(GLO_UTI_VECTORDOTPRODUCT3D, 2, dot, A, B);
  EXPECT_EQ(dot, (Values{7, 34}));
  call(GLO_UTI_VECTORDOTPRODUCT2D, 2, dot, A, B);
  EXPECT_EQ(dot, (Values{7, 10}));
  // unit length whatever the length was
  for (double scale : {1.0, 1e-300, 1e300, 1e-200}) {
    Values v = {2 * scale, -3 * scale, 6 * scale}, w = {-3 * scale, 4 * scale};
    call(GLO_UTI_VNORMALIZE, 1, v);
    call(GLO_UTI_VNORMALIZE2, 1, w);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(v[k], (k == 0 ? 2 : k == 1 ? -3 : 6) / 7.0, 3e-16);
    for (int k = 0; k < 2; ++k) EXPECT_NEAR(w[k], (k == 0 ? -3 : 4) / 5.0, 3e-16);
  }
  Values zero = {0, -0.0, 1e-310}, along = {-5, 0, 0, 0, -5, 0, 0, 0, -5};
  call(GLO_UTI_VNORMALIZE, 1, zero);
  EXPECT_EQ(zero, Values(3));
  call(GLO_UTI_VNORMALIZE, 3, along);
  EXPECT_EQ(along, (Values{-1, 0, 0, 0, -1, 0, 0, 0, -1}));
}

TEST(Fills, OfEveryType) {
  const auto gives = [](auto filled, auto value, auto kernel, const auto&... arguments) {
    std::fill(filled.begin(), filled.end(), 9);
    call(kernel, 5, arguments..., filled);
    for (std::size_t k = 0; k < filled.size(); ++k) EXPECT_EQ(filled[k], k < 5 ? value : 9) << k;
    return filled[0];
  };
  const Values r(8);
  const std::vector<int32_t> i(8);
  EXPECT_TRUE(std::signbit(gives(r, -0.0, GLO_UTI_BROADCASTR, -0.0)));
  gives(r, 2.5, GLO_UTI_BROADCASTRDBL, 2.5);
  EXPECT_FALSE(std::signbit(gives(r, 0.0, GLO_UTI_BROADCAST0D)));
  gives(r, 0.0, GLO_UTI_BROADCAST0R);
  gives(i, 7, GLO_UTI_BROADCASTI, 7);
  gives(i, 0, GLO_UTI_BROADCAST0I);
  gives(i, 7, GLO_UTI_BROADCASTL, 7);
  gives(std::vector<float>(8), 0.0F, GLO_UTI_BROADCAST0S);
  Values first(5), second(5), block(6), wide(8, 9);
  call(GLO_UTI_BROADCAST2R, 4, 2.5, first, second);
  EXPECT_EQ(first, (Values{2.5, 2.5, 2.5, 2.5, 0}));
  EXPECT_EQ(second, first);
  call(GLO_UTI_BROADCASTNAN, 4, first);
  EXPECT_TRUE(std::isnan(first[0]) && std::isnan(first[3]) && first[4] == 0);
  call(GLO_UTI_BROADCASTR3D, 2, Values{1, 2, 3}, block);
  EXPECT_EQ(block, (Values{1, 1, 2, 2, 3, 3}));
  call(GLO_UTI_GENBROADCASTR, 3, 2, 4, 2.5, wide);
  EXPECT_EQ(wide, (Values{2.5, 2.5, 2.5, 9, 2.5, 2.5, 2.5, 9}));
  const struct {
    int32_t count;
    const char *value, *expected;
    int length, room;
  } texts[] = {{3, "-+", "---defgh", 2, 8},
               {2, "+", "++cdefgh", 1, 8},
               {7, "", "  cdefgh", 0, 2}}; // never beyond the text; no character is a blank
  for (const auto& t : texts) {
    char text[] = "abcdefgh";
    GLO_UTI_BROADCASTC(&t.count, t.value, text, t.length, t.room);
    EXPECT_STREQ(text, t.expected);
  }
}

// ---- three equations

// A x = b by both members and the inverse B, and what is said of A; matrices row fastest.
struct Solved {
  double x[3] = {9, 9, 9}, y[3], B[9], singular[3] = {9, 9, 9};
  Solved(const Values& A, const Values& b) {
    call(GLO_UTI_VSOLVE, 1, A, b, x, singular[0]);
    call(GLO_UTI_VSOLVEDBL, 1, A, b, y, singular[1]);
    call(GLO_UTI_INVERSER, 1, A, B, singular[2]);
    for (int k = 0; k < 3; ++k) EXPECT_TRUE(x[k] == y[k] || std::isnan(x[k] + y[k]));
    EXPECT_TRUE(singular[0] == singular[1] && singular[0] == singular[2]);
  }
};

TEST(LinearSystems, SolutionsAndInverses) {
  Random random(13);
  for (int round = 0; round < 20000; ++round) {
    Values A(9), b(3);
    for (double& a : A) a = random.uniform(-1, 1);
    for (double& x : b) x = random.uniform(-1, 1);
    // rows and columns of any scale, zeros on the diagonal
    for (int k = 0; k < 3; ++k) {
      const double row = std::ldexp(1, random.integer(-200, 200));
      for (int j = 0; j < 3; ++j) A[3 * j + k] *= row;
      b[k] *= row;
    }
    if (round % 3 == 0) A[0] = 0;
    if (round % 5 == 0) A[4] = A[0] = 0;
    const Solved s(A, b);
    ASSERT_EQ(s.singular[0], 0);
    for (int i = 0; i < 3; ++i) {
      const auto expectProduct = [&](const double* column, double expected, long double bound, double least) {
        long double residual = -static_cast<long double>(expected), size = least;
        for (int j = 0; j < 3; ++j) {
          const long double term = static_cast<long double>(A[3 * j + i]) * column[j];
          residual += term, size += std::abs(term);
        }
        EXPECT_LE(std::abs(residual), bound * size);
      };
      expectProduct(s.x, b[i], 2e-14L, std::abs(b[i])); // backward stable, row by row
      for (int j = 0; j < 3; ++j) expectProduct(s.B + 3 * j, i == j, 1e-13L, 1);
    }
  }
}

// Rows that differ by e: solved however close they are, as long as the difference is more than rounding; every number is exact.
TEST(LinearSystems, NearlySingularOnesAreSolved) {
  for (const int power : {-10, -33, -48}) {
    const double e = std::ldexp(1, power), bound = 4e-16 / e;
    for (const double row : {1.0, 0x1p-900, 0x1p+900}) {
      const Solved s({row, row, row, row, row + e * row, row, row, row, row + e * row},
                     {6 * row, (6 + 2 * e) * row, (6 + 3 * e) * row});
      EXPECT_EQ(s.singular[0], 0) << power;
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(s.x[k], k + 1, bound) << power;
      EXPECT_NEAR(s.B[8] * row * e, 1, bound) << power;
    }
  }
}

// Zeros where there is no solution, NaN where a coefficient is no number.
TEST(LinearSystems, SingularAndSpoiledOnesSaySo) {
  std::vector<Values> list = {{0, 0, 0, 0, 0, 0, 0, 0, 0},
                              {1, 2, 3, 2, 4, 6, 1, 0, 1},
                              {1, 4, 7, 2, 5, 8, 3, 6, 9},
                              {1, 0, 0, 0, 1, 0, 0, 0, 0},
                              {1e-200, 1e-200, 1e-200, 1e-200, 1e-200, 1e-200, 1, 2, 3}};
  const std::size_t singular = list.size();
  for (const double bad : {kNaN, kInf, -kInf})
    for (int at = 0; at < 9; ++at) {
      list.push_back({1, 0, 2, 0, 3, 0, 1, 0, 1});
      list.back()[at] = bad;
    }
  for (std::size_t k = 0; k < list.size(); ++k) {
    const Solved s(list[k], {1, 2, 3});
    EXPECT_EQ(s.singular[0], 1) << k;
    for (double x : s.x) EXPECT_TRUE(k < singular ? x == 0 : std::isnan(x)) << k;
    for (double x : s.B) EXPECT_TRUE(k < singular ? x == 0 : std::isnan(x)) << k;
  }
}

TEST(LinearSystems, DeterminantsOfTensors) {
  Random random(14);
  for (int round = 0; round < 1000; ++round) {
    const Matrix R = randomRotation(random);
    const double values[3] = {random.uniform(-2, 2), random.uniform(-2, 2), random.uniform(-2, 2)};
    double S[6], det = 0;
    setPrincipal(S, 1, 0, values, R);
    call(GLO_UTI_DET33, 1, S, det);
    EXPECT_NEAR(det, values[0] * values[1] * values[2], 1e-14);
    call(GLO_UTI_DET31, 1, S, det); // its first four components
    EXPECT_NEAR(det, S[2] * (S[0] * S[1] - S[3] * S[3]), 1e-14);
  }
}

} // namespace
