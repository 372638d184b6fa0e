// Accurate principal values and the functions made of them.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace {

using namespace sharedanalysis::test;
using Real = long double;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

// Tensors that are hard in some way, by their entries 11 22 33 12 23 13.
std::vector<std::array<double, 6>> hardTensors() {
  Random random(6);
  std::vector<std::array<double, 6>> list = {{1, 2, 3, 0, 0, 0},
                                             {3, 3, 3, 0, 0, 0},
                                             {0, 0, 0, 0, 0, 0},
                                             {0, 0, 0, 1, 1, 1},
                                             {1, 1, 1, 1, 1, 1},
                                             {1, 1, 1, 1e-16, 1e-16, 0},
                                             {1, 1 + 1e-15, 1, 1e-9, 0, 0},
                                             {1e300, -1e300, 1, 1e299, 1, 5},
                                             {1e-300, 2e-300, 3e-300, 1e-300, 0, 1e-301},
                                             {0, 0, 0, 1e-160, 1e-170, 0},
                                             {1, 1e-8, 1e-16, 1e-4, 1e-12, 1e-8},
                                             {1e16, 1, 1e-16, 1, 1, 1},
                                             {-1, -1, -1, 1e-8, 1e-8, 1e-8}};
  for (int k = 0; k < 3000; ++k) {
    std::array<double, 6> t{};
    Matrix R;
    randomRotation(random, R);
    const double scale = std::ldexp(1, random.integer(-300, 300));
    double values[3] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
    if (k % 3 == 0) values[1] = values[0] * (1 + std::ldexp(random.uniform(-1, 1), -random.integer(20, 52)));
    if (k % 5 == 0) values[2] *= std::ldexp(1, -random.integer(0, 60));
    setPrincipal(t.data(), 1, 0, values, R);
    for (double& entry : t) entry *= scale;
    list.push_back(t);
  }
  return list;
}

double magnitude(const double* t, int n) {
  double largest = 0;
  for (int k = 0; k < n; ++k) largest = std::max(largest, std::abs(t[k]));
  return largest;
}

// Largest component of S V - V P and of V' V - 1, in 80 bits, for a point.
void expectAxes(const double* S, const double* P, const double* V, double bound) {
  constexpr int at[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};
  const double scale = magnitude(S, 6);
  for (int b = 0; b < 3; ++b)
    for (int a = 0; a < 3; ++a) {
      Real residual = -static_cast<Real>(V[3 * b + a]) * P[b], product = a == b ? -1 : 0;
      for (int k = 0; k < 3; ++k) {
        residual += static_cast<Real>(S[at[a][k]]) * V[3 * b + k];
        product += static_cast<Real>(V[3 * a + k]) * V[3 * b + k];
      }
      EXPECT_LE(std::abs(residual), bound * scale);
      EXPECT_LE(std::abs(product), 2e-15);
    }
}

// Principal values from the characteristic polynomial in 80 bits would be no better than these; sums of powers are.
void expectInvariants(const double* S, const double* P) {
  const Real scale = magnitude(S, 6) > 0 ? magnitude(S, 6) : 1;
  Real s[6], p[3];
  for (int k = 0; k < 6; ++k) s[k] = S[k] / scale;
  for (int k = 0; k < 3; ++k) p[k] = P[k] / scale;
  const Real trace = s[0] + s[1] + s[2],
             square = s[0] * s[0] + s[1] * s[1] + s[2] * s[2] + 2 * (s[3] * s[3] + s[4] * s[4] + s[5] * s[5]);
  const Real determinant =
      s[0] * (s[1] * s[2] - s[4] * s[4]) - s[3] * (s[3] * s[2] - s[4] * s[5]) + s[5] * (s[3] * s[4] - s[1] * s[5]);
  EXPECT_NEAR(static_cast<double>(p[0] + p[1] + p[2] - trace), 0, 2e-15);
  EXPECT_NEAR(static_cast<double>(p[0] * p[0] + p[1] * p[1] + p[2] * p[2] - square), 0, 1e-14);
  EXPECT_NEAR(static_cast<double>(p[0] * p[1] * p[2] - determinant), 0, 1e-14);
}

TEST(Eigenvalues, InSpaceToMachinePrecision) {
  const int32_t one = 1;
  for (const auto& t : hardTensors()) {
    double P[3], V[9], alone[3], falling[3], analytic[3], analyticV[9], bits[3];
    GLO_UTI_EIG33V(&one, t.data(), P, V);
    expectAxes(t.data(), P, V, 4e-15);
    expectInvariants(t.data(), P);
    EXPECT_TRUE(P[0] <= P[1] && P[1] <= P[2]);
    GLO_UTI_EIG33(&one, t.data(), alone);
    GLO_UTI_EIG33S(&one, t.data(), falling);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(alone[k], P[k]);
      EXPECT_EQ(falling[k], P[2 - k]);
    }
    GLO_UTI_EIG33ANALV(&one, t.data(), analytic, analyticV);
    GLO_UTI_EIG33ANAL(&one, t.data(), bits);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(analytic[k], bits[k]);
    expectAxes(t.data(), analytic, analyticV, 3e-8); // the trigonometric values carry that error where two nearly meet
  }
}

