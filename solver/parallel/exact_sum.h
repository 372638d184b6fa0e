// Sums that do not depend on the order of what is added, and so not on how a model is shared out among ranks and threads.
//
// The sum is kept as an integer of 2176 bits, in units of the smallest subnormal, which holds every sum of doubles exactly
// (the small superaccumulator of R. M. Neal, Fast exact summation using small and large superaccumulators, 2015).  It is
// rounded once, to nearest and to even between two, whatever the floating-point environment is.
#pragma once

#include "solver/parallel/ranks.h"

#include <array>
#include <bit>
#include <cstdint>
#include <vector>

namespace sharedanalysis::solver {

// Infinities and NaN count as in any other sum: NaN when one is NaN or infinities of both signs are there, else the infinity.
// A finite sum beyond the largest double becomes infinite when it is rounded, and only then.  A sum of zero is +0, also that of
// negative zeros alone.  2^63 numbers can be added, on all ranks together.
class ExactSum {
public:
  // Words of a sum as they travel; those of several sums add up, one by one, to the words of the sum of all: of 2^30 sums at most.
  static constexpr std::size_t kChunks = 67, kWords = kChunks + 3;
  using Words = std::array<int64_t, kWords>;

  ExactSum() = default;
  explicit ExactSum(const Words& words) { addWords(words); }

  void add(double value) {
    const auto bits = std::bit_cast<uint64_t>(value);
    const uint64_t exponent = bits >> kFractionBits & kSpecial;
    if (exponent == kSpecial) [[unlikely]]
      return addSpecial(bits);
    if (untilCarry_-- == 0) [[unlikely]]
      carry();
    const uint64_t isNormal = exponent != 0 ? 1 : 0;
    const uint64_t digits = (bits & ((uint64_t{1} << kFractionBits) - 1)) | isNormal << kFractionBits;
    const uint64_t position = exponent - isNormal, shift = position % kChunkBits;
    int64_t* chunk = &words_[position / kChunkBits];
    const auto low = static_cast<int64_t>(digits << shift & kChunkMask),
               high = static_cast<int64_t>(digits >> (kChunkBits - shift));
    const int64_t sign = -static_cast<int64_t>(bits >> 63); // 0, or all bits for a change of sign
    chunk[0] += (low ^ sign) - sign;
    chunk[1] += (high ^ sign) - sign;
  }
  void add(const ExactSum& other) { addWords(other.words()); }

  Words words() const;
  double value() const;

private:
  static constexpr int kFractionBits = 52, kChunkBits = 32;
  static constexpr uint64_t kSpecial = 2047, kChunkMask = 0xffffffffU;
  // Numbers add less than 2^53 to a chunk, of which 2^63 is more than 1023 times as much with what a chunk keeps.
  static constexpr int kAddsPerCarry = 1022;

  void addWords(const Words& words);
  void addSpecial(uint64_t bits);
  void carry(); // chunks but the last one are from 0 to 2^32 - 1 afterwards

  Words
      words_{}; // chunks of 32 bits with room for carries, the lowest first; then whether there is NaN, infinity, -infinity
  int untilCarry_ = kAddsPerCarry;
};

// A sum of many numbers, which takes half the time: they are added a block at a time.
class ExactSumOfMany {
public:
  void add(double value) {
    values_[count_++] = value;
    if (count_ == kBlock) [[unlikely]]
      addBlock();
  }
  // So far.
  const ExactSum& sum() {
    addBlock();
    return sum_;
  }

private:
  static constexpr int kBlock = 128;

  void addBlock();

  ExactSum sum_;
  alignas(64) std::array<double, kBlock> values_;
  int count_ = 0;
};

// Of all ranks, on every rank; with several ranks one reduction for all of them.
std::vector<double> sumOverRanks(const std::vector<ExactSum>& own, const Ranks& ranks);

} // namespace sharedanalysis::solver
