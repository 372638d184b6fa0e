#include "solver/program/job.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/analysis/analysis.h"
#include "solver/analysis/ranks.h"
#include "solver/input/case_reader.h"
#include "solver/input/mesh_reader.h"
#include "solver/model/text.h"
#include "solver/program/diagnostics.h"
#include "solver/program/terminal.h"
#include "solver/results/digest.h"
#include "solver/results/hash.h"
#include "solver/results/history.h"
#include "solver/results/results.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <limits>
#include <memory>
#include <omp.h>
#include <optional>

namespace sharedanalysis::solver {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t noChannel = 0;
constexpr int32_t statusCompleted = 1; // what GLO_UTI_EXIT tells the host of a complete phase

// A message of the analysis to the message file, or to the status file when it is a "Status" or an "Error".
void message(const char* type, const char* text, const std::vector<std::string>& strings = {},
             std::initializer_list<double> reals = {}) {
  std::vector<const char*> pointers;
  for (const std::string& string : strings) pointers.push_back(string.c_str());
  const bool status = std::string(type) == "Status";
  glo_uti_CWrite(status ? noChannel : GLO_UNIT_MESSAGE_FILE, 1, type, text, nullptr, reals.begin(), pointers.data());
}

void endAnalysis(int32_t code) { GLO_UTI_EXIT(&code); }

double elasticModulus(const Material& material) {
  const double G = material.shearModulus(), K = material.bulkModulus();
  return 9 * K * G / (3 * K + G);
}

double poissonRatio(const Material& material) {
  const double G = material.shearModulus(), K = material.bulkModulus();
  return (3 * K - 2 * G) / (2 * (3 * K + G));
}

double dilatationalSpeed(const Material& material) {
  return std::sqrt((material.bulkModulus() + 4 * material.shearModulus() / 3) / material.density);
}

// What is run, as lines for the terminal and for the results.
std::vector<std::string> describe(const Case& definition, const Mesh& mesh, const Ranks& ranks, int threads,
                                  double stableIncrement) {
  std::vector<std::string> lines{"job " + definition.job + ": " + definition.title,
                                 "mesh " + definition.meshFile.string() + ": " + std::to_string(mesh.nodes()) +
                                     " nodes, " + std::to_string(mesh.elements()) + " bricks"};
  std::vector<std::string> groups;
  for (const Group& group : mesh.groups)
    groups.push_back(
        group.name + " (" +
        (group.dimension == 3 ? counted(group.elements.size(), "brick") : counted(group.nodes.size(), "node")) + ")");
  lines.push_back("groups " + joined(groups, ", "));
  for (const Material& material : definition.materials)
    lines.push_back("material " + material.name + ": E " + shortNumber(elasticModulus(material) / 1e6) + " MPa, nu " +
                    shortNumber(poissonRatio(material)) + ", density " + shortNumber(material.density) +
                    " kg/m3, wave speed " + shortNumber(dilatationalSpeed(material)) + " m/s");
  lines.push_back("end time " + shortNumber(definition.endTime) + " s, first stable increment " +
                  shortNumber(stableIncrement) + " s, " +
                  (ranks.areSeveral() ? counted(static_cast<std::size_t>(ranks.size()), "rank") + " of " : "") +
                  counted(static_cast<std::size_t>(threads), "thread"));
  return lines;
}

// Times at which something is written: multiples of an interval that never pile up rounding, and the end.
class Schedule {
public:
  Schedule(double interval, double end) : interval_(interval), end_(end) {}
  // The first time after the last one that was passed; one that falls a rounding error before the end is the end.
  double next() const {
    const double time = static_cast<double>(passed_ + 1) * interval_;
    return time < end_ - 1e-6 * interval_ ? time : end_;
  }
  // Whether `time` meets the next time; then the one after it is next.
  bool reach(double time) {
    if (time < next() - 1e-6 * interval_) return false;
    ++passed_;
    return true;
  }

private:
  double interval_, end_;
  int64_t passed_ = 0;
};

// The change of total - external since the start, and its size beside the largest energy so far.
class EnergyCheck {
public:
  void update(const Energies& energies) {
    if (!started_) first_ = energies.balance();
    started_ = true;
    error_ = energies.balance() - first_;
    largest_ = std::max({largest_, energies.total(), std::abs(energies.external)});
  }
  double error() const { return error_; }
  double relative() const { return largest_ > 0 ? std::abs(error_) / largest_ : 0; }

private:
  bool started_ = false;
  double first_ = 0, error_ = 0, largest_ = 0;
};

constexpr const char *historyExtension = ".csv", *fieldsExtension = ".exo", *digestExtension = ".digest";

std::filesystem::path resultFile(const Case& definition, const char* extension) {
  return definition.outputDirectory / (definition.job + extension);
}

// The result files of a run that goes on.  The root has them; the other ranks bring it what it writes: every rank calls the
// members.
class Output {
public:
  Output(const Case& definition, const Mesh& mesh, const std::vector<std::string>& info, const Ranks& ranks,
         bool digest)
      : fieldsPath_(resultFile(definition, fieldsExtension)), historyPath_(resultFile(definition, historyExtension)) {
    if (!ranks.isRoot()) return;
    history_.emplace(historyPath_, definition.historyFilter);
    results_.emplace(fieldsPath_, mesh, definition, info);
    if (digest) digest_.emplace(resultFile(definition, digestExtension), definition.job, mesh);
  }

