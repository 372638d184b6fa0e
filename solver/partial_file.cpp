#include "partial_file.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace sharedanalysis::solver {

PartialFile::PartialFile(const std::filesystem::path& name) : name_(name), partial_(name.string() + ".partial") {
  for (const auto& file : {name_, partial_}) {
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

} // namespace sharedanalysis::solver
