// The other members of the brick family and the strain outputs, against exact fields on distorted bricks.
#include "glo.h"
#include "spx.h"
#include "tests/support/bricks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

namespace {

using namespace sharedanalysis::test;

const double kNan = std::numeric_limits<double>::quiet_NaN();
using Values = std::vector<double>;

std::vector<Brick> someBricks(uint64_t seed, int n, double amount = 0.25) {
  Random random(seed);
  std::vector<Brick> bricks;
  for (int e = 0; e < n; ++e) bricks.push_back(distorted(random, amount));
  return bricks;
}

// 8 dN/dxi, 8 dN/deta, 8 dN/dzeta at the 2 x 2 x 2 Gauss points.
struct Tables {
  Values d[3];
  explicit Tables(double factor = 8) {
    for (const auto& s : kSigns) {
      const double g = 1 / std::sqrt(3.0);
      for (const auto& node : shapeDerivatives(g * s[0], g * s[1], g * s[2]))
        for (int i = 0; i < 3; ++i) d[i].push_back(factor * node[i]);
    }
  }
};

// One call of the element-by-element operator, and the same of the one-point operator.
struct BothOperators {
  int32_t n, ld;
  Values X, dV, B, diag, stiff, vol, rvol, h, gamma, mask;
  Values B2, diag2, stiff2, vol2, rvol2, gamma2, mask2;

