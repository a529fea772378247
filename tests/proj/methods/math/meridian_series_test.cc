#include "geomath/proj/methods/math/meridian_series.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/proj/methods/math/multiple_angles.h"

namespace zel_cs::geomath {
namespace {

TEST(ClenshawSin, SumsMultipleAngles) {
  constexpr double kTerms[] = {0.5, -0.25, 3, 0.125};
  for (double theta = -3; theta <= 3; theta += 0.37) {
    double sum = 0;
    for (int j = 0; j < 4; ++j) sum += kTerms[j] * std::sin((j + 1) * theta);
    EXPECT_NEAR(ClenshawSin(kTerms, std::sin(theta), std::cos(theta)), sum, 1e-14) << theta;
  }
  constexpr double kOne[] = {2};
  EXPECT_EQ(ClenshawSin(kOne, 0.6, 0.8), 1.2);
}

TEST(CosinePowerSeries, SumsEvenMultipleAngles) {
  const CosinePowerSeries series(0.5, -0.25, 3, 0.125);
  for (double x = -3; x <= 3; x += 0.37) {
    const double sum = x + 0.5 * std::sin(2 * x) - 0.25 * std::sin(4 * x) + 3 * std::sin(6 * x) +
                       0.125 * std::sin(8 * x);
    EXPECT_NEAR(series(x), sum, 3e-14) << x;  // coefficients of up to 112 cancel
  }
}

struct Row {
  double a, invF, phi, arc;
};

// Meridian arc by the elliptic integral of the second kind, 50 digits (mpmath).
constexpr Row kRows[] = {
    {6378137.0, 298.257223563, 0.1, 633565.09733664860394},
    {6378137.0, 298.257223563, 0.5, 3170243.9359581819735},
    {6378137.0, 298.257223563, -0.9, -5715077.7358148015497},
    {6378137.0, 298.257223563, 1.3, 8269401.1235239651032},
    {6378137.0, 298.257223563, 1.5, 9548905.6518933919241},
    {6377563.396, 299.3249646, 0.1, 633523.24826826890234},
    {6377563.396, 299.3249646, 0.5, 3170025.9086689587869},
    {6377563.396, 299.3249646, -0.9, -5714653.8215479354527},
    {6377563.396, 299.3249646, 1.3, 8268736.5668478840486},
    {6377563.396, 299.3249646, 1.5, 9548112.1571599708166},
};

constexpr double kTruncated = 1e-6;  // metres: the terms in n⁵ and above; worst 1e-7

TEST(MeridianSeries, MeasuresTheMeridianBothWays) {
  for (const Row& row : kRows) {
    const Ellipsoid ell = MakeEllipsoid(row.a, row.invF);
    const MeridianSeries series(ell);
    EXPECT_NEAR(series.Arc(row.phi), row.arc, kTruncated);
    EXPECT_NEAR(series.Footpoint(row.arc) * ell.a, row.phi * ell.a, kTruncated);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
