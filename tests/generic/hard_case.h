// Data at and beyond the ends of the range of doubles, put into the points of an ordinary call.
#pragma once

#include "kernel_case.h"

namespace sa::test {

// A call in which some points, entities or scalars are hard and all else is as it was.
struct HardCase {
  KernelCase data;
  std::vector<bool> touched;                   // points with hard data, of their own or through a map
  std::vector<std::vector<bool>> touchedLines; // by array: results that may differ from those of the ordinary call
  int inputs = 0;                              // touched points
};

// An ordinary call, and which entities each of its points leads to.
struct OrdinaryCase {
  OrdinaryCase(const RoutineInfo& routine, int points, int variant);
  KernelCase data;
  std::vector<std::vector<std::vector<bool>>> reached; // by array and point; empty for arrays without entities
};

// Whether an argument holds numbers that a caller may get wrong: real, read, and no part of a table.
bool isNumber(const Array& array);

// Same ordinary case, same seed, same bits.
HardCase makeHardCase(const OrdinaryCase& ordinary, std::uint64_t seed);

} // namespace sa::test
