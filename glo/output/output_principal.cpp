// Principal values with their directions as quaternions, in the records that a results database keeps.
#include "glo.h"
#include "glo/output/output_records.h"
#include "glo/tensors/plane_principal.h"
#include "glo/tensors/principal.h"
#include "glo/tensors/quaternion.h"
#include "glo/tensors/spectral.h"

namespace sa {
namespace {

// ---- plane codes

// Larger and smaller principal value in the plane, and the rotation from global to principal axes.
struct PlaneOutput {
  double p1, p2;
  PlaneQuaternion q;
};

// The values sorted and the directions with them: exchanged, the first is reversed, so that they stay a rotation.
struct SortedPlane {
  double p1, p2, r11, r12, r21, r22;
};
SA_INLINE SortedPlane sorted(double p1, double p2, double c, double s) {
  const bool exchange = p2 > p1;
  return {exchange ? p2 : p1, exchange ? p1 : p2, exchange ? s : c,
          exchange ? c : -s,  exchange ? -c : s,  exchange ? s : c};
}

// Tensors with the direct components 11 and 22, and component 12 in the given column.
template <int kShearColumn>
struct InPlane {
  SA_INLINE static PlaneOutput convert(const double* S, int64_t n, int64_t k) {
    const double s11 = S[k], s22 = S[k + n], s12 = S[k + kShearColumn * n];
    const PlanePrincipal principal = planePrincipal(s11, s22, s12);
    const SortedPlane r = sorted(principal.p1, principal.p2, principal.c, principal.s);
    return {r.p1, r.p2, planeQuaternionOf(1.0 + r.r11 + r.r22, r.r21 - r.r12)};
  }
};

struct Code21 : InPlane<2> {
  static constexpr int kValues = 2;
};
struct Code31 : InPlane<3> {
  static constexpr int kValues = 3; // the third is component 33
};

// One direct component, 22 being zero.  Where the vector part of the quaternion is the larger one, it is stored as its square
// and the scalar part has a sum for a difference: databases hold these numbers, and readers expect them.
struct Code11 {
  static constexpr int kValues = 2;

  SA_INLINE static PlaneOutput convert(const double* S, int64_t n, int64_t k) {
    const double s11 = S[k], s12 = S[k + n];
    const auto [c, s, sin2] = planeRotation(s11, 0.0, s12);
    const SortedPlane r = sorted(c * c * s11 + sin2 * s12, s * s * s11 - sin2 * s12, c, s);
    const double t = 1.0 + r.r11 + r.r22;
    const PlaneQuaternion q = planeQuaternionOf(t, r.r21 - r.r12);
    const double z = (1.0 - t) * 0.25 + 0.5, w = (r.r21 + r.r12) / (4.0 * z);
    return {r.p1, r.p2, {t >= 1.0 ? q.z : z, t >= 1.0 ? q.w : w}};
  }
};

template <class Code>
struct PlaneScratch {
  using Q = PlaneQuaternion;
  static constexpr int kValues = Code::kValues;
  RecordScratch<kValues> values;
  RecordScratch<2> directions;

  template <class Points>
  SA_INLINE void convert(Points point, int n, int64_t nblock, const double* S) {
    PlaneScratch& out = *this;
    forPoints(n, [=, &out](int j) SA_POINT {
      const int64_t k = point(j);
      const PlaneOutput r = Code::convert(S, nblock, k);
      out.values.column[0][j] = r.p1;
      out.values.column[1][j] = r.p2;
      if constexpr (kValues == 3) out.values.column[2][j] = S[k + 2 * nblock];
      out.directions.column[0][j] = r.q.z;
      out.directions.column[1][j] = r.q.w;
    });
  }
  SA_INLINE Q direction(int j) const { return {directions.column[0][j], directions.column[1][j]}; }
  SA_INLINE void setDirection(int j, const Q& q) {
    directions.column[0][j] = q.z;
    directions.column[1][j] = q.w;
  }
};

// ---- in space

struct Principal {
  double value, x, y, z;
};

// Puts the larger value first.  Exchanged, the direction that comes first is reversed: the three stay right-handed.
SA_INLINE void order(Principal& a, Principal& b) {
  const Principal p = a, q = b;
  const bool exchange = q.value > p.value;
  a = {exchange ? q.value : p.value, exchange ? -q.x : p.x, exchange ? -q.y : p.y, exchange ? -q.z : p.z};
  b = {exchange ? p.value : q.value, exchange ? p.x : q.x, exchange ? p.y : q.y, exchange ? p.z : q.z};
}

struct SpatialScratch {
  using Q = Quaternion;
  RecordScratch<3> values;
  RecordScratch<4> directions;

