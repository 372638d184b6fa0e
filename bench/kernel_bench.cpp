// Nanoseconds per point of each kernel beside a plain loop that does the same, hot (one block that stays in the cache, 64 and
// 128 points) and swept (blocks of 128 points, one after the other, over 64 MiB).  The two take turns in one run and the
// smallest of many samples counts; ratios keep, absolute times are those of this machine and hour.
//   kernel_bench [NAME...]   those kernels whose name contains one of the words
#include "dsm_ker_ThreadData.h"
#include "glo.h"
#include "glo/kernel.h"
#include "glo/vmath.h"
#include "host_services.h"
#include "peer_kernels.h"
#include "plain_kernels.h"
#include "spx.h"
#include "tests/support/random.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace {

using sharedanalysis::test::Random;
using Clock = std::chrono::steady_clock;
using Arrays = std::vector<double*>;

// A kernel as the benchmark sees it: the arrays of a block, what fills them, and the two ways to compute it.
struct Case {
  std::string name;
  std::vector<int> columns; // values per point of each array
  std::function<void(int n, const Arrays&, Random&)> fill;
  std::function<void(int32_t n, const Arrays&)> kernel, plain;
  // what a point must cost: sums and products (a logarithm 31, an exponential 38 of them), divisions and roots
  int arithmetic = 0, divisions = 0, bytes = 0; // no bytes: those of the arrays
};

void uniform(int count, double* values, Random& random, double low, double high) {
  for (int k = 0; k < count; ++k) values[k] = random.uniform(low, high);
}

int32_t* integers(double* array) { return reinterpret_cast<int32_t*>(array); }

// Stretches and coordinates of a body in moderate motion.
void fillStretch(int n, double* V, Random& random) {
  uniform(3 * n, V, random, 0.8, 1.3);
  uniform(3 * n, V + 3 * n, random, -0.15, 0.15);
}
void fillBricks(int n, double* X, Random& random) {
  constexpr double corner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                   {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  for (int c = 0; c < 3; ++c)
    for (int node = 0; node < 8; ++node)
      for (int e = 0; e < n; ++e) X[(8 * c + node) * n + e] = corner[node][c] + random.uniform(-0.2, 0.2);
}
void fillTensors(int n, const Arrays& a, Random& random) { uniform(6 * n, a[0], random, -1, 1); }

// dN/dxi, dN/deta, dN/dzeta at the integration point (-1, -1, -1)/sqrt(3).
const std::vector<double>& brickTables() {
  static const std::vector<double> tables = [] {
    constexpr int sign[8][3] = {{-1, -1, -1}, {1, -1, -1}, {1, 1, -1}, {-1, 1, -1},
                                {-1, -1, 1},  {1, -1, 1},  {1, 1, 1},  {-1, 1, 1}};
    const double at = -1 / std::sqrt(3.0);
    std::vector<double> values;
    for (int d = 0; d < 3; ++d)
      for (const auto& s : sign) {
        double product = s[d] / 8.0;
        for (int c = 0; c < 3; ++c) product *= c == d ? 1 : 1 + at * s[c];
        values.push_back(product);
      }
    return values;
  }();
  return tables;
}

// Maps of the gather and assembly cases: points to the entities of a global array.
struct Global {
  int entities = 0;
  std::vector<double> values;
};
Global& global() {
  static Global instance;
  return instance;
}

enum class Order { Ordered, Random };
void fillMap(int n, double* array, Random& random, Order order) {
  // neighbouring elements share nodes: an ordered map goes on by one, now and then by more
  const int32_t first = random.integer(1, std::max(1, global().entities - 2 * n));
  int32_t next = first;
  for (int i = 0; i < n; ++i) {
    integers(array)[i] = order == Order::Random ? random.integer(1, global().entities) : next;
    next = std::min(next + (i % 16 == 15 ? 5 : 1), global().entities);
  }
}

#define SA_MATH_LOOP(function)                                                                                         \
  SA_CLONES                                                                                                            \
  void function##Loop(int n, const double* x, double* y) {                                                             \
    sa::forPoints(n, [=](int i) SA_POINT { y[i] = sa::vm::function(x[i]); });                                          \
  }
SA_MATH_LOOP(exp)
SA_MATH_LOOP(expClamped)
SA_MATH_LOOP(log)
SA_MATH_LOOP(logPositive)
SA_MATH_LOOP(cos)
SA_MATH_LOOP(acos)

template <class Loop, class Plain>
Case mathCase(const char* name, Loop loop, Plain plain, double low, double high, int arithmetic, int divisions) {
  return {name,
          {1, 1},
          [=](int n, const Arrays& a, Random& random) { uniform(n, a[0], random, low, high); },
          [=](int32_t n, const Arrays& a) { loop(n, a[0], a[1]); },
          [=](int32_t n, const Arrays& a) { plain(&n, a[0], a[1]); },
          arithmetic,
          divisions};
}

