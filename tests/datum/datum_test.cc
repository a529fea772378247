#include "geomath/datum/datum.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/tm_proj.h"
#include "tests/datum/similarity_rows.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using Point = TAbstractPoint3<double>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);

Datum FromRow(const SimilarityRow& row) {
  const double* p = row.parameters;
  return {&wgs84, p[0], p[1], p[2], p[3], p[4], p[5], p[6], userTypeLibrary, nullptr};
}

Point ToPoint(const double (&p)[3]) { return {p[0], p[1], p[2]}; }

void ExpectNear(const Point& actual, const Point& expected, double metres) {
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(actual[i], expected[i], metres) << "element " << i;
}

static_assert(std::is_convertible_v<Ellipsoid*, Datum>);

TEST(Datum, TransformsByTheExactRotation) {
  for (const SimilarityRow& row : kSimilarityRows) {
    const Datum datum = FromRow(row);
    Point p = ToPoint(row.point);
    EXPECT_TRUE(datum.ToWGS84Datum(p));
    ExpectNear(p, ToPoint(row.wgs84), tolerance::kSameFormulaMetres);
    EXPECT_TRUE(datum.ToLocalDatum(p));
    ExpectNear(p, ToPoint(row.point), tolerance::kSameFormulaMetres);

    double x = row.point[0], y = row.point[1], z = row.point[2];
    EXPECT_TRUE(datum.ToLocalDatum(x, y, z));
    ExpectNear({x, y, z}, ToPoint(row.local), tolerance::kSameFormulaMetres);
    EXPECT_TRUE(datum.ToWGS84Datum(x, y, z));
    ExpectNear({x, y, z}, ToPoint(row.point), tolerance::kSameFormulaMetres);
  }
}

// The senses of published parameters, against PROJ 9.1.1 (+proj=helmert +exact): the Dutch set in
// the coordinate-frame sense from local to WGS84, unchanged; the British one published in the
// position-vector sense from WGS84 to local, translations and scale with the other sign.
TEST(Datum, TakesPublishedSenses) {
  Point p(3888789.5, 368472.25, 5024842.5);
  FromRow(kSimilarityRows[1]).ToWGS84Datum(p);
  ExpectNear(p, {3889382.484332460, 368498.405121751, 5025321.311878290}, 1e-8);

  constexpr double kInverseOfSigns = 0.02;  // metres: changing signs is not the exact inverse
  p = Point(3980608.9, -102.7, 4966859.7);
  FromRow(kSimilarityRows[0]).ToLocalDatum(p);
  ExpectNear(p, {3980238.063947017, 9.820161024, 4966424.174893072}, kInverseOfSigns);
}

// swisstopo, Formulas and constants for the calculation of the Swiss conformal cylindrical
// projection (2016): ETRS89 latitude, longitude, height and geocentric CH1903+.
TEST(Datum, ReproducesTheSwissStations) {
  constexpr double kStations[][6] = {
      {46.877094600556, 7.465273196111, 947.149, 4330616.737, 567539.766, 4632721.664},
      {47.567051472500, 7.668606410278, 504.935, 4272473.562, 575353.239, 4684498.293},
      {45.929288338889, 9.021219181389, 1685.027, 4389483.221, 696984.352, 4560589.600},
  };
  constexpr double kPrinted = 1.1e-3;  // metres; the stations are printed to 1 mm
  Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);
  const Datum swiss(&bessel, 674.374, 15.056, 405.346, 0, 0, 0, 0, userTypeLibrary, nullptr);
  for (const auto& s : kStations) {
    Point p(s[0] * tolerance::kDegree, s[1] * tolerance::kDegree, s[2]);
    wgs84.BLH_to_XYZ(p[0], p[1], p[2]);
    EXPECT_TRUE(swiss.ToLocalDatum(p));
    ExpectNear(p, {s[3], s[4], s[5]}, kPrinted);
  }
}

// Ordnance Survey, OSTN15 developer pack: ETRS89 latitude, longitude, height and national grid
// easting, northing. The seven parameters are stated to reach 3.5 m at 95 %, 5 m at the worst of
// these points; the last pair is the plain chain with an exact Transverse Mercator, computed apart.
TEST(Datum, ReachesTheBritishGrid) {
  constexpr double kStations[][7] = {
      {49.92226393730, -6.29977752014, 100.000, 91492.146, 11318.804, 91487.4271, 11318.4036},
      {50.43885825610, -4.10864563561, 215.251, 250359.811, 62016.569, 250357.8185, 62015.2109},
      {50.93127937910, -1.45051433700, 100.405, 438710.920, 114792.250, 438711.5256, 114791.3363},
  };
  constexpr double kDistortion = 5.0;  // metres
  constexpr double kChain = 5e-4;  // metres: the projection's series 4° off, and 0.1 mm printed
  Ellipsoid airy = MakeEllipsoid(6377563.396, 299.3249646);
  const Datum osgb36(&airy, 446.448, -125.157, 542.060, -0.1502, -0.2470, -0.8421, -20.4894e-6,
                     userTypeLibrary, nullptr);
  const TTMProj grid(airy.a, airy.invF, -2 * kRadPerDeg, 0.9996012717, 49 * kRadPerDeg, 400000,
                     -100000);
  for (const auto& s : kStations) {
    Point p(s[0] * tolerance::kDegree, s[1] * tolerance::kDegree, s[2]);
    wgs84.BLH_to_XYZ(p[0], p[1], p[2]);
    ASSERT_TRUE(osgb36.ToLocalDatum(p) && osgb36.XYZ_to_BLH(p));
    ASSERT_TRUE(grid.ForwardPoint(p[0], p[1]));
    EXPECT_NEAR(p[1], s[5], kChain);
    EXPECT_NEAR(p[0], s[6], kChain);
    EXPECT_LT(std::hypot(p[1] - s[3], p[0] - s[4]), kDistortion);
  }
}

