// Functions of symmetric tensors through their principal values.
#include "glo.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/spectral.h"

namespace sa {
namespace {

// ln of a principal value of point i, x and `shift` as diagonaliseAboutOne leaves them.  A value that was scaled by 2^600 or
// 2^-4 (glo/tensors/scale.h) may have lost digits at its own scale: its logarithm is corrected by 600 or 4 ln 2 instead.
SA_INLINE double logOfValue(double x, double shift, double back) {
  const bool near = shift != 0.0;
  const double correction = back < 1.0 ? -415.88830833596718565 : (back > 1.0 ? 2.7725887222397812377 : 0.0);
  return logAboutOne(near ? x * back : x, shift) + (near ? 0.0 : correction);
}

} // namespace

SA_KERNEL(GLO_UTI_SQRTV, (const int32_t* nblock, const double* S, double* V)) {
  constexpr double kRounding = 1e-14; // a value this far below zero, relative to the largest, is a zero
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done;
    diagonalise(n, w, done, loadS33(AllPoints{n, start}, N, S, w));
    if (w.isScaled) forPoints(n, [&w](int i) SA_POINT { w.back[i] = __builtin_sqrt(w.back[i]); }); // even powers of 2
    forPoints(n, [=, &w, &done](int i) SA_POINT {
      const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
      const double l12 = l1 > l2 ? l1 : l2, largest = l12 > l3 ? l12 : l3, lowest = -kRounding * largest;
      const bool bad = spoiled(l1, l2, l3) != 0.0 || l1 < lowest || l2 < lowest || l3 < lowest;
      const double back = w.back[i];
      const double r1 = bad ? vm::kNaN : __builtin_sqrt(l1 > 0.0 ? l1 : 0.0) * back;
      const double r2 = bad ? vm::kNaN : __builtin_sqrt(l2 > 0.0 ? l2 : 0.0) * back;
      const double r3 = bad ? vm::kNaN : __builtin_sqrt(l3 > 0.0 ? l3 : 0.0) * back;
      compose(done, i, r1, r2, r3, V, N, start + i);
    });
  });
}

SA_KERNEL(GLO_UTI_LOGV, (const int32_t* nblock, const double* S, double* L)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done;
    double shift[kScratchPoints];
    diagonaliseAboutOne(n, w, done, shift, loadS33(AllPoints{n, start}, N, S, w));
    const auto logarithms = [n, &shift, &w](double(&x)[kScratchPoints]) SA_POINT {
      if (w.isScaled)
        forPoints(n, [&x, &shift, &w](int i) SA_POINT { x[i] = logOfValue(x[i], shift[i], w.back[i]); });
      else
        forPoints(n, [&x, &shift](int i) SA_POINT { x[i] = logAboutOne(x[i], shift[i]); });
    };
    logarithms(done.a11), logarithms(done.a22), logarithms(done.a33);
    forPoints(n, [=, &done](int i) SA_POINT {
      const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
      const bool bad = spoiled(l1, l2, l3) != 0.0;
      compose(done, i, bad ? vm::kNaN : l1, bad ? vm::kNaN : l2, bad ? vm::kNaN : l3, L, N, start + i);
    });
  });
}

SA_KERNEL(GLO_UTI_EXPS30, (const int32_t* nblock, const double* S, double* E)) {
  forPoints(3 * static_cast<int64_t>(*nblock), [=](int64_t i) SA_POINT { E[i] = vm::exp(S[i]); });
}

// exp of the plane part is e^a d d' + e^b (1 - d d'), a >= b its principal values and d the direction of a.  Both exponentials
// are kept as squares of their roots, which overflow only where a result does.
SA_KERNEL(GLO_UTI_EXPS31, (const int32_t* nblock, const double* S, double* E)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double half[kScratchPoints], radius[kScratchPoints], third[kScratchPoints];
    double growing[kScratchPoints], falling[kScratchPoints]; // half a and half b, then the roots of their exponentials
    forPointsOfAnyScale(n, [=, &half, &radius, &growing, &falling](auto scaled, int i) SA_POINT {
      const int k = start + i;
      const double s11 = S[k], s22 = S[k + N], s12 = S[k + 3 * N];
      const double mean = 0.5 * s11 + 0.5 * s22, h = 0.5 * s11 - 0.5 * s22, largest = magnitude(h, s12);
      const Scale scale = scaled ? scaleForSquares(largest) : Scale{1.0, 1.0};
      const double x = h * scale.factor, y = s12 * scale.factor, r = __builtin_sqrt(x * x + y * y) * scale.back;
      const bool diagonal = s12 == 0.0;
      half[i] = h;
      radius[i] = r;
      growing[i] = 0.5 * (diagonal ? vm::max(s11, s22) : mean + r);
      falling[i] = 0.5 * (diagonal ? vm::min(s11, s22) : mean - r);
      return isBeyondSquares(largest);
    });
    forPoints(n, [&growing](int i) SA_POINT { growing[i] = vm::exp(growing[i]); });
    forPoints(n, [&falling](int i) SA_POINT { falling[i] = vm::exp(falling[i]); });
    forPoints(n, [=, &third](int i) SA_POINT { third[i] = vm::exp(S[start + i + 2 * N]); });
    forPoints(n, [=, &half, &radius, &growing, &falling, &third](int i) SA_POINT {
      const int k = start + i;
      const double s12 = S[k + 3 * N], h = half[i], r = radius[i], g = growing[i], f = falling[i], z = r * r;
      // near r = 0: e^m (1 + (S - m) tanh(r)/r cosh r), with the series of tanh(r)/r
      const double series =
          1.0 - z * (1.0 / 3.0 - z * (2.0 / 15.0 - z * (17.0 / 315.0 - z * (62.0 / 2835.0 - z * (1382.0 / 155925.0)))));
      const double middle = 0.5 * (g * g) + 0.5 * (f * f), slope = middle * series;
      const bool small = r < 0.05;
      // cosine and sine of the angle between d and the nearer axis; products with a sine of zero vanish whatever g is
      const double perR = 1.0 / (small ? 1.0 : r), cc = 0.5 + 0.5 * (__builtin_fabs(h) * perR);
      const double perC = 1.0 / __builtin_sqrt(cc), c = cc * perC, s = 0.5 * (s12 * perR) * perC;
      const double gc = g * c, fc = f * c, gs = s == 0.0 ? 0.0 : g * s, fs = f * s;
      const double nearer = gc * gc + fs * fs, other = fc * fc + gs * gs;
      const bool first = h >= 0.0;
      const double shear = s == 0.0 ? 0.0 : ((g - f) * s) * ((g + f) * c);
      E[k] = small ? middle + slope * h : (first ? nearer : other);
      E[k + N] = small ? middle - slope * h : (first ? other : nearer);
      E[k + 2 * N] = third[i];
      E[k + 3 * N] = small ? slope * s12 : shear;
    });
  });
}

} // namespace sa
