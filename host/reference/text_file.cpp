#include "text_file.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace sharedanalysis::host {

void TextFile::open(const std::filesystem::path& path) {
  close();
  error_.clear();
  path_ = path;
  // a new file in the place of an older one: behind a link is somebody else's, and a pipe would wait for a reader
  const bool isFree = ::unlink(path.c_str()) == 0 || errno == ENOENT;
  const int descriptor = isFree ? ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666) : -1;
  file_ = descriptor < 0 ? nullptr : ::fdopen(descriptor, "w");
  if (file_ == nullptr) throw std::system_error(errno, std::generic_category(), "cannot open " + path.string());
}

void TextFile::write(std::string_view text) {
  if (file_ != nullptr) remember(std::fwrite(text.data(), 1, text.size(), file_) == text.size());
}

void TextFile::flush() {
  if (file_ != nullptr) remember(std::fflush(file_) == 0);
}

void TextFile::close() {
  if (file_ == nullptr) return;
  flush();
  remember(std::fclose(file_) == 0);
  file_ = nullptr;
}

void TextFile::remember(bool good) {
  if (!good && !error_) error_ = std::error_code(errno, std::generic_category());
}

} // namespace sharedanalysis::host
