// The open job: its files and what the library has said about its end.
#pragma once

#include "glo/messages.h"
#include "reference_host.h"
#include "text_file.h"

#include <array>
#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace sharedanalysis::host {

constexpr int32_t kMessageFile = GLO_UNIT_MESSAGE_FILE, kSecondChannel = GLO_UNIT_SECOND_CHANNEL, kPrintedUnit = 7;

class Job {
public:
  JobFiles open(const std::string& name, const std::filesystem::path& directory, FilesMade when);
  void close();
  void begin(Chapter chapter);
  std::error_code error();

  // Complete lines of a channel, written in one piece; `count` of them are counted when they reach no file.
  void write(int32_t unit, std::string_view lines, int64_t count);
  // One line of the status file; everything written so far can be read from outside afterwards.
  void writeStatus(std::string_view line);
  void flush(int32_t unit);
  std::string lastError();

  std::atomic<int64_t> unfiled{0};
  std::atomic<int32_t> status{-1};
  std::atomic<bool> threadError{false};
  std::atomic<bool> transmitterClosing{false};

private:
  TextFile* fileOf(int32_t unit);
  bool takes(TextFile* file, std::string_view text); // instead of the file, which is still to be made
  void openFiles();
  void closeFiles();

  std::mutex mutex_;
  TextFile message_, log_, status_;
  std::string lastError_;
  JobFiles names_;
  Chapter chapter_ = Chapter::Heading;
  bool areAwaited_ = false;            // files that are made when they are needed
  std::array<std::string, 3> heading_; // for them
  std::optional<std::system_error> notMade_;
  const std::array<TextFile*, 3> files_{&message_, &log_, &status_};
};

// The one job of the process.  It outlives the static objects of the program, whose destructors may still send messages.
Job& job();

} // namespace sharedanalysis::host
