// The diagnostic database of the reference host, read back with SQLite.
#include "acd.h"
#include "bcu_ErrorStatus.h"
#include "bcu_ResourceMonitor.h"
#include "dia_Codes.h"
#include "dia_FormatUtils.h"
#include "dia_MetadataTable.h"
#include "dia_TypeCodeUtils.h"
#include "host_services.h"
#include "tests/host/diagnostics_job.h"
#include "tests/support/program.h"
#include "tests/support/threads.h"
#include "thr_GlobalLock.h"
#include "thr_ThrSingletonRegistry.h"

#include <cerrno>

namespace {

using namespace sharedanalysis::test;

// ---- the record of an analysis

TEST_F(DiagnosticDatabase, HoldsTheCourseOfAnImplicitAnalysis) {
  openJob("course", directory);
  dxt_DiagnosticExtractor& x = implicitExtractor();
  x.SetStepIncrementationControls(3, 0.1, 1.0, 1e-5, 0.5, 100); // belongs to the step that follows
  x.SetStepNlgeom();
  x.BeginStep(1, "Press", 4, true, false);
  x.SetStepSolver(1);
  x.SetStepExtrapolation(2);
  x.SetStepUnsymm();
  x.SetStepCharacteristicElementLength(0.25);
  x.SetStepStabilizeFactor(2e-4);
  x.BeginIncrement(1, 0.5);
  x.BeginAttempt(0.5);
  x.BeginIteration();
  x.SetIterationSevereDiscontinuity(true);
  x.BeginContactIteration();
  x.SetContactIterationConverged(false);
  x.EndContactIteration();
  x.BeginContactIteration();
  x.EndContactIteration();
  x.SetContactIterationConverged(true);
  x.SetIterationPenetrationToleranceExceeded(true);
  x.SetIterationSeparationToleranceTooLarge(false);
  x.EndIteration();
  x.SetIterationConverged(false);
  x.AddCutbackDiagnostic(4);
  x.SetAttemptNeedsReordering(true);
  x.EndAttempt();
  x.BeginAttempt(0.125);
  x.BeginIteration();
  x.AddResidualDiagnostic(2, 7, {{}, {10, 0.5, 1e-3, 2e-4}, {}, {}, {}});
  x.AddCompatibilityDiagnostic(3, {{}, {1e-6, 1e-5}, {}, {}, {}});
  x.SetIterationConverged(true);
  x.EndIteration();
  x.EndAttempt();
  x.EndIncrement(0.125, true);
  x.EndStep();
  x.SetStepSolver(0);
  x.BeginStep(2, "Twist", 5, false, true);
  x.BeginIncrement(1, 1.0);
  expectStored("course", R"(
number, name, solver, procedure, flag1, flag2, incrementation, control1, control4, control_count, equation_solver,
    extrapolation, characteristic_length, unsymmetric, nlgeom, stabilize_factor, ended >= began FROM steps =>
    1|Press|implicit|4|1|0|3|0.1|0.5|100|1|2|0.25|1|1|0.0002|1;
    2|Twist|implicit|5|0|1|NULL|NULL|NULL|NULL|0|NULL|NULL|0|0|NULL|1
step, number, time_increment, time, converged, attempts, iterations, cutbacks, errors, warnings, ended IS NULL FROM
    increments => 1|1|0.5|0.125|1|2|2|1|0|0|0; 2|1|1.0|NULL|NULL|0|0|0|0|0|1
increment, number, time_increment, needs_reordering, ended FROM attempts => 1|1|0.5|1|1; 1|2|0.125|NULL|1
increment, attempt, number, converged, severe_discontinuity, penetration_exceeded, separation_too_large, ended FROM
    iterations => 1|1|1|0|1|1|0|1; 1|2|1|1|NULL|NULL|NULL|1
iteration, number, converged, ended FROM contact_iterations => 1|1|0|1; 1|2|1|1
m.class, m.code, d.kind, m.step, m.increment, m.attempt, m.iteration, m.time, m.text FROM messages m JOIN diagnostics
    d USING (id) => cutback|4|NULL|1|1|1|NULL|0.125|Too many iterations with severe discontinuities;
    residual|2|7|1|1|2|1|0.125|Field 2, kind 7: average force 1.00000e+01, largest residual 5.00000e-01, largest
    increment 1.00000e-03, largest correction 2.00000e-04; compatibility|3|NULL|1|1|2|1|0.125|Constraint 3: largest
    error 1.00000e-06, allowed 1.00000e-05
step, increment, attempt, time_increment, iterations, cutback FROM attempt_summary => 1|1|1|0.5|1|Too many iterations
    with severe discontinuities; 1|1|2|0.125|1|NULL
step, increments, attempts, iterations, cutbacks, time FROM step_summary => 1|1|2|2|1|0.125; 2|1|0|0|0|NULL)");
}

TEST_F(DiagnosticDatabase, HoldsDiagnosticsWithAllTheirValues) {
  setModel(wheelAndTyre());
  dxt_DiagnosticExtractorXpl& x = explicitExtractor();
  openJob("before", directory);
  x.SetExecutionCode(2); // goes on in the next job
  openJob("values", directory);
  x.SetNumDomains(4);
  x.SetXplDoublePrecision(true);
  x.SetValid(true);
  x.SetRenumbered(false);
  x.BeginStep(1, "Roll", 17);
  x.BeginIncrement(1, 1e-6);
  x.AddError(codes::UserError, 3, {{3, -4, INT32_MIN}, {0.5, NAN, -INFINITY}, {"it's \"100 %\" \xC3\xA4"}, {}, {}});
  x.AddElementDiagnostic(dia_Codes::ExcessiveDistortion, 1, atElement({"TYRE-1", 303}));
  x.AddContactDiagnostic(codes::Overclosure, 2, {{}, {0.01}, {"TREAD", "ROAD"}, {{"TYRE-1", 7}}, {}});
  x.AddWarning(codes::HourglassEnergyLarge, 0, {{}, {0.2}, {}, {}, {}});
  x.AddInternalError("lost a block");
  x.AddXplStatus(5, 7, "TYRE-1", {1, 2, 3, 4, 5, 6, 7, 8, 9});
  x.SetActiveXplStatus({1, 0, 1, 0, 0, 0, 0, 0, 2});
  x.EndIncrement(1e-6, true);
  EXPECT_EQ(x.GetNumberOfErrors(), 2) << "with the internal one";
  EXPECT_EQ(x.GetNumberOfWarnings(), 1);
  EXPECT_EQ(x.GetNumberOfElementDiagnostics(), 1);
  EXPECT_EQ(x.GetExecutionCode(), 2);
  const int32_t completed = 1;
  DXT_SETJOBSTATUS_XPL(&completed);
  expectStored("values", replaced(R"(
class, name, is_error, domain, step, increment, text FROM messages ORDER BY id => error|UserError|1|3|1|1|it's "100 %"
    ä (3, -4, -2147483648; 5.00000e-01, nan, -inf); element|ExcessiveDistortion|1|1|1|1|Element 303 instance TYRE-1 is
    distorted excessively; contact|Overclosure|0|2|1|1|Node 7 instance TYRE-1 of surface TREAD is inside surface ROAD
    by 1.00000e-02; warning|HourglassEnergyLarge|0|0|1|1|The hourglass energy is 2.00000e-01 of the internal energy;
    internal|InternalError|1|NULL|1|1|lost a block
position, value FROM int_values WHERE diagnostic = 1 => 1|3; 2|-4; 3|-2147483648
position, value FROM real_values WHERE diagnostic = 1 => 1|0.5; 2|NULL; 3|-Inf
diagnostic, position, value FROM string_values => 1|1|it's "100 %" ä; 3|1|TREAD; 3|2|ROAD; 5|1|lost a block
* FROM places => 2|element|TYRE-1|303; 3|node|TYRE-1|7
s.step, s.increment, s.status, n.name, s.label, s.value1, s.value2, s.value3, s.value4, s.value5, s.value6, s.value7,
    s.value8, s.value9 FROM status_records s JOIN names n ON n.id = s.instance =>
    1|1|5|TYRE-1|7|1.0|2.0|3.0|4.0|5.0|6.0|7.0|8.0|9.0
position, active FROM active_status WHERE active ORDER BY position => 1|1; 3|1; 9|2
job, process, domains, double_precision, renumbered, valid, in_parts, execution_code, status, incomplete, ended >=
    started FROM run => values|PID|4|1|0|1|1|2|1|0|1
class, name, count, first_step, first_increment, last_increment FROM problems => error|UserError|1|1|1|1;
    internal|InternalError|1|1|1|1; element|ExcessiveDistortion|1|1|1|1; warning|HourglassEnergyLarge|1|1|1|1;
    contact|Overclosure|1|1|1|1)",
                                  "PID", std::to_string(getpid())));
}

