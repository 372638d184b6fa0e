// Hyperelastic kernels against numerical derivatives of their energy and small-strain limits.
#include "spx.h"
#include "tests/support/random.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>

namespace {

using namespace sharedanalysis::test;
using LongMatrix = std::array<std::array<long double, 3>, 3>;

LongMatrix product(const LongMatrix& a, const LongMatrix& b) {
  LongMatrix c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j)
      for (int k = 0; k < 3; ++k) c[i][j] += a[i][k] * b[k][j];
  return c;
}

LongMatrix inverse(const LongMatrix& a) {
  LongMatrix r{};
  long double det = 0;
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const int i1 = (i + 1) % 3, i2 = (i + 2) % 3, j1 = (j + 1) % 3, j2 = (j + 2) % 3;
      r[j][i] = a[i1][j1] * a[i2][j2] - a[i1][j2] * a[i2][j1];
      if (i == 0) det += a[0][j] * r[j][0];
    }
  for (auto& row : r)
    for (auto& x : row) x /= det;
  return r;
}

// Square root by the product of averages, E. D. Denman and A. N. Beavers (1976).
LongMatrix squareRoot(LongMatrix y) {
  LongMatrix z{};
  for (int i = 0; i < 3; ++i) z[i][i] = 1;
  for (int pass = 0; pass < 30; ++pass) {
    const LongMatrix yi = inverse(y), zi = inverse(z);
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) {
        y[i][j] = (y[i][j] + zi[i][j]) / 2;
        z[i][j] = (z[i][j] + yi[i][j]) / 2;
      }
  }
  return y;
}

// A block of points with random constants of either sign that leave a positive shear modulus.
struct Block {
  int n;
  std::vector<double> C10, C01, C20, C11, C02, rD1, rD2, V, energy, rJ, stress, flag, bound, bulk;

  Block(int points, uint64_t seed) : n(points) {
    Random random(seed);
    for (auto* c : {&C10, &C01, &C20, &C11, &C02, &rD1, &rD2, &energy, &rJ, &flag, &bound, &bulk}) c->resize(n);
    V.resize(6 * n);
    stress.resize(6 * n);
    for (int i = 0; i < n; ++i) {
      C10[i] = random.uniform(0.5, 2);
      C01[i] = random.uniform(-0.2, 1);
      C20[i] = random.uniform(-0.1, 0.3);
      C11[i] = random.uniform(-0.1, 0.2);
      C02[i] = random.uniform(0, 0.1);
      rD1[i] = random.uniform(1, 20);
      rD2[i] = random.uniform(0, 5);
      Matrix R;
      randomRotation(random, R);
      const double stretches[3] = {random.uniform(0.6, 1.8), random.uniform(0.6, 1.8), random.uniform(0.6, 1.8)};
      setPrincipal(V.data(), n, i, stretches, R);
    }
  }
  void computeEnergy() {
    SPX_MAT_HYPERPOLYS33(&n, C10.data(), C01.data(), C20.data(), C11.data(), C02.data(), energy.data(), rJ.data(),
                         V.data());
  }
  void computeStress() {
    SPX_MAT_HYPERPOLY3DEXP(&n, C10.data(), C01.data(), C20.data(), C11.data(), C02.data(), rD1.data(), rD2.data(),
                           V.data(), stress.data(), flag.data(), bound.data(), bulk.data());
  }
  double totalEnergy(int i) const {
    const double e = 1 / rJ[i] - 1;
    return energy[i] + e * e * rD1[i] + e * e * e * e * rD2[i];
  }
  LongMatrix stretch(int i) const {
    LongMatrix v{};
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) v[a][b] = V[kS33[a][b] * n + i];
    return v;
  }
  // V of the deformation (I + amount L) F, F = V.
  Block displaced(double amount, const LongMatrix& L) const {
    Block moved = *this;
    for (int i = 0; i < n; ++i) {
      LongMatrix F = stretch(i);
      const LongMatrix LF = product(L, F);
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) F[a][b] += amount * LF[a][b];
      LongMatrix Ft{};
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b) Ft[a][b] = F[b][a];
      const LongMatrix v = squareRoot(product(F, Ft));
      for (int a = 0; a < 3; ++a)
        for (int b = a; b < 3; ++b) moved.V[kS33[a][b] * n + i] = static_cast<double>(v[a][b]);
    }
    return moved;
  }
};

