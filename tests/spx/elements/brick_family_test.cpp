// Brick operators and strain outputs against exact quadrature of the trilinear brick and exact fields on distorted bricks.
#include "bench/plain/bricks.h"
#include "glo.h"
#include "spx.h"
#include "tests/support/bricks.h"
#include "tests/support/call.h"
#include "tests/support/turns.h"

namespace {

using namespace sharedanalysis::test;
using Point = std::array<double, 3>;
using Derivatives = std::array<std::array<double, 3>, 8>;

std::vector<Brick> someBricks(uint64_t seed, int n, double amount = 0.25) {
  Random random(seed);
  std::vector<Brick> bricks;
  for (int e = 0; e < n; ++e) bricks.push_back(distorted(random, amount));
  return bricks;
}
void invert(Brick& brick) { std::swap_ranges(brick.begin(), brick.begin() + 4, brick.begin() + 4); }
Brick scaled(Brick brick, const Point& factors) {
  for (auto& node : brick)
    for (int c = 0; c < 3; ++c) node[c] *= factors[c];
  return brick;
}

// 8 dN/dxi, 8 dN/deta, 8 dN/dzeta at points, those of 2 x 2 x 2 Gauss points if no others are given.
struct Tables {
  std::vector<Derivatives> at;
  Values d[3];
  explicit Tables(double factor, std::vector<Point> points = {}) {
    const double g = 1 / std::sqrt(3.0);
    if (points.empty())
      for (const auto& s : kSigns) points.push_back({g * s[0], g * s[1], g * s[2]});
    for (const Point& p : points) {
      at.push_back(shapeDerivatives(p[0], p[1], p[2]));
      for (const auto& node : at.back())
        for (int i = 0; i < 3; ++i) d[i].push_back(factor * node[i]);
    }
  }
};

// What an operator makes of an element whose mask is set.
struct Masked {
  double vol, diag, stiff;
};
// The one-point operator by blocks or element by element.
struct OnePoint {
  int32_t n;
  Values X, dV, B, diag, stiff, vol, rvol, h, gamma, mask;

