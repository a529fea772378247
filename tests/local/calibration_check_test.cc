#include "geomath/local/calibration_check.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "geomath/local/local_to_grid.h"
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

// The standard deviation of the combination w of quantities with these covariances.
template <std::size_t N>
double SigmaOf(const double (&covariance)[N][N], const std::array<double, N>& w) {
  double variance = 0;
  for (std::size_t r = 0; r < N; ++r)
    for (std::size_t c = 0; c < N; ++c) variance += w[r] * covariance[r][c] * w[c];
  return std::sqrt(variance);
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
    // About the pivot, carried to the grid's origin.
    SiteCovariance about;
    ASSERT_EQ(check.Covariance(about), LocalToGrid::kBoth);
    double tN, tE, scale, theta;
    ASSERT_TRUE(solved.solver.GetPlaneParameters(tN, tE, scale, theta));
    const double n = -(about.pivotN * std::cos(theta) - about.pivotE * std::sin(theta));
    const double e = -(about.pivotN * std::sin(theta) + about.pivotE * std::cos(theta));
    EXPECT_NEAR(SigmaOf(about.ofPlane, {1, 0, n, -scale * e}) / row.tN, 1, kLinear);
    EXPECT_NEAR(SigmaOf(about.ofPlane, {0, 1, e, scale * n}) / row.tE, 1, kLinear);
    EXPECT_NEAR(SigmaOf(about.ofPlane, {0, 0, 0, 1}) / row.rotation, 1, kLinear);
    for (std::size_t i = 0; i < 5; ++i) {
      EXPECT_NEAR(check.Points()[i].standardN, row.standard[i][0], kLinear) << i;
      EXPECT_NEAR(check.Points()[i].standardE, row.standard[i][1], kLinear) << i;
    }
    EXPECT_TRUE(std::isnan(check.Points()[6].standardN)) << "used for rotation only";
  }

  Solved solved(NoisyPoints());
  const CalibrationCheck check = solved.Check();
  constexpr double kPrinted = 2e-6;
  EXPECT_NEAR(check.VerticalSigma() / 0.022790339510199931, 1, kPrinted);
  EXPECT_NEAR(check.Deviations().aN / 2.6339047056978131e-5, 1, kPrinted);
  EXPECT_NEAR(check.Deviations().aE / 1.4760127461749012e-5, 1, kPrinted);
  EXPECT_NEAR(check.Deviations().h0 / 135.71203660429908, 1, kPrinted);
  SiteCovariance about;
  ASSERT_EQ(check.Covariance(about), LocalToGrid::kBoth);
  EXPECT_NEAR(SigmaOf(about.ofHeight, {1, -about.pivotN, -about.pivotE}) / 135.71203660429908, 1,
              kPrinted);
  EXPECT_NEAR(SigmaOf(about.ofHeight, {0, 1, 0}) / 2.6339047056978131e-5, 1, kPrinted);
  const double standardH[] = {1.4128482, 0.041868649, -1.2680319, NAN, -1.2100247, -0.057615978};
  const double predictedH[] = {0.03932258, 0.001596192,  -0.073246972,
                               NAN,        -0.052185857, -0.0017915105};
  for (std::size_t i = 0; i < 6; ++i) {
    if (i == 3) continue;  // horizontal only
    EXPECT_NEAR(check.Points()[i].standardH, standardH[i], kPrinted) << i;
    EXPECT_NEAR(check.Points()[i].predictedH, predictedH[i], kPrinted) << i;
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

// Four corners of a kilometre with a centimetre of noise, and a fifth point.
TEST(CalibrationCheck, NamesThePointNearTheCentroidThatSpoilsTheSite) {
  constexpr double corners[][2] = {{500, 500}, {500, -500}, {-500, -500}, {-500, 500}};
  constexpr double noise[][2] = {{0.01, -0.004}, {-0.007, 0.01}, {0.003, 0.008}, {-0.01, -0.006}};
  const auto site = [&](double fromCentre, bool fifth) {
    std::vector<IdenticalPoint> list;
    for (std::size_t i = 0; i < 4; ++i) {
      const auto [n, e] = corners[i];
      list.push_back(
          PointOf(n, e, 20, n + 1000 + noise[i][0], e + 2000 + noise[i][1], 23, PointUseBoth));
    }
    list.push_back(PointOf(fromCentre, 0, 20, fromCentre + 1000, 2000.01, 23,
                           fifth ? PointUseBoth : PointUseVertical));
    return list;
  };
  const auto theWarning = [](const CalibrationCheck& check) {
    const auto& all = check.Warnings();
    return std::find_if(all.begin(), all.end(),
                        [](const auto& w) { return w.kind == Kind::nearCentroid; });
  };
  for (const double fromCentre : {1e-3, 1.0, 10.0, 60.0}) {
    SCOPED_TRACE(fromCentre);
    Solved spoiled(site(fromCentre, true)), good(site(fromCentre, false));
    const CalibrationCheck check = spoiled.Check();
    const auto warning = theWarning(check);
    ASSERT_NE(warning, check.Warnings().end());
    EXPECT_EQ(warning->point, 4);
    EXPECT_NEAR(warning->value, 0.8 * fromCentre, 1e-12) << "a fifth of it moves the centroid";
    double tN, tE, scale, rotation, rms;
    ASSERT_TRUE(good.solver.GetPlaneParameters(tN, tE, scale, rotation));
    ASSERT_TRUE(good.solver.GetDEstimation(rms));
    EXPECT_EQ(warning->without.scale, scale);
    EXPECT_EQ(warning->without.rotation, rotation);
    EXPECT_NEAR(warning->without.rms, rms, 1e-12);
    ASSERT_TRUE(spoiled.solver.GetDEstimation(rms));
    EXPECT_NEAR(warning->fit.rms, rms, 1e-12);
    EXPECT_EQ(check.WorstHorizontal(), -1) << "no corner is to blame";
    EXPECT_FALSE(Warns(check, Kind::suspiciousPoint) || Warns(check, Kind::misfit));
  }
  EXPECT_EQ(Solved(site(300, true)).Check().Warnings().size(), 0u);
  EXPECT_EQ(Solved(site(10, false)).Check().Warnings().size(), 0u);
  const std::string text = CalibrationWarningText(
      {Kind::nearCentroid, 4, 8, {1, 0.1, 0.38}, {1.0000012, 0, 0.0087}}, "P5");
  EXPECT_EQ(text,
            "P5 lies 8.00 m from the centre of the control, where an error of its position turns "
            "and scales the whole site: rms 0.3800 m. Without points so near, the site has scale "
            "1.0000012000, rotation 0.0000000 degrees and rms 0.0087 m. Use the point for its "
            "height only.");

  std::vector<IdenticalPoint> two = site(10, true);
  two.push_back(PointOf(-9, 3, 20, 991.01, 2003, 23, PointUseBoth));
  const CalibrationCheck both = Solved(two).Check();
  EXPECT_EQ(std::count_if(both.Warnings().begin(), both.Warnings().end(),
                          [](const auto& w) { return w.kind == Kind::nearCentroid; }),
            2);
}

TEST(CalibrationCheck, TellsAMirrorImageFromAMisfit) {
  std::vector<IdenticalPoint> exchanged = Exact(), opposite = Exact(), mistyped = Exact();
  for (IdenticalPoint& p : exchanged) std::swap(p.localN, p.localE);
  for (IdenticalPoint& p : opposite) p.localE = -p.localE;
  mistyped[2].localN += 100;
  for (const auto* mirrored : {&exchanged, &opposite}) {
    const CalibrationCheck check = Solved(*mirrored).Check();
    ASSERT_TRUE(Warns(check, Kind::mirrored));
    EXPECT_FALSE(Warns(check, Kind::misfit));
    EXPECT_NEAR(check.Warnings()[0].value, 0, 1e-6) << "the mirror image is exact";
    EXPECT_GT(check.Warnings()[0].fit.rms, 100);
    EXPECT_NE(CalibrationWarningText(check.Warnings()[0]).find("north and east are exchanged"),
              std::string::npos);
  }
  // Few points along a line, where some are nearer to the centre than the others.
  std::vector<IdenticalPoint> narrow;
  for (const auto& [n, e] : {std::pair(0, 0), {100, 130}, {200, 100}, {300, 230}, {400, 200}})
    narrow.push_back(PointOf(n, e, 20, n, e, 20, PointUseBoth));
  const CalibrationCheck exact = Solved(narrow).Check();
  EXPECT_FALSE(Warns(exact, Kind::nearCentroid)) << "nothing is spoiled";
  for (const PointCheck& point : exact.Points())
    EXPECT_FALSE(std::abs(point.standardN) > 1 || std::abs(point.standardE) > 1);
  for (IdenticalPoint& p : narrow) std::swap(p.localN, p.localE);
  const CalibrationCheck turned = Solved(narrow).Check();
  EXPECT_TRUE(Warns(turned, Kind::mirrored));
  EXPECT_FALSE(Warns(turned, Kind::nearCentroid));

  const CalibrationCheck check = Solved(mistyped).Check();
  EXPECT_TRUE(Warns(check, Kind::misfit));
  EXPECT_FALSE(Warns(check, Kind::mirrored));
  mistyped[2].localN -= 98;  // 2 m in a site of a kilometre
  EXPECT_FALSE(Warns(Solved(mistyped).Check(), Kind::misfit));
}

// Heights 5, 1, 3, 3 m above the global ones, in one line: by hand.
TEST(CalibrationCheck, ExaminesTheMeanShiftOfHeightsInOneLine) {
  std::vector<IdenticalPoint> line;
  constexpr double above[] = {5, 1, 3, 3};
  for (int i = 0; i < 4; ++i)
    line.push_back(PointOf(100 * i, 100 * i, 20, 100 * i, 100 * i, 20 + above[i], PointUseBoth));
  Solved solved(line);
  EXPECT_TRUE(Warns(solved.Check(), Kind::heightsInLine));
  EXPECT_TRUE(std::isnan(solved.Check().VerticalSigma()));
  double rms;
  ASSERT_TRUE(solved.solver.GetDEstimation(rms));
  EXPECT_TRUE(std::isnan(solved.Check().VerticalSigma())) << "residuals without a shift";
  for (std::size_t i = 0; i < 4; ++i) solved.points[i].residualH = above[i] - 3;
  const CalibrationCheck check = solved.Check();
  EXPECT_TRUE(Warns(check, Kind::heightsShifted));
  EXPECT_FALSE(Warns(check, Kind::heightsInLine));
  const double sigma = std::sqrt((4.0 + 4) / 3);
  EXPECT_NEAR(check.VerticalSigma(), sigma, 1e-12);
  EXPECT_NEAR(check.Deviations().h0, sigma / 2, 1e-12);
  EXPECT_EQ(check.Deviations().aN, 0);
  EXPECT_NEAR(check.Points()[0].predictedH, 5 - (1 + 3 + 3) / 3.0, 1e-12);
  EXPECT_NEAR(check.Points()[0].standardH, 2 / (sigma * std::sqrt(3.0 / 4)), 1e-12);
  EXPECT_EQ(check.WorstVertical(), 0);
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
  for (IdenticalPoint& p : line) {
    p.localE -= 0.95 * p.globalE;
    p.globalE *= 0.05;
  }
  Solved inLine(line);
  EXPECT_TRUE(Warns(inLine.Check(), Kind::pointsInLine));
  EXPECT_TRUE(Warns(inLine.Check(), Kind::heightsInLine));

  std::vector<IdenticalPoint> feet = Exact();
  for (IdenticalPoint& p : feet) {
    p.localN /= 0.3048;
    p.localE /= 0.3048;
  }
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
