#pragma once

#include "geomath/proj/methods/double_ster_proj.h"

namespace zel_cs::geomath {

/// The Dutch national grid (Rijksdriehoekstelsel): the oblique stereographic projection (EPSG method
/// 9809) with the grid's scale of 0.9999079 at the origin built in. The grid itself is the Bessel
/// 1841 ellipsoid, origin 52°09′22.178″ N 5°23′15.500″ E, false origin 155000, 463000.
///
/// Parameters: latitude and longitude of origin, false easting, false northing. A latitude beyond a
/// pole fails; in everything else but kind and parameters it is TDoubleSter.
class GEOMATH_API TRDProj : public TDoubleSter {
 public:
  /// WGS84, all parameters 0.
  TRDProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TRDProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth);

  std::span<const ParamRow> Params() const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;

 private:
  static const ParamRow kParams[];
};

}  // namespace zel_cs::geomath
