#pragma once

#include "geomath/base/ellipsoid.h"

namespace zel_cs::geomath {

/// The working ellipsoid of a county grid: a design ellipsoid lifted to the county's terrain, so
/// that grid and ground distances agree (Minnesota and Wisconsin county coordinate systems). Both
/// semi-axes grow by `elevationShift` + `geoidHeight`; a design axis that is not positive stands
/// for the axis of `base`. All lengths are metres.
Ellipsoid CountyEllipsoid(const Ellipsoid& base, double desElA, double desElB,
                          double elevationShift, double geoidHeight);

/// The scale that a county grid works with: 1 where the parameter is not positive.
double CountyScale(double scale);

}  // namespace zel_cs::geomath
