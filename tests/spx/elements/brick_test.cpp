// Brick operators against exact quadrature of the trilinear brick.
#include "spx.h"
#include "tests/support/bricks.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using namespace sharedanalysis::test;

// One call of the one-point operator over some bricks.
struct OnePoint {
  int n, ld;
  std::vector<double> X, B, hgdiag, hgstiff, vol, rvol, gamma, mask;

  explicit OnePoint(const std::vector<Brick>& bricks, int spare = 3)
      : n(static_cast<int>(bricks.size())), ld(n + spare), X(coordinates(bricks, ld)), B(24 * ld, -7), hgdiag(ld, -7),
        hgstiff(ld, -7), vol(ld, -7), rvol(ld, -7), gamma(32 * ld, -7), mask(ld) {}
  void run() {
    SPX_OPE_C3D8ROPER2(&n, &ld, X.data(), B.data(), hgdiag.data(), hgstiff.data(), vol.data(), rvol.data(),
                       gamma.data(), mask.data());
  }
  double b(int e, int node, int c) const { return B[(c * 8 + node) * ld + e]; }
  double g(int e, int node, int k) const { return gamma[(k * 8 + node) * ld + e]; }
};

TEST(OnePointBrick, VolumeAndGradientAreThoseOfExactQuadrature) {
  Random random(11);
  std::vector<Brick> bricks;
  for (int e = 0; e < 300; ++e) bricks.push_back(distorted(random, 0.25));
  OnePoint block(bricks);
  block.run();
  for (int e = 0; e < block.n; ++e) {
    const Jacobian exact = integrate(bricks[e]);
    ASSERT_GT(exact.det, 0);
    EXPECT_NEAR(block.vol[e], exact.det, 1e-14);
    EXPECT_NEAR(block.rvol[e] * exact.det, 1, 4e-15);
    double bb = 0;
    for (int node = 0; node < 8; ++node)
      for (int c = 0; c < 3; ++c) {
        EXPECT_NEAR(block.b(e, node, c), exact.gradient[node][c] / exact.det, 2e-14) << e << ' ' << node << ' ' << c;
        bb += block.b(e, node, c) * block.b(e, node, c);
      }
    EXPECT_NEAR(block.hgstiff[e], 2 * exact.det * bb, 1e-13);
    EXPECT_NEAR(block.hgdiag[e] * block.hgstiff[e], 1, 1e-14);
    EXPECT_EQ(block.mask[e], 0);
  }
  EXPECT_EQ(block.vol[block.n], -7) << "behind the block";
}

TEST(OnePointBrick, HourglassVectorsSeeNoLinearFieldAndTheirOwnPattern) {
  Random random(12);
  std::vector<Brick> bricks;
  for (int e = 0; e < 40; ++e) bricks.push_back(distorted(random, 0.3));
  OnePoint block(bricks);
  block.run();
  for (int e = 0; e < block.n; ++e) {
    const double f[4] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
    for (int k = 0; k < 4; ++k) {
      double linear = 0;
      for (int node = 0; node < 8; ++node)
        linear += block.g(e, node, k) *
                  (f[0] + f[1] * bricks[e][node][0] + f[2] * bricks[e][node][1] + f[3] * bricks[e][node][2]);
      EXPECT_NEAR(linear, 0, 2e-14);
      // A field in the plane of patterns and linear fields: gamma_k . Gamma_j is 8 for k = j up to the linear part of Gamma_j.
      for (int j = 0; j < 4; ++j) {
        double product = 0, expected = k == j ? 8 : 0;
        for (int node = 0; node < 8; ++node) product += block.g(e, node, k) * kPatterns[j][node];
        for (int c = 0; c < 3; ++c) {
          double h = 0, bGamma = 0;
          for (int node = 0; node < 8; ++node) {
            h += kPatterns[k][node] * bricks[e][node][c];
            bGamma += block.b(e, node, c) * kPatterns[j][node];
          }
          expected -= h * bGamma;
        }
        EXPECT_NEAR(product, expected, 1e-13);
      }
    }
  }
}

TEST(OnePointBrick, CubeMaskedInvertedAndFlat) {
  Brick inverted = unitCube(), flat = unitCube();
  for (int node = 0; node < 4; ++node) std::swap(inverted[node], inverted[node + 4]);
  for (auto& node : flat) node[2] = 0;
  OnePoint block({unitCube(), unitCube(), inverted, flat, unitCube()});
  block.mask[1] = 1;
  block.X[3 * block.ld + 1] = std::numeric_limits<double>::quiet_NaN(); // of the masked one
  block.X[20 * block.ld + 4] = std::numeric_limits<double>::quiet_NaN();
  block.run();
  EXPECT_EQ(block.vol[0], 12 * 0.08333333333333333);
  EXPECT_EQ(block.rvol[0], 1);
  EXPECT_DOUBLE_EQ(block.hgstiff[0], 3);
  for (int node = 0; node < 8; ++node) {
    for (int c = 0; c < 3; ++c) EXPECT_EQ(block.b(0, node, c), 0.25 * kSigns[node][c]);
    for (int k = 0; k < 4; ++k) EXPECT_EQ(block.g(0, node, k), kPatterns[k][node]);
  }
  const std::vector<double> expectedMask = {0, 1, 1, 1, 1};
  for (int e = 0; e < 5; ++e) EXPECT_EQ(block.mask[e], expectedMask[e]);
  for (int e = 1; e < 5; ++e) {
    EXPECT_EQ(block.vol[e], 0.08333333333333333);
    EXPECT_EQ(block.rvol[e], 0);
    EXPECT_EQ(block.hgdiag[e], 6);
    EXPECT_EQ(block.hgstiff[e], 1.0 / 6.0);
    for (int node = 0; node < 8; ++node) {
      for (int c = 0; c < 3; ++c) EXPECT_EQ(block.b(e, node, c), 0);
      for (int k = 0; k < 4; ++k) EXPECT_EQ(block.g(e, node, k), 0);
    }
  }
}

