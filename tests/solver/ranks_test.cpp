// The program on ranks: the same results to the last bit, errors that end everyone, and the program that compares.
#include "files.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sys/wait.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::test;

struct Outcome {
  int code;
  std::string out, err;
};

Outcome shell(const std::string& command) {
  const int status = std::system((command + " >out.txt 2>err.txt </dev/null").c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000, readFile("out.txt"), readFile("err.txt")};
}

class RanksTest : public testing::Test {
protected:
  void SetUp() override {
    if (std::system("command -v mpirun >/dev/null 2>&1") != 0 || !std::filesystem::exists(SA_MPI_LIBRARY))
      GTEST_SKIP() << "no mpirun or no MPI library";
    setenv("OMPI_ALLOW_RUN_AS_ROOT", "1", 1);
    setenv("OMPI_ALLOW_RUN_AS_ROOT_CONFIRM", "1", 1);
    setenv("OMPI_MCA_btl_vader_single_copy_mechanism", "none", 1);
  }
  static Outcome run(int ranks, int threads, const std::string& arguments) {
    const std::string launcher = "timeout 60 mpirun --oversubscribe -n " + std::to_string(ranks) + " ";
    return shell((ranks > 1 ? launcher : "") + SA_SOLVER_PROGRAM " " + arguments + " -t " + std::to_string(threads));
  }
  static Outcome compare(const std::string& a, const std::string& b) {
    return shell(SA_COMPARE_PROGRAM " " + a + " " + b);
  }

  // The twisting column, so shortened that it takes a moment.
  static void writeColumn() {
    std::string text = readFile(SA_EXAMPLES "/twisting_column/column.toml");
    text = replaced(text, "\"column.msh\"", "\"" SA_EXAMPLES "/twisting_column/column.msh\"");
    text = replaced(text, "end_time = 0.25", "end_time = 0.004");
    text = replaced(text, "interval = 0.01 ", "interval = 0.002 ");
    writeFile("column.toml", text);
  }
  // A box whose nodes are moved at random, with gravity, viscosity and a prescribed motion.
  static void writeIrregular() {
    solver::Mesh mesh = box({7, 5, 6}, {1, 0.8, 1.1});
    uint32_t state = 1;
    for (double& x : mesh.coordinates) {
      state = 1664525U * state + 1013904223U;
      x += 0.03 * (static_cast<double>(state >> 8) / (1U << 24) - 0.5);
    }
    writeFile("irregular.msh", meshText(mesh));
    writeFile("irregular.toml", R"(mesh = "irregular.msh"
[gravity]
acceleration = [0.0, 1.0, -9.81]
[[material]]
name = "rubber"
density = 1000.0
C10 = 1.0e6
C01 = 2.0e5
D1 = 1.0e-7
[[section]]
group = "all"
material = "rubber"
[[fix]]
group = "z0"
components = ["x", "y", "z"]
[[velocity]]
group = "z1"
component = "x"
time = [0.0, 0.002]
value = [0.0, 20.0]
[control]
end_time = 0.004
[output]
interval = 0.001
)");
  }

private:
  WorkingDirectory directory_;
};

TEST_F(RanksTest, ResultsAreTheSameToTheLastBit) {
  writeColumn();
  writeIrregular();
  for (const std::string job : {"column", "irregular"}) {
    const Outcome alone = run(1, 1, job + ".toml --digest -q -o " + job + "1x1");
    ASSERT_EQ(alone.code, 0) << alone.err;
    for (const auto& [ranks, threads] : {std::pair{1, 2}, {2, 1}, {2, 2}, {4, 1}, {3, 2}}) {
      const std::string directory = job + std::to_string(ranks) + "x" + std::to_string(threads);
      const Outcome outcome = run(ranks, threads, job + ".toml --digest -q -o " + directory);
      ASSERT_EQ(outcome.code, 0) << outcome.err;
      EXPECT_EQ(outcome.out, "");
      const Outcome compared = compare(job + "1x1", directory);
      EXPECT_EQ(compared.code, 0) << compared.out;
      EXPECT_EQ(readFile(job + "1x1/" + job + ".csv"), readFile(directory + "/" + job + ".csv"));
    }
  }
}

TEST_F(RanksTest, MoreRanksThanTheModelNeeds) {
  writeFile("tiny.msh", meshText(box({1, 1, 1}, {1, 1, 1})));
  writeIrregular();
  writeFile("tiny.toml", replaced(readFile("irregular.toml"), "irregular.msh", "tiny.msh"));
  ASSERT_EQ(run(1, 1, "tiny.toml --digest -q -o one").code, 0);
  const Outcome outcome = run(6, 2, "tiny.toml --digest -o six");
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_NE(outcome.out.find("6 ranks of 2 threads"), std::string::npos) << outcome.out;
  EXPECT_EQ(compare("one", "six/tiny.digest").code, 0);
}