TEST_F(DiagnosticDatabase, TakesWhatTheLibraryReports) {
  setModel(wheelAndTyre());
  openJob("library", directory);
  acd_set_execode_c(1);
  acd_begin_step_c(1, "Press", 4, 0, 0);
  acd_begin_increment_c(1, 0.1);
  const int32_t ints[] = {2}, nodes[] = {105}, elements[] = {53};
  const double reals[] = {1e-12};
  const char* const strings[] = {" L1"};
  acd_warning_c(codes::ZeroPivot + 1, ints, reals, nullptr, nodes, nullptr, 1);
  acd_error_c(codes::RigidBodyInertia, nullptr, nullptr, strings, nodes, nullptr);
  acd_element_diagnostic_c(codes::ElementDeleted, nullptr, nullptr, nullptr, nullptr, elements, 0);
  acd_error_c(codes::ZeroPivot, ints, reals, nullptr, nodes, nullptr); // a warning is no error
  EXPECT_EQ(bcu_ErrorStatus::getErrorCode(), -2);
  EXPECT_EQ(CLINES[16], 1);
  EXPECT_EQ(CLINES[18], 1);
  acd_end_increment_c(0.1, 1);
  for (int32_t converged : {2, 0, -1}) acd_begin_increment_c(2, 0.1), acd_end_increment_c(0.2, converged);
  LFC_XUT_ABORT();
  expectStored("library", R"(
class, text FROM messages ORDER BY id => warning|Numerical singularity at node 5 instance TYRE-1, degree of freedom 2:
    ratio 1.00000e-12; error|Rigid body BORE with reference node 5 instance TYRE-1 has no mass; element|Element 303
    instance TYRE-1 has failed and was removed; internal|Invalid error code in call to acd_error
instance, label FROM places WHERE kind = 'element' => TYRE-1|303
converged FROM increments ORDER BY id => 1; 1; 0; 0
s.name FROM run r JOIN statuses s ON s.id = r.status => aborted)");

  openJob("next", directory);
  EXPECT_EQ(bcu_ErrorStatus::getErrorCode(), 0);
  EXPECT_EQ(CLINES[16] + CLINES[18] + CWARN[0] + CWARN[1], 0);
}

