#include "geomath/proj/methods/ster_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;

TEST(SterProj, SnyderAppendixA) {
  // Clarke 1866, origin 40° N 100° W.
  TSterProj oblique(6378206.4, 294.9786982138982, 40 * kDeg, -100 * kDeg, 0.9999, 0, 0);
  ExpectPublished(oblique, {"oblique", 30, -90, -1063049.3, 971630.8, 0.05});
  EXPECT_NEAR(oblique.GetScale(), 1.0121248, 5e-8);

  // International ellipsoid, true scale at 71° S, meridian 100° W. Scale at the pole for that
  // parallel: mc·√((1 + e)^(1 + e)·(1 − e)^(1 − e))/(2·tc), Snyder 21-33 and 21-34, in 20 digits.
  TSterProj polar(6378388, 297, -kHalfPi, -100 * kDeg, 0.97276905424787797889, 0, 0);
  ExpectPublished(polar, {"south polar", -75, 150, -560526.4, -1540033.6, 0.05});
  EXPECT_NEAR(polar.GetScale(), 0.9896255, 1e-7);  // the source rounds its own steps
}

TEST(SterProj, PublishedPolarGrids) {
  // IOGP 373-07-02 (2019), polar stereographic variants A and B on WGS 84.
  TSterProj upsNorth(kWgs84A, kWgs84InvF, kHalfPi, 0, 0.994, 2e6, 2e6);
  ExpectPublished(upsNorth, {"UPS North", 73, 44, 632668.43, 3320416.75, 0.005});
  TSterProj antarctic(kWgs84A, kWgs84InvF, -kHalfPi, 70 * kDeg, 0.9727690128917969366, 6e6, 6e6);
  ExpectPublished(antarctic, {"Australian Antarctic", -75, 120, 7053389.56, 7255380.79, 0.005});
}

TEST(SterProj, PolarOriginComesBackAsThePole) {
  for (const double sign : {1.0, -1.0}) {
    TSterProj proj(kWgs84A, kWgs84InvF, sign * kHalfPi, 0.3, 0.994, 2e6, 1e6);
    double b = sign * kHalfPi, l = 1;
    ASSERT_TRUE(proj.Forward(b, l));
    EXPECT_EQ(b, 1e6);
    EXPECT_EQ(l, 2e6);
    ASSERT_TRUE(proj.Inverse(b, l));
    EXPECT_EQ(b, sign * kHalfPi);
    EXPECT_EQ(l, 0.3);
  }
}

TEST(SterProj, AspectFollowsEverySetter) {
  // One object led through all aspects equals a fresh one in each.
  TSterProj led;
  for (const double lat0 : {0.7, kHalfPi, 0.0, -kHalfPi, -0.3}) {
    led.Lat0(lat0);
    TSterProj built(kWgs84A, kWgs84InvF, lat0, 0, 1, 0, 0);
    double b = 0.4, l = 0.2, bb = 0.4, lb = 0.2;
    ASSERT_TRUE(led.Forward(b, l));
    ASSERT_TRUE(built.Forward(bb, lb));
    EXPECT_EQ(b, bb);
    EXPECT_EQ(l, lb);
  }
}

TEST(SterProj, FailsAtTheNorthPoleInTheObliqueAspectOnly) {
  double b = kHalfPi, l = 0;
  EXPECT_FALSE(TSterProj(kWgs84A, kWgs84InvF, 0.7, 0, 1, 0, 0).Forward(b, l));
  EXPECT_TRUE(TSterProj(kWgs84A, kWgs84InvF, 0, 0, 1, 0, 0).Forward(b, l));
  EXPECT_NEAR(b, 2 * kWgs84A, 1e-8);  // the pole of the equatorial aspect: 2·a·k0
  EXPECT_NEAR(l, 0, 1e-8);
  b = -kHalfPi;
  EXPECT_TRUE(TSterProj(kWgs84A, kWgs84InvF, 0.7, 0, 1, 0, 0).Forward(b, l));
}

TEST(SterProj, KeepsBothPolesAtTheOriginOfThePolarAspect) {
  TSterProj proj(kWgs84A, kWgs84InvF, kHalfPi, 0, 0.994, 5, 7);
  double b = -kHalfPi, l = 1;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_EQ(b, 7);
  EXPECT_EQ(l, 5);
  EXPECT_EQ(proj.GetScale(), 0);
}

TEST(SterProj, KeepsTheLongitudeFoldOfTheObliqueInverse) {
  TSterProj proj(kWgs84A, kWgs84InvF, 50 * kDeg, 10 * kDeg, 1, 0, 0);
  for (const double away : {-120.0, -89.0, 89.0, 91.0, 170.0}) {
    double b = 0.9, l = (10 + away) * kDeg;
    ASSERT_TRUE(proj.Forward(b, l));
    ASSERT_TRUE(proj.Inverse(b, l));
    EXPECT_NEAR(b, 0.9, 1e-14);
    const double folded = std::abs(away) < 90 ? away : away - std::copysign(180, away);
    EXPECT_NEAR(l, (10 + folded) * kDeg, 1e-14) << away;
  }
}

TEST(SterProj, KeepsALatitudeBeyondThePoleAsItsSupplement) {
  TSterProj proj(kWgs84A, kWgs84InvF, 50 * kDeg, 10 * kDeg, 1, 0, 0);
  double b = 100 * kDeg, l = 0.3, bs = 80 * kDeg, ls = 0.3;
  ASSERT_TRUE(proj.Forward(b, l));
  ASSERT_TRUE(proj.Forward(bs, ls));
  EXPECT_NEAR(b, bs, tolerance::kSameFormulaMetres);
  EXPECT_NEAR(l, ls, tolerance::kSameFormulaMetres);
}

}  // namespace
}  // namespace zel_cs::geomath
