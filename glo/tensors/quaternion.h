// Quaternions of one point: products, and the quaternion of given axes.
//
// A spatial quaternion is x, y, z, w, the scalar last; a plane one, about axis 3, keeps z and w.
#pragma once

#include "glo/kernel/shuffles.h"
#include "glo/kernel/vmath.h"
#include "glo/tensors/scale.h"

#include <cstdint>

namespace sa {

template <class Value>
struct QuaternionOf {
  Value x, y, z, w;
};
using Quaternion = QuaternionOf<double>;
struct PlaneQuaternion {
  double z, w;
};

// The product that an operation code asks for is made of one formula and three signs.
struct ProductSigns {
  double sa, sc, s;
};
SA_INLINE constexpr ProductSigns signsOf(int32_t operation) {
  switch (operation) {
  case -1:
    return {+1.0, -1.0, +1.0}; // b a
  case 2:
    return {-1.0, +1.0, -1.0}; // conj(a) b
  case -2:
    return {-1.0, +1.0, +1.0}; // conj(b) a
  default:
    return {+1.0, +1.0, +1.0}; // a b
  }
}
// use(signs) with the signs as a constant that signs() gives: none of them costs a multiplication.
template <int32_t operation>
struct SignsOf {
  constexpr ProductSigns operator()() const { return signsOf(operation); }
};
template <class Use>
SA_INLINE void withSigns(int32_t operation, Use use) {
  switch (operation) {
  case -1:
    return use(SignsOf<-1>{});
  case 2:
    return use(SignsOf<2>{});
  case -2:
    return use(SignsOf<-2>{});
  default:
    return use(SignsOf<1>{});
  }
}

// The product before the sign s; its vector part is to be multiplied by s.
SA_INLINE Quaternion product(const Quaternion& a, const Quaternion& b, const ProductSigns& p) {
  return {a.x * b.w + p.sa * a.w * b.x + p.sc * (a.y * b.z - a.z * b.y),
          a.y * b.w + p.sa * a.w * b.y + p.sc * (a.z * b.x - a.x * b.z),
          a.z * b.w + p.sa * a.w * b.z + p.sc * (a.x * b.y - a.y * b.x),
          a.w * b.w - p.sa * (a.x * b.x + a.y * b.y + a.z * b.z)};
}
SA_INLINE PlaneQuaternion product(const PlaneQuaternion& a, const PlaneQuaternion& b, const ProductSigns& p) {
  return {a.z * b.w + p.sa * a.w * b.z, a.w * b.w - p.sa * (a.z * b.z)};
}

// p - q.  Records hold sums beside differences of products; compilers pair the two into one instruction that rounds once, even
// where contraction is off, and give other bits on other instruction sets.  A sum with the sign turned has no such partner.
SA_INLINE double difference(double p, double q) { return p + vm::fromBits(vm::toBits(q) ^ vm::kSignBit); }

// conj(a) b, the terms in this order: a host may compare bits.
SA_INLINE Quaternion conjugateProduct(const Quaternion& a, const Quaternion& b) {
  return {a.w * b.x - a.x * b.w - a.y * b.z + a.z * b.y, a.w * b.y - a.y * b.w - a.z * b.x + a.x * b.z,
          a.w * b.z - a.z * b.w - a.x * b.y + a.y * b.x, a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w};
}
SA_INLINE PlaneQuaternion conjugateProduct(const PlaneQuaternion& a, const PlaneQuaternion& b) {
  return {difference(a.w * b.z, a.z * b.w), a.w * b.w + a.z * b.z};
}
SA_INLINE Quaternion conjugate(const Quaternion& q) { return {-q.x, -q.y, -q.z, q.w}; }
SA_INLINE PlaneQuaternion conjugate(const PlaneQuaternion& q) { return {-q.z, q.w}; }

SA_INLINE double length(const Quaternion& q) { return __builtin_sqrt(q.x * q.x + q.y * q.y + q.z * q.z + q.w * q.w); }
SA_INLINE double length(const PlaneQuaternion& q) { return __builtin_sqrt(q.z * q.z + q.w * q.w); }

// The rotation by at most half a turn that a quaternion of any length but zero stands for, w >= 0.
SA_INLINE Quaternion rotationOf(const Quaternion& q) {
  const double s = scaleForSquares(vm::max(magnitude(q.x, q.y, q.z), __builtin_fabs(q.w))).factor;
  const Quaternion p{q.x * s, q.y * s, q.z * s, q.w * s};
  const double f = (p.w < 0.0 ? -1.0 : 1.0) / length(p);
  return {p.x * f, p.y * f, p.z * f, p.w * f};
}

// Point i of a block of n points, or the four points from i on.
template <class Value>
SA_INLINE QuaternionOf<Value> loadQuaternion(const double* block, int64_t n, int64_t i) {
  return {loadVector<Value>(block + i), loadVector<Value>(block + i + n), loadVector<Value>(block + i + 2 * n),
          loadVector<Value>(block + i + 3 * n)};
}
template <class Q>
SA_INLINE Q load(const double* block, int64_t n, int64_t i);
template <>
SA_INLINE Quaternion load<Quaternion>(const double* block, int64_t n, int64_t i) {
  return loadQuaternion<double>(block, n, i);
}
template <>
SA_INLINE PlaneQuaternion load<PlaneQuaternion>(const double* block, int64_t n, int64_t i) {
  return {block[i], block[i + n]};
}

// Three orthogonal unit vectors, the columns of a matrix.
struct Axes {
  double x1, y1, z1, x2, y2, z2, x3, y3, z3;
};

// The same axes with the third reversed where they are left-handed.
SA_INLINE Axes rightHanded(const Axes& a) {
  const double volume =
      a.x3 * (a.y1 * a.z2 - a.z1 * a.y2) + a.y3 * (a.z1 * a.x2 - a.x1 * a.z2) + a.z3 * (a.x1 * a.y2 - a.y1 * a.x2);
  const double f = volume < 0.0 ? -1.0 : 1.0;
  return {a.x1, a.y1, a.z1, a.x2, a.y2, a.z2, f * a.x3, f * a.y3, f * a.z3};
}

// The rotation that turns the global axes into right-handed ones.  Four times the square of each component comes from the
// diagonal; all four are then found from the largest, which is at least 1, so that no rotation, half turns included, loses
// digits.  Source: S. W. Shepperd, J. Guidance and Control 1 (1978) 223.
SA_INLINE Quaternion quaternionOf(const Axes& a) {
  const double tw = 1.0 + a.x1 + a.y2 + a.z3, tx = 1.0 + a.x1 - a.y2 - a.z3;
  const double ty = 1.0 - a.x1 + a.y2 - a.z3, tz = 1.0 - a.x1 - a.y2 + a.z3;
  const double xw = a.z2 - a.y3, yw = a.x3 - a.z1, zw = a.y1 - a.x2;
  const double xy = a.y1 + a.x2, xz = a.x3 + a.z1, yz = a.z2 + a.y3;
  const bool isX = tx > tw;
  const double t1 = isX ? tx : tw, x1 = isX ? tx : xw, y1 = isX ? xy : yw, z1 = isX ? xz : zw, w1 = isX ? xw : tw;
  const bool isY = ty > t1;
  const double t2 = isY ? ty : t1, x2 = isY ? xy : x1, y2 = isY ? ty : y1, z2 = isY ? yz : z1, w2 = isY ? yw : w1;
  const bool isZ = tz > t2;
  const double t3 = isZ ? tz : t2, x3 = isZ ? xz : x2, y3 = isZ ? yz : y2, z3 = isZ ? tz : z2, w3 = isZ ? zw : w2;
  const double f = 0.5 / __builtin_sqrt(t3);
  return {x3 * f, y3 * f, z3 * f, w3 * f};
}

// The rotation about axis 3 of a matrix with the trace t and skew = R21 - R12, from the larger component.
SA_INLINE PlaneQuaternion planeQuaternionOf(double t, double skew) {
  const bool byScalar = t >= 1.0;
  const double root = __builtin_sqrt(byScalar ? t + 1.0 : (1.0 - t) * 0.25 + 0.5);
  const double larger = byScalar ? root * 0.5 : root, other = skew / (4.0 * larger);
  return {byScalar ? other : larger, byScalar ? larger : other};
}

} // namespace sa
