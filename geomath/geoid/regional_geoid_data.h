#pragma once

#include "geomath/base/grid_rgn.h"
#include "geomath/export.h"
#include "geomath/platform/wide_text.h"

namespace zel_cs::geomath {

/// A grid of geoid undulations as its reader hands it over: NY rows of NX values, `rowPadding`
/// bytes after the values of each row. The values are not owned and must outlive every model made
/// of the record; copies share them and own their names.
struct GEOMATH_API RegionalGeoidData {
  TGridRgn grid;               ///< radians; row 0 lies on the southern edge unless a class says so
  int NX = 0;                  ///< nodes in a row, along longitude
  int NY = 0;                  ///< rows, along latitude
  const void* data = nullptr;  ///< the values
  WideText datumName;          ///< the datum that the grid refers to
  WideText interpolationType;  ///< the scheme that its publisher prescribes
  WideText parserOriginal;     ///< the reader that produced the grid
  double DISMOD = 0;           ///< carried along unread
  double rowPadding = 0;       ///< bytes in a stored row beyond its values
  int valueSize = 4;           ///< bytes of a stored value
  double scale = 1.0;          ///< stored values are divided by it to give metres

  RegionalGeoidData() = default;
  /// Kept: the value size is 4 and the scale 1 whatever the eighth and ninth argument say.
  RegionalGeoidData(const TGridRgn& region, int columns, int rows, const void* values,
                    double dismod, const wchar_t* datum, const wchar_t* interpolation, int, double,
                    const wchar_t* parser);

  /// Stores a copy; null stores none.
  void SetDatumName(const wchar_t* name) { datumName.Set(name); }
  void SetTypeInterpolation(const wchar_t* name) { interpolationType.Set(name); }
  void SetTypeParserOriginal(const wchar_t* name) { parserOriginal.Set(name); }
  /// Owned by the record; null when no name was given.
  const wchar_t* GetDatumName() const { return datumName.Get(); }
};

}  // namespace zel_cs::geomath
