#include "files/points/csv_reader.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr std::size_t kHeadSize = 1 << 12, kBlockSize = 1 << 17;
constexpr std::size_t kLongestRow = 16 << 20;

bool IsBlankChar(char c) { return c == ' ' || c == '\t'; }

bool Separates(char c, char separator) {
  return separator == ' ' ? IsBlankChar(c) : c == separator;
}

// Behind the quotation that begins here; a doubled quotation mark belongs to it.
const char* BehindQuotation(const char* at, const char* end) {
  for (++at; at != end; ++at) {
    at = std::find(at, end, '"');
    if (at == end || at + 1 == end || at[1] != '"') break;
    ++at;
  }
  return at == end ? end : at + 1;
}

// Finds the end of the last whole row of a text that grows. Outside of quotations a line ends a row, and
// only a quotation mark at the start of a field opens one.
class RowEnds {
 public:
  explicit RowEnds(char separator) : separator_(separator) {}

  // 0 where no row is whole.
  std::size_t Find(std::string_view text) {
    while (at_ < text.size()) {
      const std::size_t mark = std::min(text.find('"', at_), text.size());
      if (!quoted_) {
        const std::size_t end = text.substr(at_, mark - at_).rfind('\n');
        if (end != std::string_view::npos) whole_ = at_ + end + 1;
        quoted_ = mark < text.size() && StartsField(text, mark);
        at_ = std::min(mark + 1, text.size());
      } else if (mark + 1 < text.size()) {
        quoted_ = text[mark + 1] == '"';
        at_ = mark + (quoted_ ? 2 : 1);
      } else {
        at_ = mark;  // one at the end may be the first of two
        break;
      }
    }
    return whole_;
  }

  // Whether a quotation is open where the text ends for good.
  bool IsOpen(std::string_view text) const { return quoted_ && at_ == text.size(); }

 private:
  bool StartsField(std::string_view text, std::size_t at) const {
    return at == 0 || text[at - 1] == '\n' || Separates(text[at - 1], separator_);
  }

  char separator_;
  std::size_t at_ = 0, whole_ = 0;
  bool quoted_ = false;
};

// Splits the row that begins here and returns its end, at a line end or the end of the text.
const char* SplitAt(char separator, const char* const begin, const char* end,
                    std::vector<CsvRow::Span>& fields) {
  const auto place = [begin](const char* at) { return static_cast<std::size_t>(at - begin); };
  const char* at = begin;
  for (const char* field = begin;; field = ++at) {
    if (at != end && *at == '"') at = BehindQuotation(at, end);
    while (at != end && *at != separator && *at != '\n') ++at;
    fields.push_back({place(field), place(at)});
    if (at == end || *at == '\n') return at;
  }
}

// The same where runs of blanks separate, which are none at the start.
const char* SplitAtBlanks(const char* const begin, const char* end,
                          std::vector<CsvRow::Span>& fields) {
  const auto place = [begin](const char* at) { return static_cast<std::size_t>(at - begin); };
  const char* at = begin;
  for (;;) {
    at = std::find_if_not(at, end, IsBlankChar);
    if (at == end || *at == '\n') return at;
    const char* const field = at;
    if (*at == '"') at = BehindQuotation(at, end);
    at = std::find_if(at, end, [](char c) { return IsBlankChar(c) || c == '\n'; });
    fields.push_back({place(field), place(at)});
  }
}

// Runs of blanks between two words, none of them beside another separator.
std::size_t CountGaps(std::string_view row) {
  constexpr std::string_view blanks = " \t", others = ";,|";
  std::size_t count = 0;
  for (std::size_t i = 0; i < row.size();) {
    const std::size_t begin = row.find_first_of(blanks, i);
    const std::size_t end = std::min(row.find_first_not_of(blanks, begin), row.size());
    const auto isWord = [&](std::size_t at) {
      return at < row.size() && others.find(row[at]) == std::string_view::npos;
    };
    if (begin != 0 && isWord(begin - 1) && isWord(end)) ++count;
    i = end;
  }
  return count;
}

// Of a row with that many fields, or with a number of them that is not known: 0.
char SeparatorOf(std::string_view row, std::size_t fields) {
  constexpr std::string_view candidates = ";\t|,";
  const std::size_t gaps = CountGaps(row);
  char most = ',';
  std::ptrdiff_t mostCount = 0;
  for (const char c : candidates) {
    const auto count = std::count(row.begin(), row.end(), c);
    const bool asKnown = fields > 1 && static_cast<std::size_t>(count) + 1 == fields;
    // With blanks as many as commas, the commas are decimal.
    if (asKnown && !(c == ',' && gaps + 1 == fields)) return c;
    if (count > mostCount) {
      most = c;
      mostCount = count;
    }
  }
  const bool byBlanks = fields > 1 ? gaps + 1 == fields : mostCount == 0 && gaps > 0;
  return byBlanks ? ' ' : most;
}

}  // namespace

std::string CsvRow::Value(std::size_t field) const {
  const std::string_view raw = Raw(field);
  if (raw.empty() || raw.front() != '"') return std::string(raw);
  const char* const end = raw.data() + raw.size();
  const char* const behind = BehindQuotation(raw.data(), end);
  std::string value;
  for (const char* at = raw.data() + 1; at != behind; ++at) {
    if (*at == '"' && ++at == behind) break;  // the second of a pair stands for both
    value += *at;
  }
  return value.append(behind, end);
}