  explicit BothOperators(const std::vector<Brick>& bricks, const std::vector<int>& masked = {})
      : n(static_cast<int32_t>(bricks.size())), ld(n + 2), X(coordinates(bricks, ld)), dV(24 * ld), B(24 * ld),
        diag(ld), stiff(ld), vol(ld), rvol(ld), h(12 * ld), gamma(32 * ld), mask(ld) {
    for (int e : masked) mask[e] = 1;
    B2 = B, diag2 = diag, stiff2 = stiff, vol2 = vol, rvol2 = rvol, gamma2 = gamma, mask2 = mask;
    SPX_OPE_C3DH8OPER(&n, &ld, X.data(), dV.data(), B.data(), diag.data(), stiff.data(), vol.data(), rvol.data(),
                      h.data(), gamma.data(), mask.data());
    SPX_OPE_C3D8ROPER2(&n, &ld, X.data(), B2.data(), diag2.data(), stiff2.data(), vol2.data(), rvol2.data(),
                       gamma2.data(), mask2.data());
  }
};

TEST(ElementByElementOperator, AgreesWithTheBlockOneAndGivesTheDerivativesOfTheVolume) {
  const std::vector<Brick> bricks = someBricks(21, 150);
  const BothOperators both(bricks);
  for (int e = 0; e < both.n; ++e) {
    EXPECT_NEAR(both.vol[e], both.vol2[e], 4e-16);
    EXPECT_NEAR(both.rvol[e] / both.rvol2[e], 1, 5e-16);
    EXPECT_NEAR(both.diag[e] / both.diag2[e], 1, 4e-15);
    EXPECT_NEAR(both.stiff[e] / both.stiff2[e], 1, 4e-15);
    for (int k = 0; k < 24; ++k) EXPECT_NEAR(both.B[k * both.ld + e], both.B2[k * both.ld + e], 2e-15);
    for (int k = 0; k < 32; ++k) EXPECT_NEAR(both.gamma[k * both.ld + e], both.gamma2[k * both.ld + e], 4e-15);
    for (int i = 0; i < 3; ++i)
      for (int k = 0; k < 4; ++k) {
        double projection = 0;
        for (int node = 0; node < 8; ++node) projection += kPatterns[k][node] * bricks[e][node][i];
        EXPECT_NEAR(both.h[(4 * i + k) * both.ld + e], projection, 2e-15);
      }
    // The volume is linear in one coordinate: a central difference of any width is exact.
    for (int node = 0; node < 8; ++node)
      for (int i = 0; i < 3; ++i) {
        Brick up = bricks[e], down = bricks[e];
        up[node][i] += 0.5, down[node][i] -= 0.5;
        EXPECT_NEAR(both.dV[(8 * i + node) * both.ld + e], integrate(up).det - integrate(down).det, 4e-15);
      }
  }
}

TEST(ElementByElementOperator, MaskedInvertedFlatAndSpoiled) {
  std::vector<Brick> bricks(5, unitCube());
  for (int node = 0; node < 4; ++node) std::swap(bricks[1][node], bricks[1][node + 4]);
  for (auto& node : bricks[2]) node[0] = 0;
  bricks[3][4][1] = kNan;
  bricks[4][6][2] = kNan; // of the one that is masked on entry
  bricks.push_back(unitCube());
  const BothOperators both(bricks, {4});
  for (int e = 0; e < 6; ++e) {
    const bool off = e > 0 && e < 5;
    EXPECT_EQ(both.mask[e], off ? 1 : 0);
    EXPECT_NEAR(both.vol[e], 1, 1e-15);
    EXPECT_NEAR(both.rvol[e], off ? 0 : 1, 1e-15);
    EXPECT_NEAR(both.diag[e], off ? 0.5 : 1 / 3.0, 1e-15);
    EXPECT_NEAR(both.stiff[e], off ? 0 : 3, 1e-14);
    for (int k = 0; k < 24; ++k) EXPECT_EQ(both.B[k * both.ld + e] == 0 && both.dV[k * both.ld + e] == 0, off);
    for (int k = 0; k < 32; ++k) EXPECT_EQ(both.gamma[k * both.ld + e] == 0, off);
    for (int k = 0; k < 12; ++k) EXPECT_EQ(both.h[k * both.ld + e], 0);
  }
}

TEST(AverageOperator, IsThatOfTheExactIntegralsAndOfOnePoint) {
  std::vector<Brick> bricks = someBricks(22, 150, 0.2);
  const int32_t n = 150, nipt = 8, onEntry = 7, inverted = 70, spoiled = 140;
  for (int node = 0; node < 4; ++node) std::swap(bricks[inverted][node], bricks[inverted][node + 4]);
  bricks[spoiled][3][2] = kNan;
  const Values X = coordinates(bricks, n);
  const Tables tables, plain(1);
  for (int32_t ipt : {1, 5, 8}) {
    Values Bdet(24 * n), det(n), rdet(n), B(24 * n), vol(n), rvol(n), mask(n), Bdet2(24 * n), det2(n), rdet2(n);
    mask[onEntry] = 1;
    Values mask2 = mask;
    SPX_OPE_C3D8IOPER(&n, &ipt, &nipt, tables.d[0].data(), tables.d[1].data(), tables.d[2].data(), X.data(),
                      Bdet.data(), det.data(), rdet.data(), B.data(), vol.data(), rvol.data(), mask.data());
    SPX_OPE_C3D8OPER(&n, &ipt, &nipt, plain.d[0].data(), plain.d[1].data(), plain.d[2].data(), X.data(), Bdet2.data(),
                     det2.data(), rdet2.data(), mask2.data());
    EXPECT_EQ(mask, mask2);
    for (int e = 0; e < n; ++e) {
      const bool off = e == onEntry || e == inverted || e == spoiled;
      const Jacobian exact = integrate(bricks[e]);
      EXPECT_EQ(mask[e], off ? 1 : 0);
      EXPECT_NEAR(det[e], det2[e], 1e-16);
      EXPECT_NEAR(rdet[e], rdet2[e], 1e-13 * rdet2[e]);
      EXPECT_NEAR(vol[e], off ? 1 : exact.det, 1e-15);
      EXPECT_NEAR(rvol[e] * vol[e], off ? 0 : 1, 1e-15);
      for (int node = 0; node < 8; ++node)
        for (int i = 0; i < 3; ++i) {
          const int k = (8 * i + node) * n + e;
          EXPECT_NEAR(Bdet[k], off ? 0 : Bdet2[k], 1e-16);
          EXPECT_NEAR(B[k], off ? 0 : exact.gradient[node][i] / exact.det, 2e-15);
        }
    }
  }
}

// Area of a bilinear face by 60 x 60 Gauss points of order 4 (two a direction) in a fine grid.
double fineArea(const std::array<double, 3>& p1, const std::array<double, 3>& p2, const std::array<double, 3>& p3,
                const std::array<double, 3>& p4) {
  const int m = 60;
  const double g[2] = {0.5 - 0.5 / std::sqrt(3.0), 0.5 + 0.5 / std::sqrt(3.0)};
  double sum = 0;
  for (int a = 0; a < 2 * m; ++a)
    for (int b = 0; b < 2 * m; ++b) {
      const double s = (a / 2 + g[a % 2]) / m, t = (b / 2 + g[b % 2]) / m;
      double u[3], v[3];
      for (int i = 0; i < 3; ++i) {
        u[i] = (1 - t) * (p2[i] - p1[i]) + t * (p3[i] - p4[i]);
        v[i] = (1 - s) * (p4[i] - p1[i]) + s * (p3[i] - p2[i]);
      }
      sum += std::hypot(u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]);
    }
  return sum / (4 * m * m);
}

struct Face {
  Values area, normal;
};
Face faceOf(const std::vector<Brick>& bricks, int32_t face, const Values& mask) {
  const auto n = static_cast<int32_t>(bricks.size());
  const Values X = coordinates(bricks, n);
  Face f{Values(n), Values(3 * n)};
  SPX_OPE_C3D8FACEAREA(&n, &n, &face, X.data(), f.area.data(), f.normal.data(), mask.data());
  return f;
}

