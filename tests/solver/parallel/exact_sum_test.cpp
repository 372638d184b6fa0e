// Exact sums against values known beforehand, and against sums of expansions.
#include "solver/parallel/exact_sum.h"
#include "tests/support/test.h"

#include <cfenv>

namespace {

using namespace sharedanalysis::test;
using sharedanalysis::solver::ExactSum, sharedanalysis::solver::ExactSumOfMany;
using std::bit_cast;

constexpr double kLargest = std::numeric_limits<double>::max(), kTiny = std::numeric_limits<double>::denorm_min(),
                 kSmallest = std::numeric_limits<double>::min();

// Sums of parts, which travel as words, in an order of their own.
double sumOf(Values values, std::mt19937_64& random, std::size_t parts) {
  std::shuffle(values.begin(), values.end(), random);
  std::vector<ExactSum> sums(parts);
  ExactSumOfMany many;
  for (const double value : values) sums[random() % parts].add(value), many.add(value);
  ExactSum::Words words{};
  for (const ExactSum& one : sums) {
    const ExactSum::Words own = one.words();
    for (std::size_t k = 0; k < own.size(); ++k) words[k] += own[k];
  }
  ExactSum all = sums[0];
  for (std::size_t k = 1; k < parts; ++k) all.add(sums[k]);
  EXPECT_EQ(bit_cast<uint64_t>(ExactSum(words).value()), bit_cast<uint64_t>(all.value()));
  EXPECT_EQ(bit_cast<uint64_t>(many.sum().value()), bit_cast<uint64_t>(all.value()));
  return all.value();
}

// J. R. Shewchuk, Adaptive precision floating-point arithmetic and fast robust geometric predicates, 1997: partial sums that
// do not overlap, the smallest first; no overflow on the way.
double sumByExpansion(const Values& values) {
  Values partial;
  for (double x : values) {
    std::size_t kept = 0;
    for (double y : partial) {
      if (std::abs(x) < std::abs(y)) std::swap(x, y);
      const double high = x + y, low = y - (high - x);
      if (low != 0) partial[kept++] = low;
      x = high;
    }
    partial.resize(kept);
    partial.push_back(x);
  }
  // from the largest on, until one is rounded; halves go to where the rest is
  double high = 0, low = 0;
  while (!partial.empty() && low == 0) {
    const double x = high, y = partial.back();
    partial.pop_back();
    high = x + y;
    low = y - (high - x);
  }
  if (!partial.empty() && (low < 0) == (partial.back() < 0) && low != 0) {
    const double twice = 2 * low, next = high + twice;
    if (next - high == twice) high = next;
  }
  return high;
}

TEST(ExactSum, IsTheSumRoundedOnce) {
  const Values manyLarge(5000, kLargest), manyTiny(4096, kTiny);
  const auto with = [](Values first, const Values& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
  };
  const struct {
    const char* name;
    Values values;
    double sum;
  } rows[] = {
      {"nothing", {}, 0.0},
      {"negative zeros", {-0.0, -0.0}, 0.0},
      {"cancelled", {1.5, -1.5}, 0.0},
      {"one", {-0x1.fffffffffffffp-1021}, -0x1.fffffffffffffp-1021},
      {"what is left of large ones", {1e308, 1e-300, -1e308}, 1e-300},
      {"the smallest left of the largest", {kLargest, kLargest, -kLargest, kTiny, -kLargest}, kTiny},
      {"overflow on the way", with(with(manyLarge, {3.25}), Values(5000, -kLargest)), 3.25},
      {"overflow", {-kLargest, -kLargest}, -kInf},
      {"just below overflow", {kLargest, 0x1p969}, kLargest},
      {"half beyond the largest", {kLargest, 0x1p970}, kInf},
      {"a little less than half", {kLargest, 0x1p970, -kTiny}, kLargest},
      {"subnormals", manyTiny, 0x1p-1062},
      {"from subnormal to normal", {kSmallest, -kTiny, -kTiny, kTiny}, kSmallest - kTiny},
      {"half to even, down", {1.0, 0x1p-53}, 1.0},
      {"half to even, up", {1.0, 0x1p-52, 0x1p-53}, 1 + 0x1p-51},
      {"more than half", {1.0, 0x1p-53, kTiny}, 1 + 0x1p-52},
      {"less than half", {-1.0, -0x1p-53, kTiny}, -1.0},
      {"rounded to a power of two", {0x1.fffffffffffffp0, 0x1p-53}, 2.0},
      {"many carries", with(Values(1 << 20, 0x1.fffffffffffffp31), Values(1 << 20, -0x1.fffffffffffffp31)), 0.0},
      {"infinity", {kInf, -kLargest, kInf}, kInf},
      {"infinities", {kInf, 1.0, -kInf}, kNaN},
      {"no number", {kInf, kNaN, -1.0}, kNaN},
      {"minus infinity", {-kInf, 1e308, 1e308}, -kInf},
  };
  std::mt19937_64 random(1);
  for (const int mode : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
    std::fesetround(mode);
    for (const auto& row : rows)
      for (const std::size_t parts : {1, 7}) {
        const double sum = sumOf(row.values, random, parts);
        const bool isSame =
            std::isnan(row.sum) ? std::isnan(sum) : bit_cast<uint64_t>(sum) == bit_cast<uint64_t>(row.sum);
        EXPECT_TRUE(isSame) << row.name << ": " << sum << ", rounding " << mode << ", parts " << parts;
      }
  }
  std::fesetround(FE_TONEAREST);
}

TEST(ExactSum, OfRandomNumbersInAnyOrder) {
  std::mt19937_64 random(2);
  for (const int spread : {3, 60, 600, 1900}) { // bits between the largest and the smallest
    Values values(spread == 60 ? 1000000 : 3000);
    for (double& value : values)
      value = std::ldexp(static_cast<double>(static_cast<int64_t>(random())),
                         static_cast<int>(random() % static_cast<unsigned>(spread)) - spread / 2 - 63);
    const double exact = sumByExpansion(values);
    for (const std::size_t parts : {1, 2, 13}) EXPECT_EQ(sumOf(values, random, parts), exact) << spread;
  }
}

} // namespace
