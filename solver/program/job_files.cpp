#include "solver/program/job_files.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/program/failure.h"
#include "solver/program/job.h"
#include "solver/program/messages.h"
#include "solver/program/output.h"
#include "solver/results/partial_file.h"

#include <filesystem>
#include <system_error>

namespace sharedanalysis::solver {

namespace {

// The root has the name of the job, the other ranks have their number in it.
std::string nameOfRank(const Case& definition, int32_t rank) {
  return definition.job + (rank == 0 ? "" : ".rank" + std::to_string(rank));
}

// So that no file of an earlier run can be taken for one of this run.
void removeEarlierFiles(const Case& definition, const Ranks& ranks) {
  for (const char* extension : {historyExtension, fieldsExtension, digestExtension})
    PartialFile::removeEarlier(resultFile(definition, extension));
  const auto removeFilesOf = [&](int32_t rank) {
    bool found = false;
    for (const char* extension : {".msg", ".log", ".sta"}) {
      const std::filesystem::path file = definition.outputDirectory / (nameOfRank(definition, rank) + extension);
      std::error_code error;
      found = std::filesystem::remove(file, error) || found;
      if (error) throw WriteError(file, "the older file cannot be removed: " + error.message());
    }
    return found;
  };
  for (int32_t rank = ranks.size(); removeFilesOf(rank);) ++rank;
}

} // namespace

void openJobFiles(const Case& definition, const Ranks& ranks, const std::vector<std::string>& description) {
  if (ranks.isRoot()) {
    std::error_code error;
    std::filesystem::create_directories(definition.outputDirectory, error);
    if (error) throw WriteError(definition.outputDirectory, "the directory cannot be made: " + error.message());
    removeEarlierFiles(definition, ranks);
  }
  ranks.synchronise();
  host::installSignalHandlers();
  host::openJob(nameOfRank(definition, ranks.rank()), definition.outputDirectory);
  std::string banner(79, ' ');
  GLO_UTI_GETVERSIONDATETIME(banner.data(), static_cast<int64_t>(banner.size()));
  message("Table", "%S", {banner});
  message("Step", "EXPLICIT DYNAMICS, JOB %S", {definition.job});
  for (const std::string& line : description) message("Table", "%S", {line});
}

void closeJobFiles() noexcept {
  try {
    host::closeJob();
  } catch (const std::exception& error) {
    reportError(error.what());
  }
}

void closeJobFiles(RankFailure& failure, const Ranks& ranks) noexcept {
  try {
    host::closeJob();
  } catch (const std::system_error& error) {
    if (failure.code == exitNotWritten && failure.rank == ranks.rank())
      failure.text = withRank(failure.rank, error.what());
    else
      reportError(withRank(ranks.rank(), error.what()));
  }
}

} // namespace sharedanalysis::solver
