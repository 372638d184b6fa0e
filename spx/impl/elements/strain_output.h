// Strain measures of a block from deformation gradients.
//
// The gradient is an element array (ld, 9), component (i, j) in column i + 3 (j - 1); its first three columns are its first
// column as a matrix.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/spectral.h"

namespace sa::strain {

enum Selector { kGreen = 1, kNominal = 2, kLogarithmic = 3, kAlmansi = 4 };

// Keeps the products of the columns finite: a gradient whose first three components reach beyond the limit is scaled down to it.
SA_INLINE void limitGradient(int n, int64_t ld, double* F) {
  constexpr double kLimit = 1.3407807929942596e149; // the square root of the largest double, over 1e5
  double factor[kScratchPoints];
  forPoints(n, [=, &factor](int e) SA_POINT {
    const double f1 = __builtin_fabs(F[e]), f2 = __builtin_fabs(F[e + ld]), f3 = __builtin_fabs(F[e + 2 * ld]);
    const double m = vm::max(vm::max(f1, f2), f3);
    factor[e] = m > kLimit ? kLimit / m : 1.0;
  });
  for (int k = 0; k < 9; ++k) forPoints(n, [=, &factor, f = F + k * ld](int e) SA_POINT { f[e] *= factor[e]; });
}

// F := F U^-1 with U symmetric, S33.  A stretch without a positive determinant (zeros: none was stored) leaves F as it is.
SA_INLINE void removeStretch(int n, int64_t ldU, const double* U, int64_t ld, double* F) {
  forPoints(n, [=](int e) SA_POINT {
    const double u11 = U[e], u22 = U[e + ldU], u33 = U[e + 2 * ldU];
    const double u12 = U[e + 3 * ldU], u23 = U[e + 4 * ldU], u13 = U[e + 5 * ldU];
    const double c11 = u22 * u33 - u23 * u23, c12 = u23 * u13 - u12 * u33, c13 = u12 * u23 - u22 * u13;
    const double c22 = u11 * u33 - u13 * u13, c23 = u12 * u13 - u11 * u23, c33 = u11 * u22 - u12 * u12;
    const double d = u11 * c11 + u12 * c12 + u13 * c13;
    const bool isNone = (d <= vm::kSmallestNormal) | (d == vm::kInfinity);
    const double r = 1.0 / vm::select(isNone, 1.0, d);
    const double i11 = vm::select(isNone, 1.0, r * c11), i22 = vm::select(isNone, 1.0, r * c22),
                 i33 = vm::select(isNone, 1.0, r * c33), i12 = vm::select(isNone, 0.0, r * c12),
                 i23 = vm::select(isNone, 0.0, r * c23), i13 = vm::select(isNone, 0.0, r * c13);
    const auto correct = [=](double* row) SA_POINT {
      const double f1 = row[0], f2 = row[3 * ld], f3 = row[6 * ld];
      row[0] = f1 * i11 + f2 * i12 + f3 * i13;
      row[3 * ld] = f1 * i12 + f2 * i22 + f3 * i23;
      row[6 * ld] = f1 * i13 + f2 * i23 + f3 * i33;
    };
    correct(F + e);
    correct(F + e + ld);
    correct(F + e + 2 * ld);
  });
}

// C = F'F, S33: the dot products of the columns.
SA_INLINE void columnProducts(int n, int64_t ld, const double* F, int64_t ldC, double* C) {
  forPoints(n, [=](int e) SA_POINT {
    const double f11 = F[e], f21 = F[e + ld], f31 = F[e + 2 * ld], f12 = F[e + 3 * ld], f22 = F[e + 4 * ld];
    const double f32 = F[e + 5 * ld], f13 = F[e + 6 * ld], f23 = F[e + 7 * ld], f33 = F[e + 8 * ld];
    C[e] = f11 * f11 + f21 * f21 + f31 * f31;
    C[e + ldC] = f12 * f12 + f22 * f22 + f32 * f32;
    C[e + 2 * ldC] = f13 * f13 + f23 * f23 + f33 * f33;
    C[e + 3 * ldC] = f11 * f12 + f21 * f22 + f31 * f32;
    C[e + 4 * ldC] = f12 * f13 + f22 * f23 + f32 * f33;
    C[e + 5 * ldC] = f11 * f13 + f21 * f23 + f31 * f33;
  });
}

// E = (C - 1)/2.
SA_INLINE void greenStrain(int n, int64_t ldC, const double* C, int64_t ld, double* E) {
  for (int k = 0; k < 6; ++k) {
    const double unit = k < 3 ? 1.0 : 0.0;
    forPoints(n, [=, c = C + k * ldC, out = E + k * ld](int e) SA_POINT { out[e] = 0.5 * (c[e] - unit); });
  }
}

// Strain of a principal value shift + x of C, the square of a stretch.  A value that is negative by rounding counts as zero,
// and the logarithm ends at that of the smallest normal double.
SA_INLINE double nominalStrain(double x, double shift) {
  const double l = shift + x, root = __builtin_sqrt(l < 0.0 ? 0.0 : l);
  return (x - (1.0 - shift)) / (root + 1.0);
}
SA_INLINE double logarithmicStrain(double x, double shift) {
  const bool far = shift == 0.0;
  return 0.5 * logAboutOne(far && x <= vm::kSmallestNormal ? vm::kSmallestNormal : x, shift);
}
SA_INLINE double almansiStrain(double x, double shift) {
  const double l = shift + x;
  return 0.5 * (x - (1.0 - shift)) / (l <= vm::kSmallestNormal ? vm::kSmallestNormal : l);
}

// sin(h) / h, |h| below 1e5: the series near 0, the cosine of the complement elsewhere.
SA_INLINE double sineRatio(double h) {
  const double z = h * h;
  constexpr double kSeries[] = {1.0, -1.0 / 6, 1.0 / 120, -1.0 / 5040, 1.0 / 362880, -1.0 / 39916800, 1.0 / 6227020800};
  const double series = vm::polynomial(z, kSeries);
  const bool small = h < 0.5;
  return small ? series : vm::cos(h - 1.5707963267948966) / (small ? 1.0 : h);
}

// Turns the three directions of each point by its rotation vector.
SA_INLINE void turnDirections(int n, int64_t ld, const double* rotation, JacobiScratch<true>& done) {
  double x[kScratchPoints], y[kScratchPoints], z[kScratchPoints], w[kScratchPoints]; // unit quaternion
  forPoints(n, [=, &x, &y, &z, &w](int i) SA_POINT {
    const double t1 = rotation[i], t2 = rotation[i + ld], t3 = rotation[i + 2 * ld];
    const double half = 0.5 * __builtin_sqrt(t1 * t1 + t2 * t2 + t3 * t3), s = 0.5 * sineRatio(half);
    x[i] = s * t1;
    y[i] = s * t2;
    z[i] = s * t3;
    w[i] = vm::cos(half);
  });
  for (int b = 0; b < 3; ++b) {
    double *vx = done.v[3 * b], *vy = done.v[3 * b + 1], *vz = done.v[3 * b + 2];
    forPoints(n, [=, &x, &y, &z, &w](int i) SA_POINT {
      const double v1 = vx[i], v2 = vy[i], v3 = vz[i], qx = x[i], qy = y[i], qz = z[i];
      const double c1 = 2.0 * (qy * v3 - qz * v2), c2 = 2.0 * (qz * v1 - qx * v3), c3 = 2.0 * (qx * v2 - qy * v1);
      vx[i] = v1 + w[i] * c1 + (qy * c3 - qz * c2);
      vy[i] = v2 + w[i] * c2 + (qz * c1 - qx * c3);
      vz[i] = v3 + w[i] * c3 + (qx * c2 - qy * c1);
    });
  }
}

// The measures that need the stretches: nominal, logarithmic, Almansi; any other selector is nominal.
SA_INLINE void stretchStrain(int n, int selector, int64_t ldC, const double* C, int64_t ldRotation,
                             const double* rotation, int64_t ld, double* E) {
  JacobiScratch<true> scratch, done;
  double shift[kScratchPoints];
  diagonaliseAboutOne<QuickRotation>(n, scratch, done, shift, loadS33(AllPoints{n}, ldC, C, scratch));
  unscale(n, scratch, done);
  const auto apply = [n, &done, &shift](auto measure) SA_POINT {
    const auto values = [n, &shift, measure](double(&x)[kScratchPoints]) SA_POINT {
      forPoints(n, [&x, &shift, measure](int i) SA_POINT { x[i] = measure(x[i], shift[i]); });
    };
    values(done.a11), values(done.a22), values(done.a33);
  };
  if (selector == kLogarithmic)
    apply([](double x, double s) SA_POINT { return logarithmicStrain(x, s); });
  else if (selector == kAlmansi)
    apply([](double x, double s) SA_POINT { return almansiStrain(x, s); });
  else
    apply([](double x, double s) SA_POINT { return nominalStrain(x, s); });
  turnDirections(n, ldRotation, rotation, done);
  forPoints(n, [=, &done](int i) SA_POINT {
    const double e1 = done.a11[i], e2 = done.a22[i], e3 = done.a33[i];
    const bool bad = spoiled(e1, e2, e3) != 0.0;
    compose(done, i, bad ? vm::kNaN : e1, bad ? vm::kNaN : e2, bad ? vm::kNaN : e3, E, ld, i);
  });
}

// What every strain output does with its gradients, which it corrects in place: limit, initial stretch, C, measure.
SA_INLINE void strainOutput(int n, int selector, bool hasStretch, int64_t ld, const double* U, const double* rotation,
                            double* F, int64_t ldC, double* C, double* E) {
  if (selector > 1) limitGradient(n, ld, F);
  if (hasStretch) removeStretch(n, ld, U, ld, F);
  columnProducts(n, ld, F, ldC, C);
  if (selector == kGreen)
    greenStrain(n, ldC, C, ld, E);
  else
    stretchStrain(n, selector, ldC, C, ld, rotation, ld, E);
}

// Values of a symmetric tensor in decreasing order.
SA_INLINE void sortedValues(int n, int64_t ld, const double* S, double* P) {
  JacobiScratch<false> scratch, done;
  diagonalise(n, scratch, done, loadS33(AllPoints{n}, ld, S, scratch));
  forPoints(n, [=, &scratch, &done](int i) SA_POINT {
    const double a = done.a11[i], b = done.a22[i], c = done.a33[i], bad = spoiled(a, b, c), back = scratch.back[i];
    const double high = vm::max(a, b), low = vm::min(a, b);
    P[i] = vm::max(high, c) * back + bad;
    P[i + ld] = vm::max(low, vm::min(high, c)) * back + bad;
    P[i + 2 * ld] = vm::min(low, c) * back + bad;
  });
}

// Zeros for masked elements in `columns` columns.
SA_INLINE void maskColumns(int n, int64_t ld, const double* mask, int columns, double* A) {
  for (int k = 0; k < columns; ++k)
    forPoints(n, [=, a = A + k * ld](int e) SA_POINT {
      const double value = a[e];
      a[e] = mask[e] != 0.0 ? 0.0 : value;
    });
}

} // namespace sa::strain
