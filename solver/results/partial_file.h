// Files that get their final name when they are complete.
#pragma once

#include "solver/model/archive.h"
#include "solver/model/hash.h"

#include <cstdio>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// Results could not be written; the text names the file and the reason.
class WriteError : public std::runtime_error {
public:
  WriteError(const std::filesystem::path& file, const std::string& reason)
      : std::runtime_error(file.string() + " could not be written: " + reason) {}
};

// Throws InputError where one of the files that are read would be taken for a file of results: it has the name of the job, in
// their directory, and one of the endings (behind which a number or ".partial" may stand).
void expectOtherNames(const std::vector<std::filesystem::path>& read, const std::filesystem::path& directory,
                      const std::string& job, const std::vector<std::string>& endings);

// Of the files of results: new ones, or those that a run goes on with; their `visit` then opens them.
enum class Start { New, GoOn };

// The file of one of several ranks: <name>.16.03, the rank with as many digits as their number has.
std::filesystem::path fileOfRank(const std::filesystem::path& name, int32_t rank, int32_t ranks);
// All such files that are there, also partial ones, of any number of ranks.
std::vector<std::filesystem::path> filesOfRanks(const std::filesystem::path& name);
void removeFilesOfRanks(const std::filesystem::path& name);

// A file is written as <name>.partial and gets its name when the analysis is complete.
class PartialFile {
public:
  // Removes files of both names that an earlier run has left, but one that is to go on.
  explicit PartialFile(const std::filesystem::path& name, Start start = Start::New);
  static void removeEarlier(const std::filesystem::path& name);

  const std::filesystem::path& path() const { return partial_; }
  const std::filesystem::path& name() const { return name_; }

  // Syncs what was written to the device.
  void synchronise() const;
  // Gives the closed file its name.
  void complete() const;

private:
  std::filesystem::path name_, partial_;
};

// A text file, flushed after every line.
class PartialTextFile : public PartialFile {
public:
  explicit PartialTextFile(const std::filesystem::path& name, Start start = Start::New);

  // How far the file has come.  Restoring changes nothing; what an earlier run has written beyond goes with the first line that is
  // put, or with the end.  Throws InputError for a file that is not the one of the state.
  void visit(Archive& archive);
  void put(const std::string& line);
  // Closes and syncs the file; no put() afterwards.
  void close();

private:
  void reopen();
  void cutOff();

  struct Close {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
  };
  std::unique_ptr<std::FILE, Close> stream_;
  bool isReopened_ = false;
  int64_t bytes_ = 0; // that were put, and their hash
  Hash hash_;
};

} // namespace sharedanalysis::solver
