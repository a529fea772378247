#include "geomath/proj/methods/mercator_proj.h"

#include <gtest/gtest.h>

#include "geomath/base/angle.h"
#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// IOGP 373-07-02, method 9805: Caspian Sea, Krassovsky, true scale at 42°, printed to 1 cm.
TEST(Mercator, CaspianSeaExample) {
  TMercatorProj caspian(6378245, 298.3, 51 * kDegree, 42 * kDegree, 0, 0);
  ExpectBothWays(caspian, {53, 53, 5171848.07, 165704.29}, 0.0051, 0.0101);
}

// Snyder 1987, appendix A, ellipsoidal Mercator: Clarke 1866, 180° W, printed to 0.1 m.
TEST(Mercator, SnydersExample) {
  TMercatorProj proj(6378206.4, 294.978698214, -kPi, 0, 0, 0);
  ExpectBothWays(proj, {35, -75, 4139145.6, 11688673.7}, 0.11, 0.11);
  double b = 35 * kDegree, l = -75 * kDegree;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(proj.GetScale(), 1.2194146, 6e-8);
  EXPECT_EQ(proj.GetConvergence(), 0);
}

TEST(Mercator, PolesHaveNoImage) {
  const TMercatorProj proj;
  for (double phi : {kHalfPi, -kHalfPi, 2.0, -3.0}) {
    double b = phi, l = 0.5;
    EXPECT_FALSE(proj.ForwardPoint(b, l));
    EXPECT_EQ(b, phi);
    EXPECT_EQ(l, 0.5);
  }
  double n = 1e9, e = 0;  // far beyond any latitude
  EXPECT_TRUE(proj.InversePoint(n, e));
  EXPECT_NEAR(n, kHalfPi, 1e-15);
}

}  // namespace
}  // namespace zel_cs::geomath
