#pragma once

#include <string>

#include "files/site/calibration.h"

namespace geomath_tools {

/// Parameters with deviations, residuals, estimates and warnings as plain text.
std::string CalibrationText(const Calibration& calibration);

/// The same as one self-contained HTML page, with a map of the points: residuals drawn as vectors,
/// enlarged, with a scale bar for the map and one for the vectors.
std::string CalibrationPage(const Calibration& calibration, const std::string& title);

}  // namespace geomath_tools
