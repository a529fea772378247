#pragma once

#include "geomath/export.h"

#if !defined(__cplusplus)
#include <stdbool.h>
#endif

/// @file
/// Ellipsoid and datum arithmetic on plain arrays, with unmangled names, for C and C++.
///
///     ellipsoid  2 numbers: semi-major axis (metres), flattening f (not 1/f)
///     datum      7 numbers: dX, dY, dZ (metres), rX, rY, rZ (radians, not arc-seconds), scale
///                change s; senses as in zel_cs::geomath::Datum
///     points     3 numbers: (B, L, H) in radians and metres, or (X, Y, Z) in metres
///
/// Input and output are distinct arrays; none is validated, null is not tested. Safe from many
/// threads at once.
#if defined(__cplusplus)
extern "C" {
#endif

/// Geodetic to geocentric. Always true.
GEOMATH_API bool TBLH_To_XYZ(const double* blh, double* xyz, const double* ellipsoid);

/// Geocentric to geodetic by the iteration of Ellipsoid::XYZ_to_BLH, with a tolerance of 1e-20 on
/// tan B and at most 21 steps. Always true. Kept: the last value is taken, settled or not, so that
/// no point is refused.
GEOMATH_API bool TXYZ_To_BLH(const double* xyz, double* blh, const double* ellipsoid);

/// Local geocentric to WGS84 geocentric: out = T + (1 + s)·Rᵀ·in, evaluated for zeros too.
GEOMATH_API void ToWGS84(const double* in, double* out, const double* datum);

/// WGS84 geocentric to local geocentric: out = R·(in − T)/(1 + s), evaluated for zeros too.
GEOMATH_API void ToLocDatum(const double* in, double* out, const double* datum);

#if defined(__cplusplus)
}
#endif
