#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct AlbersFormulas;

/// Albers equal-area conic on the ellipsoid (Snyder 1987, pp. 101-102; EPSG method 9822).
///
/// Parameters: southern and northern standard parallel, longitude and latitude of origin, false
/// easting, false northing. Radians and metres. ForwardPoint fails for a latitude beyond the arc in
/// which the cone closes, InversePoint for a point beyond the arc of either pole; arguments are then
/// unchanged. Parallels that are both the equator, or symmetric about it, give results that are not
/// finite, and InversePoint then fails. Longitudes of the inverse are within π/n of the origin's. Scale and convergence are not
/// computed: the scale along a parallel is n·ρ/(a·m(φ)), that along a meridian its inverse.
///
/// Kept: the object reports the kind of TLCProj; factories build it for kind 12.
class GEOMATH_API TAlbersEAConicProj : public TGeoProj {
 public:
  /// WGS84, parallels 0 and 30°, all others 0.
  TAlbersEAConicProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TAlbersEAConicProj(double a, double invF, double southLat, double northLat, double lon0,
                     double lat0, double fEast, double fNorth);

  /// Standard parallels, and the origin with its false coordinates.
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

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phiS_, phiN_, lambda0_, phi0_, fEast_, fNorth_;
  InPlace<AlbersFormulas, 14> formulas_;
};

}  // namespace zel_cs::geomath
