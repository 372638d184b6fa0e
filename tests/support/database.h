// Databases, read with SQLite alone.
#pragma once

#include <filesystem>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <vector>

namespace sharedanalysis::test {

using Row = std::vector<std::string>;
using Rows = std::vector<Row>;

class Database {
public:
  explicit Database(const std::filesystem::path& file, int flags = SQLITE_OPEN_READONLY) {
    if (sqlite3_open_v2(file.c_str(), &database_, flags, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(database_));
  }
  ~Database() { sqlite3_close(database_); }
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  Rows rows(const std::string& sql) {
    Rows all;
    const auto keep = [](void* to, int columns, char** values, char**) {
      Row& row = static_cast<Rows*>(to)->emplace_back();
      for (int k = 0; k < columns; ++k) row.emplace_back(values[k] == nullptr ? "NULL" : values[k]);
      return 0;
    };
    if (sqlite3_exec(database_, sql.c_str(), keep, &all, nullptr) != SQLITE_OK)
      throw std::runtime_error(sqlite3_errmsg(database_));
    return all;
  }
  // Columns parted by bars, rows by semicolons.
  std::string text(const std::string& sql) {
    std::string all;
    for (const Row& row : rows(sql)) {
      if (!all.empty()) all += "; ";
      for (std::size_t k = 0; k < row.size(); ++k) all += (k > 0 ? "|" : "") + row[k];
    }
    return all;
  }
  std::string value(const std::string& sql) {
    const Rows all = rows(sql);
    return all.size() == 1 && all[0].size() == 1 ? all[0][0] : std::to_string(all.size()) + " rows";
  }
  int64_t number(const std::string& sql) { return std::stoll(value(sql)); }

private:
  sqlite3* database_ = nullptr;
};

} // namespace sharedanalysis::test
