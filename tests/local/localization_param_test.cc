#include "geomath/local/localization_param.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <limits>
#include <numbers>
#include <string>

#include "geomath/local/local_to_grid.h"
#include "geomath/local/plane_rotation.h"
#include "tests/local/site_case.h"

using namespace zel_cs::geomath;
using tolerance::kDegree;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kCentreOfExtent = site::kCentreOfExtent, kFirstPoint = site::kFirstPoint;

struct Plane {
  double tN = 0, tE = 0, s = 0, theta = 0;
};
struct Slope {
  double h0 = 0, aN = 0, aE = 0;
};

Plane PlaneOf(const TLocalizationParam& solver) {
  Plane p;
  EXPECT_TRUE(solver.GetPlaneParameters(p.tN, p.tE, p.s, p.theta));
  return p;
}

Slope SlopeOf(const TLocalizationParam& solver) {
  Slope p;
  EXPECT_TRUE(solver.GetHeightParameters(p.h0, p.aN, p.aE));
  return p;
}

/// The solver over points whose global coordinates are a grid's.
TLocalizationParam OnGrid(ControlPoints& points, bool fixScale = false,
                          int placement = kCentreOfExtent) {
  static TSterProj grid(kWgs84A, kWgs84InvF, 0.9, 0.1, 1, 0, 0);
  return {points.Pointers(), points.Count(), fixScale, &grid, 0, 0, placement};
}

/// A point that an exact transformation carries over.
IdenticalPoint Exact(double n, double e, const Plane& p, const Slope& v, int use) {
  const auto [rn, re] = PlaneRotation(p.theta).Turn(n, e);
  const double h = 50 + 0.001 * n;
  return PointOf(n, e, h, p.s * rn + p.tN, p.s * re + p.tE, h + v.h0 + v.aN * n + v.aE * e, use);
}

class Site : public testing::TestWithParam<site::Configuration> {};

site::Statistics StatisticsOf(const std::vector<site::Residual>& residuals) {
  site::Statistics s{};
  for (const site::Residual& r : residuals) {
    s.rmsN += r.n * r.n;
    s.rmsE += r.e * r.e;
    s.rmsH += r.h * r.h;
    s.max = std::max(s.max, std::hypot(r.n, r.e));
    s.maxH = std::max(s.maxH, std::abs(r.h));
  }
  const double count = static_cast<double>(residuals.size());
  s.rms = std::sqrt((s.rmsN + s.rmsE) / count);
  for (double* rms : {&s.rmsN, &s.rmsE, &s.rmsH}) *rms = std::sqrt(*rms / count);
  return s;
}

void ExpectStatistics(const site::Statistics& s, const site::Statistics& expected) {
  constexpr double kPrinted = 0.5001e-4;  // printed to 0.1 mm
  EXPECT_NEAR(s.rms, expected.rms, kPrinted);
  EXPECT_NEAR(s.max, expected.max, kPrinted);
  EXPECT_NEAR(s.rmsN, expected.rmsN, kPrinted);
  EXPECT_NEAR(s.rmsE, expected.rmsE, kPrinted);
  EXPECT_NEAR(s.rmsH, expected.rmsH, kPrinted);
  EXPECT_NEAR(s.maxH, expected.maxH, kPrinted);
}

}  // namespace

