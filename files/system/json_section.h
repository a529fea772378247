#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace geomath_files {

/// How the keys of a section are matched and spelled.
enum class KeySpelling {
  exact,   ///< letter for letter
  folded,  ///< keys that differ only in letter case, blanks, underscores and hyphens are the same
  snake,   ///< folded, and complaints spell them as names of a program: "central_meridian"
  camel,   ///< folded, and complaints spell them as JavaScript does: "centralMeridian"
};

/// One object of a JSON file whose keys are known beforehand. Every complaint is a UserError that
/// names the file and the full key, such as `site.json: "datum.rX" …`.
class JsonSection {
 public:
  /// Complains about every key of `object` that is not among `known`.
  JsonSection(std::string file, std::string path, const nlohmann::json& object,
              std::vector<std::string> known, KeySpelling spelling = KeySpelling::exact);

  bool Has(const std::string& key) const { return Find(key) != nullptr; }
  /// A finite number; `what` says what belongs there ("metres", "decimal degrees").
  double Number(const std::string& key, const std::string& what) const;
  /// A list of `count` finite numbers.
  std::vector<double> Numbers(const std::string& key, std::size_t count,
                              const std::string& what) const;
  std::string Text(const std::string& key, const std::string& what) const;
  /// The value at `key`, which need not be an object.
  const nlohmann::json& Object(const std::string& key) const;
  /// The object at `key`, whose keys are known.
  JsonSection Section(const std::string& key, std::vector<std::string> known) const;
  std::string PathOf(const std::string& key) const;
  /// A key as complaints spell it.
  std::string Spelled(const std::string& key) const;
  std::vector<std::string> SpelledAll(std::vector<std::string> keys) const;

  [[noreturn]] void Fail(const std::string& key, const std::string& complaint) const;

 private:
  bool Same(const std::string& a, const std::string& b) const;
  const nlohmann::json* Find(const std::string& key) const;
  const nlohmann::json& Require(const std::string& key, const std::string& what) const;

  std::string file_, path_;
  const nlohmann::json* object_;
  std::vector<std::string> known_;
  KeySpelling spelling_;
};

/// Parses JSON, refusing keys that stand twice in one object and values nested beyond any use.
/// Throws UserError with line, column.
nlohmann::json ParseJson(const std::string& text, const std::string& file);

}  // namespace geomath_files
