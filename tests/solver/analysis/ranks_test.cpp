// The program on ranks: the same results to the last bit, errors that end everyone, and the program that compares.
#include "solver/input/case_reader.h"
#include "solver/input/mesh_reader.h"
#include "solver/program/job.h"
#include "solver/program/problems.h"
#include "solver/results/digest.h"
#include "solver/results/mesh_file.h"
#include "solver/results/restart_file.h"
#include "solver/results/results.h"
#include "tests/solver/files.h"
#include "tests/support/program.h"

#include <chrono>
#include <csignal>
#include <future>
#include <sys/resource.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;

// The process of a rank that works in the present directory; -1 when there is none.
pid_t processOf(int rank) {
  const std::string wanted = "OMPI_COMM_WORLD_RANK=" + std::to_string(rank);
  const auto here = std::filesystem::current_path();
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const int process = std::atoi(entry.path().filename().c_str());
    std::error_code error;
    if (process == 0 || std::filesystem::read_symlink(entry.path() / "cwd", error) != here || error) continue;
    std::ifstream environment(entry.path() / "environ", std::ios::binary);
    for (std::string variable; std::getline(environment, variable, '\0');)
      if (variable == wanted) return process;
  }
  return -1;
}
bool signalRank(int rank, int number) {
  const pid_t process = processOf(rank);
  return process > 0 && kill(process, number) == 0;
}

class RanksTest : public testing::Test {
protected:
  void SetUp() override {
    if (!setUpRanks() || !std::filesystem::exists(SA_MPI_LIBRARY)) GTEST_SKIP() << "no mpirun or no MPI library";
  }
  // A run that is to end with a code.
  static Outcome run(int ranks, int threads, const std::string& arguments, int code = 0) {
    const std::string launcher = "timeout 60 mpirun --oversubscribe -n " + std::to_string(ranks) + " ";
    const Outcome outcome =
        shell((ranks > 1 ? launcher : "") + SA_SOLVER_PROGRAM " " + arguments + " -t " + std::to_string(threads));
    EXPECT_EQ(outcome.code, code) << arguments << ": " << outcome.err;
    return outcome;
  }
  // A run that is to end with a code after a signal to one of its ranks.
  static Outcome runSignalled(int ranks, const std::string& arguments, int rank, int signal, int code) {
    auto ended = std::async(std::launch::async, [&] { return run(ranks, 1, arguments, code); });
    EXPECT_TRUE(isUnderWay("out/" + arguments.substr(0, arguments.find(".toml")) + ".sta"));
    EXPECT_TRUE(signalRank(rank, signal));
    return ended.get();
  }
  // A case for each rank.
  static Outcome runApart(const std::vector<std::string>& arguments) {
    std::string command = "timeout 60 mpirun --oversubscribe";
    for (std::size_t k = 0; k < arguments.size(); ++k)
      command += (k > 0 ? " : -n 1 " : " -n 1 ") + std::string(SA_SOLVER_PROGRAM " ") + arguments[k];
    return shell(command);
  }
  static void expectError(const Outcome& outcome, int code, const std::string& text) {
    EXPECT_EQ(outcome.code, code) << outcome.err;
    EXPECT_EQ(countOf("error: ", outcome.err), 1) << outcome.err;
    EXPECT_EQ(countOf("error: " + text, outcome.err), 1) << outcome.err;
  }
  static Outcome compare(const std::string& a, const std::string& b, int code = 0) {
    const Outcome outcome = shell(SA_COMPARE_PROGRAM " " + a + " " + b);
    EXPECT_EQ(outcome.code, code) << a << " " << b << ": " << outcome.out << outcome.err;
    return outcome;
  }

  static void change(const std::string& file, const std::string& from, const std::string& to) {
    writeFile(file, replaced(readFile(file), from, to));
  }
  // The twisting column, so shortened that it takes a moment.
  static void writeColumn() {
    std::string text = readFile(SA_EXAMPLES "/twisting_column/column.toml");
    text = replaced(text, "\"column.msh\"", "\"" SA_EXAMPLES "/twisting_column/column.msh\"");
    text = replaced(text, "end_time = 0.25", "end_time = 0.003");
    text = replaced(text, "interval = 0.01 ", "interval = 0.001 ");
    writeFile("column.toml", text);
  }
  // With the nodes of one side that have no prescribed motion, which might lead them behind a plane.
  static solver::Mesh withSide(solver::Mesh mesh) {
    solver::Group side = *mesh.findGroup("x1");
    side.name = "side", side.dimension = 0, side.faces.clear();
    std::erase_if(side.nodes, [&](int32_t node) { return std::abs(mesh.coordinates[3 * node + 2] - 0.55) > 0.5; });
    mesh.groups.push_back(side);
    return mesh;
  }
  // A box whose nodes are moved at random, with gravity, viscosity and a prescribed motion.
  static void writeIrregular() {
    solver::Mesh mesh = box({7, 5, 6}, {1, 0.8, 1.1});
    Random random(1);
    for (double& x : mesh.coordinates) x += random.uniform(-0.015, 0.015);
    solver::writeMesh("irregular.msh", "irregular", withSide(mesh)); // which takes less time to read than a Gmsh file
    writeFile("irregular.toml", R"(mesh = "irregular.msh"
gravity.acceleration = [0.0, 1.0, -9.81]
section = [{group = "all", material = "rubber"}]
fix = [{group = "z0", components = ["x", "y", "z"]}]
velocity = [{group = "z1", component = "x", time = [0.0, 0.002], value = [0.0, 20.0]}]
[[material]]
name = "rubber"
density = 1000.0
C10 = 1.0e6
C01 = 2.0e5
D1 = 1.0e-7
[control]
end_time = 0.004
[output]
interval = 0.001
)");
  }

