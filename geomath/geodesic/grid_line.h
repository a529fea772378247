#pragma once

#include <cstddef>

#include "geomath/chain/geoid_height.h"
#include "geomath/export.h"
#include "geomath/geodesic/geodesic.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// A position in a grid, metres: northing and easting on internal axes, and a height.
struct GridPoint {
  double n;      ///< northing
  double e;      ///< easting
  double h = 0;  ///< above the geoid that the line's owner has, else above the ellipsoid
};

/// A line between two grid positions with everything that leads from the ground to the grid.
/// Metres and radians; bearings and azimuths clockwise from north in [0, 2π). "At the first end"
/// and "at the second end" both look along the line from that end to the other.
struct GridLine {
  double gridDistance;      ///< straight, in the grid
  double gridBearing;       ///< t of that chord, at the first end
  double geodesicDistance;  ///< on the ellipsoid
  double azimuth;           ///< of the geodesic at the first end
  double backAzimuth;       ///< at the second end
  double scale1;            ///< at the first end in the line's azimuth; NaN without derivatives
  double scale2;            ///< at the second end
  double convergence1;      ///< azimuth of grid north at the first end; NaN likewise
  double convergence2;      ///< at the second end
  double arcToChord1;  ///< t − T at the first end, from the chord t and T = azimuth − convergence
  double arcToChord2;      ///< at the second end
  double lineScale;        ///< grid distance over geodesic distance; NaN for a line of no length
  double elevationFactor;  ///< geodesic distance over ground distance, R/(R + h)
  double combinedFactor;   ///< their product: grid distance over ground distance
  double groundDistance;   ///< horizontal, at the mean of the ellipsoidal heights
  double slopeDistance;    ///< straight between the two points in space
  double height1;          ///< above the ellipsoid, of the first end
  double height2;          ///< of the second end
};

/// The deflection of the vertical, radians: where the plumb line meets the sky north (xi) and east
/// (eta) of the ellipsoid's normal.
struct GEOMATH_API Deflection {
  double xi;   ///< northward
  double eta;  ///< eastward

  /// Laplace's correction: geodetic azimuth − astronomic azimuth, −η·tan B, of a horizontal sight.
  double AzimuthCorrection(double b) const;
  /// What is added to a horizontal direction observed in `azimuth` at the zenith angle `zenith`,
  /// −(ξ·sin α − η·cos α)·cot z.
  double DirectionCorrection(double azimuth, double zenith) const;
  /// What is added to an observed zenith angle, ξ·cos α + η·sin α.
  double ZenithCorrection(double azimuth) const;
};

/// What the plumb line at one end of a line does to observations there, radians: each is added to what
/// was observed about the plumb line to have what counts about the ellipsoid's normal.
struct PlumbLine {
  Deflection deflection;       ///< at that end and its height
  double zenith;               ///< angle between the normal and the straight line to the other end
  double azimuthCorrection;    ///< Deflection::AzimuthCorrection
  double directionCorrection;  ///< Deflection::DirectionCorrection in the line's azimuth and zenith
  double zenithCorrection;     ///< Deflection::ZenithCorrection in the line's azimuth
};

/// Lines in the grid of a projection, reduced without series: the geodesic and the chord are both
/// computed, and the arc-to-chord correction and the scale of the line are what they differ by. In a
/// conformal grid T = azimuth − convergence.
///
/// The elevation factor is R/(R + h) with the mean ellipsoidal height h and Euler's radius
/// 1/R = cos²α/M + sin²α/N in the line's mean azimuth at its mean latitude; with heights above the
/// sea instead of the ellipsoid it would be 4.7 in a million wrong for every 30 m of geoid height, so
/// that a geoid is asked for them. Ground distance = grid distance / combined factor.
///
/// Holds pointers to what the caller owns; every operation is const, allocates nothing, throws
/// nothing and is safe from many threads. A projection that changes needs a new object.
class GEOMATH_API GridLines {
 public:
  /// With a geoid, heights of positions are above it, at positions of the projection's own datum.
  explicit GridLines(const TGeoProj& proj, const GeoidHeight* geoid = nullptr);

  /// Latitude and longitude of a grid position, radians: those that the projection maps to it, also
  /// where its own inverse is a shorter series. False where there are none, or a metre off.
  bool Position(const GridPoint& at, double& b, double& l) const;

  /// False, the line then unspecified, where an end has no geographic position or no geoid height.
  bool Between(const GridPoint& from, const GridPoint& to, GridLine& line) const;
  /// `count` lines, faster; a line that fails is all NaN. Returns the number of the others.
  std::size_t Between(const GridPoint* from, const GridPoint* to, GridLine* lines,
                      std::size_t count) const;

  /// The plumb line at `from` for a sight to `to`, from the slopes of the geoid. False without a geoid,
  /// and where Between or DeflectionAt fails.
  bool PlumbAt(const GridPoint& from, const GridPoint& to, PlumbLine& plumb) const;

  /// The azimuth at `from` of a grid bearing, of an arc as a telescope sees it: bearing plus
  /// convergence in a conformal grid. NaN where TGeoProj::ForwardDerivatives fails.
  double AzimuthOfBearing(const GridPoint& from, double bearing) const;
  /// The azimuth at `from` of another position; NaN where one of them fails.
  double AzimuthTo(const GridPoint& from, const GridPoint& to) const;

  /// What the object was made of; the geoid may be null.
  const TGeoProj& GetProjection() const { return *proj_; }
  const Geodesic& GetGeodesic() const { return geodesic_; }
  const GeoidHeight* GetGeoid() const { return geoid_; }

 private:
  struct End;
  bool Locate(const GridPoint& at, End& end) const;
  void Describe(const End& from, const End& to, const GeodesicMeasure& geodesic,
                GridLine& line) const;

  const TGeoProj* proj_;
  const GeoidHeight* geoid_;
  Geodesic geodesic_;
};

/// Euler's radius of curvature in an azimuth at a latitude, metres: 1/R = cos²α/M + sin²α/N.
GEOMATH_API double RadiusInAzimuth(const Ellipsoid& ellipsoid, double b, double azimuth);

/// A slope distance between two ellipsoidal heights, reduced to the ellipsoid with the radius R of
/// its azimuth: d = 2R·asin(√((s² − Δh²)/((1 + h1/R)(1 + h2/R)))/(2R)), the triangle with the sides
/// R + h1 and R + h2. Metres; NaN where the heights differ by more than the distance.
GEOMATH_API double SlopeToEllipsoid(double slope, double h1, double h2, double R);

/// The deflection at height `h` over the ellipsoid from the slopes of a geoid (Heiskanen and Moritz
/// 1967, section 2-22): ξ = −∂N/((M + h)·∂B), η = −∂N/((N + h)·cos B·∂L), by
/// GeoidHeight::HeightsAndSlopes: the derivatives of a grid's own interpolation where it has them. False
/// where there is no height, and at the poles, where east is none.
GEOMATH_API bool DeflectionAt(const GeoidHeight& geoid, const Ellipsoid& ellipsoid, double b,
                              double l, double h, Deflection& deflection);
/// The same at `count` positions, faster for harmonic models; NaN where there is none.
GEOMATH_API void DeflectionsAt(const GeoidHeight& geoid, const Ellipsoid& ellipsoid,
                               const double* b, const double* l, const double* h,
                               Deflection* deflections, std::size_t count);

}  // namespace zel_cs::geomath