TEST(FaceArea, WarpedFacesAgainstFineQuadratureAndClosedSurface) {
  const int n = 40;
  const std::vector<Brick> bricks = someBricks(23, n, 0.2);
  Values mask(n), closed(3 * n);
  mask[11] = 1;
  for (int32_t face = 1; face <= 6; ++face) {
    // The nodes of a face are those with its sign; in the order of their numbers only the two faces across zeta go round.
    constexpr int kAxis[] = {2, 2, 1, 0, 1, 0}, kSide[] = {-1, 1, -1, 1, 1, -1};
    const int axis = kAxis[face - 1], side = kSide[face - 1];
    std::vector<int> nodes;
    for (int node = 0; node < 8; ++node)
      if (kSigns[node][axis] == side) nodes.push_back(node);
    if (axis != 2) std::swap(nodes[2], nodes[3]);
    const Face f = faceOf(bricks, face, mask);
    for (int e = 0; e < n; ++e) {
      const auto& b = bricks[e];
      const double exact = e == 11 ? 0 : fineArea(b[nodes[0]], b[nodes[1]], b[nodes[2]], b[nodes[3]]);
      EXPECT_NEAR(f.area[e], exact, 1e-4 * exact) << face << ' ' << e;
      EXPECT_GE(f.area[e], std::hypot(f.normal[e], f.normal[e + n], f.normal[e + 2 * n]) * (1 - 1e-15));
      EXPECT_EQ(f.normal[e + axis * n] * side > 0, e != 11) << "outward";
      for (int i = 0; i < 3; ++i) closed[3 * e + i] += f.normal[e + i * n];
    }
  }
  for (double sum : closed) EXPECT_NEAR(sum, 0, 2e-15);
}

TEST(FaceArea, PlaneFacesAreExactAndTheErrorOfALiftedCornerIsAsStated) {
  Brick plane = unitCube();
  plane[6] = {1.7, 1.4, 1}, plane[7] = {-0.2, 1.1, 1}; // face 2 a quadrilateral in the plane z = 1
  const double shoelace = 0.5 * std::abs((1.7 - 0) * (1.1 - 0) - (1.4 - 0) * (-0.2 - 1));
  const double nothing = 1;
  EXPECT_NEAR(faceOf({plane}, 2, {0}).area[0], shoelace, 1e-15);
  EXPECT_NEAR(faceOf({plane}, 2, {0}).normal[2], shoelace, 1e-15);
  EXPECT_EQ(faceOf({plane}, 2, {nothing}).area[0], 0);
  for (const auto& [lift, error] : {std::pair{0.1, 5e-11}, std::pair{0.5, 2e-7}, std::pair{1.0, 7e-6}}) {
    Brick warped = unitCube();
    warped[6][2] += lift;
    const double exact = fineArea(warped[4], warped[5], warped[6], warped[7]), area = faceOf({warped}, 2, {0}).area[0];
    EXPECT_NEAR(area / exact, 1, error);
  }
}

