#include "record.h"

#include "diagnostic_schema.h"
#include "sqlite.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <deque>
#include <functional>
#include <limits>
#include <map>
#include <tuple>
#include <unistd.h>
#include <unordered_map>

namespace sharedanalysis::diagnostics {
namespace {

using sqlite::Connection;
using sqlite::Statement;

constexpr int64_t kNoStatus = -1;

// ---- opening

int64_t pragma(Connection& database, const char* name) {
  Statement statement = database.prepare(std::string("PRAGMA ") + name);
  const int64_t value = statement.next() ? statement.integer(0) : 0;
  statement.reset();
  return value;
}

void checkFile(const std::filesystem::path& file) {
  std::error_code error;
  if (!std::filesystem::exists(file, error)) throw Failure(exitInput, file.string() + ": there is no such file");
  if (std::filesystem::is_directory(file, error)) throw Failure(exitInput, file.string() + " is a directory");
  if (std::filesystem::is_other(file, error)) throw Failure(exitInput, file.string() + " is a pipe or a device");
  if (access(file.c_str(), R_OK) != 0) throw Failure(exitInput, file.string() + " cannot be read: permission denied");
}

void checkFormat(Connection& database, const std::filesystem::path& file) {
  if (pragma(database, "application_id") != host::kDatabaseApplication)
    throw Failure(exitInput, file.string() + " is a database, but not of diagnostics");
  const int64_t version = pragma(database, "user_version");
  if (version > host::kDatabaseVersion)
    throw Failure(exitNewer, file.string() + " was written by a newer release (version " + std::to_string(version) +
                                 " of the tables; this program reads version " +
                                 std::to_string(host::kDatabaseVersion) + ")");
  if (version < 1) throw Failure(exitDamaged, file.string() + " was created, but nothing was recorded in it");
}

// A crash at the end of a job may leave a file that SQLite must mend before it can be read.
void open(Connection& database, const std::filesystem::path& file) {
  try {
    database.open(file.string(), SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX);
    database.run("SELECT 1 FROM sqlite_schema");
  } catch (const sqlite::Error& error) {
    if (error.code() != SQLITE_READONLY_ROLLBACK && error.code() != SQLITE_READONLY_RECOVERY) throw;
    database.open(file.string(), SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX);
  }
}

// ---- selection

// "0x42010020" or "1107361824"; empty for other text.
std::optional<int64_t> codeNumber(const std::string& text) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const char *const begin = text.data() + (hexadecimal ? 2 : 0), *const end = text.data() + text.size();
  int64_t number = 0;
  const auto result = std::from_chars(begin, end, number, hexadecimal ? 16 : 10);
  if (result.ec != std::errc() || result.ptr != end) return std::nullopt;
  return number;
}

// Leaves the chosen codes and increments in tables of the connection; answers the condition on diagnostics d.
std::string choose(Connection& database, const Selection& selection) {
  database.run("PRAGMA temp_store = MEMORY");
  std::string condition = "TRUE";
  if (selection.code) {
    const auto number = codeNumber(*selection.code);
    database.run("CREATE TEMP TABLE chosen_codes (id INTEGER PRIMARY KEY)");
    database
        .prepare("INSERT INTO chosen_codes SELECT c.id FROM codes c JOIN classes k ON k.id = c.class "
                 "WHERE c.code = ?1 OR coalesce(c.name, k.name) = ?2 COLLATE NOCASE")
        .run(number, number ? std::nullopt : selection.code);
    condition += " AND d.code IN (SELECT id FROM chosen_codes)";
  }
  if (const auto& range = selection.increments) {
    database.run("CREATE TEMP TABLE chosen_increments (id INTEGER PRIMARY KEY)");
    database
        .prepare("INSERT INTO chosen_increments SELECT i.id FROM increments i LEFT JOIN steps s ON s.id = i.step "
                 "WHERE i.number BETWEEN ?1 AND ?2 AND (?3 IS NULL OR s.number = ?3)")
        .run(range->first, range->last, range->step);
    condition += " AND d.increment IN (SELECT id FROM chosen_increments)";
  }
  return condition;
}

// ---- run and steps

// Whether the writing process is alive; empty when it runs on another machine.
std::optional<bool> lives(const Run& run) {
  std::array<char, 256> name{};
  if (gethostname(name.data(), name.size() - 1) != 0 || run.host != name.data()) return std::nullopt;
  return kill(static_cast<pid_t>(run.process), 0) == 0 || errno == EPERM;
}

std::string stateOf(const Run& run, const std::string& status) {
  if (run.status != kNoStatus) return status;
  if (run.ended) return "ended without a status";
  const auto alive = lives(run);
  if (!alive) return "running on " + run.host + ", or ended without closing the file";
  return *alive ? "running" : "ended without closing the file";
}

Run readRun(Connection& database) {
  Statement s = database.prepare(
      "SELECT r.job, r.host, r.program, r.started, r.ended, r.process, r.rank, r.status, r.elapsed, r.domains, "
      "r.double_precision, r.in_parts, r.incomplete, t.name FROM run r LEFT JOIN statuses t ON t.id = r.status");
  if (!s.next()) throw Failure(exitDamaged, "the database has no run");
  Run run{.job = s.text(0),
          .host = s.text(1),
          .program = s.text(2),
          .started = s.text(3),
          .state = {},
          .ended = s.isNull(4) ? std::nullopt : std::optional(s.text(4)),
          .process = s.integer(5),
          .rank = s.integer(6),
          .status = s.integer(7),
          .elapsed = s.optionalReal(8),
          .domains = s.optionalInteger(9),
          .doublePrecision = s.optionalInteger(10),
          .inParts = s.integer(11) != 0,
          .incomplete = s.integer(12) != 0};
  run.state = stateOf(run, s.isNull(13) ? "status " + std::to_string(run.status) : s.text(13));
  return run;
}

std::vector<std::string> attributesOf(Statement& s, int column) {
  constexpr std::array<const char*, 4> kIncrementation = {nullptr, "fixed increments", "automatic increments",
                                                          "increments by the user"};
  constexpr std::array<const char*, 2> kSolvers = {"direct solver", "iterative solver"};
  constexpr std::array<const char*, 3> kExtrapolations = {"no extrapolation", "linear extrapolation",
                                                          "parabolic extrapolation"};
  std::vector<std::string> words;
  const auto add = [&](int place, const auto& names) {
    if (s.isNull(place)) return;
    const auto value = static_cast<std::size_t>(s.integer(place));
    if (value < names.size() && names[value] != nullptr) words.emplace_back(names[value]);
  };
  if (s.integer(column) != 0) words.emplace_back("large displacements");
  if (s.integer(column + 1) != 0) words.emplace_back("unsymmetric equations");
  add(column + 2, kIncrementation);
  add(column + 3, kSolvers);
  add(column + 4, kExtrapolations);
  return words;
}

std::vector<Step> readSteps(Connection& database) {
  Statement s = database.prepare(
      "SELECT s.name, s.solver, s.number, s.procedure, count(i.id), total(i.attempts), total(i.iterations), "
      "total(i.cutbacks), total(i.errors), total(i.warnings), max(i.time), min(i.time_increment), "
      "max(i.time_increment), s.ended - s.began, s.nlgeom, s.unsymmetric, s.incrementation, s.equation_solver, "
      "s.extrapolation FROM steps s LEFT JOIN increments i ON i.step = s.id GROUP BY s.id ORDER BY s.id");
  std::vector<Step> steps;
  while (s.next())
    steps.push_back({.name = s.text(0),
                     .solver = s.text(1),
                     .attributes = attributesOf(s, 14),
                     .number = s.integer(2),
                     .procedure = s.integer(3),
                     .increments = s.integer(4),
                     .attempts = s.integer(5),
                     .iterations = s.integer(6),
                     .cutbacks = s.integer(7),
                     .errors = s.integer(8),
                     .warnings = s.integer(9),
                     .time = s.optionalReal(10),
                     .smallest = s.optionalReal(11),
                     .largest = s.optionalReal(12),
                     .wall = s.optionalReal(13)});
  return steps;
}

// ---- increments

IncrementGroup readIncrement(Statement& s) {
  const auto converged = s.optionalInteger(9);
  return {.step = s.optionalInteger(0),
          .first = s.integer(1),
          .last = s.integer(1),
          .smallest = s.optionalReal(2),
          .largest = s.optionalReal(2),
          .time = s.optionalReal(3),
          .attempts = s.integer(4),
          .iterations = s.integer(5),
          .cutbacks = s.integer(6),
          .errors = s.integer(7),
          .warnings = s.integer(8),
          .state = !converged        ? "not ended"
                   : *converged != 0 ? "converged"
                                     : "not converged"};
}

bool belongs(const IncrementGroup& group, const IncrementGroup& next) {
  const auto flags = [](const IncrementGroup& g) {
    return std::tuple(g.step, std::string_view(g.state), g.cutbacks > 0, g.errors > 0, g.warnings > 0);
  };
  return group.last < std::numeric_limits<int64_t>::max() && next.first == group.last + 1 &&
         flags(group) == flags(next);
}

// Saturating sum: a damaged file may hold any numbers.
void add(int64_t& sum, int64_t count) {
  if (__builtin_add_overflow(sum, count, &sum))
    sum = count < 0 ? std::numeric_limits<int64_t>::min() : std::numeric_limits<int64_t>::max();
}

void extend(IncrementGroup& group, const IncrementGroup& next) {
  group.last = next.last;
  ++group.count;
  if (!group.smallest || next.smallest < group.smallest) group.smallest = next.smallest;
  if (group.largest < next.largest) group.largest = next.largest;
  if (next.time) group.time = next.time;
  add(group.attempts, next.attempts);
  add(group.iterations, next.iterations);
  add(group.cutbacks, next.cutbacks);
  add(group.errors, next.errors);
  add(group.warnings, next.warnings);
}

// The last groups, and how many there are; chosen increments stand alone.
void readIncrements(Connection& database, const Selection& selection, Record& record) {
  Statement s = database.prepare(
      std::string("SELECT s.number, i.number, i.time_increment, i.time, i.attempts, i.iterations, i.cutbacks, "
                  "i.errors, i.warnings, i.converged FROM increments i LEFT JOIN steps s ON s.id = i.step ") +
      (selection.increments ? "WHERE i.id IN (SELECT id FROM chosen_increments) " : "") + "ORDER BY i.id");
  std::deque<IncrementGroup> groups;
  while (s.next()) {
    IncrementGroup next = readIncrement(s);
    if (!selection.increments && !groups.empty() && belongs(groups.back(), next)) {
      extend(groups.back(), next);
      continue;
    }
    groups.push_back(std::move(next));
    ++record.groupCount;
    if (groups.size() > selection.limit) groups.pop_front();
  }
  record.increments.assign(groups.begin(), groups.end());
}

// ---- problems

std::string countsOf(const Selection& selection, const std::string& condition) {
  if (selection.increments)
    return "SELECT d.code AS code, count(*) AS count, min(d.id) AS first, max(d.id) AS last FROM diagnostics d WHERE " +
           condition + " GROUP BY d.code";
  // the writer has counted
  std::string counts = "SELECT id AS code, count, first_diagnostic AS first, last_diagnostic AS last FROM codes";
  return selection.code ? counts + " WHERE id IN (SELECT id FROM chosen_codes)" : counts;
}

// step, increment and time of message m from a column on
Occurrence occurrence(Statement& s, int column) {
  return {s.optionalInteger(column), s.optionalInteger(column + 1), s.optionalReal(column + 2)};
}

void readProblems(Connection& database, const Selection& selection, const std::string& condition, Record& record) {
  Statement s = database.prepare(
      "SELECT c.id, c.code, n.count, c.is_error, k.name, coalesce(c.name, ''), f.text, f.step, f.increment, f.time, "
      "l.step, l.increment, l.time FROM (" +
      countsOf(selection, condition) +
      ") n JOIN codes c ON c.id = n.code JOIN classes k ON k.id = c.class JOIN messages f ON f.id = n.first "
      "JOIN messages l ON l.id = n.last WHERE k.is_problem ORDER BY c.is_error DESC, c.class, n.count DESC, n.first");
  while (s.next()) {
    if (++record.problemCount > selection.limit) continue;
    record.problems.push_back({.id = s.integer(0),
                               .code = s.integer(1),
                               .count = s.integer(2),
                               .isError = s.integer(3) != 0,
                               .kind = s.text(4),
                               .name = s.text(5),
                               .text = s.text(6),
                               .first = occurrence(s, 7),
                               .last = occurrence(s, 10),
                               .places = {}});
  }
}

// The different nodes or elements of problems, in order of appearance.
class PlaceCounter {
public:
  PlaceCounter(std::string kind, std::size_t most) : kind_(std::move(kind)), most_(most) {}

