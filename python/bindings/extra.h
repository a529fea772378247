#pragma once

#include <pybind11/pybind11.h>

#include <string>

namespace geomath_python {

/// The part of the package that stands on GDAL and PROJ, imported when something needs it. Throws
/// UserError, which begins with `subject`, where it is not there or cannot be loaded.
pybind11::module_ ImportExtra(const std::string& subject);

/// Rasters are read by that part from here on.
void ReadRastersByExtra();

}  // namespace geomath_python
