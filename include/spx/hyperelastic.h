/** @file spx/hyperelastic.h
 *  Hyperelastic models in the invariants.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_HYPERELASTIC_H
#define SHAREDANALYSIS_SPX_HYPERELASTIC_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Hyperelasticity
 *
 * Strain energies U(I1, I2) of the isochoric left Cauchy-Green tensor Bbar = J^(-2/3) V V, volumetric energies of J, and any
 * model whose derivatives the caller takes.  Constants are given point by point.  The left stretch V is symmetric; components
 * that a storage does not hold are zero.  With x = I1 - 3, y = I2 - 3:
 *   POLY   polynomial of order 2    C10 x + C01 y + C20 x x + C11 x y + C02 y y         (J-1)^2/D1 + (J-1)^4/D2
 *          small strain: G = 2 (C10 + C01), K = 2/D1.  R. S. Rivlin, D. W. Saunders, Phil. Trans. R. Soc. A 243 (1951) 251
 *   POLY6  polynomial of order 6    sum of Cij x^i y^j, 1 <= i + j <= 6                 sum of (J-1)^(2i)/Di, i = 1..6
 *          coefficients by total order, then by falling power of x; C00 = 0
 *   AB     Arruda and Boyce         mu (x/2 + (I1^2-9)/(20 L) + 11 (I1^3-27)/(1050 L^2) + 19 (I1^4-81)/(7000 L^3)
 *          with L = lambdaM^2            + 519 (I1^5-243)/(673750 L^4))                 ((J^2-1)/2 - ln J)/D
 *          the series is 8 % low near the locking stretch.  E. M. Arruda, M. C. Boyce, J. Mech. Phys. Solids 41 (1993) 389
 *   VDW    Van der Waals            mu (-(lambdaM^2-3) (ln(1-eta) + eta) - (2/3) a (s/2)^(3/2))   ((J^2-1)/2 - ln J)/D
 *          s = (1-beta) I1 + beta I2 - 3, eta = sqrt(s/(lambdaM^2-3)), kept at 0.99999 beyond it; small strain: G = mu.
 *          H.-G. Kilian, Polymer 22 (1981) 209
 * The suffix names the state of stress: 3D (V in S33), GPE generalised plane strain (V in S31, the out-of-plane stretch in
 * V33), PS plane stress, UNI uniaxial.  Stress is
 *   p I + dev((2/J) [(U1 + I1 U2) Bbar - U2 Bbar Bbar]),  U1 = dU/dI1, U2 = dU/dI2, p = dUvol/dJ
 * A point with J < 1e-9 sets its flag; a flagged point has J = 1 now and in every later call that receives the flag.
 * Energies have no flag: a determinant below 2.2e-308 (inverted points too) is raised by 1.0.
 * In PS and UNI the directions without stress are closed by a pressure: what the given stretches leave there is taken off the
 * direct components, which is exact for incompressible material and where the free stretch is right.  Free stretches are
 * improved by the residual of a ...RESULT kernel and a ...CORRECTION step.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric energy and 1/J, polynomial of order 2.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  C10     (nblock), Pa: coefficient
 *  @param[in]  C01     (nblock), Pa: coefficient
 *  @param[in]  C20     (nblock), Pa: coefficient
 *  @param[in]  C11     (nblock), Pa: coefficient
 *  @param[in]  C02     (nblock), Pa: coefficient
 *  @param[out] energy  (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ      (nblock), -: 1/J
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERPOLYS33(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERPOLYS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERPOLYS31(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERPOLYS33 for principal stretches.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERPOLYS30(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                          const double* C11, const double* C02, double* energy, double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERPOLYS33
 *  @param[in]     rD1     (nblock), Pa: 1/D1
 *  @param[in]     rD2     (nblock), Pa: 1/D2
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERPOLY3DEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                            const double* C11, const double* C02, const double* rD1, const double* rD2, const double* V,
                            double* stress, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERPOLY3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERPOLY3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERPOLYGPEEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                             const double* C11, const double* C02, const double* rD1, const double* rD2,
                             const double* V, double* stress, double* flag, double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERPOLY3DEXP without its stress.
 *  @like SPX_MAT_HYPERPOLY3DEXP
 */
void SPX_MAT_HYPERPOLYMODULIEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                                const double* C11, const double* C02, const double* rD1, const double* rD2,
                                const double* V, double* flag, double* bound, double* bulk);

