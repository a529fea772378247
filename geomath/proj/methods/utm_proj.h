#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct UtmFormulas;

/// Transverse Mercator in the form of UTM and of the United States' grids: rectifying radius,
/// footpoint latitude in closed form, longitude series to the seventh power (Stem 1989, NOAA
/// Manual NOS NGS 5, pp. 32-37).
///
/// Parameters: central meridian, scale on it, latitude of origin, false easting, false northing. A
/// UTM zone is nothing but its parameters (scale 0.9996, false easting 500000, false northing 0 or
/// 10000000). Radians and metres. Never fails; far from the central meridian results are the
/// series' values. Against an exact transverse Mercator: forward 0.04 mm within 3° of the central
/// meridian and 0.9 mm within 6°, inverse 0.01 mm and 2 mm. Kept: the forward arc leaves out its
/// sin 8φ term, which with an origin off the equator makes that 0.07 mm within 3°. Longitudes of the
/// inverse are not folded.
///
/// Computes the point scale and the convergence; the convergence is positive east of the central
/// meridian in the northern hemisphere (geodetic azimuth = grid azimuth + convergence).
class GEOMATH_API TUTMProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TUTMProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TUTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
           double fNorth);

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

  /// The parameters, and what is derived of them.
  double lambda0_, k0_, phi0_, fEast_, fNorth_;
  InPlace<UtmFormulas, 16> utm_;

 private:
  static const ParamRow kParams[];
};

}  // namespace zel_cs::geomath
