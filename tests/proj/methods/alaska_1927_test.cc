#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "tests/support/tolerance.h"

// The tabular zones of Alaska over a zone against our own ellipsoidal classes on Clarke 1866.
namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kClarkeA = 6378206.4, kClarkeInvF = kClarkeA / (kClarkeA - 6356583.8);
constexpr double kFoot = 1200.0 / 3937;  // US survey foot, metres

struct Factors {
  double metres, scale, radians;
};

// How far two projections and their factors part from each other over a lattice, degrees.
Factors WorstDifference(const TGeoProj& a, const TGeoProj& b, double south, double north,
                        double west, double east, bool withConvergence) {
  Factors worst{};
  for (double phi = south; phi <= north; phi += 0.5)
    for (double lambda = west; lambda <= east; lambda += 0.25) {
      double n = phi * kDegree, e = lambda * kDegree, n2 = n, e2 = e;
      PointFactors f, f2;
      a.ForwardPoint(n, e, &f);
      b.ForwardPoint(n2, e2, &f2);
      worst.metres = std::max(worst.metres, std::hypot(n - n2, e - e2));
      worst.scale = std::max(worst.scale, std::abs(f.scale - f2.scale));
      if (withConvergence)
        worst.radians = std::max(worst.radians, std::abs(f.convergence - f2.convergence));
    }
  return worst;
}

// What is left is a shift of 0.03 mm along the axis: C is printed to 1e-11.
TEST(AK01, StaysWithItsDefinition) {
  const TSPC_OM83Proj definition(kClarkeA, kClarkeInvF, -std::atan(0.75), 0.9999,
                                 -(133 + 40 / 60.0) * kDegree, 57 * kDegree, 5000000, -5000000,
                                 5001);
  const Factors worst = WorstDifference(TAK01Proj(), definition, 54, 60.5, -138, -129.5, false);
  EXPECT_LT(worst.metres, 4e-5);
  EXPECT_GT(worst.metres, 1e-6);  // the two are not one code
  EXPECT_LT(worst.scale, 1e-11);
}

// The published series are cut off and rounded otherwise than Stem's, which themselves are good to
// 0.03 mm; the published scale has one term only.
TEST(AK29, StaysWithItsDefinition) {
  const TUTMProj definition(kClarkeA, kClarkeInvF, -142 * kDegree, 0.9999, 54 * kDegree,
                            500000 * kFoot, 0);
  const Factors worst = WorstDifference(TAK29Proj(), definition, 54, 72, -145, -139, true);
  EXPECT_LT(worst.metres, 4e-5);
  EXPECT_GT(worst.metres, 1e-6);  // the two are not one code
  EXPECT_LT(worst.scale, 4e-8);
  EXPECT_LT(worst.radians, 3e-11);
}

TEST(Alaska1927, CarriesItsConstantsWhateverTheEllipsoidAndUnit) {
  TAK01Proj one;
  EXPECT_EQ(one.Zone(), 5001);
  EXPECT_EQ(one.GetParam(10, kUnitDegrees), 365450.51319);
  EXPECT_EQ(one.FEast(), 5000000.0);
  EXPECT_EQ(one.FNorth(), -5000000.0);
  double n = 1, e = -2.3, n2 = 1, e2 = -2.3;
  one.ForwardPoint(n, e);
  one.SetEllipsoid(kWgs84A, kWgs84InvF);
  one.ForwardPoint(n2, e2);
  EXPECT_EQ(n, n2);
  EXPECT_EQ(e, e2);

  const TAK29Proj seven(700000, 583200, 5007);
  EXPECT_EQ(seven.Zone(), 5007);
  EXPECT_EQ(seven.FEast(), 700000 * kFoot);
  double b = 1, l = 1, db = 0, dl = 0;
  EXPECT_TRUE(seven.GetCentralPoint(b, l, db, dl));
  EXPECT_EQ(b, 0.0);
  EXPECT_NEAR(l, -162 * kDegree, 1e-15);
}

}  // namespace
}  // namespace zel_cs::geomath
