#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/ak01_proj.h"
#include "geomath/proj/methods/ak29_proj.h"
#include "geomath/proj/methods/spc_om83_proj.h"
#include "geomath/proj/methods/utm_proj.h"
#include "tests/support/tolerance.h"

// The tabular zones of Alaska: against PROJ's ellipsoidal values, and over a zone against our own
// ellipsoidal classes on Clarke 1866.
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

// PROJ 9.1, omerc on Clarke 1866 with the registries' rounded azimuth, 0.9 mm away for that reason.
TEST(AK01, AgreesWithTheRegistrysZone) {
  constexpr double kRoundedAzimuth = 0.001;  // metres
  TAK01Proj proj;
  double n = 58.3 * kDegree, e = -134.4 * kDegree;
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, 720222.2105, kRoundedAzimuth);
  EXPECT_NEAR(e, 775579.6654, kRoundedAzimuth);
}

// What is left, 0.03 mm, comes from the published constants (11 digits of C, 12 of B, D and Lon0).
TEST(AK01, StaysWithItsDefinition) {
  const TSPC_OM83Proj definition(kClarkeA, kClarkeInvF, -std::atan(0.75), 0.9999,
                                 -(133 + 40 / 60.0) * kDegree, 57 * kDegree, 5000000, -5000000,
                                 5001);
  const Factors worst = WorstDifference(TAK01Proj(), definition, 54, 60.5, -138, -129.5, false);
  EXPECT_LT(worst.metres, 4e-5);
  EXPECT_GT(worst.metres, 1e-6);  // the two are not one code
  EXPECT_LT(worst.scale, 1e-11);
}

TEST(AK01, RoundTripsAndStoresTheSameFactorsBothWays) {
  constexpr double kRoundTrip = 1e-12;  // radians; 5e-13 measured, the published latitude series
  const TAK01Proj proj;
  for (double phi = 54; phi <= 61; phi += 0.5)
    for (double lambda = -141; lambda <= -129; lambda += 0.5) {
      double b = phi * kDegree, l = lambda * kDegree;
      PointFactors forward, inverse;
      proj.ForwardPoint(b, l, &forward);
      proj.InversePoint(b, l, &inverse);
      ASSERT_NEAR(b, phi * kDegree, kRoundTrip);
      ASSERT_NEAR(l, lambda * kDegree, kRoundTrip);
      ASSERT_NEAR(inverse.scale, forward.scale, kRoundTrip * 5);
      ASSERT_NEAR(inverse.convergence, forward.convergence, kRoundTrip * 5);
    }
}

// The grid direction of true north, by differences, is the negative convergence.
TEST(AK01, StoresTheConvergence) {
  constexpr double h = 1e-6, kDifference = 1e-9;  // radians; 2e-10 measured
  const TAK01Proj proj;
  for (const double lambda : {-139.0, -133.0, -130.0}) {
    double n = 57 * kDegree, e = lambda * kDegree, n1 = n + h, e1 = e, n0 = n - h, e0 = e;
    PointFactors factors;
    proj.ForwardPoint(n, e, &factors);
    proj.ForwardPoint(n1, e1);
    proj.ForwardPoint(n0, e0);
    EXPECT_NEAR(std::atan2(e1 - e0, n1 - n0), -factors.convergence, kDifference);
  }
}

TEST(AK01, IgnoresTheEllipsoidAndReportsItsZone) {
  TAK01Proj proj;
  EXPECT_EQ(proj.Zone(), 5001);
  EXPECT_EQ(proj.GetParam(10, kUnitDegrees), 365450.51319);
  EXPECT_EQ(proj.FEast(), 5000000.0);
  EXPECT_EQ(proj.FNorth(), -5000000.0);
  double n = 1, e = -2.3, n2 = 1, e2 = -2.3;
  proj.ForwardPoint(n, e);
  proj.SetEllipsoid(kWgs84A, kWgs84InvF);
  proj.ForwardPoint(n2, e2);
  EXPECT_EQ(n, n2);
  EXPECT_EQ(e, e2);
}

// PROJ 9.1, tmerc on Clarke 1866.
TEST(AK29, ReproducesPROJToTheDigitsShown) {
  struct Row {
    double C, cm;
    int zone;
    double phi, lambda, north, east;
  };
  constexpr Row kRows[] = {
      {500000, 511200, 5002, 62.0, -141.2, 891198.9053, 194315.6240},
      {700000, 583200, 5007, 62.5, -161.4, 946804.7038, 244280.7704},
  };
  constexpr double kPrinted = 0.6e-4;  // metres
  for (const Row& row : kRows) {
    TAK29Proj proj(row.C, row.cm, row.zone);
    double n = row.phi * kDegree, e = row.lambda * kDegree;
    ASSERT_TRUE(proj._Forward(n, e));
    EXPECT_NEAR(n, row.north, kPrinted);
    EXPECT_NEAR(e, row.east, kPrinted);
    EXPECT_EQ(proj.Zone(), row.zone);
    EXPECT_EQ(proj.FEast(), row.C * kFoot);
  }
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

TEST(AK29, RoundTripsAndStoresTheSameFactorsBothWays) {
  constexpr double kRoundTrip = 0.1e-3;  // metres; 0.08 mm measured within 2° of the meridian
  constexpr double kEarth = 6.37e6;
  const TAK29Proj proj;
  for (double phi = 54; phi <= 72; phi += 1)
    for (double lambda = -144; lambda <= -140; lambda += 0.5) {
      double b = phi * kDegree, l = lambda * kDegree;
      PointFactors forward, inverse;
      proj.ForwardPoint(b, l, &forward);
      proj.InversePoint(b, l, &inverse);
      ASSERT_NEAR(b * kEarth, phi * kDegree * kEarth, kRoundTrip);
      ASSERT_NEAR(l * kEarth * std::cos(b), lambda * kDegree * kEarth * std::cos(b), kRoundTrip);
      ASSERT_NEAR(inverse.scale, forward.scale, 1e-11);
      ASSERT_NEAR(inverse.convergence, forward.convergence, 1e-11);
    }
}

TEST(AK29, ReportsItsMeridian) {
  double b = 1, l = 1, db = 0, dl = 0;
  EXPECT_TRUE(TAK29Proj().GetCentralPoint(b, l, db, dl));
  EXPECT_EQ(b, 0.0);
  EXPECT_NEAR(l, -142 * kDegree, 1e-15);
}

}  // namespace
}  // namespace zel_cs::geomath
