// Ranks, kill requests and the status of the job.
#include "diagnostic_store.h"
#include "guarded.h"
#include "host_services.h"
#include "job.h"

#include <atomic>
#include <csignal>

namespace sharedanalysis::host {
namespace {

// Set by a signal handler.
std::atomic<bool> killed{false};
static_assert(std::atomic<bool>::is_always_lock_free);

} // namespace

void installSignalHandlers() {
  struct sigaction action = {};
  action.sa_handler = [](int) { killed = true; };
  sigemptyset(&action.sa_mask);
  action.sa_flags = static_cast<int>(SA_RESETHAND) | SA_RESTART;
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool killSignal() { return killed; }
void requestKill() { killed = true; }
void withdrawKill() { killed = false; }

} // namespace sharedanalysis::host

using namespace sharedanalysis::host;

int32_t ELI_GETKILLSIGNAL(void) { return killSignal() ? 1 : 0; }
void DXT_SETJOBSTATUS_XPL(const int32_t* status) {
  job().status = *status;
  guarded([=] { diagnostics().setStatus(*status); });
}
