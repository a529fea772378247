#include "geomath/proj/procedural/meridian_arc_methods.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/simd/scalar.h"

// Symbols of Snyder 1987: ρ rho radius of a parallel's arc, θ theta angle at its centre, M arc of
// the meridian from the equator, m radius of the parallel over a, n cone constant.
namespace zel_cs::geomath {
namespace {

constexpr double kPoleTolerance = 1e-12;  // radians, 6 micrometres of arc
constexpr double kOneParallel = 1e-10;    // parallels closer than this count as one

/// Brings a footpoint latitude beside a pole onto it; false for one beyond.
bool SettleAtPole(double& phi) {
  const double beyond = std::abs(phi) - kHalfPi;
  if (beyond > kPoleTolerance) return false;
  if (beyond > -kPoleTolerance) phi = std::copysign(kHalfPi, phi);
  return true;
}

bool IsPole(double phi) { return std::abs(phi) == kHalfPi; }

double ParallelRadiusAt(double phi, const Ellipsoid& ell) {
  return ParallelRadius(Sin(phi), Cos(phi), ell.e2);
}

}  // namespace

// N = ρ0 − ρ·cos θ without its cancellation.
void ConcentricArcs::ToPlane(double along, double theta, double& north, double& east) const {
  const double rho = rho0_ - along, half = Sin(theta / 2);
  north = along + 2 * rho * (half * half);
  east = rho * Sin(theta);
}

// ρ0 − ρ = (ρ0² − ρ²)/(ρ0 + ρ), the squares written out.
ConcentricArcs::Polar ConcentricArcs::FromPlane(double north, double east) const {
  const double side = std::copysign(1.0, rho0_), y = rho0_ - north;
  const double rho = side * Hypot(east, y);
  const double theta = Atan2(side * east, side * y);
  const double sum = rho0_ + rho;
  const double along = sum != 0 ? (north * (rho0_ + y) - east * east) / sum : 0;
  return {rho, theta, along};
}

Bonne::Bonne(const Ellipsoid& ell, double phi1, const GridOrigin& origin)
    : a_(ell.a),
      e2_(ell.e2),
      series_(ell),
      origin_(origin),
      arc1_(series_.Arc(phi1)),
      conic_(phi1 != 0),
      arcs_(ParallelLength(phi1) / Sin(phi1)) {}

double Bonne::ParallelLength(double phi) const {
  return a_ * ParallelRadius(Sin(phi), Cos(phi), e2_);
}

bool Bonne::ForwardPoint(double& b, double& l) const {
  const double phi = b, along = series_.Arc(phi) - arc1_;
  const double width = ParallelLength(phi) * SetValue(l - origin_.lambda0, 1);
  double north = along, east = width;
  if (conic_) {
    const double rho = arcs_.Radius(along);
    arcs_.ToPlane(along, rho != 0 ? width / rho : 0, north, east);
  }
  b = origin_.fNorth + north;
  l = origin_.fEast + east;
  return true;
}

bool Bonne::InversePoint(double& n, double& e) const {
  double along = n - origin_.fNorth, width = e - origin_.fEast;
  if (conic_) {
    const ConcentricArcs::Polar polar = arcs_.FromPlane(along, width);
    along = polar.along;
    width = polar.rho * polar.theta;
  }
  double phi = series_.Footpoint(arc1_ + along);
  if (!SettleAtPole(phi)) return false;
  n = phi;
  e = origin_.lambda0 + (IsPole(phi) ? 0 : width / ParallelLength(phi));
  return true;
}

EquidistantConic::EquidistantConic(const Ellipsoid& ell, const Cone& cone, const GridOrigin& origin)
    : series_(ell),
      origin_(origin),
      arc0_(series_.Arc(cone.phi0)),
      n_(ConeConstant(ell, cone)),
      arcs_(ell.a * ParallelRadiusAt(cone.phi1, ell) / n_ + series_.Arc(cone.phi1) - arc0_) {}

double EquidistantConic::ConeConstant(const Ellipsoid& ell, const Cone& cone) const {
  const auto& [phi1, phi2, phi0] = cone;
  if (std::abs(phi1 - phi2) < kOneParallel) return Sin(phi1);
  const double m1 = ParallelRadiusAt(phi1, ell), m2 = ParallelRadiusAt(phi2, ell);
  return ell.a * (m1 - m2) / (series_.Arc(phi2) - series_.Arc(phi1));
}

bool EquidistantConic::ForwardPoint(double& b, double& l) const {
  if (n_ == 0) return false;
  const double theta = n_ * SetValue(l - origin_.lambda0, 1);
  double north, east;
  arcs_.ToPlane(series_.Arc(b) - arc0_, theta, north, east);
  b = origin_.fNorth + north;
  l = origin_.fEast + east;
  return true;
}

bool EquidistantConic::InversePoint(double& n, double& e) const {
  if (n_ == 0) return false;
  const ConcentricArcs::Polar polar = arcs_.FromPlane(n - origin_.fNorth, e - origin_.fEast);
  double phi = series_.Footpoint(arc0_ + polar.along);
  if (!SettleAtPole(phi)) return false;
  n = phi;
  e = origin_.lambda0 + polar.theta / n_;
  return true;
}

EquidistantCylinder::EquidistantCylinder(const Ellipsoid& ell, double phi1,
                                         const GridOrigin& origin)
    : series_(ell), origin_(origin), metresPerRadian_(ell.a * ParallelRadiusAt(phi1, ell)) {}

bool EquidistantCylinder::ForwardPoint(double& b, double& l) const {
  b = origin_.fNorth + series_.Arc(b);
  l = origin_.fEast + metresPerRadian_ * SetValue(l - origin_.lambda0, 1);
  return true;
}

bool EquidistantCylinder::InversePoint(double& n, double& e) const {
  double phi = series_.Footpoint(n - origin_.fNorth);
  if (!SettleAtPole(phi)) return false;
  n = phi;
  e = origin_.lambda0 + (e - origin_.fEast) / metresPerRadian_;
  return true;
}

}  // namespace zel_cs::geomath
