#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/formulas/ster_formulas.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/methods/math/meridian_series.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

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

  /// One parameter, in its unit; a setter takes effect at once.
  double Lat0() const { return phi0_; }
  void Lat0(double value);
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { lambda0_ = value; }
  double Scale() const { return k0_; }
  void Scale(double value);
  double FEast() const override { return fEast_; }
  void FEast(double value) { fEast_ = value; }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { fNorth_ = value; }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const override;
  void DifferentiateBlock(double* const (&columns)[4], std::size_t count) const override;
  void ForwardBlock(double* b, double* l, std::size_t count) const override;
  void InverseBlock(double* n, double* e, std::size_t count) const override;

 private:
  SterObliqueFormulas Oblique() const;
  SterPolarFormulas Polar() const;
  static std::span<const ParamRow<TSterProj>> Params();

  double phi0_, lambda0_, k0_, fEast_, fNorth_;

  bool polar_ = false;
  double sign_ = 1;  // −1 in the south polar aspect
  ConformalLatitude latitude_;
  CosinePowerSeries polarSeries_;
  SinCos chi1_{0, 1};       // conformal latitude of the origin
  double obliqueA_ = 0;     // 2·a·k0·m1/cos χ1, metres
  double polarRadius_ = 0;  // 2·a·k0/√((1 + e)^(1 + e)·(1 − e)^(1 − e)), metres
};

}  // namespace zel_cs::geomath
