// Objects of the library that exist once for each thread that asks for them.
#pragma once

#include "thr_GlobalLock.h"
#include "thr_ThrSingletonRegistry.h"

#include <cstdint>

namespace sa {

// The slot of a class: a thread-local pointer, so that a thread reaches its object without a lock.  Objects are made on first
// use in a thread and released by a routine that the host calls at the end of the thread; making and releasing take the
// host's global lock, which also guards the number of living objects.
template <class T>
class ThreadSlot {
public:
  // The object of the calling thread.  `release` is registered with the host when the object is made; it calls release().
  static T& get(void (*release)()) {
    if (current_ == nullptr) make(release);
    return *current_;
  }

  // Deletes the object of the calling thread, if there is one.
  static void release() {
    if (current_ == nullptr) return;
    delete current_;
    current_ = nullptr;
    const thr_GlobalLock lock;
    --living_;
  }

private:
  static void make(void (*release)()) {
    T* const made = new T();
    {
      const thr_GlobalLock lock;
      ++living_;
      current_ = made;
    }
    thr_ThrSingletonRegistry::Register(release);
  }

  static inline thread_local T* current_ = nullptr;
  static inline int32_t living_ = 0;
};

} // namespace sa
