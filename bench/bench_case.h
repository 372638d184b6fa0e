// A kernel as the benchmark sees it, and what fills its arrays.  Each family lists its cases in a file of its own.
#pragma once

#include "peer_kernels.h"
#include "tests/support/random.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

using sharedanalysis::test::Random;
using Arrays = std::vector<double*>;

// What a point needs of the unit that divides: a root takes it longer than a quotient.
struct Divisions {
  int quotients, roots;
  constexpr Divisions(int quotientCount = 0, int rootCount = 0) : quotients(quotientCount), roots(rootCount) {}
};

// A kernel as the benchmark sees it: the arrays of a block, what fills them, and the ways to compute it.
struct Case {
  std::string name;
  std::vector<int> columns; // values per point of each array
  std::function<void(int n, const Arrays&, Random&)> fill;
  std::function<void(int32_t n, const Arrays&)> kernel, plain;
  // what a point must cost: sums and products (a logarithm 31, an exponential 38 of them), divisions and roots
  int arithmetic = 0;
  Divisions divisions = {};
  int bytes = 0;                      // none: those of the arrays
  int accesses = 0;                   // loads and stores that go one by one: maps, records, rows of tables
  std::vector<peer::Peer> peers = {}; // beside those that take the arrays as they are
};
// A peer whose package may be missing.
inline std::vector<peer::Peer> peerIf(const char* package, peer::Call call) {
  return call ? std::vector<peer::Peer>{{package, std::move(call)}} : std::vector<peer::Peer>{};
}
inline void uniform(int count, double* values, Random& random, double low, double high) {
  for (int k = 0; k < count; ++k) values[k] = random.uniform(low, high);
}

inline int32_t* integers(double* array) { return reinterpret_cast<int32_t*>(array); }

// Stretches and coordinates of a body in moderate motion.
inline void fillStretch(int n, double* V, Random& random) {
  uniform(3 * n, V, random, 0.8, 1.3);
  uniform(3 * n, V + 3 * n, random, -0.15, 0.15);
}
inline void fillBricks(int n, double* X, Random& random) {
  constexpr double corner[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                                   {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
  for (int c = 0; c < 3; ++c)
    for (int node = 0; node < 8; ++node)
      for (int e = 0; e < n; ++e) X[(8 * c + node) * n + e] = corner[node][c] + random.uniform(-0.2, 0.2);
}
inline void fillTensors(int n, const Arrays& a, Random& random) { uniform(6 * n, a[0], random, -1, 1); }
// Maps of the gather and assembly cases: points to the entities of a global array.
struct Global {
  int entities = 0;
  std::vector<double> values;
};
inline Global& global() {
  static Global instance;
  return instance;
}

enum class Order { Ordered, Random };
inline void fillMap(int n, double* array, Random& random, Order order) {
  // neighbouring elements share nodes: an ordered map goes on by one, now and then by more
  const int32_t first = random.integer(1, std::max(1, global().entities - 2 * n));
  int32_t next = first;
  for (int i = 0; i < n; ++i) {
    integers(array)[i] = order == Order::Random ? random.integer(1, global().entities) : next;
    next = std::min(next + (i % 16 == 15 ? 5 : 1), global().entities);
  }
}
// The families.
void addSharedCases(std::vector<Case>& list);
void addBrickCases(std::vector<Case>& list);
void addHyperelasticCases(std::vector<Case>& list);
void addOutputCases(std::vector<Case>& list);
void addUserCases(std::vector<Case>& list);
void addTableCases(std::vector<Case>& list);

} // namespace bench
