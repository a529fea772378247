#include "geomath/magnetic/coefficient_file.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <locale>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "geomath/magnetic/decimal_year.h"

namespace zel_cs::geomath {
namespace {

constexpr std::size_t kMaxFileBytes = std::size_t{4} << 20;  // degree 133 needs 0.5 MiB

/// What a file says, before the size of the model is known.
struct Draft {
  std::string name;
  std::optional<double> epoch, endDate;
  double editionDate = 0;
  std::vector<GaussTerm> terms;
};

/// The lines of a text, without their ends.
class Lines {
 public:
  explicit Lines(std::string_view text) : rest_(text) {}

  std::optional<std::string_view> Next() {
    if (rest_.empty()) return std::nullopt;
    const std::size_t length = std::min(rest_.find('\n'), rest_.size());
    const std::string_view line = rest_.substr(0, length);
    rest_.remove_prefix(std::min(length + 1, rest_.size()));
    return line;
  }

 private:
  std::string_view rest_;
};

/// Blank-separated fields with a decimal point, whatever the program's locale is.
std::istringstream Fields(std::string_view line) {
  std::istringstream fields{std::string(line)};
  fields.imbue(std::locale::classic());
  return fields;
}

std::optional<double> LeadingNumber(std::string_view text) {
  double value;
  std::istringstream fields = Fields(text);
  if (!(fields >> value)) return std::nullopt;
  return value;
}

std::optional<GaussTerm> ReadTerm(std::istringstream& fields) {
  GaussTerm term;
  if (!(fields >> term.n >> term.m >> term.g >> term.h >> term.gDot >> term.hDot))
    return std::nullopt;
  if (term.n < 1 || term.m < 0 || term.m > term.n) return std::nullopt;
  return term;
}

/// "month/day/year" as a decimal year, 0 when it is no date.
double EditionDate(std::istringstream& fields) {
  int month, day, year;
  char slash;
  if (!(fields >> month >> slash >> day >> slash >> year)) return 0;
  return DecimalYear(year, month, day).value_or(0);
}

Draft ReadCof(Lines lines) {
  Draft draft;
  std::istringstream header = Fields(lines.Next().value_or(""));
  double epoch;
  if (!(header >> epoch)) return draft;
  draft.epoch = epoch;
  header >> draft.name;
  draft.editionDate = EditionDate(header);

  while (const auto line = lines.Next()) {
    if (line->starts_with("9999")) break;
    std::istringstream fields = Fields(*line);
    if (const auto term = ReadTerm(fields)) draft.terms.push_back(*term);
  }
  return draft;
}

/// "I,n,m,g,h,gdot,hdot", an empty or missing field standing for 0.
std::optional<GaussTerm> ReadShdfTerm(std::string_view line) {
  if (!line.starts_with("I,")) return std::nullopt;
  std::string blanked;
  std::string_view rest = line.substr(2);
  for (int field = 0; field < 6; ++field) {
    const std::size_t length = std::min(rest.find(','), rest.size());
    const std::string_view value = rest.substr(0, length);
    const bool empty = value.find_first_not_of(" \t\r") == std::string_view::npos;
    blanked.append(empty ? "0" : value).append(" ");
    rest.remove_prefix(std::min(length + 1, rest.size()));
  }
  std::istringstream fields = Fields(blanked);
  return ReadTerm(fields);
}

void ReadShdfHeader(std::string_view line, Draft& draft) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view key = line.substr(1, colon - 1), value = line.substr(colon + 1);
  if (key == "ModelName") Fields(value) >> draft.name;
  if (key == "ModelStartDate") draft.epoch = LeadingNumber(value);
  if (key == "ModelEndDate") draft.endDate = LeadingNumber(value);
  if (key == "ReleaseDate") draft.editionDate = LeadingNumber(value).value_or(0);
}

Draft ReadShdf(Lines lines) {
  Draft draft;
  while (const auto line = lines.Next()) {
    if (line->starts_with('%')) {
      if (!draft.terms.empty()) break;  // the next model
      ReadShdfHeader(*line, draft);
    } else if (const auto term = ReadShdfTerm(*line)) {
      draft.terms.push_back(*term);
    }
  }
  return draft;
}

std::unique_ptr<WMMtype_MagneticModel> BuildModel(const Draft& draft) {
  if (!draft.epoch || draft.terms.empty()) return nullptr;
  const int degree = std::ranges::max(draft.terms, {}, &GaussTerm::n).n;
  if (degree > kMaxMagneticDegree) return nullptr;

  auto model = AllocateMagneticModel(degree);
  if (!model) return nullptr;
  model->modelName = draft.name.substr(0, kMaxModelName);
  model->epoch = *draft.epoch;
  model->coefficientFileEndDate = draft.endDate.value_or(*draft.epoch + kModelYears);
  model->editionDate = draft.editionDate;
  for (const GaussTerm& term : draft.terms) StoreTerm(*model, term);
  return model;
}

std::optional<std::string> ReadSmallFile(const char* path) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (!path || !fs::is_regular_file(path, error)) return std::nullopt;
  const std::uintmax_t size = fs::file_size(path, error);
  if (error || size > kMaxFileBytes) return std::nullopt;

  std::string text(static_cast<std::size_t>(size), '\0');
  std::ifstream file(path, std::ios::binary);
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

}  // namespace

std::unique_ptr<WMMtype_MagneticModel> ParseCoefficients(std::string_view text) noexcept {
  try {
    return BuildModel(text.starts_with('%') ? ReadShdf(Lines(text)) : ReadCof(Lines(text)));
  } catch (const std::exception&) {
    return nullptr;  // no memory
  }
}

std::unique_ptr<WMMtype_MagneticModel> ReadCoefficientFile(const char* path) noexcept {
  try {
    const auto text = ReadSmallFile(path);
    return text ? ParseCoefficients(*text) : nullptr;
  } catch (const std::exception&) {
    return nullptr;  // no memory, or a path that the system cannot represent
  }
}

int CountMissingTerms(const WMMtype_MagneticModel& model) noexcept {
  int missing = 0;
  for (std::size_t i = 1; i < model.g.size(); ++i)
    missing += model.g[i] == 0 && model.h[i] == 0 && model.gDot[i] == 0 && model.hDot[i] == 0;
  return missing;
}

}  // namespace zel_cs::geomath
