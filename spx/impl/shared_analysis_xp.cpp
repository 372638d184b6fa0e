// Start and stop of the whole library.
#include "acd.h"
#include "glo.h"
#include "glo/kernel/kernel.h"
#include "host_services.h"
#include "spx.h"
#include "use_counter.h"

#include <iterator>

namespace {

struct Component {
  void (*initialize)(int32_t* counter);
  void (*finalize)(int32_t* counter);
};

// The lambdas keep the host's symbols out of the table: an address would have to be known when the library is loaded.
#define SA_COMPONENT(name)                                                                                             \
  Component{[](int32_t* counter) { name##_initialize(counter); }, [](int32_t* counter) { name##_finalize(counter); }},
constexpr Component kComponents[] = {SA_HOST_COMPONENTS(SA_COMPONENT) SA_COMPONENT(glo) SA_COMPONENT(acd)
                                         SA_COMPONENT(spx)};
#undef SA_COMPONENT

sharedanalysis::host::UseCounter uses;

} // namespace

SA_EXPORT void Shared_Analysis_XP_initialize(int32_t* counter) {
  if (!uses.starts(counter)) return;
  for (const Component& component : kComponents) component.initialize(counter);
}

SA_EXPORT void Shared_Analysis_XP_finalize(int32_t* counter) {
  if (!uses.stops(counter)) return;
  for (auto component = std::rbegin(kComponents); component != std::rend(kComponents); ++component)
    component->finalize(counter);
}
