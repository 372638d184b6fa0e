// Which user materials the benchmark and a test lead beside their plain loops: constants, and where the points stand.
#pragma once

#include "bench/plain/user_models.h"

#include <string>
#include <vector>

namespace plain {

struct UserRow {
  std::string name;
  int states;
  std::vector<double> props;
  void (*loop)(int32_t, const MaterialBlock&);
  double stress, strain;     // size of the stress at the start, and of an increment
  double shortest, longest;  // principal stretches, nearly
  std::vector<double> state; // largest values of the state at the start
  int arithmetic, divisions; // what a point costs, nearly
  bool isSheet = false;
  int energies = 2;               // that the loop computes: internal, inelastic
  double transformed = 0;         // strain of full transformation, which goes along the stress
  double widened = 0;             // and its volume
  double least = .88, most = .95; // principal stretches of the deformation gradient
};

namespace {

inline std::vector<UserRow> userRows() {
  const std::vector<double> curves = {.01,    6,   1,   6,   100,  6,   0,    0,   20e3,  .05, 40e3,  .4,  80e3,  .6,
                                      250e3,  .75, 1e6, .85, 0,    0,   28e3, .05, 56e3,  .4,  112e3, .6,  350e3, .75,
                                      1400e3, .85, 0,   0,   40e3, .05, 80e3, .4,  160e3, .6,  500e3, .75, 2e6,   .85};
  const auto with = [](std::vector<double> head, const std::vector<double>& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
  };
  return {
      {"TVK_VISCOUS_FOAM",
       6,
       {20e3, 8, 0, 15e3, 3, .2, 1e6, 2e3, 2, 1e5},
       viscousFoam,
       2e4,
       1e-4,
       .5,
       1.1,
       std::vector<double>(6, 1e4),
       700,
       24},
      {"TVK_RATE_SENSITIVE_FOAM",
       2,
       with({400e3, 50e3, 0, .2, 3, 1e-4, 3}, curves),
       rateSensitiveFoam,
       2e4,
       1e-4,
       .3,
       1.05,
       {5e4, 50},
       700,
       22},
      {"TVK_FU_CHANG_ISO_FOAM",
       7,
       with({400e3, 50e3, .2, 3, 1e-4, 3}, curves),
       fuChangFoam,
       2e4,
       1e-4,
       .3,
       1.05,
       {5e4, 50, 50, 50, 50, 50, 50},
       900,
       24},
      {"TVK_FU_CHANG_ANISO_FOAM",
       12,
       with({400e3, 50e3, .2, 3, 1e-4, 3, 0, 0, 3, 0, 0}, with(curves, curves)),
       fuChangBlock,
       2e4,
       1e-4,
       .3,
       1.05,
       {5e4, 5e4, 5e4, 5e4, 5e4, 5e4, 50, 50, 50, 50, 50, 50},
       1200,
       40},
      {"TVK_HONEYCOMB",
       1,
       {70e9, .33, 200e6, .2, 1e9, 1e8, 1e8,  300e6, 50e6, 150e6, 0,    5,  0,    0,  3, 0, 0,   3,   5e6, 0,
        1e6,  .05, 1e6,   .6, 4e6, .7,  60e6, .8,    .8e6, 0,     .8e6, .6, 30e6, .8, 1, 1, 1.2, 100, 1.5, 10000},
       honeycomb,
       1e6,
       1e-3,
       .4,
       1.0,
       {.8},
       250,
       12},
      {"TVK_MOLDED_PLASTIC",
       14,
       {2000e6, .38,  1,   1,    1,  1,    1, 1,    0, 0,    4,   4,      1,  1,     0, 0,  .5, .15, 1.5, 1e-5, 0, 40e6,
        0,      50e6, .05, 55e6, .2, 80e6, 1, 52e6, 0, 65e6, .05, 71.5e6, .2, 104e6, 1, .3, 2,  1,   .25, .6,   1},
       thermoplastic,
       50e6,
       1e-2,
       1,
       1,
       {.2, .1, .1, .1, .1, .1, .1, 100, .2, .2},
       900,
       50},
      {"TVK_THERMOPLASTIC",
       14,
       {2000e6, .38,  1,   1,      1,    1,     1,    1,  0,    0,   4,    4,  1,    1, .5,
        1.2,    .5,   .15, 1.5,    1e-5, 0,     40e6, 0,  50e6, .05, 55e6, .2, 80e6, 1, 52e6,
        0,      65e6, .05, 71.5e6, .2,   104e6, 1,    .3, 2,    1,   .25,  .6, 1},
       thermoplastic,
       50e6,
       1e-2,
       1,
       1,
       {.2, .1, .1, .1, .1, .1, .1, 100, .2, .2},
       900,
       50},
      {"TVK_FABRIC",
       8,
       {4,    4,    4,     4,   0,     90,  .2e6, 40, 20e6, 5e6,  .05e6, .1,  0,     0,   0, 0,
        20e6, .02,  100e6, .06, 400e6, .16, 0,    0,  20e6, .02,  100e6, .06, 400e6, .16, 0, 0,
        10e6, .015, 100e6, .04, 400e6, .10, 0,    0,  10e6, .015, 100e6, .04, 400e6, .10},
       fabric,
       1e7,
       1e-3,
       .98,
       1.1,
       {.1, .1, 0, 0, 4e4},
       400,
       8,
       true},
      {"TVK_PLY_FABRIC",
       16,
       {55e9, 53e9, .05, 4.2e9, 620e6, 570e6, 600e6, 550e6, 80e3, 100e3, 75e3,
        95e3, 35e6, .22, .9,    30e6,  900e6, .5,    0,     0,    0},
       plyFabric,
       1e8,
       3e-3,
       1,
       1,
       {0, 0, 0, 0, 0, .002, 1, 1, 1, 1, 1, .003, .018, .018, .014},
       500,
       30,
       true},
      {"TVK_JH2",
       4,
       {30.4e9, .93, .088, .003, .35, .77, 1, .15e9, .5, 5.95e9, 2.92e9, .053, .85, 45.4e9, -138e9, 290e9, 1, 0},
       jh2Ceramic,
       1.5e9,
       5e-4,
       1,
       1,
       {.05, .8, 0, 1e8},
       450,
       24,
       false,
       2,
       0,
       0,
       .94,
       .99},
      {"TVK_HJC_CONCRETE",
       5,
       {14.86e9, .79, 1.6, .007, .61, 48e6, 4e6, 1, .01, 7, 16e6, .001, .8e9, .1, .04, 1, 85e9, -171e9, 208e9, 0, 0},
       hjcConcrete,
       1e8,
       5e-4,
       1,
       1,
       {.005, .8, 0, .03, .01},
       450,
       11,
       false,
       2,
       0,
       0,
       .96,
       1.005},
      {"TVK_JHB",
       5,
       {193e9, 1.5e9, 4.92e9, 12.2e9, .5e9, .2e9, .2e9, .009, 1,     .75e9, .16, 1,
        0,     201e9, 260e9,  0,      1,    0,    16e9, .36,  300e9, 200e9, 0,   .2},
       jhbOfPhases,
       6e9,
       2e-2,
       1,
       1,
       {.05, 1.05, 0, 1e9, .4},
       600,
       30},
      {"TVK_SUPER_ELASTIC_N3D",
       8,
       {60e9, .3, 60e9, .3, .075, 520e6, 600e6, 300e6, 200e6, 754e6, 300, 0, 0, -1},
       superelasticLinear,
       7e8,
       4e-3,
       1,
       1,
       {1},
       450,
       15,
       false,
       2,
       .075 / std::sqrt(2. / 3) * 1274 / 1508,
       3 * 234. / 1508 * .075},
      {"TVK_SUPER_ELASTIC_N3D_EXP",
       8,
       {60e9, .3, 60e9, .3, .075, 520e6, 750e6, 550e6, 200e6, 0, 300, 0, 250e6, 20e6},
       superelasticExponential,
       7e8,
       4e-3,
       1,
       1,
       {1},
       1500,
       60,
       false,
       1,
       .075 / std::sqrt(2. / 3)},
  };
}

// Fills the arrays of n points with numbers of `random(low, high)`.
template <class Random>
void fillUserRow(const UserRow& row, int n, double* density, double* strainInc, double* defgrad, double* stress,
                 double* state, double* stretchOld, double* stretchNew, Random random) {
  const int comps = row.isSheet ? 4 : 6;
  for (int i = 0; i < n; ++i) {
    density[i] = random(1000, 2000);
    for (int c = 0; c < comps; ++c) {
      stress[c * n + i] = random(-row.stress, row.stress);
      strainInc[c * n + i] = random(-row.strain, row.strain);
      stretchNew[c * n + i] =
          c < 3 ? random(row.shortest, row.longest) : random(-.05, .05) * (row.longest > row.shortest);
      stretchOld[c * n + i] = stretchNew[c * n + i] - strainInc[c * n + i];
    }
    for (int c = 0; c < (row.isSheet ? 5 : 9); ++c) defgrad[c * n + i] = c < 3 ? random(row.least, row.most) : 0;
    for (int k = 0; k < row.states; ++k)
      state[k * n + i] = k < static_cast<int>(row.state.size()) ? random(0, row.state[k]) : 0;
    if (row.transformed > 0) { // stress between both finishes, and a path that does not turn round
      double s[6];
      user::load(stress, n, i, 6, s);
      const double mean = (s[0] + s[1] + s[2]) / 3;
      for (int c = 0; c < 3; ++c) s[c] -= mean;
      const double per = 1 / std::sqrt(user::product(s, s)), q = random(.35, 1) * row.stress, step = random(-1, 1);
      for (int c = 0; c < 6; ++c) {
        stress[c * n + i] = std::sqrt(2. / 3) * q * s[c] * per;
        strainInc[c * n + i] = step * row.strain * s[c] * per;
        state[(c + 1) * n + i] = state[i] * (row.transformed * s[c] * per + (c < 3 ? row.widened / 3 : 0));
      }
    }
  }
}

} // namespace
} // namespace plain
