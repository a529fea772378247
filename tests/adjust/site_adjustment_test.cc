#include "geomath/adjust/site_adjustment.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <vector>

#include "geomath/adjust/quantiles.h"
#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

AdjustmentPoint PointAt(double n, double e, double h, double localN, double localE, double localH) {
  AdjustmentPoint p;
  p.grid[0] = n;
  p.grid[1] = e;
  p.grid[2] = h;
  p.local[0] = localN;
  p.local[1] = localE;
  p.local[2] = localH;
  return p;
}

AdjustmentOptions PlaneOnly(SiteModel model = SiteModel::similarity) {
  AdjustmentOptions options;
  options.model = model;
  options.heights = HeightModel::none;
  return options;
}

// Ghilani, Adjustment Computations, two-dimensional conformal transformation: measured x, y and control
// E, N. Here x and E are the first axis, as the book turns; residuals are ours, local minus computed.
std::vector<AdjustmentPoint> Textbook() {
  return {PointAt(121.622, -128.066, 0, 1049422.40, 51089.20, 0),
          PointAt(141.228, 187.718, 0, 1049413.95, 49659.30, 0),
          PointAt(175.802, 135.728, 0, 1049244.95, 49884.95, 0)};
}

TEST(SiteAdjustment, IsTheTextbookToItsDigits) {
  const auto solved = SiteAdjustment::Solve(Textbook(), PlaneOnly());
  ASSERT_TRUE(solved);
  EXPECT_NEAR(solved->Parameters()[2], 4.51962052, 5e-9);
  EXPECT_NEAR(solved->Parameters()[3] / kRadPerDeg, 183.2180612 - 360, 5e-8);
  const SitePrediction origin = solved->Predict({0, 0, 0});
  EXPECT_NEAR(origin.local[0], 1050003.715, 5e-4);
  EXPECT_NEAR(origin.local[1], 50542.131, 5e-4);
  EXPECT_NEAR(std::sqrt(origin.covariance[0][0]), 0.12259, 5e-6);
  EXPECT_NEAR(solved->Positions().Variance(), 0.019549765, 5e-10);
  EXPECT_EQ(solved->Positions().Freedom(), 2);
  EXPECT_NEAR(solved->Deviation(2), 0.00057641, 5e-9);
  const double residuals[] = {0.0038376, -0.0291330, 0.1008670, -0.0767424, -0.1047040, 0.1058750};
  const double redundancies[] = {0.02208368, 0.41083556, 0.56708076};
  const double standardised[] = {0.18469, -1.40210, 1.12549, -0.85631, -0.99442, 1.00555};
  const double leftOut[] = {-0.17378, 1.31921, -0.24552, 0.18680, 0.18464, -0.18670};
  for (std::size_t i = 0; i < 6; ++i) {
    const AdjustedCoordinate& at = solved->At(i / 2, static_cast<int>(i % 2));
    EXPECT_NEAR(at.residual, -residuals[i], 5e-7);
    EXPECT_NEAR(at.redundancy, redundancies[i / 2], 5e-9 * 1.1);
    EXPECT_NEAR(at.standardised, -standardised[i], 5e-6 * 1.1);
    EXPECT_NEAR(at.predicted, leftOut[i], 5e-6 * 1.1);
  }
  // Of an error in A only 2 % shows.
  EXPECT_GT(solved->At(0, 0).detectable, 27 * std::sqrt(solved->Positions().Variance()));
  const double transformed[][5] = {{174.148, -120.262, 1049187.361, 51040.629, 0.134888},
                                   {513.520, -192.130, 1047637.713, 51278.829, 0.270792},
                                   {754.444, -67.706, 1046582.113, 50656.241, 0.367816},
                                   {972.788, 120.994, 1045644.713, 49749.336, 0.484302}};
  for (const auto& [x, y, e, n, sigma] : transformed) {
    const SitePrediction at = solved->Predict({x, y, 0});
    EXPECT_NEAR(at.local[0], e, 5e-4);
    EXPECT_NEAR(at.local[1], n, 5e-4);
    EXPECT_NEAR(std::sqrt(at.covariance[0][0]), sigma, 5e-7);
    EXPECT_NEAR(at.halfWidth[0], StudentQuantile(0.975, 2) * sigma, 1e-5);
  }
}

// A site of points on a ring, turned, scaled and tilted, with errors.
std::vector<AdjustmentPoint> Site(std::size_t count, double sigma, std::mt19937_64& random,
                                  const double (&common)[3] = {0, 0, 0}) {
  std::normal_distribution<double> normal;
  std::uniform_real_distribution<double> place(-800, 800);
  std::vector<AdjustmentPoint> points;
  for (std::size_t i = 0; i < count; ++i) {
    const double dn = place(random), de = place(random), h = place(random) / 20;
    const double s = 1.0002, theta = 0.4;
    points.push_back(PointAt(5.2e6 + dn, 4e5 + de, h,
                             1000 + s * (std::cos(theta) * dn - std::sin(theta) * de) +
                                 sigma * normal(random) + common[0],
                             2000 + s * (std::sin(theta) * dn + std::cos(theta) * de) +
                                 sigma * normal(random) + common[1],
                             h - 40 + 3e-5 * dn - 2e-5 * de + sigma * normal(random) + common[2]));
  }
  return points;
}

