/** @file spx/failure.h
 *  Ductile and shear failure.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_SPX_FAILURE_H
#define SHAREDANALYSIS_SPX_FAILURE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Ductile and shear failure
 *
 * Listed points are computed; results of the others are left alone.  Components that a state does not store are zero: BEAM
 * has 11 12, UNI 11.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Stress triaxiality, mean stress over Mises stress, positive in tension, kept within 100 either way; 100 with the sign of
 *  the mean where there is no Mises stress, 0 without stress.  Squares are formed unscaled: beyond 1e154 they overflow.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  stress  (nblock, 6), any: Cauchy stress, S33
 *  @param[out] ratio   (nblock), -: stress triaxiality, -100..100
 */
void SPX_MAT_STRESSRATIO3DEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of generalised plane strain.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 4), any: Cauchy stress, S31
 */
void SPX_MAT_STRESSRATIOGPEEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of plane stress.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 3), any: Cauchy stress, S21
 */
void SPX_MAT_STRESSRATIOPSEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of a beam.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 2), any: Cauchy stress, 11 12
 */
void SPX_MAT_STRESSRATIOBEAMEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for the stress of a bar.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] stress  (nblock), any: Cauchy stress, 11
 */
void SPX_MAT_STRESSRATIOUNIEXP(const int32_t* nblock, const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIO3DEXP for listed points.
 *  @like SPX_MAT_STRESSRATIO3DEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIO3DEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOGPEEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOGPEEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOGPEEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOPSEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOPSEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOPSEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOBEAMEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOBEAMEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOBEAMEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                    const double* stress, double* ratio);

/** SPX_MAT_STRESSRATIOUNIEXP for listed points.
 *  @like SPX_MAT_STRESSRATIOUNIEXP
 *  @param[in] count  (1), count: entries of the list; below 1 does nothing
 *  @param[in] list   (count), list: point numbers
 */
void SPX_MAT_DUCTSTRESSRATIOUNIEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, double* ratio);

/** Shear stress ratio (q + ks p)/tau with Mises stress q, pressure p and the largest shear stress tau, half the largest
 *  difference of principal stresses; 0 where tau is nothing beside the numerator.
 *  @param[in]  nblock  (1), block: points
 *  @param[in]  count   (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list    (count), list: point numbers
 *  @param[in]  stress  (nblock, 6), any: Cauchy stress, S33
 *  @param[in]  ks      (1), -: weight of the pressure
 *  @param[out] P       (nblock, 3), any: principal stresses, as GLO_UTI_EIG33ANALINDX orders them
 *  @param[out] ratio   (nblock), -: shear stress ratio
 */
void SPX_MAT_SHRSTRESSRATIO3DEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress,
                                 const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of generalised plane strain.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 4), any: Cauchy stress, S31
 */
void SPX_MAT_SHRSTRESSRATIOGPEEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of plane stress.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 3), any: Cauchy stress, S21
 */
void SPX_MAT_SHRSTRESSRATIOPSEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, const double* stress,
                                 const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of a beam.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock, 2), any: Cauchy stress, 11 12
 */
void SPX_MAT_SHRSTRESSRATIOBEAMEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                   const double* stress, const double* ks, double* P, double* ratio);

/** SPX_MAT_SHRSTRESSRATIO3DEXP for the stress of a bar.
 *  @like SPX_MAT_SHRSTRESSRATIO3DEXP
 *  @param[in] stress  (nblock), any: Cauchy stress, 11
 */
void SPX_MAT_SHRSTRESSRATIOUNIEXP(const int32_t* nblock, const int32_t* count, const int32_t* list,
                                  const double* stress, const double* ks, double* P, double* ratio);

/** Damage initiation: omega += strainIncrement/failureStrain.  A failure strain of zero gives infinity or NaN.
 *  @param[in]     nblock           (1), block: points
 *  @param[in]     count            (1), count: entries of the list; below 1 does nothing
 *  @param[in]     list             (count), list: point numbers
 *  @param[in,out] omega            (nblock), -: measure of damage initiation, 1.0 at initiation
 *  @param[in]     strainIncrement  (nblock), -: increment of equivalent plastic strain
 *  @param[in]     failureStrain    (nblock), -: strain at failure
 */
void SPX_MAT_DUCTSHRFAILUREEXP(const int32_t* nblock, const int32_t* count, const int32_t* list, double* omega,
                               const double* strainIncrement, const double* failureStrain);

/** Failure strain (d1 + d2 exp(-d3 eta)) (1 + d4 ln r) (1 + d5 t), at least 2.2e-306.  eta is positive in tension, so that a
 *  strain that falls with tension has a positive d3: the sign is the reverse of the publication's.  r is the rate times
 *  rateFactor, at least 1; t is 0 below the transition temperature, 1 above melting and linear between.
 *  The exponent -d3 eta is kept below 40.  Source: G. R. Johnson, W. H. Cook, Eng. Fract. Mech. 21 (1985) 31.
 *  @param[in]  nblock         (1), block: points
 *  @param[in]  count          (1), count: entries of the list; below 1 does nothing
 *  @param[in]  list           (count), list: point numbers
 *  @param[out] failureStrain  (nblock), -: equivalent plastic strain at failure
 *  @param[in]  rate           (nblock), 1/s: rate of equivalent plastic strain
 *  @param[in]  triaxiality    (nblock), -: mean stress over Mises stress
 *  @param[in]  temperature    (nblock), K: temperature
 *  @param[in]  d1             (1), -: constant
 *  @param[in]  d2             (1), -: constant
 *  @param[in]  d3             (1), -: constant
 *  @param[in]  d4             (1), -: constant; exactly 0.0 takes no logarithm
 *  @param[in]  d5             (1), -: constant
 *  @param[in]  melting        (1), K: melting temperature
 *  @param[in]  transition     (1), K: transition temperature
 *  @param[in]  rateFactor     (1), s: reciprocal of the reference rate
 */
void SPX_MAT_JCFAILURESTRAIN(const int32_t* nblock, const int32_t* count, const int32_t* list, double* failureStrain,
                             const double* rate, const double* triaxiality, const double* temperature, const double* d1,
                             const double* d2, const double* d3, const double* d4, const double* d5,
                             const double* melting, const double* transition, const double* rateFactor);

/** Reciprocal failure strain 1/(a + b exp(k)) without overflow: with L = ln(max(rate P8, 1)), a = P9 (1 + P12 L)(1 + P13 y),
 *  b = P10 (1 + P12 L)(1 + P13 y), k = P11 x: the law of Johnson and Cook with x the triaxiality or shear stress ratio and y
 *  the homologous temperature.  0 where a + b exp(k) is not above 2.2e-308 for a negative k.  The
 *  exponent -|k| of the exponential is kept from falling below -708.3964185322637; b = 0 gives 1/a whatever k is.
 *  @param[in]  nblock      (1), block: points
 *  @param[in]  properties  (13), -: constants; 8 reciprocal reference rate (s), 9..13 d1 d2 d3 d4 d5 of a + b exp(k)
 *  @param[in]  x           (nblock), -: stress ratio
 *  @param[in]  rate        (nblock), 1/s: rate of equivalent plastic strain
 *  @param[in]  y           (nblock), -: homologous temperature
 *  @param[out] rStrain     (nblock), -: 1/failure strain
 */
void SPX_MAT_JCSHRFAILEXP(const int32_t* nblock, const double* properties, const double* x, const double* rate,
                          const double* y, double* rStrain);

#ifdef __cplusplus
}
#endif

#endif
