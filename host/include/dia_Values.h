// The values that a diagnostic carries.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// A node or element by the name of its part instance and its number in it.
struct dia_Entity {
  std::string instance;
  int32_t label = 0;
};

struct dia_Values {
  std::vector<int32_t> ints;
  std::vector<double> reals;
  std::vector<std::string> strings;
  std::vector<dia_Entity> nodes, elements;
};
