#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/models/shift_file.h"

namespace geomath_files {

/// Whether JSON is that of the master file of a deformation model.
bool IsDeformationModel(const std::string& bytes);

/// The names of the grids of a master file, each once. Throws UserError.
std::vector<std::string> GridsOfDeformationModel(const std::string& bytes, const std::string& file);

/// Reads a deformation model: a master file (format "deformation model master file", version 1.0,
/// specified in the documentation of PROJ) with its grids, geodetic TIFF. Throws UserError with the
/// place in the master file or its grid.
std::unique_ptr<zel_cs::geomath::CoordinateShift> ParseDeformationModel(const ShiftBytes& bytes,
                                                                        const std::string& file);

}  // namespace geomath_files
