#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct LambertFormulas;

/// Lambert conformal conic of the State Plane Coordinate System of 1983 (Stem 1989, NOAA Manual NOS
/// NGS 5, pp. 26-31), extended to southern cones.
///
/// Parameters: southern and northern standard parallel, longitude and latitude of the grid origin,
/// false easting, northing of the grid origin, zone number (only stored). Radians and metres.
/// ForwardPoint fails for latitudes of ±π/2 and beyond; the inverse never fails, its
/// longitudes are within π/n of the origin's. Parallels that are both the equator, or symmetric
/// about it, give results that are not finite.
///
/// Computes the point scale and the convergence, positive east of the meridian of origin in the
/// northern hemisphere (geodetic azimuth = grid azimuth + convergence).
class GEOMATH_API TSPC_LC83Proj : public TGeoProj {
 public:
  /// WGS84 and the values that the factory gives: northern parallel 1 radian, all others 0.
  /// Kept: its kind is 0.
  TSPC_LC83Proj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSPC_LC83Proj(double a, double invF, double southLat, double northLat, double lon0, double lat0,
                double fEast, double fNorth, int zone);

  /// Standard parallels, and the origin with its false coordinates. The zone number is only stored.
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
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double phiS_, phiN_, lambda0_, phi0_, fEast_, fNorth_, zone_;
  InPlace<LambertFormulas, 19> formulas_;
};

}  // namespace zel_cs::geomath
