// Principal values, directions and the tensor square root against tensors built from known values and directions.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

namespace {

using namespace sharedanalysis::test;

// Tensors with known values: spread, nearly equal, graded and zero ones, at several scales.
struct KnownTensors {
  int n = 0;
  std::vector<std::array<double, 3>> values; // increasing
  std::vector<double> S, scale;

  explicit KnownTensors(uint64_t seed, bool positive = false) {
    Random random(seed);
    const std::array<double, 3> patterns[] = {
        {-2, 1, 5}, {1, 1, 2}, {-3, 2, 2}, {1, 1 + 1e-15, 1 - 1e-15}, {0, 0, 1}, {1e-8, 1, 1 + 1e-9}, {1e-14, 1e-7, 1},
        {-1, 0, 1}, {3, 3, 3}, {0, 0, 0}};
    for (double size : {1.0, 1e-300, 1e-150, 1e-3, 7e4, 1e150, 1e300})
      for (const auto& pattern : patterns)
        for (int repeat = 0; repeat < 6; ++repeat) {
          std::array<double, 3> v = pattern;
          if (repeat > 2)
            for (double& x : v) x += random.uniform(-1, 1);
          for (double& x : v) x = (positive ? std::abs(x) : x) * size;
          std::sort(v.begin(), v.end());
          values.push_back(v);
          scale.push_back(std::max({std::abs(v[0]), std::abs(v[2])}));
        }
    n = static_cast<int>(values.size());
    S.resize(6 * n);
    for (int i = 0; i < n; ++i) {
      Matrix R;
      randomRotation(random, R);
      setPrincipal(S.data(), n, i, {values[i][0] / scaleOf(i), values[i][1] / scaleOf(i), values[i][2] / scaleOf(i)},
                   R);
      for (int k = 0; k < 6; ++k) S[k * n + i] *= scaleOf(i);
    }
  }
  double scaleOf(int i) const { return scale[i] > 0 ? scale[i] : 1; }
  double s(int i, int a, int b) const { return S[kS33[a][b] * n + i]; }
};

// Directions are orthonormal and right-handed to rounding, whatever their accuracy.
void expectRotation(const std::vector<double>& V, int n, int i) {
  const auto v = [&](int a, int b) { return V[(b * 3 + a) * n + i]; };
  for (int b = 0; b < 3; ++b)
    for (int c = b; c < 3; ++c)
      EXPECT_NEAR(v(0, b) * v(0, c) + v(1, b) * v(1, c) + v(2, b) * v(2, c), b == c ? 1 : 0, 4e-15);
  EXPECT_NEAR(v(0, 2), v(1, 0) * v(2, 1) - v(2, 0) * v(1, 1), 4e-15);
}

TEST(BoundedJacobi, ValuesAndDirectionsWithinTheContract) {
  const KnownTensors t(31);
  std::vector<double> P(3 * t.n), V(9 * t.n), P2(P), V2(V);
  GLO_UTI_PRINCS33(&t.n, t.S.data(), P.data(), V.data());
  GLO_UTI_PRINCS33DBL(&t.n, t.S.data(), P2.data(), V2.data());
  EXPECT_EQ(P, P2);
  EXPECT_EQ(V, V2);
  for (int i = 0; i < t.n; ++i) {
    expectRotation(V, t.n, i);
    std::array<double, 3> sorted = {P[i], P[t.n + i], P[2 * t.n + i]};
    std::sort(sorted.begin(), sorted.end());
    for (int k = 0; k < 3; ++k) {
      EXPECT_NEAR(sorted[k] / t.scaleOf(i), t.values[i][k] / t.scaleOf(i), 5e-7) << i;
      for (int a = 0; a < 3; ++a) { // A v = lambda v, to the bound of the last rotations times the spread
        double residual = -P[k * t.n + i] * V[(k * 3 + a) * t.n + i] / t.scaleOf(i);
        for (int b = 0; b < 3; ++b) residual += t.s(i, a, b) / t.scaleOf(i) * V[(k * 3 + b) * t.n + i];
        EXPECT_NEAR(residual, 0, 1e-3) << i;
      }
    }
  }
}

TEST(BoundedJacobi, EveryDirectionStaysNearestItsAxisAndDiagonalsStayPut) {
  const int n = 2;
  const std::vector<double> S = {3, 0, -1, 0, 2, 0, 0, 0, 0, 0, 0, 0};
  std::vector<double> P(3 * n), V(9 * n);
  GLO_UTI_PRINCS33(&n, S.data(), P.data(), V.data());
  EXPECT_EQ(P, (std::vector<double>{3, 0, -1, 0, 2, 0}));
  for (int k = 0; k < 9; ++k)
    for (int i = 0; i < n; ++i) EXPECT_EQ(V[k * n + i], k % 4 == 0 ? 1 : 0);

  // one rotation in the plane (1,2) of at most 45 degrees
  Random random(32);
  for (int repeat = 0; repeat < 200; ++repeat) {
    const int one = 1;
    const double angle = random.uniform(-0.78, 0.78), c = std::cos(angle), s = std::sin(angle);
    const double a = random.uniform(-2, 2), b = random.uniform(-2, 2);
    const double tensor[6] = {a * c * c + b * s * s, a * s * s + b * c * c, 0.3, (a - b) * c * s, 0, 0};
    double p[3], v[9];
    GLO_UTI_PRINCS33(&one, tensor, p, v);
    EXPECT_NEAR(p[0], a, 1e-14);
    EXPECT_NEAR(p[1], b, 1e-14);
    EXPECT_EQ(p[2], 0.3);
    EXPECT_NEAR(v[0], c, 1e-7);
    EXPECT_NEAR(v[1], s, 3e-8 + 1e-15 / std::abs(a - b));
    EXPECT_NEAR(v[3], -s, 3e-8 + 1e-15 / std::abs(a - b));
  }
}

TEST(SortedJacobi, IncreasingValuesAtEveryScale) {
  const KnownTensors t(34);
  std::vector<double> P(3 * t.n);
  GLO_UTI_EIG33VECTOR(&t.n, t.S.data(), P.data());
  for (int i = 0; i < t.n; ++i) {
    EXPECT_LE(P[i], P[t.n + i]);
    EXPECT_LE(P[t.n + i], P[2 * t.n + i]);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(P[k * t.n + i] / t.scaleOf(i), t.values[i][k] / t.scaleOf(i), 5e-7) << i;
  }
}

TEST(Trigonometric, ValuesAndTheirOrder) {
  const KnownTensors t(35);
  std::vector<double> P(3 * t.n);
  GLO_UTI_EIG33ANAL(&t.n, t.S.data(), P.data());
  for (int i = 0; i < t.n; ++i) {
    std::array<double, 3> sorted = {P[i], P[t.n + i], P[2 * t.n + i]};
    std::sort(sorted.begin(), sorted.end());
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(sorted[k] / t.scaleOf(i), t.values[i][k] / t.scaleOf(i), 4e-8) << i;
    const double gap = (t.values[i][1] - t.values[i][0]) / t.scaleOf(i),
                 upper = (t.values[i][2] - t.values[i][1]) / t.scaleOf(i);
    if (gap > 1e-4 && upper > 1e-4) { // largest, smallest, middle
      EXPECT_EQ(P[i], sorted[2]) << i;
      EXPECT_EQ(P[t.n + i], sorted[0]) << i;
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(sorted[k] / t.scaleOf(i), t.values[i][k] / t.scaleOf(i), 4e-12) << i;
    }
  }
}

TEST(Trigonometric, EndCasesDiagonalsAndZeros) {
  const double d[3] = {1, 1, 1}; // uniaxial states along (1,1,1)/sqrt 3, exact in binary up to scaling by 3
  const int n = 6;
  std::vector<double> S(6 * n), P(3 * n);
  const auto set = [&](int i, std::array<double, 6> s) {
    for (int k = 0; k < 6; ++k) S[k * n + i] = s[k];
  };
  set(0, {d[0], d[1], d[2], 1, 1, 1});       // values 0, 0, 3
  set(1, {-1, -1, -1, -1, -1, -1});          // values -3, 0, 0
  set(2, {5, -1, 3, 0, 0, 0});               // diagonal
  set(3, {2, 2, 2, 0, 0, 0});                // hydrostatic: the values are equal
  set(4, {0, 0, 0, 0, 0, 0});                // zero
  set(5, {1e-320, 0, 0, 1e-320, 0, 1e-320}); // below the normal numbers counts as zero
  GLO_UTI_EIG33ANAL(&n, S.data(), P.data());
  const std::array<double, 3> expected[n] = {{0, 0, 3}, {-3, 0, 0}, {5, -1, 3}, {2, 2, 2}, {0, 0, 0}, {0, 0, 0}};
  for (int i = 0; i < n; ++i)
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(P[k * n + i], expected[i][k], 1e-15) << i << ' ' << k;
  EXPECT_EQ(P[0], P[n]) << "double value first";
  EXPECT_EQ(P[n + 1], P[2 * n + 1]) << "double value last";
  EXPECT_EQ(P[2], 5);
}

TEST(Plane, ClosedFormsAgreeWithTheCircle) {
  Random random(36);
  const int n = 300;
  std::vector<double> S(4 * n), S21(3 * n), P(3 * n), V(9 * n), values(3 * n), P21(2 * n), V21(4 * n);
  std::vector<double> a(n), b(n), angles(n);
  for (int i = 0; i < n; ++i) {
    a[i] = random.uniform(-2, 2), b[i] = i % 7 == 0 ? a[i] : random.uniform(-2, 2);
    angles[i] = i % 5 == 0 ? 0 : random.uniform(-0.785, 0.785);
    const double c = std::cos(angles[i]), s = std::sin(angles[i]);
    S[i] = S21[i] = a[i] * c * c + b[i] * s * s;
    S[n + i] = S21[n + i] = a[i] * s * s + b[i] * c * c;
    S[3 * n + i] = S21[2 * n + i] = i % 7 == 0 || i % 5 == 0 ? 0 : (a[i] - b[i]) * c * s;
    S[2 * n + i] = random.uniform(-2, 2);
  }
  GLO_UTI_PRINCS31(&n, S.data(), P.data(), V.data());
  GLO_UTI_PRINCS21(&n, S21.data(), P21.data(), V21.data());
  GLO_UTI_EIG31ANAL(&n, S.data(), values.data());
  for (int i = 0; i < n; ++i) {
    EXPECT_NEAR(P[i], a[i], 1e-14);
    EXPECT_NEAR(P[n + i], b[i], 1e-14);
    EXPECT_NEAR(values[i], a[i], 1e-14);
    EXPECT_NEAR(values[n + i], b[i], 1e-14);
    EXPECT_EQ(P[2 * n + i], S[2 * n + i]);
    EXPECT_EQ(values[2 * n + i], S[2 * n + i]);
    const double tolerance = a[i] == b[i] ? 1 : 1e-14 / std::abs(a[i] - b[i]);
    EXPECT_NEAR(V[n + i], std::sin(angles[i]), tolerance);
    EXPECT_GE(V[i], std::sqrt(0.5) * (1 - 1e-15));
    const double v[9] = {V[i], V[n + i], 0, -V[n + i], V[i], 0, 0, 0, 1};
    for (int k = 0; k < 9; ++k) EXPECT_EQ(V[k * n + i], v[k]);
    for (int k = 0; k < 2; ++k) EXPECT_EQ(P21[k * n + i], P[k * n + i]);
    const int plane[4] = {0, 1, 3, 4};
    for (int k = 0; k < 4; ++k) EXPECT_EQ(V21[k * n + i], V[plane[k] * n + i]);
  }
  const int one = 1;
  const double upright[4] = {0, 1, 9, 0};
  double p[3], v[9];
  GLO_UTI_PRINCS31(&one, upright, p, v);
  EXPECT_EQ(p[0], 0);
  EXPECT_EQ(p[1], 1);
  EXPECT_EQ(v[0], 1);
}

TEST(SquareRoot, SquaresBackAtEveryScaleAndKeepsSmallValues) {
  const KnownTensors t(37, true);
  std::vector<double> V(6 * t.n), inPlace = t.S;
  GLO_UTI_SQRTV(&t.n, t.S.data(), V.data());
  GLO_UTI_SQRTV(&t.n, inPlace.data(), inPlace.data());
  EXPECT_EQ(V, inPlace);
  double worst = 0;
  for (int i = 0; i < t.n; ++i) {
    const long double root = std::sqrt(static_cast<long double>(t.scaleOf(i)));
    const auto v = [&](int a, int b) { return V[kS33[a][b] * t.n + i] / root; };
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) {
        const long double square = v(a, 0) * v(0, b) + v(a, 1) * v(1, b) + v(a, 2) * v(2, b);
        worst = std::max(worst, static_cast<double>(std::abs(square - t.s(i, a, b) / t.scaleOf(i))));
      }
  }
  EXPECT_LT(worst, 4e-15);
}

