#pragma once

#include "geomath/export.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// Scale and convergence of a grid at a geographic position (radians, internal axes), as the class
/// itself computes them; NaN for what it does not compute and where it fails. The convergence is the
/// azimuth of grid north: geodetic azimuth = grid bearing of the arc + convergence. Const and safe
/// from many threads.
GEOMATH_API PointFactors GridFactorsAt(const TGeoProj& proj, double b, double l);

}  // namespace zel_cs::geomath
