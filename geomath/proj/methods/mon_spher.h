#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct MonSpherFormulas;

/// Transverse Mercator on the Gaussian sphere: the Gauss-Schreiber double projection (Gauss 1844;
/// Laborde; EPSG Guidance Note 7-2, conformal sphere of method 9809), known from the grid of
/// Réunion.
///
/// Parameters: latitude and longitude of the origin, normal latitude, k1, scale, false easting,
/// false northing, azimuth of the axis. Radians and metres. Chosen: k1 multiplies the radius of the
/// sphere as the scale does, and the north axis of the projection points in grid azimuth
/// AxisAzimuth about the false origin; another reading belongs into Prepare().
///
/// Forward fails, arguments untouched, where the point lies 90° from the central meridian on the
/// sphere's equator; the inverse never fails. A round trip closes to 1e-14 rad, below 0.1 µm.
/// Longitudes of the inverse are not folded. Computes the point scale, not the convergence.
class GEOMATH_API TMonSpher : public TGeoProj {
 public:
  /// WGS84, all parameters 0, k1 and scale 1.
  TMonSpher();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMonSpher(double a, double invF, double lat0, double lon0, double latNormal, double k1,
            double scale, double fEast, double fNorth, double axisAzimuth);

  /// Origin, normal latitude, the factor of the radius, the scale, false coordinates, and the grid azimuth
  /// of the north axis.
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double LatNormal() const { return phiN_; }
  void LatNormal(double value) { Set(phiN_, value); }
  double K1() const { return k1_; }
  void K1(double value) { Set(k1_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }
  double AxisAzimuth() const { return theta_; }
  void AxisAzimuth(double value) { Set(theta_, value); }

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phi0_, lambda0_, phiN_, k1_, k0_, fEast_, fNorth_, theta_;
  InPlace<MonSpherFormulas, 20> formulas_;
};

}  // namespace zel_cs::geomath