TEST_F(DiagnosticDatabase, PutsCallsOutOfPlaceWhereTheyMakeSense) {
  openJob("odd", directory);
  dxt_DiagnosticExtractor& x = implicitExtractor();
  x.EndStep();
  x.EndIncrement(1, true);
  x.EndAttempt();
  x.EndIteration();
  x.EndContactIteration();
  x.SetIterationConverged(true);
  EXPECT_FALSE(fs::exists(database("odd"))) << "nothing to record so far";
  warn(2);                  // before any step
  x.BeginAttempt(1);        // of no increment
  x.BeginIncrement(7, 0.1); // of no step
  x.BeginIteration();       // of no attempt
  x.BeginContactIteration();
  x.EndIncrement(0.1, false); // ends what is in it
  x.EndIteration();
  x.BeginStep(1, nullptr, 1, false, false);
  x.BeginIncrement(1, 0.1);
  x.BeginIncrement(2, 0.1);                  // the first one never ends
  x.BeginStep(2, "Second", 1, false, false); // nor the second one
  x.AddError(0x7FFFFFFF, {});                // of no known code
  x.AddInternalError(nullptr);
  x.AddCutbackDiagnostic(99);
  closeJob();
  expectStored("odd", R"(
step, number, converged, iterations FROM increments => NULL|7|0|1; 1|1|NULL|0; 1|2|NULL|0
count(*) FROM attempts => 0
increment, attempt, ended FROM iterations => 1|NULL|0
name, ended IS NULL FROM steps => |0; Second|0
class, step, increment, text FROM messages => warning|NULL|NULL|The system matrix has 2 negative eigenvalues;
    error|2|NULL|; internal|2|NULL|; cutback|2|NULL|)");
}

