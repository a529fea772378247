#include "files/points/csv_reader.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "files/words/user_error.h"

namespace geomath_files {
namespace {

constexpr std::size_t kBufferSize = 1 << 16;
constexpr std::size_t kLongestRow = 16 << 20;

enum class State { fieldStart, plain, quoted, afterQuote };

// `c` has been read in `state` and is neither separator nor line end outside quotation marks.
State After(State state, char c) {
  if (c == '"') {
    if (state == State::fieldStart || state == State::afterQuote) return State::quoted;
    if (state == State::quoted) return State::afterQuote;
    return state;
  }
  return state == State::quoted ? state : State::plain;
}

bool IsBlankChar(char c) { return c == ' ' || c == '\t'; }

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
  const std::string_view raw(text.data() + fields[field].begin,
                             fields[field].end - fields[field].begin);
  if (raw.empty() || raw.front() != '"') return std::string(raw);
  std::string value;
  State state = State::quoted;
  for (const char c : raw.substr(1)) {
    const State next = After(state, c);
    if (next != State::afterQuote) value += c;  // the second of a pair re-enters `quoted`
    state = next;
  }
  return value;
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
    : file_(file), name_(std::move(name)), buffer_(kBufferSize) {
  struct stat status {};
  mayWait_ = fstat(fileno(file_), &status) == 0 && !S_ISREG(status.st_mode);
  Fill();
  SkipMark();
  TakePreamble();
  RecogniseStyle(fields);
}

// Reads what is there, not more: the rows of a pipe are wanted as they come.
bool CsvReader::Fill() {
  const auto rest = static_cast<std::size_t>(
      std::move(buffer_.begin() + static_cast<std::ptrdiff_t>(at_),
                buffer_.begin() + static_cast<std::ptrdiff_t>(size_), buffer_.begin()) -
      buffer_.begin());
  const ssize_t count = ::read(fileno(file_), buffer_.data() + rest, buffer_.size() - rest);
  at_ = 0;
  size_ = rest + static_cast<std::size_t>(std::max<ssize_t>(count, 0));
  if (count < 0)
    throw UserError(
        fmt::format("{}: reading failed at line {}: {}", name_, nextLine_, std::strerror(errno)));
  bytesRead_ += count;
  return count > 0;
}

bool CsvReader::WouldWait() const {
  if (!mayWait_ || std::memchr(buffer_.data() + at_, '\n', size_ - at_)) return false;
  pollfd waiting{fileno(file_), POLLIN, 0};
  return ::poll(&waiting, 1, 0) == 0;
}

// The line that begins here, with its end, as far as the buffer can hold it.
std::string_view CsvReader::RestOfLine() {
  for (;;) {
    const std::string_view rest(buffer_.data() + at_, size_ - at_);
    const std::size_t end = rest.find('\n');
    if (end != std::string_view::npos) return rest.substr(0, end + 1);
    if (rest.size() == buffer_.size() || !Fill()) return {buffer_.data() + at_, size_ - at_};
  }
}

void CsvReader::SkipMark() {
  const std::string_view start = RestOfLine();
  hasMark_ = start.starts_with(kByteOrderMark);
  if (hasMark_) at_ += kByteOrderMark.size();
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF"))
    throw UserError(name_ + ": the text is UTF-16; save it as UTF-8");
  if (start.find('\0') != std::string_view::npos)
    throw UserError(name_ + ": is not a text file, so it is no CSV file");
}

void CsvReader::TakePreamble() {
  for (std::string_view line = RestOfLine(); !line.empty(); line = RestOfLine()) {
    const std::string_view text = line.substr(0, line.find_first_of("\r\n"));
    const bool names = nextLine_ == 1 && text.size() == 5 && text.starts_with("sep=");
    if (names) separator_ = text[4];
    if (!names && !text.empty() && text.front() != '#') return;
    preamble_ += line;
    at_ += line.size();
    ++nextLine_;
  }
}

void CsvReader::RecogniseStyle(std::size_t fields) {
  RestOfLine();
  std::string row;  // the first, with an x for what stands in quotation marks
  bool quoted = false;
  for (const char c : std::string_view(buffer_.data() + at_, size_ - at_)) {
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
  row.text.clear();
  row.fields.clear();
  row.line = nextLine_;
  row.comment = false;
  const bool blanks = separator_ == ' ';
  std::string& text = row.text;
  State state = State::fieldStart;
  std::size_t begin = 0;
  bool ended = false;
  while (!ended) {
    if (at_ == size_ && !Fill()) {
      if (state == State::quoted)
        throw UserError(
            fmt::format("{}, line {}: a quotation mark is opened in this row and never "
                        "closed",
                        name_, row.line));
      if (text.empty()) return false;
      break;
    }
    const char c = buffer_[at_++];
    if (c == '\n') {
      ++nextLine_;
      ended = state != State::quoted;
      if (ended) break;
    }
    const bool separates = blanks ? IsBlankChar(c) : c == separator_;
    if (separates && state != State::quoted) {
      // A run of blanks is one separator, and none at the start.
      if (!blanks || state != State::fieldStart) row.fields.push_back({begin, text.size()});
      begin = text.size() + 1;
      state = State::fieldStart;
    } else {
      state = After(state, c);
    }
    text += c;
    if (text.size() > kLongestRow)
      throw UserError(
          fmt::format("{}, line {}: a row of more than {} MiB; is this a CSV file with "
                      "its quotation marks closed?",
                      name_, row.line, kLongestRow >> 20));
  }
  FinishRow(row, begin);
  return true;
}

void CsvReader::FinishRow(CsvRow& row, std::size_t begin) const {
  std::string& text = row.text;
  if (!text.empty() && text.back() == '\r') text.pop_back();
  const bool ended = separator_ == ' ' && begin >= text.size();  // with blanks, or all blank
  if (!ended) row.fields.push_back({std::min(begin, text.size()), text.size()});
  if (row.fields.empty()) text.clear();
}

}  // namespace geomath_files
