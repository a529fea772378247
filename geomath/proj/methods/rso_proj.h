#pragma once

#include "geomath/proj/methods/hotine_proj.h"

namespace zel_cs::geomath {

/// Rectified skew orthomorphic grid (Hotine 1946-47; EPSG Guidance Note 7-2, method 9812): Hotine's
/// oblique Mercator whose skew coordinates are turned by γ0, the azimuth of the central line where
/// it crosses the equator of the aposphere, sin γ0 = sin α/D.
///
/// Parameters: azimuth of the central line at the centre, scale on it, centre longitude and
/// latitude, false easting and northing at the natural origin. γ0 follows from the azimuth;
/// registries quote it rounded from a sine of 0.6 or 0.8, which moves coordinates by up to 1 mm.
/// Everything else as in HotineProj.
class GEOMATH_API TRSOProj : public HotineProj {
 public:
  /// The grid of peninsular Malaya on WGS84; its own ellipsoid is for the caller to set.
  TRSOProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TRSOProj(double a, double invF, double azimuth, double scale, double lon0, double lat0,
           double fEast, double fNorth);

  std::span<const ParamRow> Params() const override;

  /// Derives the constants again; every setter does.
  void Init() { Prepare(); }

 protected:
  void Prepare() override;

 private:
  static const ParamRow kParams[];
};

}  // namespace zel_cs::geomath