TEST_F(DiagnosticDatabase, IsMadeAtTheFirstRecordUnderTheNameThatIsSet) {
  openJob("empty", directory);
  EXPECT_EQ(diagnosticDatabase(), database("empty"));
  closeJob();
  EXPECT_FALSE(fs::exists(database("empty")));
  EXPECT_EQ(diagnosticDatabase(), fs::path());

  dxt_DiagnosticExtractorXpl& x = explicitExtractor();
  openJob("named", directory);
  x.SetDdbName("own name.db");
  EXPECT_EQ(diagnosticDatabase(), directory / "own name.db");
  x.BeginStep(1, "", 17);
  x.SetDdbName("too late.db");
  closeJob();
  EXPECT_EQ(filesIn(directory), (std::set<std::string>{"empty.log", "empty.msg", "empty.sta", "named.log", "named.msg",
                                                       "named.sta", "own name.db"}));

  // the next job of the name begins anew, also after a crash that left the log of the file
  x.SetDdbName("");
  beginExplicit("again");
  closeJob();
  writeFile(database("again").string() + "-wal", "of another file");
  openJob("again", directory);
  EXPECT_FALSE(fs::exists(database("again")));
  EXPECT_FALSE(fs::exists(database("again").string() + "-wal"));
  closeJob();

  // what is no database, and a database of others
  for (const std::string& foreign : {std::string("a letter"), "SQLite format 3" + std::string(85, '\0')}) {
    writeFile(database("foreign"), foreign);
    EXPECT_THROW(openJob("foreign", directory), std::system_error);
    EXPECT_EQ(readFile(database("foreign")), foreign);
    openJob("other", directory);
    x.SetDdbName("foreign.diagnostics.sqlite");
    x.BeginStep(1, "", 17);
    EXPECT_EQ(writeError().value(), EEXIST);
    EXPECT_THROW(closeJob(), std::system_error);
    EXPECT_EQ(readFile(database("foreign")), foreign);
  }
}

TEST_F(DiagnosticDatabase, CountsRecordsWithoutAJobAndIgnoresThoseOfADisabledExtractor) {
  dxt_DiagnosticExtractorXpl& x = explicitExtractor();
  const int64_t before = unfiledRecords();
  implicitExtractor().AddInternalError("nobody listens");
  x.AddXplStatus(1, 1, "", {});
  EXPECT_EQ(unfiledRecords(), before + 2);

  openJob("silent", directory);
  x.Disable();
  x.BeginStep(1, "", 17);
  x.AddInternalError("not stored");
  x.SetNumDomains(2);
  EXPECT_EQ(x.GetNumberOfErrors(), 0);
  EXPECT_FALSE(fs::exists(database("silent")));
  implicitExtractor().BeginStep(1, "", 4, false, false);
  x.Enable();
  x.AddInternalError("stored");
  EXPECT_EQ(x.GetNumberOfErrors(), 1);
  expectStored("silent", "text FROM messages => stored\ndomains FROM run => 2"); // settings count all the same
  EXPECT_EQ(unfiledRecords(), before + 2);
}

TEST_F(DiagnosticDatabase, KeepsResourceMarks) {
  bcu_ResourceMonitor::Mark("before the job");
  beginImplicit("marks");
  bcu_ResourceMonitor::Mark("Start");
  volatile double work = 0;
  const auto worked = [] { return resourceMarks().back().processor; };
  for (const double start = worked(); worked() < start + 0.01;) {
    for (int k = 0; k < 100000; ++k) work = work + 1.0 / (k + 1);
    bcu_ResourceMonitor::Mark("Work");
  }
  ASSERT_GE(resourceMarks().size(), 3u);
  EXPECT_EQ(resourceMarks().back().text, "Work");
  EXPECT_GT(resourceMarks().back().peakMemory, 1 << 20);
  expectStored("marks", R"(
group_concat(DISTINCT n.name) FROM resource_marks m JOIN names n ON n.id = m.name => Start,Work
count(*) FROM resource_marks a JOIN resource_marks b ON b.id = a.id + 1 WHERE b.elapsed < a.elapsed OR b.processor <
    a.processor OR b.peak_memory < a.peak_memory => 0
mark FROM phases WHERE mark = 'Start' => Start)");
}

// ---- amount, threads, errors, crashes

