#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct CassiniFormulas;

/// Cassini-Soldner grid of a Malaysian state in the geocentric datum of 2000 (EPSG Guidance Note
/// 7-2, method 9806), without false origin: the published one is for the caller to add.
///
/// Parameters: axis azimuth, scale, longitude and latitude of the state's origin. Radians and
/// metres. Chosen: the state grids being plain Cassini-Soldner, the azimuth turns the axes as in
/// CassiniSoldner and the scale multiplies both coordinates; a scale that is not positive, as in a
/// default object, counts as 1.
///
/// Never fails. Accuracy as CassiniSoldner: a round trip closes to 0.2 mm within 1° of the origin's
/// meridian. Not conformal: neither scale nor convergence is computed. There is no central point.
class GEOMATH_API TMalaysia_CS2000Proj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TMalaysia_CS2000Proj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMalaysia_CS2000Proj(double a, double invF, double axisAzimuth, double scale, double lon0,
                       double lat0);

  /// Grid azimuth of the north axis, what both coordinates are multiplied by, and the origin.
  double AxisAzimuth() const { return azimuth_; }
  void AxisAzimuth(double value) { Set(azimuth_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }

  std::span<const ParamRow> Params() const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double azimuth_, k0_, lambda0_, phi0_;
  InPlace<CassiniFormulas, 23> formulas_;
};

}  // namespace zel_cs::geomath
