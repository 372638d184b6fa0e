// One object of a class for each thread, made on first use and released when the thread ends.
#pragma once

#include "host_service.h"

// Instance() is specialised where T belongs: by the host for its own classes, by the library for its own.
template <class T>
class SA_HOST_SERVICE thr_ThreadSingleton {
public:
  static T& Instance();
};
