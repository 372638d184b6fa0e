// A manual page of section 1, from what a program says with --help: a description, "Usage: ...", lists of options under titles
// that end with a colon, and paragraphs.
#include "declarations.h"

#include <iostream>
#include <sstream>

namespace sa::tool {
namespace {

std::string heading(std::string title) {
  title.pop_back(); // the colon
  for (char& c : title) c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  return title;
}

// "Options:", "positional arguments:"; a longer line with a colon is text.
bool isTitle(const std::string& line) { return line[0] != ' ' && line.back() == ':' && line.size() < 24; }

// "  -o,--output TEXT   Directory": the option and what it does, which may also begin on the next line.
void writeOption(std::ostream& page, const std::string& line) {
  const std::string text = trim(line);
  const std::size_t gap = text.find("  ");
  page << ".TP\n\\fB" << roff(text.substr(0, gap)) << "\\fP\n";
  if (gap != std::string::npos) page << roff(trim(text.substr(gap))) << "\n";
}

} // namespace

void writeProgramPage(std::istream& help, const std::string& program, const std::string& version, std::ostream& page) {
  std::string description, usage, body;
  std::ostringstream rest;
  enum { kBefore, kUsage, kOptions, kNotes } state = kBefore;
  bool hasNotes = false;
  for (std::string line; std::getline(help, line);) {
    const bool isIndented = startsWith(line, " ");
    if (startsWith(line, "Usage: ") || startsWith(line, "usage: ")) {
      usage = trim(line.substr(7));
      state = kUsage;
    } else if (line.empty()) {
      if (state == kUsage) state = kBefore;
      if (state == kNotes && hasNotes) rest << ".PP\n";
      if (state == kOptions) state = kNotes;
    } else if (state == kUsage && isIndented) {
      usage.append(" ").append(trim(line));
    } else if (isTitle(line)) {
      rest << ".SH " << heading(line) << "\n";
      state = kOptions;
    } else if (state == kOptions) {
      if (line.find_first_not_of(' ') < 10)
        writeOption(rest, line);
      else
        rest << roff(trim(line)) << "\n";
    } else if (state == kNotes) {
      if (!hasNotes) rest << ".SH NOTES\n";
      hasNotes = true;
      rest << roff(line) << "\n";
    } else {
      description.append(description.empty() ? "" : " ").append(trim(line));
    }
  }
  const std::string sentence = description.substr(0, description.find_first_of(":."));
  page << ".TH " << program << " 1 \"\" \"SharedAnalysis " << version << "\" \"SharedAnalysis\"\n.SH NAME\n"
       << program << " \\- " << roff(sentence) << "\n.SH SYNOPSIS\n"
       << roff(usage) << "\n.SH DESCRIPTION\n"
       << roff(description) << "\n"
       << rest.str()
       << ".SH SEE ALSO\nsharedanalysis\\-explicit(1), sharedanalysis\\-material(1), sharedanalysis\\-compare(1), "
          "sharedanalysis\\-diagnostics(1), sharedanalysis\\-report(1)\n";
}

} // namespace sa::tool
