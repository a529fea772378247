#include "geomath/proj/methods/colombia_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/curvature.h"
#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

constexpr double kPhi0 = (4 + 40 / 60.0 + 49.75 / 3600) * kDegree;
constexpr double kLambda0 = -(74 + 8 / 60.0 + 47.73 / 3600) * kDegree;
constexpr double kEast0 = 92334.879, kNorth0 = 109320.965;

// PROJ 9.1.1, col_urban with h_0 = 0.
TEST(Colombia, BogotaAtHeightZero) {
  constexpr double kPrinted = 6e-6, kInverse = 1e-5;
  TColombiaProj bogota(6378137, 298.257222101, kPhi0, kLambda0, kEast0, kNorth0);
  ExpectBothWays(bogota, {4.62, -74.06, 102632.90236, 101943.10797}, kPrinted, kInverse);
}

// IOGP 373-07-02, method 1052, example with a plane at 2550 m, printed to 1 mm: its easting is the
// one of height 0 times 1 + h0/ν0, its northing times 1 + h0/ρ at the mean latitude.
TEST(Colombia, BogotaExampleAtPlaneHeight) {
  constexpr double kPrinted = 6e-4, kHeight = 2550;
  TColombiaProj bogota(6378137, 298.257222101, kPhi0, kLambda0, kEast0, kNorth0);
  const Ellipsoid& ell = bogota.GetEllipsoid();
  const double phi = 4.8 * kDegree;
  double n = phi, e = -74.25 * kDegree;
  ASSERT_TRUE(bogota.Forward(n, e));
  const double nu0 = PrimeVerticalRadius(ell, kPhi0);
  const double rhoM = MeridianRadius(ell, (phi + kPhi0) / 2);
  EXPECT_NEAR(kNorth0 + (n - kNorth0) * (1 + kHeight / rhoM), 122543.174, kPrinted);
  EXPECT_NEAR(kEast0 + (e - kEast0) * (1 + kHeight / nu0), 80859.033, kPrinted);
}

}  // namespace
}  // namespace zel_cs::geomath
