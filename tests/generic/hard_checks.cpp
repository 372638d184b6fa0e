#include <fnmatch.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <utility>

#include "checks.h"
#include "tests/support/random.h"

namespace sa::test {
namespace {

using sharedanalysis::test::Random;

// ---- data at and beyond the ends of the range of doubles, put into the points of an ordinary call

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

// A call in which some points, entities or scalars are hard and all else is as it was.
struct HardCase {
  KernelCase data;
  std::vector<bool> touched;                   // points with hard data, of their own or through a map
  std::vector<std::vector<bool>> touchedLines; // by array: results that may differ from those of the ordinary call
  int inputs = 0;                              // touched points
};

// An ordinary call, and which entities each of its points leads to.
struct OrdinaryCase {
  OrdinaryCase(const RoutineInfo& routine, int points, int variant) : data(makeCase(routine, points, variant)) {
    for (const Array& array : data.arrays) {
      reached.emplace_back();
      for (int p = 0; array.lines == Lines::entities && p < data.first + points; ++p)
        reached.back().push_back(data.reachedEntities(array, p));
    }
  }
  KernelCase data;
  std::vector<std::vector<std::vector<bool>>> reached; // by array and point; empty for arrays without entities
};

// Whether an argument holds numbers that a caller may get wrong: real, read, and no part of a table.
bool isNumber(const Array& array) {
  const ArgumentInfo& info = *array.info;
  return info.isReal() && !info.isOnlyWritten() && !info.is("table") && !info.is("unread");
}

// Same ordinary case, same seed, same bits.
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
      const std::size_t a = numbers[random.integer(0, static_cast<int>(numbers.size()) - 1)];
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

// ---- the checks

// Cases that share one ordinary call, and its lengths: full vectors with and without a rest, beyond the scratch, each
// with another kind of material table.
constexpr std::uint64_t kCasesOfOne = 8;
constexpr int kLengths[] = {128, 137, 126};
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

std::uint64_t mix(std::uint64_t a, std::uint64_t b) { // the finaliser of splitmix64
  std::uint64_t x = a + 0x9e3779b97f4a7c15ULL * (b + 1);
  x = (x ^ (x >> 30)) * 0xbf58476d1ce4e5b9ULL;
  x = (x ^ (x >> 27)) * 0x94d049bb133111ebULL;
  return x ^ (x >> 31);
}

Environment environmentOf(std::uint64_t seed) {
  static constexpr int kRoundings[] = {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO};
  return {kRoundings[seed % 4], seed / 4 % 2 == 1, seed / 8 % 2 == 1};
}

std::string bitsOf(const Array& array, std::size_t line) {
  std::string text;
  char number[48];
  for (std::size_t c = 0; c < array.components(); ++c) {
    const std::size_t at = array.index(line, c);
    if (array.elementSize == sizeof(double))
      std::snprintf(number, sizeof number, " %.17g=%016llx", array.real(at),
                    static_cast<unsigned long long>(array.bits(at)));
    else
      std::snprintf(number, sizeof number, " %d", array.integer(at));
    text += number;
  }
  return text;
}

class HardCheck {
public:
  HardCheck(GuardedMemory& memory, const Kernel& kernel, HardCases& cases)
      : memory_(memory), kernel_(kernel), cases_(cases), name_(kernel.info->name) {}

  Findings run() {
    const auto variants = static_cast<std::uint64_t>(variantCount(*kernel_.info));
    std::uint64_t current = ~std::uint64_t{0};
    for (number_ = cases_.first; number_ < cases_.first + cases_.count && !isHanging(); ++number_) {
      const std::uint64_t base = number_ / kCasesOfOne;
      if (base != std::exchange(current, base)) {
        ordinary_ = std::make_unique<OrdinaryCase>(*kernel_.info, kLengths[base / variants % std::size(kLengths)],
                                                   static_cast<int>(base % variants));
        plain_ = ordinary_->data;
        isPlain_ = memory_.call(kernel_.address, plain_, [this](const std::string& text) { note(text, {}); });
      }
      std::uint64_t seed = mix(cases_.seed, number_);
      for (char c : name_) seed = mix(seed, static_cast<unsigned char>(c));
      environment_ = environmentOf(mix(seed, 0));
      const HardCase hard = makeHardCase(*ordinary_, seed);
      cases_.inputs += static_cast<std::uint64_t>(hard.inputs);
      runCase(hard);
    }
    return std::move(findings_);
  }

private:
  void note(const std::string& finding, const std::string& details) {
    if (!findings_.insert(finding).second || !cases_.details) return;
    cases_.details(name_ + ": " + finding + "\n  seed " + std::to_string(cases_.seed) + " case " +
                   std::to_string(number_) + " rounding " + std::to_string(environment_.rounding) + " flush " +
                   std::to_string(environment_.flushes) + " traps " + std::to_string(environment_.traps) + "\n" +
                   details);
  }

  // Runs a copy of the case as it begins.
  bool call(const KernelCase& start, KernelCase& data, const Environment* environment) {
    data = start;
    return memory_.call(
        kernel_.address, data, [&](const std::string& text) { note(text, {}); }, environment);
  }