/** Isochoric energy and 1/J, polynomial of order 6.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  C10     (nblock), Pa: coefficient
 *  @param[in]  C01     (nblock), Pa: coefficient
 *  @param[in]  C20     (nblock), Pa: coefficient
 *  @param[in]  C11     (nblock), Pa: coefficient
 *  @param[in]  C02     (nblock), Pa: coefficient
 *  @param[in]  C30     (nblock), Pa: coefficient
 *  @param[in]  C21     (nblock), Pa: coefficient
 *  @param[in]  C12     (nblock), Pa: coefficient
 *  @param[in]  C03     (nblock), Pa: coefficient
 *  @param[in]  C40     (nblock), Pa: coefficient
 *  @param[in]  C31     (nblock), Pa: coefficient
 *  @param[in]  C22     (nblock), Pa: coefficient
 *  @param[in]  C13     (nblock), Pa: coefficient
 *  @param[in]  C04     (nblock), Pa: coefficient
 *  @param[in]  C50     (nblock), Pa: coefficient
 *  @param[in]  C41     (nblock), Pa: coefficient
 *  @param[in]  C32     (nblock), Pa: coefficient
 *  @param[in]  C23     (nblock), Pa: coefficient
 *  @param[in]  C14     (nblock), Pa: coefficient
 *  @param[in]  C05     (nblock), Pa: coefficient
 *  @param[in]  C60     (nblock), Pa: coefficient
 *  @param[in]  C51     (nblock), Pa: coefficient
 *  @param[in]  C42     (nblock), Pa: coefficient
 *  @param[in]  C33     (nblock), Pa: coefficient
 *  @param[in]  C24     (nblock), Pa: coefficient
 *  @param[in]  C15     (nblock), Pa: coefficient
 *  @param[in]  C06     (nblock), Pa: coefficient
 *  @param[out] energy  (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ      (nblock), -: 1/J
 *  @param[in]  V       (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERPOLY6S33(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** SPX_MAT_HYPERPOLY6S33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERPOLY6S31(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** SPX_MAT_HYPERPOLY6S33 for principal stretches.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERPOLY6S30(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                           const double* C11, const double* C02, const double* C30, const double* C21,
                           const double* C12, const double* C03, const double* C40, const double* C31,
                           const double* C22, const double* C13, const double* C04, const double* C50,
                           const double* C41, const double* C32, const double* C23, const double* C14,
                           const double* C05, const double* C60, const double* C51, const double* C42,
                           const double* C33, const double* C24, const double* C15, const double* C06, double* energy,
                           double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERPOLY6S33
 *  @param[in]     rD1     (nblock), Pa: 1/D1
 *  @param[in]     rD2     (nblock), Pa: 1/D2
 *  @param[in]     rD3     (nblock), Pa: 1/D3
 *  @param[in]     rD4     (nblock), Pa: 1/D4
 *  @param[in]     rD5     (nblock), Pa: 1/D5
 *  @param[in]     rD6     (nblock), Pa: 1/D6
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERPOLY63DEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                             const double* C11, const double* C02, const double* C30, const double* C21,
                             const double* C12, const double* C03, const double* C40, const double* C31,
                             const double* C22, const double* C13, const double* C04, const double* C50,
                             const double* C41, const double* C32, const double* C23, const double* C14,
                             const double* C05, const double* C60, const double* C51, const double* C42,
                             const double* C33, const double* C24, const double* C15, const double* C06,
                             const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                             const double* rD5, const double* rD6, const double* V, double* stress, double* flag,
                             double* bound, double* bulk);

/** SPX_MAT_HYPERPOLY63DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERPOLY63DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERPOLY6GPEEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                              const double* C11, const double* C02, const double* C30, const double* C21,
                              const double* C12, const double* C03, const double* C40, const double* C31,
                              const double* C22, const double* C13, const double* C04, const double* C50,
                              const double* C41, const double* C32, const double* C23, const double* C14,
                              const double* C05, const double* C60, const double* C51, const double* C42,
                              const double* C33, const double* C24, const double* C15, const double* C06,
                              const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                              const double* rD5, const double* rD6, const double* V, double* stress, double* flag,
                              double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERPOLY63DEXP without its stress.
 *  @like SPX_MAT_HYPERPOLY63DEXP
 */
