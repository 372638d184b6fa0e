// Manual pages of section 3, one a routine.
#include "declarations.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace sa::tool {
namespace {

bool isIndented(const std::string& line) { return startsWith(line, " ") || line.find("   ") != std::string::npos; }

// Paragraphs are filled; tables and lists, whose lines are indented or have columns, stay as they are.
void writeText(std::ostream& page, const std::vector<std::string>& lines) {
  bool isTable = false;
  for (const std::string& line : lines) {
    if (line.empty()) {
      page << (isTable ? "\n" : ".PP\n");
      continue;
    }
    if (isIndented(line) != isTable) page << (isTable ? ".fi\n" : ".nf\n");
    isTable = isIndented(line);
    page << roff(line) << "\n";
  }
  if (isTable) page << ".fi\n";
}

std::string declaration(const Routine& routine) {
  std::string text = routine.result + " " + routine.name + "(";
  for (std::size_t k = 0; k < routine.arguments.size(); ++k)
    text += (k == 0 ? "" : ", ") + routine.arguments[k].type + " " + routine.arguments[k].name;
  return text + (routine.arguments.empty() ? "void);" : ");");
}

void writePage(std::ostream& page, const Routine& routine, const std::string& header, const Section* section) {
  page << ".TH " << routine.name << " 3 \"\" SharedAnalysis \"SharedAnalysis\"\n.SH NAME\n"
       << routine.name << " \\- " << roff(summary(routine)) << "\n.SH SYNOPSIS\n#include \"" << header << "\"\n.PP\n"
       << roff(declaration(routine)) << "\n.SH DESCRIPTION\n";
  writeText(page, routine.text);
  if (!routine.arguments.empty()) page << ".SH ARGUMENTS\n";
  for (const Argument& argument : routine.arguments) {
    const ArgumentLine& line = *argument.described;
    page << ".TP\n\\fB" << argument.name << "\\fP [" << line.direction << "] (";
    for (std::size_t k = 0; k < line.shape.size(); ++k) page << (k == 0 ? "" : ", ") << roff(line.shape[k]);
    page << "), " << roff(line.unit) << "\n" << roff(line.meaning) << "\n";
  }
  if (section != nullptr && !section->text.empty()) {
    page << ".SH NOTES\n";
    writeText(page, section->text);
  }
  page << ".SH SEE ALSO\nThe conventions of all routines: glo.h\n";
}

} // namespace

std::string roff(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\')
      result += "\\e";
    else if (c == '-')
      result += "\\-";
    else
      result += c;
  }
  if (!result.empty() && (result[0] == '.' || result[0] == '\'')) result.insert(0, "\\&");
  return result;
}

std::string summary(const Routine& routine) {
  std::string text;
  for (const std::string& line : routine.text) {
    if (line.empty()) break;
    text += (text.empty() ? "" : " ") + line;
  }
  text = text.substr(0, text.find(".  "));
  text = text.substr(0, text.find(". "));
  if (text.ends_with('.')) text.pop_back();
  return text;
}

void writeManual(const Interface& interface, const std::string& folder) {
  for (const Header& header : interface.headers) {
    for (const Routine& routine : interface.routines) {
      const auto section = std::find_if(header.sections.begin(), header.sections.end(), [&](const Section& s) {
        return s.file == routine.file && s.title == routine.section;
      });
      if (section == header.sections.end()) continue;
      std::ofstream page(std::filesystem::path(folder) / (routine.name + ".3"));
      writePage(page, routine, fileName(header.file), &*section);
      if (!page.flush()) throw std::runtime_error("cannot write the page of " + routine.name + " in " + folder);
    }
  }
}

} // namespace sa::tool
