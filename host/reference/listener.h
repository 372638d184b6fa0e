// Tells a listener in another language what the library says.
#pragma once

#include "reference_host_c.h"

#include <string_view>

namespace sharedanalysis::host {

void tell(int32_t event, int32_t number = 0, int32_t message = 0, std::string_view text = {});

} // namespace sharedanalysis::host