  OnePoint(const std::vector<Brick>& bricks, bool byElement, const std::vector<int>& masked = {})
      : n(static_cast<int32_t>(bricks.size())), X(coordinates(bricks, n)), dV(24 * n), B(24 * n), diag(n), stiff(n),
        vol(n), rvol(n), h(12 * n), gamma(32 * n), mask(n) {
    for (int e : masked) mask[e] = 1;
    if (byElement)
      call(SPX_OPE_C3DH8OPER, n, n, X, dV, B, diag, stiff, vol, rvol, h, gamma, mask);
    else
      call(SPX_OPE_C3D8ROPER2, n, n, X, B, diag, stiff, vol, rvol, gamma, mask);
  }
  // All values of an array for one element.
  Values of(int e, const Values& array) const {
    Values values;
    for (std::size_t k = 0; k < array.size(); k += n) values.push_back(array[k + e]);
    return values;
  }
};

TEST(OnePointBrick, IsThatOfExactQuadrature) {
  const std::vector<Brick> bricks = someBricks(11, 300);
  for (const bool byElement : {false, true}) {
    const OnePoint block(bricks, byElement);
    for (int e = 0; e < block.n; ++e) {
      const Jacobian exact = integrate(bricks[e]);
      EXPECT_NEAR(block.vol[e], exact.det, 4e-15);
      EXPECT_NEAR(block.rvol[e] * exact.det, 1, 4e-15);
      const Values B = block.of(e, block.B), dV = block.of(e, block.dV), h = block.of(e, block.h),
                   gamma = block.of(e, block.gamma);
      double squares = 0;
      for (int node = 0; node < 8; ++node)
        for (int i = 0; i < 3; ++i) {
          EXPECT_NEAR(B[8 * i + node], exact.gradient[node][i] / exact.det, 2e-14) << e << ' ' << node << ' ' << i;
          if (byElement) {
            EXPECT_NEAR(dV[8 * i + node], exact.gradient[node][i], 4e-15) << "derivative of the volume";
          }
          squares += B[8 * i + node] * B[8 * i + node];
        }
      EXPECT_NEAR(block.stiff[e], 2 * exact.det * squares, 1e-13);
      EXPECT_NEAR(block.diag[e] * block.stiff[e], 1, 1e-14);
      EXPECT_EQ(block.mask[e], 0);
      // patterns without their linear part
      for (int k = 0; k < 4; ++k) {
        double projection[3] = {};
        for (int node = 0; node < 8; ++node)
          for (int i = 0; i < 3; ++i) projection[i] += kPatterns[k][node] * bricks[e][node][i];
        for (int i = 0; i < 3 && byElement; ++i) EXPECT_NEAR(h[4 * i + k], projection[i], 2e-15);
        for (int node = 0; node < 8; ++node) {
          double expected = kPatterns[k][node];
          for (int i = 0; i < 3; ++i) expected -= projection[i] * exact.gradient[node][i] / exact.det;
          EXPECT_NEAR(gamma[8 * k + node], expected, 4e-14);
        }
      }
    }
  }
}

TEST(OnePointBrick, CubeMaskedInvertedFlatAndSpoiled) {
  std::vector<Brick> bricks(6, unitCube());
  invert(bricks[1]);
  for (auto& node : bricks[2]) node[0] = 0;
  bricks[3][4][1] = kNaN;
  bricks[4][6][2] = kNaN; // of the one that is masked on entry
  for (const bool byElement : {false, true}) {
    const OnePoint block(bricks, byElement, {4});
    const Masked masked = byElement ? Masked{1, 0.5, 0} : Masked{1.0 / 12, 6, 1.0 / 6};
    for (int e = 0; e < 6; ++e) {
      const bool off = e > 0 && e < 5;
      EXPECT_EQ(block.mask[e], off ? 1 : 0);
      EXPECT_NEAR(block.vol[e], off ? masked.vol : 1, 1e-15);
      EXPECT_EQ(block.rvol[e], off ? 0 : 1);
      EXPECT_NEAR(block.diag[e], off ? masked.diag : 1 / 3.0, 1e-15);
      EXPECT_NEAR(block.stiff[e], off ? masked.stiff : 3, 1e-14);
      const Values B = block.of(e, block.B), dV = block.of(e, block.dV), gamma = block.of(e, block.gamma);
      for (int k = 0; k < 24; ++k) EXPECT_NEAR(B[k], off ? 0 : 0.25 * kSigns[k % 8][k / 8], off ? 0 : 1e-15);
      for (int k = 0; k < 24; ++k) EXPECT_EQ(dV[k] == 0, off || !byElement);
      for (int k = 0; k < 32; ++k) EXPECT_EQ(gamma[k], off ? 0 : kPatterns[k / 8][k % 8]);
      EXPECT_EQ(block.of(e, block.h), Values(12));
    }
  }
}

TEST(OnePointBrick, FarFromTheOriginAndAtEveryScale) {
  Random random(13);
  for (double scale : {1e-40, 1e-3, 1.0, 1e5, 1e40}) {
    Brick far = scaled(distorted(random, 0.2), {scale, scale, scale});
    for (auto& node : far)
      for (double& x : node) x += 1e6 * scale;
    Brick back = far; // the brick whose coordinates `far` really holds
    for (auto& node : back)
      for (double& x : node) x -= 1e6 * scale;
    const OnePoint block({far, back}, false);
    EXPECT_NEAR(block.vol[0] / block.vol[1], 1, 1e-13) << scale;
    EXPECT_NEAR(block.stiff[0] / block.stiff[1], 1, 1e-13) << scale;
  }
}

// One integration point, and means over all.
struct Integrated {
  Values Bdet, det, rdet, B, vol, rvol, mask;
  Integrated(const Tables& tables, const Values& X, int n, int ipt, bool withMeans, const std::vector<int>& masked = {})
      : Bdet(24 * n), det(n), rdet(n), B(24 * n), vol(n), rvol(n), mask(n) {
    for (int e : masked) mask[e] = 1;
    const int nipt = static_cast<int>(tables.at.size());
    const Values* d = tables.d;
    if (withMeans)
      call(SPX_OPE_C3D8IOPER, n, ipt, nipt, d[0], d[1], d[2], X, Bdet, det, rdet, B, vol, rvol, mask);
    else
      call(SPX_OPE_C3D8OPER, n, ipt, nipt, d[0], d[1], d[2], X, Bdet, det, rdet, mask);
  }
};

TEST(FullyIntegratedBrick, JacobiansAtPointsAndMeansOverThem) {
  Random random(14);
  std::vector<Brick> bricks = someBricks(22, 200, 0.12);
  const int n = 200, onEntry = 5, inverted = 9, spoiled = 17;
  invert(bricks[inverted]);
  bricks[spoiled][3][2] = kNaN;
  const Values X = coordinates(bricks, n);
  std::vector<Point> anywhere(8);
  for (Point& p : anywhere) p = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(-1, 1)};
  for (const bool withMeans : {false, true})
    for (int ipt = 1; ipt <= 8; ++ipt) {
      const Tables tables = withMeans ? Tables(8) : Tables(1, anywhere);
      const Integrated found(tables, X, n, ipt, withMeans, {onEntry});
      for (int e = 0; e < n; ++e) {
        const Jacobian point = jacobian(bricks[e], tables.at[ipt - 1]), exact = integrate(bricks[e]);
        const bool off = e == onEntry || e == inverted || e == spoiled;
        EXPECT_EQ(found.mask[e], off ? 1 : 0);
        EXPECT_NEAR(found.det[e], off ? 1 : point.det, 1e-15);
        EXPECT_NEAR(found.rdet[e], off ? 0 : 1 / point.det, 1e-12);
        if (withMeans) {
          EXPECT_NEAR(found.vol[e], off ? 1 : exact.det, 1e-15);
          EXPECT_NEAR(found.rvol[e] * found.vol[e], off ? 0 : 1, 1e-15);
        }
        if (e == spoiled && !withMeans) continue;
        for (int node = 0; node < 8; ++node)
          for (int i = 0; i < 3; ++i) {
            const int k = (8 * i + node) * n + e;
            // the inverted one keeps the products of its cofactors at a point alone
            const bool isKept = !off || (e == inverted && !withMeans);
            EXPECT_NEAR(found.Bdet[k], isKept ? point.gradient[node][i] : 0, 1e-15);
            EXPECT_NEAR(found.B[k], off || !withMeans ? 0 : exact.gradient[node][i] / exact.det, 2e-15);
          }
      }
    }
}

