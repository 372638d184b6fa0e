// Vectors: sums, products, lengths, extrema.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"

#include <limits>

namespace sa {
namespace {

// A sum in eight running sums that take the values in turn and are added in pairs at the end: one value on every machine,
// and vectors can be used.
template <class T>
SA_INLINE T sumOf(int n, const T* a) {
  constexpr int kLanes = 8;
  T part[kLanes] = {};
  const int whole = n / kLanes * kLanes;
  for (int64_t i = 0; i < whole; i += kLanes) {
#pragma omp simd
    for (int lane = 0; lane < kLanes; ++lane) part[lane] += a[i + lane];
  }
  for (int lane = 0; lane < n - whole; ++lane) part[lane] += a[whole + lane];
  return ((part[0] + part[1]) + (part[2] + part[3])) + ((part[4] + part[5]) + (part[6] + part[7]));
}

// Comparisons that hand a NaN on.
struct Greater {
  SA_INLINE static bool wins(double a, double b) { return a > b || a != a; }
};
struct Less {
  SA_INLINE static bool wins(double a, double b) { return a < b || a != a; }
};

template <class Order>
SA_INLINE double winner(double a, double b) {
  return Order::wins(a, b) ? a : b;
}

// The value of an array that wins against all others, in eight running ones; a NaN wins over everything.
template <class Order, class Value>
SA_INLINE double extremeOf(int n, double start, Value value) {
  constexpr int kLanes = 8;
  double best[kLanes];
  for (double& b : best) b = start;
  const auto take = [&best, value](int lane, int64_t i) SA_POINT {
    const double v = value(i), b = best[lane];
    best[lane] = Order::wins(v, b) && b == b ? v : b;
  };
  const int whole = n / kLanes * kLanes;
  for (int64_t i = 0; i < whole; i += kLanes) {
#pragma omp simd
    for (int lane = 0; lane < kLanes; ++lane) take(lane, i + lane);
  }
  for (int i = whole; i < n; ++i) take(i - whole, i);
  double last = best[0];
  for (const double b : best) last = Order::wins(b, last) && last == last ? b : last;
  return last;
}

// 1 / length of each vector, scaled by its largest component, so that no square overflows or vanishes; 0 for a zero vector.
template <int dimension>
SA_INLINE void normalise(int nblock, double* V) {
  const int64_t N = nblock;
  forPoints(nblock, [=](int i) SA_POINT {
    const double x = V[i], y = V[i + N], z = dimension == 3 ? V[i + (dimension - 1) * N] : 0.0;
    const double ax = __builtin_fabs(x), ay = __builtin_fabs(y), az = __builtin_fabs(z);
    const double axy = ax > ay ? ax : ay, largest = axy > az ? axy : az;
    const double g = largest <= vm::kSmallestNormal ? 1.0 : 0.0, f = (1.0 - g) / (largest + g);
    const double p = x * f, q = y * f, r = z * f;
    const double length = __builtin_sqrt(p * p + q * q + r * r), scale = (1.0 - g) / (length + g);
    V[i] = p * scale;
    V[i + N] = q * scale;
    if constexpr (dimension == 3) V[i + 2 * N] = r * scale;
  });
}

} // namespace

// ---- one value after the other

#define SA_VECTOR_2(name, formula)                                                                                     \
  SA_KERNEL(name, (const int32_t* n, double* result, const double* a, const double* b)) {                              \
    forPoints(*n, [=](int i) SA_POINT { result[i] = formula; });                                                       \
  }
SA_VECTOR_2(GLO_UTI_VADDR, a[i] + b[i])
SA_VECTOR_2(GLO_UTI_VSUBR, a[i] - b[i])
SA_VECTOR_2(GLO_UTI_VMULTR, a[i] * b[i])
SA_VECTOR_2(GLO_UTI_VMULTADDR, result[i] + a[i] * b[i])
SA_VECTOR_2(GLO_UTI_MAXR, winner<Greater>(a[i], b[i]))
SA_VECTOR_2(GLO_UTI_MINR, winner<Less>(a[i], b[i]))

SA_KERNEL(GLO_UTI_VDIRECTMULTR, (const int32_t* n, double* a, const double* b)) {
  forPoints(*n, [=](int i) SA_POINT { a[i] = a[i] * b[i]; });
}
SA_KERNEL(GLO_UTI_V2MULTADDR,
          (const int32_t* n, double* result, const double* a, const double* b, const double* c, const double* d)) {
  forPoints(*n, [=](int i) SA_POINT { result[i] = result[i] + a[i] * b[i] + c[i] * d[i]; });
}

#define SA_VECTOR_SCALAR(name, scalar, formula)                                                                        \
  SA_KERNEL(name, (const int32_t* n, double* result, const double* scalar, const double* a)) {                         \
    const double s = *scalar;                                                                                          \
    forPoints(*n, [=](int i) SA_POINT { result[i] = formula; });                                                       \
  }
SA_VECTOR_SCALAR(GLO_UTI_VSCALER, factor, s* a[i])
SA_VECTOR_SCALAR(GLO_UTI_VSCALEADDR, factor, result[i] + s * a[i])
SA_VECTOR_SCALAR(GLO_UTI_VADDC, constant, a[i] + s)

SA_KERNEL(GLO_UTI_VECTOREQUATION, (const int32_t* n, double* result, const double* alpha, const double* a,
                                   const double* beta, const double* b)) {
  const double s = *alpha, t = *beta;
  forPoints(*n, [=](int i) SA_POINT { result[i] = s * a[i] + t * b[i]; });
}

SA_KERNEL(GLO_UTI_VCOPYRINDX, (const int32_t* nblock, const int32_t* count, const int32_t* list, const double* source,
                               double* destination)) {
  if (*nblock < 1) return;
  for (int i = 0; i < *count; ++i) destination[list[i] - 1] = source[list[i] - 1];
}

// ---- blocks of vectors

SA_KERNEL(GLO_UTI_VMULTR3D, (const int32_t* nblock, double* result, const double* s, const double* A)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int i) SA_POINT {
    const double f = s[i], x = A[i], y = A[i + N], z = A[i + 2 * N];
    result[i] = f * x;
    result[i + N] = f * y;
    result[i + 2 * N] = f * z;
  });
}
SA_KERNEL(GLO_UTI_VECTORDOTPRODUCT2D, (const int32_t* nblock, double* result, const double* A, const double* B)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int i) SA_POINT { result[i] = A[i] * B[i] + A[i + N] * B[i + N]; });
}
SA_KERNEL(GLO_UTI_VECTORDOTPRODUCT3D, (const int32_t* nblock, double* result, const double* A, const double* B)) {
  const int64_t N = *nblock;
  forPoints(*nblock,
            [=](int i) SA_POINT { result[i] = A[i] * B[i] + A[i + N] * B[i + N] + A[i + 2 * N] * B[i + 2 * N]; });
}
SA_KERNEL(GLO_UTI_VNORMALIZE, (const int32_t* nblock, double* V)) { normalise<3>(*nblock, V); }
SA_KERNEL(GLO_UTI_VNORMALIZE2, (const int32_t* nblock, double* V)) { normalise<2>(*nblock, V); }

