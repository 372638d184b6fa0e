// Services never throw.
#pragma once

#include "job.h"

namespace sharedanalysis::host {

// What cannot be written for want of memory counts as unfiled.
template <class Body>
void guarded(Body body) noexcept {
  try {
    body();
  } catch (...) {
    ++job().unfiled;
  }
}

} // namespace sharedanalysis::host
