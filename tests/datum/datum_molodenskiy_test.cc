#include "geomath/datum/datum_molodenskiy.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace zel_cs::geomath {
namespace {

using Point = TAbstractPoint3<double>;

Ellipsoid wgs84 = MakeEllipsoid(kWgs84A, kWgs84InvF);

static_assert(std::is_convertible_v<Ellipsoid*, DatumMolodenskiy>);

TEST(DatumMolodenskiy, FromAnEllipsoidIsNull) {
  const DatumMolodenskiy datum(&wgs84);
  EXPECT_TRUE(datum.IsNull());
  EXPECT_TRUE(datum.isUserDefined());
  Point p(1, 2, 3);
  EXPECT_TRUE(datum.ToWGS84Datum(p) && datum.ToLocalDatum(p));
  EXPECT_TRUE(p == Point(1, 2, 3));
  EXPECT_TRUE(datum.BLH_to_XYZ(p));
}

TEST(DatumMolodenskiy, KeepsTheOriginOutOfTheTransformations) {
  const Datum plain(&wgs84, 1, 2, 3, 40, 50, 60, 7e-6, userTypeUser, nullptr);
  const DatumMolodenskiy byNumbers(&wgs84, 1, 2, 3, 40, 50, 60, 3e6, -4e6, 5e6, 7e-6, 1, nullptr);
  const DatumMolodenskiy byPoints(&wgs84, {1, 2, 3}, {40, 50, 60}, {9e6, 8e6, 7e6}, 7e-6, 1, false,
                                  nullptr);
  const Point start(4e6, 5e5, 4.9e6);
  Point expected = start, first = start, second = start;
  plain.ToWGS84Datum(expected);
  EXPECT_TRUE(byNumbers.ToWGS84Datum(first) && byPoints.ToWGS84Datum(second));
  EXPECT_TRUE(first == expected && second == expected);
  EXPECT_FALSE(expected == start);

  plain.ToLocalDatum(expected);
  EXPECT_TRUE(byNumbers.ToLocalDatum(first[0], first[1], first[2]) &&
              byPoints.ToLocalDatum(second));
  EXPECT_TRUE(first == expected && second == expected);
}

TEST(DatumMolodenskiy, CountsTheOriginInIsNull) {
  const DatumMolodenskiy datum(&wgs84, 0, 0, 0, 0, 0, 0, 0, 0, 1e-300, 0, 0, nullptr);
  EXPECT_FALSE(datum.IsNull());
  EXPECT_TRUE(static_cast<const Datum&>(datum).IsNull());
  Point p(0.1, 0.2, 0.3);
  EXPECT_TRUE(datum.ToLocalDatum(p));
  EXPECT_TRUE(p == Point(0.1, 0.2, 0.3));
  EXPECT_FALSE(DatumMolodenskiy(&wgs84, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, nullptr).IsNull());
}

TEST(DatumMolodenskiy, FillsEverythingFromItsArguments) {
  const DatumMolodenskiy source(&wgs84, {1, 2, 3}, {4, 5, 6}, {7, 8, 9}, 1e-5, 77, true, L"EN");
  DatumMolodenskiy assigned(nullptr);
  assigned = source;
  for (const DatumMolodenskiy& copy : {DatumMolodenskiy(source), assigned}) {
    EXPECT_TRUE(copy.Shift() == Point(1, 2, 3) && copy.Rotation() == Point(4, 5, 6));
    EXPECT_TRUE(copy.Origin() == Point(7, 8, 9));
    EXPECT_EQ(copy.Scale(), 1e-5);
    EXPECT_EQ(copy.getUser(), 77);
    EXPECT_EQ(copy.GetNEDir(), 0x12);
    EXPECT_STREQ(copy.GetAxes(), L"EN");
    Point p(0.3, 0.5, 100);
    EXPECT_FALSE(copy.ToWGS84Datum(p) || copy.ToLocalDatum(p));
    EXPECT_TRUE(copy.BLH_to_XYZ(p) && copy.XYZ_to_BLH(p));
    EXPECT_NEAR(p[0], 0.3, 1e-15);
  }
}

TEST(DatumMolodenskiy, KeepsTheTurnedPairWithoutAnEllipsoid) {
  const DatumMolodenskiy datum(nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, L"EN");
  double b = 1, l = 2, h = 3;
  EXPECT_FALSE(datum.BLH_to_XYZ(b, l, h));
  EXPECT_TRUE(b == 2 && l == 1);
  Point p(1, 2, 3);
  EXPECT_FALSE(datum.BLH_to_XYZ(p) || datum.XYZ_to_BLH(p));
  EXPECT_TRUE(p == Point(1, 2, 3));
}

}  // namespace
}  // namespace zel_cs::geomath
