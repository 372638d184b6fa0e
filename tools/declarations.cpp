#include "declarations.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>

namespace sa::tool {
namespace {

bool isNameCharacter(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }
bool isBlank(char c) { return std::isspace(static_cast<unsigned char>(c)) != 0; }

} // namespace

int findings = 0;

void report(const std::string& file, int line, const std::string& text) {
  std::cerr << file << ":" << line << ": " << text << "\n";
  ++findings;
}

bool isNumber(const std::string& text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

bool startsWith(const std::string& text, const std::string& start) { return text.compare(0, start.size(), start) == 0; }

std::string trim(const std::string& text) {
  const auto first = std::find_if_not(text.begin(), text.end(), isBlank);
  const auto last = std::find_if_not(text.rbegin(), text.rend(), isBlank).base();
  return first < last ? std::string(first, last) : std::string();
}

std::string fileName(const std::string& file) { return std::filesystem::path(file).filename().string(); }

std::string textOf(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) throw std::runtime_error("cannot read " + file);
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

namespace {

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
  result.meaning = trim(text.substr(colon + 2));
  if (result.meaning.empty()) return bad("no meaning");
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

// Without blank lines at either end and without the blanks that all lines begin with.
std::vector<std::string> withoutMargins(std::vector<std::string> lines) {
  std::size_t margin = std::string::npos;
  for (std::string& line : lines) {
    line.erase(line.find_last_not_of(' ') + 1);
    if (!line.empty()) margin = std::min(margin, line.find_first_not_of(' '));
  }
  for (std::string& line : lines) line.erase(0, std::min(margin, line.size()));
  while (!lines.empty() && lines.back().empty()) lines.pop_back();
  while (!lines.empty() && lines.front().empty()) lines.erase(lines.begin());
  return lines;
}

// What stands below the title of a section, between the two lines of dashes.
std::vector<std::string> sectionText(const std::vector<std::string>& lines) {
  if (lines.size() < 4) return {};
  return withoutMargins({lines.begin() + 2, lines.end() - 1});
}

// "/** Text" stands at the margin of the lines below it, " *  text".
std::vector<std::string> textLines(std::vector<std::string> lines) {
  if (!lines.empty()) lines.front() = "  " + trim(lines.front());
  return withoutMargins(lines);
}

void parseRoutineComment(Routine& routine, const std::vector<std::string>& lines, int first) {
  std::vector<std::string> words;
  std::string* meaning = nullptr; // of the last argument line, which may go on below
  for (std::size_t i = 0; i < lines.size(); ++i) {
    const std::string text = trim(lines[i]);
    const int number = first + static_cast<int>(i);
    if (startsWith(text, "@param")) {
      if (auto line = parseArgumentLine(routine.file, number, text)) {
        routine.lines.push_back(*line);
        meaning = &routine.lines.back().meaning;
      }
    } else if (startsWith(text, "@like ")) {
      if (!routine.like.empty()) report(routine.file, number, "a second @like");
      routine.like = trim(text.substr(6));
    } else if (startsWith(text, "@")) {
      report(routine.file, number, "unknown command " + text.substr(0, text.find(' ')));
    } else if (meaning == nullptr) {
      words.push_back(lines[i]);
    } else if (!text.empty()) {
      *meaning += " " + text;
    }
  }
  routine.text = textLines(words);
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

Header readHeader(const std::string& file, const std::string& text, Interface& interface);

// A part: '#include "folder/family.h"', beside the header that includes it.
void readPart(Header& header, const std::string& directive, Interface& interface) {
  const std::size_t open = directive.find('"'), close = directive.rfind('"');
  if (!startsWith(directive, "#include") || open == close) return;
  const std::string file =
      (std::filesystem::path(header.file).parent_path() / directive.substr(open + 1, close - open - 1)).string();
  const std::string text = textOf(file);
  const Header part = readHeader(file, text, interface);
  // The family is what the file comment says in its second line.
  const std::vector<std::string> lines = commentLines(text.substr(0, text.find("*/")));
  std::string family = lines.size() > 1 ? trim(lines[1]) : "";
  if (family.ends_with('.')) family.pop_back();
  header.parts.push_back({file, family});
  if (header.parts.back().family.empty()) report(file, 2, "no line that names the family");
  header.sections.insert(header.sections.end(), part.sections.begin(), part.sections.end());
}

// "enum { NAME = value, /* meaning */ ... ": a value a line.
void parseConstants(Interface& interface, const std::string& text) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    const std::size_t equals = line.find('='), mark = line.find("/*");
    if (equals == std::string::npos) continue;
    std::string value = trim(line.substr(equals + 1, mark == std::string::npos ? mark : mark - equals - 1));
    if (value.ends_with(',')) value.pop_back();
    const std::string meaning =
        mark == std::string::npos ? "" : trim(line.substr(mark + 2, line.find("*/") - mark - 2));
    interface.constants.push_back({trim(line.substr(0, equals)), value, meaning});
  }
}

// Walks through one header: of the preprocessor's lines those that include parts count, a doc comment belongs to the
// declaration that follows it, a comment that begins with dashes opens a section.
Header readHeader(const std::string& file, const std::string& text, Interface& interface) {
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
      readPart(header, text.substr(at, end - at), interface);
      advance(end);
    } else if (text.compare(at, 2, "/*") == 0) {
      const std::size_t end = text.find("*/", at + 2);
      if (end == std::string::npos) throw std::runtime_error(file + ": a comment does not end");
      const std::string body = text.substr(at, end + 2 - at);
      const std::vector<std::string> lines = commentLines(body);
      if (startsWith(body, "/** @file")) {
        parseContents(header, lines, line);
      } else if (startsWith(body, "/* ---")) {
        header.sections.push_back({file, lines.size() > 1 ? trim(lines[1]) : "", line + 1, 0, sectionText(lines)});
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
      parseConstants(interface, text.substr(at, end - at));
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
        interface.routines.push_back(routine);
      }
      comment.clear();
      advance(end + 1);
    }
  }
  return header;
}

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

} // namespace

Interface readInterface(const std::vector<std::string>& files) {
  Interface result;
  for (const std::string& file : files) {
    const std::string text = textOf(file);
    if (startsWith(text, "/** @file"))
      result.headers.push_back(readHeader(file, text, result));
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

bool isPassedByValue(const Argument& argument) { return argument.type.back() != '*'; }

bool isScalar(const ArgumentLine& line) {
  return line.shape.size() == 1 && line.shape[0] == "1" && line.unit != "text";
}

bool isListOfTexts(const Argument& argument) { return argument.type == "const char* const*"; }

bool isLengthOfText(const Routine& routine, const Argument& argument) {
  return std::any_of(routine.arguments.begin(), routine.arguments.end(), [&](const Argument& text) {
    return text.described->unit == "text" && text.described->shape[0] == argument.name;
  });
}

} // namespace sa::tool
