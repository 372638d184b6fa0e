// The other members of the brick family: element by element, averages, faces, gradients and divergences.
#include "spx/impl/elements/brick_family.h"
#include "glo/kernel/kernel.h"
#include "spx.h"

namespace sa {

using namespace brick;

namespace {

// ---- faces

// Nodes of the faces zeta = -1, zeta = 1, eta = -1, xi = 1, eta = 1, xi = -1, counter-clockwise seen from outside.
constexpr int kFaceNodes[6][4] = {{1, 4, 3, 2}, {5, 6, 7, 8}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 4, 8, 7}, {4, 1, 5, 8}};

// Edge vectors of a bilinear face with nodes 1..4, times 4, and the vector that warps or tapers it.
struct FaceEdges {
  double a, b, h;
};
SA_INLINE FaceEdges faceEdges(double u1, double u2, double u3, double u4) {
  const double p1 = u2 - u1, p2 = u3 - u4, q1 = u4 - u1, q2 = u3 - u2;
  return {p1 + p2, q1 + q2, p2 - p1};
}

struct FaceTerms {
  double x0, y0, z0, x1, y1, z1, x2, y2, z2;
};
struct FaceArea {
  double area, x, y, z;
};

// The power of two that brings a positive number near 1; the largest or smallest that is normal where there is none.
SA_INLINE double reciprocalPower(double x) {
  const uint64_t exponent = __builtin_bit_cast(uint64_t, x) >> 52;
  return __builtin_bit_cast(double, (exponent < 2 ? 2045 : exponent > 2044 ? 1 : 2046 - exponent) << 52);
}

// ---- gradients and divergences

SA_INLINE double nodalSum(const double* B, const double* u, int64_t ld, int e) {
  return brick::nodalSum(B + e, ld, [=](int node) SA_POINT { return u[e + node * ld]; });
}

// Sum over the patterns of volume derivatives and of a field: the sum over the nodes of both.
SA_INLINE double modalSum(const Modes& d, const Modes& t, int e) {
  return ((d.a1[e] * t.a1[e] + d.a2[e] * t.a2[e]) + d.a3[e] * t.a3[e]) +
         ((d.h1[e] * t.h1[e] + d.h2[e] * t.h2[e]) + d.h3[e] * t.h3[e]);
}

} // namespace

