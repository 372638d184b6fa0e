/** @file spx/user_foams.h
 *  User materials: foams, cores.
 *  Conventions, layouts and the grammar of the argument lines: glo.h; what all user materials share: spx/user_materials.h.
 */
#ifndef SHAREDANALYSIS_SPX_USER_FOAMS_H
#define SHAREDANALYSIS_SPX_USER_FOAMS_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * User materials: foams, cores
 *
 * Foams and honeycomb cores that absorb energy, behind SPX_USR_BUILTINVUMAT.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Rate-sensitive foam; this build has its checks and no model: the call ends the analysis.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_RATESENSFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                          const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                          const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                          const char* materialName, const double* coordinates, const double* characteristicLength,
                          const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                          const double* tempOld, const double* stretchOld, const double* defgradOld,
                          const double* fieldOld, const double* stressOld, const double* stateOld,
                          const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                          const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                          double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Viscous foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_VISCOUSFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                         const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                         const int32_t* annealing, const double* stepTime, const double* totalTime, const double* dt,
                         const char* materialName, const double* coordinates, const double* characteristicLength,
                         const double* props, const double* density, const double* strainInc, const double* relSpinInc,
                         const double* tempOld, const double* stretchOld, const double* defgradOld,
                         const double* fieldOld, const double* stressOld, const double* stateOld,
                         const double* enerInternOld, const double* enerInelasOld, const double* tempNew,
                         const double* stretchNew, const double* defgradNew, const double* fieldNew, double* stressNew,
                         double* stateNew, double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Fu-Chang isotropic foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_FUCHANGISOFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
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

/** Fu-Chang anisotropic foam; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_FUCHANGANISOFOAM(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                              const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops,
                              const int32_t* annealing, const double* stepTime, const double* totalTime,
                              const double* dt, const char* materialName, const double* coordinates,
                              const double* characteristicLength, const double* props, const double* density,
                              const double* strainInc, const double* relSpinInc, const double* tempOld,
                              const double* stretchOld, const double* defgradOld, const double* fieldOld,
                              const double* stressOld, const double* stateOld, const double* enerInternOld,
                              const double* enerInelasOld, const double* tempNew, const double* stretchNew,
                              const double* defgradNew, const double* fieldNew, double* stressNew, double* stateNew,
                              double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

/** Honeycomb; no model in this build, as SPX_USR_RATESENSFOAM.
 *  @like SPX_USR_BUILTINVUMAT
 */
void SPX_USR_HONEYCOMB(const int32_t* callInfo, const int32_t* nblock, const int32_t* ndir, const int32_t* nshr,
                       const int32_t* nstatev, const int32_t* nfieldv, const int32_t* nprops, const int32_t* annealing,
                       const double* stepTime, const double* totalTime, const double* dt, const char* materialName,
                       const double* coordinates, const double* characteristicLength, const double* props,
                       const double* density, const double* strainInc, const double* relSpinInc, const double* tempOld,
                       const double* stretchOld, const double* defgradOld, const double* fieldOld,
                       const double* stressOld, const double* stateOld, const double* enerInternOld,
                       const double* enerInelasOld, const double* tempNew, const double* stretchNew,
                       const double* defgradNew, const double* fieldNew, double* stressNew, double* stateNew,
                       double* enerInternNew, double* enerInelasNew, int64_t materialNameLength);

#ifdef __cplusplus
}
#endif

#endif
