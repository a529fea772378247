#include "geomath/proj/methods/tm27_proj.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "geomath/proj/methods/denmark_tm_proj.h"
#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kFoot = 1200.0 / 3937;
constexpr double kA = 6378206.4, kInvF = 294.978698213898;  // Clarke 1866

// Zone constants as published (Claire 1968), and the origin they stand for.
struct Zone {
  const char* name;
  double L1, L2, L34, L5, L6;
  double lat0;  // degrees
};
constexpr Zone kZones[] = {
    {"101 Alabama East", 500000, 309000, 109341.00903, 0.99996, 0.3817065, 30.5},
    {"2900 New Jersey", 2000000, 268800, 139287.02745, 0.9999750295, 0.3810845, 38 + 50.0 / 60},
    {"1801 Maine East", 500000, 246600, 157275.15187, 0.9999, 0.3806180, 43 + 50.0 / 60},
};

TTM27Proj Make(const Zone& z) { return {z.L1, z.L2, z.L34, z.L5, z.L6, 101}; }

// PROJ 9.1.1, ellipsoidal transverse Mercator on Clarke 1866, within 0.4° of the meridian. New
// Jersey's printed L34 lies 4.6 mm north of 38°50'.
TEST(TM27, PublishedZonesNearTheirMeridian) {
  constexpr double kMethod = 1.2e-3, kOrigin = 4.6e-3;
  TTM27Proj alabama = Make(kZones[0]);
  ExpectBothWays(alabama, {32.2, -86.1, 188505.70423, 127257.41142}, kMethod, kMethod);
  TTM27Proj jersey = Make(kZones[1]);
  ExpectBothWays(jersey, {40.2, -74.9, 151754.16199 - kOrigin, 589734.20141}, kMethod, kMethod);
}

// Snyder 1987, appendix A, ellipsoidal transverse Mercator: Clarke 1866, 75° W, scale 0.9996, from
// the equator; printed to 0.1 m, 1.5° from the meridian, where the tabular method is 0.13 m off.
TEST(TM27, SnydersExample) {
  TTM27Proj proj(0, 270000, 0, 0.9996, 0.38134, 0);
  ExpectBothWays(proj, {40.5, -73.5, 4484124.4, 127106.5}, 0.2, 0.2);
  double b = 40.5 * kDegree, l = -73.5 * kDegree;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(proj.GetScale(), 0.9997989, 1e-7);
}

// Against the rigorous projection (exact to 1 µm here; see DenmarkTM) with the difference at a
// zone's origin taken off: 1 mm within half a degree, 23 mm within one, 0.4 m within two. The upper
// figures are the accuracy to expect, the lower ones hold the method itself.
TEST(TM27, KeepsTheDepartureOfTheTabularMethod) {
  constexpr struct {
    double degrees, least, most;
  } kDeparture[] = {{0.5, 5e-4, 1.5e-3}, {1, 1.2e-2, 2.4e-2}, {2, 0.2, 0.42}};
  for (const Zone& z : kZones) {
    SCOPED_TRACE(z.name);
    const TTM27Proj proj = Make(z);
    const TDenmarkTMProj exact(kA, kInvF, -z.L2 / 3600 * kDegree, z.L5, z.lat0 * kDegree,
                               z.L1 * kFoot, 0);
    const auto departure = [&](double lat, double dLon) {
      double n = lat * kDegree, e = (-z.L2 / 3600 + dLon) * kDegree, nExact = n, eExact = e;
      EXPECT_TRUE(proj.ForwardPoint(n, e) && exact.ForwardPoint(nExact, eExact));
      return std::pair{n - nExact, e - eExact};
    };
    const double atOrigin = departure(z.lat0, 0).first;
    EXPECT_LT(std::abs(atOrigin), 5e-3);
    for (const auto& d : kDeparture) {
      double worst = 0;
      for (double lat = z.lat0; lat < z.lat0 + 4; lat += 0.5) {
        const auto [dN, dE] = departure(lat, -d.degrees);
        worst = std::max(worst, std::hypot(dN - atOrigin, dE));
      }
      EXPECT_GT(worst, d.least) << d.degrees;
      EXPECT_LT(worst, d.most) << d.degrees;
    }
  }
}

TEST(TM27, RoundTripFigures) {
  constexpr struct { double degrees, metres; } kPromised[] = {{1, 1e-3}, {2, 4e-3}};
  for (const Zone& z : kZones) {
    const TTM27Proj proj = Make(z);
    for (const auto& [degrees, metres] : kPromised) {
      for (double lat = z.lat0 - 1; lat < z.lat0 + 5; lat += 0.5) {
        const double phi = lat * kDegree, lambda = (-z.L2 / 3600 + degrees) * kDegree;
        double b = phi, l = lambda;
        ASSERT_TRUE(proj.ForwardPoint(b, l) && proj.InversePoint(b, l));
        EXPECT_LT(kA * std::hypot(b - phi, (l - lambda) * std::cos(phi)), metres) << z.name << lat;
      }
    }
  }
}

TEST(TM27, KeepsItsBuiltInEllipsoid) {
  TTM27Proj proj = Make(kZones[0]), other = proj;
  EXPECT_NEAR(proj.GetEllipsoid().b, 6356583.8, 1e-8);
  other.SetEllipsoid(6378137, 298.257222101);
  EXPECT_EQ(other.GetEllipsoid().a, 6378137);
  double n = 0.56, e = -1.5, n1 = n, e1 = e;
  ASSERT_TRUE(proj.Forward(n, e) && other.Forward(n1, e1));
  EXPECT_EQ(n, n1);
  EXPECT_EQ(e, e1);
}

TEST(TM27, ParametersArePlainNumbersInEveryUnit) {
  TTM27Proj proj;
  EXPECT_EQ(proj.GetParam(3, 2), 1.0);
  for (int i = 0; i < proj.GetQParam(); ++i) {
    proj.SetParam(100 + i, i, 3);
    EXPECT_EQ(proj.GetParam(i, 2), 100 + i);
  }
  EXPECT_EQ(proj.Zone(), 105);
  EXPECT_NEAR(proj.FEast(), 100 * kFoot, 1e-14);
  double b0, l0, db, dl;
  ASSERT_TRUE(proj.GetCentralPoint(b0, l0, db, dl));
  EXPECT_NEAR(l0, -101 / 3600.0 * kDegree, 1e-18);
  proj.SetParam(1e300, 5, 2);
  EXPECT_EQ(proj.Zone(), 0);
}

}  // namespace
}  // namespace zel_cs::geomath