  // The rotations of the Jacobi sweeps leave right-handed directions; three exchanges sort them and keep the order of ties.
  template <class Points>
  SA_INLINE void convert(Points point, int n, int64_t nblock, const double* S) {
    JacobiScratch<true> w, done;
    diagonalise(n, w, done, loadS33(point, nblock, S, w));
    SpatialScratch& out = *this;
    forPoints(n, [&out, &w, &done](int j) SA_POINT {
      const double d1 = done.a11[j], d2 = done.a22[j], d3 = done.a33[j];
      Principal a{d1, done.v[0][j], done.v[1][j], done.v[2][j]};
      Principal b{d2, done.v[3][j], done.v[4][j], done.v[5][j]};
      Principal c{d3, done.v[6][j], done.v[7][j], done.v[8][j]};
      order(a, b), order(b, c), order(a, b);
      const Quaternion q = quaternionOf({a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z});
      const double bad = spoiled(d1, d2, d3), back = w.back[j]; // a zero that changes no sign is subtracted
      out.values.column[0][j] = a.value * back - bad;
      out.values.column[1][j] = b.value * back - bad;
      out.values.column[2][j] = c.value * back - bad;
      out.setDirection(j, {q.x - bad, q.y - bad, q.z - bad, q.w - bad});
    });
  }
  SA_INLINE Q direction(int j) const {
    return {directions.column[0][j], directions.column[1][j], directions.column[2][j], directions.column[3][j]};
  }
  SA_INLINE void setDirection(int j, const Q& q) {
    directions.column[0][j] = q.x;
    directions.column[1][j] = q.y;
    directions.column[2][j] = q.z;
    directions.column[3][j] = q.w;
  }
};

// ---- the members

struct Records {
  const int32_t *ldp, *ldq;
  double *P, *Q;
};

// Tensors are in global axes: so is the rotation.
struct InGlobalAxes {
  SA_INLINE void operator()(auto, int, int64_t, auto&) const {}
};
// Tensors are in the axes of orientations o: the rotation is that into the axes of o and from there on, o q, which the product
// conj(a) b gives for a = conj(o).
struct InOrientedAxes {
  const double* O;

