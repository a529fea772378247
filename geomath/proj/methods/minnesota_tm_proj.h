#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/methods/county_proj.h"

namespace zel_cs::geomath {

struct StemTmFormulas;

/// County transverse Mercator (county coordinate systems of Minnesota and Wisconsin): the series of
/// the 1983 state plane zones (Stem 1989) on an ellipsoid that is lifted to the county's terrain;
/// CountyProj says how and what the parameters are.
///
/// Parameters: longitude and latitude of the origin, northern and southern standard parallel
/// (unused), scale on the central meridian, false northing, false easting, semi-axes of the design
/// ellipsoid, elevation shift, oblique angle (unused), geoid height. Radians and metres. A scale
/// that is not positive counts as 1, a design axis that is not positive as the ellipsoid's own.
///
/// Never fails. Within 3° of the central meridian 0.02 mm from an exact transverse Mercator, a
/// round trip closes to the same. Longitudes of the inverse are not folded. Computes the point scale
/// (of the working ellipsoid) and the convergence, positive east of the central meridian in the
/// northern hemisphere.
class GEOMATH_API TMinnesota_TMProj : public CountyProj {
 public:
  /// WGS84 and CountyParams::NotSetUp.
  TMinnesota_TMProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMinnesota_TMProj(double a, double invF, double lonOrigin, double latOrigin, double northStdP,
                    double southStdP, double scale, double fNorth, double fEast, double desElA,
                    double desElB, double elevationShift, double obliqueAngle, double geoidHeight);

  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  InPlace<StemTmFormulas, 22> formulas_;
};

}  // namespace zel_cs::geomath
