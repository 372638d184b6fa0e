// One run: input, analysis, outputs at their times, and the end in order on all ranks.
#include "solver/program/job.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/analysis/analysis.h"
#include "solver/model/text.h"
#include "solver/parallel/ranks.h"
#include "solver/program/description.h"
#include "solver/program/diagnostics.h"
#include "solver/program/failure.h"
#include "solver/program/job_files.h"
#include "solver/program/job_input.h"
#include "solver/program/messages.h"
#include "solver/program/output.h"
#include "solver/program/problems.h"
#include "solver/program/terminal.h"
#include "solver/results/restart_file.h"

#include <chrono>
#include <cmath>
#include <csignal>
#include <limits>
#include <memory>
#include <sys/resource.h>

namespace sharedanalysis::solver {
namespace {

using Clock = std::chrono::steady_clock;

// So many increments change the time by less than its last digit.
constexpr double kMostIncrements = 1e15;

class Job {
public:
  Job(const JobOptions& options, const Ranks& ranks, Terminal& terminal)
      : options_(options), terminal_(terminal), ranks_(ranks), input_(options, ranks),
        definition_(input_.caseFile.definition), mesh_(input_.mesh), problems_(mesh_),
        restartFile_(resultFile(definition_, restartExtension)) {}

  ExitCode run() {
    const std::unique_ptr<Analysis> model = makeAnalysis();
    Analysis& analysis = *model;
    firstIncrement_ = analysis.progress().stableIncrement;
    if (firstIncrement_ > 0 && definition_.endTime > kMostIncrements * firstIncrement_)
      throw InputError(definition_.file.string() + ": end_time is " + shortNumber(definition_.endTime) +
                       " s, which increments of " + shortNumber(firstIncrement_) + " s never reach");
    // the velocity after an increment would have the other sign
    constexpr double kMostDamped = 2;
    if (definition_.damping * firstIncrement_ > kMostDamped)
      throw InputError(definition_.file.string() + ": damping is " + shortNumber(definition_.damping) +
                       " 1/s, expected at most " + shortNumber(kMostDamped / firstIncrement_) +
                       " 1/s, two in each of the increments of " + shortNumber(firstIncrement_) + " s");
    description_ = describe(definition_, mesh_, ranks_, analysis, input_.threads);
    for (const std::string& line : description_) terminal_.line(line);
    for (const std::string& text : warnings()) terminal_.line("warning: " + text);
    if (options_.restart) restore(analysis);
    if (options_.checkOnly) {
      if (!options_.restart) showCosts(analysis);
      terminal_.line("the input is sound; nothing was run");
      return exitDone;
    }
    lock_ = lockJob(definition_, ranks_, start_);
    if (start_ == Start::GoOn) goOn(analysis); // before anything of the earlier run is replaced
    openJobFiles(definition_, ranks_, description_, start_, options_.rankFiles);
    for (const std::string& text : warnings())
      if (ranks_.isRoot()) message("Warning", "%S", {text});
    try {
      if (!output_) makeOutput(analysis);
      return analyse(analysis, *output_);
    } catch (const std::exception&) {
      output_.reset();
      // end the job in order on all ranks, then rethrow
      RankFailure failure = failureOfAll(ranks_);
      if (failure.rank != ranks_.rank()) host::beginChapter(host::Chapter::Closing); // it is told there
      message("Error", "%S", {failure.text});
      endAnalysis(failure.rank == ranks_.rank() ? GLO_EXIT_ERRORS : GLO_EXIT_ERRORS_ELSEWHERE);
      closeJobFiles(failure, ranks_);
      throw JobFailed(failure);
    }
  }

private:
  // Errors of case against mesh name both files.
  std::unique_ptr<Analysis> makeAnalysis() const {
    try {
      return std::make_unique<Analysis>(mesh_, definition_, input_.threads);
    } catch (const InputError& error) {
      throw InputError(definition_.file.string() + ", mesh " + definition_.mesh.name() + ": " + error.what());
    }
  }

  // Errors of what a sound file has name it, too.
  void restore(Analysis& analysis) {
    const std::filesystem::path file = options_.restart->empty() ? restartFile_ : *options_.restart;
    RestartReader reader(file, input_.hash, ranks_);
    try {
      analysis.restore(reader.state().course, [&] { return reader.next(); });
    } catch (const InputError& error) {
      throw InputError(file.string() + ": " + error.what());
    }
    earlier_ = reader.state().run;
    start_ = Start::GoOn;
    description_.push_back("goes on from increment " + std::to_string(analysis.progress().increment) + ", time " +
                           shortNumber(analysis.progress().time) + " s, of " + file.string());
    terminal_.line(description_.back());
  }