TEST_F(DiagnosticDatabase, LosesNothingAmongAHundredThousand) {
  dxt_DiagnosticExtractorXpl& x = beginExplicit("many");
  dia_Values values = atElement({"PART-1-1", 0});
  values.reals = {1.5};
  for (int increment = 1; increment <= 100; ++increment) {
    x.BeginIncrement(increment, 1e-6);
    for (int k = 1; k <= 1000; ++k) {
      values.elements[0].label = k;
      values.reals[0] = increment + 1e-3 * k;
      x.AddWarning(codes::WaveSpeedExceeded, 0, values);
    }
    x.EndIncrement(1e-6 * increment, true);
  }
  EXPECT_EQ(x.GetNumberOfWarnings(), 100000);
  expectStored("many", R"(
count(*), min(id), max(id) FROM diagnostics => 100000|1|100000
count(*), sum(e.label) FROM elements e JOIN diagnostics d ON d.id = e.diagnostic WHERE d.increment = (e.diagnostic -
    1) / 1000 + 1 AND e.label = (e.diagnostic - 1) % 1000 + 1 => 100000|50050000
count(*) FROM real_values v JOIN elements e USING (diagnostic) JOIN diagnostics d ON d.id = v.diagnostic WHERE v.value
    = d.increment + 1e-3 * e.label => 100000
count, first_increment, last_increment FROM problems => 100000|1|100
min(warnings), max(warnings) FROM increments => 1000|1000)");
}

TEST_F(DiagnosticDatabase, MayBeCalledFromSeveralThreads) {
  constexpr int kThreads = 6, kEach = 2000;
  const JobFiles files = openJob("threads", directory);
  explicitExtractor().SetExecutionCode(1);
  explicitExtractor().BeginStep(1, "", 17);
  implicitExtractor().BeginStep(1, "", 4, false, false);
  runThreads(kThreads, [](int t) {
    for (int k = 1; k <= kEach; ++k) {
      explicitExtractor().AddElementDiagnostic(codes::ElementDeleted, t, atElement({"PART-1-1", t * kEach + k}));
      bcu_ResourceMonitor::Mark("Mark");
      // through the library, as threads of the owner do; printed and counted as well
      if (k % 20 == 0) acd_error_xpl_c(codes::TooManyIncrements, t, &k, nullptr, nullptr, nullptr, nullptr);
      if (t == 0) implicitExtractor().BeginIncrement(k, 0.1);
      if (t == 0) implicitExtractor().EndIncrement(0.1 * k, true);
      if (t == 1) warn(k);
    }
  });
  EXPECT_EQ(explicitExtractor().GetNumberOfErrors(), kThreads * kEach / 20);
  expectStored("threads", R"(
count(*), count(DISTINCT label), max(label) FROM elements => 12000|12000|12000
name, count FROM codes ORDER BY count => TooManyIncrements|600; NegativeEigenvalues|2000; ElementDeleted|12000
count(*) FROM (SELECT e.label, lag(e.label) OVER (PARTITION BY d.domain ORDER BY d.id) AS before FROM diagnostics d
    JOIN elements e ON e.diagnostic = d.id) WHERE label <= before => 0
count(*) FROM resource_marks => 12000)");
  EXPECT_EQ(CLINES[18], 600);
  EXPECT_EQ(countOf("\n***ERROR: THE STEP IS NOT COMPLETE", readFile(files.log)), 600);
  EXPECT_EQ(countOf("Error message=The step is not complete", readFile(files.status)), 600);
}

TEST_F(DiagnosticDatabase, CanBeReadWhileItIsWritten) {
  dxt_DiagnosticExtractor& x = beginImplicit("live");
  Database r(database("live"));
  for (int k = 1; k <= 3; ++k) {
    x.BeginIncrement(k, 0.1);
    warn(k);
    EXPECT_EQ(r.number("SELECT count(*) FROM diagnostics"), k - 1) << "one transaction for an increment";
    x.EndIncrement(0.1 * k, true);
    EXPECT_EQ(r.number("SELECT count(*) FROM diagnostics"), k);
  }
  x.BeginIncrement(4, 0.1);
  x.AddInternalError("perhaps the last words");
  EXPECT_EQ(r.value("SELECT class FROM messages ORDER BY id DESC LIMIT 1"), "internal") << "an error is there at once";
  const int32_t aborted = 2;
  warn(4);
  DXT_SETJOBSTATUS_XPL(&aborted);
  expectRows(r, "status, ended FROM run => 2|NULL\ncount(*) FROM diagnostics => 5"); // with it comes the rest
  x.EndIncrement(0.4, true);
  std::this_thread::sleep_for(std::chrono::milliseconds(40)); // so often at most
  warn(5);
  expectRows(r, "count(*) FROM diagnostics => 6"); // which waits for no increment
}

