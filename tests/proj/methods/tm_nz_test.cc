#include "geomath/proj/methods/tm_nz.h"

#include <gtest/gtest.h>

#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kSeries = 3e-5;  // of TUTMProj within 3° of the meridian

// The published plane of AUSLIG's station Karratha, zone 50, is the one of grid scale 1.
TEST(TMNz, GridScaleOneIsThePlainGrid) {
  TTTMNZ zone50(6378137, 298.257222101, 117 * kDegree, 0.9996, 0, 500000, 10000000, 1);
  ExpectBothWays(zone50, {-20.98143612, 117.09718682, 7679903.807, 510101.763}, 6e-4, 6e-4);
}

// Exact transverse Mercator with 50 digits (mpmath), each coordinate's distance from the false
// origin divided by the grid scale.
TEST(TMNz, DividesThePlaneAboutTheFalseOrigin) {
  constexpr double g = 0.999998261, kN0 = 10000000, kE0 = 1600000;
  TTTMNZ nz(6378137, 298.257222101, 173 * kDegree, 0.9996, 0, kE0, kN0, g);
  for (const WorkedExample& plain : {
           WorkedExample{-41.3, 174.8, 5426376.623168275, 1750697.52133419},
           {-43.5, 172.6, 5183580.916874979, 1567662.254681173},
       }) {
    ExpectBothWays(
        nz, {plain.lat, plain.lon, kN0 + (plain.north - kN0) / g, kE0 + (plain.east - kE0) / g},
        kSeries, kSeries);
  }
}

TEST(TMNz, SixParametersAndScaleOverGridScale) {
  TTTMNZ nz;
  EXPECT_EQ(nz.GetQParam(), 6);
  EXPECT_EQ(nz.GetType(), ProjTypeTM);
  EXPECT_EQ(nz.GetParam(5, 3), 0.999998261);
  nz.SetParam(0.5, 5, 3);
  EXPECT_EQ(nz.GridScale(), 0.5);
  double b = 0.6, l = 0;
  ASSERT_TRUE(nz.Forward(b, l));
  EXPECT_EQ(nz.GetScale(), 2.0);
  ASSERT_TRUE(nz.Inverse(b, l));
  EXPECT_EQ(nz.GetScale(), 2.0);
}

}  // namespace
}  // namespace zel_cs::geomath
