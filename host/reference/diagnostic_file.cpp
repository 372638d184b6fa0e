#include "diagnostic_file.h"

#include "dia_FormatUtils.h"
#include "dia_MetadataTable.h"
#include "dia_TypeCodeUtils.h"
#include "host_services.h"
#include "message_template.h"
#include "metadata.h"
#include "utl_Version.h"

#include <array>
#include <cstring>
#include <ctime>
#include <fstream>
#include <system_error>
#include <unistd.h>

namespace sharedanalysis::host {
namespace {

constexpr int kReadWrite = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX;

// Whether a file is empty or a diagnostic database, by the header of the file format.
bool isOurs(const std::filesystem::path& path) {
  constexpr std::size_t kApplicationAt = 68;
  std::array<char, kApplicationAt + sizeof(uint32_t)> header{};
  std::ifstream file(path, std::ios::binary);
  file.read(header.data(), header.size());
  if (file.gcount() == 0) return true;
  uint32_t application = 0; // big-endian
  for (std::size_t k = kApplicationAt; k < header.size(); ++k)
    application = application << 8 | static_cast<unsigned char>(header[k]);
  return std::memcmp(header.data(), "SQLite format 3", 16) == 0 && application == kDatabaseApplication;
}

std::filesystem::path besides(std::filesystem::path path, const char* ending) {
  path += ending;
  return path;
}

std::string machineName() {
  std::array<char, 256> name{};
  return gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string residualText(int32_t field, const DiagnosticRecord& d) {
  const std::string text = "Field " + std::to_string(field) + ", kind " + std::to_string(d.kind.value_or(0)) +
                           ": average force %R, largest residual %R, largest increment %R, largest correction %R";
  return dia_FormatUtils::Substitute(text, d.values);
}

std::string compatibilityText(int32_t constraint, const DiagnosticRecord& d) {
  return dia_FormatUtils::Substitute("Constraint " + std::to_string(constraint) + ": largest error %R, allowed %R",
                                     d.values);
}

// The detail text of an error or warning, or the reason of a cutback; null without one.
const std::string* detailOf(DiagnosticClass diagnosticClass, int32_t code) {
  switch (diagnosticClass) {
  case DiagnosticClass::Residual:
  case DiagnosticClass::Compatibility:
    return nullptr;
  case DiagnosticClass::Cutback: {
    // outlives the static objects of the program
    static auto& reasons = *new std::map<int32_t, std::string>;
    const std::string_view reason = cutbackReason(code);
    return reason.empty() ? nullptr : &reasons.emplace(code, reason).first->second;
  }
  default:
    const auto& table =
        dia_MetadataTable::Instance(diagnosticClass == DiagnosticClass::Contact ? kContactTable : kGeneralTable);
    const auto& details = table.GetDetailStrings(code);
    return details.empty() ? nullptr : &details[static_cast<std::size_t>(dia_TypeCodeUtils::GetVariationNumber(code))];
  }
}

std::optional<std::string> nameOf(DiagnosticClass diagnosticClass, int32_t code) {
  if (diagnosticClass >= DiagnosticClass::Cutback) return std::nullopt;
  const std::string_view name =
      codeName(diagnosticClass == DiagnosticClass::Contact ? kContactTable : kGeneralTable, code);
  return name.empty() ? std::nullopt : std::optional(std::string(name));
}

bool isError(DiagnosticClass diagnosticClass, int32_t code) {
  return diagnosticClass < DiagnosticClass::Cutback && dia_TypeCodeUtils::IsError(code);
}

} // namespace

std::string utcNow() {
  const std::time_t now = std::time(nullptr);
  std::tm utc = {};
  gmtime_r(&now, &utc);
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc)};
}

void removeDatabase(const std::filesystem::path& path) {
  const auto fail = [&](std::error_code error, const std::string& why) {
    throw std::system_error(error, "cannot replace " + path.string() + why);
  };
  std::error_code error;
  const bool exists = std::filesystem::exists(path, error);
  if (exists && !(std::filesystem::is_regular_file(path, error) && isOurs(path)))
    fail(std::make_error_code(std::errc::file_exists), ", which is no diagnostic database");
  // the log first: SQLite would apply a stale log to the new database
  for (const auto& file : {besides(path, "-wal"), besides(path, "-shm"), besides(path, "-journal"), path,
                           besides(path, ".partial"), besides(path, ".partial-wal"), besides(path, ".partial-shm")})
    if (!std::filesystem::remove(file, error) && error) fail(error, "");
}

