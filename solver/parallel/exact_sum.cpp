#include "solver/parallel/exact_sum.h"

#include "solver/model/clones.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace sharedanalysis::solver {
namespace {

// Of magnitudes, and how many of them are too large to be split, infinite or no numbers.
SOLVER_CLONES static double largestOf(int n, const double* values, double most, double* beyond) {
  double largest = 0, count = 0;
#pragma omp simd reduction(max : largest) reduction(+ : count)
  for (int k = 0; k < n; ++k) {
    const double size = std::abs(values[k]);
    largest = size > largest ? size : largest;
    count += size < most ? 0.0 : 1.0;
  }
  *beyond = count;
  return largest;
}

// Adds up what the values have above the last bit of `large`, without rounding; leaves the rest of them, and returns its largest
// magnitude.
SOLVER_CLONES static double split(int n, double* values, double large, double* sum) {
  double largest = 0, all = 0;
#pragma omp simd reduction(max : largest) reduction(+ : all)
  for (int k = 0; k < n; ++k) {
    const double high = (values[k] + large) - large, rest = values[k] - high, size = std::abs(rest);
    all += high;
    values[k] = rest;
    largest = size > largest ? size : largest;
  }
  *sum = all;
  return largest;
}

enum Special : std::size_t { NotANumber = ExactSum::kChunks, Infinite, MinusInfinite };

} // namespace

void ExactSum::addSpecial(uint64_t bits) {
  const bool isNaN = (bits & ((uint64_t{1} << kFractionBits) - 1)) != 0;
  words_[isNaN ? NotANumber : bits >> 63 == 0 ? Infinite : MinusInfinite] = 1;
}

void ExactSum::carry() {
  for (std::size_t k = 0; k + 1 < kChunks; ++k) {
    words_[k + 1] += words_[k] >> kChunkBits; // rounds down
    words_[k] &= kChunkMask;
  }
  untilCarry_ = kAddsPerCarry;
}

ExactSum::Words ExactSum::words() const {
  ExactSum whole = *this;
  whole.carry();
  return whole.words_;
}

void ExactSum::addWords(const Words& words) {
  carry();
  for (std::size_t k = 0; k < kWords; ++k) words_[k] += words[k];
  for (std::size_t k = kChunks; k < kWords; ++k) words_[k] = words_[k] > 0 ? 1 : 0;
  carry();
}

double ExactSum::value() const {
  using Limits = std::numeric_limits<double>;
  if (words_[NotANumber] != 0 || (words_[Infinite] != 0 && words_[MinusInfinite] != 0)) return Limits::quiet_NaN();
  if (words_[Infinite] != 0) return Limits::infinity();
  if (words_[MinusInfinite] != 0) return -Limits::infinity();

  ExactSum size = *this;
  size.carry();
  const bool isNegative = size.words_[kChunks - 1] < 0;
  if (isNegative) {
    for (std::size_t k = 0; k < kChunks; ++k) size.words_[k] = -size.words_[k];
    size.carry();
  }
  const auto& chunks = size.words_;
  std::size_t top = kChunks - 1;
  while (top > 0 && chunks[top] == 0) --top;
  // the place of the highest bit
  const int64_t highest =
      static_cast<int64_t>(top) * kChunkBits + std::bit_width(static_cast<uint64_t>(chunks[top])) - 1;
  const uint64_t sign = isNegative ? uint64_t{1} << 63 : 0, infinity = kSpecial << kFractionBits;
  const int64_t shift = std::max<int64_t>(highest - kFractionBits, 0); // so many bits are rounded
  if (shift >= static_cast<int64_t>(kSpecial)) return std::bit_cast<double>(sign | infinity);
  const auto bitsFrom = [&](std::size_t first, int64_t bit) { // 64 of them
    const auto chunk = [&](std::size_t k) { return k < kChunks ? static_cast<uint64_t>(chunks[k]) : 0; };
    const uint64_t low = chunk(first) | chunk(first + 1) << kChunkBits;
    return bit == 0 ? low : low >> bit | chunk(first + 2) << (2 * kChunkBits - bit);
  };
  const auto bitsAt = [&](int64_t place) {
    return bitsFrom(static_cast<std::size_t>(place / kChunkBits), place % kChunkBits);
  };
  const uint64_t digits = bitsAt(shift) & ((uint64_t{1} << (kFractionBits + 1)) - 1);
  bool roundsUp = false;
  if (shift > 0) {
    const int64_t half = shift - 1;
    const std::size_t chunk = static_cast<std::size_t>(half / kChunkBits);
    const auto ofHalf = static_cast<uint64_t>(chunks[chunk]), mask = uint64_t{1} << half % kChunkBits;
    const bool isBeyondHalf = (ofHalf & (mask - 1)) != 0 || std::any_of(chunks.begin(), chunks.begin() + chunk,
                                                                        [](int64_t below) { return below != 0; });
    roundsUp = (ofHalf & mask) != 0 && (isBeyondHalf || digits % 2 == 1);
  }
  // the highest of the digits counts in the exponent, and so does the carry of rounding
  const uint64_t bits = (static_cast<uint64_t>(shift) << kFractionBits) + digits + (roundsUp ? 1 : 0);
  return std::bit_cast<double>(sign | std::min(bits, infinity));
}

// By extraction (S. M. Rump, T. Ogita, S. Oishi, Accurate floating-point summation, part I, 2008): values below 2^e are split at the
// last bit of 1.5 * 2^(e + kHeadroom), of which so many multiples add up exactly in a double, in any order and rounding; then
// the rest of them, until there is none.  Two turns do for values of like size.
void ExactSumOfMany::addBlock() {
  constexpr int kHeadroom = 8, kFraction = 52, kBias = 1023;
  static_assert(kBlock <= 1 << kHeadroom);
  constexpr double kLeast = 0x1p-900, kMost = 0x1p900;
  double beyond = 0, part = 0, largest = largestOf(count_, values_.data(), kMost, &beyond);
  while (beyond == 0 && largest > kLeast) {
    const auto exponent = static_cast<int64_t>(std::bit_cast<uint64_t>(largest) >> kFraction) - kBias + 1;
    const auto power = static_cast<uint64_t>(exponent + kHeadroom + kBias);
    const double large = std::bit_cast<double>(power << kFraction | uint64_t{1} << (kFraction - 1));
    largest = split(count_, values_.data(), large, &part);
    sum_.add(part);
  }
  if (beyond != 0 || largest > 0)
    for (int k = 0; k < count_; ++k) sum_.add(values_[static_cast<std::size_t>(k)]);
  count_ = 0;
}

std::vector<double> sumOverRanks(const std::vector<ExactSum>& own, const Ranks& ranks) {
  std::vector<double> sums;
  sums.reserve(own.size());
  if (!ranks.areSeveral()) {
    for (const ExactSum& one : own) sums.push_back(one.value());
    return sums;
  }
  std::vector<int64_t> words;
  words.reserve(own.size() * ExactSum::kWords);
  for (const ExactSum& one : own) {
    const ExactSum::Words ofOne = one.words();
    words.insert(words.end(), ofOne.begin(), ofOne.end());
  }
  ranks.sum(words);
  for (std::size_t k = 0; k < own.size(); ++k) {
    ExactSum::Words ofOne;
    std::copy_n(words.begin() + static_cast<std::ptrdiff_t>(k * ExactSum::kWords), ExactSum::kWords, ofOne.begin());
    sums.push_back(ExactSum(ofOne).value());
  }
  return sums;
}

} // namespace sharedanalysis::solver
