// Marks in the course of an analysis, for those who watch its use of time and memory.
#pragma once

#include "host_service.h"

class SA_HOST_SERVICE bcu_ResourceMonitor {
public:
  static void Mark(const char* text);
};
