// Jacobi rotations of symmetric 3x3 tensors over a block, for every routine that needs principal values or directions.
//
// A sweep rotates in the planes (1,3), (1,2), (2,3).  Each rotation is two short vector passes over the active points: one
// finds the angles, where divisions and roots are long chains, one applies them.  After a sweep the points that still moved
// are packed together, so that the next sweep runs over them with unit stride and finished points cost nothing.
//
// Tensors beyond the middle of the range of doubles are scaled by a power of two on the way in: products of sines with numbers
// near the smallest double would be rounded to whole multiples of it, so that rotations undo each other and never end, and sums
// near the largest one would overflow.  Values taken from the scratch are to be multiplied by `back` of their point.
#pragma once

#include "glo/kernel/kernel.h"
#include "glo/kernel/points.h"
#include "glo/tensors/scale.h"

#include <cstdint>
#include <limits>

namespace sa {

// The active points of a piece: matrices, directions and the place of each point in the piece.
template <bool kDirections>
struct JacobiScratch {
  double a11[kScratchPoints], a22[kScratchPoints], a33[kScratchPoints];
  double a12[kScratchPoints], a23[kScratchPoints], a13[kScratchPoints];
  double v[kDirections ? 9 : 1][kScratchPoints]; // v[3*b + a]: component a of direction b
  double c[kScratchPoints], s[kScratchPoints], t[kScratchPoints];
  double moving[kScratchPoints];
  int place[kScratchPoints];
  double back[kScratchPoints]; // value of the tensor / value in the scratch, by place in the piece: not packed
  bool isScaled;               // some `back` is not 1
};

// The angle of one rotation in plane (p, q).  `t` is handed on to the update of the matrix; who needs none leaves it 0.
struct PlaneAngle {
  double c, s, t;
};

// Bounded rotations: rotate until every sine of a sweep is at most 0.015.  c and s come out of t = tan, or cot, of the angle,
// whichever branch turns by 45 degrees at most; s = sqrt(1 - c*c) loses angles below about 1e-8.
struct BoundedRotation {
  static constexpr double kStillMoving = 0.015;

  SA_INLINE static PlaneAngle angle(double app, double aqq, double apq) {
    constexpr double kEps = 0x1p-53;
    const bool negligible = (__builtin_fabs(app) + __builtin_fabs(aqq)) * kEps >= __builtin_fabs(apq);
    const double theta = (aqq - app) / (apq + (negligible ? 1.0 : 0.0));
    const double t = (__builtin_sqrt(theta * theta + 4.0) - theta) * 0.5;
    const double c = __builtin_sqrt(1.0 / (t * t + 1.0));
    const double s = __builtin_sqrt(1.0 - c * c);
    const bool nearest = c > s;
    const double cr = nearest ? c : s, sr = nearest ? -s : c;
    return {negligible ? 1.0 : cr, negligible ? 0.0 : sr, 0.0};
  }

  SA_INLINE static void rotate(const PlaneAngle& r, double& app, double& aqq, double apq, double& apr, double& aqr) {
    const double cc = r.c * r.c, cs = r.c * r.s, ss = r.s * r.s, pp = app, qq = aqq, pr = apr, qr = aqr;
    app = cc * pp + 2.0 * cs * apq + ss * qq;
    aqq = cc * qq - 2.0 * cs * apq + ss * pp;
    apr = r.c * pr + r.s * qr;
    aqr = r.c * qr - r.s * pr;
  }
};

// Classic rotations, with the same bound.  theta is built from a_pp - a_qq and t a_pq is added to a_pp: the mirror image of
// the textbook form.
struct ClassicRotation {
  static constexpr double kStillMoving = 0.015;

  SA_INLINE static PlaneAngle angle(double app, double aqq, double apq) {
    constexpr double kEps = 0x1p-53;
    const bool negligible = (__builtin_fabs(app) + __builtin_fabs(aqq)) * kEps >= __builtin_fabs(apq);
    const double theta = (app - aqq) * 0.5 / (apq + (negligible ? 1.0 : 0.0));
    const double size = 1.0 / (__builtin_fabs(theta) + __builtin_sqrt(theta * theta + 1.0));
    const bool negative = theta < 0.0 || (theta == 0.0 && apq < 0.0);
    const double t = negligible ? 0.0 : (negative ? -size : size);
    const double c = 1.0 / __builtin_sqrt(t * t + 1.0);
    return {c, t * c, t};
  }

