// The examples of built-in user materials, each to its end, held to its energy and to a figure of its material.
#include "tests/solver/files.h"
#include "tests/support/fields.h"
#include "tests/support/program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <regex>

namespace {

using namespace sharedanalysis::test;

// Sum over a node set, or the largest of it.
double reaction(const FieldFile& file, int step, const std::string& set, char component) {
  const auto sets = file.entities(EX_NODE_SET);
  const int number = static_cast<int>(std::find(sets.begin(), sets.end(), set) - sets.begin()) + 1;
  const std::vector<double> values = file.values(EX_NODAL, step, std::string("reaction_") + component);
  double sum = 0;
  for (const int node : file.nodeSet(number)) sum += values[node - 1];
  return sum;
}
int stepAt(const FieldFile& file, double time) {
  return static_cast<int>(std::lower_bound(file.times.begin(), file.times.end(), time - 1e-9) - file.times.begin()) + 1;
}
double meanReaction(const FieldFile& file, double from, double to, const std::string& set, char component) {
  double sum = 0;
  int count = 0;
  for (int step = stepAt(file, from); step <= stepAt(file, to); ++step, ++count)
    sum += reaction(file, step, set, component);
  return sum / count;
}

// Nominal stress at a strain of 0.495, at 30 /s.
double foamStress(const FieldFile& file) { return -reaction(file, stepAt(file, .0175), "top", 'z') / .01; }
// While the first row of bricks is crushed.
double coreAlong(const FieldFile& file) { return -meanReaction(file, .8e-3, 2.2e-3, "along head", 'x') / .0036; }
double coreAcross(const FieldFile& file) { return -meanReaction(file, .8e-3, 2.2e-3, "across head", 'y') / .0036; }
double breakingForce(const FieldFile& file) {
  double most = 0;
  for (int step = 1; step <= static_cast<int>(file.times.size()); ++step)
    most = std::max(most, reaction(file, step, "end", 'x'));
  const std::vector<double> mask = file.values(EX_ELEM_BLOCK, static_cast<int>(file.times.size()), "mask");
  EXPECT_EQ(std::count(mask.begin(), mask.end(), 1.0), 8) << "the waist";
  return most;
}
double energyAt(const FieldFile& file, double time, std::size_t number) {
  return file.values(EX_GLOBAL, stepAt(file, time), 1)[number];
}
double clothStored(const FieldFile& file) { return energyAt(file, .02, 1); }
double clothFriction(const FieldFile& file) { return energyAt(file, .02, 4); }
// Largest von Mises stress over the published strength without damage and rate, anywhere and at any time.
double concreteStrength(const FieldFile& file) {
  double most = 0;
  for (int step = 1; step <= static_cast<int>(file.times.size()); ++step) {
    std::array<std::vector<double>, 6> s;
    const char* names[] = {"xx", "yy", "zz", "xy", "yz", "xz"};
    for (int c = 0; c < 6; ++c) s[c] = file.values(EX_ELEM_BLOCK, step, std::string("stress_") + names[c]);
    for (std::size_t e = 0; e < 528; ++e) { // the steel comes behind
      const double p = -(s[0][e] + s[1][e] + s[2][e]) / 3;
      double square = 0;
      for (int c = 0; c < 6; ++c) square += (c < 3 ? 1 : 2) * std::pow(s[c][e] + (c < 3 ? p : 0), 2);
      if (p > 5e6) most = std::max(most, std::sqrt(1.5 * square) / 48e6 / (.79 + 1.6 * std::pow(p / 48e6, .61)));
    }
  }
  return most;
}

TEST(Examples, UserMaterialsKeepTheirEnergyAndTheirFigures) {
  const WorkingDirectory directory;
  const double yieldLimit = .05e6, angle = 50 * M_PI / 180, beyond = 10 * M_PI / 180, volume = 8e-6;
  struct Figure {
    const char* what;
    double (*value)(const FieldFile&);
    double expected, tolerance;
  };
  const struct {
    const char *example, *job, *endTime;
    std::vector<Figure> figures;
  } rows[] = {
      // the curves of 1 and 100 /s at 30 /s, and beta E times the rate of deformation
      {"crushed_foam",
       "foam",
       "0.02",
       {{"crush stress", foamStress,
         (40e3 + 40e3 * .095 / .2) * (1.4 + .6 * std::log(30) / std::log(100)) + 2e-4 * 400e3 * 30 / .505, .01}}},
      {"honeycomb_core", "core", "2.3e-3", {{"along", coreAlong, 1e6, .02}, {"across", coreAcross, 1e5, .02}}},
      // flow stress at the failure strain (3 0.15 + 0.55)/4 of uniaxial tension, on the mean section of the bricks at the waist,
      // made smaller by Poisson's ratio 0.38 of the elastic and (9 - 2 f5)/(18 + 2 f5) of the plastic strain
      {"drawn_plastic",
       "bar",
       "2.55e-3",
       {{"force", breakingForce, 84e6 * 7.125e-3 * 3e-3 * std::exp(-2 * (6.6 / 20.4 * .25 + .38 * 84 / 2000)), .015}}},
      {"sheared_cloth",
       "cloth",
       "0.02",
       {{"stored", clothStored,
         volume * (.1e6 * angle * angle + 10e6 * beyond * beyond + yieldLimit * yieldLimit / 10e6), .005},
        {"friction", clothFriction, volume * yieldLimit * (angle - .01), .005}}},
      // reached, and raised by up to 1 + 0.007 ln(1000)
      {"struck_concrete", "cylinder", "0.06e-3", {{"strength", concreteStrength, 1.024, .024}}},
  };
  for (const auto& row : rows) {
    std::filesystem::copy(std::string(SA_EXAMPLES "/") + row.example, row.example);
    const std::string file = std::string(row.example) + "/" + row.job + ".toml";
    writeFile(file, std::regex_replace(readFile(file), std::regex("end_time = [^ ]+"),
                                       std::string("end_time = ") + row.endTime));
    const Outcome outcome = Program({SA_SOLVER_PROGRAM, file, "-q", "-o", "out"}).wait();
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const FieldFile fields(std::string("out/") + row.job + ".exo");
    double largest = 0, worst = 0, first = 0;
    for (int step = 1; step <= static_cast<int>(fields.times.size()); ++step) {
      const std::vector<double> e = fields.values(EX_GLOBAL, step, 1); // the last two: work and total energy
      if (step == 1) first = e[6] - e[5];
      largest = std::max({largest, e[6], std::abs(e[5])});
      worst = std::max(worst, std::abs(e[6] - e[5] - first));
    }
    EXPECT_LT(worst, .01 * largest) << row.example;
    for (const Figure& figure : row.figures)
      EXPECT_NEAR(figure.value(fields) / figure.expected, 1, figure.tolerance) << row.example << ", " << figure.what;
  }
}

} // namespace
