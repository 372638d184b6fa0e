// The diagnostic database of one job as a file.
#pragma once

#include "dia_Values.h"
#include "diagnostic_schema.h"
#include "reference_host.h"
#include "sqlite.h"

#include <array>
#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace sharedanalysis::host {

using Id = std::optional<int64_t>;

struct RunRecord {
  std::string job;
  std::string started;
  std::optional<int32_t> domains;
  std::optional<bool> doublePrecision, renumbered, valid;
  std::optional<std::array<int32_t, 9>> activeStatus;
  int32_t executionCode = 0;
  int32_t status = -1;
};

struct StepAttributes {
  std::optional<int32_t> incrementation, controlCount, equationSolver, extrapolation;
  std::array<std::optional<double>, 4> controls;
  std::optional<double> characteristicLength, stabilizeFactor;
  bool unsymmetric = false, nlgeom = false;
};

struct StepRecord {
  const char* solver;
  int32_t number;
  std::string_view name;
  int32_t procedure;
  std::optional<bool> flag1, flag2;
};

struct IncrementCounts {
  int32_t attempts = 0, iterations = 0, cutbacks = 0, errors = 0, warnings = 0;
};

// Flags of attempts, iterations and contact iterations, each a column of the table.
enum class Flag {
  AttemptEnded,
  AttemptNeedsReordering,
  IterationEnded,
  IterationConverged,
  IterationSevereDiscontinuity,
  IterationPenetrationExceeded,
  IterationSeparationTooLarge,
  ContactIterationEnded,
  ContactIterationConverged,
};

// The open step, increment, attempt and iterations at the time of a record.
struct Place {
  Id step, increment, attempt, iteration, contactIteration;
};

struct DiagnosticRecord {
  DiagnosticClass diagnosticClass;
  int32_t code;
  std::optional<int32_t> domain, kind;
  const dia_Values& values;
};

// Removes a diagnostic database with what belongs to it.  Throws std::system_error naming the file, also when it is
// something else than a diagnostic database: that is not touched.
void removeDatabase(const std::filesystem::path& path);

// Not synchronised.  Members throw sqlite::Error, the constructor also std::system_error.  A transaction begins with the first record after a commit.
class DiagnosticFile {
public:
  // Creates the file, which replaces an older one.  `opened` is the time from which the wall is counted.
  DiagnosticFile(const std::filesystem::path& path, const RunRecord& run, std::chrono::steady_clock::time_point opened);

  int64_t addStep(const StepRecord& step, const StepAttributes& attributes);
  void setStepAttributes(int64_t step, const StepAttributes& attributes);
  void endStep(int64_t step);

  int64_t addIncrement(Id step, int32_t number, double timeIncrement);
  void setIncrementCounts(int64_t increment, const IncrementCounts& counts);
  void endIncrement(int64_t increment, double time, bool converged, const IncrementCounts& counts);

  int64_t addAttempt(int64_t increment, int32_t number, double timeIncrement);
  int64_t addIteration(int64_t increment, Id attempt, int32_t number);
  int64_t addContactIteration(int64_t increment, Id iteration, int32_t number);
  // Sets a flag of an attempt, iteration or contact iteration.
  void setFlag(Flag flag, int64_t id, bool value);

  void addDiagnostic(const DiagnosticRecord& diagnostic, const Place& place);
  void addStatus(const Place& place, int32_t status, const dia_Entity& node, const std::array<double, 9>& reals);
  void addMark(const ResourceMark& mark);
  void setRun(const RunRecord& run);

  // Ends the transaction: its records are visible to readers and survive a crash.
  void commit();
  void rollBack();
  bool inTransaction() const { return connection_.inTransaction(); }

  // Commits the end of the run and closes; the file then stands alone.  After a write error, `lost` is noted in it.
  void finish(const RunRecord& run, bool lost);

private:
  struct Code {
    int64_t id;
    const std::string* detail; // null: the code has none
    bool isPlain;              // no placeholders in the detail
    int64_t count = 0, first = 0, last = 0;
    bool changed = false;
  };
  using CodeKey = std::pair<DiagnosticClass, int32_t>;

  void create(const std::filesystem::path& path, const RunRecord& run);
  void begin();
  sqlite::Statement& statement(std::string_view sql);
  int64_t nameId(const std::string& name);
  Code& codeOf(DiagnosticClass diagnosticClass, int32_t code);
  std::optional<std::string> textOf(const Code& code, const DiagnosticRecord& diagnostic);
  void addEntities(sqlite::Statement& insert, int64_t diagnostic, const std::vector<dia_Entity>& entities);
  void writeCounts();
  void writeActiveStatus(const std::array<int32_t, 9>& active);
  double wall() const;

  std::chrono::steady_clock::time_point opened_;
  // before the statements, which it outlives
  sqlite::Connection connection_;
  std::unordered_map<std::string_view, sqlite::Statement> statements_; // by their texts, which are literals
  sqlite::Statement begin_, commit_, addDiagnostic_, addInt_, addReal_, addString_, addNode_, addElement_;
  std::unordered_map<std::string, int64_t> names_;
  std::map<CodeKey, Code> codes_;
  int64_t lastStep_ = 0, lastIncrement_ = 0, lastAttempt_ = 0, lastIteration_ = 0, lastContactIteration_ = 0,
          lastDiagnostic_ = 0;
};

// The time of day in UTC: 2026-11-21T08:03:28Z.
std::string utcNow();

} // namespace sharedanalysis::host
