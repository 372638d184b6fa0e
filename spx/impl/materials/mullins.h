// Softening of rubber on unloading, after R. W. Ogden and D. G. Roxburgh, Proc. R. Soc. A 455 (1999) 2861.
#pragma once

#include "glo/kernel/fetch.h"
#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"

namespace sa {

// 1/d; 0 where d vanishes.
SA_INLINE double guardedReciprocal(double d) {
  const double g = vm::abs(d) <= vm::kSmallestNormal ? 1.0 : 0.0;
  return (1.0 - g) / (d + g);
}

// The exponent of erfc(|z|) = t exp(...), t = 1/(1 + |z|/2), by a Chebyshev fit whose error is below 1.2e-7 everywhere.
SA_INLINE double erfcExponent(double t, double z) {
  const double P =
      -1.26551223 +
      t * (1.00002368 +
           t * (0.37409196 +
                t * (0.09678418 +
                     t * (-0.18628806 +
                          t * (0.27886807 +
                               t * (-1.13520398 + t * (1.48851587 + t * (-0.82215223 + t * 0.17087277))))))));
  return P - z * z;
}
SA_INLINE double erfcScale(double z) { return 1.0 / (1.0 + 0.5 * vm::abs(z)); }

// erf(|z|), exactly 0 for z = 0 where the fit gives -3e-8.
SA_INLINE double erfOf(double z) {
  const double t = erfcScale(z), erf = 1.0 - t * vm::expBelow(erfcExponent(t, z));
  return vm::select(z == 0.0, 0.0, erf);
}

struct Softening {
  const double *r, *m, *beta;
  double* UmNew;
  const double* UmOld;
  double *U, *eta, *slope;
};

// Maximum of the energy, damage variable and its slope for the n points of a piece.
SA_INLINE void soften(int start, int n, const Softening& a) {
  const double *r = a.r, *m = a.m, *beta = a.beta, *UmOld = a.UmOld;
  double *UmNew = a.UmNew, *U = a.U, *eta = a.eta, *slope = a.slope;
  double z[kScratchPoints], rd[kScratchPoints], bell[kScratchPoints];
  fetch(n, r + start, eta + start, slope + start);
  forPoints(n, [=, &z, &rd](int i) SA_POINT {
    const int k = start + i;
    const double u = vm::max(0.0, U[k]), old = UmOld[k]; // with the bound first, NaN stays
    const bool primary = old <= u;
    const double Um = vm::select(primary, u, old), reciprocal = guardedReciprocal(m[k] + beta[k] * Um);
    U[k] = u;
    UmNew[k] = Um;
    rd[i] = reciprocal;
    z[i] = vm::select(primary, 0.0, (old - u) * reciprocal);
  });
  forPoints(n, [=, &z, &bell](int i) SA_POINT { bell[i] = vm::expBelow(-(z[i] * z[i])); });
  forPoints(n, [=, &z](int i) SA_POINT { eta[start + i] = erfOf(z[i]); });
  forPoints(n, [=, &rd, &bell](int i) SA_POINT {
    const int k = start + i;
    const double rr = 1.0 / r[k];
    eta[k] = 1.0 - rr * eta[k];
    slope[k] = rr * 1.1283791670353622 * rd[i] * bell[i];
  });
}

SA_INLINE void softenBlock(int nblock, const Softening& a) {
  forPieces(nblock, [=](int start, int n) SA_POINT { soften(start, n, a); });
}

// Softens all but the mean stress; the direct components that the storage lacks are zero.
template <int kDirect, int kShear>
SA_INLINE void degrade(int first, int n, int64_t nblock, const double* eta, double* stress) {
  const int64_t N = nblock;
  forPoints(n, [=](int i) SA_POINT {
    const int64_t k = first + i;
    const double e = eta[k];
    double sum = stress[k];
    if constexpr (kDirect > 1) sum += stress[k + N];
    if constexpr (kDirect > 2) sum += stress[k + 2 * N];
    const double mean = sum * 0.3333333333333333;
#pragma GCC unroll 3
    for (int c = 0; c < kDirect; ++c) stress[k + c * N] = mean + e * (stress[k + c * N] - mean);
#pragma GCC unroll 3
    for (int c = kDirect; c < kDirect + kShear; ++c) stress[k + c * N] *= e;
  });
}

} // namespace sa