TEST(FullyIntegratedBrick, MeansOverOnePoint) {
  const std::vector<Brick> bricks = someBricks(29, 9);
  const Tables centre(8, {{0, 0, 0}});
  const Integrated found(centre, coordinates(bricks, 9), 9, 1, true);
  for (int e = 0; e < 9; ++e) {
    const Jacobian point = jacobian(bricks[e], centre.at[0]);
    EXPECT_NEAR(found.vol[e], 8 * point.det, 4e-15);
    EXPECT_NEAR(found.B[e], point.gradient[0][0] / point.det, 4e-15);
  }
}

// Nine components of a gradient, column by column, and three of a spin: 12, 23, 13.
Matrix gradientOf(const double* G, int n) {
  return matrixBy([=](int i, int j) { return G[(i + 3 * j) * n]; });
}
Matrix spinOf(const double* w, int n) { return {{{0, w[0], w[2 * n]}, {-w[0], 0, w[n]}, {-w[2 * n], -w[n], 0}}}; }

TEST(Gradients, SymmetricAndSkewPartsRebuildTheGradient) {
  Random random(15);
  const int n = 33;
  Values G(9 * n), sym(6 * n), skew(3 * n);
  for (double& g : G) g = random.uniform(-5, 5);
  call(SPX_OPE_C3DSYMGRAD, n, G, sym, skew);
  for (int e = 0; e < n; ++e)
    EXPECT_LT(distance(tensorOf(&sym[e], n) + spinOf(&skew[e], n), gradientOf(&G[e], n)), 1e-14);
}

// ---- faces

// Area of a bilinear face by 60 x 60 Gauss points of order 4 (two a direction) in a fine grid.
double fineArea(const std::array<Point, 4>& corners) {
  const int m = 60;
  const double g[2] = {0.5 - 0.5 / std::sqrt(3.0), 0.5 + 0.5 / std::sqrt(3.0)};
  double sum = 0;
  for (int a = 0; a < 2 * m; ++a)
    for (int b = 0; b < 2 * m; ++b) {
      const auto normal = plain::faceNormal(corners, (a / 2 + g[a % 2]) / m, (b / 2 + g[b % 2]) / m);
      sum += std::hypot(normal[0], normal[1], normal[2]);
    }
  return sum / (4 * m * m);
}

struct Face {
  Values area, normal;
  Face(const std::vector<Brick>& bricks, int face, const Values& mask)
      : area(bricks.size()), normal(3 * bricks.size()) {
    const int n = static_cast<int>(bricks.size());
    call(SPX_OPE_C3D8FACEAREA, n, n, face, coordinates(bricks, n), area, normal, mask);
  }
};

TEST(FaceArea, WarpedFacesAgainstFineQuadratureAndClosedSurface) {
  const int n = 40, masked = 11;
  const std::vector<Brick> bricks = someBricks(23, n, 0.2);
  Values mask(n), closed(3 * n);
  mask[masked] = 1;
  for (int face = 1; face <= 6; ++face) {
    // The nodes of a face are those with its sign; in the order of their numbers only the two faces across zeta go round.
    constexpr int kAxis[] = {2, 2, 1, 0, 1, 0}, kSide[] = {-1, 1, -1, 1, 1, -1};
    const int axis = kAxis[face - 1], side = kSide[face - 1];
    std::vector<int> nodes;
    for (int node = 0; node < 8; ++node)
      if (kSigns[node][axis] == side) nodes.push_back(node);
    if (axis != 2) std::swap(nodes[2], nodes[3]);
    const Face f(bricks, face, mask);
    for (int e = 0; e < n; ++e) {
      const auto& b = bricks[e];
      const double exact = e == masked ? 0 : fineArea({b[nodes[0]], b[nodes[1]], b[nodes[2]], b[nodes[3]]});
      EXPECT_NEAR(f.area[e], exact, 1e-4 * exact) << face << ' ' << e;
      EXPECT_GE(f.area[e], std::hypot(f.normal[e], f.normal[e + n], f.normal[e + 2 * n]) * (1 - 1e-15));
      EXPECT_EQ(f.normal[e + axis * n] * side > 0, e != masked) << "outward";
      for (int i = 0; i < 3; ++i) closed[3 * e + i] += f.normal[e + i * n];
    }
  }
  for (double sum : closed) EXPECT_NEAR(sum, 0, 2e-15);
}

