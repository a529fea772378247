#include "geomath/proj/methods/minnesota_om_proj.h"

#include <gtest/gtest.h>

#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kA = 6378500, kB = kA * (1 - 1 / 298.257222101);  // lifted to the terrain

// PROJ 9.1: omerc with gamma = alpha and no_uoff on the working ellipsoid.
TEST(Minnesota_OM, WorksOnTheDesignEllipsoid) {
  constexpr double kPrinted = 0.6e-4;  // metres
  TMinnesota_OMProj axes(6378137, 298.257222101, -94 * kDegree, 46 * kDegree, 0, 0, 1, 50000,
                         120000, kA, kB, 0, 30 * kDegree, 0);
  TMinnesota_OMProj height(6378206.4, 294.98, -94 * kDegree, 46 * kDegree, 0, 0, 0, 50000, 120000,
                           kA - 390, kB - 390, 420, 30 * kDegree, -30);
  for (TMinnesota_OMProj* proj : {&axes, &height}) {
    double n = 46.2 * kDegree, e = -93.8 * kDegree;
    ASSERT_TRUE(proj->_Forward(n, e));
    EXPECT_NEAR(n, 4897977.5608, kPrinted);
    EXPECT_NEAR(e, 2921571.9735, kPrinted);
    ASSERT_TRUE(proj->_Inverse(n, e));
    EXPECT_NEAR(n, 46.2 * kDegree, tolerance::kRoundTripRadians);
    EXPECT_NEAR(e, -93.8 * kDegree, tolerance::kRoundTripRadians);
  }
}

TEST(Minnesota_OM, DefaultIsATransverseMercatorOfTheSphere) {
  TMinnesota_OMProj proj;
  double n = 0.8, e = 0;
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, 6378137 * 0.8, tolerance::kSameFormulaMetres);
  EXPECT_NEAR(e, 0, tolerance::kSameFormulaMetres);
  EXPECT_NEAR(proj.GetScale(), 1, 1e-15);
}

}  // namespace
}  // namespace zel_cs::geomath