  SA_INLINE static void rotate(const PlaneAngle& r, double& app, double& aqq, double apq, double& apr, double& aqr) {
    const double tau = r.s / (r.c + 1.0), h = r.t * apq, pr = apr, qr = aqr;
    app = app + h;
    aqq = aqq - h;
    apr = pr + r.s * (qr - tau * pr);
    aqr = qr - r.s * (pr + tau * qr);
  }
};

// Rotations to machine precision.  Sines of at most 1e-8 leave off-diagonals of 1e-16 of the spread after the sweep.  Only
// entries below the rounding of the smaller diagonal entry count as zero, which keeps small values of positive tensors
// accurate (J. Demmel, K. Veselic, SIAM J. Matrix Anal. Appl. 13 (1992) 1204).  No entry is squared, so every scale works.
struct PreciseRotation {
  static constexpr double kStillMoving = 1e-8;

  SA_INLINE static PlaneAngle angle(double app, double aqq, double apq) {
    constexpr double kEps = 0x1p-53;
    const double p = __builtin_fabs(app), q = __builtin_fabs(aqq);
    const bool negligible = (p < q ? p : q) * kEps >= __builtin_fabs(apq);
    const double theta = (app * 0.5 - aqq * 0.5) / (apq + (negligible ? 1.0 : 0.0));
    const double size = 1.0 / (__builtin_fabs(theta) + __builtin_sqrt(theta * theta + 1.0));
    const double t = negligible ? 0.0 : (theta < 0.0 ? -size : size);
    const double c = 1.0 / __builtin_sqrt(t * t + 1.0);
    return {c, t * c, t};
  }

