#include "files/words/name_match.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace geomath_files {
namespace {

bool IsSeparator(char c) { return c == ' ' || c == '_' || c == '-'; }

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }

bool IsLower(char c) { return c >= 'a' && c <= 'z'; }

char Lower(char c) { return IsUpper(c) ? static_cast<char>(c - 'A' + 'a') : c; }

// Insertions, deletions and replacements that turn one text into the other (Levenshtein 1966).
std::size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i + 1;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i] != b[j]);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = Lower(c);
  return lower;
}

std::string FoldName(std::string_view name) {
  std::string folded;
  for (const char c : name) {
    if (!IsSeparator(c)) folded += Lower(c);
  }
  return folded;
}

bool SameName(std::string_view a, std::string_view b) {
  std::size_t i = 0, j = 0;
  while (true) {
    while (i < a.size() && IsSeparator(a[i])) ++i;
    while (j < b.size() && IsSeparator(b[j])) ++j;
    if (i == a.size() || j == b.size()) return i == a.size() && j == b.size();
    if (Lower(a[i++]) != Lower(b[j++])) return false;
  }
}

std::string SnakeName(std::string_view name) {
  std::string snake;
  std::size_t wordStart = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    const char last = i > 0 ? name[i - 1] : '\0', next = i + 1 < name.size() ? name[i + 1] : '\0';
    const bool afterWord = !IsUpper(last) && snake.size() > wordStart + 1;  // "invF", not "dX"
    const bool beforeWord = IsUpper(last) && IsLower(next);                 // "FEast"
    const bool capital = IsUpper(name[i]) && (afterWord || beforeWord);
    if ((IsSeparator(name[i]) || capital) && snake.size() > wordStart) {
      snake += '_';
      wordStart = snake.size();
    }
    if (!IsSeparator(name[i])) snake += Lower(name[i]);
  }
  return snake;
}

std::string CamelName(std::string_view name) {
  std::string camel;
  bool capital = false;
  for (const char c : SnakeName(name)) {
    if (c != '_') camel += capital && IsLower(c) ? static_cast<char>(c - 'a' + 'A') : c;
    capital = c == '_';
  }
  return camel;
}

std::string NearestName(std::string_view name, std::span<const std::string> candidates) {
  constexpr std::size_t kLongestName = 64;  // nothing longer is a slip of the keyboard
  const std::string wanted = FoldName(name);
  if (wanted.size() < 2 || wanted.size() > kLongestName) return {};
  std::string nearest;
  std::size_t best = std::min(wanted.size() - 1, std::max<std::size_t>(2, wanted.size() / 3)) + 1;
  for (const std::string& candidate : candidates) {
    const std::string folded = FoldName(candidate);
    const bool shortened = folded.starts_with(wanted);  // "lat" for "latitude"
    const std::size_t distance = shortened ? 1 : EditDistance(wanted, folded);
    if (distance < best) {
      best = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

std::string SuggestName(std::string_view name, std::span<const std::string> candidates) {
  const std::string nearest = NearestName(name, candidates);
  const std::string known = "known: " + ListNames(candidates);
  return nearest.empty() ? known : "did you mean \"" + nearest + "\"? (" + known + ")";
}

std::string ListNames(std::span<const std::string> names) {
  std::string list;
  for (const std::string& name : names) {
    if (!list.empty()) list += ", ";
    list += '"' + Printable(name) + '"';
  }
  return list;
}

std::vector<std::string> SplitNames(std::string_view list) {
  std::vector<std::string> names;
  if (list.empty()) return names;
  bool quoted = false;
  std::string name;
  const auto finish = [&] {
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) name.clear();
    if (!name.empty()) name = name.substr(first, name.find_last_not_of(' ') - first + 1);
    names.push_back(std::exchange(name, {}));
  };
  for (std::size_t i = 0; i < list.size(); ++i) {
    const bool doubled = quoted && list.substr(i, 2) == "\"\"";
    if (list[i] == '"' && !doubled)
      quoted = !quoted;
    else if (list[i] == ',' && !quoted)
      finish();
    else
      name += list[i];
    if (doubled) ++i;
  }
  finish();
  return names;
}

std::string Printable(std::string_view text) {
  constexpr std::size_t kLongest = 60;
  std::string printable(text.substr(0, kLongest));
  for (char& c : printable) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 0x20 || code == 0x7f) c = '?';
  }
  if (text.size() > kLongest) printable += "...";
  return printable;
}

}  // namespace geomath_files
