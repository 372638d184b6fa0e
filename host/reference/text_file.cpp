#include "text_file.h"

#include <cerrno>

namespace sharedanalysis::host {

void TextFile::open(const std::filesystem::path& path) {
  close();
  error_.clear();
  path_ = path;
  file_ = std::fopen(path.c_str(), "w");
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
