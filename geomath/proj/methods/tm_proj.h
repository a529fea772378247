#pragma once

#include <span>

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/formulas/tm_formulas.h"
#include "geomath/proj/param_table.h"

namespace zel_cs::geomath {

/// Transverse Mercator by the fixed-order series with Roman-numeral terms (Redfearn 1948; Ordnance
/// Survey, A guide to coordinate systems in Great Britain, annexe C).
///
/// Parameters: central meridian, scale on it, latitude of origin, false easting, false northing.
/// Radians and metres. Never fails; at latitude ±π/2 and far from the central meridian results are
/// the series' values. The forward series ends at Δλ⁶, the inverse one at ΔE⁷, and the footpoint
/// iteration stops at 1 mm of arc: against an exact transverse Mercator 0.15 mm within 3° of the
/// central meridian and 12 mm within 6° (forward), 1.3 mm and 28 mm (inverse). Longitudes of the
/// inverse are not folded. Scale and convergence are not computed.
class GEOMATH_API TTMProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TTMProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TTMProj(double a, double invF, double cm, double scale, double lat0, double fEast, double fNorth);

  /// One parameter, in its unit; a setter takes effect at once.
  double CM() const { return lambda0_; }
  void CM(double value) { Set(lambda0_, value); }
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
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
  double MaxNorthing() const;
  static std::span<const ParamRow<TTMProj>> Params();

  double lambda0_, k0_, phi0_, fEast_, fNorth_;
  TmFormulas formulas_;
};

}  // namespace zel_cs::geomath