// Whether a shell is distorted, in 80 bits, whose products of four lengths neither overflow nor vanish.
bool isDistortedShell(const Brick& x, double t, double a, double b) {
  using Long3 = std::array<long double, 3>;
  const auto normal = [&](int face, int corner) {
    const auto edge = [&](int from, int to) {
      Long3 e;
      for (int c = 0; c < 3; ++c) e[c] = static_cast<long double>(x[4 * face + to][c]) - x[4 * face + from][c];
      return e;
    };
    const Long3 u = edge(corner, (corner + 1) % 4), v = edge(corner, (corner + 3) % 4);
    return Long3{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
  };
  const auto product = [&](int corner) {
    const Long3 p = normal(0, corner), q = normal(1, corner);
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
  };
  const long double h = t;
  return !(a * 1e-6L * b <= h * h && product(0) + product(2) > 0 && product(1) + product(3) > 0);
}

// Bricks with edges from 1e-300 to 1e300: whatever the products of lengths do, nothing infinite leaves, what is not masked is
// right, and a masked element gives what is declared of one.
TEST(EveryOperator, LengthsThatNoDoubleHoldsInProducts) {
  Random random(61);
  std::vector<Brick> bricks;
  for (int e = 0; e < 400; ++e) {
    Brick b = distorted(random, e % 2 == 0 ? 0.0 : 0.2);
    const int kind = e % 4;
    const double all = std::pow(10.0, kind == 0 ? random.integer(-104, 110) : random.integer(-300, 300));
    for (int c = 0; c < 3; ++c) {
      const double scale = kind < 2 ? all : std::pow(10.0, random.integer(-300, 300));
      for (auto& node : b) node[c] *= scale;
    }
    if (kind == 3) b[3][1] = 1.7e308;
    bricks.push_back(b);
  }
  for (const double edge : {1e110, 1e-104, 1e100, 1e-100, 1.0}) {
    Brick b = unitCube();
    for (auto& node : b)
      for (double& x : node) x *= edge;
    bricks.push_back(b);
  }
  const BothOperators both(bricks);
  const int32_t n = both.n, one = 1, eight = 8, selector = 3;
  const Values X = coordinates(bricks, n);
  const Tables tables(1), scaled;
  Values det(n), rdet(n), Bdet(24 * n), mask(n), average(24 * n), vol(n), rvol(n), meanMask(n), T(8 * n, 1.5),
      flux(3 * n, 1.0);
  Values k(n, 1.0), R(8 * n), heatMask(n), Bmean(24 * n), meanDet(n), meanRdet(n), strain(6 * n), F(9 * n),
      strainMask(n);
  SPX_OPE_C3D8OPER(&n, &one, &eight, tables.d[0].data(), tables.d[1].data(), tables.d[2].data(), X.data(), Bdet.data(),
                   det.data(), rdet.data(), mask.data());
  SPX_OPE_C3D8IOPER(&n, &one, &eight, scaled.d[0].data(), scaled.d[1].data(), scaled.d[2].data(), X.data(),
                    Bmean.data(), meanDet.data(), meanRdet.data(), average.data(), vol.data(), rvol.data(),
                    meanMask.data());
  SPX_ASM_C3D8RTDIVER(&n, X.data(), T.data(), flux.data(), k.data(), R.data(), heatMask.data());
  const Values none(6 * n), still(3 * n);
  SPX_OPE_C3D8RCSTRAINOUTPUT(&n, &n, &selector, scaled.d[0].data(), scaled.d[1].data(), scaled.d[2].data(), X.data(),
                             X.data(), none.data(), still.data(), F.data(), strain.data(), strainMask.data());
  const auto finite = [](const Values& list, const char* name) {
    for (std::size_t i = 0; i < list.size(); ++i) ASSERT_TRUE(std::isfinite(list[i])) << name << " " << i;
  };
  finite(both.B, "B"), finite(both.dV, "dV"), finite(both.diag, "diag"), finite(both.stiff, "stiff");
  finite(both.vol, "vol"), finite(both.rvol, "rvol"), finite(both.h, "h"), finite(both.gamma, "gamma");
  finite(both.B2, "B2"), finite(both.diag2, "diag2"), finite(both.stiff2, "stiff2"), finite(both.vol2, "vol2");
  finite(both.rvol2, "rvol2"), finite(both.gamma2, "gamma2"), finite(Bdet, "Bdet"), finite(det, "det");
  finite(rdet, "rdet"), finite(Bmean, "Bmean"), finite(average, "average"), finite(vol, "mean volume");
  finite(rvol, "mean rvol"), finite(meanDet, "meanDet"), finite(meanRdet, "meanRdet"), finite(R, "R");
  finite(F, "F"), finite(strain, "strain");
  int sound = 0;
  for (int e = 0; e < n; ++e) {
    if (both.mask2[e] != 0) {
      EXPECT_TRUE(both.B2[e] == 0 && both.gamma2[e] == 0 && both.rvol2[e] == 0 && both.vol2[e] == 1.0 / 12) << e;
      EXPECT_NEAR(both.diag2[e] * both.stiff2[e], 1, 1e-15);
    } else {
      EXPECT_NEAR(both.vol2[e] * both.rvol2[e], 1, 1e-14) << e;
      if (meanMask[e] == 0) {
        EXPECT_NEAR(vol[e] / both.vol2[e], 1, 1e-9) << e;
        ++sound;
      }
    }
    if (mask[e] != 0)
      EXPECT_TRUE(det[e] == 1 && rdet[e] == 0);
    else
      EXPECT_NEAR(det[e] * rdet[e], 1, 1e-15);
  }
  EXPECT_GT(sound, 100);
  const double expected[] = {1, 1, 0, 0, 0};
  for (int e = 0; e < 5; ++e) {
    EXPECT_EQ(both.mask2[n - 5 + e], expected[e]);
    EXPECT_EQ(both.mask[n - 5 + e], e < 4 ? 1 : 0) << "squares of areas";
    EXPECT_EQ(mask[n - 5 + e], expected[e]);
    EXPECT_EQ(meanMask[n - 5 + e], expected[e]);
  }
  // faces of squares: exact until the area itself is beyond
  for (int32_t face = 1; face <= 6; ++face) {
    const Face f = faceOf(bricks, face, Values(n));
    finite(f.area, "area"), finite(f.normal, "normal");
    const double areas[] = {1e220, 1e-208, 1e200, 1e-200, 1};
    for (int e = 0; e < 5; ++e) EXPECT_NEAR(f.area[n - 5 + e] / areas[e], 1, 1e-14) << face;
    for (int e = 2; e < 400; e += 4) { // boxes, many far longer than wide
      const double vector = std::hypot(f.normal[e], f.normal[e + n], f.normal[e + 2 * n]);
      EXPECT_TRUE(f.area[e] == vector || std::abs(f.area[e] / vector - 1) < 1e-14) << face << " " << e;
    }
  }
  // shells, every third with a corner of its top face pulled over the diagonal
  Values thickness(4 * n), lengths(2 * n), flags(n);
  for (int e = 0; e < n; ++e) {
    const auto length = [&](int c) { return std::abs(bricks[e][6][c] - bricks[e][0][c]); };
    if (e % 3 == 0)
      bricks[e][6] = {2 * bricks[e][4][0] - bricks[e][6][0], 2 * bricks[e][4][1] - bricks[e][6][1], bricks[e][6][2]};
    lengths[e] = length(0), lengths[n + e] = length(1);
    for (int corner = 0; corner < 4; ++corner) thickness[corner * n + e] = length(2);
  }
  SPX_OPE_SC3DDISTORTIONCHECK(&n, thickness.data(), lengths.data(), lengths.data() + n, coordinates(bricks, n).data(),
                              flags.data());
  for (int e = 0; e < n; ++e)
    if (e >= 400 || e % 4 != 3) { // else components of an edge are up to 1e600 apart
      EXPECT_EQ(flags[e] != 0, isDistortedShell(bricks[e], thickness[e], lengths[e], lengths[n + e])) << e;
    }
  EXPECT_GT(std::count(flags.begin(), flags.end(), 0.0), 100);
}

TEST(NodalFields, GradientAndDivergenceOfLinearFieldsOnDistortedBricks) {
  Random random(24);
  const int n = 60;
  const std::vector<Brick> bricks = someBricks(25, n);
  const BothOperators both(bricks);
  Matrix G;
  double offset[3];
  for (auto& row : G)
    for (double& g : row) g = random.uniform(-2, 2);
  for (double& o : offset) o = random.uniform(-1e3, 1e3);
  Values u(24 * both.ld), uBlock(24 * n), BBlock(24 * n), constant(8 * both.ld, 293.15), grad(3 * both.ld), div(n);
  for (int e = 0; e < n; ++e)
    for (int node = 0; node < 8; ++node)
      for (int i = 0; i < 3; ++i) {
        double value = offset[i];
        for (int j = 0; j < 3; ++j) value += G[i][j] * bricks[e][node][j];
        u[(8 * i + node) * both.ld + e] = uBlock[(8 * i + node) * n + e] = value;
        BBlock[(8 * i + node) * n + e] = both.B[(8 * i + node) * both.ld + e];
      }
  SPX_OPE_C3DH8DIVER(&n, BBlock.data(), uBlock.data(), div.data());
  for (int e = 0; e < n; ++e) EXPECT_NEAR(div[e], G[0][0] + G[1][1] + G[2][2], 1e-12);
  for (int i = 0; i < 3; ++i) {
    SPX_OPE_C3DH8TGRAD(&n, &both.ld, both.B.data(), &u[8 * i * both.ld], grad.data());
    for (int e = 0; e < n; ++e)
      for (int j = 0; j < 3; ++j) EXPECT_NEAR(grad[j * both.ld + e], G[i][j], 1e-12);
  }
  SPX_OPE_C3DH8TGRAD(&n, &both.ld, both.B.data(), constant.data(), grad.data());
  for (double g : grad) EXPECT_EQ(g, 0);
}

TEST(HeatFlows, FluxAndHourglassConductanceAsWrittenOut) {
  Random random(26);
  const int n = 30;
  std::vector<Brick> bricks = someBricks(27, n);
  bricks[9] = unitCube();
  for (int node = 0; node < 4; ++node) std::swap(bricks[19][node], bricks[19][node + 4]);
  const BothOperators both(bricks);
  Values T(8 * n), q(3 * n), k(n), R(8 * n), mask(n);
  for (double& t : T) t = random.uniform(280, 320);
  for (double& v : q) v = random.uniform(-50, 50);
  for (double& v : k) v = random.uniform(1, 10);
  const Values X = coordinates(bricks, n);
  SPX_ASM_C3D8RTDIVER(&n, X.data(), T.data(), q.data(), k.data(), R.data(), mask.data());
  for (int e = 0; e < n; ++e) {
    EXPECT_EQ(mask[e], e == 19 ? 1 : 0);
    for (int node = 0; node < 8; ++node) {
      double flow = 0;
      for (int i = 0; i < 3; ++i) flow += both.vol[e] * both.B2[(8 * i + node) * both.ld + e] * q[i * n + e];
      for (int mode = 0; mode < 4; ++mode) {
        double g = 0;
        for (int other = 0; other < 8; ++other) g += both.gamma2[(8 * mode + other) * both.ld + e] * T[other * n + e];
        flow -= 0.4 / 64 * k[e] * both.stiff2[e] * both.gamma2[(8 * mode + node) * both.ld + e] * g;
      }
      EXPECT_NEAR(R[node * n + e], e == 19 ? 0 : flow, 2e-11);
    }
  }
  // On the unit cube full integration conducts 8/3 in the first three patterns and 4/3 in the fourth.
  const int32_t one = 1;
  const Values cube = coordinates({unitCube()}, 1), noFlux(3), unit(1, 1.0);
  for (int mode = 0; mode < 4; ++mode) {
    Values flow(8), on(1);
    SPX_ASM_C3D8RTDIVER(&one, cube.data(), kPatterns[mode], noFlux.data(), unit.data(), flow.data(), on.data());
    const double energy = -std::inner_product(flow.begin(), flow.end(), kPatterns[mode], 0.0);
    EXPECT_NEAR(energy, (mode < 3 ? 0.45 : 0.9) * (mode < 3 ? 8 : 4) / 3, 1e-14);
  }
}

// ---- strain

double measure(int selector, double stretch) {
  switch (selector) {
  case 1:
    return 0.5 * (stretch * stretch - 1);
  case 3:
    return std::log(stretch);
  case 4:
    return 0.5 * (1 - 1 / (stretch * stretch));
  default:
    return stretch - 1;
  }
}

// Rotation about an axis of length 1, by the formula of Rodrigues.
void rotationAbout(const double (&axis)[3], double angle, Matrix& R) {
  const double c = std::cos(angle), s = std::sin(angle);
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      const double cross = i == j ? 0 : ((j - i + 3) % 3 == 1 ? -axis[3 - i - j] : axis[3 - i - j]);
      R[i][j] = (i == j ? c : 0) + s * cross + (1 - c) * axis[i] * axis[j];
    }
}

