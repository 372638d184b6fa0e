#include "job.h"

#include "diagnostic_store.h"
#include "resources.h"
#include "threads.h"

#include <algorithm>
#include <utility>

namespace sharedanalysis::host {

Job& job() {
  static Job& instance = *new Job;
  return instance;
}

JobFiles Job::open(const std::string& name, const std::filesystem::path& directory, FilesMade when) {
  const std::filesystem::path base = directory / name;
  const auto file = [&](const char* extension) {
    std::filesystem::path path = base;
    path += extension;
    return path;
  };
  const std::lock_guard lock(mutex_);
  names_ = {file(".msg"), file(".log"), file(".sta")};
  lastError_.clear();
  status = -1;
  threadError = false;
  transmitterClosing = false;
  chapter_ = Chapter::Heading;
  areAwaited_ = when == FilesMade::WhenNeeded;
  if (!areAwaited_) openFiles();
  return names_;
}

void Job::openFiles() {
  try {
    message_.open(names_.message);
    log_.open(names_.log);
    status_.open(names_.status);
  } catch (...) {
    closeFiles();
    throw;
  }
}

void Job::begin(Chapter chapter) {
  const std::lock_guard lock(mutex_);
  chapter_ = chapter;
}

bool Job::takes(TextFile* file, std::string_view text) {
  if (!areAwaited_) return false;
  if (chapter_ == Chapter::Heading)
    heading_[static_cast<std::size_t>(std::find(files_.begin(), files_.end(), file) - files_.begin())] += text;
  if (chapter_ != Chapter::Course) return true;
  areAwaited_ = false;
  try {
    openFiles();
    for (std::size_t k = 0; k < files_.size(); ++k) files_[k]->write(std::exchange(heading_[k], {}));
  } catch (const std::system_error& error) {
    notMade_ = error;
  }
  return false;
}

void Job::close() {
  const std::lock_guard lock(mutex_);
  areAwaited_ = false;
  heading_ = {};
  if (notMade_) throw std::system_error(*std::exchange(notMade_, std::nullopt));
  if (!message_.isOpen()) return;
  closeFiles();
  for (const TextFile* file : files_)
    if (file->error()) throw std::system_error(file->error(), "cannot write " + file->path().string());
}

std::error_code Job::error() {
  const std::lock_guard lock(mutex_);
  if (notMade_) return notMade_->code();
  for (const TextFile* file : files_)
    if (file->error()) return file->error();
  return {};
}

void Job::write(int32_t unit, std::string_view lines, int64_t count) {
  const std::lock_guard lock(mutex_);
  TextFile* const file = fileOf(unit);
  if (file != nullptr && takes(file, lines)) return;
  if (file != nullptr && file->isOpen()) {
    file->write(lines);
  } else {
    unfiled += count;
  }
}

void Job::writeStatus(std::string_view line) {
  constexpr std::string_view kError = "Error ";
  const std::lock_guard lock(mutex_);
  if (line.starts_with(kError)) lastError_ = line.substr(kError.size(), line.size() - kError.size() - 1);
  if (takes(&status_, line)) return;
  if (!status_.isOpen()) {
    ++unfiled;
    return;
  }
  status_.write(line);
  for (TextFile* file : files_) file->flush();
}

void Job::flush(int32_t unit) {
  const std::lock_guard lock(mutex_);
  if (TextFile* file = fileOf(unit)) file->flush(); // nothing where it is not open
}

std::string Job::lastError() {
  const std::lock_guard lock(mutex_);
  return lastError_;
}

TextFile* Job::fileOf(int32_t unit) {
  return unit == kMessageFile ? &message_ : unit == kSecondChannel || unit == kPrintedUnit ? &log_ : nullptr;
}

void Job::closeFiles() {
  for (TextFile* file : files_) file->close();
}

JobFiles openJob(const std::string& name, const std::filesystem::path& directory, FilesMade when) {
  closeJob();
  const JobFiles files = job().open(name, directory, when);
  try {
    diagnostics().open(name, directory);
  } catch (...) {
    job().close();
    throw;
  }
  resetErrorStatusAndCounters();
  return files;
}

JobFiles openJob(const std::string& name, const std::filesystem::path& directory) {
  return openJob(name, directory, FilesMade::AtOnce);
}

void beginChapter(Chapter chapter) {
  deliverAll(); // what was said before is of the one before
  job().begin(chapter);
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
