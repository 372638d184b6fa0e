#include "job.h"

#include "diagnostic_store.h"
#include "resources.h"
#include "threads.h"

namespace sharedanalysis::host {

Job& job() {
  static Job& instance = *new Job;
  return instance;
}

JobFiles Job::open(const std::string& name, const std::filesystem::path& directory) {
  const std::filesystem::path base = directory / name;
  const auto file = [&](const char* extension) {
    std::filesystem::path path = base;
    path += extension;
    return path;
  };
  JobFiles files{file(".msg"), file(".log"), file(".sta")};

  const std::lock_guard lock(mutex_);
  lastError_.clear();
  status = -1;
  threadError = false;
  transmitterClosing = false;
  try {
    message_.open(files.message);
    log_.open(files.log);
    status_.open(files.status);
  } catch (...) {
    closeFiles();
    throw;
  }
  return files;
}

void Job::close() {
  const std::lock_guard lock(mutex_);
  if (!message_.isOpen()) return;
  closeFiles();
  for (const TextFile* file : files_)
    if (file->error()) throw std::system_error(file->error(), "cannot write " + file->path().string());
}

std::error_code Job::error() {
  const std::lock_guard lock(mutex_);
  for (const TextFile* file : files_)
    if (file->error()) return file->error();
  return {};
}

void Job::write(int32_t unit, std::string_view lines, int64_t count) {
  const std::lock_guard lock(mutex_);
  if (TextFile* file = fileOf(unit)) {
    file->write(lines);
  } else {
    unfiled += count;
  }
}

void Job::writeStatus(std::string_view line) {
  constexpr std::string_view kError = "Error ";
  const std::lock_guard lock(mutex_);
  if (line.starts_with(kError)) lastError_ = line.substr(kError.size(), line.size() - kError.size() - 1);
  if (!status_.isOpen()) {
    ++unfiled;
    return;
  }
  status_.write(line);
  for (TextFile* file : files_) file->flush();
}

void Job::flush(int32_t unit) {
  const std::lock_guard lock(mutex_);
  if (TextFile* file = fileOf(unit)) file->flush();
}

std::string Job::lastError() {
  const std::lock_guard lock(mutex_);
  return lastError_;
}

TextFile* Job::fileOf(int32_t unit) {
  TextFile* file = unit == kMessageFile ? &message_ : unit == kSecondChannel || unit == kPrintedUnit ? &log_ : nullptr;
  return file != nullptr && file->isOpen() ? file : nullptr;
}

void Job::closeFiles() {
  for (TextFile* file : files_) file->close();
}

JobFiles openJob(const std::string& name, const std::filesystem::path& directory) {
  closeJob();
  const JobFiles files = job().open(name, directory);
  try {
    diagnostics().open(name, directory);
  } catch (...) {
    job().close();
    throw;
  }
  resetErrorStatusAndCounters();
  return files;
}

void closeJob() {
  deliverAll();
  const std::filesystem::path database = diagnosticDatabase();
  const std::error_code error = diagnostics().close();
  job().close();
  if (error) throw std::system_error(error, "cannot write " + database.string());
}

std::string lastError() { return job().lastError(); }

std::error_code writeError() {
  const std::error_code error = job().error();
  return error ? error : diagnostics().error();
}
int64_t unfiledRecords() {
  deliverAll();
  return job().unfiled;
}
int32_t jobStatus() { return job().status; }
bool threadError() { return job().threadError; }
bool transmitterClosing() { return job().transmitterClosing; }

} // namespace sharedanalysis::host
