/** @file glo/output_principal.h
 *  Output of principal values with their directions as quaternions.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_OUTPUT_PRINCIPAL_H
#define SHAREDANALYSIS_GLO_OUTPUT_PRINCIPAL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Output of tensors
 *
 * Records for a results database: P holds values, Q the unit quaternion of their directions; record k starts at
 * P((k-1)*ldp + 1) and Q((k-1)*ldq + 1).  What a record holds besides is left alone, so P and Q may be parts of one array of
 * longer records.  A quaternion turns the global axes into the principal ones: rotated by it, axis k is the direction of value
 * k.  In space it is x y z w, in the plane z w (rotations.h), of unit length and either sign.
 *
 * Members without a list write every point.  The cursor is the record of the block's first point and moves on by nblock.
 *
 * ELSET and EMULT members write the entries of a sorted list that lie in the block.  Entry e is point
 * e - (blockNumber - 1) blockSize - (groupNumber - 1) groupSize; its record has the number of its position in the list.  The
 * walk begins at the cursor, passes over entries below point 1, and ends with the last position or with the first entry that
 * lies beyond the block; the cursor is left at that entry, for the block that holds it.
 *
 * MULT and EMULT members take tensors in the axes of an orientation o of each point, a unit quaternion that turns the global
 * axes into them.  With q from those axes to the principal ones the record has o q, formed as MULT(conj(o), q) by
 * GLO_UTI_MULT3DQUAT, in the plane GLO_UTI_MULT2DQUAT: it turns the global axes into the principal ones, as everywhere.
 *
 * GEN members are the same routines, to the bit, for a general output whose records hold the values and the quaternion one
 * behind the other: one array R (n, *), n at least the reals of both, with P = R, Q = R + the number of values, and
 * ldp = ldq = n.  The other members may be called so as well, and GEN members with two arrays: ldp and ldq are lengths of
 * whole records, and nothing is written between the parts.  Two parts that overlap in a record are the caller's fault.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Principal values P1 >= P2 of plane tensors with their directions, by the closed form of GLO_UTI_PRINCS21, unscaled as
 *  there: it squares components, so that those beyond 1e154 leave no directions.  Equal values keep the order of the axes
 *  that they lie next to.  Exchanged values have their directions exchanged and the first of them reversed, so that the
 *  matrix R of the directions stays a rotation.  With t = 1 + R11 + R22
 *    where t >= 1:  w = sqrt(t + 1)/2,            z = (R21 - R12)/(4 w)
 *    elsewhere:     z = sqrt((1 - t)/4 + 1/2),    w = (R21 - R12)/(4 z)
 *  @param[in]     nblock  (1), block: points
 *  @param[in,out] cursor  (1), cursor: record of the first point, from 1
 *  @param[in]     S       (nblock, 3), any: tensors, S21
 *  @param[in]     ldp     (1), count>=2: length of a record of P
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    P       (ldp, *), record: principal values P1 P2
 *  @param[out]    Q       (ldq, *), record: rotations z w
 */
void GLO_UTI_ODBPRINC21QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBPRINC21QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC21QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC21QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values P1 >= P2 of plane tensors with 22 = 0, as GLO_UTI_ODBPRINC21QUAT but for two departures.  Where t is
 *  below 1, that is where the values are exchanged and R11 is negative, the vector part is stored as its square and the
 *  scalar part has a sum: z = (1 - t)/4 + 1/2, w = (R21 + R12)/(4 z), which is 0.  That is no unit quaternion; databases
 *  hold these numbers and readers know them.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 2), any: tensors, 11 12
 */
void GLO_UTI_ODBPRINC11QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC11QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     S            (nblock, 2), any: tensors, 11 12
 */
void GLO_UTI_ODBPRINC11QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC11QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC11QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC11QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC11QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     S            (nblock, 2), any: tensors, 11 12
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC11QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values of tensors with 13 = 23 = 0: P1 >= P2 in the plane as GLO_UTI_ODBPRINC21QUAT, then component 33,
 *  whatever its size.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 4), any: tensors, S31
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[out]    P       (ldp, *), record: principal values P1 P2 and S33
 */
void GLO_UTI_ODBPRINC31QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     S            (nblock, 4), any: tensors, S31
 *  @param[in]     ldp          (1), count>=3: length of a record of P
 *  @param[out]    P            (ldp, *), record: principal values P1 P2 and S33
 */
