#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/math/hotine.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// County oblique Mercator of the Minnesota and Wisconsin kind: Hotine's oblique Mercator, turned by
/// the azimuth at the centre, on an ellipsoid lifted to the county's terrain.
///
/// Parameters: longitude and latitude of the centre, northern and southern parallel (unused), scale
/// (1 where not positive), false northing and easting at the natural origin, design semi-axes,
/// elevation shift, azimuth of the central line, geoid height. Radians and metres. Chosen: the order
/// of the arguments is that of the parameters; how axes and heights make the working ellipsoid
/// stands with CountyEllipsoid. On the sphere with all angles 0 it is a transverse Mercator.
///
/// Domain, failure (none), accuracy and the stored point scale as in HotineProj.
class GEOMATH_API TMinnesota_OMProj : public TGeoProj {
 public:
  /// WGS84 and the factory's placeholders: 1 for the southern parallel, 6378137 for both design axes
  /// (a sphere), 0 for the rest.
  TMinnesota_OMProj();
  TMinnesota_OMProj(double a, double invF, double lonOrigin, double latOrigin, double northStdP,
                    double southStdP, double scale, double fNorth, double fEast, double desElA,
                    double desElB, double elevationShift, double obliqueAngle, double geoidHeight);

  double LonOrigin() const { return lambdaC_; }
  void LonOrigin(double value) { Set(lambdaC_, value); }
  double LatOrigin() const { return phiC_; }
  void LatOrigin(double value) { Set(phiC_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double ObliqueAngle() const { return azimuth_; }
  void ObliqueAngle(double value) { Set(azimuth_, value); }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

  bool ForwardPoint(double& b, double& l, PointFactors* factors = nullptr) const override;
  bool InversePoint(double& n, double& e, PointFactors* factors = nullptr) const override;

 protected:
  void Prepare() override;

 private:
  static std::span<const ParamRow<TMinnesota_OMProj>> Params();

  void Set(double& field, double value);

  double lambdaC_, phiC_, northStdP_, southStdP_, k0_, fNorth_, fEast_;
  double desElA_, desElB_, elevationShift_, azimuth_, geoidHeight_;
  HotineGrid grid_;
};

}  // namespace zel_cs::geomath
