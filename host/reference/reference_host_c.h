/** @file reference_host_c.h
 *  The reference host for programs in C and in languages that call C.
 */
#ifndef SHAREDANALYSIS_REFERENCE_HOST_C_H
#define SHAREDANALYSIS_REFERENCE_HOST_C_H

#include "host_service.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a listener hears. */
enum {
  SA_HOST_EVENT_LINE = 0,   /* a line of a message: channel, number of the message in its thread, text */
  SA_HOST_EVENT_STATUS = 1, /* a record of the status channel: 0, 0, type and text */
  SA_HOST_EVENT_ABORT = 2,  /* the library aborts the analysis: 0, 0, no text */
  SA_HOST_EVENT_END = 3     /* the library has ended the analysis: status of the job or -1, 0, no text */
};

/** Called in the thread of the event, from within the library; it must return, and not throw.  The text ends with no zero. */
typedef void (*SharedAnalysisHostListener)(int32_t event, int32_t number, int32_t message, const char* text,
                                           int64_t length);

/** Every event goes to this listener too, whether or not a job is open; none when null. */
SA_HOST_SERVICE void SharedAnalysisHost_listen(SharedAnalysisHostListener listener);

/** As openJob and closeJob of reference_host.h; 0 when all went well. */
SA_HOST_SERVICE int32_t SharedAnalysisHost_openJob(const char* job, const char* directory);
SA_HOST_SERVICE int32_t SharedAnalysisHost_closeJob(void);

/** Why the last of these two failed; of the thread that called it, until it calls one of them again. */
SA_HOST_SERVICE const char* SharedAnalysisHost_lastFailure(void);

#ifdef __cplusplus
}
#endif

#endif