SA_KERNEL(SPX_OPE_C3DH8OPER,
          (const int32_t* nblock, const int32_t* ld, const double* X, double* dVdX, double* B, double* hgdiag,
           double* hgstiff, double* vol, double* rvol, double* h, double* gamma, double* mask),
          (nblock, ld, X, dVdX, B, hgdiag, hgstiff, vol, rvol, h, gamma, mask)) {
  const int64_t L = *ld;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *v = vol + start, *rv = rvol + start, *diag = hgdiag + start, *stiff = hgstiff + start, *m = mask + start;
    double *dV = dVdX + start, *b = B + start;
    OnePoint brick;
    onePointModes(n, L, X + start, brick);
    Column scale, squares, marks;
    forPoints(n, [=, &brick, &scale](int e) SA_POINT {
      const double W = brick.twelveVolumes(e, m[e]), masked = W == 0.0 ? 1.0 : m[e];
      const double s = (1.0 - masked) * 0.08333333333333333, volume = W * s + masked;
      m[e] = masked;
      scale[e] = s;
      v[e] = volume;
      rv[e] = refinedReciprocal(volume, masked);
    });
    onePointGradient(n, L, brick, scale, dV, squares);
    for (int column = 0; column < 24; ++column)
      forPoints(n, [=, in = dV + column * L, out = b + column * L](int e) SA_POINT { out[e] = in[e] * rv[e]; });

    const Modes* const coordinates[3] = {&brick.x, &brick.y, &brick.z};
    for (int i = 0; i < 3; ++i) {
      const Modes& u = *coordinates[i];
      double* out = h + start + 4 * i * L;
      forPoints(n, [=, &u, &scale](int e) SA_POINT {
        const bool masked = scale[e] == 0.0;
        const double h1 = u.h1[e], h2 = u.h2[e], h3 = u.h3[e], h4 = u.h4[e];
        out[e] = masked ? 0.0 : h1;
        out[e + L] = masked ? 0.0 : h2;
        out[e + 2 * L] = masked ? 0.0 : h3;
        out[e + 3 * L] = masked ? 0.0 : h4;
      });
    }
    hourglassVectors(n, L, brick, scale, b, gamma + start);

    forPoints(n, [=, &brick, &squares, &marks](int e) SA_POINT {
      const double sum = squares[e], q = sum > kTiny ? sum : sum + (kTiny + m[e]);
      const double extent = __builtin_fabs(brick.patterns(e));
      diag[e] = v[e] * 0.5 / q;
      stiff[e] = 2.0 * q * rv[e];
      const double outside = markOutside(sum, m[e]) + markOutside(stiff[e], m[e]) + markOutside(v[e], m[e]);
      marks[e] = extent < kMost && outside == 0.0 ? 0.0 : 1.0 - m[e];
    });
    if (!anyMarked(n, marks)) return;
    double *hourglass = h + start, *g = gamma + start;
    findInfinite(n, L, 24, dV, marks), findInfinite(n, L, 24, b, marks), findInfinite(n, L, 12, hourglass, marks);
    findInfinite(n, L, 32, g, marks), findInfinite(n, L, 1, diag, marks), findInfinite(n, L, 1, stiff, marks);
    // a sum of squares that vanishes leaves no scale for the stiffness
    forPoints(n, [&squares, &marks](int e) SA_POINT {
      const double old = marks[e];
      marks[e] = old != 0.0 && !(squares[e] > kTiny) ? 2.0 : old;
    });
    replaceInfinite(n, L, 24, 0.0, marks, dV), replaceInfinite(n, L, 24, 0.0, marks, b);
    replaceInfinite(n, L, 12, 0.0, marks, hourglass), replaceInfinite(n, L, 32, 0.0, marks, g);
    replaceInfinite(n, L, 1, 0.5, marks, diag), replaceInfinite(n, L, 1, 0.0, marks, stiff);
    replaceInfinite(n, L, 1, 1.0, marks, v), replaceInfinite(n, L, 1, 0.0, marks, rv);
    replaceInfinite(n, L, 1, 1.0, marks, m);
  });
}

SA_KERNEL(SPX_OPE_C3D8IOPER,
          (const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi, const double* dNdeta,
           const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ, double* B, double* vol,
           double* rvol, double* mask),
          (nblock, ipt, nipt, dNdxi, dNdeta, dNdzeta, X, Bdet, detJ, rdetJ, B, vol, rvol, mask)) {
  const int64_t N = *nblock;
  const int wanted = *ipt - 1, points = *nipt;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *det = detJ + start, *rdet = rdetJ + start, *m = mask + start, *v = vol + start, *rv = rvol + start;
    double *bdet = Bdet + start, *b = B + start;
    Column volume;
    integrateGradient(n, N, points, dNdxi, dNdeta, dNdzeta, X + start, m, N, b, volume,
                      [=](int p, const double* x, const double* y, const double* z, const Cofactors& C,
                          const Column& atPoint) SA_POINT {
                        if (p != wanted) return;
                        pointGradient<false>(n, N, x, y, z, C, bdet);
                        forPoints(n, [=, &atPoint](int e) SA_POINT { det[e] = atPoint[e]; });
                      });
    forPoints(n, [=, &volume](int e) SA_POINT {
      const double masked = m[e];
      const bool off = masked != 0.0;
      const double d = det[e], w = volume[e], D = off ? 1.0 : d, V = off ? 1.0 : w;
      det[e] = D;
      rdet[e] = (1.0 - masked) / D;
      v[e] = V;
      rv[e] = refinedReciprocal(V, masked);
    });
    for (int column = 0; column < 24; ++column)
      forPoints(n, [=, out = b + column * N, at = bdet + column * N](int e) SA_POINT {
        const bool off = m[e] != 0.0;
        const double mean = out[e] * rv[e], product = at[e];
        out[e] = off ? 0.0 : mean;
        at[e] = off ? 0.0 : product;
      });
    Column marks;
    forPoints(n, [=, &marks](int e) SA_POINT { marks[e] = 1.0 - m[e]; });
    findInfinite(n, N, 24, b, marks);
    if (!anyInfinite(n, marks)) return;
    replaceInfinite(n, N, 24, 0.0, marks, b), replaceInfinite(n, N, 24, 0.0, marks, bdet);
    replaceInfinite(n, N, 1, 1.0, marks, det), replaceInfinite(n, N, 1, 0.0, marks, rdet);
    replaceInfinite(n, N, 1, 1.0, marks, v), replaceInfinite(n, N, 1, 0.0, marks, rv);
    replaceInfinite(n, N, 1, 1.0, marks, m);
  });
}

