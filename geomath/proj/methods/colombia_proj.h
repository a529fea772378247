#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct ColombiaFormulas;

/// Cartesian city plane of Colombia: EPSG Guidance Note 7-2, method 1052 "Colombia Urban", with the
/// plane at height 0; a city's plane height goes into an ellipsoid enlarged by it.
///
/// Parameters: latitude and longitude of the origin, false easting, false northing. Radians and
/// metres. Chosen: the city plane and not the national Gauss-Krüger zones, which are TTMProj with
/// scale 1.
///
/// Meant for a city, some 30 km. Never fails; near a pole results are not finite or not meaningful.
/// The inverse is exact: a round trip closes to rounding, 1e-8 m. Longitudes of the inverse are not
/// folded. Scale and convergence are not computed.
class GEOMATH_API TColombiaProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TColombiaProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TColombiaProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth);

  /// Origin and its false coordinates.
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

  std::span<const ParamRow> Params() const override;
  /// The origin, half a degree to each side.
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phi0_, lambda0_, fEast_, fNorth_;
  InPlace<ColombiaFormulas, 8> formulas_;
};

}  // namespace zel_cs::geomath
