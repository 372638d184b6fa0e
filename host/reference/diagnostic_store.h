// The diagnostics of the open job: what both extractors and the resource monitor record, on its way to the database.
#pragma once

#include "diagnostic_file.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <system_error>

namespace sharedanalysis::host {

enum class Solver { Implicit, Explicit };

struct StoredCounts {
  int32_t errors = 0, warnings = 0, elementDiagnostics = 0;
};

// All members may be called from any thread; those that record never throw for a reason of the file: its first error stays
// here until the next job, and nothing is stored any more.
//
// A transaction holds an increment.  What comes outside of increments, and an error, which may be the last thing that the
// process says, are committed at once, but not more often than every 20 ms.
class DiagnosticStore {
public:
  // The default file of a job must not survive from an older one.  Throws std::system_error naming it.
  void open(const std::string& job, const std::filesystem::path& directory);
  // Commits and closes; answers the first error.  Name of the file, domains, precision and flags of the run end with it.
  std::error_code close();
  std::error_code error();
  std::filesystem::path path();
  void commitAtExit() noexcept;

  // Settings of an extractor.
  void enable(Solver solver, bool enabled);
  void setName(const char* name);
  void setExecutionCode(Solver solver, int32_t code);
  int32_t executionCode(Solver solver);
  // change(RunRecord&)
  template <class Change>
  void setRun(Change change) {
    const std::lock_guard lock(mutex_);
    change(run_);
    runChanged_ = true;
  }
  void setStatus(int32_t status);

  void beginStep(Solver solver, const StepRecord& step);
  void endStep(Solver solver);
  void beginIncrement(Solver solver, int32_t number, double timeIncrement);
  void endIncrement(Solver solver, double time, bool converged);
  void beginAttempt(Solver solver, double timeIncrement);
  void endAttempt(Solver solver);
  void beginIteration(Solver solver);
  void endIteration(Solver solver);
  void beginContactIteration(Solver solver);
  void endContactIteration(Solver solver);

  void setAttemptNeedsReordering(Solver solver, bool value);
  void setIterationConverged(Solver solver, bool value);
  void setIterationSevereDiscontinuity(Solver solver, bool value);
  void setIterationPenetrationExceeded(Solver solver, bool value);
  void setIterationSeparationTooLarge(Solver solver, bool value);
  void setContactIterationConverged(Solver solver, bool value);
  // change(StepAttributes&), of the open step or else of the next one
  template <class Change>
  void setStepAttributes(Solver solver, Change change) {
    const std::lock_guard lock(mutex_);
    Course& course = courseOf(solver);
    change(course.attributes);
    if (course.step) store([&](DiagnosticFile& file) { file.setStepAttributes(*course.step, course.attributes); });
  }

  void add(Solver solver, const DiagnosticRecord& diagnostic);
  void addStatus(int32_t status, const dia_Entity& node, const std::array<double, 9>& reals);
  StoredCounts storedCounts(Solver solver);

  void addMark(const char* text);
  std::vector<ResourceMark> marks();

private:
  // The open or last attempt, iteration or contact iteration within the level above.
  struct Level {
    Id id;
    bool isOpen = false;
    int32_t number = 0;

    Id open() const { return isOpen ? id : std::nullopt; }
  };

  // Where a solver is in its analysis.
  struct Course {
    bool enabled = true;
    int32_t executionCode = 0;
    Id step, increment;
    IncrementCounts counts;
    StoredCounts stored;
    Level attempt, iteration, contactIteration;
    StepAttributes attributes;

    Place place() const { return {step, increment, attempt.open(), iteration.open(), contactIteration.open()}; }
  };

  using Clock = std::chrono::steady_clock;

  Course& courseOf(Solver solver) { return courses_.at(static_cast<std::size_t>(solver)); }
  bool accepts(Solver solver);
  bool records(Solver solver) { return jobIsOpen_ && courseOf(solver).enabled; }

  // Runs body(file) unless there is no file or an earlier write has failed.
  template <class Body>
  void store(Body body) {
    if (!file_ || error_) return;
    try {
      body(*file_);
    } catch (const sqlite::Error& error) {
      fail(error);
    }
  }
  template <class Body>
  void inCourse(Solver solver, Body body);
  template <class Begin>
  void beginLevel(Solver solver, Level Course::*level, Begin begin);
  void endLevel(Solver solver, Level Course::*level, Flag ended);
  void setFlag(Solver solver, Level Course::*level, Flag flag, bool value);
  void createFile();
  void commit();
  void commitSoon();
  void fail(const sqlite::Error& error);
  void leaveIncrement(Course& course);
  void leaveStep(Course& course);
  static void forgetIncrement(Course& course);
  static bool countsAsError(const DiagnosticRecord& diagnostic);
  static void count(Course& course, const DiagnosticRecord& diagnostic);
  std::filesystem::path pathLocked() const;

  std::mutex mutex_;
  bool jobIsOpen_ = false;
  std::filesystem::path directory_;
  std::string name_; // of the file; empty: the default
  RunRecord run_;
  bool runChanged_ = false;
  std::atomic<Clock::time_point> opened_ = Clock::now(); // marks read it without the lock
  Clock::time_point committedSoon_;
  std::unique_ptr<DiagnosticFile> file_;
  std::error_code error_;
  std::array<Course, 2> courses_;

  // Marks may come from any thread at any time; they have a mutex of their own and do not wait for the database.
  std::mutex marksMutex_;
  std::deque<ResourceMark> lastMarks_, waitingMarks_;
};

// The one store of the process.  It outlives the static objects of the program.
DiagnosticStore& diagnostics();

} // namespace sharedanalysis::host
