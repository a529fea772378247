#include "geomath/local/calibration_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "geomath/proj/methods/ster_proj.h"
#include "tests/local/site_case.h"

using namespace zel_cs::geomath;
using Kind = CalibrationWarning::Kind;

namespace {

struct Solved {
  explicit Solved(std::vector<IdenticalPoint> list, bool fixScale = false)
      : points(std::move(list)),
        solver(points.Pointers(), points.Count(), fixScale, &grid, 0, 0, site::kCentreOfExtent) {
    solver.UpdateParameters();
  }
  CalibrationCheck Check() { return {points.Pointers(), points.Count(), solver}; }

  TSterProj grid{kWgs84A, kWgs84InvF, 0.9, 0.1, 1, 0, 0};
  ControlPoints points;
  TLocalizationParam solver;
};

bool Warns(const CalibrationCheck& check, Kind kind) {
  const auto& all = check.Warnings();
  return std::any_of(all.begin(), all.end(), [&](const auto& w) { return w.kind == kind; });
}

// Six points around the origin, exact: local = global + (1000, 2000), heights + 3.
std::vector<IdenticalPoint> Exact() {
  std::vector<IdenticalPoint> list;
  constexpr double places[][2] = {{500, 10},  {-490, 20}, {30, 480},
                                  {15, -510}, {300, 320}, {-310, -290}};
  for (const auto& [n, e] : places)
    list.push_back(PointOf(n, e, 20, n + 1000, e + 2000, 23, PointUseBoth));
  return list;
}

}  // namespace

// mpmath, 40 digits: the whole estimator differentiated numerically by every local coordinate, the
// cofactors from that matrix; heights by least squares.
TEST(CalibrationCheck, PropagatesVariancesThroughTheEstimators) {
  struct Row {
    bool fixScale;
    double sigma, tN, tE, scale, rotation, standard[5][2];
  };
  constexpr Row rows[] = {
      {false,
       0.02919581090978506,
       130.49749740315235,
       107.50659466308756,
       2.6048692856010421e-5,
       1.9295298846369902e-5,
       {{0.36630458, 1.3520906},
        {0.68267915, 0.459722},
        {-0.85179318, 0.1533085},
        {-0.39360641, 1.0667039},
        {0.14245948, -1.8470359}}},
      {true,
       0.14706527768768401,
       209.85955099742887,
       461.42721606096036,
       0,
       9.7194371195121896e-5,
       {{0.12364709, -0.10711588},
        {1.3232699, 0.37690551},
        {-0.37671188, 1.3855162},
        {-1.3079312, 0.45656188},
        {0.19210423, -2.1178691}}},
  };
  constexpr double kLinear = 3e-3;  // relative: misfits of up to 5e-5 of a distance, up to 3e-3 of
                                    // the shortest one enter the derivatives in second order
  for (const Row& row : rows) {
    Solved solved(NoisyPoints(), row.fixScale);
    const CalibrationCheck check = solved.Check();
    EXPECT_NEAR(check.HorizontalSigma() / row.sigma, 1, kLinear);
    EXPECT_NEAR(check.Deviations().tN / row.tN, 1, kLinear);
    EXPECT_NEAR(check.Deviations().tE / row.tE, 1, kLinear);
    EXPECT_NEAR(check.Deviations().rotation / row.rotation, 1, kLinear);
    EXPECT_NEAR(check.Deviations().scale, row.scale, kLinear * row.scale);
    for (std::size_t i = 0; i < 5; ++i) {
      EXPECT_NEAR(check.Points()[i].standardN, row.standard[i][0], kLinear) << i;
      EXPECT_NEAR(check.Points()[i].standardE, row.standard[i][1], kLinear) << i;
    }
    EXPECT_TRUE(std::isnan(check.Points()[6].standardN)) << "used for rotation only";
  }

  Solved solved(NoisyPoints());
  const CalibrationCheck check = solved.Check();
  // The solver's plane is good to some 1e-6 m here, from normal equations in coordinates of 5e6 m.
  constexpr double kPrinted = 2e-6, kOfPlane = 1e-4;
  EXPECT_NEAR(check.VerticalSigma() / 0.022790339510199931, 1, kOfPlane);
  EXPECT_NEAR(check.Deviations().aN / 2.6339047056978131e-5, 1, kPrinted);
  EXPECT_NEAR(check.Deviations().aE / 1.4760127461749012e-5, 1, kPrinted);
  EXPECT_NEAR(check.Deviations().h0 / 135.71203660429908, 1, kPrinted);
  const double standardH[] = {1.4128482, 0.041868649, -1.2680319, NAN, -1.2100247, -0.057615978};
  const double predictedH[] = {0.03932258, 0.001596192,  -0.073246972,
                               NAN,        -0.052185857, -0.0017915105};
  for (std::size_t i = 0; i < 6; ++i) {
    if (i == 3) continue;  // horizontal only
    EXPECT_NEAR(check.Points()[i].standardH, standardH[i], kOfPlane) << i;
    EXPECT_NEAR(check.Points()[i].predictedH, predictedH[i], kOfPlane) << i;
  }
  EXPECT_EQ(check.WorstVertical(), 2);
}

