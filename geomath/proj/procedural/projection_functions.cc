#include "geomath/proj/procedural/projection_functions.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <type_traits>
#include <utility>

#include "geomath/base/angle.h"
#include "geomath/base/ellipsoid.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/albers_ea_conic_proj.h"
#include "geomath/proj/methods/cassini_proj.h"
#include "geomath/proj/methods/colombia_proj.h"
#include "geomath/proj/methods/denmark_tm_proj.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/kms_proj_tm.h"
#include "geomath/proj/methods/kms_trans_proj.h"
#include "geomath/proj/methods/krovak_proj.h"
#include "geomath/proj/methods/lc27_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/malaysia_cs2000_proj.h"
#include "geomath/proj/methods/malaysia_cs_proj.h"
#include "geomath/proj/methods/mercator_proj.h"
#include "geomath/proj/methods/minnesota_la_proj.h"
#include "geomath/proj/methods/minnesota_om_proj.h"
#include "geomath/proj/methods/minnesota_tm_proj.h"
#include "geomath/proj/methods/mon_spher.h"
#include "geomath/proj/methods/nzmg_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/rd_proj.h"
#include "geomath/proj/methods/rd_trans_proj.h"
#include "geomath/proj/methods/romania_ster.h"
#include "geomath/proj/methods/rso_proj.h"
#include "geomath/proj/methods/spc_lc83_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/spc_tm83_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/swiss_proj.h"
#include "geomath/proj/methods/tm27_proj.h"
#include "geomath/proj/methods/tm_nz.h"
#include "geomath/proj/methods/tm_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "geomath/proj/param_table.h"
#include "geomath/proj/procedural/azimuthal_equidistant.h"
#include "geomath/proj/procedural/meridian_arc_methods.h"
#include "geomath/proj/procedural/two_point_hotine.h"

namespace zel_cs::geomath {
namespace {

constexpr int kUtmZones = 60;
constexpr double kUtmZoneDegrees = 360.0 / kUtmZones;
constexpr double kUtmScale = 0.9996;
constexpr double kUtmFalseEasting = 500000, kUtmFalseNorthingSouth = 10000000;  // metres

/// An element of a parameter array as a constructor's argument, number or whole number.
struct Param {
  double value;
  operator double() const { return value; }
  operator int() const { return ParamAsInt(value); }
};

template <class Proj, std::size_t... i>
Proj BuildFrom(const double* ellipsoid, const double* param, std::index_sequence<i...>) {
  if constexpr (std::is_constructible_v<Proj, double, double, decltype(Param{param[i]})...>)
    return Proj(ellipsoid[0], 1 / ellipsoid[1], Param{param[i]}...);
  else
    return Proj(Param{param[i]}...);
}

/// A projection class from the two arrays.
template <class Proj, std::size_t count>
Proj ClassOf(const double* ellipsoid, const double* param) {
  return BuildFrom<Proj>(ellipsoid, param, std::make_index_sequence<count>{});
}

/// Its mode is no argument of the constructor.
TKMSProjTM KmsOf(const double* ellipsoid, const double* param) {
  TKMSProjTM proj = ClassOf<TKMSProjTM, 5>(ellipsoid, param);
  proj.Mode(param[5] != 0);
  return proj;
}

/// Carries a triple over and converts its pair in place.
template <class Convert>
bool ConvertTriple(const double* in, double* out, Convert convert) {
  double first = in[0], second = in[1];
  const bool done = convert(first, second);
  out[0] = first;
  out[1] = second;
  out[2] = in[2];
  return done;
}

template <class Method>
bool Forward(const Method& method, const double* blh, double* neh) {
  return ConvertTriple(blh, neh, [&](double& b, double& l) { return method.ForwardPoint(b, l); });
}

template <class Method>
bool Inverse(const Method& method, const double* neh, double* blh) {
  return ConvertTriple(neh, blh, [&](double& n, double& e) { return method.InversePoint(n, e); });
}

Ellipsoid EllipsoidOf(const double* ellipsoid) {
  return MakeEllipsoid(ellipsoid[0], 1 / ellipsoid[1]);
}

// The methods without a class, from their arrays.

Bonne BonneOf(const double* ellipsoid, const double* p) {
  return {EllipsoidOf(ellipsoid), p[0], {p[1], p[2], p[3]}};
}

/// The sinusoidal projection is Bonne's with the standard parallel on the equator.
Bonne SinusoidalOf(const double* ellipsoid, const double* p) {
  return {EllipsoidOf(ellipsoid), 0, {p[0], p[1], p[2]}};
}

EquidistantConic EquidistantOf(const double* ellipsoid, const double* p) {
  return {EllipsoidOf(ellipsoid), {p[0], p[1], p[3]}, {p[2], p[4], p[5]}};
}

EquidistantCylinder EquidistantCylOf(const double* ellipsoid, const double* p) {
  return {EllipsoidOf(ellipsoid), p[0], {p[1], p[2], p[3]}};
}

AzimuthalEquidistant EquidistantAzOf(const double* ellipsoid, const double* p) {
  return {EllipsoidOf(ellipsoid), p[0], {p[1], p[2], p[3]}};
}

/// Fails where the two points define no line. Longitudes are taken within half a turn of the
/// natural origin, so that a line may cross the date line.
struct TwoPointOM {
  std::optional<HotineGrid> grid;