  void makeOutput(const Analysis& analysis) {
    std::vector<std::string> info = description_;
    info.insert(info.end(), input_.caseFile.lines.begin(), input_.caseFile.lines.end());
    output_.emplace(definition_, mesh_, info, ranks_, analysis.energyScale(), options_.digest, start_);
  }

  // Opens the results of the earlier run; nothing of them changes yet.
  void goOn(const Analysis& analysis) {
    makeOutput(analysis);
    Archive archive(Archive::Task::Restore, earlier_.data(), earlier_.size());
    visitRun(archive, *output_);
    if (ranks_.isRoot() && archive.count() != earlier_.size()) throw InputError("the restart file is too long");
    ranks_.synchronise(); // every rank has found what it needs
  }

  // Output times and results of every rank, then the files of the root.
  void visitRun(Archive& archive, Output& output) {
    for (Schedule* times : {&fieldTimes_, &historyTimes_, &restartTimes_}) times->visit(archive);
    problems_.visit(archive);
    output.visit(archive);
  }

  void writeState(const Analysis& analysis, Output& output) {
    RestartState state;
    state.course = analysis.course();
    if (ranks_.isRoot()) {
      Archive counted;
      visitRun(counted, output);
      state.run.resize(counted.count());
      Archive archive(Archive::Task::Save, state.run.data(), state.run.size());
      visitRun(archive, output);
    }
    output.synchronise(); // the file of the state promises that its results are there
    ranks_.synchronise();
    writeRestart(restartFile_, input_.hash, state, ranks_, [&](const RecordSink& put) { analysis.saveRecords(put); });
    hasState_ = true;
  }

  // At one length but for the outputs, which all of them end at: as many to each time of the more frequent kind.
  double incrementsOf(double increment) const {
    const double interval = std::min({definition_.outputInterval, definition_.historyInterval, definition_.endTime}),
                 whole = std::floor(definition_.endTime / interval),
                 rest = std::max(0.0, definition_.endTime - whole * interval);
    constexpr double kRounding = 1e-6;
    return whole * std::ceil(interval / increment) + std::ceil(rest > kRounding * interval ? rest / increment : 0.0);
  }

  // What a user may not have meant.
  std::vector<std::string> warnings() const {
    std::vector<std::string> lines;
    if (!isMoved(definition_))
      lines.emplace_back(
          "nothing acts on the model: there are no loads, gravity, prescribed motion or initial velocity");
    const std::vector<std::string> late = changesTooLate(definition_);
    lines.insert(lines.end(), late.begin(), late.end());
    if (definition_.restartInterval && *definition_.restartInterval >= definition_.endTime)
      lines.emplace_back("restart_interval is not below end_time: no state is written but by a signal");
    const bool isHistory = definition_.historyInterval <= definition_.outputInterval;
    const double interval = isHistory ? definition_.historyInterval : definition_.outputInterval;
    if (interval < firstIncrement_)
      lines.push_back(std::string(isHistory ? "history_interval" : "interval") + " of output, " +
                      shortNumber(interval) +
                      " s, is below the first stable increment: increments end at every output, about " +
                      shortNumber(incrementsOf(firstIncrement_)) + " of them in place of " +
                      shortNumber(std::ceil(definition_.endTime / firstIncrement_)));
    return lines;
  }

  // What the run will take, from its first increments.
  void showCosts(Analysis& analysis) {
    constexpr int kTried = 5;
    const Clock::time_point start = Clock::now();
    const Ending ending = analysis.advanceTo(std::min(fieldTimes_.next(), historyTimes_.next()), kTried);
    if (ending != Ending::Running && ending != Ending::Complete)
      return terminal_.line("it will end early: " + describeEnding(ending, analysis, definition_, firstIncrement_));
    const std::chrono::duration<double> seconds = Clock::now() - start;
    const double increments = incrementsOf(firstIncrement_);
    const double tried = static_cast<double>(std::max<int64_t>(analysis.progress().increment, 1));
    const double times = std::ceil(definition_.endTime / definition_.outputInterval) + 1;
    const std::string time = clockText(seconds.count() / tried * increments);
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    constexpr double kMega = 1e6, kUnitOfMemory = 1024; // bytes
    terminal_.line("about " + shortNumber(increments) + " increments if the first one stays as it is, " + time +
                   (time.size() > 5 ? " h, " : " min, ") +
                   shortNumber(static_cast<double>(used.ru_maxrss) * kUnitOfMemory / kMega) + " MB of memory" +
                   (ranks_.areSeveral() ? " for the first rank, " : ", ") +
                   shortNumber(sizeOfFields(mesh_, definition_, times) / kMega) + " MB of fields");
  }