// The normal of a bilinear face at (xi, eta) is n0 + xi n1 + eta n2, times 16 here; its length is summed over 3 x 3 points.
SA_KERNEL(SPX_OPE_C3D8FACEAREA,
          (const int32_t* nblock, const int32_t* ld, const int32_t* face, const double* X, double* area, double* normal,
           const double* mask),
          (nblock, ld, face, X, area, normal, mask)) {
  constexpr double kPoint = 0.7745966692414834; // sqrt(3/5)
  const int64_t L = *ld;
  const int number = *face;
  if (number < 1 || number > 6) return;
  const auto& nodes = kFaceNodes[number - 1];
  const double *X1 = X + (nodes[0] - 1) * L, *X2 = X + (nodes[1] - 1) * L, *X3 = X + (nodes[2] - 1) * L,
               *X4 = X + (nodes[3] - 1) * L;
  // The normal's three terms of a face whose coordinates are multiplied by a power of two.
  const auto termsOf = [=](int64_t e, double scale) SA_POINT {
    const auto edges = [=](int64_t at) SA_POINT {
      // a small face may stand far out, and a large one overflow in its differences
      const double before = scale < 1.0 ? scale : 1.0, after = scale < 1.0 ? 1.0 : scale;
      const FaceEdges f = faceEdges(before * X1[at], before * X2[at], before * X3[at], before * X4[at]);
      return FaceEdges{after * f.a, after * f.b, after * f.h};
    };
    const FaceEdges x = edges(e), y = edges(e + 8 * L), z = edges(e + 16 * L);
    return FaceTerms{y.a * z.b - z.a * y.b, z.a * x.b - x.a * z.b, x.a * y.b - y.a * x.b,
                     y.a * z.h - z.a * y.h, z.a * x.h - x.a * z.h, x.a * y.h - y.a * x.h,
                     y.h * z.b - z.h * y.b, z.h * x.b - x.h * z.b, x.h * y.b - y.h * x.b};
  };
  // The area by 3 x 3 points, and the area vector.
  const auto faceOf = [=](const FaceTerms& t) SA_POINT {
    const auto length = [=](double xi, double eta) SA_POINT {
      const double nx = t.x0 + xi * t.x1 + eta * t.x2, ny = t.y0 + xi * t.y1 + eta * t.y2,
                   nz = t.z0 + xi * t.z1 + eta * t.z2;
      return __builtin_sqrt(nx * nx + ny * ny + nz * nz);
    };
    const double middle = length(0.0, 0.0);
    const double edge = (length(-kPoint, 0.0) + length(kPoint, 0.0)) + (length(0.0, -kPoint) + length(0.0, kPoint));
    const double corner =
        (length(-kPoint, -kPoint) + length(kPoint, kPoint)) + (length(-kPoint, kPoint) + length(kPoint, -kPoint));
    // weights 64, 40 and 25 over 81, and the 16
    return FaceArea{(64.0 * middle + 40.0 * edge + 25.0 * corner) * (0.0625 / 81.0), 0.25 * t.x0, 0.25 * t.y0,
                    0.25 * t.z0};
  };
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    Column marks;
    forPoints(n, [=, &marks](int i) SA_POINT {
      const int e = start + i;
      const FaceArea f = faceOf(termsOf(e, 1.0));
      const bool off = mask[e] != 0.0;
      area[e] = off ? 0.0 : f.area;
      normal[e] = off ? 0.0 : f.x;
      normal[e + L] = off ? 0.0 : f.y;
      normal[e + 2 * L] = off ? 0.0 : f.z;
      // outside, squares of areas overflow or vanish
      marks[i] = off || (f.area > 1e-140 && f.area < 1e140) ? 0.0 : 1.0;
    });
    if (!anyMarked(n, marks)) return;
    const double* const others[] = {X2, X3, X4};
    for (int i = 0; i < n; ++i) {
      if (marks[i] == 0.0) continue;
      const int e = start + i;
      // Two powers of two: one brings the extent near 1, one the terms of a face that is far longer than wide.
      double extent = 0.0;
      for (int c = 0; c < 3; ++c)
        for (const double* node : others) {
          const double d = __builtin_fabs(0.25 * node[e + 8 * c * L] - 0.25 * X1[e + 8 * c * L]);
          extent = d > extent ? d : extent;
        }
      const double scale = reciprocalPower(extent);
      FaceTerms t = termsOf(e, scale);
      double* const terms[] = {&t.x0, &t.y0, &t.z0, &t.x1, &t.y1, &t.z1, &t.x2, &t.y2, &t.z2};
      double largest = 0.0;
      for (const double* term : terms) largest = __builtin_fabs(*term) > largest ? __builtin_fabs(*term) : largest;
      const double raise = reciprocalPower(largest), back = 1.0 / scale, lower = 1.0 / raise;
      for (double* term : terms) *term *= raise;
      const FaceArea f = faceOf(t);
      const auto unscaled = [=](double value) SA_POINT { return value * back * lower * back; };
      const bool beyond = unscaled(f.area) > 1.7976931348623157e308;
      area[e] = beyond ? 0.0 : unscaled(f.area);
      normal[e] = beyond ? 0.0 : unscaled(f.x);
      normal[e + L] = beyond ? 0.0 : unscaled(f.y);
      normal[e + 2 * L] = beyond ? 0.0 : unscaled(f.z);
    }
  });
}

