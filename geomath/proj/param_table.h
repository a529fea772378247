#pragma once

#include <cstddef>
#include <span>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {

/// Unit code of GetParam and SetParam that exchanges angles in decimal degrees; every other code
/// means radians. Lengths are metres and factors plain numbers whatever the code.
inline constexpr unsigned int kUnitDegrees = 3;
/// The code that callers use for radians and metres.
inline constexpr unsigned int kUnitInternal = 2;

/// How a parameter is exchanged: only an angle honours the degree code.
enum class ParamKind { angle, length, scale, number };

/// One projection parameter, in index order: where it lives, how it is exchanged, and what must be
/// derived again after it was set.
template <class Proj>
struct ParamRow {
  double Proj::*field;                ///< radians, metres or a plain number
  ParamKind kind;                     ///< how it is exchanged
  void (Proj::*refresh)() = nullptr;  ///< called after a change, when given
};

/// GetParam from a table: 0.0 outside it.
template <class Proj>
double ReadParam(const Proj& proj, std::span<const ParamRow<Proj>> rows, int index,
                 unsigned int unit) {
  if (index < 0 || static_cast<std::size_t>(index) >= rows.size()) return 0.0;
  const ParamRow<Proj>& row = rows[static_cast<std::size_t>(index)];
  const double value = proj.*row.field;
  return row.kind == ParamKind::angle && unit == kUnitDegrees ? value * kDegPerRad : value;
}

/// SetParam from a table: nothing outside it.
template <class Proj>
void WriteParam(Proj& proj, std::span<const ParamRow<Proj>> rows, double value, int index,
                unsigned int unit) {
  if (index < 0 || static_cast<std::size_t>(index) >= rows.size()) return;
  const ParamRow<Proj>& row = rows[static_cast<std::size_t>(index)];
  const bool degrees = row.kind == ParamKind::angle && unit == kUnitDegrees;
  proj.*row.field = degrees ? value * kRadPerDeg : value;
  if (row.refresh) (proj.*row.refresh)();
}

/// An integer parameter (zone number, system code), which the table keeps as a double: its whole
/// part, and 0 where that does not fit an int.
inline int ParamAsInt(double value) {
  constexpr double kAbove = 2147483648.0;  // 2³¹
  return value > -kAbove - 1 && value < kAbove ? static_cast<int>(value) : 0;
}

}  // namespace zel_cs::geomath