// Small values of positive tensors that are nearly diagonal after scaling keep their own digits.
TEST(Eigenvalues, SmallValuesOfPositiveTensorsKeepTheirDigits) {
  const int32_t one = 1;
  const double S[] = {1, 1e-10, 1e-20, 0.5e-5, 0.5e-15, 0.5e-10};
  // exact to first order: Schur complements of the scaled tensor with ones on its diagonal and 1/2 beside it
  double P[3];
  GLO_UTI_EIG33(&one, S, P);
  EXPECT_NEAR(P[1] / 0.75e-10, 1, 1e-9);
  EXPECT_NEAR(P[0] / (1e-20 * (1 - (0.25 + 0.25 - 0.25) / 0.75)), 1, 1e-9);
}

TEST(Eigenvalues, InThePlane) {
  Random random(7);
  const int32_t one = 1;
  for (int round = 0; round < 3000; ++round) {
    const double scale = std::ldexp(1, random.integer(-400, 400));
    double t[4] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
    if (round % 4 == 0) t[1] = t[0];
    if (round % 5 == 0) t[3] *= 1e-17;
    if (round % 7 == 0) t[3] = 0;
    for (double& c : t) c *= scale;
    const double space[6] = {t[0], t[1], t[2], t[3], 0, 0}, plane[3] = {t[0], t[1], t[3]};
    double P[3], V[9], expected[3], values[3], p[2], v[4], alone[2], falling[2], listed[2];
    GLO_UTI_EIG31V(&one, t, P, V);
    expectAxes(space, P, V, 4e-15);
    GLO_UTI_EIG33(&one, space, expected);
    GLO_UTI_EIG31VECTOR(&one, t, values);
    for (int k = 0; k < 3; ++k) {
      EXPECT_NEAR(P[k], expected[k], 2e-15 * magnitude(space, 6));
      EXPECT_EQ(values[k], P[k]);
    }
    GLO_UTI_EIG21V(&one, plane, p, v);
    GLO_UTI_EIG21VECTOR(&one, plane, alone);
    GLO_UTI_EIG21S(&one, plane, falling);
    GLO_UTI_EIG21VECTORINDX(&one, &one, &one, plane, listed);
    EXPECT_LE(p[0], p[1]);
    for (int b = 0; b < 2; ++b) {
      EXPECT_EQ(alone[b], p[b]);
      EXPECT_EQ(listed[b], p[b]);
      EXPECT_EQ(falling[b], p[1 - b]);
      const double x = v[2 * b], y = v[2 * b + 1], size = magnitude(plane, 3);
      EXPECT_NEAR(plane[0] * x + plane[2] * y, p[b] * x, 2e-15 * size);
      EXPECT_NEAR(plane[2] * x + plane[1] * y, p[b] * y, 2e-15 * size);
      EXPECT_NEAR(x * x + y * y, 1, 1e-15);
    }
  }
}

TEST(Eigenvalues, OfPairsOfTensors) {
  Random random(8);
  const int32_t one = 1;
  constexpr int at[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};
  for (int round = 0; round < 2000; ++round) {
    double A[6], B[6], P[3], V[9], alone[3];
    Matrix R;
    randomRotation(random, R);
    const double b[3] = {random.uniform(0.1, 2), random.uniform(0.1, 2), random.uniform(0.1, 2)};
    setPrincipal(B, 1, 0, b, R);
    for (double& entry : A) entry = random.uniform(-1, 1);
    GLO_UTI_GENEIG33(&one, A, B, P, V);
    GLO_UTI_GENEIG33VECTOR(&one, A, B, alone);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(alone[k], P[k]);
      for (int i = 0; i < 3; ++i) {
        Real residual = 0;
        for (int j = 0; j < 3; ++j)
          residual += (static_cast<Real>(A[at[i][j]]) - static_cast<Real>(P[k]) * B[at[i][j]]) * V[3 * k + j];
        EXPECT_NEAR(static_cast<double>(residual), 0, 4e-13);
      }
      EXPECT_NEAR(V[3 * k] * V[3 * k] + V[3 * k + 1] * V[3 * k + 1] + V[3 * k + 2] * V[3 * k + 2], 1, 2e-15);
    }
    EXPECT_TRUE(P[0] <= P[1] && P[1] <= P[2]);
  }
  // B is not positive definite
  const double A[6] = {1, 2, 3, 0, 0, 0}, B[6] = {1, 1, 1, 1, 0, 0};
  double P[3], V[9];
  GLO_UTI_GENEIG33(&one, A, B, P, V);
  for (double value : P) EXPECT_TRUE(std::isnan(value));
  for (double value : V) EXPECT_TRUE(std::isnan(value));
}

