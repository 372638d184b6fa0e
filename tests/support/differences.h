// Central differences of functions of whole steps of the length h, with errors of h^4; mixed ones with h^2.
#pragma once

namespace sharedanalysis::test {

template <class Function>
auto firstDifference(Function f, decltype(f(0)) h) {
  return (8 * (f(1) - f(-1)) - (f(2) - f(-2))) / (12 * h);
}
template <class Function>
auto secondDifference(Function f, decltype(f(0)) h) {
  return (16 * (f(1) + f(-1)) - (f(2) + f(-2)) - 30 * f(0)) / (12 * h * h);
}
template <class Function>
auto mixedDifference(Function f, decltype(f(0, 0)) h) {
  return (f(1, 1) - f(1, -1) - f(-1, 1) + f(-1, -1)) / (4 * h * h);
}

} // namespace sharedanalysis::test
