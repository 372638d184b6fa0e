// Runs a service and turns bad_alloc into one more unfiled record.
#pragma once

#include "job.h"

namespace sharedanalysis::host {

// Only bad_alloc can occur.
template <class Body>
void guarded(Body body) noexcept {
  try {
    body();
  } catch (...) {
    ++job().unfiled;
  }
}

} // namespace sharedanalysis::host
