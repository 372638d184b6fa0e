// Files of the tests: a directory of its own for each test, and texts.
#pragma once

#include "tests/support/test.h"

#include <regex>

namespace sharedanalysis::test {

// Empty at first and gone with the object.
class TemporaryDirectory {
public:
  TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sharedanalysis_test_XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("no temporary directory");
    path_ = pattern;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  const std::filesystem::path& path() const { return path_; }

private:
  std::filesystem::path path_;
};

// One that is the working directory as long as it is there.
class WorkingDirectory : public TemporaryDirectory {
public:
  WorkingDirectory() : before_(std::filesystem::current_path()) { std::filesystem::current_path(path()); }
  ~WorkingDirectory() {
    std::error_code ignored;
    std::filesystem::current_path(before_, ignored);
  }

private:
  std::filesystem::path before_;
};

inline void writeFile(const std::filesystem::path& file, const std::string& text) {
  std::ofstream stream(file, std::ios::binary);
  stream << text;
  stream.close();
  if (!stream) throw std::runtime_error("cannot write " + file.string());
}

inline std::string readFile(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream) throw std::runtime_error("cannot read " + file.string());
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// Names of the files in a directory.
inline std::set<std::string> filesIn(const std::filesystem::path& directory) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) names.insert(entry.path().filename());
  return names;
}

// The first `from` in a text becomes `to`; it must be there.
inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const std::size_t at = text.find(from);
  if (at == std::string::npos) throw std::invalid_argument("nothing to replace: " + from);
  return text.replace(at, from.size(), to);
}

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

inline std::vector<std::string> partsOf(const std::string& text, const std::string& between) {
  std::vector<std::string> parts;
  for (std::size_t at = 0, end = 0; end != std::string::npos; at = end + between.size()) {
    end = text.find(between, at);
    if (at < text.size() && end != at) parts.push_back(text.substr(at, end - at));
  }
  return parts;
}

// Rows of a table that is written as text: columns are parted by -> and =>, and a line that begins with blanks goes on with the
// one before.  A semicolon in a column before the last is the end of a line.
using Row = std::vector<std::string>;
inline std::vector<Row> tableOf(const std::string& text) {
  static const std::regex kGoesOn("\n +"), kArrow(" *[-=]> ?"), kEnd("; ");
  std::vector<Row> rows;
  for (const std::string& line : linesOf(std::regex_replace(text, kGoesOn, " "))) {
    if (line.empty()) continue;
    Row row(std::sregex_token_iterator(line.begin(), line.end(), kArrow, -1), {});
    for (std::size_t k = 0; k + 1 < row.size() || k == 0; ++k) row[k] = std::regex_replace(row[k], kEnd, "\n");
    rows.push_back(row);
  }
  return rows;
}

// What a call says that fails with such an error; "nothing" when it does not fail.
template <class Error>
std::string thrown(const auto& call) {
  try {
    call();
  } catch (const Error& error) {
    return error.what();
  }
  return "nothing";
}

inline bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

inline int countOf(const std::string& part, const std::string& text) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

} // namespace sharedanalysis::test
