// The counted components of the host.
#include "host_services.h"
#include "reference_host.h"
#include "use_counter.h"

#include <atomic>

namespace sharedanalysis::host {

static std::atomic<int32_t> live{0};

int32_t liveComponents() { return live; }

} // namespace sharedanalysis::host

#define SA_DEFINE_COMPONENT(component)                                                                                 \
  static sharedanalysis::host::UseCounter component##_uses;                                                            \
  void component##_initialize(int32_t* counter) {                                                                      \
    if (component##_uses.starts(counter)) ++sharedanalysis::host::live;                                                \
  }                                                                                                                    \
  void component##_finalize(int32_t* counter) {                                                                        \
    if (component##_uses.stops(counter)) --sharedanalysis::host::live;                                                 \
  }
SA_HOST_COMPONENTS(SA_DEFINE_COMPONENT)
