// What a diagnostic code says by itself.
#pragma once

#include "host_service.h"

#include <cstdint>

// Any thread.
class SA_HOST_SERVICE dia_TypeCodeUtils {
public:
  static bool IsError(int32_t code);
  // Which of the detail strings of its metadata a code means, from 0.
  static int32_t GetVariationNumber(int32_t code);
};
