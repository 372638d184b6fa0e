// sharedanalysis-diagnostics: what went wrong in an analysis, from its diagnostic database.
#include "output.h"
#include "words.h"

#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <string_view>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using namespace sharedanalysis;
using namespace sharedanalysis::diagnostics;
using sharedanalysis::host::printable;

struct Options {
  std::string file, code, increment;
  std::size_t limit = 0;
  bool all = false, json = false;
};

Selection selectionOf(const Options& options) {
  Selection selection;
  if (!options.code.empty()) selection.code = options.code;
  if (!options.increment.empty()) selection.increments = incrementRange(options.increment);
  if (options.limit > 0) selection.limit = selection.places = options.limit;
  if (options.all) selection.limit = selection.places = SIZE_MAX;
  return selection;
}

Terminal thisTerminal() {
  const auto variable = [](const char* name) {
    const char* const value = std::getenv(name);
    return std::string_view(value == nullptr ? "" : value);
  };
  Terminal terminal;
  if (isatty(STDOUT_FILENO) == 0) return terminal;
  winsize size = {};
  terminal.width = ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
  terminal.colours = variable("TERM") != "dumb" && variable("NO_COLOR").empty();
  return terminal;
}

void write(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw Failure(exitNotWritten, "the output cannot be written");
}

int reportError(ExitCode code, const std::string& text) {
  std::fprintf(stderr, "sharedanalysis-diagnostics: %s\n", printable(text).c_str());
  return code;
}

} // namespace

int main(int argc, char** argv) {
  std::signal(SIGXFSZ, SIG_IGN); // a file-size limit is an error of the write
  Options options;
  CLI::App app("Steps, increments and problems of an analysis, errors before warnings", "sharedanalysis-diagnostics");
  app.option_defaults()->disable_flag_override(); // --json=no
  app.add_option("DATABASE", options.file, "Diagnostic database of a job (JOB.diagnostics.sqlite)")->required();
  app.add_option("-c,--code", options.code, "Only this problem: number (0x42010020), name, or class");
  app.add_option("-i,--increment", options.increment, "Only these increments: 12, 10-20, or 2:12 in step 2");
  app.add_option("-n,--limit", options.limit, "Longest list; without it 20 lines, 5 nodes or elements")
      ->check(CLI::Range(int64_t{1}, int64_t{1000000000000}));
  app.add_flag("-a,--all", options.all, "Lists of any length")->excludes("--limit");
  app.add_flag("--json", options.json, "For programs");
  app.set_version_flag("--version", "sharedanalysis-diagnostics " SHAREDANALYSIS_VERSION);
  app.footer(
      "Exit codes: 0 shown, 1 wrong call, no such file or no diagnostic database, 3 the output cannot be written,\n"
      "6 written by a newer release, 7 damaged or empty.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return reportError(exitInput, std::string(error.what()) + " (--help lists the options)");
  }
  try {
    const Selection selection = selectionOf(options);
    const Record record = readRecord(options.file, selection);
    write(options.json ? json(record) : listing(record, selection, thisTerminal()));
    return exitDone;
  } catch (const Failure& failure) {
    return reportError(failure.code(), failure.what());
  } catch (const std::exception& error) {
    return reportError(exitDamaged, error.what());
  }
}