  void noteDifferences(const KernelCase& a, const KernelCase& b, const std::string& what) {
    Findings differences;
    compareOutputs(a, b, what, differences);
    for (const std::string& text : differences) note(text, firstDifference(a, b));
  }

  // Both, to the last bit.
  static std::string firstDifference(const KernelCase& a, const KernelCase& b) {
    for (std::size_t k = 0; k < a.arrays.size(); ++k)
      for (std::size_t line = 0; line < a.arrays[k].lineCount && a.arrays[k].info->isWritten(); ++line)
        for (std::size_t c = 0; c < a.arrays[k].components(); ++c) {
          const std::size_t at = a.arrays[k].index(line, c);
          if (a.arrays[k].canonicalBits(at) != b.arrays[k].canonicalBits(at))
            return "  " + std::string(a.arrays[k].info->name) + " of " + std::to_string(line) + ":" +
                   bitsOf(a.arrays[k], line) + "\n  against" + bitsOf(b.arrays[k], line) + "\n";
        }
    return {};
  }

  void runCase(const HardCase& hard) {
    const KernelCase& start = hard.data;
    KernelCase whole, again;
    if (!call(start, whole, &environment_) && (isHanging() || !call(start, whole, nullptr))) return;
    if (kernel_.info->hasRole("length")) { // an array treated as a whole
      if (call(start, again, nullptr)) noteDifferences(again, whole, "the caller's environment");
      return;
    }
    const int n = start.points, alone = static_cast<int>(number_ % static_cast<std::uint64_t>(n));
    Findings found;
    const KernelCase pieces = runInPieces(memory_, kernel_, start, {std::max(1, alone), 1, n}, found);
    for (const std::string& text : found) note(text, {});
    if (isHanging()) return;
    compareOutputs(pieces, whole, "anything", found);
    if (!found.empty() && call(start, again, nullptr)) {
      noteDifferences(pieces, again, "splitting a block with hard data");
      noteDifferences(again, whole, "the caller's environment");
    }
    if (isPlain_) compareOrdinary(hard, pieces);
  }

  bool isHanging() const { return findings_.count("does not return") != 0; }

  // The points that stayed ordinary have their bits.
  void compareOrdinary(const HardCase& hard, const KernelCase& got) {
    for (std::size_t a = 0; a < plain_.arrays.size(); ++a) {
      const Array &p = plain_.arrays[a], &g = got.arrays[a];
      if (!p.info->isWritten() || p.lines == Lines::none) continue;
      for (std::size_t c = 0; c < p.components(); ++c)
        for (std::size_t line = 0; line < p.lineCount; ++line) {
          const std::size_t at = p.index(line, c);
          if (!hard.touchedLines[a][line] && p.canonicalBits(at) != g.canonicalBits(at))
            note(std::string("hard data of one point change another in ") + p.info->name, firstDifference(plain_, got));
        }
    }
  }

