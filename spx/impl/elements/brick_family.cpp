// The operators of the brick family element by element and averaged over the element.
#include "spx/impl/elements/brick_family.h"
#include "glo/kernel/kernel.h"
#include "spx.h"

namespace sa {

using namespace brick;

SA_KERNEL(SPX_OPE_C3DH8OPER,
          (const int32_t* nblock, const int32_t* ld, const double* X, double* dVdX, double* B, double* hgdiag,
           double* hgstiff, double* vol, double* rvol, double* h, double* gamma, double* mask)) {
  const int64_t L = *ld;
  forPieces<kBrickPiece>(*nblock, [=](int start, int n) SA_POINT {
    double *v = vol + start, *rv = rvol + start, *diag = hgdiag + start, *stiff = hgstiff + start, *m = mask + start;
    double *dV = dVdX + start, *b = B + start;
    OnePoint brick;
    onePointModes(n, L, X + start, brick);
    Lane scale, squares, marks;
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
      const double sum = squares[e], q = sum > vm::kSmallestNormal ? sum : sum + (vm::kSmallestNormal + m[e]);
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
      marks[e] = old != 0.0 && !(squares[e] > vm::kSmallestNormal) ? 2.0 : old;
    });
    replaceInfinite(n, L, 24, 0.0, marks, dV), replaceInfinite(n, L, 24, 0.0, marks, b);
    replaceInfinite(n, L, 12, 0.0, marks, hourglass), replaceInfinite(n, L, 32, 0.0, marks, g);
    replaceInfinite(n, L, 1, 0.5, marks, diag), replaceInfinite(n, L, 1, 0.0, marks, stiff);
    replaceInfinite(n, L, 1, 1.0, marks, v), replaceInfinite(n, L, 1, 0.0, marks, rv);
    replaceInfinite(n, L, 1, 1.0, marks, m);
  });
}

SA_KERNEL(SPX_OPE_C3D8IOPER, (const int32_t* nblock, const int32_t* ipt, const int32_t* nipt, const double* dNdxi,
                              const double* dNdeta, const double* dNdzeta, const double* X, double* Bdet, double* detJ,
                              double* rdetJ, double* B, double* vol, double* rvol, double* mask)) {
  const int64_t N = *nblock;
  const int wanted = *ipt - 1, points = *nipt;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *det = detJ + start, *rdet = rdetJ + start, *m = mask + start, *v = vol + start, *rv = rvol + start;
    double *bdet = Bdet + start, *b = B + start;
    Lane volume;
    integrateGradient(n, N, points, dNdxi, dNdeta, dNdzeta, X + start, m, N, b, volume,
                      [=](int p, const double* x, const double* y, const double* z, const Cofactors& C,
                          const Lane& atPoint) SA_POINT {
                        if (p != wanted) return;
                        pointGradient<Sum::none>(n, N, x, y, z, C, bdet);
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
    // two columns at a time; with them NaN for an element that has an infinity or NaN
    Lane marks;
    forPoints(n, [&marks](int e) SA_POINT { marks[e] = 0.0; });
    constexpr int kTogether = 2;
    for (int64_t column = 0; column < 24; column += kTogether)
      forPoints(n, [=, &marks, out = b + column * N, at = bdet + column * N](int e) SA_POINT {
        const bool off = m[e] != 0.0;
        const double scale = rv[e];
        double found = marks[e];
        for (int k = 0; k < kTogether; ++k) {
          const double mean = out[e + k * N] * scale, product = at[e + k * N], kept = off ? 0.0 : mean;
          found += kept - kept;
          out[e + k * N] = kept;
          at[e + k * N] = off ? 0.0 : product;
        }
        marks[e] = found;
      });
    if (!anyMarked(n, marks)) return;
    forPoints(n, [=, &marks](int e) SA_POINT { marks[e] = 1.0 - m[e]; });
    findInfinite(n, N, 24, b, marks);
    replaceInfinite(n, N, 24, 0.0, marks, b), replaceInfinite(n, N, 24, 0.0, marks, bdet);
    replaceInfinite(n, N, 1, 1.0, marks, det), replaceInfinite(n, N, 1, 0.0, marks, rdet);
    replaceInfinite(n, N, 1, 1.0, marks, v), replaceInfinite(n, N, 1, 0.0, marks, rv);
    replaceInfinite(n, N, 1, 1.0, marks, m);
  });
}

} // namespace sa