  // The same body under every kind of load.
  static void writeLoaded() {
    writeFile("loaded.toml", R"(
force = [{group = "x1", component = "y", time = [0.0, 0.002], value = [0.0, 500.0]}]
local_gravity = [{group = "all", direction = [1.0, 0.0, 1.0], value = 40.0}]
traction = [{group = "y0", direction = [1.0, 2.0, 3.0], value = 2.0e4}]
history = [{group = "y1", values = ["reaction", "displacement"]}, {group = "all", values = ["energy"]}]
plane = [{group = "side", point = [1.03, 0.0, 0.0], normal = [-1.0, 0.1, 0.0], friction = 0.3, value = 2.0}]
symmetry = [{group = "y1", normal = [0.1, 1.0, 0.05]}]
displacement = [{group = "z1", component = "z", time = [0.0, 0.004], value = [0.0, 0.01], curve = "smooth"}]
pressure = [{group = "surface", time = [0.0, 0.003], value = [0.0, 1.0e5], curve = "smooth"}]
)" + replaced(readFile("irregular.toml"), "[control]", "[control]\nquasi_static = true"));
  }

  // Loads, contact and supports on a body with everything that points, bricks and files remember: a rate-sensitive foam beside a
  // rubber that softens and fails, a filter, states to go on from.
  static void writeMixed() {
    std::string text = replaced(readFile("loaded.toml"), "D1 = 1.0e-7", R"(D1 = 1.0e-7
mullins = {r = 1.5, m = 2.0e3}
failure.d1 = 0.01
[[material]]
name = "foam"
model = "user"
user = "TVK_RATE_SENSITIVE_FOAM"
density = 60.0
properties = [400e3, 50e3, 2e-4, 0.2, 3, 1e-4]
curve = [{rate = 0.01, strain = [0, 0.05, 0.4, 0.6, 0.75, 0.85], stress = [0, 20e3, 40e3, 80e3, 250e3, 1000e3]},
         {rate = 100, strain = [0, 0.05, 0.4, 0.6, 0.75, 0.85], stress = [0, 40e3, 80e3, 160e3, 500e3, 2000e3]}])");
    text = replaced(text, "material = \"rubber\"}", "material = \"rubber\"}, {group = \"upper\", material = \"foam\"}");
    for (std::size_t at; (at = text.find("\"all\"")) != std::string::npos;) text.replace(at, 5, "\"lower\"");
    text = replaced(replaced(text, "irregular.msh", "mixed.msh"), "end_time = 0.004",
                    "end_time = 0.01\nsafety_factor = 0.5");
    text = replaced(text, "interval = 0.001", "interval = 0.0005\nrestart_interval = 0.0003\nfilter_cutoff = 300.0");
    writeFile("mixed.toml", text);
    writeFile("damped.toml",
              replaced(replaced(text, "quasi_static = true", "damping = 20.0"), "filter_cutoff = 300.0", ""));
    solver::Mesh mesh = numberedBox({7, 5, 6}, {1, 0.8, 1.1});
    mesh.groups.push_back(*box({7, 5, 6}, {1, 0.8, 1.1}).findGroup("surface"));
    solver::writeMesh("mixed.msh", "mixed", withSide(mesh));
  }

