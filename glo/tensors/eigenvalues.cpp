// Principal values to machine precision, sorted; with directions; of pairs of tensors.
#include "glo.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/spectral.h"
#include "glo/tensors/trigonometric_values.h"

namespace sa {
namespace {

// A value with its direction.
struct Axis {
  double value, x, y, z;
};
SA_INLINE Axis select(bool first, const Axis& a, const Axis& b) {
  return {first ? a.value : b.value, first ? a.x : b.x, first ? a.y : b.y, first ? a.z : b.z};
}

enum class Order { Increasing, Decreasing };

// Three axes in order; equal values keep their places.  The third is right-handed when multiplied by `hand`, 1 or -1.
struct Axes {
  Axis first, second, third;
  double hand;
};
template <Order order>
SA_INLINE bool precedes(const Axis& a, const Axis& b) {
  return order == Order::Increasing ? a.value < b.value : a.value > b.value;
}
template <Order order>
SA_INLINE Axes sorted(const Axis& a, const Axis& b, const Axis& c) {
  const bool s1 = precedes<order>(b, a);
  const Axis p = select(s1, b, a), q = select(s1, a, b);
  const bool s2 = precedes<order>(c, q);
  const Axis r = select(s2, c, q), last = select(s2, q, c);
  const bool s3 = precedes<order>(r, p), odd = s1 != (s2 != s3); // each exchange makes a reflection of a rotation
  return {select(s3, r, p), select(s3, p, r), last, odd ? -1.0 : 1.0};
}

SA_INLINE double notFinite(const Axes& a) { return spoiled(a.first.value, a.second.value, a.third.value); }

// What is stored for a point: values, times `back`, alone, or values and directions in columns; NaN for a spoiled point, for
// which `bad` is NaN, else 0.
SA_INLINE void storeValues(const Axes& a, double bad, double back, double* P, int64_t n, int k) {
  P[k] = a.first.value * back - bad; // a zero that changes no sign is subtracted
  P[k + n] = a.second.value * back - bad;
  P[k + 2 * n] = a.third.value * back - bad;
}
SA_INLINE void storeDirections(const Axes& a, double bad, double* V, int64_t n, int k) {
  V[k] = a.first.x + bad;
  V[k + n] = a.first.y + bad;
  V[k + 2 * n] = a.first.z + bad;
  V[k + 3 * n] = a.second.x + bad;
  V[k + 4 * n] = a.second.y + bad;
  V[k + 5 * n] = a.second.z + bad;
  V[k + 6 * n] = a.third.x * a.hand + bad; // adding 0.0 leaves no negative zero
  V[k + 7 * n] = a.third.y * a.hand + bad;
  V[k + 8 * n] = a.third.z * a.hand + bad;
}

SA_INLINE Axes axesOf(const JacobiScratch<true>& d, int i) {
  return {{d.a11[i], d.v[0][i], d.v[1][i], d.v[2][i]},
          {d.a22[i], d.v[3][i], d.v[4][i], d.v[5][i]},
          {d.a33[i], d.v[6][i], d.v[7][i], d.v[8][i]},
          1.0};
}
SA_INLINE Axes axesOf(const JacobiScratch<false>& d, int i) {
  return {{d.a11[i], 0.0, 0.0, 0.0}, {d.a22[i], 0.0, 0.0, 0.0}, {d.a33[i], 0.0, 0.0, 0.0}, 1.0};
}
template <Order order>
SA_INLINE Axes sorted(const Axes& a) {
  return sorted<order>(a.first, a.second, a.third);
}

// ---- in space

template <Order order, class Points>
SA_INLINE void valuesInSpace(Points point, int n, int64_t nblock, const double* S, double* P) {
  JacobiScratch<false> w, done;
  diagonalise(n, w, done, loadS33(point, nblock, S, w));
  forPoints(n, [=, &w, &done](int i) SA_POINT {
    const Axes axes = axesOf(done, i);
    storeValues(sorted<order>(axes), notFinite(axes), w.back[i], P, nblock, point(i));
  });
}
template <class Points>
SA_INLINE void axesInSpace(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  JacobiScratch<true> w, done;
  diagonalise(n, w, done, loadS33(point, nblock, S, w));
  forPoints(n, [=, &w, &done](int i) SA_POINT {
    const Axes axes = sorted<Order::Increasing>(axesOf(done, i));
    const double bad = notFinite(axes);
    storeValues(axes, bad, w.back[i], P, nblock, point(i));
    storeDirections(axes, bad, V, nblock, point(i));
  });
}

// The values of the trigonometric solution in its order; each gets the direction of the accurate value of the same rank.
template <class Points>
SA_INLINE void trigonometricAxes(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  JacobiScratch<true> w, done;
  diagonalise(n, w, done, loadS33(point, nblock, S, w));
  valuesS33(point, n, nblock, S, P);
  forPoints(n, [=, &done](int i) SA_POINT {
    const int k = point(i);
    const double p1 = P[k], p2 = P[k + nblock], p3 = P[k + 2 * nblock];
    const Axes a = sorted<Order::Increasing>(axesOf(done, i));
    const Axis last{a.third.value, a.third.x * a.hand, a.third.y * a.hand, a.third.z * a.hand};
    // smaller values, and equal ones before it, count up the rank
    const double rank1 = (p2 < p1 ? 1.0 : 0.0) + (p3 < p1 ? 1.0 : 0.0);
    const double rank2 = (p1 <= p2 ? 1.0 : 0.0) + (p3 < p2 ? 1.0 : 0.0);
    const double rank3 = (p1 <= p3 ? 1.0 : 0.0) + (p2 <= p3 ? 1.0 : 0.0);
    const Axis d1 = select(rank1 == 0.0, a.first, select(rank1 == 1.0, a.second, last));
    const Axis d2 = select(rank2 == 0.0, a.first, select(rank2 == 1.0, a.second, last));
    const Axis d3 = select(rank3 == 0.0, a.first, select(rank3 == 1.0, a.second, last));
    const bool odd = (rank1 > rank2) != ((rank1 > rank3) != (rank2 > rank3));
    storeDirections({d1, d2, d3, odd ? -1.0 : 1.0}, notFinite(a), V, nblock, k);
  });
}

// ---- in the plane

struct PlaneAxes {
  Axis first, second; // in increasing order, a rotation
  double bad;         // NaN for a spoiled point, else 0
  uint64_t isBeyond;  // whether the point is to be scaled
};
// tan of half the angle on the circle, a quotient of sums of positive numbers.  A shear below the rounding of the smaller
// direct component counts as zero, as in PreciseRotation.  `scaled` as in forPointsOfAnyScale.
SA_INLINE PlaneAxes planeAxes(auto scaled, double s11, double s22, double s12) {
  constexpr double kEps = 0x1p-53;
  const double largest = magnitude(s11, s22, s12);
  const Scale scale = scaled ? scaleForSquares(largest) : Scale{1.0, 1.0};
  const double a11 = s11 * scale.factor, a22 = s22 * scale.factor, a12 = s12 * scale.factor;
  const double half = 0.5 * a11 - 0.5 * a22, radius = __builtin_sqrt(half * half + a12 * a12);
  const bool negligible = vm::min(__builtin_fabs(a11), __builtin_fabs(a22)) * kEps >= __builtin_fabs(a12);
  const double tangent = a12 / (negligible ? 1.0 : __builtin_fabs(half) + radius);
  const double t = negligible ? 0.0 : (half < 0.0 ? -tangent : tangent), h = t * a12;
  const double c = 1.0 / __builtin_sqrt(t * t + 1.0), s = t * c, p = a11 + h, q = a22 - h;
  const Axis a{p * scale.back, c, s, 0.0}, b{q * scale.back, -s, c, 0.0};
  const bool swap = b.value < a.value;
  const Axis turned{a.value, -a.x, -a.y, 0.0};
  return {select(swap, b, a), select(swap, turned, b), spoiled(p, q, 0.0), isBeyondSquares(largest)};
}

SA_INLINE PlaneAxes planeAxesS31(auto scaled, int k, int64_t nblock, const double* S) {
  return planeAxes(scaled, S[k], S[k + nblock], S[k + 3 * nblock]);
}
// With direction 3 as the third axis.
SA_INLINE Axes sortedInSpace(const PlaneAxes& p, double s33) {
  const Axis third{s33, 0.0, 0.0, 1.0};
  return sorted<Order::Increasing>(p.first, p.second, third);
}
template <class Points>
SA_INLINE void axesS31(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  forPointsOfAnyScale(n, [=](auto scaled, int i) SA_POINT {
    const int k = point(i);
    const double s33 = S[k + 2 * nblock];
    const PlaneAxes p = planeAxesS31(scaled, k, nblock, S);
    const Axes axes = sortedInSpace(p, s33);
    const double bad = p.bad + spoiled(s33, 0.0, 0.0);
    storeValues(axes, bad, 1.0, P, nblock, k);
    storeDirections(axes, bad, V, nblock, k);
    return p.isBeyond;
  });
}
template <class Points>
SA_INLINE void valuesS31Sorted(Points point, int n, int64_t nblock, const double* S, double* P) {
  forPointsOfAnyScale(n, [=](auto scaled, int i) SA_POINT {
    const int k = point(i);
    const double s33 = S[k + 2 * nblock];
    const PlaneAxes p = planeAxesS31(scaled, k, nblock, S);
    storeValues(sortedInSpace(p, s33), p.bad + spoiled(s33, 0.0, 0.0), 1.0, P, nblock, k);
    return p.isBeyond;
  });
}

SA_INLINE void storePair(double first, double second, double bad, double* P, int64_t n, int k) {
  P[k] = first + bad;
  P[k + n] = second + bad;
}
template <Order order, class Points>
SA_INLINE void valuesS21(Points point, int n, int64_t nblock, const double* S, double* P) {
  forPointsOfAnyScale(n, [=](auto scaled, int i) SA_POINT {
    const int k = point(i);
    const PlaneAxes a = planeAxes(scaled, S[k], S[k + nblock], S[k + 2 * nblock]);
    const bool rising = order == Order::Increasing;
    storePair(rising ? a.first.value : a.second.value, rising ? a.second.value : a.first.value, a.bad, P, nblock, k);
    return a.isBeyond;
  });
}
template <class Points>
SA_INLINE void axesS21(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  forPointsOfAnyScale(n, [=](auto scaled, int i) SA_POINT {
    const int k = point(i);
    const PlaneAxes a = planeAxes(scaled, S[k], S[k + nblock], S[k + 2 * nblock]);
    storePair(a.first.value, a.second.value, a.bad, P, nblock, k);
    V[k] = a.first.x + a.bad;
    V[k + nblock] = a.first.y + a.bad;
    V[k + 2 * nblock] = a.second.x + a.bad;
    V[k + 3 * nblock] = a.second.y + a.bad;
    return a.isBeyond;
  });
}

// ---- pairs of tensors: A x = lambda B x

// The lower triangle of B = L L', both at a scale of their own, and what values are to be multiplied by for the scales of A and B.
struct Cholesky {
  double l11[kScratchPoints], l21[kScratchPoints], l31[kScratchPoints], l22[kScratchPoints], l32[kScratchPoints],
      l33[kScratchPoints];
  double back[kScratchPoints];
};
// A tensor times its scale.
struct ScaledTensor {
  double s11, s22, s33, s12, s23, s13;
  Scale scale;
  uint64_t isBeyond;
};
SA_INLINE ScaledTensor loadScaled(auto scaled, const double* S, int64_t n, int k) {
  const double s11 = S[k], s22 = S[k + n], s33 = S[k + 2 * n], s12 = S[k + 3 * n], s23 = S[k + 4 * n],
               s13 = S[k + 5 * n];
  const double largest = vm::max(magnitude(s11, s22, s33), magnitude(s12, s23, s13));
  const Scale f = scaled ? scaleForSums(largest) : Scale{1.0, 1.0};
  return {s11 * f.factor,       s22 * f.factor, s33 * f.factor, s12 * f.factor, s23 * f.factor, s13 * f.factor, f,
          isBeyondSums(largest)};
}

// Leaves inv(L) A inv(L') in the scratch; NaN where B is not positive definite.
template <bool kDirections>
SA_INLINE void loadPairs(int start, int n, int64_t N, const double* A, const double* B, Cholesky& c,
                         JacobiScratch<kDirections>& w) {
  forPointsOfAnyScale(n, [=, &c, &w](auto scaled, int i) SA_POINT {
    const int k = start + i;
    const auto [b11, b22, b33, b12, b23, b13, scaleB, isBeyondB] = loadScaled(scaled, B, N, k);
    const double l11 = b11 > 0.0 ? __builtin_sqrt(b11) : vm::kNaN, l21 = b12 / l11, l31 = b13 / l11;
    const double d2 = b22 - l21 * l21, l22 = d2 > 0.0 ? __builtin_sqrt(d2) : vm::kNaN, l32 = (b23 - l31 * l21) / l22;
    const double d3 = b33 - l31 * l31 - l32 * l32, l33 = d3 > 0.0 ? __builtin_sqrt(d3) : vm::kNaN;
    // Y = inv(L) A column by column, then C = Y inv(L')
    const auto [a11, a22, a33, a12, a23, a13, scaleA, isBeyondA] = loadScaled(scaled, A, N, k);
    const double y11 = a11 / l11, y12 = a12 / l11, y13 = a13 / l11;
    const double y21 = (a12 - l21 * y11) / l22, y22 = (a22 - l21 * y12) / l22, y23 = (a23 - l21 * y13) / l22;
    const double y31 = (a13 - l31 * y11 - l32 * y21) / l33, y32 = (a23 - l31 * y12 - l32 * y22) / l33;
    const double y33 = (a33 - l31 * y13 - l32 * y23) / l33;
    const double c11 = y11 / l11, c21 = y21 / l11, c31 = y31 / l11;
    const double c22 = (y22 - c21 * l21) / l22, c32 = (y32 - c31 * l21) / l22;
    const double c33 = (y33 - c31 * l31 - c32 * l32) / l33;
    w.a11[i] = c11, w.a22[i] = c22, w.a33[i] = c33;
    w.a12[i] = c21, w.a23[i] = c32, w.a13[i] = c31;
    c.l11[i] = l11, c.l21[i] = l21, c.l31[i] = l31;
    c.l22[i] = l22, c.l32[i] = l32, c.l33[i] = l33;
    c.back[i] = scaleA.back * scaleB.factor;
    return isBeyondA | isBeyondB;
  });
}

// x = inv(L') y, of unit length.
SA_INLINE Axis backward(const Cholesky& c, int i, const Axis& y) {
  const double z3 = y.z / c.l33[i], z2 = (y.y - c.l32[i] * z3) / c.l22[i];
  const double z1 = (y.x - c.l21[i] * z2 - c.l31[i] * z3) / c.l11[i];
  const double a1 = __builtin_fabs(z1), a2 = __builtin_fabs(z2), a3 = __builtin_fabs(z3);
  const double a12 = a1 > a2 ? a1 : a2, f = 1.0 / (a12 > a3 ? a12 : a3);
  const double p = z1 * f, q = z2 * f, r = z3 * f, g = 1.0 / __builtin_sqrt(p * p + q * q + r * r);
  return {y.value, p * g, q * g, r * g};
}

} // namespace

SA_VALUES(GLO_UTI_EIG33, valuesInSpace<Order::Increasing>)
SA_VALUES(GLO_UTI_EIG33S, valuesInSpace<Order::Decreasing>)
SA_PRINCIPAL(GLO_UTI_EIG33V, axesInSpace)
SA_PRINCIPAL(GLO_UTI_EIG33ANALV, trigonometricAxes)
SA_PRINCIPAL(GLO_UTI_EIG31V, axesS31)
SA_VALUES(GLO_UTI_EIG31VECTOR, valuesS31Sorted)
SA_VALUES(GLO_UTI_EIG21S, valuesS21<Order::Decreasing>)
SA_PRINCIPAL(GLO_UTI_EIG21V, axesS21)
SA_VALUES(GLO_UTI_EIG21VECTOR, valuesS21<Order::Increasing>)
SA_VALUES_LIST(GLO_UTI_EIG21VECTORINDX, valuesS21<Order::Increasing>)

SA_KERNEL(GLO_UTI_GENEIG33, (const int32_t* nblock, const double* A, const double* B, double* P, double* V)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<true> w, done;
    Cholesky c;
    loadPairs(start, n, N, A, B, c, w);
    diagonalise(n, w, done, [](int) SA_POINT {});
    forPoints(n, [=, &c, &w, &done](int i) SA_POINT {
      const Axes y = sorted<Order::Increasing>(axesOf(done, i));
      const double bad = notFinite(y);
      storeValues(y, bad, w.back[i] * c.back[i], P, N, start + i);
      storeDirections({backward(c, i, y.first), backward(c, i, y.second), backward(c, i, y.third), y.hand}, bad, V, N,
                      start + i);
    });
  });
}

SA_KERNEL(GLO_UTI_GENEIG33VECTOR, (const int32_t* nblock, const double* A, const double* B, double* P)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    JacobiScratch<false> w, done;
    Cholesky c;
    loadPairs(start, n, N, A, B, c, w);
    diagonalise(n, w, done, [](int) SA_POINT {});
    forPoints(n, [=, &c, &w, &done](int i) SA_POINT {
      const Axes y = sorted<Order::Increasing>(axesOf(done, i));
      storeValues(y, notFinite(y), w.back[i] * c.back[i], P, N, start + i);
    });
  });
}

} // namespace sa