// Created as .partial and renamed when its tables exist: readers never see half a database.
void DiagnosticFile::create(const std::filesystem::path& path, const RunRecord& run) {
  const std::filesystem::path partial = besides(path, ".partial");
  connection_.open(partial.string(), kReadWrite | SQLITE_OPEN_CREATE);
  connection_.run(
      "PRAGMA page_size = 4096; PRAGMA synchronous = OFF; PRAGMA journal_mode = OFF; PRAGMA application_id = " +
      std::to_string(kDatabaseApplication) + "; PRAGMA user_version = " + std::to_string(kDatabaseVersion));
  connection_.run("BEGIN");
  connection_.run(kDatabaseTables);
  connection_.prepare("INSERT INTO run VALUES (1, ?, ?, ?, ?, ?, NULL, NULL, ?, NULL, NULL, NULL, NULL, ?, 0, -1, 0)")
      .run(run.job, machineName(), static_cast<int64_t>(getpid()),
           std::string_view(utl_Version::Instance().Title(false)), run.started, DMPC_GETRANK(), modelIsInParts());
  connection_.run("COMMIT; PRAGMA journal_mode = WAL");
  connection_.close();
  std::filesystem::rename(partial, path);
}

DiagnosticFile::DiagnosticFile(const std::filesystem::path& path, const RunRecord& run,
                               std::chrono::steady_clock::time_point opened)
    : opened_(opened) {
  create(path, run);
  connection_.open(path.string(), kReadWrite);
  connection_.setBusyTimeout(10000);
  // Foreign keys are sound by construction: no check.  A checkpoint comes every 32 MB, so that short increments do not
  // wait for the disk.
  connection_.run("PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = OFF; PRAGMA wal_autocheckpoint = 8192;"
                  " PRAGMA cache_size = -65536");
  begin_ = connection_.prepare("BEGIN");
  commit_ = connection_.prepare("COMMIT");
  addDiagnostic_ = connection_.prepare("INSERT INTO diagnostics VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  addInt_ = connection_.prepare("INSERT INTO int_values VALUES (?, ?, ?)");
  addReal_ = connection_.prepare("INSERT INTO real_values VALUES (?, ?, ?)");
  addString_ = connection_.prepare("INSERT INTO string_values VALUES (?, ?, ?)");
  addNode_ = connection_.prepare("INSERT INTO nodes VALUES (?, ?, ?, ?)");
  addElement_ = connection_.prepare("INSERT INTO elements VALUES (?, ?, ?, ?)");

  setRun(run);
  commit();
}

double DiagnosticFile::wall() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - opened_).count();
}

void DiagnosticFile::begin() {
  if (!connection_.inTransaction()) begin_.run();
}

// A statement by its text, prepared on first use.  The text is a literal: the map keeps a view of it.
sqlite::Statement& DiagnosticFile::statement(std::string_view sql) {
  begin();
  const auto found = statements_.find(sql);
  if (found != statements_.end()) return found->second;
  return statements_.emplace(sql, connection_.prepare(sql)).first->second;
}

// ---- course of the analysis

int64_t DiagnosticFile::addStep(const StepRecord& step, const StepAttributes& attributes) {
  statement("INSERT INTO steps (id, solver, number, name, procedure, flag1, flag2, unsymmetric, nlgeom, began) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, 0, 0, ?)")
      .run(++lastStep_, std::string_view(step.solver), step.number, step.name, step.procedure, step.flag1, step.flag2,
           wall());
  setStepAttributes(lastStep_, attributes);
  return lastStep_;
}

void DiagnosticFile::setStepAttributes(int64_t step, const StepAttributes& a) {
  statement("UPDATE steps SET incrementation = ?, control1 = ?, control2 = ?, control3 = ?, control4 = ?, "
            "control_count = ?, equation_solver = ?, extrapolation = ?, characteristic_length = ?, unsymmetric = ?, "
            "nlgeom = ?, stabilize_factor = ? WHERE id = ?")
      .run(a.incrementation, a.controls[0], a.controls[1], a.controls[2], a.controls[3], a.controlCount,
           a.equationSolver, a.extrapolation, a.characteristicLength, a.unsymmetric, a.nlgeom, a.stabilizeFactor, step);
}

void DiagnosticFile::endStep(int64_t step) { statement("UPDATE steps SET ended = ? WHERE id = ?").run(wall(), step); }

