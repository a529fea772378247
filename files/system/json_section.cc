#include "files/system/json_section.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

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

// The value that a text stands for, built while it is parsed.
class JsonBuilder : public nlohmann::json_sax<json> {
 public:
  JsonBuilder(const std::string& text, const std::string& file) : text_(text), file_(file) {}

  json&& Built() && { return std::move(root_); }

  bool null() override { return Take(nullptr); }
  bool boolean(bool value) override { return Take(value); }
  bool number_integer(number_integer_t value) override { return Take(value); }
  bool number_unsigned(number_unsigned_t value) override { return Take(value); }
  bool number_float(number_float_t value, const string_t&) override { return Take(value); }
  bool string(string_t& value) override { return Take(std::move(value)); }
  bool binary(binary_t&) override { return false; }  // there is none in a text
  bool start_object(std::size_t) override { return Open(json::object()); }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(json::array()); }
  bool end_array() override { return Close(); }

  bool key(string_t& name) override {
    const auto [member, isNew] = open_.back()->emplace(name, nullptr);
    if (!isNew)
      throw UserError(fmt::format("{}: the key {} stands twice in one object", file_, Shown(name)));
    member_ = &*member;
    return true;
  }

  bool parse_error(std::size_t byte, const std::string&, const json::exception& error) override {
    const bool syntax = dynamic_cast<const json::parse_error*>(&error) != nullptr;
    throw UserError(
        syntax ? fmt::format("{}: not a JSON file: it breaks off or has a syntax error at {}",
                             file_, Position(text_, byte))
               : fmt::format("{}: a number is out of range ({})", file_, error.what()));
  }

 private:
  bool Take(json value) {
    Put(std::move(value));
    return true;
  }

  json* Put(json value) {
    if (open_.empty()) return &(root_ = std::move(value));
    json& parent = *open_.back();
    if (parent.is_array()) return &parent.emplace_back(std::move(value));
    return &(*member_ = std::move(value));
  }

  bool Open(json empty) {
    constexpr std::size_t kDeepest = 32;  // the parts of a system are three deep; printing recurses
    if (open_.size() > kDeepest)
      throw UserError(
          fmt::format("{}: braces and brackets stand more than {} deep: this is no "
                      "system file",
                      file_, kDeepest));
    open_.push_back(Put(std::move(empty)));
    return true;
  }

  bool Close() {
    open_.pop_back();
    return true;
  }

  const std::string &text_, &file_;
  json root_;
  std::vector<json*> open_;  // from the root to the innermost
  json* member_ = nullptr;   // of the innermost, whose key was read last
};

}  // namespace

json ParseJson(const std::string& text, const std::string& file) {
  JsonBuilder builder(text, file);
  json::sax_parse(text, &builder);
  return std::move(builder).Built();
}

JsonSection::JsonSection(std::string file, std::string path, const json& object, KnownKeys known,
                         KeySpelling spelling)
    : file_(std::move(file)), path_(std::move(path)), object_(&object), spelling_(spelling) {
  if (!object.is_object())
    throw UserError(fmt::format("{}: {} must be an object in braces", file_,
                                path_.empty() ? "the file" : '"' + path_ + '"'));
  CheckKeys(known);
}

void JsonSection::CheckKeys(KnownKeys known) const {
  std::vector<bool> met(known.size());
  for (auto member = object_->begin(); member != object_->end(); ++member) {
    const std::string& name = member.key();
    const auto same = [&](std::string_view key) { return Same(key, name); };
    const auto match = std::find_if(known.begin(), known.end(), same);
    if (match == known.end()) Fail(name, "is unknown; " + SuggestName(name, SpelledAll(known)));
    auto given = met[static_cast<std::size_t>(match - known.begin())];
    if (given) Fail(name, "gives \"" + Spelled(*match) + "\" a second time");
    given = true;
  }
}

std::string JsonSection::PathOf(std::string_view key) const {
  return path_.empty() ? Spelled(key) : path_ + "." + Spelled(key);
}

std::string JsonSection::Spelled(std::string_view key) const {
  switch (spelling_) {
    case KeySpelling::snake:
      return SnakeName(key);
    case KeySpelling::camel:
      return CamelName(key);
    default:
      return std::string(key);
  }
}

std::vector<std::string> JsonSection::SpelledAll(KnownKeys keys) const {
  std::vector<std::string> spelled;
  for (const std::string_view key : keys) spelled.push_back(Spelled(key));
  return spelled;
}

bool JsonSection::Same(std::string_view a, std::string_view b) const {
  return spelling_ == KeySpelling::exact ? a == b : SameName(a, b);
}

void JsonSection::Fail(std::string_view key, std::string_view complaint) const {
  throw UserError(fmt::format("{}: \"{}\" {}", file_, Printable(PathOf(key)), complaint));
}

const json* JsonSection::Find(std::string_view key) const {
  if (const auto same = object_->find(key); same != object_->end()) return &*same;
  if (spelling_ == KeySpelling::exact) return nullptr;
  for (auto member = object_->begin(); member != object_->end(); ++member)
    if (Same(member.key(), key)) return &*member;
  return nullptr;
}

const json& JsonSection::Require(std::string_view key, std::string_view what) const {
  const json* value = Find(key);
  if (!value) Fail(key, fmt::format("is missing: {} belongs there", what));
  return *value;
}

double JsonSection::Number(std::string_view key, std::string_view what) const {
  const json& value = Require(key, what);
  if (!value.is_number()) Fail(key, fmt::format("must be {}, not {}", what, Shown(value)));
  const double number = value.get<double>();
  if (!std::isfinite(number)) Fail(key, "must be a finite number");
  return number;
}

std::vector<double> JsonSection::Numbers(std::string_view key, std::size_t count,
                                         std::string_view what) const {
  const json& list = Require(key, what);
  const auto finite = [](const json& value) {
    return value.is_number() && std::isfinite(value.get<double>());
  };
  if (!list.is_array() || list.size() != count || !std::all_of(list.begin(), list.end(), finite))
    Fail(key, fmt::format("must be a list of {} numbers: {}", count, what));
  return list.get<std::vector<double>>();
}

std::string JsonSection::Text(std::string_view key, std::string_view what) const {
  const json& value = Require(key, what);
  if (!value.is_string()) Fail(key, fmt::format("must be {}, not {}", what, Shown(value)));
  return value.get<std::string>();
}

const json& JsonSection::Object(std::string_view key) const {
  return Require(key, "an object in braces");
}

JsonSection JsonSection::Section(std::string_view key, KnownKeys known) const {
  return {file_, PathOf(key), Object(key), known, spelling_};
}

}  // namespace geomath_files