void SPX_MAT_HYPERPOLY6MODULIEXP(const int32_t* nblock, const double* C10, const double* C01, const double* C20,
                                 const double* C11, const double* C02, const double* C30, const double* C21,
                                 const double* C12, const double* C03, const double* C40, const double* C31,
                                 const double* C22, const double* C13, const double* C04, const double* C50,
                                 const double* C41, const double* C32, const double* C23, const double* C14,
                                 const double* C05, const double* C60, const double* C51, const double* C42,
                                 const double* C33, const double* C24, const double* C15, const double* C06,
                                 const double* rD1, const double* rD2, const double* rD3, const double* rD4,
                                 const double* rD5, const double* rD6, const double* V, double* flag, double* bound,
                                 double* bulk);

/** Isochoric energy and 1/J, Arruda and Boyce.  The shear modulus at small strain is
 *  mu (1 + 3/(5 L) + 99/(175 L^2) + 513/(875 L^3) + 42039/(67375 L^4)).
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  mu       (nblock), Pa: shear modulus of the series
 *  @param[in]  lambdaM  (nblock), locking stretch: stretch of a chain pulled straight
 *  @param[out] energy   (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ       (nblock), -: 1/J
 *  @param[in]  V        (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERABS33(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** SPX_MAT_HYPERABS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERABS31(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** SPX_MAT_HYPERABS33 for principal stretches.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERABS30(const int32_t* nblock, const double* mu, const double* lambdaM, double* energy, double* rJ,
                        const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  @like SPX_MAT_HYPERABS33
 *  @param[in]     D       (nblock), 1/Pa: 2/K
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERAB3DEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                          const double* V, double* stress, double* flag, double* bound, double* bulk);

/** SPX_MAT_HYPERAB3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERAB3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERABGPEEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                           const double* V, double* stress, double* flag, double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERAB3DEXP without its stress.
 *  @like SPX_MAT_HYPERAB3DEXP
 */
void SPX_MAT_HYPERABMODULIEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* D,
                              const double* V, double* flag, double* bound, double* bulk);

/** Isochoric energy and 1/J, Van der Waals; beyond locking the logarithm keeps the largest eta, without a report.
 *  @param[in]  nblock   (1), block: points
 *  @param[in]  mu       (nblock), Pa: shear modulus at small strain
 *  @param[in]  lambdaM  (nblock), locking stretch: above sqrt(3)
 *  @param[in]  a        (nblock), -: global interaction
 *  @param[in]  beta     (nblock), -: part of I2 in the invariant
 *  @param[out] energy   (nblock), J/m3: isochoric strain energy per undeformed volume
 *  @param[out] rJ       (nblock), -: 1/J
 *  @param[in]  V        (nblock, 6), stretch: left stretch, S33
 */
void SPX_MAT_HYPERVDWS33(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERVDWS33 for stretches with 13 = 23 = 0.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in] V  (nblock, 4), stretch: left stretch, S31
 */
void SPX_MAT_HYPERVDWS31(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** SPX_MAT_HYPERVDWS33 for principal stretches.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in] V  (nblock, 3), stretch: principal stretches, S30
 */
void SPX_MAT_HYPERVDWS30(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                         const double* beta, double* energy, double* rJ, const double* V);

/** Cauchy stress, and two moduli for the stable increment.
 *  Where eta is above 0.99999 the block is computed with that value; then an "Error" says "The locking stretch is reached,
 *  the resulting ETA is over 0.99999, which is too close to one." and the analysis ends with code 20.  The factor 1/sqrt(s)
 *  of the second derivatives is not taken above 1/(0.99999 sqrt(lambdaM^2 - 3)): away from locking bound is a lower estimate.
 *  @like SPX_MAT_HYPERVDWS33
 *  @param[in]     D       (nblock), 1/Pa: 2/K
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 *  @param[out]    bound   (nblock), Pa: largest diagonal term of the isochoric tangent, 2 G at small strain
 *  @param[out]    bulk    (nblock), Pa: 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERVDW3DEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                           const double* beta, const double* D, const double* V, double* stress, double* flag,
                           double* bound, double* bulk);

/** SPX_MAT_HYPERVDW3DEXP in generalised plane strain; bound is the largest of 11, 22, 33, 12.
 *  @like SPX_MAT_HYPERVDW3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HYPERVDWGPEEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                            const double* beta, const double* D, const double* V, double* stress, double* flag,
                            double* bound, double* bulk);

/** The moduli of SPX_MAT_HYPERVDW3DEXP without its stress.
 *  @like SPX_MAT_HYPERVDW3DEXP
 */
void SPX_MAT_HYPERVDWMODULIEXP(const int32_t* nblock, const double* mu, const double* lambdaM, const double* a,
                               const double* beta, const double* D, const double* V, double* flag, double* bound,
                               double* bulk);

#ifdef __cplusplus
}
#endif

#endif