  SA_INLINE static void rotate(const PlaneAngle& r, double& app, double& aqq, double apq, double& apr, double& aqr) {
    const double h = r.t * apq, pr = apr, qr = aqr;
    app = app + h;
    aqq = aqq - h;
    apr = r.c * pr + r.s * qr;
    aqr = r.c * qr - r.s * pr;
  }
};

// One rotation of all n active points in the plane (p, q), with r the third axis.
template <class Rotation, bool kDirections>
SA_INLINE void rotatePlane(int n, JacobiScratch<kDirections>& w, double* app, double* aqq, double* apq, double* apr,
                           double* aqr, [[maybe_unused]] int64_t p, [[maybe_unused]] int64_t q) {
  forPoints(n, [=, &w](int i) SA_POINT {
    const PlaneAngle r = Rotation::angle(app[i], aqq[i], apq[i]);
    w.c[i] = r.c;
    w.s[i] = r.s;
    w.t[i] = r.t;
    w.moving[i] = __builtin_fabs(r.s) > Rotation::kStillMoving ? 1.0 : w.moving[i];
  });
  forPoints(n, [=, &w](int i) SA_POINT {
    const PlaneAngle r{w.c[i], w.s[i], w.t[i]};
    double pp = app[i], qq = aqq[i], pr = apr[i], qr = aqr[i];
    Rotation::rotate(r, pp, qq, apq[i], pr, qr);
    app[i] = pp;
    aqq[i] = qq;
    apq[i] = 0.0;
    apr[i] = pr;
    aqr[i] = qr;
  });
  if constexpr (kDirections) {
    double *p1 = w.v[3 * p], *p2 = w.v[3 * p + 1], *p3 = w.v[3 * p + 2];
    double *q1 = w.v[3 * q], *q2 = w.v[3 * q + 1], *q3 = w.v[3 * q + 2];
    forPoints(n, [=, &w](int i) SA_POINT {
      const double c = w.c[i], s = w.s[i];
      const double x1 = p1[i], x2 = p2[i], x3 = p3[i], y1 = q1[i], y2 = q2[i], y3 = q3[i];
      p1[i] = c * x1 + s * y1;
      p2[i] = c * x2 + s * y2;
      p3[i] = c * x3 + s * y3;
      q1[i] = c * y1 - s * x1;
      q2[i] = c * y2 - s * x2;
      q3[i] = c * y3 - s * x3;
    });
  }
}

// Moves the listed points of the scratch to its front.
template <bool kDirections>
SA_INLINE void pack(int n, const int* kept, JacobiScratch<kDirections>& w) {
  const auto move = [n, kept](auto* values) SA_POINT {
    // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.ArraySubscript): the first n entries are there
    for (int j = 0; j < n; ++j) values[j] = values[kept[j]];
  };
  move(w.a11), move(w.a22), move(w.a33), move(w.a12), move(w.a23), move(w.a13), move(w.place);
  if constexpr (kDirections)
    for (auto& component : w.v) move(component);
}

// Cyclic rotations by at most 45 degrees converge, for a finite tensor in a handful of sweeps; the bound keeps a loop that
// rounding might keep alive from hanging its host.  A point that reaches it keeps the values and directions that it then has.
// Source: G. E. Forsythe, P. Henrici, Trans. Amer. Math. Soc. 94 (1960) 1.
constexpr int kMostSweeps = 40;

// The scale of point i of the scratch.  A diagonal tensor has no sums that could overflow and keeps its small values.
template <bool kDirections>
SA_INLINE void scaleTensor(JacobiScratch<kDirections>& w, int i) {
  const double a11 = w.a11[i], a22 = w.a22[i], a33 = w.a33[i], a12 = w.a12[i], a23 = w.a23[i], a13 = w.a13[i];
  const double direct = magnitude(a11, a22, a33), shear = magnitude(a12, a23, a13);
  const Scale scale = scaleForSums(shear == 0.0 ? vm::min(direct, 1.0) : vm::max(direct, shear));
  w.a11[i] = a11 * scale.factor;
  w.a22[i] = a22 * scale.factor;
  w.a33[i] = a33 * scale.factor;
  w.a12[i] = a12 * scale.factor;
  w.a23[i] = a23 * scale.factor;
  w.a13[i] = a13 * scale.factor;
  w.back[i] = scale.back;
}

// Diagonalises the tensors that load(i) leaves in the scratch for the points i = 0 .. n - 1 of a piece (n at most
// kScratchPoints) and hands finished points over: store(count, finished, w), finished[j] being a position in the scratch.
// A point whose angles are not numbers does not move: it is finished after the sweep in which that shows.  Every point is
// finished after kMostSweeps.
template <class Rotation, bool kDirections, class Load, class Store>
SA_INLINE void jacobi(int n, JacobiScratch<kDirections>& w, Load load, Store store) {
  forPoints(n, load);
  forPoints(n, [&w](int i) SA_POINT { w.place[i] = i; });
  uint64_t beyond = 0; // pieces of ordinary tensors are not scaled: it would change none of their bits
#pragma omp simd reduction(| : beyond)
  for (int i = 0; i < n; ++i) {
    w.back[i] = 1.0;
    beyond |= isBeyondSums(vm::max(magnitude(w.a11[i], w.a22[i], w.a33[i]), magnitude(w.a12[i], w.a23[i], w.a13[i])));
  }
  w.isScaled = beyond != 0;
  if (w.isScaled) forPoints(n, [&w](int i) SA_POINT { scaleTensor(w, i); });
  if constexpr (kDirections)
    for (int k = 0; k < 9; ++k) {
      const double unit = k % 4 == 0 ? 1.0 : 0.0;
      double* v = w.v[k];
      forPoints(n, [=](int i) SA_POINT { v[i] = unit; });
    }

  int active = n;
  for (int sweep = 1; active > 0; ++sweep) {
    forPoints(active, [&w](int i) SA_POINT { w.moving[i] = 0.0; });
    rotatePlane<Rotation>(active, w, w.a11, w.a33, w.a13, w.a12, w.a23, 0, 2);
    rotatePlane<Rotation>(active, w, w.a11, w.a22, w.a12, w.a13, w.a23, 0, 1);
    rotatePlane<Rotation>(active, w, w.a22, w.a33, w.a23, w.a12, w.a13, 1, 2);

    int kept[kScratchPoints], finished[kScratchPoints];
    int keptCount = 0, finishedCount = 0;
    const double still = sweep < kMostSweeps ? 0.0 : 1.0; // `moving` is 0 or 1
    for (int i = 0; i < active; ++i) {
      const int moves = w.moving[i] > still;
      kept[keptCount] = i;
      finished[finishedCount] = i;
      keptCount += moves;
      finishedCount += 1 - moves;
    }
    if (finishedCount > 0) {
      store(finishedCount, finished, w);
      pack(keptCount, kept, w);
    }
    active = keptCount;
  }
}

} // namespace sa