  void add(Problem& problem, int64_t instance, int64_t label, const std::function<std::string()>& name) {
    const auto [found, isNew] = seen_.try_emplace({problem.id, instance, label}, problem.places.size());
    if (isNew) {
      ++problem.placeCount;
      if (shown_[problem.id]++ < most_)
        problem.places.push_back({kind_, name(), label, 0});
      else
        found->second = kNotShown;
    }
    if (found->second != kNotShown) ++problem.places[found->second].count;
  }

private:
  struct Key {
    int64_t problem, instance, label;
    bool operator==(const Key&) const = default;
  };
  struct Hash {
    std::size_t operator()(const Key& key) const {
      constexpr uint64_t kOdd = 0x9E3779B97F4A7C15;
      const auto mixed = (static_cast<uint64_t>(key.label) * kOdd + static_cast<uint64_t>(key.instance)) * kOdd +
                         static_cast<uint64_t>(key.problem);
      return static_cast<std::size_t>(mixed ^ mixed >> 32);
    }
  };
  static constexpr std::size_t kNotShown = SIZE_MAX;

  std::string kind_;
  std::size_t most_;
  std::unordered_map<Key, std::size_t, Hash> seen_;
  std::map<int64_t, std::size_t> shown_;
};

void readPlaces(Connection& database, const Selection& selection, const std::string& condition, const char* table,
                const char* kind, std::vector<Problem>& problems) {
  std::unordered_map<int64_t, Problem*> byId;
  for (Problem& problem : problems) byId.emplace(problem.id, &problem);
  std::unordered_map<int64_t, std::string> names;
  Statement all = database.prepare("SELECT id, name FROM names");
  while (all.next()) names.emplace(all.integer(0), all.text(1));

  PlaceCounter counter(kind, selection.places);
  Statement s = database.prepare(std::string("SELECT d.code, e.instance, e.label FROM ") + table +
                                 " e CROSS JOIN diagnostics d ON d.id = e.diagnostic WHERE " + condition +
                                 " ORDER BY e.diagnostic, e.position");
  while (s.next()) {
    const auto problem = byId.find(s.integer(0));
    if (problem == byId.end()) continue;
    const int64_t instance = s.integer(1);
    counter.add(*problem->second, instance, s.integer(2), [&] { return names[instance]; });
  }
}

void readMessages(Connection& database, const Selection& selection, const std::string& condition, Record& record) {
  Statement count = database.prepare("SELECT count(*) FROM diagnostics d WHERE " + condition);
  record.messageCount = count.next() ? count.integer(0) : 0;
  count.reset();
  Statement s = database.prepare("SELECT m.id, m.class, coalesce(m.name, ''), m.text, m.step, m.increment, m.time, "
                                 "m.attempt, m.iteration, m.domain FROM diagnostics d CROSS JOIN messages m "
                                 "ON m.id = d.id WHERE " +
                                 condition + " ORDER BY d.id");
  while (record.messages.size() < selection.limit && s.next())
    record.messages.push_back({.id = s.integer(0),
                               .kind = s.text(1),
                               .name = s.text(2),
                               .text = s.text(3),
                               .where = occurrence(s, 4),
                               .attempt = s.optionalInteger(7),
                               .iteration = s.optionalInteger(8),
                               .domain = s.optionalInteger(9)});
}

int64_t naturalNumber(std::string_view text, std::string_view whole) {
  int64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size() || number < 0)
    throw Failure(exitInput, "--increment " + std::string(whole) +
                                 ": an increment, a range of increments or either of a step is expected, "
                                 "as 12, 10-20, 2:12 or 2:10-20");
  return number;
}

} // namespace

