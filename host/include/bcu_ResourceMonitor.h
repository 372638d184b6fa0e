// Marks in the course of an analysis, for records of time and memory.
#pragma once

#include "host_service.h"

class SA_HOST_SERVICE bcu_ResourceMonitor {
public:
  static void Mark(const char* text);
};
