#include "geomath/proj/methods/o_mercator_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "geomath/proj/param_table.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// Inputs in decimal degrees differ from the exact ones by up to 1e-16 relative, and the exponential
// carries that into coordinates of 1e7 m: 4e-9 m measured.
constexpr double kIndependentMetres = 2e-8;
constexpr double kIndependentScale = 1e-14;
constexpr double kRoundTrip = 4e-15;  // radians; 1.8e-15 measured

struct Grid {
  const char* name;
  double a, invF, azimuth, k0, lon0, lat0, fEast, fNorth;  // degrees, metres
};

TOMercatorProj Make(const Grid& g) {
  const double azimuth =
      std::abs(g.azimuth) == 90 ? std::copysign(kHalfPi, g.azimuth) : g.azimuth * kDegree;
  return {g.a, g.invF, azimuth, g.k0, g.lon0 * kDegree, g.lat0 * kDegree, g.fEast, g.fNorth};
}

constexpr Grid kOpposite = {
    "OppositeHemispheres", 6378137, 298.257223563, 30, 0.9996, 10, 47, 500000, -100000};
constexpr Grid kSouthern = {"Southern", 6378388, 297, 18.9, 0.9995, 46.4375, -18.9, 400000, 800000};
constexpr Grid kEquatorial = {
    "Equatorial", 6377304.063, 300.8017, -36.9742095, 0.99984, 102.25, 4, 0, 0};
constexpr Grid kSphere = {"Sphere", 6371000, 1e300, 53, 1, 20, -33, 0, 0};
constexpr Grid kEastWest = {"EastWest",      6377397.155,      299.1528128, 90, 1,
                            7.4395833333333, 46.9524055555555, 0,           0};
constexpr Grid kEastWestSouth = {
    "EastWestSouth", 6378137, 298.257222101, 90, 0.9999, -65, -35, 0, 0};

// Snyder 1987, eq. 9-11 to 9-38, 9-25 to 9-32 in the tangent form, evaluated with 40 digits; the
// last row has its natural origin π/2 west of the centre, as every azimuth of 90°.
TEST(OMercator, AgreesWithAnIndependentEvaluation) {
  struct Row {
    Grid grid;
    double phi, lambda, north, east, k;
  };
  const Row rows[] = {
      {kOpposite, 47, 10, 4818966.5740600248, 3339966.6756683265, 0.9996},
      {kOpposite, 50, 13.5, 5158153.5803315172, 3590802.6499992231, 0.9996275660614505},
      {kOpposite, -20, -30, -2003946.5292934392, -1680257.9772763923, 1.01272075839648},
      {kSouthern, -18.9, 46.4375, -1282900.7278818386, -313136.31464992898, 0.9995},
      {kSouthern, -25, 44, -1959914.1354799915, -559513.75167062392, 0.9995005776961364},
      {kEquatorial, 3.1, 101.6, 342338.5493932758, -404857.69657333689, 1.000011013662446},
      {kSphere, -33, 20, -3157114.2200475025, -4189632.0769781979, 1.0},
      {kSphere, 10, -5, 2131906.1000689416, -7593107.4161928519, 1.525051917923455},
      {kEastWest, 46, 9, -104660.05725072266, 10140689.503321951, 1.000134615269313},
      {kEastWest, 47.4, 8.55, 50349.443522105751, 10103631.667141369, 1.000031150619239},
      {kEastWestSouth, -34, -60.5, -10629136.697844984, 11152937.600932284, 2.746312948635809},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.grid.name);
    TOMercatorProj proj = Make(row.grid);
    double n = row.phi * kDegree, e = row.lambda * kDegree;
    ASSERT_TRUE(proj._Forward(n, e));
    EXPECT_NEAR(n, row.north, kIndependentMetres);
    EXPECT_NEAR(e, row.east, kIndependentMetres);
    EXPECT_NEAR(proj.GetScale(), row.k, kIndependentScale * 10);
    ASSERT_TRUE(proj._Inverse(n, e));
    EXPECT_NEAR(n, row.phi * kDegree, kRoundTrip);
    EXPECT_NEAR(e, row.lambda * kDegree, kRoundTrip);
    EXPECT_NEAR(proj.GetScale(), row.k, kIndependentScale * 10);
    EXPECT_EQ(proj.GetConvergence(), 0.0);
  }
}

