#include "geomath/proj/methods/rso_proj.h"

#include <gtest/gtest.h>

#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// EPSG Guidance Note 7-2 (2019), Timbalai 1948 / RSO Borneo; printed to 0.01 m with an angle of the
// grid that is rounded to a sine of 0.8.
TEST(RSO, ReproducesTheBorneoExample) {
  constexpr double kPrintedMetres = 0.006;
  TRSOProj proj(6377298.556, 300.8017, (53 + 18 / 60.0 + 56.9537 / 3600) * kDegree, 0.99984,
                115 * kDegree, 4 * kDegree, 0, 0);
  double n = (5 + 23 / 60.0 + 14.1129 / 3600) * kDegree;
  double e = (115 + 48 / 60.0 + 19.8196 / 3600) * kDegree;
  constexpr double kPrintedAngle = 1e-8;  // γ0 = 0.927295218, the azimuth to 0.0001″
  EXPECT_NEAR(proj.EquatorAzimuth(), 0.927295218, kPrintedAngle);
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, 596562.78, kPrintedMetres);
  EXPECT_NEAR(e, 679245.73, kPrintedMetres);
  n = 596562.78;
  e = 679245.73;
  ASSERT_TRUE(proj._Inverse(n, e));
  constexpr double kPrintedSeconds = 2.5e-4 / 3600 * kDegree;  // 0.0001″ and the centimetre
  EXPECT_NEAR(n, (5 + 23 / 60.0 + 14.1129 / 3600) * kDegree, kPrintedSeconds);
  EXPECT_NEAR(e, (115 + 48 / 60.0 + 19.8196 / 3600) * kDegree, kPrintedSeconds);
}

// PROJ 9.1: omerc with gamma = γ0 and no_uoff, Everest 1830 (Modified).
TEST(RSO, StartsAsTheMalayanGridAndFollowsItsEllipsoid) {
  constexpr double kPrinted = 0.6e-4;  // metres
  TRSOProj proj;
  proj.SetEllipsoid(6377304.063, 300.8017);
  double n = 3.1 * kDegree, e = 101.6 * kDegree;
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, 343075.0592, kPrinted);
  EXPECT_NEAR(e, 400437.5298, kPrinted);
}

}  // namespace
}  // namespace zel_cs::geomath
