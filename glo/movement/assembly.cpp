// Assembly: scatters that combine, a line each over glo/movement/data_movement.h.
#include "glo.h"
#include "glo/movement/data_movement.h"

namespace sa {

SA_KERNEL(GLO_OPE_ASSEM, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, double* G, const double* L,
                          const int32_t* map)) {
  scatter<Add>(0, *nblock, *ncomp, Mapped{map}, G, Column{*ld}, Local{L, Column{*nblock}});
}

SA_KERNEL(GLO_OPE_GENASSEM, (const int32_t* nblock, const int32_t* ndim, const int32_t* ld, SA_UNREAD unused, double* G,
                             const double* L, const int32_t* map)) {
  const GeneralComponents moved(*ndim, *ld);
  scatter<Add>(0, *nblock, moved.count, Mapped{map}, G + moved.first, Record{*ld}, Local{L, Column{*nblock}});
}

SA_MOVE(GLO_OPE_INITASSEM, (const double* value, const int32_t* nblock, const int32_t* ncomp, const int32_t* ld,
                            double* G, const int32_t* map)) {
  scatter<Set>(0, *nblock, *ncomp, Mapped{map}, G, Column{*ld}, Constant{*value});
}

SA_KERNEL(GLO_OPE_GENASSEMMAX, (const int32_t* first, const int32_t* last, SA_UNREAD unused1, const int32_t* ncomp,
                                SA_UNREAD unused2, double* G, const double* L, const int32_t* map)) {
  scatter<Max>(*first - 1, *last, *ncomp, Mapped{map}, G, Record{*ncomp}, Local{L, Record{*ncomp}});
}

SA_KERNEL(GLO_OPE_GENASSEMMIN, (const int32_t* first, const int32_t* last, SA_UNREAD unused1, SA_UNREAD unused2,
                                double* G, const double* L, const int32_t* map)) {
  scatter<Min>(*first - 1, *last, 2, Mapped{map}, G, Record{2}, Local{L, Record{2}});
}

SA_KERNEL(GLO_OPE_HGENASSEMLASTCOMP, (const int32_t* n, const int32_t* comp, SA_UNREAD unused, const int32_t* ld,
                                      double* G, const double* L, const int32_t* map)) {
  const Column columns{*ld};
  scatter<Add>(0, *n, 1, Mapped{map}, G + columns.at(0, *comp - 1), columns, Local{L, Column{*n}});
}

SA_KERNEL(GLO_OPE_HASSEM, (const int32_t* n, const int32_t* m, SA_UNREAD unused, const int32_t* ld, const int32_t* K,
                           const int32_t* map, const int32_t* map2, double* G1, double* G2, const double* L)) {
  scatter<Add>(0, *n, 1, Mapped{map}, G1, Column{0}, Local{L, Column{*n}});
  if (*n < 1) return;
  scatter<Add>(0, *m, *K, MappedTwice{map, map2}, G2, Column{*ld}, Local{L + *n, Column{*n}});
}

// ---- parts of records

// components first + 1 to first + count
#define SA_ASSEMBLE_PART(name, argument, first, count)                                                                 \
  SA_KERNEL(name, (const int32_t* nblock, argument, const int32_t* ld, SA_UNREAD unused, double* G, const double* L,   \
                   const int32_t* map)) {                                                                              \
    scatter<Add>(0, *nblock, count, Mapped{map}, G + (first), Record{*ld}, Local{L, Column{*nblock}});                 \
  }
SA_ASSEMBLE_PART(GLO_OPE_GENASSEM1, const int32_t* comp, *comp - 1, 1)
SA_ASSEMBLE_PART(GLO_OPE_GENASSEM2, SA_UNREAD comp, 0, 2)
SA_ASSEMBLE_PART(GLO_OPE_GENASSEMACOINF, SA_UNREAD comp, *ld - 1, 1)

SA_MOVE(GLO_OPE_GENASSEMINT, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, SA_UNREAD unused,
                              int32_t* G, const int32_t* L, const int32_t* map)) {
  scatter<AddWrapping>(0, *nblock, *ncomp, Mapped{map}, G, Record{*ld}, Local{L, Column{*nblock}});
}

SA_KERNEL(GLO_OPE_GENASSEMCONTSHELL, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, SA_UNREAD unused,
                                      double* G, const double* L, const int32_t* map)) {
  scatterNodes<Add>(*nblock, 8, *ncomp, map, G, Record{*ld}, L);
}

} // namespace sa

#undef SA_ASSEMBLE_PART
