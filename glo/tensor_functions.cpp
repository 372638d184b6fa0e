// Functions of symmetric tensors through their principal values.
#include "glo.h"
#include "glo/jacobi.h"
#include "glo/kernel.h"

namespace sa {

// V = sum over k of sqrt(lambda_k) n_k n_k'.
SA_KERNEL(GLO_UTI_SQRTV, (const int32_t* nblock, const double* S, double* V), (nblock, S, V)) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kRounding = 1e-14; // a value this far below zero, relative to the largest, is a zero
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done; // what is finished waits in `done` for the last, vectorised pass
    const auto load = [=, &w](int i) SA_POINT {
      const int k = start + i;
      w.a11[i] = S[k];
      w.a22[i] = S[k + N];
      w.a33[i] = S[k + 2 * N];
      w.a12[i] = S[k + 3 * N];
      w.a23[i] = S[k + 4 * N];
      w.a13[i] = S[k + 5 * N];
    };
    jacobi<PreciseRotation>(n, w, load, [&done](int count, const int* finished, auto& from) SA_POINT {
      for (int j = 0; j < count; ++j) done.place[j] = from.place[finished[j]];
      const auto keep = [&](const double* source, double* target) SA_POINT {
        for (int j = 0; j < count; ++j) target[done.place[j]] = source[finished[j]];
      };
      keep(from.a11, done.a11), keep(from.a22, done.a22), keep(from.a33, done.a33);
      for (int d = 0; d < 9; ++d) keep(from.v[d], done.v[d]);
    });

    forPoints(n, [=, &done](int i) SA_POINT {
      const double l1 = done.a11[i], l2 = done.a22[i], l3 = done.a33[i];
      const double l12 = l1 > l2 ? l1 : l2, largest = l12 > l3 ? l12 : l3, lowest = -kRounding * largest;
      const bool bad = spoiled(l1, l2, l3) != 0.0 || l1 < lowest || l2 < lowest || l3 < lowest;
      const double r1 = bad ? kNaN : __builtin_sqrt(l1 > 0.0 ? l1 : 0.0);
      const double r2 = bad ? kNaN : __builtin_sqrt(l2 > 0.0 ? l2 : 0.0);
      const double r3 = bad ? kNaN : __builtin_sqrt(l3 > 0.0 ? l3 : 0.0);
      const double x1 = done.v[0][i], y1 = done.v[1][i], z1 = done.v[2][i];
      const double x2 = done.v[3][i], y2 = done.v[4][i], z2 = done.v[5][i];
      const double x3 = done.v[6][i], y3 = done.v[7][i], z3 = done.v[8][i];
      const int k = start + i;
      V[k] = r1 * x1 * x1 + r2 * x2 * x2 + r3 * x3 * x3;
      V[k + N] = r1 * y1 * y1 + r2 * y2 * y2 + r3 * y3 * y3;
      V[k + 2 * N] = r1 * z1 * z1 + r2 * z2 * z2 + r3 * z3 * z3;
      V[k + 3 * N] = r1 * x1 * y1 + r2 * x2 * y2 + r3 * x3 * y3;
      V[k + 4 * N] = r1 * y1 * z1 + r2 * y2 * z2 + r3 * y3 * z3;
      V[k + 5 * N] = r1 * x1 * z1 + r2 * x2 * z2 + r3 * x3 * z3;
    });
  });
}

} // namespace sa
