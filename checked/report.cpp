#include "report.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <spawn.h>
#include <sys/wait.h>
#include <tuple>
#include <unistd.h>
#include <vector>

namespace sa::checked {
namespace {

using Key = std::tuple<const void*, std::string, std::string, Kind>;
struct Count {
  std::string place;
  long times = 0, told = 0;
};

struct Reports {
  std::mutex mutex;
  std::map<Key, Count> counts;
  Action action = Action::report;
  int log = -1;
  Writer* writer = nullptr;
};
Reports& reports() {
  static Reports* const reports = new Reports; // findings of destructors come late
  return *reports;
}

void writeAll(int file, const std::string& text) {
  for (std::size_t at = 0; at < text.size();) {
    const ssize_t n = ::write(file, text.data() + at, text.size() - at);
    if (n <= 0) return;
    at += static_cast<std::size_t>(n);
  }
}

// On standard error in any case: a host without a job keeps no messages.
void tell(Reports& r, const std::string& text, bool hasHost) {
  if (r.log >= 0) writeAll(r.log, text + "\n");
  if (hasHost && r.writer != nullptr) r.writer->write(text);
  writeAll(STDERR_FILENO, text + "\n");
}

// Output of a program, its first line; the program is found by the path and does not get this library.
std::string firstLineOf(const std::vector<std::string>& words) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) return "";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
  std::vector<char*> argv, envp;
  for (const std::string& w : words) argv.push_back(const_cast<char*>(w.c_str()));
  argv.push_back(nullptr);
  for (char** variable = environ; *variable != nullptr; ++variable)
    if (std::strncmp(*variable, "LD_PRELOAD=", 11) != 0) envp.push_back(*variable);
  envp.push_back(nullptr);
  pid_t child = 0;
  const int failed = posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  std::string text;
  char buffer[1024];
  if (failed == 0) {
    for (ssize_t n; (n = ::read(ends[0], buffer, sizeof buffer)) > 0;) text.append(buffer, static_cast<std::size_t>(n));
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
  }
  close(ends[0]);
  return text.substr(0, text.find('\n'));
}

} // namespace

std::string placeOf(const void* address) {
  Dl_info info;
  char text[64];
  const auto place = reinterpret_cast<std::uintptr_t>(address) - 1; // within the call, not behind it
  if (dladdr(reinterpret_cast<void*>(place), &info) == 0 || info.dli_fbase == nullptr) {
    std::snprintf(text, sizeof text, "%#zx", place);
    return text;
  }
  const auto base = reinterpret_cast<std::uintptr_t>(info.dli_fbase);
  Elf64_Ehdr header;
  std::memcpy(&header, info.dli_fbase, sizeof header);
  std::snprintf(text, sizeof text, "%#zx", header.e_type == ET_EXEC ? place : place - base);
  std::string object = info.dli_fname;
  if (const char* name = std::strrchr(info.dli_fname, '/'); name == nullptr || access(info.dli_fname, R_OK) != 0)
    object = "/proc/self/exe"; // a program that was started by its name
  const std::string line = firstLineOf({"addr2line", "-e", object, text});
  if (!line.empty() && line[0] != '?' && line.find(":?") == std::string::npos && line.find(":0") != line.size() - 2)
    return line.substr(0, line.find(" (discriminator"));
  const char* name = std::strrchr(info.dli_fname, '/');
  return std::string(name != nullptr ? name + 1 : info.dli_fname) + "+" + text;
}

void setUp(const Options& options, Writer& writer) {
  Reports& r = reports();
  r.action = options.action;
  r.writer = &writer;
  if (!options.log.empty()) r.log = open(options.log.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  for (const std::string& error : options.errors) writeAll(STDERR_FILENO, "SHAREDANALYSIS_CHECK: " + error + "\n");
}

void report(const Finding& finding, const void* place) {
  Reports& r = reports();
  std::string text;
  {
    const std::lock_guard<std::mutex> lock(r.mutex);
    Count& count = r.counts[{place, finding.routine, finding.argument, finding.kind}];
    if (count.times++ > 0) return;
    count.told = 1;
    count.place = placeOf(place);
    text.append("check: ").append(finding.routine);
    if (!finding.argument.empty()) text.append(", argument ").append(finding.argument).append(finding.entry);
    text.append(": ").append(word(finding.kind)).append(": ").append(finding.text);
    if (!finding.allowed.empty()) text.append("; allowed: ").append(finding.allowed);
    text.append("; called from ").append(count.place);
    tell(r, text, true);
  }
  if (r.action == Action::trap) raise(SIGTRAP);
  if (r.action == Action::end && r.writer != nullptr) r.writer->endAnalysis();
}

void summarize(bool hasHost) {
  Reports& r = reports();
  const std::lock_guard<std::mutex> lock(r.mutex);
  long kinds = 0, times = 0;
  for (const auto& [key, count] : r.counts)
    if (count.told > 0) ++kinds, times += count.times;
  if (kinds == 0) return;
  std::string text = "check: " + std::to_string(times) + (times == 1 ? " finding" : " findings") + " at " +
                     std::to_string(kinds) + (kinds == 1 ? " place" : " places");
  tell(r, text, hasHost);
  for (auto& [key, count] : r.counts) {
    if (count.told == 0) continue;
    text = "check:   " + std::to_string(count.times) + " x " + word(std::get<Kind>(key)) + ", " + std::get<1>(key);
    if (!std::get<2>(key).empty()) text.append(", ").append(std::get<2>(key));
    tell(r, text.append(", ").append(count.place), hasHost);
    count.told = 0;
  }
}

} // namespace sa::checked
