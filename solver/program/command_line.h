// What the programs share of their command lines.
#pragma once

#include "exit_codes.h"
#include "solver/program/failure.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <csignal>
#include <optional>
#include <string>

namespace sharedanalysis::solver {

// A limit of file sizes and a closed pipe become errors of the write.
inline void keepWriteErrors() {
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
}

// Of options and arguments that name a file or directory.
inline const CLI::Validator& someName() {
  static const CLI::Validator check(
      [](const std::string& text) { return std::string(text.empty() ? "an empty name" : ""); }, "");
  return check;
}

// CLI::PositiveNumber takes "nan", and its text has the largest double in 309 digits.
inline const CLI::Validator& positiveNumber() {
  static const CLI::Validator check(
      [](std::string& text) {
        double value = 0;
        const bool isSound = CLI::detail::lexical_cast(text, value) && value > 0 && std::isfinite(value);
        return isSound ? std::string() : "\"" + text + "\" is no positive number";
      },
      "");
  return check;
}

// The exit code where nothing is left to be done: help or version are shown, or a mistake, by the ranks that are to.
inline std::optional<ExitCode> parse(CLI::App& app, int argc, char** argv, bool shows = true) {
  for (CLI::Option* option : app.get_options())
    if (option->get_fnames().empty()) option->disable_flag_override(); // --quiet=no: but of flags that may have a value
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    const bool isMistake = error.get_exit_code() != 0;
    if (shows && !isMistake) app.exit(error);
    if (shows && isMistake) reportError(std::string(error.what()) + " (--help lists the options)");
    return isMistake ? exitInput : exitDone;
  }
}

} // namespace sharedanalysis::solver