// Every closed form against what it stands for: an adjustment without the point, with an error put in.
TEST(SiteAdjustment, LeavesOutAndFindsErrorsAsItSays) {
  std::mt19937_64 random(1);
  for (const SiteModel model :
       {SiteModel::rigid, SiteModel::similarity, SiteModel::affine, SiteModel::spatial}) {
    auto points = Site(9, 0.02, random);
    for (std::size_t i = 0; i < points.size(); ++i) {
      auto& C = points[i].localCovariance;
      C[0][0] = 4e-4;
      C[1][1] = 9e-4;
      C[2][2] = 1e-3 * (1 + static_cast<double>(i));
      C[0][1] = C[1][0] = 2e-4;
      points[i].gridCovariance[0][0] = points[i].gridCovariance[2][2] = 1e-4;
    }
    AdjustmentOptions options;
    options.model = model;
    options.sigmaKnown = true;
    const auto all = SiteAdjustment::Solve(points, options);
    ASSERT_TRUE(all);
    auto others = points;
    others.erase(others.begin() + 3);
    const auto without = SiteAdjustment::Solve(others, options);
    ASSERT_TRUE(without);
    const SitePrediction at = without->Predict(points[3].grid);
    double sum = 0;
    for (int c = 0; c < 3; ++c) {
      EXPECT_NEAR(all->At(3, c).predicted, points[3].local[c] - at.local[c], 1e-6) << c;
      for (std::size_t i = 0; i < points.size(); ++i) sum += all->At(i, c).redundancy;
    }
    EXPECT_NEAR(sum, all->Positions().Freedom() + all->Heights().Freedom(), 1e-9);

    auto wrong = points;
    const double error = all->At(2, 1).detectable;
    wrong[2].local[1] += error;
    const auto shifted = SiteAdjustment::Solve(wrong, options);
    ASSERT_TRUE(shifted);
    EXPECT_NEAR(shifted->At(2, 1).normalised - all->At(2, 1).normalised, 4.1321, 1e-3);
    double moved = 0;
    for (const AdjustmentPoint& p : points) {
      const SitePrediction before = all->Predict(p.grid), after = shifted->Predict(p.grid);
      double one = 0;
      for (int c = 0; c < 3; ++c) one = std::hypot(one, after.local[c] - before.local[c]);
      moved = std::max(moved, one);
    }
    EXPECT_NEAR(all->At(2, 1).effect, moved, 1e-3 * moved);
  }
}

TEST(SiteAdjustment, ComparesModelsAndGoesToTheChain) {
  std::mt19937_64 random(2);
  const auto solved = SiteAdjustment::Solve(Site(12, 0.01, random), {});
  ASSERT_TRUE(solved);
  const auto models = solved->CompareModels();
  ASSERT_EQ(models.size(), 2U);
  EXPECT_LT(models[0].probability, 1e-6);  // a scale of 200 ppm is there
  EXPECT_GT(models[1].probability, 0.01);  // nothing that an affine map would explain
  LocalToGrid site;
  SiteCovariance covariance;
  ASSERT_TRUE(solved->Apply(site));
  ASSERT_TRUE(solved->Covariance(covariance));
  // A chain of the site alone takes metres for the positions of its geographic frame.
  double p[] = {5.2e6 + 300, 4e5 - 500, 12};
  const SitePrediction at = solved->Predict(p);
  ASSERT_TRUE(site.ToLocal(p[0], p[1], p[2], LocalToGrid::kBoth));
  for (int c = 0; c < 3; ++c) EXPECT_NEAR(p[c], at.local[c], 1e-8);
  EXPECT_NEAR(covariance.ofPlane[0][0], at.covariance[0][0], 0.5 * at.covariance[0][0]);
  EXPECT_FALSE(
      SiteAdjustment::Solve(Site(12, 0.01, random), PlaneOnly(SiteModel::affine))->Apply(site));
}

