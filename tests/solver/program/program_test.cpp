// The program as its user sees it: what it shows, what it writes, and what is left of a run that ends early.
#include "bench/plain/filter.h"
#include "filter_design.h"
#include "solver/analysis/derived_fields.h"
#include "solver/parallel/cores.h"
#include "solver/results/event_file.h"
#include "tests/solver/files.h"
#include "tests/support/fields.h"
#include "tests/support/program.h"

#include <fcntl.h>
#include <regex>
#include <sys/file.h>
#include <unistd.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;
using Strings = std::vector<std::string>;
using Files = std::set<std::string>;

// A run that is to end with a code.
Outcome run(Strings arguments, int code = 0, const Surroundings& surroundings = {}) {
  arguments.insert(arguments.begin(), SA_SOLVER_PROGRAM);
  Outcome outcome = Program(std::move(arguments), surroundings).wait();
  EXPECT_EQ(outcome.code, code) << outcome.err;
  return outcome;
}

// Of a run that has begun its diagnostics, or not.
Files filesOf(const std::string& job, const std::string& ending = "", bool diagnostics = true) {
  Files files{job + ".csv" + ending, job + ".events.csv" + ending, job + ".exo" + ending, job + ".log", job + ".msg",
              job + ".sta"};
  if (diagnostics) files.insert(job + ".diagnostics.sqlite");
  return files;
}

class ProgramTest : public testing::Test {
protected:
  // The case with a change, in a directory of its own; results go to "out".
  static void writeCase(const std::string& from, const std::string& to, const solver::Mesh& mesh) {
    std::filesystem::create_directory("in");
    writeFile("in/box.msh", meshText(mesh));
    writeFile("in/bar.toml", replaced(barCase, from, to));
  }
  static void writeCase(const std::string& from = "end_time", const std::string& to = "end_time") {
    writeCase(from, to, numberedBox({1, 1, 4}, {1, 1, 4}));
  }
  static constexpr Surroundings oneThread{}, twoThreads{.fileSize = {}, .threads = "2"};
  // What earlier runs of the same job might have left.
  static void writeStaleResults() {
    std::filesystem::create_directory("out");
    for (const char* name : {"bar.exo", "bar.csv", "bar.exo.partial", "bar.csv.partial"})
      writeFile(std::filesystem::path("out") / name, "stale");
  }
  static inline const Files whole = filesOf("bar"), partial = filesOf("bar", ".partial");

  // Nothing but partial results that are of this run, and three places that say why.
  static void expectPartialResults(const Outcome& outcome, const std::string& reason, const std::string& lastStatus,
                                   const Files& files = partial) {
    EXPECT_EQ(filesIn("out"), files);
    EXPECT_TRUE(outcome.err.starts_with("error: ") && contains(outcome.err, reason)) << outcome.err;
    EXPECT_EQ(linesOf(outcome.err).size(), 1U) << outcome.err;
    std::string messages; // as they were before they were broken into lines
    for (const std::string& line : linesOf(readFile("out/bar.msg")))
      messages += ' ' + line.substr(std::min(line.find_first_not_of(' '), line.size()));
    EXPECT_TRUE(contains(messages, reason)) << messages;
    EXPECT_FALSE(contains(messages, "complete")) << messages;
    const Strings status = linesOf(readFile("out/bar.sta"));
    ASSERT_FALSE(status.empty());
    EXPECT_TRUE(status.back().starts_with(lastStatus)) << status.back();
    EXPECT_NE(readFile("out/bar.csv.partial"), "stale");
    EXPECT_NE(readFile("out/bar.exo.partial"), "stale");
  }

private:
  WorkingDirectory directory_;
};

