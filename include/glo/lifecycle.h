/** @file glo/lifecycle.h
 *  Lifecycle of the library, procedure names, version banner, flush.
 *  Conventions, layouts and the grammar of the argument lines: glo.h.
 */
#ifndef SHAREDANALYSIS_GLO_LIFECYCLE_H
#define SHAREDANALYSIS_GLO_LIFECYCLE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Lifecycle
 *
 * Each component keeps a use counter.  The first initialise and the last finalise act and move the caller's counter of
 * live components by one; every other call only moves the use counter.  Nothing is checked: a finalise too many leaves
 * the use counter at -1, and the next initialise then only brings it back to 0.  Call these from one thread, before the
 * first and after the last kernel.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Starts the library: the host's thirteen components in order, then glo, acd and spx, each with the same counter.
 *  @param[in,out] counter  (1), -: live components of the caller, raised by one for each component that starts
 */
void Shared_Analysis_XP_initialize(int32_t* counter);

/** Stops the library in the exact reverse order of Shared_Analysis_XP_initialize.
 *  @param[in,out] counter  (1), -: live components of the caller, lowered by one for each component that stops
 */
void Shared_Analysis_XP_finalize(int32_t* counter);

/** Starts the shared services alone.
 *  @like Shared_Analysis_XP_initialize
 */
void glo_initialize(int32_t* counter);

/** Stops the shared services alone.
 *  @like Shared_Analysis_XP_finalize
 */
void glo_finalize(int32_t* counter);

/* ---------------------------------------------------------------------------------------------------------------------
 * Frame services
 * ------------------------------------------------------------------------------------------------------------------ */

/** The host's step keyword of a procedure type, padded with blanks or cut to the length of the text.  It is the
 *  constructorCmd of the host's step class:
 *    1-7     kprC_StaticStep                 62-65       kprC_SoilsStep
 *    11, 12  kprC_ImplicitDynamicsStep       71-73       kprC_CoupledTempDisplacementStep
 *    13      kprC_SubspaceDynamicsStep       74          kprC_TempDisplacementDynamicsStep
 *    17      kprC_ExplicitDynamicsStep       75-78       kprC_CoupledThermalElectricStep
 *    21-25   kprC_ViscoStep                  81          kprC_StaticLinearPerturbationStep
 *    31-33   kprC_HeatTransferStep           85, 86      kprC_SteadyStateDirectStep
 *    34-36   kprC_MassDiffusionStep          91          kprC_ResponseSpectrumStep
 *    41, 43  kprC_FrequencyStep              92          kprC_ModalDynamicsStep
 *    42, 44  kprC_BuckleStep                 93, 95, 96  kprC_SteadyStateModalStep
 *    51      kprC_StaticRiksStep             94          kprC_RandomResponseStep
 *    61      kprC_GeostaticStep              98          kprC_AnnealStep
 *  Any other id is reported through the host's tvkerrC (severity 1) and gives "Unknown".
 *  @param[in]  procedureId  (1), -: procedure type
 *  @param[out] text         (textLength), text: keyword, padded with blanks
 *  @param[in]  textLength   (1), -: length of text, by value
 */
void GLO_GETPROCEDURETYPE(const int32_t* procedureId, char* text, int64_t textLength);

/** The host's version title and, flush right, " DATE <date>  TIME <time>".
 *  A text shorter than title and date keeps what fits, title first.
 *  @param[out] text        (textLength), text: the banner, padded with blanks
 *  @param[in]  textLength  (1), -: length of text, by value
 */
void GLO_UTI_GETVERSIONDATETIME(char* text, int64_t textLength);

/** Flushes the standard output of the process, then its standard error. */
void GLO_UTI_FLUSH(void);

#ifdef __cplusplus
}
#endif

#endif
