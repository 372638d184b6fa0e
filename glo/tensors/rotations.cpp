// Rotation of symmetric tensors between global axes and the frame whose axes are the columns of R.
#include "glo.h"
#include "glo/kernel/kernel.h"

#include <type_traits>

namespace sa {
namespace {

// Rows i, j of a rotation matrix of one point.  Transposed for the way into the frame: both ways are M S M'.
struct Plane {
  double m11, m12, m21, m22;
};
struct Space {
  double m11, m12, m13, m21, m22, m23, m31, m32, m33;
};

// R comes column by column.
SA_INLINE Plane loadPlane(const double* R, int64_t ld, int i, bool intoFrame) {
  const double r11 = R[i], r21 = R[i + ld], r12 = R[i + 2 * ld], r22 = R[i + 3 * ld];
  return {r11, intoFrame ? r21 : r12, intoFrame ? r12 : r21, r22};
}
SA_INLINE Space loadSpace(const double* R, int64_t ld, int i, bool intoFrame) {
  const double r11 = R[i], r21 = R[i + ld], r31 = R[i + 2 * ld];
  const double r12 = R[i + 3 * ld], r22 = R[i + 4 * ld], r32 = R[i + 5 * ld];
  const double r13 = R[i + 6 * ld], r23 = R[i + 7 * ld], r33 = R[i + 8 * ld];
  return {r11, intoFrame ? r21 : r12, intoFrame ? r31 : r13, intoFrame ? r12 : r21,
          r22, intoFrame ? r32 : r23, intoFrame ? r13 : r31, intoFrame ? r23 : r32,
          r33};
}

struct PlaneTensor {
  double s11, s22, s12;
};
SA_INLINE PlaneTensor rotated(const Plane& m, const PlaneTensor& s) {
  return {m.m11 * m.m11 * s.s11 + 2.0 * m.m11 * m.m12 * s.s12 + m.m12 * m.m12 * s.s22,
          m.m21 * m.m21 * s.s11 + 2.0 * m.m21 * m.m22 * s.s12 + m.m22 * m.m22 * s.s22,
          m.m11 * m.m21 * s.s11 + m.m12 * m.m22 * s.s22 + (m.m11 * m.m22 + m.m21 * m.m12) * s.s12};
}
// The same of a tensor without shear.
SA_INLINE PlaneTensor rotatedDirect(const Plane& m, double s11, double s22) {
  return {m.m11 * m.m11 * s11 + m.m12 * m.m12 * s22, m.m21 * m.m21 * s11 + m.m22 * m.m22 * s22,
          m.m11 * m.m21 * s11 + m.m12 * m.m22 * s22};
}

struct Row {
  double x, y, z;
};
SA_INLINE double dot(const Row& a, const Row& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// P M', the rows of P and M given, to point i of a block array of S33 tensors.
SA_INLINE void storeProduct(const Row& p1, const Row& p2, const Row& p3, const Space& m, double* T, int64_t ld, int i) {
  const Row m1{m.m11, m.m12, m.m13}, m2{m.m21, m.m22, m.m23}, m3{m.m31, m.m32, m.m33};
  T[i] = dot(p1, m1);
  T[i + ld] = dot(p2, m2);
  T[i + 2 * ld] = dot(p3, m3);
  T[i + 3 * ld] = dot(p1, m2);
  T[i + 4 * ld] = dot(p2, m3);
  T[i + 5 * ld] = dot(p1, m3);
}

// body with the direction as a compile-time constant: the flag is tested once.
template <class Body>
SA_INLINE void withDirection(int32_t flag, Body body) {
  if (flag == 0)
    body(std::true_type{});
  else
    body(std::false_type{});
}

} // namespace

#define SA_ROTATION(name)                                                                                              \
  SA_KERNEL(name,                                                                                                      \
            (const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S, double* T))

SA_ROTATION(GLO_UTI_ROTATES21) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const PlaneTensor t = rotated(loadPlane(R, L, i, intoFrame.value), {S[i], S[i + L], S[i + 2 * L]});
      T[i] = t.s11;
      T[i + L] = t.s22;
      T[i + 2 * L] = t.s12;
    });
  });
}

// Engineering shear is twice the tensor shear; halving and doubling change no bit.
SA_ROTATION(GLO_UTI_ROTATES21E) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const PlaneTensor t = rotated(loadPlane(R, L, i, intoFrame.value), {S[i], S[i + L], 0.5 * S[i + 2 * L]});
      T[i] = t.s11;
      T[i + L] = t.s22;
      T[i + 2 * L] = 2.0 * t.s12;
    });
  });
}

SA_ROTATION(GLO_UTI_ROTATES31) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const double s33 = S[i + 2 * L];
      const PlaneTensor t = rotated(loadPlane(R, L, i, intoFrame.value), {S[i], S[i + L], S[i + 3 * L]});
      T[i] = t.s11;
      T[i + L] = t.s22;
      T[i + 2 * L] = s33;
      T[i + 3 * L] = t.s12;
    });
  });
}

SA_ROTATION(GLO_UTI_ROTATES30S31) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const double s33 = S[i + 2 * L];
      const PlaneTensor t = rotatedDirect(loadPlane(R, L, i, intoFrame.value), S[i], S[i + L]);
      T[i] = t.s11;
      T[i + L] = t.s22;
      T[i + 2 * L] = s33;
      T[i + 3 * L] = t.s12;
    });
  });
}

SA_ROTATION(GLO_UTI_ROTATES33) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const Space m = loadSpace(R, L, i, intoFrame.value);
      const double s11 = S[i], s22 = S[i + L], s33 = S[i + 2 * L], s12 = S[i + 3 * L], s23 = S[i + 4 * L],
                   s13 = S[i + 5 * L];
      // M S, row by row, then times M'
      const Row m1{m.m11, m.m12, m.m13}, m2{m.m21, m.m22, m.m23}, m3{m.m31, m.m32, m.m33};
      const Row c1{s11, s12, s13}, c2{s12, s22, s23}, c3{s13, s23, s33};
      const Row p1{dot(m1, c1), dot(m1, c2), dot(m1, c3)}, p2{dot(m2, c1), dot(m2, c2), dot(m2, c3)};
      const Row p3{dot(m3, c1), dot(m3, c2), dot(m3, c3)};
      storeProduct(p1, p2, p3, m, T, L, i);
    });
  });
}

SA_ROTATION(GLO_UTI_ROTATES30S33) {
  const int64_t L = *ld;
  withDirection(*flag, [=](auto intoFrame) SA_POINT {
    forPoints(*n, [=](int i) SA_POINT {
      const Space m = loadSpace(R, L, i, intoFrame.value);
      const double s1 = S[i], s2 = S[i + L], s3 = S[i + 2 * L];
      const Row p1{m.m11 * s1, m.m12 * s2, m.m13 * s3}, p2{m.m21 * s1, m.m22 * s2, m.m23 * s3};
      const Row p3{m.m31 * s1, m.m32 * s2, m.m33 * s3};
      storeProduct(p1, p2, p3, m, T, L, i);
    });
  });
}

} // namespace sa

#undef SA_ROTATION
