// Values that need no conversion on their way into the records of a results database, and strains with engineering shear.
#include "glo.h"
#include "glo/output/output_records.h"
#include "glo/tensors/quaternion.h"

namespace sa {
namespace {

// ---- values along the axes of a frame, and the frame's orientation

struct PlaneIdentity {
  static constexpr int kReals = 2;
  SA_INLINE double operator()(int component, int64_t, int64_t) const { return component == 1 ? 1.0 : 0.0; }
};
struct SpatialIdentity {
  static constexpr int kReals = 4;
  SA_INLINE double operator()(int component, int64_t, int64_t) const { return component == 3 ? 1.0 : 0.0; }
};
// Component of a block array of points.
template <int kComponents>
struct FromBlock {
  static constexpr int kReals = kComponents;
  const double* block;
  SA_INLINE double operator()(int component, int64_t n, int64_t k) const { return block[k + component * n]; }
};

// Doubles the components from kDirect on: shear becomes engineering shear.
template <int kComponents, int kDirect>
struct EngineeringStrain {
  static constexpr int kReals = kComponents;
  const double* block;
  SA_INLINE double operator()(int component, int64_t n, int64_t k) const {
    return (component < kDirect ? 1.0 : 2.0) * block[k + component * n];
  }
};

struct RecordArray {
  double* records;
  int64_t length;
};

// Records without a gap are written with full vectors.
template <class Points, class Source>
SA_INLINE void fill(Points point, int n, int64_t nblock, int64_t first, Source source, RecordArray out) {
  constexpr int kReals = Source::kReals;
  double* records = out.records + first * out.length;
  const auto write = [=](int64_t distance) SA_POINT {
    forPoints(n, [=](int j) SA_POINT {
      const int64_t k = point(j);
      for (int c = 0; c < kReals; ++c) records[j * distance + c] = source(c, nblock, k);
    });
  };
  if (out.length == kReals)
    write(kReals);
  else
    write(out.length);
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
