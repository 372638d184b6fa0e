// The interface as JSON, for programs that make something of it in their own language.
#include "declarations.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace sa::tool {
namespace {

std::string json(const std::string& text) {
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
  return json(text);
}

std::string listed(const std::vector<std::string>& texts) {
  std::string list;
  for (const std::string& text : texts) list += (list.empty() ? "" : ", ") + json(text);
  return "[" + list + "]";
}

// As programs include it: "glo/linear.h".
std::string included(const Interface& interface, const std::string& file) {
  const auto folder = std::filesystem::path(interface.headers.front().file).parent_path();
  return std::filesystem::path(file).lexically_relative(folder).generic_string();
}

void writeRoutine(const Interface& interface, const Routine& routine) {
  std::cout << "{\"name\": " << json(routine.name) << ", \"file\": " << json(included(interface, routine.file))
            << ", \"line\": " << routine.line << ", \"section\": " << json(routine.section)
            << ", \"result\": " << json(routine.result) << ", \"brief\": " << json(summary(routine))
            << ",\n \"text\": " << joined(routine.text) << ",\n \"arguments\": [";
  const char* separator = "\n";
  for (const Argument& argument : routine.arguments) {
    const ArgumentLine& line = *argument.described;
    std::cout << separator << "  {\"name\": " << json(argument.name) << ", \"type\": " << json(argument.type)
              << ", \"direction\": " << json(line.direction) << ", \"shape\": " << listed(line.shape)
              << ", \"unit\": " << json(line.unit) << ", \"role\": " << json(role(line.unit))
              << ", \"meaning\": " << json(line.meaning) << "}";
    separator = ",\n";
  }
  std::cout << "]}";
}

} // namespace

void writeDescription(const Interface& interface) {
  std::cout << "{\"constants\": [";
  const char* separator = "\n";
  for (const Constant& constant : interface.constants) {
    std::cout << separator << "{\"name\": " << json(constant.name) << ", \"value\": " << constant.value
              << ", \"meaning\": " << json(constant.meaning) << "}";
    separator = ",\n";
  }
  std::cout << "],\n\"families\": [";
  separator = "\n";
  for (const Header& header : interface.headers) {
    for (const Part& part : header.parts) {
      std::cout << separator << "{\"file\": " << json(included(interface, part.file))
                << ", \"title\": " << json(part.family) << "}";
      separator = ",\n";
    }
  }
  std::cout << "],\n\"sections\": [";
  separator = "\n";
  for (const Header& header : interface.headers) {
    for (const Section& section : header.sections) {
      std::cout << separator << "{\"file\": " << json(included(interface, section.file))
                << ", \"title\": " << json(section.title) << ",\n \"text\": " << joined(section.text) << "}";
      separator = ",\n";
    }
  }
  std::cout << "],\n\"routines\": [";
  separator = "\n";
  for (const Routine& routine : interface.routines) {
    std::cout << separator;
    writeRoutine(interface, routine);
    separator = ",\n";
  }
  std::cout << "]}\n";
}

} // namespace sa::tool