// Snyder 1987, appendix A, Hotine oblique Mercator through 47°30' N 122°18' W and 25°42' N
// 80°12' W, Clarke 1866; the centre and azimuth of that line follow from his eq. 9-14 to 9-24.
TEST(OMercator, ReproducesSnydersExample) {
  constexpr double kPrintedMetres = 0.05 + 1e-3;  // printed to 0.1 m
  constexpr double kPrintedScale = 0.5e-7;
  TOMercatorProj proj(6378206.4, 294.978698214, -56.94660709700098 * kDegree, 0.9996,
                      -100.99718772051424 * kDegree, 40 * kDegree, 4000000, 500000);
  double n = (40 + 48 / 60.0) * kDegree, e = -74 * kDegree;
  ASSERT_TRUE(proj._Forward(n, e));
  EXPECT_NEAR(n, 4369142.8, kPrintedMetres);
  EXPECT_NEAR(e, 963436.1, kPrintedMetres);
  EXPECT_NEAR(proj.GetScale(), 1.0307554, kPrintedScale);
}

TEST(OMercator, KeepsTheAzimuthInRadiansUnderEveryUnit) {
  TOMercatorProj proj;
  proj.SetParam(0.25, 0, kUnitDegrees);
  EXPECT_EQ(proj.AxisAzimuth(), 0.25);
  EXPECT_EQ(proj.GetParam(0, kUnitDegrees), 0.25);
  proj.SetParam(30, 3, kUnitDegrees);
  EXPECT_EQ(proj.Lat0(), 30 * kRadPerDeg);
}

TEST(OMercator, KeepsUAtZeroExactlyOnTheOriginMeridian) {
  constexpr double R = 6371000, phi = 0.5;
  const TOMercatorProj proj(R, 1e300, 0, 1, 0, 0, 0, 0);  // a transverse Mercator of the sphere
  double n = phi, e = 0, nBeside = phi, eBeside = 1e-12;
  PointFactors on, beside;
  ASSERT_TRUE(proj.ForwardPoint(n, e, &on));
  ASSERT_TRUE(proj.ForwardPoint(nBeside, eBeside, &beside));
  EXPECT_NEAR(nBeside, R * phi, kIndependentMetres);
  EXPECT_NEAR(beside.scale, 1.0, kIndependentScale);
  EXPECT_EQ(n, 0.0);
  EXPECT_NEAR(on.scale, 1 / std::cos(phi), kIndependentScale);  // that of the upright cylinder

  double first[] = {phi, phi}, second[] = {0, 1e-12};
  ASSERT_EQ(proj.ForwardBatch(first, second, 2), 2u);
  EXPECT_EQ(first[0], 0.0);
  EXPECT_NEAR(first[1], R * phi, kIndependentMetres);
}

TEST(OMercator, KeepsForwardLongitudesUnfolded) {
  const TOMercatorProj proj = Make(kOpposite);
  const double cos2 = std::pow(std::cos(kOpposite.lat0 * kDegree), 2);
  const double B = std::sqrt(1 + proj.GetEllipsoid().ep2 * cos2 * cos2);
  double n = 0.8, e = 0.2 + kTwoPi;
  proj.ForwardPoint(n, e);
  proj.InversePoint(n, e);  // a turn of 2π is one of 2π·B on the aposphere
  EXPECT_NEAR(n, 0.8, kRoundTrip);
  EXPECT_NEAR(e, 0.2 + kTwoPi * (1 - 1 / B), kRoundTrip);
}

// The right value in the south would be π/2 east: the centre is then not on the central line.
TEST(OMercator, KeepsTheNaturalOriginWestAtRightAngles) {
  for (const double azimuth : {kHalfPi, -kHalfPi}) {
    TOMercatorProj proj(6371000, 1e300, azimuth, 1, 0, -0.6, 0, 0);
    double n = 0, e = -kHalfPi + 1e-9;  // beside the natural origin, on the equator
    ASSERT_TRUE(proj._Forward(n, e));
    EXPECT_NEAR(std::hypot(n, e), 6371e-6, 1e-8);
  }
}

TEST(OMercator, InverseGivesThePoleOnTheOriginMeridian) {
  const TOMercatorProj proj;
  const double quarter = kHalfPi * proj.GetEllipsoid().b;  // A/B of a centre on the equator
  for (const double sign : {1.0, -1.0}) {
    double n = sign * quarter, e = 0;
    ASSERT_TRUE(proj.InversePoint(n, e));
    EXPECT_EQ(n, sign * kHalfPi);
    EXPECT_EQ(e, 0.0);
  }
}

TEST(OMercator, ReportsItsCentre) {
  double b = 0, l = 0, db = 0, dl = 0;
  EXPECT_TRUE(Make(kOpposite).GetCentralPoint(b, l, db, dl));
  EXPECT_EQ(b, 47 * kDegree);
  EXPECT_EQ(l, 10 * kDegree);
  EXPECT_EQ(db, 0.7853971633974483);
  EXPECT_EQ(dl, 0.7853971633974483);
}

}  // namespace
}  // namespace zel_cs::geomath
