#pragma once

#include <optional>

#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/formulas/hotine_grid.h"

namespace zel_cs::geomath {

/// What defines an oblique Mercator by two points of its central line: their latitudes and
/// longitudes, and the centre's latitude, which chooses the aposphere and the scale's place.
struct TwoPointLine {
  double phi1, lambda1, phi2, lambda2;  // radians
  double phiC;                          // radians
  double k0;                            // scale on the line at the centre
  double fEast, fNorth;                 // of the natural origin, metres
};

/// The oblique Mercator through two points (Snyder 1987, pp. 69-75, alternate A), coordinates
/// counted from the natural origin and turned by the azimuth of the line at the centre. Nothing
/// where the points define no line: a latitude within 1e-10 rad of a pole, equal latitudes, the
/// first point on the equator (both to 1e-10 rad), or the centre at a pole.
std::optional<HotineGrid> HotineThroughTwoPoints(const Ellipsoid& ell, const TwoPointLine& line);

}  // namespace zel_cs::geomath
