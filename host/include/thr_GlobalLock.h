// The one lock of the process, for things that happen once per thread or rarer.
#pragma once

#include "host_service.h"

// Holds the lock for the life of the object.  Not recursive.
class SA_HOST_SERVICE thr_GlobalLock {
public:
  thr_GlobalLock();
  ~thr_GlobalLock();
  thr_GlobalLock(const thr_GlobalLock&) = delete;
  thr_GlobalLock& operator=(const thr_GlobalLock&) = delete;
};
