// Reads the public headers, which are the registry of the interface, checks them and derives lists from them.
//
//   sa_interface check HEADERS...            holds declarations, argument lines and contents against each other
//   sa_interface table PAGE HEADERS...       holds a page's table of families against the headers; --write brings it up to date
//   sa_interface version-script HEADERS...   the linker's version script
//   sa_interface registry HEADERS...         a C++ table of all routines and arguments
//   sa_interface arguments HEADERS...        macros with the argument lists without types, for the definitions of kernels
//   sa_interface symbols LIB HEADERS...      holds the exported symbols of a library against the headers
//   sa_interface exported LIB                the exported symbols of a library with their versions, sorted
//   sa_interface keeps LIB LIST              whether a library still exports all of such a list
//
// A header that begins with "/** @file" declares routines with C linkage, itself or in parts: the headers of a family each
// that it includes from a folder of its own.  Any other declares classes: their members are exported, and the
// specialisations of templates that it declares with default visibility.
//
// Findings go to standard error as file:line; the exit code is 0 only when there are none.
#include <cxxabi.h>
#include <sys/wait.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

const char* const kVersion = "SHAREDANALYSIS_1";

// One @param line.
struct ArgumentLine {
  std::string direction, name, unit;
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

int findings = 0;

void report(const std::string& file, int line, const std::string& text) {
  std::cerr << file << ":" << line << ": " << text << "\n";
  ++findings;
}

bool isNameCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

bool isNumber(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool startsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

std::string trim(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), isBlank).base();
  return first < last ? std::string(first, last) : std::string();
}

// Blanks run together, and none before or after a star: "const  double *" becomes "const double*".
std::string normalizeType(const std::string& text) {
  std::string result;
  for (char c : trim(text)) {
    if (isBlank(c)) c = ' ';
    if (c == ' ' && result.back() == ' ') continue;
    if (c == '*' && result.back() == ' ') result.pop_back();
    result += c;
  }
  return result;
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(trim(part));
  return parts;
}

// The lines of a comment without its marks.
std::vector<std::string> commentLines(const std::string& comment) {
  std::vector<std::string> lines;
  std::istringstream stream(comment);
  for (std::string line; std::getline(stream, line);) {
    std::string text = trim(line);
    if (startsWith(text, "/**") && !startsWith(text, "/***")) {
      text = text.substr(3);
    } else if (startsWith(text, "/*") || startsWith(text, "*")) {
      text = startsWith(text, "*/") ? "" : text.substr(text[0] == '/' ? 2 : 1);
    }
    if (text.size() >= 2 && text.compare(text.size() - 2, 2, "*/") == 0) text.resize(text.size() - 2);
    lines.push_back(text);
  }
  return lines;
}

// "@param[in] name  (shape), unit: meaning"; nothing and a finding when the text has another form.
std::optional<ArgumentLine> parseArgumentLine(const std::string& file, int number, const std::string& text) {
  ArgumentLine result;
  result.line = number;
  const auto bad = [&](const char* what) {
    report(file, number, std::string("argument line: ") + what);
    return std::nullopt;
  };
  std::size_t at = std::string("@param").size();
  const std::size_t close = text.find(']');
  if (at >= text.size() || text[at] != '[' || close == std::string::npos) return bad("no [direction]");
  result.direction = text.substr(at + 1, close - at - 1);
  if (result.direction != "in" && result.direction != "out" && result.direction != "in,out")
    return bad("the direction is none of in, out, in,out");
  at = text.find_first_not_of(' ', close + 1);
  while (at < text.size() && isNameCharacter(text[at])) result.name += text[at++];
  if (result.name.empty()) return bad("no name");
  at = text.find_first_not_of(' ', at);
  if (at == std::string::npos || text[at] != '(') return bad("no (shape)");
  const std::size_t shapeEnd = text.find(')', at);
  if (shapeEnd == std::string::npos) return bad("the shape does not end");
  result.shape = split(text.substr(at + 1, shapeEnd - at - 1), ',');
  if (result.shape.empty()) return bad("empty shape");
  const std::size_t colon = text.find(": ", shapeEnd);
  if (text.compare(shapeEnd + 1, 2, ", ") != 0 || colon == std::string::npos) return bad("no \", unit: \"");
  result.unit = trim(text.substr(shapeEnd + 3, colon - shapeEnd - 3));
  if (result.unit.empty()) return bad("empty unit");
  if (trim(text.substr(colon + 2)).empty()) return bad("no meaning");
  return result;
}

