// The program that lists diagnostic databases.
#include "host_services.h"
#include "tests/host/diagnostics_job.h"
#include "tests/support/program.h"

#include <csignal>
#include <pty.h>
#include <regex>

namespace {

using namespace sharedanalysis::test;

std::string quoted(const fs::path& path) { return "'" + path.string() + "'"; }

class DiagnosticsProgram : public DiagnosticDatabase {
protected:
  void SetUp() override {
    if (!fs::exists(program)) GTEST_SKIP() << "the program is not built";
  }

  // Standard output and standard error of the program.
  Outcome run(const std::string& arguments, const std::string& after = " 2>&1") const {
    return shell(quoted(program) + " " + arguments + after);
  }
  Outcome runOn(const std::string& job, const std::string& arguments = "") const {
    return run(quoted(database(job)) + " " + arguments);
  }

  // A step that goes well and one that fails.
  void recordFailure(const std::string& job) const {
    setModel(wheelAndTyre());
    openJob(job, directory);
    dxt_DiagnosticExtractor& x = implicitExtractor();
    x.SetStepNlgeom();
    x.BeginStep(1, "Press", 4, false, false);
    for (int k = 1; k <= 12; ++k) {
      x.BeginIncrement(k, 0.1);
      x.BeginAttempt(0.1);
      x.EndAttempt();
      x.EndIncrement(0.1 * k, true);
    }
    x.BeginStep(2, "Twist", 4, false, false);
    x.BeginIncrement(1, 0.5);
    warn(3);
    for (double size : {0.5, 0.125}) {
      x.BeginAttempt(size);
      for (int32_t element : {51, 52, 53, 54, 55, 56, 51})
        x.AddElementDiagnostic(codes::ExcessiveDistortion,
                               atElement(inpM_SolverPartMap::Instance().ConstGetInstanceElementIdPair(element)));
      x.AddCutbackDiagnostic(7);
      x.EndAttempt();
    }
    x.AddError(codes::TooManyAttempts, {{2}, {}, {}, {}, {}});
    x.EndIncrement(0, false);
  }

  const fs::path program = fs::read_symlink("/proc/self/exe").parent_path() / "sharedanalysis-diagnostics";
};

TEST_F(DiagnosticsProgram, ListsWhatAnAnalystAsksFor) {
  recordFailure("fails");
  const int32_t aborted = 2;
  DXT_SETJOBSTATUS_XPL(&aborted);
  closeJob();
  const Outcome result = runOn("fails");
  EXPECT_EQ(result.code, 0);
  const std::string timeless = std::regex_replace(result.out, std::regex("took [^ ]+ s"), "took T s");
  const std::string output = std::regex_replace(timeless, std::regex("started .* on .*, took"), "started S on H, took");
  EXPECT_EQ(output, R"(fails: aborted
  started S on H, took T s

Steps
  1 Press: implicit, procedure 4, large displacements
    12 increments of 0.1 to time 1.2, 12 attempts, took T s
  2 Twist: implicit, procedure 4
    1 increment of 0.5 to time 0, 2 attempts, 2 cutbacks, 1 error, 1 warning, took T s

Increments
  step  increment  size  time  attempts  cutbacks  errors  warnings
     1       1-12  0.1   1.2         12         0       0         0
     2          1  0.5   0            2         2       1         1  not converged

Problems
  ERROR TooManyAttempts (0x410300A0), once
    The increment did not converge in 2 attempts
    step 2 increment 1 time 0
  ELEMENT ERROR ExcessiveDistortion (0x42010020), 14 times
    Element 301 instance TYRE-1 is distorted excessively
    all in step 2 increment 1 time 0
    elements 301 (4 times), 302 (2 times), 303 (2 times), 304 (2 times), 305 (2 times) of TYRE-1 and 1 more
  WARNING NegativeEigenvalues (0x01040040), once
    The system matrix has 3 negative eigenvalues
    step 2 increment 1 time 0
  CUTBACK (7), 2 times
    Elements are distorted excessively
    all in step 2 increment 1 time 0
)");
}

TEST_F(DiagnosticsProgram, IncrementsThatDoNotFollowEachOtherStandOnTheirOwn) {
  dxt_DiagnosticExtractorXpl& x = beginExplicit("gap");
  for (int k : {1, 2, 4}) {
    x.BeginIncrement(k, 0.5);
    x.EndIncrement(0.5 * k, true);
  }
  closeJob();
  const std::string out = runOn("gap").out;
  EXPECT_TRUE(contains(out, "     1        1-2  0.5   1\n     1          4  0.5   2\n")) << out;
}

TEST_F(DiagnosticsProgram, FitsANarrowTerminal) {
  recordFailure("narrow");
  closeJob();
  constexpr std::size_t kColumns = 40;
  const winsize size = {.ws_row = 20, .ws_col = kColumns, .ws_xpixel = 0, .ws_ypixel = 0};
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, &size);
  ASSERT_GE(child, 0);
  if (child == 0) {
    setenv("NO_COLOR", "1", 1);
    execl(program.c_str(), program.c_str(), database("narrow").c_str(), nullptr);
    _exit(127);
  }
  const std::string output = Program::readAll(terminal);
  int status = -1;
  waitpid(child, &status, 0);
  EXPECT_EQ(status, 0);
  for (const std::string& line : linesOf(std::regex_replace(output, std::regex("\r"), "")))
    EXPECT_LE(line.size(), kColumns) << line;
  EXPECT_TRUE(contains(output, "step 1, increment 1-12")) << output;
}