TEST_P(Site, GivesTheExpectedParametersAndResiduals) {
  // The shifts reach 5e5 m; those of a base grid are differences of such figures.
  constexpr double kMetres = 3e-9, kScale = 1e-13, kRadians = 1e-13, kRms = 1e-9;
  constexpr double kHeight = 3e-9;  // slopes times coordinates of up to 5e5 m
  constexpr double kSlopes = 5e-15;

  const site::Configuration& c = GetParam();
  TDoubleSter grid = NetherlandsGrid();
  ControlPoints points(SitePoints(c));
  TLocalizationParam solver(points.Pointers(), points.Count(), c.fixScale,
                            c.baseGrid ? &grid : nullptr, kWgs84A, kWgs84InvF, c.placement);
  ASSERT_TRUE(solver.UpdateParameters());
  EXPECT_EQ(solver.GetInitialization(), 3);
  EXPECT_EQ(solver.GetLocalizationType(), c.baseGrid ? 5 : 1);
  EXPECT_EQ(solver.GetLocalizationPlacement(), c.placement);

  const Plane plane = PlaneOf(solver);
  EXPECT_NEAR(plane.tN, c.tN, kMetres);
  EXPECT_NEAR(plane.tE, c.tE, kMetres);
  EXPECT_NEAR(plane.s, c.scale, kScale);
  EXPECT_NEAR(plane.theta, c.rotation, kRadians);
  const Slope slope = SlopeOf(solver);
  EXPECT_NEAR(slope.h0, c.h0, kHeight);
  EXPECT_NEAR(slope.aN, c.aN, kSlopes);
  EXPECT_NEAR(slope.aE, c.aE, kSlopes);

  double rms = 0, angle = 0, distance = 0;
  ASSERT_TRUE(solver.GetEstimations(rms, angle));
  ASSERT_TRUE(solver.AvgOffCenter(distance));
  EXPECT_NEAR(rms, c.rms, kRms);
  EXPECT_NEAR(angle, c.angle, kRms / c.meanDistance);
  EXPECT_NEAR(distance, c.meanDistance, kMetres);
  if (!c.baseGrid) {
    EXPECT_NEAR(solver.GetLat0(), c.originLat, 1e-15);
    EXPECT_NEAR(solver.GetLon0(), c.originLon, 1e-15);
  }

  std::vector<site::Residual> control, check;
  for (const IdenticalPoint& p : points) control.push_back({p.residualN, p.residualE, p.residualH});
  ExpectStatistics(StatisticsOf(control), c.control);

  LocalToGrid local;
  local.SetProj(solver.GetBaseProjection());
  local.mode = LocalToGrid::kBoth;
  const double planeParams[] = {plane.tN, plane.tE, plane.s, plane.theta};
  for (int i = 0; i < 4; ++i) local.SetPlaneParam(planeParams[i], i, 0);
  const double heightParams[] = {slope.h0, slope.aN, slope.aE};
  for (int i = 0; i < 3; ++i) local.SetHeightParam(heightParams[i], i, 0);
  for (const site::Point& p : site::kCheck) {
    double n = c.baseGrid ? p.baseN : p.latDeg * kDegree;
    double e = c.baseGrid ? p.baseE : p.lonDeg * kDegree, h = p.h;
    ASSERT_TRUE(c.baseGrid ? local.ToLocal(n, e, h, 3) : local.Forward(n, e, h, 3));
    check.push_back({p.localN - n, p.localE - e, p.localH - h});
  }
  ExpectStatistics(StatisticsOf(check), c.check);

  if (c.name[0] != 'A') return;
  constexpr double kPrintedResidual = 0.51e-6;
  const auto expectRows = [&](const auto& computed, const auto& printed) {
    for (std::size_t i = 0; i < computed.size(); ++i) {
      EXPECT_NEAR(computed[i].n, printed[i].n, kPrintedResidual) << i;
      EXPECT_NEAR(computed[i].e, printed[i].e, kPrintedResidual) << i;
      EXPECT_NEAR(computed[i].h, printed[i].h, kPrintedResidual) << i;
    }
  };
  expectRows(control, site::kControlResiduals);
  expectRows(check, site::kCheckResiduals);
}

INSTANTIATE_TEST_SUITE_P(Netherlands, Site, testing::ValuesIn(site::kConfigurations),
                         [](const auto& row) { return std::string(row.param.name); });

