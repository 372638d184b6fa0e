#include "solver/results/partial_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace sharedanalysis::solver {

namespace {

std::filesystem::path partialName(const std::filesystem::path& name) { return name.string() + ".partial"; }

} // namespace

PartialFile::PartialFile(const std::filesystem::path& name) : name_(name), partial_(partialName(name)) {
  removeEarlier(name_);
}

void PartialFile::removeEarlier(const std::filesystem::path& name) {
  for (const auto& file : {name, partialName(name)}) {
    std::error_code error;
    std::filesystem::remove(file, error);
    if (error) throw WriteError(file, "the older file cannot be removed: " + error.message());
  }
}

void PartialFile::synchronise() const {
  const int file = ::open(partial_.c_str(), O_RDONLY | O_CLOEXEC);
  const bool done = file >= 0 && ::fsync(file) == 0;
  const int reason = errno;
  if (file >= 0) ::close(file);
  if (!done) throw WriteError(partial_, std::strerror(reason));
}

void PartialFile::complete() const {
  std::error_code error;
  std::filesystem::rename(partial_, name_, error);
  if (error) throw WriteError(name_, error.message());
}

PartialTextFile::PartialTextFile(const std::filesystem::path& name)
    : PartialFile(name), stream_(std::fopen(path().c_str(), "wxe")) {
  if (!stream_) throw WriteError(path(), std::strerror(errno));
}

void PartialTextFile::put(const std::string& line) {
  errno = 0;
  const std::string text = line + '\n';
  if (std::fwrite(text.data(), 1, text.size(), stream_.get()) != text.size() || std::fflush(stream_.get()) != 0)
    throw WriteError(path(), std::strerror(errno));
}

void PartialTextFile::close() {
  if (std::fclose(stream_.release()) != 0) throw WriteError(path(), std::strerror(errno));
  synchronise();
}

} // namespace sharedanalysis::solver