  void filterHistory(const Analysis& analysis) {
    analysis.energies(); // every rank has a part in them
    if (history_) history_->filter(analysis);
  }

  void writeHistory(const Analysis& analysis) {
    check_.update(analysis.energies());
    if (history_) history_->write(analysis, check_.error());
  }

  void writeFields(const Analysis& analysis) {
    const Progress now = analysis.progress();
    const Energies energies = analysis.energies();
    if (results_) {
      const Fields fields = analysis.fields();
      results_->write(now.time, fields, energies);
      if (digest_) digest_->write(now, fields, energies);
      message("Status", "increment %S time %R stable increment %R kinetic energy %R total energy %R energy error %R",
              {std::to_string(now.increment)},
              {now.time, now.stableIncrement, energies.kinetic, energies.total(), check_.error()});
    }
    if (const std::error_code error = host::writeError())
      throw std::system_error(error, "a message, status or diagnostics file could not be written");
  }

  void close() {
    if (history_) history_->close();
    if (results_) results_->close();
    if (digest_) digest_->close();
  }

  void complete() const {
    if (history_) history_->file().complete();
    if (results_) results_->file().complete();
    if (digest_) digest_->file().complete();
  }

  const EnergyCheck& energy() const { return check_; }
  int count() const { return results_ ? results_->count() : 0; }
  // Where results of a run that did not come to its end are.
  std::string leftovers() const { return fieldsPath_.string() + ".partial and " + historyPath_.string() + ".partial"; }
  std::string fieldsName() const { return fieldsPath_.string(); }
  std::string historyName() const { return historyPath_.string(); }

private:
  std::filesystem::path fieldsPath_, historyPath_;
  EnergyCheck check_;
  std::optional<HistoryFile> history_;
  std::optional<ResultsFile> results_;
  std::optional<DigestFile> digest_;
};

// What all ranks must have read alike.
uint64_t inputHash(const CaseFile& caseFile, const Mesh& mesh) {
  Hash hash;
  for (const std::string& line : caseFile.lines) hash.add(line);
  hash.add(mesh);
  return hash.value();
}

// An error that all ranks end with.
class JobFailed : public std::runtime_error {
public:
  explicit JobFailed(RankFailure failure) : std::runtime_error(failure.text), failure_(std::move(failure)) {}
  const RankFailure& failure() const { return failure_; }

private:
  RankFailure failure_;
};

// The exception that is being handled, as an exit code and a text.
RankFailure describeException() {
  try {
    throw;
  } catch (const InputError& error) {
    return {0, exitInput, error.what()};
  } catch (const WriteError& error) {
    return {0, exitNotWritten, error.what()};
  } catch (const std::system_error& error) {
    return {0, exitNotWritten, error.what()};
  } catch (const std::bad_alloc&) {
    return {0, exitEndedEarly, "the memory does not suffice for this model"};
  } catch (const std::exception& error) {
    return {0, exitEndedEarly, error.what()};
  }
}

std::string withRank(int32_t rank, const std::string& text) {
  return rank == 0 ? text : "rank " + std::to_string(rank) + ": " + text;
}

// The failure that ends all ranks, for the exception that is being handled on this one.
RankFailure failureOfAll(const Ranks& ranks) {
  try {
    try {
      throw;
    } catch (const RankFailed& error) {
      return ranks.settle(error.failure(), error.teller());
    } catch (const RankLost&) {
      throw;
    } catch (...) {
      const RankFailure failure = describeException();
      return ranks.settle({ranks.rank(), failure.code, withRank(ranks.rank(), failure.text)}, ranks.rank());
    }
  } catch (const RankLost& error) {
    // there is nobody to settle it with
    reportError(error.what());
    host::abortRanks(exitEndedEarly);
    return {ranks.rank(), exitEndedEarly, error.what()};
  }
}

// The early end of an analysis in words.
std::string describeEnding(Ending ending, const Analysis& analysis, const Case& definition, double firstIncrement) {
  const Progress now = analysis.progress();
  const std::string at = " at time " + shortNumber(now.time) + " s, increment " + std::to_string(now.increment);
  switch (ending) {
  case Ending::Distorted: {
    constexpr std::size_t shown = 8;
    const std::vector<int64_t>& bricks = analysis.distortedElements();
    std::vector<std::string> numbers;
    for (std::size_t k = 0; k < std::min(shown, bricks.size()); ++k) numbers.push_back(std::to_string(bricks[k]));
    return counted(bricks.size(), "brick") + " distorted beyond computing" + at + ": number " + joined(numbers, ", ") +
           (bricks.size() > shown ? ", ..." : "");
  }
  case Ending::IncrementCollapsed:
    return "the stable increment fell to " + shortNumber(now.stableIncrement) + " s" + at + ", below " +
           shortNumber(definition.smallestIncrementRatio) + " of the first one (" + shortNumber(firstIncrement) + " s)";
  case Ending::Stopped:
    return "a material could not go on" + at + "; the message file says why";
  case Ending::NotFinite:
    return "a position, velocity or energy is no longer a finite number" + at;
  default:
    return "interrupted" + at;
  }
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
      // the job ends in order on all ranks, then the error goes on
      RankFailure failure = failureOfAll(ranks_);
      message("Error", "%S", {failure.text});
      endAnalysis(failure.rank == ranks_.rank() ? GLO_EXIT_ERRORS : GLO_EXIT_ERRORS_ELSEWHERE);
      closeAfter(failure);
      throw JobFailed(failure);
    }
  }