void GLO_UTI_ODBPRINC31QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC31QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBPRINC31QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC31QUATELSET
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     O            (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: rotations z w
 */
void GLO_UTI_ODBPRINC31QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** Principal values P1 >= P2 >= P3 with their directions, to machine precision as GLO_UTI_EIG33V; equal values keep the
 *  order of the axes that they lie next to.  Exchanged values have their directions exchanged and one of them reversed,
 *  so that the three stay right-handed.  The quaternion is found from its largest component and right for every rotation,
 *  half turns included.  A tensor that is not finite leaves NaN in its own record.
 *  @like GLO_UTI_ODBPRINC21QUAT
 *  @param[in]     S       (nblock, 6), any: tensors, S33
 *  @param[in]     ldp     (1), count>=3: length of a record of P
 *  @param[in]     ldq     (1), count>=4: length of a record of Q
 *  @param[out]    P       (ldp, *), record: principal values P1 P2 P3
 *  @param[out]    Q       (ldq, *), record: rotations x y z w
 */
void GLO_UTI_ODBPRINC33QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                            const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUAT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC33QUAT
 *  @param[in]     blockNumber  (1), place: number of the block, from 1
 *  @param[in]     blockSize    (1), place: points of a block
 *  @param[in]     groupNumber  (1), place: number of the group of blocks, from 1
 *  @param[in]     groupSize    (1), place: points of a group
 *  @param[in]     set          (last), set: entity numbers, in increasing order
 *  @param[in,out] cursor       (1), cursor: next position of the list, from 1
 *  @param[in]     last         (1), count: last position of the list to be treated
 */
void GLO_UTI_ODBPRINC33QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                 double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUAT for tensors in the axes of orientations.
 *  @like GLO_UTI_ODBPRINC33QUAT
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBPRINC33QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATMULT for the entries of a list.
 *  @like GLO_UTI_ODBPRINC33QUATELSET
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     O            (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBPRINC33QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                 const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                 int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                 const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUAT
 */
void GLO_UTI_ODBGENPRINC21QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 */
void GLO_UTI_ODBGENPRINC21QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC21QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATMULT
 */
void GLO_UTI_ODBGENPRINC21QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC21QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC21QUATELSET
 *  @param[in]     O            (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBGENPRINC21QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUAT
 */
void GLO_UTI_ODBGENPRINC31QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUATELSET
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: rotations z w
 */
void GLO_UTI_ODBGENPRINC31QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC31QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUAT
 *  @param[in]     O       (nblock, 2), -: orientations z w
 */
void GLO_UTI_ODBGENPRINC31QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC31QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC31QUATELSET
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     O            (nblock, 2), -: orientations z w
 *  @param[in]     ldq     (1), count>=2: length of a record of Q
 *  @param[out]    Q       (ldq, *), record: rotations z w
 */
void GLO_UTI_ODBGENPRINC31QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUAT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUAT
 */
void GLO_UTI_ODBGENPRINC33QUAT(const int32_t* nblock, int32_t* cursor, const double* S, const int32_t* ldp,
                               const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATELSET in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUATELSET
 *  @param[in]     nblock  (1), block: points
 */
void GLO_UTI_ODBGENPRINC33QUATELSET(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const int32_t* ldp, const int32_t* ldq, double* P,
                                    double* Q, const int32_t* last);

/** GLO_UTI_ODBPRINC33QUATMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUAT
 *  @param[in]     O       (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBGENPRINC33QUATMULT(const int32_t* nblock, int32_t* cursor, const double* S, const double* O,
                                   const int32_t* ldp, const int32_t* ldq, double* P, double* Q);

/** GLO_UTI_ODBPRINC33QUATEMULT in the records of a general output.
 *  @like GLO_UTI_ODBPRINC33QUATELSET
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     O            (nblock, 4), -: orientations x y z w
 */
void GLO_UTI_ODBGENPRINC33QUATEMULT(const int32_t* nblock, const int32_t* blockNumber, const int32_t* blockSize,
                                    const int32_t* groupNumber, const int32_t* groupSize, const int32_t* set,
                                    int32_t* cursor, const double* S, const double* O, const int32_t* ldp,
                                    const int32_t* ldq, double* P, double* Q, const int32_t* last);

#ifdef __cplusplus
}
#endif

#endif
