#include "geomath/proj/methods/krovak_proj.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kFerro = (17 + 40 / 60.0) * kDeg;

TKrovakProj Bessel() {
  TKrovakProj proj;
  proj.SetEllipsoid(6377397.155, 299.1528128);
  return proj;
}

TEST(KrovakProj, PublishedPoints) {
  TKrovakProj proj = Bessel();
  // An S-JTSK point to 1 mm, and IOGP 373-07-02 (2019), whose position is rounded to 0.001″.
  ExpectPublished(proj,
                  {"S-JTSK", 48.1295270277778, 18.0431151944444, 1289068.724, 504691.675, 1e-3});
  ExpectPublished(proj, {"IOGP", 50 + 12 / 60.0 + 32.442 / 3600, 16 + 50 / 60.0 + 59.179 / 3600,
                         1050538.643, 568990.997, 0.015});
}

TEST(KrovakProj, AgreesWithHighPrecision) {
  // The formulas of EPSG method 9819 in 40 digits (mpmath); PROJ itself is 1e-6 m off them.
  constexpr double kEvaluation = 2e-9;  // metres, coordinates of 1e6 m in doubles
  TKrovakProj proj(6377397.155, 299.1528128, 49.5 * kDeg, 42.5 * kDeg, kFerro, 1.042168563804743,
                   1.3700834628155487, 0.9999, 0, 0);
  double b = 52 * kDeg, l = 24 * kDeg;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(b, 880375.347948638481, kEvaluation);
  EXPECT_NEAR(l, 57357.3678172956724, kEvaluation);
}

TEST(KrovakProj, TheCentreLiesOnTheFirstAxis) {
  TKrovakProj proj;
  double b0, l0, db, dl;
  ASSERT_TRUE(proj.GetCentralPoint(b0, l0, db, dl));
  EXPECT_NEAR(b0, 49.5 * kDeg, 1e-15);
  EXPECT_NEAR(l0, (24 + 50 / 60.0) * kDeg, 1e-15);
  ASSERT_TRUE(proj.Forward(b0, l0));
  EXPECT_NEAR(l0, 0, 1e-9);
  EXPECT_GT(b0, 1e6);
}

TEST(KrovakProj, KeepsTheFalseOriginOutOfTheCoordinates) {
  TKrovakProj proj = Bessel(), plain = Bessel();
  proj.SetParam(1000, 6, 2);
  proj.SetParam(2000, 7, 2);
  EXPECT_EQ(proj.FEast(), 1000);
  EXPECT_EQ(proj.FNorth(), 2000);
  double b = 0.87, l = 0.28, bp = b, lp = l;
  ASSERT_TRUE(proj.Forward(b, l));
  ASSERT_TRUE(plain.Forward(bp, lp));
  EXPECT_EQ(b, bp);
  EXPECT_EQ(l, lp);
}

TEST(KrovakProj, KeepsAScaleWaitingForTheNextRecomputation) {
  TKrovakProj proj = Bessel(), plain = Bessel();
  const auto north = [](const TKrovakProj& p) {
    double b = 0.87, l = 0.28;
    EXPECT_TRUE(p.ForwardPoint(b, l));
    return b;
  };
  proj.SetParam(1.0, 5, 2);
  EXPECT_EQ(proj.GetParam(5, 2), 1.0);
  EXPECT_EQ(north(proj), north(plain));
  proj.Lon0(proj.Lon0());  // longitudes recompute their own constant only
  EXPECT_EQ(north(proj), north(plain));
  proj.S0(proj.S0());
  EXPECT_NEAR(north(proj), north(plain) / 0.9999, 1e-8);

  TKrovakProj copy;  // its own scale, 0.9999, until then
  ASSERT_TRUE(copy.CopyGeoProj(&proj));
  EXPECT_EQ(copy.GetParam(5, 2), 1.0);
  EXPECT_EQ(north(copy), north(plain));
  copy.SetEllipsoid(copy.GetEllipsoid().a, copy.GetEllipsoid().invF);
  EXPECT_EQ(north(copy), north(proj));
}

TEST(KrovakProj, KeepsItsDirectionCodes) {
  TKrovakProj proj;
  EXPECT_EQ(proj.GetNEDir(), 0x81);
  EXPECT_EQ(proj.GetNEAxes(), nullptr);
  EXPECT_EQ(TKrovakProj(proj).GetNEDir(), 0x81);
  proj.SetNEAxes(L"EN");
  EXPECT_EQ(proj.GetNEDir(), 0x84);
  double b = 0.87, l = 0.28, bp = b, lp = l;  // the axes themselves follow the text
  ASSERT_TRUE(proj.Forward(b, l));
  ASSERT_TRUE(TKrovakProj().Forward(bp, lp));
  EXPECT_EQ(b, lp);
  EXPECT_EQ(l, bp);
}

TEST(KrovakProj, KeepsTheEquatorOfTheSphere) {
  // About the north pole as cone axis S is U, and U = 0 lies at ρ = ρ0·tan(S0/2 + π/4)^n. Its true
  // latitude is −11.806′ (mpmath), as that of the points beside it.
  const double S0 = 45 * kDeg, n = std::sin(S0);
  TKrovakProj proj(6377397.155, 299.1528128, 49.5 * kDeg, 0, 0, kHalfPi, S0, 1, 0, 0);
  const double equator = proj.GetEllipsoid().GetGaussianRadius(49.5 * kDeg) / std::tan(S0) *
                         std::pow(std::tan(S0 / 2 + kPi / 4), n);
  const auto latitude = [&](double rho) {
    double b = rho, l = 0;
    EXPECT_TRUE(proj.InversePoint(b, l));
    return b;
  };
  EXPECT_NEAR(latitude(equator * (1 + 1e-12)) / kDeg, -11.8059376745203 / 60, 1e-9);
  constexpr int kUlps = 8;  // our evaluation of ρ here against the library's
  double rho = equator, smallest = 1;
  for (int i = 0; i < kUlps; ++i) rho = std::nextafter(rho, 0);
  for (int i = 0; i < 2 * kUlps; ++i, rho = std::nextafter(rho, 2 * equator))
    smallest = std::min(smallest, std::abs(latitude(rho)));
  EXPECT_LE(smallest, 1e-15);
}

TEST(KrovakProj, InverseGivesUpAfterAHundredRounds) {
  // e² = 0.9998: a step gains less than two parts in a thousand.
  TKrovakProj flat(6377397.155, 1.0145, 49.5 * kDeg, 0, 0, 59.7 * kDeg, 78.5 * kDeg, 1, 0, 0);
  double n = 1e6, e = 1e5;
  EXPECT_FALSE(flat.Inverse(n, e));
  TKrovakProj earth = Bessel();
  EXPECT_TRUE(earth.Inverse(n, e));
}

}  // namespace
}  // namespace zel_cs::geomath
