// Gathers and overwriting scatters: a line each over glo/movement/data_movement.h.
#include "glo.h"
#include "glo/movement/data_movement.h"

namespace sa {

SA_MOVE(GLO_UTI_GATHERR, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                          const double* G)) {
  gather(*nblock, *ncomp, map, L, Column{*nblock}, G, Column{*ld});
}

SA_MOVE(GLO_UTI_GATHERI, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                          int32_t* L, const int32_t* G)) {
  gather(*nblock, *ncomp, map, L, Column{*nblock}, G, Column{*ld});
}

SA_MOVE(GLO_UTI_SCATTERR, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                           const double* L, double* G)) {
  scatter<Set>(0, *nblock, *ncomp, Mapped{map}, G, Column{*ld}, Local{L, Column{*nblock}});
}

SA_MOVE(GLO_UTI_GENGATHERR, (const int32_t* nblock, const int32_t* ndim, const int32_t* ld, SA_UNREAD unused,
                             const int32_t* map, double* L, const double* G)) {
  const GeneralComponents moved(*ndim, *ld);
  gather(*nblock, moved.count, map, L, Column{*nblock}, G + moved.first, Record{*ld});
}

SA_MOVE(GLO_UTI_GENSCATTERR, (const int32_t* nblock, const int32_t* ndim, const int32_t* ld, SA_UNREAD unused,
                              const int32_t* map, const double* L, double* G)) {
  const GeneralComponents moved(*ndim, *ld);
  scatter<Set>(0, *nblock, moved.count, Mapped{map}, G + moved.first, Record{*ld}, Local{L, Column{*nblock}});
}

SA_MOVE(GLO_UTI_GENGATHER1COMP, (const int32_t* n, const int32_t* comp, const int32_t* ld, SA_UNREAD unused,
                                 const int32_t* map, double* out, const double* G)) {
  gather(*n, 1, map, out, Column{*n}, G + *comp - 1, Record{*ld});
}

SA_MOVE(GLO_UTI_MPCGATHERR, (const int32_t* n, const int32_t* ld, const int32_t* comp, SA_UNREAD unused,
                             const int32_t* map, double* out, const double* G)) {
  gather(*n, 1, map, out, Column{*n}, G + *comp - 1, Record{*ld});
}

SA_MOVE(GLO_UTI_MPCSCATTERR, (const int32_t* n, const int32_t* ld, const int32_t* comp, SA_UNREAD unused,
                              const int32_t* map, const double* in, double* G)) {
  scatter<Set>(0, *n, 1, Mapped{map}, G + *comp - 1, Record{*ld}, Local{in, Column{*n}});
}

SA_MOVE(GLO_ASM_GATHER,
        (const int32_t* n, const int32_t* ncomp, SA_UNREAD unused, double* L, const double* G, const int32_t* map)) {
  gather(*n, *ncomp, map, L, Record{*ncomp}, G, Record{*ncomp});
}

SA_MOVE(GLO_ASM_SCATTER,
        (const int32_t* n, const int32_t* ncomp, SA_UNREAD unused, const double* L, double* G, const int32_t* map)) {
  scatter<Set>(0, *n, *ncomp, Mapped{map}, G, Record{*ncomp}, Local{L, Record{*ncomp}});
}

SA_MOVE(GLO_ASM_GATHERINT, (const int32_t* n, SA_UNREAD unused, int32_t* L, const int32_t* G, const int32_t* map)) {
  gather(*n, 1, map, L, Column{*n}, G, Column{0});
}

SA_MOVE(GLO_ASM_SCATTERINT, (const int32_t* n, SA_UNREAD unused, const int32_t* L, int32_t* G, const int32_t* map)) {
  scatter<Set>(0, *n, 1, Mapped{map}, G, Column{0}, Local{L, Column{*n}});
}

SA_MOVE(GLO_ASM_INITINT, (const int32_t* n, SA_UNREAD unused, const int32_t* value, int32_t* G, const int32_t* map)) {
  scatter<Set>(0, *n, 1, Mapped{map}, G, Column{0}, Constant{*value});
}

// ---- elements of several nodes: a block of n elements of m nodes is gathered as a block of n*m points