// NSGI, RDNAPTRANS2018 self-validation file: points outside the correction grid, where the official
// chain is this datum at a height of 43 m on GRS80 and the double stereographic grid.
TEST(Datum, ReproducesTheDutchGridOutsideItsCorrections) {
  constexpr double kPoints[][4] = {
      {51.496640261, 0.881387960, -157753.7570, 399407.0275},
      {53.191745269, 8.646212941, 372775.5975, 583269.9433},
      {49.751517976, 2.215065082, -73631.0490, 200501.7392},
      {47.500000000, -0.268584741, -271529.2217, -38901.0625},
  };
  constexpr double kPrinted = 3e-4;  // metres: latitude and longitude are printed to 1e-9 degree
  const Ellipsoid grs80 = MakeEllipsoid(6378137.0, 298.257222101);
  Ellipsoid bessel = MakeEllipsoid(6377397.155, 299.1528128);
  const Datum amersfoort(&bessel, 565.7381, 50.4018, 465.2904, 0.395026, -0.330772, 1.876074,
                         4.07244e-6, userTypeLibrary, nullptr);
  const double lat0 = 52 + 9.0 / 60 + 22.178 / 3600, lon0 = 5 + 23.0 / 60 + 15.5 / 3600;
  const TDoubleSter grid(bessel.a, bessel.invF, lat0 * kRadPerDeg, lon0 * kRadPerDeg, 0.9999079,
                         155000, 463000);
  for (const auto& row : kPoints) {
    Point p(row[0] * tolerance::kDegree, row[1] * tolerance::kDegree, 43);
    grs80.BLH_to_XYZ(p[0], p[1], p[2]);
    ASSERT_TRUE(amersfoort.ToLocalDatum(p) && amersfoort.XYZ_to_BLH(p));
    ASSERT_TRUE(grid.ForwardPoint(p[0], p[1]));
    EXPECT_NEAR(p[1], row[2], kPrinted);
    EXPECT_NEAR(p[0], row[3], kPrinted);
  }
}

TEST(Datum, WithoutParametersKeepsEveryBit) {
  const Datum datum(&wgs84);
  EXPECT_TRUE(datum.IsNull());
  double x = 1e-310, y = -0.0, z = 0.1;
  EXPECT_TRUE(datum.ToWGS84Datum(x, y, z) && datum.ToLocalDatum(x, y, z));
  EXPECT_TRUE(x == 1e-310 && std::signbit(y) && z == 0.1);
  x = kNaN;
  EXPECT_TRUE(datum.ToLocalDatum(x, y, z));
  EXPECT_EQ(z, 0.1);
}

TEST(Datum, IsNotNullWithAnyParameter) {
  for (int i = 0; i < 7; ++i) {
    SimilarityRow row{};
    row.parameters[i] = 1e-300;
    EXPECT_FALSE(FromRow(row).IsNull()) << i;
    row.parameters[i] = -0.0;
    EXPECT_TRUE(FromRow(row).IsNull()) << i;
  }
}

TEST(Datum, RefusesWhenDisabledEvenWithoutParameters) {
  EXPECT_FALSE(Datum(&wgs84).IsTransformDisabled());
  for (const double scale : {0.0, 1e-6}) {
    const Datum datum(&wgs84, Point(0.0), Point(0.0), scale, userTypeUser, true, nullptr);
    EXPECT_TRUE(datum.IsTransformDisabled());
    Point p(1, 2, 3);
    EXPECT_FALSE(datum.ToWGS84Datum(p));
    EXPECT_FALSE(datum.ToLocalDatum(p));
    EXPECT_FALSE(datum.ToWGS84Datum(p[0], p[1], p[2]));
    EXPECT_FALSE(datum.ToLocalDatum(p[0], p[1], p[2]));
    EXPECT_TRUE(p == Point(1, 2, 3));
    EXPECT_EQ(datum.ToWGS84DatumBatch(&p[0], &p[1], &p[2], 1), 0u);
    EXPECT_TRUE(std::isnan(p[0]) && std::isnan(p[1]) && std::isnan(p[2]));
  }
}

