// What libSharedAnalysisChecked.so and sharedanalysis-replay know of the routines: a table of all arguments, a typed call of
// each routine from a list of addresses, and a wrapper of each.
#include "declarations.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <iostream>

namespace sa::tool {
namespace {

// A dimension as a factor, up to three arguments and a constant: {constant, factor, {arguments}}; * is a constant below 0.
std::string dimension(const Routine& routine, std::string text) {
  std::string constant = "0", factor = "1", arguments;
  int count = 0, sum = 0;
  if (text == "*") return "{-1, 1, {-1, -1, -1}}";
  for (std::size_t at = 0; at < text.size();) {
    const int sign = text[at] == '-' ? -1 : 1;
    if (text[at] == '+' || text[at] == '-') ++at;
    const std::size_t end = std::min(text.find_first_of("+-", at), text.size());
    std::string term = trim(text.substr(at, end - at));
    at = end;
    if (const std::size_t times = term.find('*'); times != std::string::npos) {
      factor = trim(term.substr(0, times));
      term = trim(term.substr(times + 1));
    }
    if (isNumber(term)) {
      sum += sign * std::stoi(term);
      continue;
    }
    for (std::size_t k = 0; k < routine.arguments.size(); ++k)
      if (routine.arguments[k].name == term) arguments += std::to_string(k) + ", ", ++count;
  }
  for (; count < 3; ++count) arguments += "-1, ";
  return "{" + std::to_string(sum) + ", " + factor + ", {" + arguments.substr(0, arguments.size() - 2) + "}}";
}

std::string typeName(const Routine& routine, const Argument& argument) {
  if (isListOfTexts(argument)) return "texts";
  for (const auto& [word, name] : {std::pair{"int32_t", "int32"},
                                   {"int64_t", "int64"},
                                   {"double", "real"},
                                   {"float", "single"},
                                   {"char", "character"}})
    if (argument.type.find(word) != std::string::npos) return name;
  report(routine.file, routine.line, routine.name + ": no type of " + argument.name);
  return "";
}

std::string roleName(const Argument& argument) {
  const std::string& unit = argument.described->unit;
  if (unit == "plane stretch") return "planeStretch";
  if (unit == "axial stretch") return "axialStretch";
  if (unit == "properties") return unit;
  return role(unit);
}

bool says(const std::string& text, const char* words) { return text.find(words) != std::string::npos; }
bool saysAny(const std::string& text, std::initializer_list<const char*> list) {
  return std::any_of(list.begin(), list.end(), [&](const char* words) { return says(text, words); });
}

// An argument that is not read in every call, so that a caller may give anything for it.
bool isOptional(const Routine& routine, const Argument& argument) {
  const ArgumentLine& line = *argument.described;
  if (line.unit == "unread") return true;
  if (saysAny(line.meaning, {"not read", "read by", "not used", "may be null"}) && !says(line.meaning, "are not read"))
    return true;
  for (const Argument& other : routine.arguments)
    if (says(other.described->meaning, ("reads " + argument.name).c_str())) return true;
  // A table says which variables it reads.
  const auto isTable = [](const Argument& other) { return other.described->unit == "table"; };
  if (std::any_of(routine.arguments.begin(), routine.arguments.end(), isTable) && !isTable(argument) &&
      !isScalar(line) && argument.name != "value" && role(line.unit) != "list")
    return true;
  // Values of messages and diagnostics may be left out.
  const bool isMessage = says(routine.file, "acd/") || says(routine.file, "messages.h");
  return isMessage && !isScalar(line) && line.unit != "text";
}

// What the text of a section says of all its routines.
bool sectionSays(const Interface& interface, const Routine& routine, const char* words) {
  for (const Header& header : interface.headers)
    for (const Section& section : header.sections)
      if (section.file == routine.file && section.title == routine.section)
        for (const std::string& line : section.text)
          if (says(line, words)) return true;
  return false;
}

// The input whose memory an output may be, by the texts of the routine, of its section and of the argument itself.
std::string inPlaceOf(const Interface& interface, const Routine& routine, const Argument& argument) {
  if (argument.described->direction != "out") return "-1";
  for (std::size_t k = 0; k < routine.arguments.size(); ++k) {
    const Argument& input = routine.arguments[k];
    if (input.described->direction != "in" || input.described->shape != argument.described->shape) continue;
    const std::string words = "may be " + input.name, named = argument.name + " " + words;
    const bool isSaid = std::any_of(routine.text.begin(), routine.text.end(),
                                    [&](const std::string& text) { return says(text, named.c_str()); });
    if (isSaid || sectionSays(interface, routine, named.c_str()) || says(argument.described->meaning, words.c_str()))
      return std::to_string(k);
  }
  return "-1";
}

// The count that says of an array that it is not read without it: "0 or less: none, and map and table are not read".
std::string readIf(const Routine& routine, const Argument& argument) {
  for (std::size_t k = 0; k < routine.arguments.size(); ++k) {
    const std::string& meaning = routine.arguments[k].described->meaning;
    const std::size_t begin = meaning.find("0 or less"), end = meaning.find("are not read");
    if (begin != std::string::npos && end != std::string::npos && !isScalar(*argument.described) &&
        saysAny(meaning.substr(begin, end - begin),
                {(" " + argument.name + " ").c_str(), (" " + argument.name + ",").c_str()}))
      return std::to_string(k);
  }
  return "-1";
}

void writeArgument(const Interface& interface, const Routine& routine, const Argument& argument) {
  const ArgumentLine& line = *argument.described;
  std::string bound = "0", target = "-1";
  bool hasBound = false;
  if (startsWith(line.unit, "count>=")) bound = line.unit.substr(7), hasBound = true;
  if (startsWith(line.unit, "1..")) bound = line.unit.substr(3), hasBound = true;
  for (std::size_t k = 0; k < routine.arguments.size(); ++k)
    if (line.unit == "entity of " + routine.arguments[k].name) target = std::to_string(k);
  std::string flags;
  if (isPassedByValue(argument)) flags += "kByValue | ";
  if (isOptional(routine, argument)) flags += "kOptional | ";
  if (isScalar(line)) flags += "kScalar | ";
  if (hasBound) flags += "kBounded | ";
  if (isLengthOfText(routine, argument)) flags += "kTextLength | ";
  if (saysAny(line.meaning, {"below 1 ", "none below 1", "0 or less"})) flags += "kMayBeNegative | ";
  if (saysAny(line.meaning, {"any other", "another", "nonzero", "in one dimension"})) flags += "kAnyCode | ";
  if (startsWith(line.unit, "code ") && says(line.meaning, ("any other as " + line.unit.substr(5, 1)).c_str()))
    flags += "kElseFirst | ";
  if (line.unit == "stretch" && (says(line.meaning, "principal") || says(line.meaning, "S30")))
    flags += "kPrincipal | ";
  if (argument.name == "stretch0") flags += "kZerosForNone | ";
  flags = flags.empty() ? "0" : flags.substr(0, flags.size() - 3);
  std::cout << "{\"" << argument.name << "\", \"" << line.unit << "\", Type::" << typeName(routine, argument)
            << ", Role::" << roleName(argument) << ", Direction::"
            << (line.direction == "in,out" ? "both"
                : line.direction == "out"  ? "out"
                                           : "in")
            << ", " << flags << ", " << line.shape.size() << ", " << target << ", "
            << inPlaceOf(interface, routine, argument) << ", " << readIf(routine, argument) << ",\n "
            << (hasBound ? dimension(routine, bound) : "{}") << ", {";
  for (std::size_t d = 0; d < line.shape.size(); ++d)
    std::cout << (d == 0 ? "" : ", ") << dimension(routine, line.shape[d]);
  std::cout << "}},\n";
}

std::string resultName(const std::string& type) {
  return type == "void" ? "none" : type == "double" ? "real" : type == "int32_t" ? "int32" : "address";
}

std::string parameters(const Routine& routine, bool hasNames) {
  std::string list;
  for (const Argument& argument : routine.arguments)
    list += (list.empty() ? "" : ", ") + argument.type + (hasNames ? " " + argument.name : "");
  return "(" + (list.empty() ? "void" : list) + ")";
}

} // namespace

void writeCalls(const Interface& interface) {
  std::cout
      << "// Written from the headers: the arguments of all routines, and a call of each from a list of addresses.\n"
         "const Argument kArguments[] = {\n";
  for (const Routine& routine : interface.routines)
    for (const Argument& argument : routine.arguments) writeArgument(interface, routine, argument);
  std::cout << "};\n";
  for (const Routine& routine : interface.routines) {
    std::cout << "void call_" << routine.name
              << "([[maybe_unused]] void* routine, [[maybe_unused]] const void* const* a, "
              << "[[maybe_unused]] void* result) {\n  ";
    if (routine.result != "void") std::cout << "*static_cast<" << routine.result << "*>(result) = ";
    std::cout << "reinterpret_cast<" << routine.result << " (*)" << parameters(routine, false) << ">(routine)(";
    for (std::size_t k = 0; k < routine.arguments.size(); ++k) {
      const Argument& argument = routine.arguments[k];
      std::cout << (k == 0 ? "" : ", ");
      if (isPassedByValue(argument))
        std::cout << "*static_cast<const " << argument.type << "*>(a[" << k << "])";
      else
        std::cout << "(" << argument.type << ")a[" << k << "]";
    }
    std::cout << ");\n}\n";
  }
  std::cout << "const Routine kRoutines[] = {\n";
  std::size_t first = 0;
  for (const Routine& routine : interface.routines) {
    std::string flags;
    if (sectionSays(interface, routine, "Outputs may be inputs")) flags += "kInPlace | ";
    for (const std::string& line : routine.text) {
      if (says(line, "both are the same address")) flags += "kInPlace | ";
      if (says(line, "array = NaN")) flags += "kMakesNaN | ";
    }
    if (says(routine.file, "messages.h")) flags += "kMessage | ";
    std::string family = routine.file.substr(routine.file.find_last_of('/', routine.file.find_last_of('/') - 1) + 1);
    std::cout << "{\"" << routine.name << "\", \"" << family << "\", Type::" << resultName(routine.result) << ", "
              << (flags.empty() ? "0" : flags.substr(0, flags.size() - 3)) << ", " << first << ", "
              << routine.arguments.size() << ", call_" << routine.name << "},\n";
    first += routine.arguments.size();
  }
  std::cout << "};\n";
}

void writeWrappers(const Interface& interface) {
  std::cout << "// Written from the headers: every exported routine, led through the checks.\n";
  unsigned index = 0;
  for (const Routine& routine : interface.routines) {
    std::cout << "extern \"C\" " << routine.result << " " << routine.name << parameters(routine, true) << " {\n";
    if (routine.result != "void") std::cout << "  " << routine.result << " result{};\n";
    std::cout << "  const void* const arguments[] = {";
    for (const Argument& argument : routine.arguments)
      std::cout << (isPassedByValue(argument) ? "&" : "") << argument.name << ", ";
    std::cout << "nullptr};\n  sa::checked::run(" << index++ << ", arguments, "
              << (routine.result == "void" ? "nullptr" : "&result") << ", __builtin_return_address(0));\n";
    if (routine.result != "void") std::cout << "  return result;\n";
    std::cout << "}\n";
  }
}

} // namespace sa::tool
