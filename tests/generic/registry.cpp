#include "registry.h"

namespace sa::test {
namespace {

const RoutineInfo kRoutines[] = {
#include SA_REGISTRY_FILE
};

} // namespace

std::vector<const RoutineInfo*> kernelsOfRegistry() {
  std::vector<const RoutineInfo*> kernels;
  for (const RoutineInfo& routine : kRoutines)
    if (routine.isKernel()) kernels.push_back(&routine);
  return kernels;
}

} // namespace sa::test
