#include "files/system/json_section.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <set>

#include "files/words/name_match.h"
#include "files/words/user_error.h"

namespace geomath_files {

using nlohmann::json;

namespace {

// A value as the user wrote it, short enough for a message.
std::string Shown(const json& value) {
  return Printable(value.dump(-1, ' ', false, json::error_handler_t::replace));
}

// "line 3, column 12", counted to `byte`, the 1-based byte at which parsing stopped.
std::string Position(const std::string& text, std::size_t byte) {
  const std::size_t end = std::min(byte == 0 ? 0 : byte - 1, text.size());
  std::size_t line = 1, column = 1;
  for (std::size_t i = 0; i < end; ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return fmt::format("line {}, column {}", line, column);
}

}  // namespace

json ParseJson(const std::string& text, const std::string& file) {
  constexpr int kDeepest = 32;  // the parts of a system are three deep; printing a value recurses
  std::vector<std::set<std::string>> open;
  const auto check = [&](int depth, json::parse_event_t event, json& parsed) {
    if (depth > kDeepest)
      throw UserError(
          fmt::format("{}: braces and brackets stand more than {} deep: this is no "
                      "system file",
                      file, kDeepest));
    if (event == json::parse_event_t::object_start) open.emplace_back();
    if (event == json::parse_event_t::object_end && !open.empty()) open.pop_back();
    if (event == json::parse_event_t::key && !open.empty() &&
        !open.back().insert(parsed.get<std::string>()).second)
      throw UserError(
          fmt::format("{}: the key {} stands twice in one object", file, Shown(parsed)));
    return true;
  };
  try {
    return json::parse(text, check);
  } catch (const json::parse_error& error) {
    throw UserError(fmt::format("{}: not a JSON file: it breaks off or has a syntax error at {}",
                                file, Position(text, error.byte)));
  } catch (const json::exception& error) {
    throw UserError(fmt::format("{}: a number is out of range ({})", file, error.what()));
  }
}

JsonSection::JsonSection(std::string file, std::string path, const json& object,
                         std::vector<std::string> known, KeySpelling spelling)
    : file_(std::move(file)),
      path_(std::move(path)),
      object_(&object),
      known_(std::move(known)),
      spelling_(spelling) {
  if (!object.is_object())
    throw UserError(fmt::format("{}: {} must be an object in braces", file_,
                                path_.empty() ? "the file" : '"' + path_ + '"'));
  std::set<std::string> met;
  for (const auto& [key, value] : object.items()) {
    const auto same = [&, &name = key](const std::string& k) { return Same(k, name); };
    const auto match = std::find_if(known_.begin(), known_.end(), same);
    if (match == known_.end()) Fail(key, "is unknown; " + SuggestName(key, SpelledAll(known_)));
    if (!met.insert(*match).second) Fail(key, "gives \"" + Spelled(*match) + "\" a second time");
  }
}

std::string JsonSection::PathOf(const std::string& key) const {
  return path_.empty() ? Spelled(key) : path_ + "." + Spelled(key);
}

std::string JsonSection::Spelled(const std::string& key) const {
  switch (spelling_) {
    case KeySpelling::snake:
      return SnakeName(key);
    case KeySpelling::camel:
      return CamelName(key);
    default:
      return key;
  }
}

std::vector<std::string> JsonSection::SpelledAll(std::vector<std::string> keys) const {
  for (std::string& key : keys) key = Spelled(key);
  return keys;
}

bool JsonSection::Same(const std::string& a, const std::string& b) const {
  return spelling_ == KeySpelling::exact ? a == b : SameName(a, b);
}

void JsonSection::Fail(const std::string& key, const std::string& complaint) const {
  throw UserError(fmt::format("{}: \"{}\" {}", file_, Printable(PathOf(key)), complaint));
}

const json* JsonSection::Find(const std::string& key) const {
  for (const auto& [name, value] : object_->items()) {
    if (Same(name, key)) return &value;
  }
  return nullptr;
}

const json& JsonSection::Require(const std::string& key, const std::string& what) const {
  const json* value = Find(key);
  if (!value) Fail(key, "is missing: " + what + " belongs there");
  return *value;
}

double JsonSection::Number(const std::string& key, const std::string& what) const {
  const json& value = Require(key, what);
  if (!value.is_number()) Fail(key, fmt::format("must be {}, not {}", what, Shown(value)));
  const double number = value.get<double>();
  if (!std::isfinite(number)) Fail(key, "must be a finite number");
  return number;
}

std::vector<double> JsonSection::Numbers(const std::string& key, std::size_t count,
                                         const std::string& what) const {
  const json& list = Require(key, what);
  const auto finite = [](const json& value) {
    return value.is_number() && std::isfinite(value.get<double>());
  };
  if (!list.is_array() || list.size() != count || !std::all_of(list.begin(), list.end(), finite))
    Fail(key, fmt::format("must be a list of {} numbers: {}", count, what));
  return list.get<std::vector<double>>();
}

std::string JsonSection::Text(const std::string& key, const std::string& what) const {
  const json& value = Require(key, what);
  if (!value.is_string()) Fail(key, fmt::format("must be {}, not {}", what, Shown(value)));
  return value.get<std::string>();
}

const json& JsonSection::Object(const std::string& key) const {
  return Require(key, "an object in braces");
}

JsonSection JsonSection::Section(const std::string& key, std::vector<std::string> known) const {
  return {file_, PathOf(key), Object(key), std::move(known), spelling_};
}

}  // namespace geomath_files
