#include "files/points/csv_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "files/words/user_error.h"

namespace geomath_tools {
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
  const bool needed = value.find_first_of("\"\r\n") != std::string::npos ||
                      value.find(separator) != std::string::npos;
  if (!needed) return value;
  std::string quoted = "\"";
  for (const char c : value) quoted.append(c == '"' ? 2 : 1, c);
  return quoted + '"';
}

CsvReader::CsvReader(std::FILE* file, std::string name)
    : file_(file), name_(std::move(name)), buffer_(kBufferSize) {
  Fill();
  SkipMark();
  RecogniseStyle();
}

bool CsvReader::Fill() {
  at_ = 0;
  // What was read before an error is served first; reading on could wait for ever.
  size_ = std::ferror(file_) ? 0 : std::fread(buffer_.data(), 1, buffer_.size(), file_);
  if (size_ == 0 && std::ferror(file_))
    throw UserError(
        fmt::format("{}: reading failed at line {}: {}", name_, nextLine_, std::strerror(errno)));
  bytesRead_ += static_cast<long long>(size_);
  return size_ > 0;
}

void CsvReader::SkipMark() {
  const std::string_view start(buffer_.data(), size_);
  hasMark_ = start.starts_with(kByteOrderMark);
  if (hasMark_) at_ = kByteOrderMark.size();
  if (start.starts_with("\xFF\xFE") || start.starts_with("\xFE\xFF"))
    throw UserError(name_ + ": the text is UTF-16; save it as UTF-8");
  if (start.substr(0, start.find('\n')).find('\0') != std::string_view::npos)
    throw UserError(name_ + ": is not a text file, so it is no CSV file");
}

void CsvReader::RecogniseStyle() {
  constexpr std::string_view candidates = ",;\t|";
  std::size_t counts[candidates.size()] = {};
  bool quoted = false;
  for (std::size_t i = at_; i < size_; ++i) {
    const char c = buffer_[i];
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == '\n') {
      if (i > at_ && buffer_[i - 1] == '\r') lineEnd_ = "\r\n";
      break;
    }
    const std::size_t which = candidates.find(c);
    if (which != std::string_view::npos) ++counts[which];
  }
  separator_ = candidates[static_cast<std::size_t>(
      std::max_element(std::begin(counts), std::end(counts)) - std::begin(counts))];
}

bool CsvReader::Next(CsvRow& row) {
  row.text.clear();
  row.fields.clear();
  row.line = nextLine_;
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
    if (c == separator_ && state != State::quoted) {
      row.fields.push_back({begin, text.size()});
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
  if (!text.empty() && text.back() == '\r') text.pop_back();
  row.fields.push_back({std::min(begin, text.size()), text.size()});
  return true;
}

}  // namespace geomath_tools