// Fields that two or more blanks separate.
std::vector<std::string> fields(const std::string& text) {
  std::vector<std::string> result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find("  ", at), text.size());
    result.push_back(text.substr(at, end - at));
    at = std::min(text.find_first_not_of(' ', end), text.size());
  }
  return result;
}

std::string fileName(const std::string& file) { return std::filesystem::path(file).filename().string(); }

// Contents of a file comment: from the line CONTENTS on, an entry a line.
void parseContents(Header& header, const std::vector<std::string>& lines, int first) {
  bool inside = false;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string text = trim(lines[i]);
    const int number = first + static_cast<int>(i);
    if (text == "CONTENTS") {
      inside = true;
      header.contentsLine = number;
    } else if (inside && !text.empty()) {
      std::vector<std::string> entry = fields(text);
      const std::string part = entry[0].ends_with(".h") ? entry[0] : "";
      if (!part.empty()) entry.erase(entry.begin());
      const std::string count = text.substr(text.find_last_of(' ') + 1);
      if (entry.size() < 2 || !isNumber(count)) {
        report(header.file, number, "contents: no count at the end of the line");
      } else {
        header.contents.push_back({part, entry[0], std::stoi(count), number});
      }
    }
  }
}

void parseRoutineComment(Routine& routine, const std::vector<std::string>& lines, int first) {
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string text = trim(lines[i]);
    const int number = first + static_cast<int>(i);
    if (startsWith(text, "@param")) {
      if (auto line = parseArgumentLine(routine.file, number, text)) routine.lines.push_back(*line);
    } else if (startsWith(text, "@like ")) {
      if (!routine.like.empty()) report(routine.file, number, "a second @like");
      routine.like = trim(text.substr(6));
    } else if (startsWith(text, "@")) {
      report(routine.file, number, "unknown command " + text.substr(0, text.find(' ')));
    }
  }
}

// "type name" at the end of a text: the name is its last word.
std::pair<std::string, std::string> splitTypeAndName(const std::string& text) {
  std::size_t start = text.size();
  while (start > 0 && isNameCharacter(text[start - 1])) --start;
  return {normalizeType(text.substr(0, start)), text.substr(start)};
}

bool parseDeclaration(Routine& routine, const std::string& text) {
  const std::size_t open = text.find('('), close = text.rfind(')');
  if (open == std::string::npos || close == std::string::npos || close < open) return false;
  std::tie(routine.result, routine.name) = splitTypeAndName(trim(text.substr(0, open)));
  if (routine.result.empty() || routine.name.empty()) return false;
  const std::string list = trim(text.substr(open + 1, close - open - 1));
  if (list == "void") return true;
  for (const std::string& part : split(list, ',')) {
    Argument argument;
    std::tie(argument.type, argument.name) = splitTypeAndName(part);
    if (argument.type.empty() || argument.name.empty()) return false;
    routine.arguments.push_back(argument);
  }
  return true;
}