void multiply(const Matrix& A, const Matrix& B, Matrix& AB) {
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) AB[i][j] = A[i][0] * B[0][j] + A[i][1] * B[1][j] + A[i][2] * B[2][j];
}

// Deformations F = R U with U = Q diag(stretches) Q', turned by an angle about an axis.
struct Deformations {
  int32_t n;
  Values F, U, stretches, vector, Vmeasure[5], Umeasure[5]; // R S R' and S for the measure S of U

  explicit Deformations(uint64_t seed, int count, double amount = 0.6)
      : n(count), F(9 * n), U(6 * n), stretches(3 * n), vector(3 * n) {
    Random random(seed);
    for (auto* v : {Vmeasure, Umeasure})
      for (int k = 1; k < 5; ++k) v[k].resize(6 * n);
    for (int e = 0; e < n; ++e) {
      Matrix Q, R, RQ;
      randomRotation(random, Q);
      double axis[3] = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(0.1, 1)}, l[3], g[3];
      const double length = std::hypot(axis[0], axis[1], axis[2]);
      for (double& a : axis) a /= length;
      const double angle = e % 3 == 0 ? 1e-3 * e : random.uniform(-7, 7);
      rotationAbout(axis, angle, R);
      multiply(R, Q, RQ);
      for (int k = 0; k < 3; ++k) {
        stretches[k * n + e] = l[k] = 1 + random.uniform(-amount, amount);
        vector[k * n + e] = angle * axis[k];
      }
      setPrincipal(U.data(), n, e, l, Q);
      for (int selector = 1; selector < 5; ++selector) {
        for (int k = 0; k < 3; ++k) g[k] = measure(selector, l[k]);
        setPrincipal(Umeasure[selector].data(), n, e, g, Q);
        setPrincipal(Vmeasure[selector].data(), n, e, g, RQ);
      }
      for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
          for (int k = 0; k < 3; ++k) F[(i + 3 * j) * n + e] += R[i][k] * U[kS33[k][j] * n + e];
    }
  }
};

