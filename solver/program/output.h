// The result files of a run: history, fields and digest.
#pragma once

#include "solver/parallel/ranks.h"
#include "solver/program/schedule.h"
#include "solver/results/digest.h"
#include "solver/results/event_file.h"
#include "solver/results/history.h"
#include "solver/results/results.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Extensions of the files, each behind the name of the job.
inline constexpr const char *historyExtension = ".csv", *fieldsExtension = ".exo", *digestExtension = ".digest",
                            *restartExtension = ".restart", *eventsExtension = ".events.csv";

// Of all files that a run writes or removes.
inline const std::vector<std::string> resultExtensions{
    historyExtension, fieldsExtension, digestExtension, restartExtension, eventsExtension,
    ".msg",           ".sta",          ".log",          ".lock",          ".diagnostics.sqlite"};
std::filesystem::path resultFile(const Case& definition, const char* extension);

// The root writes the files from values that all ranks send, or every rank has a file of fields: every rank calls the members.
class Output {
public:
  // `energyScale` as an analysis has it.
  Output(const Case& definition, const Mesh& mesh, const std::vector<std::string>& info, const Ranks& ranks,
         double energyScale, bool digest, Start start);

  // How far the results have come, of the root also in its files.  Restoring opens those that an earlier run has left, and throws
  // InputError where they do not fit.
  void visit(Archive& archive);
  // Brings what was written so far to the device.
  void synchronise() const;
  void filterHistory(const Analysis& analysis);
  void writeEvents(const BrickEvents& events);
  int64_t roomForEvents() const { return events_ ? events_->room() : 0; }
  void writeHistory(const Analysis& analysis);
  void writeFields(const Analysis& analysis);
  void close();
  // Gives the closed files their names.
  void complete() const;

  const EnergyCheck& energy() const { return check_; }
  int64_t count() const { return results_->count(); }
  // The files that a run leaves when it ends early.
  std::string leftovers() const { return fieldsName() + ".partial and " + historyPath_.string() + ".partial"; }
  std::string fieldsName() const; // of all ranks: "JOB.exo.4.*"
  std::string historyName() const { return historyPath_.string(); }
  // ", 12 events in FILE", when there are any.
  std::string eventsText() const;

private:
  EnergyCheck check_;
  const Ranks& ranks_;
  std::filesystem::path fieldsPath_, historyPath_;
  std::optional<HistoryFile> history_;
  std::optional<EventFile> events_;
  std::optional<ResultsFile> results_;
  std::optional<DigestFile> digest_;
  std::function<void(Start)> makeDigest_;
  bool filesByRank_;
};

} // namespace sharedanalysis::solver