std::string textOf(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

Header readHeader(const std::string& file, const std::string& text, std::vector<Routine>& routines);

// A part: '#include "folder/family.h"', beside the header that includes it.
void readPart(Header& header, const std::string& directive, std::vector<Routine>& routines) {
  const std::size_t open = directive.find('"'), close = directive.rfind('"');
  if (!startsWith(directive, "#include") || open == close) return;
  const std::string file =
      (std::filesystem::path(header.file).parent_path() / directive.substr(open + 1, close - open - 1)).string();
  const std::string text = textOf(file);
  const Header part = readHeader(file, text, routines);
  // The family is what the file comment says in its second line.
  const std::vector<std::string> lines = commentLines(text.substr(0, text.find("*/")));
  std::string family = lines.size() > 1 ? trim(lines[1]) : "";
  if (family.ends_with('.')) family.pop_back();
  header.parts.push_back({file, family});
  if (header.parts.back().family.empty()) report(file, 2, "no line that names the family");
  header.sections.insert(header.sections.end(), part.sections.begin(), part.sections.end());
}

// Walks through one header: of the preprocessor's lines those that include parts count, a doc comment belongs to the
// declaration that follows it, a comment that begins with dashes opens a section.
Header readHeader(const std::string& file, const std::string& text, std::vector<Routine>& routines) {
  Header header;
  header.file = file;
  int line = 1, commentLine = 0;
  std::string comment;
  std::size_t at = 0;
  const auto advance = [&](std::size_t end) {
    line += static_cast<int>(std::count(text.begin() + static_cast<std::ptrdiff_t>(at),
                                        text.begin() + static_cast<std::ptrdiff_t>(end), '\n'));
    at = end;
  };
  while (at < text.size()) {
    if (isBlank(text[at])) {
      advance(at + 1);
    } else if (text[at] == '#') {
      const std::size_t end = std::min(text.find('\n', at), text.size());
      readPart(header, text.substr(at, end - at), routines);
      advance(end);
    } else if (text.compare(at, 2, "/*") == 0) {
      const std::size_t end = text.find("*/", at + 2);
      if (end == std::string::npos) throw std::runtime_error(file + ": a comment does not end");
      const std::string body = text.substr(at, end + 2 - at);
      const std::vector<std::string> lines = commentLines(body);
      if (startsWith(body, "/** @file")) {
        parseContents(header, lines, line);
      } else if (startsWith(body, "/* ---")) {
        header.sections.push_back({file, lines.size() > 1 ? trim(lines[1]) : "", line + 1, 0});
      } else if (startsWith(body, "/**")) {
        if (!comment.empty()) report(file, commentLine, "a comment without declaration");
        comment = body;
        commentLine = line;
      }
      advance(end + 2);
    } else if (startsWith(text.substr(at, 10), "extern \"C\"")) {
      advance(text.find('{', at) + 1);
    } else if (text[at] == '}') {
      advance(at + 1);
    } else if (startsWith(text.substr(at, 5), "enum ")) { // constants of the interface
      const std::size_t end = text.find("};", at);
      if (end == std::string::npos) throw std::runtime_error(file + ": an enumeration does not end");
      if (comment.empty()) report(file, line, "an enumeration without a comment");
      comment.clear();
      advance(end + 2);
    } else {
      const std::size_t end = text.find(';', at);
      if (end == std::string::npos) throw std::runtime_error(file + ": a declaration does not end");
      Routine routine;
      routine.file = file;
      routine.line = line;
      if (!parseDeclaration(routine, text.substr(at, end - at))) {
        report(file, line, "not a declaration of a routine");
      } else {
        if (comment.empty()) report(file, line, routine.name + " has no comment");
        parseRoutineComment(routine, commentLines(comment), commentLine);
        if (header.sections.empty()) {
          report(file, line, routine.name + " stands outside the sections");
        } else {
          ++header.sections.back().count;
          routine.section = header.sections.back().title;
        }
        routines.push_back(routine);
      }
      comment.clear();
      advance(end + 1);
    }
  }
  return header;
}

// What a header of classes exports: classes with all their members, and single functions, as a demangler writes them.
struct ClassHeader {
  std::string file;
  std::vector<std::string> classes, functions;
};

struct Interface {
  std::vector<Header> headers;
  std::vector<Routine> routines;
  std::vector<ClassHeader> classHeaders;
};

ClassHeader readClassHeader(const std::string& file, const std::string& text) {
  ClassHeader header{file, {}, {}};
  const std::string visible = "__attribute__((visibility(\"default\")))";
  for (std::size_t at = text.find(visible); at != std::string::npos; at = text.find(visible, at + 1)) {
    const std::size_t line = text.rfind('\n', at) + 1;
    std::istringstream after(text.substr(at + visible.size()));
    std::string word;
    after >> word;
    if (text.compare(line, at - line, "class ") == 0) {
      header.classes.push_back(word.substr(0, word.find(':')));
    } else { // a function: what stands before its parameters
      std::string function;
      after >> function;
      header.functions.push_back(function.substr(0, function.find('(')));
    }
  }
  if (header.classes.empty() && header.functions.empty()) report(file, 1, "declares nothing that is exported");
  return header;
}

// The line for an argument: the routine's own, else that of the routine it is like, or of the one that this is like.  No
// further: a reader has to follow with the eyes.
const ArgumentLine* findLine(const std::map<std::string, const Routine*>& byName, const Routine& routine,
                             const std::string& argument) {
  const Routine* r = &routine;
  for (int hops = 0; hops <= 2 && r != nullptr; ++hops) {
    for (const ArgumentLine& line : r->lines)
      if (line.name == argument) return &line;
    const auto next = byName.find(r->like);
    r = next == byName.end() ? nullptr : next->second;
  }
  return nullptr;
}

Interface readInterface(const std::vector<std::string>& files) {
  Interface result;
  for (const std::string& file : files) {
    const std::string text = textOf(file);
    if (startsWith(text, "/** @file"))
      result.headers.push_back(readHeader(file, text, result.routines));
    else
      result.classHeaders.push_back(readClassHeader(file, text));
  }
  std::map<std::string, const Routine*> byName;
  for (const Routine& routine : result.routines)
    if (!byName.emplace(routine.name, &routine).second) report(routine.file, routine.line, routine.name + " twice");
  for (Routine& routine : result.routines) {
    if (!routine.like.empty() && byName.count(routine.like) == 0)
      report(routine.file, routine.line, routine.name + " is like the unknown " + routine.like);
    for (Argument& argument : routine.arguments) {
      argument.described = findLine(byName, routine, argument.name);
      if (argument.described == nullptr)
        report(routine.file, routine.line,
               routine.name + ": no line for argument " + argument.name + ", here or within two @like");
    }
  }
  return result;
}

// The word that says how an argument is used: the grammar's word where the unit is one, `value` for a physical unit.
std::string role(const std::string& unit) {
  static const char* const kWords[] = {"any",     "block",  "length", "count",   "rows", "stride", "list",
                                       "first",   "last",   "unread", "stretch", "mask", "flag",   "text",
                                       "address", "record", "cursor", "place",   "set",  "table"};
  for (const char* word : kWords)
    if (unit == word) return word;
  if (startsWith(unit, "entity of ")) return "entity";
  if (startsWith(unit, "count>=")) return "count";
  if (startsWith(unit, "code ")) return "code";
  if (startsWith(unit, "1..")) return "index";
  return "value";
}

// A dimension is *, a number, a name, a sum of such (name+number, name+name), or 2*name+2: a factor before the first name.
bool isDimension(const std::string& text, const std::set<std::string>& names) {
  if (text == "*" || isNumber(text) || names.count(text) != 0) return true;
  const std::size_t sign = text.find_last_of("+-");
  if (sign != std::string::npos && sign != 0) {
    const std::string last = trim(text.substr(sign + 1));
    return isDimension(trim(text.substr(0, sign)), names) && (isNumber(last) || names.count(last) != 0);
  }
  const std::size_t times = text.find('*');
  return times != std::string::npos && isNumber(trim(text.substr(0, times))) &&
         isDimension(trim(text.substr(times + 1)), names);
}

void checkArgument(const Routine& routine, const Argument& argument, const std::set<std::string>& names) {
  const ArgumentLine& line = *argument.described;
  const auto bad = [&](const std::string& text) {
    report(routine.file, routine.line, routine.name + ", argument " + argument.name + ": " + text);
  };
  const bool isPointer = argument.type.back() == '*';
  const bool isConst = startsWith(argument.type, "const ");
  if (!isPointer && line.direction != "in") bad("passed by value, yet [" + line.direction + "]");
  if (isPointer && line.direction == "in" && !isConst) bad("[in] without const");
  if (isPointer && line.direction != "in" && isConst) bad("[" + line.direction + "] with const");
  for (const std::string& dimension : line.shape)
    if (!isDimension(dimension, names) || dimension == argument.name)
      bad("the shape uses " + dimension + ", which is no other argument");
  const std::string use = role(line.unit);
  const bool isScalar = line.shape.size() == 1 && line.shape[0] == "1";
  static const std::set<std::string> kScalarRoles = {"block", "length", "count",  "rows", "stride", "first",
                                                     "last",  "index",  "unread", "code", "cursor", "place"};
  if (kScalarRoles.count(use) != 0 && !isScalar) bad("unit \"" + line.unit + "\" belongs to a scalar");
  const bool isInteger = argument.type.find("int32_t") != std::string::npos;
  if ((kScalarRoles.count(use) != 0 || use == "entity" || use == "list" || use == "set") && use != "unread" &&
      !isInteger)
    bad("unit \"" + line.unit + "\" belongs to an int32_t");
  const auto needsName = [&](const std::string& name) {
    if (name == "*" || !isDimension(name, names)) bad("unit \"" + line.unit + "\" names no argument");
  };
  if (use == "entity") needsName(line.unit.substr(10));
  if (use == "index") needsName(line.unit.substr(3));
  if (startsWith(line.unit, "count>=")) needsName(line.unit.substr(7));
}

void checkContents(const Header& header) {
  if (header.contentsLine == 0) report(header.file, 1, "no CONTENTS");
  const std::size_t n = std::max(header.contents.size(), header.sections.size());
  for (std::size_t i = 0; i < n; ++i) {
    if (i >= header.contents.size()) {
      report(header.sections[i].file, header.sections[i].line,
             "section \"" + header.sections[i].title + "\" is not in the contents");
    } else if (i >= header.sections.size()) {
      report(header.file, header.contents[i].line, "no section \"" + header.contents[i].title + "\"");
    } else {
      const ContentsEntry& entry = header.contents[i];
      const Section& section = header.sections[i];
      // The contents may shorten a title at a word.
      const bool same = startsWith(section.title + " ", entry.title + " ");
      const bool isPart = section.file != header.file;
      if (!same || entry.part != (isPart ? fileName(section.file) : "")) {
        report(header.file, entry.line,
               "contents: \"" + entry.title + "\", section: \"" + section.title + "\" of " + fileName(section.file));
      } else if (entry.count != section.count) {
        report(header.file, entry.line,
               "contents: \"" + entry.title + "\" has " + std::to_string(section.count) + " routines, not " +
                   std::to_string(entry.count));
      }
    }
  }
}

void check(const Interface& interface) {
  for (const Header& header : interface.headers) checkContents(header);
  for (const Routine& routine : interface.routines) {
    std::set<std::string> names;
    for (const Argument& argument : routine.arguments)
      if (!names.insert(argument.name).second)
        report(routine.file, routine.line, routine.name + ": two arguments " + argument.name);
    std::set<std::string> described;
    for (const ArgumentLine& line : routine.lines) {
      if (names.count(line.name) == 0) report(routine.file, line.line, routine.name + " has no argument " + line.name);
      if (!described.insert(line.name).second) report(routine.file, line.line, "a second line for " + line.name);
    }
    for (const Argument& argument : routine.arguments)
      if (argument.described != nullptr) checkArgument(routine, argument, names);
  }
}

// ---- the table of families in a page: rows between two marks, one a part of the headers

std::string familyRows(const Interface& interface) {
  std::ostringstream rows;
  rows << "| header | what it declares | routines |\n|---|---|---|\n";
  for (const Header& header : interface.headers) {
    const std::string folder = std::filesystem::path(header.file).parent_path().filename().string();
    for (const Part& part : header.parts) {
      int count = 0;
      for (const Section& section : header.sections) count += section.file == part.file ? section.count : 0;
      const std::string name =
          std::filesystem::path(part.file).parent_path().filename().string() + "/" + fileName(part.file);
      rows << "| [`" << name << "`](" << folder << "/" << name << ") | " << part.family << " | " << count << " |\n";
    }
  }
  return rows.str();
}

void compareTable(const std::string& page, const Interface& interface, bool isWritten) {
  const std::string begin = "<!-- families -->\n", end = "<!-- end of families -->";
  const std::string text = textOf(page);
  const std::size_t first = text.find(begin), last = text.find(end);
  if (first == std::string::npos || last == std::string::npos)
    return report(page, 1, "no marks of a table of families");
  const std::string wanted = text.substr(0, first + begin.size()) + familyRows(interface) + text.substr(last);
  if (wanted == text) return;
  if (!isWritten) return report(page, 1, "the table of families is out of date: sa_interface table --write");
  std::ofstream stream(page);
  if (!(stream << wanted).flush()) throw std::runtime_error("cannot write " + page);
}

void writeVersionScript(const Interface& interface) {
  std::cout << kVersion << " {\n  global:\n";
  for (const Routine& routine : interface.routines) std::cout << "    " << routine.name << ";\n";
  std::cout << "    extern \"C++\" {\n";
  for (const ClassHeader& header : interface.classHeaders) {
    for (const std::string& name : header.classes) {
      std::cout << "      " << name << "::*;\n";
      for (const char* part : {"typeinfo for ", "typeinfo name for ", "vtable for "})
        std::cout << "      \"" << part << name << "\";\n";
    }
    for (const std::string& name : header.functions) std::cout << "      \"" << name << "()\";\n";
  }
  std::cout << "    };\n  local:\n    *;\n};\n";
}

// One initialiser of {name, result, {arguments}} for each routine, to be included into an array.
void writeRegistry(const Interface& interface) {
  std::cout << "// Written from the headers; name, result, {name, role, type, direction, {shape}, unit}.\n";
  for (const Routine& routine : interface.routines) {
    std::cout << "{\"" << routine.name << "\", \"" << routine.result << "\", {\n";
    for (const Argument& argument : routine.arguments) {
      const ArgumentLine& line = *argument.described;
      std::cout << "  {\"" << argument.name << "\", \"" << role(line.unit) << "\", \"" << argument.type << "\", \""
                << line.direction << "\", {";
      for (std::size_t i = 0; i < line.shape.size(); ++i)
        std::cout << (i == 0 ? "\"" : ", \"") << line.shape[i] << "\"";
      std::cout << "}, \"" << line.unit << "\"},\n";
    }
    std::cout << "}},\n";
  }
}

void writeArguments(const Interface& interface) {
  std::cout << "// Written from the headers: the arguments of each routine, without types.\n#pragma once\n";
  for (const Routine& routine : interface.routines) {
    std::cout << "#define SA_ARGUMENTS_" << routine.name << " (";
    for (std::size_t k = 0; k < routine.arguments.size(); ++k)
      std::cout << (k == 0 ? "" : ", ") << routine.arguments[k].name;
    std::cout << ")\n";
  }
}

// The dynamic symbols that a library defines, with their versions; throws when nm cannot tell.
std::map<std::string, std::string> exportedSymbols(const std::string& library) {
  const std::string command = "nm -D --defined-only '" + library + "'";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run nm");
  std::string output;
  char buffer[4096];
  while (const std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) output.append(buffer, n);
  const int status = pclose(pipe);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) throw std::runtime_error("failed: " + command);
  std::map<std::string, std::string> symbols;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line);
    std::string address, kind, name;
    if (!(words >> address >> kind >> name)) throw std::runtime_error("nm: cannot read \"" + line + "\"");
    if (kind == "A") continue; // the version itself
    const std::size_t mark = name.find('@');
    symbols[name.substr(0, mark)] = mark == std::string::npos ? "" : name.substr(name.find_last_of('@') + 1);
  }
  if (symbols.empty()) throw std::runtime_error(library + " exports nothing");
  return symbols;
}

