#pragma once

#include <string>

#include "files/site/calibration.h"

namespace geomath_files {

/// Parameters with deviations, residuals, estimates and warnings as plain text.
std::string CalibrationText(const Calibration& calibration);

/// The files that a calibration was made of.
struct CalibrationFiles {
  std::string control;  ///< with the control points
  std::string system;   ///< the system file, or the code that it stands for
};

/// The same as one self-contained HTML page, with a map of the points: residuals drawn as vectors,
/// enlarged, with a scale bar for the map and one for the vectors. It says of what, by which version
/// and when it was made, and carries all coordinates.
std::string CalibrationPage(const Calibration& calibration, const CalibrationFiles& files);

}  // namespace geomath_files
