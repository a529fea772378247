#pragma once

#include <cstddef>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/export.h"
#include "geomath/platform/in_place.h"

namespace zel_cs::geomath {

struct GeodesicAreaSeries;
struct GeodesicFormulas;
struct GeodesicStart;

/// A geodesic between two points: metres, and azimuths clockwise from north in [0, 2π), at the
/// first point towards the second and at the second back towards the first.
struct GeodesicMeasure {
  double distance;     ///< metres
  double azimuth;      ///< at the first point, radians
  double backAzimuth;  ///< at the second point towards the first, radians
};

/// Where a geodesic ends: radians, the longitude in [−π, π], and the azimuth from there back.
struct GeodesicEnd {
  double b;            ///< latitude
  double l;            ///< longitude
  double backAzimuth;  ///< towards the start, in [0, 2π)
};

/// What a polygon of geodesics encloses.
struct GeodesicPolygon {
  double area;       ///< square metres, positive when its points run counter-clockwise
  double perimeter;  ///< metres
};

/// One geodesic from a point in a direction, for many points along it. Const operations are safe
/// from many threads.
class GEOMATH_API GeodesicLine {
 public:
  /// The point at `distance` (metres, negative ones lie behind the start). NaN beyond 200 semi-minor
  /// axes or where the line has no start.
  GeodesicEnd At(double distance) const;

 private:
  friend class Geodesic;
  GeodesicLine(const GeodesicFormulas& formulas, double b, double l, double azimuth);

  InPlace<GeodesicStart, 31> start_;
  double limit_;  // metres; 0 where the start is not valid
};

/// Shortest lines on an ellipsoid of revolution: their lengths, directions, ends and areas.
///
/// Method: Karney 2013, Algorithms for geodesics, J. Geodesy 87, 43-55, series of the sixth order.
/// Distances and positions are good to 15 nm for |f| < 1/150, oblate and prolate; truncation grows
/// with f⁷, to 0.1 µm at |f| = 1/50, 0.1 mm at 1/15 and 1 m at 1/5. Works for every pair of
/// points, nearly antipodal, polar and equatorial ones included.
///
/// Angles are radians, latitudes within ±π/2, longitudes within ±2π; lengths are metres. A point
/// outside, or not a number, gives NaN. Azimuths are clockwise from north in [0, 2π); at a pole
/// they count from the meridian of the longitude that is given. Two equal points have azimuth 0 and
/// back azimuth 0; of several shortest lines the one that runs east is given.
///
/// Constants are prepared once; every operation is const, allocates nothing, throws nothing and is
/// safe from many threads at once. A batch gives the bits of the single call.
class GEOMATH_API Geodesic {
 public:
  /// On an ellipsoid, which is copied.
  explicit Geodesic(const Ellipsoid& ellipsoid);

  /// The inverse problem: length and azimuths between two positions.
  GeodesicMeasure Inverse(double b1, double l1, double b2, double l2) const;

  /// The direct problem: where one arrives from a position, an azimuth and a distance, which may be
  /// negative and up to 200 semi-minor axes long (beyond: NaN).
  GeodesicEnd Direct(double b, double l, double azimuth, double distance) const;

  /// A geodesic to be walked along.
  GeodesicLine Line(double b, double l, double azimuth) const;

  /// Inverse and Direct of `count` elements, any result array may be one of the given. A pair
  /// without result becomes NaN in all of them. Returns the number of results.
  std::size_t InverseBatch(const double* b1, const double* l1, const double* b2, const double* l2,
                           double* distance, double* azimuth, double* backAzimuth,
                           std::size_t count) const;
  std::size_t DirectBatch(const double* b, const double* l, const double* azimuth,
                          const double* distance, double* endB, double* endL, double* backAzimuth,
                          std::size_t count) const;

  /// Area and perimeter of the polygon whose corners are given once each, in order; its last edge
  /// leads back to the first. It may enclose a pole or cross the antimeridian. Of the two parts that
  /// the polygon divides the ellipsoid into, the smaller: positive when the corners run
  /// counter-clockwise about it. An edge that joins nearly antipodal points has a side that the last
  /// digits decide. Edges must not cross. Area to 0.1 m² for a thousand kilometres.
  GeodesicPolygon Area(const double* b, const double* l, std::size_t count) const;

  /// Area of the whole ellipsoid, square metres.
  double EllipsoidArea() const;

 private:
  double EdgeArea(double b1, double l1, double b2, double l2, double& distance) const;

  InPlace<GeodesicFormulas, 26> formulas_;
  InPlace<GeodesicAreaSeries, 36> area_;
  double authalicRadius2_;  // c², eq. 60
  double areaScale_;        // a²·e², square metres
};

}  // namespace zel_cs::geomath
