#include "files/models/magnetic_file.h"

#include <fmt/format.h>

#include <cstdio>

#include "files/words/name_match.h"
#include "files/words/user_error.h"
#include "geomath/magnetic/coefficient_file.h"
#include "geomath/magnetic/decimal_year.h"

using namespace zel_cs::geomath;

namespace geomath_tools {

std::unique_ptr<WMMtype_MagneticModel> OpenMagneticModel(const std::string& path) {
  if (path.empty()) {
    auto model = Wmm2010Model();
    if (!model) throw UserError("there is not enough memory");
    return model;
  }
  auto model = ReadCoefficientFile(path.c_str());
  if (!model)
    throw UserError(
        fmt::format("{}: holds no magnetic model; a coefficient file begins with the "
                    "line \"2025.0 WMM-2025 11/13/2024\" or the like",
                    path));
  if (const int missing = CountMissingTerms(*model))
    throw UserError(fmt::format("{}: {} of the {} terms up to degree {} are missing", path, missing,
                                model->g.size() - 1, model->nMax));
  return model;
}

double YearOfDate(const std::string& date, const std::string& subject) {
  int year = 0, month = 0, day = 0, read = 0;
  const bool formed = std::sscanf(date.c_str(), "%4d-%2d-%2d%n", &year, &month, &day, &read) == 3 &&
                      static_cast<std::size_t>(read) == date.size();
  const auto decimal = formed ? DecimalYear(year, month, day) : std::nullopt;
  if (!decimal)
    throw UserError(
        fmt::format("{}: \"{}\" is no date; write it like 2026-05-31", subject, Printable(date)));
  return *decimal;
}

std::string YearsWarning(const MagneticField& field, const WMMtype_MagneticModel& model,
                         const std::string& date) {
  if (field.InModelYears()) return "";
  return fmt::format("{} is outside the years of {}, {} to {}: the field is extrapolated", date,
                     model.modelName, model.epoch, model.coefficientFileEndDate);
}

}  // namespace geomath_tools
