#include "geomath/base/rect_rgn.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// In constant expressions the compiler refuses arithmetic beyond a member.
static_assert(TRectRgn(1, 2, 3, 4)[0] == 1 && TRectRgn(1, 2, 3, 4)[3] == 4);

TEST(RectRgn, HoldsFourNumbersInOrder) {
  TRectRgn region(1, 2, 3, 4);
  const TRectRgn& fixed = region;
  const double* values = fixed;
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(fixed[i], i + 1);
    EXPECT_EQ(values[i], i + 1);
  }
  region[3] = 5;
  static_cast<double*>(region)[0] = -1;
  EXPECT_EQ(region.dL, 5);
  EXPECT_EQ(region.B0, -1);
  EXPECT_EQ(TRectRgn().dB, 0);
}

TEST(RectRgn, ContainsItsEdgesWhateverTheSignOfTheExtents) {
  for (const TRectRgn& region : {TRectRgn(0.5, 0.25, -1, 0.5), TRectRgn(0.75, -0.25, -0.5, -0.5)}) {
    for (const double B : {0.5, 0.6, 0.75})
      for (const double L : {-1.0, -0.7, -0.5}) EXPECT_TRUE(region.Inside(B, L)) << B << ' ' << L;
    EXPECT_FALSE(region.Inside(std::nextafter(0.5, 0), -0.7));
    EXPECT_FALSE(region.Inside(std::nextafter(0.75, 1), -0.7));
    EXPECT_FALSE(region.Inside(0.6, std::nextafter(-1.0, -2)));
    EXPECT_FALSE(region.Inside(0.6, std::nextafter(-0.5, 0)));
  }
  EXPECT_TRUE(TRectRgn(0.5, 0, 1, 0).Inside(0.5, 1));
  EXPECT_FALSE(TRectRgn(0.5, 0, 1, 0).Inside(0.5, 1.01));
}

TEST(RectRgn, ReportsTheTurnThatBringsALongitudeInside) {
  const TRectRgn region(0, 1, 3.0, 0.5);
  double pt[] = {0.5, -3.0};
  TAbstractPoint2<double> shift(9.0);
  EXPECT_TRUE(region.Inside(pt, shift));
  EXPECT_TRUE(shift == TAbstractPoint2<double>(0, kTwoPi));
  EXPECT_EQ(pt[1], -3.0);

  pt[1] = 3.25 + kTwoPi;
  EXPECT_TRUE(region.Inside(pt, shift));
  EXPECT_TRUE(shift == TAbstractPoint2<double>(0, -kTwoPi));

  pt[1] = 3.25;
  EXPECT_TRUE(region.Inside(pt, shift));
  EXPECT_TRUE(shift == 0.0);

  for (const double outside : {0.0, 3.25 + 2 * kTwoPi}) {
    pt[1] = outside;
    shift = 9.0;
    EXPECT_FALSE(region.Inside(pt, shift));
    EXPECT_TRUE(shift == 0.0);
  }
}

TEST(RectRgn, TriesTheEastwardTurnFirst) {
  const TRectRgn wide(0, 1, -10, 20);
  double pt[] = {0.5, -11};
  TAbstractPoint2<double> shift;
  EXPECT_TRUE(wide.Inside(pt, shift));
  EXPECT_EQ(shift[1], kTwoPi);
}

TEST(RectRgn, ContainsNoUnknownPoint) {
  const TRectRgn region(0, 1, 0, 1);
  EXPECT_FALSE(region.Inside(kNaN, 0.5));
  EXPECT_FALSE(region.Inside(0.5, kNaN));
  EXPECT_FALSE(TRectRgn(0, kNaN, 0, 1).Inside(0.5, 0.5));
}

TEST(RectRgn, GrowsOnEachSide) {
  TRectRgn region(1, 2, 10, -4);
  region.Extention(4);
  EXPECT_EQ(region.B0, 0.5);
  EXPECT_EQ(region.dB, 3);
  EXPECT_EQ(region.L0, 11);
  EXPECT_EQ(region.dL, -6);
  region.Extention(0);
  EXPECT_FALSE(std::isfinite(region.B0));
}

}  // namespace
}  // namespace zel_cs::geomath
