#pragma once

#include <string>

#include "files/epsg/system_notation.h"

namespace geomath_files {

/// What a system is, in words: its kind, area, datum, projection with parameters, axes and units, the
/// way to WGS 84 with its accuracy, and a point in both coordinates. `text` is a code, two joined by a
/// +, a file, or WKT, as ConversionEnd takes it. Throws UserError.
std::string DescribeSystem(const std::string& text);

/// The system in a notation, with a line end. Throws UserError where it has none.
std::string WriteSystem(const std::string& text, SystemNotation notation);

}  // namespace geomath_files
