// The public headers as data: routines with their arguments, sections, contents, constants, exported classes.
#pragma once

#include <iosfwd>
#include <set>
#include <string>
#include <vector>

namespace sa::tool {

// One @param line.
struct ArgumentLine {
  std::string direction, name, unit, meaning;
  std::vector<std::string> shape;
  int line = 0;
};

// One argument of a declaration, with the line that describes it once that is found.
struct Argument {
  std::string type, name;
  const ArgumentLine* described = nullptr;
};

struct Routine {
  std::string file, name, result, like, section;
  int line = 0;
  std::vector<std::string> text; // of the comment, without the argument lines
  std::vector<ArgumentLine> lines;
  std::vector<Argument> arguments;
};

// One line of the contents: "part  title  what it holds  count", without the part in a header that has none.
struct ContentsEntry {
  std::string part, title;
  int count = 0, line = 0;
};

struct Section {
  std::string file, title;
  int line = 0, count = 0;
  std::vector<std::string> text; // what the section says of all its routines
};

// A header of a family, as the table of families shows it.
struct Part {
  std::string file, family;
};

struct Header {
  std::string file;
  int contentsLine = 0;
  std::vector<ContentsEntry> contents;
  std::vector<Section> sections; // of the parts too, in order
  std::vector<Part> parts;
};
// What a header of classes exports: classes with all their members, and single functions, as a demangler writes them.
struct ClassHeader {
  std::string file;
  std::vector<std::string> classes, functions;
};

// One name of an enumeration.
struct Constant {
  std::string name, value, meaning;
};

struct Interface {
  std::vector<Header> headers;
  std::vector<Routine> routines;
  std::vector<Constant> constants;
  std::vector<ClassHeader> classHeaders;
};

// Findings so far; each goes to standard error as file:line.
extern int findings;
void report(const std::string& file, int line, const std::string& text);

bool startsWith(const std::string& text, const std::string& start);
bool isNumber(const std::string& text);
std::string trim(const std::string& text);
std::string fileName(const std::string& file);
// Throws std::runtime_error when the file cannot be read.
std::string textOf(const std::string& file);

Interface readInterface(const std::vector<std::string>& files);

// The word that says how an argument is used: the grammar's word where the unit is one, `value` for a physical unit.
std::string role(const std::string& unit);
// A dimension is *, a number, a name, a sum of such (name+number, name+name), or 2*name+2: a factor before the first name.
bool isDimension(const std::string& text, const std::set<std::string>& names);
bool isPassedByValue(const Argument& argument);
bool isScalar(const ArgumentLine& line);
// An array of addresses of zero-terminated texts.
bool isListOfTexts(const Argument& argument);
// The length of a text: passed by value, behind all other arguments.
bool isLengthOfText(const Routine& routine, const Argument& argument);

// The first sentence of the text, without its stop.
std::string summary(const Routine& routine);

// Text as roff takes it: no escapes, no requests, and hyphens that are copied as such.
std::string roff(const std::string& text);
// The page of a program from the text of its --help.
void writeProgramPage(std::istream& help, const std::string& program, const std::string& version, std::ostream& page);

// What is made for other languages, on standard output but for the pages.
void writeFortran(const Interface& interface);
void writeDescription(const Interface& interface);
// For the checking library and the replay of its recordings.
void writeCalls(const Interface& interface);
void writeWrappers(const Interface& interface);
// A page a routine into a folder that is there.
void writeManual(const Interface& interface, const std::string& folder);

} // namespace sa::tool
