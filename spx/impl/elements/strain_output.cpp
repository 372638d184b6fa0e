// Strain output of the bricks and the strain measures behind it.
#include "spx/impl/elements/strain_output.h"

#include "spx.h"
#include "spx/impl/elements/brick_family.h"

namespace sa {

using namespace strain;

SA_KERNEL(SPX_OPE_INVINISTRETCH3DH8, (const int32_t* nblock, const double* stretch0, double* F)) {
  removeStretch(*nblock, *nblock, stretch0, *nblock, F);
}

SA_KERNEL(SPX_OPE_GREENSTRAIN3DH8, (const int32_t* nblock, const double* C, double* strain)) {
  greenStrain(*nblock, *nblock, C, *nblock, strain);
}

SA_KERNEL(SPX_OPE_STRETCHSTRAIN3DH8,
          (const int32_t* nblock, const int32_t* selector, const double* C, const double* rotation, double* strain)) {
  const int64_t N = *nblock;
  const int measure = *selector;
  forPieces(*nblock, [=](int start, int n)
                         SA_POINT { stretchStrain(n, measure, N, C + start, N, rotation + start, N, strain + start); });
}

// A place in an array that a caller may leave out.
SA_INLINE const double* givenAt(const double* array, int64_t place) { return array == nullptr ? array : array + place; }

SA_KERNEL(SPX_OPE_C3DH8STRAINOUTPUT,
          (const int32_t* nblock, const int32_t* ld, const int32_t* selector, const int32_t* hasStretch,
           const int32_t* ipt, SA_UNREAD nipt, SA_UNREAD nhist, const int32_t* irot, const double* F,
           const double* stretch0, const double* hist, double* G, double* C, double* J, double* strain,
           double* principal, const double* mask)) {
  const int64_t L = *ld;
  const int measure = *selector;
  const bool initial = *hasStretch != 0;
  const double *gradients = F + 9 * L * (*ipt - 1), *rotations = givenAt(hist, L * (*irot - 1));
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    const double *f = gradients + start, *m = mask + start;
    double *g = G + start, *c = C + start, *j = J + start, *e = strain + start, *p = principal + start;
    for (int k = 0; k < 9; ++k)
      forPoints(n, [=, from = f + k * L, to = g + k * L](int i) SA_POINT { to[i] = from[i]; });
    strainOutput(n, measure, initial, L, givenAt(stretch0, start), givenAt(rotations, start), g, L, c, e);
    forPoints(n, [=](int i) SA_POINT {
      const double f11 = g[i], f21 = g[i + L], f31 = g[i + 2 * L], f12 = g[i + 3 * L], f22 = g[i + 4 * L];
      const double f32 = g[i + 5 * L], f13 = g[i + 6 * L], f23 = g[i + 7 * L], f33 = g[i + 8 * L];
      j[i] = f11 * (f22 * f33 - f23 * f32) + f21 * (f32 * f13 - f33 * f12) + f31 * (f12 * f23 - f13 * f22);
    });
    sortedValues(n, L, e, p);
    maskColumns(n, L, m, 9, g), maskColumns(n, L, m, 6, c), maskColumns(n, L, m, 1, j);
    maskColumns(n, L, m, 6, e), maskColumns(n, L, m, 3, p);
  });
}