  GuardedMemory& memory_;
  const Kernel& kernel_;
  HardCases& cases_;
  std::string name_;
  std::uint64_t number_ = 0;
  Environment environment_;
  std::unique_ptr<OrdinaryCase> ordinary_;
  KernelCase plain_;
  bool isPlain_ = false;
  Findings findings_;
};

// Whether another value of an input changes numbers of the line, and a NaN in its place leaves none of them NaN.
bool isSwallowed(const Array& sound, const Array& other, const Array& spoiled, std::size_t line) {
  bool isChanged = false, isSpoiled = false;
  for (std::size_t c = 0; c < sound.components(); ++c) {
    const std::size_t at = sound.index(line, c);
    isChanged |= sound.bits(at) != other.bits(at) && !std::isnan(sound.real(at)) && !std::isnan(other.real(at));
    isSpoiled |= std::isnan(spoiled.real(at)) && !std::isnan(sound.real(at));
  }
  return isChanged && !isSpoiled;
}

bool isMark(const Array& array) { return array.info->is("mask") || array.info->is("flag"); }

bool isMarked(const KernelCase& data, std::size_t point) {
  return std::any_of(data.arrays.begin(), data.arrays.end(), [point](const Array& array) {
    return isMark(array) && array.lines == Lines::points && array.real(array.index(point, 0)) != 0.0;
  });
}

// Where a finite result is right although it depends on a value that is no number: patterns of kernel, input and output.
struct Exception {
  const char *kernel, *input, *output, *reason;
};
constexpr Exception kExceptions[] = {
    {"GLO_OPE_GENASSEM[!1-9]*", "[GL]", "G", "an extremum takes the local value on ties and NaN, a later one too"},
    {"SPX_OPE_*OPERFILTERTIME*", "*", "times", "when the NaN has entered is a time like others"},
    {"SPX_MAT_*MULLINS*", "*", "UmNew", "the largest energy of the past stays; eta and stress have the NaN"},
    {"SPX_MAT_*EXP", "freeStretch", "*", "only where an iteration begins: from 1 when that is no number"},
    {"SPX_MAT_JCFAILURESTRAIN", "transition", "failureStrain",
     "above melting the transition temperature does not count"},
    {"SPX_USR_*", "s*Time", "*", "only whether both times are 0 is read: the first call of an analysis"},
    {"SPX_USR_*", "totalTime", "*", "as the step time"},
};
bool isUsed[std::size(kExceptions)] = {};

bool isExcepted(const std::string& kernel, const char* input, const char* output) {
  const auto matches = [](const char* pattern, const char* name) { return fnmatch(pattern, name, 0) == 0; };
  for (const Exception& e : kExceptions)
    if (matches(e.kernel, kernel.c_str()) && matches(e.input, input) && matches(e.output, output))
      return isUsed[&e - kExceptions] = true;
  return false;
}

// No shear in the tensors of a point, or its direct components alike as well.
enum class Shear { any, none, isotropic };

void straighten(KernelCase& data, std::size_t point, Shear shear) {
  for (Array& array : data.arrays) {
    if (!isNumber(array) || array.lines != Lines::points || shear == Shear::any) continue;
    const std::size_t n = array.components(), direct = n == 3 && shear == Shear::none ? 2 : 3;
    if (n < 3) continue;
    for (std::size_t c = 0; c < n; ++c) {
      const bool isDirect = n == 9 ? c % 4 == 0 : c < direct;
      if (!isDirect) array.setReal(array.index(point, c), 0.0);
      if (isDirect && shear == Shear::isotropic)
        array.setReal(array.index(point, c), array.real(array.index(point, 0)));
    }
  }
}

} // namespace

Findings checkHard(GuardedMemory& memory, const Kernel& kernel, HardCases& cases) {
  return HardCheck(memory, kernel, cases).run();
}

Findings unusedExceptions() {
  Findings unused;
  for (const Exception& e : kExceptions)
    if (!isUsed[&e - kExceptions]) unused.insert(std::string(e.kernel) + ", " + e.input + ", " + e.output);
  return unused;
}

Findings checkReach(GuardedMemory& memory, const Kernel& kernel) {
  Findings findings;
  const Complain complain = [&findings](const std::string& text) { findings.insert(text); };
  // Calls with another value in each place of each input of one point, or in each scalar and list.
  const auto forPlaces = [&](const KernelCase& start, std::size_t point, const auto& run) {
    for (std::size_t a = 0; a < start.arrays.size(); ++a) {
      const Array& input = start.arrays[a];
      if (!isNumber(input)) continue;
      const bool isOfPoint = input.lines == Lines::points;
      for (std::size_t k = 0; k < (isOfPoint ? input.components() : input.elements()); ++k) {
        const std::size_t at = isOfPoint ? input.index(point, k) : k;
        run(input, input.real(at), [&, a, at](double value) {
          KernelCase data = start;
          data.arrays[a].setReal(at, value);
          memory.call(kernel.address, data, complain);
          return data;
        });
      }
    }
  };
  const int variants = variantCount(*kernel.info);
  for (int turn = 0; turn < std::max(6, variants); ++turn) {
    KernelCase start = makeCase(*kernel.info, 6, turn % variants);
    const auto point = static_cast<std::size_t>(start.first + turn % 6);
    for (Shear shear : {Shear::any, Shear::none, Shear::isotropic}) {
      straighten(start, point, shear);
      KernelCase sound = start;
      if (!memory.call(kernel.address, sound, complain)) return findings;
      forPlaces(start, point, [&](const Array& input, double old, const auto& with) {
        if (isMark(input) || std::string_view(input.info->unit) == "properties") return;
        const KernelCase other = with(old == 0.0 ? 0.3 : 2.0 * old), spoiled = with(kNaN);
        if (isMarked(spoiled, point)) return; // the caller is told
        for (std::size_t b = 0; b < sound.arrays.size(); ++b) {
          const Array& output = sound.arrays[b];
          if (!output.info->isWritten() || !output.info->isReal() || isMark(output)) continue;
          for (std::size_t line = 0; line < output.lineCount; ++line)
            if (isSwallowed(output, other.arrays[b], spoiled.arrays[b], line) &&
                !isExcepted(kernel.info->name, input.info->name, output.info->name))
              complain(std::string("NaN in ") + input.info->name + " does not reach " + output.info->name);
        }
      });
    }
  }
  for (int v = 0; v < std::min(4, variants); ++v) {
    const KernelCase start = makeCase(*kernel.info, 21, v); // full vectors and a rest in every instruction set
    const int point = start.first + 8 * (v + 1) % 21;
    KernelCase sound = start;
    if (!memory.call(kernel.address, sound, complain)) return findings;
    forPlaces(start, static_cast<std::size_t>(point), [&](const Array& input, double, const auto& with) {
      if (input.lines != Lines::points) return;
      for (double value : {kNaN, HUGE_VAL, -HUGE_VAL, 1e300, 5e-324}) {
        const KernelCase spoiled = with(value);
        // In an array that is treated as a whole, only the fences and the return count.
        if (!kernel.info->hasRole("length")) compareOtherPoints(sound, spoiled, point, findings);
      }
    });
  }
  return findings;
}

} // namespace sa::test
