#include "diagnostic_store.h"

#include "guarded.h"

#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <sys/resource.h>

namespace sharedanalysis::host {
namespace {

constexpr std::size_t kMostMarks = 1024;           // kept for queries
constexpr std::size_t kMostWaitingMarks = 1 << 16; // before there is a database
constexpr auto kSoon = std::chrono::milliseconds(20);

std::error_code errorCodeOf(const sqlite::Error& error) {
  const auto code = [](int number) { return std::error_code(number, std::generic_category()); };
  if (error.primaryCode() == SQLITE_FULL) return code(ENOSPC);
  if (error.primaryCode() == SQLITE_NOMEM) return code(ENOMEM);
  if (error.primaryCode() == SQLITE_BUSY) return code(EBUSY);
  return code(error.systemError() != 0 ? error.systemError() : EIO);
}

double processorTime() {
  timespec time = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

int64_t peakMemory() {
  rusage usage = {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<int64_t>(usage.ru_maxrss) * 1024;
}

void keepLast(std::deque<ResourceMark>& marks, std::size_t most) {
  if (marks.size() > most) marks.pop_front();
}

} // namespace

DiagnosticStore& diagnostics() {
  static DiagnosticStore& instance = *new DiagnosticStore;
  return instance;
}

// ---- job

void DiagnosticStore::open(const std::string& job, const std::filesystem::path& directory) {
  const std::lock_guard lock(mutex_);
  removeDatabase(directory / (job + ".diagnostics.sqlite"));
  directory_ = directory;
  run_.job = job;
  run_.started = utcNow();
  run_.status = -1;
  opened_ = Clock::now();
  committedSoon_ = {};
  error_.clear();
  jobIsOpen_ = true;
  const std::lock_guard marksLock(marksMutex_);
  waitingMarks_.clear();
}

std::error_code DiagnosticStore::close() {
  const std::lock_guard lock(mutex_);
  if (!jobIsOpen_) return {};
  if (file_) {
    for (Course& course : courses_) leaveStep(course);
    commit();
    try {
      file_->finish(run_, static_cast<bool>(error_));
    } catch (const sqlite::Error& error) {
      fail(error);
    } catch (const std::bad_alloc&) {
      if (!error_) error_ = std::make_error_code(std::errc::not_enough_memory);
    }
    file_.reset();
  }
  jobIsOpen_ = false;
  name_.clear();
  const int32_t executionCode = run_.executionCode;
  run_ = {};
  run_.executionCode = executionCode;
  for (Course& course : courses_) {
    const Course ended = std::exchange(course, {});
    course.enabled = ended.enabled;
    course.executionCode = ended.executionCode;
  }
  return error_;
}

std::error_code DiagnosticStore::error() {
  const std::lock_guard lock(mutex_);
  return error_;
}

std::filesystem::path DiagnosticStore::pathLocked() const {
  return directory_ / (name_.empty() ? run_.job + ".diagnostics.sqlite" : name_);
}

std::filesystem::path DiagnosticStore::path() {
  const std::lock_guard lock(mutex_);
  return jobIsOpen_ ? pathLocked() : std::filesystem::path();
}

// ---- writing

// The lost transaction held ids that later rows refer to: stops recording.
void DiagnosticStore::fail(const sqlite::Error& error) {
  if (!error_) error_ = errorCodeOf(error);
  try {
    if (file_) file_->rollBack();
  } catch (const sqlite::Error&) { // SQLite has done so itself
  }
}

void DiagnosticStore::createFile() {
  if (file_ || error_) return;
  try {
    removeDatabase(pathLocked());
    file_ = std::make_unique<DiagnosticFile>(pathLocked(), run_, opened_);
    [[maybe_unused]] static const int registered = std::atexit([] { diagnostics().commitAtExit(); });
  } catch (const sqlite::Error& error) {
    fail(error);
  } catch (const std::system_error& error) {
    error_ = error.code();
  }
}

void DiagnosticStore::commit() {
  store([&](DiagnosticFile& file) {
    for (const Course& course : courses_)
      if (course.increment && file.inTransaction()) file.setIncrementCounts(*course.increment, course.counts);
    if (runChanged_) file.setRun(run_);
    runChanged_ = false;
    const std::lock_guard lock(marksMutex_);
    for (; !waitingMarks_.empty(); waitingMarks_.pop_front()) file.addMark(waitingMarks_.front());
    file.commit();
  });
}

void DiagnosticStore::commitSoon() {
  const auto now = Clock::now();
  if (now - committedSoon_ < kSoon) return;
  committedSoon_ = now;
  commit();
}

// A program that exits without closing its job keeps its records.
void DiagnosticStore::commitAtExit() noexcept {
  guarded([&] {
    // another thread may have been stopped in the middle of a record
    const std::unique_lock lock(mutex_, std::try_to_lock);
    if (lock.owns_lock()) commit();
  });
}

// ---- settings

void DiagnosticStore::enable(Solver solver, bool enabled) {
  const std::lock_guard lock(mutex_);
  courseOf(solver).enabled = enabled;
}

void DiagnosticStore::setName(const char* name) {
  const std::lock_guard lock(mutex_);
  if (!file_) name_ = name == nullptr ? "" : name;
}

void DiagnosticStore::setExecutionCode(Solver solver, int32_t code) {
  const std::lock_guard lock(mutex_);
  courseOf(solver).executionCode = code;
  run_.executionCode = code;
  runChanged_ = true;
}

int32_t DiagnosticStore::executionCode(Solver solver) {
  const std::lock_guard lock(mutex_);
  return courseOf(solver).executionCode;
}

// The process may end after this call: commits.
void DiagnosticStore::setStatus(int32_t status) {
  const std::lock_guard lock(mutex_);
  run_.status = status;
  runChanged_ = true;
  commit();
}

// ---- course of the analysis

// body(course, file) while the solver's extractor stores.
template <class Body>
void DiagnosticStore::inCourse(Solver solver, Body body) {
  const std::lock_guard lock(mutex_);
  if (records(solver)) store([&](DiagnosticFile& file) { body(courseOf(solver), file); });
}

void DiagnosticStore::forgetIncrement(Course& course) {
  course.increment.reset();
  course.counts = {};
  course.attempt = course.iteration = course.contactIteration = {};
}

// Leaves the end columns of the increment NULL.
void DiagnosticStore::leaveIncrement(Course& course) {
  if (course.increment) store([&](DiagnosticFile& file) { file.setIncrementCounts(*course.increment, course.counts); });
  forgetIncrement(course);
}

void DiagnosticStore::leaveStep(Course& course) {
  leaveIncrement(course);
  if (!course.step) return;
  store([&](DiagnosticFile& file) { file.endStep(*course.step); });
  course.step.reset();
  course.attributes = {};
}

void DiagnosticStore::beginStep(Solver solver, const StepRecord& step) {
  const std::lock_guard lock(mutex_);
  if (!records(solver)) return;
  createFile();
  Course& course = courseOf(solver);
  leaveStep(course);
  store([&](DiagnosticFile& file) { course.step = file.addStep(step, course.attributes); });
  commit();
}

void DiagnosticStore::endStep(Solver solver) {
  inCourse(solver, [&](Course& course, DiagnosticFile&) {
    leaveStep(course);
    commit();
  });
}

void DiagnosticStore::beginIncrement(Solver solver, int32_t number, double timeIncrement) {
  const std::lock_guard lock(mutex_);
  if (!records(solver)) return;
  createFile();
  Course& course = courseOf(solver);
  // records since the last increment share the transaction of this one unless they wait for long
  if (course.increment) {
    leaveIncrement(course);
    commit();
  } else if (file_ && file_->inTransaction()) {
    commitSoon();
  }
  store([&](DiagnosticFile& file) { course.increment = file.addIncrement(course.step, number, timeIncrement); });
}

void DiagnosticStore::endIncrement(Solver solver, double time, bool converged) {
  inCourse(solver, [&](Course& course, DiagnosticFile& file) {
    if (!course.increment) return;
    file.endIncrement(*course.increment, time, converged, course.counts);
    forgetIncrement(course);
    commit();
  });
}

// begin(course, file, number) adds the row; an older one of the level that did not end stays so.
template <class Begin>
void DiagnosticStore::beginLevel(Solver solver, Level Course::*level, Begin begin) {
  inCourse(solver, [&](Course& course, DiagnosticFile& file) {
    if (!course.increment) return;
    Level& own = course.*level;
    own = {begin(course, file, own.number + 1), true, own.number + 1};
  });
}

void DiagnosticStore::endLevel(Solver solver, Level Course::*level, Flag ended) {
  inCourse(solver, [&](Course& course, DiagnosticFile& file) {
    Level& own = course.*level;
    if (own.isOpen) file.setFlag(ended, *own.id, true);
    own.isOpen = false;
  });
}

// A flag may be set after its attempt or iteration has ended.
void DiagnosticStore::setFlag(Solver solver, Level Course::*level, Flag flag, bool value) {
  inCourse(solver, [&](Course& course, DiagnosticFile& file) {
    if ((course.*level).id) file.setFlag(flag, *(course.*level).id, value);
  });
}

void DiagnosticStore::beginAttempt(Solver solver, double timeIncrement) {
  beginLevel(solver, &Course::attempt, [=](Course& course, DiagnosticFile& file, int32_t number) {
    ++course.counts.attempts;
    course.iteration = course.contactIteration = {};
    return file.addAttempt(*course.increment, number, timeIncrement);
  });
}

void DiagnosticStore::beginIteration(Solver solver) {
  beginLevel(solver, &Course::iteration, [](Course& course, DiagnosticFile& file, int32_t number) {
    ++course.counts.iterations;
    course.contactIteration = {};
    return file.addIteration(*course.increment, course.attempt.open(), number);
  });
}

void DiagnosticStore::beginContactIteration(Solver solver) {
  beginLevel(solver, &Course::contactIteration, [](Course& course, DiagnosticFile& file, int32_t number) {
    return file.addContactIteration(*course.increment, course.iteration.open(), number);
  });
}

void DiagnosticStore::endAttempt(Solver solver) { endLevel(solver, &Course::attempt, Flag::AttemptEnded); }
void DiagnosticStore::endIteration(Solver solver) { endLevel(solver, &Course::iteration, Flag::IterationEnded); }
void DiagnosticStore::endContactIteration(Solver solver) {
  endLevel(solver, &Course::contactIteration, Flag::ContactIterationEnded);
}

#define SA_SET_FLAG(level, flag)                                                                                       \
  void DiagnosticStore::set##flag(Solver solver, bool value) { setFlag(solver, &Course::level, Flag::flag, value); }
SA_SET_FLAG(attempt, AttemptNeedsReordering)
SA_SET_FLAG(iteration, IterationConverged)
SA_SET_FLAG(iteration, IterationSevereDiscontinuity)
SA_SET_FLAG(iteration, IterationPenetrationExceeded)
SA_SET_FLAG(iteration, IterationSeparationTooLarge)
SA_SET_FLAG(contactIteration, ContactIterationConverged)
#undef SA_SET_FLAG

// ---- diagnostics

bool DiagnosticStore::countsAsError(const DiagnosticRecord& d) {
  return d.diagnosticClass == DiagnosticClass::Error || d.diagnosticClass == DiagnosticClass::Internal;
}

void DiagnosticStore::count(Course& course, const DiagnosticRecord& d) {
  if (countsAsError(d)) {
    ++course.stored.errors;
    ++course.counts.errors;
  } else if (d.diagnosticClass == DiagnosticClass::Warning) {
    ++course.stored.warnings;
    ++course.counts.warnings;
  } else if (d.diagnosticClass == DiagnosticClass::Element) {
    ++course.stored.elementDiagnostics;
  } else if (d.diagnosticClass == DiagnosticClass::Cutback) {
    ++course.counts.cutbacks;
  }
}

// Whether to store a record.  Without an open job counts it as unfiled.
bool DiagnosticStore::accepts(Solver solver) {
  if (!jobIsOpen_ && courseOf(solver).enabled) ++job().unfiled;
  if (records(solver)) createFile();
  return records(solver);
}

void DiagnosticStore::add(Solver solver, const DiagnosticRecord& d) {
  const std::lock_guard lock(mutex_);
  if (!accepts(solver)) return;
  Course& course = courseOf(solver);
  store([&](DiagnosticFile& file) {
    file.addDiagnostic(d, course.place());
    count(course, d);
    if (!course.increment || countsAsError(d)) commitSoon();
  });
}

void DiagnosticStore::addStatus(int32_t status, const dia_Entity& node, const std::array<double, 9>& reals) {
  const std::lock_guard lock(mutex_);
  if (!accepts(Solver::Explicit)) return;
  const Course& course = courseOf(Solver::Explicit);
  store([&](DiagnosticFile& file) {
    file.addStatus(course.place(), status, node, reals);
    if (!course.increment) commitSoon();
  });
}

StoredCounts DiagnosticStore::storedCounts(Solver solver) {
  const std::lock_guard lock(mutex_);
  return courseOf(solver).stored;
}

// ---- marks

void DiagnosticStore::addMark(const char* text) {
  const std::lock_guard lock(marksMutex_);
  const double elapsed = std::chrono::duration<double>(Clock::now() - opened_.load()).count();
  const ResourceMark mark{text == nullptr ? "" : text, elapsed, processorTime(), peakMemory()};
  lastMarks_.push_back(mark);
  keepLast(lastMarks_, kMostMarks);
  waitingMarks_.push_back(mark);
  keepLast(waitingMarks_, kMostWaitingMarks);
}

std::vector<ResourceMark> DiagnosticStore::marks() {
  const std::lock_guard lock(marksMutex_);
  return {lastMarks_.begin(), lastMarks_.end()};
}

std::vector<ResourceMark> resourceMarks() { return diagnostics().marks(); }
std::filesystem::path diagnosticDatabase() { return diagnostics().path(); }

} // namespace sharedanalysis::host
