// SQLite with errors as exceptions; only what the diagnostic database needs.
#pragma once

#include <cstdint>
#include <optional>
#include <sqlite3.h>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace sharedanalysis::sqlite {

// errno behind a failed read or write of a connection, or 0.
inline int systemErrorOf(sqlite3* connection) {
  int number = sqlite3_system_errno(connection);
  // the error of a write to the log stays with the log
  for (const int file : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
    sqlite3_file* handle = nullptr;
    if (number == 0 && sqlite3_file_control(connection, "main", file, &handle) == SQLITE_OK && handle != nullptr &&
        handle->pMethods != nullptr)
      handle->pMethods->xFileControl(handle, SQLITE_FCNTL_LAST_ERRNO, &number);
  }
  return number;
}

class Error : public std::runtime_error {
public:
  explicit Error(sqlite3* connection)
      : std::runtime_error(connection == nullptr ? "no memory" : sqlite3_errmsg(connection)),
        code_(connection == nullptr ? SQLITE_NOMEM : sqlite3_extended_errcode(connection)),
        systemError_(connection == nullptr ? 0 : systemErrorOf(connection)) {}
  int code() const { return code_; } // extended
  int primaryCode() const { return code_ & 0xFF; }
  int systemError() const { return systemError_; } // errno of the failed call, or 0

private:
  int code_, systemError_;
};

class Statement {
public:
  Statement() = default;
  Statement(sqlite3* connection, std::string_view sql) : connection_(connection) {
    if (sqlite3_prepare_v3(connection, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT, &statement_,
                           nullptr) != SQLITE_OK)
      throw Error(connection);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(Statement&& other) noexcept
      : connection_(other.connection_), statement_(std::exchange(other.statement_, nullptr)) {}
  Statement& operator=(Statement&& other) noexcept {
    std::swap(connection_, other.connection_);
    std::swap(statement_, other.statement_);
    return *this;
  }

  // Binds the values to the parameters in order.  Texts stay the caller's and must live until the statement has run.
  template <class... Values>
  Statement& bind(const Values&... values) {
    int place = 0;
    (bindAt(++place, values), ...);
    return *this;
  }

  // Goes on to the next row; after the last one the statement is ready to run again.
  bool next() {
    if (sqlite3_step(statement_) == SQLITE_ROW) return true;
    if (sqlite3_reset(statement_) != SQLITE_OK) throw Error(connection_);
    return false;
  }

  // For statements without rows.
  template <class... Values>
  void run(const Values&... values) {
    bind(values...);
    sqlite3_step(statement_);
    if (sqlite3_reset(statement_) != SQLITE_OK) throw Error(connection_);
  }

  bool isNull(int column) { return sqlite3_column_type(statement_, column) == SQLITE_NULL; }
  int64_t integer(int column) { return sqlite3_column_int64(statement_, column); }
  double real(int column) { return sqlite3_column_double(statement_, column); }
  std::string text(int column) {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return bytes == nullptr ? std::string()
                            : std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
  }
  std::optional<int64_t> optionalInteger(int column) {
    return isNull(column) ? std::nullopt : std::optional(integer(column));
  }
  std::optional<double> optionalReal(int column) { return isNull(column) ? std::nullopt : std::optional(real(column)); }
  void reset() { sqlite3_reset(statement_); }

private:
  void check(int result) {
    if (result != SQLITE_OK) throw Error(connection_);
  }
  void bindAt(int place, int64_t value) { check(sqlite3_bind_int64(statement_, place, value)); }
  void bindAt(int place, int32_t value) { check(sqlite3_bind_int64(statement_, place, value)); }
  void bindAt(int place, bool value) { check(sqlite3_bind_int64(statement_, place, value ? 1 : 0)); }
  // not a number is stored as NULL
  void bindAt(int place, double value) { check(sqlite3_bind_double(statement_, place, value)); }
  void bindAt(int place, std::string_view value) {
    check(sqlite3_bind_text64(statement_, place, value.data() == nullptr ? "" : value.data(), value.size(),
                              SQLITE_STATIC, SQLITE_UTF8));
  }
  void bindAt(int place, const std::string& value) { bindAt(place, std::string_view(value)); }
  void bindAt(int place, std::nullopt_t) { check(sqlite3_bind_null(statement_, place)); }
  template <class Value>
  void bindAt(int place, const std::optional<Value>& value) {
    if (value)
      bindAt(place, *value);
    else
      bindAt(place, std::nullopt);
  }

  sqlite3* connection_ = nullptr;
  sqlite3_stmt* statement_ = nullptr;
};

class Connection {
public:
  Connection() = default;
  ~Connection() { close(); }
  Connection(Connection&& other) noexcept : connection_(std::exchange(other.connection_, nullptr)) {}
  Connection& operator=(Connection&& other) noexcept {
    std::swap(connection_, other.connection_);
    return *this;
  }

  void open(const std::string& path, int flags) {
    close();
    if (sqlite3_open_v2(path.c_str(), &connection_, flags | SQLITE_OPEN_EXRESCODE, nullptr) == SQLITE_OK) return;
    const Error error(connection_);
    close();
    throw error;
  }
  bool isOpen() const { return connection_ != nullptr; }
  void close() { sqlite3_close_v2(std::exchange(connection_, nullptr)); }

  void run(const char* sql) {
    if (sqlite3_exec(connection_, sql, nullptr, nullptr, nullptr) != SQLITE_OK) throw Error(connection_);
  }
  void run(const std::string& sql) { run(sql.c_str()); }
  Statement prepare(std::string_view sql) { return Statement(connection_, sql); }
  bool inTransaction() const { return connection_ != nullptr && sqlite3_get_autocommit(connection_) == 0; }
  void setBusyTimeout(int milliseconds) { sqlite3_busy_timeout(connection_, milliseconds); }

private:
  sqlite3* connection_ = nullptr;
};

} // namespace sharedanalysis::sqlite
