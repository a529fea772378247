#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct MercatorFormulas;

/// Mercator with a parallel of true scale (EPSG Guidance Note 7-2, method 9805, variant B; Snyder
/// 1987, pp. 44-47).
///
/// Parameters: longitude of the origin, latitude of true scale, false easting, false northing.
/// Radians and metres. Chosen: Lat0 is the latitude of true scale and northings count from the
/// equator; where Lat0 is 0 this is also the reading as an origin latitude with scale 1 on the
/// equator.
///
/// Latitudes of ±π/2 and beyond fail, with the arguments untouched; the inverse never fails. A
/// round trip closes to 1e-14 rad, below 0.1 µm on the ground. Longitudes of the inverse are not
/// folded. Computes the point scale; the convergence is 0.
class GEOMATH_API TMercatorProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TMercatorProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMercatorProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth);

  /// Meridian of origin, latitude of true scale, and the false coordinates of the origin on the equator.
  double Lon0() const { return lambda0_; }
  void Lon0(double value) { Set(lambda0_, value); }
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

  std::span<const ParamRow> Params() const override;
  /// The equator at the origin; all longitudes, and all latitudes but 1e-6 at the poles.
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  PointFactors FactorsAt(double sinPhi, double cosPhi) const;
  static const ParamRow kParams[];

  double lambda0_, phi0_, fEast_, fNorth_;

  double k0_;  // scale on the equator
  InPlace<MercatorFormulas, 13> formulas_;
};

}  // namespace zel_cs::geomath
