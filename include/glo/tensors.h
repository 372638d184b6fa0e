/** @file glo/tensors.h
 *  Tensor storage, roots, logarithms and exponentials of tensors.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_TENSORS_H
#define SHAREDANALYSIS_GLO_TENSORS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Tensor storage
 * ------------------------------------------------------------------------------------------------------------------ */

/** Components of a tensor and of its orientation quaternion by storage code.
 *    code 100, 200: 3 1 2    300: 3 3 4    400: 1 0 0    600: 3 1 0    700: 1 1 2    900: 1 2 4    any other: 0 0 0
 *  Family 25090 gives 3 1 0 for every code but 100, 700 and 900.
 *  @param[in]  code     (1), code 100|200|300|400|600|700|900|500: storage code, any other as 500
 *  @param[in]  family   (1), code 0|25090: element family, any other as 0
 *  @param[out] ndirect  (1), -: direct components
 *  @param[out] nshear   (1), -: shear components
 *  @param[out] nquat    (1), -: quaternion components
 */
void GLO_UTI_NUMTENSORCOMP(const int32_t* code, const int32_t* family, int32_t* ndirect, int32_t* nshear,
                           int32_t* nquat);

/** Position of entry (i, j) in the upper triangle packed by columns: min + (max*max - max)/2.
 *  @param[in] i  (1), 1..9: row
 *  @param[in] j  (1), 1..9: column
 */
int32_t GLO_UTI_SQ2TRSTORAGE(const int32_t* i, const int32_t* j);

/** Kind of tensor of an output variable of an element: 8 in space (3 direct, 3 shear components), 9 plane with three direct
 *  components (3, 1), 10 plane with one or two (1 direct and any shear), 11 without shear or no tensor at all.  The counts are
 *  those of GLO_UTI_NUMTENSORCOMP for the element code; no procedure or variable changes them.
 *  @param[in] procedure  (1), unread: procedure code
 *  @param[in] element    (1), code 100|200|300|400|600|700|900|500: storage code of the element, any other as 500
 *  @param[in] variable   (1), unread: output variable code
 */
int32_t GLO_UTI_ITENSORID(const int32_t* procedure, const int32_t* element, const int32_t* variable);

/* ---------------------------------------------------------------------------------------------------------------------
 * Tensor functions
 * ------------------------------------------------------------------------------------------------------------------ */

/** Square root of symmetric tensors without negative principal values, as the left stretch V of B = F F'.
 *  V is symmetric with no negative value and V V = S: |V V - S| is below 4e-15 |S| (largest components), at every scale of S.
 *  Well-conditioned tensors (27 det S above 0.01 (tr S)^3) take a closed form of their invariants, all others principal values
 *  and directions by Jacobi rotations, at four to ten times the cost; which way a point goes depends on its own tensor alone.
 *  Source: A. Hoger, D. E. Carlson, Q. Appl. Math. 42 (1984) 113.
 *  A value that is negative by rounding (down to -1e-14 |S|) counts as 0; one further below leaves NaN in its point.
 *  V may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), any: tensors, S33
 *  @param[out] V       (nblock, 6), any: their square roots, S33
 */
void GLO_UTI_SQRTV(const int32_t* nblock, const double* S, double* V);

/** Logarithm of symmetric tensors with positive principal values, as the logarithmic strain ln V of a stretch V.
 *  Right to 4e-15 of its largest component plus what the condition of S demands, 2e-16 times the ratio of the largest to the
 *  smallest value; near the identity (direct components in 0.5 .. 2, shear below 0.25) small strains keep their digits: the
 *  error is 4e-15 of the largest component of the result.  A value that is not positive leaves NaN in its point.
 *  L may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 6), stretch: tensors, S33
 *  @param[out] L       (nblock, 6), any: their logarithms, S33
 */
void GLO_UTI_LOGV(const int32_t* nblock, const double* S, double* L);

/** Exponential of tensors without shear: of each direct component, with an error below 0.8 units in the last place.
 *  E may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 3), any: tensors, S30
 *  @param[out] E       (nblock, 3), any: their exponentials, S30
 */
void GLO_UTI_EXPS30(const int32_t* nblock, const double* S, double* E);

/** Exponential of tensors with 13 = 23 = 0.  Each plane component is right to 4e-15 of itself, times the largest magnitude of S
 *  where that is above 1, however small it is beside the others, for an S12 that is no subnormal number; one
 *  beyond the largest double is infinite and leaves the others alone.  E33 is right to 0.8 units in the last place.  E may be S.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  S       (nblock, 4), any: tensors, S31
 *  @param[out] E       (nblock, 4), any: their exponentials, S31
 */
void GLO_UTI_EXPS31(const int32_t* nblock, const double* S, double* E);

#ifdef __cplusplus
}
#endif

#endif
