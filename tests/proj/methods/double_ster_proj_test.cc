#include "geomath/proj/methods/double_ster_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/datum/datum.h"
#include "geomath/proj/methods/rd_proj.h"
#include "geomath/proj/methods/rd_trans_proj.h"
#include "geomath/proj/methods/romania_ster.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kBesselA = 6377397.155, kBesselInvF = 299.1528128;
constexpr double kAmersfoortLat = (52 + 9 / 60.0 + 22.178 / 3600) * kDeg;
constexpr double kAmersfoortLon = (5 + 23 / 60.0 + 15.500 / 3600) * kDeg;
constexpr double kRdScale = 0.9999079;

TDoubleSter Rd() {
  return {kBesselA, kBesselInvF, kAmersfoortLat, kAmersfoortLon, kRdScale, 155000, 463000};
}

TEST(DoubleSterProj, PublishedDutchPoints) {
  // IOGP 373-07-02 (2019), and the definition of the grid.
  TDoubleSter proj = Rd();
  ExpectPublished(proj, {"IOGP", 53, 6, 557057.739, 196105.283, 5e-4});
  ExpectPublished(proj, {"centre", 52 + 9 / 60.0 + 22.178 / 3600, 5 + 23 / 60.0 + 15.500 / 3600,
                         463000, 155000, 1e-8});
  TRDProj rd(kBesselA, kBesselInvF, kAmersfoortLat, kAmersfoortLon, 155000, 463000);
  ExpectPublished(rd, {"IOGP", 53, 6, 557057.739, 196105.283, 5e-4});
}

// NSGI, RDNAPTRANS2018 self-validation points outside the correction grid (CC BY 4.0): ETRS89
// position and official RD coordinates. The official chain takes a height of 43 m at every point.
struct RdPoint {
  double latDeg, lonDeg, east, north;
};
constexpr RdPoint kRdPoints[] = {
    {51.496640261, 0.881387960, -157753.7570, 399407.0275},
    {49.828589647, -0.445813615, -264527.8795, 220770.9392},
    {55.245569691, 1.475757483, -93845.6126, 813861.8000},
    {49.751517976, 2.215065082, -73631.0490, 200501.7392},
    {56.537120329, 3.961456292, 67164.5957, 951842.1381},
    {50.643852194, 9.000000000, 410498.0178, 301160.5755},
    {66.823238300, 11.807815363, 441349.7385, 2119801.1655},
};

TEST(DoubleSterProj, OfficialChainFromEtrs89ToRd) {
  constexpr double kOfficialHeight = 43;
  constexpr double kPublished = 2.5e-4;  // positions are printed to 0.1 mm and 1e-9 degree
  Ellipsoid grs80 = MakeEllipsoid(6378137, 298.257222101);
  Ellipsoid bessel = MakeEllipsoid(kBesselA, kBesselInvF);
  const Datum rd(&bessel, 565.7381, 50.4018, 465.2904, 0.395026, -0.330772, 1.876074, 4.07244e-6,
                 userTypeUser, nullptr);
  TDoubleSter proj = Rd();
  for (const RdPoint& point : kRdPoints) {
    double x = point.latDeg * kDeg, y = point.lonDeg * kDeg, z = kOfficialHeight;
    ASSERT_TRUE(grs80.BLH_to_XYZ(x, y, z));
    ASSERT_TRUE(rd.ToLocalDatum(x, y, z));
    ASSERT_TRUE(bessel.XYZ_to_BLH(x, y, z));
    ASSERT_TRUE(proj.Forward(x, y));
    EXPECT_NEAR(std::hypot(x - point.north, y - point.east), 0, kPublished)
        << point.latDeg << " " << point.lonDeg;
  }
}

TEST(DoubleSterProj, KeepsTheOriginRadiusInTheScale) {
  // The true scale is the stored one times ν(φ0)/ν(φ): equal on the parallel of origin.
  TDoubleSter proj = Rd();
  const Ellipsoid& ell = proj.GetEllipsoid();
  const auto nu = [&](double phi) {
    return ell.a / std::sqrt(1 - ell.e2 * std::sin(phi) * std::sin(phi));
  };
  for (const double phi : {kAmersfoortLat, 20 * kDeg, 80 * kDeg}) {
    double k = 0;
    ASSERT_TRUE(proj.GetBLScale(k, phi, 0.3));
    constexpr double kStep = 1e-5;
    constexpr double kNumeric = 2e-9;  // second-order differences over 64 m
    double nW = phi, eW = 0.3 - kStep, nE = phi, eE = 0.3 + kStep;
    ASSERT_TRUE(proj.Forward(nW, eW));
    ASSERT_TRUE(proj.Forward(nE, eE));
    const double numeric = std::hypot(nE - nW, eE - eW) / (2 * kStep * nu(phi) * std::cos(phi));
    EXPECT_NEAR(k * nu(kAmersfoortLat) / nu(phi) / numeric, 1, kNumeric) << phi;
  }
}

