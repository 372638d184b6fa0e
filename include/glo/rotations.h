/** @file glo/rotations.h
 *  Quaternions and rotation of tensors.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_ROTATIONS_H
#define SHAREDANALYSIS_GLO_ROTATIONS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Quaternions
 *
 * A spatial quaternion is x y z w, the scalar last; a unit one with vector sin(angle/2) times the unit axis and scalar
 * cos(angle/2) stands for the rotation by that angle about that axis.  A plane quaternion, about axis 3, is z w.  Products
 * are Hamilton's.  Source: W. R. Hamilton, Phil. Mag. 25 (1844) 489.
 * ------------------------------------------------------------------------------------------------------------------ */

/** out = conj(a) b of one pair, not normalised: the rotation that carries orientation a to orientation b, in the frame of a.
 *  @param[out] out  (4), any: product
 *  @param[in]  a    (4), any: quaternion
 *  @param[in]  b    (4), any: quaternion
 */
void GLO_UTI_MULT3DQUAT(double* out, const double* a, const double* b);

/** The plane form of GLO_UTI_MULT3DQUAT.
 *  @param[out] out  (2), any: product
 *  @param[in]  a    (2), any: plane quaternion
 *  @param[in]  b    (2), any: plane quaternion
 */
void GLO_UTI_MULT2DQUAT(double* out, const double* a, const double* b);

/** The product of one pair that the code selects as in GLO_UTI_QUAT3DALGEBRA, not normalised.
 *  @like GLO_UTI_MULT3DQUAT
 *  @param[in]  op   (1), code 1|-1|2|-2|3: product, any other code as 1
 */
void GLO_UTI_GENMULT3DQUAT(const int32_t* op, double* out, const double* a, const double* b);

/** The plane form of GLO_UTI_GENMULT3DQUAT.
 *  @like GLO_UTI_MULT2DQUAT
 *  @param[in]  op   (1), code 1|-1|2|-2|3: product, any other code as 1
 */
void GLO_UTI_GENMULT2DQUAT(const int32_t* op, double* out, const double* a, const double* b);

/** Product of each point, of unit length: 1 a b, -1 b a, 2 conj(a) b, -2 conj(b) a, any other code as 1.  A product of length
 *  zero leaves NaN or infinity.  Products and their squares are formed unscaled: lengths of a and b whose product is beyond 1e154
 *  or below 1e-154 count as infinite or zero.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  op      (1), code 1|-1|2|-2|3: product, any other code as 1
 *  @param[out] Q       (nblock, 4), -: unit quaternions
 *  @param[in]  A       (nblock, 4), any: quaternions a
 *  @param[in]  B       (nblock, 4), any: quaternions b
 */
void GLO_UTI_QUAT3DALGEBRA(const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B);

/** The plane form of GLO_UTI_QUAT3DALGEBRA.
 *  @like GLO_UTI_QUAT3DALGEBRA
 *  @param[out] Q       (nblock, 2), -: plane unit quaternions
 *  @param[in]  A       (nblock, 2), any: plane quaternions a
 *  @param[in]  B       (nblock, 2), any: plane quaternions b
 */
void GLO_UTI_QUAT2DALGEBRA(const int32_t* nblock, const int32_t* op, double* Q, const double* A, const double* B);

/** Turns plane vectors by plane unit quaternions, or back.  W may be V.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  flag    (1), code 0|1: 0 global to the frame that the quaternion stands for, nonzero back to global
 *  @param[out] W       (nblock, 2), any: turned vectors
 *  @param[in]  Q       (nblock, 2), -: plane unit quaternions
 *  @param[in]  V       (nblock, 2), any: vectors
 */
void GLO_UTI_QUATROTVECT2D(const int32_t* nblock, const int32_t* flag, double* W, const double* Q, const double* V);

/** Rotation vectors, angle in radians times unit axis, of quaternions of any length but zero, from 4.9e-324 on.  The angle is at most pi; of a
 *  half turn the axis is that of the quaternion.  Right to a few units in the last place for every rotation, tiny ones and
 *  half turns included.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  Q       (nblock, 4), -: quaternions
 *  @param[out] R       (nblock, 3), rad: rotation vectors
 */
void GLO_UTI_ANGLESFROMQUATERNIONS(const int32_t* nblock, const double* Q, double* R);

