#pragma once

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace geomath_files {

/// How the keys of a section are matched and spelled.
enum class KeySpelling {
  exact,   ///< letter for letter
  folded,  ///< keys that differ only in letter case, blanks, underscores and hyphens are the same
  snake,   ///< folded, and complaints spell them as names of a program: "central_meridian"
  camel,   ///< folded, and complaints spell them as JavaScript does: "centralMeridian"
};

/// The keys that a section may have.
using KnownKeys = std::span<const std::string_view>;

/// One object of a JSON file whose keys are known beforehand. Every complaint is a UserError that
/// names the file and the full key, such as `site.json: "datum.rX" …`.
class JsonSection {
 public:
  /// Complains about every key of `object` that is not among `known`.
  JsonSection(std::string file, std::string path, const nlohmann::json& object, KnownKeys known,
              KeySpelling spelling = KeySpelling::exact);
  JsonSection(std::string file, std::string path, const nlohmann::json& object,
              std::initializer_list<std::string_view> known,
              KeySpelling spelling = KeySpelling::exact)
      : JsonSection(std::move(file), std::move(path), object,
                    KnownKeys(known.begin(), known.size()), spelling) {}

  bool Has(std::string_view key) const { return Find(key) != nullptr; }
  /// A finite number; `what` says what belongs there ("metres", "decimal degrees").
  double Number(std::string_view key, std::string_view what) const;
  /// A list of `count` finite numbers.
  std::vector<double> Numbers(std::string_view key, std::size_t count, std::string_view what) const;
  std::string Text(std::string_view key, std::string_view what) const;
  /// The value at `key`, which need not be an object.
  const nlohmann::json& Object(std::string_view key) const;
  /// The object at `key`, whose keys are known.
  JsonSection Section(std::string_view key, KnownKeys known) const;
  JsonSection Section(std::string_view key, std::initializer_list<std::string_view> known) const {
    return Section(key, KnownKeys(known.begin(), known.size()));
  }
  std::string PathOf(std::string_view key) const;
  /// A key as complaints spell it, or all of them.
  std::string Spelled(std::string_view key) const;
  std::vector<std::string> SpelledAll(KnownKeys keys) const;

  [[noreturn]] void Fail(std::string_view key, std::string_view complaint) const;

 private:
  bool Same(std::string_view a, std::string_view b) const;
  void CheckKeys(KnownKeys known) const;
  const nlohmann::json* Find(std::string_view key) const;
  const nlohmann::json& Require(std::string_view key, std::string_view what) const;

  std::string file_, path_;
  const nlohmann::json* object_;
  KeySpelling spelling_;
};

/// Parses JSON, refusing keys that stand twice in one object and values nested beyond any use.
/// Throws UserError with line, column.
nlohmann::json ParseJson(const std::string& text, const std::string& file);

}  // namespace geomath_files
