#include "geomath/proj/methods/math/cassini.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// EPSG Guidance Note 7-2, method 9806, worked example: Trinidad 1903, in Clarke's links.
TEST(CassiniSoldner, TrinidadExample) {
  constexpr double kPrinted = 0.005;  // links; the source prints hundredths
  const Ellipsoid clarke1858 = MakeEllipsoid(31706587.88, 294.2606764);
  const CassiniSoldner grid(clarke1858, (10 + 26.5 / 60) * kDegree, -(61 + 20.0 / 60) * kDegree, 0);
  const CassiniSoldner::Plane p = grid.Forward(10 * kDegree, -62 * kDegree);
  EXPECT_NEAR(p.north + 325000, 82536.22, kPrinted);
  EXPECT_NEAR(p.east + 430000, 66644.94, kPrinted);
  const CassiniSoldner::Geographic g = grid.Inverse(82536.22 - 325000, 66644.94 - 430000);
  EXPECT_NEAR(g.phi, 10 * kDegree, kPrinted / clarke1858.a);
  EXPECT_NEAR(g.lambda, -62 * kDegree, kPrinted / clarke1858.a);
}

// The north axis points in grid azimuth θ: a point straight north of the origin lies at
// (cos θ, sin θ) times its distance, and every distance from the origin stays.
TEST(CassiniSoldner, AxisAzimuthTurnsTheGrid) {
  const Ellipsoid grs80 = MakeEllipsoid(6378137.0, 298.257222101);
  const double phi0 = 47 * kDegree, theta = 10 * kDegree;
  const CassiniSoldner plain(grs80, phi0, 0.2, 0), turned(grs80, phi0, 0.2, theta);
  const double north = plain.Forward(phi0 + 0.01, 0.2).north;
  const CassiniSoldner::Plane p = turned.Forward(phi0 + 0.01, 0.2);
  EXPECT_NEAR(p.north, north * std::cos(theta), tolerance::kSameFormulaMetres);
  EXPECT_NEAR(p.east, north * std::sin(theta), tolerance::kSameFormulaMetres);
  const CassiniSoldner::Plane q = plain.Forward(0.815, 0.19), r = turned.Forward(0.815, 0.19);
  EXPECT_NEAR(std::hypot(q.north, q.east), std::hypot(r.north, r.east),
              tolerance::kSameFormulaMetres);
  const CassiniSoldner::Geographic g = turned.Inverse(r.north, r.east);
  EXPECT_NEAR(g.phi, 0.815, 1e-10);
  EXPECT_NEAR(g.lambda, 0.19, 1e-10);
}

// The figures that the comment promises hold at every latitude up to 80°, and on a sphere.
TEST(CassiniSoldner, RoundTripFigures) {
  constexpr struct { double degrees, metres; } kPromised[] = {{1, 2e-4}, {2, 3.3e-3}, {3, 1.8e-2}};
  constexpr double kSphere = 1e300;  // inverse flattening: none that a double can tell
  for (double invF : {298.257222101, kSphere}) {
    const Ellipsoid ell = MakeEllipsoid(6378137.0, invF);
    const CassiniSoldner grid(ell, 0.3, 1.0, 0);
    for (const auto& [degrees, metres] : kPromised) {
      for (int lat = -80; lat <= 80; lat += 5) {
        const double phi = lat * kDegree, lambda = 1.0 - degrees * kDegree;
        const CassiniSoldner::Plane p = grid.Forward(phi, lambda);
        const CassiniSoldner::Geographic g = grid.Inverse(p.north, p.east);
        EXPECT_LT(ell.a * std::hypot(g.phi - phi, (g.lambda - lambda) * std::cos(phi)), metres)
            << "latitude " << lat << ", " << degrees << " degrees from the meridian";
      }
    }
  }
}

}  // namespace
}  // namespace zel_cs::geomath
