// Values that need no conversion on their way into the records of a results database, and strains with engineering shear.
#include "glo.h"
#include "glo/output/output_records.h"
#include "glo/tensors/quaternion.h"

namespace sa {
namespace {

// ---- values along the axes of a frame, and the frame's orientation

// at<Value>(component, nblock, k) is a component of point k, or of the four points from k on.
struct PlaneIdentity {
  static constexpr int kReals = 2;
  template <class Value>
  SA_INLINE Value at(int component, int64_t, int64_t) const {
    return Value{} + (component == 1 ? 1.0 : 0.0);
  }
};
struct SpatialIdentity {
  static constexpr int kReals = 4;
  template <class Value>
  SA_INLINE Value at(int component, int64_t, int64_t) const {
    return Value{} + (component == 3 ? 1.0 : 0.0);
  }
};
// Component of a block array of points.
template <int kComponents>
struct FromBlock {
  static constexpr int kReals = kComponents;
  const double* block;
  template <class Value>
  SA_INLINE Value at(int component, int64_t n, int64_t k) const {
    return loadVector<Value>(block + k + component * n);
  }
};

// Doubles the components from kDirect on: shear becomes engineering shear.
template <int kComponents, int kDirect>
struct EngineeringStrain {
  static constexpr int kReals = kComponents;
  const double* block;
  template <class Value>
  SA_INLINE Value at(int component, int64_t n, int64_t k) const {
    return (component < kDirect ? 1.0 : 2.0) * loadVector<Value>(block + k + component * n);
  }
};

struct RecordArray {
  double* records;
  int64_t length;
};

template <class Points, class Source>
SA_INLINE void fill(Points point, int n, int64_t nblock, int64_t first, Source source, RecordArray out) {
  constexpr int kReals = Source::kReals;
  double* records = out.records + first * out.length;
  const auto one = [=](int j, int64_t distance) SA_POINT {
    const int64_t k = point(j);
    for (int c = 0; c < kReals; ++c) records[j * distance + c] = source.template at<double>(c, nblock, k);
  };
  if constexpr (std::is_same_v<Points, AllPoints>)
    writeRecords<kReals>(
        n, records, out.length, [=](int j, int c) SA_POINT { return source.template at<Four>(c, nblock, point(j)); },
        one);
  else if (out.length == kReals)
    forPoints(n, [=](int j) SA_POINT { one(j, kReals); });
  else
    forPoints(n, [=](int j) SA_POINT { one(j, out.length); });
}

template <class Walk, class Source>
SA_INLINE void copyRecords(Walk walk, Source source, RecordArray out) {
  const int64_t N = walk.points.count;
  walk(true, [=](auto point, int n, int64_t first) SA_POINT { fill(point, n, N, first, source, out); });
}
template <class Walk, class Values, class Directions>
SA_INLINE void copyRecords(Walk walk, Values values, Directions directions, RecordArray P, RecordArray Q) {
  const int64_t N = walk.points.count;
  walk(true, [=](auto point, int n, int64_t first) SA_POINT {
    fill(point, n, N, first, values, P);
    fill(point, n, N, first, directions, Q);
  });
}

} // namespace

// ---- argument lists

#define SA_RECORDS const int32_t *ldp, const int32_t *ldq, double *P, double *Q
#define SA_WHOLE const int32_t *nblock, int32_t *cursor, const double *S
#define SA_SET const int32_t *nblock, SA_BLOCK_PLACE, const int32_t *set, int32_t *cursor, const double *S

#define SA_WHOLE_BLOCK (Walk{AllPoints{*nblock}, cursor})
#define SA_ELEMENT_SET (Walk{SetMembers{*nblock, SA_ELEMENTS_BEFORE, set, *last}, cursor})
#define SA_P (RecordArray{P, *ldp})
#define SA_Q (RecordArray{Q, *ldq})

// Copies of n values, in global axes and in the axes of plane and spatial orientations.
#define SA_ORIENTED_COPIES(n, suffix, reals)                                                                           \
  SA_MOVE(GLO_UTI_ODBDIRCOPY##n##MULT##suffix, (SA_WHOLE, const double* O, SA_RECORDS)) {                              \
    copyRecords(SA_WHOLE_BLOCK, FromBlock<n>{S}, FromBlock<reals>{O}, SA_P, SA_Q);                                     \
  }                                                                                                                    \
  SA_MOVE(GLO_UTI_ODBDIRCOPY##n##EMULT##suffix, (SA_SET, const double* O, SA_RECORDS, const int32_t* last)) {          \
    copyRecords(SA_ELEMENT_SET, FromBlock<n>{S}, FromBlock<reals>{O}, SA_P, SA_Q);                                     \
  }
#define SA_DIRECTIONAL_COPIES(n, Identity)                                                                             \
  SA_MOVE(GLO_UTI_ODBDIRCOPY##n, (SA_WHOLE, SA_RECORDS)) {                                                             \
    copyRecords(SA_WHOLE_BLOCK, FromBlock<n>{S}, Identity{}, SA_P, SA_Q);                                              \
  }                                                                                                                    \
  SA_MOVE(GLO_UTI_ODBDIRCOPY##n##ELSET, (SA_SET, SA_RECORDS, const int32_t* last)) {                                   \
    copyRecords(SA_ELEMENT_SET, FromBlock<n>{S}, Identity{}, SA_P, SA_Q);                                              \
  }                                                                                                                    \
  SA_ORIENTED_COPIES(n, 2D, 2)                                                                                         \
  SA_ORIENTED_COPIES(n, 3D, 4)

SA_DIRECTIONAL_COPIES(1, PlaneIdentity)
SA_DIRECTIONAL_COPIES(2, PlaneIdentity)
SA_DIRECTIONAL_COPIES(3, SpatialIdentity)

// One array of records, for sets and whole blocks; the members for general records share the bodies.
#define SA_PLAIN_WHOLE (SA_WHOLE, const int32_t* ldp, double* P)
#define SA_PLAIN_SET (SA_SET, const int32_t* ldp, double* P, const int32_t* last)

SA_MOVE(GLO_UTI_ODBDIRCOPYSCALARELSET, SA_PLAIN_SET) { copyRecords(SA_ELEMENT_SET, FromBlock<1>{S}, SA_P); }
SA_SAME_KERNEL(GLO_UTI_ODBGENDIRCPSCALARELSET, GLO_UTI_ODBDIRCOPYSCALARELSET, SA_PLAIN_SET)

#define SA_STRAINS(dimension, components)                                                                              \
  SA_KERNEL(GLO_UTI_ODB##dimension##STRAIN, SA_PLAIN_WHOLE) {                                                          \
    copyRecords(SA_WHOLE_BLOCK, EngineeringStrain<components, 3>{S}, SA_P);                                            \
  }                                                                                                                    \
  SA_KERNEL(GLO_UTI_ODB##dimension##STRAINELSET, SA_PLAIN_SET) {                                                       \
    copyRecords(SA_ELEMENT_SET, EngineeringStrain<components, 3>{S}, SA_P);                                            \
  }                                                                                                                    \
  SA_SAME_KERNEL(GLO_UTI_ODBGEN##dimension##STRAIN, GLO_UTI_ODB##dimension##STRAIN, SA_PLAIN_WHOLE)                    \
  SA_SAME_KERNEL(GLO_UTI_ODBGEN##dimension##STRAINELSET, GLO_UTI_ODB##dimension##STRAINELSET, SA_PLAIN_SET)
SA_STRAINS(2D, 4)
SA_STRAINS(3D, 6)

} // namespace sa

#undef SA_RECORDS
#undef SA_WHOLE
#undef SA_SET
#undef SA_WHOLE_BLOCK
#undef SA_ELEMENT_SET
#undef SA_P
#undef SA_Q
#undef SA_ORIENTED_COPIES
#undef SA_DIRECTIONAL_COPIES
#undef SA_PLAIN_WHOLE
#undef SA_PLAIN_SET
#undef SA_STRAINS