// ---- one number of an array

SA_MOVE(GLO_UTI_VSUMI, (const int32_t* n, int32_t* sum, const int32_t* a)) {
  if (*n < 1) return;
  uint32_t total = 0; // wraps as integers of the machine do
  for (int i = 0; i < *n; ++i) total += static_cast<uint32_t>(a[i]);
  *sum = static_cast<int32_t>(total);
}
SA_KERNEL(GLO_UTI_VSUMR, (const int32_t* n, double* sum, const double* a)) {
  if (*n >= 1) *sum = sumOf(*n, a);
}
SA_KERNEL(GLO_UTI_VSUMR1, (const int32_t* n, double* sum, const double* a)) {
  if (*n >= 1) *sum += sumOf(*n, a);
}

SA_KERNEL(GLO_UTI_MAXARRAYR, (const int32_t* n, const double* a, double* result)) {
  if (*n >= 1) *result = extremeOf<Greater>(*n, a[0], [a](int64_t i) SA_POINT { return a[i]; });
}
SA_KERNEL(GLO_UTI_MINARRAYR, (const int32_t* n, const double* a, double* result)) {
  if (*n >= 1) *result = extremeOf<Less>(*n, a[0], [a](int64_t i) SA_POINT { return a[i]; });
}
SA_KERNEL(GLO_UTI_MINNONZEROR, (const int32_t* n, const double* a, double* result)) {
  constexpr double kNone = std::numeric_limits<double>::infinity();
  double any = 0.0;
  for (int i = 0; i < *n; ++i) any = a[i] != 0.0 ? 1.0 : any;
  if (any != 0.0) *result = extremeOf<Less>(*n, kNone, [a](int64_t i) SA_POINT { return a[i] == 0.0 ? kNone : a[i]; });
}

} // namespace sa

#undef SA_VECTOR_2
#undef SA_VECTOR_SCALAR
