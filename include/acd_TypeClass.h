// Classes of diagnostic codes.
#pragma once

#include <cstdint>

// Selects the metadata table of a code.
enum class acd_TypeClass : int32_t { General = 0, Contact = 1 };

class __attribute__((visibility("default"))) acd_PublicTypeCodeUtils {
public:
  // Whether the code is valid in the table of the class, and an error.
  static bool IsError(int32_t code, acd_TypeClass typeClass);
};
