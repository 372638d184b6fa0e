// Functions of symmetric tensors through their principal values.
#include "glo.h"
#include "glo/kernel/fetch.h"
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
// all positive, or with which a step, of the degree 3.5, leaves the range of doubles, is left to the directions, each point for itself.
SA_KERNEL(GLO_UTI_SQRTV, (const int32_t* nblock, const double* S, double* V)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    // least 27 III / I^3, which is 1 for a sphere: the last step is below 2e-6 there
    constexpr double kRoundness = 0.01;
    constexpr double kMost = 0x1p+280, kLeast = 0x1p-280;
    // short passes: a point's roots and divisions wait for each other
    Lane left, trace, sum, minors, det;
    double* const out = V + start;
    fetch(n, out, out + N, out + 2 * N, out + 3 * N, out + 4 * N, out + 5 * N);
    forPoints(n, [=, &left, &trace, &sum, &minors, &det](int j) SA_POINT {
      const int k = start + j;
      const double s11 = S[k], s22 = S[k + N], s33 = S[k + 2 * N];
      const double s12 = S[k + 3 * N], s23 = S[k + 4 * N], s13 = S[k + 5 * N];
      const double q12 = s12 * s12, q23 = s23 * s23, q13 = s13 * s13;
      const double m1 = s22 * s33 - q23, m2 = s11 * s33 - q13, m3 = s11 * s22 - q12;
      const double first = s11 + s22 + s33, second = m1 + m2 + m3;
      const double third = s11 * m1 - s12 * (s12 * s33 - s23 * s13) + s13 * (s12 * s23 - s22 * s13);
      const bool ordinary =
          first > kLeast && first < kMost && second > 0.0 && 27.0 * third > kRoundness * (first * first * first);
      left[j] = ordinary ? 0.0 : 1.0;
      sum[j] = first;
      minors[j] = second;
      det[j] = __builtin_sqrt(ordinary ? third : 1.0);
      trace[j] = __builtin_sqrt(first + 2.0 * __builtin_sqrt(3.0 * second));
    });
    for (int step = 0; step < 3; ++step)
      forPoints(n, [&trace, &sum, &minors, &det](int j) SA_POINT {
        const double i = trace[j], first = sum[j], ii = i * i, h = ii - first;
        const double f = h * h - 4.0 * (minors[j] + 2.0 * i * det[j]), df = 4.0 * (i * h - 2.0 * det[j]),
                     ddf = 4.0 * (3.0 * ii - first);
        trace[j] = i - 2.0 * f * df / (2.0 * df * df - f * ddf);
      });
    forPoints(n, [=, &left, &trace, &sum, &det](int j) SA_POINT {
      const int k = start + j;
      const double s11 = S[k], s22 = S[k + N], s33 = S[k + 2 * N];
      const double s12 = S[k + 3 * N], s23 = S[k + 4 * N], s13 = S[k + 5 * N];
      const double q12 = s12 * s12, q23 = s23 * s23, q13 = s13 * s13;
      const double i = trace[j], ii = 0.5 * (i * i - sum[j]), per = 1.0 / (i * ii - det[j]);
      const double sphere = i * det[j] * per, factor = i * i - ii;
      const double v11 = sphere + (factor * s11 - (s11 * s11 + q12 + q13)) * per;
      const double v22 = sphere + (factor * s22 - (s22 * s22 + q12 + q23)) * per;
      const double v33 = sphere + (factor * s33 - (s33 * s33 + q13 + q23)) * per;
      const double v12 = (factor * s12 - (s12 * (s11 + s22) + s13 * s23)) * per;
      const double v23 = (factor * s23 - (s23 * (s22 + s33) + s12 * s13)) * per;
      const double v13 = (factor * s13 - (s13 * (s11 + s33) + s12 * s23)) * per;
      const bool ordinary = left[j] == 0.0;
      V[k] = ordinary ? v11 : s11; // V may be S
      V[k + N] = ordinary ? v22 : s22;
      V[k + 2 * N] = ordinary ? v33 : s33;
      V[k + 3 * N] = ordinary ? v12 : s12;
      V[k + 4 * N] = ordinary ? v23 : s23;
      V[k + 5 * N] = ordinary ? v13 : s13;
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
    double* const out = L + start;
    fetch(n, out, out + N, out + 2 * N, out + 3 * N, out + 4 * N, out + 5 * N);
    diagonaliseAboutOne<QuickRotation>(n, w, done, shift, loadS33(AllPoints{n, start}, N, S, w));
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

namespace {

// exp of the plane part is e^a d d' + e^b (1 - d d'), a >= b its principal values and d the direction of a.
struct PlaneExponential {
  double half[kScratchPoints], shear[kScratchPoints], radius[kScratchPoints]; // h = (S11 - S22)/2, S12, r of the circle
  double a[kScratchPoints], b[kScratchPoints];                                // then their exponentials
  double out[kScratchPoints];                                                 // S33, then its exponential
};
struct PlaneComponents {
  double e11, e22, e12;
};
SA_INLINE PlaneComponents select(bool first, const PlaneComponents& p, const PlaneComponents& q) {
  return {first ? p.e11 : q.e11, first ? p.e22 : q.e22, first ? p.e12 : q.e12};
}

// The square of the cosine and the product with the sine of the angle between d and the nearer axis; one division serves 1/R and
// 1/cc = 2 R / (R + H).
struct NearerAxis {
  double cc, cs, perCc;
  SA_INLINE NearerAxis(double R, double H, double s12) {
    const double sum = R + H, q = 1.0 / (R * sum), perR = sum * q;
    cc = 0.5 + 0.5 * (H * perR), cs = 0.5 * (s12 * perR), perCc = 2.0 * R * (R * q);
  }
};

// e^m (1 + (S - m) tanh(r)/r cosh r) with the series of tanh(r)/r, for a small r.
SA_INLINE PlaneComponents nearOne(double h, double s12, double r, double middle) {
  const double z = r * r;
  const double series = 1.0 - z * (1.0 / 3.0 - z * (2.0 / 15.0 - z * (17.0 / 315.0 - z * (62.0 / 2835.0))));
  const double slope = middle * series;
  return {middle + slope * h, middle - slope * h, slope * s12};
}
constexpr double kNearRadius = 0.045;

// What the points of a piece are: near r = 0, apart from it, or with exponents or squares close to the ends of the range.
constexpr uint64_t kNear = 1, kApart = 2, kFarOut = 4;
constexpr double kLargestExponent = 708.0;
SA_INLINE bool isFarOut(double a, double b, double out) {
  return (a > kLargestExponent) | (b < -kLargestExponent) | (__builtin_fabs(out) > kLargestExponent);
}

// Tiny differences need no scale: a radius below the roots of the smallest numbers is nothing beside the mean.
SA_INLINE uint64_t planeValues(int n, int64_t N, const double* S, PlaneExponential& e) {
  uint64_t found = 0;
#pragma omp simd reduction(| : found)
  for (int i = 0; i < n; ++i) {
    const double s11 = S[i], s22 = S[i + N], s33 = S[i + 2 * N], s12 = S[i + 3 * N];
    const double mean = 0.5 * s11 + 0.5 * s22, h = 0.5 * s11 - 0.5 * s22, r = __builtin_sqrt(h * h + s12 * s12);
    e.half[i] = h;
    e.shear[i] = s12;
    e.radius[i] = r;
    e.a[i] = mean + r;
    e.b[i] = mean - r;
    e.out[i] = s33;
    found |= (isFarOut(mean + r, mean - r, s33) ? kFarOut : 0) | (r < kNearRadius ? kNear : kApart);
  }
  return found;
}

// Points that are not far out.
template <uint64_t kinds>
SA_INLINE void planeExponentials(int n, int64_t N, const PlaneExponential& e, double* E) {
  forPoints(n, [=, &e](int i) SA_POINT {
    const double s12 = e.shear[i], h = e.half[i], r = e.radius[i], A = e.a[i], B = e.b[i];
    const bool isNear = kinds == kNear || (kinds != kApart && r < kNearRadius);
    PlaneComponents c{};
    if constexpr ((kinds & kApart) != 0) {
      const NearerAxis d(isNear ? 1.0 : r, __builtin_fabs(h), s12);
      const double ss = d.cs * d.perCc, nearer = A * d.cc + B * d.cs * ss, other = B * d.cc + A * d.cs * ss;
      const bool first = h >= 0.0;
      c = {first ? nearer : other, first ? other : nearer, (A - B) * d.cs};
    }
    if constexpr ((kinds & kNear) != 0) c = select(isNear, nearOne(h, s12, r, 0.5 * A + 0.5 * B), c);
    E[i] = c.e11;
    E[i + N] = c.e22;
    E[i + 2 * N] = e.out[i];
    E[i + 3 * N] = c.e12;
  });
}

// Points far out, from a and b: both exponentials are kept as squares of their roots g and f, which overflow only where a result
// does.
SA_INLINE PlaneComponents farOut(double h, double s12, double r, double g, double f) {
  const bool isNear = r < kNearRadius;
  const double factor = r > 0x1p+400 ? 0x1p-600 : 1.0; // squares stay finite
  const NearerAxis d(isNear ? 1.0 : r * factor, __builtin_fabs(h) * factor, s12 * factor);
  const bool diagonal = d.cs == 0.0; // products with a sine of zero vanish whatever g is
  const double gs = diagonal ? 0.0 : g * d.cs, fs = diagonal ? 0.0 : f * d.cs;
  const double nearer = g * (g * d.cc) + fs * (fs * d.perCc), other = f * (f * d.cc) + gs * (gs * d.perCc);
  const bool first = h >= 0.0, isBeyond = g == vm::kInfinity;
  const double difference = isBeyond ? g : g - f; // both may be infinite
  const PlaneComponents apart = {first ? nearer : other, first ? other : nearer,
                                 diagonal ? 0.0 : (difference * d.cs) * (g + f)};
  // near r = 0 all is in proportion to g g, which may be infinite
  const double q = isBeyond ? 1.0 : f / g;
  const PlaneComponents part = nearOne(h, s12, r, 0.5 + 0.5 * (q * q));
  return select(isNear, {g * (g * part.e11), g * (g * part.e22), part.e12 == 0.0 ? 0.0 : g * (g * part.e12)}, apart);
}

// A piece that has some of them: the others get their usual bits.
SA_INLINE void planeExponentialsFarOut(int n, int64_t N, const double* S, const PlaneExponential& e, double* E) {
  PlaneExponential far, usual = e;
  forPoints(n, [=, &e, &far](int i) SA_POINT {
    const double s11 = S[i], s22 = S[i + N], s12 = e.shear[i], mean = 0.5 * s11 + 0.5 * s22, h = e.half[i];
    const Scale scale = scaleForSquares(magnitude(h, s12));
    const double x = h * scale.factor, y = s12 * scale.factor, r = __builtin_sqrt(x * x + y * y) * scale.back;
    const bool diagonal = s12 == 0.0;
    far.radius[i] = r;
    far.a[i] = 0.5 * (diagonal ? vm::max(s11, s22) : mean + r);
    far.b[i] = 0.5 * (diagonal ? vm::min(s11, s22) : mean - r);
  });
  // of roots below the normal numbers only squares and products are used, which are 0
  forPoints(n, [&far](int i) SA_POINT { far.a[i] = vm::expClamped(far.a[i]); });
  forPoints(n, [&far](int i) SA_POINT { far.b[i] = vm::expClamped(far.b[i]); });
  forPoints(n, [&usual](int i) SA_POINT { usual.a[i] = vm::exp(usual.a[i]); });
  forPoints(n, [&usual](int i) SA_POINT { usual.b[i] = vm::exp(usual.b[i]); });
  forPoints(n, [&usual](int i) SA_POINT { usual.out[i] = vm::exp(usual.out[i]); });
  planeExponentials<kNear | kApart>(n, N, usual, E);
  forPoints(n, [=, &e, &far](int i) SA_POINT {
    const PlaneComponents c =
        select(isFarOut(e.a[i], e.b[i], e.out[i]), farOut(e.half[i], e.shear[i], far.radius[i], far.a[i], far.b[i]),
               {E[i], E[i + N], E[i + 3 * N]});
    E[i] = c.e11;
    E[i + N] = c.e22;
    E[i + 3 * N] = c.e12;
  });
}

} // namespace

SA_KERNEL(GLO_UTI_EXPS31, (const int32_t* nblock, const double* S, double* E)) {
  const int64_t N = *nblock;
  forPieces(*nblock, [=](int start, int n) SA_POINT {
    PlaneExponential e;
    const uint64_t found = planeValues(n, N, S + start, e);
    if (found & kFarOut) return planeExponentialsFarOut(n, N, S + start, e, E + start);
    forPoints(n, [&e](int i) SA_POINT { e.a[i] = vm::expBelow(e.a[i]); });
    forPoints(n, [&e](int i) SA_POINT { e.b[i] = vm::expBelow(e.b[i]); });
    forPoints(n, [&e](int i) SA_POINT { e.out[i] = vm::expBelow(e.out[i]); });
    if (found == kApart)
      planeExponentials<kApart>(n, N, e, E + start);
    else if (found == kNear)
      planeExponentials<kNear>(n, N, e, E + start);
    else
      planeExponentials<kNear | kApart>(n, N, e, E + start);
  });
}

} // namespace sa
