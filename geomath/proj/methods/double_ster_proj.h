#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct DoubleSterFormulas;

/// Oblique stereographic ("double") projection by way of the Gaussian conformal sphere (EPSG method
/// 9809; Snyder 1987, p. 160).
///
/// Parameters: latitude and longitude of origin, scale there, false easting, false northing.
/// Radians and metres. Never fails; the antipode of the origin gives results that are not finite.
/// Kept: longitude differences are not folded, so that a point and its origin have to stand on the
/// same side of the date line, and longitudes of the inverse are not folded either.
///
/// Computes the convergence, positive east of the meridian of origin in the northern hemisphere,
/// and the point scale. Kept: the scale takes the radius of curvature of the origin latitude
/// instead of the point's; it is exact on the origin's parallel and off by up to 0.34 % elsewhere.
class GEOMATH_API TDoubleSter : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TDoubleSter();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TDoubleSter(double a, double invF, double lat0, double lon0, double scale, double fEast,
              double fNorth);

  /// Centre, the scale there, and its false coordinates.
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  /// For classes of another kind that are this projection.
  TDoubleSter(ProjType type, double a, double invF, double lat0, double lon0, double scale,
              double fEast, double fNorth);

  void Prepare() override;
  FormulaView Formulas() const override;

  /// The parameters.
  double phi0_, lambda0_, k0_, fEast_, fNorth_;

 private:
  static const ParamRow kParams[];

  InPlace<DoubleSterFormulas, 22> formulas_;
};

}  // namespace zel_cs::geomath