TEST_F(RanksTest, ErrorsEndEveryRankAndAreToldOnce) {
  writeIrregular();
  const auto count = [](const std::string& text, const std::string& part) {
    int number = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++number;
    return number;
  };
  writeFile("unknown.toml", replaced(readFile("irregular.toml"), "\"z1\"", "\"nowhere\""));
  Outcome outcome = run(3, 1, "unknown.toml -o out");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(count(outcome.err, "error: "), 1) << outcome.err;
  EXPECT_FALSE(std::filesystem::exists("out"));

  // a brick turned inside out belongs to some rank; all end, with its number
  solver::Mesh mesh = box({4, 4, 8}, {1, 1, 2});
  std::swap(mesh.connectivity[8 * 100], mesh.connectivity[8 * 100 + 6]);
  writeFile("irregular.msh", meshText(mesh));
  outcome = run(3, 1, "irregular.toml -o out");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(count(outcome.err, "error: "), 1) << outcome.err;
  EXPECT_NE(outcome.err.find(std::to_string(mesh.elementNumbers[100])), std::string::npos) << outcome.err;

  // the root cannot write
  writeIrregular();
  writeFile("file", "");
  outcome = run(3, 1, "irregular.toml -o file/out");
  EXPECT_NE(outcome.code, 0);
  EXPECT_EQ(count(outcome.err, "error: "), 1) << outcome.err;
}

// Bricks collapse: eight messages, all of them stored at the root, the right status on every rank.
TEST_F(RanksTest, CollapseIsRecordedByTheRoot) {
  const Outcome outcome = run(4, 1, SA_EXAMPLES "/crushed_column/crush.toml -q -o out");
  EXPECT_EQ(outcome.code, 2);
  EXPECT_NE(outcome.err.find("error: 20 bricks distorted beyond computing"), std::string::npos) << outcome.err;
  int messages = 0;
  for (const std::string name : {"crush", "crush.rank1", "crush.rank2", "crush.rank3"}) {
    const std::string text = readFile("out/" + name + ".msg"), status = readFile("out/" + name + ".sta");
    int own = 0;
    for (std::size_t at = text.find("Excessive distortion"); at != std::string::npos;
         at = text.find("Excessive distortion", at + 1))
      ++own;
    EXPECT_LE(own, 8);
    messages += own;
    EXPECT_NE(status.find("Aborted"), std::string::npos) << name;
  }
  EXPECT_GE(messages, 8);
  const Outcome listed = shell(SA_DIAGNOSTICS_PROGRAM " out/crush.diagnostics.sqlite --json");
  EXPECT_EQ(listed.code, 0) << listed.err;
  EXPECT_NE(listed.out.find("\"count\": 20"), std::string::npos) << listed.out;
}

TEST_F(RanksTest, ComparisonNamesTheFirstDifference) {
  writeIrregular();
  ASSERT_EQ(run(1, 1, "irregular.toml --digest -q -o a").code, 0);
  writeFile("irregular.toml", replaced(readFile("irregular.toml"), "C10 = 1.0e6", "C10 = 1.0000000001e6"));
  ASSERT_EQ(run(1, 1, "irregular.toml --digest -q -o b").code, 0);
  Outcome outcome = compare("a", "b");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_TRUE(outcome.out.starts_with("increment ") && outcome.out.find(" of node ") != std::string::npos)
      << outcome.out;
  // without the fields the chunk is all that is known
  std::filesystem::remove("b/irregular.exo");
  outcome = compare("a", "b");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_NE(outcome.out.find("of nodes "), std::string::npos) << outcome.out;
  // one run is shorter
  std::string digest = readFile("a/irregular.digest");
  writeFile("short.digest", digest.substr(0, digest.rfind("increment ")));
  outcome = compare("a", "short.digest");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_NE(outcome.out.find("the same in 4 outputs"), std::string::npos) << outcome.out;
  // unreadable ones
  writeFile("other.digest", "something else\n");
  for (const char* bad : {"nowhere", "other.digest", "."}) {
    outcome = compare("a", bad);
    EXPECT_EQ(outcome.code, 2) << bad;
    EXPECT_TRUE(outcome.err.starts_with("error: ")) << outcome.err;
  }
}

} // namespace
