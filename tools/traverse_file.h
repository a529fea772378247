#pragma once

#include <memory>
#include <string>
#include <vector>

#include "files/points/point_source.h"
#include "geomath/geodesic/traverse.h"

namespace geomath_files::program {

/// The field book of a traverse: a file with columns angle, distance and, where heights are known, h.
/// A row is a leg: the angle at its first station and what leads to the next one, whose height it has.
/// A last row without distance has the closing angle.
struct FieldBook {
  std::vector<Record> records;                     ///< all rows, blank ones among them
  std::vector<int> leg;                            ///< of each row; −1 where it has none
  std::vector<zel_cs::geomath::TraverseLeg> legs;  ///< radians, metres
  std::optional<double> endAngle;                  ///< radians
  bool decimalComma = false;
};

/// Reads it whole. `height` is taken where the file has none. Throws UserError, naming the line, for
/// what is no leg.
FieldBook ReadFieldBook(PointSource& source, double height, bool gon);

}  // namespace geomath_files::program
