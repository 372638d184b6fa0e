// Files that get their final name when they are complete.
#pragma once

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>

namespace sharedanalysis::solver {

// Results could not be written; the text names the file and the reason.
class WriteError : public std::runtime_error {
public:
  WriteError(const std::filesystem::path& file, const std::string& reason)
      : std::runtime_error(file.string() + " could not be written: " + reason) {}
};

// A file is written as <name>.partial and gets its name when the analysis is complete.
class PartialFile {
public:
  // Removes files of both names that an earlier run has left.
  explicit PartialFile(const std::filesystem::path& name);
  static void removeEarlier(const std::filesystem::path& name);

  const std::filesystem::path& path() const { return partial_; }
  const std::filesystem::path& name() const { return name_; }

  // Syncs the closed file to the device.
  void synchronise() const;
  // Gives the closed file its name.
  void complete() const;

private:
  std::filesystem::path name_, partial_;
};

// A text file, flushed after every line.
class PartialTextFile : public PartialFile {
public:
  explicit PartialTextFile(const std::filesystem::path& name);

  void put(const std::string& line);
  // Closes and syncs the file; no put() afterwards.
  void close();

private:
  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  std::unique_ptr<std::FILE, Close> stream_;
};

} // namespace sharedanalysis::solver
