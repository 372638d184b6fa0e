/** @file glo/output_copies.h
 *  Output of directions and strains.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_OUTPUT_COPIES_H
#define SHAREDANALYSIS_GLO_OUTPUT_COPIES_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Output of copies
 *
 * Records, lists, orientations and general output: as in the output of tensors, output_principal.h.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Directional copy of one value: it belongs to axis 1 of its frame, and is principal as it stands.  P has the values in
 *  the order given, not sorted, Q the identity (0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 1), any: values
 *  @param[in]     ldp     (1), count>=1: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY1(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY1 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY1MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1MULT2D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY1 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY1
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY1MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY1MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1MULT3D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY1EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Directional copy of two values, along axes 1 and 2 of their frame: principal as they stand.  P has the values in the
 *  order given, not sorted, Q the identity (0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 2), any: values
 *  @param[in]     ldp     (1), count>=2: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P1 P2
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY2(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY2 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY2MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2MULT2D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY2 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY2
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY2MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY2MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY2MULT3D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY2EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Directional copy of three values, along the axes of their frame, as tensors S30: principal as they stand.  P has the
 *  values in the order given, not sorted, Q the identity (0, 0, 0, 1), for values along the global axes.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 3), any: values
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    P       (ldp, *), record: values P1 P2 P3
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY3(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                         const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3 for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3ELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, const int32_t* ldq, double* P, double* Q,
                              const int32_t* last);

/** GLO_UTI_ODBDIRCOPY3 for values along the axes of plane orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     O       (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations z w
 */
void GLO_UTI_ODBDIRCOPY3MULT2D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3MULT2D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3MULT2D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3EMULT2D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBDIRCOPY3 for values along the axes of spatial orientations, which Q has then.
 *  @like GLO_UTI_ODBDIRCOPY3
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: orientations x y z w
 */
void GLO_UTI_ODBDIRCOPY3MULT3D(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                               const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBDIRCOPY3MULT3D for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY3MULT3D
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBDIRCOPY3EMULT3D(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Copy of a scalar, which has no directions, for the entries of a list.
 *  @like GLO_UTI_ODBDIRCOPY1ELSET
 *  @param[in]     nblock  (1), block: points
 */
void GLO_UTI_ODBDIRCOPYSCALARELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                   const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                   int32_t* cursor, const double* S, const int32_t* ldp, double* P,
                                   const int32_t* last);

/** GLO_UTI_ODBDIRCOPYSCALARELSET in the records of a general output.
 *  @like GLO_UTI_ODBDIRCOPY1ELSET
 *  @param[in]     nblock  (1), block: points
 */
void GLO_UTI_ODBGENDIRCPSCALARELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, double* P,
                                    const int32_t* last);

/** Strains as databases keep them: direct components as they are, tensor shear doubled to engineering shear.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 4), -: strains, S31
 *  @param[in]     ldp     (1), count>=4: length of a record of P
 *  @param[out]    P       (ldp, *), record: 11 22 33 and engineering shear 12
 */
void GLO_UTI_ODB2DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB2DSTRAIN for the entries of a list.
 *  @like GLO_UTI_ODB2DSTRAIN
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODB2DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** GLO_UTI_ODB2DSTRAIN in the records of a general output.
 *  @like GLO_UTI_ODB2DSTRAIN
 */
void GLO_UTI_ODBGEN2DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB2DSTRAINELSET in the records of a general output.
 *  @like GLO_UTI_ODB2DSTRAINELSET
 *  @param[in]     nblock  (1), block: points
 */
void GLO_UTI_ODBGEN2DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** Strains as databases keep them: direct components as they are, tensor shear doubled to engineering shear.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 6), -: strains, S33
 *  @param[in]     ldp     (1), count>=6: length of a record of P
 *  @param[out]    P       (ldp, *), record: 11 22 33 and engineering shear 12 23 13
 */
void GLO_UTI_ODB3DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB3DSTRAIN for the entries of a list.
 *  @like GLO_UTI_ODB3DSTRAIN
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODB3DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                              const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set, int32_t* cursor,
                              const double* S, const int32_t* ldp, double* P, const int32_t* last);

/** GLO_UTI_ODB3DSTRAIN in the records of a general output.
 *  @like GLO_UTI_ODB3DSTRAIN
 */
void GLO_UTI_ODBGEN3DSTRAIN(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp, double* P);

/** GLO_UTI_ODB3DSTRAINELSET in the records of a general output.
 *  @like GLO_UTI_ODB3DSTRAINELSET
 *  @param[in]     nblock  (1), block: points
 */
void GLO_UTI_ODBGEN3DSTRAINELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, double* P, const int32_t* last);

#ifdef __cplusplus
}
#endif

#endif
