#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/methods/county_proj.h"

namespace zel_cs::geomath {

struct LambertFormulas;

/// County Lambert conformal conic (county coordinate systems of Minnesota and Wisconsin): the cone
/// through two standard parallels, or one when they are equal, on an ellipsoid that is lifted to
/// the county's terrain; CountyProj says how and what the parameters are.
///
/// Parameters: longitude and latitude of the origin, northern and southern standard parallel (in
/// either order), scale, false northing, false easting, semi-axes of the design ellipsoid,
/// elevation shift, oblique angle (unused), geoid height. Radians and metres. A scale that is not
/// positive counts as 1, a design axis that is not positive as the ellipsoid's own.
///
/// ForwardPoint fails for latitudes of ±π/2 and beyond; the inverse never fails, its
/// longitudes are within π/n of the origin's. Computes the point scale (of the working ellipsoid),
/// not the convergence.
class GEOMATH_API TMinnesota_LAProj : public CountyProj {
 public:
  /// WGS84 and CountyParams::NotSetUp.
  TMinnesota_LAProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMinnesota_LAProj(double a, double invF, double lonOrigin, double latOrigin, double northStdP,
                    double southStdP, double scale, double fNorth, double fEast, double desElA,
                    double desElB, double elevationShift, double obliqueAngle, double geoidHeight);

  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  InPlace<LambertFormulas, 19> formulas_;
};

}  // namespace zel_cs::geomath
