/** @file glo/assembly.h
 *  Assembly.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_ASSEMBLY_H
#define SHAREDANALYSIS_GLO_ASSEMBLY_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Assembly
 *
 * Contributions are combined in increasing point order, so that repeated entities give one result.  Global arrays stand
 * before local ones here.  Nothing synchronises.
 * ------------------------------------------------------------------------------------------------------------------ */

/** G(map(i),k) += L(i,k).
 *  @like GLO_UTI_SCATTERR
 */
void GLO_OPE_ASSEM(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, double* G, const double* L,
                   const int32_t* map);

/** Adds to the components that GLO_UTI_GENSCATTERR would overwrite: ndim 3 to components 1 to 3, ndim 2 to 1 and 2, any
 *  other ndim to the last component ld alone.
 *  @like GLO_UTI_GENSCATTERR
 */
void GLO_OPE_GENASSEM(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused, double* G,
                      const double* L, const int32_t* map);

/** G(map(i),k) = value, before contributions arrive.
 *  @like GLO_UTI_SCATTERR
 *  @param[in] value  (1), any: the value
 */
void GLO_OPE_INITASSEM(const double* value, const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, double* G,
                       const int32_t* map);

/** G(k,map(i)) = max(G(k,map(i)), L(k,i)) for the points first to last.  The global value stays only where it is strictly
 *  greater: ties and NaN take the local value.
 *  @param[in]     first    (1), first: first point
 *  @param[in]     last     (1), last: last point; below first does nothing
 *  @param[in]     unused1  (1), unread: not read
 *  @param[in]     ncomp    (1), count: length of a record
 *  @param[in]     unused2  (1), unread: not read
 *  @param[in,out] G        (ncomp, *), any: global records
 *  @param[in]     L        (ncomp, last), any: local records
 *  @param[in]     map      (last), entity of G: entity of each point
 */
void GLO_OPE_GENASSEMMAX(const int32_t* first, const int32_t* last, const int32_t* unused1, const int32_t* ncomp,
                         const int32_t* unused2, double* G, const double* L, const int32_t* map);

/** G(k,map(i)) = min(G(k,map(i)), L(k,i)) for k = 1, 2: records of exactly two components, stride 2, whatever the
 *  caller's record length.  The global value stays only where it is strictly smaller.
 *  @like GLO_OPE_GENASSEMMAX
 *  @param[in,out] G  (2, *), any: global records
 *  @param[in]     L  (2, last), any: local records
 */
void GLO_OPE_GENASSEMMIN(const int32_t* first, const int32_t* last, const int32_t* unused1, const int32_t* unused2,
                         double* G, const double* L, const int32_t* map);

/** G(map(i),comp) += L(i): one column.
 *  @param[in]     n       (1), block: points; below 1 does nothing
 *  @param[in]     comp    (1), count: column, counted from 1
 *  @param[in]     unused  (1), unread: not read
 *  @param[in]     ld      (1), rows: rows of G
 *  @param[in,out] G       (ld, comp), any: global array, columns
 *  @param[in]     L       (n), any: contributions
 *  @param[in]     map     (n), entity of G: entity of each point
 */
void GLO_OPE_HGENASSEMLASTCOMP(const int32_t* n, const int32_t* comp, const int32_t* unused, const int32_t* ld,
                               double* G, const double* L, const int32_t* map);

/** Two targets.  First G1(map(i)) += L(i,1) for all points; then, for the first m points and with r = map2(map(i)),
 *  G2(r,k) += L(i,k+1), k = 1..K.
 *  @param[in]     n       (1), block: points; below 1 does nothing
 *  @param[in]     m       (1), count: points of the second stage, at most n
 *  @param[in]     unused  (1), unread: not read
 *  @param[in]     ld      (1), rows: rows of G2
 *  @param[in]     K       (1), count: columns of G2; below 1 skips the second stage
 *  @param[in]     map     (n), entity of G1: entity of each point
 *  @param[in]     map2    (*), entity of G2: row of G2 for each entity of G1
 *  @param[in,out] G1      (*), any: first target
 *  @param[in,out] G2      (ld, K), any: second target, columns
 *  @param[in]     L       (n, K+1), any: contributions
 */
void GLO_OPE_HASSEM(const int32_t* n, const int32_t* m, const int32_t* unused, const int32_t* ld, const int32_t* K,
                    const int32_t* map, const int32_t* map2, double* G1, double* G2, const double* L);

/** Adds to one component of records: G(comp,map(i)) = G(comp,map(i)) + L(i).
 *  @param[in]     nblock  (1), block: points; below 1 does nothing
 *  @param[in]     comp    (1), 1..ld: component
 *  @param[in]     ld      (1), count>=1: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock), any: values
 *  @param[in]     map     (nblock), entity of G: entity of each point
 */
void GLO_OPE_GENASSEM1(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused, double* G,
                       const double* L, const int32_t* map);

/** Adds to the first two components of records.
 *  @like GLO_OPE_GENASSEM1
 *  @param[in]     comp    (1), unread: not read
 *  @param[in]     ld      (1), count>=2: length of a record of G
 *  @param[in]     L       (nblock, 2), any: block array
 */
void GLO_OPE_GENASSEM2(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused, double* G,
                       const double* L, const int32_t* map);

/** Adds to the last component of records, the pressure of acoustic infinite elements.
 *  @like GLO_OPE_GENASSEM1
 *  @param[in]     comp    (1), unread: not read
 */
void GLO_OPE_GENASSEMACOINF(const int32_t* nblock, const int32_t* comp, const int32_t* ld, const int32_t* unused,
                            double* G, const double* L, const int32_t* map);

/** Adds integers, modulo 2^32: G(k,map(i)) = G(k,map(i)) + L(i,k), k = 1..ncomp.
 *  @param[in]     nblock  (1), block: points; below 1 does nothing
 *  @param[in]     ncomp   (1), count: components, the first ones of a record
 *  @param[in]     ld      (1), count>=ncomp: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock, ncomp), any: block array
 *  @param[in]     map     (nblock), entity of G: entity of each point
 */
void GLO_OPE_GENASSEMINT(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* unused,
                         int32_t* G, const int32_t* L, const int32_t* map);

/** Adds the nodal values of 8-node continuum shells: G(k,map(e,I)) = G(k,map(e,I)) + L(e,I,k), element by element and node by
 *  node.
 *  @param[in]     nblock  (1), block: elements; below 1 does nothing
 *  @param[in]     ncomp   (1), count: components, the first ones of a record
 *  @param[in]     ld      (1), count>=ncomp: length of a record of G
 *  @param[in]     unused  (1), unread: not read
 *  @param[in,out] G       (ld, *), any: global records
 *  @param[in]     L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]     map     (nblock, 8), entity of G: node of each element and place
 */
void GLO_OPE_GENASSEMCONTSHELL(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* unused,
                               double* G, const double* L, const int32_t* map);

#ifdef __cplusplus
}
#endif

#endif
