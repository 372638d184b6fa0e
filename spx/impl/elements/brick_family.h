// What the operators of the 8-node brick share: Jacobians at a point, the sign patterns of the nodes, the volume derivatives.
//
// Natural coordinates of the nodes 1..8: (-,-,-) (+,-,-) (+,+,-) (-,+,-) (-,-,+) (+,-,+) (+,+,+) (-,+,+).
// Blocks are worked off in short passes through scratch: with 24 to 56 streams of results, one long body would run out of
// registers and, at power-of-two block lengths, out of cache ways.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"

#include <type_traits>

namespace sa::brick {

// Bricks that are worked off together: their coordinates, modes, B and gamma stay in the first level of the cache.
constexpr int kBrickPiece = 32;

constexpr double kInfinite = 1e300; // sums of a few products below this stay finite

// ---- bricks whose numbers no double holds

// Products of three lengths overflow beyond 1e102 and vanish below 1e-103; bricks that are much longer than thick get there with
// other products.  What ordinary bricks give is far inside these limits.  A piece that has an element outside is gone through
// once more, value by value; no element of another piece costs anything.
constexpr double kLeast = 1e-100, kMost = 1e100;

SA_INLINE bool anyMarked(int n, const Lane& marks) {
  uint64_t any = 0;
#pragma omp simd reduction(| : any)
  for (int e = 0; e < n; ++e) any |= __builtin_bit_cast(uint64_t, marks[e]);
  return any != 0;
}
// 1.0 for an active element with a value outside.
SA_INLINE double markOutside(double value, double mask) {
  return mask == 0.0 && !(value > kLeast && value < kMost) ? 1.0 : 0.0;
}

// Elements among the marked ones that hold an infinity or NaN in `columns` columns become 2.0.
SA_INLINE void findInfinite(int n, int64_t ld, int columns, const double* A, Lane& marks) {
  for (int k = 0; k < columns; ++k)
    forPoints(n, [a = A + k * ld, &marks](int e) SA_POINT {
      const double old = marks[e];
      marks[e] = old != 0.0 && !(__builtin_fabs(a[e]) <= 1.7976931348623157e308) ? 2.0 : old;
    });
}
// Their values are those of a masked element.
SA_INLINE void replaceInfinite(int n, int64_t ld, int columns, double value, const Lane& marks, double* A) {
  for (int k = 0; k < columns; ++k)
    forPoints(n, [=, a = A + k * ld, &marks](int e) SA_POINT {
      const double old = a[e];
      a[e] = marks[e] == 2.0 ? value : old;
    });
}

// The power of two that brings a positive number near 1; the largest or smallest that is normal where there is none.
SA_INLINE double reciprocalPower(double x) {
  const uint64_t exponent = __builtin_bit_cast(uint64_t, x) >> 52;
  return __builtin_bit_cast(double, (exponent < 2 ? 2045 : exponent > 2044 ? 1 : 2046 - exponent) << 52);
}

// ---- fully integrated brick

// du/dxi, du/deta, du/dzeta of one coordinate u.  At any point the derivatives of the two nodes of an edge along xi differ
// by their sign alone, so four of them times four differences give du/dxi; likewise for eta and zeta.
SA_INLINE void jacobianRow(int n, int64_t ld, const double* a, const double* b, const double* c, const double* u,
                           Lane& uXi, Lane& uEta, Lane& uZeta) {
  const double a1 = a[0], a3 = a[2], a5 = a[4], a7 = a[6];
  const double b1 = b[0], b2 = b[1], b5 = b[4], b6 = b[5];
  const double c1 = c[0], c2 = c[1], c3 = c[2], c4 = c[3];
  forPoints(n, [=, &uXi, &uEta, &uZeta](int e) SA_POINT {
    const double u1 = u[e], u2 = u[e + ld], u3 = u[e + 2 * ld], u4 = u[e + 3 * ld];
    const double u5 = u[e + 4 * ld], u6 = u[e + 5 * ld], u7 = u[e + 6 * ld], u8 = u[e + 7 * ld];
    uXi[e] = a1 * (u1 - u2) + a3 * (u3 - u4) + a5 * (u5 - u6) + a7 * (u7 - u8);
    uEta[e] = b1 * (u1 - u4) + b2 * (u2 - u3) + b5 * (u5 - u8) + b6 * (u6 - u7);
    uZeta[e] = c1 * (u1 - u5) + c2 * (u2 - u6) + c3 * (u3 - u7) + c4 * (u4 - u8);
  });
}

// The nine cofactors of the Jacobian; before they are found, its entries dx/dxi, dx/deta, dx/dzeta, dy/dxi, ...
struct Cofactors {
  Lane xXi, xEta, xZeta, yXi, yEta, yZeta, zXi, zEta, zZeta;
};

// Cofactors and determinant at the point whose derivative columns are a, b, c.  An element that is masked on entry has no
// cofactors; one whose determinant is not positive is masked here and keeps them; one where a product overflows, or whose
// determinant is so small that its reciprocal might, is masked too, in the first case without cofactors.  A masked determinant
// is 1.0.
SA_INLINE void pointJacobian(int n, int64_t ld, const double* a, const double* b, const double* c, const double* x,
                             double* mask, Cofactors& C, double* det) {
  jacobianRow(n, ld, a, b, c, x, C.xXi, C.xEta, C.xZeta);
  jacobianRow(n, ld, a, b, c, x + 8 * ld, C.yXi, C.yEta, C.yZeta);
  jacobianRow(n, ld, a, b, c, x + 16 * ld, C.zXi, C.zEta, C.zZeta);
  forPoints(n, [=, &C](int e) SA_POINT {
    const double x1 = C.xXi[e], x2 = C.xEta[e], x3 = C.xZeta[e];
    const double y1 = C.yXi[e], y2 = C.yEta[e], y3 = C.yZeta[e];
    const double z1 = C.zXi[e], z2 = C.zEta[e], z3 = C.zZeta[e];
    // those that no double holds count as nothing, and so does the determinant
    const double rx1 = y2 * z3 - y3 * z2, rx2 = y3 * z1 - y1 * z3, rx3 = y1 * z2 - y2 * z1;
    const double ry1 = z2 * x3 - z3 * x2, ry2 = z3 * x1 - z1 * x3, ry3 = z1 * x2 - z2 * x1;
    const double rz1 = x2 * y3 - x3 * y2, rz2 = x3 * y1 - x1 * y3, rz3 = x1 * y2 - x2 * y1;
    const double d = x1 * rx1 + y1 * ry1 + z1 * rz1;
    // small enough all of them for the sums of gradients
    const double cofactors = ((rx1 + ry1) + (rz1 + rx2)) + ((rx3 + ry2) + (ry3 + rz2)) + rz3;
    const bool isFinite = __builtin_fabs(d) < kInfinite && __builtin_fabs(cofactors) < kInfinite;
    const bool off = mask[e] != 0.0 || !isFinite, degenerate = off || !(d >= vm::kSmallestNormal);
    C.xXi[e] = off ? 0.0 : rx1, C.xEta[e] = off ? 0.0 : rx2, C.xZeta[e] = off ? 0.0 : rx3;
    C.yXi[e] = off ? 0.0 : ry1, C.yEta[e] = off ? 0.0 : ry2, C.yZeta[e] = off ? 0.0 : ry3;
    C.zXi[e] = off ? 0.0 : rz1, C.zEta[e] = off ? 0.0 : rz2, C.zZeta[e] = off ? 0.0 : rz3;
    mask[e] = degenerate ? 1.0 : 0.0;
    det[e] = degenerate ? 1.0 : d;
  });
}

// det * dN/du of the eight nodes, from the cofactors of one coordinate u: in place of what B holds, added to zero or to B.
enum class Sum { none, first, next };
template <Sum kSum>
SA_INLINE void gradientColumns(int n, int64_t ld, const double* a, const double* b, const double* c, const Lane& cXi,
                               const Lane& cEta, const Lane& cZeta, double* B) {
  const auto add = [](double& sum, double value) SA_POINT {
    if constexpr (kSum == Sum::none) sum = value;
    if constexpr (kSum == Sum::first) sum = 0.0 + value; // no negative zero
    if constexpr (kSum == Sum::next) sum += value;
  };
  for (int64_t node = 0; node < 8; node += 2) { // two at a time
    const double a1 = a[node], b1 = b[node], c1 = c[node], a2 = a[node + 1], b2 = b[node + 1], c2 = c[node + 1];
    double* out = B + node * ld;
    forPoints(n, [=, &cXi, &cEta, &cZeta](int e) SA_POINT {
      const double x = cXi[e], y = cEta[e], z = cZeta[e];
      add(out[e], x * a1 + y * b1 + z * c1);
      add(out[e + ld], x * a2 + y * b2 + z * c2);
    });
  }
}
template <Sum kSum>
SA_INLINE void pointGradient(int n, int64_t ld, const double* a, const double* b, const double* c, const Cofactors& C,
                             double* B) {
  gradientColumns<kSum>(n, ld, a, b, c, C.xXi, C.xEta, C.xZeta, B);
  gradientColumns<kSum>(n, ld, a, b, c, C.yXi, C.yEta, C.yZeta, B + 8 * ld);
  gradientColumns<kSum>(n, ld, a, b, c, C.zXi, C.zEta, C.zZeta, B + 16 * ld);
}

// Integrals of dN/dx and of 1 over the element: 8, the volume of the reference cube, times the mean over all points of tables
// that carry no factor 1/8.  An element whose determinant is not positive at every point is masked; its B and volume then mean
// nothing.  atPoint(p, a, b, c, C, det) sees what every point leaves, with the derivatives themselves in a, b, c.
template <class AtPoint>
SA_INLINE void integrateGradient(int n, int64_t ld, int nipt, const double* dNdxi, const double* dNdeta,
                                 const double* dNdzeta, const double* X, double* mask, int64_t ldB, double* B,
                                 Lane& volume, AtPoint atPoint) {
  for (int column = 0; nipt < 1 && column < 24; ++column) {
    double* out = B + column * ldB;
    forPoints(n, [=](int e) SA_POINT { out[e] = 0.0; });
  }
  forPoints(n, [&volume](int e) SA_POINT { volume[e] = 0.0; });
  for (int p = 0; p < nipt; ++p) {
    const int64_t first = int64_t{8} * p;
    double a[8], b[8], c[8];
    for (int node = 0; node < 8; ++node) {
      a[node] = 0.125 * dNdxi[first + node];
      b[node] = 0.125 * dNdeta[first + node];
      c[node] = 0.125 * dNdzeta[first + node];
    }
    Cofactors C;
    Lane det;
    pointJacobian(n, ld, a, b, c, X, mask, C, det);
    if (p == 0)
      pointGradient<Sum::first>(n, ldB, a, b, c, C, B);
    else
      pointGradient<Sum::next>(n, ldB, a, b, c, C, B);
    forPoints(n, [&volume, &det](int e) SA_POINT { volume[e] += det[e]; });
    atPoint(p, a, b, c, C, det);
  }
  const double weight = 8.0 / nipt;
  if (weight == 1.0) return;
  for (int column = 0; column < 24; ++column) {
    double* out = B + column * ldB;
    forPoints(n, [=](int e) SA_POINT { out[e] *= weight; });
  }
  forPoints(n, [=, &volume](int e) SA_POINT { volume[e] *= weight; });
}

// Sum over the nodes of a row of B, whose entries are ld apart, times a nodal value.  The entries add to nothing, so the values
// may be counted from that of node 1: a constant field then gives exactly 0.
template <class Value>
SA_INLINE double nodalSum(const double* B, int64_t ld, Value value) {
  const double v1 = value(0), d2 = value(1) - v1, d3 = value(2) - v1, d4 = value(3) - v1;
  const double d5 = value(4) - v1, d6 = value(5) - v1, d7 = value(6) - v1, d8 = value(7) - v1;
  return ((B[ld] * d2 + B[2 * ld] * d3) + (B[3 * ld] * d4 + B[4 * ld] * d5)) +
         ((B[5 * ld] * d6 + B[6 * ld] * d7) + B[7 * ld] * d8);
}

// ---- one-point brick

// The coordinates of a brick written in the eight sign patterns of its nodes; the constant one is not needed.
// a: xi, eta, zeta; h: eta zeta, xi zeta, xi eta, xi eta zeta, the hourglass patterns 1 to 4.
struct Modes {
  Lane a1, a2, a3, h1, h2, h3, h4;
  Lane hourglass; // h1 + h2 + h3 + h4: not finite, or huge, where one of them is
};

// Sums over edges, differences first: a brick far from the origin loses nothing.
SA_INLINE void projectModes(int n, int64_t ld, const double* x, Modes& m) {
  forPoints(n, [=, &m](int e) SA_POINT {
    const double x1 = x[e], x2 = x[e + ld], x3 = x[e + 2 * ld], x4 = x[e + 3 * ld];
    const double x5 = x[e + 4 * ld], x6 = x[e + 5 * ld], x7 = x[e + 6 * ld], x8 = x[e + 7 * ld];
    const double p1 = x2 - x1, p2 = x3 - x4, p3 = x6 - x5, p4 = x7 - x8; // edges along xi
    const double q1 = x4 - x1, q2 = x3 - x2, q3 = x8 - x5, q4 = x7 - x6; // along eta
    const double r1 = x5 - x1, r2 = x6 - x2, r3 = x7 - x3, r4 = x8 - x4; // along zeta
    m.a1[e] = (p1 + p2) + (p3 + p4);
    m.h2[e] = (p3 + p4) - (p1 + p2);
    m.h3[e] = (p2 - p1) + (p4 - p3);
    m.h4[e] = (p4 - p3) - (p2 - p1);
    m.a2[e] = (q1 + q2) + (q3 + q4);
    m.h1[e] = (q3 + q4) - (q1 + q2);
    m.hourglass[e] = (m.h1[e] + m.h2[e]) + (m.h3[e] + m.h4[e]);
    m.a3[e] = (r1 + r2) + (r3 + r4);
  });
}

// 12 dV/d(mode) of one coordinate, say x, from the modes of the next two, y and z.
//
// V is the integral of det(dx/dxi).  Its derivative by a mode of x is the integral of the mode's gradient times cofactors of
// y and z; over the cube the odd products vanish and leave, with [p q] = p_y q_z - p_z q_y,
//   12 dV/da1 = 3/16 [a2 a3] + 1/16 [h3 h2]     12 dV/dh1 = 1/16 ([a3 h2] + [h3 a2])
//   12 dV/da2 = 3/16 [a3 a1] + 1/16 [h1 h3]     12 dV/dh2 = 1/16 ([h1 a3] + [a1 h3])
//   12 dV/da3 = 3/16 [a1 a2] + 1/16 [h2 h1]     12 dV/dh3 = 1/16 ([a2 h1] + [h2 a1])
// and nothing for h4: the volume does not know that mode.  A nodal derivative is the sum of these with the node's signs.
SA_INLINE void volumeDerivatives(int n, const Modes& y, const Modes& z, Modes& d) {
  constexpr double k16 = 1.0 / 16.0, k3_16 = 3.0 / 16.0;
  forPoints(n, [=, &y, &z, &d](int e) SA_POINT {
    const double ya1 = y.a1[e], ya2 = y.a2[e], ya3 = y.a3[e], yh1 = y.h1[e], yh2 = y.h2[e], yh3 = y.h3[e];
    const double za1 = z.a1[e], za2 = z.a2[e], za3 = z.a3[e], zh1 = z.h1[e], zh2 = z.h2[e], zh3 = z.h3[e];
    d.a1[e] = k3_16 * (ya2 * za3 - ya3 * za2) + k16 * (yh3 * zh2 - yh2 * zh3);
    d.a2[e] = k3_16 * (ya3 * za1 - ya1 * za3) + k16 * (yh1 * zh3 - yh3 * zh1);
    d.a3[e] = k3_16 * (ya1 * za2 - ya2 * za1) + k16 * (yh2 * zh1 - yh1 * zh2);
    d.h1[e] = k16 * ((ya3 * zh2 - yh2 * za3) + (yh3 * za2 - ya2 * zh3));
    d.h2[e] = k16 * ((yh1 * za3 - ya3 * zh1) + (ya1 * zh3 - yh3 * za1));
    d.h3[e] = k16 * ((ya2 * zh1 - yh1 * za2) + (yh2 * za1 - ya1 * zh2));
  });
}

// The values at the eight nodes, ld apart, of a field given by its patterns; h4 is left out where it is zero.
template <bool kWithH4 = false>
SA_INLINE void toNodes(double* out, int64_t ld, double a1, double a2, double a3, double h1, double h2, double h3,
                       [[maybe_unused]] double h4 = 0.0) {
  // Nodes 1 to 4; their antipodes 7, 8, 5, 6 have the odd part reversed.
  double odd1 = -(a1 + a2) - a3, odd2 = (a1 - a2) - a3, odd3 = (a1 + a2) - a3, odd4 = (a2 - a1) - a3;
  const double even1 = (h1 + h2) + h3, even2 = (h1 - h2) - h3, even3 = h3 - (h1 + h2), even4 = (h2 - h1) - h3;
  if constexpr (kWithH4) {
    odd1 -= h4;
    odd2 += h4;
    odd3 -= h4;
    odd4 += h4;
  }
  out[0] = even1 + odd1;
  out[ld] = even2 + odd2;
  out[2 * ld] = even3 + odd3;
  out[3 * ld] = even4 + odd4;
  out[4 * ld] = even3 - odd3;
  out[5 * ld] = even4 - odd4;
  out[6 * ld] = even1 - odd1;
  out[7 * ld] = even2 - odd2;
}

// part(std::true_type) where an element of the piece has scale 0, so that its modes need not be finite, else
// part(std::false_type).  The others have the same bits both ways; a block without masked elements is spared 50 blends a brick.
SA_INLINE void whetherMasked(int n, const Lane& scale, auto part) {
  uint64_t masked = 0;
#pragma omp simd reduction(| : masked)
  for (int e = 0; e < n; ++e) masked |= static_cast<uint64_t>(scale[e] == 0.0);
  if (masked != 0)
    part(std::true_type{});
  else
    part(std::false_type{});
}

// Nodal values of a field given by its modes, times scale; adds 8 times the squares of the scaled modes, which is the sum of
// the squares of the nodal values, to squares.
template <bool kMasked>
SA_INLINE void nodalValues(int n, int64_t ld, const Modes& d, const Lane& scale, double* B, Lane& squares) {
  forPoints(n, [=, &d, &scale, &squares](int e) SA_POINT {
    const double s = scale[e];
    const bool masked = kMasked && s == 0.0;
    const double a1 = masked ? 0.0 : d.a1[e] * s, a2 = masked ? 0.0 : d.a2[e] * s, a3 = masked ? 0.0 : d.a3[e] * s;
    const double h1 = masked ? 0.0 : d.h1[e] * s, h2 = masked ? 0.0 : d.h2[e] * s, h3 = masked ? 0.0 : d.h3[e] * s;
    toNodes(B + e, ld, a1, a2, a3, h1, h2, h3);
    squares[e] += 8.0 * (((a1 * a1 + a2 * a2) + a3 * a3) + ((h1 * h1 + h2 * h2) + h3 * h3));
  });
}

// gamma_k = Gamma_k - (h_kx B_x + h_ky B_y + h_kz B_z) for one hourglass pattern; signs holds Gamma_k.
template <bool kMasked>
SA_INLINE void hourglassVector(int n, int64_t ld, const double (&signs)[8], const Lane& hx, const Lane& hy,
                               const Lane& hz, const Lane& scale, const double* B, double* gamma) {
  for (int node = 0; node < 8; ++node) {
    const double sign = signs[node];
    const double *bx = B + node * ld, *by = bx + 8 * ld, *bz = by + 8 * ld;
    double* out = gamma + node * ld;
    forPoints(n, [=, &hx, &hy, &hz, &scale](int e) SA_POINT {
      const double g = sign - (hx[e] * bx[e] + hy[e] * by[e] + hz[e] * bz[e]);
      out[e] = kMasked && scale[e] == 0.0 ? 0.0 : g;
    });
  }
}

constexpr double kHourglass[4][8] = {{+1, +1, -1, -1, -1, -1, +1, +1},
                                     {+1, -1, -1, +1, -1, +1, +1, -1},
                                     {+1, -1, +1, -1, +1, -1, +1, -1},
                                     {-1, +1, -1, +1, +1, -1, +1, -1}};

constexpr double kSmallestVolume = 1e-306, kLargestVolume = 1e307; // 12 V, whose reciprocal times 12 is finite

// The bricks of a piece and the derivatives of 12 V by their nodes, both as modes.
struct OnePoint {
  Modes x, y, z, dx, dy, dz;

