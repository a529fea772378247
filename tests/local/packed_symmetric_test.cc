#include "geomath/local/packed_symmetric.h"

#include <gtest/gtest.h>

#include <limits>

using namespace zel_cs::geomath;

TEST(PackedSymmetric, InvertsByHand) {
  // [4 2 0; 2 5 2; 0 2 5]: determinant 64, inverse from the cofactors.
  double a[] = {4, 2, 5, 0, 2, 5};
  const double inverse[] = {21.0 / 64, -10.0 / 64, 20.0 / 64, 4.0 / 64, -8.0 / 64, 16.0 / 64};
  ASSERT_TRUE(InvertPackedSymmetric(a, 3));
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(a[i], inverse[i], 1e-16) << i;
}

TEST(PackedSymmetric, RefusesWhatIsNotPositiveDefinite) {
  double zero[] = {0}, singular[] = {1, 2, 4}, negative[] = {1, 2, 3};
  double nan[] = {std::numeric_limits<double>::quiet_NaN(), 0, 1};
  EXPECT_FALSE(InvertPackedSymmetric(zero, 1));
  EXPECT_FALSE(InvertPackedSymmetric(singular, 2));
  EXPECT_FALSE(InvertPackedSymmetric(negative, 2));
  EXPECT_FALSE(InvertPackedSymmetric(nan, 2));
}

TEST(PackedSymmetric, AcceptsAPivotThatLostMostOfItsDigits) {
  double a[] = {1, 1, 1 + 1e-12};
  ASSERT_TRUE(InvertPackedSymmetric(a, 2));
  EXPECT_NEAR(a[2], 1e12, 1e9);
}
