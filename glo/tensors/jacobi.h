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
#include <type_traits>

namespace sa {

// The active points of a piece: matrices, directions and the place of each point in the piece.
template <bool kDirections>
struct JacobiScratch {
  double a11[kScratchPoints], a22[kScratchPoints], a33[kScratchPoints];
  double a12[kScratchPoints], a23[kScratchPoints], a13[kScratchPoints];
  double v[kDirections ? 9 : 1][kScratchPoints]; // v[3*b + a]: component a of direction b
  double c[kScratchPoints], s[kScratchPoints], t[kScratchPoints];
  double moving[kScratchPoints]; // 1.0 from a large angle of the sweep on; quick rotations: the largest sine
  int place[kScratchPoints];
  double back[kScratchPoints];    // value of the tensor / value in the scratch, by place in the piece: not packed
  bool isScaled;                  // some `back` is not 1
  double turning[kScratchPoints]; // quick rotations: 1.0 until the point is finished
};

// The angle of one rotation in plane (p, q).  `t` is handed on to the update of the matrix; who needs none leaves it 0.
struct PlaneAngle {
  double c, s, t;
};

// Bounded rotations: rotate until every sine of a sweep is at most 0.015.  With d = a_qq - a_pp, m = 2 a_pq and
// w = |d| + sqrt(d d + m m) the sine and the cosine of the angle that turns by 45 degrees at most are m and w over
// sqrt(w w + m m): one division and two roots, and small angles keep their digits.
struct BoundedRotation {
  static constexpr double kStillMoving = 0.015;