struct StrainOutput {
  Values G, C, J, strain, principal;
  StrainOutput(int32_t n, int32_t selector, const Values& F, const Values* stretch0, const Values& rotation,
               const Values& mask)
      : G(9 * n), C(6 * n), J(n), strain(6 * n), principal(3 * n) {
    const int32_t has = stretch0 != nullptr, ipt = 2, nipt = 2, nhist = 5, irot = 3;
    Values hist(2 * n, kNan), gradients(9 * n, kNan);
    hist.insert(hist.end(), rotation.begin(), rotation.end());
    gradients.insert(gradients.end(), F.begin(), F.end());
    SPX_OPE_C3DH8STRAINOUTPUT(&n, &n, &selector, &has, &ipt, &nipt, &nhist, &irot, gradients.data(),
                              has != 0 ? stretch0->data() : nullptr, hist.data(), G.data(), C.data(), J.data(),
                              strain.data(), principal.data(), mask.data());
  }
};

TEST(StrainOutput, EveryMeasureInReferenceAndCurrentAxes) {
  const Deformations d(31, 200);
  const Values mask(d.n), none(3 * d.n);
  for (int selector = 1; selector <= 4; ++selector) {
    const StrainOutput turned(d.n, selector, d.F, nullptr, d.vector, mask);
    const StrainOutput unturned(d.n, selector, d.F, nullptr, none, mask);
    const Values& expected = selector == 1 ? d.Umeasure[1] : d.Vmeasure[selector];
    for (int k = 0; k < 6 * d.n; ++k) {
      EXPECT_NEAR(turned.strain[k], expected[k], 2e-14) << selector;
      EXPECT_NEAR(unturned.strain[k], d.Umeasure[selector][k], 2e-14) << selector;
    }
    for (int e = 0; e < d.n; ++e) {
      double l[3] = {d.stretches[e], d.stretches[e + d.n], d.stretches[e + 2 * d.n]};
      std::sort(l, l + 3, std::greater<>());
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(turned.principal[e + k * d.n], measure(selector, l[k]), 2e-14);
      EXPECT_NEAR(turned.J[e], l[0] * l[1] * l[2], 1e-14);
    }
  }
}

