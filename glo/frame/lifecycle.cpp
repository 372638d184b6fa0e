// Start and stop of the shared services.
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "use_counter.h"

static sharedanalysis::host::UseCounter uses;

SA_EXPORT void glo_initialize(int32_t* counter) { uses.starts(counter); }
SA_EXPORT void glo_finalize(int32_t* counter) { uses.stops(counter); }
