/** @file glo/linear.h
 *  Determinants and linear systems of order three.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_LINEAR_H
#define SHAREDANALYSIS_GLO_LINEAR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Determinants and linear systems
 *
 * Matrices A (nblock, 3, 3) have the row fastest: A(i,a,b) = A((b-1)*3*nblock + (a-1)*nblock + i).  Rows are scaled by their
 * largest coefficient before pivots are compared; a system whose pivot falls below 9e-16 of its scaled rows, or with a
 * row whose coefficients are all at most 2.2e-308, is singular: its
 * flag is 1.0 and its results are 0.0.  A matrix with a NaN or an infinity has the flag 1.0 and NaN in all its results.
 * Solutions of others are those of Gaussian elimination with row pivoting: A x differs from b by a few roundings of |A| |x|.
 * Determinants are sums of products as they stand: a product of components beyond 1e308 overflows, one below 1e-308 vanishes.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Determinants of symmetric tensors.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] det     (nblock), any: determinants
 */
void GLO_UTI_DET33(const int32_t* nblock, const double* S, double* det);

/** Determinants of symmetric tensors with 13 = 23 = 0.
 *  @like GLO_UTI_DET33
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 */
void GLO_UTI_DET31(const int32_t* nblock, const double* S, double* det);

/** B = the inverse of A.
 *  @param[in]  nblock    (1), block: points
 *  @param[in]  A         (nblock, 3, 3), any: matrices
 *  @param[out] B         (nblock, 3, 3), any: inverses, 0.0 where the matrix is singular
 *  @param[out] singular  (nblock), flag: 1.0 where the matrix is singular or not finite
 */
void GLO_UTI_INVERSER(const int32_t* nblock, const double* A, double* B, double* singular);

/** Solves A x = b.  x may be b.
 *  @param[in]  nblock    (1), block: points
 *  @param[in]  A         (nblock, 3, 3), any: matrices
 *  @param[in]  b         (nblock, 3), any: right-hand sides
 *  @param[out] x         (nblock, 3), any: solutions, 0.0 where the matrix is singular
 *  @param[out] singular  (nblock), flag: 1.0 where the matrix is singular or not finite
 */
void GLO_UTI_VSOLVE(const int32_t* nblock, const double* A, const double* b, double* x, double* singular);

/** The same; reals have double length in both.  x may be b.
 *  @like GLO_UTI_VSOLVE
 */
void GLO_UTI_VSOLVEDBL(const int32_t* nblock, const double* A, const double* b, double* x, double* singular);

#ifdef __cplusplus
}
#endif

#endif