  bool ForwardPoint(double& b, double& l) const {
    if (!grid) return false;
    const double lambda0 = grid->Projection().lambda0;
    l = lambda0 + SetValue(l - lambda0, 1);
    return grid->ForwardPoint(b, l, nullptr);
  }
  bool InversePoint(double& n, double& e) const {
    return grid && grid->InversePoint(n, e, nullptr);
  }
};

TwoPointOM OM2POf(const double* ellipsoid, const double* p) {
  return {HotineThroughTwoPoints(EllipsoidOf(ellipsoid),
                                 {p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]})};
}

}  // namespace
}  // namespace zel_cs::geomath

using namespace zel_cs::geomath;

extern "C" {

// Both functions of a name; a function's name is the one thing that no table can hold.
#define GEOMATH_FUNCTIONS(name, projection)                                    \
  bool TBLHTo##name(const double* blh, double* neh, const double* ellipsoid,   \
                    const double* param) {                                     \
    return Forward(projection(ellipsoid, param), blh, neh);                    \
  }                                                                            \
  bool T##name##ToBLH(const double* neh, double* blh, const double* ellipsoid, \
                      const double* param) {                                   \
    return Inverse(projection(ellipsoid, param), neh, blh);                    \
  }
// Those of a class with its number of parameters.
#define GEOMATH_CLASS_FUNCTIONS(name, Proj, count) GEOMATH_FUNCTIONS(name, (ClassOf<Proj, count>))

