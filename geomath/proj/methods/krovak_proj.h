#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

struct KrovakFormulas;

/// Krovak's oblique conformal conic of Czechia and Slovakia (Krovak 1922; EPSG method 9819):
/// ellipsoid, Gaussian conformal sphere, cone about a tilted axis. The first coordinate grows
/// southward, the second westward, both from the apex of the cone.
///
/// Parameters: latitude of the centre, longitude of the centre from the reference meridian, offset
/// of that meridian (17°40′ for Ferro, subtracted), latitude of the pole of the cone's axis,
/// pseudo-standard parallel, scale on it, false easting, false northing. Radians and metres.
///
/// The forward direction never fails. InversePoint fails when the latitude has not settled to 1e-15
/// after 102 steps, which takes a flattening of no planet. Points more than a quarter turn from the
/// cone's meridian of origin, on the cone or on the sphere, are folded into that quarter by the
/// arcsines. Longitudes are not folded. Scale and convergence are not computed.
///
/// Kept: false easting and northing are stored and reported, never added. A scale set by SetParam
/// waits for the next change of the ellipsoid, the centre latitude, the pole or the pseudo-standard
/// parallel; the scale that CopyGeoProj carries over is set last and waits too.
/// Constructors set the direction code 0x81, SetNEAxes 0x84.
class GEOMATH_API TKrovakProj : public TGeoProj {
 public:
  /// WGS84 with the constants of S-JTSK: centre 49°30′, 42°30′ east of Ferro, pole 59°42′42.69689″,
  /// pseudo-standard parallel 78°30′, scale 0.9999.
  TKrovakProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TKrovakProj(double a, double invF, double lat0, double lon0, double dLon, double Uq, double S0,
              double scale, double fEast, double fNorth);

  /// Centre and the offset of its meridian, the pole of the cone's axis, the pseudo-standard parallel.
  /// False coordinates are reported, never added.
  double Lat0() const { return phi0_; }
  void Lat0(double value) { Set(phi0_, value); }
  double Lon0() const { return lambda0_; }
  void Lon0(double value);
  double dLon() const { return dLon_; }
  void dLon(double value);
  double Uq() const { return uq_; }
  void Uq(double value) { Set(uq_, value); }
  double S0() const { return s0_; }
  void S0(double value) { Set(s0_, value); }
  double FEast() const override { return fEast_; }
  double FNorth() const override { return fNorth_; }

  void SetNEAxes(const wchar_t* axes) override;

  std::span<const ParamRow> Params() const override;
  /// The centre counted from Greenwich.
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  void Prepare() override;
  FormulaView Formulas() const override;

 private:
  void PrepareLongitude();
  void LeaveConstants() {}
  static const ParamRow kParams[];

  double phi0_, lambda0_, dLon_, uq_, s0_, k0_, fEast_, fNorth_;
  InPlace<KrovakFormulas, 18> formulas_;
};

}  // namespace zel_cs::geomath
