// Principal values and directions to machine precision, waiting in a scratch for a last, vectorised pass.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/jacobi.h"

#include <type_traits>

namespace sa {

// copy(source, target) for values and directions.
template <bool kDirections, class Copy>
SA_INLINE void forResults(JacobiScratch<kDirections>& from, JacobiScratch<kDirections>& done, Copy copy) {
  copy(from.a11, done.a11), copy(from.a22, done.a22), copy(from.a33, done.a33);
  if constexpr (kDirections)
    for (int d = 0; d < 9; ++d) copy(from.v[d], done.v[d]);
}

// Diagonalises what load(i) leaves in the scratch `w` for the n points of a piece; done.a11, a22, a33 times w.back are the
// values and done.v[3*b + a] component a of direction b of point i of the piece.
template <class Rotation = PreciseRotation, bool kDirections, class Load>
SA_INLINE void diagonalise(int n, JacobiScratch<kDirections>& w, JacobiScratch<kDirections>& done, Load load) {
  constexpr bool kQuick = std::is_same_v<Rotation, QuickRotation>;
  // finished points lose the sign of a zero in sweeps that others take: there zeros have one sign
  const auto result = [](double x) SA_POINT { return kQuick ? x + 0.0 : x; };
  const auto store = [&done, result](int count, const int* finished, auto& from) SA_POINT {
    for (int j = 0; j < count; ++j) done.place[j] = from.place[finished[j]];
    forResults(from, done, [&, result](const double* source, double* target) SA_POINT {
      for (int j = 0; j < count; ++j) target[done.place[j]] = result(source[finished[j]]);
    });
  };
  if constexpr (kQuick) {
    const auto storeAll = [n, &done, result](auto& from) SA_POINT {
      forResults(from, done, [=](const double* source, double* target) SA_POINT {
        forPoints(n, [=](int i) SA_POINT { target[i] = result(source[i]); });
      });
    };
    jacobiQuickly(n, w, load, storeAll, store);
  } else
    jacobi<Rotation>(n, w, load, store);
}

// Brings the values to the scale of their tensors.
template <bool kDirections>
SA_INLINE void unscale(int n, const JacobiScratch<kDirections>& w, JacobiScratch<kDirections>& done) {
  if (!w.isScaled) return;
  forPoints(n, [&w, &done](int i) SA_POINT {
    done.a11[i] *= w.back[i];
    done.a22[i] *= w.back[i];
    done.a33[i] *= w.back[i];
  });
}

// diagonalise for tensors that may be near the identity: there the values are those of S - 1, whose direct components are exact
// differences, so that they keep the digits that 1 + small loses.  The value itself is shift + done.a11 times w.back and so
// on.
template <class Rotation, bool kDirections, class Load>
SA_INLINE void diagonaliseAboutOne(int n, JacobiScratch<kDirections>& w, JacobiScratch<kDirections>& done,
                                   double (&shift)[kScratchPoints], Load load) {
  diagonalise<Rotation>(n, w, done, [=, &w, &shift](int i) SA_POINT {
    load(i);
    const auto isNear = [](double x) SA_POINT { return x > 0.5 && x < 2.0; };
    const bool nearby = isNear(w.a11[i]) && isNear(w.a22[i]) && isNear(w.a33[i]) && __builtin_fabs(w.a12[i]) < 0.25 &&
                        __builtin_fabs(w.a23[i]) < 0.25 && __builtin_fabs(w.a13[i]) < 0.25;
    const double s = nearby ? 1.0 : 0.0;
    shift[i] = s;
    w.a11[i] -= s;
    w.a22[i] -= s;
    w.a33[i] -= s;
  });
}

// ln(shift + x), where a shift of 1 keeps the digits of x: the logarithm of the rounded sum, and what the rounding has lost.
// x is at the scale of its tensor.
SA_INLINE double logAboutOne(double x, double shift) {
  const bool shifted = shift != 0.0;
  const double u = shifted ? 1.0 + x : x, lost = shifted ? x - (u - 1.0) : 0.0;
  return u > 0.0 ? vm::log(u) + lost / u : vm::kNaN;
}

// The symmetric tensor with the values f1, f2, f3 in the directions of point i, to point k of a block array T.
SA_INLINE void compose(const JacobiScratch<true>& done, int i, double f1, double f2, double f3, double* T, int64_t n,
                       int k) {
  const double x1 = done.v[0][i], y1 = done.v[1][i], z1 = done.v[2][i];
  const double x2 = done.v[3][i], y2 = done.v[4][i], z2 = done.v[5][i];
  const double x3 = done.v[6][i], y3 = done.v[7][i], z3 = done.v[8][i];
  T[k] = f1 * x1 * x1 + f2 * x2 * x2 + f3 * x3 * x3;
  T[k + n] = f1 * y1 * y1 + f2 * y2 * y2 + f3 * y3 * y3;
  T[k + 2 * n] = f1 * z1 * z1 + f2 * z2 * z2 + f3 * z3 * z3;
  T[k + 3 * n] = f1 * x1 * y1 + f2 * x2 * y2 + f3 * x3 * y3;
  T[k + 4 * n] = f1 * y1 * z1 + f2 * y2 * z2 + f3 * y3 * z3;
  T[k + 5 * n] = f1 * x1 * z1 + f2 * x2 * z2 + f3 * x3 * z3;
}

} // namespace sa
