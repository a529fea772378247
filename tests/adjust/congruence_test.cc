#include "geomath/adjust/congruence.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace zel_cs::geomath {
namespace {

std::vector<EpochPoint> Epochs(std::mt19937_64& random, double turn) {
  std::normal_distribution<double> normal(0, 0.003);
  std::uniform_real_distribution<double> place(-500, 500);
  std::vector<EpochPoint> points(8);
  for (EpochPoint& p : points) {
    const double at[] = {place(random), place(random), place(random) / 10};
    const double turned[] = {at[0] - turn * at[1], at[1] + turn * at[0], at[2]};
    for (int c = 0; c < 3; ++c) {
      p.first[c] = at[c] + normal(random);
      p.second[c] = turned[c] + (turn != 0 ? 1 : 0) + normal(random);
      p.firstCovariance[c][c] = p.secondCovariance[c][c] = 9e-6;
    }
  }
  return points;
}

TEST(FindMovements, FindsThePointsThatMoved) {
  std::mt19937_64 random(5);
  for (const SiteModel model : {SiteModel::none, SiteModel::rigid, SiteModel::similarity}) {
    auto points = Epochs(random, model == SiteModel::none ? 0 : 1e-4);
    points[2].second[0] += 0.05;
    points[6].second[2] -= 0.04;
    const auto found = FindMovements(points, model, 0.01);
    ASSERT_EQ(found.size(), points.size());
    for (std::size_t i = 0; i < found.size(); ++i) EXPECT_EQ(found[i].moved, i == 2 || i == 6) << i;
    EXPECT_NEAR(found[2].shift[0], 0.05, 0.015);
    EXPECT_NEAR(found[6].shift[2], -0.04, 0.015);
    EXPECT_LT(found[2].probability, 1e-6);
  }
  EXPECT_TRUE(FindMovements({}).empty());
  EXPECT_TRUE(FindMovements(std::vector<EpochPoint>(3)).empty());  // without covariances
}

// Nothing moved: a point is blamed in 5 of 100 controls.
TEST(FindMovements, HoldsItsLevel) {
  std::mt19937_64 random(6);
  int blamed = 0;
  constexpr int kControls = 400;
  for (int k = 0; k < kControls; ++k) {
    bool any = false;
    for (const PointMovement& m : FindMovements(Epochs(random, 1e-4), SiteModel::rigid, 0.05))
      any |= m.moved;
    blamed += any;
  }
  EXPECT_NEAR(blamed / double{kControls}, 0.05, 4 * std::sqrt(0.05 * 0.95 / kControls));
}

}  // namespace
}  // namespace zel_cs::geomath