// The estimators by mpmath in 40 digits: rotation from unit directions, scale from the mean of the
// distance ratios, shifts from the centroids, heights by least squares.
TEST(LocalizationParam, EstimatesAsDescribedFromNoisyPoints) {
  struct Row {
    const char* name;
    bool rotationPoints, fixScale;
    double tN, tE, s, theta, rms;
  };
  constexpr Row rows[] = {
      {"rotation points", true, false, 1147.0746581829019, -590.43592265618081, 1.0001814996975696,
       0.3500273049204268, 0.039957145759216939},
      {"rotation points, fixed", true, true, 2008.7423182619403, -198.54531216522356, 1.0,
       0.3500273049204268, 0.18913629947250072},
      {"horizontal points", false, false, 1167.5642490565647, -635.48674834349267,
       1.0001814996975696, 0.35003679262137391, 0.04074744550603791},
  };
  constexpr double kLeastSquaresScale = 1.0002118260118362,
                   kLeastSquaresTheta = 0.35002772789246409;
  constexpr double kScale = 1e-12;  // distances of a kilometre from coordinates of 5e6 m
  constexpr double kMetres = 1e-5;  // the shift is extrapolated over 5e6 m
  constexpr double kResidual = 1e-8;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    ControlPoints points(NoisyPoints());
    for (IdenticalPoint& p : points)
      if (p.use == PointUseRotation && !row.rotationPoints) p.use = PointUseNone;
    TLocalizationParam solver = OnGrid(points, row.fixScale);
    ASSERT_TRUE(solver.UpdateParameters());
    const Plane p = PlaneOf(solver);
    EXPECT_NEAR(p.s, row.s, kScale);
    EXPECT_NEAR(p.theta, row.theta, kScale);
    EXPECT_NEAR(p.tN, row.tN, kMetres);
    EXPECT_NEAR(p.tE, row.tE, kMetres);
    double rms = 0;
    ASSERT_TRUE(solver.GetDEstimation(rms));
    EXPECT_NEAR(rms, row.rms, kResidual);
    EXPECT_GT(std::abs(p.s - kLeastSquaresScale), 1e-5) << "not a least-squares scale";
    EXPECT_GT(std::abs(p.theta - kLeastSquaresTheta), 4e-7) << "nor rotation";

    const Slope v = SlopeOf(solver);
    const double expected =
        -251.57592948615751 + 3.8791305182528155e-5 * 5200000 + 5.8919403795207891e-6 * 400000;
    EXPECT_NEAR(v.h0 + v.aN * 5200000 + v.aE * 400000, expected, kResidual);
    EXPECT_NEAR(v.aN, 3.8791305182528155e-5, 1e-13);
  }
}

TEST(LocalizationParam, RecoversKnownTransformations) {
  const Slope slope{-42.5, 1e-5, -2e-5};
  for (const double theta : {0.0, 0.7, 2.5, 3.9, 6.2}) {
    const Plane plane{1000, -2000, 1.00035, theta};
    for (const int count : {2, 3, 25, 1000}) {
      SCOPED_TRACE(testing::Message() << theta << " with " << count);
      std::vector<IdenticalPoint> list;
      for (int i = 0; i < count; ++i)
        list.push_back(Exact(100 + 900 * std::cos(2.4 * i), 900 * std::sin(1.7 * i), plane, slope,
                             PointUseBoth));
      ControlPoints points(list);
      TLocalizationParam solver = OnGrid(points, false, count % 2 ? kFirstPoint : kCentreOfExtent);
      ASSERT_TRUE(solver.UpdateParameters());
      const Plane p = PlaneOf(solver);
      EXPECT_NEAR(p.s, plane.s, 1e-13);
      EXPECT_NEAR(std::remainder(p.theta - theta, 2 * std::numbers::pi), 0, 1e-13);
      EXPECT_GE(p.theta, 0);
      EXPECT_NEAR(p.tN, 1000, 1e-9);
      EXPECT_NEAR(p.tE, -2000, 1e-9);
      if (count < 3) continue;
      EXPECT_NEAR(SlopeOf(solver).aN, slope.aN, 1e-13);
      for (const IdenticalPoint& point : points) {
        ASSERT_NEAR(point.residualN, 0, 1e-9);
        ASSERT_NEAR(point.residualH, 0, 1e-9);
      }
    }
  }
}