TEST_F(ProgramTest, CommandLine) {
  writeCase();
  writeFile("in/endless.toml", replaced(readFile("in/bar.toml"), "0.05", "1e19"));
  writeFile("in/shaken.toml", replaced(readFile("in/bar.toml"), "0.05", "0.05\ndamping = 1e9"));
  const struct {
    Strings arguments;
    const char* answer;
  } mistakes[] = {
      {{}, "CASE is required"},
      {{"in/bar.toml", "--frobnicate"}, "--frobnicate"},
      {{"in/bar.toml", "in/bar.toml"}, "in/bar.toml"},
      {{"in/bar.toml", "--threads", "0"}, "--threads: Value 0 not in range 1 to 1024"},
      {{"in/bar.toml", "--threads", "many"}, "--threads: Value many not in range"},
      {{"in/bar.toml", "--output"}, "--output"},
      {{"in/bar.toml", "--output", ""}, "--output: an empty name"},
      {{"in/bar.toml", "--rank-timeout", "nan"}, "--rank-timeout: \"nan\" is no positive number ("},
      {{"in/bar.toml", "--checked=nix"}, "--checked: do not understand \"nix\", expected full, cheap"},
      {{"in/bar.toml", "--quiet=no"}, "quiet was given a disallowed"},
      {{"in/shaken.toml"}, "in/shaken.toml: damping is 1e+09 1/s, expected at most"},
      {{"in/bar.toml", "--record=none/a.rec,call=1"}, "--record: none/a.rec cannot be written: No such file"},
      {{"in/endless.toml"}, "in/endless.toml: end_time is 1e+19 s, which increments of 0.00"},
      {{"in/none.toml"}, "in/none.toml: cannot be opened: No such file or directory"},
  };
  for (const auto& mistake : mistakes) {
    const Outcome outcome = run(mistake.arguments, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(outcome.err.starts_with("error: ") && contains(outcome.err, mistake.answer)) << outcome.err;
  }
  EXPECT_EQ(filesIn("."), Files{"in"});
  const Outcome version = run({"--version"}), help = run({"--help"});
  EXPECT_TRUE(
      std::regex_match(version.out, std::regex("sharedanalysis-explicit [0-9.]+, kernels with (SSE2|AVX2|AVX-512)\n")))
      << version.out;
  for (const char* option : {"CASE", "--threads", "--output", "--check", "--quiet", "--version", "--restart"})
    EXPECT_TRUE(contains(help.out, option)) << option;
}

TEST_F(ProgramTest, CheckWritesNothing) {
  writeCase();
  writeStaleResults();
  const Outcome outcome = run({"in/bar.toml", "-o", "out", "--check"});
  EXPECT_TRUE(contains(outcome.out, "20 nodes, 4 bricks") &&
              contains(outcome.out, "the input is sound; nothing was run"))
      << outcome.out;
  EXPECT_EQ(filesIn("."), (Files{"in", "out"}));
  EXPECT_EQ(readFile("out/bar.exo"), "stale");
  // a bar that nothing moves has energies of rounding, outputs below its increments, and bricks of two materials
  writeCase("velocity = [0, 0, -1]", "velocity = [0, 0, 0]");
  std::string still = replaced(readFile("in/bar.toml"), "[[initial_velocity]]\nvelocity = [0, 0, 0]\n", "");
  still = replaced(still, "[[section]]\ngroup = \"upper\"\nmaterial = \"rubber\"",
                   "[[material]]\nname = \"slow\"\ndensity = 4000\nC10 = 1e6\nD1 = 1e-7\n[[section]]\ngroup = "
                   "\"upper\"\nmaterial = \"slow\"");
  writeFile("in/still.toml", still +
                                 "[[displacement]]\ngroup = \"z1\"\ncomponent = \"z\"\ntime = [1, 2]\nvalue = [0, 1]\n"
                                 "[output]\nhistory_interval = 1e-4\nrestart_interval = 1\n");
  const std::string told = run({"in/still.toml", "-o", "still"}).out;
  EXPECT_EQ(countOf("problem", told), 0) << told;
  for (const char* words :
       {"warning: nothing acts on the model: ",
        "warning: displacement of z1 changes from 1 s on, and end_time is 0.05 s: it is 0 m throughout",
        "warning: restart_interval is not below end_time", "about 500 of them in place of ",
        "m/s, stable increment 0.00", "100 %  time      0.05 s  increment 500 "})
    EXPECT_TRUE(contains(told, words)) << words << '\n' << told;
  EXPECT_TRUE(contains(readFile("still/still.msg"), "***WARNING: history_interval of output, 0.0001 s, is below"));
  std::filesystem::remove_all("still");
  std::filesystem::remove("in/still.toml");
  writeCase(
      "end_time = 0.05",
      "end_time = 0.05\nquasi_static = true\n[[symmetry]]\ngroup = \"x1\"\nnormal = [3, 0, 4]\n[[force]]\ngroup = "
      "\"z1\"\ncomponent = \"y\"\nper_node = true\n"
      "time = [0, 0.1]\nvalue = [0, 3]\n"
      "[[plane]]\npoint = [0, 0, 9]\nnormal = [0, 0, -2]\nfriction = 0.1\nvalue = 4\n");
  EXPECT_TRUE(
      contains(run({"in/bar.toml", "-o", "out", "--check"}).out,
               "symmetry on x1: normal (0.6, 0, 0.8)\n"
               "force force_1 on z1: 2 values, 0 to 3 N within 0 to 0.1 s on each node along (0, 1, 0)\n"
               "plane plane_1 through (0, 0, 9): normal (0, 0, -1), friction 0.1, velocity 4 m/s along (0, 0, -1)\n"
               "quasi-static: damping follows the lowest frequency of the motion\n"));
  EXPECT_TRUE(contains(run({"in/bar.toml", "-o", "out"}).out, "\nthe body still moves: its kinetic energy is "));
  EXPECT_TRUE(linesOf(readFile("out/bar.csv"))
                  .at(0)
                  .ends_with(",work_force_1,work_plane_1,force_x_plane_1,force_y_plane_1,force_z_plane_1,"
                             "friction_energy,impact_energy,damping_energy,damping,stillness"));
  const Outcome example = run({SA_EXAMPLES "/twisting_column/column.toml", "--check"}, 0, twoThreads);
  EXPECT_TRUE(contains(example.out, "7381 nodes, 6000 bricks")) << example.out;
  EXPECT_TRUE(contains(example.out, "about 1400 increments") && contains(example.out, " MB of fields")) << example.out;
  const Outcome pinned = shell("first=$(taskset -cp $$ | sed 's/.*: *\\([0-9]*\\).*/\\1/'); unset OMP_NUM_THREADS; "
                               "exec taskset -c $first " SA_SOLVER_PROGRAM " in/bar.toml --check");
  EXPECT_TRUE(contains(pinned.out, ", 1 thread\n")) << "cores of the process, not of the machine: " << pinned.out;
  // the reaction that the manual tells
  run({SA_EXAMPLES "/thick_tube/tube.toml", "-q", "-o", "tube"});
  EXPECT_NEAR(readHistory("tube/tube.csv")["reaction_y_y"].back(), -100.19, 0.005);
}

TEST_F(ProgramTest, CoresAreThoseOfTheTightestGroup) {
  for (const auto& [directory, file, text] : {std::tuple{"a/b", "cpu.max", "max 100000\n"},
                                              {"a", "cpu.max", "350000 100000\n"},
                                              {"slow", "cpu.max", "20000 100000"},
                                              {"cpu/old", "cpu.cfs_quota_us", "500000"},
                                              {"cpu/old", "cpu.cfs_period_us", "100000"},
                                              {"cpu", "cpu.cfs_quota_us", "-1"},
                                              {"cpu", "cpu.cfs_period_us", "100000"}}) {
    std::filesystem::create_directories(directory);
    writeFile(std::filesystem::path(directory) / file, text);
  }
  for (const auto& [groups, cores] : {std::pair{"0::/a/b\n", 3},
                                      {"0::/slow", 1},
                                      {"9:name=x:/\n4:cpuacct,cpu:/old\n", 5},
                                      {"4:cpu:/old\n0::/a/b\n", 3},
                                      {"0::/none\n1:cpu:/\n", 0},
                                      {"", 0}})
    EXPECT_EQ(solver::coresOfQuota(groups, "."), cores) << groups;
}

TEST_F(ProgramTest, PlainLinesForAFile) {
  writeCase("end_time = 0.05", "end_time = 0.05\n[output]\nhistory_interval = 0.0025");
  const Outcome outcome = run({"in/bar.toml", "-o", "out"});
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(outcome.out.find_first_of("\r\033"), std::string::npos) << "no drawing over lines";
  Strings percentages;
  for (const std::string& line : linesOf(outcome.out))
    if (const std::size_t sign = line.find(" %  time "); sign != std::string::npos)
      percentages.push_back(line.substr(0, sign));
  EXPECT_EQ(percentages, (Strings{" 10", " 20", " 30", " 40", " 50", " 60", " 70", " 80", " 90", "100"}));

  const Outcome quiet = run({"in/bar.toml", "-o", "out", "--quiet"});
  EXPECT_EQ(quiet.out + quiet.err, "");
  // nobody who reads along is needed for results
  run({"in/bar.toml", "-o", "full"}, 0, {.fileSize = {}, .output = "/dev/full"});
  EXPECT_EQ(filesIn("full"), whole);
}

TEST_F(ProgramTest, PathsCountFromTheCase) {
  writeCase("end_time = 0.05", "end_time = 0.001");
  run({"in/bar.toml"});
  Files expected = whole;
  expected.insert("in");
  EXPECT_EQ(filesIn("."), expected);
  writeCase("mesh =", "job = \"named\"\noutput.directory = \"deep/results\"\nmesh =");
  run({"in/bar.toml"});
  EXPECT_EQ(filesIn("in/deep/results"), filesOf("named"));
}

TEST_F(ProgramTest, FilteredHistory) {
  // at lines of every increment of one length, the filtered columns are those of the difference equation
  writeCase("0.05", "0.02\n[output]\nhistory_interval = 1e-4\nfilter_cutoff = 300\nfilter_type = \"chebyshev1\"\n"
                    "filter_order = 6\nfilter_ripple = 1");
  run({"in/bar.toml", "-o", "fine"});
  auto fine = readHistory("fine/bar.csv");
  const std::vector<double>& increments = fine["increment"];
  ASSERT_EQ(increments.size(), 201U);
  ASSERT_EQ(increments.back(), 200) << "an increment a line";
  const std::vector<double> coef = host::lowPassCoefficients({host::FilterType::chebyshev1, 6, 300, 1}, 1e-4);
  for (const char* name : {"kinetic_energy", "strain_energy", "total_energy", "external_work", "momentum_z"}) {
    std::vector<double> signal = fine[name];
    for (std::size_t k = 0; k < coef.size(); k += 5) {
      const std::vector<double> x = signal;
      const auto at = [](const std::vector<double>& v, std::size_t n, std::size_t back) {
        return v[n < back ? 0 : n - back];
      };
      for (std::size_t n = 1; n < x.size(); ++n)
        signal[n] = plain::filterSection(&coef[k], x[n], at(x, n, 1), at(x, n, 2), at(signal, n, 1), at(signal, n, 2));
    }
    const std::vector<double>& filtered = fine[std::string("filtered_") + name];
    ASSERT_EQ(filtered.size(), signal.size()) << name;
    const double size = std::abs(
        *std::max_element(signal.begin(), signal.end(), [](double a, double b) { return std::abs(a) < std::abs(b); }));
    for (std::size_t n = 0; n < signal.size(); ++n)
      EXPECT_NEAR(filtered[n], signal[n], 1e-9 * size) << name << ' ' << n;
  }

  // nothing else changes by it, on any number of threads
  const std::string coarse = "0.02\n[output]\nhistory_interval = 0.000273972602739726";
  writeCase("0.05", coarse);
  run({"in/bar.toml", "-o", "plain"});
  const std::vector<double> times = readHistory("plain/bar.csv")["time"];
  ASSERT_LT(73 * 0.000273972602739726, 0.02);
  EXPECT_EQ(times.size(), 74U) << "the last multiple, a rounding error before the end, is the end";
  EXPECT_EQ(times.back(), 0.02);
  writeCase("0.05", coarse + "\nfilter_cutoff = 300");
  run({"in/bar.toml", "-o", "one", "-t", "1"});
  run({"in/bar.toml", "-o", "two", "-t", "2"});
  EXPECT_EQ(readFile("one/bar.csv"), readFile("two/bar.csv"));
  auto filtered = readHistory("one/bar.csv");
  for (const auto& [name, column] : readHistory("plain/bar.csv")) EXPECT_EQ(filtered[name], column) << name;
  EXPECT_EQ(filtered["filtered_kinetic_energy"].front(), filtered["kinetic_energy"].front());
}

// The bar with enough bricks for three domains, on any number of threads.
TEST_F(ProgramTest, SameResultsOnAnyNumberOfThreads) {
  writeCase("0.05", "0.02\n[output]\ninterval = 0.01\nhistory_interval = 0.0005", numberedBox({4, 4, 30}, {1, 1, 6}));
  std::vector<double> fields;
  for (const std::string threads : {"1", "2", "3", "5"}) { // the option counts, not the environment
    const Outcome outcome =
        run({"in/bar.toml", "-o", threads, "-t", threads}, 0, threads == "1" ? twoThreads : oneThread);
    EXPECT_TRUE(contains(outcome.out, ", " + threads + (threads == "1" ? " thread\n" : " threads\n"))) << outcome.out;
    EXPECT_EQ(readFile(threads + "/bar.csv"), readFile("1/bar.csv")) << threads;
    const std::vector<double> values = FieldFile(threads + "/bar.exo").everything();
    if (threads == "1") fields = values;
    ASSERT_EQ(values.size(), fields.size());
    EXPECT_EQ(std::memcmp(values.data(), fields.data(), sizeof(double) * fields.size()), 0) << threads;
  }
  EXPECT_GT(readHistory("1/bar.csv")["increment"].back(), 40);
  // without the option the surroundings say it
  const Outcome outcome = run({"in/bar.toml", "--check"}, 0, twoThreads);
  EXPECT_TRUE(contains(outcome.out, ", 2 threads\n")) << outcome.out;
}

// One run that all its results are read back from.
class CompleteRun : public ProgramTest {
protected:
  void SetUp() override {
    mesh_ = numberedBox({2, 1, 4}, {1, 0.5, 2});
    writeCase("mesh =", "title = \"A bar that falls\"\nmesh =", mesh_);
    writeFile("in/bar.toml", readFile("in/bar.toml") + "[output]\ninterval = 0.02\nhistory_interval = 0.005\n");
    writeStaleResults();
    run({"in/bar.toml", "-o", "out", "-t", "2"});
    ASSERT_EQ(filesIn("out"), whole);
  }
  solver::Mesh mesh_;
};

TEST_F(CompleteRun, History) {
  EXPECT_EQ(linesOf(readFile("out/bar.csv")).at(0),
            "time,increment,stable_increment,kinetic_energy,strain_energy,hourglass_energy,viscous_energy,damage_"
            "energy,external_work,"
            "total_energy,balance_error,momentum_x,momentum_y,momentum_z,angular_momentum_x,angular_momentum_y,"
            "angular_momentum_z");
  auto history = readHistory("out/bar.csv");
  const std::vector<double>& time = history["time"];
  ASSERT_EQ(time.size(), 11U);
  for (std::size_t k = 0; k < time.size(); ++k) EXPECT_DOUBLE_EQ(time[k], 0.005 * static_cast<double>(k));
  EXPECT_EQ(time.front(), 0);
  EXPECT_EQ(time.back(), 0.05) << "the end time itself";
  // at the start everything but the foot falls with 1 m/s: half a layer of bricks rests
  const double mass = 1000 * (1 - 1.0 / 8);
  EXPECT_NEAR(history["kinetic_energy"].front(), mass / 2, 1e-9);
  EXPECT_NEAR(history["momentum_z"].front(), -mass, 1e-9);
  EXPECT_EQ(history["external_work"].back(), 0) << "a foot at rest does no work";
  for (std::size_t k = 0; k < time.size(); ++k) {
    const double total = history["kinetic_energy"][k] + history["strain_energy"][k] + history["hourglass_energy"][k] +
                         history["viscous_energy"][k];
    EXPECT_NEAR(history["total_energy"][k], total, 1e-12 * total);
    EXPECT_NEAR(history["balance_error"][k], total - mass / 2, 1e-9);
    EXPECT_LT(std::abs(history["balance_error"][k]), 0.01 * total);
  }
}

TEST_F(CompleteRun, ModelInTheFieldFile) {
  const FieldFile file("out/bar.exo");
  EXPECT_EQ(file.title, "A bar that falls");
  EXPECT_EQ(file.numbers(EX_NODE_MAP), std::vector<int>(mesh_.nodeNumbers.begin(), mesh_.nodeNumbers.end()));
  EXPECT_EQ(file.numbers(EX_ELEM_MAP), std::vector<int>(mesh_.elementNumbers.begin(), mesh_.elementNumbers.end()));
  EXPECT_EQ(file.entities(EX_ELEM_BLOCK), (Strings{"lower", "upper"}));
  EXPECT_EQ(file.entities(EX_NODE_SET), (Strings{"x0", "x1", "y0", "y1", "z0", "z1"}));
  const std::vector<int> foot = file.nodeSet(5);
  ASSERT_EQ(foot.size(), 6U);
  const std::vector<double> X = file.coordinates();
  const std::size_t nodes = mesh_.nodeNumbers.size();
  ASSERT_EQ(X.size(), 3 * nodes);
  for (int node : foot) EXPECT_EQ(X[2 * nodes + node - 1], 0);
  for (std::size_t n = 0; n < nodes; ++n)
    for (std::size_t c = 0; c < 3; ++c) EXPECT_EQ(X[c * nodes + n], mesh_.coordinates[3 * n + c]);
  std::vector<int> corners = file.connectivity(1), upper = file.connectivity(2);
  corners.insert(corners.end(), upper.begin(), upper.end());
  for (int& corner : corners) --corner;
  EXPECT_EQ(corners, std::vector<int>(mesh_.connectivity.begin(), mesh_.connectivity.end()));
}

TEST_F(CompleteRun, Fields) {
  const FieldFile file("out/bar.exo");
  EXPECT_EQ(file.times, (std::vector<double>{0, 0.02, 0.04, 0.05}));
  const Strings energies{"kinetic_energy", "strain_energy", "hourglass_energy", "viscous_energy",
                         "damage_energy",  "external_work", "total_energy"};
  EXPECT_EQ(file.variables(EX_GLOBAL), energies);
  EXPECT_EQ(file.variables(EX_NODAL), (Strings{"displacement_x", "displacement_y", "displacement_z", "velocity_x",
                                               "velocity_y", "velocity_z", "reaction_x", "reaction_y", "reaction_z"}));
  Strings ofBricks{
      "stress_xx", "stress_yy", "stress_zz", "stress_xy", "stress_yz", "stress_xz", "strain_energy_density", "mask"};
  ofBricks.insert(ofBricks.end(), solver::derivedFieldNames.begin(), solver::derivedFieldNames.end());
  EXPECT_EQ(file.variables(EX_ELEM_BLOCK), ofBricks);

  auto history = readHistory("out/bar.csv");
  const std::vector<double> last = file.values(EX_GLOBAL, 4, 1);
  for (std::size_t k = 0; k < energies.size(); ++k) EXPECT_EQ(last[k], history[energies[k]].back()) << energies[k];

  const double brick = 1.0 / 8; // m3
  std::vector<double> mass(mesh_.nodeNumbers.size(), 0);
  for (int32_t corner : mesh_.connectivity) mass[corner] += 1000 * brick / 8;
  std::vector<bool> held(mass.size(), false);
  for (int node : file.nodeSet(5)) held[node - 1] = true;
  for (int step = 1; step <= 4; ++step) {
    double kinetic = 0, momentum = 0, strain = 0;
    for (const std::string c : {"x", "y", "z"}) {
      const std::vector<double> u = file.values(EX_NODAL, step, "displacement_" + c);
      const std::vector<double> v = file.values(EX_NODAL, step, "velocity_" + c);
      const std::vector<double> r = file.values(EX_NODAL, step, "reaction_" + c);
      for (std::size_t n = 0; n < mass.size(); ++n) {
        kinetic += mass[n] * v[n] * v[n] / 2;
        if (c == "z") momentum += mass[n] * v[n];
        EXPECT_TRUE(held[n] ? u[n] == 0 && v[n] == 0 : r[n] == 0) << "node " << n << " direction " << c;
        if (c == "z" && step == 1) {
          EXPECT_EQ(v[n], held[n] ? 0 : -1);
        }
      }
      // the weight of the thrown bar is on its foot as long as it is stopped
      if (c == "z" && step == 2) {
        EXPECT_GT(std::accumulate(r.begin(), r.end(), 0.0), 0);
      }
    }
    for (double density : file.values(EX_ELEM_BLOCK, step, "strain_energy_density")) strain += brick * density;
    for (double mask : file.values(EX_ELEM_BLOCK, step, "mask")) EXPECT_EQ(mask, 0);
    const std::size_t row = step == 4 ? 10 : 4 * (step - 1);
    EXPECT_NEAR(kinetic, history["kinetic_energy"][row], 1e-9 * kinetic) << step;
    EXPECT_NEAR(momentum, history["momentum_z"][row], 1e-9 * std::abs(momentum)) << step;
    EXPECT_NEAR(strain, history["strain_energy"][row], 1e-9 * strain + 1e-9) << step;
  }
  // thrown against its foot the bar is pressed together, along the third principal direction
  const std::vector<double> along = file.values(EX_ELEM_BLOCK, 2, "principal_direction_3_z"),
                            least = file.values(EX_ELEM_BLOCK, 2, "principal_stress_3"),
                            stress = file.values(EX_ELEM_BLOCK, 2, "stress_zz");
  for (std::size_t e = 0; e < stress.size(); ++e) {
    EXPECT_LT(stress[e], 0);
    EXPECT_LE(least[e], stress[e]);
    EXPECT_GT(std::abs(along[e]), 0.9);
  }
}

TEST_F(CompleteRun, FieldsThatAreAskedFor) {
  writeFile("in/bar.toml", replaced(readFile("in/bar.toml"), "[output]",
                                    "[output]\nfields = [\"principal_stress\", \"mask\", \"reaction\"]"));
  run({"in/bar.toml", "-q", "-o", "few"}, 0, oneThread);
  const FieldFile all("out/bar.exo"), few("few/bar.exo");
  EXPECT_EQ(few.variables(EX_NODAL), (Strings{"reaction_x", "reaction_y", "reaction_z"}));
  EXPECT_EQ(few.variables(EX_ELEM_BLOCK),
            (Strings{"mask", "principal_stress_1", "principal_stress_2", "principal_stress_3"}));
  for (const ex_entity_type type : {EX_NODAL, EX_ELEM_BLOCK})
    for (const std::string& name : few.variables(type))
      EXPECT_EQ(few.values(type, 4, name), all.values(type, 4, name)) << name;
}

TEST_F(CompleteRun, MessageAndStatusFile) {
  const std::string messages = readFile("out/bar.msg");
  const auto increment = std::to_string(static_cast<int64_t>(readHistory("out/bar.csv")["increment"].back()));
  EXPECT_TRUE(contains(messages, "EXPLICIT DYNAMICS, JOB bar")) << messages;
  EXPECT_TRUE(contains(messages, "mesh in/box.msh: 30 nodes, 8 bricks")) << messages;
  EXPECT_TRUE(contains(messages, "***NOTE: The analysis is complete after " + increment + " increments")) << messages;
  const Strings status = linesOf(readFile("out/bar.sta"));
  ASSERT_EQ(status.size(), 7U) << "the step, four times of fields, so few bricks across, the end";
  EXPECT_TRUE(status[5].starts_with("Warning message=the hourglass energy reached ")) << status[5];
  EXPECT_EQ(status.front(), "Step EXPLICIT DYNAMICS, JOB bar");
  EXPECT_TRUE(status[1].starts_with("Status increment 0 time 0.00000e+00 ")) << status[1];
  EXPECT_TRUE(status[4].starts_with("Status increment " + increment + " time 5.00000e-02 ")) << status[4];
  EXPECT_EQ(status.back(), "Completed message=Phase complete");
}

TEST_F(ProgramTest, CollapsedRunsLeavePartialResults) {
  const struct {
    const char *speed, *control, *reason;
    int code = 2;
  } cases[] = {
      {"-1000", "0.05\nlinear_viscosity = 0\nquadratic_viscosity = 0", "distorted beyond computing at time 0.00"},
      {"-100", "0.05\nsmallest_increment_ratio = 0.8", "the stable increment fell to 0.00"},
      {"-1e200", "0.05", "is no longer a finite number at time"},
      {"-1]\nrate = 5\nprofile_length = 8 # ", "0.05\n[material.failure]\nd1 = 1e-9",
       "every brick has failed at time 0.0", 4},
  };
  for (const auto& c : cases) {
    writeCase("-1]", c.speed + std::string("]"));
    writeFile("in/bar.toml", replaced(readFile("in/bar.toml"), "0.05", c.control));
    writeStaleResults();
    const Outcome outcome = run({"in/bar.toml", "-o", "out", "-q"}, c.code);
    expectPartialResults(outcome, c.reason, "Aborted");
    EXPECT_TRUE(contains(outcome.err, "out/bar.exo.partial")) << outcome.err;
    if (&c != cases) continue;
    // the distorted bricks are named, and what was computed can be read
    const FieldFile file("out/bar.exo.partial");
    const std::vector<double> mask = file.values(EX_ELEM_BLOCK, static_cast<int>(file.times.size()), "mask");
    const std::vector<int> numbers = file.numbers(EX_ELEM_MAP);
    std::string masked;
    for (std::size_t e = 0; e < mask.size(); ++e)
      if (mask[e] != 0) masked += (masked.empty() ? "" : ", ") + std::to_string(numbers[e]);
    EXPECT_NE(masked, "");
    EXPECT_TRUE(contains(outcome.err, ": number " + masked + ";")) << outcome.err;
    std::string named; // by the events: volumes that are none
    for (const std::string& line : linesOf(readFile("out/bar.events.csv.partial"))) {
      const std::size_t at = line.find(",distorted,-");
      if (at == std::string::npos) continue;
      const std::string place = line.substr(0, line.rfind(',', line.rfind(',', at - 1) - 1));
      named += (named.empty() ? "" : ", ") + place.substr(place.rfind(',') + 1);
    }
    EXPECT_EQ(named, masked);
    EXPECT_EQ(file.times.back(), readHistory("out/bar.csv.partial")["time"].back());
  }
}

// Further ones are counted, and the count goes on after a restart.
TEST_F(ProgramTest, EventsAreWrittenUpToAMost) {
  solver::Case definition = caseOf(neoHooke(1e6, 0.3, 1000), 1);
  definition.sections = {{"lower", 0}, {"a \"b\", c\n", 0}};
  const solver::BrickEvent one{7, 0.25, 1, solver::EventKind::Damage, 0.1, 106, 1};
  const auto all = [](std::vector<solver::BrickEvent> events) {
    return solver::gatherEvents(solver::Ranks(), std::move(events), solver::kMostEvents);
  };
  std::vector<double> words(16);
  {
    solver::EventFile file("e.csv", definition);
    file.write(all(std::vector<solver::BrickEvent>(solver::kMostEvents + 1, one)));
    solver::Archive archive(solver::Archive::Task::Save, words.data(), words.size());
    file.visit(archive);
    file.write(all({one})); // what a killed run loses
  }
  solver::EventFile file("e.csv", definition, solver::Start::GoOn);
  solver::Archive archive(solver::Archive::Task::Restore, words.data(), words.size());
  file.visit(archive);
  file.write(all({{8, 0.5, 0, solver::EventKind::Failed}, one}));
  EXPECT_EQ(file.count(), solver::kMostEvents + 3);
  file.close();
  const Strings lines = linesOf(readFile("e.csv.partial"));
  ASSERT_EQ(lines.size(), static_cast<std::size_t>(solver::kMostEvents) + 2);
  EXPECT_EQ(lines[1], "0.25,7,106,\"a \"\"b\"\", c \",solid,damage,0.1");
  EXPECT_EQ(lines.back(), "0.5,8,,,,omitted,3");
}

TEST_F(ProgramTest, SignalsEndTheRunInOrder) {
  for (const int signal : {SIGINT, SIGTERM}) {
    std::filesystem::remove_all("out"); // with the status file that is waited for
    writeCase("0.05", "1e6\n[output]\ninterval = 50");
    writeStaleResults();
    Program program({SA_SOLVER_PROGRAM, "in/bar.toml", "-o", "out", "-q"});
    ASSERT_TRUE(isUnderWay("out/bar.sta")) << "the run has not begun";
    program.signal(signal);
    const Outcome outcome = program.wait();
    EXPECT_EQ(outcome.code, 130);
    Files files = partial;
    files.insert("bar.restart");
    expectPartialResults(outcome, "interrupted at time", "Interrupted", files);
    const FieldFile file("out/bar.exo.partial");
    EXPECT_GE(file.times.size(), 3U) << "the last state is written as well";
    EXPECT_EQ(file.times.back(), readHistory("out/bar.csv.partial")["time"].back());
  }
}

// A limit on the size of files stands for a disk that is full: at the first lines, at the model, in the
// diagnostics.
TEST_F(ProgramTest, FullDisk) {
  const auto limited = [](rlim_t size) {
    writeCase();
    writeStaleResults();
    return run({"in/bar.toml", "-o", "out", "-q"}, 3, {.fileSize = size});
  };
  limited(100);
  EXPECT_EQ(filesIn("out"), (Files{"bar.csv.partial", "bar.log", "bar.msg", "bar.sta"}));
  for (const rlim_t size : {1024, 8192})
    expectPartialResults(limited(size), ".partial could not be written: File too large", "Aborted",
                         filesOf("bar", ".partial", false));
  // the database of the diagnostics is the next to outgrow it
  EXPECT_EQ(limited(20480).err, "error: cannot write out/bar.diagnostics.sqlite: File too large\n");
  EXPECT_FALSE(filesIn("out").contains("bar.exo") || filesIn("out").contains("bar.csv"));
}

TEST_F(ProgramTest, DirectoriesThatCannotBeUsed) {
  writeCase();
  writeFile("file", "");
  const Outcome none = run({"in/bar.toml", "-o", "file/out"}, 3);
  EXPECT_TRUE(contains(none.err, "file/out could not be written: the directory cannot be made: Not a directory"))
      << none.err;
  // where not even the message file can be opened, earlier results stay
  writeStaleResults();
  const Files stale = filesIn("out");
  std::filesystem::create_directory("out/bar.msg");
  const Outcome blocked = run({"in/bar.toml", "-o", "out"}, 3);
  EXPECT_TRUE(contains(blocked.err, "out/bar.msg: Is a directory")) << blocked.err;
  for (const std::string& file : stale) EXPECT_TRUE(filesIn("out").contains(file)) << file;
}

// Files are new ones in the place of links, and a run that is still there keeps a second one out until it is killed.
TEST_F(ProgramTest, NothingBehindALinkAndNoTwoRunsAtOnce) {
  writeCase();
  std::filesystem::create_directory("out");
  for (const char* extension : {".msg", ".log", ".sta", ".csv"}) {
    writeFile(std::string("other") + extension, "kept");
    std::filesystem::create_symlink(std::string("../other") + extension, std::string("out/bar") + extension);
  }
  run({"in/bar.toml", "-o", "out", "-q"});
  for (const char* extension : {".msg", ".log", ".sta", ".csv"}) {
    EXPECT_EQ(readFile(std::string("other") + extension), "kept");
    EXPECT_FALSE(std::filesystem::is_symlink(std::string("out/bar") + extension));
  }
  const Files before = filesIn("out");
  const int lock = open("out/bar.lock", O_RDWR | O_CREAT, 0666);
  ASSERT_EQ(flock(lock, LOCK_EX), 0);
  const Outcome second = run({"in/bar.toml", "-o", "out"}, 3);
  EXPECT_TRUE(contains(second.err, "another run of job \"bar\" writes into this directory")) << second.err;
  close(lock); // as the end of its process would
  run({"in/bar.toml", "-o", "out", "-q"});
  EXPECT_EQ(filesIn("out"), before);
}

// The pictures of the manual are what the driver draws, to the last digit: a model that answers otherwise shows here.
TEST_F(ProgramTest, PicturesOfTheManualAreThoseOfToday) {
  const struct {
    const char *job, *image, *options = "";
  } pictures[] = {{"rubber_tests/treloar", "rubber_tests"},       {"rubber_tests/cycles", "softening"},
                  {"rubber_tests/fit", "rubber_fit", " --fit"},   {"user_materials/superelastic", "superelastic"},
                  {"user_materials/brittle", "impact_materials"}, {"user_materials/foams", "foams"},
                  {"user_materials/honeycomb", "honeycomb"},      {"user_materials/plastics", "plastics"},
                  {"user_materials/fabrics", "fabrics"},          {"user_materials/ply_shear", "ply_shear"}};
  for (const auto& picture : pictures) {
    const Outcome outcome =
        shell(std::string(SA_MATERIAL_PROGRAM " " SA_EXAMPLES "/") + picture.job + ".toml -o drawn" + picture.options);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    const std::string job = std::string(picture.job).substr(std::string(picture.job).find('/'));
    EXPECT_EQ(readFile("drawn" + job + ".svg"), readFile(std::string(SA_IMAGES "/") + picture.image + ".svg"))
        << "copy drawn" << job << ".svg there if it is right";
  }
}

} // namespace