  static std::string spoiltAt(std::string text, std::size_t at) {
    text[at] = static_cast<char>(text[at] ^ 1);
    return text;
  }
  // Files that are none to go on from leave everything as it is.
  static void refuseWrongStates(const std::string& begin, const std::string& file, const std::string& csv) {
    const std::string state = readFile(file), lines = readFile(csv);
    const auto spoilt = [&](std::size_t at) { return spoiltAt(state, at); };
    const struct {
      std::string text, answer;
    } wrong[] = {
        {"", "is cut off"},
        {state.substr(0, 47), "is cut off"},
        {state.substr(0, state.size() - 1), "is cut off"},
        {state + "x", "too long"},
        {spoilt(0), "this is no restart file"},
        {spoilt(8), "another release"},
        {spoilt(16), "another release"},
        {spoilt(24), "another case or mesh"},
        {spoilt(39), "sizes are wrong"},
        {spoilt(32), "the restart file is "},
        {spoilt(47), "sizes are wrong"},
        {spoilt(48), "is cut off"},
        {spoilt(56), "checksum"},
        {spoilt(88), "checksum"},
        {spoilt(state.size() / 2), "checksum"},
        {spoilt(state.size() - 1), "checksum"},
    };
    for (const auto& [text, answer] : wrong) {
      writeFile("wrong.restart", text);
      const Outcome outcome = run(1, 1, begin + " --restart wrong.restart", 1);
      expectError(outcome, 1, "wrong.restart: ");
      EXPECT_TRUE(contains(outcome.err, answer)) << answer << ": " << outcome.err;
    }
    // parts
    uint64_t heading[11];
    std::memcpy(heading, state.data(), sizeof heading);
    const std::string parts = file + '.' + std::to_string(heading[9]), part = parts + ".1", words = readFile(part);
    const auto refused = [&](const std::string& answer) {
      expectError(run(answer.starts_with("belongs") ? 3 : 1, 1, begin + " --restart", 1), 1, part + ": " + answer);
    };
    using Row = std::pair<std::string, std::string>;
    for (const auto& [text, answer] :
         {Row{words.substr(0, words.size() / 2), "the restart file is cut off"},
          Row{spoiltAt(words, words.size() / 2), "the restart file is damaged: its checksum"},
          Row{readFile(parts + ".0"), "belongs to another state than " + file}}) {
      writeFile(part, text);
      refused(answer);
    }
    std::filesystem::remove(part);
    refused("cannot be opened");
    writeFile(part, words);
    expectError(run(1, 1, begin + " --restart " + part, 1), 1, part + ": this is a part of a restart file");
    // whole and with the right sums, but of no analysis, or not of all its bricks
    std::vector<double> course(heading[5]);
    const auto write = [&](const char* to) {
      solver::writeRestart(to, heading[3], {std::vector<double>(heading[4]), course}, solver::Ranks(), [](auto&) {});
    };
    write("wrong.restart");
    expectError(run(1, 1, begin + " --restart wrong.restart", 1), 1, "wrong.restart: its time, increment or damping");
    std::memcpy(course.data(), state.data() + 88 + 8 * heading[4], 8 * heading[5]);
    write("wrong.restart");
    expectError(run(1, 1, begin + " --restart wrong.restart", 1), 1, "wrong.restart: its nodes and bricks are not");
    for (const char* other : {"none.restart", "out"}) run(1, 1, begin + " --restart " + other, 1);
    // the results do not fit, or are not there: nothing is replaced, cut off or begun
    const std::string other = "out/" + std::filesystem::path(file).stem().string();
    const std::string messages = readFile(other + ".msg"), events = other + ".events.csv.partial", none = "elsewhere";
    writeFile(csv, replaced(lines, "kinetic", "cinetic"));
    writeFile(events, readFile(events) + "beyond");
    expectError(run(2, 1, begin + " --restart", 1), 1, csv + ": is not what");
    EXPECT_EQ(readFile(other + ".msg"), messages);
    EXPECT_TRUE(readFile(events).ends_with("beyond"));
    writeFile(csv, lines + "beyond");
    std::filesystem::rename(events, none);
    expectError(run(1, 1, begin + " --restart", 1), 1, events + ": is not there");
    EXPECT_EQ(readFile(csv), lines + "beyond");
    std::filesystem::rename(none, events);
    expectError(run(1, 1, replaced(begin, "-o out", "-o " + none) + " --restart " + file, 1), 1,
                none + ": is no directory");
    EXPECT_FALSE(std::filesystem::exists(none));
    EXPECT_TRUE(contains(run(1, 1, replaced(begin, "-q", "--check") + " --restart").out, "goes on from increment "));
    EXPECT_EQ(readFile(file), state);
  }

private:
  WorkingDirectory directory_;
};

TEST_F(RanksTest, ResultsAreTheSameToTheLastBit) {
  writeColumn();
  writeIrregular();
  writeLoaded();
  for (const std::string job : {"column", "loaded"}) {
    run(1, 1, job + ".toml --digest -q -o " + job + "1x1");
    for (const auto& [ranks, threads] : {std::pair{1, 2}, {2, 2}, {3, 1}, {4, 2}}) {
      const std::string directory = job + std::to_string(ranks) + "x" + std::to_string(threads);
      EXPECT_EQ(run(ranks, threads, job + ".toml --digest -q -o " + directory).out, "");
      compare(job + "1x1", directory);
      EXPECT_EQ(readFile(job + "1x1/" + job + ".csv"), readFile(directory + "/" + job + ".csv"));
    }
  }
}

// To the last byte but those of the clock; files of other ranks and of one file go with a new run.
TEST_F(RanksTest, FilesOfRanksAreJoinedToTheFileOfTheRoot) {
  writeIrregular();
  writeLoaded();
  writeMixed();
  change("mixed.toml", "end_time = 0.01", "end_time = 0.002");
  const auto join = [](const std::string& arguments) { return shell(SA_JOIN_PROGRAM " " + arguments); };
  const auto differing = [](const std::string& a, const std::string& b) {
    int count = a.size() == b.size() ? 0 : -1;
    for (std::size_t k = 0; count >= 0 && k < a.size(); ++k) count += a[k] != b[k];
    return count;
  };
  for (const auto& [job, ranks] : {std::pair<std::string, int>{"mixed", 3}, {"mixed", 10}, {"irregular", 1}}) {
    const std::string exo = "set/" + job + ".exo", part = exo + "." + std::to_string(ranks);
    if (ranks < 10) run(ranks, 1, job + ".toml --digest -q -o one");
    run(ranks, 1, job + ".toml --digest -q -o set --files ranks");
    EXPECT_EQ(readFile("one/" + job + ".digest"), readFile("set/" + job + ".digest"));
    EXPECT_FALSE(std::filesystem::exists(exo));
    const Outcome outcome = join(part + (ranks > 9 ? ".07" : ".0"));
    EXPECT_TRUE(contains(outcome.out, exo + ": 336 nodes and 210 elements of ")) << outcome.out << outcome.err;
    const int others = differing(readFile("one/" + job + ".exo"), readFile(exo));
    EXPECT_TRUE((others >= 0 && others <= 6) || ranks == 10) << others; // which has other lines of information
    EXPECT_EQ(std::filesystem::exists(part + ".2"), ranks == 3);
    EXPECT_FALSE(std::filesystem::exists("set/mixed.exo.3.0") && ranks != 3);
  }
  // what cannot be joined
  EXPECT_EQ(shell("ulimit -f 0; exec " SA_JOIN_PROGRAM " set/mixed.exo.10.07 -o joined.exo").code, exitNotWritten);
  const std::string whole = readFile("set/mixed.exo.10.07");
  const struct {
    std::string text, answer;
  } wrong[] = {{whole.substr(0, whole.size() - 1), "is damaged or cut off"},
               {readFile("set/irregular.exo.1.0"), "set/mixed.exo.10.07: is of another run than "},
               {readFile("set/mixed.exo.10.06"), "shares elements with another file"},
               {"no file of fields", "cannot be read as a file of fields"}};
  for (const auto& [text, answer] : wrong) {
    writeFile("set/mixed.exo.10.07", text);
    const Outcome outcome = join("set/mixed.exo.10.00 -o joined.exo");
    EXPECT_TRUE(outcome.code == exitInput && contains(outcome.err, answer)) << answer << ": " << outcome.err;
  }
  EXPECT_TRUE(contains(join("set/mixed.exo.10.00 -o set/mixed.exo.10.01").err, "expected another one"));
  std::filesystem::remove("set/mixed.exo.10.07");
  EXPECT_EQ(join("set/mixed.exo.10.00").code, exitInput);
  EXPECT_EQ(join("set/mixed.exo").code, exitInput);
  EXPECT_FALSE(std::filesystem::exists("joined.exo") || std::filesystem::exists("joined.exo.partial"));
}

