// The error status of the process.
#pragma once

#include "host_service.h"

#include <cstdint>

// Any thread.
class SA_HOST_SERVICE bcu_ErrorStatus {
public:
  static void setErrorCode(int32_t code);
  static int32_t getErrorCode(); // 0 until one is set
};
