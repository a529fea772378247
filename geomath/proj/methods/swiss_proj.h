#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct SwissFormulas;

/// Swiss oblique conformal cylinder (Rosenmund 1903; swisstopo, "Formulas and constants for the
/// calculation of the Swiss conformal cylindrical projection", 2016, section 3): the ellipsoid onto
/// the Gaussian sphere of the central point, and that onto a cylinder along the great circle that
/// crosses the central meridian there at a right angle.
///
/// Parameters: longitude and latitude of the central point (in this order), easting and northing
/// there. Radians and metres; the scale along the great circle is 1. Defined everywhere but at the
/// two ends of the cylinder, a quarter turn from the central point along its meridian, where the
/// forward direction fails, as it does beyond the poles, and leaves the pair as it was; the inverse
/// never fails. A round trip closes to 1e-15 rad. Longitude differences are folded forward; those of the inverse are not.
///
/// Computes the point scale, never the convergence.
class GEOMATH_API TSwissProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TSwissProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSwissProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth);

  /// Central point and its false coordinates.
  double L0() const { return lambda0_; }
  void L0(double value) { Set(lambda0_, value); }
  double B0() const { return phi0_; }
  void B0(double value) { Set(phi0_, value); }
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

  double lambda0_, phi0_, fEast_, fNorth_;
  InPlace<SwissFormulas, 18> formulas_;
};

}  // namespace zel_cs::geomath
