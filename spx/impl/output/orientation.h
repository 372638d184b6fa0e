// Orientation records: one template for every element family, walk and place.
#pragma once

#include "glo/output/output_records.h"
#include "glo/tensors/quaternion.h"

namespace sa {

// ---- where the records of an element lie

// One record for each element.
struct Appended {
  static constexpr int64_t distance = 1, offset = 0;
  static constexpr bool isLast = true, isWritten = true;
};
// Record `isub` of the `nsub` records of each element, of which the first `defined` are written; the element is finished with
// the last of all.
struct Interleaved {
  int64_t distance, offset;
  bool isLast, isWritten;
  SA_INLINE Interleaved(const int32_t* nsub, const int32_t* isub, int32_t defined)
      : distance(*nsub), offset(*isub - 1), isLast(*isub == *nsub), isWritten(*isub <= defined) {}
};

// ---- records of two and four reals, and the two records of an element with two sides

template <class Q>
inline constexpr int kRealsOf = 4;
template <>
inline constexpr int kRealsOf<PlaneQuaternion> = 2;

template <class Q>
struct TwoSides {
  Q first, second;
};
template <class Q>
inline constexpr int kRealsOf<TwoSides<Q>> = 2 * kRealsOf<Q>;

SA_INLINE void store(double* record, const PlaneQuaternion& q) {
  record[0] = q.z;
  record[1] = q.w;
}
SA_INLINE void store(double* record, const Quaternion& q) {
  record[0] = q.x;
  record[1] = q.y;
  record[2] = q.z;
  record[3] = q.w;
}
template <class Q>
SA_INLINE void store(double* record, const TwoSides<Q>& q) {
  store(record, q.first);
  store(record + kRealsOf<Q>, q.second);
}

// The turn about axis 3 that takes axis 1 to a direction in the plane 1-2, of any length.
SA_INLINE PlaneQuaternion turnTo(double d1, double d2) {
  const double s = scaleForSquares(magnitude(d1, d2)).factor, x = d1 * s, y = d2 * s;
  const double length = __builtin_sqrt(x * x + y * y), cosine = x / length, sine = y / length;
  return planeQuaternionOf(1.0 + 2.0 * cosine, 2.0 * sine);
}

// The direction of a straight element between two end points, whose coordinates are four columns: x of both, y of both.
struct PlaneDirection {
  const double* c;
  SA_INLINE PlaneDirection(const double* coordinates, const int32_t* firstColumn, const int32_t* nblock)
      : c(coordinates + (static_cast<int64_t>(*firstColumn) - 1) * *nblock) {}

  SA_INLINE PlaneQuaternion operator()(int64_t n, int64_t k) const {
    const double x1 = c[k], x2 = c[k + n], y1 = c[k + 2 * n], y2 = c[k + 3 * n];
    const double s = scaleForSums(vm::max(magnitude(x1, x2), magnitude(y1, y2))).factor;
    return turnTo(x2 * s - x1 * s, y2 * s - y1 * s);
  }
};

// Component k of a record.
template <class Value>
SA_INLINE Value component(const QuaternionOf<Value>& q, int k) {
  return k == 0 ? q.x : k == 1 ? q.y : k == 2 ? q.z : q.w;
}

// ---- the members

struct NothingMore {
  SA_INLINE void operator()(auto, int, double*) const {}
};

// The records of a piece, four at a time where an orientation gives four points.
template <int kReals, class Points, class Orientation>
SA_INLINE void writeTurns(Points point, int n, int64_t nblock, double* records, int64_t distance,
                          Orientation orientation) {
  const auto one = [=](int j, int64_t d) SA_POINT { store(records + d * j, orientation(nblock, point(j))); };
  if constexpr (std::is_same_v<Points, AllPoints> && requires { orientation.four(nblock, nblock); })
    writeRecords<kReals>(
        n, records, distance, [=](int j, int k) SA_POINT { return component(orientation.four(nblock, point(j)), k); },
        one);
  else
    forPoints(n, [=](int j) SA_POINT { one(j, distance); });
}

// orientation(nblock, k) is the record of point k of the block, from 0; finish(point, n, records) may then change those of a
// piece.
template <class Walk, class Place, class Orientation, class Finish = NothingMore>
SA_INLINE void writeOrientations(Walk walk, Place place, double* out, Orientation orientation, Finish finish = {}) {
  using Record = decltype(orientation(int64_t{}, int64_t{}));
  constexpr int kReals = kRealsOf<Record>;
  const int64_t N = walk.points.count;
  walk(place.isLast, [=](auto point, int n, int64_t first) SA_POINT {
    if (!place.isWritten) return;
    double* records = out + kReals * (place.offset + place.distance * first);
    const int64_t distance = kReals * place.distance;
    writeTurns<kReals>(point, n, N, records, distance, orientation);
    finish(point, n, records);
  });
}

} // namespace sa

// Argument lists.  Element sets stand directly behind the counter.
#define SA_ELEMENT_SET SA_BLOCK_PLACE, const int32_t *last, const int32_t *set
#define SA_WALK_BLOCK (Walk{AllPoints{*nblock}, counter})
#define SA_WALK_SET (Walk{SetMembers{*nblock, SA_ELEMENTS_BEFORE, set, *last}, counter})

// A member and its form for element sets: name, arguments behind the counter with and without types, conversion.
#define SA_UNWRAP(...) __VA_ARGS__
#define SA_ORIENTATIONS(name, parameters, ...)                                                                         \
  SA_KERNEL(name, (const int32_t* nblock, int32_t* counter, SA_UNWRAP parameters, double* out)) {                      \
    writeOrientations(SA_WALK_BLOCK, Appended{}, out, __VA_ARGS__);                                                    \
  }                                                                                                                    \
  SA_KERNEL(name##ELSET,                                                                                               \
            (const int32_t* nblock, int32_t* counter, SA_ELEMENT_SET, SA_UNWRAP parameters, double* out)) {            \
    writeOrientations(SA_WALK_SET, Appended{}, out, __VA_ARGS__);                                                      \
  }
