#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/malaysia_cs2000_proj.h"
#include "geomath/proj/methods/malaysia_cs_proj.h"
#include "geomath/proj/methods/rso_proj.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kEverestA = 6377304.063, kEverestInvF = 300.8017;
constexpr double kChain = 20.116782494376;  // metres

TMalaysia_CSProj Johor() {
  TMalaysia_CSProj proj;
  proj.SetEllipsoid(kEverestA, kEverestInvF);
  return proj;
}

// Hand arithmetic: at the Cassini origin plus 10⁴ chains east and 2·10⁴ north the polynomial is the
// plain sum of its terms.
TEST(Malaysia_CS, AddsThePolynomialToTheMalayanGrid) {
  const TMalaysia_CSProj proj = Johor();
  TRSOProj malayan;
  malayan.SetEllipsoid(kEverestA, kEverestInvF);

  const double east =
      30745.124 + 10000 - 0.0098 - 2.0871 + 2 * 5.29886 - 0.47547 - 2 * 0.74017 - 4 * 0.64384;
  const double north =
      11227.927 + 20000 + 0.021 - 5.27113 - 2 * 1.83579 + 0.17978 + 2 * 0.58805 - 4 * 0.66614;
  double b = north * kChain, l = east * kChain;
  ASSERT_TRUE(malayan.InversePoint(b, l));
  double n = 20000 * kChain, e = 10000 * kChain;
  ASSERT_TRUE(proj.InversePoint(n, e));
  EXPECT_NEAR(n, b, 1e-15 * 4);
  EXPECT_NEAR(e, l, 1e-15 * 4);
}

// The rigorous Cassini grid of the state; the rest is the distortion of the old network.
TEST(Malaysia_CS, IsTheStatesCassiniGridWithinItsNetworksDistortion) {
  constexpr double kEast = 5, kNorthOffset = -9.5, kNorth = 3;  // metres
  const TMalaysia_CSProj proj = Johor();
  const TMalaysia_CS2000Proj cassini(kEverestA, kEverestInvF, 0, 1,
                                     (103 + 33 / 60.0 + 45.93 / 3600) * kDegree,
                                     (2 + 2 / 60.0 + 33.30 / 3600) * kDegree);
  for (double phi = 1.5; phi <= 2.3; phi += 0.1)
    for (double lambda = 103.2; lambda <= 103.8; lambda += 0.1) {
      double n = phi * kDegree, e = lambda * kDegree, n0 = n, e0 = e;
      ASSERT_TRUE(proj.ForwardPoint(n, e));
      cassini.ForwardPoint(n0, e0);
      EXPECT_NEAR(e, e0, kEast) << phi << ' ' << lambda;
      EXPECT_NEAR(n, n0 + kNorthOffset, kNorth) << phi << ' ' << lambda;
      ASSERT_TRUE(proj.InversePoint(n, e));
      EXPECT_NEAR(n, phi * kDegree, tolerance::kRoundTripRadians);
      EXPECT_NEAR(e, lambda * kDegree, tolerance::kRoundTripRadians);
    }
}

TEST(Malaysia_CS, FailsUnchangedWhereThePolynomialDoesNotSettle) {
  TMalaysia_CSProj proj = Johor();
  proj.SetParam(1e6, 6, kUnitInternal);  // the linear term outweighs the coordinate itself
  double b = 0.03, l = 1.8;
  EXPECT_FALSE(proj.ForwardPoint(b, l));
  EXPECT_EQ(b, 0.03);
  EXPECT_EQ(l, 1.8);
}

// PROJ 9.1, cass, GRS 80, origin of the state of Johor.
TEST(Malaysia_CS2000, IsCassiniWithoutFalseOrigin) {
  constexpr double kPrinted = 0.6e-4;  // metres
  TMalaysia_CS2000Proj proj(6378137, 298.257222101, 0, 0, 103.427936236111 * kDegree,
                            2.12167974444444 * kDegree);
  double n = 1.9 * kDegree, e = 103.2 * kDegree;
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, -24510.7081, kPrinted);
  EXPECT_NEAR(e, -25359.8889, kPrinted);
  EXPECT_EQ(proj.GetScale(), 1.0);
  EXPECT_EQ(proj.FEast(), 0.0);
  double b = 7, l = 7, db = 7, dl = 7;
  EXPECT_FALSE(proj.GetCentralPoint(b, l, db, dl));
  EXPECT_EQ(b, 7.0);
}

TEST(Malaysia_CS2000, ScalesAndTurnsTheGrid) {
  const double theta = 10 * kDegree, k = 0.9996;
  const TMalaysia_CS2000Proj plain(6378137, 298.257222101, 0, 1, 1.8, 0.04);
  TMalaysia_CS2000Proj turned(6378137, 298.257222101, 0, 1, 1.8, 0.04);
  turned.AxisAzimuth(theta);
  turned.Scale(k);
  double n = 0.035, e = 1.795, y = 0.035, x = 1.795;
  plain.ForwardPoint(y, x);
  turned.ForwardPoint(n, e);
  EXPECT_NEAR(n, k * (y * std::cos(theta) - x * std::sin(theta)), tolerance::kSameFormulaMetres);
  EXPECT_NEAR(e, k * (y * std::sin(theta) + x * std::cos(theta)), tolerance::kSameFormulaMetres);
  turned.InversePoint(n, e);
  EXPECT_NEAR(n, 0.035, tolerance::kRoundTripRadians);
  EXPECT_NEAR(e, 1.795, tolerance::kRoundTripRadians);
}

}  // namespace
}  // namespace zel_cs::geomath
