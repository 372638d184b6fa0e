/** @file spx/softening.h
 *  Mullins effect.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_SOFTENING_H
#define SHAREDANALYSIS_SPX_SOFTENING_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Mullins effect
 *
 * Softening on unloading below the largest energy Um of the past: eta = 1 - erf((Um - U)/(m + beta Um))/r multiplies the
 * deviatoric stress.  erf is a fit with an error below 1.2e-7 and exactly 0 at 0; m + beta Um of 0 softens nothing.
 * The mean of the three direct components, absent ones counted as zero, is never softened: in plane stress and in a uniaxial
 * state a third of the direct stress, and with it the condition of the free directions, stays as it was; a caller who wants
 * the whole stress of an incompressible material softened there multiplies it by eta.
 * Source: R. W. Ogden, D. G. Roxburgh, Proc. R. Soc. A 455 (1999) 2861.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Damage variable.  U equal to Um is on the primary path.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     r       (nblock), -: parameter r, above 1
 *  @param[in]     m       (nblock), J/m3: parameter m
 *  @param[in]     beta    (nblock), -: parameter beta
 *  @param[out]    UmNew   (nblock), J/m3: largest energy, this increment included; may be UmOld itself
 *  @param[in]     UmOld   (nblock), J/m3: largest energy of the past
 *  @param[in,out] U       (nblock), J/m3: isochoric energy; a negative one becomes 0.0
 *  @param[out]    eta     (nblock), -: damage variable, 1.0 on the primary path
 *  @param[out]    slope   (nblock), m3/J: d(eta)/dU, on the primary path that of unloading
 */
void SPX_MAT_ORMULLINS(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                       const double* UmOld, double* U, double* eta, double* slope);

/** Energy lost to damage: (erf(z) Um - d (1 - exp(-z z))/sqrt(pi))/r s/q with d = m + beta Um, z = Um/d; sqrt(pi) has ten
 *  digits.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]  Um      (nblock), J/m3: largest energy of the past
 *  @param[in]  s       (nblock), any: factor, as the volume of the point
 *  @param[in]  q       (nblock), -: divisor, as a volume ratio or a density
 *  @param[out] damage  (nblock), any: energy
 */
void SPX_MAT_MULLINSDAMAGEENER(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               const double* Um, const double* s, const double* q, double* damage);

/** Softens a stress: all but its mean is multiplied by eta.
 *  @param[in]     nblock  (1), block: points
 *  @param[in]     eta     (nblock), -: damage variable
 *  @param[in,out] stress  (nblock, 6), Pa: Cauchy stress, S33
 */