// The described estimator on the four other points, by mpmath.
TEST(CalibrationCheck, LeavesEachPointOut) {
  Solved solved(NoisyPoints());
  const CalibrationCheck check = solved.Check();
  constexpr double predicted[5][2] = {{0.011804551, 0.044033565},
                                      {0.0095555971, 0.0078067689},
                                      {-0.14191386, -0.71635882},
                                      {-0.016726415, 0.020171078},
                                      {0.012492537, -0.088261564}};
  for (std::size_t i = 0; i < 5; ++i) {
    EXPECT_NEAR(check.Points()[i].predictedN, predicted[i][0], 1e-7) << i;
    EXPECT_NEAR(check.Points()[i].predictedE, predicted[i][1], 1e-7) << i;
  }
  EXPECT_EQ(check.WorstHorizontal(), 2);
  EXPECT_TRUE(std::isnan(check.Points()[6].predictedN));
}

TEST(CalibrationCheck, NamesTheBlunder) {
  for (std::size_t bad = 0; bad < 6; ++bad) {
    std::vector<IdenticalPoint> list = Exact();
    list[bad].localE += 0.5;
    list[(bad + 2) % 6].localH -= 0.3;
    Solved solved(list);
    const CalibrationCheck check = solved.Check();
    EXPECT_EQ(check.WorstHorizontal(), static_cast<int>(bad));
    EXPECT_NEAR(check.Points()[bad].predictedE, 0.5, 1e-6) << "the others are exact";
    EXPECT_EQ(check.WorstVertical(), static_cast<int>((bad + 2) % 6));
    EXPECT_EQ(solved.points[bad].use, PointUseBoth) << "the points are only read";
  }
}

TEST(CalibrationCheck, ExactAndScarcePointsHaveNothingToName) {
  Solved exact(Exact());
  EXPECT_EQ(exact.Check().WorstHorizontal(), -1);
  EXPECT_TRUE(exact.Check().Warnings().empty());
  EXPECT_NEAR(exact.Check().HorizontalSigma(), 0, 1e-10);

  for (const std::size_t count : {0u, 1u, 2u, 3u}) {
    std::vector<IdenticalPoint> list = Exact();
    list.resize(count);
    Solved solved(list);
    const CalibrationCheck check = solved.Check();
    EXPECT_EQ(std::isnan(check.HorizontalSigma()), count < 2 || (count == 2)) << count;
    EXPECT_EQ(std::isnan(check.VerticalSigma()), count != 2) << count;
    EXPECT_EQ(Warns(check, Kind::fewPoints), count == 1 || count == 2);
    EXPECT_TRUE(Warns(check, Kind::fewHeights));
    EXPECT_EQ(check.Points().size(), count);
  }
  TLocalizationParam unsolved(nullptr, 0, false, nullptr, kWgs84A, kWgs84InvF, 0);
  EXPECT_TRUE(CalibrationCheck(nullptr, 5, unsolved).Points().empty());
}

TEST(CalibrationCheck, WarnsOfWeakGeometryInPlainWords) {
  std::vector<IdenticalPoint> line = Exact();
  for (IdenticalPoint& p : line) p.localE -= 0.95 * p.globalE, p.globalE *= 0.05;
  Solved inLine(line);
  EXPECT_TRUE(Warns(inLine.Check(), Kind::pointsInLine));
  EXPECT_TRUE(Warns(inLine.Check(), Kind::heightsInLine));

  std::vector<IdenticalPoint> feet = Exact();
  for (IdenticalPoint& p : feet) p.localN /= 0.3048, p.localE /= 0.3048;
  EXPECT_TRUE(Warns(Solved(feet).Check(), Kind::scaleFarFromOne));

  std::vector<IdenticalPoint> far = Exact();
  far.push_back(PointOf(2500, 0, 0, 0, 0, 0, PointUseNone));
  far.push_back(PointOf(0, 0, 0, 0, 0, 0, PointUseNone));
  Solved outside(far);
  const CalibrationCheck check = outside.Check();
  ASSERT_EQ(check.Warnings().size(), 1u);
  EXPECT_EQ(CalibrationWarningText(check.Warnings()[0], "GP7"),
            "GP7 lies 2000 m outside the control: the calibration is extrapolated there.");
  EXPECT_EQ(CalibrationWarningText(check.Warnings()[0]).substr(0, 8), "Point 7 ");
  EXPECT_EQ(CalibrationWarningText({Kind::fewHeights, -1, 2}),
            "Only 2 control height(s): a constant shift without inclination, and nothing shows an "
            "error in them.");
  EXPECT_EQ(check.DistanceOutside(100, 100), 0);
  EXPECT_NEAR(check.DistanceOutside(500, -990), std::hypot(485, 480), 60) << "beyond a side";

  std::vector<IdenticalPoint> many;
  for (int i = 0; i < 60; ++i) {
    const double n = 1000 * std::cos(0.7 * i) + i, e = 900 * std::sin(1.1 * i);
    const double noise = 0.01 * std::sin(17.0 * i);
    many.push_back(PointOf(n, e, 0, n + noise, e - noise, 1 + noise, PointUseBoth));
  }
  many[33].localN += 0.2;
  const CalibrationCheck blunder = Solved(many).Check();
  ASSERT_TRUE(Warns(blunder, Kind::suspiciousPoint));
  EXPECT_EQ(blunder.Warnings()[0].point, 33);
}
