#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/double_stereographic.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// The Dutch national grid (Rijksdriehoekstelsel): the oblique stereographic projection (EPSG method
/// 9809) with the grid's scale of 0.9999079 at the origin built in. The grid itself is the Bessel
/// 1841 ellipsoid, origin 52°09′22.178″ N 5°23′15.500″ E, false origin 155000, 463000.
///
/// Parameters: latitude and longitude of origin, false easting, false northing. Results, failures
/// and factors as TDoubleSter.
class GEOMATH_API TRDProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TRDProj();
  TRDProj(double a, double invF, double lat0, double lon0, double fEast, double fNorth);

  double Lat0() const { return phi0_; }
  void Lat0(double value);
  double Lon0() const { return lambda0_; }
  void Lon0(double value);
  double FEast() const override { return fEast_; }
  void FEast(double value) { fEast_ = value; }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { fNorth_ = value; }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

  bool ForwardPoint(double& b, double& l, PointFactors* factors = nullptr) const override;
  bool InversePoint(double& n, double& e, PointFactors* factors = nullptr) const override;

 protected:
  void Prepare() override;

 private:
  static std::span<const ParamRow<TRDProj>> Params();

  double phi0_, lambda0_, fEast_, fNorth_;
  DoubleStereographic plane_;
};

}  // namespace zel_cs::geomath
