#pragma once

#include <string>

#include "files/site/calibration.h"

namespace geomath_files {

/// The calibrated site as a PROJ pipeline: longitude, latitude (degrees for cct, radians for
/// proj_trans) and height to local easting, northing and height. Where the formulas of a projection
/// differ from PROJ's, steps that are fitted to the site take the difference up, one for each
/// direction. The pipeline is run before it is returned: over the extent of the control, and at
/// least 20 km, PROJ agrees with the system's own conversion within 0.01 mm both ways.
///
/// Throws UserError where PROJ has no equal: for a projection that it does not have or that differs
/// by more, for axes other than NE, for heights above a geoid, and for shifts other than horizontal
/// grids of latitude and longitude and triangulations of the plane.
std::string ProjPipeline(const Calibration& calibration);

}  // namespace geomath_files
