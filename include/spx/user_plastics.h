/** @file spx/user_plastics.h
 *  User materials: plastics.
 *  Conventions, layouts and the grammar of the argument lines: glo.h; what all user materials share: spx/user_materials.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_PLASTICS_H
#define SHAREDANALYSIS_SPX_USER_PLASTICS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User materials: plastics
 *
 * Injection-moulded parts, behind SPX_USR_BUILTINVUMAT.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Thermoplastic, for solids, plane stress and generalised plane strain; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_THERMOPLASTIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                           const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                           const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                           const char* materialName, const double* coordinates, const double* characteristicLength,
                           const double* props, const double* density, const double* strainInc,
                           const double* relSpinInc, const double* tempOld, const double* stretchOld,
                           const double* defgradOld, const double* fieldOld, const double* stressOld,
                           const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                           const double* tempNew, const double* stretchNew, const double* defgradNew,
                           const double* fieldNew, double* stressNew, double* stateNew, double* enerInternNew,
                           double* enerInelasNew, int64_t materialNameLength);

/** Molded plastic, for solids, plane stress and generalised plane strain; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_MOLDEDPLASTIC(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                           const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                           const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                           const char* materialName, const double* coordinates, const double* characteristicLength,
                           const double* props, const double* density, const double* strainInc,
                           const double* relSpinInc, const double* tempOld, const double* stretchOld,
                           const double* defgradOld, const double* fieldOld, const double* stressOld,
                           const double* stateOld, const double* enerInternOld, const double* enerInelasOld,
                           const double* tempNew, const double* stretchNew, const double* defgradNew,
                           const double* fieldNew, double* stressNew, double* stateNew, double* enerInternNew,
                           double* enerInelasNew, int64_t materialNameLength);

#ifdef __cplusplus
}
#endif

#endif