#define SA_GATHER_NODES(name, nodes)                                                                                   \
  SA_MOVE(name, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,        \
                 const double* G)) {                                                                                   \
    if (*nblock < 1) return;                                                                                           \
    const int64_t points = int64_t{nodes} * *nblock;                                                                   \
    gather(points, *ncomp, map, L, Column{points}, G, Record{*ld});                                                    \
  }
SA_GATHER_NODES(GLO_UTI_C3D10MGATHER, 10)
SA_GATHER_NODES(GLO_UTI_C3D10MFACEGATHER, 6)
SA_GATHER_NODES(GLO_UTI_COH2DGATHERR, 4)
SA_GATHER_NODES(GLO_UTI_COH3DGATHEREXFV, 8)
SA_GATHER_NODES(GLO_UTI_ACOINFGATHERR, 4)
SA_GATHER_NODES(GLO_UTI_GENGATHERRCONTSHELL, 8)

// ---- records of which a part moves

SA_MOVE(GLO_UTI_EXFVGATHERR, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                              double* L, const double* G)) {
  gather(*nblock, *ncomp, map, L, Column{*nblock}, G, Record{*ld});
}

SA_MOVE(GLO_UTI_GATHERLASTCOMPR,
        (const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G)) {
  gather(*nblock, 1, map, L, Column{*nblock}, G + *ld - 1, Record{*ld});
}

// Rotations follow the three translations of a record.
SA_MOVE(GLO_UTI_ROTVECTGATHERR,
        (const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G)) {
  gather(*nblock, 3, map, L, Column{*nblock}, G + 3, Record{*ld});
}

#define SA_SCATTER_RECORDS(name)                                                                                       \
  SA_MOVE(name, (const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, const double* L,  \
                 double* G)) {                                                                                         \
    scatter<Set>(0, *nblock, *ncomp, Mapped{map}, G, Record{*ld}, Local{L, Column{*nblock}});                          \
  }
SA_SCATTER_RECORDS(GLO_UTI_EULINFLSCATTERR)
SA_SCATTER_RECORDS(GLO_UTI_INFLSCATTERR)
SA_SCATTER_RECORDS(GLO_UTI_EXCHSCATTERR)

// ---- members of fixed record length

#define SA_ASM_GATHER_FIXED(name, length)                                                                              \
  SA_MOVE(name, (const int32_t* n, SA_UNREAD unused, double* L, const double* G, const int32_t* map)) {                \
    gather(*n, length, map, L, Record{length}, G, Record{length});                                                     \
  }
#define SA_ASM_SCATTER_FIXED(name, length)                                                                             \
  SA_MOVE(name, (const int32_t* n, SA_UNREAD unused, const double* L, double* G, const int32_t* map)) {                \
    scatter<Set>(0, *n, length, Mapped{map}, G, Record{length}, Local{L, Record{length}});                             \
  }
// One mass of a point to every translation of its node.
#define SA_ASM_SCATTER_MASS(name, length)                                                                              \
  SA_MOVE(name, (const int32_t* n, SA_UNREAD unused, const double* L, double* G, const int32_t* map)) {                \
    scatter<Set>(0, *n, length, Mapped{map}, G, Record{length}, Local{L, Repeated{}});                                 \
  }
SA_ASM_GATHER_FIXED(GLO_ASM_GATHERMASS, 1)
SA_ASM_GATHER_FIXED(GLO_ASM_GATHERHFLUX, 1)
SA_ASM_GATHER_FIXED(GLO_ASM_GATHERNIR2NDMOM, 6)
SA_ASM_SCATTER_FIXED(GLO_ASM_SCATTERNIR2NDMOM, 6)
SA_ASM_SCATTER_MASS(GLO_ASM_SCATTERMASS1, 1)
SA_ASM_SCATTER_MASS(GLO_ASM_SCATTERMASS2, 2)
SA_ASM_SCATTER_MASS(GLO_ASM_SCATTERMASS3, 3)

} // namespace sa

#undef SA_GATHER_NODES
#undef SA_SCATTER_RECORDS
#undef SA_ASM_GATHER_FIXED
#undef SA_ASM_SCATTER_FIXED
#undef SA_ASM_SCATTER_MASS