  // 12 V of element e where the volume is positive and the element takes part, else 0.
  SA_INLINE double twelveVolumes(int e, double mask) const {
    const double w = ((x.a1[e] * dx.a1[e] + x.a2[e] * dx.a2[e]) + x.a3[e] * dx.a3[e]) +
                     ((x.h1[e] * dx.h1[e] + x.h2[e] * dx.h2[e]) + x.h3[e] * dx.h3[e]);
    return w > kSmallestVolume && w < kLargestVolume && mask == 0.0 ? w : 0.0;
  }
  // Sum of the hourglass patterns of the coordinates: not finite, or huge, where one of them is.
  SA_INLINE double patterns(int e) const { return x.hourglass[e] + y.hourglass[e] + z.hourglass[e]; }
};

SA_INLINE void onePointModes(int n, int64_t ld, const double* X, OnePoint& brick) {
  projectModes(n, ld, X, brick.x);
  projectModes(n, ld, X + 8 * ld, brick.y);
  projectModes(n, ld, X + 16 * ld, brick.z);
  volumeDerivatives(n, brick.y, brick.z, brick.dx);
  volumeDerivatives(n, brick.z, brick.x, brick.dy);
  volumeDerivatives(n, brick.x, brick.y, brick.dz);
}

// 1/v refined by one Newton step, 0 for a masked element.
SA_INLINE double refinedReciprocal(double v, double mask) {
  const double r = 1.0 / v;
  return (2.0 * r - v * r * r) * (1.0 - mask);
}

// The derivatives of 12 V times scale, and the sum of the squares of the 24 values.
SA_INLINE void onePointGradient(int n, int64_t ld, const OnePoint& brick, const Lane& scale, double* B, Lane& squares) {
  forPoints(n, [&squares](int e) SA_POINT { squares[e] = 0.0; });
  whetherMasked(n, scale, [=, &brick, &scale, &squares](auto masked) SA_POINT {
    nodalValues<masked>(n, ld, brick.dx, scale, B, squares);
    nodalValues<masked>(n, ld, brick.dy, scale, B + 8 * ld, squares);
    nodalValues<masked>(n, ld, brick.dz, scale, B + 16 * ld, squares);
  });
}

// The four hourglass shape vectors; those of elements with scale 0 are 0.
SA_INLINE void hourglassVectors(int n, int64_t ld, const OnePoint& brick, const Lane& scale, const double* B,
                                double* gamma) {
  const Modes &x = brick.x, &y = brick.y, &z = brick.z;
  whetherMasked(n, scale, [=, &x, &y, &z, &scale](auto masked) SA_POINT {
    hourglassVector<masked>(n, ld, kHourglass[0], x.h1, y.h1, z.h1, scale, B, gamma);
    hourglassVector<masked>(n, ld, kHourglass[1], x.h2, y.h2, z.h2, scale, B, gamma + 8 * ld);
    hourglassVector<masked>(n, ld, kHourglass[2], x.h3, y.h3, z.h3, scale, B, gamma + 16 * ld);
    hourglassVector<masked>(n, ld, kHourglass[3], x.h4, y.h4, z.h4, scale, B, gamma + 24 * ld);
  });
}

} // namespace sa::brick