TEST(Datum, ConvertsInTheCallersAxisOrder) {
  const Datum datum(&wgs84, 0, 0, 0, 0, 0, 0, 0, userTypeUser, L"WN");
  EXPECT_EQ(datum.GetNEDir(), 0x18);
  Point expected(0.5, 0.25, 100);
  wgs84.BLH_to_XYZ(expected[0], expected[1], expected[2]);

  double b = -0.25, l = 0.5, h = 100;
  EXPECT_TRUE(datum.BLH_to_XYZ(b, l, h));
  EXPECT_TRUE(Point(b, l, h) == expected);
  EXPECT_TRUE(datum.XYZ_to_BLH(b, l, h));
  ExpectNear({b, l, h}, {-0.25, 0.5, 100}, 2e-9);

  Point p(-0.25, 0.5, 100);
  EXPECT_TRUE(datum.BLH_to_XYZ(p));
  EXPECT_TRUE(p == expected);
  EXPECT_TRUE(datum.XYZ_to_BLH(p));
  ExpectNear(p, {-0.25, 0.5, 100}, 2e-9);
}

TEST(Datum, KeepsTheTurnedPairWithoutAnEllipsoid) {
  const Datum datum(nullptr, 1, 2, 3, 0, 0, 0, 0, userTypeUser, L"EN");
  double b = 1, l = 2, h = 3;
  EXPECT_FALSE(datum.BLH_to_XYZ(b, l, h));
  EXPECT_TRUE(b == 2 && l == 1 && h == 3);
  EXPECT_FALSE(datum.XYZ_to_BLH(b, l, h));
  EXPECT_TRUE(b == 2 && l == 1 && h == 3);

  Point p(1, 2, 3);
  EXPECT_FALSE(datum.BLH_to_XYZ(p));
  EXPECT_FALSE(datum.XYZ_to_BLH(p));
  EXPECT_TRUE(p == Point(1, 2, 3));
  EXPECT_TRUE(datum.ToWGS84Datum(p));
  EXPECT_TRUE(p == Point(2, 4, 6));
}

TEST(Datum, LeavesAPointThatDoesNotSettle) {
  const Datum datum(&wgs84, 0, 0, 0, 0, 0, 0, 0, userTypeUser, L"EN");
  Point p(65000, 0, 40000);  // needs 21 steps
  EXPECT_FALSE(datum.XYZ_to_BLH(p));
  EXPECT_TRUE(p == Point(65000, 0, 40000));
}

TEST(Datum, StoresAnyUserByte) {
  Datum datum(&wgs84);
  EXPECT_TRUE(datum.isUserDefined());
  EXPECT_FALSE(datum.isExternal());
  datum.setUser(2);
  EXPECT_TRUE(datum.isExternal());
  datum.setUser(200);
  EXPECT_EQ(datum.getUser(), 200);
  EXPECT_FALSE(datum.isUserDefined() || datum.isExternal());
  EXPECT_EQ(FromRow(kSimilarityRows[0]).getUser(), 0);
}

TEST(Datum, CopiesEverythingAndSharesTheEllipsoid) {
  const Point shift(1, 2, 3), rotation(4, 5, 6);
  const Datum source(&wgs84, shift, rotation, 7e-6, userTypeExternal, true, L"ES");
  Datum assigned(nullptr);
  assigned = source;
  for (const Datum& copy : {Datum(source), assigned}) {
    EXPECT_STREQ(copy.GetAxes(), L"ES");
    EXPECT_EQ(copy.GetNEDir(), 0x42);
    EXPECT_EQ(copy.GetEllipsoid(), &wgs84);
    EXPECT_TRUE(copy.Shift() == shift && copy.Rotation() == rotation && copy.Scale() == 7e-6);
    EXPECT_TRUE(copy.isExternal());
    Point p(0.0);
    EXPECT_FALSE(copy.ToWGS84Datum(p));
  }
}

TEST(DatumBatch, IsTheScalarCallBitForBit) {
  const Datum datum = FromRow(kSimilarityRows[4]);
  std::vector<double> points;
  for (int i = 0; i < 60; ++i) points.push_back(6.4e6 * std::sin(i));
  points[7] = kNaN;
  std::vector<double> wgs = points, local = points;
  EXPECT_EQ(datum.ToWGS84DatumBatch(&wgs[0], &wgs[1], &wgs[2], 20, 3), 19u);
  EXPECT_EQ(datum.ToLocalDatumBatch(&local[0], &local[20], &local[40], 20), 19u);
  for (std::size_t i = 0; i < 20; ++i) {
    Point p(points[3 * i], points[3 * i + 1], points[3 * i + 2]);
    datum.ToWGS84Datum(p);
    EXPECT_EQ(std::isnan(wgs[3 * i]) && std::isnan(wgs[3 * i + 2]), i == 2);
    EXPECT_EQ(p == Point(wgs[3 * i], wgs[3 * i + 1], wgs[3 * i + 2]), i != 2);
    p = Point(points[i], points[20 + i], points[40 + i]);
    datum.ToLocalDatum(p);
    EXPECT_EQ(std::isnan(local[i]), i == 7);
    EXPECT_EQ(p == Point(local[i], local[20 + i], local[40 + i]), i != 7);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
