#include "geomath/datum/procedural.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"
#include "geomath/datum/datum.h"
#include "tests/datum/similarity_rows.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

constexpr double kWgs84Array[] = {kWgs84A, 1 / kWgs84InvF};

TEST(Procedural, ConvertsToGeocentricAsTheEllipsoidBitForBit) {
  const Ellipsoid ell = MakeEllipsoid(kWgs84A, kWgs84InvF);
  for (double B = -1.5; B < 1.6; B += 0.31) {
    const double blh[] = {B, 3 * B, 1000 * B};
    double xyz[3], expected[] = {blh[0], blh[1], blh[2]};
    EXPECT_TRUE(TBLH_To_XYZ(blh, xyz, kWgs84Array));
    ell.BLH_to_XYZ(expected[0], expected[1], expected[2]);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(xyz[i], expected[i]);
  }
}

TEST(Procedural, ConvertsToGeodeticAndBack) {
  // 50-digit bisection (mpmath), as the rows of the ellipsoid test.
  constexpr double kXyz[] = {-4643988.213, 2553054.125, -3537277.697};
  constexpr double kBlh[] = {-5.9166661644740400698e-1, 2.6389378289865119394,
                             57.999580322233754849};
  double blh[3], back[3];
  EXPECT_TRUE(TXYZ_To_BLH(kXyz, blh, kWgs84Array));
  EXPECT_NEAR(blh[0], kBlh[0], tolerance::kBatchRadians);
  EXPECT_NEAR(blh[1], kBlh[1], tolerance::kBatchRadians);
  EXPECT_NEAR(blh[2], kBlh[2], 4e-9);
  EXPECT_TRUE(TBLH_To_XYZ(blh, back, kWgs84Array));
  for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], kXyz[i], 4e-9);
}

TEST(Procedural, ConvertsTheAxisAndTheCentre) {
  constexpr double kPolarAxis = 6356752.3142451794994;
  constexpr double kRows[][6] = {{0, 0, 0, 0, 0, -kWgs84A},
                                 {5e-11, 5e-11, 7e6, kHalfPi, 0, 7e6 - kPolarAxis},
                                 {0, 0, -1, -kHalfPi, 0, 1 - kPolarAxis}};
  for (const auto& row : kRows) {
    double blh[3];
    EXPECT_TRUE(TXYZ_To_BLH(row, blh, kWgs84Array));
    EXPECT_EQ(blh[0], row[3]);
    EXPECT_EQ(blh[1], row[4]);
    EXPECT_NEAR(blh[2], row[5], 2e-9);
  }
}

TEST(Procedural, KeepsTheLastValueOfAPointThatDoesNotSettle) {
  // Points that Ellipsoid::XYZ_to_BLH refuses, the second of them far from settled. Expected: the
  // tangent after exactly 21 steps from Z/X, counted in Python floats.
  constexpr double kRows[][3] = {{65000, 40000, 1.1029210345968252},
                                 {42700, 1, 0.0005149273955215986}};
  for (const auto& row : kRows) {
    const double xyz[] = {row[0], 0, row[1]};
    double blh[3];
    EXPECT_TRUE(TXYZ_To_BLH(xyz, blh, kWgs84Array));
    EXPECT_DOUBLE_EQ(blh[0], std::atan(row[2]));
  }
  const double unknown[] = {std::numeric_limits<double>::quiet_NaN(), 0, 1};
  double blh[3];
  EXPECT_TRUE(TXYZ_To_BLH(unknown, blh, kWgs84Array));
  EXPECT_TRUE(std::isnan(blh[0]));
}

TEST(Procedural, TransformsAsDatumWithRotationsInRadians) {
  for (const SimilarityRow& row : kSimilarityRows) {
    const double* p = row.parameters;
    const Datum datum(nullptr, p[0], p[1], p[2], p[3], p[4], p[5], p[6], userTypeUser, nullptr);
    const double array[] = {
        p[0], p[1], p[2], p[3] * kRadPerArcSecond, p[4] * kRadPerArcSecond, p[5] * kRadPerArcSecond,
        p[6]};
    TAbstractPoint3<double> wgs84(row.point[0], row.point[1], row.point[2]), local = wgs84;
    datum.ToWGS84Datum(wgs84);
    datum.ToLocalDatum(local);
    double out[3];
    ToWGS84(row.point, out, array);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(out[i], wgs84[i]);
    ToLocDatum(row.point, out, array);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(out[i], local[i]);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(out[i], row.local[i], tolerance::kSameFormulaMetres);
  }
}

TEST(Procedural, KeepsEvaluatingZeroParameters) {
  const double nothing[7] = {}, in[] = {std::numeric_limits<double>::infinity(), 2, 3};
  double out[3];
  ToWGS84(in, out, nothing);
  EXPECT_TRUE(std::isnan(out[1]));  // 0·∞: a Datum without parameters would not have looked
}

}  // namespace
}  // namespace zel_cs::geomath