TEST(FaceArea, PlaneFacesAreExactAndTheErrorOfALiftedCornerIsAsStated) {
  Brick plane = unitCube();
  plane[6] = {1.7, 1.4, 1}, plane[7] = {-0.2, 1.1, 1}; // face 2 a quadrilateral in the plane z = 1
  const double shoelace = 0.5 * std::abs((1.7 - 0) * (1.1 - 0) - (1.4 - 0) * (-0.2 - 1));
  const Face f({plane}, 2, {0});
  EXPECT_NEAR(f.area[0], shoelace, 1e-15);
  EXPECT_NEAR(f.normal[2], shoelace, 1e-15);
  for (const auto& [lift, error] : {std::pair{0.1, 5e-11}, std::pair{0.5, 2e-7}, std::pair{1.0, 7e-6}}) {
    Brick warped = unitCube();
    warped[6][2] += lift;
    const double exact = fineArea({warped[4], warped[5], warped[6], warped[7]});
    EXPECT_NEAR(Face({warped}, 2, {0}).area[0] / exact, 1, error);
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
    const int kind = e % 4;
    const double all = std::pow(10.0, kind == 0 ? random.integer(-104, 110) : random.integer(-300, 300));
    Point factors = {all, all, all};
    if (kind > 1)
      for (double& f : factors) f = std::pow(10.0, random.integer(-300, 300));
    if (e % 40 == 1) factors = {2.5e-120, 4.6e83, 6.6e-110}; // heat flows overflow on the way
    if (e % 40 == 21) factors = {1.5e-32, 1.7e154, 6e153};   // and cofactors, though the determinant is small
    bricks.push_back(scaled(distorted(random, e % 2 == 0 ? 0.0 : 0.2), factors));
    if (kind == 3) bricks.back()[3][1] = 1.7e308;
  }
  for (const double edge : {1e110, 1e-104, 1e100, 1e-100, 1.0})
    bricks.push_back(scaled(unitCube(), {edge, edge, edge}));
  const OnePoint byElement(bricks, true), block(bricks, false);
  const int32_t n = block.n;
  const Values X = coordinates(bricks, n), ones(3 * n, 1.0), none(6 * n);
  Values T(8 * n);
  for (double& t : T) t = random.uniform(280, 320);
  const Tables scaledTables(8);
  const Integrated point(Tables(1), X, n, 1, false), mean(scaledTables, X, n, 1, true);
  Values R(8 * n), heatMask(n), strain(6 * n), F(9 * n), strainMask(n);
  call(SPX_ASM_C3D8RTDIVER, n, X, T, ones, ones, R, heatMask);
  call(SPX_OPE_C3D8RCSTRAINOUTPUT, n, n, 3, scaledTables.d[0], scaledTables.d[1], scaledTables.d[2], X, X, none, none,
       F, strain, strainMask);
  std::vector<const Values*> results = {&R, &F, &strain};
  for (const OnePoint* o : {&byElement, &block})
    results.insert(results.end(), {&o->B, &o->dV, &o->diag, &o->stiff, &o->vol, &o->rvol, &o->h, &o->gamma});
  for (const Integrated* o : {&point, &mean})
    results.insert(results.end(), {&o->Bdet, &o->det, &o->rdet, &o->B, &o->vol, &o->rvol});
  std::vector<Face> faces;
  for (int face = 1; face <= 6; ++face) faces.emplace_back(bricks, face, Values(n));
  for (const Face& f : faces) results.insert(results.end(), {&f.area, &f.normal});
  for (std::size_t k = 0; k < results.size(); ++k)
    for (double x : *results[k]) ASSERT_TRUE(std::isfinite(x)) << k;
  int sound = 0;
  for (int e = 0; e < n; ++e) {
    if (block.mask[e] != 0) {
      EXPECT_TRUE(block.B[e] == 0 && block.gamma[e] == 0 && block.rvol[e] == 0 && block.vol[e] == 1.0 / 12) << e;
      EXPECT_NEAR(block.diag[e] * block.stiff[e], 1, 1e-15);
    } else {
      EXPECT_NEAR(block.vol[e] * block.rvol[e], 1, 1e-14) << e;
      if (mean.mask[e] == 0) {
        EXPECT_NEAR(mean.vol[e] / block.vol[e], 1, 1e-9) << e;
        ++sound;
      }
    }
    if (point.mask[e] != 0)
      EXPECT_TRUE(point.det[e] == 1 && point.rdet[e] == 0);
    else
      EXPECT_NEAR(point.det[e] * point.rdet[e], 1, 1e-15);
  }
  EXPECT_GT(sound, 100);
  for (int e = 0; e < 5; ++e) {
    for (const Values* mask : {&block.mask, &point.mask, &mean.mask}) EXPECT_EQ((*mask)[n - 5 + e], e < 2 ? 1 : 0);
    EXPECT_EQ(byElement.mask[n - 5 + e], e < 4 ? 1 : 0) << "squares of areas";
  }
  // faces of squares: exact until the area itself is beyond
  for (const Face& f : faces) {
    const double areas[] = {1e220, 1e-208, 1e200, 1e-200, 1};
    for (int e = 0; e < 5; ++e) EXPECT_NEAR(f.area[n - 5 + e] / areas[e], 1, 1e-14);
    for (int e = 2; e < 400; e += 4) { // boxes, many far longer than wide
      const double vector = std::hypot(f.normal[e], f.normal[e + n], f.normal[e + 2 * n]);
      EXPECT_TRUE(f.area[e] == vector || std::abs(f.area[e] / vector - 1) < 1e-14) << e;
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
  call(SPX_OPE_SC3DDISTORTIONCHECK, n, thickness, lengths, &lengths[n], coordinates(bricks, n), flags);
  for (int e = 0; e < n; ++e)
    if (e >= 400 || e % 4 != 3) { // else components of an edge are up to 1e600 apart
      EXPECT_EQ(flags[e] != 0, isDistortedShell(bricks[e], thickness[e], lengths[e], lengths[n + e])) << e;
    }
  EXPECT_GT(std::count(flags.begin(), flags.end(), 0.0), 100);
}

// In one block: sound shells that are moved, turned, stretched and sheared, and such as are thin, spoiled or marked before, or
// whose top face is turned over about any axis of its plane or has a corner pulled over its diagonal.
TEST(ContinuumShell, ThinAndTurnedOverElementsAreMarked) {
  Random random(3);
  const int n = 1200;
  std::vector<Brick> bricks(n, scaled(unitCube(), {1, 1, 0.1}));
  Values thickness(4 * n, 0.1), lengths(2 * n, 1.0), flags(n), expected(n);
  for (int e = 0; e < n; ++e) {
    const int kind = e % 6;
    const double t = std::array{0.0011, 0.0009, 0.0, -0.1}[e / 6 % 4]; // against a thousandth of the lengths
    const Matrix R = randomRotation(random),
                 turn = turnedAxes(turnAbout({1, random.uniform(-2, 2), 0}, std::numbers::pi));
    const Matrix F = {
        {{random.uniform(0.2, 5), random.uniform(-2, 2), 0}, {0, random.uniform(0.2, 5), 0}, {0.1, 0, 1}}};
    for (int node = kind == 1 ? 4 : 0; node < 8; ++node) {
      const Point x = bricks[e][node], to = {x[0] - 0.5, x[1] - 0.5, 0};
      for (int i = 0; i < 3; ++i)
        if (kind == 0)
          bricks[e][node][i] = 10 + (R * F)[i][0] * x[0] + (R * F)[i][1] * x[1] + (R * F)[i][2] * x[2];
        else if (kind == 1 && i < 2)
          bricks[e][node][i] = 0.5 + turn[i][0] * to[0] + turn[i][1] * to[1];
    }
    if (kind == 2) bricks[e][6] = {-0.5, -0.5, 0.1};
    if (kind == 3) thickness[3 * n + e] = t;
    if (kind == 4 && e % 12 == 4) bricks[e][e / 12 % 8][e / 96 % 3] = kNaN;
    if (kind == 4 && e % 12 == 10) (e % 24 == 10 ? thickness[e / 24 % 4 * n + e] : lengths[e / 24 % 2 * n + e]) = kNaN;
    if (kind == 5) flags[e] = e % 4 == 1 ? 1 : -3; // which is never cleared
    expected[e] = kind == 5 ? flags[e] : kind == 0 || (kind == 3 && t > 0.001) ? 0 : 1;
  }
  call(SPX_OPE_SC3DDISTORTIONCHECK, n, thickness, lengths, &lengths[n], coordinates(bricks, n), flags);
  for (int e = 0; e < n; ++e)
    EXPECT_TRUE(flags[e] == expected[e] || (flags[e] == 1 && e % 6 == 5)) << e << ": " << flags[e];
}

// ---- fields

TEST(NodalFields, GradientAndDivergenceOfLinearFieldsOnDistortedBricks) {
  Random random(24);
  const int n = 60;
  const std::vector<Brick> bricks = someBricks(25, n);
  const OnePoint block(bricks, true);
  Matrix G;
  double offset[3];
  for (auto& row : G)
    for (double& g : row) g = random.uniform(-2, 2);
  for (double& o : offset) o = random.uniform(-1e3, 1e3);
  Values u(24 * n), constant(8 * n, 293.15), grad(3 * n), div(n);
  for (int e = 0; e < n; ++e)
    for (int k = 0; k < 24; ++k) {
      const Point& x = bricks[e][k % 8];
      const auto& g = G[k / 8];
      u[k * n + e] = offset[k / 8] + g[0] * x[0] + g[1] * x[1] + g[2] * x[2];
    }
  call(SPX_OPE_C3DH8DIVER, n, block.B, u, div);
  for (int e = 0; e < n; ++e) EXPECT_NEAR(div[e], G[0][0] + G[1][1] + G[2][2], 1e-12);
  for (int i = 0; i < 3; ++i) {
    call(SPX_OPE_C3DH8TGRAD, n, n, block.B, &u[8 * i * n], grad);
    for (int k = 0; k < 3 * n; ++k) EXPECT_NEAR(grad[k], G[i][k / n], 1e-12);
  }
  call(SPX_OPE_C3DH8TGRAD, n, n, block.B, constant, grad);
  EXPECT_EQ(grad, Values(3 * n));
}

TEST(HeatFlows, FluxAndHourglassConductance) {
  Random random(26);
  const int n = 30, inverted = 19;
  std::vector<Brick> bricks = someBricks(27, n);
  bricks[9] = unitCube();
  invert(bricks[inverted]);
  const OnePoint block(bricks, false);
  Values T(8 * n), q(3 * n), k(n), R(8 * n), flow(8 * n), mask(n);
  for (double& t : T) t = random.uniform(280, 320);
  for (double& v : q) v = random.uniform(-50, 50);
  for (double& v : k) v = random.uniform(1, 10);
  call(SPX_ASM_C3D8RTDIVER, n, coordinates(bricks, n), T, q, k, R, mask);
  for (int e = 0; e < n; ++e) {
    EXPECT_EQ(mask[e], e == inverted ? 1 : 0);
    plain::heatFlow(n, &block.B[e], &block.gamma[e], block.vol[e], 0.4 / 64 * k[e] * block.stiff[e], &T[e], &q[e],
                    &flow[e]);
    for (int node = 0; node < 8; ++node) EXPECT_NEAR(R[node * n + e], e == inverted ? 0 : flow[node * n + e], 2e-11);
  }
  // On the unit cube full integration conducts 8/3 in the first three patterns and 4/3 in the fourth.
  for (int mode = 0; mode < 4; ++mode) {
    call(SPX_ASM_C3D8RTDIVER, 1, coordinates({unitCube()}, 1), kPatterns[mode], Values(3), 1.0, R, Values(1));
    const double energy = -std::inner_product(R.begin(), R.begin() + 8, kPatterns[mode], 0.0);
    EXPECT_NEAR(energy, (mode < 3 ? 0.45 : 0.9) * (mode < 3 ? 8 : 4) / 3, 1e-14);
  }
}

TEST(ErrorCheck, CountsTruncatesAndSurvivesNumbersThatAreNone) {
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    Values flags;
    double sum;
    int32_t before, count;
  } cases[] = {{{1, 0, 1}, 2, -5, 2},
               {{0, 0}, 0, -5, -5},
               {{}, 0, -5, -5},
               {{-1, 1}, 0, -5, -5},
               {{0.75, 2}, 2.75, -5, 2},
               {{-2.5}, -2.5, 7, -2},
               {{2147483647.5}, 2147483647.5, 7, 2147483647},
               {{2147483648.0, 1}, 2147483649.0, 7, 2},
               {{inf, 1, 1}, inf, 7, 3},
               {{kNaN, 0, 1}, kNaN, 7, 2}};
  for (const auto& c : cases) {
    int32_t count = c.before;
    const double sum = call(SPX_OPE_ERRORCHECK, static_cast<int32_t>(c.flags.size()), count, c.flags);
    EXPECT_TRUE(sum == c.sum || (std::isnan(sum) && std::isnan(c.sum))) << sum;
    EXPECT_EQ(count, c.count) << c.sum;
  }
}

// ---- strain

double measure(int selector, double stretch) {
  return selector == 1   ? 0.5 * (stretch * stretch - 1)
         : selector == 3 ? std::log(stretch)
         : selector == 4 ? 0.5 * (1 - 1 / (stretch * stretch))
                         : stretch - 1;
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
      const Matrix Q = randomRotation(random);
      const Point axis = {random.uniform(-1, 1), random.uniform(-1, 1), random.uniform(0.1, 1)};
      const double angle = e % 3 == 0 ? 1e-3 * e : random.uniform(-7, 7);
      const Matrix R = turnedAxes(turnAbout(axis, angle)), RQ = R * Q;
      double l[3], g[3];
      for (int k = 0; k < 3; ++k) {
        stretches[k * n + e] = l[k] = 1 + random.uniform(-amount, amount);
        vector[k * n + e] = angle * axis[k] / std::hypot(axis[0], axis[1], axis[2]);
      }
      setPrincipal(U.data(), n, e, l, Q);
      for (int selector = 1; selector < 5; ++selector) {
        for (int k = 0; k < 3; ++k) g[k] = measure(selector, l[k]);
        setPrincipal(Umeasure[selector].data(), n, e, g, Q);
        setPrincipal(Vmeasure[selector].data(), n, e, g, RQ);
      }
      const Matrix product = R * tensorOf(&U[e], n);
      for (int k = 0; k < 9; ++k) F[k * n + e] = product[k % 3][k / 3];
    }
  }
};

