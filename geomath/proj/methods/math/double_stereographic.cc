#include "geomath/proj/methods/math/double_stereographic.h"

#include <cmath>

// Symbols of EPSG Guidance Note 7-2, method 9809:
//   χ Λ  chi Lambda  latitude and longitude on the conformal sphere, Λ = n·(λ − λ0)
//   R n  sphere_.R sphere_.alpha     B  Denominator     ν0  prime-vertical radius at the origin
namespace zel_cs::geomath {

DoubleStereographic::DoubleStereographic(const Ellipsoid& ell, double lat0, double lon0,
                                         double scale)
    : sphere_(ell, lat0),
      phi0_(lat0),
      lambda0_(lon0),
      sinChi0_(std::sin(sphere_.chi0)),
      cosChi0_(std::cos(sphere_.chi0)),
      diameter_(2 * scale * sphere_.R),
      scaleAtOrigin_(diameter_ * sphere_.alpha / PrimeVerticalRadius(std::sin(lat0), ell)) {}

double DoubleStereographic::Denominator(const SpherePoint& at) const {
  return 1 + sinChi0_ * at.chi.sin + cosChi0_ * at.chi.cos * at.Lambda.cos;
}

double DoubleStereographic::ScaleAt(const SpherePoint& at, double cosPhi) const {
  return scaleAtOrigin_ * at.chi.cos / (cosPhi * Denominator(at));
}

double DoubleStereographic::ConvergenceAt(const SpherePoint& at) const {
  return std::atan((sinChi0_ + at.chi.sin) * at.Lambda.sin /
                   ((1 + sinChi0_ * at.chi.sin) * at.Lambda.cos + cosChi0_ * at.chi.cos));
}

void DoubleStereographic::Forward(double phi, double lambda, double& north, double& east,
                                  double* scale, double* convergence) const {
  const double cosPhi = std::cos(phi);
  const double Lambda = sphere_.alpha * (lambda - lambda0_);
  const SpherePoint at{sphere_.Latitude(std::sin(phi), cosPhi),
                       {std::sin(Lambda), std::cos(Lambda)}};
  const double perUnit = diameter_ / Denominator(at);
  north = perUnit * (cosChi0_ * at.chi.sin - sinChi0_ * at.chi.cos * at.Lambda.cos);
  east = perUnit * at.chi.cos * at.Lambda.sin;
  if (scale) *scale = ScaleAt(at, cosPhi);
  if (convergence) *convergence = ConvergenceAt(at);
}

// The point at the angular distance d from the origin on the sphere, as a vector: its height over
// the sphere's equator, and its parts along and across the meridian of origin. With
// q = tan(d/2) = r/(2·k0·R), sin d/r = 2/((1 + q²)·2·k0·R) needs no division by r.
void DoubleStereographic::Inverse(double north, double east, double& phi, double& lambda,
                                  double* scale, double* convergence) const {
  const double x = east / diameter_, y = north / diameter_;
  const double q2 = x * x + y * y;
  const double cosD = (1 - q2) / (1 + q2), unit = 2 / (1 + q2);
  const double across = unit * x;
  const double along = cosChi0_ * cosD - sinChi0_ * unit * y;
  const double cosChi = std::sqrt(along * along + across * across);
  const SinCos chi{cosD * sinChi0_ + unit * y * cosChi0_, cosChi};

  phi = q2 == 0 ? phi0_ : sphere_.Geodetic(chi);
  lambda = lambda0_ + std::atan2(across, along) / sphere_.alpha;
  if (!scale && !convergence) return;

  const SinCos Lambda = cosChi > 0 ? SinCos{across / cosChi, along / cosChi} : SinCos{0, 1};
  const SpherePoint at{chi, Lambda};
  if (scale) *scale = ScaleAt(at, std::cos(phi));
  if (convergence) *convergence = ConvergenceAt(at);
}

}  // namespace zel_cs::geomath
