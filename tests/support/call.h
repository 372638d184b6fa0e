// Calls of kernels, all of whose arguments are pointers, with numbers, containers and pointers as they are at hand.
#pragma once

#include "tests/support/test.h"

namespace sharedanalysis::test {

template <class Argument>
auto pointersOf(Argument& argument) {
  if constexpr (std::is_arithmetic_v<Argument>)
    return std::tuple(&argument);
  else if constexpr (requires { argument.data(); })
    return std::tuple(argument.data());
  else
    return std::tuple<std::decay_t<Argument>>(argument);
}
// Columns of a block that are arguments of their own, one after the other.
template <std::size_t count>
auto pointersOf(std::array<double*, count>& columns) {
  return std::tuple_cat(columns);
}

template <class Kernel, class... Arguments>
auto call(Kernel kernel, Arguments&&... arguments) {
  return std::apply(kernel, std::tuple_cat(pointersOf(arguments)...));
}

} // namespace sharedanalysis::test
