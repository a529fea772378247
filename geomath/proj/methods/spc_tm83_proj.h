#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/formulas/stem_tm_formulas.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// Transverse Mercator zone of the State Plane Coordinate System of 1983 (Stem 1989, NOAA Manual
/// NOS NGS 5, pp. 32-37).
///
/// Parameters: central meridian, scale on it, latitude of the grid origin, false easting, false
/// northing, zone number (only stored). Radians and metres. Never fails; far from the central
/// meridian results are the series' values. Against an exact transverse Mercator: forward 0.02 mm
/// within 3° of the central meridian and 0.9 mm within 6°, inverse 0.01 mm and 2 mm; a round trip
/// closes to the same. Longitudes of the inverse are not folded.
///
/// Computes the point scale and the convergence; the convergence is positive east of the central
/// meridian in the northern hemisphere (geodetic azimuth = grid azimuth + convergence).
class GEOMATH_API TSPC_TM83Proj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TSPC_TM83Proj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSPC_TM83Proj(double a, double invF, double cm, double scale, double lat0, double fEast,
                double fNorth, int zone);

  /// One parameter, in its unit; a setter takes effect at once.
  double CM() const { return lambda0_; }
  void CM(double value) { lambda0_ = value; }
  double Scale() const { return k0_; }
  void Scale(double value);
  double Lat0() const { return phi0_; }
  void Lat0(double value);
  double FEast() const override { return fEast_; }
  void FEast(double value) { fEast_ = value; }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { fNorth_ = value; }
  int Zone() const;
  void Zone(int value) { zone_ = value; }

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
  StemTmFormulas Formulas() const { return {tm_, lambda0_, fEast_, fNorth_}; }
  static std::span<const ParamRow<TSPC_TM83Proj>> Params();

  double lambda0_, k0_, phi0_, fEast_, fNorth_;
  double zone_;
  StemTransverseMercator tm_;
};

}  // namespace zel_cs::geomath
