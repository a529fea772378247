#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct NzmgFormulas;

/// New Zealand Map Grid: a conformal complex polynomial of degree 6 in isometric coordinates
/// (Reilly 1973, "A conformal mapping projection with minimum scale error", Survey Review 22; Land
/// Information New Zealand, "Projection conversions", 2008).
///
/// Parameters: latitude and longitude of the origin, easting and northing there. Radians and metres.
/// Its coefficients belong to the International ellipsoid of 1924 and to an origin at 41° S, so that
/// of the ellipsoid only the semi-major axis enters the coordinates. Never fails; outside New
/// Zealand the polynomial means nothing. A round trip closes to 0.1 mm there, which is what the
/// series from isometric latitude allows. Longitude differences are folded forward; those of the
/// inverse are not.
///
/// Computes the point scale, never the convergence.
class GEOMATH_API TNZMGProj : public TGeoProj {
 public:
  /// The grid itself: International 1924, 41° S, 173° E, 2510000 m east, 6023150 m north.
  TNZMGProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TNZMGProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth);

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
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phi0_, lambda0_, fEast_, fNorth_;
  InPlace<NzmgFormulas, 5> formulas_;
};

}  // namespace zel_cs::geomath
