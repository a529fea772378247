#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath {

/// Number of terms of a spherical-harmonic series to degree and order 9.
inline constexpr int kBoehmTerms = 55;

/// P(n, m)(sin lat)·cos(m·lon) in aP and P(n, m)(sin lat)·sin(m·lon) in bP, kBoehmTerms each, in the
/// order n(n + 1)/2 + m for n = 0 … 9. The Legendre functions are not normalised and carry no factor
/// (−1)^m. Radians.
GEOMATH_API void Legendre55(double lat, double lon, double* aP, double* bP);

/// Undulation of the pressure and temperature model, metres, to degree and order 9 (a few metres).
/// Latitude and longitude in radians.
GEOMATH_API double Boehm_Geoid_Height(double lat, double lon);

/// Pressure (hPa), temperature (degrees Celsius) and undulation (metres) by the Global Pressure and
/// Temperature model (Boehm, Heinkelmann and Schuh 2007, Journal of Geodesy 81, 679-683; routine GPT
/// of the IERS Conventions 2010, chapter 9), from the modified Julian date `mjd`, ellipsoidal
/// latitude and longitude in radians and ellipsoidal height in metres.
///
/// The pressure formula ends at about 44 km above the geoid: higher up the pressure is NaN. All
/// three may be called from many threads at once.
GEOMATH_API void Boehm(double mjd, double lat, double lon, double h, double& pressure,
                       double& temperature, double& undulation);

}  // namespace zel_cs::geomath
