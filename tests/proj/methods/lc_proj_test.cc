#include "geomath/proj/methods/lc_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kClarke1866A = 6378206.4, kClarke1866InvF = 294.9786982138982;
constexpr double kFoot = 1200.0 / 3937;  // US survey foot, metres

// Snyder 1987, appendix A: Clarke 1866, parallels 33° and 45°, origin 23° N 96° W.
TLCProj Snyder() {
  return {kClarke1866A, kClarke1866InvF, 33 * kDeg, 45 * kDeg, -96 * kDeg, 23 * kDeg, 0, 0, 1};
}
constexpr double kSnyderB = 35 * kDeg, kSnyderL = -75 * kDeg;

TEST(LCProj, SnyderAppendixA) {
  TLCProj proj = Snyder();
  ExpectPublished(proj, {"Snyder", 35, -75, 1564649.5, 1894410.9, 0.05});
  double b = kSnyderB, l = kSnyderL;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(proj.GetScale(), 0.9970171, 5e-8);
  EXPECT_NEAR(proj.ConeConstant(), 0.6304965, 5e-8);
}

TEST(LCProj, PublishedGrids) {
  // IOGP 373-07-02 (2019): Jamaica (one parallel) and Texas South Central 1927 in feet.
  TLCProj jamaica(kClarke1866A, kClarke1866InvF, 18 * kDeg, 18 * kDeg, -77 * kDeg, 18 * kDeg,
                  250000, 150000, 1);
  ExpectPublished(jamaica, {"JAD69", 17 + 55 / 60.0 + 55.80 / 3600,
                            -(76 + 56 / 60.0 + 37.26 / 3600), 142493.51, 255966.58, 0.005});
  TLCProj texas(kClarke1866A, kClarke1866InvF, (28 + 23 / 60.0) * kDeg, (30 + 17 / 60.0) * kDeg,
                -99 * kDeg, (27 + 50 / 60.0) * kDeg, 2000000 * kFoot, 0, 1);
  ExpectPublished(texas, {"Texas", 28.5, -96, 254759.80 * kFoot, 2963503.91 * kFoot, 0.0016});

  // National Geographic Institute, Belgium, official test points; the origin is the north pole.
  TLCProj belgium(6378388, 297, 49.8333339 * kDeg, 51.1666672333333 * kDeg, 4.3674866666667 * kDeg,
                  kHalfPi, 150000.013, 5400088.438, 1);
  for (const PublishedPoint& point : {
           PublishedPoint{"IGN-1", 51.3109691166667, 3.1676153305556, 222966.00, 66333.00, 0.005},
           PublishedPoint{"IGN-2", 51.1363218444444, 5.4632662333333, 203425.00, 226696.00, 0.005},
           PublishedPoint{"IGN-3", 50.4992060527778, 4.0505547138889, 132032.00, 127514.00, 0.005},
       })
    ExpectPublished(belgium, point);
}

// The formulas written out in 40 digits (mpmath).
constexpr double kEvaluation = 1e-8;  // metres, coordinates of 2e6 m in doubles

TEST(LCProj, FailsAtThePolesOnly) {
  TLCProj proj = Snyder();
  for (const double pole : {kHalfPi, -kHalfPi}) {
    double b = pole, l = 0.3;
    EXPECT_FALSE(proj.Forward(b, l));
    EXPECT_EQ(b, pole);
    EXPECT_EQ(l, 0.3);
  }
  double b = kHalfPi - 1e-12, l = -96 * kDeg;
  ASSERT_TRUE(proj.Forward(b, l));
  double apex = 89 * kDeg, other = -96 * kDeg;
  ASSERT_TRUE(proj.Forward(apex, other));
  EXPECT_GT(b, apex);
  EXPECT_NEAR(l, 0, 1e-6);
}

TEST(LCProj, KeepsOldSinesInTypedSetters) {
  const auto expect = [](const TLCProj& proj, double north, double east, double scale) {
    double b = kSnyderB, l = kSnyderL;
    PointFactors factors;
    ASSERT_TRUE(proj.ForwardPoint(b, l, &factors));
    EXPECT_NEAR(b, north, kEvaluation);
    EXPECT_NEAR(l, east, kEvaluation);
    EXPECT_NEAR(factors.scale, scale, 1e-14);
  };
  TLCProj typed = Snyder(), set = Snyder(), one = Snyder();
  typed.NorthLat(47 * kDeg);
  expect(typed, 1520448.096760747, 1907219.37961302, 1.0011662863982669);
  set.SetParam(47, 1, 3);
  expect(set, 1570841.456456389, 1892549.8397835392, 0.99643523827695952);
  // Equal parallels take the sine that is kept, that of 45°.
  one.SouthLat(40 * kDeg);
  one.NorthLat(40 * kDeg);
  expect(one, 1500853.4913769612, 1768756.0746062291, 0.93303262683269463);
}

TEST(LCProj, KeepsTheOldOriginSineInTheInverse) {
  TLCProj typed = Snyder(), set = Snyder();
  typed.Lat0(30 * kDeg);
  set.SetParam(30 * kDeg, 3, 2);
  double b = kSnyderB, l = kSnyderL, bs = kSnyderB, ls = kSnyderL;
  ASSERT_TRUE(typed.Forward(b, l));
  ASSERT_TRUE(set.Forward(bs, ls));
  EXPECT_EQ(b, bs);
  EXPECT_NEAR(b, 775007.50582573845, kEvaluation);

  // The inverse counts northings from an origin that lies 4120.46 m off.
  constexpr double kOriginShift = 4120.4631077484778;
  double shifted = b - kOriginShift, east = l;
  ASSERT_TRUE(typed.Inverse(shifted, east));
  EXPECT_NEAR(shifted, kSnyderB, 1e-14);
  EXPECT_NEAR(east, kSnyderL, 1e-14);
}

TEST(LCProj, KeepsThePolarAngleGoingEastBehindTheApex) {
  // n = sin 45°: 170° west of the origin is 120° at the apex.
  TLCProj proj(6378137, 298.257222101, 45 * kDeg, 45 * kDeg, 0, 0, 0, 0, 1);
  const double n = std::sin(45 * kDeg);
  for (const double lonDeg : {-170.0, -130.0, -120.0, 130.0, 170.0}) {
    double b = 0.5, l = lonDeg * kDeg;
    ASSERT_TRUE(proj.Forward(b, l));
    ASSERT_TRUE(proj.Inverse(b, l));
    EXPECT_NEAR(b, 0.5, 1e-14);
    EXPECT_NEAR(l, lonDeg * kDeg + (lonDeg * n < -90 ? kTwoPi / n : 0), 1e-14) << lonDeg;
  }
}

TEST(LCProj, ParallelsOnTheEquatorAreNotFinite) {
  TLCProj proj(6378137, 298.257222101, 0, 0, 0, 0, 0, 0, 1);
  double b = 0.5, l = 0.1;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_FALSE(std::isfinite(b));
  double n = 1e6, e = 1e5;
  ASSERT_TRUE(proj.Inverse(n, e));
  EXPECT_FALSE(std::isfinite(e));
}

TEST(LCProj, CentralPoint) {
  double b0, l0, db, dl;
  ASSERT_TRUE(Snyder().GetCentralPoint(b0, l0, db, dl));
  EXPECT_EQ(b0, 23 * kDeg);
  EXPECT_EQ(l0, -96 * kDeg);
  EXPECT_EQ(db, kPi);
  EXPECT_EQ(dl, 1.5707953267948966);
}

}  // namespace
}  // namespace zel_cs::geomath
