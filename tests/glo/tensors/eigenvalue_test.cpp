// Accurate principal values and the functions made of them.
#include "glo.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

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
      EXPECT_LE(std::abs(product), 4e-15);
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

// ---- every routine that takes tensors

// The unit tensor in the same block layout as the second tensor of a pair.
void pairsWithUnit(const int32_t* n, const double* S, double* P, double* V) {
  std::vector<double> unit(6 * static_cast<std::size_t>(*n), 0.0);
  std::fill(unit.begin(), unit.begin() + 3 * *n, 1.0);
  GLO_UTI_GENEIG33(n, S, unit.data(), P, V);
}

using Directions = void (*)(const int32_t*, const double*, double*, double*);
struct DirectionRoutine {
  const char* name;
  Directions run;
  int components;  // 6, 4 or 3: S33, S31, S21
  double residual; // |S V - V P| in units of the largest component, at most
  int most = 1022; // scales 2^k with |k| at most this
};
const DirectionRoutine kDirectionRoutines[] = {
    {"PRINCS33", GLO_UTI_PRINCS33, 6, 2e-3},       {"PRINCS33DBL", GLO_UTI_PRINCS33DBL, 6, 2e-3},
    {"PRINCS31", GLO_UTI_PRINCS31, 4, 4e-15, 500}, {"PRINCS21", GLO_UTI_PRINCS21, 3, 4e-15, 500},
    {"EIG33V", GLO_UTI_EIG33V, 6, 4e-15},          {"EIG33ANALV", GLO_UTI_EIG33ANALV, 6, 1e-7, 1018},
    {"EIG31V", GLO_UTI_EIG31V, 4, 4e-15},          {"EIG21V", GLO_UTI_EIG21V, 3, 4e-15},
    {"GENEIG33", pairsWithUnit, 6, 4e-15},
};

// All tensors whose components are -2 .. 2, times 2^power.
std::vector<double> integerTensors(int components, int power, int& n) {
  n = 1;
  for (int k = 0; k < components; ++k) n *= 5;
  std::vector<double> S(static_cast<std::size_t>(components * n));
  for (int i = 0; i < n; ++i)
    for (int k = 0, digits = i; k < components; ++k, digits /= 5) S[k * n + i] = std::ldexp(digits % 5 - 2, power);
  return S;
}