TEST(LocalizationParam, NothingUsableSolvesNothing) {
  TLocalizationParam none(nullptr, 0, false, nullptr, kWgs84A, kWgs84InvF, kFirstPoint);
  TLocalizationParam negative(nullptr, -3, false, nullptr, kWgs84A, kWgs84InvF, kCentreOfExtent);
  ControlPoints points(SitePoints(site::kConfigurations[0]));
  for (IdenticalPoint& p : points) p.localFlags = 0;
  TLocalizationParam flagless(points.Pointers(), points.Count(), false, nullptr, kWgs84A,
                              kWgs84InvF, kFirstPoint);
  for (TLocalizationParam* solver : {&none, &negative, &flagless}) {
    EXPECT_FALSE(solver->UpdateParameters());
    double a, b, c, d;
    EXPECT_FALSE(solver->GetPlaneParameters(a, b, c, d));
    EXPECT_FALSE(solver->GetHeightParameters(a, b, c));
    EXPECT_FALSE(solver->GetGeodeticOrigin(a, b, c));
    EXPECT_FALSE(solver->GetLocalOrigin(a, b, c));
    EXPECT_FALSE(solver->GetEstimations(a, b));
    EXPECT_FALSE(solver->AvgOffCenter(a));
    EXPECT_EQ(solver->GetInitialization(), 0);
    EXPECT_FALSE(solver->UseForHorParams(0) || solver->UseForHorParams(-1));
  }
}

TEST(LocalizationParam, UseAndFlagsSelectPoints) {
  ControlPoints points({Exact(1, 2, {0, 0, 1, 0}, {}, PointUseNone)});
  const TLocalizationParam solver = OnGrid(points);
  IdenticalPoint& p = points[0];
  for (int use = -1; use <= 5; ++use)
    for (std::uint32_t global = 0; global < 0x20; global += 4)
      for (std::uint32_t local = 0; local < 0x20; local += 4) {
        p.use = use;
        p.globalFlags = global | 1;
        p.localFlags = local;
        const bool plane = (global & 0xC) == 0xC && (local & 0xC) == 0xC;
        const bool height = (global & 0x1C) == 0x1C && (local & 0x10);
        ASSERT_EQ(solver.UseForHorParams(0), plane && (use == 2 || use == 3));
        ASSERT_EQ(solver.UseForVertParams(0), height && (use == 1 || use == 3));
        ASSERT_EQ(solver.UseForRotationOnly(0), plane && use == 4);
      }
}

TEST(LocalizationParam, OnePointShiftsAndScalesByItsHeight) {
  for (const int use : {PointUseBoth, PointUseHorizontal}) {
    ControlPoints points({PointOf(52 * kDegree, 5 * kDegree, 80, 1000, 2000, 30, use)});
    points[0].scaleHeight = 637.1;
    TLocalizationParam solver(points.Pointers(), 1, false, nullptr, kWgs84A, kWgs84InvF,
                              kFirstPoint);
    ASSERT_TRUE(solver.UpdateParameters());
    const Plane p = PlaneOf(solver);
    // Gaussian mean radius a·√(1 − e²)/(1 − e² sin² φ) at 52°, by hand.
    const double radius = use == PointUseBoth ? 6383287.3 : HUGE_VAL;
    EXPECT_NEAR(p.s, 1 + 637.1 / radius, 1e-11);
    EXPECT_EQ(p.theta, 0);
    EXPECT_NEAR(p.tN, 1000, 1e-9);
    EXPECT_NEAR(p.tE, 2000, 1e-9);
    EXPECT_EQ(solver.GetInitialization(), use == PointUseBoth ? 3 : 1);
    EXPECT_NEAR(points[0].residualN, 0, 1e-9);
    EXPECT_EQ(points[0].residualH == DBL_MAX, use == PointUseHorizontal);
    double rms, angle;
    EXPECT_FALSE(solver.GetEstimations(rms, angle)) << "no distance from the centroid";
  }
}

TEST(LocalizationParam, KeepsTheOnePointScaleInTheShiftsWhenTheScaleIsFixed) {
  ControlPoints points({PointOf(10000, 20000, 80, 1000, 2000, 30, PointUseBoth)});
  points[0].scaleHeight = 6000;
  TLocalizationParam solver = OnGrid(points, true, kFirstPoint);
  ASSERT_TRUE(solver.UpdateParameters());
  const Plane p = PlaneOf(solver);
  EXPECT_EQ(p.s, 1.0);
  EXPECT_NEAR(p.tN, 1000 - 10000 * (1 + 6000 / 6.38e6), 0.1);
  EXPECT_NEAR(points[0].residualN, 10000 * 6000 / 6.38e6, 0.1);
}

