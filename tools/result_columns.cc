#include "tools/result_columns.h"

namespace geomath_files::program {

std::vector<ResultColumn> PositionColumns(const std::string& angles, int decimals) {
  // 1e-6 of a degree is 0.1 m or less, a second 31 m or less.
  constexpr int kMoreForDegrees = 6, kMoreForSeconds = 2;
  const int degrees = decimals + kMoreForDegrees, seconds = decimals + kMoreForSeconds;
  if (angles == "gon") return {{"lat_gon", degrees, "gon"}, {"lon_gon", degrees, "gon"}};
  if (angles == "dms")
    return {{"lat", seconds, "", AngleKind::latitude}, {"lon", seconds, "", AngleKind::longitude}};
  return {{"lat", degrees, "deg"}, {"lon", degrees, "deg"}};
}

}  // namespace geomath_files::program
