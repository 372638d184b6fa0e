// What a process takes of memory that it does not use.
#pragma once

#include <cstdlib>
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace sharedanalysis::solver {

// Of a vector that is not needed any more: "= {}" empties it, and keeps its room.
template <class Vector>
void release(Vector& values) {
  Vector().swap(values);
}

// Reading, dividing and setting up leave holes between what stays: their pages go back to the system.  Takes milliseconds.
inline void returnFreeMemory() {
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

} // namespace sharedanalysis::solver
