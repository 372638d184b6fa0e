// One run: input, analysis, outputs at their times, and the end in order on all ranks.
#include "solver/program/job.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/analysis/analysis.h"
#include "solver/analysis/ranks.h"
#include "solver/input/case_reader.h"
#include "solver/input/mesh_reader.h"
#include "solver/model/text.h"
#include "solver/program/description.h"
#include "solver/program/diagnostics.h"
#include "solver/program/failure.h"
#include "solver/program/messages.h"
#include "solver/program/output.h"
#include "solver/program/terminal.h"
#include "solver/results/hash.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>
#include <omp.h>

namespace sharedanalysis::solver {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t statusCompleted = 1; // of host::jobStatus

// Of the input, which must be the same on all ranks.
uint64_t inputHash(const CaseFile& caseFile, const Mesh& mesh) {
  Hash hash;
  for (const std::string& line : caseFile.lines) hash.add(line);
  hash.add(mesh);
  return hash.value();
}

class Job {
public:
  Job(const JobOptions& options, const Ranks& ranks, Terminal& terminal)
      : options_(options), terminal_(terminal), ranks_(ranks), threads_(threadsOf(options, ranks)),
        caseFile_(readInput(options)), definition_(caseFile_.definition), mesh_(readMesh(definition_.meshFile)) {
    checkGroups(caseFile_, mesh_);
    checkSameInput();
  }

  ExitCode run() {
    const std::unique_ptr<Analysis> model = makeAnalysis();
    Analysis& analysis = *model;
    firstIncrement_ = analysis.progress().stableIncrement;
    description_ = describe(definition_, mesh_, ranks_, threads_, firstIncrement_);
    for (const std::string& line : description_) terminal_.line(line);
    if (options_.checkOnly) {
      terminal_.line("the input is sound; nothing was run");
      return exitComplete;
    }
    openFiles();
    try {
      return analyse(analysis);
    } catch (const std::exception&) {
      // end the job in order on all ranks, then rethrow
      RankFailure failure = failureOfAll(ranks_);
      message("Error", "%S", {failure.text});
      endAnalysis(failure.rank == ranks_.rank() ? exitErrors : exitErrorsElsewhere);
      closeAfter(failure);
      throw JobFailed(failure);
    }
  }

private:
  // Called before the mesh is read: Gmsh sets OpenMP to one thread.  Several ranks share a machine: one thread each
  // unless set otherwise.
  static int threadsOf(const JobOptions& options, const Ranks& ranks) {
    if (options.threads > 0) return options.threads;
    if (ranks.areSeveral() && !std::getenv("OMP_NUM_THREADS")) return 1;
    return std::min(omp_get_max_threads(), 1024);
  }

  static CaseFile readInput(const JobOptions& options) {
    CaseFile caseFile = readCase(options.caseFile);
    if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
    return caseFile;
  }

  void checkSameInput() const {
    if (!ranks_.areSeveral()) return;
    const std::vector<int64_t> hashes = ranks_.joined({static_cast<int64_t>(inputHash(caseFile_, mesh_))});
    for (std::size_t rank = 1; rank < hashes.size(); ++rank)
      if (hashes[rank] != hashes[0])
        throw InputError("rank " + std::to_string(rank) + " has read another case or mesh than rank 0 from " +
                         definition_.file.string() + " and " + definition_.meshFile.string());
  }

  // Errors of case against mesh name both files.
  std::unique_ptr<Analysis> makeAnalysis() const {
    try {
      return std::make_unique<Analysis>(mesh_, definition_, threads_);
    } catch (const InputError& error) {
      throw InputError(definition_.file.string() + ", mesh " + definition_.meshFile.string() + ": " + error.what());
    }
  }

  // The root has the name of the job, the other ranks have their number in it.
  std::string nameOfRank(int32_t rank) const {
    return definition_.job + (rank == 0 ? "" : ".rank" + std::to_string(rank));
  }

  // So that no file of an earlier run can be taken for one of this run.
  void removeEarlierFiles() const {
    for (const char* extension : {historyExtension, fieldsExtension, digestExtension})
      PartialFile::removeEarlier(resultFile(definition_, extension));
    const auto removeFilesOf = [&](int32_t rank) {
      bool found = false;
      for (const char* extension : {".msg", ".log", ".sta"}) {
        const std::filesystem::path file = definition_.outputDirectory / (nameOfRank(rank) + extension);
        std::error_code error;
        found = std::filesystem::remove(file, error) || found;
        if (error) throw WriteError(file, "the older file cannot be removed: " + error.message());
      }
      return found;
    };
    for (int32_t rank = ranks_.size(); removeFilesOf(rank);) ++rank;
  }

  // The root makes the directory; every rank has message, status and log files of its own.
  void openFiles() {
    if (ranks_.isRoot()) {
      std::error_code error;
      std::filesystem::create_directories(definition_.outputDirectory, error);
      if (error) throw WriteError(definition_.outputDirectory, "the directory cannot be made: " + error.message());
      removeEarlierFiles();
    }
    ranks_.synchronise();
    host::installSignalHandlers();
    host::openJob(nameOfRank(ranks_.rank()), definition_.outputDirectory);
    std::string banner(79, ' ');
    GLO_UTI_GETVERSIONDATETIME(banner.data(), static_cast<int64_t>(banner.size()));
    message("Table", "%S", {banner});
    message("Step", "EXPLICIT DYNAMICS, JOB %S", {definition_.job});
    for (const std::string& line : description_) message("Table", "%S", {line});
  }

  // Failures of the message file itself go to standard error.
  static void closeJobFiles() noexcept {
    try {
      host::closeJob();
    } catch (const std::exception& error) {
      reportError(error.what());
    }
  }

