// What a number of a case file must be, in words and as a test.
#pragma once

#include <limits>

namespace sharedanalysis::solver {

struct Range {
  const char* expected;
  bool (*holds)(double);
  double low =
      -std::numeric_limits<double>::infinity(); // the numbers that hold lie between, the ends may not belong to them
  double high = std::numeric_limits<double>::infinity();
};

inline constexpr Range anyNumber{"a finite number", [](double) { return true; }};
inline constexpr Range positive{"a positive number", [](double x) { return x > 0; }, 0};
inline constexpr Range notNegative{"a number that is not negative", [](double x) { return x >= 0; }, 0};
inline constexpr Range fraction{"a number above 0 and not above 1", [](double x) { return x > 0 && x <= 1; }, 0, 1};
inline constexpr Range aboveOne{"a number above 1", [](double x) { return x > 1; }, 1};
inline constexpr Range aboveRootThree{"a number above 1.7321", [](double x) { return x * x > 3; }, 1.7320508075688773};
inline constexpr Range stepCount{"a number from 1 to 100000", [](double x) { return x >= 1 && x <= 100000; }, 1,
                                 100000};
inline constexpr Range zeroToOne{"a number from 0 to 1", [](double x) { return x >= 0 && x <= 1; }, 0, 1};

} // namespace sharedanalysis::solver