TEST_F(DiagnosticDatabase, ReportsAFullDisk) {
  int finished = 0;
  std::error_code first;
  std::string said;
  {
    dxt_DiagnosticExtractorXpl& x = beginExplicit("full");
    const SmallFiles limit(1 << 20);
    for (int k = 1; k <= 1000 && !writeError(); ++k) {
      x.BeginIncrement(k, 1e-6);
      for (int e = 1; e <= 100; ++e) x.AddElementDiagnostic(codes::ElementDeleted, 0, atElement({"PART-1-1", e}));
      x.EndIncrement(1e-6 * k, true);
      if (!writeError()) finished = k;
    }
    first = writeError();
    x.AddInternalError("after the error");
    said = thrown<std::system_error>(closeJob);
  }
  EXPECT_TRUE(finished > 0 && finished < 1000) << finished;
  EXPECT_TRUE(first.value() == EFBIG || first.value() == ENOSPC) << first;
  EXPECT_TRUE(contains(said, database("full").string()) && contains(said, first.message())) << said;
  Database r(database("full"), SQLITE_OPEN_READWRITE);
  expectSound(r);
  EXPECT_EQ(r.number("SELECT count(*) FROM increments WHERE converged"), finished) << "what was finished is there";
  EXPECT_EQ(r.number("SELECT count(*) FROM diagnostics"), 100 * finished);
}

// Records increments without end and announces each finished one on a pipe.
[[noreturn]] void recordWithoutEnd(const std::string& job, const fs::path& directory, int announce) {
  openJob(job, directory);
  dxt_DiagnosticExtractor& x = implicitExtractor();
  x.BeginStep(1, "Endless", 4, false, false);
  for (int32_t k = 1;; ++k) {
    x.BeginIncrement(k, 0.1);
    x.BeginAttempt(0.1);
    for (int w = 0; w < 40; ++w) x.AddElementDiagnostic(codes::ElementDeleted, atElement({"PART-1-1", k}));
    if (k % 7 == 0) x.AddInternalError("committed early");
    x.EndAttempt();
    bcu_ResourceMonitor::Mark("Increment-End");
    x.EndIncrement(0.1 * k, true);
    if (write(announce, &k, sizeof k) != sizeof k) _exit(1);
  }
}

TEST_F(DiagnosticDatabase, SurvivesAKillAtAnyMoment) {
  std::mt19937 random(20261121);
  std::uniform_int_distribution<int> microseconds(200, 120000);
  int64_t kept = 0;
  for (int round = 0; round < 12; ++round) {
    const std::string job = "crash" + std::to_string(round);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    std::fflush(nullptr);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) recordWithoutEnd(job, directory, ends[1]);
    close(ends[1]);
    // announcements pile up in the pipe or are taken here; the kill comes in between
    std::jthread killer([=, delay = microseconds(random)] {
      std::this_thread::sleep_for(std::chrono::microseconds(delay));
      kill(child, SIGKILL);
    });
    int32_t announced = 0, next = 0;
    while (read(ends[0], &next, sizeof next) == sizeof next) announced = next;
    close(ends[0]);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    if (!fs::exists(database(job))) {
      EXPECT_EQ(announced, 0);
      continue;
    }
    Database r(database(job));
    expectSound(r);
    const int64_t finished = r.number("SELECT count(*) FROM increments WHERE converged");
    EXPECT_GE(finished, announced);
    EXPECT_LE(finished, announced + 1) << "at most one that could not be announced any more";
    // with all that was recorded in them
    expectRows(r, "count(*) FROM (SELECT d.increment FROM diagnostics d JOIN elements e ON e.diagnostic = d.id JOIN "
                  "increments i ON i.id = d.increment WHERE i.converged AND e.label = i.number GROUP BY d.increment "
                  "HAVING count(*) = 40) => " +
                      std::to_string(finished) + "\njob, ended FROM run => " + job + "|NULL");
    kept += finished;
  }
  EXPECT_GT(kept, 0) << "no child lived long enough to finish an increment";
}

