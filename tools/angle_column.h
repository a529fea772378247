#pragma once

#include <string>
#include <vector>

#include "files/points/point_sink.h"

namespace geomath_files::program {

/// How the angles of results are written, from --angles: "degrees", "dms" or "gon".
class AngleColumns {
 public:
  explicit AngleColumns(const std::string& angles) : angles_(angles) {}

  /// A bearing, azimuth or convergence, to 1e-4 of a second or finer.
  ResultColumn Column(const std::string& name) const;
  /// What a column of these holds, from radians.
  double Value(double radians) const;

 private:
  std::string angles_;
};

}  // namespace geomath_files::program