IncrementRange incrementRange(const std::string& text) {
  IncrementRange range{};
  std::string_view rest = text;
  if (const std::size_t colon = rest.find(':'); colon != std::string_view::npos) {
    range.step = naturalNumber(rest.substr(0, colon), text);
    rest.remove_prefix(colon + 1);
  }
  const std::size_t dash = rest.find('-');
  range.first = naturalNumber(rest.substr(0, dash), text);
  range.last = dash == std::string_view::npos ? range.first : naturalNumber(rest.substr(dash + 1), text);
  if (range.last < range.first)
    throw Failure(exitInput, "--increment " + text + ": the range ends before it begins, as " +
                                 std::to_string(range.last) + "-" + std::to_string(range.first) + " does not");
  return range;
}

Record readRecord(const std::filesystem::path& file, const Selection& selection) {
  checkFile(file);
  Record record;
  record.file = file;
  try {
    Connection database;
    open(database, file);
    database.setBusyTimeout(5000);
    checkFormat(database, file);
    // a snapshot of the file while it is being written
    database.run("BEGIN");
    const std::string condition = choose(database, selection);
    record.run = readRun(database);
    record.steps = readSteps(database);
    readIncrements(database, selection, record);
    readProblems(database, selection, condition, record);
    readPlaces(database, selection, condition, "elements", "element", record.problems);
    readPlaces(database, selection, condition, "nodes", "node", record.problems);
    if (selection.isNarrowed()) readMessages(database, selection, condition, record);
  } catch (const sqlite::Error& error) {
    if (error.primaryCode() == SQLITE_NOTADB) throw Failure(exitInput, file.string() + " is not a database");
    throw Failure(exitDamaged, file.string() + " cannot be read: " + error.what());
  }
  return record;
}

} // namespace sharedanalysis::diagnostics
