// The table of routines that is written from the headers.
#pragma once

#include <algorithm>
#include <span>
#include <string_view>
#include <vector>

namespace sa::test {

struct ArgumentInfo {
  const char* name;
  std::string_view role, type, direction;
  const char* shape[4];
  const char* unit;

  int rank() const {
    int n = 0;
    while (n < 4 && shape[n] != nullptr) ++n;
    return n;
  }
  bool is(std::string_view wanted) const { return wanted.front() == role.front() && wanted == role; }
  bool isWritten() const { return direction != "in"; }
  bool isOnlyWritten() const { return direction == "out"; }
  bool isByValue() const { return type.back() != '*'; }
  bool isReal() const { return type.starts_with("double") || type.starts_with("const double"); }
};

// Unused arguments have no name.  Plain arrays: the table is data, not code.
struct RoutineInfo {
  const char *name, *result;
  ArgumentInfo arguments[64];

  std::span<const ArgumentInfo> args() const {
    std::size_t n = 0;
    while (n < 64 && arguments[n].name != nullptr) ++n;
    return {arguments, n};
  }
  bool hasRole(std::string_view wanted) const {
    return std::ranges::any_of(args(), [&](const ArgumentInfo& a) { return a.is(wanted); });
  }
  // Works on a block of points, or on an array as a whole.
  bool isKernel() const { return hasRole("block") || hasRole("last") || hasRole("length"); }
};

// The routines of the headers that the program was built with.
std::vector<const RoutineInfo*> kernelsOfRegistry();

} // namespace sa::test
