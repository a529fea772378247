#include "geomath/geodesic/distortion.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "geomath/base/angle.h"
#include "geomath/proj/methods/albers_ea_conic_proj.h"
#include "geomath/proj/methods/double_ster_proj.h"
#include "geomath/proj/methods/lc_proj.h"
#include "geomath/proj/methods/mercator_proj.h"
#include "geomath/proj/methods/o_mercator_proj.h"
#include "geomath/proj/methods/ster_proj.h"
#include "geomath/proj/methods/utm_proj.h"

namespace {

using namespace zel_cs::geomath;

constexpr double kA = 6378137, kGrs80 = 298.257222101, kDeg = kRadPerDeg;
constexpr double kClarkeA = 6378206.4, kClarkeE2 = 0.00676866;
constexpr double kRounding = 1e-12;

double InvF(double e2) { return 1 / (1 - std::sqrt(1 - e2)); }

// A class whose formulas are a conformal map shows it: one scale in all directions, which is the one
// that it computes itself.
TEST(Distortion, ConformalClassesShowTheirScale) {
  std::vector<std::unique_ptr<TGeoProj>> classes;
  classes.push_back(std::make_unique<TLCProj>(kA, kGrs80, 44 * kDeg, 49 * kDeg, 3 * kDeg,
                                              46.5 * kDeg, 700000, 6600000, 1));
  classes.push_back(std::make_unique<TMercatorProj>(kA, kGrs80, 3 * kDeg, 0, 0, 0));
  classes.push_back(std::make_unique<TSterProj>(kA, kGrs80, 46 * kDeg, 5 * kDeg, 0.9999, 0, 0));
  classes.push_back(std::make_unique<TSterProj>(kA, kGrs80, kHalfPi, 5 * kDeg, 0.994, 0, 0));
  classes.push_back(std::make_unique<TDoubleSter>(kA, kGrs80, 46 * kDeg, 5 * kDeg, 0.9999, 0, 0));
  classes.push_back(
      std::make_unique<TOMercatorProj>(kA, kGrs80, 30 * kDeg, 0.9996, 10 * kDeg, 47 * kDeg, 0, 0));
  for (const auto& proj : classes)
    for (const double b : {40 * kDeg, 46 * kDeg, 52 * kDeg})
      for (const double l : {-2 * kDeg, 5 * kDeg, 9 * kDeg}) {
        SCOPED_TRACE(::testing::Message() << proj->GetType() << ": " << b << ", " << l);
        Distortion d;
        ASSERT_TRUE(DistortionAt(*proj, b, l, d));
        EXPECT_NEAR(d.meridianScale, d.parallelScale, kRounding);
        EXPECT_NEAR(d.semiMajor, d.semiMinor, kRounding);
        EXPECT_NEAR(d.arealScale, d.semiMajor * d.semiMinor, kRounding);
        EXPECT_LT(d.angularDistortion, kRounding);
        double n = b, e = l;
        PointFactors own{std::numeric_limits<double>::quiet_NaN(), 0};
        ASSERT_TRUE(proj->ForwardPoint(n, e, &own));
        const bool described = dynamic_cast<const TDoubleSter*>(proj.get());  // a scale of its own
        if (!described) {
          EXPECT_NEAR(d.semiMajor, own.scale, kRounding);
        }
        Distortion inGrid;
        ASSERT_TRUE(DistortionAtGrid(*proj, n, e, inGrid));
        EXPECT_NEAR(inGrid.semiMajor, d.semiMajor, kRounding);
        EXPECT_NEAR(inGrid.convergence, d.convergence, kRounding);
      }
}

// Albers on Clarke 1866 with the parallels and origin of Snyder 1987, p. 292.
TEST(Distortion, EqualAreaClassKeepsAreas) {
  const TAlbersEAConicProj albers(kClarkeA, InvF(kClarkeE2), 29.5 * kDeg, 45.5 * kDeg, -96 * kDeg,
                                  23 * kDeg, 0, 0);
  for (const double b : {-20 * kDeg, 23 * kDeg, 35 * kDeg, 60 * kDeg}) {
    Distortion d;
    ASSERT_TRUE(DistortionAt(albers, b, -75 * kDeg, d));
    EXPECT_NEAR(d.arealScale, 1, kRounding);
    EXPECT_NEAR(d.meridianScale * d.parallelScale, 1, kRounding);
    // 4-1 and 4-9: sin(ω/2) = |h − k|/(h + k) where meridian and parallel meet at right angles.
    EXPECT_NEAR(std::sin(d.angularDistortion / 2),
                std::abs(d.meridianScale - d.parallelScale) / (d.meridianScale + d.parallelScale),
                kRounding);
    EXPECT_NEAR(d.semiMajor, std::max(d.meridianScale, d.parallelScale), kRounding);
  }
  Distortion standard;
  ASSERT_TRUE(DistortionAt(albers, 29.5 * kDeg, -75 * kDeg, standard));
  EXPECT_NEAR(standard.parallelScale, 1, kRounding);
}

// A class that computes factors with the point keeps them; Albers computes none.
TEST(Distortion, FactorsComeFromTheClassOrItsDerivatives) {
  const TUTMProj utm(kA, kGrs80, 9 * kDeg, 0.9996, 0, 500000, 0);
  PointFactors own{};
  double n = 48 * kDeg, e = 11 * kDeg;
  ASSERT_TRUE(utm.ForwardPoint(n, e, &own));
  const PointFactors same = FactorsAt(utm, 48 * kDeg, 11 * kDeg);
  EXPECT_EQ(same.scale, own.scale);
  EXPECT_EQ(same.convergence, own.convergence);

  const TAlbersEAConicProj albers(kClarkeA, InvF(kClarkeE2), 29.5 * kDeg, 45.5 * kDeg, -96 * kDeg,
                                  23 * kDeg, 0, 0);
  Distortion d;
  ASSERT_TRUE(DistortionAt(albers, 35 * kDeg, -75 * kDeg, d));
  const PointFactors derived = FactorsAt(albers, 35 * kDeg, -75 * kDeg);
  EXPECT_NEAR(derived.scale, 1, kRounding);  // equal areas
  EXPECT_EQ(derived.convergence, d.convergence);
  EXPECT_TRUE(std::isnan(FactorsAt(albers, 2, 0).scale));
}

// GDA technical manual (ICSM): Flinders Peak in MGA zone 55, to its printed digits; the axis of a grid
// and a pole.
TEST(Distortion, PublishedFactorsAxesAndPoles) {
  const TUTMProj mga(kA, kGrs80, 147 * kDeg, 0.9996, 0, 500000, 1e7);
  const double b = -(37 + 57 / 60.0 + 3.7203 / 3600) * kDeg;
  const double l = (144 + 25 / 60.0 + 29.5244 / 3600) * kDeg;
  Distortion d;
  ASSERT_TRUE(DistortionAt(mga, b, l, d));
  constexpr double kPrinted = 5e-10;
  EXPECT_NEAR(d.meridianScale, 1.000230559, kPrinted + 1e-9);  // and what the series leaves out
  EXPECT_NEAR(d.convergence, (1 + 35 / 60.0 + 3.6473 / 3600) * kDeg, 1e-4 * kRadPerArcSecond);
  ASSERT_TRUE(DistortionAt(mga, b, 147 * kDeg, d));
  EXPECT_NEAR(d.parallelScale, 0.9996, kRounding);
  EXPECT_EQ(d.convergence, 0);
  ASSERT_TRUE(DistortionAt(mga, 0, l, d));
  EXPECT_NEAR(d.convergence, 0, kRounding);
  EXPECT_FALSE(DistortionAt(mga, kHalfPi, l, d));

  const double bs[] = {b, kHalfPi, 0}, ls[] = {l, l, l};
  Distortion many[3];
  EXPECT_EQ(DistortionAt(mga, bs, ls, many, 3), 2u);
  EXPECT_TRUE(std::isnan(many[1].semiMinor));
  EXPECT_EQ(many[2].parallelScale, d.parallelScale);
  EXPECT_FALSE(DistortionAt(TGeoProj(), 0, 0, d));

  const double kNan = std::numeric_limits<double>::quiet_NaN();
  const double ns[] = {5796489.777, kNan, 5828259.038}, es[] = {273741.297, 5e5, 228854.051};
  EXPECT_EQ(DistortionAtGrid(mga, ns, es, many, 3), 2u);
  ASSERT_TRUE(DistortionAtGrid(mga, ns[2], es[2], d));
  EXPECT_EQ(many[2].semiMajor, d.semiMajor);
  EXPECT_EQ(many[2].convergence, d.convergence);
  EXPECT_TRUE(std::isnan(many[1].meridianScale));
}

}  // namespace
