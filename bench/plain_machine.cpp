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
  for (int k = 0; k < 40; ++k) {
    const auto start = std::chrono::steady_clock::now();
    work();
    const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
    best = std::min(best, spent.count());
  }
  return 1 / best;
}

// Independent chains, so that the units and not their latency count; the asm keeps each in a register.
template <int chains, class Step>
double rateOf(Step step) {
  Vector x[chains];
  for (int k = 0; k < chains; ++k) x[k] = Vector{} + 1.0;
  constexpr int rounds = 2000;
  return rounds * chains * kWidth * perNanosecond([&] {
           for (int r = 0; r < rounds; ++r)
#pragma GCC unroll 16
             for (int k = 0; k < chains; ++k) {
               x[k] = step(x[k], k);
               asm volatile("" : "+x"(x[k])); // NOLINT
             }
         });
}

} // namespace

const Machine& machine() {
  static const Machine rates = [] {
    Machine m;
    m.operations = rateOf<10>([](Vector x, int k) { return k % 2 == 0 ? x + 1e-9 : x * 0.999999; });
    m.divisions = rateOf<8>([](Vector x, int) { return 1.000001 / x; });
    std::vector<double> from(256, 1.0), to(256);
    std::vector<int32_t> map(256);
    for (int k = 0; k < 256; ++k) map[k] = k * 37 % 256;
    m.accesses = 3 * 256 * perNanosecond([&] {
                   for (int k = 0; k < 256; ++k) {
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
