// The reference host as C calls it.
#include "listener.h"
#include "reference_host.h"

#include <atomic>
#include <exception>
#include <string>

namespace sharedanalysis::host {
namespace {

std::atomic<SharedAnalysisHostListener> listener{nullptr};
thread_local std::string failure;

template <class Body>
int32_t attempt(Body body) {
  failure.clear();
  try {
    body();
    return 0;
  } catch (const std::exception& error) {
    failure = error.what();
    return 1;
  }
}

} // namespace

void tell(int32_t event, int32_t number, int32_t message, std::string_view text) {
  if (const SharedAnalysisHostListener to = listener)
    to(event, number, message, text.data(), static_cast<int64_t>(text.size()));
}

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

void SharedAnalysisHost_listen(SharedAnalysisHostListener to) { listener = to; }

int32_t SharedAnalysisHost_openJob(const char* job, const char* directory) {
  return attempt([=] { openJob(job, directory); });
}

int32_t SharedAnalysisHost_closeJob(void) { return attempt(closeJob); }

const char* SharedAnalysisHost_lastFailure(void) { return failure.c_str(); }
