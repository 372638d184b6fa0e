/** @file spx/stretch_materials.h
 *  Rubber and foam by their stretches.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_STRETCH_MATERIALS_H
#define SHAREDANALYSIS_SPX_STRETCH_MATERIALS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Rubber and foam by their stretches
 *
 * Energies that are sums of powers, with three or six terms:
 *   OGDEN  sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3), l = lambda J^(-1/3), and the sum of (J-1)^(2i)/Di
 *          small strain: G = sum of mu, K = 2/D1.  R. W. Ogden, Proc. R. Soc. A 326 (1972) 565
 *   HFOAM  sum of 2 mu/alpha^2 (l1^alpha + l2^alpha + l3^alpha - 3 + (J^(-alpha beta) - 1)/beta), l = lambda
 *          small strain: G = sum of mu, K = sum of 2 mu (1/3 + beta).  B. Storakers, J. Mech. Phys. Solids 34 (1986) 125
 * A term with alpha^2/4 below 2.2e-308 vanishes; above that a small alpha nears the limit mu (sum of ln^2 l + beta ln^2 J).
 * beta = 0 gives the limit -alpha ln J.  With a negative alpha the energy of a stretch of 0 is infinite.  The rounding of the
 * bracket leaves an error of about 1e-15 mu/alpha^2 in the energy of a term with |alpha| of 1/64 and more, which counts at
 * small strains; smaller exponents have a form without it.
 * A point whose product of stretches is below 2.2e-308 sets its flag; a flagged point has J = 1 and keeps its stretches.  Its
 * derivatives are those of the unguarded energy, taken there: they count that J goes with the stretches, which its energy does
 * not.
 * Stresses in three dimensions: principal stretches and directions by GLO_UTI_EIG33V, the derivatives here, then
 * SPX_MAT_HYPERELAS3D.  PSEXP and UNIEXP find the free stretch themselves, by Newton's method in its logarithm from the one
 * that is given (from the one that keeps the volume when that is not positive), each point to its own convergence; what has not
 * converged in 20 steps is bracketed, between 1e-100 and 1e100, and bisected where Newton's method would not halve its steps.
 * A point without a solution there has NaN for its free stretch, stress and moduli.  Trial stretches set no flag.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Isochoric energy and 1/J, three terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_OGDEN(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                   const double* alpha2, const double* mu3, const double* alpha3, double* energy, double* rJ,
                   const double* V, double* flag);

/** Isochoric energy and 1/J, six terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     mu4     (nblock), Pa: shear modulus of term 4
 *  @param[in]     alpha4  (nblock), exponent: exponent of term 4
 *  @param[in]     mu5     (nblock), Pa: shear modulus of term 5
 *  @param[in]     alpha5  (nblock), exponent: exponent of term 5
 *  @param[in]     mu6     (nblock), Pa: shear modulus of term 6
 *  @param[in]     alpha6  (nblock), exponent: exponent of term 6
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_OGDEN6(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                    const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                    const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                    const double* alpha6, double* energy, double* rJ, const double* V, double* flag);

/** Energy and 1/J, three terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAM(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                   const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                   const double* beta2, const double* beta3, double* energy, double* rJ, const double* V, double* flag);

/** Energy and 1/J, six terms.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     mu4     (nblock), Pa: shear modulus of term 4
 *  @param[in]     alpha4  (nblock), exponent: exponent of term 4
 *  @param[in]     mu5     (nblock), Pa: shear modulus of term 5
 *  @param[in]     alpha5  (nblock), exponent: exponent of term 5
 *  @param[in]     mu6     (nblock), Pa: shear modulus of term 6
 *  @param[in]     alpha6  (nblock), exponent: exponent of term 6
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[in]     beta4   (nblock), exponent: exponent of the volume of term 4
 *  @param[in]     beta5   (nblock), exponent: exponent of the volume of term 5
 *  @param[in]     beta6   (nblock), exponent: exponent of the volume of term 6
 *  @param[out]    energy  (nblock), J/m3: strain energy per undeformed volume; of rubber the isochoric one
 *  @param[out]    rJ      (nblock), -: 1/J
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAM6(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                    const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                    const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                    const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                    const double* beta4, const double* beta5, const double* beta6, double* energy, double* rJ,
                    const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_OGDEN, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_OGDENDERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, double* dU,
                              const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_OGDEN, 0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_OGDENDERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, double* ddU,
                              const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_OGDEN6, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN6
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_OGDEN6DERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, double* dU, const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_OGDEN6, 0 with respect to a stretch of 0.
 *  @like SPX_MAT_OGDEN6
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_OGDEN6DERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, double* ddU, const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_HFOAM, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_HFOAMDERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                              const double* beta2, const double* beta3, double* dU, const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_HFOAM, 0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_HFOAMDERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                              const double* beta2, const double* beta3, double* ddU, const double* V, double* flag);

/** First derivatives of the energy of SPX_MAT_HFOAM6, J being the product of the stretches (of a flagged point: 1).
 *  0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] dU  (nblock, 3), Pa: dU/dlambda
 */
void SPX_MAT_HFOAM6DERIVATIVE1(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                               const double* beta4, const double* beta5, const double* beta6, double* dU,
                               const double* V, double* flag);

/** Second derivatives of the energy of SPX_MAT_HFOAM6, 0 with respect to a stretch of 0.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] ddU  (nblock, 6), Pa: d2U/dlambda dlambda: 11 22 33 12 23 13
 */
