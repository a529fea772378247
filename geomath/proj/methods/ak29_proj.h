#pragma once

#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// State plane zones 2 to 9 of Alaska on the datum of 1927: transverse Mercator by the published
/// series (Claire 1968, C&GS Publication 62-4), scale 0.9999 and grid origin 54° N built in. The
/// series define coordinates of 1927; they stay within 0.06 mm of the ellipsoidal definition within
/// 3° of the central meridian.
///
/// Parameters, exchanged as they are under every unit: easting of the central meridian (US survey
/// feet), its longitude (arc-seconds, west positive), zone number (only stored). Coordinates are
/// radians and metres. The Clarke 1866 ellipsoid is part of the constants: SetEllipsoid does not
/// change results. Meant for Alaska within 3° of the central meridian; longitudes of neither
/// direction are folded. Never fails. A round trip closes to
/// 0.08 mm within 2° of the meridian and 0.35 mm within 3°.
///
/// Computes the point scale and the convergence, positive east of the central meridian.
class GEOMATH_API TAK29Proj : public TGeoProj {
 public:
  /// Zone 2: 500000 feet at 142° W.
  TAK29Proj();
  /// The parameters in their order.
  TAK29Proj(double C, double cm, int zone);

  /// Central meridian, arc-seconds, west positive.
  double CM() const { return cm_; }
  void CM(double value) { Set(cm_, value); }
  /// Only stored.
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }

  double FEast() const override;

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;

 private:
  static const ParamRow kParams[];

  double C_, cm_, zone_;
};

}  // namespace zel_cs::geomath
