#pragma once

#include <memory>
#include <string>

#include "files/models/shift_file.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

/// A shift of a system file with its place in the chain.
struct SystemShift {
  std::shared_ptr<const zel_cs::geomath::CoordinateShift> shift;  ///< never null
  zel_cs::geomath::ShiftPlace place;                              ///< where in the chain it works
  zel_cs::geomath::ShiftDirection direction;                      ///< which way it works to local
  zel_cs::geomath::ShiftOutside outside;  ///< what becomes of points outside of it
  /// Decimal year at which it is run whatever the date of the point.
  double date = zel_cs::geomath::kNoDate;
  /// What it was read from; without a file for parameters.
  ShiftChoice choice;
  /// As the system file has it: text of JSON.
  std::string entry;
};

}  // namespace geomath_files
