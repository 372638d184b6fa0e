#include "case_table.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

namespace sharedanalysis::solver {

std::string readText(const std::filesystem::path& file) {
  errno = 0;
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw InputError(file.string() + ": cannot be opened: " + std::strerror(errno));
  if (std::filesystem::is_directory(file)) throw InputError(file.string() + ": is a directory, expected a case file");
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

toml::table parseCase(const std::filesystem::path& file, const std::string& text) {
  try {
    return toml::parse(text, file.string());
  } catch (const toml::parse_error& error) {
    throw InputError(placeOf(file.string(), error.source()) + ": " + std::string(error.description()));
  }
}

} // namespace sharedanalysis::solver