int64_t DiagnosticFile::addIncrement(Id step, int32_t number, double timeIncrement) {
  statement("INSERT INTO increments VALUES (?, ?, ?, ?, NULL, NULL, 0, 0, 0, 0, 0, ?, NULL)")
      .run(++lastIncrement_, step, number, timeIncrement, wall());
  return lastIncrement_;
}

void DiagnosticFile::setIncrementCounts(int64_t increment, const IncrementCounts& c) {
  statement("UPDATE increments SET attempts = ?, iterations = ?, cutbacks = ?, errors = ?, warnings = ? WHERE id = ?")
      .run(c.attempts, c.iterations, c.cutbacks, c.errors, c.warnings, increment);
}

void DiagnosticFile::endIncrement(int64_t increment, double time, bool converged, const IncrementCounts& c) {
  statement("UPDATE increments SET time = ?, converged = ?, attempts = ?, iterations = ?, cutbacks = ?, errors = ?, "
            "warnings = ?, ended = ? WHERE id = ?")
      .run(time, converged, c.attempts, c.iterations, c.cutbacks, c.errors, c.warnings, wall(), increment);
}

int64_t DiagnosticFile::addAttempt(int64_t increment, int32_t number, double timeIncrement) {
  statement("INSERT INTO attempts VALUES (?, ?, ?, ?, NULL, 0)").run(++lastAttempt_, increment, number, timeIncrement);
  return lastAttempt_;
}

int64_t DiagnosticFile::addIteration(int64_t increment, Id attempt, int32_t number) {
  statement("INSERT INTO iterations VALUES (?, ?, ?, ?, NULL, NULL, NULL, NULL, 0)")
      .run(++lastIteration_, increment, attempt, number);
  return lastIteration_;
}

int64_t DiagnosticFile::addContactIteration(int64_t increment, Id iteration, int32_t number) {
  statement("INSERT INTO contact_iterations VALUES (?, ?, ?, ?, NULL, 0)")
      .run(++lastContactIteration_, increment, iteration, number);
  return lastContactIteration_;
}

void DiagnosticFile::setFlag(Flag flag, int64_t id, bool value) {
  const auto update = [flag]() -> std::string_view {
    switch (flag) {
    case Flag::AttemptEnded:
      return "UPDATE attempts SET ended = ? WHERE id = ?";
    case Flag::AttemptNeedsReordering:
      return "UPDATE attempts SET needs_reordering = ? WHERE id = ?";
    case Flag::IterationEnded:
      return "UPDATE iterations SET ended = ? WHERE id = ?";
    case Flag::IterationConverged:
      return "UPDATE iterations SET converged = ? WHERE id = ?";
    case Flag::IterationSevereDiscontinuity:
      return "UPDATE iterations SET severe_discontinuity = ? WHERE id = ?";
    case Flag::IterationPenetrationExceeded:
      return "UPDATE iterations SET penetration_exceeded = ? WHERE id = ?";
    case Flag::IterationSeparationTooLarge:
      return "UPDATE iterations SET separation_too_large = ? WHERE id = ?";
    case Flag::ContactIterationEnded:
      return "UPDATE contact_iterations SET ended = ? WHERE id = ?";
    case Flag::ContactIterationConverged:
      return "UPDATE contact_iterations SET converged = ? WHERE id = ?";
    }
    return "";
  };
  statement(update()).run(value, id);
}

// ---- diagnostics

int64_t DiagnosticFile::nameId(const std::string& name) {
  const auto found = names_.find(name);
  if (found != names_.end()) return found->second;
  const auto id = static_cast<int64_t>(names_.size()) + 1;
  statement("INSERT INTO names VALUES (?, ?)").run(id, name);
  names_.emplace(name, id);
  return id;
}

DiagnosticFile::Code& DiagnosticFile::codeOf(DiagnosticClass diagnosticClass, int32_t code) {
  const CodeKey key(diagnosticClass, code);
  const auto found = codes_.find(key);
  if (found != codes_.end()) return found->second;

  const std::string* const detail = detailOf(diagnosticClass, code);
  const auto id = static_cast<int64_t>(codes_.size()) + 1;
  statement("INSERT INTO codes VALUES (?, ?, ?, ?, ?, ?, 0, NULL, NULL)")
      .run(id, static_cast<int32_t>(diagnosticClass), code, nameOf(diagnosticClass, code),
           isError(diagnosticClass, code), detail == nullptr ? std::nullopt : std::optional(std::string_view(*detail)));
  const bool isPlain = detail != nullptr && detail->find('%') == std::string::npos;
  return codes_.emplace(key, Code{id, detail, isPlain}).first->second;
}

