// What a number of a case file must be, in words and as a test.
#pragma once

namespace sharedanalysis::solver {

struct Range {
  const char* expected;
  bool (*holds)(double);
};

inline constexpr Range anyNumber{"a finite number", [](double) { return true; }};
inline constexpr Range positive{"a positive number", [](double x) { return x > 0; }};
inline constexpr Range notNegative{"a number that is not negative", [](double x) { return x >= 0; }};
inline constexpr Range fraction{"a number above 0 and not above 1", [](double x) { return x > 0 && x <= 1; }};
inline constexpr Range aboveOne{"a number above 1", [](double x) { return x > 1; }};
inline constexpr Range aboveRootThree{"a number above 1.7321", [](double x) { return x * x > 3; }};
inline constexpr Range stepCount{"a number from 1 to 100000", [](double x) { return x >= 1 && x <= 100000; }};
inline constexpr Range zeroToOne{"a number from 0 to 1", [](double x) { return x >= 0 && x <= 1; }};

} // namespace sharedanalysis::solver