TEST(LocalizationParam, OnePointWithRotationPointsTakesTheirDirection) {
  const Plane plane{10, 20, 1, 0.4};
  ControlPoints points({Exact(100, 200, plane, {}, PointUseHorizontal),
                        Exact(900, 700, plane, {}, PointUseRotation),
                        Exact(-300, 5000, plane, {}, PointUseRotation)});
  TLocalizationParam solver = OnGrid(points, false, kFirstPoint);
  ASSERT_TRUE(solver.UpdateParameters());
  const Plane p = PlaneOf(solver);
  EXPECT_EQ(p.s, 1.0);
  EXPECT_NEAR(p.theta, 0.4, 1e-14);
  EXPECT_NEAR(p.tN, 10, 1e-10);

  // Rotation points alone solve nothing.
  points[0].use = PointUseNone;
  solver.Init();
  EXPECT_FALSE(solver.UpdateParameters());
}

TEST(LocalizationParam, KeepsTheMeanOfTwoHeightsWithoutSlopes) {
  ControlPoints points({PointOf(0, 0, 10, 0, 0, 15, PointUseVertical),
                        PointOf(1000, 0, 10, 1000, 0, 16, PointUseVertical)});
  TLocalizationParam solver = OnGrid(points, false, kFirstPoint);
  ASSERT_TRUE(solver.UpdateParameters());
  EXPECT_EQ(solver.GetInitialization(), 2);
  const Slope v = SlopeOf(solver);
  EXPECT_EQ(v.h0, 5.5);
  EXPECT_EQ(v.aN, 0);
  EXPECT_EQ(v.aE, 0);
  EXPECT_EQ(points[0].residualH, -0.5);
  EXPECT_EQ(points[0].residualN, DBL_MAX);

  points[1].use = PointUseNone;
  solver.Init();
  ASSERT_TRUE(solver.UpdateParameters());
  EXPECT_EQ(SlopeOf(solver).h0, 5);

  // The extent needs horizontal points.
  TLocalizationParam onExtent = OnGrid(points, false, kCentreOfExtent);
  EXPECT_FALSE(onExtent.UpdateParameters());
}

TEST(LocalizationParam, HeightsInOneLineGiveNoPlane) {
  const Plane plane{10, 20, 1, 0.4};
  for (const double direction : {0.0, 0.3, 0.785398163397448, 1.2, 1.5707963267948966, 2.9})
    for (const double far : {0.0, 5e6})
      for (const int count : {3, 7, 1000}) {
        SCOPED_TRACE(testing::Message() << direction << " at " << far << " with " << count);
        std::vector<IdenticalPoint> list;
        for (int i = 0; i < count; ++i) {
          const double t = 10 + 4000.0 * i * i / count / count;  // no point at the centroid
          list.push_back(Exact(far + t * std::cos(direction), far / 9 + t * std::sin(direction),
                               plane, {3, 1e-5, 0}, PointUseBoth));
        }
        ControlPoints points(list);
        TLocalizationParam solver = OnGrid(points);
        ASSERT_TRUE(solver.UpdateParameters());
        EXPECT_EQ(solver.GetInitialization(), 1);
        EXPECT_EQ(points[0].residualH, DBL_MAX);
        EXPECT_NEAR(PlaneOf(solver).theta, 0.4, 1e-9);
      }
}

