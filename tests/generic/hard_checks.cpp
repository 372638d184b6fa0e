#include <fnmatch.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <memory>
#include <utility>

#include "checks.h"
#include "hard_case.h"

namespace sa::test {
namespace {

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
