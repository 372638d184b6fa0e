/** @file glo/movement.h
 *  Gather and scatter.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_MOVEMENT_H
#define SHAREDANALYSIS_GLO_MOVEMENT_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Gather and scatter
 *
 * A map names for each point the entity, counted from 1, whose record it uses; entries may repeat.  Points are taken in
 * increasing order: an overwriting scatter leaves the last point's values.  Maps are not checked against the arrays.
 * Nothing synchronises: two calls that write shared entities must not run at once.
 * Orders of arguments differ from member to member; they are kept as hosts know them.
 * ------------------------------------------------------------------------------------------------------------------ */

/** L(i,k) = G(map(i),k).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components; below 1 does nothing
 *  @param[in]  ld      (1), rows: rows of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ncomp), any: block array
 *  @param[in]  G       (ld, ncomp), any: global array, columns
 */
void GLO_UTI_GATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                     const double* G);

/** GLO_UTI_GATHERR for integers.
 *  @like GLO_UTI_GATHERR
 */
void GLO_UTI_GATHERI(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, int32_t* L,
                     const int32_t* G);

/** G(map(i),k) = L(i,k).
 *  @like GLO_UTI_GATHERR
 *  @param[in]     L  (nblock, ncomp), any: block array
 *  @param[in,out] G  (ld, ncomp), any: global array, columns
 */
void GLO_UTI_SCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                      const double* L, double* G);

/** From records: ndim 3 gathers components 1 to 3, ndim 2 components 1 and 2, any other ndim the one component ld, the
 *  last of the record (then L has one component).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ndim    (1), code 1|2|3: components moved, any other as 1
 *  @param[in]  ld      (1), count>=ndim: length of a record of G; 2 is enough for ndim 2, and 1 where one component is moved
 *  @param[in]  unused  (1), unread: not read
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ndim), any: block array
 *  @param[in]  G       (ld, *), any: global array, records
 */
void GLO_UTI_GENGATHERR(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused,
                        const int32_t* map, double* L, const double* G);

/** The copy of GLO_UTI_GENGATHERR reversed: records are overwritten, in the components that ndim names.
 *  @like GLO_UTI_GENGATHERR
 *  @param[in]     L  (nblock, ndim), any: block array
 *  @param[in,out] G  (ld, *), any: global array, records
 */
void GLO_UTI_GENSCATTERR(const int32_t* nblock, const int32_t* ndim, const int32_t* ld, const int32_t* unused,
                         const int32_t* map, const double* L, double* G);

/** out(i) = G(comp,map(i)): one component of each record.  The component stands before the record length here.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  comp    (1), 1..ld: component
 *  @param[in]  ld      (1), count: length of a record of G
 *  @param[in]  unused  (1), unread: not read
 *  @param[in]  map     (n), entity of G: entity of each point
 *  @param[out] out     (n), any: gathered values
 *  @param[in]  G       (ld, *), any: global array, records
 */
void GLO_UTI_GENGATHER1COMP(const int32_t* n, const int32_t* comp, const int32_t* ld, const int32_t* unused,
                            const int32_t* map, double* out, const double* G);

/** As GLO_UTI_GENGATHER1COMP, for multi-point constraints: the record length stands before the component.
 *  @like GLO_UTI_GENGATHER1COMP
 */
void GLO_UTI_MPCGATHERR(const int32_t* n, const int32_t* ld, const int32_t* comp, const int32_t* unused,
                        const int32_t* map, double* out, const double* G);

/** G(comp,map(i)) = in(i), the reverse of GLO_UTI_MPCGATHERR.
 *  @like GLO_UTI_GENGATHER1COMP
 *  @param[in]     in  (n), any: values
 *  @param[in,out] G   (ld, *), any: global array, records
 */
void GLO_UTI_MPCSCATTERR(const int32_t* n, const int32_t* ld, const int32_t* comp, const int32_t* unused,
                         const int32_t* map, const double* in, double* G);

/** L(k,i) = G(k,map(i)): whole records to records.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: length of a record; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (ncomp, n), any: local records
 *  @param[in]  G       (ncomp, *), any: global records
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHER(const int32_t* n, const int32_t* ncomp, const int32_t* unused, double* L, const double* G,
                    const int32_t* map);

/** G(k,map(i)) = L(k,i): whole records overwritten.
 *  @like GLO_ASM_GATHER
 *  @param[in]     L  (ncomp, n), any: local records
 *  @param[in,out] G  (ncomp, *), any: global records
 */
void GLO_ASM_SCATTER(const int32_t* n, const int32_t* ncomp, const int32_t* unused, const double* L, double* G,
                     const int32_t* map);

/** L(i) = G(map(i)), one integer for each entity.
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (n), any: local values
 *  @param[in]  G       (*), any: global values
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHERINT(const int32_t* n, const int32_t* unused, int32_t* L, const int32_t* G, const int32_t* map);

/** G(map(i)) = L(i), one integer for each entity.
 *  @like GLO_ASM_GATHERINT
 *  @param[in]     L  (n), any: local values
 *  @param[in,out] G  (*), any: global values
 */
void GLO_ASM_SCATTERINT(const int32_t* n, const int32_t* unused, const int32_t* L, int32_t* G, const int32_t* map);

/** G(map(i)) = value for the listed entities.
 *  @like GLO_ASM_GATHERINT
 *  @param[in]     value  (1), any: the value
 *  @param[in,out] G      (*), any: global values
 */