TEST(Polynomial, StressIsTheDerivativeOfTheEnergy) {
  Block block(60, 21);
  block.computeStress();
  block.computeEnergy();
  Random random(22);
  for (int direction = 0; direction < 8; ++direction) {
    LongMatrix L{}; // not symmetric: a spin must do no work
    for (auto& row : L)
      for (auto& x : row) x = random.uniform(-1, 1);
    const double h = 2e-5;
    Block forth = block.displaced(h, L), back = block.displaced(-h, L);
    forth.computeEnergy();
    back.computeEnergy();
    for (int i = 0; i < block.n; ++i) {
      double work = 0;
      for (int a = 0; a < 3; ++a)
        for (int b = 0; b < 3; ++b)
          work += block.stress[kS33[a][b] * block.n + i] * static_cast<double>(L[a][b]) / block.rJ[i];
      EXPECT_NEAR((forth.totalEnergy(i) - back.totalEnergy(i)) / (2 * h), work, 1e-7 * (1 + std::abs(work)));
    }
  }
}

TEST(Polynomial, ModuliAreDerivativesOfTheStress) {
  Block block(40, 23);
  block.computeStress();
  block.computeEnergy();
  const double h = 1e-5;
  // bulk: p is the mean stress; a pure volume change by the factor 1 + 3h moves ln J by 3h
  LongMatrix volume{};
  for (int a = 0; a < 3; ++a) volume[a][a] = 1;
  Block larger = block.displaced(h, volume), smaller = block.displaced(-h, volume);
  larger.computeStress(), larger.computeEnergy(), smaller.computeStress(), smaller.computeEnergy();
  const auto mean = [](const Block& b, int i) { return (b.stress[i] + b.stress[i + b.n] + b.stress[i + 2 * b.n]) / 3; };
  for (int i = 0; i < block.n; ++i) {
    const double slope = (mean(larger, i) - mean(smaller, i)) / (1 / larger.rJ[i] - 1 / smaller.rJ[i]);
    EXPECT_NEAR(block.bulk[i], 3 / block.rJ[i] * (mean(block, i) + slope), 1e-6 * block.bulk[i]);
  }
  // bound: the largest of d s_ij/d D_ij, s = (2/J)[(U1 + I1 U2) Bbar - U2 Bbar^2] at constant J, dBbar = D Bbar + Bbar D
  const auto s = [&](int i, const LongMatrix& B, int a, int b) {
    const LongMatrix Q = product(B, B);
    const long double I1 = B[0][0] + B[1][1] + B[2][2], trQ = Q[0][0] + Q[1][1] + Q[2][2], I2 = (I1 * I1 - trQ) / 2;
    const long double x = I1 - 3, y = I2 - 3;
    const long double U1 = block.C10[i] + 2 * block.C20[i] * x + block.C11[i] * y;
    const long double U2 = block.C01[i] + block.C11[i] * x + 2 * block.C02[i] * y;
    return 2 * block.rJ[i] * ((U1 + I1 * U2) * B[a][b] - U2 * Q[a][b]);
  };
  for (int i = 0; i < block.n; ++i) {
    LongMatrix Bbar = product(block.stretch(i), block.stretch(i));
    for (auto& row : Bbar)
      for (auto& x : row) x *= std::pow(static_cast<long double>(block.rJ[i]), 2.0L / 3);
    long double largest = -1e300L;
    for (int a = 0; a < 3; ++a)
      for (int b = a; b < 3; ++b) {
        LongMatrix D{};
        D[a][b] = D[b][a] = 1;
        const LongMatrix left = product(D, Bbar), right = product(Bbar, D);
        LongMatrix forth = Bbar, back = Bbar;
        for (int c = 0; c < 3; ++c)
          for (int d = 0; d < 3; ++d) {
            forth[c][d] += 1e-7L * (left[c][d] + right[c][d]);
            back[c][d] -= 1e-7L * (left[c][d] + right[c][d]);
          }
        largest = std::max(largest, (s(i, forth, a, b) - s(i, back, a, b)) / 2e-7L);
      }
    EXPECT_NEAR(block.bound[i], static_cast<double>(largest), 1e-9 * std::abs(block.bound[i]) + 1e-9);
  }
}

