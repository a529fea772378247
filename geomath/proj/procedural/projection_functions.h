#pragma once

#include "geomath/export.h"

#if !defined(__cplusplus)
#include <stdbool.h>
#endif

/// @file
/// Map projections on plain arrays, with unmangled names, for C and C++: for every method one
/// function forward and one inverse.
///
///     blh        latitude, longitude (radians, north and east positive), height (metres)
///     neh        northing, easting, height (metres)
///     ellipsoid  semi-major axis (metres), flattening f (not 1/f); f = 0 is a sphere. Not read,
///                and allowed to be null, where the method has its ellipsoid built in
///     param      the parameters that the function's comment lists: radians, metres, plain
///                numbers; zone numbers and system codes as doubles
///
/// The height is copied. The result is that of the projection class: false where it fails, with
/// unspecified numbers in the output beside the height. No axes are turned. Input and output are
/// distinct arrays; null is not tested. Nothing is kept between calls, nothing throws, and all may
/// run from many threads at once. Each call prepares the projection's constants anew: for many
/// points of one projection the classes and their batches are faster.
#if defined(__cplusplus)
extern "C" {
#endif

// Methods that have a class: the elements of `param` are its parameters in the order of GetParam,
// so that param[i] = projection.GetParam(i, 2) carries an object over.

/// TUTMProj, 5: central meridian, scale, Lat0, false easting, false northing.
GEOMATH_API bool TBLHToUTM(const double* blh, double* neh, const double* ellipsoid,
                           const double* param);
GEOMATH_API bool TUTMToBLH(const double* neh, double* blh, const double* ellipsoid,
                           const double* param);

/// TTMProj, 5: as UTM.
GEOMATH_API bool TBLHToTM(const double* blh, double* neh, const double* ellipsoid,
                          const double* param);
GEOMATH_API bool TTMToBLH(const double* neh, double* blh, const double* ellipsoid,
                          const double* param);

/// TDenmarkTMProj, 5: as UTM.
GEOMATH_API bool TBLHToTMDenmark(const double* blh, double* neh, const double* ellipsoid,
                                 const double* param);
GEOMATH_API bool TTMDenmarkToBLH(const double* neh, double* blh, const double* ellipsoid,
                                 const double* param);

/// TKMSProjTM, 6: as UTM, then mode (0 or 1).
GEOMATH_API bool TBLHToTMKms(const double* blh, double* neh, const double* ellipsoid,
                             const double* param);
GEOMATH_API bool TTMKmsToBLH(const double* neh, double* blh, const double* ellipsoid,
                             const double* param);

/// TKMSTransProj, 6: as UTM, then system code.
GEOMATH_API bool TBLHToKmsTrans(const double* blh, double* neh, const double* ellipsoid,
                                const double* param);
GEOMATH_API bool TKmsTransToBLH(const double* neh, double* blh, const double* ellipsoid,
                                const double* param);

/// TTTMNZ, 6: as UTM, then grid scale.
GEOMATH_API bool TBLHToTMNZ(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TTMNZToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TTM27Proj, 6: L1, L2, L34, L5, L6, zone; no ellipsoid.
GEOMATH_API bool TBLHToTM27(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TTM27ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TSPC_TM83Proj, 6: as UTM, then zone.
GEOMATH_API bool TBLHToTM83(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TTM83ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TMinnesota_TMProj, 12: LonOrigin, LatOrigin, NorthStdP, SouthStdP, Scale, FN, FE, DesElA,
/// DesElB, ElevationShift, ObliqueAngle, GeoidHeight.
GEOMATH_API bool TBLHToTMMinnesota(const double* blh, double* neh, const double* ellipsoid,
                                   const double* param);
GEOMATH_API bool TTMMinnesotaToBLH(const double* neh, double* blh, const double* ellipsoid,
                                   const double* param);

/// TMonSpher, 8: Lat0, Lon0, LatNormal, _k1, Scale, East0, North0, AxisAzimuth.
GEOMATH_API bool TBLHToTMSphere(const double* blh, double* neh, const double* ellipsoid,
                                const double* param);
GEOMATH_API bool TTMSphereToBLH(const double* neh, double* blh, const double* ellipsoid,
                                const double* param);

/// TLCProj, 7: SouthLat, NorthLat, Lon0, Lat0, East0, North0, Scale.
GEOMATH_API bool TBLHToLC(const double* blh, double* neh, const double* ellipsoid,
                          const double* param);
GEOMATH_API bool TLCToBLH(const double* neh, double* blh, const double* ellipsoid,
                          const double* param);

/// TLC27Proj, 11: L1, L2, L3, L4, L5, L6, L78, L9, L10, L11, zone; no ellipsoid.
GEOMATH_API bool TBLHToLC27(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TLC27ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TSPC_LC83Proj, 7: SouthLat, NorthLat, Lon0, Lat0, East0, North0, zone.
GEOMATH_API bool TBLHToLC83(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TLC83ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TMinnesota_LAProj, 12: as TMMinnesota.
GEOMATH_API bool TBLHToLCMinnesota(const double* blh, double* neh, const double* ellipsoid,
                                   const double* param);
GEOMATH_API bool TLCMinnesotaToBLH(const double* neh, double* blh, const double* ellipsoid,
                                   const double* param);

/// TAlbersEAConicProj, 6: SouthLat, NorthLat, Lon0, Lat0, East0, North0.
GEOMATH_API bool TBLHToAlbers(const double* blh, double* neh, const double* ellipsoid,
                              const double* param);
GEOMATH_API bool TAlbersToBLH(const double* neh, double* blh, const double* ellipsoid,
                              const double* param);

/// TOMercatorProj, 6: AxisAzimuth, Scale, Lon0, Lat0, East0, North0.
GEOMATH_API bool TBLHToOM(const double* blh, double* neh, const double* ellipsoid,
                          const double* param);
GEOMATH_API bool TOMToBLH(const double* neh, double* blh, const double* ellipsoid,
                          const double* param);

/// TSPC_OM83Proj, 7: as OM, then zone.
GEOMATH_API bool TBLHToOM83(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TOM83ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TMinnesota_OMProj, 12: as TMMinnesota.
GEOMATH_API bool TBLHToOMMinnesota(const double* blh, double* neh, const double* ellipsoid,
                                   const double* param);
GEOMATH_API bool TOMMinnesotaToBLH(const double* neh, double* blh, const double* ellipsoid,
                                   const double* param);

/// TRSOProj, 6: as OM.
GEOMATH_API bool TBLHToRSO(const double* blh, double* neh, const double* ellipsoid,
                           const double* param);
GEOMATH_API bool TRSOToBLH(const double* neh, double* blh, const double* ellipsoid,
                           const double* param);

/// TSwissProj, 4: Lon0, Lat0, East0, North0.
GEOMATH_API bool TBLHToSwiss(const double* blh, double* neh, const double* ellipsoid,
                             const double* param);
GEOMATH_API bool TSwissToBLH(const double* neh, double* blh, const double* ellipsoid,
                             const double* param);

/// TMalaysia_CSProj, 16: as the class's constructor.
GEOMATH_API bool TBLHToMalaysiaCS(const double* blh, double* neh, const double* ellipsoid,
                                  const double* param);
GEOMATH_API bool TMalaysiaCSToBLH(const double* neh, double* blh, const double* ellipsoid,
                                  const double* param);

/// TMalaysia_CS2000Proj, 4: AxisAzimuth, Scale, Lon0, Lat0.
GEOMATH_API bool TBLHToMalaysiaCS2000(const double* blh, double* neh, const double* ellipsoid,
                                      const double* param);
GEOMATH_API bool TMalaysiaCS2000ToBLH(const double* neh, double* blh, const double* ellipsoid,
                                      const double* param);

/// TAK01Proj, 12: A, B, C, D, F, G, H, I, e, epsilon, Lon0, zone; no ellipsoid.
GEOMATH_API bool TBLHToAK01(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TAK01ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TAK29Proj, 3: C, CM, zone; no ellipsoid.
GEOMATH_API bool TBLHToAK29(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TAK29ToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TSterProj, 5: Lat0, Lon0, Scale, East0, North0.
GEOMATH_API bool TBLHToSter(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TSterToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// TDoubleSter, 5: as Ster.
GEOMATH_API bool TBLHToDoubleSter(const double* blh, double* neh, const double* ellipsoid,
                                  const double* param);
GEOMATH_API bool TDoubleSterToBLH(const double* neh, double* blh, const double* ellipsoid,
                                  const double* param);

/// TRomaniaSter, 5: as Ster.
GEOMATH_API bool TBLHToRomaniaSter(const double* blh, double* neh, const double* ellipsoid,
                                   const double* param);
GEOMATH_API bool TRomaniaSterToBLH(const double* neh, double* blh, const double* ellipsoid,
                                   const double* param);

/// TRDProj, 4: Lat0, Lon0, East0, North0.
GEOMATH_API bool TBLHToRD(const double* blh, double* neh, const double* ellipsoid,
                          const double* param);
GEOMATH_API bool TRDToBLH(const double* neh, double* blh, const double* ellipsoid,
                          const double* param);

/// TRDTransProj, 5: as Ster.
GEOMATH_API bool TBLHToRDTrans(const double* blh, double* neh, const double* ellipsoid,
                               const double* param);
GEOMATH_API bool TRDTransToBLH(const double* neh, double* blh, const double* ellipsoid,
                               const double* param);

/// TKrovakProj, 8: Lat0, Lon0, dLon, Uq, S0, Scale, East0, North0.
GEOMATH_API bool TBLHToKrovak(const double* blh, double* neh, const double* ellipsoid,
                              const double* param);
GEOMATH_API bool TKrovakToBLH(const double* neh, double* blh, const double* ellipsoid,
                              const double* param);

/// TCassiniProj, 5: Lat0, Lon0, AxisAzimuth, East0, North0.
GEOMATH_API bool TBLHToCassini(const double* blh, double* neh, const double* ellipsoid,
                               const double* param);
GEOMATH_API bool TCassiniToBLH(const double* neh, double* blh, const double* ellipsoid,
                               const double* param);

/// TColombiaProj, 4: as RD.
GEOMATH_API bool TBLHToColombia(const double* blh, double* neh, const double* ellipsoid,
                                const double* param);
GEOMATH_API bool TColombiaToBLH(const double* neh, double* blh, const double* ellipsoid,
                                const double* param);

/// TMercatorProj, 4: Lon0, Lat0, East0, North0.
GEOMATH_API bool TBLHToMercator(const double* blh, double* neh, const double* ellipsoid,
                                const double* param);
GEOMATH_API bool TMercatorToBLH(const double* neh, double* blh, const double* ellipsoid,
                                const double* param);

/// TNZMGProj, 4: as RD.
GEOMATH_API bool TBLHToNZMG(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TNZMGToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

/// UTM zone of a longitude (radians, any), 1 to 60, without the exceptions of Norway and Svalbard;
/// 0 for a longitude that is not finite. A zone holds its western boundary, whole degrees times
/// π/180, exactly so for longitudes within a turn of Greenwich.
GEOMATH_API int TUTMZone(double lon);

/// The five parameters of TBLHToUTM for a UTM zone, in the southern hemisphere when `south` is not
/// 0.
GEOMATH_API void TUTMParam(int zone, int south, double* param);

// Methods without a class.

/// 4: Lat1, Lon0, East0, North0. Bonne's equal-area pseudoconic (Snyder 1987, p. 140).
GEOMATH_API bool TBLHToBonne(const double* blh, double* neh, const double* ellipsoid,
                             const double* param);
GEOMATH_API bool TBonneToBLH(const double* neh, double* blh, const double* ellipsoid,
                             const double* param);

/// 3: Lon0, East0, North0. Sinusoidal equal-area (Snyder 1987, p. 248).
GEOMATH_API bool TBLHToSinusoidal(const double* blh, double* neh, const double* ellipsoid,
                                  const double* param);
GEOMATH_API bool TSinusoidalToBLH(const double* neh, double* blh, const double* ellipsoid,
                                  const double* param);

/// 6: SouthLat, NorthLat, Lon0, Lat0, East0, North0. Equidistant conic (Snyder 1987, p. 114).
GEOMATH_API bool TBLHToEquidistant(const double* blh, double* neh, const double* ellipsoid,
                                   const double* param);
GEOMATH_API bool TEquidistantToBLH(const double* neh, double* blh, const double* ellipsoid,
                                   const double* param);

/// 4: Lat1, Lon0, East0, North0. Equidistant cylindrical (EPSG method 1028).
GEOMATH_API bool TBLHToEquidistantCyl(const double* blh, double* neh, const double* ellipsoid,
                                      const double* param);
GEOMATH_API bool TEquidistantCylToBLH(const double* neh, double* blh, const double* ellipsoid,
                                      const double* param);

/// 4: Lat0, Lon0, East0, North0. Modified azimuthal equidistant (EPSG method 9832).
GEOMATH_API bool TBLHToEquidistantAz(const double* blh, double* neh, const double* ellipsoid,
                                     const double* param);
GEOMATH_API bool TEquidistantAzToBLH(const double* neh, double* blh, const double* ellipsoid,
                                     const double* param);

/// 8: Lat1, Lon1, Lat2, Lon2, LatCentre, Scale, East0, North0. Oblique Mercator through two points
/// (Snyder 1987, pp. 69-75, alternate A), from the natural origin.
GEOMATH_API bool TBLHToOM2P(const double* blh, double* neh, const double* ellipsoid,
                            const double* param);
GEOMATH_API bool TOM2PToBLH(const double* neh, double* blh, const double* ellipsoid,
                            const double* param);

#if defined(__cplusplus)
}
#endif
