#pragma once

#include <string>

#include "geomath/magnetic/magnetic_model.h"

namespace geomath_files {

/// The models of a coefficient file (.COF, SHDF or .shc), all built-in ones for an empty path, one of
/// them for its name. Never empty. Throws UserError when the file holds none, or is damaged.
zel_cs::geomath::MagneticModelSeries OpenMagneticModels(const std::string& path);

/// The decimal year of a date (see ParseDate) in years of four figures; throws UserError, beginning
/// with `subject`.
double YearOfDate(const std::string& date, const std::string& subject);

/// What is to be said of a date, written `date`, outside the years of the model that serves it, else
/// empty. Models that follow each other under one name count as one.
std::string YearsWarning(const zel_cs::geomath::MagneticModelSeries& models, double decimalYear,
                         const std::string& date);

}  // namespace geomath_files
