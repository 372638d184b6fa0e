// Kinematic operators of the 8-node brick at one integration point.
#include "glo/kernel/kernel.h"
#include "spx.h"
#include "spx/impl/elements/brick_family.h"

namespace sa {

using namespace brick;

SA_KERNEL(SPX_OPE_C3D8OPER,
          (const int32_t* nblock, const int32_t* ipt, SA_UNREAD nipt, const double* dNdxi, const double* dNdeta,
           const double* dNdzeta, const double* X, double* Bdet, double* detJ, double* rdetJ, double* mask)) {
  const int64_t ld = *nblock, column = 8 * (static_cast<int64_t>(*ipt) - 1);
  const double *a = dNdxi + column, *b = dNdeta + column, *c = dNdzeta + column;
  forPieces<kBrickPiece>(*nblock, [=](int start, int n) SA_POINT {
    double *det = detJ + start, *rdet = rdetJ + start, *m = mask + start;
    Cofactors C;
    pointJacobian(n, ld, a, b, c, X + start, m, C, det);
    pointGradient<Sum::none>(n, ld, a, b, c, C, Bdet + start);
    forPoints(n, [=](int e) SA_POINT { rdet[e] = (1.0 - m[e]) / det[e]; });
  });
}

SA_KERNEL(SPX_OPE_C3D8ROPER2, (const int32_t* nblock, const int32_t* ld, const double* X, double* B, double* hgdiag,
                               double* hgstiff, double* vol, double* rvol, double* gamma, double* mask)) {
  const int64_t L = *ld;
  forPieces<kBrickPiece>(*nblock, [=](int start, int n) SA_POINT {
    double *v = vol + start, *rv = rvol + start, *diag = hgdiag + start, *stiff = hgstiff + start, *m = mask + start;
    double *b = B + start, *g = gamma + start;
    OnePoint brick;
    onePointModes(n, L, X + start, brick);

    // W = 12 V, then the reciprocal with one Newton step.
    Lane scale, squares, marks;
    forPoints(n, [=, &brick, &scale](int e) SA_POINT {
      const double W = brick.twelveVolumes(e, m[e]), masked = W == 0.0 ? 1.0 : m[e];
      const double volume12 = W + masked, reciprocal = refinedReciprocal(volume12, masked);
      m[e] = masked;
      v[e] = volume12;
      scale[e] = (1.0 - masked) * reciprocal;
      rv[e] = 12.0 * reciprocal;
    });
    onePointGradient(n, L, brick, scale, b, squares);
    hourglassVectors(n, L, brick, scale, b, g);

    forPoints(n, [=, &brick, &squares, &marks](int e) SA_POINT {
      const double product = v[e] * squares[e], q = product > vm::kSmallestNormal ? product : product + m[e];
      const double extent = __builtin_fabs(brick.patterns(e));
      diag[e] = 6.0 / q;
      stiff[e] = q / 6.0;
      marks[e] = extent < kMost ? markOutside(product, m[e]) : 1.0 - m[e];
      v[e] = v[e] * 0.08333333333333333;
    });
    if (!anyMarked(n, marks)) return;
    findInfinite(n, L, 24, b, marks), findInfinite(n, L, 32, g, marks);
    findInfinite(n, L, 1, diag, marks), findInfinite(n, L, 1, stiff, marks);
    replaceInfinite(n, L, 24, 0.0, marks, b), replaceInfinite(n, L, 32, 0.0, marks, g);
    replaceInfinite(n, L, 1, 6.0, marks, diag), replaceInfinite(n, L, 1, 1.0 / 6.0, marks, stiff);
    replaceInfinite(n, L, 1, 0.08333333333333333, marks, v), replaceInfinite(n, L, 1, 0.0, marks, rv);
    replaceInfinite(n, L, 1, 1.0, marks, m);
  });
}

SA_KERNEL(SPX_OPE_C3DSYMGRAD, (const int32_t* nblock, const double* G, double* sym, double* skew)) {
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
