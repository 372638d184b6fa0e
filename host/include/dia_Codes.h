// Codes of the diagnostics that the library itself reports; the metadata of the host holds these and its own.
//
//   bit 30        set in errors
//   bits 24-29    family: 1 general, 2 elements, 3 contact
//   bits 16-23    group in the family
//   bits 5-15     number in the group
//   bits 0-4      variation number
#pragma once

#include <cstdint>

namespace dia_Codes {

constexpr int32_t InternalError = 0x41010020;       // 1 string: what went wrong
constexpr int32_t ExcessiveDistortion = 0x42010020; // 1 element
constexpr int32_t ExcessiveRotation = 0x42010040;   // 1 element

} // namespace dia_Codes
