#pragma once

#include <span>

#include "geomath/export.h"
#include "geomath/platform/zel_string.h"
#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// A new projection, owned by the caller, with the default parameters of its name on the ellipsoid
/// of semi-major axis `a` (metres) and inverse flattening `invF`. The names are identifiers of file
/// formats and user interfaces ("TMERC", "STER", "LC", ...), letter case included, not class names.
/// An unknown name gives the plain TGeoProj of kind 40 on WGS84. The classes of 1927 ("AK01",
/// "AK29", "TM27", "LC27") have their ellipsoid built in and leave `a` and `invF` unused. Null when
/// there is no memory. Safe to call from several threads.
GEOMATH_API TGeoProj* _GetProjByName(const CZelStringT<wchar_t>& name, double a, double invF);

/// The same by kind, for the library's own use: the code of a ProjType, or one of the codes 12, 33
/// and 35, whose objects report another kind. Every other code gives the plain TGeoProj.
GEOMATH_API TGeoProj* _GetProjByType(int type, double a, double invF);

/// The code of a row that can be built by its name only.
inline constexpr int kByNameOnly = -1;

/// A projection that the factory knows: its name, the code that builds it too, and its maker.
struct ProjFactoryRow {
  const wchar_t* name;                       ///< as _GetProjByName takes it
  int code;                                  ///< as _GetProjByType takes it, or kByNameOnly
  TGeoProj* (*make)(double a, double invF);  ///< the result is owned by the caller
};

/// All of them, for listings.
GEOMATH_API std::span<const ProjFactoryRow> ProjFactoryRows();

}  // namespace zel_cs::geomath