std::string demangle(const std::string& symbol) {
  int status = 0;
  char* const text = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status);
  const std::string result = status == 0 ? text : symbol;
  std::free(text);
  return result;
}

bool isPartOfClass(const std::string& symbol, const std::string& name) {
  return startsWith(symbol, name + "::") || symbol == "typeinfo for " + name || symbol == "typeinfo name for " + name ||
         symbol == "vtable for " + name;
}

// Takes the symbols that belong to a declaration out of the list; there must be one.
template <class Belongs>
void takeSymbols(std::map<std::string, std::string>& symbols, const std::string& file, const std::string& name,
                 Belongs belongs) {
  const std::size_t taken = std::erase_if(symbols, [&](const auto& symbol) { return belongs(symbol.first, name); });
  if (taken == 0) report(file, 0, name + " is not exported");
}

void compareSymbols(const std::string& library, const Interface& interface) {
  std::map<std::string, std::string> symbols = exportedSymbols(library);
  for (const Routine& routine : interface.routines) {
    const auto found = symbols.find(routine.name);
    if (found == symbols.end()) {
      report(routine.file, routine.line, routine.name + " is not exported");
      continue;
    }
    if (found->second != kVersion) report(routine.file, routine.line, routine.name + " has version " + found->second);
    symbols.erase(found);
  }
  std::map<std::string, std::string> demangled;
  for (const auto& [name, version] : symbols) demangled[demangle(name)] = version;
  for (const ClassHeader& header : interface.classHeaders) {
    for (const std::string& name : header.classes) takeSymbols(demangled, header.file, name, isPartOfClass);
    for (const std::string& name : header.functions)
      takeSymbols(demangled, header.file, name,
                  [](const std::string& symbol, const std::string& function) { return symbol == function + "()"; });
  }
  for (const auto& [name, version] : demangled) report(library, 0, name + " is exported without declaration");
}