TEST(StrainOutput, SmallStrainsKeepTheDigitsOfC) {
  const int32_t n = 1;
  for (double strain : {1e-3, 1e-6, 1e-9}) {
    // C - 1 is what the rounded C holds
    const Values C = {1 + 2 * strain, 1 - strain, 1, 0.5 * strain, 0, 0}, zero(3);
    const double a = (C[0] - 1 + (C[1] - 1)) / 2, b = (C[0] - C[1]) / 2, r = std::hypot(b, C[3]);
    for (int32_t selector : {2, 3, 4}) {
      Values E(6);
      SPX_OPE_STRETCHSTRAIN3DH8(&n, &selector, C.data(), zero.data(), E.data());
      const auto value = [&](double x) {
        const double logarithm = 0.5 * std::log1p(x);
        return selector == 2 ? std::expm1(logarithm) : selector == 3 ? logarithm : -0.5 * std::expm1(-2 * logarithm);
      };
      const double high = value(a + r), low = value(a - r), mean = (high + low) / 2, half = (high - low) / 2;
      EXPECT_NEAR(E[0], mean + half * b / r, 1e-14 * strain) << selector;
      EXPECT_NEAR(E[1], mean - half * b / r, 1e-14 * strain);
      EXPECT_NEAR(E[3], half * C[3] / r, 1e-14 * strain);
    }
  }
}

TEST(StrainOutput, InitialStretchIsTakenOff) {
  const Deformations d(32, 100, 0.3), initial(33, 100, 0.3);
  const Values mask(d.n);
  Values total(9 * d.n), recovered;
  for (int e = 0; e < d.n; ++e)
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        for (int k = 0; k < 3; ++k)
          total[(i + 3 * j) * d.n + e] += d.F[(i + 3 * k) * d.n + e] * initial.U[kS33[k][j] * d.n + e];
  recovered = total;
  SPX_OPE_INVINISTRETCH3DH8(&d.n, initial.U.data(), recovered.data());
  const StrainOutput output(d.n, 3, total, &initial.U, d.vector, mask);
  for (int k = 0; k < 9 * d.n; ++k) EXPECT_NEAR(recovered[k], d.F[k], 1e-14);
  EXPECT_EQ(output.G, recovered);
  for (int k = 0; k < 6 * d.n; ++k) EXPECT_NEAR(output.strain[k], d.Vmeasure[3][k], 4e-14);
  recovered = total;
  const Values none(6 * d.n);
  SPX_OPE_INVINISTRETCH3DH8(&d.n, none.data(), recovered.data());
  EXPECT_EQ(recovered, total);
}

TEST(StrainOutput, LimitsMasksAndSingularGradients) {
  const int32_t n = 6;
  Values F(9 * n), rotation(3 * n), mask(n);
  const auto set = [&](int e, double f11, double f22, double f33) {
    F[e] = f11, F[e + 4 * n] = f22, F[e + 8 * n] = f33;
  };
  set(0, 1e200, 3e200, 1); // scaled by 1.34e149 / 1e200
  set(1, 0, 2, 1);
  set(2, 2, 0.02, 0.005);
  set(3, kNan, 1, 1);
  set(4, 1, 1, 1), F[4 + n] = -1e200;
  set(5, 1, 1, 1), F[5 + 2 * n] = 1e200;
  mask[3] = 1;
  const StrainOutput nominal(n, 2, F, nullptr, rotation, mask), logarithmic(n, 3, F, nullptr, rotation, mask);
  EXPECT_NEAR(nominal.strain[0] / 1.3407807929942596e149, 1, 1e-15);
  EXPECT_NEAR(nominal.strain[n] / 1.3407807929942596e149, 3, 4e-15);
  EXPECT_NEAR(nominal.G[8 * n], 1.3407807929942596e-51, 1e-65);
  EXPECT_NEAR(nominal.G[4 + n] / -1.3407807929942596e149, 1, 1e-15);
  EXPECT_NEAR(nominal.G[5 + 2 * n] / 1.3407807929942596e149, 1, 1e-15);
  EXPECT_EQ(nominal.strain[1], -1);
  EXPECT_NEAR(logarithmic.strain[1], 0.5 * std::log(std::numeric_limits<double>::min()), 1e-12);
  const StrainOutput almansi(n, 4, F, nullptr, rotation, mask);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(logarithmic.strain[2 + k * n], std::log(F[2 + 4 * k * n]), 4e-15);
    EXPECT_NEAR(almansi.strain[2 + k * n] / measure(4, F[2 + 4 * k * n]), 1, 1e-14) << "strong compression";
  }
  for (const auto* column : {&nominal.G, &nominal.C, &nominal.J, &nominal.strain, &nominal.principal})
    for (std::size_t k = 3; k < column->size(); k += n) EXPECT_EQ((*column)[k], 0);
}

