/** @file glo/principal.h
 *  Principal values and directions.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_PRINCIPAL_H
#define SHAREDANALYSIS_GLO_PRINCIPAL_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Principal values and directions
 *
 * PRINCS members return each value with its unit direction: P(i,k) belongs to column k of V(i,.,.), so V turns principal
 * axes into global axes.  No member of this group sorts unless it says so: direction k is the one nearest axis k.
 * Directions are right-handed in every member that returns them, sorted ones too: V is a rotation and no reflection.
 * Members that rotate, that is all but the closed forms PRINCS31, PRINCS21, EIG31ANAL and the trigonometric EIG33ANAL, take
 * tensors of every scale from the smallest double, 4.9e-324, to the largest; a value beyond the largest double is infinite, a
 * value below 2.2e-308 is rounded once.  They end after 40 sweeps at the latest and keep what they then have; no
 * tensor is known to need more than five.
 * INDX members treat the listed points only and leave all others untouched; the arrays keep their full block layout.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Jacobi rotations in the planes (1,3), (1,2), (2,3) until every rotation of a sweep has a sine of at most 0.015.
 *  That bound is the contract: directions are right to about 2e-4 of the spread of the values, and those that one rotation
 *  finds, as in the plane of two axes, to machine precision.  Values carry the square of that error.  For values and
 *  directions to machine precision, sorted, take GLO_UTI_EIG33V.
 *  A point with a NaN or an infinity leaves NaN in all its values and directions.
 *  Source: C. G. J. Jacobi, J. reine angew. Math. 30 (1846) 51.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, unsorted
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS33(const int32_t* nblock, const double* S, double* P, double* V);

/** Same algorithm, constants and bits as GLO_UTI_PRINCS33.
 *  @like GLO_UTI_PRINCS33
 */
void GLO_UTI_PRINCS33DBL(const int32_t* nblock, const double* S, double* P, double* V);

/** GLO_UTI_PRINCS33 for listed points.
 *  @like GLO_UTI_PRINCS33
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_PRINCS33INDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P,
                          double* V);

/** Same algorithm, constants and bits as GLO_UTI_PRINCS33INDX.
 *  @like GLO_UTI_PRINCS33INDX
 */
void GLO_UTI_PRINCS33DBLINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                             double* P, double* V);

/** Closed form in the 1-2 plane: one rotation about axis 3 of at most 45 degrees.  The third value is S33, its direction
 *  axis 3.  Squares are formed unscaled: components beyond 1e154 overflow, differences below 1e-154 underflow.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] P       (nblock, 3), any: principal values
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS31(const int32_t* nblock, const double* S, double* P, double* V);

/** GLO_UTI_PRINCS31 for listed points.
 *  @like GLO_UTI_PRINCS31
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_PRINCS31INDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S, double* P,
                          double* V);

/** GLO_UTI_PRINCS31 for tensors that are plane only; V(i,a,b) = V((b-1)*2*nblock + (a-1)*nblock + i).
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S21
 *  @param[out] P       (nblock, 2), any: principal values
 *  @param[out] V       (nblock, 2, 2), -: principal directions, unit vectors in columns
 */
void GLO_UTI_PRINCS21(const int32_t* nblock, const double* S, double* P, double* V);

/** Values alone, by the trigonometric solution of the characteristic equation of the scaled deviator.
 *  The general case returns the largest value first, then the smallest, then the middle one.  Two equal values below a
 *  third come out as P1 = P2 and the larger one in P3; two equal values above a third as P2 = P3 and the smaller one in
 *  P1.  A tensor whose shear is below 1.1e-12 of its deviator returns its diagonal in place.  Values are right to about
 *  1e-15 of the largest component, or 1e-8 of it where two of them nearly meet: the cosines of the solution are right to
 *  2.5e-16, but a determinant of the deviator that is rounded moves values that nearly meet by its square root.
 *  A tensor whose components are all at most 2.2e-308 has zeros for its values.
 *  Source: O. K. Smith, Comm. ACM 4 (1961) 168.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG33ANAL(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG33ANAL for listed points.
 *  @like GLO_UTI_EIG33ANAL
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG33ANALINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                           double* P);

/** Values alone in the 1-2 plane: P1 is the one nearest axis 1, P2 the other, P3 = S33.  Squares are formed unscaled, as in
 *  GLO_UTI_PRINCS31.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG31ANAL(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG31ANAL for listed points.
 *  @like GLO_UTI_EIG31ANAL
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG31ANALINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                           double* P);

/** Values alone in increasing order, by Jacobi rotations with the same planes and the same bound as GLO_UTI_PRINCS33.
 *  Source of the rotation: J. H. Wilkinson, The Algebraic Eigenvalue Problem (1965), chapter 5, with mirrored signs.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, P1 <= P2 <= P3
 */
