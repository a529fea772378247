#pragma once

#include <cstddef>

#include "files/conversion/vertices.h"
#include "files/system/length_unit.h"
#include "files/system/system_file.h"
#include "geomath/base/point_dates.h"
#include "geomath/chain/coordinate_chain.h"

namespace geomath_files {

/// One direction of a system in the terms of files: degrees, the units of the system, and columns
/// called north and east whatever stands first in its axes. Const, and from many threads at once.
class SystemConversion {
 public:
  /// The system stays the caller's. `inverse` is from local to global; `date` that of all positions.
  SystemConversion(const CoordinateSystem& system, const GridUnits& units, bool inverse,
                   double date = zel_cs::geomath::kNoDate);

  /// In place, latitude and longitude to northing and easting or back, and heights; NaN where a step
  /// fails, which `failed`, where it is given, receives.
  void Convert(double* north, double* east, double* height, std::size_t count,
               zel_cs::geomath::ChainStep* failed = nullptr) const;
  /// The same for vertices. A flat one lies at `height` above the global ellipsoid whichever way it
  /// goes, so that it comes back to where it was.
  void ConvertVertices(VertexColumns& vertices, double height) const;

 private:
  const zel_cs::geomath::CoordinateChain& chain_;
  GridUnits units_;
  bool inverse_;
  zel_cs::geomath::PointDates dates_;
  AxisPair given_, results_;
};

}  // namespace geomath_files