void GLO_ASM_INITINT(const int32_t* n, const int32_t* unused, const int32_t* value, int32_t* G, const int32_t* map);

/** Nodal records of 10-node tetrahedra: L(e,I,k) = G(k,map(e,I)).
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 10), entity of G: node of each element and place
 *  @param[out] L       (nblock, 10, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_C3D10MGATHER(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                          const double* G);

/** Nodal records of 6-node faces of such tetrahedra.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 6), entity of G: node of each element and place
 *  @param[out] L       (nblock, 6, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_C3D10MFACEGATHER(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                              double* L, const double* G);

/** Nodal records of 4-node cohesive elements in the plane.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 4), entity of G: node of each element and place
 *  @param[out] L       (nblock, 4, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_COH2DGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                          const double* G);

/** Nodal field variables of 8-node cohesive elements in space.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 8), entity of G: node of each element and place
 *  @param[out] L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_COH3DGATHEREXFV(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             double* L, const double* G);

/** Nodal records of 4-node acoustic infinite elements.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 4), entity of G: node of each element and place
 *  @param[out] L       (nblock, 4, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_ACOINFGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                           double* L, const double* G);

/** Nodal records of 8-node continuum shells.
 *  @param[in]  nblock  (1), block: elements; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock, 8), entity of G: node of each element and place
 *  @param[out] L       (nblock, 8, ncomp), any: values of the elements' nodes
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_GENGATHERRCONTSHELL(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                                 double* L, const double* G);

/** Field variables of points: L(i,k) = G(k,map(i)), k = 1..ncomp.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ncomp   (1), count: components moved, the first ones of a record
 *  @param[in]  ld      (1), count>=ncomp: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, ncomp), any: block array
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_EXFVGATHERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map, double* L,
                         const double* G);

/** The last component of records: L(i) = G(ld,map(i)).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ld      (1), count>=1: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock), any: values
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_GATHERLASTCOMPR(const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G);

/** Rotations, components 4 to 6 of records that begin with three translations: L(i,k) = G(k+3,map(i)).
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[in]  ld      (1), count>=6: length of a record of G
 *  @param[in]  map     (nblock), entity of G: entity of each point
 *  @param[out] L       (nblock, 3), any: rotations
 *  @param[in]  G       (ld, *), any: global records
 */
void GLO_UTI_ROTVECTGATHERR(const int32_t* nblock, const int32_t* ld, const int32_t* map, double* L, const double* G);

/** Inflow values to records: G(k,map(i)) = L(i,k), k = 1..ncomp; of repeated entities the last point's stay.
 *  @like GLO_UTI_EXFVGATHERR
 *  @param[in]     L  (nblock, ncomp), any: block array
 *  @param[in,out] G  (ld, *), any: global records
 */
void GLO_UTI_INFLSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                          const double* L, double* G);

/** GLO_UTI_INFLSCATTERR for the inflow of Eulerian meshes.
 *  @like GLO_UTI_INFLSCATTERR
 */
void GLO_UTI_EULINFLSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                             const double* L, double* G);

/** GLO_UTI_INFLSCATTERR for values of exchange.
 *  @like GLO_UTI_INFLSCATTERR
 */
void GLO_UTI_EXCHSCATTERR(const int32_t* nblock, const int32_t* ncomp, const int32_t* ld, const int32_t* map,
                          const double* L, double* G);

/** Masses: L(i) = G(map(i)).
 *  @param[in]  n       (1), block: points; below 1 does nothing
 *  @param[in]  unused  (1), unread: not read
 *  @param[out] L       (n), any: values
 *  @param[in]  G       (*), any: one value for each entity
 *  @param[in]  map     (n), entity of G: entity of each point
 */
void GLO_ASM_GATHERMASS(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Heat fluxes: L(i) = G(map(i)).
 *  @like GLO_ASM_GATHERMASS
 */
void GLO_ASM_GATHERHFLUX(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Second moments of rotary inertia: L(k,i) = G(k,map(i)), k = 1..6.
 *  @like GLO_ASM_GATHERMASS
 *  @param[out] L       (6, n), any: local records
 *  @param[in]  G       (6, *), any: global records
 */
void GLO_ASM_GATHERNIR2NDMOM(const int32_t* n, const int32_t* unused, double* L, const double* G, const int32_t* map);

/** Second moments back: G(k,map(i)) = L(k,i), k = 1..6.
 *  @like GLO_ASM_GATHERNIR2NDMOM
 *  @param[in]     L  (6, n), any: local records
 *  @param[in,out] G  (6, *), any: global records
 */
void GLO_ASM_SCATTERNIR2NDMOM(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with one translation: G(1,map(i)) = L(i).
 *  @like GLO_ASM_GATHERMASS
 *  @param[in]     L  (n), any: one mass for each point
 *  @param[in,out] G  (1, *), any: global records
 */
void GLO_ASM_SCATTERMASS1(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with two translations: G(k,map(i)) = L(i), k = 1, 2.
 *  @like GLO_ASM_SCATTERMASS1
 *  @param[in,out] G  (2, *), any: global records
 */
void GLO_ASM_SCATTERMASS2(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

/** Masses to nodes with three translations: G(k,map(i)) = L(i), k = 1, 2, 3.
 *  @like GLO_ASM_SCATTERMASS1
 *  @param[in,out] G  (3, *), any: global records
 */
void GLO_ASM_SCATTERMASS3(const int32_t* n, const int32_t* unused, const double* L, double* G, const int32_t* map);

#ifdef __cplusplus
}
#endif

#endif
