// Pieces of messages.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

// "1 brick", "12 bricks"
inline std::string counted(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

inline std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) text += (text.empty() ? "" : separator) + part;
  return text;
}

// The shortest text that reads back as the same double.
std::string exactNumber(double value);

// Appends exactNumber(value) to a line of cells, behind a comma unless it is the first.
void appendCell(std::string& line, double value);

// `with` before the text up to a width.
std::string padded(const std::string& text, std::size_t width, char with = ' ');

// Four significant digits, the shorter of fixed and scientific notation: for people, not for files.
std::string shortNumber(double value);

// "did you mean "density"?" when one of the names is near enough, else an empty text.
std::string suggestion(const std::string& word, const std::vector<std::string>& names);

} // namespace sharedanalysis::solver