void SPX_MAT_HFOAM6DERIVATIVE2(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                               const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                               const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                               const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                               const double* beta4, const double* beta5, const double* beta6, double* ddU,
                               const double* V, double* flag);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_OGDEN
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDENPSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                           const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                           const double* rD2, const double* rD3, const double* V, double* flag, double* residual,
                           double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_OGDEN
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDENUNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                            const double* rD2, const double* rD3, const double* V, double* flag, double* residual,
                            double* slope);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_OGDEN6
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[in]  rD4       (nblock), Pa: 1/D4
 *  @param[in]  rD5       (nblock), Pa: 1/D5
 *  @param[in]  rD6       (nblock), Pa: 1/D6
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDEN6PSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                            const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                            const double* alpha6, const double* rD1, const double* rD2, const double* rD3,
                            const double* rD4, const double* rD5, const double* rD6, const double* V, double* flag,
                            double* residual, double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_OGDEN6
 *  @param[in]  rD1       (nblock), Pa: 1/D1
 *  @param[in]  rD2       (nblock), Pa: 1/D2
 *  @param[in]  rD3       (nblock), Pa: 1/D3
 *  @param[in]  rD4       (nblock), Pa: 1/D4
 *  @param[in]  rD5       (nblock), Pa: 1/D5
 *  @param[in]  rD6       (nblock), Pa: 1/D6
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_OGDEN6UNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                             const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                             const double* alpha6, const double* rD1, const double* rD2, const double* rD3,
                             const double* rD4, const double* rD5, const double* rD6, const double* V, double* flag,
                             double* residual, double* slope);

/** What is left of plane stress in direction 3, for SPX_MAT_HYPERPSCORRECTION.
 *  @like SPX_MAT_HFOAM
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_HFOAMPSRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                           const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                           const double* beta2, const double* beta3, const double* V, double* flag, double* residual,
                           double* slope);

/** What is left across the axis, stretch 1, while stretches 2 and 3 move alike, for SPX_MAT_HYPERUNICORRECTION.
 *  @like SPX_MAT_HFOAM
 *  @param[out] residual  (nblock), Pa: Kirchhoff stress in the free direction
 *  @param[out] slope     (nblock), Pa: its derivative by the logarithm of the free stretch
 */
void SPX_MAT_HFOAMUNIRESULT(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                            const double* beta2, const double* beta3, const double* V, double* flag, double* residual,
                            double* slope);

/** Plane stress: stress and moduli, with the stretch of the thickness that it takes.  The free stretch given is where the
 *  search begins and is replaced by what it finds; one that is not positive and finite, NaN too, begins at the stretch that
 *  keeps the volume.  The stress includes the volumetric energy; NaN in all results of a point says that there is none.
 *  @like SPX_MAT_OGDENPSRESULT
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 *  @param[out]    bound        (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out]    bulk         (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPEROGDENPSEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                             const double* rD2, const double* rD3, const double* V, double* freeStretch, double* flag,
                             double* stress, double* bound, double* bulk);

/** Uniaxial stress and moduli, with the lateral stretch that it takes, one for both directions; it begins and ends as in plane
 *  stress.
 *  @like SPX_MAT_OGDENPSRESULT
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 *  @param[out]    bound        (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out]    bulk         (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPEROGDENUNIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                              const double* alpha2, const double* mu3, const double* alpha3, const double* rD1,
                              const double* rD2, const double* rD3, const double* V, double* freeStretch, double* flag,
                              double* stress, double* bound, double* bulk);

/** Plane stress: stress and moduli, with the stretch of the thickness that it takes.  The free stretch given is where the
 *  search begins and is replaced by what it finds; one that is not positive and finite, NaN too, begins at the stretch that
 *  keeps the volume.  The stress includes the volumetric energy; NaN in all results of a point says that there is none.
 *  @like SPX_MAT_HFOAM
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 *  @param[out]    bound        (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out]    bulk         (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAMPSEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                            const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                            const double* beta2, const double* beta3, const double* V, double* freeStretch,
                            double* flag, double* stress, double* bound, double* bulk);

/** Uniaxial stress and moduli, with the lateral stretch that it takes, one for both directions; it begins and ends as in plane
 *  stress.
 *  @like SPX_MAT_HYPERFOAMPSEXP
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HYPERFOAMUNIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                             const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                             const double* beta2, const double* beta3, const double* V, double* freeStretch,
                             double* flag, double* stress, double* bound, double* bulk);

/** Moduli of foam for the stable increment, as SPX_MAT_HYPERELAS3D gives them.
 *  @like SPX_MAT_HFOAM
 *  @param[out] bound  (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAMMODULIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                                const double* alpha2, const double* mu3, const double* alpha3, const double* beta1,
                                const double* beta2, const double* beta3, const double* V, double* flag, double* bound,
                                double* bulk);

/** SPX_MAT_HYPERFOAMMODULIEXP, six terms.
 *  @like SPX_MAT_HFOAM6
 *  @param[out] bound  (nblock), Pa: largest term of the tangent without the mean, 4/3 G to 2 G at small strain
 *  @param[out] bulk   (nblock), Pa: 3 times the mean direct term and 3 J (p + dp/dJ), 3 K at small strain
 */
void SPX_MAT_HYPERFOAM6MODULIEXP(const int32_t* nblock, const double* mu1, const double* alpha1, const double* mu2,
                                 const double* alpha2, const double* mu3, const double* alpha3, const double* mu4,
                                 const double* alpha4, const double* mu5, const double* alpha5, const double* mu6,
                                 const double* alpha6, const double* beta1, const double* beta2, const double* beta3,
                                 const double* beta4, const double* beta5, const double* beta6, const double* V,
                                 double* flag, double* bound, double* bulk);

#ifdef __cplusplus
}
#endif

#endif
