#include "geomath/design/linear_distortion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/lc_proj.h"

namespace zel_cs::geomath {
namespace {

// On the parallel of a Lambert zone, 45°, where k = k0: 40-digit evaluation with mpmath of
// k0·R/(R + h) − 1, R = a·√(1 − e²)/(1 − e²·sin²φ).
TEST(LinearDistortionTest, IsScaleAndHeightTogether) {
  constexpr double kRounding = 1e-15;
  const double at = kPi / 4;
  const TLCProj zone(kWgs84A, kWgs84InvF, at, at, 0.1, at, 0, 0, 1.00016);
  const TLCProj plain(kWgs84A, kWgs84InvF, at, at, 0.1, at, 0, 0, 1);
  const double hole = std::numeric_limits<double>::quiet_NaN();
  const double b[] = {at, at, kHalfPi}, l[] = {0.1, 0.1, 0.1}, h[] = {1020, hole, 0};
  double delta[3];
  EXPECT_EQ(LinearDistortion(zone, b, l, h, delta, 3), 1u);
  EXPECT_NEAR(delta[0], 7.77794981179841e-8, kRounding);
  EXPECT_TRUE(std::isnan(delta[1]));
  EXPECT_TRUE(std::isnan(delta[2]));
  const double below[] = {-50};
  EXPECT_EQ(LinearDistortion(plain, b, l, below, delta, 1), 1u);
  EXPECT_NEAR(delta[0], 7.83938538014867e-6, kRounding);
}

TEST(DistortionFiguresTest, WeightsDecidePercentilesAndShares) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> deltas = {-4e-6, 1e-6, nan, 2e-6, 3e-6, 9e-6};
  const std::vector<double> weights = {1, 5, 7, 2, 2, 0};
  const DistortionFigures figures(deltas, weights);
  EXPECT_EQ(figures.Count(), 4u);
  EXPECT_EQ(figures.Least(), -4e-6);
  EXPECT_EQ(figures.Greatest(), 3e-6);
  EXPECT_EQ(figures.Largest(), 4e-6);
  EXPECT_DOUBLE_EQ(figures.Range(), 7e-6);
  EXPECT_DOUBLE_EQ(figures.Mean(), 1.1e-6);
  EXPECT_DOUBLE_EQ(figures.RootMeanSquare(), std::sqrt(4.7e-12));
  EXPECT_EQ(figures.Percentile(0.5), 1e-6);
  EXPECT_EQ(figures.Percentile(0.51), 2e-6);
  EXPECT_EQ(figures.Percentile(0.9), 3e-6);
  EXPECT_EQ(figures.Percentile(1), 4e-6);
  EXPECT_DOUBLE_EQ(figures.ShareWithin(2e-6), 0.7);
  EXPECT_EQ(figures.ShareWithin(0.5e-6), 0);
  EXPECT_EQ(figures.ShareWithin(1), 1);
  const DistortionFigures none(std::vector<double>{nan});
  EXPECT_TRUE(std::isnan(none.Mean()) && std::isnan(none.Percentile(0.5)));
  EXPECT_TRUE(std::isnan(none.ShareWithin(1)) && std::isnan(none.Largest()));
}

}  // namespace
}  // namespace zel_cs::geomath
