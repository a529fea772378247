#include "geomath/proj/methods/spc_tm83_proj.h"

#include <gtest/gtest.h>

#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// National Geodetic Survey, program SPCS83, zones 4901 to 4903 of Wyoming, printed to 1 mm.
TEST(SpcTM83, WyomingZones) {
  constexpr double kPrinted = 6e-4;
  constexpr struct {
    double cm, fEast, fNorth, east, north;
    int zone;
  } kZones[] = {
      {-(105 + 10.0 / 60), 200000, 0, 11296.730, 335844.806, 4901},
      {-(107 + 20.0 / 60), 400000, 100000, 386521.395, 433212.605, 4902},
      {-108.75, 600000, 0, 701089.964, 333958.236, 4903},
  };
  for (const auto& z : kZones) {
    TSPC_TM83Proj proj(6378137, 298.257222101, z.cm * kDegree, 0.9999375, 40.5 * kDegree, z.fEast,
                       z.fNorth, z.zone);
    ExpectBothWays(proj, {43.5, -107.5, z.north, z.east}, kPrinted, kPrinted);
    EXPECT_EQ(proj.Zone(), z.zone);
    EXPECT_EQ(proj.GetParam(5, 3), z.zone);
  }
}

// Exact transverse Mercator with 50 digits (mpmath; see DenmarkTM), New Jersey's parameters.
TEST(SpcTM83, AgreesWithTheExactProjection) {
  constexpr double kWithin3Degrees = 2e-5, kInverse = 1e-5;
  TSPC_TM83Proj proj(6378137, 298.257222101, -74.5 * kDegree, 0.9999, (38 + 50.0 / 60) * kDegree,
                     150000, 0, 2900);
  for (const WorkedExample& point : {
           WorkedExample{40.2, -74.9, 151796.2259031532, 115945.6786994899},
           {38.9, -74.1, 7476.176661862239, 184695.8733733774},
           {41.3, -77.5, 278204.6589439537, -101247.4978796406},
           {0.3, -71.6, -4266359.882205867, 472928.6789826056},
           {-35, -72.0, -8176634.045260243, 378222.5759096124},
       }) {
    ExpectBothWays(proj, point, kWithin3Degrees, kInverse);
  }
}

TEST(SpcTM83, ConvergenceHasTheSignOfTheSide) {
  TSPC_TM83Proj proj(6378137, 298.257222101, 0, 0.9999, 0, 0, 0, 0);
  for (double lat : {40.0, -40.0}) {
    for (double lon : {2.0, -2.0}) {
      double b = lat * kDegree, l = lon * kDegree;
      ASSERT_TRUE(proj.Forward(b, l));
      EXPECT_EQ(std::signbit(proj.GetConvergence()), lat * lon < 0);
    }
  }
}

}  // namespace
}  // namespace zel_cs::geomath