void SPX_MAT_MULLINSSTRESSDEGR3D(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of generalised plane strain.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_MULLINSSTRESSDEGRGPE(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of plane stress.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_MULLINSSTRESSDEGRPS(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_MULLINSSTRESSDEGR3D for the components of a uniaxial state.
 *  @like SPX_MAT_MULLINSSTRESSDEGR3D
 *  @param[in,out] stress  (nblock), Pa: Cauchy stress along the axis
 */
void SPX_MAT_MULLINSSTRESSDEGRUNI(const int32_t* nblock, const double* eta, double* stress);

/** SPX_MAT_ORMULLINS, then the stress of SPX_MAT_HYPER3DEXP, softened.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]     U1      (nblock), Pa: dU/dI1
 *  @param[in]     U2      (nblock), Pa: dU/dI2
 *  @param[in]     p       (nblock), Pa: volumetric stress dUvol/dJ
 *  @param[in]     V       (nblock, 6), stretch: left stretch, S33
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_MULLINS3DEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                          const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                          const double* U2, const double* p, const double* V, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in generalised plane strain.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  V       (nblock, 4), stretch: left stretch, S31
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_MULLINSGPEEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                           const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                           const double* U2, const double* p, const double* V, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in plane stress.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  V          (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in]  thickness  (nblock), axial stretch: stretch of the thickness
 *  @param[out] stress     (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_MULLINSPSEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                          const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                          const double* U2, const double* V, const double* thickness, double* stress, double* flag);

/** SPX_MAT_MULLINS3DEXP in a uniaxial state.
 *  @like SPX_MAT_MULLINS3DEXP
 *  @param[in]  axial    (nblock), axial stretch: stretch along the axis
 *  @param[in]  lateral  (nblock), axial stretch: stretch across it, the same in both directions
 *  @param[out] stress   (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_MULLINSUNIEXP(const int32_t* nblock, const double* r, const double* m, const double* beta, double* UmNew,
                           const double* UmOld, double* U, double* eta, double* slope, const double* U1,
                           const double* U2, const double* axial, const double* lateral, double* stress, double* flag);

/** Foam with softening: energy, SPX_MAT_ORMULLINS, and the stress softened but for its mean.
 *  @like SPX_MAT_ORMULLINS
 *  @param[in]     mu1     (nblock), Pa: shear modulus of term 1
 *  @param[in]     alpha1  (nblock), exponent: exponent of term 1
 *  @param[in]     mu2     (nblock), Pa: shear modulus of term 2
 *  @param[in]     alpha2  (nblock), exponent: exponent of term 2
 *  @param[in]     mu3     (nblock), Pa: shear modulus of term 3
 *  @param[in]     alpha3  (nblock), exponent: exponent of term 3
 *  @param[in]     beta1   (nblock), exponent: exponent of the volume of term 1
 *  @param[in]     beta2   (nblock), exponent: exponent of the volume of term 2
 *  @param[in]     beta3   (nblock), exponent: exponent of the volume of term 3
 *  @param[out]    U       (nblock), J/m3: energy, not below 0.0
 *  @param[in]     V       (nblock, 3), stretch: principal stretches, S30
 *  @param[in]     axes    (nblock, 3, 3), -: principal directions in columns, ordered as the stretches
 *  @param[out]    stress  (nblock, 6), Pa: Cauchy stress, S33
 *  @param[in,out] flag    (nblock), flag: volume guard, never cleared here
 */
void SPX_MAT_HFOAMMULLINS3DEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                               const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                               const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                               const double* beta3, const double* V, const double* axes, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in generalised plane strain: one of the directions is axis 3.
 *  @like SPX_MAT_HFOAMMULLINS3DEXP
 *  @param[out] stress  (nblock, 4), Pa: Cauchy stress, S31
 */
void SPX_MAT_HFOAMMULLINSGPEEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                                double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                                const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                                const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                                const double* beta3, const double* V, const double* axes, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in plane stress; the thickness is found as in SPX_MAT_HYPERFOAMPSEXP, without softening.
 *  @like SPX_MAT_HFOAMMULLINS3DEXP
 *  @param[in]     V            (nblock, 3), plane stretch: left stretch in the plane, S21
 *  @param[in,out] freeStretch  (nblock), axial stretch: thickness: where to begin, and what is found
 *  @param[out]    stress       (nblock, 3), Pa: Cauchy stress in the plane, S21
 */
void SPX_MAT_HFOAMMULLINSPSEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                               double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                               const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                               const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                               const double* beta3, const double* V, double* freeStretch, double* stress, double* flag);

/** SPX_MAT_HFOAMMULLINS3DEXP in a uniaxial state.
 *  @like SPX_MAT_HFOAMMULLINS3DEXP
 *  @param[in]     V            (nblock), axial stretch: stretch along the axis
 *  @param[in,out] freeStretch  (nblock), axial stretch: lateral: where to begin, and what is found
 *  @param[out]    stress       (nblock), Pa: axial Cauchy stress
 */
void SPX_MAT_HFOAMMULLINSUNIEXP(const int32_t* nblock, const double* r, const double* m, const double* beta,
                                double* UmNew, const double* UmOld, double* U, double* eta, double* slope,
                                const double* mu1, const double* alpha1, const double* mu2, const double* alpha2,
                                const double* mu3, const double* alpha3, const double* beta1, const double* beta2,
                                const double* beta3, const double* V, double* freeStretch, double* stress,
                                double* flag);

/** Effective moduli of softened material.  By code:
 *    100  eta modulus                     the secant: reloading at constant damage
 *    200  eta modulus + slope q           the tangent of unloading, the stiffest way
 *    300  as 200, on the primary path 100 the tangent of the present way
 *  Any other code does nothing.
 *  @param[in]  nblock     (1), block: points
 *  @param[in]  code       (1), code 100|200|300: which
 *  @param[in]  eta        (nblock), -: damage variable
 *  @param[in]  slope      (nblock), m3/J: d(eta)/dU
 *  @param[in]  q          (nblock), Pa2: J s:s of the unsoftened deviatoric stress s
 *  @param[in]  modulus    (nblock), Pa: modulus without softening, as the bound of a stress kernel
 *  @param[out] effective  (nblock), Pa: effective modulus
 */
void SPX_OPT_MULLINSEFFMOD(const int32_t* nblock, const int32_t* code, const double* eta, const double* slope,
                           const double* q, const double* modulus, double* effective);

#ifdef __cplusplus
}
#endif

#endif
