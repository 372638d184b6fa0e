// Calls a routine with every array in memory of its own, fenced so that a stray access shows.
#pragma once

#include <functional>
#include <string>

#include "kernel_case.h"

namespace sa::test {

using Complain = std::function<void(const std::string&)>;

// Memory for the arguments of one call at a time; one object a thread.
class GuardedMemory {
public:
  GuardedMemory();
  ~GuardedMemory();
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  // Runs the routine on the data; written arguments come back in it.  Each array ends at a page that cannot be touched,
  // begins after a pattern that is checked, and unread arguments point to such a page.  False after a stray access.
  bool call(void* routine, KernelCase& data, const Complain& complain);

private:
  unsigned char* slotEnd(std::size_t argument) const;
  unsigned char* base_ = nullptr;
};

} // namespace sa::test
