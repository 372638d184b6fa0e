// What to check, and what to do about a finding: SHAREDANALYSIS_CHECK and the file that it may name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sa::checked {

enum class Level : unsigned char { off, cheap, full };
enum class Action : unsigned char { report, trap, end };

// Words are separated by commas in the variable, by blanks and lines in a file:
//   off, cheap, full       how much is checked
//   report, trap, end      what follows a finding: nothing else, SIGTRAP, the end of the analysis
//   log=FILE               reports go to this file too, a line each
//   @FILE                  more words; # begins a comment
//   PATTERN=LEVEL          for routines of this name, * for any characters; the last that fits holds
struct Options {
  Level level = Level::full;
  Action action = Action::report;
  std::string log;
  std::vector<std::pair<std::string, Level>> patterns;
  std::vector<std::string> errors;

  // With a recording and no variable, nothing is checked.
  static Options read(const char* variable, bool isRecorded);
  Level levelOf(std::string_view routine) const;

private:
  void add(std::string_view words, int depth);
};

bool fits(std::string_view name, std::string_view pattern);

} // namespace sa::checked
