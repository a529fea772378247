#include "geomath/proj/methods/cassini_proj.h"

#include <gtest/gtest.h>

#include "tests/proj/methods/worked_example.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// IOGP 373-07-02, method 9806: Trinidad 1903, its link of Clarke being the unit; then Johor
// GDM2000 by PROJ 9.1.1, printed to 0.1 mm.
TEST(Cassini, PublishedGrids) {
  TCassiniProj trinidad(31706587.88, 294.2606764, (10 + 26.5 / 60) * kDegree,
                        -(61 + 20.0 / 60) * kDegree, 0, 430000, 325000);
  ExpectBothWays(trinidad, {10, -62, 82536.22, 66644.94}, 0.0051, 0.0051);
  TCassiniProj johor(6378137, 298.257222101, 2.12167974444444 * kDegree, 103.427936236111 * kDegree,
                     0, -14810.562, 8758.32);
  ExpectBothWays(johor, {1.9, 103.2, -15752.3881, -40170.4509}, 6e-5, 6e-5);
}

// The turned grid is the plain one, turned about the false origin so that its north axis points in
// azimuth θ of the grid; every setter of a prepared parameter takes effect.
TEST(Cassini, AxisAzimuthTurnsAboutTheFalseOrigin) {
  const double theta = 10 * kDegree, kEast0 = -14810.562, kNorth0 = 8758.32;
  TCassiniProj turned;
  turned.SetEllipsoid(6378137, 298.257222101);
  turned.Lat0(2.12167974444444 * kDegree);
  turned.Lon0(103.427936236111 * kDegree);
  turned.SetParam(10, 2, 3);
  turned.FEast(kEast0);
  turned.FNorth(kNorth0);
  EXPECT_EQ(turned.AxisAzimuth(), theta);
  const double y = -15752.3881 - kNorth0, x = -40170.4509 - kEast0;
  const double north = kNorth0 + y * std::cos(theta) - x * std::sin(theta);
  const double east = kEast0 + y * std::sin(theta) + x * std::cos(theta);
  ExpectBothWays(turned, {1.9, 103.2, north, east}, 1e-4, 1e-4);
}

}  // namespace
}  // namespace zel_cs::geomath