/** The rotation that carries orientation a to orientation b, in global axes: b conj(a), of unit length and with w >= 0, so
 *  that it turns by at most half a turn.  (GLO_UTI_MULT3DQUAT gives it in the frame of a.)
 *  Products are formed unscaled: lengths of a and b whose product is beyond 1e154 or below 1e-154 are lost.
 *  @param[in]  nblock  (1), block: points
 *  @param[out] Q       (nblock, 4), -: unit quaternions of the increments
 *  @param[in]  A       (nblock, 4), -: orientations before
 *  @param[in]  B       (nblock, 4), -: orientations after
 */
void GLO_UTI_COMPROTINC(const int32_t* nblock, double* Q, const double* A, const double* B);

/** The increment of GLO_UTI_COMPROTINC as a rotation vector.
 *  @like GLO_UTI_COMPROTINC
 *  @param[out] R       (nblock, 3), rad: rotation vectors
 */
void GLO_UTI_COMPROTVEC(const int32_t* nblock, double* R, const double* A, const double* B);

/* ---------------------------------------------------------------------------------------------------------------------
 * Rotation of tensors
 *
 * Direction 0 takes tensors from global axes to the frame whose axes are the columns of R, T = R' S R; any other direction
 * takes them back, T = R S R'.  All arrays have the leading dimension ld, which may exceed the number n of points treated.
 * T may be S where both have the same storage.
 * ------------------------------------------------------------------------------------------------------------------ */

/** R = identity, in the nine columns R11 R21 R31 R12 R22 R32 R13 R23 R33.
 *  @param[in]  nblock  (1), block: points; below 1 does nothing
 *  @param[out] R       (nblock, 3, 3), -: rotation matrices, Rab in column a + 3 (b - 1): row a fastest
 */
void GLO_UTI_INITROTATIONMATRIX(const int32_t* nblock, double* R);

/** Plane tensors.
 *  @param[in]  n     (1), block: points
 *  @param[in]  ld    (1), stride: leading dimension of all arrays
 *  @param[in]  flag  (1), code 0|1: direction, any other code as 1
 *  @param[in]  R     (ld, 4), -: rotations, R11 R21 R12 R22
 *  @param[in]  S     (ld, 3), any: tensors, S21
 *  @param[out] T     (ld, 3), any: rotated tensors, S21
 */
void GLO_UTI_ROTATES21(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Plane tensors whose third component is the engineering shear, twice the tensor shear.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 3), any: tensors, 11 22 and engineering shear 12
 *  @param[out] T     (ld, 3), any: rotated tensors, likewise
 */
void GLO_UTI_ROTATES21E(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                        double* T);

/** About axis 3; component 33 is copied.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 4), any: tensors, S31
 *  @param[out] T     (ld, 4), any: rotated tensors, S31
 */
void GLO_UTI_ROTATES31(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Tensors without shear, as principal values, about axis 3.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  S     (ld, 3), any: direct components, S30
 *  @param[out] T     (ld, 4), any: rotated tensors, S31
 */
void GLO_UTI_ROTATES30S31(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                          double* T);

/** In space: T = R' S R for direction 0, T = R S R' for any other.
 *  @like GLO_UTI_ROTATES21
 *  @param[in]  R     (ld, 9), -: rotations, R11 R21 R31 R12 R22 R32 R13 R23 R33
 *  @param[in]  S     (ld, 6), any: tensors, S33: 11 22 33 12 23 13
 *  @param[out] T     (ld, 6), any: rotated tensors, S33: 11 22 33 12 23 13
 */
void GLO_UTI_ROTATES33(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                       double* T);

/** Tensors without shear, as principal values, in space: with direction 1 and the axes of GLO_UTI_PRINCS33 as R the tensor
 *  that has these values and axes.
 *  @like GLO_UTI_ROTATES33
 *  @param[in]  S     (ld, 3), any: direct components, S30: 11 22 33
 *  @param[out] T     (ld, 6), any: rotated tensors, S33: 11 22 33 12 23 13
 */
void GLO_UTI_ROTATES30S33(const int32_t* n, const int32_t* ld, const int32_t* flag, const double* R, const double* S,
                          double* T);

#ifdef __cplusplus
}
#endif

#endif
