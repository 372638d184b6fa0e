// Orientations of cohesive elements: from the direction cosines of both sides, and the element's own orientation.
#include "glo/tensors/trigonometric_values.h"
#include "spx.h"
#include "spx/impl/output/orientation.h"

namespace sa {
namespace {

// ---- direction cosines to quaternions
//
// By the vector part always, also where the scalar part is the larger one: databases hold these numbers.

struct PlaneCosines { // 11 22 12 21
  using Q = PlaneQuaternion;
  static constexpr int kColumns = 4;

  SA_INLINE static Q convert(const double* m, int64_t n, int64_t k) {
    const double v1 = m[k], v2 = m[k + n], v3 = m[k + 2 * n], v4 = m[k + 3 * n];
    const double s = (0.0 - v1 - v2) * 0.25 + 0.5;
    const bool none = s <= vm::kSmallestNormal;
    const double z = __builtin_sqrt(none ? 1.0 : s), w = (v4 - v3) / (4.0 * z);
    return {none ? 0.0 : z, none ? 1.0 : w};
  }
};

struct SpatialCosines { // 11 22 33 12 23 31 21 32 13
  using Q = Quaternion;
  static constexpr int kColumns = 9;

  SA_INLINE static Q convert(const double* m, int64_t n, int64_t k) {
    const double a1 = m[k], a2 = m[k + n], a3 = m[k + 2 * n], a4 = m[k + 3 * n], a5 = m[k + 4 * n];
    const double a6 = m[k + 5 * n], a7 = m[k + 6 * n], a8 = m[k + 7 * n], a9 = m[k + 8 * n];
    const double d12 = a1 > a2 ? a1 : a2, d = a3 >= d12 ? a3 : d12;
    // ties go to 3, then to 2
    const bool is3 = d == a3, is2 = !is3 && d == a2;
    const double s = (1.0 - a1 - a2 - a3) * 0.25 + d * 0.5;
    const bool none = s <= vm::kSmallestNormal;
    const double r = __builtin_sqrt(none ? 1.0 : s), f = 1.0 / (4.0 * r);
    const double xy = (a4 + a7) * f, xz = (a6 + a9) * f, yz = (a8 + a5) * f;
    const double x = is3 ? xz : is2 ? xy : r, y = is3 ? yz : is2 ? r : xy, z = is3 ? r : is2 ? yz : xz;
    const double w = (is3 ? a7 - a4 : is2 ? a9 - a6 : a8 - a5) * f;
    return {none ? 0.0 : x, none ? 0.0 : y, none ? 0.0 : z, none ? 1.0 : w};
  }
};

// Both sides of an element, one behind the other.
template <class Cosines>
struct CohesiveSides {
  const double* matrices;

  SA_INLINE auto operator()(int64_t n, int64_t k) const {
    const auto first = Cosines::convert(matrices, n, k);
    return TwoSides<typename Cosines::Q>{first, Cosines::convert(matrices + Cosines::kColumns * n, n, k)};
  }
};

// ---- local orientations

// o q, the local orientation on the left; o is a record of the table.
SA_INLINE PlaneQuaternion composed(const double* o, bool isSpatial, const PlaneQuaternion& q) {
  const double a = isSpatial ? o[3] : o[1], b = isSpatial ? o[2] : o[0];
  return {a * q.z + b * q.w, difference(a * q.w, b * q.z)};
}
SA_INLINE Quaternion composed(const double* o, bool, const Quaternion& q) {
  const double b1 = o[0], b2 = o[1], b3 = o[2], b4 = o[3];
  return {b4 * q.x + q.w * b1 + b2 * q.z - b3 * q.y, b4 * q.y + q.w * b2 + b3 * q.x - b1 * q.z,
          b4 * q.z + q.w * b3 + b1 * q.y - b2 * q.x, q.w * b4 - q.x * b1 - q.y * b2 - q.z * b3};
}

// Composes the sides that have a local orientation: count says whether there are any and how many reals they have, an index
// above 0 which one.  Point by point, since few elements have one and each has its own.
template <class Q>
struct LocalOrientations {
  int64_t width, columns; // indices of an element, reals of a record of the table
  int32_t count;
  const int32_t *map, *indices;
  const double* table;

  template <class Points>
  SA_INLINE void operator()(Points point, int n, double* records) const {
    if (count <= 0) return;
    for (int j = 0; j < n; ++j) {
      const int32_t* ofElement = indices + (static_cast<int64_t>(map[point(j)]) - 1) * width;
      double* sides = records + int64_t{2 * kRealsOf<Q>} * j;
      compose(ofElement[0], sides);
      compose(ofElement[width > 1 ? 1 : 0], sides + kRealsOf<Q>); // a single index holds for both sides
    }
  }

private:
  SA_INLINE void compose(int32_t index, double* record) const {
    if (index <= 0) return;
    const double* o = table + (static_cast<int64_t>(index) - 1) * columns;
    store(record, composed(o, count == 4, load<Q>(record, 1, 0)));
  }
};

} // namespace

#define SA_COHESIVE                                                                                                    \
  (const int32_t* width, const int32_t* columns, const int32_t* count, const int32_t* map, const int32_t* indices,     \
   const double* table, const double* matrices)
SA_ORIENTATIONS(SPX_ODB_ORIENTCNE2D, SA_COHESIVE, CohesiveSides<PlaneCosines>{matrices},
                LocalOrientations<PlaneQuaternion>{*width, *columns, *count, map, indices, table})
SA_ORIENTATIONS(SPX_ODB_ORIENTCNE3D, SA_COHESIVE, CohesiveSides<SpatialCosines>{matrices},
                LocalOrientations<Quaternion>{*width, *columns, *count, map, indices, table})

#undef SA_COHESIVE

} // namespace sa
