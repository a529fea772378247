#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/models/raster_reader.h"
#include "files/models/shift_file.h"

namespace geomath_files {

/// Reads a geodetic TIFF grid (PROJ, "Geodetic TIFF grids"), one directory a grid. Samples are told by
/// their DESCRIPTION, in any order; a file that has none has latitude and longitude, or easting and
/// northing, first. Grids lie in the one that they name as their parent, or else in the smallest
/// that contains them. Geoid undulations are taken with the other sign, so that Forward leads from
/// heights above the ellipsoid to heights above the geoid; velocities are a VelocityGrid. Throws
/// UserError with the directory.
std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseShiftTiff(const std::string& bytes,
                                                                 const ShiftChoice& choice);

/// The same of a grid of a deformation model, whose samples are called "north_offset", "east_offset"
/// and "vertical_offset", those without a name in this order from the east; `file` stands for it in messages.
std::vector<zel_cs::geomath::ShiftGridPart> ParseDisplacementTiff(
    const std::string& bytes, const std::string& file, const DisplacementSamples& samples);

}  // namespace geomath_files