// S in, P and perhaps V out.
template <class Kernel, class Plain>
Case principalCase(const char* name, Kernel kernel, Plain plain, int values, int directions, int arithmetic,
                   int divisions, int bytes = 0) {
  return {name,
          {6, values, directions},
          fillTensors,
          [=](int32_t n, const Arrays& a) {
            if constexpr (std::is_invocable_v<Kernel, int32_t*, double*, double*, double*>)
              kernel(&n, a[0], a[1], a[2]);
            else
              kernel(&n, a[0], a[1]);
          },
          [=](int32_t n, const Arrays& a) {
            if constexpr (std::is_invocable_v<Plain, int32_t*, double*, double*, double*>)
              plain(&n, a[0], a[1], a[2]);
            else
              plain(&n, a[0], a[1]);
          },
          arithmetic,
          divisions,
          bytes};
}

template <class Call>
Case mapCase(const char* name, Order order, Call kernel, Call plain, int arithmetic, int bytes) {
  return {name,   {1, 3}, [=](int n, const Arrays& a, Random& random) { fillMap(n, a[0], random, order); },
          kernel, plain,  arithmetic,
          0,      bytes};
}

// Kernels beside Eigen, and data movement beside a copy of as many bytes.
void addPeers(std::vector<Case>& list) {
  list.push_back(
      principalCase("EIG33, Eigen direct", GLO_UTI_EIG33, peer::eigenDirectValues, 3, 0, 4 * 3 * 25, 4 * 3 * 4));
  list.push_back(principalCase("EIG33V, Eigen direct", GLO_UTI_EIG33V, peer::eigenDirect, 3, 9, 4 * 3 * 40, 4 * 3 * 4));
  list.push_back(
      principalCase("EIG33V, Eigen iterative", GLO_UTI_EIG33V, peer::eigenIterative, 3, 9, 4 * 3 * 40, 4 * 3 * 4));
  list.push_back(
      principalCase("PRINCS33, Eigen direct", GLO_UTI_PRINCS33, peer::eigenDirect, 3, 9, 3 * 3 * 55, 3 * 3 * 5));
  const auto quaternions = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t op = 1;
      call(&n, &op, a[0], a[1], a[2]);
    };
  };
  list.push_back({"QUAT3DALGEBRA, Eigen",
                  {4, 4, 4},
                  [](int n, const Arrays& a, Random& random) {
                    uniform(4 * n, a[1], random, -1, 1);
                    uniform(4 * n, a[2], random, -1, 1);
                  },
                  quaternions(GLO_UTI_QUAT3DALGEBRA),
                  quaternions(peer::eigenQuaternions),
                  37,
                  2});

  // a copy reads and writes half of the bytes each
  using Call = std::function<void(int32_t, const Arrays&)>;
  const auto copies = [](int64_t bytesPerPoint, std::size_t from, std::size_t to) -> Call {
    return [=](int32_t n, const Arrays& a) { peer::copyBytes(n * bytesPerPoint / 2, a[from], a[to]); };
  };
  const auto nothing = [](int, const Arrays&, Random&) {};
  list.push_back({"COPYR, memcpy",
                  {1, 1},
                  nothing,
                  [](int32_t n, const Arrays& a) { GLO_UTI_COPYR(&n, a[0], a[1]); },
                  copies(16, 0, 1)});
  list.push_back({"BROADCASTR, memcpy",
                  {2},
                  nothing,
                  [](int32_t n, const Arrays& a) {
                    const double value = 1;
                    const int32_t values = 2 * n;
                    GLO_UTI_BROADCASTR(&values, &value, a[0]);
                  },
                  [](int32_t n, const Arrays& a) { peer::copyBytes(8 * n, a[0], a[0] + n); }});
  const auto movedInOrder = [](int n, const Arrays& a, Random& random) { fillMap(n, a[0], random, Order::Ordered); };
  list.push_back({"GATHERR, memcpy",
                  {1, 3, 3},
                  movedInOrder,
                  [](int32_t n, const Arrays& a) {
                    const int32_t components = 3, ld = global().entities;
                    GLO_UTI_GATHERR(&n, &components, &ld, integers(a[0]), a[1], global().values.data());
                  },
                  copies(48, 1, 2),
                  0,
                  0,
                  52});
  list.push_back({"SCATTERR, memcpy",
                  {1, 3, 3},
                  movedInOrder,
                  [](int32_t n, const Arrays& a) {
                    const int32_t components = 3, ld = global().entities;
                    GLO_UTI_SCATTERR(&n, &components, &ld, integers(a[0]), a[1], global().values.data());
                  },
                  copies(48, 1, 2),
                  0,
                  0,
                  52});
}

