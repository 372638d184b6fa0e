#include "job.h"

#include "analysis.h"
#include "case_reader.h"
#include "glo.h"
#include "history.h"
#include "mesh_reader.h"
#include "reference_host.h"
#include "results.h"
#include "terminal.h"
#include "text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <omp.h>

namespace sharedanalysis::solver {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int32_t noChannel = 0, messageFile = -6;
constexpr int32_t exitErrors = 20, exitPhaseComplete = 22; // codes of GLO_UTI_EXIT
constexpr int32_t statusCompleted = 1;                     // what it tells the host

// A message of the analysis to the message file, or to the status file when it is a "Status" or an "Error".
void message(const char* type, const char* text, const std::vector<std::string>& strings = {},
             std::initializer_list<double> reals = {}) {
  std::vector<const char*> pointers;
  for (const std::string& string : strings) pointers.push_back(string.c_str());
  const bool status = std::string(type) == "Status";
  glo_uti_CWrite(status ? noChannel : messageFile, 1, type, text, nullptr, reals.begin(), pointers.data());
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
std::vector<std::string> describe(const Case& definition, const Mesh& mesh, int threads, double stableIncrement) {
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
                  shortNumber(stableIncrement) + " s, " + counted(static_cast<std::size_t>(threads), "thread"));
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

constexpr const char *historyExtension = ".csv", *fieldsExtension = ".exo";

std::filesystem::path resultFile(const Case& definition, const char* extension) {
  return definition.outputDirectory / (definition.job + extension);
}

// The result files of a run that goes on.
class Output {
public:
  Output(const Case& definition, const Mesh& mesh, const std::vector<std::string>& info)
      : history_(resultFile(definition, historyExtension)),
        results_(resultFile(definition, fieldsExtension), mesh, definition, info) {}

  void writeHistory(const Analysis& analysis) {
    check_.update(analysis.energies());
    history_.write(analysis, check_.error());
  }

  void writeFields(const Analysis& analysis) {
    results_.write(analysis.progress().time, analysis.fields(), analysis.energies());
    const Progress now = analysis.progress();
    const Energies energies = analysis.energies();
    message("Status", "increment %S time %R stable increment %R kinetic energy %R total energy %R energy error %R",
            {std::to_string(now.increment)},
            {now.time, now.stableIncrement, energies.kinetic, energies.total(), check_.error()});
    if (const std::error_code error = host::writeError())
      throw std::system_error(error, "the message or status file could not be written");
  }

  void close() {
    history_.close();
    results_.close();
  }

  void complete() const {
    history_.file().complete();
    results_.file().complete();
  }

  const EnergyCheck& energy() const { return check_; }
  const ResultsFile& results() const { return results_; }
  const HistoryFile& history() const { return history_; }

private:
  EnergyCheck check_;
  HistoryFile history_;
  ResultsFile results_;
};

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
  case Ending::NotFinite:
    return "a position, velocity or energy is no longer a finite number" + at;
  default:
    return "interrupted" + at;
  }
}

class Job {
public:
  Job(const JobOptions& options, Terminal& terminal)
      : options_(options), terminal_(terminal),
        // asked before the mesh is read: Gmsh sets OpenMP to one thread
        threads_(options.threads > 0 ? options.threads : std::min(omp_get_max_threads(), 1024)),
        caseFile_(readInput(options)), definition_(caseFile_.definition), mesh_(readMesh(definition_.meshFile)) {
    checkGroups(caseFile_, mesh_);
  }

  ExitCode run() {
    const std::unique_ptr<Analysis> model = makeAnalysis();
    Analysis& analysis = *model;
    firstIncrement_ = analysis.progress().stableIncrement;
    description_ = describe(definition_, mesh_, threads_, firstIncrement_);
    for (const std::string& line : description_) terminal_.line(line);
    if (options_.checkOnly) {
      terminal_.line("the input is sound; nothing was run");
      return exitComplete;
    }
    openFiles();
    try {
      return analyse(analysis);
    } catch (const std::exception& error) {
      // the job ends in order, then the error goes on
      message("Error", "%S", {error.what()});
      endAnalysis(exitErrors);
      closeJobFiles();
      throw;
    }
  }

private:
  static CaseFile readInput(const JobOptions& options) {
    CaseFile caseFile = readCase(options.caseFile);
    if (options.outputDirectory) caseFile.definition.outputDirectory = *options.outputDirectory;
    return caseFile;
  }