TEST(DoubleSterProj, KeepsLongitudesUnfolded) {
  TDoubleSter proj(kBesselA, kBesselInvF, -0.7, 179 * kDeg, 1, 0, 0);
  double b = -0.7, l = -179 * kDeg, b2 = -0.7, l2 = 181 * kDeg;
  ASSERT_TRUE(proj.Forward(b, l));
  ASSERT_TRUE(proj.Forward(b2, l2));
  EXPECT_GT(std::abs(l - l2), 1000);  // one turn is not a multiple of 2π on the sphere
  ASSERT_TRUE(proj.Inverse(b2, l2));
  EXPECT_NEAR(l2, 181 * kDeg, 1e-14);
}

TEST(RomaniaSter, Stereo70) {
  // Constants and point by the formulas of EPSG method 9809 and PROJ sterea; Krassovsky 1940.
  TRomaniaSter proj(6378245, 298.3, 46 * kDeg, 25 * kDeg, 0.99975, 500000, 500000);
  ExpectPublished(proj, {"44.4 N 26.1 E", 44.4, 26.1, 322809.7291, 587627.1260, 5e-5});
  // Double stereographic of the national test points on GRS 80, PROJ and an independent program.
  TRomaniaSter grs80(6378137, 298.257222101, 46 * kDeg, 25 * kDeg, 0.99975, 500000, 500000);
  for (const PublishedPoint& point :
       {PublishedPoint{"P1", 47.715666666667, 22.475555550000, 693739.1380, 310602.9167, 1.5e-4},
        PublishedPoint{"P4", 45.088388891667, 27.706666663889, 402296.8585, 713023.0038, 1.5e-4},
        PublishedPoint{"P6", 43.743666663889, 25.230027780556, 249311.9569, 518531.4143, 1.5e-4}})
    ExpectPublished(grs80, point);
}

TEST(RomaniaSter, KeepsTheKindOfTheDefaultObject) {
  EXPECT_EQ(TRomaniaSter().GetType(), ProjTypeDoubleSter);
  EXPECT_EQ(TRomaniaSter(6378245, 298.3, 0, 0, 1, 0, 0).GetType(), ProjTypeRomaniaSter);
}

// The classical series of the Dutch grid (Heuvelink's projection as published by the Kadaster), an
// equivalent form for exactly these parameters.
void DutchSeries(double latDeg, double lonDeg, double& x, double& y) {
  const double p = 0.36 * (latDeg - kAmersfoortLat / kDeg);
  const double l = 0.36 * (lonDeg - kAmersfoortLon / kDeg);
  const double p2 = p * p, p3 = p2 * p, p4 = p2 * p2, l2 = l * l, l3 = l2 * l, l4 = l2 * l2;
  x = 155000 + 190066.98903 * l - 11830.85831 * p * l - 114.19754 * p2 * l - 32.38360 * l3 -
      2.34078 * p3 * l - 0.60639 * p * l3 + 0.15774 * p2 * l3 - 0.04158 * p4 * l - 0.00661 * l4 * l;
  y = 463000 + 309020.31810 * p + 3638.36193 * l2 - 157.95222 * p * l2 + 72.97141 * p2 +
      59.79734 * p3 - 6.43481 * p2 * l2 + 0.09351 * l4 - 0.07379 * p3 * l2 - 0.05419 * p * l4 -
      0.03444 * p4;
}

TEST(RDProj, AgreesWithTheNationalSeries) {
  constexpr double kSeriesPrinted = 1e-4;  // 0.07 mm at worst over the country
  TRDProj proj(kBesselA, kBesselInvF, kAmersfoortLat, kAmersfoortLon, 155000, 463000);
  for (double latDeg = 50.8; latDeg < 53.5; latDeg += 0.3)
    for (double lonDeg = 3.5; lonDeg < 7.1; lonDeg += 0.4) {
      double b = latDeg * kDeg, l = lonDeg * kDeg, x, y;
      DutchSeries(latDeg, lonDeg, x, y);
      ASSERT_TRUE(proj.Forward(b, l));
      EXPECT_NEAR(b, y, kSeriesPrinted) << latDeg << " " << lonDeg;
      EXPECT_NEAR(l, x, kSeriesPrinted) << latDeg << " " << lonDeg;
    }
}

TEST(RDTransProj, CorrectionIsAddedAndTakenAway) {
  TRDTransProj proj(kBesselA, kBesselInvF, kAmersfoortLat, kAmersfoortLon, kRdScale, 155000,
                    463000);
  ExpectPublished(proj, {"IOGP, no correction", 53, 6, 557057.739, 196105.283, 5e-4});

  // As large as the real one, 0.25 m, and as steep, 1e-5.
  proj.SetCorrection([](double n, double e, double& dn, double& de) {
    dn = 0.25 * std::sin(e / 25000);
    de = 0.25 * std::cos(n / 25000);
  });
  double b = 53 * kDeg, l = 6 * kDeg, plainN = b, plainE = l;
  ASSERT_TRUE(Rd().ForwardPoint(plainN, plainE));
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_EQ(b, plainN + 0.25 * std::sin(plainE / 25000));
  EXPECT_EQ(l, plainE + 0.25 * std::cos(plainN / 25000));
  ASSERT_TRUE(proj.Inverse(b, l));
  EXPECT_NEAR(b, 53 * kDeg, 1e-15);
  EXPECT_NEAR(l, 6 * kDeg, 1e-15);

  const TRDTransProj copy(proj);
  EXPECT_EQ(copy.GetCorrection(), proj.GetCorrection());
}

}  // namespace
}  // namespace zel_cs::geomath
