// How a component counts its uses, on both sides of the platform interface.
#pragma once

#include <cstdint>

namespace sharedanalysis::host {

// Only the first use starts a component and only the last release stops it.  Nothing is checked: after a release too many
// the next use only balances it.  Not synchronised; components are started and stopped from one thread.
class UseCounter {
public:
  // Both move the caller's counter of live components when they act, and answer whether they did.
  bool starts(int32_t* liveComponents) {
    if (++uses_ != 1) return false;
    ++*liveComponents;
    return true;
  }
  bool stops(int32_t* liveComponents) {
    if (--uses_ != 0) return false;
    --*liveComponents;
    return true;
  }

private:
  int32_t uses_ = 0;
};

} // namespace sharedanalysis::host
