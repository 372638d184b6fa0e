// Jobs that record diagnostics, and their databases read back with SQLite.
#pragma once

#include "diagnostic_codes.h"
#include "dxt_DiagnosticExtractor.h"
#include "dxt_DiagnosticExtractorXpl.h"
#include "inpM_SolverPartMap.h"
#include "reference_host.h"
#include "tests/support/database.h"
#include "tests/support/files.h"

#include <sys/wait.h>
#include <unistd.h>

namespace sharedanalysis::test {

using namespace sharedanalysis::host;
namespace fs = std::filesystem;

inline dxt_DiagnosticExtractor& implicitExtractor() { return dxt_DiagnosticExtractor::Instance(); }
inline dxt_DiagnosticExtractorXpl& explicitExtractor() { return dxt_DiagnosticExtractorXpl::Instance(); }

inline dia_Values atElement(const dia_Entity& element) { return {{}, {}, {}, {}, {element}}; }
inline void warn(int32_t number) {
  implicitExtractor().AddWarning(codes::NegativeEigenvalues, {{number}, {}, {}, {}, {}});
}

// What follows SELECT => its rows: columns parted by bars, rows by semicolons.
inline void expectRows(Database& r, const std::string& table) {
  for (const Row& row : tableOf(table)) EXPECT_EQ(r.text("SELECT " + row[0]), row[1]) << row[0];
}
inline void expectSound(Database& r) {
  EXPECT_EQ(r.value("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(r.text("PRAGMA foreign_key_check"), "");
  EXPECT_EQ(r.text("SELECT id FROM codes c WHERE count <> (SELECT count(*) FROM diagnostics d WHERE d.code = c.id)"),
            "");
}

// A directory for jobs; the extractors are as new after each test.
class DiagnosticDatabase : public testing::Test {
protected:
  void TearDown() override {
    closeJob();
    setModel({});
    implicitExtractor().Enable();
    explicitExtractor().Enable();
    implicitExtractor().SetExecutionCode(0);
    explicitExtractor().SetExecutionCode(0);
  }
  fs::path database(const std::string& job) const { return directory / (job + ".diagnostics.sqlite"); }
  // A job in its first step.
  dxt_DiagnosticExtractor& beginImplicit(const std::string& job, const char* step = "") const {
    openJob(job, directory);
    implicitExtractor().BeginStep(1, step, 4, false, false);
    return implicitExtractor();
  }
  dxt_DiagnosticExtractorXpl& beginExplicit(const std::string& job) const {
    openJob(job, directory);
    explicitExtractor().BeginStep(1, "", 17);
    return explicitExtractor();
  }
  // The job that is open, when it is closed.
  void expectStored(const std::string& job, const std::string& table) const {
    closeJob();
    Database r(database(job));
    expectSound(r);
    expectRows(r, table);
  }

  const TemporaryDirectory temporary;
  const fs::path& directory = temporary.path();
};

inline Model wheelAndTyre() {
  return {{{"WHEEL-1", {{1, 100, 1}}, {{1, 50, 1}}}, {"TYRE-1", {{101, 20, 1}}, {{51, 10, 301}}}}, {{" L1", "BORE"}}};
}

// Runs `work` in a process of its own; answers its exit status as of waitpid.
template <class Work>
int inChild(Work work) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    work();
    _exit(0);
  }
  int status = -1;
  return waitpid(child, &status, 0) == child ? status : -1;
}

} // namespace sharedanalysis::test