TEST(SiteAdjustment, RefusesWhatDoesNotDetermineIt) {
  std::mt19937_64 random(3);
  EXPECT_FALSE(SiteAdjustment::Solve({}, {}));
  EXPECT_FALSE(SiteAdjustment::Solve(Site(1, 0, random), PlaneOnly()));
  EXPECT_TRUE(SiteAdjustment::Solve(Site(2, 0, random), PlaneOnly()));
  EXPECT_FALSE(SiteAdjustment::Solve(Site(2, 0, random), PlaneOnly(SiteModel::affine)));
  auto line = Site(3, 0, random);
  for (std::size_t i = 0; i < 3; ++i)
    line[i].grid[1] = line[0].grid[1] + 2 * (line[i].grid[0] - line[0].grid[0]);
  EXPECT_FALSE(SiteAdjustment::Solve(line, PlaneOnly(SiteModel::affine)));
  auto bad = Site(4, 0, random);
  bad[1].local[0] = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(SiteAdjustment::Solve(bad, {}));
  bad = Site(4, 0, random);
  bad[1].localCovariance[0][0] = 1e-4;  // the others have none
  EXPECT_FALSE(SiteAdjustment::Solve(bad, {}));
  for (AdjustmentPoint& p : bad) p.localCovariance[0][0] = p.localCovariance[1][1] = 1e-4;
  EXPECT_TRUE(SiteAdjustment::Solve(bad, {}));  // heights of equal weight beside weighted positions
  const auto two = SiteAdjustment::Solve(Site(2, 0, random), PlaneOnly());
  EXPECT_TRUE(std::isnan(two->Positions().Variance()));
  EXPECT_TRUE(std::isnan(two->Predict({5.2e6, 4e5, 0}).halfWidth[0]));
}

TEST(SiteAdjustment, RobustSolutionLeavesOutliers) {
  std::mt19937_64 random(4);
  auto points = Site(12, 0.005, random);
  auto clean = points;
  clean.erase(clean.begin() + 7);
  points[7].local[0] += 0.3;
  AdjustmentOptions options;
  options.robust = true;
  const auto robust = SiteAdjustment::Solve(points, options), usual = SiteAdjustment::Solve(points);
  const auto wanted = SiteAdjustment::Solve(clean);
  ASSERT_TRUE(robust && usual && wanted);
  EXPECT_LT(robust->At(7, 0).weight, 1e-5);
  const double at[] = {5.2e6, 4e5, 0};
  const double off = std::abs(robust->Predict(at).local[0] - wanted->Predict(at).local[0]);
  EXPECT_LT(off, 0.25 * std::abs(usual->Predict(at).local[0] - wanted->Predict(at).local[0]));
  EXPECT_GT(std::abs(usual->At(7, 0).standardised), usual->Critical(0.05));
}

// 95 % intervals hold the truth in 95 % of simulated sites; GEOMATH_SITES raises their number
// (scripts/monte_carlo.sh runs 100,000).
TEST(SiteAdjustment, IntervalsCoverTheTruth) {
  const char* const text = std::getenv("GEOMATH_SITES");
  const std::size_t sites = text ? std::strtoul(text, nullptr, 10) : 3000;
  std::mt19937_64 random(20261123);
  std::normal_distribution<double> normal;
  for (const double base : {0.0, 0.015}) {
    double covered[3] = {}, circles = 0, alarms = 0, tested = 0;
    for (std::size_t k = 0; k < sites; ++k) {
      const std::size_t count = 3 + k % 48;
      const double error[] = {base * normal(random), base * normal(random), base * normal(random)};
      AdjustmentOptions options;
      for (double& sigma : options.common) sigma = base;
      // Heights of three points have no redundancy: a shift of a level site there.
      auto points = Site(count, 0.01, random, error);
      if (count == 3) {
        options.heights = HeightModel::shift;
        for (auto& p : points) p.local[2] -= 3e-5 * (p.grid[0] - 5.2e6) - 2e-5 * (p.grid[1] - 4e5);
      }
      const auto solved = SiteAdjustment::Solve(points, options);
      ASSERT_TRUE(solved);
      const double dn = 700, de = -300,
                   truth[] = {1000 + 1.0002 * (std::cos(0.4) * dn - std::sin(0.4) * de),
                              2000 + 1.0002 * (std::sin(0.4) * dn + std::cos(0.4) * de),
                              -40 + (count == 3 ? 0 : 3e-5 * dn - 2e-5 * de)};
      const SitePrediction at = solved->Predict({5.2e6 + dn, 4e5 + de, 0});
      for (int c = 0; c < 3; ++c) covered[c] += std::abs(at.local[c] - truth[c]) <= at.halfWidth[c];
      circles += std::hypot(at.local[0] - truth[0], at.local[1] - truth[1]) <= at.radius;
      if (count < 4) continue;
      ++tested;
      double largest = 0;
      for (std::size_t i = 0; i < count; ++i)
        for (int c = 0; c < 2; ++c)
          largest = std::max(largest, std::abs(solved->At(i, c).standardised));
      alarms += largest > solved->Critical(0.05);
    }
    const auto n = static_cast<double>(sites);
    const double error = 4 * std::sqrt(0.95 * 0.05 / n);
    for (const double c : covered) EXPECT_NEAR(c / n, 0.95, error) << base;
    EXPECT_GT(circles / n, 0.95 - error);
    EXPECT_LT(alarms / tested, 0.05 + error);  // Bonferroni's level is a bound
    EXPECT_GT(alarms / tested, 0.035 - error);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
