#pragma once

#include <memory>
#include <string>

#include "geomath/magnetic/magnetic_field.h"
#include "geomath/magnetic/magnetic_model.h"

namespace geomath_tools {

/// The model of a coefficient file, the built-in one for an empty path. Throws UserError when the
/// file holds none, or one that was cut off: its field would look right and be wrong.
std::unique_ptr<zel_cs::geomath::WMMtype_MagneticModel> OpenMagneticModel(const std::string& path);

/// The decimal year of a date such as "2026-05-31"; throws UserError, beginning with `subject`.
double YearOfDate(const std::string& date, const std::string& subject);

/// What is to be said of a field whose date lies outside the years of its model, else empty.
std::string YearsWarning(const zel_cs::geomath::MagneticField& field,
                         const zel_cs::geomath::WMMtype_MagneticModel& model,
                         const std::string& date);

}  // namespace geomath_tools