// clang-format off
GEOMATH_CLASS_FUNCTIONS(UTM, TUTMProj, 5)
GEOMATH_CLASS_FUNCTIONS(TM, TTMProj, 5)
GEOMATH_CLASS_FUNCTIONS(TMDenmark, TDenmarkTMProj, 5)
GEOMATH_FUNCTIONS(TMKms, KmsOf)
GEOMATH_CLASS_FUNCTIONS(KmsTrans, TKMSTransProj, 6)
GEOMATH_CLASS_FUNCTIONS(TMNZ, TTTMNZ, 6)
GEOMATH_CLASS_FUNCTIONS(TM27, TTM27Proj, 6)
GEOMATH_CLASS_FUNCTIONS(TM83, TSPC_TM83Proj, 6)
GEOMATH_CLASS_FUNCTIONS(TMMinnesota, TMinnesota_TMProj, 12)
GEOMATH_CLASS_FUNCTIONS(TMSphere, TMonSpher, 8)
GEOMATH_CLASS_FUNCTIONS(LC, TLCProj, 7)
GEOMATH_CLASS_FUNCTIONS(LC27, TLC27Proj, 11)
GEOMATH_CLASS_FUNCTIONS(LC83, TSPC_LC83Proj, 7)
GEOMATH_CLASS_FUNCTIONS(LCMinnesota, TMinnesota_LAProj, 12)
GEOMATH_CLASS_FUNCTIONS(Albers, TAlbersEAConicProj, 6)
GEOMATH_CLASS_FUNCTIONS(OM, TOMercatorProj, 6)
GEOMATH_CLASS_FUNCTIONS(OM83, TSPC_OM83Proj, 7)
GEOMATH_CLASS_FUNCTIONS(OMMinnesota, TMinnesota_OMProj, 12)
GEOMATH_CLASS_FUNCTIONS(RSO, TRSOProj, 6)
GEOMATH_CLASS_FUNCTIONS(Swiss, TSwissProj, 4)
GEOMATH_CLASS_FUNCTIONS(MalaysiaCS, TMalaysia_CSProj, 16)
GEOMATH_CLASS_FUNCTIONS(MalaysiaCS2000, TMalaysia_CS2000Proj, 4)
GEOMATH_CLASS_FUNCTIONS(AK01, TAK01Proj, 12)
GEOMATH_CLASS_FUNCTIONS(AK29, TAK29Proj, 3)
GEOMATH_CLASS_FUNCTIONS(Ster, TSterProj, 5)
GEOMATH_CLASS_FUNCTIONS(DoubleSter, TDoubleSter, 5)
GEOMATH_CLASS_FUNCTIONS(RomaniaSter, TRomaniaSter, 5)
GEOMATH_CLASS_FUNCTIONS(RD, TRDProj, 4)
GEOMATH_CLASS_FUNCTIONS(RDTrans, TRDTransProj, 5)
GEOMATH_CLASS_FUNCTIONS(Krovak, TKrovakProj, 8)
GEOMATH_CLASS_FUNCTIONS(Cassini, TCassiniProj, 5)
GEOMATH_CLASS_FUNCTIONS(Colombia, TColombiaProj, 4)
GEOMATH_CLASS_FUNCTIONS(Mercator, TMercatorProj, 4)
GEOMATH_CLASS_FUNCTIONS(NZMG, TNZMGProj, 4)
GEOMATH_FUNCTIONS(Bonne, BonneOf)
GEOMATH_FUNCTIONS(Sinusoidal, SinusoidalOf)
GEOMATH_FUNCTIONS(Equidistant, EquidistantOf)
GEOMATH_FUNCTIONS(EquidistantCyl, EquidistantCylOf)
GEOMATH_FUNCTIONS(EquidistantAz, EquidistantAzOf)
GEOMATH_FUNCTIONS(OM2P, OM2POf)
// clang-format on

#undef GEOMATH_CLASS_FUNCTIONS
#undef GEOMATH_FUNCTIONS

// A quotient of rounded angles falls on either side of a whole number: the boundaries decide, as
// whole degrees in radians. They do so without turning first, which would move them.
int TUTMZone(double lon) {
  if (!std::isfinite(lon)) return 0;
  if (std::abs(lon) > kTwoPi) lon = std::remainder(lon, kTwoPi);
  const auto boundary = [](int i) { return kUtmZoneDegrees * i * kRadPerDeg; };
  int east = static_cast<int>(std::floor(lon / boundary(1)));  // zones east of Greenwich
  if (lon < boundary(east)) --east;
  if (lon >= boundary(east + 1)) ++east;
  const int fromDateLine = (east + kUtmZones / 2 + kUtmZones) % kUtmZones;
  return fromDateLine + 1;
}

void TUTMParam(int zone, int south, double* param) {
  param[0] = (6.0 * zone - 183) * kRadPerDeg;
  param[1] = kUtmScale;
  param[2] = 0;
  param[3] = kUtmFalseEasting;
  param[4] = south ? kUtmFalseNorthingSouth : 0;
}
}
