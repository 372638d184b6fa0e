// The error status of the process and the counter blocks.
#pragma once

namespace sharedanalysis::host {

void resetErrorStatusAndCounters();

} // namespace sharedanalysis::host
