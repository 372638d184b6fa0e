// Numbers and names in messages and files.
#include "solver/model/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numeric>

namespace sharedanalysis::solver {
namespace {

// Insertions, deletions and exchanges of one character that lead from a to b.
std::size_t editDistance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t exchange = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchange, row[j] + 1, row[j + 1] + 1});
    }
  }
  return row.back();
}

} // namespace

std::string exactNumber(double value) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

void appendCell(std::string& line, double value) {
  if (!line.empty()) line += ',';
  line += exactNumber(value);
}

std::string padded(const std::string& text, std::size_t width, char with) {
  return std::string(width - std::min(width, text.size()), with) + text;
}

std::string shortNumber(double value) {
  std::array<char, 32> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value == 0 ? 0 : value, std::chars_format::general, 4).ptr;
  return {text.data(), end};
}

std::string quotedCell(const std::string& text) {
  std::string quoted = "\"";
  for (const char letter : printable(text)) quoted.append(letter == '"' ? 2 : 1, letter);
  return quoted + '"';
}

std::string cellOf(const std::string& text) {
  return text.find_first_of(",\"") == std::string::npos ? printable(text) : quotedCell(text);
}

std::string suggestion(const std::string& word, const std::vector<std::string>& names) {
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(2, word.size() / 3) + 1;
  for (const std::string& name : names) {
    const std::size_t distance = editDistance(word, name);
    if (distance < least && distance < name.size()) {
      least = distance;
      nearest = &name;
    }
  }
  return nearest ? "did you mean \"" + *nearest + "\"?" : "";
}

} // namespace sharedanalysis::solver