void expectNear(const Values& found, const Values& expected, double bound) {
  ASSERT_EQ(found.size(), expected.size());
  for (std::size_t k = 0; k < found.size(); ++k) EXPECT_NEAR(found[k], expected[k], bound) << k;
}

struct StrainOutput {
  Values G, C, J, strain, principal;
  StrainOutput(int32_t n, int32_t selector, const Values& F, const Values& rotation, const Values& mask,
               const double* stretch0 = nullptr)
      : G(9 * n), C(6 * n), J(n), strain(6 * n), principal(3 * n) {
    const int32_t has = stretch0 != nullptr, ipt = 2, nipt = 2, nhist = 5, irot = 3;
    Values hist(2 * n, kNaN), gradients(9 * n, kNaN);
    hist.insert(hist.end(), rotation.begin(), rotation.end());
    gradients.insert(gradients.end(), F.begin(), F.end());
    call(SPX_OPE_C3DH8STRAINOUTPUT, n, n, selector, has, ipt, nipt, nhist, irot, gradients, stretch0, hist, G, C, J,
         strain, principal, mask);
  }
};

TEST(StrainOutput, EveryMeasureInReferenceAndCurrentAxes) {
  const Deformations d(31, 200);
  const Values mask(d.n), none(3 * d.n);
  for (int selector = 1; selector <= 4; ++selector) {
    const StrainOutput turned(d.n, selector, d.F, d.vector, mask), unturned(d.n, selector, d.F, none, mask);
    expectNear(turned.strain, selector == 1 ? d.Umeasure[1] : d.Vmeasure[selector], 2e-14);
    expectNear(unturned.strain, d.Umeasure[selector], 2e-14);
    for (int e = 0; e < d.n; ++e) {
      double l[3] = {d.stretches[e], d.stretches[e + d.n], d.stretches[e + 2 * d.n]};
      std::sort(l, l + 3, std::greater<>());
      for (int k = 0; k < 3; ++k) EXPECT_NEAR(turned.principal[e + k * d.n], measure(selector, l[k]), 2e-14);
      EXPECT_NEAR(turned.J[e], l[0] * l[1] * l[2], 1e-14);
    }
  }
}