  ExitCode analyse(Analysis& analysis, Output& output) {
    DiagnosticCourse course(definition_, ranks_);
    problems_.checkMesh(ranks_);
    analysis.setObserver([&](const Progress& now, double increment) { course.increment(now, increment); });
    if (start_ == Start::New) {
      if (definition_.historyFilter) output.filterHistory(analysis);
      output.writeHistory(analysis);
      output.writeFields(analysis);
    }
    showProgress(analysis, output);

    const Ending ending = advance(analysis, output);
    terminal_.endProgress();
    output.close();
    // a signal to one rank counts for all
    const bool killed = !ranks_.allAgree(ending != Ending::Killed && !host::killSignal());
    if (killed) host::requestKill();
    if (ending == Ending::Complete && !killed) return complete(analysis, output, course);
    return endEarly(analysis, killed ? Ending::Killed : ending, output, course);
  }

  ExitCode complete(const Analysis& analysis, const Output& output, DiagnosticCourse& course) {
    course.end();
    // from here on no signal changes how the run ends
    for (const int signal : {SIGINT, SIGTERM}) std::signal(signal, SIG_IGN);
    host::withdrawKill();
    // results get their names when the files of the other ranks are whole; whoever reads Completed finds them there
    const std::filesystem::path database = host::diagnosticDatabase();
    if (!ranks_.isRoot()) endJob(analysis, output);
    ranks_.synchronise();
    output.complete();
    if (ranks_.isRoot()) removeRestart(restartFile_); // nothing is left to go on with
    if (ranks_.isRoot()) endJob(analysis, output);
    ranks_.synchronise();
    showSummary(analysis, output);
    showProblems(database);
    return exitDone;
  }

  // Writes history and fields at their times, and for the last finite state whatever the ending.
  Ending advance(Analysis& analysis, Output& output) {
    constexpr int64_t allIncrements = std::numeric_limits<int64_t>::max();
    Ending ending = Ending::Running;
    while (ending == Ending::Running) {
      const Clock::time_point start = Clock::now();
      const Traffic before = Ranks::traffic();
      // a filter sees every increment
      ending = analysis.advanceTo(std::min(fieldTimes_.next(), historyTimes_.next()),
                                  definition_.historyFilter ? 1 : allIncrements,
                                  definition_.restartInterval ? restartTimes_.next() : definition_.endTime);
      computing_ += Clock::now() - start;
      exchanged_.messages += Ranks::traffic().messages - before.messages;
      exchanged_.bytes += Ranks::traffic().bytes - before.bytes;
      takeEvents(analysis, output);
      if (!std::isfinite(analysis.energies().balance())) ending = Ending::NotFinite;
      if (ending == Ending::NotFinite) return ending;
      if (definition_.historyFilter) output.filterHistory(analysis);

      const double time = analysis.progress().time;
      const bool killed = ending == Ending::Killed, atEnd = ending != Ending::Running && !killed;
      const bool history = historyTimes_.reach(time), fields = fieldTimes_.reach(time);
      const bool state = definition_.restartInterval && restartTimes_.reach(time) && !atEnd;
      write(analysis, output, history || atEnd, fields || atEnd, ending != Ending::Distorted);
      if (state || killed) writeState(analysis, output);
      // the last ones of a run that is ended are none of the run that goes on
      if (killed) write(analysis, output, !history, !fields, true);
      showProgress(analysis, output);
    }
    return ending;
  }

  void takeEvents(Analysis& analysis, Output& output) {
    const BrickEvents events = analysis.takeEvents(output.roomForEvents());
    output.writeEvents(events);
    if (ranks_.isRoot()) problems_.add(events);
  }

  void write(Analysis& analysis, Output& output, bool history, bool fields, bool checks) {
    if (history) output.writeHistory(analysis);
    if (!fields) return;
    output.writeFields(analysis);
    if (ranks_.isRoot() && checks && !output.energy().isRounding())
      problems_.check(analysis.progress().time, analysis.energies(), output.energy().relative());
  }

  ExitCode endEarly(const Analysis& analysis, Ending ending, const Output& output, DiagnosticCourse& course) {
    const std::string reason = describeEnding(ending, analysis, definition_, firstIncrement_);
    if (ending == Ending::Distorted) course.reportDistortion(analysis.ownDistortedElements());
    course.reportEnding(ending, reason);
    course.end();
    const std::filesystem::path database = host::diagnosticDatabase();
    host::beginChapter(host::Chapter::Closing); // the same on every rank
    reportProblems();
    if (ending == Ending::Killed) {
      message("Warning", "%S", {reason});
      endAnalysis(GLO_EXIT_PHASE_COMPLETE);
      closeJobFiles();
      showProblems(database);
      return reportInterruption(analysis, output);
    }
    message("Error", "%S", {reason});
    if (ending != Ending::Stopped || !host::threadError())
      endAnalysis(GLO_EXIT_ERRORS); // otherwise the kernel has ended it
    closeJobFiles();
    showProblems(database);
    if (ranks_.isRoot()) reportError(reason + "; what was computed is in " + output.leftovers());
    return ending == Ending::Failed ? exitNothingLeft : exitEndedEarly;
  }

