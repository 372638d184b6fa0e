// Reads the public headers, which are the registry of the interface, checks them and derives lists from them.
//
//   sa_interface check HEADERS...            holds declarations, argument lines and contents against each other
//   sa_interface table PAGE HEADERS...       holds a page's table of families against the headers; --write brings it up to date
//   sa_interface version-script HEADERS...   the linker's version script
//   sa_interface registry HEADERS...         a C++ table of all routines and arguments
//   sa_interface arguments HEADERS...        macros with the argument lists without types, for the definitions of kernels
//   sa_interface fortran HEADERS...          a Fortran module with an interface for every routine
//   sa_interface description HEADERS...      all of it as JSON: routines, arguments, texts; the Python package is made from it
//   sa_interface calls HEADERS...            the table of all arguments and a call of every routine from a list of addresses
//   sa_interface wrappers HEADERS...         every routine anew, led through the checks of the checking library
//   sa_interface manual FOLDER HEADERS...    a manual page of section 3 for every routine
//   sa_interface symbols LIB HEADERS...      holds the exported symbols of a library against the headers
//   sa_interface exported LIB                the exported symbols of a library with their versions, sorted
//   sa_interface keeps LIB LIST              whether a library still exports all of such a list
//
// A header that begins with "/** @file" declares routines with C linkage, itself or in parts: the headers of a family each
// that it includes from a folder of its own.  Any other declares classes: their members are exported, and the
// specialisations of templates that it declares with default visibility.
//
// Findings go to standard error as file:line; the exit code is 0 only when there are none.
#include "declarations.h"

#include <cxxabi.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

namespace {

using namespace sa::tool;

const char* const kVersion = "SHAREDANALYSIS_1";

void checkArgument(const Routine& routine, const Argument& argument, const std::set<std::string>& names) {
  const ArgumentLine& line = *argument.described;
  const auto bad = [&](const std::string& text) {
    report(routine.file, routine.line, routine.name + ", argument " + argument.name + ": " + text);
  };
  const bool isPointer = !isPassedByValue(argument);
  const bool isConst = startsWith(argument.type, "const ");
  if (!isPointer && line.direction != "in") bad("passed by value, yet [" + line.direction + "]");
  if (isPointer && line.direction == "in" && !isConst) bad("[in] without const");
  if (isPointer && line.direction != "in" && isConst) bad("[" + line.direction + "] with const");
  for (const std::string& dimension : line.shape)
    if (!isDimension(dimension, names) || dimension == argument.name)
      bad("the shape uses " + dimension + ", which is no other argument");
  const std::string use = role(line.unit);
  static const std::set<std::string> kScalarRoles = {"block", "length", "count",  "rows", "stride", "first",
                                                     "last",  "index",  "unread", "code", "cursor", "place"};
  if (kScalarRoles.count(use) != 0 && !isScalar(line)) bad("unit \"" + line.unit + "\" belongs to a scalar");
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
  if (command == "program-page" && words.size() == 3) {
    writeProgramPage(std::cin, words[1], words[2], std::cout);
    return 0;
  }
  const std::size_t firstHeader = command == "symbols" || command == "table" || command == "manual" ? 2 : 1;
  static const std::set<std::string> kCommands = {"check",   "version-script", "registry", "arguments",
                                                  "symbols", "table",          "fortran",  "description",
                                                  "manual",  "calls",          "wrappers"};
  if (kCommands.count(command) == 0 || words.size() <= firstHeader) {
    std::cerr
        << "usage: sa_interface check|version-script|registry|arguments|fortran|description|calls|wrappers HEADERS...\n"
           "       sa_interface manual FOLDER HEADERS...\n"
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
  if (findings == 0 && command == "fortran") writeFortran(interface);
  if (findings == 0 && command == "description") writeDescription(interface);
  if (findings == 0 && command == "calls") writeCalls(interface);
  if (findings == 0 && command == "wrappers") writeWrappers(interface);
  if (findings == 0 && command == "manual") writeManual(interface, words[1]);
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