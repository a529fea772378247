#include "geomath/proj/methods/albers_ea_conic_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/published_point.h"

namespace zel_cs::geomath {
namespace {

constexpr double kDeg = kRadPerDeg;

TAlbersEAConicProj Snyder() {
  return {6378206.4, 294.9786982138982, 29.5 * kDeg, 45.5 * kDeg, -96 * kDeg, 23 * kDeg, 0, 0};
}

TEST(AlbersEAConicProj, PublishedPoints) {
  // Snyder 1987, appendix A, and IOGP 373-07-02 (2019), Great Lakes Albers.
  TAlbersEAConicProj snyder = Snyder();
  ExpectPublished(snyder, {"Snyder", 35, -75, 1535925.0, 1885472.7, 0.05});
  TAlbersEAConicProj lakes(6378137, 298.257222101, 42.122774 * kDeg, 49.01518 * kDeg,
                           -84.455955 * kDeg, 45.568977 * kDeg, 1000000, 1000000);
  ExpectPublished(lakes, {"Great Lakes", 42.75, -78.75, 702903.006, 1466493.492, 5e-4});
  EXPECT_EQ(lakes.GetType(), ProjTypeLC);  // Kept
}

TEST(AlbersEAConicProj, KeepsAreas) {
  // The Jacobian of the map equals that of the ellipsoid, by fourth-order differences.
  constexpr double kNumeric = 1e-9, kStep = 1e-4;
  TAlbersEAConicProj proj = Snyder();
  const Ellipsoid& ell = proj.GetEllipsoid();
  for (const double phi : {-1.0, -0.2, 0.4, 0.8, 1.4})
    for (const double lambda : {-2.5, -1.0, 0.3}) {
      const auto slope = [&](double dPhi, double dLambda, bool east) {
        const auto at = [&](double t) {
          double b = phi + t * dPhi, l = lambda + t * dLambda;
          EXPECT_TRUE(proj.ForwardPoint(b, l));
          return east ? l : b;
        };
        return (8 * (at(1) - at(-1)) - (at(2) - at(-2))) / (12 * kStep);
      };
      const double map = slope(kStep, 0, false) * slope(0, kStep, true) -
                         slope(kStep, 0, true) * slope(0, kStep, false);
      const double w2 = 1 - ell.e2 * std::sin(phi) * std::sin(phi);
      const double ground = ell.a * ell.a * (1 - ell.e2) * std::cos(phi) / (w2 * w2);
      EXPECT_NEAR(map / ground, 1, kNumeric) << phi << " " << lambda;
    }
}

TEST(AlbersEAConicProj, PolesAreArcsAndNothingLiesBeyond) {
  TAlbersEAConicProj proj = Snyder();
  for (const double sign : {1.0, -1.0}) {
    double b = sign * kHalfPi, l = -96 * kDeg;
    ASSERT_TRUE(proj.Forward(b, l));
    const double arc = b;
    ASSERT_TRUE(proj.Inverse(b, l));
    EXPECT_NEAR(b, sign * kHalfPi, 2e-7);  // q is flat there: 1e-14 of it
    double n = arc + sign * 100, e = 0;
    EXPECT_FALSE(proj.Inverse(n, e));
    EXPECT_EQ(n, arc + sign * 100);
  }
  double n = std::nan(""), e = 0;
  EXPECT_FALSE(proj.Inverse(n, e));
}

TEST(AlbersEAConicProj, SphereAndSingleParallel) {
  // On the sphere of radius a with φ1 = φ2: n = sin φ1, ρ = a·√(cos²φ1 + 2n(sin φ1 − sin φ))/n.
  const double a = 6371000, phi1 = 40 * kDeg, phi = 50 * kDeg;
  TAlbersEAConicProj proj;
  proj = TAlbersEAConicProj(a, 1e300, phi1, phi1, 0, phi1, 0, 0);
  const double n = std::sin(phi1);
  const auto rho = [&](double at) {
    return a * std::sqrt(std::cos(phi1) * std::cos(phi1) + 2 * n * (n - std::sin(at))) / n;
  };
  double b = phi, l = 0.5;
  ASSERT_TRUE(proj.Forward(b, l));
  EXPECT_NEAR(b, rho(phi1) - rho(phi) * std::cos(n * 0.5), 1e-8);
  EXPECT_NEAR(l, rho(phi) * std::sin(n * 0.5), 1e-8);
  ASSERT_TRUE(proj.Inverse(b, l));
  EXPECT_NEAR(b, phi, 1e-14);
}

}  // namespace
}  // namespace zel_cs::geomath
