#include "solver/program/watch.h"

#include "checked/options.h"
#include "glo.h"
#include "solver/model/model.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unistd.h>

namespace sharedanalysis::solver {
namespace {

constexpr const char* kBegunAnew = "SHAREDANALYSIS_WATCHED";

// The checking library stands beside the library.
std::string checkingLibrary() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&GLO_UTI_FLUSH), &info) == 0) throw std::runtime_error("no place of the library");
  const std::filesystem::path library = info.dli_fname;
  for (const char* name : {"libSharedAnalysisChecked.so.1", "libSharedAnalysisChecked.so"})
    if (const auto file = library.parent_path() / name; std::filesystem::exists(file))
      return std::filesystem::absolute(file);
  throw std::runtime_error("--checked and --record need libSharedAnalysisChecked.so beside " + library.string());
}

void expectWords(const std::string& level) {
  const std::vector<std::string> errors = sa::checked::Options::read(level.c_str(), false).errors;
  if (!errors.empty())
    throw InputError("--checked: " + errors.front() +
                     ", expected full, cheap, off, report, trap, end, log=FILE, @FILE or PATTERN=LEVEL (--help lists "
                     "the options)");
}

// The library leaves a program alone that it cannot record: here a recording is asked for by name.
void expectWritable(const std::string& record) {
  const std::filesystem::path file = record.substr(0, record.find(',')), directory = file.parent_path();
  constexpr std::string_view kHead = "SHANREC\n";
  std::string head(kHead.size(), '\0');
  std::error_code none;
  std::ifstream older;
  if (std::filesystem::is_regular_file(file, none)) older.open(file, std::ios::binary); // a pipe would be waited for
  if (older.read(head.data(), static_cast<std::streamsize>(head.size())).gcount() > 0 && head != kHead)
    throw InputError("--record: " + file.string() + " is no recording, and is not replaced");
  errno = std::filesystem::is_directory(file, none) ? EISDIR : 0;
  if (errno != 0 || ::access(directory.empty() ? "." : directory.c_str(), W_OK | X_OK) != 0)
    throw InputError("--record: " + file.string() + " cannot be written: " + std::strerror(errno));
}

} // namespace

void watchLibrary(int argc, char** argv) {
  const auto valueOf = [](const char* name) {
    const char* const value = std::getenv(name);
    return std::string(value != nullptr ? value : "");
  };
  if (std::getenv(kBegunAnew) != nullptr) { // programs that this one starts are not watched
    setenv("LD_PRELOAD", valueOf(kBegunAnew).c_str(), 1);
    unsetenv(kBegunAnew);
    return;
  }
  std::string level, record;
  for (int n = 1; n < argc; ++n) {
    const std::string_view word = argv[n];
    if (word == "--checked") level = "full";
    if (word.starts_with("--checked=")) level = word.size() > 10 ? word.substr(10) : "full";
    if (word == "--record" && n + 1 < argc) record = argv[n + 1];
    if (word.starts_with("--record=")) record = word.substr(9);
  }
  if (level.empty() && record.empty()) return;
  if (!level.empty()) expectWords(level);
  if (!record.empty()) expectWritable(record);
  const std::string before = valueOf("LD_PRELOAD");
  setenv("LD_PRELOAD", (checkingLibrary() + (before.empty() ? "" : ":" + before)).c_str(), 1);
  if (!level.empty()) setenv("SHAREDANALYSIS_CHECK", level.c_str(), 1);
  if (!record.empty()) setenv("SHAREDANALYSIS_RECORD", record.c_str(), 1);
  setenv(kBegunAnew, before.c_str(), 1);
  execv("/proc/self/exe", argv);
  throw std::runtime_error(std::string("cannot begin anew with the checking library: ") + std::strerror(errno));
}

} // namespace sharedanalysis::solver
