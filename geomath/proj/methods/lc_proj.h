#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct LcFormulas;

/// Lambert conformal conic on the ellipsoid with two standard parallels, one when they are equal,
/// and a scale factor on top (Snyder 1987, pp. 107-109; EPSG methods 9801, 9802).
///
/// Parameters: southern and northern standard parallel, longitude and latitude of origin, false
/// easting, false northing, scale. Radians and metres. ForwardPoint fails for a latitude of exactly
/// ±π/2 and nowhere else; the inverse never fails. Parallels that are both the equator, or
/// symmetric about it, give results that are not finite. Longitudes of the inverse are not folded.
///
/// Kept: the polar angle of the inverse runs from −π/2 to 3π/2, so that a point more than a quarter
/// turn of that angle west of the origin comes back 2π/n east of its longitude.
///
/// Computes the point scale (scale parameter included), never the convergence.
///
/// Kept: the typed setters of parallels and origin latitude leave the sines and cosines of the old
/// values in place, which then mix with the new ones; the forward direction alone takes the sine of
/// the new origin latitude. SetParam changes everything consistently.
class GEOMATH_API TLCProj : public TGeoProj {
 public:
  /// WGS84, parallels 0 and 30°, all others 0, scale 1.
  TLCProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TLCProj(double a, double invF, double southLat, double northLat, double lon0, double lat0,
          double fEast, double fNorth, double scale);

  /// The parameters; setters of the latitudes leave sines and cosines as they were, see above.
  double SouthLat() const { return phiS_; }
  void SouthLat(double value) { Set(phiS_, value); }
  double NorthLat() const { return phiN_; }
  void NorthLat(double value) { Set(phiN_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }

  /// The cone constant n: longitude differences are n times as large on the cone.
  double ConeConstant() const;

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  void RefreshSouth();
  void RefreshNorth();
  void RefreshOrigin();
  static const ParamRow kParams[];

  double phiS_, phiN_, lambda0_, phi0_, fEast_, fNorth_, k0_;
  double sinS_, cosS_, sinN_, cosN_, sin0_;  // as of the last refresh
  InPlace<LcFormulas, 20> formulas_;
};

}  // namespace zel_cs::geomath