  // closeJob reports the file that could not be written; the run then fails with that error.
  void closeAfter(RankFailure& failure) const noexcept {
    try {
      host::closeJob();
    } catch (const std::system_error& error) {
      if (failure.code == exitNotWritten && failure.rank == ranks_.rank())
        failure.text = withRank(failure.rank, error.what());
      else
        reportError(withRank(ranks_.rank(), error.what()));
    }
  }

  ExitCode analyse(Analysis& analysis) {
    std::vector<std::string> info = description_;
    info.insert(info.end(), caseFile_.lines.begin(), caseFile_.lines.end());
    Output output(definition_, mesh_, info, ranks_, options_.digest);
    DiagnosticCourse course(definition_, ranks_);
    analysis.setObserver([&](const Progress& now, double increment) { course.increment(now, increment); });
    if (definition_.historyFilter) output.filterHistory(analysis);
    output.writeHistory(analysis);
    output.writeFields(analysis);
    showProgress(analysis, output);

    const Ending ending = advance(analysis, output);
    terminal_.endProgress();
    output.close();
    // no rank can fail from here on; a signal to one rank counts for all
    if (!ranks_.allAgree(ending != Ending::Killed && !host::killSignal())) host::requestKill();
    return ending == Ending::Complete ? complete(analysis, output, course) : endEarly(analysis, ending, output, course);
  }

  ExitCode complete(const Analysis& analysis, const Output& output, DiagnosticCourse& course) {
    course.end();
    message("Note", "The analysis is complete after %S increments; its energy balance is off by %R of the energy.",
            {std::to_string(analysis.progress().increment)}, {output.energy().relative()});
    endAnalysis(exitPhaseComplete);
    // a signal after the last increment interrupts the job; the root decides
    const bool completed = ranks_.allAgree(!ranks_.isRoot() || host::jobStatus() == statusCompleted);
    host::closeJob();
    ranks_.synchronise();
    if (!completed) return reportInterruption(analysis, output);
    output.complete();
    ranks_.synchronise();
    showSummary(analysis, output);
    return exitComplete;
  }

  // Writes history and fields at their times, and for the last finite state whatever the ending.
  Ending advance(Analysis& analysis, Output& output) {
    Schedule fields(definition_.outputInterval, definition_.endTime);
    Schedule history(definition_.historyInterval, definition_.endTime);
    constexpr int64_t allIncrements = std::numeric_limits<int64_t>::max();
    Ending ending = Ending::Running;
    while (ending == Ending::Running) {
      const Clock::time_point start = Clock::now();
      // a filter sees every increment
      ending =
          analysis.advanceTo(std::min(fields.next(), history.next()), definition_.historyFilter ? 1 : allIncrements);
      computing_ += Clock::now() - start;
      if (!std::isfinite(analysis.energies().balance())) ending = Ending::NotFinite;
      if (ending == Ending::NotFinite) return ending;
      if (definition_.historyFilter) output.filterHistory(analysis);

      const double time = analysis.progress().time;
      const bool atEnd = ending != Ending::Running;
      if (history.reach(time) || atEnd) output.writeHistory(analysis);
      if (fields.reach(time) || atEnd) output.writeFields(analysis);
      showProgress(analysis, output);
    }
    return ending;
  }

  ExitCode endEarly(const Analysis& analysis, Ending ending, const Output& output, DiagnosticCourse& course) {
    const std::string reason = describeEnding(ending, analysis, definition_, firstIncrement_);
    if (ending == Ending::Distorted) course.reportDistortion(analysis.ownDistortedElements());
    course.reportEnding(ending, reason);
    course.end();
    if (ending == Ending::Killed) {
      message("Warning", "%S", {reason});
      endAnalysis(exitPhaseComplete);
      closeJobFiles();
      return reportInterruption(analysis, output);
    }
    message("Error", "%S", {reason});
    if (ending != Ending::Stopped || !host::threadError()) endAnalysis(exitErrors); // otherwise the kernel has ended it
    closeJobFiles();
    if (ranks_.isRoot()) reportError(reason + "; what was computed is in " + output.leftovers());
    return exitEndedEarly;
  }

  ExitCode reportInterruption(const Analysis& analysis, const Output& output) const {
    if (ranks_.isRoot())
      reportError(describeEnding(Ending::Killed, analysis, definition_, firstIncrement_) +
                  "; what was computed is in " + output.leftovers());
    return exitInterrupted;
  }

  void showProgress(const Analysis& analysis, const Output& output) {
    const Progress now = analysis.progress();
    terminal_.progress({now.time, definition_.endTime, now.stableIncrement, output.energy().relative(), now.increment});
  }

  void showSummary(const Analysis& analysis, const Output& output) {
    const double seconds = computing_.count();
    terminal_.line("complete: " + std::to_string(analysis.progress().increment) + " increments in " +
                   shortNumber(seconds) + " s, " +
                   shortNumber(static_cast<double>(analysis.elementUpdates()) / seconds / 1e6) +
                   " million brick increments a second");
    terminal_.line("fields at " + counted(static_cast<std::size_t>(output.count()), "time") + " in " +
                   output.fieldsName() + ", history in " + output.historyName());
  }

  const JobOptions& options_;
  Terminal& terminal_;
  const Ranks& ranks_;
  int threads_;
  CaseFile caseFile_;
  const Case& definition_;
  Mesh mesh_;
  double firstIncrement_ = 0;
  std::vector<std::string> description_;
  std::chrono::duration<double> computing_{0};
};

} // namespace

ExitCode runJob(const JobOptions& options) {
  const Ranks ranks;
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
