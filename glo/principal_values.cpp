// Principal values and directions: Jacobi rotations, closed forms in the plane, the trigonometric solution.
#include "glo.h"
#include "glo/jacobi.h"
#include "glo/kernel.h"
#include "glo/vmath.h"

namespace sa {
namespace {

constexpr double kTiny = 2.2250738585072014e-308; // the smallest normal double
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// ---- which points a member treats

// piece(point, length) over the whole block, or over a list of its points, in pieces that fit the scratch.
template <class Piece>
SA_INLINE void forBlock(int64_t nblock, Piece piece) {
  forPieces(static_cast<int>(nblock), [=](int start, int n) SA_POINT { piece(Consecutive{start}, n); });
}
template <class Piece>
SA_INLINE void forList(int64_t nblock, int count, const int32_t* list, Piece piece) {
  if (nblock < 1) return;
  bool whole = count == nblock; // a list of all points in order runs with unit stride
  for (int i = 0; whole && i < count; ++i) whole = list[i] == i + 1;
  if (whole) return forBlock(nblock, piece);
  forPieces(count, [=](int start, int n) SA_POINT { piece(Listed{list + start}, n); });
}

// ---- iterative, three-dimensional

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

template <class Points>
SA_INLINE void principalS33(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  JacobiScratch<true> w;
  jacobi<BoundedRotation>(n, w, loadS33(point, nblock, S, w), [=](int count, const int* finished, auto& done) SA_POINT {
    for (int j = 0; j < count; ++j) {
      const int f = finished[j], k = point(done.place[f]);
      const bool bad = spoiled(done.a11[f], done.a22[f], done.a33[f]) != 0.0;
      P[k] = bad ? kNaN : done.a11[f];
      P[k + nblock] = bad ? kNaN : done.a22[f];
      P[k + 2 * nblock] = bad ? kNaN : done.a33[f];
      for (int d = 0; d < 9; ++d) V[k + d * nblock] = bad ? kNaN : done.v[d][f];
    }
  });
}

template <class Points>
SA_INLINE void sortedValuesS33(Points point, int n, int64_t nblock, const double* S, double* P) {
  JacobiScratch<false> w;
  jacobi<ClassicRotation>(n, w, loadS33(point, nblock, S, w), [=](int count, const int* finished, auto& done) SA_POINT {
    for (int j = 0; j < count; ++j) {
      // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): the first count entries are there
      const int f = finished[j], k = point(done.place[f]);
      const double d1 = done.a11[f], d2 = done.a22[f], d3 = done.a33[f];
      const bool bad = spoiled(d1, d2, d3) != 0.0;
      const double d12 = d1 > d2 ? d1 : d2, largest = d12 > d3 ? d12 : d3;
      // the pair that is left when the largest is taken away; of equal ones the last is taken
      double x = d1, y = d2;
      if (__builtin_fabs(largest - d1) <= kTiny) x = d2, y = d3;
      if (__builtin_fabs(largest - d2) <= kTiny) x = d1, y = d3;
      if (__builtin_fabs(largest - d3) <= kTiny) x = d1, y = d2;
      P[k] = bad ? kNaN : (x < y ? x : y);
      P[k + nblock] = bad ? kNaN : (x < y ? y : x);
      P[k + 2 * nblock] = bad ? kNaN : largest;
    }
  });
}

// ---- closed form in the plane

// Half the difference of the direct components and the radius of the circle, which carries the sign of that half, so that the
// rotation stays within 45 degrees.
struct PlaneCircle {
  double half, radius;
  bool point; // the circle is a point: nothing to rotate
};
SA_INLINE PlaneCircle planeCircle(double s11, double s22, double s12) {
  const double h = (s11 - s22) * 0.5, length = __builtin_sqrt(s12 * s12 + h * h), radius = h < 0.0 ? -length : length;
  return {h, radius, __builtin_fabs(radius) <= kTiny};
}

struct PlanePrincipal {
  double p1, p2, c, s;
};
SA_INLINE PlanePrincipal planePrincipal(double s11, double s22, double s12) {
  const PlaneCircle m = planeCircle(s11, s22, s12);
  const double z = m.point ? 1.0 : 0.0, cos2 = m.half / (m.radius + z), sin2 = s12 / (m.radius + z);
  const double c = __builtin_sqrt(0.5 * (1.0 - z) * (cos2 + 1.0)) + z, s = (1.0 - z) * sin2 / (2.0 * c);
  return {s11 * c * c + sin2 * s12 + s22 * s * s, s22 * c * c - sin2 * s12 + s11 * s * s, c, s};
}

template <class Points>
SA_INLINE void principalS31(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  const int64_t N = nblock;
  forPoints(n, [=](int i) SA_POINT {
    const int k = point(i);
    const double s33 = S[k + 2 * N];
    const PlanePrincipal r = planePrincipal(S[k], S[k + N], S[k + 3 * N]);
    P[k] = r.p1;
    P[k + N] = r.p2;
    P[k + 2 * N] = s33;
    V[k] = r.c;
    V[k + N] = r.s;
    V[k + 2 * N] = 0.0;
    V[k + 3 * N] = -r.s;
    V[k + 4 * N] = r.c;
    V[k + 5 * N] = 0.0;
    V[k + 6 * N] = 0.0;
    V[k + 7 * N] = 0.0;
    V[k + 8 * N] = 1.0;
  });
}

template <class Points>
SA_INLINE void valuesS31(Points point, int n, int64_t nblock, const double* S, double* P) {
  forPoints(n, [=](int i) SA_POINT {
    const int k = point(i);
    const double s11 = S[k], s22 = S[k + nblock], s33 = S[k + 2 * nblock], s12 = S[k + 3 * nblock];
    const PlaneCircle circle = planeCircle(s11, s22, s12);
    const double mean = (s11 + s22) * 0.5, p1 = circle.point ? s11 : mean + circle.radius;
    P[k] = p1;
    P[k + nblock] = 2.0 * mean - p1;
    P[k + 2 * nblock] = s33;
  });
}

// ---- trigonometric, three-dimensional

SA_INLINE double larger(double a, double b) { return a > b ? a : b; }

// What the passes of the trigonometric solution hand on.
struct TrigonometricScratch {
  double mean[kScratchPoints], radius[kScratchPoints]; // of the tensor scaled by its largest component
  double scale[kScratchPoints];                        // that component
  double x[kScratchPoints];                            // half the determinant of the normalised deviator
  double angle[kScratchPoints];
  double k1[kScratchPoints], k2[kScratchPoints];
  double diagonal[kScratchPoints]; // 1.0: the tensor counts as diagonal
};

template <class Points>
SA_INLINE void valuesS33(Points point, int n, int64_t nblock, const double* S, double* P) {
  constexpr double kThird = 0.3333333333333333;
  TrigonometricScratch w;
  const double *S11 = S, *S22 = S + nblock, *S33 = S22 + nblock, *S12 = S33 + nblock, *S23 = S12 + nblock,
               *S13 = S23 + nblock;

  forPoints(n, [=, &w](int i) SA_POINT {
    const int k = point(i);
    const double s11 = S11[k], s22 = S22[k], s33 = S33[k], s12 = S12[k], s23 = S23[k], s13 = S13[k];
    const double direct = larger(larger(__builtin_fabs(s11), __builtin_fabs(s22)), __builtin_fabs(s33));
    const double shear = larger(larger(__builtin_fabs(s12), __builtin_fabs(s23)), __builtin_fabs(s13));
    const double largest = larger(direct, shear);
    const bool nothing = largest <= kTiny;
    const double f = nothing ? 0.0 : 1.0 / (largest + (nothing ? 1.0 : 0.0));

    const double b11 = f * s11, b22 = f * s22, b33 = f * s33, b12 = f * s12, b23 = f * s23, b13 = f * s13;
    const double mean = (b11 + b22 + b33) * kThird;
    const double d1 = b11 - mean, d2 = b22 - mean, d3 = b33 - mean;
    const double deviator = larger(larger(__builtin_fabs(d1), __builtin_fabs(d2)), __builtin_fabs(d3));
    const bool diagonal = deviator * 1.1102230246251565e-12 > shear * f;

    const double q = __builtin_sqrt(((d1 * d1 + d2 * d2 + d3 * d3) * 0.5 + b12 * b12 + b23 * b23 + b13 * b13) * kThird);
    const double r = 2.0 * q;
    const bool spread = r > 1.1102230246251565e-16;
    const double g = spread ? 2.0 / (spread ? r : 1.0) : 0.0;
    const double e1 = g * d1, e2 = g * d2, e3 = g * d3, e12 = g * b12, e23 = g * b23, e13 = g * b13;
    w.mean[i] = mean;
    w.radius[i] = r;
    w.scale[i] = largest;
    const double x = 0.5 * ((e2 * e3 - e23 * e23) * e1 - e3 * e12 * e12 - e2 * e13 * e13) + e12 * e13 * e23;
    w.x[i] = x;
    w.diagonal[i] = diagonal && x == x ? 1.0 : 0.0; // a NaN in the shear passes the comparison
  });
  forPoints(n, [=, &w](int i) SA_POINT { w.angle[i] = vm::acos(w.x[i]) * kThird; });
  forPoints(n, [=, &w](int i) SA_POINT { w.k1[i] = vm::cos(w.angle[i]); });
  forPoints(n, [=, &w](int i) SA_POINT { w.k2[i] = vm::cos(w.angle[i] + 2.094395102393195); });
  forPoints(n, [=, &w](int i) SA_POINT {
    // At both ends two values are equal and the angle is lost in rounding.
    const bool upper = w.x[i] >= 0.9999999999999999, lower = w.x[i] <= -0.9999999999999999;
    const double k1 = upper ? -0.5 : (lower ? -1.0 : w.k1[i]);
    const double k2 = upper ? -0.5 : (lower ? 0.5 : w.k2[i]);
    const double k3 = upper ? 1.0 : (lower ? 0.5 : -w.k1[i] - w.k2[i]);
    const double mean = w.mean[i], r = w.radius[i], scale = w.scale[i];
    const bool diagonal = w.diagonal[i] != 0.0;
    const int k = point(i);
    P[k] = diagonal ? S11[k] : (mean + r * k1) * scale;
    P[k + nblock] = diagonal ? S22[k] : (mean + r * k2) * scale;
    P[k + 2 * nblock] = diagonal ? S33[k] : (mean + r * k3) * scale;
  });
}

} // namespace

// The four kinds of member: whole block or list, with directions or values alone.
#define SA_PRINCIPAL(name, body)                                                                                       \
  SA_KERNEL(name, (const int32_t* nblock, const double* S, double* P, double* V), (nblock, S, P, V)) {                 \
    const int64_t N = *nblock;                                                                                         \
    forBlock(N, [=](auto point, int n) SA_POINT { body(point, n, N, S, P, V); });                                      \
  }
#define SA_PRINCIPAL_LIST(name, body)                                                                                  \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P, double* V), \
            (nblock, count, list, S, P, V)) {                                                                          \
    const int64_t N = *nblock;                                                                                         \
    forList(N, *count, list, [=](auto point, int n) SA_POINT { body(point, n, N, S, P, V); });                         \
  }
