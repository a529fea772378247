#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/lambert_cone.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// County Lambert conformal conic (county coordinate systems of Minnesota and Wisconsin): the cone
/// through two standard parallels, or one when they are equal, on an ellipsoid that is lifted to
/// the county's terrain; CountyEllipsoid says how and how its parameters are read.
///
/// Parameters: longitude and latitude of the origin, northern and southern standard parallel (in
/// either order), scale, false northing, false easting, semi-axes of the design ellipsoid,
/// elevation shift, oblique angle (unused), geoid height. Radians and metres. A scale that is not
/// positive counts as 1, a design axis that is not positive as the ellipsoid's own.
///
/// ForwardPoint fails for a latitude of exactly ±π/2 and nowhere else; the inverse never fails, its
/// longitudes are within π/n of the origin's. Computes the point scale (of the working ellipsoid),
/// not the convergence.
class GEOMATH_API TMinnesota_LAProj : public TGeoProj {
 public:
  /// WGS84, scale slot 0 and the placeholders that the factory gives: 1 for the southern parallel,
  /// 6378137 for both design axes (a sphere), 0 for the rest.
  TMinnesota_LAProj();
  TMinnesota_LAProj(double a, double invF, double lonOrigin, double latOrigin, double northStdP,
                    double southStdP, double scale, double fNorth, double fEast, double desElA,
                    double desElB, double elevationShift, double obliqueAngle, double geoidHeight);

  double LonOrigin() const { return lambda0_; }
  void LonOrigin(double value) { lambda0_ = value; }
  double LatOrigin() const { return phi0_; }
  void LatOrigin(double value);
  double NorthStdP() const { return phiN_; }
  void NorthStdP(double value);
  double SouthStdP() const { return phiS_; }
  void SouthStdP(double value);
  double Scale() const { return k0_; }
  void Scale(double value);
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { fNorth_ = value; }
  double FEast() const override { return fEast_; }
  void FEast(double value) { fEast_ = value; }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

  bool ForwardPoint(double& b, double& l, PointFactors* factors = nullptr) const override;
  bool InversePoint(double& n, double& e, PointFactors* factors = nullptr) const override;

 protected:
  void Prepare() override;

 private:
  static std::span<const ParamRow<TMinnesota_LAProj>> Params();

  double lambda0_, phi0_, phiN_, phiS_, k0_, fNorth_, fEast_;
  double desElA_, desElB_, elevationShift_, obliqueAngle_, geoidHeight_;

  LambertCone cone_;
  double rho0_;  // radius of the origin latitude, metres
};

}  // namespace zel_cs::geomath
