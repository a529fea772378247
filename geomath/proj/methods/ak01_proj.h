#pragma once

#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// State plane zone 1 of Alaska on the datum of 1927, an oblique Mercator (Claire 1968, C&GS
/// Publication 62-4), with the published constants and series, which define coordinates of 1927.
/// They stay within 0.04 mm of Hotine's projection of Clarke 1866 at an azimuth whose tangent is
/// exactly −3/4; registries round that angle, which moves coordinates by up to 1 mm.
///
/// Parameters, all as published and exchanged as they are under every unit: A, B, C, D, F, G, H, I,
/// e, epsilon, Lon0 (arc-seconds, west positive), zone number. A, epsilon and the zone number are
/// only carried along. The axis is turned by exactly −atan(3/4); the false origin is 5000000 m east
/// and −5000000 m north. Radians and metres (the grid was published in US survey feet). The
/// Clarke 1866 ellipsoid is part of the constants: SetEllipsoid does not change results.
///
/// Meant for the zone; valid within 90° of Lon0, longitudes of neither direction are folded. Never
/// fails. A round trip closes to 1e-12 rad.
///
/// Computes the point scale and the convergence (geodetic azimuth = grid azimuth + convergence).
class GEOMATH_API TAK01Proj : public TGeoProj {
 public:
  /// The zone as published.
  TAK01Proj();
  /// The parameters in their order.
  TAK01Proj(double A, double B, double C, double D, double F, double G, double H, double I,
            double e, double epsilon, double lon0, int zone);

  /// Longitude where the axis meets the equator of the aposphere, arc-seconds, west positive.
  double Lon0() const { return lon0_; }
  void Lon0(double value) { Set(lon0_, value); }
  /// Only stored.
  int Zone() const;
  void Zone(int value) { Set(zone_, value); }

  double FEast() const override;
  double FNorth() const override;

  std::span<const ParamRow> Params() const override;
  /// The centre of the zone's definition, 57° N 133°40′ W.
  bool GetCentralPoint(double& b0, double& l0, double& db, double& dl) const override;

 protected:
  bool ProjectPoint(double& b, double& l, PointFactors* factors) const override;
  bool UnprojectPoint(double& n, double& e, PointFactors* factors) const override;

 private:
  // A point on the aposphere: P = sinh(B·ψ + C), Q = cosh(B·ψ + C), L west of the axis' origin.
  struct Aposphere {
    double P, Q, sinL, cosL;
  };
  Aposphere At(double sinPhi, double cosPhi, double lambda) const;
  PointFactors FactorsAt(const Aposphere& at, double sinPhi, double cosPhi, double cosU) const;
  static const ParamRow kParams[];

  double A_, B_, C_, D_, F_, G_, H_, I_, e_, epsilon_, lon0_, zone_;
};

}  // namespace zel_cs::geomath
