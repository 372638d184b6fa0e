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

// V = sqrt S through principal values and directions, for the listed points of a piece.
SA_INLINE void rootsByDirections(ListedPoints point, int64_t N, const double* S, double* V) {
  constexpr double kRounding = 1e-14; // a value this far below zero, relative to the largest, is a zero
  const int n = point.count;
  JacobiScratch<true> w, done;
  diagonalise(n, w, done, loadS33(point, N, S, w));
  if (w.isScaled) forPoints(n, [&w](int i) SA_POINT { w.back[i] = __builtin_sqrt(w.back[i]); }); // even powers of 2
  forPoints(n, [=, &w, &done](int i) SA_POINT {
    const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
    const double l12 = l1 > l2 ? l1 : l2, largest = l12 > l3 ? l12 : l3, lowest = -kRounding * largest;
    const bool bad = spoiled(l1, l2, l3) != 0.0 || l1 < lowest || l2 < lowest || l3 < lowest;
    const double back = w.back[i];
    const double r1 = bad ? vm::kNaN : __builtin_sqrt(l1 > 0.0 ? l1 : 0.0) * back;
    const double r2 = bad ? vm::kNaN : __builtin_sqrt(l2 > 0.0 ? l2 : 0.0) * back;
    const double r3 = bad ? vm::kNaN : __builtin_sqrt(l3 > 0.0 ? l3 : 0.0) * back;
    compose(done, i, r1, r2, r3, V, N, point(i));
  });
}

} // namespace

// With I, II, III the invariants of S and i, ii, iii those of V: V = (i iii 1 + (i i - ii) S - S S) / (i ii - iii) needs no
// directions (A. Hoger, D. E. Carlson, Q. Appl. Math. 42 (1984) 113).  i is the largest root of (i i - I)^2 = 4 (II + 2 i iii);
// Halley's steps come down to it from sqrt(I + 2 sqrt(3 II)).  A tensor whose values differ too much for that, or are not
// all positive, or whose cubes leave the range of doubles, is left to the directions, each point for itself.
SA_KERNEL(GLO_UTI_SQRTV, (const int32_t* nblock, const double* S, double* V)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    // least 27 III / I^3, which is 1 for a sphere: the last step is below 2e-6 there
    constexpr double kRoundness = 0.01;
    constexpr double kMost = 0x1p+300, kLeast = 0x1p-300;
    Lane left;
    forPoints(n, [=, &left](int j) SA_POINT {
      const int k = start + j;
      const double s11 = S[k], s22 = S[k + N], s33 = S[k + 2 * N];
      const double s12 = S[k + 3 * N], s23 = S[k + 4 * N], s13 = S[k + 5 * N];
      const double q12 = s12 * s12, q23 = s23 * s23, q13 = s13 * s13;
      const double m1 = s22 * s33 - q23, m2 = s11 * s33 - q13, m3 = s11 * s22 - q12; // minors
      const double first = s11 + s22 + s33, second = m1 + m2 + m3;
      const double third = s11 * m1 - s12 * (s12 * s33 - s23 * s13) + s13 * (s12 * s23 - s22 * s13);
      const bool ordinary =
          first > kLeast && first < kMost && second > 0.0 && 27.0 * third > kRoundness * (first * first * first);

      const double det = __builtin_sqrt(ordinary ? third : 1.0);
      double i = __builtin_sqrt(first + 2.0 * __builtin_sqrt(3.0 * second));
      for (int step = 0; step < 3; ++step) {
        const double ii = i * i, h = ii - first;
        const double f = h * h - 4.0 * (second + 2.0 * i * det), df = 4.0 * (i * h - 2.0 * det),
                     ddf = 4.0 * (3.0 * ii - first);
        i -= 2.0 * f * df / (2.0 * df * df - f * ddf);
      }
      const double ii = 0.5 * (i * i - first), per = 1.0 / (i * ii - det);
      const double sphere = i * det * per, factor = i * i - ii;
      const double v11 = sphere + (factor * s11 - (s11 * s11 + q12 + q13)) * per;
      const double v22 = sphere + (factor * s22 - (s22 * s22 + q12 + q23)) * per;
      const double v33 = sphere + (factor * s33 - (s33 * s33 + q13 + q23)) * per;
      const double v12 = (factor * s12 - (s12 * (s11 + s22) + s13 * s23)) * per;
      const double v23 = (factor * s23 - (s23 * (s22 + s33) + s12 * s13)) * per;
      const double v13 = (factor * s13 - (s13 * (s11 + s33) + s12 * s23)) * per;
      V[k] = ordinary ? v11 : s11; // V may be S
      V[k + N] = ordinary ? v22 : s22;
      V[k + 2 * N] = ordinary ? v33 : s33;
      V[k + 3 * N] = ordinary ? v12 : s12;
      V[k + 4 * N] = ordinary ? v23 : s23;
      V[k + 5 * N] = ordinary ? v13 : s13;
      left[j] = ordinary ? 0.0 : 1.0;
    });
    int32_t list[kScratchPoints];
    int count = 0;
    for (int j = 0; j < n; ++j) {
      list[count] = start + j + 1;
      count += left[j] != 0.0;
    }
    if (count > 0) rootsByDirections(ListedPoints{count, list}, N, V, V);
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
    // of roots below the normal numbers only squares and products are used, which are 0
    forPoints(n, [&growing](int i) SA_POINT { growing[i] = vm::expClamped(growing[i]); });
    forPoints(n, [&falling](int i) SA_POINT { falling[i] = vm::expClamped(falling[i]); });
    forPoints(n, [=, &third](int i) SA_POINT { third[i] = vm::exp(S[start + i + 2 * N]); });
    forPoints(n, [=, &half, &radius, &growing, &falling, &third](int i) SA_POINT {
      const int k = start + i;
      const double s12 = S[k + 3 * N], h = half[i], r = radius[i], g = growing[i], f = falling[i], z = r * r;
      // near r = 0: e^m (1 + (S - m) tanh(r)/r cosh r), with the series of tanh(r)/r
      const double series =
          1.0 - z * (1.0 / 3.0 - z * (2.0 / 15.0 - z * (17.0 / 315.0 - z * (62.0 / 2835.0 - z * (1382.0 / 155925.0)))));
      const double middle = 0.5 * (g * g) + 0.5 * (f * f), slope = middle * series;
      const bool small = r < 0.05;
      // The square of the cosine and the product with the sine of the angle between d and the nearer axis; one division serves
      // 1/R and 1/cc = 2 R / (R + H).  Products with a sine of zero vanish whatever g is.
      const double factor = r > 0x1p+400 ? 0x1p-600 : 1.0; // squares stay finite
      const double R = small ? 1.0 : r * factor, H = __builtin_fabs(h) * factor, sum = R + H;
      const double q = 1.0 / (R * sum), perR = sum * q, perCc = 2.0 * R * (R * q);
      const double cc = 0.5 + 0.5 * (H * perR), cs = 0.5 * (s12 * factor * perR);
      const bool diagonal = cs == 0.0;
      const double gs = diagonal ? 0.0 : g * cs, fs = f * cs;
      const double nearer = g * (g * cc) + fs * (fs * perCc), other = f * (f * cc) + gs * (gs * perCc);
      const bool first = h >= 0.0;
      const double shear = diagonal ? 0.0 : ((g - f) * cs) * (g + f);
      E[k] = small ? middle + slope * h : (first ? nearer : other);
      E[k + N] = small ? middle - slope * h : (first ? other : nearer);
      E[k + 2 * N] = third[i];
      E[k + 3 * N] = small ? slope * s12 : shear;
    });
  });
}

} // namespace sa