SA_KERNEL(SPX_OPE_C3DH8LINSTRAINOUTPUT,
          (const int32_t* nblock, const int32_t* ld, const int32_t* hasStretch, const int32_t* ipt, SA_UNREAD nipt,
           const double* F, const double* stretch0, double* H, double* volumetric, double* strain, double* spin,
           double* deviator, double* equivalent, double* principal, const double* mask)) {
  const int64_t L = *ld;
  const bool initial = *hasStretch != 0;
  const double* gradients = F + 9 * L * (*ipt - 1);
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    const double *f = gradients + start, *m = mask + start;
    double *h = H + start, *volume = volumetric + start, *e = strain + start, *w = spin + start;
    double *d = deviator + start, *eq = equivalent + start, *p = principal + start;
    for (int k = 0; k < 9; ++k)
      forPoints(n, [=, from = f + k * L, to = h + k * L](int i) SA_POINT { to[i] = from[i]; });
    if (initial) removeStretch(n, L, stretch0 + start, L, h);
    forPoints(n, [=](int i) SA_POINT {
      const double h11 = h[i] - 1.0, h21 = h[i + L], h31 = h[i + 2 * L], h12 = h[i + 3 * L], h22 = h[i + 4 * L] - 1.0;
      const double h32 = h[i + 5 * L], h13 = h[i + 6 * L], h23 = h[i + 7 * L], h33 = h[i + 8 * L] - 1.0;
      const double e12 = (h12 + h21) * 0.5, e23 = (h23 + h32) * 0.5, e13 = (h13 + h31) * 0.5;
      const double tr = h11 + h22 + h33, third = tr * 0.3333333333333333;
      const double d1 = h11 - third, d2 = h22 - third, d3 = h33 - third;
      h[i] = h11;
      h[i + 4 * L] = h22;
      h[i + 8 * L] = h33;
      volume[i] = tr;
      e[i] = h11;
      e[i + L] = h22;
      e[i + 2 * L] = h33;
      e[i + 3 * L] = e12;
      e[i + 4 * L] = e23;
      e[i + 5 * L] = e13;
      w[i] = (h12 - h21) * 0.5;
      w[i + L] = (h23 - h32) * 0.5;
      w[i + 2 * L] = (h13 - h31) * 0.5;
      d[i] = d1;
      d[i + L] = d2;
      d[i + 2 * L] = d3;
      d[i + 3 * L] = e12;
      d[i + 4 * L] = e23;
      d[i + 5 * L] = e13;
      const Scale scale = scaleForSquares(vm::max(magnitude(d1, d2, d3), magnitude(e12, e23, e13)));
      const double s = scale.factor, a1 = s * d1, a2 = s * d2, a3 = s * d3, b12 = s * e12, b23 = s * e23, b13 = s * e13;
      const double square = (a1 * a1 + a2 * a2 + a3 * a3) + 2.0 * (b12 * b12 + b23 * b23 + b13 * b13);
      eq[i] = __builtin_sqrt(0.6666666666666666 * square) * scale.back;
    });
    sortedValues(n, L, e, p);
    maskColumns(n, L, m, 9, h), maskColumns(n, L, m, 1, volume), maskColumns(n, L, m, 6, e);
    maskColumns(n, L, m, 3, w), maskColumns(n, L, m, 6, d), maskColumns(n, L, m, 1, eq), maskColumns(n, L, m, 3, p);
  });
}

SA_KERNEL(SPX_OPE_C3D8RCSTRAINOUTPUT,
          (const int32_t* nblock, const int32_t* ld, const int32_t* selector, const double* dNdxi, const double* dNdeta,
           const double* dNdzeta, const double* X, const double* x, const double* stretch0, const double* rotation,
           double* F, double* strain, double* mask)) {
  const int64_t L = *ld;
  const int measure = *selector;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double *f = F + start, *e = strain + start, *m = mask + start;
    double B[24 * kScratchPoints], C[6 * kScratchPoints];
    Lane volume;
    brick::integrateGradient(n, L, 8, dNdxi, dNdeta, dNdzeta, X + start, m, kScratchPoints, B, volume,
                             [](auto...) SA_POINT {});
    for (int j = 0; j < 3; ++j)
      for (int i = 0; i < 3; ++i) {
        const double *b = B + 8 * j * kScratchPoints, *now = x + start + 8 * i * L, *then = X + start + 8 * i * L;
        const double unit = i == j ? 1.0 : 0.0;
        double* out = f + (i + 3 * j) * L;
        forPoints(n, [=, &volume](int k) SA_POINT {
          const auto displacement = [=](int node) SA_POINT { return now[k + node * L] - then[k + node * L]; };
          const double sum = brick::nodalSum(b + k, kScratchPoints, displacement);
          out[k] = unit + sum / volume[k];
        });
      }
    // gradients whose squares no double holds
    for (int k = 0; k < 9; ++k)
      forPoints(n, [=, g = f + k * L](int i) SA_POINT {
        const double old = m[i];
        m[i] = __builtin_fabs(g[i]) < 1e150 ? old : 1.0;
      });
    strainOutput(n, measure, true, L, stretch0 + start, rotation + start, f, kScratchPoints, C, e);
    maskColumns(n, L, m, 9, f), maskColumns(n, L, m, 6, e);
  });
}

} // namespace sa
