#pragma once

#include <cstddef>

#include "geomath/export.h"

namespace zel_cs::geomath {

inline constexpr double kWgs84A = 6378137.0;         ///< WGS84: semi-major axis, metres
inline constexpr double kWgs84InvF = 298.257223563;  ///< WGS84: inverse flattening

/// The reference ellipsoid of revolution: its defining constants, the derived ones, and the
/// conversion between geodetic (B, L, H) and earth-centred (X, Y, Z) coordinates. Angles are
/// radians, north and east positive; lengths are metres.
///
/// A plain record: set `a` and `invF` (or `a` and `b`), then call SetEllipsoid. Nothing is
/// validated. Const operations are safe from many threads at once and allocate nothing.
struct GEOMATH_API Ellipsoid {
  double a = 0;       ///< semi-major axis, metres
  double invF = 0;    ///< inverse flattening 1/f
  bool flag = false;  ///< carried along; false in every ellipsoid that the library builds
  double e = 0;       ///< first eccentricity
  double e2 = 0;      ///< e² = f(2 − f)
  double f = 0;       ///< flattening
  double ep2 = 0;     ///< second eccentricity squared, e²/(1 − e²)
  double b = 0;       ///< semi-minor axis, metres
  double n = 0;       ///< third flattening (a − b)/(a + b)

  /// Recomputes the derived constants from a and invF, or, with `fromSemiMinor`, from a and b.
  void SetEllipsoid(bool fromSemiMinor);

  /// In place, (B, L, H) to (X, Y, Z). Always true.
  bool BLH_to_XYZ(double& B, double& L, double& H) const;

  /// In place, (X, Y, Z) to (B, L, H), by fixed-point iteration on tan B.
  /// Within 1e-10 m of the axis L = 0 and B = ±π/2; at the centre B = 0 and H = −a.
  /// False, with the arguments untouched, when tan B has not settled to 1e-14 (absolute) after 20
  /// steps. Kept: that tolerance on a large tangent refuses about one point in 500 within a degree
  /// of the poles, the limit refuses points close to the centre, and H = p/cos B − N loses digits
  /// near the poles; XYZ_to_BLH_Batch has none of these weaknesses.
  bool XYZ_to_BLH(double& X, double& Y, double& Z) const;

  /// Gaussian mean radius of curvature √(ρν) at latitude B, metres.
  double GetGaussianRadius(double B) const;

  /// Converts `count` points in place; the coordinates of point i stand at index i * stride.
  /// A point without finite result becomes NaN in all three slots. Returns the points converted.
  std::size_t BLH_to_XYZ_Batch(double* B, double* L, double* H, std::size_t count,
                               std::ptrdiff_t stride = 1) const;

  /// The inverse, by a method exact to rounding everywhere: at the poles, on the axis, deep inside
  /// and far out. Where several latitudes belong to a point (inside the evolute) the one with the
  /// sign of Z is taken, and B = 0 for Z = 0. Points and results as BLH_to_XYZ_Batch.
  std::size_t XYZ_to_BLH_Batch(double* X, double* Y, double* Z, std::size_t count,
                               std::ptrdiff_t stride = 1) const;
};

/// An ellipsoid from its semi-major axis (metres) and inverse flattening, constants derived.
GEOMATH_API Ellipsoid MakeEllipsoid(double a, double invF);

}  // namespace zel_cs::geomath