SA_KERNEL(SPX_OPE_C3DH8TGRAD,
          (const int32_t* nblock, const int32_t* ld, const double* B, const double* T, double* gradT),
          (nblock, ld, B, T, gradT)) {
  const int64_t L = *ld;
  for (int i = 0; i < 3; ++i)
    forPoints(*nblock, [=, b = B + 8 * i * L, out = gradT + i * L](int e) SA_POINT { out[e] = nodalSum(b, T, L, e); });
}

SA_KERNEL(SPX_OPE_C3DH8DIVER, (const int32_t* nblock, const double* B, const double* u, double* divergence),
          (nblock, B, u, divergence)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int e) SA_POINT {
    divergence[e] =
        (nodalSum(B, u, N, e) + nodalSum(B + 8 * N, u + 8 * N, N, e)) + nodalSum(B + 16 * N, u + 16 * N, N, e);
  });
}

// All sums run over the patterns instead of the nodes.  With B_i = s d_i, a temperature of the modes t has the gradient s d_i.t
// and the hourglass values g_k = t_k - h_k.gradT; the nodal flows have the modes s d.(V q + c g_k h_k), less c g_k in mode k.
SA_KERNEL(SPX_ASM_C3D8RTDIVER,
          (const int32_t* nblock, const double* X, const double* T, const double* flux, const double* conductivity,
           double* R, double* mask),
          (nblock, X, T, flux, conductivity, R, mask)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *m = mask + start, *r = R + start;
    const double *q = flux + start, *k = conductivity + start;
    OnePoint brick;
    Modes t;
    onePointModes(n, N, X + start, brick);
    projectModes(n, N, T + start, t);

    // Weight of the hourglass values, flux times volume, gradient.
    Column scale, weight, qx, qy, qz, gx, gy, gz, marks;
    forPoints(n, [=, &brick, &t, &scale, &weight, &qx, &qy, &qz, &gx, &gy, &gz, &marks](int e) SA_POINT {
      const double W = brick.twelveVolumes(e, m[e]), masked = W == 0.0 ? 1.0 : m[e];
      const double s = (1.0 - masked) * refinedReciprocal(W + masked, masked), volume = W * 0.08333333333333333;
      const double sum =
          8.0 * s * s *
          ((modalSum(brick.dx, brick.dx, e) + modalSum(brick.dy, brick.dy, e)) + modalSum(brick.dz, brick.dz, e));
      m[e] = masked;
      marks[e] = __builtin_fabs(brick.patterns(e)) < kMost ? markOutside(W * sum, masked) : 1.0 - masked;
      scale[e] = s;
      weight[e] = k[e] * (W * sum * 0.06666666666666667) * 0.015625;
      qx[e] = volume * q[e];
      qy[e] = volume * q[e + N];
      qz[e] = volume * q[e + 2 * N];
      gx[e] = s * modalSum(brick.dx, t, e);
      gy[e] = s * modalSum(brick.dy, t, e);
      gz[e] = s * modalSum(brick.dz, t, e);
    });
    Column g1, g2, g3, g4; // hourglass values times their weight
    forPoints(n, [=, &brick, &t, &weight, &gx, &gy, &gz, &g1, &g2, &g3, &g4, &qx, &qy, &qz](int e) SA_POINT {
      const Modes &x = brick.x, &y = brick.y, &z = brick.z;
      const double c = weight[e], x1 = x.h1[e], x2 = x.h2[e], x3 = x.h3[e], x4 = x.h4[e];
      const double y1 = y.h1[e], y2 = y.h2[e], y3 = y.h3[e], y4 = y.h4[e];
      const double z1 = z.h1[e], z2 = z.h2[e], z3 = z.h3[e], z4 = z.h4[e];
      const double u = gx[e], v = gy[e], w = gz[e];
      const double c1 = c * (t.h1[e] - (x1 * u + y1 * v + z1 * w)), c2 = c * (t.h2[e] - (x2 * u + y2 * v + z2 * w));
      const double c3 = c * (t.h3[e] - (x3 * u + y3 * v + z3 * w)), c4 = c * (t.h4[e] - (x4 * u + y4 * v + z4 * w));
      qx[e] += (c1 * x1 + c2 * x2) + (c3 * x3 + c4 * x4);
      qy[e] += (c1 * y1 + c2 * y2) + (c3 * y3 + c4 * y4);
      qz[e] += (c1 * z1 + c2 * z2) + (c3 * z3 + c4 * z4);
      g1[e] = c1;
      g2[e] = c2;
      g3[e] = c3;
      g4[e] = c4;
    });
    forPoints(n, [=, &brick, &scale, &qx, &qy, &qz, &g1, &g2, &g3, &g4](int e) SA_POINT {
      const Modes &dx = brick.dx, &dy = brick.dy, &dz = brick.dz;
      const double s = scale[e], u = s * qx[e], v = s * qy[e], w = s * qz[e];
      const bool off = s == 0.0;
      const double a1 = u * dx.a1[e] + v * dy.a1[e] + w * dz.a1[e], a2 = u * dx.a2[e] + v * dy.a2[e] + w * dz.a2[e];
      const double a3 = u * dx.a3[e] + v * dy.a3[e] + w * dz.a3[e];
      const double h1 = (u * dx.h1[e] + v * dy.h1[e] + w * dz.h1[e]) - g1[e];
      const double h2 = (u * dx.h2[e] + v * dy.h2[e] + w * dz.h2[e]) - g2[e];
      const double h3 = (u * dx.h3[e] + v * dy.h3[e] + w * dz.h3[e]) - g3[e], h4 = -g4[e];
      toNodes<true>(r + e, N, off ? 0.0 : a1, off ? 0.0 : a2, off ? 0.0 : a3, off ? 0.0 : h1, off ? 0.0 : h2,
                    off ? 0.0 : h3, off ? 0.0 : h4);
    });
    if (!anyMarked(n, marks)) return;
    findInfinite(n, N, 8, r, marks);
    replaceInfinite(n, N, 8, 0.0, marks, r), replaceInfinite(n, N, 1, 1.0, marks, m);
  });
}

} // namespace sa