// Exact sites of 200 m by some metres in the coordinates of a nation, whose squares leave a normal
// matrix of nothing but rounding.
TEST(LocalizationParam, ThePlaneOfANarrowSiteHoldsInNationalCoordinates) {
  constexpr double kRounding = 2e-8;  // metres: coordinates of 5e6 m in the evaluation
  constexpr Slope slope{-42.5, 3e-4, -2e-4};
  for (const double width : {2.0, 6.0, 20.0, 200.0}) {
    for (const double direction : {0.0, 0.8, 1.6, 2.9}) {
      SCOPED_TRACE(testing::Message() << width << " m, towards " << direction);
      std::vector<IdenticalPoint> list;
      for (int i = 0; i < 6; ++i) {
        const auto [n, e] = PlaneRotation(direction).Turn(40.0 * i, i % 2 ? width : 0.3 * width);
        list.push_back(Exact(5200000 + n, 400000 + e, {0, 0, 1, 0}, slope, PointUseBoth));
      }
      ControlPoints points(list);
      TLocalizationParam solver = OnGrid(points);
      ASSERT_TRUE(solver.UpdateParameters());
      const Slope v = SlopeOf(solver);
      for (const IdenticalPoint& p : points) EXPECT_NEAR(p.residualH, 0, kRounding);
      EXPECT_NEAR(v.aN, slope.aN, kRounding / width);
      EXPECT_NEAR(v.aE, slope.aE, kRounding / width);
    }
  }
}

// The mean of equal coordinates lies beside them by its rounding, which is no direction.
TEST(LocalizationParam, PointsInOnePlaceGiveNoRotation) {
  for (int i = 0; i < 300; ++i) {
    const double n = 5e6 + 17.3 * i + 0.1, e = 4e5 + 3.7 * i + 0.3;
    for (const int count : {2, 3, 5, 6, 7, 10, 11, 50, 99, 1000}) {
      ControlPoints points(std::vector<IdenticalPoint>(
          static_cast<std::size_t>(count),
          PointOf(n, e, 10, n / 7 + 0.3, e / 3 + 0.7, 15, PointUseHorizontal)));
      TLocalizationParam solver = OnGrid(points, true);
      ASSERT_FALSE(solver.UpdateParameters()) << i << " with " << count;
    }
  }
  // Beside a point for the direction they carry no weight.
  const Plane plane{10, 20, 1, 0.4};
  const IdenticalPoint same = Exact(5e6 + 0.1, 4e5 + 0.3, plane, {}, PointUseHorizontal);
  ControlPoints points({same, same, same, Exact(5e6, 5e5, plane, {}, PointUseRotation)});
  TLocalizationParam solver = OnGrid(points, true);
  ASSERT_TRUE(solver.UpdateParameters());
  EXPECT_NEAR(PlaneOf(solver).theta, 0.4, 1e-12);
}

TEST(LocalizationParam, RotationStaysBelowAFullTurn) {
  const auto at = [](double n, double localE) {
    return PointOf(n, 0, 0, n, localE, 0, PointUseHorizontal);
  };
  for (const double turn : {1e-15, 1e-16, 1e-17, 1e-300}) {
    ControlPoints points({at(1, -turn), at(-1, turn)});
    TLocalizationParam solver = OnGrid(points);
    ASSERT_TRUE(solver.UpdateParameters());
    EXPECT_LT(PlaneOf(solver).theta, 2 * std::numbers::pi) << turn;
    EXPECT_GE(PlaneOf(solver).theta, 0) << turn;
  }
}

TEST(LocalizationParam, AFailedUpdateLeavesNoEarlierSolution) {
  const Plane plane{10, 20, 1, 0.4};
  ControlPoints points(
      {Exact(0, 0, plane, {}, PointUseBoth), Exact(9, 5, plane, {}, PointUseBoth)});
  TLocalizationParam solver = OnGrid(points);
  ASSERT_TRUE(solver.UpdateParameters());
  for (IdenticalPoint& p : points) p.use = PointUseNone;
  solver.Init();
  EXPECT_FALSE(solver.UpdateParameters());
  double a, b, c, d;
  EXPECT_FALSE(solver.GetPlaneParameters(a, b, c, d));
  EXPECT_FALSE(solver.GetHeightParameters(a, b, c));
  EXPECT_EQ(solver.GetInitialization(), 0);
}

