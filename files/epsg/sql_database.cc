#include "files/epsg/sql_database.h"

#include <fmt/format.h>
#include <sqlite3.h>

#include <charconv>
#include <cstring>

namespace geomath_files {
namespace {

std::string AddressOf(const std::string& path) {
  std::string address = "file:";
  for (const char c : path) {
    const bool special = c == '%' || c == '?' || c == '#';
    address += special ? fmt::format("%{:02X}", static_cast<unsigned char>(c)) : std::string(1, c);
  }
  return address + "?immutable=1";
}

}  // namespace

SqlRows::SqlRows(sqlite3_stmt* statement, std::initializer_list<SqlValue> values)
    : statement_(statement) {
  int place = 0;
  for (const SqlValue& value : values) {
    ++place;
    if (const int* number = std::get_if<int>(&value))
      sqlite3_bind_int(statement_, place, *number);
    else
      sqlite3_bind_text(statement_, place, std::get<std::string>(value).c_str(), -1,
                        SQLITE_TRANSIENT);
  }
}

SqlRows::~SqlRows() { sqlite3_reset(statement_); }

bool SqlRows::Next() { return statement_ && sqlite3_step(statement_) == SQLITE_ROW; }

bool SqlRows::IsNull(int column) const {
  return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

std::string SqlRows::Text(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  return text ? text : "";
}

int SqlRows::Integer(int column) const { return sqlite3_column_int(statement_, column); }

double SqlRows::Number(int column) const {
  const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
  double value = 0;
  if (text) std::from_chars(text, text + std::strlen(text), value);
  return value;
}

std::unique_ptr<SqlDatabase> SqlDatabase::Open(const std::string& path) {
  constexpr int kFlags = SQLITE_OPEN_READONLY | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_URI;
  sqlite3* database = nullptr;
  const int result = sqlite3_open_v2(AddressOf(path).c_str(), &database, kFlags, nullptr);
  std::unique_ptr<SqlDatabase> opened(new SqlDatabase(database));
  return result == SQLITE_OK ? std::move(opened) : nullptr;
}

SqlDatabase::~SqlDatabase() {
  for (const auto& [text, statement] : statements_) sqlite3_finalize(statement);
  sqlite3_close(database_);
}

SqlRows SqlDatabase::Find(const char* text, std::initializer_list<SqlValue> values) {
  const auto [known, isNew] = statements_.try_emplace(text, nullptr);
  if (isNew)
    sqlite3_prepare_v3(database_, text, -1, SQLITE_PREPARE_PERSISTENT, &known->second, nullptr);
  return {known->second, values};
}

}  // namespace geomath_files
