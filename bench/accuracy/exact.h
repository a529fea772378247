#pragma once

#include <functional>

/// Map projections in extended precision, written down from their publications and sharing nothing
/// with the library: what the accuracy report measures against. Radians and metres, north and east
/// positive, longitudes not folded. Only the forward direction: an inverse result is judged by the
/// exact image of the position that it gives.
namespace exact {

using Real = long double;

struct Geographic {
  Real phi, lambda;
};
struct Plane {
  Real north, east;
};
using Projection = std::function<Plane(Geographic)>;

/// An ellipsoid of revolution from its semi-axis and inverse flattening, or from two semi-axes.
struct Ellipsoid {
  Real a, f;
  Real e2 = f * (2 - f), ep2 = e2 / (1 - e2);

  static Ellipsoid FromAxes(Real a, Real b) { return {a, (a - b) / a}; }
};

/// The radii of curvature ρ in the meridian and ν across it.
Real MeridianRadius(const Ellipsoid& ell, Real phi);
Real PrimeVerticalRadius(const Ellipsoid& ell, Real phi);

/// Origin and scale of a projection; false coordinates are added by Shifted.
struct Origin {
  Real phi, lambda, k = 1;
};

/// Lee 1976: the complex latitude of the isometric pair, and its meridian arc.
Projection TransverseMercator(const Ellipsoid& ell, const Origin& origin);
/// The Gauss-Schreiber transverse Mercator of the Gaussian sphere (EPSG Guidance Note 7-2).
Projection GaussSchreiber(const Ellipsoid& ell, const Origin& origin);
/// Cassini-Soldner by geodesics (Karney 2013, equations 7 and 8), each of which meets the meridian
/// of the origin at a right angle.
Projection CassiniByGeodesic(const Ellipsoid& ell, const Origin& origin);
/// The truncated series of EPSG method 9806, which define the grids that are called Cassini-Soldner.
Projection CassiniBySeries(const Ellipsoid& ell, const Origin& origin);
/// EPSG method 1052 with the plane at height 0.
Projection ColombiaUrban(const Ellipsoid& ell, const Origin& origin);
/// Mercator with a parallel of true scale (Snyder 1987, 7-6 to 7-8).
Projection Mercator(const Ellipsoid& ell, Real trueScale, Real lambda0);

/// Lambert conformal conic, Snyder 1987, 14-1 to 15-10; one parallel when the two are equal.
Projection Lambert(const Ellipsoid& ell, Real south, Real north, const Origin& origin);
/// Albers equal-area conic, Snyder 1987, 14-1 to 14-14.
Projection Albers(const Ellipsoid& ell, Real south, Real north, const Origin& origin);
/// The general stereographic projection, Snyder 1987, 21-2 to 21-37.
Projection Stereographic(const Ellipsoid& ell, const Origin& origin);
/// The double stereographic projection, EPSG method 9809.
Projection DoubleStereographic(const Ellipsoid& ell, const Origin& origin);

/// Hotine's oblique Mercator, Snyder 1987, 9-11 to 9-39 (alternate B), from the natural origin;
/// turned by the azimuth at the centre, or by that of the aposphere's equator.
enum class Turn { byAzimuth, byAposphere };
Projection Hotine(const Ellipsoid& ell, Real azimuth, const Origin& centre, Turn turn);
/// The Swiss oblique cylinder (swisstopo 2016, section 3).
Projection Swiss(const Ellipsoid& ell, const Origin& origin);
/// Krovak's oblique cone, EPSG method 9819: southing and westing from its apex. `origin` is the
/// centre, counted from Greenwich.
Projection Krovak(const Ellipsoid& ell, const Origin& origin, Real pole, Real pseudoParallel);

/// `projection` with false coordinates, and with both coordinates multiplied.
Projection Shifted(Projection projection, Real north, Real east);
Projection Scaled(Projection projection, Real factor);

}  // namespace exact