TEST(LocalizationParam, EqualPointsGiveNoHorizontalPart) {
  const IdenticalPoint same = PointOf(100, 200, 10, 1000, 2000, 15, PointUseBoth);
  ControlPoints points({same, same, same});
  TLocalizationParam solver = OnGrid(points);
  EXPECT_FALSE(solver.UpdateParameters());
  EXPECT_EQ(solver.GetInitialization(), 0);
  ControlPoints two({same, same});
  TLocalizationParam mean = OnGrid(two);
  EXPECT_TRUE(mean.UpdateParameters());
  EXPECT_EQ(mean.GetInitialization(), 2) << "two heights give their mean";
}

TEST(LocalizationParam, NotANumberFailsThePartItEnters) {
  const Plane plane{10, 20, 1, 0.4};
  const auto points = [&] {
    std::vector<IdenticalPoint> list;
    for (int i = 0; i < 5; ++i)
      list.push_back(Exact(100.0 * i * i, 70.0 * i, plane, {1, 0, 0}, PointUseBoth));
    return list;
  };
  const auto parts = [&](double IdenticalPoint::*field, double value) {
    ControlPoints control(points());
    control[2].*field = value;
    TLocalizationParam solver = OnGrid(control);
    solver.UpdateParameters();
    return solver.GetInitialization();
  };
  EXPECT_EQ(parts(&IdenticalPoint::globalN, 3), 3);
  EXPECT_EQ(parts(&IdenticalPoint::globalN, kNaN), 0);
  EXPECT_EQ(parts(&IdenticalPoint::localE, kNaN), 2) << "no distance gives a ratio";
  for (const double bad : {HUGE_VAL, -HUGE_VAL}) {
    EXPECT_EQ(parts(&IdenticalPoint::globalN, bad), 0);
    EXPECT_EQ(parts(&IdenticalPoint::localH, bad) & 1, 1);
  }
  // With a projection of its own every conversion of such a point fails or spreads.
  ControlPoints geodetic(SitePoints(site::kConfigurations[0]));
  geodetic[4].globalN = kNaN;
  TLocalizationParam solver(geodetic.Pointers(), geodetic.Count(), false, nullptr, kWgs84A,
                            kWgs84InvF, kCentreOfExtent);
  EXPECT_FALSE(solver.UpdateParameters());
}

TEST(LocalizationParam, PlacementChoosesOriginAndCentre) {
  double lat, lon, h, n, e, H;
  ControlPoints points(SitePoints(site::kConfigurations[0]));
  points[0].use = PointUseVertical;
  TLocalizationParam first(points.Pointers(), points.Count(), false, nullptr, kWgs84A, kWgs84InvF,
                           7);
  ASSERT_TRUE(first.GetGeodeticOrigin(lat, lon, h));
  ASSERT_TRUE(first.GetLocalOrigin(n, e, H));
  EXPECT_EQ(lat, site::kControl[1].latDeg * kDegree) << "the first horizontal point";
  EXPECT_EQ(h, site::kControl[0].h) << "the first vertical point";
  EXPECT_EQ(n, site::kControl[1].localN);
  EXPECT_EQ(H, site::kControl[0].localH);
  EXPECT_EQ(first.GetLocalizationPlacement(), 7);

  // Every Init projects anew, from latitudes and longitudes that are put back first.
  const double projectedN = points[3].globalN;
  for (std::size_t i = 0; i < std::size(site::kControl); ++i) {
    points[i].globalN = site::kControl[i].latDeg * kDegree;
    points[i].globalE = site::kControl[i].lonDeg * kDegree;
  }
  first.Init();
  EXPECT_EQ(points[3].globalN, projectedN);

  TDoubleSter grid = NetherlandsGrid();
  ControlPoints onGrid(SitePoints(site::kConfigurations[3]));
  const TLocalizationParam base(onGrid.Pointers(), onGrid.Count(), false, &grid, 0, 0,
                                kCentreOfExtent);
  EXPECT_EQ(base.GetBaseProjection(), &grid);
  EXPECT_EQ(base.GetProjScale(), 1.0);
  EXPECT_EQ(base.GetLat0(), 0);
  EXPECT_EQ(base.GetFNorth(), 0);

  ASSERT_TRUE(base.GetGeodeticOrigin(lat, lon, h));

  EXPECT_NEAR(lat, 52.569 * kDegree, 1e-4);  // the middle of the square
}