  // What is wrong between case and mesh is told with the names of both.
  std::unique_ptr<Analysis> makeAnalysis() const {
    try {
      return std::make_unique<Analysis>(mesh_, definition_, threads_);
    } catch (const InputError& error) {
      throw InputError(definition_.file.string() + ", mesh " + definition_.meshFile.string() + ": " + error.what());
    }
  }

  void openFiles() {
    std::error_code error;
    std::filesystem::create_directories(definition_.outputDirectory, error);
    if (error) throw WriteError(definition_.outputDirectory, "the directory cannot be made: " + error.message());
    // whatever fails from here on, no result of an earlier run passes for one of this run
    for (const char* extension : {historyExtension, fieldsExtension})
      PartialFile::removeEarlier(resultFile(definition_, extension));
    host::installSignalHandlers();
    host::openJob(definition_.job, definition_.outputDirectory);
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

  ExitCode analyse(Analysis& analysis) {
    std::vector<std::string> info = description_;
    info.insert(info.end(), caseFile_.lines.begin(), caseFile_.lines.end());
    Output output(definition_, mesh_, info);
    output.writeHistory(analysis);
    output.writeFields(analysis);
    showProgress(analysis, output);

    const Ending ending = advance(analysis, output);
    terminal_.endProgress();
    output.close();
    if (ending != Ending::Complete) return endEarly(analysis, ending, output);

    message("Note", "The analysis is complete after %S increments; its energy balance is off by %R of the energy.",
            {std::to_string(analysis.progress().increment)}, {output.energy().relative()});
    endAnalysis(exitPhaseComplete);
    // a signal that came after the last increment has made the job an interrupted one
    const bool completed = host::jobStatus() == statusCompleted;
    host::closeJob();
    if (!completed) return reportInterruption(analysis, output);
    output.complete();
    showSummary(analysis, output);
    return exitComplete;
  }

  // History and fields are written on the way and, whatever the ending, for the last state that has numbers.
  Ending advance(Analysis& analysis, Output& output) {
    Schedule fields(definition_.outputInterval, definition_.endTime);
    Schedule history(definition_.historyInterval, definition_.endTime);
    Ending ending = Ending::Running;
    while (ending == Ending::Running) {
      const Clock::time_point start = Clock::now();
      ending = analysis.advanceTo(std::min(fields.next(), history.next()));
      computing_ += Clock::now() - start;
      if (!std::isfinite(analysis.energies().balance())) ending = Ending::NotFinite;
      if (ending == Ending::NotFinite) return ending;

      const double time = analysis.progress().time;
      const bool atEnd = ending != Ending::Running;
      if (history.reach(time) || atEnd) output.writeHistory(analysis);
      if (fields.reach(time) || atEnd) output.writeFields(analysis);
      showProgress(analysis, output);
    }
    return ending;
  }

  ExitCode endEarly(const Analysis& analysis, Ending ending, const Output& output) {
    const std::string reason = describeEnding(ending, analysis, definition_, firstIncrement_);
    if (ending == Ending::Killed) {
      message("Warning", "%S", {reason});
      endAnalysis(exitPhaseComplete);
      closeJobFiles();
      return reportInterruption(analysis, output);
    }
    message("Error", "%S", {reason});
    endAnalysis(exitErrors);
    closeJobFiles();
    reportError(reason + "; what was computed is in " + output.results().file().path().string() + " and " +
                output.history().file().path().string());
    return exitEndedEarly;
  }

  ExitCode reportInterruption(const Analysis& analysis, const Output& output) {
    reportError(describeEnding(Ending::Killed, analysis, definition_, firstIncrement_) + "; what was computed is in " +
                output.results().file().path().string() + " and " + output.history().file().path().string());
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
    terminal_.line("fields at " + counted(static_cast<std::size_t>(output.results().count()), "time") + " in " +
                   output.results().file().name().string() + ", history in " + output.history().file().name().string());
  }

  const JobOptions& options_;
  Terminal& terminal_;
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
  Terminal terminal(options.quiet);
  const auto fail = [&](ExitCode code, const std::string& text) {
    terminal.endProgress();
    reportError(text);
    return code;
  };
  try {
    return Job(options, terminal).run();
  } catch (const InputError& error) {
    return fail(exitInput, error.what());
  } catch (const WriteError& error) {
    return fail(exitNotWritten, error.what());
  } catch (const std::system_error& error) {
    return fail(exitNotWritten, error.what());
  } catch (const std::bad_alloc&) {
    return fail(exitEndedEarly, "the memory does not suffice for this model");
  } catch (const std::exception& error) {
    return fail(exitEndedEarly, error.what());
  }
}

} // namespace sharedanalysis::solver