  ExitCode reportInterruption(const Analysis& analysis, const Output& output) const {
    if (ranks_.isRoot())
      reportError(describeEnding(Ending::Killed, analysis, definition_, firstIncrement_) +
                  "; what was computed is in " + output.leftovers() +
                  (hasState_ ? "; --restart goes on from " + restartFile_.string() : ""));
    return exitInterrupted;
  }

  void endJob(const Analysis& analysis, const Output& output) {
    host::beginChapter(host::Chapter::Closing);
    reportProblems();
    message("Note", "The analysis is complete after %S increments; its energy balance is off by %R of the energy.",
            {std::to_string(analysis.progress().increment)}, {output.energy().relative()});
    if (definition_.quasiStatic) message("Note", "%S", {describeRest(analysis)});
    endAnalysis(GLO_EXIT_PHASE_COMPLETE);
    host::closeJob();
  }

  // In the message file, while it is open; afterwards to the user.
  void reportProblems() const {
    for (const std::string& line : problems_.lines()) message("Warning", "%S", {line});
  }
  void showProblems(const std::filesystem::path& database) {
    for (const std::string& line : problems_.lines()) terminal_.line("problem: " + line);
    if (problems_.found()) terminal_.line("problems one by one: sharedanalysis-diagnostics " + database.string());
  }

  void showProgress(const Analysis& analysis, const Output& output) {
    const Progress now = analysis.progress();
    terminal_.progress({now.time, definition_.endTime, now.stableIncrement, output.energy().relative(), now.increment});
  }

  // What a rank takes at most.  Every rank calls it.
  void showRanks(int64_t increments) {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto perIncrement = [&](int64_t count) {
      return static_cast<double>(count) / static_cast<double>(increments);
    };
    std::vector<double> most{-static_cast<double>(used.ru_maxrss), -perIncrement(exchanged_.messages),
                             -perIncrement(exchanged_.bytes)};
    ranks_.smallest(most);
    constexpr double kKilo = 1e3, kUnitOfMemory = 1024; // bytes
    terminal_.line("a rank takes " + shortNumber(-most[0] * kUnitOfMemory / (kKilo * kKilo)) +
                   " MB of memory and sends " + shortNumber(-most[1]) + " messages of " +
                   shortNumber(-most[2] / kKilo) + " kB in all an increment, at most");
  }

  void showSummary(const Analysis& analysis, const Output& output) {
    const double seconds = computing_.count();
    terminal_.line("complete: " + std::to_string(analysis.progress().increment) + " increments in " +
                   shortNumber(seconds) + " s, " +
                   shortNumber(static_cast<double>(analysis.elementUpdates()) / seconds / 1e6) +
                   " million brick increments a second");
    if (ranks_.areSeveral()) showRanks(analysis.progress().increment);
    if (definition_.quasiStatic) terminal_.line(describeRest(analysis));
    terminal_.line("fields at " + counted(static_cast<std::size_t>(output.count()), "time") + " in " +
                   output.fieldsName() + ", history in " + output.historyName() + output.eventsText());
  }

  const JobOptions& options_;
  Terminal& terminal_;
  const Ranks& ranks_;
  JobInput input_;
  const Case& definition_;
  const Mesh& mesh_;
  Problems problems_;
  std::unique_ptr<JobLock> lock_;
  std::filesystem::path restartFile_;
  bool hasState_ = false;
  Start start_ = Start::New;
  std::optional<Output> output_;
  std::vector<double> earlier_; // of the run that goes on: its output times and results
  Schedule fieldTimes_{definition_.outputInterval, definition_.endTime};
  Schedule historyTimes_{definition_.historyInterval, definition_.endTime};
  Schedule restartTimes_{definition_.restartInterval.value_or(definition_.endTime), definition_.endTime};
  double firstIncrement_ = 0;
  std::vector<std::string> description_;
  std::chrono::duration<double> computing_{0};
  Traffic exchanged_; // in increments
};

} // namespace

ExitCode runJob(const JobOptions& options) {
  const Ranks ranks;
  tellCrashes(ranks);
  Ranks::waitAtMost(options.rankTimeout);
  // launchers forward the output of the ranks through a pseudo-terminal: no progress bar
  Terminal terminal(options.quiet || !ranks.isRoot(), ranks.areSeveral());
  // reported once, by the rank on which it occurred
  const auto fail = [&](const RankFailure& failure) {
    terminal.endProgress();
    if (failure.rank == ranks.rank()) reportError(failure.text);
    return static_cast<ExitCode>(failure.code);
  };
  try {
    return Job(options, ranks, terminal).run();
  } catch (const JobFailed& error) {
    return fail(error.failure());
  } catch (const std::exception&) {
    return fail(failureOfAll(ranks));
  }
}

} // namespace sharedanalysis::solver
