// What the routines of principal values share: the points that a member treats, and its four kinds of argument list.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/points.h"
#include "glo/tensors/jacobi.h"

namespace sa {

// ---- which points a member treats

// piece(point, length) over the whole block, or over a list of its points, in pieces that fit the scratch.
template <class Piece>
SA_INLINE void forBlock(int64_t nblock, Piece piece) {
  forPieces(static_cast<int>(nblock), [=](int start, int n) SA_POINT { piece(AllPoints{n, start}, n); });
}
template <class Piece>
SA_INLINE void forList(int64_t nblock, int count, const int32_t* list, Piece piece) {
  if (nblock < 1) return;
  if (listsAll(nblock, count, list)) return forBlock(nblock, piece); // with unit stride
  forPieces(count, [=](int start, int n) SA_POINT { piece(ListedPoints{n, list + start}, n); });
}

// ---- tensors into the scratch of the rotations

template <class Points, bool kDirections>
SA_INLINE auto loadS33(Points point, int64_t nblock, const double* S, JacobiScratch<kDirections>& w) {
  const double *s11 = S, *s22 = S + nblock, *s33 = s22 + nblock, *s12 = s33 + nblock, *s23 = s12 + nblock,
               *s13 = s23 + nblock;
  return [=, &w](int i) SA_POINT {
    const int k = point(i);
    w.a11[i] = s11[k];
    w.a22[i] = s22[k];
    w.a33[i] = s33[k];
    w.a12[i] = s12[k];
    w.a23[i] = s23[k];
    w.a13[i] = s13[k];
  };
}

} // namespace sa

// The four kinds of member: whole block or list, with directions or values alone.
#define SA_PRINCIPAL(name, body)                                                                                       \
  SA_KERNEL(name, (const int32_t* nblock, const double* S, double* P, double* V)) {                                    \
    const int64_t N = *nblock;                                                                                         \
    forBlock(N, [=](auto point, int n) SA_POINT { body(point, n, N, S, P, V); });                                      \
  }
#define SA_PRINCIPAL_LIST(name, body)                                                                                  \
  SA_KERNEL(name, (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P,       \
                   double* V)) {                                                                                       \
    const int64_t N = *nblock;                                                                                         \
    forList(N, *count, list, [=](auto point, int n) SA_POINT { body(point, n, N, S, P, V); });                         \
  }
#define SA_VALUES(name, body)                                                                                          \
  SA_KERNEL(name, (const int32_t* nblock, const double* S, double* P)) {                                               \
    const int64_t N = *nblock;                                                                                         \
    forBlock(N, [=](auto point, int n) SA_POINT { body(point, n, N, S, P); });                                         \
  }
#define SA_VALUES_LIST(name, body)                                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P)) {    \
    const int64_t N = *nblock;                                                                                         \
    forList(N, *count, list, [=](auto point, int n) SA_POINT { body(point, n, N, S, P); });                            \
  }
