#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct TmFormulas;

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

  /// Central meridian, the scale on it, and the origin with its false coordinates.
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

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  double MaxNorthing() const;
  static const ParamRow kParams[];

  double lambda0_, k0_, phi0_, fEast_, fNorth_;
  InPlace<TmFormulas, 16> formulas_;
};

}  // namespace zel_cs::geomath
