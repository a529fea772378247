#pragma once

#include "geomath/proj/geo_proj.h"

namespace zel_cs::geomath {

/// What a parameter is. An angle is a latitude, a longitude, an azimuth or a width.
enum class Quantity {
  latitude,
  longitude,
  azimuth,
  angle,
  easting,
  northing,
  length,
  scale,
  zone,
  count,
  coefficient
};

/// What a parameter is exchanged in.
enum class ParamUnit {
  internal,     ///< metres and plain numbers, angles in what the unit code says
  radians,      ///< whatever the unit code
  arcSeconds,   ///< of a printed table, whatever the unit code
  surveyFeet,   ///< of a printed table
  surveyChains  ///< of a printed table
};

/// What a parameter is called and is.
struct ParamDescription {
  const char* name;                      ///< ASCII, as in ProjectionType::GetParamName
  Quantity quantity;                     ///< what it is
  ParamUnit unit = ParamUnit::internal;  ///< what it is exchanged in
};

/// What a change of a parameter does beside TGeoProj::Prepare, which derives everything again.
struct ParamRefresh {
  void (*run)(TGeoProj&) = nullptr;  ///< called with the new value in place; null for nothing
  bool prepares = true;              ///< whether Prepare follows
};

/// What a member function of a class derives from the parameter, before everything else is.
template <class Proj, void (Proj::*kMember)()>
constexpr ParamRefresh BeforePrepare() {
  return {[](TGeoProj& proj) { (static_cast<Proj&>(proj).*kMember)(); }, true};
}

/// A member function in place of Prepare.
template <class Proj, void (Proj::*kMember)()>
constexpr ParamRefresh InsteadOfPrepare() {
  return {BeforePrepare<Proj, kMember>().run, false};
}

/// One projection parameter: its description, where it lives, and what must be derived again after
/// it was set. Everything that names or exchanges parameters reads this row.
struct ParamRow : ParamDescription {
  /// A parameter after whose change everything is derived again, by TGeoProj::Prepare.
  template <class Proj>
  constexpr ParamRow(const char* rowName, Quantity rowQuantity, double Proj::*rowField,
                     ParamUnit rowUnit = ParamUnit::internal)
      : ParamDescription{rowName, rowQuantity, rowUnit},
        field(static_cast<double TGeoProj::*>(rowField)) {}

  /// One after whose change something else is done too, or in its place.
  template <class Proj>
  constexpr ParamRow(const char* rowName, Quantity rowQuantity, double Proj::*rowField,
                     ParamRefresh rowRefresh)
      : ParamRow(rowName, rowQuantity, rowField) {
    refresh = rowRefresh;
  }

  double TGeoProj::*field;  ///< of the row's class; radians, metres or as exchanged
  ParamRefresh refresh;     ///< what a change does
};

/// An integer parameter (zone number, system code), which its class keeps as a double: its whole
/// part, and 0 where that does not fit an int.
inline int ParamAsInt(double value) {
  constexpr double kAbove = 2147483648.0;  // 2³¹
  return value > -kAbove - 1 && value < kAbove ? static_cast<int>(value) : 0;
}

}  // namespace zel_cs::geomath
