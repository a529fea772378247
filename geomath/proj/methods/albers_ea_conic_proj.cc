#include "geomath/proj/methods/albers_ea_conic_proj.h"

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/math/central_point.h"
#include "geomath/proj/methods/math/latitude.h"
#include "geomath/proj/methods/math/multiple_angles.h"

// Equation numbers are Snyder 1987; q, n, C, ρ, θ are his, g the sign of n.
namespace zel_cs::geomath {
namespace {

constexpr double kEqualParallels = 1e-10;  // radians
constexpr double kPoleTolerance = 1e-14;   // of q
constexpr double kLatitudeTolerance = 1e-14;
constexpr int kMaxLatitudeSteps = 25;

}  // namespace

std::span<const ParamRow<TAlbersEAConicProj>> TAlbersEAConicProj::Params() {
  using T = TAlbersEAConicProj;
  static constexpr ParamRow<T> rows[] = {
      {&T::phiS_, ParamKind::angle, &T::Prepare},
      {&T::phiN_, ParamKind::angle, &T::Prepare},
      {&T::lambda0_, ParamKind::angle},
      {&T::phi0_, ParamKind::angle, &T::Prepare},
      {&T::fEast_, ParamKind::length},
      {&T::fNorth_, ParamKind::length},
  };
  return rows;
}

TAlbersEAConicProj::TAlbersEAConicProj()
    : TAlbersEAConicProj(kWgs84A, kWgs84InvF, 0, kPi / 6, 0, 0, 0, 0) {}

TAlbersEAConicProj::TAlbersEAConicProj(double a, double invF, double southLat, double northLat,
                                       double lon0, double lat0, double fEast, double fNorth)
    : TGeoProj(ProjTypeLC, static_cast<int>(Params().size()), a, invF, true),
      phiS_(southLat),
      phiN_(northLat),
      lambda0_(lon0),
      phi0_(lat0),
      fEast_(fEast),
      fNorth_(fNorth) {
  TAlbersEAConicProj::Prepare();
}

void TAlbersEAConicProj::SouthLat(double value) {
  phiS_ = value;
  Prepare();
}

void TAlbersEAConicProj::NorthLat(double value) {
  phiN_ = value;
  Prepare();
}

void TAlbersEAConicProj::Lat0(double value) {
  phi0_ = value;
  Prepare();
}

double TAlbersEAConicProj::GetParam(int index, unsigned int unit) const {
  return ReadParam(*this, Params(), index, unit);
}

void TAlbersEAConicProj::SetParam(double value, int index, unsigned int unit) {
  WriteParam(*this, Params(), value, index, unit);
}

bool TAlbersEAConicProj::GetCentralPoint(double& b0, double& l0, double& db, double& dl) const {
  return ConicCentralPoint(phi0_, lambda0_, b0, l0, db, dl);
}

void TAlbersEAConicProj::Prepare() {
  const double sin1 = std::sin(phiS_), sin2 = std::sin(phiN_);
  const double m1 = ParallelRadius(sin1, std::cos(phiS_), ell_.e2);
  const double m2 = ParallelRadius(sin2, std::cos(phiN_), ell_.e2);
  const double q1 = AuthalicQ(sin1), q2 = AuthalicQ(sin2);
  const bool oneParallel = std::abs(phiS_ - phiN_) < kEqualParallels;
  n_ = oneParallel ? sin1 : (m1 * m1 - m2 * m2) / (q2 - q1);              // 14-14
  C_ = m1 * m1 + n_ * q1;                                                 // 14-13
  rho0_ = ell_.a * std::sqrt(C_ - n_ * AuthalicQ(std::sin(phi0_))) / n_;  // 14-12a
  qPole_ = AuthalicQ(1);

  const double e2 = ell_.e2, e4 = e2 * e2, e6 = e4 * e2;
  authalic_[0] = e2 / 3 + 31.0 / 180 * e4 + 517.0 / 5040 * e6;  // 3-18
  authalic_[1] = 23.0 / 360 * e4 + 251.0 / 3780 * e6;
  authalic_[2] = 761.0 / 45360 * e6;
}

// 3-12, its logarithm as an inverse hyperbolic tangent; 2·sin φ on the sphere.
double TAlbersEAConicProj::AuthalicQ(double s) const {
  const double es = ell_.e * s;
  const double arc = ell_.e > 0 ? std::atanh(es) / ell_.e : s;
  return (1 - ell_.e2) * (s / (1 - es * es) + arc);
}

// Newton's rule (3-16) from the authalic latitude β = asin(q/q(π/2)) and its series to e⁶ (3-18),
// 1e-9 short on an Earth ellipsoid. It ends by what a step moves the point northward: dφ is
// proportional to 1/cos φ, and digits of φ near the poles are not in q.
bool TAlbersEAConicProj::LatitudeFromQ(double q, double& phi) const {
  if (std::abs(std::abs(q) - qPole_) <= kPoleTolerance) {
    phi = std::copysign(kHalfPi, q);
    return true;
  }
  if (!(std::abs(q) < qPole_)) return false;
  const double sinBeta = q / qPole_, cosBeta = std::sqrt((1 - sinBeta) * (1 + sinBeta));
  phi = std::atan2(sinBeta, cosBeta) +
        ClenshawSin(authalic_, 2 * sinBeta * cosBeta, (cosBeta - sinBeta) * (cosBeta + sinBeta));
  for (int i = 0; i < kMaxLatitudeSteps; ++i) {
    const double s = std::sin(phi), c = std::cos(phi), w2 = 1 - ell_.e2 * (s * s);
    const double northward = w2 * w2 * (q - AuthalicQ(s)) / (2 * (1 - ell_.e2));
    phi += northward / c;
    if (std::abs(northward) < kLatitudeTolerance) return true;
  }
  return false;
}

bool TAlbersEAConicProj::ForwardPoint(double& b, double& l, PointFactors*) const {
  const double phi = b, lambda = l;
  const double radicand = C_ - n_ * AuthalicQ(std::sin(phi));
  if (radicand < 0) return false;
  const double rho = ell_.a * std::sqrt(radicand) / n_;      // 14-12
  const double theta = n_ * SetValue(lambda - lambda0_, 1);  // 14-4
  b = fNorth_ + rho0_ - rho * std::cos(theta);               // 14-2
  l = fEast_ + rho * std::sin(theta);                        // 14-1
  return true;
}

bool TAlbersEAConicProj::InversePoint(double& n, double& e, PointFactors*) const {
  const double x = e - fEast_, y = rho0_ - (n - fNorth_), g = std::copysign(1.0, n_);
  const double rho = std::sqrt(x * x + y * y), theta = std::atan2(g * x, g * y);  // 14-10, 14-11
  const double perUnit = rho * n_ / ell_.a;
  double phi;
  if (!LatitudeFromQ((C_ - perUnit * perUnit) / n_, phi)) return false;  // 14-19
  n = phi;
  e = lambda0_ + theta / n_;  // 14-9
  return true;
}

}  // namespace zel_cs::geomath
