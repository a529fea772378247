#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct DenmarkTmFormulas;

/// Transverse Mercator by the series of Krüger 1912 in the third flattening to n⁴, through Gaussian
/// latitude and a complex Clenshaw sum, as the Danish geodetic institute organised it (Poder and
/// Engsager 1998).
///
/// Parameters: central meridian, scale on it, latitude of origin, false easting, false northing.
/// Radians and metres. Both directions fail, arguments untouched, more than 0.8349968168864 scaled
/// radii beside the central meridian: on an Earth ellipsoid beyond 43.0° of longitude at the
/// equator and 51.9° at latitude 30°, nowhere above latitude 47°. Around the far poles, the ends of
/// the equator 90° aside, where the series means nothing, the forward direction goes by the spherical
/// part of that distance.
///
/// Against an exact transverse Mercator: forward 1 µm within 20° of the central meridian, 0.01 mm
/// within 35° and 0.08 mm at the limit, where the order n⁴ ends; inverse 4 µm everywhere. A round
/// trip closes to 4 µm within 30° and 0.06 mm at the limit. Longitudes of the inverse are not
/// folded. Scale and convergence are not computed.
class GEOMATH_API TDenmarkTMProj : public TGeoProj {
 public:
  /// WGS84, all parameters 0, scale 1.
  TDenmarkTMProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TDenmarkTMProj(double a, double invF, double cm, double scale, double lat0, double fEast,
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
  /// As in the base; classes whose grids have directions of their own extend it.
  void SetNEAxes(const wchar_t* axes) override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  /// Fills the coefficient arrays, the scaled rectifying radius and the northing offset of the
  /// origin from the parameters and the ellipsoid.
  void Init();

  void Prepare() override;

  FormulaView Formulas() const override;

  /// ProjectPoint and UnprojectPoint of this class itself for a block, as ForwardBlock.
  void ProjectBlock(double* b, double* l, std::size_t count) const;
  void UnprojectBlock(double* n, double* e, std::size_t count) const;

 private:
  static const ParamRow kParams[];

  double lambda0_, k0_, phi0_, fEast_, fNorth_;
  InPlace<DenmarkTmFormulas, 21> formulas_;
};

}  // namespace zel_cs::geomath
