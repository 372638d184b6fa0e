// The examples, each to its end, held to its energy and to figures of its mechanics.
#include "tests/solver/files.h"
#include "tests/support/fields.h"
#include "tests/support/program.h"

#include <regex>

namespace {

using namespace sharedanalysis::test;

struct Results : FieldFile {
  explicit Results(const std::string& job)
      : FieldFile(job + ".exo"), history(readHistory(job + ".csv")), events(linesOf(readFile(job + ".events.csv"))) {}
  const std::vector<double>& column(const std::string& name) const { return history.at(name); }
  std::map<std::string, std::vector<double>> history;
  std::vector<std::string> events;
};

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

// ---- a bar of n = 100 bricks that hits a plane with v: c t / 2L, stress / (rho c v), and what it flies away with / v
double touching(const Results& run, double least) {
  double last = 0;
  for (std::size_t k = 0; k < run.column("time").size(); ++k)
    if (run.column("force_z_wall")[k] > least) last = run.column("time")[k];
  return last;
}
double contactTime(const Results& run) { return touching(run, 0); }
double wallStress(const Results& run) {
  double sum = 0, count = 0;
  for (std::size_t k = 0; k < run.column("time").size(); ++k)
    if (const double t = run.column("time")[k]; t > 5e-6 && t < 34e-6) sum += run.column("force_z_wall")[k], ++count;
  return sum / count / 1e-4;
}
double rebound(const Results& run) { return run.column("momentum_z").back() / run.column("momentum_z").front(); }

// ---- a load on foam without lateral contraction, of 1e-3 m3 and 0.1 m: what l takes the energy of the fall
constexpr double kFallEnergy = .5 * 4.03 * 2 * 9.81 * .6;
double foamEnergy(double l) { return 2 * 300e3 / 256 * (std::pow(l, 16) - 1 - 16 * std::log(l)); }
double shortest() {
  double low = .3, high = 1;
  for (int k = 0; k < 60; ++k) {
    const double l = .5 * (low + high);
    (foamEnergy(l) * 1e-3 > kFallEnergy + (4 + .5 * .03) * 9.81 * .1 * (1 - l) ? low : high) = l;
  }
  return low;
}
double pressed(const Results& run) {
  return *std::min_element(run.column("displacement_z_top").begin(), run.column("displacement_z_top").end());
}
double peak(const Results& run) {
  return *std::max_element(run.column("force_z_floor").begin(), run.column("force_z_floor").end());
}
double softened(const Results& run) { return run.column("damage_energy").back(); }

// ---- a plate with a hole of a fifth of its width: the bricks that break, from the edge of the hole on, and the stress there
// before, from the three nearest ones, over that at the end
double holeStress(const Results& run) {
  const std::vector<double> X = run.coordinates();
  const std::vector<int> corners = run.connectivity(1), numbers = run.numbers(EX_ELEM_MAP);
  std::vector<std::size_t> broken;
  std::vector<double> distance;
  for (const std::string& line : run.events) {
    if (line.find(",plate,polypropylene,failed,1.0") == std::string::npos) continue;
    const std::size_t at = line.find(',', line.find(',') + 1) + 1;
    broken.push_back(std::find(numbers.begin(), numbers.end(), std::stoi(line.substr(at))) - numbers.begin());
    double x = 0, z = 0, lowest = 1;
    for (std::size_t k = 8 * broken.back(); k < 8 * broken.back() + 8; ++k) {
      x += X[corners[k] - 1] / 8, z += X[X.size() / 3 * 2 + corners[k] - 1] / 8;
      lowest = std::min(lowest, X[X.size() / 3 * 2 + corners[k] - 1]);
    }
    distance.push_back(std::hypot(x, z));
    EXPECT_NEAR(lowest, 0, 1e-12) << line;
  }
  EXPECT_EQ(broken.size(), 14U) << "all in the narrowest section";
  EXPECT_TRUE(std::is_sorted(distance.begin(), distance.end()));
  double sum = 0;
  const int first = stepAt(run, .32e-3), last = stepAt(run, .4e-3);
  for (int step = first; step <= last; ++step) {
    const std::vector<double> stress = run.values(EX_ELEM_BLOCK, step, "stress_zz");
    double there = 0; // the parabola through three
    for (std::size_t k = 0; k < 3; ++k) {
      double share = 1;
      for (std::size_t l = 0; l < 3; ++l)
        if (l != k) share *= (.004 - distance[l]) / (distance[k] - distance[l]);
      there += share * stress[broken[k]];
    }
    sum += there / (reaction(run, step, "end", 'z') / 2e-5);
  }
  return sum / (last - first + 1);
}

TEST(Examples, KeepTheirEnergyAndTheirFigures) {
  const WorkingDirectory directory;
  const double yieldLimit = .05e6, angle = 50 * M_PI / 180, beyond = 10 * M_PI / 180, volume = 8e-6;
  struct Figure {
    const char* what;
    std::function<double(const Results&)> value;
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
      // 2 L/c, rho c v; a half layer of bricks loses its energy, waves a little by viscosity
      {"struck_bar",
       "bar",
       "0.06e-3",
       {{"contact", contactTime, .2 / std::sqrt(70e9 / 2700), .003},
        {"stress", wallStress, std::sqrt(70e9 * 2700) * 10, .003},
        {"rebound", rebound, -1, .03}}},
      // the last one by R. W. Ogden, D. G. Roxburgh 1999, where all of the energy has loaded the foam
      {"dropped_foam",
       "drop",
       "0.03",
       {{"way", pressed, .1 * (shortest() - 1), .008},
        {"force", peak, 2 * 300e3 / 16 * (1 / shortest() - std::pow(shortest(), 15)) * .01, .008},
        {"softened", softened, (foamEnergy(shortest()) - 5e3 / std::sqrt(M_PI)) / 1.5 * 1e-3, .01}}},
      // R. B. Heywood 1952: (2 + (1 - a)^3)/(1 - a) with the hole over the width a
      {"holed_plate", "plate", "0.8e-3", {{"hole", holeStress, 2.512 / .8, .015}}},
  };
  for (const auto& row : rows) {
    std::filesystem::copy(std::string(SA_EXAMPLES "/") + row.example, row.example);
    const std::string file = std::string(row.example) + "/" + row.job + ".toml";
    writeFile(file, std::regex_replace(readFile(file), std::regex("end_time = [^ ]+"),
                                       std::string("end_time = ") + row.endTime));
    const Outcome outcome = Program({SA_SOLVER_PROGRAM, file, "-q", "-o", "out"}).wait();
    ASSERT_EQ(outcome.code, 0) << outcome.err;
    const Results fields(std::string("out/") + row.job);
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
