#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/formulas/cassini_formulas.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// Cassini-Soldner (EPSG Guidance Note 7-2, method 9806; Snyder 1987, p. 95) on axes that may be
/// turned.
///
/// Parameters: latitude and longitude of the origin, azimuth of the axis, false easting, false
/// northing. Radians and metres. Chosen: the projection's north axis points in grid azimuth
/// AxisAzimuth, as in the general oblique Mercator; the other sense is one sign in CassiniSoldner.
///
/// Never fails. Both directions are truncated series; the forward one defines the grid, and a round
/// trip closes to 0.2 mm within 1° of the central meridian, 3.3 mm within 2° and 18 mm within 3°, at
/// the worst latitude. Longitudes of the inverse are not folded. Not conformal: scale and
/// convergence are not computed.
class GEOMATH_API TCassiniProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TCassiniProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TCassiniProj(double a, double invF, double lat0, double lon0, double axisAzimuth, double fEast,
               double fNorth);

  /// One parameter, in its unit; a setter takes effect at once.
  double Lat0() const { return phi0_; }
  void Lat0(double value);
  double Lon0() const { return lambda0_; }
  void Lon0(double value);
  double AxisAzimuth() const { return theta_; }
  void AxisAzimuth(double value);
  double FEast() const override { return fEast_; }
  void FEast(double value) { fEast_ = value; }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { fNorth_ = value; }

  double GetParam(int index, unsigned int unit) const override;
  void SetParam(double value, int index, unsigned int unit) override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const override;
  void DifferentiateBlock(double* const (&columns)[4], std::size_t count) const override;
  void ForwardBlock(double* b, double* l, std::size_t count) const override;
  void InverseBlock(double* n, double* e, std::size_t count) const override;

 private:
  CassiniFormulas Formulas() const { return {cassini_, 1, fEast_, fNorth_}; }
  static std::span<const ParamRow<TCassiniProj>> Params();

  double phi0_, lambda0_, theta_, fEast_, fNorth_;
  CassiniSoldner cassini_;
};

}  // namespace zel_cs::geomath