#define SA_VALUES(name, body)                                                                                          \
  SA_KERNEL(name, (const int32_t* nblock, const double* S, double* P), (nblock, S, P)) {                               \
    const int64_t N = *nblock;                                                                                         \
    forBlock(N, [=](auto point, int n) SA_POINT { body(point, n, N, S, P); });                                         \
  }
#define SA_VALUES_LIST(name, body)                                                                                     \
  SA_KERNEL(name, (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P),      \
            (nblock, count, list, S, P)) {                                                                             \
    const int64_t N = *nblock;                                                                                         \
    forList(N, *count, list, [=](auto point, int n) SA_POINT { body(point, n, N, S, P); });                            \
  }

SA_PRINCIPAL(GLO_UTI_PRINCS33, principalS33)
SA_PRINCIPAL(GLO_UTI_PRINCS33DBL, principalS33)
SA_PRINCIPAL_LIST(GLO_UTI_PRINCS33INDX, principalS33)
SA_PRINCIPAL_LIST(GLO_UTI_PRINCS33DBLINDX, principalS33)
SA_PRINCIPAL(GLO_UTI_PRINCS31, principalS31)
SA_PRINCIPAL_LIST(GLO_UTI_PRINCS31INDX, principalS31)
SA_VALUES(GLO_UTI_EIG33ANAL, valuesS33)
SA_VALUES_LIST(GLO_UTI_EIG33ANALINDX, valuesS33)
SA_VALUES(GLO_UTI_EIG31ANAL, valuesS31)
SA_VALUES_LIST(GLO_UTI_EIG31ANALINDX, valuesS31)
SA_VALUES(GLO_UTI_EIG33VECTOR, sortedValuesS33)

SA_KERNEL(GLO_UTI_PRINCS21, (const int32_t* nblock, const double* S, double* P, double* V), (nblock, S, P, V)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int k) SA_POINT {
    const PlanePrincipal r = planePrincipal(S[k], S[k + N], S[k + 2 * N]);
    P[k] = r.p1;
    P[k + N] = r.p2;
    V[k] = r.c;
    V[k + N] = r.s;
    V[k + 2 * N] = -r.s;
    V[k + 3 * N] = r.c;
  });
}

} // namespace sa
