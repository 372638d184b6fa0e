// What most tests include: GoogleTest, common headers of the standard library, blocks of reals, and numbers that are none.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

namespace sharedanalysis::test {

using Values = std::vector<double>;
inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN(), kInf = std::numeric_limits<double>::infinity();

} // namespace sharedanalysis::test
