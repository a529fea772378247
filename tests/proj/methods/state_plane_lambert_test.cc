// The Lambert zones of the state plane systems of 1927 (tabular) and 1983, and the county Lambert.
#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/lc27_proj.h"
#include "geomath/proj/methods/minnesota_la_proj.h"
#include "geomath/proj/methods/spc_lc83_proj.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;
constexpr double kGrs80A = 6378137, kGrs80InvF = 298.257222101;

// Zone constants: Claire 1968. Coordinates: the tabular formulas evaluated by an independent
// program, and the rigorous projection of PROJ, in metres.
struct Zone1927 {
  const char* name;
  double constants[10];  // L1, L2, L3, L4, L5, L6, L78, L9, L10, L11
  struct {
    double latDeg, lonDeg;
  } at;
  struct {
    double north, east;
  } tabular, rigorous;

  TLC27Proj Make() const {
    TLC27Proj proj;
    for (int i = 0; i < 10; ++i) proj.SetParam(constants[i], i, kUnitInternal);
    proj.Zone(401);
    return proj;
  }
};
constexpr Zone1927 kZones1927[] = {
    {"California I",
     {2000000, 439200, 24245358.05, 24792436.23, 0.9998946358, 0.6538843192, 146486.75847, 3.80992,
      3.93575, 0},
     {40.5, -122.8},
     {129850.8227, 541792.1389},
     {129850.8276, 541792.1389}},
    {"Minnesota North",
     {2000000, 335160, 18984319.62, 19471398.75, 0.9999028166, 0.7412196637, 171684.63011, 3.80362,
      5.01609, 0},
     {47.7, -94.5},
     {134358.6449, 504533.8352},
     {134358.6486, 504533.8351}},
    {"Texas South Central",
     {2000000, 356400, 37261509.20, 37807440.38, 0.9998632433, 0.4899126408, 105157.19059, 3.81962,
      2.56899, 0},
     {29.0, -98.1},
     {129630.6412, 697286.5877},
     {129630.6483, 697286.5876}},
};

TEST(LC27Proj, TabularZones) {
  constexpr double kPrinted = 1e-4;
  constexpr double kMethod = 0.03;  // metres from a rigorous Lambert inside a zone, mostly 0.01
  for (const Zone1927& z : kZones1927) {
    SCOPED_TRACE(z.name);
    TLC27Proj proj = z.Make();
    double b = z.at.latDeg * kDeg, l = z.at.lonDeg * kDeg;
    ASSERT_TRUE(proj.Forward(b, l));
    EXPECT_NEAR(b, z.tabular.north, kPrinted);
    EXPECT_NEAR(l, z.tabular.east, kPrinted);
    EXPECT_NEAR(std::hypot(b - z.rigorous.north, l - z.rigorous.east), 0, kMethod);
    ASSERT_TRUE(proj.Inverse(b, l));
    constexpr double kClosure = 1e-3 / 6.3e6;  // 1 mm
    EXPECT_NEAR(b, z.at.latDeg * kDeg, kClosure);
    EXPECT_NEAR(l, z.at.lonDeg * kDeg, kClosure);
  }
}

TEST(LC27Proj, KeepsItsOwnEllipsoid) {
  const Zone1927& z = kZones1927[0];
  TLC27Proj proj = z.Make();
  EXPECT_EQ(proj.GetEllipsoid().a, 6378206.4);
  EXPECT_NEAR(proj.GetEllipsoid().b, 6356583.8, 1e-8);
  proj.SetEllipsoid(kGrs80A, kGrs80InvF);
  double b = z.at.latDeg * kDeg, l = z.at.lonDeg * kDeg;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(b, z.tabular.north, 1e-4);

  double b0, l0, db, dl;
  ASSERT_TRUE(proj.GetCentralPoint(b0, l0, db, dl));
  EXPECT_NEAR(std::sin(b0), z.constants[5], 1e-9);
  EXPECT_NEAR(l0, -122 * kDeg, 1e-15);
  EXPECT_EQ(proj.Zone(), 401);
}

TSPC_LC83Proj TexasCentral() {
  return {kGrs80A,
          kGrs80InvF,
          (30 + 7 / 60.0) * kDeg,
          (31 + 53 / 60.0) * kDeg,
          -(100 + 20 / 60.0) * kDeg,
          (29 + 40 / 60.0) * kDeg,
          700000,
          3000000,
          4203};
}

