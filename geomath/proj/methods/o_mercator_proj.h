#pragma once

#include "geomath/proj/methods/hotine_proj.h"

namespace zel_cs::geomath {

/// Hotine oblique Mercator of a centre and an azimuth there (Snyder 1987, pp. 66-75, alternate B;
/// EPSG Guidance Note 7-2, method 9812): coordinates count from the natural origin of the skew
/// cylinder and are turned by the azimuth itself.
///
/// Parameters: azimuth of the central line at the centre, scale on it, centre longitude and
/// latitude, false easting and northing at the natural origin. Never fails: latitudes beyond a pole
/// give results that are not finite. Everything else as in HotineProj.
class GEOMATH_API TOMercatorProj : public HotineProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TOMercatorProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TOMercatorProj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
                 double fEast, double fNorth);

  /// Kept: the azimuth (index 0) is exchanged in radians whatever the unit code.
  std::span<const ParamRow> Params() const override;

 protected:
  /// Kept: exactly on the origin meridian u counts as 0, whatever the latitude.
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;

 private:
  static const ParamRow kParams[];
};

}  // namespace zel_cs::geomath
