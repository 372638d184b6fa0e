// Where arrays begin, and what a process takes of memory that it does not use.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>
#include <vector>
#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace sharedanalysis::solver {

// Arrays that loops over bricks and points read begin where a line of the cache does, so that no full vector of theirs lies across
// two lines: it would take twice as long.
template <class T>
struct LineAllocator {
  using value_type = T;
  static constexpr std::align_val_t kLine{64};
  LineAllocator() = default;
  template <class U>
  LineAllocator(const LineAllocator<U>&) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), kLine)); }
  void deallocate(T* values, std::size_t) { ::operator delete(values, kLine); }
  friend bool operator==(const LineAllocator&, const LineAllocator&) { return true; }
};
using AlignedValues = std::vector<double, LineAllocator<double>>;

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
