#pragma once

#include "geomath/platform/in_place.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

class HotineGrid;

/// What the classes of Hotine's oblique Mercator on a centre and an azimuth share: six values, their
/// accessors and the conversions. A class says how its parameters are exchanged and, where that is
/// not the azimuth at the centre, by which angle the skew coordinates are turned.
///
/// Radians and metres; false coordinates belong to the natural origin, where the central line
/// crosses the equator of the aposphere. The azimuth belongs in [−π/2, π/2]; at ±π/2 the natural
/// origin lies π/2 (over B) west of the centre whatever the hemisphere. Latitudes beyond a pole fail,
/// arguments untouched, and nothing else does; the two ends of the cylinder give infinite coordinates,
/// and within 7 cm of a pole the inverse gives the pole itself on the origin meridian. Longitudes of
/// neither direction are folded. A round trip closes to 2e-15 rad away from the poles. Computes the
/// point scale, never the convergence.
class GEOMATH_API HotineProj : public TGeoProj {
 public:
  /// Azimuth of the central line at the centre.
  double AxisAzimuth() const { return azimuth_; }
  void AxisAzimuth(double value) { Set(azimuth_, value); }
  /// Scale on the central line.
  double Scale() const { return k0_; }
  void Scale(double value) { Set(k0_, value); }
  /// Centre.
  double Lon0() const { return lambdaC_; }
  void Lon0(double value) { Set(lambdaC_, value); }
  double Lat0() const { return phiC_; }
  void Lat0(double value) { Set(phiC_, value); }
  /// False coordinates of the natural origin.
  double FEast() const override { return fEast_; }
  void FEast(double value) { Set(fEast_, value); }
  double FNorth() const override { return fNorth_; }
  void FNorth(double value) { Set(fNorth_, value); }

  /// γ0, the azimuth at which the central line crosses the equator of the aposphere (Snyder 1987,
  /// eq. 9-37), within a quarter turn of north.
  double EquatorAzimuth() const;

  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;
  /// Semi-major axis (metres) and inverse flattening, then the parameters in their order.
  HotineProj(ProjType type, std::span<const ParamRow> params, double a, double invF, double azimuth,
             double scale, double lon0, double lat0, double fEast, double fNorth);

  /// Turns by the azimuth at the centre.
  void Prepare() override;

  FormulaView Formulas() const override;

  /// The parameters, and what is derived of them.
  double azimuth_, k0_, lambdaC_, phiC_, fEast_, fNorth_;
  InPlace<HotineGrid, 21> grid_;
};

}  // namespace zel_cs::geomath
