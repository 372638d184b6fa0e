// Calls of kernels in a file, inputs and results, for programs in other languages that make the same calls.
#pragma once

#include <ostream>

#include "checks.h"
#include "guarded_call.h"

namespace sa::test {

// Some calls of one kernel.  Of each: length and letters of the name, count of arguments, bits of the returned value, then of
// each argument 1 or 0 for written or not, the bytes of its data, the data before the call and, if written, after it.
// Integers have 64 bits.
Findings writeCases(GuardedMemory& memory, const Kernel& kernel, std::ostream& stream);

} // namespace sa::test
