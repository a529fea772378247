#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <unordered_map>
#include <variant>

struct sqlite3;
struct sqlite3_stmt;

namespace geomath_files {

/// A value that a statement asks for.
using SqlValue = std::variant<int, std::string>;

/// The rows that a statement finds, one after the other. A statement serves one of them at a time.
class SqlRows {
 public:
  SqlRows(sqlite3_stmt* statement, std::initializer_list<SqlValue> values);
  ~SqlRows();
  SqlRows(const SqlRows&) = delete;
  SqlRows& operator=(const SqlRows&) = delete;

  /// To the first row, then to the next one; false behind the last.
  bool Next();
  /// What a column of the row has, from 0 on; empty and 0 for nothing.
  bool IsNull(int column) const;
  std::string Text(int column) const;
  int Integer(int column) const;
  /// To 15 figures, as the registry publishes its numbers.
  double Number(int column) const;

 private:
  sqlite3_stmt* statement_;
};

/// A database of SQLite, read only. It serves one thread at a time.
class SqlDatabase {
 public:
  /// Null where the file is none. Nobody may write it as long as it is open.
  static std::unique_ptr<SqlDatabase> Open(const std::string& path);
  ~SqlDatabase();
  SqlDatabase(const SqlDatabase&) = delete;
  SqlDatabase& operator=(const SqlDatabase&) = delete;

  /// The rows of a statement, whose text is a constant: it is prepared once. None where the database has
  /// no such tables.
  SqlRows Find(const char* statement, std::initializer_list<SqlValue> values = {});

 private:
  explicit SqlDatabase(sqlite3* database) : database_(database) {}

  sqlite3* database_;
  std::unordered_map<const char*, sqlite3_stmt*> statements_;
};

}  // namespace geomath_files