TEST(StrainOutput, SmallStrainsKeepTheDigitsOfC) {
  for (double strain : {1e-3, 1e-6, 1e-9}) {
    // C - 1 is what the rounded C holds
    const Values C = {1 + 2 * strain, 1 - strain, 1, 0.5 * strain, 0, 0}, zero(3);
    const double a = (C[0] - 1 + (C[1] - 1)) / 2, b = (C[0] - C[1]) / 2, r = std::hypot(b, C[3]);
    for (int32_t selector : {2, 3, 4}) {
      Values E(6);
      call(SPX_OPE_STRETCHSTRAIN3DH8, 1, selector, C, zero, E);
      const auto value = [&](double x) {
        const double logarithm = 0.5 * std::log1p(x);
        return selector == 2 ? std::expm1(logarithm) : selector == 3 ? logarithm : -0.5 * std::expm1(-2 * logarithm);
      };
      const double high = value(a + r), low = value(a - r), mean = (high + low) / 2, half = (high - low) / 2;
      expectNear(E, {mean + half * b / r, mean - half * b / r, 0, half * C[3] / r, 0, 0}, 1e-14 * strain);
    }
  }
}

TEST(StrainOutput, InitialStretchIsTakenOff) {
  const Deformations d(32, 100, 0.3), initial(33, 100, 0.3);
  Values total(9 * d.n);
  for (int e = 0; e < d.n; ++e) {
    const Matrix product = gradientOf(&d.F[e], d.n) * tensorOf(&initial.U[e], d.n);
    for (int k = 0; k < 9; ++k) total[k * d.n + e] = product[k % 3][k / 3];
  }
  Values recovered = total, kept = total;
  call(SPX_OPE_INVINISTRETCH3DH8, d.n, initial.U, recovered);
  const StrainOutput output(d.n, 3, total, d.vector, Values(d.n), initial.U.data());
  expectNear(recovered, d.F, 1e-14);
  EXPECT_EQ(output.G, recovered);
  expectNear(output.strain, d.Vmeasure[3], 4e-14);
  call(SPX_OPE_INVINISTRETCH3DH8, d.n, Values(6 * d.n), kept);
  EXPECT_EQ(kept, total);
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
  set(3, kNaN, 1, 1);
  set(4, 1, 1, 1), F[4 + n] = -1e200;
  set(5, 1, 1, 1), F[5 + 2 * n] = 1e200;
  mask[3] = 1;
  const StrainOutput nominal(n, 2, F, rotation, mask), logarithmic(n, 3, F, rotation, mask),
      almansi(n, 4, F, rotation, mask);
  const double limit = 1.3407807929942596e149;
  EXPECT_NEAR(nominal.strain[0] / limit, 1, 1e-15);
  EXPECT_NEAR(nominal.strain[n] / limit, 3, 4e-15);
  EXPECT_NEAR(nominal.G[8 * n], limit / 1e200, 1e-65);
  EXPECT_NEAR(nominal.G[4 + n] / -limit, 1, 1e-15);
  EXPECT_NEAR(nominal.G[5 + 2 * n] / limit, 1, 1e-15);
  EXPECT_EQ(nominal.strain[1], -1);
  EXPECT_NEAR(logarithmic.strain[1], 0.5 * std::log(std::numeric_limits<double>::min()), 1e-12);
  for (int k = 0; k < 3; ++k) {
    EXPECT_NEAR(logarithmic.strain[2 + k * n], std::log(F[2 + 4 * k * n]), 4e-15);
    EXPECT_NEAR(almansi.strain[2 + k * n] / measure(4, F[2 + 4 * k * n]), 1, 1e-14) << "strong compression";
  }
  for (const auto* column : {&nominal.G, &nominal.C, &nominal.J, &nominal.strain, &nominal.principal})
    for (std::size_t k = 3; k < column->size(); k += n) EXPECT_EQ((*column)[k], 0);
}