TEST(SPCLC83Proj, NgsDataSheets) {
  // NGS data sheets AG9976 (with scale and convergence) and JV7114; NGS program SPCS83, Colorado.
  TSPC_LC83Proj texas = TexasCentral();
  ExpectPublished(texas,
                  {"AG9976", 30.2862534694444, -97.7393659416667, 3071595.000, 949528.007, 5e-4});
  EXPECT_NEAR(texas.GetScale(), 0.99995905, 1e-8);  // the sheet's points are printed to 1e-10°
  EXPECT_NEAR(texas.GetConvergence() / kDeg, 1 + 20 / 60.0 + 9.8 / 3600, 0.05 / 3600);

  TSPC_LC83Proj maryland(kGrs80A, kGrs80InvF, 38.3 * kDeg, 39.45 * kDeg, -77 * kDeg,
                         (37 + 40 / 60.0) * kDeg, 400000, 0, 1900);
  ExpectPublished(maryland,
                  {"JV7114", 39.0107394861111, -77.1542077916667, 149209.682, 386644.192, 5e-4});
  TSPC_LC83Proj colorado(kGrs80A, kGrs80InvF, 38.45 * kDeg, 39.75 * kDeg, -105.5 * kDeg,
                         (37 + 50 / 60.0) * kDeg, 914401.8289, 304800.6096, 502);
  ExpectPublished(colorado, {"Colorado Central", 39.5, -104.5, 490289.114, 1000410.079, 5e-4});
}

TEST(SPCLC83Proj, FailsAtThePolesAndKeepsTheKindOfTheDefaultObject) {
  TSPC_LC83Proj proj = TexasCentral();
  double b = -kHalfPi, l = 0;
  EXPECT_FALSE(proj.Forward(b, l));
  EXPECT_EQ(proj.GetType(), ProjTypeSPC_LC83);
  EXPECT_EQ(TSPC_LC83Proj().GetType(), ProjTypeTM);
  EXPECT_EQ(TSPC_LC83Proj().GetQParam(), 7);
}

// Anoka county, Minnesota (ESRI:103636): design axes enlarged at the flattening of GRS 80.
TMinnesota_LAProj Anoka(double northStdP, double southStdP, double scale) {
  return {kGrs80A,
          kGrs80InvF,
          -93.0833333333333 * kDeg,
          45.2963888888889 * kDeg,
          northStdP,
          southStdP,
          scale,
          30480.0609601219,
          152400.30480061,
          6378411.321,
          6378411.321 * (1 - 1 / 298.257222100883),
          0,
          0,
          0};
}

TEST(MinnesotaLAProj, AnokaCounty) {
  const double north = 45.6666666666667 * kDeg, south = 45.3333333333333 * kDeg;
  const PublishedPoint point{"PROJ", 45.41, -93.27, 43124.1618, 137787.0023, 1e-4};
  for (TMinnesota_LAProj proj :
       {Anoka(north, south, 1), Anoka(south, north, 1), Anoka(north, south, 0)})
    ExpectPublished(proj, point);

  double b = kHalfPi, l = 0;
  EXPECT_FALSE(Anoka(north, south, 1).ForwardPoint(b, l));
}

TEST(MinnesotaLAProj, ShiftsLiftBothAxes) {
  const double north = 45.6666666666667 * kDeg, south = 45.3333333333333 * kDeg;
  TMinnesota_LAProj lifted = Anoka(north, south, 1), plain = lifted;
  lifted.SetParam(300, 9, 2);
  lifted.SetParam(-27, 11, 2);
  plain.SetParam(6378411.321 + 273, 7, 2);
  plain.SetParam(6378411.321 * (1 - 1 / 298.257222100883) + 273, 8, 2);
  double b = 45.41 * kDeg, l = -93.27 * kDeg, bp = b, lp = l;
  ASSERT_TRUE(lifted.Forward(b, l));
  ASSERT_TRUE(plain.Forward(bp, lp));
  EXPECT_NEAR(b, bp, 1e-9);
  EXPECT_NEAR(l, lp, 1e-9);
  EXPECT_GT(std::abs(b - 43124.1618), 0.3);  // 273 m of height are 43 ppm of 12.6 km
}

TEST(MinnesotaLAProj, TheDefaultObjectWorksOnItsSphere) {
  TMinnesota_LAProj proj;
  double b = 0.3, l = 0.1;
  ASSERT_TRUE(proj.Forward(b, l));
  ASSERT_TRUE(proj.Inverse(b, l));
  EXPECT_NEAR(b, 0.3, 1e-14);
  EXPECT_NEAR(l, 0.1, 1e-14);
}

}  // namespace
}  // namespace zel_cs::geomath
