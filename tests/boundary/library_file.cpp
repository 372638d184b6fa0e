#include "library_file.h"

#include <sys/wait.h>

#include <cstdio>
#include <stdexcept>

namespace sa::test {

Output run(const std::string& command) {
  FILE* pipe = popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  Output output;
  std::string line;
  for (int c = std::fgetc(pipe); c != EOF; c = std::fgetc(pipe)) {
    if (c != '\n') {
      line += static_cast<char>(c);
      continue;
    }
    output.lines.push_back(line);
    line.clear();
  }
  if (!line.empty()) output.lines.push_back(line);
  const int status = pclose(pipe);
  output.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return output;
}

std::vector<Function> disassemble(const std::string& library) {
  const Output output = run("objdump -d --no-show-raw-insn '" + library + "'");
  if (output.status != 0) throw std::runtime_error("objdump failed on " + library);
  std::vector<Function> functions;
  for (const std::string& line : output.lines) {
    // "0000000000008160 <name>:" and "    8160:\tvmulpd ..."
    const std::size_t open = line.find(" <"), tab = line.find('\t');
    if (tab == std::string::npos && open != std::string::npos && line.size() > 2 &&
        line.substr(line.size() - 2) == ">:") {
      functions.push_back({line.substr(open + 2, line.size() - open - 4), {}});
    } else if (tab != std::string::npos && !functions.empty()) {
      functions.back().instructions.push_back(line.substr(tab + 1));
    }
  }
  return functions;
}

} // namespace sa::test