constexpr int kKeySets = 200; // an even number

std::vector<Case> cases() {
  std::vector<Case> list;
  list.push_back(principalCase("GLO_UTI_PRINCS33", GLO_UTI_PRINCS33, plain::princs33, 3, 9, 3 * 3 * 55, 3 * 3 * 5));
  list.push_back(principalCase("GLO_UTI_EIG33ANAL", GLO_UTI_EIG33ANAL, plain::eig33anal, 3, 0, 190, 5));
  list.push_back(
      principalCase("GLO_UTI_EIG33VECTOR", GLO_UTI_EIG33VECTOR, plain::eig33vector, 3, 0, 3 * 3 * 25, 3 * 3 * 5));
  list.push_back(principalCase("GLO_UTI_PRINCS31", GLO_UTI_PRINCS31, plain::princs31, 3, 9, 27, 5, 128));
  list.push_back({"GLO_UTI_SQRTV",
                  {6, 6},
                  [](int n, const Arrays& a, Random& random) { fillStretch(n, a[0], random); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_SQRTV(&n, a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::sqrtv(&n, a[0], a[1]); },
                  4 * 3 * 40,
                  4 * 3 * 4 + 3});

  const auto bricks = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      const int32_t point = 1, points = 1;
      const double* dN = brickTables().data();
      call(&n, &point, &points, dN, dN + 8, dN + 16, a[0], a[1], a[2], a[3], a[4]);
    };
  };
  const auto fillX = [](int n, const Arrays& a, Random& random) { fillBricks(n, a[0], random); };
  list.push_back(
      {"SPX_OPE_C3D8OPER", {24, 24, 1, 1, 1}, fillX, bricks(SPX_OPE_C3D8OPER), bricks(plain::c3d8oper), 290, 1});
  const auto oneless = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, &n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7]); };
  };
  list.push_back({"SPX_OPE_C3D8ROPER2",
                  {24, 24, 1, 1, 1, 1, 32, 1},
                  fillX,
                  oneless(SPX_OPE_C3D8ROPER2),
                  oneless(plain::c3d8roper2),
                  550,
                  2});
  list.push_back({"SPX_OPE_C3DSYMGRAD",
                  {9, 6, 3},
                  [](int n, const Arrays& a, Random& random) { uniform(9 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { SPX_OPE_C3DSYMGRAD(&n, a[0], a[1], a[2]); },
                  [](int32_t n, const Arrays& a) { plain::c3dsymgrad(&n, a[0], a[1], a[2]); },
                  12,
                  0});

  const auto fillConstants = [](int count) {
    return [count](int n, const Arrays& a, Random& random) {
      for (int k = 0; k < count; ++k) uniform(n, a[k], random, 0.5, 1);
      fillStretch(n, a[count], random);
    };
  };
  const auto energy = [](auto call) {
    return [call](int32_t n, const Arrays& a) { call(&n, a[0], a[1], a[2], a[3], a[4], a[6], a[7], a[5]); };
  };
  list.push_back({"SPX_MAT_HYPERPOLYS33",
                  {1, 1, 1, 1, 1, 6, 1, 1},
                  fillConstants(5),
                  energy(SPX_MAT_HYPERPOLYS33),
                  energy(plain::hyperpolys33),
                  150,
                  3});
  const auto stress = [](auto call) {
    return [call](int32_t n, const Arrays& a) {
      call(&n, a[0], a[1], a[2], a[3], a[4], a[5], a[6], a[7], a[8], a[9], a[10], a[11]);
    };
  };
  list.push_back({"SPX_MAT_HYPERPOLY3DEXP",
                  {1, 1, 1, 1, 1, 1, 1, 6, 6, 1, 1, 1},
                  fillConstants(7),
                  stress(SPX_MAT_HYPERPOLY3DEXP),
                  stress(plain::hyperpoly3dexp),
                  350,
                  3});

  using Call = std::function<void(int32_t, const Arrays&)>;
  const auto gather = [](auto call) -> Call {
    return [call](int32_t n, const Arrays& a) {
      const int32_t components = 3, ld = global().entities;
      call(&n, &components, &ld, integers(a[0]), a[1], global().values.data());
    };
  };
  const auto assemble = [](auto call) -> Call {
    return [call](int32_t n, const Arrays& a) {
      const int32_t components = 3, ld = 3, unused = 0;
      call(&n, &components, &ld, &unused, global().values.data(), a[1], integers(a[0]));
    };
  };
  list.push_back(
      mapCase("GLO_UTI_GATHERR ordered", Order::Ordered, gather(GLO_UTI_GATHERR), gather(plain::gatherr), 0, 52));
  list.push_back(
      mapCase("GLO_UTI_GATHERR random", Order::Random, gather(GLO_UTI_GATHERR), gather(plain::gatherr), 0, 52));
  list.push_back(mapCase("GLO_OPE_GENASSEM ordered", Order::Ordered, assemble(GLO_OPE_GENASSEM),
                         assemble(plain::genassem), 3, 76));
  list.push_back(
      mapCase("GLO_OPE_GENASSEM random", Order::Random, assemble(GLO_OPE_GENASSEM), assemble(plain::genassem), 3, 76));

  list.push_back({"GLO_UTI_COPYR",
                  {1, 1},
                  [](int n, const Arrays& a, Random& random) { uniform(n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_COPYR(&n, a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::copyr(&n, a[0], a[1]); }});
  list.push_back({"GLO_UTI_VADDR",
                  {1, 1, 1},
                  [](int n, const Arrays& a, Random& random) { uniform(2 * n, a[0], random, -1, 1); },
                  [](int32_t n, const Arrays& a) { GLO_UTI_VADDR(&n, a[2], a[0], a[1]); },
                  [](int32_t n, const Arrays& a) { plain::vaddr(&n, a[2], a[0], a[1]); },
                  1,
                  0});

  // other keys every time: the branches of a sort that sees the same keys again would be known
  const auto sort = [](auto call) {
    return [call, turn = 0](int32_t n, const Arrays& a) mutable {
      turn = (turn + 1) % kKeySets;
      std::iota(integers(a[0]), integers(a[0]) + n, 1);
      call(integers(a[0]), integers(a[1]) + turn * n, &n);
    };
  };
  list.push_back({"GLO_UTI_INSSORTI",
                  {1, kKeySets / 2},
                  [](int n, const Arrays& a, Random& random) {
                    for (int i = 0; i < kKeySets * n; ++i) integers(a[1])[i] = random.integer(0, 1000);
                  },
                  sort(GLO_UTI_INSSORTI),
                  sort(plain::inssorti),
                  0,
                  0,
                  12});

  addPeers(list);
  list.push_back(mathCase("exp", expLoop, plain::exp, -20, 20, 38, 0));
  list.push_back(mathCase("exp, never subnormal", expClampedLoop, plain::exp, -20, 20, 36, 0));
  list.push_back(mathCase("log", logLoop, plain::log, 0.1, 10, 31, 1));
  list.push_back(mathCase("log, normal positive", logPositiveLoop, plain::log, 0.1, 10, 31, 1));
  list.push_back(mathCase("cos", cosLoop, plain::cos, -3, 3, 45, 0));
  list.push_back(mathCase("acos", acosLoop, plain::acos, -1, 1, 45, 1));
  return list;
}

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

Pair measure(Case& c, int n, int count) {
  global().entities = count == 1 ? 4 * n : 1 << 20;
  global().values.assign(3 * static_cast<size_t>(global().entities) + 16, 1.0);
  const Blocks blocks(c, n, count);
  const auto kernel = [&] { blocks.run(c.kernel); };
  const auto plain = [&] { blocks.run(c.plain); };
  const Pair once = inTurns(2, 1, kernel, plain);
  const int repeats = std::max(1, static_cast<int>(100e3 / once.plain));
  Pair best = inTurns(count == 1 ? 150 : 8, repeats, kernel, plain);
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
  const auto wanted = [&](const std::string& name) {
    return argc == 1 ||
           std::any_of(argv + 1, argv + argc, [&](const char* word) { return name.find(word) != std::string::npos; });
  };
  std::printf("ns per point                  64 points                  128 points                  swept            a "
              "point costs\n");
  std::printf("%-24s %9s %9s %7s %9s %9s %7s %9s %9s %7s   %5s %5s %5s\n", "", "kernel", "plain", "ratio", "kernel",
              "plain", "ratio", "kernel", "plain", "ratio", "bytes", "+ *", "/ sqrt");
  std::vector<Case> list = cases();
  for (Case& c : list) {
    if (!wanted(c.name)) continue;
    std::printf("%-24s", c.name.c_str());
    const int sweptBlocks = (64 << 20) / (128 * arrayBytes(c));
    for (const auto& [n, count] : {std::pair{64, 1}, {128, 1}, {128, sweptBlocks}}) {
      const Pair best = measure(c, n, count);
      std::printf(" %9.2f %9.2f %7.2f", best.kernel, best.plain, best.plain / best.kernel);
      std::fflush(stdout);
    }
    std::printf("   %5d %5d %5d\n", c.bytes > 0 ? c.bytes : arrayBytes(c), c.arithmetic, c.divisions);
  }
  if (wanted("WRITE") || wanted("glo_uti_CWrite")) benchWriter();
  return linesTaken < 0;
}
