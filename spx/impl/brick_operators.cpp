// Kinematic operators of the 8-node brick.
//
// Natural coordinates of the nodes 1..8: (-,-,-) (+,-,-) (+,+,-) (-,+,-) (-,-,+) (+,-,+) (+,+,+) (-,+,+).
// Blocks are worked off in short passes through scratch: with 24 to 56 streams of results, one long body would run out of
// registers and, at power-of-two block lengths, out of cache ways.
#include "glo/kernel.h"
#include "spx.h"

namespace sa {
namespace {

constexpr double kTiny = 2.2250738585072014e-308; // the smallest normal double

using Column = double[kScratchPoints]; // one value for each element of a piece

// ---- fully integrated brick

// du/dxi, du/deta, du/dzeta of one coordinate u.  At any point the derivatives of the two nodes of an edge along xi differ
// by their sign alone, so four of them times four differences give du/dxi; likewise for eta and zeta.
SA_INLINE void jacobianRow(int n, int64_t ld, const double* a, const double* b, const double* c, const double* u,
                           Column& uXi, Column& uEta, Column& uZeta) {
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

// det * dN/du for the eight nodes, from the cofactors of one coordinate u.
SA_INLINE void gradientColumns(int n, int64_t ld, const double* a, const double* b, const double* c, const Column& cXi,
                               const Column& cEta, const Column& cZeta, double* B) {
  for (int node = 0; node < 8; ++node) {
    const double aI = a[node], bI = b[node], cI = c[node];
    double* out = B + node * ld;
    forPoints(n, [=, &cXi, &cEta, &cZeta](int e) SA_POINT { out[e] = cXi[e] * aI + cEta[e] * bI + cZeta[e] * cI; });
  }
}

// ---- one-point brick

// The coordinates of a brick written in the eight sign patterns of its nodes; the constant one is not needed.
// a: xi, eta, zeta; h: eta zeta, xi zeta, xi eta, xi eta zeta, the hourglass patterns 1 to 4.
struct Modes {
  Column a1, a2, a3, h1, h2, h3, h4;
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

// Nodal values of a field given by its modes, times scale; adds 8 times the squares of the scaled modes, which is the sum of
// the squares of the nodal values, to squares.
SA_INLINE void nodalValues(int n, int64_t ld, const Modes& d, const Column& scale, double* B, Column& squares) {
  forPoints(n, [=, &d, &scale, &squares](int e) SA_POINT {
    const double s = scale[e];
    const bool masked = s == 0.0; // then the modes need not be finite
    const double a1 = masked ? 0.0 : d.a1[e] * s, a2 = masked ? 0.0 : d.a2[e] * s, a3 = masked ? 0.0 : d.a3[e] * s;
    const double h1 = masked ? 0.0 : d.h1[e] * s, h2 = masked ? 0.0 : d.h2[e] * s, h3 = masked ? 0.0 : d.h3[e] * s;
    // Nodes 1 to 4; their antipodes 7, 8, 5, 6 have the odd part reversed.
    const double odd1 = -(a1 + a2) - a3, odd2 = (a1 - a2) - a3, odd3 = (a1 + a2) - a3, odd4 = (a2 - a1) - a3;
    const double even1 = (h1 + h2) + h3, even2 = (h1 - h2) - h3, even3 = h3 - (h1 + h2), even4 = (h2 - h1) - h3;
    B[e] = even1 + odd1;
    B[e + ld] = even2 + odd2;
    B[e + 2 * ld] = even3 + odd3;
    B[e + 3 * ld] = even4 + odd4;
    B[e + 4 * ld] = even3 - odd3;
    B[e + 5 * ld] = even4 - odd4;
    B[e + 6 * ld] = even1 - odd1;
    B[e + 7 * ld] = even2 - odd2;
    squares[e] += 8.0 * (((a1 * a1 + a2 * a2) + a3 * a3) + ((h1 * h1 + h2 * h2) + h3 * h3));
  });
}

// gamma_k = Gamma_k - (h_kx B_x + h_ky B_y + h_kz B_z) for one hourglass pattern; signs holds Gamma_k.
SA_INLINE void hourglassVector(int n, int64_t ld, const double (&signs)[8], const Column& hx, const Column& hy,
                               const Column& hz, const Column& scale, const double* B, double* gamma) {
  for (int node = 0; node < 8; ++node) {
    const double sign = signs[node];
    const double *bx = B + node * ld, *by = bx + 8 * ld, *bz = by + 8 * ld;
    double* out = gamma + node * ld;
    forPoints(n, [=, &hx, &hy, &hz, &scale](int e) SA_POINT {
      const double g = sign - (hx[e] * bx[e] + hy[e] * by[e] + hz[e] * bz[e]);
      out[e] = scale[e] == 0.0 ? 0.0 : g;
    });
  }
}

constexpr double kHourglass[4][8] = {{+1, +1, -1, -1, -1, -1, +1, +1},
                                     {+1, -1, -1, +1, -1, +1, +1, -1},
                                     {+1, -1, +1, -1, +1, -1, +1, -1},
                                     {-1, +1, -1, +1, +1, -1, +1, -1}};

} // namespace

SA_KERNEL(SPX_OPE_C3D8OPER,
          (const int32_t* nblock, const int32_t* ipt, SA_UNREAD nipt, const double* dNdxi, const double* dNdeta,
           const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ, double* mask),
          (nblock, ipt, nipt, dNdxi, dNdeta, dNdzeta, X, Bdet, detJ, rdetJ, mask)) {
  const int64_t ld = *nblock, column = 8 * (static_cast<int64_t>(*ipt) - 1);
  const double *a = dNdxi + column, *b = dNdeta + column, *c = dNdzeta + column;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    const double* x = X + start;
    double *B = Bdet + start, *det = detJ + start, *rdet = rdetJ + start, *m = mask + start;
    Column xXi, xEta, xZeta, yXi, yEta, yZeta, zXi, zEta, zZeta;
    jacobianRow(n, ld, a, b, c, x, xXi, xEta, xZeta);
    jacobianRow(n, ld, a, b, c, x + 8 * ld, yXi, yEta, yZeta);
    jacobianRow(n, ld, a, b, c, x + 16 * ld, zXi, zEta, zZeta);

    // Cofactors take the places of the entries; an element that is masked on entry has none.
    forPoints(n, [=, &xXi, &xEta, &xZeta, &yXi, &yEta, &yZeta, &zXi, &zEta, &zZeta](int e) SA_POINT {
      const double x1 = xXi[e], x2 = xEta[e], x3 = xZeta[e];
      const double y1 = yXi[e], y2 = yEta[e], y3 = yZeta[e];
      const double z1 = zXi[e], z2 = zEta[e], z3 = zZeta[e];
      const double active = 1.0 - m[e];
      const bool off = active == 0.0;
      const double cx1 = off ? 0.0 : (y2 * z3 - y3 * z2) * active, cx2 = off ? 0.0 : (y3 * z1 - y1 * z3) * active;
      const double cx3 = off ? 0.0 : (y1 * z2 - y2 * z1) * active, cy1 = off ? 0.0 : (z2 * x3 - z3 * x2) * active;
      const double cy2 = off ? 0.0 : (z3 * x1 - z1 * x3) * active, cy3 = off ? 0.0 : (z1 * x2 - z2 * x1) * active;
      const double cz1 = off ? 0.0 : (x2 * y3 - x3 * y2) * active, cz2 = off ? 0.0 : (x3 * y1 - x1 * y3) * active;
      const double cz3 = off ? 0.0 : (x1 * y2 - x2 * y1) * active;
      const double d = x1 * cx1 + y1 * cy1 + z1 * cz1;
      const bool degenerate = !(d > 0.0);
      const double masked = degenerate ? 1.0 : m[e];
      xXi[e] = cx1, xEta[e] = cx2, xZeta[e] = cx3;
      yXi[e] = cy1, yEta[e] = cy2, yZeta[e] = cy3;
      zXi[e] = cz1, zEta[e] = cz2, zZeta[e] = cz3;
      m[e] = masked;
      det[e] = (degenerate ? 0.0 : d) + masked;
    });

    gradientColumns(n, ld, a, b, c, xXi, xEta, xZeta, B);
    gradientColumns(n, ld, a, b, c, yXi, yEta, yZeta, B + 8 * ld);
    gradientColumns(n, ld, a, b, c, zXi, zEta, zZeta, B + 16 * ld);
    forPoints(n, [=](int e) SA_POINT { rdet[e] = (1.0 - m[e]) / det[e]; });
  });
}

SA_KERNEL(SPX_OPE_C3D8ROPER2,
          (const int32_t* nblock, const int32_t* ld, const double* X, double* B, double* hgdiag, double* hgstiff,
           double* vol, double* rvol, double* gamma, double* mask),
          (nblock, ld, X, B, hgdiag, hgstiff, vol, rvol, gamma, mask)) {
  const int64_t L = *ld;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *v = vol + start, *rv = rvol + start, *diag = hgdiag + start, *stiff = hgstiff + start, *m = mask + start;
    double *b = B + start, *g = gamma + start;
    Modes x, y, z, dx, dy, dz;
    projectModes(n, L, X + start, x);
    projectModes(n, L, X + start + 8 * L, y);
    projectModes(n, L, X + start + 16 * L, z);
    volumeDerivatives(n, y, z, dx);
    volumeDerivatives(n, z, x, dy);
    volumeDerivatives(n, x, y, dz);

    // W = 12 V, then the reciprocal with one Newton step.
    Column scale, squares;
    forPoints(n, [=, &x, &dx, &scale, &squares](int e) SA_POINT {
      const double w = ((x.a1[e] * dx.a1[e] + x.a2[e] * dx.a2[e]) + x.a3[e] * dx.a3[e]) +
                       ((x.h1[e] * dx.h1[e] + x.h2[e] * dx.h2[e]) + x.h3[e] * dx.h3[e]);
      const double W = w > 0.0 && m[e] == 0.0 ? w : 0.0;
      const double masked = W == 0.0 ? 1.0 : m[e];
      const double volume12 = W + masked, r = 1.0 / volume12;
      const double reciprocal = (2.0 * r - volume12 * r * r) * (1.0 - masked);
      m[e] = masked;
      v[e] = volume12;
      scale[e] = (1.0 - masked) * reciprocal;
      rv[e] = 12.0 * reciprocal;
      squares[e] = 0.0;
    });

    nodalValues(n, L, dx, scale, b, squares);
    nodalValues(n, L, dy, scale, b + 8 * L, squares);
    nodalValues(n, L, dz, scale, b + 16 * L, squares);
    hourglassVector(n, L, kHourglass[0], x.h1, y.h1, z.h1, scale, b, g);
    hourglassVector(n, L, kHourglass[1], x.h2, y.h2, z.h2, scale, b, g + 8 * L);
    hourglassVector(n, L, kHourglass[2], x.h3, y.h3, z.h3, scale, b, g + 16 * L);
    hourglassVector(n, L, kHourglass[3], x.h4, y.h4, z.h4, scale, b, g + 24 * L);

    forPoints(n, [=, &squares](int e) SA_POINT {
      const double product = v[e] * squares[e], q = product > kTiny ? product : product + m[e];
      diag[e] = 6.0 / q;
      stiff[e] = q / 6.0;
      v[e] = v[e] * 0.08333333333333333;
    });
  });
}

SA_KERNEL(SPX_OPE_C3DSYMGRAD, (const int32_t* nblock, const double* G, double* sym, double* skew),
          (nblock, G, sym, skew)) {
  const int64_t n = *nblock;
  forPoints(*nblock, [=](int e) SA_POINT {
    const double g11 = G[e], g21 = G[e + n], g31 = G[e + 2 * n], g12 = G[e + 3 * n], g22 = G[e + 4 * n];
    const double g32 = G[e + 5 * n], g13 = G[e + 6 * n], g23 = G[e + 7 * n], g33 = G[e + 8 * n];
    sym[e] = g11;
    sym[e + n] = g22;
    sym[e + 2 * n] = g33;
    sym[e + 3 * n] = (g12 + g21) * 0.5;
    sym[e + 4 * n] = (g23 + g32) * 0.5;
    sym[e + 5 * n] = (g13 + g31) * 0.5;
    skew[e] = (g12 - g21) * 0.5;
    skew[e + n] = (g23 - g32) * 0.5;
    skew[e + 2 * n] = (g13 - g31) * 0.5;
  });
}

} // namespace sa
