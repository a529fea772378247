#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/methods/county_proj.h"

namespace zel_cs::geomath {

class HotineGrid;

/// County oblique Mercator of the Minnesota and Wisconsin kind: Hotine's oblique Mercator, turned by
/// the azimuth at the centre, on an ellipsoid lifted to the county's terrain.
///
/// Parameters: longitude and latitude of the centre, northern and southern parallel (unused), scale
/// (1 where not positive), false northing and easting at the natural origin, design semi-axes,
/// elevation shift, azimuth of the central line, geoid height. Radians and metres. CountyProj
/// says how axes and heights make the working ellipsoid. On the sphere with all angles 0 it is a
/// transverse Mercator.
///
/// Domain, failure (latitudes beyond a pole), accuracy and the stored point scale as in HotineProj.
class GEOMATH_API TMinnesota_OMProj : public CountyProj {
 public:
  /// WGS84 and CountyParams::NotSetUp.
  TMinnesota_OMProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMinnesota_OMProj(double a, double invF, double lonOrigin, double latOrigin, double northStdP,
                    double southStdP, double scale, double fNorth, double fEast, double desElA,
                    double desElB, double elevationShift, double obliqueAngle, double geoidHeight);

  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  InPlace<HotineGrid, 21> grid_;
};

}  // namespace zel_cs::geomath
