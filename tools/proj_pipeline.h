#pragma once

#include <string>

#include "tools/calibration.h"

namespace geomath_tools {

/// The calibrated site as a PROJ pipeline: longitude, latitude (degrees for cct, radians for
/// proj_trans) and height to local easting, northing and height. PROJ agrees within 0.01 mm; over a
/// transverse Mercator within 0.05 mm, which is what the series of TM and TMERC leave out. Throws UserError where PROJ has
/// no equal: for other projections than STER, DSTER, TM, TMERC, LC and AlbersConic, for axes other
/// than NE, and for heights above a geoid.
std::string ProjPipeline(const Calibration& calibration);

}  // namespace geomath_tools
