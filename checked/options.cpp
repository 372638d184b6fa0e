#include "options.h"

#include <fstream>
#include <optional>

namespace sa::checked {
namespace {

std::optional<Level> levelNamed(std::string_view word) {
  if (word == "off") return Level::off;
  if (word == "cheap") return Level::cheap;
  if (word == "full") return Level::full;
  return std::nullopt;
}

} // namespace

bool fits(std::string_view name, std::string_view pattern) {
  std::size_t n = 0, p = 0, star = std::string_view::npos, from = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      from = n;
    } else if (p < pattern.size() && pattern[p] == name[n]) {
      ++p;
      ++n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++from;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

Options Options::read(const char* variable, bool isRecorded) {
  Options options;
  if (variable == nullptr || *variable == '\0')
    options.level = isRecorded ? Level::off : Level::full;
  else
    options.add(variable, 0);
  return options;
}

Level Options::levelOf(std::string_view routine) const {
  Level found = level;
  for (const auto& [pattern, own] : patterns)
    if (fits(routine, pattern)) found = own;
  return found;
}

void Options::add(std::string_view words, int depth) {
  while (!words.empty()) {
    const std::size_t end = std::min(words.find_first_of(", \t\r\n"), words.size());
    const std::string word(words.substr(0, end));
    words.remove_prefix(std::min(end + 1, words.size()));
    const std::size_t equals = word.find('=');
    if (word.empty()) continue;
    if (const auto named = levelNamed(word)) {
      level = *named;
    } else if (word == "report" || word == "trap" || word == "end") {
      action = word == "trap" ? Action::trap : word == "end" ? Action::end : Action::report;
    } else if (word[0] == '@' && depth < 4) {
      std::ifstream file(word.substr(1));
      if (!file) errors.push_back("cannot read " + word.substr(1));
      for (std::string line; std::getline(file, line);)
        add(std::string_view(line).substr(0, line.find('#')), depth + 1);
    } else if (word.compare(0, 4, "log=") == 0) {
      log = word.substr(4);
    } else if (const auto own = equals == std::string::npos ? std::nullopt : levelNamed(word.substr(equals + 1))) {
      patterns.emplace_back(word.substr(0, equals), *own);
    } else {
      errors.push_back("do not understand \"" + word + "\"");
    }
  }
}

} // namespace sa::checked