bool CsvRows::Take(char separator, CsvRow& row) {
  if (at == text.size()) return false;
  row.fields.clear();
  row.line = line;
  row.comment = false;
  const bool blanks = separator == ' ';
  const char *const begin = text.data() + at, *const end = text.data() + text.size();
  const char* behind =
      blanks ? SplitAtBlanks(begin, end, row.fields) : SplitAt(separator, begin, end, row.fields);
  at = static_cast<std::size_t>(behind - text.data()) + (behind != end ? 1 : 0);
  if (behind != begin && behind[-1] == '\r') --behind;
  row.text.assign(begin, behind);
  const std::size_t size = row.text.size();
  if (blanks && !row.fields.empty() && row.fields.back().begin >= size) row.fields.pop_back();
  if (row.fields.empty())
    row.text.clear();
  else
    row.fields.back() = {std::min(row.fields.back().begin, size),
                         std::min(row.fields.back().end, size)};
  line += 1 + std::count(row.text.begin(), row.text.end(), '\n');
  return true;
}

std::string CsvField(const std::string& value, char separator) {
  const bool blanks = separator == ' ';
  const bool needed = value.find_first_of("\"\r\n") != std::string::npos ||
                      value.find(separator) != std::string::npos ||
                      (blanks && (value.empty() || value.find('\t') != std::string::npos));
  if (!needed) return value;
  std::string quoted = "\"";
  for (const char c : value) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

CsvReader::CsvReader(std::FILE* file, std::string name, std::size_t fields)
    : file_(file), name_(std::move(name)) {
  struct stat status {};
  mayWait_ = fstat(fileno(file_), &status) == 0 && !S_ISREG(status.st_mode);
  SkipMark();
  TakePreamble();
  RecogniseStyle(fields);
}

// Appends what is there, not more: the rows of a pipe are wanted as they come.
bool CsvReader::Fill(std::string& text, std::size_t least) {
  const std::size_t before = text.size();
  text.resize(std::max(before + before / 2, least));
  const ssize_t count = ::read(fileno(file_), text.data() + before, text.size() - before);
  text.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  if (count < 0)
    throw UserError(
        fmt::format("{}: reading failed at line {}: {}", name_, nextLine_, std::strerror(errno)));
  bytesRead_ += count;
  return count > 0;
}

bool CsvReader::WouldWait() const {
  const bool has = rows_.at < rows_.text.size() || rest_.find('\n') != std::string::npos;
  if (!mayWait_ || has) return false;
  pollfd waiting{fileno(file_), POLLIN, 0};
  return ::poll(&waiting, 1, 0) == 0;
}

// With its end, as far as a block holds it.
std::string_view CsvReader::FirstLine() {
  for (;;) {
    const std::size_t end = rest_.find('\n');
    if (end != std::string::npos) return {rest_.data(), end + 1};
    if (rest_.size() >= kBlockSize || !Fill(rest_, kHeadSize)) return rest_;
  }
}

void CsvReader::SkipMark() {
  const std::string_view start = FirstLine();
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF"))
    throw UserError(name_ + ": the text is UTF-16; save it as UTF-8");
  if (start.find('\0') != std::string_view::npos)
    throw UserError(name_ + ": is not a text file, so it is no CSV file");
  hasMark_ = start.starts_with(kByteOrderMark);
  if (hasMark_) rest_.erase(0, kByteOrderMark.size());
}

void CsvReader::TakePreamble() {
  for (std::string_view line = FirstLine(); !line.empty(); line = FirstLine()) {
    const std::string_view text = line.substr(0, line.find_first_of("\r\n"));
    const bool names = nextLine_ == 1 && text.size() == 5 && text.starts_with("sep=");
    if (names) separator_ = text[4];
    if (!names && !text.empty() && text.front() != '#') return;
    preamble_ += line;
    rest_.erase(0, line.size());
    ++nextLine_;
  }
}

void CsvReader::RecogniseStyle(std::size_t fields) {
  FirstLine();
  std::string row;  // the first, with an x for what stands in quotation marks
  bool quoted = false;
  for (const char c : rest_) {
    if (c == '\n' && !quoted) break;
    if (c == '"') quoted = !quoted;
    row += quoted ? 'x' : c;
  }
  if (row.ends_with('\r')) {
    lineEnd_ = "\r\n";
    row.pop_back();
  }
  if (separator_ == '\0') separator_ = SeparatorOf(row, fields);
}

bool CsvReader::Next(CsvRow& row) {
  while (!rows_.Take(separator_, row))
    if (!Next(rows_)) return false;
  return true;
}

bool CsvReader::Next(CsvRows& rows) {
  if (&rows != &rows_ && rows_.at < rows_.text.size()) {
    rows = std::exchange(rows_, {});
    return true;
  }
  rows.text.swap(rest_);
  rows.at = 0;
  rows.line = nextLine_;
  RowEnds ends(separator_);
  std::size_t whole = ends.Find(rows.text);
  while (whole == 0) {
    if (rows.text.size() > kLongestRow)
      throw UserError(
          fmt::format("{}, line {}: a row of more than {} MiB; is this a CSV file with "
                      "its quotation marks closed?",
                      name_, nextLine_, kLongestRow >> 20));
    const bool more = Fill(rows.text, kBlockSize);
    if (!more && ends.IsOpen(rows.text))
      throw UserError(
          fmt::format("{}, line {}: a quotation mark is opened in this row and never "
                      "closed",
                      name_, nextLine_));
    whole = more ? ends.Find(rows.text) : rows.text.size();
    if (!more) break;
  }
  rest_.assign(rows.text, whole);
  rows.text.resize(whole);
  nextLine_ += std::count(rows.text.begin(), rows.text.end(), '\n');
  return whole > 0;
}

}  // namespace geomath_files
