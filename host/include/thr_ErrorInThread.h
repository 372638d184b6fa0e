// The thread-error state of the host.
#pragma once

#include "host_service.h"

#include <cstdint>

// Any thread.  A nonzero state tells the host that the analysis cannot go on; the host decides how it ends its loops.
SA_HOST_SERVICE void thr_ErrorInThread(int32_t state);