TEST(StrainOutput, SmallStrainSplitsTheDisplacementGradient) {
  const Deformations d(34, 50, 0.3), initial(35, 50, 0.2);
  const int n = d.n, masked = 17;
  Values mask(n), H(9 * n), volumetric(n), strain(6 * n), spin(3 * n), deviator(6 * n), equivalent(n), principal(3 * n),
      corrected = d.F, values(3 * n);
  mask[masked] = 1;
  call(SPX_OPE_INVINISTRETCH3DH8, n, initial.U, corrected);
  call(SPX_OPE_C3DH8LINSTRAINOUTPUT, n, n, 1, 1, 1, d.F, initial.U, H, volumetric, strain, spin, deviator, equivalent,
       principal, mask);
  call(GLO_UTI_EIG33S, n, strain, values);
  expectNear(principal, values, 2e-15);
  for (int e = 0; e < n; ++e) {
    const Matrix h = e == masked ? Matrix{} : gradientOf(&corrected[e], n) + -1 * kIdentity,
                 s = tensorOf(&strain[e], n), dev = tensorOf(&deviator[e], n);
    EXPECT_EQ(gradientOf(&H[e], n), h);
    EXPECT_NEAR(volumetric[e], trace(h), 1e-15);
    EXPECT_LT(distance(s + spinOf(&spin[e], n), h), 1e-15);
    EXPECT_LT(distance(dev, s + -trace(h) / 3 * kIdentity), 1e-15);
    EXPECT_NEAR(equivalent[e], std::sqrt(trace(dev * dev) * 2 / 3), 1e-15);
  }
}