TEST_F(DiagnosticDatabase, KeepsWhatAProgramRecordedThatExitsWithoutClosing) {
  const int status = inChild([&] {
    beginImplicit("exit").BeginIncrement(1, 0.1);
    warn(1);
    std::exit(7);
  });
  EXPECT_EQ(WEXITSTATUS(status), 7);
  EXPECT_EQ(Database(database("exit")).number("SELECT count(*) FROM diagnostics"), 1);
}

// ---- metadata, model, threads of the platform interface

TEST(DiagnosticMetadata, IsCompleteAndConsistent) {
  const dia_MetadataTable &general = dia_MetadataTable::Instance(0), &contact = dia_MetadataTable::Instance(1);
  EXPECT_EQ(&dia_MetadataTable::Instance(7), &general);
  std::set<int32_t> seen;
  const auto expect = [&](int32_t code, const dia_MetadataTable& table, bool isError, std::array<int, 3> place,
                          const dia_Counts& counts, int32_t texts) {
    SCOPED_TRACE(code);
    EXPECT_TRUE(seen.insert(code).second);
    EXPECT_EQ(code, isError << 30 | place[0] << 24 | place[1] << 16 | place[2] << 5);
    EXPECT_EQ(place[0] == 3, &table == &contact);
    EXPECT_EQ(dia_TypeCodeUtils::IsError(code), isError);
    EXPECT_TRUE(table.IsValid(code) && table.IsValid(code + texts - 1));
    EXPECT_FALSE((&table == &general ? contact : general).IsValid(code));
    EXPECT_FALSE(table.IsValid(code + texts)) << "a variation without a text";
    EXPECT_EQ(dia_TypeCodeUtils::GetVariationNumber(code + texts - 1), texts - 1);
    const dia_Counts known = table.GetCounts(code);
    EXPECT_EQ((std::array{known.ints, known.reals, known.strings, known.nodes, known.elements}),
              (std::array{counts.ints, counts.reals, counts.strings, counts.nodes, counts.elements}));
    EXPECT_EQ(table.GetNumStringValues(code), counts.strings);
    EXPECT_EQ(table.GetDetailStrings(code).size(), texts);
    // with as many values as the code has, no placeholder is left
    const dia_Values values = {std::vector<int32_t>(counts.ints), std::vector<double>(counts.reals),
                               std::vector<std::string>(counts.strings), std::vector<dia_Entity>(counts.nodes),
                               std::vector<dia_Entity>(counts.elements)};
    for (const std::string& text : table.GetDetailStrings(code))
      EXPECT_FALSE(contains(dia_FormatUtils::Substitute(text, values), "%")) << text;
  };
#define SA_EXPECTED(table, name, severity, family, group, number, ints, reals, strings, nodes, elements, status, ...)  \
  expect(codes::name, table, codes::severity == codes::Error, {family, group, number},                                 \
         {ints, reals, strings, nodes, elements}, static_cast<int32_t>(std::vector<const char*>{__VA_ARGS__}.size()));
#define SA_EXPECTED_GENERAL(...) SA_EXPECTED(general, __VA_ARGS__)
#define SA_EXPECTED_CONTACT(...) SA_EXPECTED(contact, __VA_ARGS__)
  SA_HOST_GENERAL_CODES(SA_EXPECTED_GENERAL)
  SA_HOST_CONTACT_CODES(SA_EXPECTED_CONTACT)
  EXPECT_GE(seen.size(), 18u);
  EXPECT_TRUE(general.IsForStatusChannel(dia_Codes::InternalError));
  EXPECT_FALSE(general.IsForStatusChannel(codes::NegativeEigenvalues) || general.IsForStatusChannel(12));
  EXPECT_EQ(general.GetCounts(12).ints, 0);
  EXPECT_TRUE(general.GetDetailStrings(12).empty());
}

TEST_F(DiagnosticDatabase, TextsTakeTheirValuesInOrder) {
  const dia_Values values = {{1, -2}, {0.5}, {"a%Ib"}, {{"WHEEL-1", 12}}, {{"", 13}, {"TYRE-1", 14}}};
  const auto text = [&](const char* detail) { return dia_FormatUtils::Substitute(detail, values); };
  EXPECT_EQ(text("%I %R %I %S %N %E %E"), "1 5.00000e-01 -2 a%Ib 12 13 14");
  EXPECT_EQ(text("%I%I%I %R%R %x %"), "1-2%I 5.00000e-01%R %x %") << "what has no value stays";
  EXPECT_EQ(text("%%I"), "%1");
  EXPECT_EQ(text(""), "");
  setModel(wheelAndTyre());
  EXPECT_EQ(text("%N, %E, %E"), "12 instance WHEEL-1, 13, 14 instance TYRE-1");
}

