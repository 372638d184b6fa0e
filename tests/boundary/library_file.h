// What the object tools of the system say about a built library.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace sa::test {

struct Output {
  int status = -1;
  std::vector<std::string> lines;
};

// A command's standard output and error.
Output run(const std::string& command);

// Instructions of each function, as disassembled: "vmulpd %zmm0,...", without addresses.
struct Function {
  std::string name;
  std::vector<std::string> instructions;
};
std::vector<Function> disassemble(const std::string& library);

} // namespace sa::test
