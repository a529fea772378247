#pragma once

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace geomath_files {

/// That of UTF-8, which some programs put before a text.
inline constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// One row of a CSV file as it stands there, with the places of its fields.
struct CsvRow {
  struct Span {
    std::size_t begin, end;  // in `text`, quotation marks included
  };
  std::string text;  ///< without the line end
  std::vector<Span> fields;
  long long line = 0;    ///< of the row's first character, from 1
  bool comment = false;  ///< a remark between the rows

  /// Whether it holds no point.
  bool IsBlank() const { return text.empty() || comment; }
  /// A field as it stands there, quotation marks included.
  std::string_view Raw(std::size_t field) const {
    return std::string_view(text).substr(fields[field].begin,
                                         fields[field].end - fields[field].begin);
  }
  /// The value of a field: unquoted, doubled quotation marks made single.
  std::string Value(std::size_t field) const;
};

/// Rows of a CSV file that were read together, each of them whole. They are taken from the front.
struct CsvRows {
  std::string text;    ///< with line ends
  std::size_t at = 0;  ///< where the next row begins
  long long line = 1;  ///< of that row

  /// Takes the next row, reusing the memory of `row`; false where none is left.
  bool Take(char separator, CsvRow& row);
};

/// Reads a CSV file (RFC 4180), row by row or many rows together, keeping the text of every row as
/// it is. A quotation mark is special only at the start of a field, so that seconds of arc may
/// stand unquoted. Lines end with LF or CR LF.
///
/// The separator, one of `, ; tab |`, is the one that the first row holds most of, or the one that
/// a line "sep=;" before it names. Where the first row has none of them, runs of blanks separate.
/// Blank lines and lines that begin with # before the first row belong to no row.
class CsvReader {
 public:
  /// Reads from `file`, which stays the caller's; `name` stands for it in messages. `fields`, when
  /// it is known, says how many the first row has, which helps to find the separator.
  CsvReader(std::FILE* file, std::string name, std::size_t fields = 0);

  /// The next row; false at the end of the file. Throws UserError for what is no CSV text: a
  /// quotation mark that is never closed, a row of more than 16 MiB, a read error.
  bool Next(CsvRow& row);
  /// The next rows, as many as are there, some thousands at most; false at the end of the file. The
  /// rows before one that throws come first.
  bool Next(CsvRows& rows);

  /// Whether the text begins with a byte order mark.
  bool HasMark() const { return hasMark_; }

  /// Whether the next row has not arrived yet: a pipe or a terminal that has nothing in it.
  bool WouldWait() const;

  /// What stands before the first row, with its line ends.
  const std::string& Preamble() const { return preamble_; }
  /// A blank stands for runs of blanks.
  char Separator() const { return separator_; }
  /// "\n" or "\r\n", as the first line has it.
  const std::string& LineEnd() const { return lineEnd_; }
  long long BytesRead() const { return bytesRead_; }

 private:
  bool Fill(std::string& text, std::size_t least);
  std::string_view FirstLine();
  void SkipMark();
  void TakePreamble();
  void RecogniseStyle(std::size_t fields);

  std::FILE* file_;
  std::string name_;
  CsvRows rows_;      // of those that are asked for one by one
  std::string rest_;  // read, behind the rows that were given out
  long long nextLine_ = 1, bytesRead_ = 0;
  bool hasMark_ = false;
  bool mayWait_ = false;   // no regular file
  char separator_ = '\0';  // ' ' for runs of blanks
  std::string preamble_;
  std::string lineEnd_ = "\n";
};

/// The value as a CSV field: in quotation marks where it needs them.
std::string CsvField(const std::string& value, char separator);

}  // namespace geomath_files
