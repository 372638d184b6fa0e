#include "hard_case.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <utility>

#include "tests/support/random.h"

namespace sa::test {
namespace {

using sharedanalysis::test::Random;

bool oneIn(Random& random, int n) { return random.integer(1, n) == 1; }

double power(int exponent) { return std::ldexp(1.0, exponent); }

double infinityOrNan(Random& random) {
  const double infinity = std::numeric_limits<double>::infinity();
  return oneIn(random, 2) ? std::numeric_limits<double>::quiet_NaN() : oneIn(random, 2) ? infinity : -infinity;
}

// Finite sizes that are hard in their own ways.
enum class Size { zero, steps, subnormal, least, rootLeast, one, rootMost, huge, most, count };

double sized(Random& random, Size size) {
  const double sign = oneIn(random, 2) ? -1.0 : 1.0, u = random.uniform(0.5, 4.0);
  const auto binade = [&](int low, int high) { return sign * u * power(random.integer(low, high)); };
  return size == Size::zero        ? sign * 0.0
         : size == Size::steps     ? random.integer(-2, 2) * DBL_TRUE_MIN
         : size == Size::subnormal ? binade(-1074, -1014)
         : size == Size::least     ? sign * u * DBL_MIN
         : size == Size::rootLeast ? binade(-540, -510)
         : size == Size::one       ? (oneIn(random, 4) ? sign : sign * u)
         : size == Size::rootMost  ? binade(508, 514)
         : size == Size::huge      ? binade(900, 1021)
                                   : (oneIn(random, 2) ? sign * DBL_MAX : sign * DBL_MAX / u);
}

Size anySize(Random& random) { return static_cast<Size>(random.integer(0, static_cast<int>(Size::count) - 1)); }

// Ways in which the values of one argument in one point are hard together.
enum class Pattern {
  alike,
  scaled,
  equal,
  nearlyEqual,
  graded,
  diagonal,
  integers,
  single,
  mixed,
  unit,
  spoiled,
  count
};

struct Choice {
  Pattern pattern;
  Size size;
  int exponent; // of the scale
};

Choice anyChoice(Random& random) {
  // Of small integers only few are hard for a rotation, and only at the end of the range: they come often.
  static constexpr int kRange[][2] = {{-1074, -1074}, {-1074, -1074}, {-1074, -1000}, {-1074, 1023},
                                      {-545, -500},   {-30, 30},      {330, 520}};
  const int pattern = random.integer(0, static_cast<int>(Pattern::count));
  const auto& range = kRange[random.integer(0, 6)];
  return {pattern == static_cast<int>(Pattern::count) ? Pattern::integers : static_cast<Pattern>(pattern),
          anySize(random), random.integer(range[0], range[1])};
}

// The ordinary values v of one argument in one point become hard.
void harden(Random& random, const Choice& choice, std::vector<double>& v) {
  const std::size_t n = v.size();
  const double x = sized(random, choice.size);
  const auto some = static_cast<std::size_t>(random.integer(0, static_cast<int>(n) - 1));
  const double scale = power(choice.exponent);
  const int step = random.integer(8, 150);
  const auto hard = [&](std::size_t k) {
    const Pattern is = choice.pattern;
    // of a unit, a rotation, or a quaternion with a turn that is none or as small as they come
    const bool isOne = n == 9 ? k % 4 == 0 : k == some;
    return is == Pattern::alike         ? sized(random, choice.size)
           : is == Pattern::scaled      ? v[k] * scale
           : is == Pattern::equal       ? x
           : is == Pattern::nearlyEqual ? (oneIn(random, 2) ? x : std::nextafter(x, oneIn(random, 2) ? 0.0 : HUGE_VAL))
           : is == Pattern::graded      ? v[k] * scale * power(-step * static_cast<int>((k + some) % n))
           : is == Pattern::diagonal && k < 3 ? (oneIn(random, 3) ? x : sized(random, choice.size))
           : is == Pattern::diagonal          ? (x < 0 ? -0.0 : 0.0)
           : is == Pattern::integers          ? random.integer(-2, 2) * scale
           : is == Pattern::single            ? (k == some ? x : v[k])
           : is == Pattern::mixed             ? sized(random, anySize(random))
           : is == Pattern::unit              ? (isOne              ? 1.0
                                                 : oneIn(random, 2) ? 0.0
                                                                    : x * DBL_EPSILON)
                                              : (k == some || oneIn(random, 8) ? infinityOrNan(random) : v[k]);
  };
  for (std::size_t k = 0; k < n; ++k) {
    v[k] = hard(k);
    if (std::isinf(v[k]) && choice.pattern != Pattern::spoiled) v[k] = std::copysign(DBL_MAX, v[k]);
  }
}

void hardenLine(Random& random, const Choice& choice, Array& array, std::size_t line, std::vector<double>& v) {
  // Marks have two values; any other is a slip that is rare.
  if ((array.info->is("mask") || array.info->is("flag")) && !oneIn(random, 32)) return;
  v.resize(array.components());
  if (v.empty()) return;
  for (std::size_t c = 0; c < v.size(); ++c) v[c] = array.real(array.index(line, c));
  harden(random, choice, v);
  for (std::size_t c = 0; c < v.size(); ++c) array.setReal(array.index(line, c), v[c]);
}

} // namespace

bool isNumber(const Array& array) {
  const ArgumentInfo& info = *array.info;
  return info.isReal() && !info.isOnlyWritten() && !info.is("table") && !info.is("unread");
}

OrdinaryCase::OrdinaryCase(const RoutineInfo& routine, int points, int variant)
    : data(makeCase(routine, points, variant)) {
  for (const Array& array : data.arrays) {
    reached.emplace_back();
    for (int p = 0; array.lines == Lines::entities && p < data.first + points; ++p)
      reached.back().push_back(data.reachedEntities(array, p));
  }
}

HardCase makeHardCase(const OrdinaryCase& ordinary, std::uint64_t seed) {
  Random random(seed);
  HardCase result{ordinary.data, {}, {}, 0};
  std::vector<Array>& arrays = result.data.arrays;
  std::vector<double> scratch;
  const auto points = static_cast<std::size_t>(result.data.first + result.data.points);
  const bool allTogether = result.data.routine->hasRole("length");
  std::vector<std::size_t> numbers;
  for (std::size_t a = 0; a < arrays.size(); ++a)
    if (isNumber(arrays[a]) && arrays[a].lines == Lines::points) numbers.push_back(a);

  // A quarter of the points stays ordinary; a case of one kind of data finds what only shows when all points share it.
  result.touched.assign(points, false);
  const Choice whole = anyChoice(random);
  const bool isUniform = oneIn(random, 4);
  for (std::size_t p = 0; p < points && !numbers.empty(); ++p) {
    if (oneIn(random, 4)) continue;
    result.touched[p] = true;
    const Choice shared = isUniform ? whole : anyChoice(random);
    const int way = random.integer(0, 3); // one argument alone, each its own way, or all the same way
    if (way == 0) {
      const std::size_t a = numbers[static_cast<std::size_t>(random.integer(0, static_cast<int>(numbers.size()) - 1))];
      hardenLine(random, shared, arrays[a], p, scratch);
    } else {
      for (std::size_t a : numbers) hardenLine(random, way == 1 ? anyChoice(random) : shared, arrays[a], p, scratch);
    }
  }

  result.touchedLines.resize(arrays.size());
  for (std::size_t a = 0; a < arrays.size(); ++a) {
    Array& array = arrays[a];
    if (array.lines != Lines::entities) continue;
    std::vector<bool>& lines = result.touchedLines[a];
    lines.assign(array.lineCount, false);
    if (!isNumber(array) || oneIn(random, 2)) continue;
    for (std::size_t line = 0; line < array.lineCount; ++line) {
      if (!oneIn(random, 8)) continue;
      lines[line] = true;
      hardenLine(random, anyChoice(random), array, line, scratch);
      for (std::size_t p = 0; p < points; ++p)
        if (!result.data.isMapped(array) || (line < ordinary.reached[a][p].size() && ordinary.reached[a][p][line]))
          result.touched[p] = true;
    }
  }
  if (oneIn(random, 8) || allTogether || numbers.empty()) {
    for (Array& array : arrays)
      if (isNumber(array) && array.lines == Lines::none && oneIn(random, 2)) {
        hardenLine(random, anyChoice(random), array, 0, scratch);
        result.touched.assign(points, true);
      }
  }
  if (allTogether) result.touched.assign(points, true);
  result.inputs = static_cast<int>(std::count(result.touched.begin(), result.touched.end(), true));

  for (std::size_t a = 0; a < arrays.size(); ++a) {
    std::vector<bool>& lines = result.touchedLines[a];
    if (arrays[a].lines == Lines::points) lines = result.touched;
    for (std::size_t p = 0; p < points && arrays[a].lines == Lines::entities; ++p)
      for (std::size_t e = 0; result.touched[p] && e < ordinary.reached[a][p].size() && e < lines.size(); ++e)
        if (ordinary.reached[a][p][e]) lines[e] = true;
    lines.resize(arrays[a].lineCount, false); // beyond the block
  }
  return result;
}

} // namespace sa::test
