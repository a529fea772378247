#include "geomath/proj/methods/denmark_tm_proj.h"

#include <gtest/gtest.h>

#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// Exact transverse Mercator: the complex latitude of ψ + i·Δλ put into the meridian arc, evaluated
// with 50 digits (mpmath). The last column is what the class's comment promises of the forward
// direction there.
TEST(DenmarkTM, AgreesWithTheExactProjectionOverItsDomain) {
  constexpr double kInverse = 4e-6;
  constexpr struct {
    WorkedExample point;
    double metres;
  } kExact[] = {
      {{55.7, 12.5, 6178379.101669601, 719936.1319650434}, 3e-6},
      {{0, 15, 0, 1168908.046416077}, 3e-6},
      {{-33, 29, -3834945.70223731, 2383648.859875704}, 3e-6},
      {{20, 39, 2523131.834970152, 3752954.860792598}, 1e-5},
      {{-46, 62, -6637501.951977707, 4493386.354470776}, 2e-5},
      {{70, 98, 9957668.996383465, 2778554.218292146}, 1e-5},
      {{28, 57, 4266150.640726579, 5516898.048904384}, 8e-5},
      {{0.5, 51.5, 75171.7734900979, 5738550.933340961}, 8e-5},
  };
  TDenmarkTMProj utm32(6378388, 297, 9 * kDegree, 0.9996, 0, 500000, 0);
  for (const auto& [point, metres] : kExact) ExpectBothWays(utm32, point, metres, kInverse);

  TDenmarkTMProj withOrigin(6378137, 298.257222101, 15 * kDegree, 0.9999, 54.5 * kDegree, 900000,
                            -100000);
  ExpectBothWays(withOrigin, {55.1, 14.9, -33210.20749445367, 893617.152198479}, 3e-6, kInverse);
}

// Lantmäteriet, worked example of the Gauss conformal projection, 10.4° from the central meridian;
// BKG, BETA2007 test data, UTM zone 32. Both print 1e-6 m.
TEST(DenmarkTM, PublishedExamples) {
  constexpr double kPrinted = 1.5e-6;
  TDenmarkTMProj sweden(6378137, 298.257222101, 13.58547 * kDegree, 1.00000254, 0, 84182.879,
                        -6226307.864);
  ExpectBothWays(sweden, {66, 24, 1135809.413803, 555304.016555}, kPrinted, 4e-6);
  TDenmarkTMProj utm32(6378137, 298.257222101, 9 * kDegree, 0.9996, 0, 500000, 0);
  ExpectBothWays(utm32, {49.3322507794070, 7.5325036169860, 5465427.351346, 393381.121595},
                 kPrinted, 4e-6);
}

TEST(DenmarkTM, FailsBeyondTheInnerLimit) {
  const TDenmarkTMProj proj(6378137, 298.257222101, 0, 1, 0, 0, 0);
  const auto converts = [&](double lat, double lon) {
    double b = lat * kDegree, l = lon * kDegree;
    const bool done = proj.ForwardPoint(b, l);
    if (!done) {  // the arguments stay
      EXPECT_EQ(b, lat * kDegree);
      EXPECT_EQ(l, lon * kDegree);
    }
    return done;
  };
  EXPECT_TRUE(converts(0, 42.99));
  EXPECT_FALSE(converts(0, -43.01));
  EXPECT_TRUE(converts(30, -51.8));
  EXPECT_FALSE(converts(30, 52));
  EXPECT_TRUE(converts(47.1, 90));
  EXPECT_FALSE(converts(0, 90));

  const double Qn = 6378137 / 1.0016792203946287 * 1.00000070495;  // a/(1 + n)·(1 + n²/4 + n⁴/64)
  double n = 1e6, e = Qn * 0.834996;
  EXPECT_TRUE(proj.InversePoint(n, e));
  n = 1e6;
  e = -Qn * 0.834998;
  EXPECT_FALSE(proj.InversePoint(n, e));
  EXPECT_EQ(n, 1e6);
  EXPECT_EQ(e, -Qn * 0.834998);
}

// Towards the far poles, the ends of the equator 90° aside, the series leaves its bounds and returns:
// a world of points is either where the spherical transverse Mercator says, in outline, or refused.
TEST(DenmarkTM, RefusesTheSurroundingsOfTheFarPoles) {
  constexpr double kOutline = 0.01;  // of the coordinates: the flattening moves a point by e²
  const TDenmarkTMProj proj(6378137, 298.257222101, 0, 1, 0, 0, 0);
  for (int i = -450; i <= 450; i += 2)
    for (int j = 450; j <= 1350; j += 3) {
      const double phi = i * 0.1 * kDegree, lambda = j * 0.1 * kDegree;
      double n = phi, e = lambda;
      if (!proj.ForwardPoint(n, e)) continue;
      const double north = std::atan2(std::tan(phi), std::cos(lambda));
      const double east = std::atanh(std::cos(phi) * std::sin(lambda));
      ASSERT_NEAR(n / 6378137, north, 3 * kOutline) << i << ' ' << j;
      ASSERT_NEAR(e / 6378137, east, kOutline) << i << ' ' << j;
    }
  double n = -3 * kDegree, e = 91 * kDegree;
  EXPECT_FALSE(proj.ForwardPoint(n, e));
}

// Constants follow every change, and a host's subclass reaches Init.
TEST(DenmarkTM, EverySetterRefreshesTheConstants) {
  struct Host : TDenmarkTMProj {
    using TDenmarkTMProj::Init;
    using TDenmarkTMProj::TDenmarkTMProj;
  };
  Host set;
  set.SetEllipsoid(6378388, 297);
  set.CM(0.1);
  set.Scale(0.9996);
  set.Lat0(0.9);
  set.FEast(5e5);
  set.FNorth(-1e5);
  TDenmarkTMProj built(6378388, 297, 0.1, 0.9996, 0.9, 5e5, -1e5);
  for (int again = 0; again < 2; ++again) {
    double n = 0.95, e = 0.15, nBuilt = n, eBuilt = e;
    ASSERT_TRUE(set.Forward(n, e));
    ASSERT_TRUE(built.Forward(nBuilt, eBuilt));
    EXPECT_EQ(n, nBuilt);
    EXPECT_EQ(e, eBuilt);
    set.Init();
  }
}

}  // namespace
}  // namespace zel_cs::geomath
