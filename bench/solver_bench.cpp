// Element updates of the explicit solver: whole increments of the twisting column, everything included, on one and two
// threads in turn.
#include "glo.h"
#include "solver/analysis/analysis.h"
#include "tests/solver/models.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

int main() {
  using namespace sharedanalysis;
  int32_t components = 0;
  Shared_Analysis_XP_initialize(&components);
  std::printf("%8s  %12s  %12s  %8s\n", "bricks", "1 thread ns", "2 threads ns", "ratio");
  for (int width : {4, 8, 12, 20}) {
    const solver::Mesh mesh = test::box({width, width, 6 * width}, {1, 1, 6});
    solver::Case c = test::caseOf(test::neoHooke(17e6, 0.45, 1100), 1e9);
    test::fix(c, "z0", "xyz");
    solver::InitialVelocity spin;
    spin.origin = {0.5, 0.5, 0};
    spin.rate = 105;
    spin.profileLength = 12;
    c.initialVelocities = {spin};
    solver::Analysis one(mesh, c, 1), two(mesh, c, 2);
    double best[2] = {1e300, 1e300};
    for (int round = 0; round < 12; ++round)
      for (solver::Analysis* analysis : {&one, &two}) {
        const int64_t before = analysis->elementUpdates();
        const double increments = std::max(5.0, 60000.0 / mesh.elements());
        const auto start = std::chrono::steady_clock::now();
        analysis->advanceTo(analysis->progress().time + increments * analysis->progress().stableIncrement);
        const std::chrono::duration<double, std::nano> spent = std::chrono::steady_clock::now() - start;
        double& least = best[analysis == &two];
        least = std::min(least, spent.count() / static_cast<double>(analysis->elementUpdates() - before));
      }
    std::printf("%8d  %12.1f  %12.1f  %8.2f\n", mesh.elements(), best[0], best[1], best[0] / best[1]);
  }
  Shared_Analysis_XP_finalize(&components);
}
