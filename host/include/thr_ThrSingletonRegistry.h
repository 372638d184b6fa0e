// Routines that release per-thread objects.
#pragma once

#include "host_service.h"

class SA_HOST_SERVICE thr_ThrSingletonRegistry {
public:
  // Has `release` called at the end of the calling thread, once, also when it is registered more often.
  static void Register(void (*release)());
};