// Read by one, read by all, or made by all.
TEST_F(RanksTest, InputsOfOneModelHaveOneDigest) {
  solver::Mesh mesh = box({4, 3, 9}, {0.4, 0.3, 0.9});
  std::erase_if(mesh.groups, [](const solver::Group& group) { return group.name == "surface"; });
  writeFile("one.msh", meshText(mesh));
  EXPECT_EQ(shell(SA_CONVERT_PROGRAM " one.msh one.exo").out, "one.exo: 200 nodes, 108 bricks\n");
  EXPECT_EQ(shell(SA_CONVERT_PROGRAM " one.exo ./one.exo").code, exitInput) << "what is read stays";
  writeIrregular();
  for (const auto& [input, value, ranks] : {std::tuple{"gmsh", "\"one.msh\"", 16},
                                            {"exodus", "\"one.exo\"", 7},
                                            {"box", "{box = {bricks = [4, 3, 9], size = [0.4, 0.3, 0.9]}}", 3}}) {
    writeFile("model.toml", replaced(readFile("irregular.toml"), "\"irregular.msh\"", value) +
                                "\n[[pressure]]\ngroup = \"x1\"\nvalue = 1e5\n");
    if (input == std::string("gmsh")) run(1, 1, "model.toml --digest -q -o one");
    run(ranks, 1, std::string("model.toml --digest -q -o ") + input);
    compare("one", input);
  }
  // each rank has opened its own file
  std::filesystem::create_directory("disk");
  writeFile("disk/one.exo", spoiltAt(readFile("one.exo"), readFile("one.exo").size() / 2));
  writeFile("model.toml", replaced(readFile("irregular.toml"), "irregular.msh", "one.exo"));
  std::filesystem::copy("model.toml", "disk/model.toml");
  expectError(runApart({"model.toml -o out", "model.toml -o out", "disk/model.toml -o out"}), 1,
              "one.exo: rank 2 has another file of this name than rank 0");
  // what one rank finds in its share all ranks answer
  mesh.coordinates[3 * 199 + 1] = NAN;
  solver::writeMesh("one.exo", "one", mesh);
  expectError(run(3, 1, "model.toml", 1), 1, "one.exo: a coordinate of node 200 is not a finite number");
}

// A rank takes and sends what its own part asks for: as much when there are four times as many ranks and bricks.
TEST_F(RanksTest, ARankHoldsNothingOfTheOtherParts) {
  writeIrregular();
  struct Taken {
    double megabytes = 0, messages = 0, kilobytes = 0, bricks = 0; // borders included
  };
  const auto taken = [](int ranks, const std::string& bricks, const std::string& size) {
    std::string text = replaced(readFile("irregular.toml"), "\"irregular.msh\"",
                                "{box = {bricks = " + bricks + ", size = " + size + "}}");
    writeFile("box.toml", replaced(replaced(text, "end_time = 0.004", "end_time = 0.0002"), "0.001\n",
                                   "0.0001\nhistory_interval = 0.0001\n"));
    const std::string out = run(ranks, 1, "box.toml --digest -o out").out;
    Taken most;
    const std::size_t at = std::min(out.find("a rank takes "), out.size());
    std::sscanf(out.c_str() + std::min(out.find("parts: "), at), "parts: %*f to %lf", &most.bricks);
    EXPECT_EQ(std::sscanf(out.c_str() + at, "a rank takes %lf MB of memory and sends %lf messages of %lf kB",
                          &most.megabytes, &most.messages, &most.kilobytes),
              3)
        << out;
    return most;
  };
  const Taken small = taken(8, "[24, 24, 24]", "[0.5, 0.5, 0.5]"), two = taken(2, "[24, 24, 48]", "[0.5, 0.5, 1]"),
              eight = taken(8, "[48, 48, 48]", "[1, 1, 1]");
  EXPECT_NEAR(eight.megabytes, two.megabytes, 8);
  // 0.9 kB a brick, and 0.17 that MPI takes where it copies through memory of its own
  EXPECT_LT(eight.megabytes - small.megabytes, 1.15e-3 * (eight.bricks - small.bricks));
  // neighbours, and the stages of one reduction; 48 bytes for each node of one layer beyond the sides that have neighbours
  EXPECT_LE(two.messages, 1 + 1);
  EXPECT_LE(eight.messages, 7 + 3);
  EXPECT_NEAR(two.kilobytes, 0.048 * 25 * 25, 3);
  EXPECT_NEAR(eight.kilobytes, 0.048 * (std::pow(25.5, 3) - std::pow(24.5, 3)), 8);
}

