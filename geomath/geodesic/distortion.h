#pragma once

#include <cstddef>

#include "geomath/export.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// The images in the grid of a unit of length northward and of one eastward (Snyder 1987, 4-10 and
/// 4-11): the columns of the map's derivative on the metric of the ellipsoid.
struct UnitImages {
  double northN;  ///< northing of the one northward
  double northE;  ///< its easting
  double eastN;   ///< northing of the one eastward
  double eastE;   ///< its easting
};

/// Those of a map with the given derivatives, at latitude `b` (radians) of an ellipsoid.
GEOMATH_API UnitImages UnitImagesOf(const GridDerivatives& derivatives, const Ellipsoid& ellipsoid,
                                    double b);

/// What a projection does to lengths, angles and areas at a point: Tissot's indicatrix (Snyder 1987,
/// pp. 20-26, whose equation numbers the source gives). Factors are without unit, angles radians.
struct Distortion {
  double meridianScale;      ///< h, along the meridian
  double parallelScale;      ///< k, along the parallel
  double arealScale;         ///< of areas; negative where the grid is a mirror image
  double convergence;        ///< azimuth of grid north: azimuth = bearing of an arc + convergence
  double angularDistortion;  ///< the largest change of an angle, ω; 0 of a conformal map
  double semiMajor;          ///< largest scale in any direction, half axis of Tissot's ellipse
  double semiMinor;          ///< smallest one
};

/// The distortion at a geographic position (radians, internal axes), from the derivatives of the
/// class's own formulas: exact to rounding, so that a conformal class shows equal scales to 1e-12
/// where its series are. On the metric of GetEllipsoid(). False, the result untouched, where
/// TGeoProj::ForwardDerivatives fails, at the poles too. Const and thread-safe.
GEOMATH_API bool DistortionAt(const TGeoProj& proj, double b, double l, Distortion& distortion);

/// The same at a grid position (metres, internal axes).
GEOMATH_API bool DistortionAtGrid(const TGeoProj& proj, double n, double e, Distortion& distortion);

/// The same of `count` positions, with the bits of the single calls, about ten times as fast for
/// geographic ones; all values NaN where it fails. Returns the number of the others.
GEOMATH_API std::size_t DistortionAt(const TGeoProj& proj, const double* b, const double* l,
                                     Distortion* distortions, std::size_t count);
GEOMATH_API std::size_t DistortionAtGrid(const TGeoProj& proj, const double* n, const double* e,
                                         Distortion* distortions, std::size_t count);

/// Scale and convergence (radians) of a projection at latitude `b`, longitude `l` (radians, internal
/// axes): those that its class computes with the point (TGeoProj::ForwardPoint), and where it computes
/// none the mean scale, the root of the areal one, and the convergence of its Distortion. NaN in both
/// for a point that is not converted. Const, for many threads at once.
GEOMATH_API PointFactors FactorsAt(const TGeoProj& proj, double b, double l);

}  // namespace zel_cs::geomath
