#include "geomath/local/grid_to_ground.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/support/tolerance.h"

using namespace zel_cs::geomath;

namespace {

GridToGround Site() {
  GridToGround site;
  site.offsetN = 10;
  site.offsetE = 20;
  site.height = 1000;
  site.gridScaleFactor = 0.9996;
  site.rotation = 0.3;
  site.originN = 5e6;
  site.originE = 4e5;
  site.flags = GridToGround::kDeriveScale | GridToGround::kHasOrigin;
  return site;
}

}  // namespace

// 40-digit evaluation of the rotation and scale about the origin.
TEST(GridToGround, CarriesAPointAboutItsOriginAndBack) {
  const GridToGround site = Site();
  double n = 5000100, e = 400200, h = 55;
  unsigned long present = 0xC;
  ASSERT_TRUE(site.ToGround(n, e, h, &present));
  EXPECT_NEAR(n, 5000046.449905579, tolerance::kBatchMetres);
  EXPECT_NEAR(e, 400240.7422440686, tolerance::kBatchMetres);
  EXPECT_EQ(h, 55);
  ASSERT_TRUE(site.ToGrid(n, e, h, &present));
  EXPECT_NEAR(n, 5000100, tolerance::kBatchMetres);
  EXPECT_NEAR(e, 400200, tolerance::kBatchMetres);
}

TEST(GridToGround, FlagsChooseScaleOriginAndState) {
  GridToGround site;
  EXPECT_EQ(site.flags, 2u);
  EXPECT_FALSE(site.IsDisabled());
  site.SetEnabled(false);
  EXPECT_TRUE(site.IsDisabled());
  EXPECT_EQ(site.flags, 0xAu);
  site.SetEnabled(true);
  EXPECT_EQ(site.flags, 2u);

  site.scale = 2;  // not used while the scale is derived
  site.originN = 100;
  site.originE = 200;
  unsigned long present = 0xC;
  double n = 7, e = 8, h = 0;
  ASSERT_TRUE(site.ToGround(n, e, h, &present));
  EXPECT_EQ(n, 7);
  EXPECT_EQ(e, 8);
  EXPECT_EQ(site.FNgrid(), 0);

  site.flags = GridToGround::kHasOrigin | GridToGround::kDisabled;
  ASSERT_TRUE(site.ToGround(n, e, h, &present)) << "a disabled object converts all the same";
  EXPECT_EQ(n, 100 + (7 - 100) * 2);
  EXPECT_EQ(e, 200 + (8 - 200) * 2);

  site.SetTrivial();
  EXPECT_EQ(site.flags, 1u);
  EXPECT_EQ(site.scale, 1);
  ASSERT_TRUE(site.ToGrid(n = 3, e = 4, h, &present));
  EXPECT_EQ(n, 3);
  EXPECT_EQ(e, 4);
}

TEST(GridToGround, RefusesARotationOfOneComponent) {
  GridToGround site = Site();
  double n = 1, e = 2, h = 3;
  for (unsigned long present : {0x4ul, 0x8ul, 0ul}) {
    EXPECT_FALSE(site.ToGround(n, e, h, &present));
    EXPECT_FALSE(site.ToGrid(n, e, h, &present));
  }
  unsigned long both = 0xC;
  EXPECT_FALSE(site.ToGround(n, e, h, nullptr));
  EXPECT_FALSE(site.ToGrid(n, e, h, nullptr));
  EXPECT_EQ(n, 1);
  EXPECT_EQ(e, 2);
  site.rotation = std::numeric_limits<double>::quiet_NaN();
  both = 0x4;
  EXPECT_FALSE(site.ToGround(n, e, h, &both));
}

TEST(GridToGround, KeepsAnAbsentComponentInTheRotationAndUnwritten) {
  GridToGround site = Site();
  site.rotation = 1e-15;
  site.flags |= GridToGround::kHasOrigin;
  const double k = (1000 / 6371000.0 + 1) / 0.9996;
  unsigned long present = 0x4;
  double n = 5000100, e = 1e9, h = 0;
  ASSERT_TRUE(site.ToGround(n, e, h, &present));
  EXPECT_NEAR(n, 5e6 + (100 - 1e9 * 1e-15) * k + 10, tolerance::kBatchMetres);
  EXPECT_EQ(e, 1e9);
  present = 0x8;
  n = 1e9;
  e = 400200;
  ASSERT_TRUE(site.ToGrid(n, e, h, &present));
  EXPECT_EQ(n, 1e9);
  EXPECT_NEAR(e, 4e5 + (200 - 20 - 1e9 * 1e-15) / k, tolerance::kBatchMetres);
}

TEST(GridToGround, BatchesAgreeWithPoints) {
  const GridToGround site = Site();
  constexpr std::size_t kCount = 600;  // several blocks
  double pairs[2 * kCount];
  for (std::size_t i = 0; i < kCount; ++i) {
    pairs[2 * i] = 5e6 + 13.0 * static_cast<double>(i);
    pairs[2 * i + 1] = i == 7 ? std::nan("") : 4e5 - 7.0 * static_cast<double>(i);
  }
  EXPECT_EQ(site.ToGroundBatch(pairs, pairs + 1, kCount, 2), kCount - 1);
  EXPECT_TRUE(std::isnan(pairs[14]) && std::isnan(pairs[15]));
  unsigned long present = 0xC;
  double n = 5e6 + 13.0 * 500, e = 4e5 - 7.0 * 500, h = 0;
  ASSERT_TRUE(site.ToGround(n, e, h, &present));
  EXPECT_EQ(pairs[1000], n);
  EXPECT_EQ(pairs[1001], e);
  EXPECT_EQ(site.ToGridBatch(pairs, pairs + 1, kCount, 2), kCount - 1);
  EXPECT_NEAR(pairs[1000], 5e6 + 13.0 * 500, tolerance::kBatchMetres);
}
