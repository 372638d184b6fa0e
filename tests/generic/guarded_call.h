// Calls a routine with every array in memory of its own, fenced so that a stray access shows.
#pragma once

#include <cfenv>
#include <functional>
#include <string>

#include "kernel_case.h"

namespace sa::test {

using Complain = std::function<void(const std::string&)>;

// The caller's floating-point environment during a call.
struct Environment {
  int rounding = FE_TONEAREST;
  bool flushes = false; // subnormal numbers are read and written as zeros
  bool traps = false;   // on invalid operations, divisions by zero and overflow
};

// Memory for the arguments of one call at a time; one object a thread.
class GuardedMemory {
public:
  GuardedMemory();
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  // Runs the routine on the data; written arguments come back in it.  Each array ends at a page that cannot be touched,
  // begins after a pattern that is checked, and unread arguments point to such a page.  False after a stray access.
  // With an environment of its own, the call must neither trap nor leave a flag or another environment; false after a trap.
  bool call(void* routine, KernelCase& data, const Complain& complain, const Environment* environment = nullptr);

  // From now on a call that takes more than a second of processor time is left and complained of.  For programs of one
  // thread.
  static void limitTime();

  // Runs the routine with leading dimensions of more than a thousand million points, and with entities numbered from there
  // on, so that offsets do not fit into 32 bits; written arguments come back in the data as from an ordinary call.  Memory that
  // nobody touches costs none.
  static bool callFar(void* routine, KernelCase& data, const Complain& complain);

private:
  unsigned char* slotEnd(std::size_t argument) const;
  unsigned char* base_ = nullptr;
};

} // namespace sa::test