TEST(SquareRoot, StretchOfAKnownDeformationAndNegativeValues) {
  Random random(38);
  const int n = 400;
  std::vector<double> S(6 * n), exact(6 * n), V(6 * n);
  for (int i = 0; i < n; ++i) {
    Matrix R;
    randomRotation(random, R);
    const double spread = i % 4 == 0 ? 1e-9 : 1;
    double stretch[3], squared[3];
    for (int k = 0; k < 3; ++k) {
      stretch[k] = 1 + spread * random.uniform(-0.7, 2);
      squared[k] = stretch[k] * stretch[k];
    }
    setPrincipal(exact.data(), n, i, stretch, R);
    setPrincipal(S.data(), n, i, squared, R);
  }
  GLO_UTI_SQRTV(&n, S.data(), V.data());
  for (int k = 0; k < 6 * n; ++k) EXPECT_NEAR(V[k], exact[k], 4e-15);

  const int two = 2;
  for (int small = 0; small < 3; ++small) {
    double tensors[12] = {2, 2, 2, 2, 2, 2}, roots[12];
    tensors[2 * small] = -1e-16;
    tensors[2 * small + 1] = -1e-12;
    GLO_UTI_SQRTV(&two, tensors, roots);
    for (int k = 0; k < 3; ++k)
      EXPECT_NEAR(roots[2 * k], k == small ? 0 : std::sqrt(2), 1e-15) << "negative by rounding";
    for (int k = 0; k < 6; ++k) EXPECT_TRUE(std::isnan(roots[2 * k + 1]));
  }
}

