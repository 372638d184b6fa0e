// The interface as JSON, for programs that make something of it in their own language.
#include "declarations.h"

#include <cstdio>
#include <iostream>

namespace sa::tool {
namespace {

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    char code[8];
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(c));
      result += code;
    } else {
      result += c;
    }
  }
  return result + "\"";
}

std::string joined(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return quoted(text);
}

std::string listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + quoted(text);
  return "[" + list + "]";
}

void writeRoutine(const Routine& routine) {
  std::cout << "{\"name\": " << quoted(routine.name) << ", \"file\": " << quoted(fileName(routine.file))
            << ", \"section\": " << quoted(routine.section) << ", \"result\": " << quoted(routine.result)
            << ",\n \"text\": " << joined(routine.text) << ",\n \"arguments\": [";
  const char* separator = "\n";
  for (const Argument& argument : routine.arguments) {
    const ArgumentLine& line = *argument.described;
    std::cout << separator << "  {\"name\": " << quoted(argument.name) << ", \"type\": " << quoted(argument.type)
              << ", \"direction\": " << quoted(line.direction) << ", \"shape\": " << listed(line.shape)
              << ", \"unit\": " << quoted(line.unit) << ", \"role\": " << quoted(role(line.unit))
              << ", \"meaning\": " << quoted(line.meaning) << "}";
    separator = ",\n";
  }
  std::cout << "]}";
}

} // namespace

void writeDescription(const Interface& interface) {
  std::cout << "{\"constants\": [";
  const char* separator = "\n";
  for (const Constant& constant : interface.constants) {
    std::cout << separator << "{\"name\": " << quoted(constant.name) << ", \"value\": " << constant.value
              << ", \"meaning\": " << quoted(constant.meaning) << "}";
    separator = ",\n";
  }
  std::cout << "],\n\"sections\": [";
  separator = "\n";
  for (const Header& header : interface.headers) {
    for (const Section& section : header.sections) {
      std::cout << separator << "{\"file\": " << quoted(fileName(section.file))
                << ", \"title\": " << quoted(section.title) << ",\n \"text\": " << joined(section.text) << "}";
      separator = ",\n";
    }
  }
  std::cout << "],\n\"routines\": [";
  separator = "\n";
  for (const Routine& routine : interface.routines) {
    std::cout << separator;
    writeRoutine(routine);
    separator = ",\n";
  }
  std::cout << "]}\n";
}

} // namespace sa::tool
