// Nanoseconds per point of each kernel beside a plain loop that does the same, hot (one block that stays in the cache, 64 and
// 128 points) and swept (blocks of 128 points, one after the other, over 64 MiB).  The two take turns in one run and the
// smallest of many samples counts; ratios keep, absolute times are those of this machine and hour.
//   kernel_bench [NAME...]             those kernels whose name contains one of the words
//   kernel_bench --kernels [NAME...]   without the plain loops: lines of "name;ns hot;ns swept", what scripts/bench_compare reads
#include "bench_case.h"
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "host_services.h"
#include "plain_kernels.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using namespace bench;

// The smallest time of one call of each of two, taking turns, in nanoseconds.
struct Pair {
  double kernel = 1e300, plain = 1e300;
};
template <class First, class Second>
Pair inTurns(int rounds, int repeats, First first, Second second) {
  const auto sample = [repeats](auto& run, double& best) {
    const Clock::time_point start = Clock::now();
    for (int k = 0; k < repeats; ++k) run();
    const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
    best = std::min(best, spent.count() / repeats);
  };
  Pair best;
  for (int round = 0; round < rounds; ++round) {
    sample(first, best.kernel);
    sample(second, best.plain);
  }
  return best;
}

// Blocks of n points, each with its arrays one after the other; every array begins on a cache line.
class Blocks {
public:
  Blocks(const Case& c, int n, int count) : n_(n) {
    size_t size = 0;
    std::vector<size_t> offsets;
    for (int columns : c.columns) {
      offsets.push_back(size);
      size += (static_cast<size_t>(columns) * n + 7) / 8 * 8;
    }
    storage_.assign(size * count + 8, 0.0);
    double* start = storage_.data() + (8 - reinterpret_cast<uintptr_t>(storage_.data()) / 8 % 8) % 8;
    Random random(11);
    for (int b = 0; b < count; ++b) {
      Arrays arrays;
      for (size_t offset : offsets) arrays.push_back(start + b * size + offset);
      c.fill(n, arrays, random);
      arrays_.push_back(std::move(arrays));
    }
  }
  template <class Call>
  void run(Call& call) const {
    for (const Arrays& arrays : arrays_) call(n_, arrays);
  }

private:
  int n_;
  std::vector<double> storage_;
  std::vector<Arrays> arrays_;
};

// With kernels alone both of the turns are the kernel's.
Pair measure(Case& c, int n, int count, bool kernelsAlone) {
  global().entities = count == 1 ? 4 * n : 1 << 20;
  global().values.assign(3 * static_cast<size_t>(global().entities) + 16, 1.0);
  const Blocks blocks(c, n, count);
  const auto kernel = [&] { blocks.run(c.kernel); };
  const auto plain = [&] { blocks.run(kernelsAlone ? c.kernel : c.plain); };
  const Pair once = inTurns(2, 1, kernel, plain);
  const int repeats = std::max(1, static_cast<int>((kernelsAlone ? 20e3 : 100e3) / once.plain));
  Pair best = inTurns(count == 1 ? 150 : 8, repeats, kernel, plain);
  if (kernelsAlone) best.kernel = std::min(best.kernel, best.plain);
  const double points = static_cast<double>(n) * count;
  best.kernel /= points;
  best.plain /= points;
  return best;
}

int arrayBytes(const Case& c) { return 8 * std::accumulate(c.columns.begin(), c.columns.end(), 0); }

// The writer costs per message; its host takes the lines and does nothing with them.
int64_t linesTaken = 0;
void takeLine(const std::string& line) { linesTaken += static_cast<int64_t>(line.size()); }

void benchWriter() {
  const char* const text =
      "The stable increment of element %I in instance %S fell to %R s; the analysis goes on with it.";
  const int32_t number = 48213;
  const double real = 1.23456e-7;
  const char* const name = "PART-1-1";
  const auto kernel = [&] { glo_uti_CWrite(-6, 0, "Info", text, &number, &real, &name); };
  const auto plain = [&] { plain::write(text, &number, &real, &name, takeLine); };
  const Pair best = inTurns(200, 200, kernel, plain);
  std::printf("%-24s %9.0f %9.0f %7.2f   (one message of two lines)\n", "glo_uti_CWrite Info", best.kernel, best.plain,
              best.plain / best.kernel);
}

} // namespace

void lfc_xut_xplmsgC_c(const char*, int32_t, int32_t, int32_t, int32_t, int64_t length) { linesTaken += length; }
template <>
dsm_ker_ThreadData& thr_ThreadSingleton<dsm_ker_ThreadData>::Instance() {
  static dsm_ker_ThreadData data{0, 1};
  return data;
}

int main(int argc, char** argv) {
  const bool kernelsAlone = argc > 1 && std::string(argv[1]) == "--kernels";
  const std::vector<std::string> words(argv + (kernelsAlone ? 2 : 1), argv + argc);
  const auto wanted = [&](const std::string& name) {
    return words.empty() || std::any_of(words.begin(), words.end(),
                                        [&](const std::string& word) { return name.find(word) != std::string::npos; });
  };
  if (!kernelsAlone) {
    std::printf(
        "ns per point                  64 points                  128 points                  swept            a "
        "point costs\n");
    std::printf("%-24s %9s %9s %7s %9s %9s %7s %9s %9s %7s   %5s %5s %5s\n", "", "kernel", "plain", "ratio", "kernel",
                "plain", "ratio", "kernel", "plain", "ratio", "bytes", "+ *", "/ sqrt");
  }
  std::vector<Case> list;
  bench::addSharedCases(list);
  bench::addBrickCases(list);
  bench::addHyperelasticCases(list);
  bench::addOutputCases(list);
  bench::addUserCases(list);
  bench::addTableCases(list);
  for (Case& c : list) {
    if (!wanted(c.name)) continue;
    const int sweptBlocks = (64 << 20) / (128 * arrayBytes(c));
    if (kernelsAlone) {
      const Pair hot = measure(c, 128, 1, true), swept = measure(c, 128, sweptBlocks, true);
      std::printf("%s;%.4f;%.4f\n", c.name.c_str(), hot.kernel, swept.kernel);
      continue;
    }
    std::printf("%-24s", c.name.c_str());
    for (const auto& [n, count] : {std::pair{64, 1}, {128, 1}, {128, sweptBlocks}}) {
      const Pair best = measure(c, n, count, false);
      std::printf(" %9.2f %9.2f %7.2f", best.kernel, best.plain, best.plain / best.kernel);
      std::fflush(stdout);
    }
    std::printf("   %5d %5d %5d\n", c.bytes > 0 ? c.bytes : arrayBytes(c), c.arithmetic, c.divisions);
  }
  if (!kernelsAlone && (wanted("WRITE") || wanted("glo_uti_CWrite"))) benchWriter();
  return linesTaken < 0;
}
