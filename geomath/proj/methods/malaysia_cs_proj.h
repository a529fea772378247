#pragma once

#include "geomath/proj/geo_proj.h"
#include "geomath/proj/methods/rso_proj.h"

namespace zel_cs::geomath {

/// Old Cassini grid of a Malaysian state, tied to the Malayan rectified skew orthomorphic grid by
/// the survey department's empirical coefficients: chains of 20.116782494376 m, offsets from the
/// state's origin, and a quadratic correction in units of 10⁴ chains,
///
///     ΔE_rso = X + e0 + ex·x + ey·y + exx·x² + exy·xy + eyy·y²   and likewise ΔN_rso from n…,
///
/// X, Y being the state grid's easting and northing in chains, x = X/10⁴, y = Y/10⁴.
///
/// Parameters: latitude and longitude of the state's origin (used only by GetCentralPoint); its
/// easting and northing in the Malayan grid, chains; e0, n0; ex, ey, nx, ny; exx, exy, eyy; nxx,
/// nxy, nyy. Radians, metres for coordinates; the false origin is 0. The Malayan grid inside is
/// TRSOProj's own, on this object's ellipsoid.
///
/// Chosen: the polynomial's order of terms and its sense, Cassini to Malayan added. The coefficients
/// are published without it; with this reading the defaults reproduce the state of Johor's Cassini
/// grid within some 50 km of its origin to 5 m east and 3 m north beside a constant 9.5 m, the
/// distortion of its network.
///
/// The forward direction solves the polynomial by iteration and fails, the pair unchanged, where 20
/// rounds do not settle; in a state they are 4 to 6 and a round trip closes to 1e-8 m. Neither scale
/// nor convergence is computed.
class GEOMATH_API TMalaysia_CSProj : public TGeoProj {
 public:
  /// The coefficients of the state of Johor, on WGS84.
  TMalaysia_CSProj();
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  TMalaysia_CSProj(double a, double invF, double lat0, double lon0, double originE, double originN,
                   double e0, double n0, double ex, double ey, double nx, double ny, double exx,
                   double exy, double eyy, double nxx, double nxy, double nyy);

  std::span<const ParamRow> Params() const override;
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  bool Differentiate(double b, double l, GridDerivatives& derivatives) const override;
  void Prepare() override;

 private:
  struct Chains {
    double east, north;
  };
  Chains FromCassini(Chains cassini) const;
  static const ParamRow kParams[];

  double lat0_, lon0_, originE_, originN_, e0_, n0_;
  double ex_, ey_, nx_, ny_, exx_, exy_, eyy_, nxx_, nxy_, nyy_;
  TRSOProj malayan_;
};

}  // namespace zel_cs::geomath
