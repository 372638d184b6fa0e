// Quaternions of orientations: products, rotation of vectors, increments and rotation vectors.
//
// A spatial quaternion is x, y, z, w, the scalar last; a plane one, about axis 3, keeps z and w.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/quaternion.h"

namespace sa {
namespace {

// Times f, the scalar part times s besides.
SA_INLINE void store(double* block, int64_t n, int i, const Quaternion& q, double f, double s) {
  block[i] = q.x * f;
  block[i + n] = q.y * f;
  block[i + 2 * n] = q.z * f;
  block[i + 3 * n] = q.w * f * s;
}
SA_INLINE void store(double* block, int64_t n, int i, const PlaneQuaternion& q, double f, double s) {
  block[i] = q.z * f;
  block[i + n] = q.w * f * s;
}

// The selected product of each point, of unit length.
template <class Q>
SA_INLINE void algebra(int nblock, int32_t operation, double* out, const double* A, const double* B) {
  const int64_t N = nblock;
  withSigns(operation, [=](auto signs) SA_POINT {
    forPoints(nblock, [=](int i) SA_POINT {
      constexpr ProductSigns p = signs();
      const Q q = product(load<Q>(A, N, i), load<Q>(B, N, i), p);
      store(out, N, i, q, p.s / length(q), p.s);
    });
  });
}

// One product, not normalised.
template <class Q>
SA_INLINE void single(int32_t operation, double* out, const double* a, const double* b) {
  const ProductSigns signs = signsOf(operation);
  store(out, 1, 0, product(load<Q>(a, 1, 0), load<Q>(b, 1, 0), signs), signs.s, signs.s);
}

// The rotation that carries orientation a to orientation b, in global axes: b conj(a), of the two quaternions that stand for
// it the one by at most half a turn.
SA_INLINE Quaternion increment(const Quaternion& a, const Quaternion& b) {
  const Quaternion q{b.x * a.w - b.w * a.x - (b.y * a.z - b.z * a.y), b.y * a.w - b.w * a.y - (b.z * a.x - b.x * a.z),
                     b.z * a.w - b.w * a.z - (b.x * a.y - b.y * a.x), b.w * a.w + b.x * a.x + b.y * a.y + b.z * a.z};
  const double f = (q.w < 0.0 ? -1.0 : 1.0) / length(q);
  return {q.x * f, q.y * f, q.z * f, q.w * f};
}

// The angle in [0, pi/2] whose sine and cosine are given; asin alone, of a number up to 1/2 in each of three ranges.
SA_INLINE double angleOf(double sine, double cosine) {
  constexpr double kPi = 0x1.921fb54442d18p+1, kRootHalf = 0x1.6a09e667f3bcdp-1;
  const bool low = sine <= 0.5, high = !low && cosine <= 0.5;
  // sin(angle - pi/4) = (sine - cosine) / sqrt 2 in between
  const double t = vm::select(low, sine, vm::select(high, cosine, (sine - cosine) * kRootHalf)), z = t * t;
  const double asine = t + t * (z * vm::polynomial(z, vm::kAsinCoefficients));
  return vm::select(low, asine, vm::select(high, 0.5 * kPi - asine, 0.25 * kPi + asine));
}

// Angle times axis of a unit quaternion with w >= 0, which turns by at most half a turn, in three passes.
struct RotationVectorScratch {
  double x[kScratchPoints], y[kScratchPoints], z[kScratchPoints], w[kScratchPoints];
  double sine[kScratchPoints], half[kScratchPoints];
};

template <class Load>
SA_INLINE void rotationVectors(int nblock, double* out, Load loadPoint) {
  const int64_t N = nblock;
  forPieces(nblock, [=](int start, int n) SA_POINT {
    RotationVectorScratch s;
    forPoints(n, [=, &s](int i) SA_POINT {
      const Quaternion q = loadPoint(start + i);
      s.x[i] = q.x, s.y[i] = q.y, s.z[i] = q.z, s.w[i] = q.w;
      s.sine[i] = __builtin_sqrt(q.x * q.x + q.y * q.y + q.z * q.z);
    });
    forPoints(n, [&s](int i) SA_POINT { s.half[i] = angleOf(s.sine[i], s.w[i]); });
    forPoints(n, [=, &s](int i) SA_POINT {
      const bool small = s.sine[i] < 1e-150; // no axis left: the vector itself, times two
      const double f = small ? 2.0 : 2.0 * s.half[i] / (small ? 1.0 : s.sine[i]);
      const int k = start + i;
      out[k] = f * s.x[i];
      out[k + N] = f * s.y[i];
      out[k + 2 * N] = f * s.z[i];
    });
  });
}

} // namespace

SA_KERNEL(GLO_UTI_QUAT3DALGEBRA,
          (const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B)) {
  algebra<Quaternion>(*nblock, *op, Q, A, B);
}
SA_KERNEL(GLO_UTI_QUAT2DALGEBRA,
          (const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B)) {
  algebra<PlaneQuaternion>(*nblock, *op, Q, A, B);
}

SA_EXPORT void GLO_UTI_MULT3DQUAT(double* out, const double* a, const double* b) {
  const OwnArithmetic arithmetic;
  store(out, 1, 0, conjugateProduct(load<Quaternion>(a, 1, 0), load<Quaternion>(b, 1, 0)), 1.0, 1.0);
}
SA_EXPORT void GLO_UTI_MULT2DQUAT(double* out, const double* a, const double* b) {
  const OwnArithmetic arithmetic;
  store(out, 1, 0, conjugateProduct(load<PlaneQuaternion>(a, 1, 0), load<PlaneQuaternion>(b, 1, 0)), 1.0, 1.0);
}
SA_EXPORT void GLO_UTI_GENMULT3DQUAT(const int32_t* op, double* out, const double* a, const double* b) {
  const OwnArithmetic arithmetic;
  single<Quaternion>(*op, out, a, b);
}
SA_EXPORT void GLO_UTI_GENMULT2DQUAT(const int32_t* op, double* out, const double* a, const double* b) {
  const OwnArithmetic arithmetic;
  single<PlaneQuaternion>(*op, out, a, b);
}

// The direction changes the sign of the angle, not the loop.
SA_KERNEL(GLO_UTI_QUATROTVECT2D,
          (const int32_t* nblock, const int32_t* flag, double* W, const double* Q, const double* V)) {
  const int64_t N = *nblock;
  const double sign = *flag == 0 ? -1.0 : 1.0;
  forPoints(*nblock, [=](int i) SA_POINT {
    const double z = Q[i], w = Q[i + N], v1 = V[i], v2 = V[i + N];
    const double cosine = (w - z) * (w + z), sine = sign * (2.0 * z * w);
    W[i] = cosine * v1 - sine * v2;
    W[i + N] = sine * v1 + cosine * v2;
  });
}

SA_KERNEL(GLO_UTI_COMPROTINC, (const int32_t* nblock, double* Q, const double* A, const double* B)) {
  const int64_t N = *nblock;
  forPoints(*nblock, [=](int i) SA_POINT {
    store(Q, N, i, increment(load<Quaternion>(A, N, i), load<Quaternion>(B, N, i)), 1.0, 1.0);
  });
}

SA_KERNEL(GLO_UTI_COMPROTVEC, (const int32_t* nblock, double* R, const double* A, const double* B)) {
  const int64_t N = *nblock;
  rotationVectors(*nblock, R,
                  [=](int i) SA_POINT { return increment(load<Quaternion>(A, N, i), load<Quaternion>(B, N, i)); });
}

SA_KERNEL(GLO_UTI_ANGLESFROMQUATERNIONS, (const int32_t* nblock, const double* Q, double* R)) {
  const int64_t N = *nblock;
  rotationVectors(*nblock, R, [=](int i) SA_POINT { return rotationOf(load<Quaternion>(Q, N, i)); });
}

SA_KERNEL(GLO_UTI_INITROTATIONMATRIX, (const int32_t* nblock, double* R)) {
  const int64_t N = *nblock;
  for (int k = 0; k < 9; ++k) {
    const double value = k % 4 == 0 ? 1.0 : 0.0;
    double* column = R + k * N;
    forPoints(*nblock, [=](int i) SA_POINT { column[i] = value; });
  }
}

} // namespace sa
