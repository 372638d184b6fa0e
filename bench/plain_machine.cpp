#include "plain_machine.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <map>
#include <vector>

namespace plain {
namespace {

#if defined(__AVX512F__)
constexpr int kWidth = 8;
#elif defined(__AVX__)
constexpr int kWidth = 4;
#else
constexpr int kWidth = 2;
#endif
typedef double Vector __attribute__((vector_size(8 * kWidth)));

// Calls of `work` a nanosecond, by the shortest of many samples.
template <class Work>
double perNanosecond(Work work) {
  double best = 1e300;
  for (int k = 0; k < 200; ++k) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    best = std::min(best, spent.count());
  }
  return 1 / best;
}

// Results a nanosecond of ten independent chains, so that the units and not their latency count; the asm keeps each in a register.
template <class First, class Second>
double rateOf(First first, Second second) {
  constexpr int rounds = 2000;
  return rounds * 10 * kWidth * perNanosecond([=] {
           const Vector one = Vector{} + 1.0;
           Vector a = one, b = one, c = one, d = one, e = one, f = one, g = one, h = one, i = one, j = one;
           for (int r = 0; r < rounds; ++r) {
             a = first(a), b = second(b), c = first(c), d = second(d), e = first(e);
             f = second(f), g = first(g), h = second(h), i = first(i), j = second(j);
             asm volatile("" // NOLINT
                          : "+x"(a), "+x"(b), "+x"(c), "+x"(d), "+x"(e), "+x"(f), "+x"(g), "+x"(h), "+x"(i), "+x"(j));
           }
         });
}

} // namespace

const Machine& machine() {
  static const Machine rates = [] {
    Machine m;
    const auto divide = [](Vector x) { return 1.000001 / x; };
    m.operations = rateOf([](Vector x) { return x + 1e-9; }, [](Vector x) { return x * 0.999999; });
    m.divisions = rateOf(divide, divide);
    const auto root = [](Vector x) {
      Vector y;
#if defined(__AVX__)
      asm("vsqrtpd %1, %0" : "=x"(y) : "x"(x)); // NOLINT: the compiler takes such vectors apart
#else
      asm("sqrtpd %1, %0" : "=x"(y) : "x"(x)); // NOLINT
#endif
      return y + 1.0; // no root of one
    };
    m.roots = rateOf(root, root);
    std::vector<double> from(256, 1.0), to(256);
    std::vector<int32_t> map(256);
    for (int k = 0; k < 256; ++k) map[k] = k * 37 % 256;
    constexpr int rounds = 50;
    m.accesses = rounds * 3 * 256 * perNanosecond([&] {
                   for (int r = 0; r < rounds * 256; ++r) {
                     const int k = r % 256;
                     double value = from[map[k]];
                     asm volatile("" : "+x"(value)); // NOLINT: one by one
                     to[k] = value;
                   }
                 });
    return m;
  }();
  return rates;
}

double copiedBytes(int64_t bytes) {
  static std::map<int, double> known; // by the power of two that is nearest
  const int power = std::clamp(static_cast<int>(std::lround(std::log2(static_cast<double>(bytes)))), 10, 26);
  double& rate = known[power];
  if (rate == 0) {
    const size_t half = size_t{1} << (power - 1);
    std::vector<char> block(2 * half + 128, 1);
    char* start = block.data() + (64 - reinterpret_cast<uintptr_t>(block.data()) % 64);
    const int calls = std::max(1, static_cast<int>((size_t{1} << 18) / half));
    rate = 2.0 * static_cast<double>(half) * calls * perNanosecond([=] {
             for (int k = 0; k < calls; ++k) {
               std::memcpy(start + half, start, half);
               asm volatile("" : : "r"(start) : "memory"); // NOLINT
             }
           });
  }
  return rate;
}

} // namespace plain
