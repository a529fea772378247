#pragma once

#include "geomath/base/ellipsoid.h"

namespace zel_cs::geomath {

/// Isometric latitude ψ(φ) = artanh(sin φ) − e·artanh(e·sin φ), Snyder 1987, eq. 3-7 (there ln of
/// the tangent form), odd in φ and without loss at the equator or near the poles; ±∞ at the poles.
/// exp(−ψ) is the t(φ) of Snyder 1987, eq. 15-9. With e = 0 it is the spherical one.
double IsometricLatitude(double sinPhi, double cosPhi, double e);
double IsometricLatitude(double phi, double e);

/// The latitude whose isometric latitude is `psi`: fixed-point steps (Snyder 1987, eq. 3-4) until
/// one changes the latitude by less than 1e-14, at most 50. Each step shrinks the error at least
/// 140-fold on an Earth ellipsoid.
double LatitudeFromIsometric(double psi, double e);

/// Radius of the parallel over a: m(φ) = cos φ/√(1 − e²·sin²φ). Snyder 1987, eq. 14-15.
double ParallelRadius(double sinPhi, double cosPhi, double e2);

/// Radius of curvature in the prime vertical ν, metres.
double PrimeVerticalRadius(double sinPhi, const Ellipsoid& ell);

/// Radius of curvature in the meridian ρ, metres.
double MeridianRadius(double sinPhi, const Ellipsoid& ell);

}  // namespace zel_cs::geomath