TEST_F(RanksTest, MoreRanksThanTheModelNeeds) {
  writeFile("tiny.msh", meshText(box({1, 1, 1}, {1, 1, 1})));
  writeIrregular();
  writeFile("tiny.toml", replaced(readFile("irregular.toml"), "irregular.msh", "tiny.msh"));
  run(1, 1, "tiny.toml --digest -q -o one");
  const Outcome outcome = run(6, 2, "tiny.toml --digest -o six");
  EXPECT_TRUE(contains(outcome.out, "6 ranks of 1 thread, too few nodes for 2\n")) << outcome.out;
  compare("one", "six/tiny.digest");
}

TEST_F(RanksTest, OneThreadEachUnlessToldOtherwise) {
  writeIrregular();
  const auto check = [](const std::string& environment) {
    return shell(environment + " timeout 60 mpirun --oversubscribe -n 2 " SA_SOLVER_PROGRAM " irregular.toml --check")
        .out;
  };
  const std::string single = check("env -u OMP_NUM_THREADS"), three = check("OMP_NUM_THREADS=3");
  EXPECT_TRUE(contains(single, ", 2 ranks of 1 thread\n")) << single;
  EXPECT_TRUE(contains(three, ", 2 ranks of 1 thread, too few nodes for 3\n")) << three;
  // launchers pretend that they are terminals: nothing is drawn over itself
  const Outcome outcome = run(2, 1, "irregular.toml -o out");
  EXPECT_EQ(outcome.out.find('\033'), std::string::npos) << outcome.out;
  EXPECT_TRUE(contains(outcome.out, "100 %  time")) << outcome.out;
}

TEST_F(RanksTest, InputErrorsEndEveryRankAndAreToldOnce) {
  writeIrregular();
  writeFile("unknown.toml", replaced(readFile("irregular.toml"), "\"z1\"", "\"nowhere\""));
  expectError(run(3, 1, "unknown.toml -o out", 1), 1, "unknown.toml:");
  EXPECT_FALSE(std::filesystem::exists("out"));

  // one rank alone finds nothing to read, or something else
  expectError(runApart({"irregular.toml", "missing.toml", "irregular.toml"}), 1,
              "rank 1: missing.toml: cannot be opened");
  expectError(runApart({"missing.toml", "irregular.toml"}), 1, "missing.toml: cannot be opened");
  writeFile("other.toml", replaced(readFile("irregular.toml"), "20.0", "20.1"));
  expectError(runApart({"irregular.toml", "other.toml"}), 1, "rank 1 has read another case than rank 0");
  EXPECT_FALSE(std::filesystem::exists("irregular.msg"));

  // a brick turned inside out belongs to some rank; all end, with its number
  solver::Mesh mesh = box({4, 4, 8}, {1, 1, 2});
  std::swap(mesh.connectivity[8 * 100], mesh.connectivity[8 * 100 + 6]);
  writeFile("irregular.msh", meshText(mesh));
  const Outcome outcome = run(3, 1, "irregular.toml -o out", 1);
  expectError(outcome, 1, "irregular.toml, mesh irregular.msh: bricks with zero or negative volume");
  EXPECT_TRUE(contains(outcome.err, std::to_string(mesh.elementNumbers[100]))) << outcome.err;
}

// A rank whose files may grow no more stands for a full disk.
TEST_F(RanksTest, WriteErrorsOfAnyRankEndEveryRank) {
  writeIrregular();
  const std::string whole = readFile("irregular.toml");
  writeFile("irregular.toml", replaced(whole, "end_time = 0.004", "end_time = 0.1"));
  const std::string names[] = {"irregular", "irregular.rank1", "irregular.rank2"};
  for (const int rank : {1, 2}) {
    const std::string said = "rank " + std::to_string(rank) + ": ";
    std::filesystem::remove_all("out");
    auto ended = std::async(std::launch::async, [] { return run(3, 1, "irregular.toml -q -o out --rank-files", 3); });
    EXPECT_TRUE(isUnderWay("out/irregular.sta"));
    rlimit limit{};
    const pid_t process = processOf(rank);
    EXPECT_EQ(prlimit(process, RLIMIT_FSIZE, nullptr, &limit), 0);
    limit.rlim_cur = 0;
    EXPECT_EQ(prlimit(process, RLIMIT_FSIZE, &limit, nullptr), 0);
    const Outcome outcome = ended.get();
    expectError(outcome, 3, said + "cannot write out/" + names[rank] + ".");
    EXPECT_TRUE(contains(outcome.err, "File too large")) << outcome.err;
    EXPECT_TRUE(std::filesystem::exists("out/irregular.exo.partial"));
    EXPECT_FALSE(std::filesystem::exists("out/irregular.exo"));
  }
  writeFile("irregular.toml", whole);
  std::filesystem::remove_all("out");
  std::filesystem::create_directories("out/irregular.rank1.msg");
  expectError(run(3, 1, "irregular.toml -o out --rank-files", 3), 3,
              "rank 1: cannot open out/irregular.rank1.msg: Is a directory");
  writeFile("file", "");
  expectError(run(3, 1, "irregular.toml -o file/out", 3), 3, "file/out could not be written");
}

