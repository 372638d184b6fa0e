#include "solver/program/job_files.h"

#include "glo.h"
#include "reference_host.h"
#include "solver/program/failure.h"
#include "solver/program/job.h"
#include "solver/program/messages.h"
#include "solver/program/output.h"
#include "solver/results/partial_file.h"
#include "solver/results/restart_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace sharedanalysis::solver {

namespace {

// The root has the name of the job, the other ranks have their number in it.
std::string nameOfRank(const Case& definition, int32_t rank) {
  return definition.job + (rank == 0 ? "" : ".rank" + std::to_string(rank));
}

// So that no file of an earlier run can be taken for one of this run.
void removeEarlierFiles(const Case& definition, Start start) {
  if (start == Start::New) {
    for (const char* extension : {historyExtension, eventsExtension, fieldsExtension, digestExtension})
      PartialFile::removeEarlier(resultFile(definition, extension));
    removeRestart(resultFile(definition, restartExtension));
  }
}

// Those of ranks beside the root; not every rank has had some.
void removeRankFiles(const Case& definition) {
  const std::string begin = definition.job + ".rank";
  std::vector<std::filesystem::path> old;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(definition.outputDirectory, error)) {
    const std::string name = entry.path().filename().string();
    const std::size_t dot = name.find_first_not_of("0123456789", begin.size());
    if (!name.starts_with(begin) || dot == begin.size() || dot == std::string::npos || entry.is_directory(error))
      continue;
    for (const char* extension : {".msg", ".log", ".sta"})
      if (name.compare(dot, std::string::npos, extension) == 0) old.push_back(entry.path());
  }
  for (const std::filesystem::path& file : old)
    if (!std::filesystem::remove(file, error) && error)
      throw WriteError(file, "the older file cannot be removed: " + error.message());
}

} // namespace

JobLock::JobLock(const Case& definition) : file_(definition.outputDirectory / (definition.job + ".lock")) {
  // a run that ends removes the file under its lock: what was locked then is no longer the file of the name
  for (bool isOfTheName = false; !isOfTheName;) {
    descriptor_ = ::open(file_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0666);
    if (descriptor_ < 0) throw WriteError(file_, std::strerror(errno));
    struct stat locked = {}, named = {};
    if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
      const int reason = errno;
      ::close(descriptor_);
      throw WriteError(file_, reason == EWOULDBLOCK
                                  ? "another run of job \"" + definition.job + "\" writes into this directory"
                                  : std::strerror(reason));
    }
    isOfTheName = ::fstat(descriptor_, &locked) == 0 && ::stat(file_.c_str(), &named) == 0 &&
                  locked.st_ino == named.st_ino && locked.st_dev == named.st_dev;
    if (!isOfTheName) ::close(descriptor_);
  }
}

JobLock::~JobLock() {
  ::unlink(file_.c_str());
  ::close(descriptor_);
}

std::unique_ptr<JobLock> lockJob(const Case& definition, const Ranks& ranks, Start start) {
  if (!ranks.isRoot()) return {};
  std::error_code error;
  if (start == Start::New) std::filesystem::create_directories(definition.outputDirectory, error);
  if (error) throw WriteError(definition.outputDirectory, "the directory cannot be made: " + error.message());
  if (start == Start::GoOn && !std::filesystem::is_directory(definition.outputDirectory, error))
    throw InputError(definition.outputDirectory.string() +
                     ": is no directory, and the results that the run goes on with are to be there");
  return std::make_unique<JobLock>(definition);
}

void openJobFiles(const Case& definition, const Ranks& ranks, const std::vector<std::string>& description, Start start,
                  bool rankFiles) {
  if (ranks.isRoot()) removeRankFiles(definition);
  ranks.synchronise();
  host::installSignalHandlers();
  host::openJob(nameOfRank(definition, ranks.rank()), definition.outputDirectory,
                ranks.isRoot() || rankFiles ? host::FilesMade::AtOnce : host::FilesMade::WhenNeeded);
  ranks.synchronise();
  if (ranks.isRoot()) removeEarlierFiles(definition, start);
  std::string banner(79, ' ');
  GLO_UTI_GETVERSIONDATETIME(banner.data(), static_cast<int64_t>(banner.size()));
  message("Table", "%S", {banner});
  message("Step", "EXPLICIT DYNAMICS, JOB %S", {definition.job});
  for (const std::string& line : description) message("Table", "%S", {line});
  host::beginChapter(host::Chapter::Course);
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
