#include "geomath/proj/methods/minnesota_tm_proj.h"

#include <gtest/gtest.h>

#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kLon0 = -93.4325 * kDegree, kLat0 = 46.1541666666667 * kDegree;
constexpr double kSeries = 1e-6;  // metres, within 1° of the meridian

// Aitkin county (ESRI 103600); coordinates of an exact transverse Mercator with 50 digits (mpmath),
// which PROJ confirms to 0.1 mm. Scale in Minnesota's way, then an ellipsoid in Wisconsin's.
TEST(MinnesotaTM, AitkinCounty) {
  TMinnesota_TMProj scaled(6378137, 298.257222101, kLon0, kLat0, 0, 0, 1.000059152669,
                           30481.863937079, 152409.319685395, 6378137, 6356752.314140356, 0, 0, 0);
  ExpectBothWays(scaled, {46.5, -93.1, 68979.90254668097, 177934.3844217393}, kSeries, kSeries);
  ExpectBothWays(scaled, {45.8, -94.2, -8599.872960178777, 92738.91303392604}, kSeries, kSeries);

  TMinnesota_TMProj lifted(6378137, 298.257222101, kLon0, kLat0, 0, 0, 0, 30480.06, 152400.30, 0, 0,
                           381, 0, -27);
  ExpectBothWays(lifted, {46.5, -93.1, 68977.96119927538, 177925.269061316}, 2e-6, 2e-6);
  ExpectBothWays(lifted, {45.8, -94.2, -8601.537598655825, 92730.11687387886}, 2e-6, 2e-6);
}

// Equal design axes are a sphere: R·atan2(sin φ, cos φ·cos λ), R·artanh(cos φ·sin λ) (mpmath).
TEST(MinnesotaTM, PlaceholderIsAWorkingSphere) {
  TMinnesota_TMProj placeholder;
  EXPECT_EQ(placeholder.GetParam(3, 2), 1.0);
  EXPECT_EQ(placeholder.Scale(), 0.0);
  ExpectBothWays(placeholder, {40, 2, 4454693.496308662, 170557.3638005222}, kSeries, 2e-6);
}

}  // namespace
}  // namespace zel_cs::geomath
