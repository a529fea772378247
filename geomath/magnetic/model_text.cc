#include "geomath/magnetic/model_text.h"

#include <algorithm>
#include <cstdint>

#include "geomath/platform/file_text.h"

namespace zel_cs::geomath::magnetic {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::uintmax_t kMostBytes = std::uintmax_t{4} << 20;  // degree 133 needs 0.5 MiB

}  // namespace

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

Lines::Lines(std::string_view text) : rest_(text) {
  if (rest_.starts_with(kUtf8Mark)) rest_.remove_prefix(kUtf8Mark.size());
}

std::optional<std::string_view> Lines::Next() {
  while (!rest_.empty()) {
    const std::size_t length = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = Trimmed(rest_.substr(0, length));
    rest_.remove_prefix(std::min(length + 1, rest_.size()));
    ++number_;
    if (!line.empty()) return line;
  }
  return std::nullopt;
}

std::string_view Fields::Next() {
  if (separator_ == ' ') rest_ = Trimmed(rest_);
  const std::size_t length = std::min(
      separator_ == ' ' ? rest_.find_first_of(kBlanks) : rest_.find(separator_), rest_.size());
  const std::string_view field = Trimmed(rest_.substr(0, length));
  rest_.remove_prefix(std::min(length + 1, rest_.size()));
  return field;
}

bool Fields::AtEnd() const { return Trimmed(rest_).empty(); }

std::string TextOfFile(const char* path) {
  FileFault fault;
  if (auto text = geomath::TextOfFile(path, kMostBytes, fault)) return *std::move(text);
  switch (fault.kind) {
    case FileFault::noFile:
      throw CoefficientFault{0, "is no file"};
    case FileFault::tooLarge:
      throw CoefficientFault{0, "is too large for a magnetic model"};
    default:
      throw CoefficientFault{0, "cannot be read"};
  }
}

}  // namespace zel_cs::geomath::magnetic
