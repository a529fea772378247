#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "geomath/magnetic/coefficient_file.h"

// What the readers of coefficient files share.
namespace zel_cs::geomath::magnetic {

/// The lines of a text that are not blank, without their ends; a UTF-8 mark before them does not
/// count.
class Lines {
 public:
  explicit Lines(std::string_view text);

  /// Nothing after the last one.
  std::optional<std::string_view> Next();
  /// That of the last line given, from 1; that of the end after it.
  long Number() const { return number_; }

 private:
  std::string_view rest_;
  long number_ = 0;
};

/// The fields of a line: between blanks, any number of which part two fields, or between commas.
class Fields {
 public:
  explicit Fields(std::string_view line, char separator = ' ')
      : rest_(line), separator_(separator) {}

  /// An empty text when there is none left, and for an empty field between commas.
  std::string_view Next();
  bool AtEnd() const;

 private:
  std::string_view rest_;
  char separator_;
};

/// A text without the blanks around it.
std::string_view Trimmed(std::string_view text);

/// The first line that is not blank, or an empty text.
inline std::string_view FirstLineOf(std::string_view text) {
  return Lines(text).Next().value_or("");
}

/// The contents of a regular file of at most 4 MiB. Throws CoefficientFault.
std::string TextOfFile(const char* path);

/// What `read` gives, or nothing and the fault when it throws one, a lack of memory included.
template <class Read>
auto Attempt(CoefficientFault* fault, Read read) noexcept -> decltype(read()) {
  try {
    return read();
  } catch (CoefficientFault& found) {
    if (fault) *fault = std::move(found);
  } catch (const std::exception&) {  // no memory, or a path that the system cannot represent
    if (fault) *fault = {};
  }
  return {};
}

}  // namespace zel_cs::geomath::magnetic