TEST(TensorStorage, CountsAndPackedTriangle) {
  const auto counts = [](int32_t code, int32_t family) {
    std::array<int32_t, 3> c{-7, -7, -7};
    GLO_UTI_NUMTENSORCOMP(&code, &family, &c[0], &c[1], &c[2]);
    return c;
  };
  using Counts = std::array<int32_t, 3>;
  const std::pair<int32_t, Counts> table[] = {{100, {3, 1, 2}}, {200, {3, 1, 2}}, {300, {3, 3, 4}}, {400, {1, 0, 0}},
                                              {500, {0, 0, 0}}, {600, {3, 1, 0}}, {700, {1, 1, 2}}, {800, {0, 0, 0}},
                                              {900, {1, 2, 4}}, {-1, {0, 0, 0}}};
  for (const auto& [code, expected] : table) {
    EXPECT_EQ(counts(code, 0), expected) << code;
    const bool kept = code == 100 || code == 700 || code == 900;
    EXPECT_EQ(counts(code, 25090), kept ? expected : (Counts{3, 1, 0})) << code;
  }
  int32_t expected = 0;
  for (int32_t j = 1; j <= 6; ++j)
    for (int32_t i = 1; i <= j; ++i) {
      ++expected;
      EXPECT_EQ(GLO_UTI_SQ2TRSTORAGE(&i, &j), expected);
      EXPECT_EQ(GLO_UTI_SQ2TRSTORAGE(&j, &i), expected);
    }
}

} // namespace
