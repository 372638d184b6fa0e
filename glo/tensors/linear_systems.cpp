// Determinants, inverses and solutions of 3 x 3 systems.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "glo/tensors/scale.h"
#include "glo/tensors/tensor.h"

#include <limits>

namespace sa {
namespace {

template <class Storage>
SA_INLINE void determinants(int nblock, const double* S, double* det) {
  const int64_t N = nblock;
  forPoints(nblock, [=](int i) SA_POINT { det[i] = determinant(loadTensor<Storage>(S, N, i)); });
}

// A row of the system: coefficients and right-hand side.
struct Equation {
  double a, b, c, r;
};
SA_INLINE Equation blend(bool first, const Equation& p, const Equation& q) {
  return {first ? p.a : q.a, first ? p.b : q.b, first ? p.c : q.c, first ? p.r : q.r};
}
SA_INLINE Equation eliminate(const Equation& row, double factor, const Equation& pivot) {
  return {row.a - factor * pivot.a, row.b - factor * pivot.b, row.c - factor * pivot.c, row.r - factor * pivot.r};
}
// Each row divided by its largest coefficient: pivots compare as if all equations had one scale.
SA_INLINE Equation scaled(const Equation& row) {
  const double largest = magnitude(row.a, row.b, row.c);
  const double g = largest <= vm::kSmallestNormal ? 1.0 : 0.0, f = (1.0 - g) / (largest + g);
  return {row.a * f, row.b * f, row.c * f, row.r * f};
}

struct Solution {
  double x, y, z, singular;
};

// Elimination with row pivoting, by blends.  A system is singular when a pivot is below the rounding of its scaled rows;
// then nothing is solved.  Coefficients that are not finite have no pivots either, and leave NaN.
SA_INLINE Solution solve(Equation p, Equation q, Equation r) {
  constexpr double kRounding = 4.0 * 0x1p-52;
  p = scaled(p), q = scaled(q), r = scaled(r);
  const bool qLarger = __builtin_fabs(q.a) > __builtin_fabs(p.a);
  const Equation p1 = blend(qLarger, q, p), q1 = blend(qLarger, p, q);
  const bool rLarger = __builtin_fabs(r.a) > __builtin_fabs(p1.a);
  const Equation p2 = blend(rLarger, r, p1), r1 = blend(rLarger, p1, r);
  const double noPivot1 = __builtin_fabs(p2.a) > kRounding ? 0.0 : 1.0, first = 1.0 / (p2.a + noPivot1);
  const Equation q2 = eliminate(q1, q1.a * first, p2), r2 = eliminate(r1, r1.a * first, p2);
  const bool swap = __builtin_fabs(r2.b) > __builtin_fabs(q2.b);
  const Equation q3 = blend(swap, r2, q2), r3 = blend(swap, q2, r2);
  const double noPivot2 = __builtin_fabs(q3.b) > kRounding ? 0.0 : 1.0, second = 1.0 / (q3.b + noPivot2);
  const Equation r4 = eliminate(r3, r3.b * second, q3);
  const double noPivot3 = __builtin_fabs(r4.c) > kRounding ? 0.0 : 1.0;
  // A scaled infinity is NaN, and a NaN among the coefficients reaches the last pivot, as every step takes part in it.
  const double bad = 0.0 * __builtin_fabs(r4.c);
  const double z = r4.r / (r4.c + noPivot3), y = (q3.r - q3.c * z) * second;
  const double x = (p2.r - p2.b * y - p2.c * z) * first;
  const bool singular = noPivot1 + noPivot2 + noPivot3 > 0.0;
  return {singular ? bad : x, singular ? bad : y, singular ? bad : z, singular ? 1.0 : 0.0};
}

// Row a of the matrices of a block, with a right-hand side.
SA_INLINE Equation row(const double* A, int64_t n, int i, int a, double r) {
  return {A[i + a * n], A[i + (a + 3) * n], A[i + (a + 6) * n], r};
}

SA_INLINE void solveBlock(int nblock, const double* A, const double* b, double* x, double* singular) {
  const int64_t N = nblock;
  forPoints(nblock, [=](int i) SA_POINT {
    const Solution s = solve(row(A, N, i, 0, b[i]), row(A, N, i, 1, b[i + N]), row(A, N, i, 2, b[i + 2 * N]));
    x[i] = s.x;
    x[i + N] = s.y;
    x[i + 2 * N] = s.z;
    singular[i] = s.singular;
  });
}

} // namespace

SA_KERNEL(GLO_UTI_DET33, (const int32_t* nblock, const double* S, double* det)) { determinants<S33>(*nblock, S, det); }
SA_KERNEL(GLO_UTI_DET31, (const int32_t* nblock, const double* S, double* det)) { determinants<S31>(*nblock, S, det); }

#define SA_SOLVE(name)                                                                                                 \
  SA_KERNEL(name, (const int32_t* nblock, const double* A, const double* b, double* x, double* singular)) {            \
    solveBlock(*nblock, A, b, x, singular);                                                                            \
  }
SA_SOLVE(GLO_UTI_VSOLVE)
SA_SOLVE(GLO_UTI_VSOLVEDBL)

// Column by column: the solutions for the unit vectors.
SA_KERNEL(GLO_UTI_INVERSER, (const int32_t* nblock, const double* A, double* B, double* singular)) {
  const int64_t N = *nblock;
  for (int column = 0; column < 3; ++column) {
    const double e1 = column == 0 ? 1.0 : 0.0, e2 = column == 1 ? 1.0 : 0.0, e3 = column == 2 ? 1.0 : 0.0;
    double* out = B + 3 * column * N;
    forPoints(*nblock, [=](int i) SA_POINT {
      const Solution s = solve(row(A, N, i, 0, e1), row(A, N, i, 1, e2), row(A, N, i, 2, e3));
      out[i] = s.x;
      out[i + N] = s.y;
      out[i + 2 * N] = s.z;
      singular[i] = s.singular;
    });
  }
}

} // namespace sa

#undef SA_SOLVE