TEST(Directions, AreRotationsThatDiagonaliseAtEveryScale) {
  constexpr int kPlaces[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};
  for (const DirectionRoutine& routine : kDirectionRoutines)
    for (const int power : {-1074, -1073, -1060, -1020, -600, -499, 0, 499, 1000, 1018, 1022}) {
      if (std::abs(power) > routine.most && (power > 0 || routine.most < 1000)) continue;
      int n = 0;
      const std::vector<double> S = integerTensors(routine.components, power, n);
      const int dim = routine.components == 3 ? 2 : 3;
      std::vector<double> P(3 * S.size()), V(9 * S.size());
      routine.run(&n, S.data(), P.data(), V.data());
      Real residual = 0, product = 0, volume = 2;
      for (int i = 0; i < n; ++i) {
        const auto s = [&](int a, int b) -> Real {
          const int k = dim == 2 && a != b ? 2 : kPlaces[a][b];
          return k < routine.components ? std::ldexp(static_cast<Real>(S[k * n + i]), -power) : 0;
        };
        const auto v = [&](int a, int b) -> Real {
          return a < dim && b < dim ? static_cast<Real>(V[(dim * b + a) * n + i]) : static_cast<Real>(a == b);
        };
        for (int a = 0; a < dim; ++a)
          for (int b = 0; b < dim; ++b) {
            const Real value = std::ldexp(static_cast<Real>(P[b * n + i]), -power);
            Real r = -v(a, b) * value, o = a == b ? -1 : 0;
            for (int k = 0; k < dim; ++k) r += s(a, k) * v(k, b), o += v(k, a) * v(k, b);
            // half a unit of the smallest double is lost in a value that is subnormal
            const Real rounding = power < -1000 ? std::ldexp(Real{0.5}, -1074 - power) : 0;
            if (std::isfinite(P[b * n + i])) residual = std::max(residual, std::abs(r) - rounding);
            EXPECT_FALSE(std::isnan(value));
            product = std::max(product, std::abs(o));
          }
        volume = std::min(volume, v(0, 0) * (v(1, 1) * v(2, 2) - v(1, 2) * v(2, 1)) -
                                      v(0, 1) * (v(1, 0) * v(2, 2) - v(1, 2) * v(2, 0)) +
                                      v(0, 2) * (v(1, 0) * v(2, 1) - v(1, 1) * v(2, 0)));
      }
      // the trigonometric values of tensors below the normal numbers are zeros; their directions are none
      const bool isZero = routine.run == GLO_UTI_EIG33ANALV && power < -1020;
      EXPECT_LE(residual, isZero ? 6 : 2 * routine.residual) << routine.name << " at 2^" << power;
      EXPECT_LE(product, 4e-15) << routine.name << " at 2^" << power;
      EXPECT_GT(volume, 0.999) << routine.name << " at 2^" << power << ": a reflection";
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
    EXPECT_GT(
        V[0] * (V[4] * V[8] - V[5] * V[7]) + V[1] * (V[5] * V[6] - V[3] * V[8]) + V[2] * (V[3] * V[7] - V[4] * V[6]), 0)
        << "left-handed";
    // powers of two change the values by theirs and no direction
    const int powerA = random.integer(-500, 500), powerB = random.integer(-500, 500);
    double scaledA[6], scaledB[6], scaledP[3], scaledV[9];
    const bool isTiny = round % 2 == 0; // both among the smallest normal numbers, or anywhere
    for (int k = 0; k < 6; ++k) {
      scaledA[k] = std::ldexp(A[k], isTiny ? -960 : powerA);
      scaledB[k] = std::ldexp(B[k], isTiny ? -960 : 2 * (powerB / 2));
    }
    GLO_UTI_GENEIG33(&one, scaledA, scaledB, scaledP, scaledV);
    for (int k = 0; k < 9; ++k) EXPECT_EQ(scaledV[k], V[k]);
    for (int k = 0; k < 3; ++k) {
      EXPECT_EQ(scaledP[k], isTiny ? P[k] : std::ldexp(P[k], powerA - 2 * (powerB / 2)));
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

TEST(Eigenvalues, NumbersThatAreNoneSpoilAllOfTheirPoint) {
  const int32_t one = 1;
  for (double bad : {kNaN, kInf, -kInf})
    for (int place = 0; place < 6; ++place) {
      double S[6] = {4, 5, 6, 0.8, 0.9, 1}, results[33];
      S[place] = bad;
      GLO_UTI_PRINCS33(&one, S, results, results + 3);
      GLO_UTI_EIG33V(&one, S, results + 12, results + 15);
      GLO_UTI_EIG33VECTOR(&one, S, results + 24);
      GLO_UTI_SQRTV(&one, S, results + 27);
      for (double value : results) EXPECT_TRUE(std::isnan(value)) << place << " " << bad;
    }
}

// ---- functions

// Positive tensors of whole numbers at every scale: V V = S, and ln(2^k S) = ln S + k ln 2.
TEST(TensorFunctions, AtEveryScale) {
  int n = 0;
  std::vector<double> A = integerTensors(6, 0, n), S(A.size()), scaled(A.size()), L(A.size()), V(A.size()),
                      logs(A.size());
  constexpr int at[3][3] = {{0, 3, 5}, {3, 1, 4}, {5, 4, 2}};
  for (int i = 0; i < n; ++i)
    for (int a = 0; a < 3; ++a)
      for (int b = a; b < 3; ++b) {
        double sum = a == b ? 1 : 0; // A A + 1
        for (int k = 0; k < 3; ++k) sum += A[at[a][k] * n + i] * A[at[k][b] * n + i];
        S[at[a][b] * n + i] = sum;
      }
  GLO_UTI_LOGV(&n, S.data(), L.data());
  for (const int power : {-1074, -1073, -1040, -700, -501, 501, 1000, 1017}) {
    for (std::size_t k = 0; k < S.size(); ++k) scaled[k] = std::ldexp(S[k], power);
    GLO_UTI_SQRTV(&n, scaled.data(), V.data());
    GLO_UTI_LOGV(&n, scaled.data(), logs.data());
    Real root = 0, logarithm = 0;
    for (int i = 0; i < n; ++i)
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) {
          Real square = -static_cast<Real>(S[at[a][b] * n + i]);
          for (int k = 0; k < 3; ++k)
            square += std::ldexp(static_cast<Real>(V[at[a][k] * n + i]) * V[at[k][b] * n + i], -power);
          root = std::max(root, std::abs(square) / 25);
          const Real expected = L[at[a][b] * n + i] + (a == b ? power * 0.693147180559945309417232L : 0);
          logarithm = std::max(logarithm, std::abs(logs[at[a][b] * n + i] - expected));
        }
    EXPECT_LE(root, 4e-15) << power;
    EXPECT_LE(logarithm, 2e-15 * std::abs(power)) << power;
  }
  const double graded[6] = {0x1p+1020, 1, 0x1p-1074, 0, 0, 0}; // a diagonal tensor keeps its smallest value
  const int32_t one = 1;
  double values[6];
  GLO_UTI_LOGV(&one, graded, values);
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(values[k], std::log(graded[k]), 1e-13);
}

// Every component to its own digits, over the whole range in which it is a double.
TEST(TensorFunctions, ExponentialsInThePlaneKeepEveryComponent) {
  Random random(12);
  const int32_t one = 1;
  std::vector<std::array<double, 3>> list = {{710, 0, 0},         {0, 710, 0},   {-700, 700, 0},  {700, -700, 0},
                                             {2000, 1, 0},        {-2000, 1, 0}, {700, 0, 1e-3},  {0, 700, -1e-3},
                                             {600, -600, 1e-200}, {1, 1, 1e-12}, {300, 300, 200}, {1e-170, 0, 1e-170}};
  for (int k = 0; k < 5000; ++k) {
    const double size = std::ldexp(1, random.integer(-10, 9));
    list.push_back({size * random.uniform(-1, 1), size * random.uniform(-1, 1),
                    size * random.uniform(-1, 1) * std::ldexp(1, -random.integer(0, 80))});
  }
  for (const auto& [s11, s22, s12] : list) {
    const double S[4] = {s11, s22, 0.5, s12};
    double E[4];
    GLO_UTI_EXPS31(&one, S, E);
    const Real m = (static_cast<Real>(s11) + s22) / 2, h = (static_cast<Real>(s11) - s22) / 2;
    const Real r = std::hypot(h, static_cast<Real>(s12)), cc = r == 0 ? 1 : (1 + std::abs(h) / r) / 2;
    const Real ss = r == 0 ? 0 : static_cast<Real>(s12) * s12 / (4 * cc * r * r);
    const Real large = std::exp(m + r), little = std::exp(m - r);
    const Real near = large * cc + little * ss, far = little * cc + large * ss;
    const Real shear = r == 0 ? std::exp(m) * s12 : std::exp(m) * std::sinh(r) / r * s12;
    const Real expected[4] = {h >= 0 ? near : far, h >= 0 ? far : near, std::exp(Real{0.5}), shear};
    for (int k = 0; k < 4; ++k) {
      const double bound = 4e-15 * std::max({1.0, std::abs(s11), std::abs(s22), std::abs(s12)});
      if (std::abs(expected[k]) > std::numeric_limits<double>::max())
        EXPECT_TRUE(std::isinf(E[k])) << k;
      else
        EXPECT_LE(std::abs(E[k] - expected[k]), bound * std::abs(expected[k]) + 1e-323)
            << s11 << ' ' << s22 << ' ' << s12 << ' ' << k;
    }
  }
}

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