// The mean gradient is that of exact quadrature over the reference volume, and that of a linear field on distorted bricks.
TEST(StrainOutput, OfOnePointIsTheMeanOverTheReferenceVolume) {
  const int32_t n = 60, selector = 2, inverted = 9;
  std::vector<Brick> bricks = someBricks(36, n, 0.2);
  const Deformations d(37, n, 0.3), initial(38, n, 0.2);
  Random random(39);
  Values x(24 * n), stretch0(6 * n), F(9 * n), strain(6 * n), mask(n), expected(9 * n);
  for (int e = 0; e < n; ++e) {
    const Jacobian whole = integrate(bricks[e]);
    for (int k = 0; k < 24; ++k) {
      const int i = k / 8, node = k % 8;
      double now = e % 2 == 0 ? random.uniform(-0.2, 0.2) : 50.0;
      for (int j = 0; j < 3; ++j) now += d.F[(i + 3 * j) * n + e] * bricks[e][node][j];
      x[k * n + e] = now;
      for (int j = 0; j < 3; ++j) expected[(i + 3 * j) * n + e] += now * whole.gradient[node][j] / whole.det;
    }
    for (int k = 0; k < 6; ++k) stretch0[k * n + e] = e % 3 == 0 ? 0 : initial.U[k * n + e];
  }
  call(SPX_OPE_INVINISTRETCH3DH8, n, stretch0, expected);
  const StrainOutput output(n, selector, expected, d.vector, Values(n));
  invert(bricks[inverted]);
  const Tables tables(8);
  call(SPX_OPE_C3D8RCSTRAINOUTPUT, n, n, selector, tables.d[0], tables.d[1], tables.d[2], coordinates(bricks, n), x,
       stretch0, d.vector, F, strain, mask);
  for (int e = 0; e < n; ++e) {
    EXPECT_EQ(mask[e], e == inverted ? 1 : 0);
    for (int k = 0; k < 9; ++k) {
      EXPECT_NEAR(F[k * n + e], e == inverted ? 0 : expected[k * n + e], 1e-13);
      const bool isLinear = e % 2 == 1 && e % 3 == 0 && e != inverted;
      EXPECT_NEAR(isLinear ? F[k * n + e] - d.F[k * n + e] : 0, 0, 1e-13);
    }
    for (int k = 0; k < 6; ++k) EXPECT_NEAR(strain[k * n + e], e == inverted ? 0 : output.strain[k * n + e], 1e-13);
  }
}

} // namespace
