// The host's record of a solver thread.
#pragma once

#include "thr_ThreadSingleton.h"

#include <cstdint>

struct SA_HOST_SERVICE dsm_ker_ThreadData {
  int32_t threadNumber;  // as DSM_KER_THREADID answers
  int32_t messageNumber; // the next message number: who takes it raises it by one, DSM_KER_MESSAGEID too
};

// The record of the calling thread; any thread.
template <>
SA_HOST_SERVICE dsm_ker_ThreadData& thr_ThreadSingleton<dsm_ker_ThreadData>::Instance();
