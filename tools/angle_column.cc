#include "tools/angle_column.h"

#include "geomath/base/angle.h"

namespace geomath_files::program {

ResultColumn AngleColumns::Column(const std::string& name) const {
  if (angles_ == "dms") return {name, 4, "", AngleKind::turn};
  return {name, 8, angles_ == "gon" ? "gon" : "deg"};
}

double AngleColumns::Value(double radians) const {
  constexpr double kGonPerDegree = 10.0 / 9;
  return radians * zel_cs::geomath::kDegPerRad * (angles_ == "gon" ? kGonPerDegree : 1);
}

}  // namespace geomath_files::program
