#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/hotine.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// Hotine oblique Mercator of a centre and an azimuth there (Snyder 1987, pp. 66-75, alternate B;
/// EPSG method 9812): coordinates count from the natural origin of the skew cylinder, where the
/// central line crosses the equator of the aposphere, and are turned by the azimuth itself.
///
/// Parameters: azimuth of the central line at the centre, scale on it, centre longitude and
/// latitude, false easting and northing at the natural origin. Radians and metres. The azimuth
/// belongs in [−π/2, π/2]; at ±π/2 the natural origin lies π/2 (over B) west of the centre whatever
/// the hemisphere. Never fails; the two ends of the cylinder give infinite coordinates. A round
/// trip closes to 2e-15 rad away from the poles; within 7 cm of a pole the inverse gives the pole
/// itself on the origin meridian. Longitudes of neither direction are folded.
///
/// Computes the point scale, never the convergence.
class GEOMATH_API TOMercatorProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TOMercatorProj();
  TOMercatorProj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
                 double fEast, double fNorth);

  double AxisAzimuth() const { return azimuth_; }
  void AxisAzimuth(double value);
  double Scale() const { return k0_; }
  void Scale(double value);
  double Lon0() const { return lambdaC_; }
  void Lon0(double value);
  double Lat0() const { return phiC_; }
  void Lat0(double value);
  double FEast() const override { return fEast_; }
  void FEast(double value);
  double FNorth() const override { return fNorth_; }
  void FNorth(double value);

  /// Kept: the azimuth (index 0) is exchanged in radians whatever the unit code.
  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

  /// Kept: exactly on the origin meridian u counts as 0, whatever the latitude.
  bool ForwardPoint(double& b, double& l, PointFactors* factors = nullptr) const override;
  bool InversePoint(double& n, double& e, PointFactors* factors = nullptr) const override;

 protected:
  void Prepare() override;

 private:
  static std::span<const ParamRow<TOMercatorProj>> Params();
  void Set(double TOMercatorProj::*field, double value);

  double azimuth_, k0_, lambdaC_, phiC_, fEast_, fNorth_;
  HotineGrid grid_;
};

}  // namespace zel_cs::geomath
