// Start and stop of the diagnostics.
#include "acd.h"
#include "acd/recording.h"
#include "glo/kernel/kernel.h"
#include "use_counter.h"

static sharedanalysis::host::UseCounter uses;

SA_EXPORT void acd_initialize(int32_t* counter) { uses.starts(counter); }
SA_EXPORT void acd_finalize(int32_t* counter) {
  if (uses.stops(counter)) sa::acd::releaseHandler();
}
