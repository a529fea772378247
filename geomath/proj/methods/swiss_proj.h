#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/formulas/swiss_formulas.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// Swiss oblique conformal cylinder (Rosenmund 1903; swisstopo, "Formulas and constants for the
/// calculation of the Swiss conformal cylindrical projection", 2016, section 3): the ellipsoid onto
/// the Gaussian sphere of the central point, and that onto a cylinder along the great circle that
/// crosses the central meridian there at a right angle.
///
/// Parameters: longitude and latitude of the central point (in this order), easting and northing
/// there. Radians and metres; the scale along the great circle is 1. Defined everywhere but at the
/// two ends of the cylinder, a quarter turn from the central point along its meridian, where the
/// forward direction fails, as it does beyond the poles, and leaves the pair as it was; the inverse
/// never fails. A round trip closes to 1e-15 rad. Longitude differences are folded forward; those of the inverse are not.
///
/// Computes the point scale, never the convergence.
class GEOMATH_API TSwissProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0.
  TSwissProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TSwissProj(double a, double invF, double lon0, double lat0, double fEast, double fNorth);

  /// One parameter, in its unit; a setter takes effect at once.
  double L0() const { return lambda0_; }
  void L0(double value) { Set(lambda0_, value); }
  double B0() const { return phi0_; }
  void B0(double value) { Set(phi0_, value); }
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

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
  void Set(double& field, double value);
  double PointScale(double phi, const SwissFormulas::Position& at) const;
  static std::span<const ParamRow<TSwissProj>> Params();

  double lambda0_, phi0_, fEast_, fNorth_;
  SwissFormulas formulas_;
};

}  // namespace zel_cs::geomath