TEST(OnePointBrick, FarFromTheOriginAndAtEveryScale) {
  Random random(13);
  for (double scale : {1e-40, 1e-3, 1.0, 1e5, 1e40}) {
    Brick near = distorted(random, 0.2);
    for (auto& node : near)
      for (double& x : node) x *= scale;
    Brick far = near;
    for (auto& node : far)
      for (double& x : node) x += 1e6 * scale;
    Brick back = far; // the brick whose coordinates `far` really holds
    for (auto& node : back)
      for (double& x : node) x -= 1e6 * scale;
    OnePoint block({far, back});
    block.run();
    EXPECT_NEAR(block.vol[0] / block.vol[1], 1, 1e-13) << scale;
    EXPECT_NEAR(block.hgstiff[0] / block.hgstiff[1], 1, 1e-13) << scale;
  }
}

TEST(FullyIntegratedBrick, JacobianAndGradientAtEachPoint) {
  Random random(14);
  const int n = 200, nipt = 8;
  std::vector<double> tables[3];
  std::vector<std::array<std::array<double, 3>, 8>> derivatives;
  for (int ipt = 0; ipt < nipt; ++ipt) {
    derivatives.push_back(shapeDerivatives(random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)));
    for (int d = 0; d < 3; ++d)
      for (int node = 0; node < 8; ++node) tables[d].push_back(derivatives.back()[node][d]);
  }
  std::vector<Brick> bricks;
  for (int e = 0; e < n; ++e) bricks.push_back(distorted(random, 0.12));
  const int maskedOnEntry = 5, inverted = 9, spoiled = 17;
  for (int node = 0; node < 4; ++node) std::swap(bricks[inverted][node], bricks[inverted][node + 4]);
  std::vector<double> X = coordinates(bricks, n), B(24 * n), det(n), rdet(n);
  X[spoiled] = std::numeric_limits<double>::quiet_NaN();
  for (int32_t ipt = 1; ipt <= nipt; ++ipt) {
    std::vector<double> mask(n);
    mask[maskedOnEntry] = 1;
    SPX_OPE_C3D8OPER(&n, &ipt, &nipt, tables[0].data(), tables[1].data(), tables[2].data(), X.data(), B.data(),
                     det.data(), rdet.data(), mask.data());
    for (int e = 0; e < n; ++e) {
      const Jacobian exact = jacobian(bricks[e], derivatives[ipt - 1]);
      const bool bad = e == maskedOnEntry || e == inverted || e == spoiled;
      EXPECT_EQ(mask[e], bad ? 1 : 0);
      EXPECT_NEAR(det[e], bad ? 1 : exact.det, 1e-15);
      EXPECT_NEAR(rdet[e], bad ? 0 : 1 / exact.det, 1e-12);
      if (e == spoiled) continue;
      for (int node = 0; node < 8; ++node)
        for (int c = 0; c < 3; ++c) // the inverted one keeps the products of its cofactors
          EXPECT_NEAR(B[(c * 8 + node) * n + e], e == maskedOnEntry ? 0 : exact.gradient[node][c], 1e-15);
    }
  }
}

TEST(Gradients, SymmetricAndSkewPartsRebuildTheGradient) {
  Random random(15);
  const int n = 33;
  std::vector<double> G(9 * n), sym(6 * n), skew(3 * n);
  for (double& g : G) g = random.uniform(-5, 5);
  SPX_OPE_C3DSYMGRAD(&n, G.data(), sym.data(), skew.data());
  const int skewIndex[3][3] = {{-1, 0, 2}, {0, -1, 1}, {2, 1, -1}};
  for (int e = 0; e < n; ++e)
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j) {
        const double w = i == j ? 0 : skew[skewIndex[i][j] * n + e] * (i < j ? 1 : -1);
        EXPECT_NEAR(sym[sharedanalysis::test::kS33[i][j] * n + e] + w, G[(i + 3 * j) * n + e], 1e-14);
      }
}

TEST(ErrorCheck, CountsTruncatesAndSurvivesNumbersThatAreNone) {
  const auto check = [](const std::vector<double>& flags, int32_t before) {
    int32_t n = static_cast<int32_t>(flags.size()), count = before;
    const double sum = SPX_OPE_ERRORCHECK(&n, &count, flags.data());
    return std::pair<double, int32_t>(sum, count);
  };
  const double nan = std::numeric_limits<double>::quiet_NaN(), inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(check({1, 0, 1}, -5), std::pair(2.0, 2));
  EXPECT_EQ(check({0, 0}, -5), std::pair(0.0, -5));
  EXPECT_EQ(check({}, -5), std::pair(0.0, -5));
  EXPECT_EQ(check({-1, 1}, -5), std::pair(0.0, -5));
  EXPECT_EQ(check({0.75, 2}, -5), std::pair(2.75, 2));
  EXPECT_EQ(check({-2.5}, 7), std::pair(-2.5, -2));
  EXPECT_EQ(check({2147483647.5}, 7).second, 2147483647);
  EXPECT_EQ(check({2147483648.0, 1}, 7).second, 2);
  EXPECT_EQ(check({nan, 0, 1}, 7).second, 2);
  EXPECT_EQ(check({inf, 1, 1}, 7).second, 3);
}

} // namespace