TEST_F(RanksTest, RanksHaveMessageFilesWhenTheyHaveSomethingToSay) {
  writeIrregular();
  run(3, 1, "irregular.toml -q -o out --rank-files");
  EXPECT_TRUE(contains(readFile("out/irregular.rank2.sta"), "Completed"));
  std::filesystem::remove("out/irregular.rank1.sta");
  run(2, 1, "irregular.toml -q -o out");
  for (const auto& entry : std::filesystem::directory_iterator("out"))
    EXPECT_FALSE(contains(entry.path().string(), ".rank")) << entry.path();
}

TEST_F(RanksTest, ASignalToOneRankEndsAllOfThemInOrder) {
  writeIrregular();
  change("irregular.toml", "end_time = 0.004", "end_time = 50");
  for (const int rank : {0, 2}) {
    std::filesystem::remove_all("out");
    expectError(runSignalled(3, "irregular.toml -q --digest -o out", rank, SIGTERM, 130), 130, "interrupted at time");
    EXPECT_TRUE(contains(readFile("out/irregular.sta"), "Interrupted"));
    EXPECT_FALSE(std::filesystem::exists("out/irregular.rank2.sta"));
    compare("out", "out");
  }
}

// Whatever happens to one rank, all end, and somebody says why.  One that is stopped while it sends may also keep others' messages.
TEST_F(RanksTest, RanksThatCrashOrHangEndAll) {
  writeIrregular();
  change("irregular.toml", "end_time = 0.004", "end_time = 50");
  const struct {
    int signal, code;
    std::string text;
  } rows[] = {{SIGSEGV, 139, "error: rank 1 crashed: signal 11 (Segmentation fault)\n"},
              {SIGSTOP, 2, "s for rank "},
              {SIGKILL, 137, "process rank 1 with PID"}}; // of mpirun
  for (const auto& row : rows) {
    std::filesystem::remove_all("out");
    const Outcome outcome = runSignalled(3, "irregular.toml -q -o out --rank-timeout 2", 1, row.signal, row.code);
    EXPECT_TRUE(contains(outcome.err + outcome.out, row.text)) << outcome.err << outcome.out;
  }
}

// At any increment: an analysis that restores the state of another goes on to the same state.
TEST_F(RanksTest, StatesHoldAllThatAnAnalysisNeeds) {
  writeIrregular();
  writeLoaded();
  writeMixed();
  const solver::Mesh mesh = solver::readMesh({"mixed.msh", {}});
  for (const char* file : {"mixed.toml", "damped.toml"}) {
    const solver::Case definition = solver::readCase(file).definition;
    solver::Analysis whole(mesh, definition, 1);
    double failed = 0;
    int compared = 0;
    while (whole.advanceTo(definition.endTime, 27) == solver::Ending::Running) {
      ++compared;
      solver::Analysis other(mesh, definition, 2);
      restore(other, stateOf(whole));
      whole.advanceTo(definition.endTime, 13);
      other.advanceTo(definition.endTime, 13);
      EXPECT_EQ(whole.energies().values(), other.energies().values()) << whole.progress().time;
      const State one = stateOf(whole), two = stateOf(other);
      for (const auto words : {&State::course, &State::records})
        EXPECT_TRUE(std::ranges::equal(one.*words, two.*words, {}, std::bit_cast<uint64_t, double>,
                                       std::bit_cast<uint64_t, double>))
            << whole.progress().time;
      for (const double mask : whole.fields().mask) failed += mask;
    }
    EXPECT_GT(compared, 8);
    EXPECT_GT(failed, 0) << "some bricks fail on the way";
  }
}

// Killed, then ended by a signal, and gone on with on other ranks and threads each time.
TEST_F(RanksTest, RestartedRunsAreTheUninterruptedOne) {
  writeIrregular();
  writeLoaded();
  writeMixed();
  for (const std::string job : {"mixed", "damped"}) {
    const std::string begin = job + ".toml -q -o out", file = "out/" + job + ".restart", csv = "out/" + job + ".csv";
    run(1, 1, job + ".toml --digest -q -o whole");
    EXPECT_FALSE(std::filesystem::exists("whole/" + job + ".restart"));
    EXPECT_TRUE(contains(readFile("whole/" + job + ".sta"), "Completed"));
    runSignalled(2, begin + " --digest", 0, SIGKILL, 137);
    if (job == "mixed") refuseWrongStates(begin, file, csv + ".partial");

    std::filesystem::remove("out/" + job + ".sta");
    const Outcome stopped = runSignalled(3, begin + " --restart --digest", 1, SIGTERM, 130);
    EXPECT_TRUE(contains(stopped.err, "--restart goes on from " + file));
    run(4, 1, begin + " --restart");
    EXPECT_TRUE(compare("whole/" + job + ".digest", "out").out.starts_with("the same: 21 outputs"));
    EXPECT_EQ(readFile("whole/" + job + ".csv"), readFile(csv));
    const std::string events = readFile("out/" + job + ".events.csv"), told = readFile("out/" + job + ".sta");
    EXPECT_EQ(readFile("whole/" + job + ".events.csv"), events);
    const int failed = countOf(",failed,", events);
    EXPECT_GT(failed, 0);
    EXPECT_TRUE(contains(told, std::to_string(failed) + " bricks of 210 failed, the first is number ")) << told;
    // those of both parts, and the same problems
    const auto problems = [](const std::string& text) { return text.substr(text.find("Warning message=")); };
    EXPECT_EQ(problems(told), problems(readFile("whole/" + job + ".sta")));
    EXPECT_FALSE(std::filesystem::exists(file));
    std::filesystem::remove_all("out");
  }
}