  SA_INLINE static PlaneAngle angle(double app, double aqq, double apq) {
    constexpr double kEps = 0x1p-53;
    const bool negligible = (__builtin_fabs(app) + __builtin_fabs(aqq)) * kEps >= __builtin_fabs(apq);
    // squares of numbers near one: those of a tensor's small entries would vanish beside its large ones
    const double difference = aqq - app, twice = 2.0 * apq, scale = powerBelow(magnitude(difference, twice));
    const double d = difference * scale, m = __builtin_fabs(twice) * scale, mm = m * m;
    const double w = __builtin_fabs(d) + __builtin_sqrt(d * d + mm), q = 1.0 / __builtin_sqrt(w * w + mm);
    const double sine = m * q;
    // a_pp = a_qq turns as a_pp below a_qq does with a_pq above 0
    const bool opposed = ((difference < 0.0) & (twice > 0.0)) | ((difference > 0.0) & (twice < 0.0));
    return {negligible ? 1.0 : w * q, negligible ? 0.0 : (opposed ? sine : -sine), 0.0};
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

// Rotations by nearly the angle that makes a_pq zero, to the same end as the precise ones, for directions whose order and signs
// do not matter.  With d = |a_pp - a_qq|, m = |a_pq| and y = 2 m/d the tangent of half the angle is tan(atan(y)/4), here the
// quotient of two cubic forms in d and m that has its first two terms at y = 0, its value at infinity, and is off by 6e-4 in
// between.  Sine and cosine are rational in it: a rotation takes one division and no root.  What it leaves of a_pq is the next
// sweep's; the small angles of a last sweep are right to rounding.
struct QuickRotation {
  static constexpr double kStillMoving = PreciseRotation::kStillMoving;

  // No rotation where `turning` is 0.
  SA_INLINE static PlaneAngle angle(double app, double aqq, double apq, double turning) {
    constexpr double kEps = 0x1p-53, kTangent = 0.41421356237309503; // tan(pi/8)
    constexpr double kLinear = 4 * 1.208, kUpper = 16 * 0.748, kLower = kUpper + 5, kCubic = kUpper / kTangent;
    const double p = __builtin_fabs(app), q = __builtin_fabs(aqq), size = __builtin_fabs(apq);
    const uint64_t none = 0u - static_cast<uint64_t>((vm::min(p, q) * kEps >= size) | (turning == 0.0));
    const double difference = app - aqq, twice = __builtin_fabs(difference + difference);
    const double scale = powerBelow(vm::max(twice, size)); // degrees up to 6 follow
    const double d = twice * scale, m = size * scale, mm = m * m, common = d * d + kLinear * (d * m);
    const double over = m * (common + kUpper * mm), under = d * (common + kLower * mm) + kCubic * (m * mm);
    const double u = vm::fromBits(vm::toBits(over) & ~none);
    // the tiny number is for zeros
    const double f = (u + u) / ((u * u + under * under) + 0x1p-500), sine = f * under;
    const uint64_t sign = (vm::toBits(difference) ^ vm::toBits(apq)) & vm::kSignBit;
    return {1.0 - f * u, vm::fromBits(vm::toBits(sine) ^ sign), 0.0};
  }

  SA_INLINE static void rotate(const PlaneAngle& r, double& app, double& aqq, double& apq, double& apr, double& aqr) {
    const double pq = apq, pr = apr, qr = aqr, left = r.c * pq, rest = left - r.s * (app - aqq),
                 h = r.s * (left + rest);
    app = app + h;
    aqq = aqq - h;
    apq = r.c * rest - r.s * (r.s * pq);
    apr = r.c * pr + r.s * qr;
    aqr = r.c * qr - r.s * pr;
  }
};

// The plane (p, q) of a rotation, with r the third axis, in the scratch of a piece.
struct RotationPlane {
  double *app, *aqq, *apq, *apr, *aqr;
  double *p1, *p2, *p3, *q1, *q2, *q3; // directions p and q
};
template <bool kDirections>
SA_INLINE RotationPlane planeOf(JacobiScratch<kDirections>& w, double* app, double* aqq, double* apq, double* apr,
                                double* aqr, int64_t p, int64_t q) {
  if constexpr (kDirections)
    return {app,           aqq, apq, apr, aqr, w.v[3 * p], w.v[3 * p + 1], w.v[3 * p + 2], w.v[3 * q], w.v[3 * q + 1],
            w.v[3 * q + 2]};
  else
    return {app, aqq, apq, apr, aqr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr};
}

// The angle of a plane's rotation for point i, and what the rotation does.
template <class Rotation, bool kDirections>
SA_INLINE void findAngle(int i, JacobiScratch<kDirections>& w, const RotationPlane& a) {
  const PlaneAngle r = Rotation::angle(a.app[i], a.aqq[i], a.apq[i]);
  w.c[i] = r.c;
  w.s[i] = r.s;
  w.t[i] = r.t;
  w.moving[i] = __builtin_fabs(r.s) > Rotation::kStillMoving ? 1.0 : w.moving[i];
}
template <bool kDirections>
SA_INLINE void turnDirections(int i, const PlaneAngle& r, const RotationPlane& a) {
  if constexpr (kDirections) {
    const double x1 = a.p1[i], x2 = a.p2[i], x3 = a.p3[i], y1 = a.q1[i], y2 = a.q2[i], y3 = a.q3[i];
    a.p1[i] = r.c * x1 + r.s * y1;
    a.p2[i] = r.c * x2 + r.s * y2;
    a.p3[i] = r.c * x3 + r.s * y3;
    a.q1[i] = r.c * y1 - r.s * x1;
    a.q2[i] = r.c * y2 - r.s * x2;
    a.q3[i] = r.c * y3 - r.s * x3;
  }
}
template <class Rotation, bool kDirections>
SA_INLINE void turn(int i, JacobiScratch<kDirections>& w, const RotationPlane& a) {
  const PlaneAngle r{w.c[i], w.s[i], w.t[i]};
  double pp = a.app[i], qq = a.aqq[i], pr = a.apr[i], qr = a.aqr[i];
  Rotation::rotate(r, pp, qq, a.apq[i], pr, qr);
  a.app[i] = pp;
  a.aqq[i] = qq;
  a.apq[i] = 0.0;
  a.apr[i] = pr;
  a.aqr[i] = qr;
  turnDirections<kDirections>(i, r, a);
}

// Angle and rotation at once: a chain of one division is short enough.
template <bool kDirections>
SA_INLINE void turnQuickly(int n, JacobiScratch<kDirections>& w, const RotationPlane& a) {
  forPoints(n, [=, &w](int i) SA_POINT {
    double pp = a.app[i], qq = a.aqq[i], pq = a.apq[i], pr = a.apr[i], qr = a.aqr[i];
    const PlaneAngle r = QuickRotation::angle(pp, qq, pq, w.turning[i]);
    w.moving[i] = vm::max(__builtin_fabs(r.s), w.moving[i]); // not NaN
    QuickRotation::rotate(r, pp, qq, pq, pr, qr);
    a.app[i] = pp;
    a.aqq[i] = qq;
    a.apq[i] = pq;
    a.apr[i] = pr;
    a.aqr[i] = qr;
    turnDirections<kDirections>(i, r, a);
  });
}

// The three rotations of a sweep for all n active points.  Angles keep the unit that divides busy, and what the rotations do to
// directions the units that multiply: with directions the points are worked off in two halves, of which one turns while the
// angles of the other are found.
template <class Rotation, bool kDirections>
SA_INLINE void sweepPlanes(int n, JacobiScratch<kDirections>& w, const RotationPlane& first,
                           const RotationPlane& second, const RotationPlane& third) {
  const auto angles = [&w](int start, int count, const RotationPlane& a) SA_POINT {
    forPoints(count, [=, &w](int i) SA_POINT { findAngle<Rotation>(start + i, w, a); });
  };
  const auto turns = [&w](int start, int count, const RotationPlane& a)
                         SA_POINT { forPoints(count, [=, &w](int i) SA_POINT { turn<Rotation>(start + i, w, a); }); };
  if constexpr (!kDirections) {
    angles(0, n, first), turns(0, n, first);
    angles(0, n, second), turns(0, n, second);
    angles(0, n, third), turns(0, n, third);
  } else {
    const int half = n / 16 * 8, rest = n - half; // the first half ends with a vector
    // the first half turns in plane a while the angles of the second one in plane b are found, and the other way round
    const auto firstTurns = [=, &w](const RotationPlane& a, const RotationPlane& b) SA_POINT {
      forPoints(half, [=, &w](int i) SA_POINT {
        turn<Rotation>(i, w, a);
        findAngle<Rotation>(half + i, w, b);
      });
      angles(half + half, rest - half, b);
    };
    const auto secondTurns = [=, &w](const RotationPlane& a, const RotationPlane& b) SA_POINT {
      forPoints(half, [=, &w](int i) SA_POINT {
        turn<Rotation>(half + i, w, a);
        findAngle<Rotation>(i, w, b);
      });
      turns(half + half, rest - half, a);
    };
    angles(0, half, first);
    firstTurns(first, first);
    secondTurns(first, second);
    firstTurns(second, second);
    secondTurns(second, third);
    firstTurns(third, third);
    turns(half, rest, third);
  }
}
template <class Rotation, bool kDirections>
SA_INLINE void sweepPlanes(int n, JacobiScratch<kDirections>& w) {
  const RotationPlane first = planeOf(w, w.a11, w.a33, w.a13, w.a12, w.a23, 0, 2),
                      second = planeOf(w, w.a11, w.a22, w.a12, w.a13, w.a23, 0, 1),
                      third = planeOf(w, w.a22, w.a33, w.a23, w.a12, w.a13, 1, 2);
  if constexpr (std::is_same_v<Rotation, QuickRotation>)
    turnQuickly(n, w, first), turnQuickly(n, w, second), turnQuickly(n, w, third);
  else
    sweepPlanes<Rotation>(n, w, first, second, third);
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

// Puts the tensors that load(i) leaves in the scratch for the n points of a piece to the scale of the rotations, with the axes
// as directions.
template <bool kDirections, class Load>
SA_INLINE void begin(int n, JacobiScratch<kDirections>& w, Load load) {
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
}

// Sweeps over the active points until none is left, the first of them being the sweep-th.
template <class Rotation, bool kDirections, class Store>
SA_INLINE void finish(int active, int sweep, JacobiScratch<kDirections>& w, Store store) {
  for (; active > 0; ++sweep) {
    forPoints(active, [&w](int i) SA_POINT { w.moving[i] = 0.0; });
    sweepPlanes<Rotation>(active, w);

    int kept[kScratchPoints], finished[kScratchPoints];
    int keptCount = 0, finishedCount = 0;
    const double most = std::is_same_v<Rotation, QuickRotation> ? Rotation::kStillMoving : 0.0;
    const double still = sweep < kMostSweeps ? most : 2.0;
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

// Diagonalises the tensors that load(i) leaves in the scratch for the points i = 0 .. n - 1 of a piece (n at most
// kScratchPoints) and hands finished points over: store(count, finished, w), finished[j] being a position in the scratch.
// A point whose angles are not numbers does not move: it is finished after the sweep in which that shows.  Every point is
// finished after kMostSweeps.
template <class Rotation, bool kDirections, class Load, class Store>
SA_INLINE void jacobi(int n, JacobiScratch<kDirections>& w, Load load, Store store) {
  begin(n, w, load);
  finish<Rotation>(n, 1, w, store);
}

// The same by quick rotations: storeAll(w) takes the values and directions of all n points once three quarters of them are
// finished, and store those of the others later.  Until then nobody is packed, and finished points do not turn, which leaves them
// as they are but for the signs of zeros.
template <bool kDirections, class Load, class StoreAll, class Store>
SA_INLINE void jacobiQuickly(int n, JacobiScratch<kDirections>& w, Load load, StoreAll storeAll, Store store) {
  constexpr double kStill = QuickRotation::kStillMoving;
  begin(n, w, load);
  forPoints(n, [&w](int i) SA_POINT {
    w.turning[i] = 1.0;
    w.moving[i] = 0.0;
  });
  int sweep = 1;
  for (int active = n; active > n / 4 && sweep < kMostSweeps; ++sweep) {
    sweepPlanes<QuickRotation>(n, w);
    double moving = 0.0;
#pragma omp simd reduction(+ : moving) // whole numbers
    for (int i = 0; i < n; ++i) {
      w.turning[i] = w.moving[i] > kStill ? 1.0 : 0.0;
      w.moving[i] = 0.0;
      moving += w.turning[i];
    }
    active = static_cast<int>(moving);
  }
  storeAll(w);
  int kept[kScratchPoints], count = 0;
  for (int i = 0; i < n; ++i) {
    kept[count] = i;
    count += w.turning[i] != 0.0;
  }
  pack(count, kept, w);
  forPoints(count, [&w](int i) SA_POINT { w.turning[i] = 1.0; });
  finish<QuickRotation>(count, sweep, w, store);
}

} // namespace sa