TEST(StrainOutput, SmallStrainSplitsTheDisplacementGradient) {
  const Deformations d(34, 50, 0.3), initial(35, 50, 0.2);
  const int n = d.n;
  Values mask(n), H(9 * n), volumetric(n), strain(6 * n), spin(3 * n), deviator(6 * n), equivalent(n), principal(3 * n),
      corrected = d.F, values(3 * n);
  mask[17] = 1;
  SPX_OPE_INVINISTRETCH3DH8(&n, initial.U.data(), corrected.data());
  const int32_t has = 1, ipt = 1;
  SPX_OPE_C3DH8LINSTRAINOUTPUT(&n, &n, &has, &ipt, &ipt, d.F.data(), initial.U.data(), H.data(), volumetric.data(),
                               strain.data(), spin.data(), deviator.data(), equivalent.data(), principal.data(),
                               mask.data());
  GLO_UTI_EIG33S(&n, strain.data(), values.data());
  const int skewIndex[3][3] = {{-1, 0, 2}, {0, -1, 1}, {2, 1, -1}};
  for (int e = 0; e < n; ++e) {
    double trace = 0, square = 0;
    for (int i = 0; i < 3; ++i) trace += e == 17 ? 0 : corrected[4 * i * n + e] - 1;
    EXPECT_NEAR(volumetric[e], trace, 1e-15);
    for (int i = 0; i < 3; ++i) {
      EXPECT_NEAR(principal[i * n + e], values[i * n + e], 2e-15);
      for (int j = 0; j < 3; ++j) {
        const double h = e == 17 ? 0 : corrected[(i + 3 * j) * n + e] - (i == j), s = strain[kS33[i][j] * n + e];
        const double w = i == j ? 0 : spin[skewIndex[i][j] * n + e] * (i < j ? 1 : -1);
        const double dev = deviator[kS33[i][j] * n + e];
        EXPECT_EQ(H[(i + 3 * j) * n + e], h);
        EXPECT_NEAR(s + w, h, 1e-15);
        EXPECT_NEAR(dev, s - (i == j ? trace / 3 : 0), 1e-15);
        square += dev * dev;
      }
    }
    EXPECT_NEAR(equivalent[e], std::sqrt(square * 2 / 3), 1e-15);
  }
}

TEST(StrainOutput, OfOnePointIsTheMeanOverTheReferenceVolume) {
  const int32_t n = 60, selector = 2, ld = n + 1;
  std::vector<Brick> bricks = someBricks(36, n, 0.2);
  const Deformations d(37, n, 0.3), initial(38, n, 0.2);
  Random random(39);
  Values x(24 * ld), stretch0(6 * ld), rotation(3 * ld), F(9 * ld), strain(6 * ld), mask(ld), exact(9 * n);
  const int inverted = 9;
  for (int e = 0; e < n; ++e) {
    Brick now;
    for (int node = 0; node < 8; ++node)
      for (int i = 0; i < 3; ++i) {
        now[node][i] = e % 2 == 0 ? random.uniform(-0.2, 0.2) : 50.0;
        for (int j = 0; j < 3; ++j) now[node][i] += d.F[(i + 3 * j) * n + e] * bricks[e][node][j];
        x[(8 * i + node) * ld + e] = now[node][i];
      }
    const Jacobian whole = integrate(bricks[e]);
    for (int i = 0; i < 3; ++i)
      for (int j = 0; j < 3; ++j)
        for (int node = 0; node < 8; ++node)
          exact[(i + 3 * j) * n + e] += now[node][i] * whole.gradient[node][j] / whole.det;
    for (int k = 0; k < 6; ++k) stretch0[k * ld + e] = e % 3 == 0 ? 0 : initial.U[k * n + e];
    for (int k = 0; k < 3; ++k) rotation[k * ld + e] = d.vector[k * n + e];
  }
  Values expected = exact, U0(6 * n), strains(6 * n);
  for (int e = 0; e < n; ++e)
    for (int k = 0; k < 6; ++k) U0[k * n + e] = stretch0[k * ld + e];
  SPX_OPE_INVINISTRETCH3DH8(&n, U0.data(), expected.data());
  const StrainOutput output(n, selector, expected, nullptr, d.vector, Values(n));
  for (int node = 0; node < 4; ++node) std::swap(bricks[inverted][node], bricks[inverted][node + 4]);
  const Tables tables;
  const Values X = coordinates(bricks, ld);
  SPX_OPE_C3D8RCSTRAINOUTPUT(&n, &ld, &selector, tables.d[0].data(), tables.d[1].data(), tables.d[2].data(), X.data(),
                             x.data(), stretch0.data(), rotation.data(), F.data(), strain.data(), mask.data());
  for (int e = 0; e < n; ++e) {
    EXPECT_EQ(mask[e], e == inverted ? 1 : 0);
    for (int k = 0; k < 9; ++k) {
      EXPECT_NEAR(F[k * ld + e], e == inverted ? 0 : expected[k * n + e], 1e-13);
      const bool isLinear = e % 2 == 1 && e % 3 == 0 && e != inverted;
      EXPECT_NEAR(isLinear ? F[k * ld + e] - d.F[k * n + e] : 0, 0, 1e-13);
    }
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(strain[k * ld + e], e == inverted ? 0 : output.strain[k * n + e], 1e-13);
  }
}

} // namespace
