// What the library of netCDF does not look at: whether a file has all the bytes that its header promises.
#pragma once

#include <filesystem>

namespace sharedanalysis::solver {

// False for a file in a classic format that was cut off: the library takes zeros for what is missing.  True for files of other
// formats, which their libraries check.
bool isWholeNetcdf(const std::filesystem::path& file);

} // namespace sharedanalysis::solver