// The text column: NULL where the detail of the code has no placeholder.
std::optional<std::string> DiagnosticFile::textOf(const Code& code, const DiagnosticRecord& d) {
  switch (d.diagnosticClass) {
  case DiagnosticClass::Residual:
    return residualText(d.code, d);
  case DiagnosticClass::Compatibility:
    return compatibilityText(d.code, d);
  case DiagnosticClass::Internal:
    return d.values.strings.empty() ? std::nullopt : std::optional(d.values.strings.front());
  default:
    if (code.detail == nullptr || code.isPlain) return std::nullopt;
    return dia_FormatUtils::Substitute(*code.detail, d.values);
  }
}

void DiagnosticFile::addEntities(sqlite::Statement& insert, int64_t diagnostic,
                                 const std::vector<dia_Entity>& entities) {
  int32_t position = 0;
  for (const dia_Entity& entity : entities) insert.run(diagnostic, ++position, nameId(entity.instance), entity.label);
}

template <class Value>
static void addValues(sqlite::Statement& insert, int64_t diagnostic, const std::vector<Value>& values) {
  int32_t position = 0;
  for (const Value& value : values) insert.run(diagnostic, ++position, value);
}

void DiagnosticFile::addDiagnostic(const DiagnosticRecord& d, const Place& place) {
  begin();
  Code& code = codeOf(d.diagnosticClass, d.code);
  const int64_t id = ++lastDiagnostic_;
  addDiagnostic_.run(id, code.id, d.domain, d.kind, place.step, place.increment, place.attempt, place.iteration,
                     place.contactIteration, textOf(code, d));
  addValues(addInt_, id, d.values.ints);
  addValues(addReal_, id, d.values.reals);
  addValues(addString_, id, d.values.strings);
  addEntities(addNode_, id, d.values.nodes);
  addEntities(addElement_, id, d.values.elements);
  if (++code.count == 1) code.first = id;
  code.last = id;
  code.changed = true;
}

void DiagnosticFile::addStatus(const Place& place, int32_t status, const dia_Entity& node,
                               const std::array<double, 9>& r) {
  const int64_t instance = nameId(node.instance);
  statement("INSERT INTO status_records VALUES (NULL, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)")
      .run(place.step, place.increment, status, instance, node.label, r[0], r[1], r[2], r[3], r[4], r[5], r[6], r[7],
           r[8]);
}

void DiagnosticFile::addMark(const ResourceMark& mark) {
  const int64_t name = nameId(mark.text);
  statement("INSERT INTO resource_marks VALUES (NULL, ?, ?, ?, ?)")
      .run(name, mark.elapsed, mark.processor, mark.peakMemory);
}

// ---- run

void DiagnosticFile::setRun(const RunRecord& run) {
  statement(
      "UPDATE run SET domains = ?, double_precision = ?, renumbered = ?, valid = ?, execution_code = ?, status = ?")
      .run(run.domains, run.doublePrecision, run.renumbered, run.valid, run.executionCode, run.status);
  if (run.activeStatus) writeActiveStatus(*run.activeStatus);
}

void DiagnosticFile::writeActiveStatus(const std::array<int32_t, 9>& active) {
  for (std::size_t k = 0; k < active.size(); ++k)
    statement("INSERT OR REPLACE INTO active_status VALUES (?, ?)").run(static_cast<int64_t>(k) + 1, active[k]);
}

void DiagnosticFile::writeCounts() {
  for (auto& [key, code] : codes_) {
    if (!code.changed) continue;
    statement("UPDATE codes SET count = ?, first_diagnostic = ?, last_diagnostic = ? WHERE id = ?")
        .run(code.count, code.first, code.last, code.id);
    code.changed = false;
  }
}

void DiagnosticFile::commit() {
  if (!connection_.inTransaction()) return;
  writeCounts();
  commit_.run();
}

void DiagnosticFile::rollBack() {
  if (connection_.inTransaction()) connection_.run("ROLLBACK");
}

void DiagnosticFile::finish(const RunRecord& run, bool lost) {
  setRun(run);
  statement("UPDATE run SET ended = ?, elapsed = ?, incomplete = ?").run(utcNow(), wall(), lost);
  commit();
  // Leave WAL mode, so that the file can be read on read-only media.  Fails while there are readers; WAL mode stays.
  try {
    connection_.setBusyTimeout(0);
    connection_.run("PRAGMA journal_mode = DELETE");
  } catch (const sqlite::Error&) {
  }
}

} // namespace sharedanalysis::host
