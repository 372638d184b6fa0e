// Built-in user materials, point after point, with the branches and the mathematics of the C library.
#pragma once

#include "bench/plain/user_rows.h"

#include <cstdint>

namespace plain {

void hjcConcrete(int32_t n, const MaterialBlock& b);
// Those that tests share, compiled with the rest.
std::vector<UserRow> nativeUserRows();

} // namespace plain