private:
  // Asked before the mesh is read: Gmsh sets OpenMP to one thread.  Several ranks share their machine: each takes more than
  // one thread only when it is told to.
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

  // What is wrong between case and mesh is told with the names of both.
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

  // Whatever fails from here on, nothing of an earlier run passes for a part of this one.
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

  // The message file is of no use to tell about its own failure.
  static void closeJobFiles() noexcept {
    try {
      host::closeJob();
    } catch (const std::exception& error) {
      reportError(error.what());
    }
  }

  // Closing tells which file of the host could not be written: that is then what has failed.
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
    // from here on no rank waits for one that has failed; a signal to one rank is one to all of them
    if (!ranks_.allAgree(ending != Ending::Killed && !host::killSignal())) host::requestKill();
    return ending == Ending::Complete ? complete(analysis, output, course) : endEarly(analysis, ending, output, course);
  }

  ExitCode complete(const Analysis& analysis, const Output& output, DiagnosticCourse& course) {
    course.end();
    message("Note", "The analysis is complete after %S increments; its energy balance is off by %R of the energy.",
            {std::to_string(analysis.progress().increment)}, {output.energy().relative()});
    endAnalysis(GLO_EXIT_PHASE_COMPLETE);
    // a signal that came after the last increment has made the job an interrupted one; the root knows
    const bool completed = ranks_.allAgree(!ranks_.isRoot() || host::jobStatus() == statusCompleted);
    host::closeJob();
    ranks_.synchronise();
    if (!completed) return reportInterruption(analysis, output);
    output.complete();
    ranks_.synchronise();
    showSummary(analysis, output);
    return exitComplete;
  }

  // History and fields are written on the way and, whatever the ending, for the last state that has numbers.
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
      endAnalysis(GLO_EXIT_PHASE_COMPLETE);
      closeJobFiles();
      return reportInterruption(analysis, output);
    }
    message("Error", "%S", {reason});
    if (ending != Ending::Stopped || !host::threadError()) endAnalysis(GLO_EXIT_ERRORS); // else it is ended
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

void reportError(const std::string& text) {
  const std::string line = "error: " + text + '\n';
  std::fwrite(line.data(), 1, line.size(), stderr);
}

ExitCode runJob(const JobOptions& options) {
  const Ranks ranks;
  // launchers pass on what ranks show, and pretend to be a terminal
  Terminal terminal(options.quiet || !ranks.isRoot(), ranks.areSeveral());
  // told once, by the rank where it began
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