TEST(LocalizationParam, KeepsTheAxesOfTheBaseInItsInverse) {
  TDoubleSter grid = NetherlandsGrid();
  grid.SetNEAxes(L"EN");
  ControlPoints points(SitePoints(site::kConfigurations[3]));
  double lat = points[0].globalN, lon = points[0].globalE, originLat, originLon, h;
  const TLocalizationParam solver(points.Pointers(), points.Count(), false, &grid, 0, 0,
                                  kFirstPoint);
  ASSERT_TRUE(solver.GetGeodeticOrigin(originLat, originLon, h));
  ASSERT_TRUE(grid.Inverse(lat, lon));
  EXPECT_EQ(originLat, lat);
  EXPECT_EQ(originLon, lon);
  EXPECT_GT(std::abs(lat - 52.5 * kDegree), 1e-3) << "eastings were taken for northings";
}

TEST(LocalizationParam, UnusablePointsAreSetAside) {
  std::vector<IdenticalPoint> list = SitePoints(site::kConfigurations[0]);
  list[1].globalFlags = kHasNorth;
  list[2].globalFlags = kHasNorth | kHasEast;
  list[3].use = PointUseHorizontal;
  ControlPoints points(list);
  TLocalizationParam solver(points.Pointers(), points.Count(), false, nullptr, kWgs84A, kWgs84InvF,
                            kCentreOfExtent);
  ASSERT_TRUE(solver.UpdateParameters());
  EXPECT_EQ(points[1].use, PointUseNone);
  EXPECT_EQ(points[1].residualN, DBL_MAX);
  EXPECT_EQ(points[2].globalH, 0);
  EXPECT_LT(std::abs(points[2].residualN), 0.1);
  EXPECT_EQ(points[2].residualH, DBL_MAX);
  EXPECT_LT(std::abs(points[3].residualH), 0.1) << "residuals are given for points not used, too";
}

TEST(LocalizationParam, KeepsTheMeanDistanceFromIndexOneAndOffTheAxes) {
  const Plane unit{0, 0, 1, 0};
  // Centroid (0, 0); the last two points lie on its axes within 1 mm.
  ControlPoints points(
      {Exact(30, 40, unit, {}, PointUseHorizontal), Exact(-30, -40, unit, {}, PointUseHorizontal),
       Exact(0.0005, 700, unit, {}, PointUseHorizontal),
       Exact(-0.0005, -700, unit, {}, PointUseHorizontal),
       Exact(3, 4, unit, {}, PointUseHorizontal), Exact(-3, -4, unit, {}, PointUseHorizontal)});
  double distance = 0;
  TLocalizationParam extent = OnGrid(points, false, kCentreOfExtent);
  ASSERT_TRUE(extent.AvgOffCenter(distance));
  EXPECT_NEAR(distance, (50 + 50 + 5 + 5) / 4.0, 1e-12);
  TLocalizationParam first = OnGrid(points, false, kFirstPoint);
  ASSERT_TRUE(first.AvgOffCenter(distance));
  EXPECT_NEAR(distance, (50 + 5 + 5) / 3.0, 1e-12);
}

TEST(LocalizationParam, WeakRotationWidensTheAngle) {
  const Plane plane{0, 0, 1, 0};
  std::vector<IdenticalPoint> list = {Exact(100, 200, plane, {}, PointUseHorizontal),
                                      Exact(-100, -200, plane, {}, PointUseHorizontal)};
  list[0].localN += 0.02;
  ControlPoints points(list);
  TLocalizationParam solver = OnGrid(points, true);
  ASSERT_TRUE(solver.UpdateParameters());
  double rms = 0, angle = 0, distance = 0;
  ASSERT_TRUE(solver.GetEstimations(rms, angle));
  ASSERT_TRUE(solver.AvgOffCenter(distance));
  // Two directions: the normal matrix is 2·I, its inverse I/2, the factor √(1/2 + 1/2) = 1.
  EXPECT_NEAR(angle, std::atan2(rms, distance) * 1.0, 1e-15);
  EXPECT_GT(rms, 1e-3);
}
