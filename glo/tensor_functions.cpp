// Functions of symmetric tensors through their principal values.
#include "glo.h"
#include "glo/principal.h"
#include "glo/spectral.h"
#include "glo/vmath.h"

namespace sa {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

} // namespace

SA_KERNEL(GLO_UTI_SQRTV, (const int32_t* nblock, const double* S, double* V), (nblock, S, V)) {
  constexpr double kRounding = 1e-14; // a value this far below zero, relative to the largest, is a zero
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done;
    diagonalise(n, w, done, loadS33(Consecutive{start}, N, S, w));
    forPoints(n, [=, &done](int i) SA_POINT {
      const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
      const double l12 = l1 > l2 ? l1 : l2, largest = l12 > l3 ? l12 : l3, lowest = -kRounding * largest;
      const bool bad = spoiled(l1, l2, l3) != 0.0 || l1 < lowest || l2 < lowest || l3 < lowest;
      const double r1 = bad ? kNaN : __builtin_sqrt(l1 > 0.0 ? l1 : 0.0);
      const double r2 = bad ? kNaN : __builtin_sqrt(l2 > 0.0 ? l2 : 0.0);
      const double r3 = bad ? kNaN : __builtin_sqrt(l3 > 0.0 ? l3 : 0.0);
      compose(done, i, r1, r2, r3, V, N, start + i);
    });
  });
}

SA_KERNEL(GLO_UTI_LOGV, (const int32_t* nblock, const double* S, double* L), (nblock, S, L)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done;
    double shift[kScratchPoints];
    diagonaliseAboutOne(n, w, done, shift, loadS33(Consecutive{start}, N, S, w));
    const auto logarithms = [n, &shift](double(&x)[kScratchPoints]) SA_POINT {
      forPoints(n, [&x, &shift](int i) SA_POINT { x[i] = logAboutOne(x[i], shift[i]); });
    };
    logarithms(done.a11), logarithms(done.a22), logarithms(done.a33);
    forPoints(n, [=, &done](int i) SA_POINT {
      const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
      const bool bad = spoiled(l1, l2, l3) != 0.0;
      compose(done, i, bad ? kNaN : l1, bad ? kNaN : l2, bad ? kNaN : l3, L, N, start + i);
    });
  });
}

SA_KERNEL(GLO_UTI_EXPS30, (const int32_t* nblock, const double* S, double* E), (nblock, S, E)) {
  const int64_t values = 3 * static_cast<int64_t>(*nblock);
  if (*nblock < 1) return;
  forPoints(static_cast<int>(values), [=](int i) SA_POINT { E[i] = vm::exp(S[i]); });
}

// exp of the plane part is e^m (cosh r + sinh(r)/r (S - m)), m the mean of the direct components and r the radius of the
// circle; 33 stands alone.
SA_KERNEL(GLO_UTI_EXPS31, (const int32_t* nblock, const double* S, double* E), (nblock, S, E)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    double mean[kScratchPoints], half[kScratchPoints], radius[kScratchPoints];
    double growing[kScratchPoints], falling[kScratchPoints], third[kScratchPoints];
    forPoints(n, [=, &mean, &half, &radius](int i) SA_POINT {
      const int k = start + i;
      const double s11 = S[k], s22 = S[k + N], s12 = S[k + 3 * N];
      mean[i] = 0.5 * s11 + 0.5 * s22;
      half[i] = 0.5 * s11 - 0.5 * s22;
      radius[i] = __builtin_sqrt(half[i] * half[i] + s12 * s12);
    });
    forPoints(n, [&](int i) SA_POINT { growing[i] = vm::exp(mean[i] + radius[i]); });
    forPoints(n, [&](int i) SA_POINT { falling[i] = vm::exp(mean[i] - radius[i]); });
    forPoints(n, [=, &third](int i) SA_POINT { third[i] = vm::exp(S[start + i + 2 * N]); });
    forPoints(n, [=, &half, &radius, &growing, &falling, &third](int i) SA_POINT {
      const int k = start + i;
      const double r = radius[i], z = r * r, middle = 0.5 * growing[i] + 0.5 * falling[i];
      // sinh(r)/r e^m: near r = 0 the middle times the series of tanh(r)/r
      const double series =
          1.0 - z * (1.0 / 3.0 - z * (2.0 / 15.0 - z * (17.0 / 315.0 - z * (62.0 / 2835.0 - z * (1382.0 / 155925.0)))));
      const bool small = r < 0.05;
      const double slope = small ? middle * series : (0.5 * growing[i] - 0.5 * falling[i]) / (small ? 1.0 : r);
      const double s12 = S[k + 3 * N], h = half[i];
      // the direct component on the side of the larger value is a sum of positives; the other one subtracts
      E[k] = middle + slope * h;
      E[k + N] = middle - slope * h;
      E[k + 2 * N] = third[i];
      E[k + 3 * N] = slope * s12;
    });
  });
}

} // namespace sa