TEST_F(DiagnosticsProgram, NarrowsItsLists) {
  recordFailure("narrow");
  closeJob();
  // clang-format off
  const struct {
    const char* options;
    std::vector<const char*> there, notThere;
  } cases[] = {
      {"--code excessivedistortion --limit 2",
       {"301 (4 times), 302 (2 times) of TYRE-1 and 4 more", "(12 more; --all shows them)",
        "2 step 2 increment 1 time 0 attempt 1: ExcessiveDistortion: Element 301"},
       {"TooManyAttempts"}},
      {"--code ExcessiveDistortion --all", {"306 (2 times) of TYRE-1\n"}, {"more"}},
      {"--increment 1:2-3", {"     1          2  0.1", "     1          3  0.1", "(none of these)"},
       {"not converged", "     1          4  0.1"}},
      {"--increment 1:2", {"     1          2  0.1"}, {"     1          3  0.1"}},
      {"--increment 1", {"ExcessiveDistortion (0x42010020), 14 times"}, {}},
      {"--code nothing", {"(none of these)"}, {}}};
  // clang-format on
  for (const auto& c : cases) {
    const std::string out = runOn("narrow", c.options).out;
    for (const char* words : c.there) EXPECT_TRUE(contains(out, words)) << c.options << ": " << words << '\n' << out;
    for (const char* words : c.notThere) EXPECT_FALSE(contains(out, words)) << c.options << ": " << words;
  }
  const std::string byName = runOn("narrow", cases[0].options).out;
  for (const char* code : {"0x42010020", "0X42010020", "1107361824"})
    EXPECT_EQ(runOn("narrow", std::string("--limit 2 --code ") + code).out, byName) << code;
}

TEST_F(DiagnosticsProgram, SpeaksJson) {
  recordFailure("json");
  closeJob();
  const Outcome result = runOn("json", "--json");
  EXPECT_EQ(result.code, 0);
  const std::string code = std::to_string(codes::ExcessiveDistortion);
  Database r(":memory:", SQLITE_OPEN_READWRITE); // SQLite knows JSON as well
  // clang-format off
  for (const auto& [path, value] : std::initializer_list<std::pair<const char*, std::string>>{
           {"format", "1"}, {"run.job", "json"}, {"run.in_parts", "1"}, {"run.domains", "NULL"},
           {"steps[0].increments", "12"}, {"steps[0].attributes[0]", "large displacements"},
           {"increments[0].last", "12"}, {"increments[1].state", "not converged"},
           {"problems[1].name", "ExcessiveDistortion"}, {"problems[1].code", code}, {"problems[1].count", "14"},
           {"problems[1].place_count", "6"}, {"problems[1].places[0].label", "301"},
           {"problems[1].places[0].count", "4"}, {"problems[1].first.increment", "1"}, {"messages", "[]"}})
    EXPECT_EQ(r.value("SELECT json_extract('" + std::regex_replace(result.out, std::regex("'"), "''") + "', '$." +
                      path + "')"), value) << path;
  // clang-format on
}

