// Material orientations of plane, beam and spatial elements as records of quaternions.
#include "spx/impl/output/orientation.h"
#include "spx.h"

namespace sa {
namespace {

// One point or four of them, each for itself: at<double>(nblock, k), at<Four>(nblock, k).
template <class Turn>
struct InFours : Turn {
  SA_INLINE Quaternion operator()(int64_t n, int64_t k) const { return Turn::template at<double>(n, k); }
  SA_INLINE QuaternionOf<Four> four(int64_t n, int64_t k) const { return Turn::template at<Four>(n, k); }
};

struct PlaneIdentity {
  SA_INLINE PlaneQuaternion operator()(int64_t, int64_t) const { return {0.0, 1.0}; }
};

// q r with a quarter turn r about the local axis 1, which takes the solver's axes to those of the database.  Eight digits of
// the root of 1/2 are what databases hold.
struct QuarterTurned {
  const double* q;

  template <class Value>
  SA_INLINE QuaternionOf<Value> at(int64_t n, int64_t k) const {
    constexpr double h = 0.70710678;
    const auto p = loadQuaternion<Value>(q, n, k);
    return {h * p.x + h * p.w, h * p.y + h * p.z, h * p.z - h * p.y, h * p.w - h * p.x};
  }
};

// A zero component stays a positive zero.
struct Inverse {
  const double* q;

  template <class Value>
  SA_INLINE QuaternionOf<Value> at(int64_t n, int64_t k) const {
    const auto p = loadQuaternion<Value>(q, n, k);
    return {0.0 - p.x, 0.0 - p.y, 0.0 - p.z, p.w};
  }
};

} // namespace

// Nothing is computed.
#define SA_PLANE [[maybe_unused]] const double *q, double *out
SA_MOVE(SPX_ODB_ORIENT2D, (const int32_t* nblock, int32_t* counter, SA_PLANE)) {
  writeOrientations(SA_WALK_BLOCK, Appended{}, out, PlaneIdentity{});
}
SA_MOVE(SPX_ODB_ORIENT2DELSET, (const int32_t* nblock, int32_t* counter, SA_ELEMENT_SET, SA_PLANE)) {
  writeOrientations(SA_WALK_SET, Appended{}, out, PlaneIdentity{});
}
SA_ORIENTATIONS(SPX_ODB_ORIENT3D, (const double* q), InFours<QuarterTurned>{q})
SA_ORIENTATIONS(SPX_ODB_ORIENT2DBEAM, (const double* coordinates, const int32_t* firstColumn),
                PlaneDirection(coordinates, firstColumn, nblock))

// ---- interleaved with the other records of an element

#define SA_SUB const int32_t *nsub, const int32_t *isub
SA_KERNEL(SPX_ODB_ORIENT3DL3, (const int32_t* nblock, int32_t* counter, SA_SUB, const double* q, double* out)) {
  writeOrientations(SA_WALK_BLOCK, Interleaved(nsub, isub, *nsub), out, InFours<QuarterTurned>{q});
}
SA_KERNEL(SPX_ODB_ORIENT3DL3ELSET,
          (const int32_t* nblock, int32_t* counter, SA_ELEMENT_SET, SA_SUB, const double* q, double* out)) {
  writeOrientations(SA_WALK_SET, Interleaved(nsub, isub, *nsub), out, InFours<QuarterTurned>{q});
}

// The inverse members have the counter behind the sub-records.
#define SA_INVERSE (const int32_t* nblock, SA_SUB, int32_t* counter, const double* q, double* out)
#define SA_INVERSE_SET (const int32_t* nblock, SA_SUB, int32_t* counter, SA_ELEMENT_SET, const double* q, double* out)
SA_KERNEL(SPX_ODB_ORIENT3DINVERT, SA_INVERSE) {
  writeOrientations(SA_WALK_BLOCK, Interleaved(nsub, isub, *nsub), out, InFours<Inverse>{q});
}
SA_KERNEL(SPX_ODB_ORIENT3DELSETINVERT, SA_INVERSE_SET) {
  writeOrientations(SA_WALK_SET, Interleaved(nsub, isub, *nsub), out, InFours<Inverse>{q});
}
SA_SAME_KERNEL(SPX_ODB_ORIENT3DL3INVERT, SPX_ODB_ORIENT3DINVERT, SA_INVERSE)
SA_SAME_KERNEL(SPX_ODB_ORIENT3DL3ELSETINVERT, SPX_ODB_ORIENT3DELSETINVERT, SA_INVERSE_SET)

// Only the first two records of these beams are defined: the others are passed over.
#define SA_UNREAD_COORDINATES [[maybe_unused]] const double *coordinates, SA_UNREAD firstColumn
SA_MOVE(SPX_ODB_ORIENT2DL3BEAM, (const int32_t* nblock, int32_t* counter, SA_SUB, SA_UNREAD_COORDINATES, double* out)) {
  writeOrientations(SA_WALK_BLOCK, Interleaved(nsub, isub, 2), out, PlaneIdentity{});
}
SA_MOVE(SPX_ODB_ORIENT2DL3BEAMELSET,
        (const int32_t* nblock, int32_t* counter, SA_ELEMENT_SET, SA_SUB, SA_UNREAD_COORDINATES, double* out)) {
  writeOrientations(SA_WALK_SET, Interleaved(nsub, isub, 2), out, PlaneIdentity{});
}

#undef SA_PLANE
#undef SA_SUB
#undef SA_INVERSE
#undef SA_INVERSE_SET
#undef SA_UNREAD_COORDINATES

} // namespace sa