TEST(Problems, OfAnEarlierRunAreInItsState) {
  const solver::Mesh mesh = box({1, 1, 1}, {1, 1, 1});
  solver::Problems before(mesh), after(mesh);
  before.add({{{.increment = 3, .time = 0.5, .number = 1}}, 0});
  std::vector<double> words(16);
  solver::Archive saved(solver::Archive::Task::Save, words.data(), 16),
      restored(solver::Archive::Task::Restore, words.data(), 16);
  before.visit(saved);
  after.visit(restored);
  EXPECT_EQ(after.lines(), std::vector<std::string>{"1 brick of 1 failed, the first is number 1 at 0.5 s"});
}

TEST_F(RanksTest, FilesOfRanksGoOnWithAsManyRanks) {
  writeIrregular();
  writeLoaded();
  writeMixed();
  change("mixed.toml", "end_time = 0.01", "end_time = 0.006");
  const std::string begin = "mixed.toml -q -o out --files ranks";
  run(1, 1, "mixed.toml --digest -q -o whole");
  runSignalled(2, begin + " --digest", 1, SIGTERM, 130);
  expectError(run(3, 1, begin + " --restart", 1), 1, "the run that is to go on writes a file of fields for each of 2");
  run(2, 1, begin + " --restart");
  compare("whole", "out");
  EXPECT_TRUE(contains(shell(SA_JOIN_PROGRAM " out/mixed.exo.2.1").out, "210 elements of 2 files at 13 times"));
}

// Bricks collapse: eight messages, all of them stored at the root, the right status on every rank.
TEST_F(RanksTest, CollapseIsRecordedByTheRoot) {
  const Outcome outcome = run(4, 1, SA_EXAMPLES "/crushed_column/crush.toml -q -o out", 2);
  EXPECT_TRUE(contains(outcome.err, "error: 68 bricks distorted beyond computing")) << outcome.err;
  int messages = 0;
  for (const std::string name : {"crush", "crush.rank1", "crush.rank2", "crush.rank3"}) {
    if (name != "crush" && !std::filesystem::exists("out/" + name + ".msg")) continue; // none of its bricks
    const std::string text = readFile("out/" + name + ".msg"), status = readFile("out/" + name + ".sta");
    const int own = countOf("Excessive distortion", text);
    EXPECT_LE(own, 8);
    EXPECT_TRUE(own > 0 || name == "crush") << name;
    messages += own;
    for (const char* said : {"EXPLICIT DYNAMICS, JOB crush", "bricks distorted beyond computing"})
      EXPECT_EQ(countOf(said, text), 1) << name << ": " << said;
    EXPECT_TRUE(contains(status, "Aborted")) << name;
  }
  EXPECT_GE(messages, 8);
  const Outcome listed = shell(SA_DIAGNOSTICS_PROGRAM " out/crush.diagnostics.sqlite --json");
  EXPECT_EQ(listed.code, 0) << listed.err;
  EXPECT_TRUE(contains(listed.out, "\"count\": 68")) << listed.out;
  // what is no number on another rank ends all of them, in the increment in which it would on one
  writeIrregular();
  const auto ending = [](int ranks) {
    const std::string text = run(ranks, 1, "irregular.toml -q -o out", 2).err;
    return text.substr(text.find(" no longer a finite number at "), 60);
  };
  std::string text = replaced(readFile("irregular.toml"), "20.0]", "1e200]");
  text[text.find("\"x\", time") + 1] = 'z';                                                     // which keeps volumes
  text = replaced(text, "interval = 0.001", "interval = 0.004") + "history_interval = 0.004\n"; // no sum tells before
  writeFile("irregular.toml", text);
  EXPECT_EQ(ending(2), ending(1));
}

TEST_F(RanksTest, ComparisonNamesTheFirstDifference) {
  writeIrregular();
  run(1, 1, "irregular.toml --digest -q -o a");
  Outcome outcome = compare("a", "a/irregular.digest");
  EXPECT_TRUE(outcome.out.starts_with("the same: 5 outputs from increment 0, time 0 s, to increment ")) << outcome.out;

  change("irregular.toml", "C10 = 1.0e6", "C10 = 1.0000000001e6");
  run(1, 1, "irregular.toml --digest -q -o b");
  outcome = compare("a", "b", exitDifferent);
  EXPECT_TRUE(outcome.out.starts_with("different: output ")) << outcome.out;
  for (const char* part : {"increment ", "time ", "array ", " of node ", " in a/irregular.digest and "})
    EXPECT_TRUE(contains(outcome.out, part)) << outcome.out;
  // without the fields the chunk is all that is known
  std::filesystem::remove("b/irregular.exo");
  outcome = compare("a", "b", exitDifferent);
  EXPECT_TRUE(contains(outcome.out, "a value of nodes 1 to ")) << outcome.out;
  // other meshes are no matter of values
  solver::Mesh mesh = box({7, 5, 6}, {1, 0.8, 1.1});
  writeFile("irregular.msh", meshText(mesh));
  run(1, 1, "irregular.toml --digest -q -o c");
  outcome = compare("a", "c", exitDifferent);
  EXPECT_TRUE(outcome.out.starts_with("different: the meshes have other numbers")) << outcome.out;
}

