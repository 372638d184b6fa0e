// Error status, counter blocks and the resource monitor.
#include "resources.h"

#include "bcu_ErrorStatus.h"
#include "bcu_ResourceMonitor.h"
#include "diagnostic_store.h"
#include "guarded.h"
#include "host_services.h"

#include <atomic>

// As long as the highest place that the interface names.
int32_t CWARN[2] = {};
int32_t CLINES[19] = {};

namespace sharedanalysis::host {
namespace {

std::atomic<int32_t> errorCode{0};

} // namespace

void resetErrorStatusAndCounters() {
  errorCode = 0;
  // threads may be counting
  for (int32_t& counter : CWARN) std::atomic_ref<int32_t>(counter).store(0);
  for (int32_t& counter : CLINES) std::atomic_ref<int32_t>(counter).store(0);
}

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

void bcu_ErrorStatus::setErrorCode(int32_t code) { errorCode = code; }
int32_t bcu_ErrorStatus::getErrorCode() { return errorCode; }

void bcu_ResourceMonitor::Mark(const char* text) {
  guarded([=] { diagnostics().addMark(text); });
}