TEST(Polynomial, TurnsWithItsPointAndKeepsItsEnergy) {
  Block block(50, 24), turned = block;
  Random random(25);
  std::vector<std::array<double, 9>> rotations;
  for (int i = 0; i < block.n; ++i) {
    Matrix R;
    randomRotation(random, R);
    LongMatrix Q{}, Qt{};
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) Q[a][b] = Qt[b][a] = R[a][b];
    const LongMatrix v = product(product(Q, block.stretch(i)), Qt);
    for (int a = 0; a < 3; ++a)
      for (int b = a; b < 3; ++b) turned.V[kS33[a][b] * block.n + i] = static_cast<double>(v[a][b]);
    rotations.push_back({R[0][0], R[0][1], R[0][2], R[1][0], R[1][1], R[1][2], R[2][0], R[2][1], R[2][2]});
  }
  for (Block* b : {&block, &turned}) b->computeStress(), b->computeEnergy();
  for (int i = 0; i < block.n; ++i) {
    EXPECT_NEAR(turned.energy[i], block.energy[i], 1e-13 * (1 + std::abs(block.energy[i])));
    double size = 1;
    for (int k = 0; k < 6; ++k) size = std::max(size, std::abs(block.stress[k * block.n + i]));
    for (int a = 0; a < 3; ++a)
      for (int b = 0; b < 3; ++b) {
        double expected = 0;
        for (int c = 0; c < 3; ++c)
          for (int d = 0; d < 3; ++d)
            expected += rotations[i][3 * a + c] * block.stress[kS33[c][d] * block.n + i] * rotations[i][3 * b + d];
        EXPECT_NEAR(turned.stress[kS33[a][b] * block.n + i], expected, 2e-13 * size);
      }
  }
}

TEST(Polynomial, StoragesAgreeToTheBit) {
  Block block(140, 26);
  for (int i = 0; i < block.n; ++i) block.V[4 * block.n + i] = block.V[5 * block.n + i] = 0;
  block.computeEnergy();
  std::vector<double> energy(block.n), rJ(block.n);
  SPX_MAT_HYPERPOLYS31(&block.n, block.C10.data(), block.C01.data(), block.C20.data(), block.C11.data(),
                       block.C02.data(), energy.data(), rJ.data(), block.V.data());
  EXPECT_EQ(energy, block.energy);
  EXPECT_EQ(rJ, block.rJ);
  for (int i = 0; i < block.n; ++i) block.V[3 * block.n + i] = 0;
  block.computeEnergy();
  SPX_MAT_HYPERPOLYS30(&block.n, block.C10.data(), block.C01.data(), block.C20.data(), block.C11.data(),
                       block.C02.data(), energy.data(), rJ.data(), block.V.data());
  EXPECT_EQ(energy, block.energy);
  EXPECT_EQ(rJ, block.rJ);
}

TEST(Polynomial, SmallStrainConstantsAndTheUndeformedState) {
  Block block(30, 27);
  const double strain = 1e-7;
  for (int i = 0; i < block.n; ++i)
    for (int k = 0; k < 6; ++k) block.V[k * block.n + i] = k < 3 ? 1.0 : 0.0;
  block.computeStress();
  block.computeEnergy();
  for (int i = 0; i < block.n; ++i) {
    EXPECT_EQ(block.energy[i], 0);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(block.stress[k * block.n + i], 0);
    EXPECT_NEAR(block.bulk[i], 6 * block.rD1[i], 1e-13 * block.bulk[i]);
  }
  for (int i = 0; i < block.n; ++i) block.V[i] = 1 + strain, block.V[3 * block.n + i] = strain;
  block.computeStress();
  for (int i = 0; i < block.n; ++i) {
    const double mu = 2 * (block.C10[i] + block.C01[i]), lambda = 2 * block.rD1[i] - 2 * mu / 3;
    EXPECT_NEAR(block.stress[i] / strain, lambda + 2 * mu, 1e-4);
    EXPECT_NEAR(block.stress[block.n + i] / strain, lambda, 1e-4);
    EXPECT_NEAR(block.stress[3 * block.n + i] / strain, 2 * mu, 1e-4);
  }
}

TEST(Polynomial, GuardsOfTheVolume) {
  Block block(4, 28);
  const double stretches[4][3] = {{0, 1, 1}, {-0.5, 1, 1}, {1e-10, 1, 1}, {1.1, 1, 1}};
  for (int i = 0; i < 4; ++i)
    for (int k = 0; k < 6; ++k) block.V[k * 4 + i] = k < 3 ? stretches[i][k] : 0;
  block.computeEnergy();
  EXPECT_EQ(block.rJ[0], 1);
  EXPECT_EQ(block.rJ[1], 2) << "-0.5 + 1";
  EXPECT_EQ(block.rJ[2], 1 / 1e-10);
  block.computeStress();
  EXPECT_EQ(block.flag, (std::vector<double>{1, 1, 1, 0}));
  EXPECT_NEAR(block.bulk[0], 6 * block.rD1[0], 1e-12) << "J counts as 1";
  // a sound stretch does not clear the flag, and counts as isochoric
  for (int i = 0; i < 4; ++i) block.V[i] = 1.3;
  block.computeStress();
  EXPECT_EQ(block.flag, (std::vector<double>{1, 1, 1, 0}));
  EXPECT_NEAR(block.bulk[0], 6 * block.rD1[0], 1e-12);
  EXPECT_GT(block.stress[3], block.stress[0]);
}

} // namespace
