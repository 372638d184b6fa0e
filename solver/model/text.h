// Pieces of messages.
#pragma once

#include "words.h"

#include <cstddef>
#include <string>
#include <vector>

namespace sharedanalysis::solver {

using host::counted;
using host::joined;
using host::printable;

// The shortest text that reads back as the same double.
std::string exactNumber(double value);

// Appends exactNumber(value) to a line of cells, behind a comma unless it is the first.
void appendCell(std::string& line, double value);

// The text as one cell of such a line: in quotation marks, with its own doubled, always or where it needs them.
std::string quotedCell(const std::string& text);
std::string cellOf(const std::string& text);

// `with` before the text up to a width.
std::string padded(const std::string& text, std::size_t width, char with = ' ');

// Four significant digits, the shorter of fixed and scientific notation: for people, not for files.
std::string shortNumber(double value);

// "did you mean "density"?" when one of the names is near enough, else an empty text.
std::string suggestion(const std::string& word, const std::vector<std::string>& names);

} // namespace sharedanalysis::solver
