/** @file host_services.h
 *  The services with C linkage that SharedAnalysis expects of the analysis host that loads it.
 *
 *  Upper-case services take every argument by reference, except the lengths of texts, which come last as 64-bit integers.
 *  Texts then have a fixed length, may be padded with blanks and end with no zero.  Lower-case services take integers by
 *  value and zero-terminated texts.  A service that several solver threads call at once is marked "any thread"; the others
 *  are called from one thread.  No service throws.
 */
#ifndef SHAREDANALYSIS_HOST_SERVICES_H
#define SHAREDANALYSIS_HOST_SERVICES_H

#include "host_service.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------------------------------
 * Message output, any thread
 * ------------------------------------------------------------------------------------------------------------------ */

/** Writes one line to a channel: -6 is the message file, -7 the second channel; other numbers are the caller's own.
 *  Lines of one message carry the same thread and message number.  `width` is the line width that the text was broken for
 *  (79); a record that is not broken may hold up to 1000 characters.  A blank line arrives as a single blank. */
SA_HOST_SERVICE void LFC_XUT_XPLMSGC(const char* line, const int32_t* unit, const int32_t* width, const int32_t* thread,
                                     const int32_t* message, int64_t lineLength);

/** LFC_XUT_XPLMSGC for callers with plain values.  The line also ends with a zero, which lineLength does not count. */
SA_HOST_SERVICE void lfc_xut_xplmsgC_c(const char* line, int32_t unit, int32_t width, int32_t thread, int32_t message,
                                       int64_t lineLength);

/** Brings a channel up to date. */
SA_HOST_SERVICE void LFC_XUT_XPLMSGFLUSH(const int32_t* unit);

/** Sends a record to the status channel.  The receiver substitutes the arguments for the placeholders of `text`
 *  (message_template.h); arrays of which no placeholder speaks may be null.  `identity` holds thread and message number.
 *  Diagnostics send the text "message=%s", which means the same as "message=%S": a finished text as the one string, of any
 *  length. */
SA_HOST_SERVICE void IPM_MESSAGE(const char* type, const char* text, const int32_t* ints, const double* reals,
                                 const char* strings, const int32_t* identity, int64_t typeLength, int64_t textLength,
                                 int64_t stringLength);

/** IPM_MESSAGE for zero-terminated texts. */
SA_HOST_SERVICE void ipm_message_c(const char* type, const char* text, const int32_t* ints, const double* reals,
                                   const char* const* strings, const int32_t* identity);

/** Reports an internal error, with placeholders as above.  The library gives severity 1 and goes on. */
SA_HOST_SERVICE void tvkerrC(int32_t severity, const char* text, const int32_t* ints, const double* reals,
                             const char* const* strings);

/** The number of the calling thread. */
SA_HOST_SERVICE int32_t DSM_KER_THREADID(void);

/** A fresh message number of the calling thread. */
SA_HOST_SERVICE int32_t DSM_KER_MESSAGEID(void);

/** The message number that the calling thread received last. */
SA_HOST_SERVICE int32_t DSM_KER_LASTMESSAGEID(void);

/** Reports the error for which LFC_XUT_ABORT follows. */
SA_HOST_SERVICE void LFC_XUT_ERRMSG(const char* text, int64_t textLength);

/** Aborts the analysis.  It may return: the caller then leaves its results invalid and goes on. */
SA_HOST_SERVICE void LFC_XUT_ABORT(void);

/* ---------------------------------------------------------------------------------------------------------------------
 * End of the analysis, any thread: an error that ends it may be found by several at once
 * ------------------------------------------------------------------------------------------------------------------ */

/** The rank of this process, 0 where there is but one. */
SA_HOST_SERVICE int32_t DMPC_GETRANK(void);

/** Nonzero once an external kill signal has arrived. */
SA_HOST_SERVICE int32_t ELI_GETKILLSIGNAL(void);

/** Receives the status of the job on rank 0: 0 unknown, 1 completed, 2 aborted, 3 interrupted. */
SA_HOST_SERVICE void DXT_SETJOBSTATUS_XPL(const int32_t* status);

/** Ends the communication between processes: 1 after an error of this process, -1 after one of another. */
SA_HOST_SERVICE void DMPC_TERMINATECOMM(const int32_t* code);

/* ---------------------------------------------------------------------------------------------------------------------
 * Model queries, any thread
 * ------------------------------------------------------------------------------------------------------------------ */

/** An integer variable of the model.  Variable 1: whether the model is organised in part instances (1) or not (0). */
SA_HOST_SERVICE int32_t DSM_VAR_GETI(const int32_t* variable);
#define SA_HOST_VARIABLE_HAS_INSTANCES 1

/** Instance name, padded with blanks or cut to instanceLength (the library gives 80), and element number in the instance of an
 *  internal element number.  The name comes back blank when there is none for this element. */
SA_HOST_SERVICE void INPM_GETPARTINFOI(const int32_t* internalElement, char* instance, int32_t* localElement,
                                       int64_t instanceLength);

/* ---------------------------------------------------------------------------------------------------------------------
 * Counter blocks: the only data of the interface.  A host may lack them; then nothing is counted.
 *
 * Every thread that reports counts, by atomic additions.  A host that reads or sets a counter while threads report does so
 * atomically too (std::atomic_ref, __atomic_load_n); when no thread is inside the library, plain access will do.
 * ------------------------------------------------------------------------------------------------------------------ */

/** Warnings: 1 problems of the solver at nodes, 2 at elements. */
extern SA_HOST_SERVICE int32_t CWARN[] __attribute__((weak));

/** Lines of the output: 17 warnings, 19 errors. */
extern SA_HOST_SERVICE int32_t CLINES[] __attribute__((weak));

/* ---------------------------------------------------------------------------------------------------------------------
 * Counted start and stop
 *
 * Each component counts its uses.  The first initialise starts it and raises the counter by one, the last finalise stops it
 * and lowers the counter by one.
 * ------------------------------------------------------------------------------------------------------------------ */

/** X(component) for each host component, in the order in which they are started. */
#define SA_HOST_COMPONENTS(X)                                                                                          \
  X(QRLBasCoreUtils)                                                                                                   \
  X(QRLAbuBasicUtils)                                                                                                  \
  X(UTI_CaeUtils)                                                                                                      \
  X(DDB_Communications)                                                                                                \
  X(UTI_RfmInterface)                                                                                                  \
  X(DDB_ROM)                                                                                                           \
  X(DDB_DiagnosticExtractor)                                                                                           \
  X(UTI_DMP_Core)                                                                                                      \
  X(DDB_AnalysisSupport)                                                                                               \
  X(DDB_CoreGeometry)                                                                                                  \
  X(DDB_GeometricAttributes)                                                                                           \
  X(DDB_Core)                                                                                                          \
  X(Shared_Analysis_SubComp)

#define SA_HOST_DECLARE_COMPONENT(component)                                                                           \
  SA_HOST_SERVICE void component##_initialize(int32_t* counter);                                                       \
  SA_HOST_SERVICE void component##_finalize(int32_t* counter);
SA_HOST_COMPONENTS(SA_HOST_DECLARE_COMPONENT)
#undef SA_HOST_DECLARE_COMPONENT

#ifdef __cplusplus
}
#endif

#endif
