// Start and stop of the explicit kernels.
#include "glo/kernel/kernel.h"
#include "spx.h"
#include "use_counter.h"

static sharedanalysis::host::UseCounter uses;

SA_EXPORT void spx_initialize(int32_t* counter) { uses.starts(counter); }
SA_EXPORT void spx_finalize(int32_t* counter) { uses.stops(counter); }
