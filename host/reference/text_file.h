// A text file that remembers its first write error.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace sharedanalysis::host {

// Not synchronised.
class TextFile {
public:
  TextFile() = default;
  ~TextFile() { close(); }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;

  // In the place of an older file or link, which is removed.  Throws std::system_error naming the file.
  void open(const std::filesystem::path& path);
  bool isOpen() const { return file_ != nullptr; }
  void write(std::string_view text);
  void flush();
  // Writing, flushing and closing never fail: the first error stays here until the next open.
  void close();
  std::error_code error() const { return error_; }
  const std::filesystem::path& path() const { return path_; }

private:
  void remember(bool good);

  std::FILE* file_ = nullptr;
  std::filesystem::path path_;
  std::error_code error_;
};

} // namespace sharedanalysis::host
