#pragma once

#include "geomath/proj/methods/hotine_proj.h"

namespace zel_cs::geomath {

/// Oblique Mercator of the State Plane Coordinate System of 1983, Alaska zone 1 (Stem 1989, NOAA
/// Manual NOS NGS 5, pp. 39-41). Its formulas are those of Hotine's oblique Mercator turned by the
/// azimuth at the centre, in another arithmetic: the source's C is ln Eh, its F = sin γ0.
///
/// Parameters: azimuth of the axis at the centre, scale on it, centre longitude and latitude, false
/// easting and northing at the natural origin, zone number (only stored). Everything else as in
/// HotineProj.
class GEOMATH_API TSPC_OM83Proj : public HotineProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TSPC_OM83Proj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSPC_OM83Proj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
                double fEast, double fNorth, int zone);

  /// Only stored.
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }

  std::span<const ParamRow> Params() const override;

 private:
  static const ParamRow kParams[];

  double zone_;
};

}  // namespace zel_cs::geomath
