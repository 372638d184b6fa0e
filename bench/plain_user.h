// Built-in user materials, point after point, with the branches and the mathematics of the C library.
#pragma once

#include "bench/plain/user_rows.h"

#include <vector>

namespace plain {

// Those that tests share, compiled with the rest.
std::vector<UserRow> nativeUserRows();

} // namespace plain
