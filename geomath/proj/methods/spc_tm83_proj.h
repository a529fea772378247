#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct StemTmFormulas;

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

  /// Central meridian, the scale on it, and the origin with its false coordinates. The zone number is
  /// only stored.
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
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  static const ParamRow kParams[];

  double lambda0_, k0_, phi0_, fEast_, fNorth_, zone_;
  InPlace<StemTmFormulas, 22> formulas_;
};

}  // namespace zel_cs::geomath
