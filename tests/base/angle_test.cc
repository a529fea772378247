#include "geomath/base/angle.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zel_cs::geomath {
namespace {

TEST(SetValue, WrapsLongitudesByAFullTurn) {
  EXPECT_EQ(SetValue(7.0, 1), 7.0 - 2 * kPi);
  EXPECT_EQ(SetValue(-7.0, 1), -7.0 + 2 * kPi);
  EXPECT_EQ(SetValue(10.0, -3), 10.0 - 2 * kPi - 2 * kPi);
  for (const double inside : {kPi, -kPi, 0.0, 3.1415}) EXPECT_EQ(SetValue(inside, 1), inside);
  EXPECT_LE(SetValue(std::nextafter(kPi, 4), 1), -3.14);
}

TEST(SetValue, KeepsLatitudesShiftedByAHalfTurnNotReflected) {
  EXPECT_EQ(SetValue(2.0, 0), 2.0 - kPi);
  EXPECT_EQ(SetValue(-2.0, 0), -2.0 + kPi);
  for (const double inside : {kHalfPi, -kHalfPi, 1.0}) EXPECT_EQ(SetValue(inside, 0), inside);
}

TEST(SetValue, KeepsAValueThatTwoCorrectionsDoNotBringInside) {
  EXPECT_EQ(SetValue(20.0, 1), 20.0 - 2 * kPi - 2 * kPi);
  EXPECT_GT(SetValue(20.0, 1), kPi);
  EXPECT_LT(SetValue(-20.0, 1), -kPi);
  EXPECT_GT(SetValue(9.0, 0), kHalfPi);
  EXPECT_EQ(SetValue(1e300, 1), 1e300);
}

TEST(SetValue, PassesNonFiniteValues) {
  constexpr double kInf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SetValue(kInf, 1), kInf);
  EXPECT_EQ(SetValue(-kInf, 0), -kInf);
  EXPECT_TRUE(std::isnan(SetValue(std::numeric_limits<double>::quiet_NaN(), 1)));
}

TEST(DMSToDeg, KeepsDecimalDegrees) { EXPECT_EQ(DMSToDeg(45.3), 45.3); }

}  // namespace
}  // namespace zel_cs::geomath
