#pragma once

#include "geomath/export.h"

namespace zel_cs::geomath {

/// Steps between the Danish transverse Mercator and the country's older grids, which a host may
/// supply: their polynomials and datum steps are not part of this library.
///
/// System numbers: 98 is the transverse Mercator of the calling object as it stands, 117 the
/// intermediate system between it and the older grids, every other number one of those (115 by
/// default). Both functions return 0 on success; they may be called from any thread that converts,
/// and must not throw.
inline constexpr int kKmsOwnSystem = 98;
inline constexpr int kKmsIntermediateSystem = 117;
/// Directions: into a system and out of it.
inline constexpr int kKmsInto = 1;
inline constexpr int kKmsOutOf = -1;

/// The step on geographic coordinates, in place, radians: in practice a datum change, into the
/// datum of the grids or out of it.
using KmsPrepareFunction = int (*)(double& lat, double& lon, int direction);

/// Converts the pair (a, b) into (outA, outB): into `system` or out of it. A grid pair
/// is northing and easting (or westing, where the system has that), metres; where TKMSProjTM goes
/// straight from geographic coordinates into a system, that pair is latitude and longitude, radians.
using KmsConvertFunction = int (*)(double a, double b, double& outA, double& outB, int system,
                                   int direction);

/// The pair of functions that a host supplies.
struct KmsConversion {
  KmsPrepareFunction prepare;  ///< null for the default
  KmsConvertFunction convert;  ///< null for the default
};

/// Installs both functions for the whole process and returns the previous pair. A null one restores
/// its default: the preparation leaves the values as they are; the conversion copies the pair for
/// system 98 and refuses every other, outputs untouched. Install before other threads convert: the
/// two are exchanged one after the other.
GEOMATH_API KmsConversion SetKmsConversion(KmsConversion conversion) noexcept;

/// Run what is installed.
GEOMATH_API int KmsPrepare(double& lat, double& lon, int direction);
GEOMATH_API int KmsConvert(double a, double b, double& outA, double& outB, int system,
                           int direction);
/// KmsConvert in place; true on success.
inline bool KmsConvertInPlace(double& a, double& b, int system, int direction) {
  return KmsConvert(a, b, a, b, system, direction) == 0;
}

}  // namespace zel_cs::geomath
