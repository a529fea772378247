#pragma once

#include <memory>
#include <string>

#include "files/models/shift_file.h"

namespace geomath_files {

/// Reads a triangulation (PROJ, "TIN based transformation", format 1.0 and 1.1): x is east, y is
/// north, of geographic systems in degrees. Throws UserError with the place, such as
/// "vertices[12]".
std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseShiftJson(const std::string& text,
                                                                 const ShiftChoice& choice);

}  // namespace geomath_files