TEST_F(DiagnosticDatabase, NumbersOfTheSolverBecomeLabelsOfInstances) {
  const inpM_SolverPartMap& map = inpM_SolverPartMap::Instance();
  const auto partOf = [](int32_t element, std::size_t room = 10) {
    std::string name(room, '?');
    int32_t label = -1;
    INPM_GETPARTINFOI(&element, name.data(), &label, static_cast<int64_t>(room));
    return name + std::to_string(label);
  };
  const auto textOf = [](const dia_Entity& entity) { return entity.instance + " " + std::to_string(entity.label); };
  const auto node = [&](int32_t number) { return textOf(map.ConstGetInstanceNodeIdPair(number)); };
  const auto element = [&](int32_t number) { return textOf(map.ConstGetInstanceElementIdPair(number)); };
  const auto variable = [](int32_t number) { return DSM_VAR_GETI(&number); };
  EXPECT_EQ(variable(SA_HOST_VARIABLE_HAS_INSTANCES), 0);
  EXPECT_FALSE(implicitExtractor().IsModelInParts());
  EXPECT_EQ(node(12), " 12");
  EXPECT_EQ(partOf(12), "          12");

  setModel(wheelAndTyre());
  EXPECT_EQ(variable(SA_HOST_VARIABLE_HAS_INSTANCES), 1);
  EXPECT_EQ(variable(2), 0) << "another variable";
  EXPECT_TRUE(explicitExtractor().IsModelInParts());
  EXPECT_EQ(node(100), "WHEEL-1 100");
  EXPECT_EQ(node(101), "TYRE-1 1");
  EXPECT_EQ(element(60), "TYRE-1 310");
  for (int32_t unknown : {0, -1, 61, INT32_MAX}) EXPECT_EQ(element(unknown), " " + std::to_string(unknown));
  EXPECT_EQ(partOf(52), "TYRE-1    302");
  EXPECT_EQ(partOf(52, 3), "TYR302");
  EXPECT_EQ(partOf(61), "          61");
  EXPECT_EQ(map.GetLabelName(" L1") + map.GetLabelName(" L2"), "BORE L2");

  const std::vector<NumberRange> ranges = numberRanges({5, 6, 7, 3, 9}, {50, 51, 60, 61, 62});
  EXPECT_EQ(ranges.size(), 4u);
  setModel({{{"A", {}, ranges}}, {}});
  EXPECT_EQ(element(5) + element(6) + element(7) + element(3) + element(9) + element(8), "A 50A 51A 60A 61A 62 8");
  EXPECT_THROW(numberRanges({1}, {}), std::invalid_argument);
  EXPECT_THROW(setModel({{{"A", {{1, 5, 1}}, {}}, {"B", {{5, 1, 1}}, {}}}, {}}), std::invalid_argument);
  EXPECT_EQ(element(9), "A 62") << "the model stays";
}

std::string releaseOrder;

TEST(ThreadRegistry, ReleasesOnceAtTheEndOfTheThread) {
  std::thread([] {
    thr_ThrSingletonRegistry::Register([] { releaseOrder += 'a'; });
    const auto twice = [] { releaseOrder += 'b'; };
    thr_ThrSingletonRegistry::Register(twice);
    thr_ThrSingletonRegistry::Register(twice);
    thr_ThrSingletonRegistry::Register([] { thr_ThrSingletonRegistry::Register([] { releaseOrder += 'c'; }); });
    EXPECT_EQ(releaseOrder, "");
  }).join();
  EXPECT_EQ(releaseOrder, "cba") << "the last first, with what a release registers";
  std::thread([] {}).join();
  EXPECT_EQ(releaseOrder, "cba");
  const int status = inChild([] {
    thr_ThrSingletonRegistry::Register([] { _exit(5); });
    std::exit(0);
  });
  EXPECT_EQ(WEXITSTATUS(status), 5) << "the main thread at exit";
}

TEST(ThreadRegistry, OneLockForAll) {
  int count = 0;
  runThreads(4, [&](int) {
    for (int k = 0; k < 10000; ++k) {
      const thr_GlobalLock lock;
      ++count;
    }
  });
  EXPECT_EQ(count, 40000);
}

} // namespace
