#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct CassiniFormulas;

/// Cassini-Soldner (EPSG Guidance Note 7-2, method 9806; Snyder 1987, p. 95) on axes that may be
/// turned.
///
/// Parameters: latitude and longitude of the origin, azimuth of the axis, false easting, false
/// northing. Radians and metres. Chosen: the projection's north axis points in grid azimuth
/// AxisAzimuth, as in the general oblique Mercator; the other sense is one sign in CassiniSoldner.
///
/// Never fails. Both directions are truncated series; the forward one defines the grid, and a round
/// trip closes to 0.2 mm within 1° of the central meridian, 3.3 mm within 2° and 18 mm within 3°, at
/// the worst latitude. Longitudes of the inverse are not folded. Not conformal: scale and
/// convergence are not computed.
class GEOMATH_API TCassiniProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TCassiniProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TCassiniProj(double a, double invF, double lat0, double lon0, double axisAzimuth, double fEast,
               double fNorth);

  /// Origin, the grid azimuth of its north axis, and its false coordinates.
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double AxisAzimuth() const { return theta_; }
  void AxisAzimuth(double value) { Set(theta_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phi0_, lambda0_, theta_, fEast_, fNorth_;
  InPlace<CassiniFormulas, 23> formulas_;
};

}  // namespace zel_cs::geomath