// One value of one run has another last bit, in fields and digest: node, component and both values are told.
// Numbers go beyond 32 bits.
TEST_F(RanksTest, ComparisonFindsOneBit) {
  solver::Mesh mesh = numberedBox({3, 3, 20}, {1, 1, 7});
  for (int64_t& number : mesh.nodeNumbers) number *= int64_t{1} << 32;
  const std::vector<double> zeros(3 * mesh.nodeNumbers.size()), stress(6 * mesh.elementNumbers.size());
  const std::vector<double> scalars(mesh.elementNumbers.size());
  std::vector<double> velocity = zeros;
  solver::Case definition = caseOf(neoHooke(1e6, 0.3, 1000), 1);
  definition.sections = {{"upper", 0}, {"lower", 0}}; // blocks that are not in the order of the mesh
  const auto write = [&](const std::string& directory) {
    std::filesystem::create_directory(directory);
    solver::ResultsFile fields(directory + "/run.exo", mesh, definition, {}, solver::Ranks());
    solver::DigestFile digest(directory + "/run.digest", "run", mesh, solver::Ranks());
    for (const double time : {0.0, 0.5}) {
      const auto values = [&](unsigned) { return solver::Fields{zeros, velocity, zeros, stress, scalars, scalars}; };
      fields.write(time, values, {});
      digest.write({time, 0.1, time > 0 ? 7 : 0}, values, {});
    }
    fields.close();
    digest.close();
    fields.complete();
    digest.complete();
  };
  write("a");
  velocity[3 * 123 + 2] = -0.0;
  write("b");
  EXPECT_EQ(compare("a", "b", exitDifferent).out,
            "different: output 1, increment 0, time 0 s, array velocity\nvelocity_z of node " +
                std::to_string(mesh.nodeNumbers[123]) +
                " is 0 (0) in a/run.digest and -0 (8000000000000000) in b/run.digest\n"
                "arrays that differ in this output: velocity\n");
}

// Nothing of a mesh is left out of its hash.
TEST_F(RanksTest, MeshesThatDifferAnywhereHaveOtherHashes) {
  const solver::Mesh mesh = numberedBox({2, 2, 3}, {1, 1, 2});
  const uint64_t hash = solver::meshHash(mesh, solver::Ranks());
  const std::function<void(solver::Mesh&)> changes[] = {
      [](auto& m) { m.nodeNumbers.back() += int64_t{1} << 32; },
      [](auto& m) { m.elementNumbers[0] = 4; },
      [](auto& m) { m.coordinates[4] = -m.coordinates[4]; },
      [](auto& m) { std::swap(m.connectivity[3], m.connectivity[2]); },
      [](auto& m) { m.groups[1].name += 'x'; },
      [](auto& m) { m.groups[0].nodes.pop_back(); },
      [](auto& m) { m.groups.back().elements.pop_back(); },
      [](auto& m) { m.groups.pop_back(); }};
  for (const auto& apply : changes) {
    solver::Mesh other = mesh;
    apply(other);
    EXPECT_NE(solver::meshHash(other, solver::Ranks()), hash) << &apply - changes;
  }
}

TEST_F(RanksTest, ComparisonSaysWhatIsMissing) {
  writeIrregular();
  run(1, 1, "irregular.toml --digest -q -o a");
  const std::string digest = readFile("a/irregular.digest");
  const std::size_t last = digest.rfind("increment "), end = digest.rfind("end ");
  const std::size_t hash = digest.find("node displacement ") + 18;
  const struct {
    const char *name, *text;
    std::string digest;
  } files[] = {
      {"other", "this is no digest", "something else\n"},
      {"short", " is missing in short.digest; the 4 outputs before are the same", digest.substr(0, last) + "end 4\n"},
      {"count", "outputs are missing", digest.substr(0, last) + "end 5\n"},
      {"cut", "is cut off", digest.substr(0, last)},
      {"end", "is cut off", digest.substr(0, end)},
      {"line", "is cut off", digest.substr(0, digest.size() - 40)},
      {"chunk", "does not belong to those of its chunks",
       digest.substr(0, hash) + "0000000000000000" + digest.substr(hash + 16)},
      {"empty", "this is no digest", ""},
  };
  for (const auto& file : files) {
    writeFile(std::string(file.name) + ".digest", file.digest);
    const Outcome outcome = compare("a", std::string(file.name) + ".digest", exitInput);
    EXPECT_TRUE(outcome.err.starts_with("incomplete: ") && contains(outcome.err, file.text))
        << file.name << ": " << outcome.err;
  }
  EXPECT_TRUE(contains(compare("short.digest", "a", exitInput).err, " is missing in short.digest; "));
  for (const auto& [place, text] :
       {std::pair{"nowhere", "no such file"}, {".", "has 8 digests"}, {"b", "no digest"}, {"/dev/zero", "a device"}}) {
    std::filesystem::create_directory("b");
    EXPECT_TRUE(contains(compare(place, "a", exitInput).err, text)) << text;
  }
  EXPECT_EQ(shell(SA_COMPARE_PROGRAM " a").code, exitInput);
}

} // namespace
