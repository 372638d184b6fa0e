// A shared library under test, opened by file name.
#pragma once

#include <string>
#include <vector>

#include "checks.h"

namespace sa::test {

// The kernels of the registry in the library; throws when it cannot be opened or misses one.
std::vector<Kernel> openKernels(const std::string& library);

// Ends the program with a message when a kernel does not return within a minute.
void watch(const Kernel& kernel);

} // namespace sa::test