  template <class Points, class Scratch>
  SA_INLINE void operator()(Points point, int n, int64_t nblock, Scratch& s) const {
    const double* orientations = O;
    forPoints(n, [=, &s](int j) SA_POINT {
      const auto o = load<typename Scratch::Q>(orientations, nblock, point(j));
      s.setDirection(j, conjugateProduct(conjugate(o), s.direction(j)));
    });
  }
};

template <class Scratch, class Walk>
SA_INLINE void principalRecords(Walk walk, const double* S, const Records& out, auto orient) {
  const int64_t N = walk.points.count, ldp = *out.ldp, ldq = *out.ldq;
  double *P = out.P, *Q = out.Q;
  walk(true, [=](auto point, int n, int64_t first) SA_POINT {
    Scratch s;
    s.convert(point, n, N, S);
    orient(point, n, N, s);
    writeRecords(n, s.values, P + first * ldp, ldp);
    writeRecords(n, s.directions, Q + first * ldq, ldq);
  });
}

} // namespace

// ---- argument lists: whole block, element set, and both with orientations

#define SA_RECORDS const int32_t *ldp, const int32_t *ldq, double *P, double *Q
#define SA_QUAT (const int32_t* nblock, int32_t* cursor, const double* S, SA_RECORDS)
#define SA_MULT (const int32_t* nblock, int32_t* cursor, const double* S, const double* O, SA_RECORDS)
#define SA_ELSET                                                                                                       \
  (const int32_t* nblock, SA_BLOCK_PLACE, const int32_t* set, int32_t* cursor, const double* S, SA_RECORDS,            \
   const int32_t* last)
#define SA_EMULT                                                                                                       \
  (const int32_t* nblock, SA_BLOCK_PLACE, const int32_t* set, int32_t* cursor, const double* S, const double* O,       \
   SA_RECORDS, const int32_t* last)

#define SA_WHOLE_BLOCK (Walk{AllPoints{*nblock}, cursor})
#define SA_ELEMENT_SET (Walk{SetMembers{*nblock, SA_ELEMENTS_BEFORE, set, *last}, cursor})

// The four forms of a code.
#define SA_PRINCIPAL_OUTPUT(code, Scratch)                                                                             \
  SA_KERNEL(GLO_UTI_ODBPRINC##code##QUAT, SA_QUAT) {                                                                   \
    principalRecords<Scratch>(SA_WHOLE_BLOCK, S, {ldp, ldq, P, Q}, InGlobalAxes{});                                    \
  }                                                                                                                    \
  SA_KERNEL(GLO_UTI_ODBPRINC##code##QUATELSET, SA_ELSET) {                                                             \
    principalRecords<Scratch>(SA_ELEMENT_SET, S, {ldp, ldq, P, Q}, InGlobalAxes{});                                    \
  }                                                                                                                    \
  SA_KERNEL(GLO_UTI_ODBPRINC##code##QUATMULT, SA_MULT) {                                                               \
    principalRecords<Scratch>(SA_WHOLE_BLOCK, S, {ldp, ldq, P, Q}, InOrientedAxes{O});                                 \
  }                                                                                                                    \
  SA_KERNEL(GLO_UTI_ODBPRINC##code##QUATEMULT, SA_EMULT) {                                                             \
    principalRecords<Scratch>(SA_ELEMENT_SET, S, {ldp, ldq, P, Q}, InOrientedAxes{O});                                 \
  }

// Records of a general output are filled in the same way.
#define SA_GENERAL_PRINCIPAL_OUTPUT(code)                                                                              \
  SA_SAME_KERNEL(GLO_UTI_ODBGENPRINC##code##QUAT, GLO_UTI_ODBPRINC##code##QUAT, SA_QUAT)                               \
  SA_SAME_KERNEL(GLO_UTI_ODBGENPRINC##code##QUATELSET, GLO_UTI_ODBPRINC##code##QUATELSET, SA_ELSET)                    \
  SA_SAME_KERNEL(GLO_UTI_ODBGENPRINC##code##QUATMULT, GLO_UTI_ODBPRINC##code##QUATMULT, SA_MULT)                       \
  SA_SAME_KERNEL(GLO_UTI_ODBGENPRINC##code##QUATEMULT, GLO_UTI_ODBPRINC##code##QUATEMULT, SA_EMULT)

SA_PRINCIPAL_OUTPUT(11, PlaneScratch<Code11>)
SA_PRINCIPAL_OUTPUT(21, PlaneScratch<Code21>)
SA_PRINCIPAL_OUTPUT(31, PlaneScratch<Code31>)
SA_PRINCIPAL_OUTPUT(33, SpatialScratch)
SA_GENERAL_PRINCIPAL_OUTPUT(21)
SA_GENERAL_PRINCIPAL_OUTPUT(31)
SA_GENERAL_PRINCIPAL_OUTPUT(33)

} // namespace sa

#undef SA_RECORDS
#undef SA_QUAT
#undef SA_MULT
#undef SA_ELSET
#undef SA_EMULT
#undef SA_WHOLE_BLOCK
#undef SA_ELEMENT_SET
#undef SA_PRINCIPAL_OUTPUT
#undef SA_GENERAL_PRINCIPAL_OUTPUT
