#include "geomath/proj/methods/nzmg_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// Land Information New Zealand's three test points, positions printed to 1e-6 degree.
TEST(NZMG, ReproducesTheAgencysPoints) {
  struct Row {
    double phi, lambda, east, north;
  };
  constexpr Row kRows[] = {
      {-34.444066, 172.739194, 2487100.638, 6751049.719},
      {-40.512409, 172.723106, 2486533.395, 6077263.661},
      {-46.651295, 169.172062, 2216746.425, 5388508.765},
  };
  constexpr double kPrintedDegrees = 0.51e-6 * kDegree;
  constexpr double kPrintedMetres = 0.07;  // half of 1e-6 degree in both coordinates
  TNZMGProj proj;
  for (const Row& row : kRows) {
    double n = row.phi * kDegree, e = row.lambda * kDegree;
    ASSERT_TRUE(proj._Forward(n, e));
    EXPECT_NEAR(n, row.north, kPrintedMetres);
    EXPECT_NEAR(e, row.east, kPrintedMetres);
    n = row.north;
    e = row.east;
    ASSERT_TRUE(proj._Inverse(n, e));
    EXPECT_NEAR(n, row.phi * kDegree, kPrintedDegrees);
    EXPECT_NEAR(e, row.lambda * kDegree, kPrintedDegrees);
  }
}

// The scale along the parallel and along the meridian by central differences: the grid is conformal
// to the digits of the series from latitude to isometric latitude.
TEST(NZMG, StoresThePointScaleAndIsConformal) {
  constexpr double h = 1e-5;                // radians
  constexpr double kAlongParallel = 1e-10;  // h² and rounding; 5e-11 measured
  constexpr double kAlongMeridian = 4e-9;   // 3.3e-9 measured
  const TNZMGProj proj;
  const Ellipsoid& ell = proj.GetEllipsoid();
  const auto change = [&](double phi, double lambda, double dPhi, double dLambda) {
    double n1 = phi + dPhi, e1 = lambda + dLambda, n0 = phi - dPhi, e0 = lambda - dLambda;
    proj.ForwardPoint(n1, e1);
    proj.ForwardPoint(n0, e0);
    return std::hypot(n1 - n0, e1 - e0) / 2;
  };
  for (double latitude = -47; latitude <= -34; latitude += 1) {
    const double phi = latitude * kDegree, lambda = 171 * kDegree;
    double n = phi, e = lambda;
    PointFactors factors;
    proj.ForwardPoint(n, e, &factors);
    const double w2 = 1 - ell.e2 * std::pow(std::sin(phi), 2);
    const double parallel = ell.a / std::sqrt(w2) * std::cos(phi) * h;
    const double meridian = ell.a * (1 - ell.e2) / (w2 * std::sqrt(w2)) * h;
    EXPECT_NEAR(change(phi, lambda, 0, h) / parallel, factors.scale, kAlongParallel);
    EXPECT_NEAR(change(phi, lambda, h, 0) / meridian, factors.scale, kAlongMeridian);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
