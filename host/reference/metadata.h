// Metadata of the reference host beyond the platform interface.
#pragma once

#include <cstdint>
#include <string_view>

namespace sharedanalysis::host {

constexpr int32_t kGeneralTable = 0, kContactTable = 1;

// The name of a code in its table, empty for an unknown one.
std::string_view codeName(int32_t table, int32_t code);

// Why an attempt was cut back, for the reasons 0 to 18; empty for others.
std::string_view cutbackReason(int32_t reason);

} // namespace sharedanalysis::host
