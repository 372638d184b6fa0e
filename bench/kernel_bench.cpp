// Nanoseconds per point of each kernel beside a plain loop and beside other packages that do the same, hot (one block of 128
// points that stays in the cache) and swept (blocks of 128 points, one after the other, over 64 MiB), and beside what the machine
// must take for it.  All take turns in one run; hot the smallest of many samples counts, swept that which a tenth of the chunks
// stay below; ratios keep, absolute times are those of this machine and hour.  The lines are a table of bench/README.md.
//   kernel_bench [NAME...]             those kernels whose name contains one of the words
//   kernel_bench --kernels [NAME...]   the kernels alone: lines of "name;ns hot;ns swept", what scripts/bench_compare reads
#include "bench_case.h"
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "host_services.h"
#include "plain_kernels.h"
#include "plain_machine.h"

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

using Run = std::function<void()>;
using Way = std::function<void(int32_t, const Arrays&)>;

// The smallest time of one call of each, taking turns, in nanoseconds.
std::vector<double> inTurns(int rounds, int repeats, const std::vector<Run>& runs) {
  std::vector<double> best(runs.size(), 1e300);
  for (int round = 0; round < rounds; ++round)
    for (size_t k = 0; k < runs.size(); ++k) {
      const Clock::time_point start = Clock::now();
      for (int call = 0; call < repeats; ++call) runs[k]();
      const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
      best[k] = std::min(best[k], spent.count() / repeats);
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
  int count() const { return static_cast<int>(arrays_.size()); }
  void run(const Way& call, int first, int end) const {
    for (int b = first; b < end; ++b) call(n_, arrays_[static_cast<size_t>(b)]);
  }

private:
  int n_;
  std::vector<double> storage_;
  std::vector<Arrays> arrays_;
};

// Nanoseconds of one block in memory for each way.  They take turns by chunks of 1 MiB, so that others who use the memory slow all
// of them alike; a tenth of the chunks took less.
std::vector<double> inChunks(int sweeps, int blocksOfChunk, const Blocks& blocks, const std::vector<Way>& ways) {
  std::vector<std::vector<double>> times(ways.size());
  for (int sweep = 0; sweep < sweeps; ++sweep)
    for (int first = 0; first + blocksOfChunk <= blocks.count(); first += blocksOfChunk) {
      const size_t way = static_cast<size_t>(first / blocksOfChunk + sweep) % ways.size(); // every chunk goes to each
      const Clock::time_point start = Clock::now();
      blocks.run(ways[way], first, first + blocksOfChunk);
      const std::chrono::duration<double, std::nano> spent = Clock::now() - start;
      times[way].push_back(spent.count() / blocksOfChunk);
    }
  std::vector<double> least;
  for (std::vector<double>& t : times) {
    const auto tenth = t.begin() + static_cast<std::ptrdiff_t>(t.size() / 10);
    std::nth_element(t.begin(), tenth, t.end());
    least.push_back(*tenth);
  }
  return least;
}

// Nanoseconds per point of the kernel, the plain loop (0 where there is none) and each peer.
struct Times {
  double kernel = 0, plain = 0;
  std::vector<double> peers;
};
int columnsOf(const Case& c) { return std::accumulate(c.columns.begin(), c.columns.end(), 0); }
Times measure(const Case& c, int count, bool kernelsAlone) {
  constexpr int n = 128;
  global().entities = count == 1 ? 4 * n : 1 << 20;
  global().values.assign(3 * static_cast<size_t>(global().entities) + 16, 1.0);
  const Blocks blocks(c, n, count);
  std::vector<Way> ways = {c.kernel};
  if (!kernelsAlone && c.plain) ways.push_back(c.plain);
  if (!kernelsAlone)
    for (const peer::Peer& other : c.peers) ways.push_back(other.run);
  std::vector<double> best;
  if (count > 1) {
    constexpr int sweeps = 8;
    const int blocksOfChunk = std::max(1, (1 << 20) / (8 * n * columnsOf(c)));
    best = inChunks(sweeps * static_cast<int>(ways.size()), blocksOfChunk, blocks, ways);
  } else {
    std::vector<Run> runs;
    for (const Way& way : ways) runs.emplace_back([&blocks, &way] { blocks.run(way, 0, 1); });
    const double once = inTurns(2, 1, runs).front();
    best = inTurns(300, std::max(1, static_cast<int>(20e3 / once)), runs);
  }
  for (double& time : best) time /= n;
  Times times{best.front(), 0, {}};
  if (kernelsAlone) return times;
  if (c.plain) times.plain = best[1];
  times.peers.assign(best.end() - static_cast<std::ptrdiff_t>(c.peers.size()), best.end());
  return times;
}

int bytesOf(const Case& c) { return c.bytes > 0 ? c.bytes : 8 * columnsOf(c); }

// What a point must take, and why: the largest of the times of its operations, divisions, single accesses and bytes.
std::string limitOf(const Case& c, int64_t footprint, double kernel) {
  const plain::Machine& m = plain::machine();
  const std::pair<double, const char*> bounds[] = {
      {c.arithmetic / m.operations, "operations"},
      {c.divisions.quotients / m.divisions + c.divisions.roots / m.roots, "divisions"},
      {c.accesses / m.accesses, "accesses"},
      {bytesOf(c) / plain::copiedBytes(footprint), "bytes"}};
  const auto& [least, what] = *std::max_element(std::begin(bounds), std::end(bounds));
  char text[64];
  std::snprintf(text, sizeof text, "%.2f %s %.2f", least, what, kernel / least);
  return text;
}

// A line of the table: kernel, plain loop and ratio, the fastest peer and ratio, limit.
void printTimes(const Case& c, const Times& t, int64_t footprint) {
  std::printf(" %.2f | ", t.kernel);
  if (t.plain > 0) std::printf("%.2f **%.2f**", t.plain, t.plain / t.kernel);
  std::printf(" | ");
  if (!t.peers.empty()) {
    const auto best = std::min_element(t.peers.begin(), t.peers.end());
    const std::string& package = c.peers[static_cast<size_t>(best - t.peers.begin())].package;
    std::printf("%s %.2f **%.2f**", package.c_str(), *best, *best / t.kernel);
  }
  std::printf(" | %s |", limitOf(c, footprint, t.kernel).c_str());
  std::fflush(stdout);
}

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
  const std::vector<double> best = inTurns(200, 200, {kernel, plain});
  std::printf("A message of two lines through `glo_uti_CWrite`: %.0f ns, with `snprintf` and `std::string` %.0f ns, "
              "ratio **%.2f**.\n",
              best[0], best[1], best[1] / best[0]);
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
  std::vector<Case> list;
  bench::addSharedCases(list);
  bench::addBrickCases(list);
  bench::addHyperelasticCases(list);
  bench::addOutputCases(list);
  bench::addUserCases(list);
  bench::addTableCases(list);
  if (!kernelsAlone) {
    const plain::Machine& m = plain::machine();
    std::printf("A nanosecond holds %.0f sums or products, %.2f divisions, %.2f roots, %.1f single accesses and copies "
                "%.0f bytes in a block of 16 KiB, %.1f in 64 MiB.\n\n",
                m.operations, m.divisions, m.roots, m.accesses, plain::copiedBytes(1 << 14),
                plain::copiedBytes(1 << 26));
    std::printf("| kernel | hot | plain | peer | limit | swept | plain | peer | limit "
                "|\n|---|---|---|---|---|---|---|---|---|\n");
  }
  for (Case& c : list) {
    if (!wanted(c.name)) continue;
    const int sweptBlocks = (64 << 20) / (128 * 8 * columnsOf(c));
    if (kernelsAlone) {
      std::printf("%s;%.4f;%.4f\n", c.name.c_str(), measure(c, 1, true).kernel, measure(c, sweptBlocks, true).kernel);
      continue;
    }
    for (peer::Peer& other : peer::peersOf(c.name)) c.peers.push_back(std::move(other));
    const size_t end = std::min(c.name.find(' '), c.name.find(',')); // of the routine's name
    std::printf("| `%s`%s |", c.name.substr(0, end).c_str(), end < c.name.size() ? c.name.c_str() + end : "");
    printTimes(c, measure(c, 1, false), 128 * bytesOf(c));
    printTimes(c, measure(c, sweptBlocks, false), 64 << 20);
    std::printf("\n");
  }
  if (!kernelsAlone && (wanted("WRITE") || wanted("glo_uti_CWrite"))) benchWriter();
  return linesTaken < 0;
}