void writeExported(const std::string& library) {
  for (const auto& [name, version] : exportedSymbols(library)) std::cout << name << "@" << version << "\n";
}

void checkKept(const std::string& library, const std::string& list) {
  const std::map<std::string, std::string> symbols = exportedSymbols(library);
  std::istringstream lines(textOf(list));
  int number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++number;
    const std::size_t mark = line.find('@');
    const auto found = symbols.find(line.substr(0, mark));
    if (found == symbols.end())
      report(list, number, demangle(line.substr(0, mark)) + " is no longer exported");
    else if (mark == std::string::npos || found->second != line.substr(mark + 1))
      report(list, number, line + " now has version " + found->second);
  }
  if (number == 0) throw std::runtime_error(list + " is empty");
  if (findings == 0) std::cout << "keeps: " << number << " of " << symbols.size() << " symbols listed, all exported\n";
}

int run(std::vector<std::string> words) {
  const bool isWritten = std::erase(words, "--write") > 0;
  const std::string command = words.empty() ? "" : words[0];
  if (command == "exported" && words.size() == 2) {
    writeExported(words[1]);
    return 0;
  }
  if (command == "keeps" && words.size() == 3) {
    checkKept(words[1], words[2]);
    return findings == 0 ? 0 : 1;
  }
  const std::size_t firstHeader = command == "symbols" || command == "table" ? 2 : 1;
  static const std::set<std::string> kCommands = {"check",     "version-script", "registry",
                                                  "arguments", "symbols",        "table"};
  if (kCommands.count(command) == 0 || words.size() <= firstHeader) {
    std::cerr << "usage: sa_interface check|version-script|registry|arguments HEADERS...\n"
                 "       sa_interface symbols LIB HEADERS...\n"
                 "       sa_interface exported LIB\n"
                 "       sa_interface keeps LIB LIST\n"
                 "       sa_interface table PAGE HEADERS... [--write]\n";
    return 2;
  }
  const Interface interface = readInterface({words.begin() + static_cast<std::ptrdiff_t>(firstHeader), words.end()});
  if (interface.routines.empty()) throw std::runtime_error("the headers declare nothing");
  if (command == "check") check(interface);
  if (findings == 0 && command == "version-script") writeVersionScript(interface);
  if (findings == 0 && command == "registry") writeRegistry(interface);
  if (findings == 0 && command == "arguments") writeArguments(interface);
  if (command == "symbols") compareSymbols(words[1], interface);
  if (command == "table") compareTable(words[1], interface, isWritten);
  if (findings == 0 && (command == "check" || command == "symbols"))
    std::cout << command << ": " << interface.routines.size() << " routines\n";
  return findings == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv) {
  try {
    return run({argv + 1, argv + argc});
  } catch (const std::exception& e) {
    std::cerr << "sa_interface: " << e.what() << "\n";
    return 2;
  }
}