TEST(Eigenvalues, SpoiledPointsLeaveNaN) {
  const int32_t one = 1;
  for (double bad : {kNaN, kInf, -kInf})
    for (int place = 0; place < 6; ++place) {
      double S[6] = {1, 2, 3, 0.5, 0.25, 0.125}, P[3], V[9];
      S[place] = bad;
      GLO_UTI_EIG33V(&one, S, P, V);
      for (double value : P) EXPECT_TRUE(std::isnan(value)) << place << " " << bad;
      for (double value : V) EXPECT_TRUE(std::isnan(value)) << place << " " << bad;
    }
}

// ---- functions

TEST(TensorFunctions, LogarithmsOfStretches) {
  Random random(9);
  const int32_t one = 1;
  for (int round = 0; round < 5000; ++round) {
    Matrix R;
    randomRotation(random, R);
    const double size = std::ldexp(1, -random.integer(0, 30));
    double strain[3], values[3], V[6], L[6], expected[6];
    for (int k = 0; k < 3; ++k) {
      strain[k] = size * random.uniform(-1, 1) * (round % 3 == 0 ? 3 : 0.4);
      values[k] = std::exp(strain[k]);
    }
    setPrincipal(V, 1, 0, values, R);
    GLO_UTI_LOGV(&one, V, L);
    setPrincipal(expected, 1, 0, strain, R);
    // V itself carries half a unit of rounding in each component, which its smallest value magnifies
    const double smallest = *std::min_element(values, values + 3), largest = *std::max_element(values, values + 3);
    for (int k = 0; k < 6; ++k)
      EXPECT_NEAR(L[k], expected[k], 2e-15 * largest / smallest + 4e-15 * magnitude(strain, 3));
  }
  // a tensor whose entries are exact: ln of 1 + 1e-10 in a direction, to all digits
  const double e = 0x1p-33, near[6] = {1 + e, 1, 1, 0, 0, 0};
  double L[6];
  GLO_UTI_LOGV(&one, near, L);
  EXPECT_NEAR(L[0] / std::log1p(e), 1, 1e-15);
  const double sheared[6] = {1, 1, 1, e, 0, 0}; // values 1 + e and 1 - e
  GLO_UTI_LOGV(&one, sheared, L);
  EXPECT_NEAR(L[3] / std::atanh(e), 1, 2e-15);
  EXPECT_NEAR(L[0] / (0.5 * std::log1p(-e * e)), 1, 1e-5); // second order: lost in rounding of the first
  for (double bad : {0.0, -1.0}) {
    const double S[6] = {1, bad, 1, 0, 0, 0};
    GLO_UTI_LOGV(&one, S, L);
    for (double value : L) EXPECT_TRUE(std::isnan(value));
  }
}

TEST(TensorFunctions, ExponentialsUndoLogarithms) {
  Random random(10);
  const int32_t one = 1;
  for (int round = 0; round < 5000; ++round) {
    Matrix R;
    const double angle = random.uniform(-4, 4), c = std::cos(angle), s = std::sin(angle);
    const Matrix plane = {{c, -s, 0}, {s, c, 0}, {0, 0, 1}};
    std::copy(&plane[0][0], &plane[0][0] + 9, &R[0][0]);
    const double size = std::ldexp(8, -random.integer(0, 60));
    double strain[3], values[3], S[6], E[4], expected[6], direct[3];
    for (int k = 0; k < 3; ++k) {
      strain[k] = size * random.uniform(-1, 1);
      if (round % 4 == 0 && k == 1) strain[k] = strain[0] * (1 + 1e-8);
      values[k] = std::exp(strain[k]);
    }
    setPrincipal(S, 1, 0, strain, R);
    setPrincipal(expected, 1, 0, values, R);
    GLO_UTI_EXPS31(&one, S, E);
    const double scale = std::max(values[0], values[1]) * (4e-15 * std::max(1.0, magnitude(strain, 3)));
    EXPECT_NEAR(E[0], expected[0], scale);
    EXPECT_NEAR(E[1], expected[1], scale);
    EXPECT_NEAR(E[2], values[2], 2e-15 * std::max(1.0, size) * values[2]);
    EXPECT_NEAR(E[3], expected[3], scale);
    GLO_UTI_EXPS30(&one, strain, direct);
    for (int k = 0; k < 3; ++k) EXPECT_NEAR(direct[k], values[k], 2.3e-16 * values[k]);
  }
  // tiny shear keeps its digits
  const double S[4] = {0.5, 0.5, 0, 1e-12};
  double E[4];
  GLO_UTI_EXPS31(&one, S, E);
  EXPECT_NEAR(E[3] / (std::exp(0.5) * 1e-12), 1, 1e-15);
}

} // namespace