TEST_F(DiagnosticsProgram, ReadsRunningAndCrashedAnalyses) {
  recordFailure("running");
  EXPECT_TRUE(runOn("running").out.starts_with("running: running\n"));
  closeJob();
  EXPECT_TRUE(runOn("running").out.starts_with("running: ended without a status\n"));

  const int status = inChild([&] {
    recordFailure("crashed");
    raise(SIGKILL);
  });
  EXPECT_TRUE(WIFSIGNALED(status));
  const Outcome crashed = runOn("crashed");
  EXPECT_EQ(crashed.code, 0);
  EXPECT_TRUE(crashed.out.starts_with("crashed: ended without closing the file\n")) << crashed.out;
  EXPECT_TRUE(contains(crashed.out, "TooManyAttempts"));
}

TEST_F(DiagnosticsProgram, ExitCodesTellWhatIsWrong) {
  const auto expect = [&](const Outcome& result, int exitCode, const std::string& words) {
    EXPECT_EQ(result.code, exitCode) << result.out;
    EXPECT_TRUE(contains(result.out, words)) << result.out;
    EXPECT_EQ(linesOf(result.out).size(), 1u) << result.out;
  };
  writeFile(directory / "letter", std::string(5000, 'x'));
  writeFile(directory / "nothing", "");
  recordFailure("good");
  closeJob();
  expect(run(""), 1, "DATABASE is required");
  expect(run("x --what"), 1, "--what");
  expect(run(quoted(directory / "none")), 1, "there is no such file");
  expect(run(quoted(directory)), 1, "is a directory");
  expect(run(quoted(directory / "letter")), 1, "is not a database");
  expect(run(quoted(directory / "nothing")), 1, "not of diagnostics");
  expect(runOn("good", "--increment 3-x"), 1, "--increment 3-x");
  expect(runOn("good", "--increment 3-2"), 1, "the range ends before it begins");
  expect(runOn("good", "--limit -1"), 1, "--limit: Value -1 not in range 1 to");
  expect(run("/dev/zero"), 1, "is a pipe or a device");
  expect(runOn("good", "--limit 0"), 1, "--limit");
  expect(runOn("good", "--limit 3 --all"), 1, "--limit");
  expect(runOn("good", "--json=no"), 1, "json was given a disallowed");
  expect(run(quoted(database("good")), " 2>&1 >/dev/full"), 3, "written");
  const auto changed = [&](const std::string& sql) {
    fs::copy_file(database("good"), directory / "changed", fs::copy_options::overwrite_existing);
    Database(directory / "changed", SQLITE_OPEN_READWRITE).rows(sql);
    return run(quoted(directory / "changed"));
  };
  expect(changed("PRAGMA application_id = 1"), 1, "not of diagnostics");
  expect(changed("PRAGMA user_version = 99"), 6, "newer release (version 99");
  expect(changed("PRAGMA user_version = 0"), 7, "nothing was recorded");
  expect(changed("DROP TABLE increments"), 7, "no such table");
  // numbers that no sum holds, and texts that steer a terminal
  const Outcome hostile =
      changed("UPDATE increments SET attempts = 9223372036854775807, iterations = -9223372036854775807 - 1, "
              "number = number + 9223372036854775795 WHERE step = 1; UPDATE increments SET step = 1, converged = 1, "
              "cutbacks = 0, errors = 0, warnings = 0, number = -9223372036854775807 - 1 WHERE step = 2; "
              "UPDATE run SET elapsed = 1e300, job = 'a' || char(155) || char(27) || 'b'");
  EXPECT_EQ(hostile.code, 0);
  for (const char* words : {"a   b: ", "took 1e+300 s", "9223372036854775796-9223372036854775807",
                            "9223372036854775807", "-9223372036854775808"})
    EXPECT_TRUE(contains(hostile.out, words)) << words << '\n' << hostile.out;
  fs::resize_file(directory / "changed", 20000);
  expect(run(quoted(directory / "changed")), 7, "cannot be read");
}

TEST_F(DiagnosticsProgram, EndsQuietlyWhenNobodyReadsOn) {
  beginImplicit("pipe");
  for (int k = 0; k < 20000; ++k) warn(k);
  closeJob();
  const Outcome result = run(quoted(database("pipe")) + " --code warning --all", " 2>&1 | head -n 1");
  EXPECT_EQ(result.out, "pipe: ended without a status\n");
}

} // namespace
