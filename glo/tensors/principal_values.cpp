// Principal values and directions: Jacobi rotations, closed forms in the plane, the trigonometric solution.
#include "glo.h"
#include "glo/tensors/plane_principal.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/trigonometric_values.h"

namespace sa {
namespace {

// put(scaled) with whether values have to be brought to the scale of their tensors as a compile-time constant.
SA_INLINE void putValues(bool isScaled, auto put) {
  if (isScaled)
    put(std::true_type{});
  else
    put(std::false_type{});
}

template <class Points>
SA_INLINE void principalS33(Points point, int n, int64_t nblock, const double* S, double* P, double* V) {
  JacobiScratch<true> w;
  jacobi<BoundedRotation>(n, w, loadS33(point, nblock, S, w), [=](int count, const int* finished, auto& done) SA_POINT {
    putValues(done.isScaled, [=, &done](auto scaled) SA_POINT {
      for (int j = 0; j < count; ++j) {
        const int f = finished[j], place = done.place[f], k = point(place);
        const bool bad = spoiled(done.a11[f], done.a22[f], done.a33[f]) != 0.0;
        const double back = scaled ? done.back[place] : 1.0;
        P[k] = bad ? vm::kNaN : done.a11[f] * back;
        P[k + nblock] = bad ? vm::kNaN : done.a22[f] * back;
        P[k + 2 * nblock] = bad ? vm::kNaN : done.a33[f] * back;
        for (int d = 0; d < 9; ++d) V[k + d * nblock] = bad ? vm::kNaN : done.v[d][f];
      }
    });
  });
}

template <class Points>
SA_INLINE void sortedValuesS33(Points point, int n, int64_t nblock, const double* S, double* P) {
  JacobiScratch<false> w;
  jacobi<ClassicRotation>(n, w, loadS33(point, nblock, S, w), [=](int count, const int* finished, auto& done) SA_POINT {
    putValues(done.isScaled, [=, &done](auto scaled) SA_POINT {
      for (int j = 0; j < count; ++j) {
        // NOLINTNEXTLINE(clang-analyzer-core.uninitialized.Assign): the first count entries are there
        const int f = finished[j], place = done.place[f], k = point(place);
        const double d1 = done.a11[f], d2 = done.a22[f], d3 = done.a33[f];
        const bool bad = spoiled(d1, d2, d3) != 0.0;
        const double back = scaled ? done.back[place] : 1.0;
        const double d12 = d1 > d2 ? d1 : d2, largest = d12 > d3 ? d12 : d3;
        // the pair that remains without the largest; of equal ones the last counts as the largest
        double x = d1, y = d2;
        if (__builtin_fabs(largest - d1) <= vm::kSmallestNormal) x = d2, y = d3;
        if (__builtin_fabs(largest - d2) <= vm::kSmallestNormal) x = d1, y = d3;
        if (__builtin_fabs(largest - d3) <= vm::kSmallestNormal) x = d1, y = d2;
        P[k] = bad ? vm::kNaN : (x < y ? x : y) * back;
        P[k + nblock] = bad ? vm::kNaN : (x < y ? y : x) * back;
        P[k + 2 * nblock] = bad ? vm::kNaN : largest * back;
      }
    });
  });
}

// ---- closed form in the plane

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

} // namespace

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

SA_KERNEL(GLO_UTI_PRINCS21, (const int32_t* nblock, const double* S, double* P, double* V)) {
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
