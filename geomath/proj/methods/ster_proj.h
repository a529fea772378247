#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct SterObliqueFormulas;
struct SterPolarFormulas;

/// General stereographic projection of the ellipsoid in its polar, equatorial and oblique aspects,
/// through the conformal latitude (Snyder 1987, pp. 160-162; EPSG method 9810 for the poles).
///
/// Parameters: latitude and longitude of origin, scale there, false easting, false northing.
/// Radians and metres. An origin within 1e-12 of a pole selects the polar aspect, latitude 0 exactly
/// the equatorial one. ForwardPoint fails in the oblique aspect for a latitude whose sine is exactly
/// 1 (1.5e-8 rad, 0.1 m, around the north pole) and nowhere else; the antipode of the origin gives
/// results that are not finite. The inverse never fails; its longitudes are not folded.
///
/// Kept: the polar aspects map every latitude whose cosine is at most 1e-12 to the origin, the
/// opposite pole too, with point scale 0, and take the latitude back from the series to e⁸ (2e-12
/// rad). The oblique and equatorial inverse folds the longitude into the half turn around the
/// origin's, so that a point more than a quarter turn of longitude away comes back half a turn off.
/// A latitude beyond ±π/2 counts as its supplement there.
///
/// Computes the point scale, never the convergence.
class GEOMATH_API TSterProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TSterProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSterProj(double a, double invF, double lat0, double lon0, double scale, double fEast,
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
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phi0_, lambda0_, k0_, fEast_, fNorth_;
  bool isPolar_ = false;
  InPlace<SterObliqueFormulas, 15> oblique_;
  InPlace<SterPolarFormulas, 18> polar_;
};

}  // namespace zel_cs::geomath
