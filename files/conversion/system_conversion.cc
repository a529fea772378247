#include "files/conversion/system_conversion.h"

#include <algorithm>
#include <cmath>

#include "files/conversion/scaled_column.h"
#include "geomath/base/angle.h"

using namespace zel_cs::geomath;

namespace geomath_files {
SystemConversion::SystemConversion(const CoordinateSystem& system, const GridUnits& units,
                                   bool inverse, double date)
    : chain_(system.Chain()),
      units_(units),
      inverse_(inverse),
      dates_(date),
      given_(inverse ? system.Grid() : system.Geographic()),
      results_(inverse ? system.Geographic() : system.Grid()) {}

void SystemConversion::Convert(double* north, double* east, double* height, std::size_t count,
                               ChainStep* failed) const {
  double* first = given_.northFirst ? north : east;
  double* second = given_.northFirst ? east : north;
  if (inverse_) {
    for (double* plane : {north, east}) Multiply(plane, count, units_.plane.metres);
    Multiply(height, count, units_.height.metres);
    chain_.ToGlobalDatedBatch(dates_, first, second, height, count, 1, failed);
    for (double* angle : {north, east}) Multiply(angle, count, kDegPerRad);
  } else {
    for (double* angle : {north, east}) Multiply(angle, count, kRadPerDeg);
    chain_.ToLocalDatedBatch(dates_, first, second, height, count, 1, failed);
    for (double* plane : {north, east}) Divide(plane, count, units_.plane.metres);
    Divide(height, count, units_.height.metres);
  }
  if (results_.northFirst != given_.northFirst) std::swap_ranges(north, north + count, east);
}

void SystemConversion::ConvertVertices(VertexColumns& vertices, double height) const {
  constexpr int kRounds = 2;  // the second corrects micrometres
  VertexColumns& v = vertices;
  const bool anyFlat = std::any_of(v.flat.begin(), v.flat.end(), [](char flat) { return flat; });
  VertexColumns given = v;
  Convert(v.y.data(), v.x.data(), v.z.data(), v.Count());
  if (!inverse_ || !anyFlat) return;
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t i = 0; i < v.Count(); ++i)
      if (v.flat[i] && std::isfinite(v.z[i]))
        given.z[i] -= (v.z[i] - height) / units_.height.metres;
    v = given;
    Convert(v.y.data(), v.x.data(), v.z.data(), v.Count());
  }
}

}  // namespace geomath_files
