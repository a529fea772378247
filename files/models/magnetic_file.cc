#include "files/models/magnetic_file.h"

#include <fmt/format.h>

#include <algorithm>

#include "files/words/date_text.h"
#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/magnetic/model_series.h"

using namespace zel_cs::geomath;

namespace geomath_files {
namespace {

// The built-in model of that name, or none.
MagneticModelSeries BuiltInOfName(const std::string& name) {
  MagneticModelSeries models = BuiltInMagneticModels();
  std::erase_if(
      models, [&](const WMMtype_MagneticModel& model) { return !SameName(model.modelName, name); });
  return models;
}

}  // namespace

MagneticModelSeries OpenMagneticModels(const std::string& path) {
  if (path.empty()) return BuiltInMagneticModels();
  if (auto named = BuiltInOfName(path); !named.empty()) return named;
  CoefficientFault fault;
  auto models = ReadModelSeries(path.c_str(), &fault);
  if (models.empty())
    throw UserError(fmt::format("{}{}: holds no magnetic model: {}", path,
                                fault.line > 0 ? fmt::format(", line {}", fault.line) : "",
                                fault.reason.empty() ? "not enough memory" : fault.reason));
  return models;
}

double YearOfDate(const std::string& date, const std::string& subject) {
  constexpr YearRange kFourFigures{1000, 10000};  // some models begin long before surveys did
  const ParsedNumber year = ParseDate(date, kFourFigures);
  if (!year) throw UserError(fmt::format("{}: {}", subject, year.problem));
  return year.value;
}

std::string YearsWarning(const MagneticModelSeries& models, double decimalYear,
                         const std::string& date) {
  const std::string& name = ModelOfYear(models, decimalYear).modelName;
  const auto hasName = [&](const WMMtype_MagneticModel& model) { return model.modelName == name; };
  const double first = std::find_if(models.begin(), models.end(), hasName)->epoch;
  const double last = std::find_if(models.rbegin(), models.rend(), hasName)->coefficientFileEndDate;
  if (decimalYear >= first && decimalYear <= last) return "";
  return fmt::format("{} is outside the years of {}, {} to {}: the field is extrapolated", date,
                     name, first, last);
}

}  // namespace geomath_files