void GLO_UTI_EIG33VECTOR(const int32_t* nblock, const double* S, double* P);

/** Values alone in increasing order, to machine precision: errors below 1e-15 of the largest magnitude, at every scale.  Small
 *  values of tensors that are positive and nearly diagonal keep their own digits.
 *  A point with a NaN or an infinity leaves NaN.
 *  Source: J. Demmel, K. Veselic, SIAM J. Matrix Anal. Appl. 13 (1992) 1204.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] P       (nblock, 3), any: principal values, P1 <= P2 <= P3
 */
void GLO_UTI_EIG33(const int32_t* nblock, const double* S, double* P);

/** The values of GLO_UTI_EIG33 in decreasing order.
 *  @like GLO_UTI_EIG33
 *  @param[out] P       (nblock, 3), any: principal values, P1 >= P2 >= P3
 */
void GLO_UTI_EIG33S(const int32_t* nblock, const double* S, double* P);

/** The values of GLO_UTI_EIG33 with their directions: |S V - V P| is below 4e-15 of the largest magnitude, and V is
 *  orthogonal to 4e-15 and right-handed.  Equal values have any orthogonal directions in their plane.
 *  @like GLO_UTI_EIG33
 *  @param[out] V       (nblock, 3, 3), -: principal directions, unit vectors in columns
 */
void GLO_UTI_EIG33V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG33ANAL, bit for bit and in its order, with directions as accurate as those of GLO_UTI_EIG33V and
 *  right-handed in this order.  The directions of a tensor whose values count as zeros are in the order of GLO_UTI_EIG33V.
 *  @like GLO_UTI_EIG33V
 *  @param[out] P       (nblock, 3), any: principal values
 */
void GLO_UTI_EIG33ANALV(const int32_t* nblock, const double* S, double* P, double* V);

/** Tensors with 13 = 23 = 0: values, component 33 among them, in increasing order and to machine precision, with directions.
 *  @like GLO_UTI_EIG33V
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 */
void GLO_UTI_EIG31V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG31V alone.
 *  @like GLO_UTI_EIG33V
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 */
void GLO_UTI_EIG31VECTOR(const int32_t* nblock, const double* S, double* P);

/** Plane tensors: values in increasing order, to machine precision, with directions; V as GLO_UTI_PRINCS21 has it.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S21
 *  @param[out] P       (nblock, 2), any: principal values, P1 <= P2
 *  @param[out] V       (nblock, 2, 2), -: principal directions, unit vectors in columns
 */
void GLO_UTI_EIG21V(const int32_t* nblock, const double* S, double* P, double* V);

/** The values of GLO_UTI_EIG21V alone.
 *  @like GLO_UTI_EIG21V
 */
void GLO_UTI_EIG21VECTOR(const int32_t* nblock, const double* S, double* P);

/** GLO_UTI_EIG21VECTOR for listed points.
 *  @like GLO_UTI_EIG21V
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 */
void GLO_UTI_EIG21VECTORINDX(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* S,
                             double* P);

/** The values of GLO_UTI_EIG21V in decreasing order.
 *  @like GLO_UTI_EIG21V
 *  @param[out] P       (nblock, 2), any: principal values, P1 >= P2
 */
void GLO_UTI_EIG21S(const int32_t* nblock, const double* S, double* P);

/** Values lambda of A x = lambda B x in increasing order, with their directions x.  A is symmetric, B symmetric and positive
 *  definite; where it is not, the point has NaN.  Values are right to 1e-14 of the largest one, times the ratio of the
 *  largest to the smallest principal value of B.  Directions are unit vectors, orthogonal in the product with B, and
 *  right-handed: their triple product is positive.  Tensors may have any scale at which the values are normal numbers; values
 *  so large that A relative to B overflows leave NaN.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  A       (nblock, 6), any: tensors, S33
 *  @param[in]  B       (nblock, 6), stretch: positive definite tensors, S33
 *  @param[out] P       (nblock, 3), any: values, P1 <= P2 <= P3
 *  @param[out] V       (nblock, 3, 3), -: directions, unit vectors in columns
 */
void GLO_UTI_GENEIG33(const int32_t* nblock, const double* A, const double* B, double* P, double* V);

/** The values of GLO_UTI_GENEIG33 alone.
 *  @like GLO_UTI_GENEIG33
 */
void GLO_UTI_GENEIG33VECTOR(const int32_t* nblock, const double* A, const double* B, double* P);

#ifdef __cplusplus
}
#endif

#endif
