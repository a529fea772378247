// The transformations of few parameters: worked examples of the EPSG registry's Guidance Note 7-2.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/shift/affine_transformation.h"
#include "geomath/shift/coordinate_offset.h"
#include "geomath/shift/geocentric_shift_grid.h"
#include "geomath/shift/small_angle_similarity.h"
#include "geomath/shift/vertical_slope.h"

namespace zel_cs::geomath {
namespace {

constexpr double kRoundTripMetres = 1e-7;  // 1e-4 mm
constexpr double kCentimetre = 0.01;       // the examples print centimetres, of source and target

using enum RotationSense;

void ExpectTakes(const CoordinateShift& shift, const double (&from)[3], const double (&to)[3],
                 double tolerance) {
  double p[] = {from[0], from[1], from[2]};
  ASSERT_TRUE(shift.Forward(p[0], p[1], p[2]));
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(p[c], to[c], tolerance) << "element " << c;
  ASSERT_TRUE(shift.Inverse(p[0], p[1], p[2]));
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(p[c], from[c], kRoundTripMetres) << "element " << c;
}

// WGS 72 to WGS 84: the same rotation in both senses.
TEST(SmallAngleSimilarity, TakesBothSenses) {
  const double wgs72[] = {3657660.66, 255768.55, 5201382.11};
  const double wgs84[] = {3657660.78, 255778.43, 5201387.75};
  ExpectTakes(SmallAngleSimilarity({0, 0, 4.5}, {0, 0, 0.554}, 0.219e-6, positionVector), wgs72,
              wgs84, kCentimetre);
  ExpectTakes(SmallAngleSimilarity({0, 0, 4.5}, {0, 0, -0.554}, 0.219e-6, coordinateFrame), wgs72,
              wgs84, kCentimetre);
}

// The matrix of small angles against an own evaluation of its definition, with rotations so large
// that any other matrix is centimetres away.
TEST(SmallAngleSimilarity, HasTheMatrixOfSmallAngles) {
  const double x = 4000000, y = -300000, z = 4900000, s = 30e-6;
  const double rx = 20 * kRadPerArcSecond, ry = -15 * kRadPerArcSecond, rz = 25 * kRadPerArcSecond;
  const double expected[] = {100 + (1 + s) * (x - rz * y + ry * z),
                             -200 + (1 + s) * (rz * x + y - rx * z),
                             300 + (1 + s) * (-ry * x + rx * y + z)};
  ExpectTakes(SmallAngleSimilarity({100, -200, 300}, {20, -15, 25}, s, positionVector), {x, y, z},
              expected, 5e-9);
}

// La Canoa to REGVEN.
TEST(MolodenskyBadekas, TurnsAboutItsPivot) {
  const double laCanoa[] = {2550408.96, -5749912.26, 1054891.11};
  const double regven[] = {2550138.45, -5749799.87, 1054530.82};
  ExpectTakes(MolodenskyBadekas({-270.933, 115.599, -360.226}, {-5.266, -1.238, 2.381},
                                {2464351.59, -5783466.61, 974809.81}, -5.109e-6, coordinateFrame),
              laCanoa, regven, kCentimetre);
  ExpectTakes(MolodenskyBadekas({-270.933, 115.599, -360.226}, {5.266, 1.238, -2.381},
                                {2464351.59, -5783466.61, 974809.81}, -5.109e-6, positionVector),
              laCanoa, regven, kCentimetre);
}

TEST(CoordinateOffset, AddsItsConstants) {
  // Paris counts from 2° 20' 14.025" east of Greenwich.
  const double paris = (2 + 20 / 60.0 + 14.025 / 3600) * kRadPerDeg;
  ExpectTakes(CoordinateOffset::LongitudeRotation(paris), {0.8, 0.1, 50}, {0.8, 0.1 + paris, 50},
              1e-15);
  ExpectTakes(CoordinateOffset::Geographic(1e-6, -2e-6, 3), {0.8, 0.1, 50},
              {0.800001, 0.099998, 53}, 1e-15);
  ExpectTakes(CoordinateOffset::Geocentric(84.87, 96.49, 116.95),
              {3771793.97, 140253.34, 5124304.35}, {3771878.84, 140349.83, 5124421.30},
              kCentimetre);
  const auto vertical = CoordinateOffset::Vertical(-0.5, ShiftSpace::plane);
  EXPECT_EQ(vertical.Space(), ShiftSpace::plane);
  ExpectTakes(vertical, {5e6, 3e5, 50}, {5e6, 3e5, 49.5}, 0);
}

// LN02 to EVRF2000 in Switzerland.
TEST(VerticalSlope, TiltsHeights) {
  const VerticalSlope slope(MakeEllipsoid(6378137, 298.257222101),
                            {(46 + 55 / 60.0) * kRadPerDeg, (8 + 11 / 60.0) * kRadPerDeg, -0.245,
                             -0.210 * kRadPerArcSecond, -0.032 * kRadPerArcSecond});
  const double b = (47 + 20 / 60.0) * kRadPerDeg, l = (9 + 40 / 60.0) * kRadPerDeg;
  ExpectTakes(slope, {b, l, 473.000}, {b, l, 472.690}, 0.00051);
  ExpectTakes(slope, {b, l + kTwoPi, 473.000}, {b, l + kTwoPi, 472.690}, 0.00051);
}

// Jamaica 1875 in feet to JAD69 in metres.
TEST(AffineTransformation, TransformsAffinely) {
  const AffineTransformation affine(
      {82357.457, 0.304794369, 0.000015417425, 28091.324, -0.000015417425, 0.304794369});
  ExpectTakes(affine, {482500, 553900, 7}, {175146.067, 251190.497, 7}, 0.00051);
  const AffineTransformation flat({0, 1, 2, 0, 2, 4});
  double n = 1, e = 2, h = 3;
  EXPECT_TRUE(flat.Forward(n, e, h));
  EXPECT_EQ(flat.Inverse(n, e, h).status, ShiftStatus::notInvertible);
}

// Translations that change by 40 parts per million, at the source's and at the target's position.
TEST(GeocentricShiftGrid, LooksUpWhereItsMethodSays) {
  GeocentricShiftGridDefinition definition;
  definition.ellipsoid = MakeEllipsoid(6378137, 298.257222101);
  ShiftGridPart part{"", 0, 0.74, 0.0, 0.002, 0.002, 11, 11, {}, {}};
  for (int i = 0; i < 11; ++i)
    for (int j = 0; j < 11; ++j)
      part.values.insert(part.values.end(), {-168.0F + 0.5F * static_cast<float>(i),
                                             -60.0F - 0.25F * static_cast<float>(j),
                                             320.0F + 0.125F * static_cast<float>(i * j)});
  definition.parts = {part};
  for (const GridPosition position : {GridPosition::source, GridPosition::target}) {
    definition.position = position;
    const auto grid = GeocentricShiftGrid::Make(definition);
    ASSERT_TRUE(grid);
    double p[] = {0.7513, 0.0087, 200};
    definition.ellipsoid.BLH_to_XYZ(p[0], p[1], p[2]);
    const double given[] = {p[0], p[1], p[2]};
    ASSERT_TRUE(grid->Forward(p[0], p[1], p[2]));

    // The translation at the position that counts, by the definition.
    double at[] = {p[0], p[1], p[2]};
    if (position == GridPosition::source) std::copy_n(given, 3, at);
    ASSERT_EQ(definition.ellipsoid.XYZ_to_BLH_Batch(&at[0], &at[1], &at[2], 1), 1U);
    const double i = (at[0] - 0.74) / 0.002, j = at[1] / 0.002;
    const double expected[] = {-168 + 0.5 * i, -60 - 0.25 * j, 320 + 0.125 * i * j};
    for (int c = 0; c < 3; ++c)
      EXPECT_NEAR(p[c] - given[c], expected[c], 3e-5);  // single precision
    ASSERT_TRUE(grid->Inverse(p[0], p[1], p[2]));
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(p[c], given[c], kRoundTripMetres);

    double far[] = {0.7, 0.01, 0};
    definition.ellipsoid.BLH_to_XYZ(far[0], far[1], far[2]);
    EXPECT_EQ(grid->Forward(far[0], far[1], far[2]).status, ShiftStatus::outside);
  }
  definition.ellipsoid.a = 0;
  std::string reason;
  EXPECT_FALSE(GeocentricShiftGrid::Make(definition, &reason));
  EXPECT_FALSE(reason.empty());
}

}  // namespace
}  // namespace zel_cs::geomath
