#include "geomath/proj/methods/spc_om83_proj.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/proj/methods/o_mercator_proj.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

TSPC_OM83Proj AlaskaZone1() {
  return {6378137,      298.257222101, -std::atan(0.75), 0.9999, -(133 + 40 / 60.0) * kDegree,
          57 * kDegree, 5000000,       -5000000,         5001};
}

// NGS program SPCS83, zone 5001: the first row as that program prints it; the second by PROJ 9.1,
// omerc with no_uoff.
TEST(SPC_OM83, ReproducesAlaskaZone1) {
  struct Row {
    double phi, lambda, north, east, tolerance;
  };
  constexpr Row kRows[] = {
      {58.5, -134.5, 742439.408, 770081.059, 0.0006},  // printed to 1 mm
      {58.3, -134.4, 720098.3293, 775672.4612, 0.6e-4},
  };
  TSPC_OM83Proj proj = AlaskaZone1();
  for (const Row& row : kRows) {
    double n = row.phi * kDegree, e = row.lambda * kDegree;
    ASSERT_TRUE(proj._Forward(n, e));
    EXPECT_NEAR(n, row.north, row.tolerance);
    EXPECT_NEAR(e, row.east, row.tolerance);
    const double k = proj.GetScale();
    ASSERT_TRUE(proj._Inverse(n, e));
    EXPECT_NEAR(n, row.phi * kDegree, tolerance::kRoundTripRadians);
    EXPECT_NEAR(e, row.lambda * kDegree, tolerance::kRoundTripRadians);
    EXPECT_NEAR(proj.GetScale(), k, 1e-14);
  }
}

// The general class with its azimuth exchange and origin meridian aside.
TEST(SPC_OM83, IsTheGeneralClassExceptForWhatThatKeeps) {
  TSPC_OM83Proj state = AlaskaZone1();
  const TOMercatorProj general(6378137, 298.257222101, -std::atan(0.75), 0.9999,
                               -(133 + 40 / 60.0) * kDegree, 57 * kDegree, 5000000, -5000000);
  double n = 1, e = -2.3, nGeneral = 1, eGeneral = -2.3;
  state.ForwardPoint(n, e);
  general.ForwardPoint(nGeneral, eGeneral);
  EXPECT_EQ(n, nGeneral);
  EXPECT_EQ(e, eGeneral);

  EXPECT_NEAR(state.GetParam(0, kUnitDegrees), -36.86989764584402, 1e-13);
  const TSPC_OM83Proj sphere(6371000, 1e300, 0, 1, 0, 0, 0, 0, 0);
  double b = 0.5, l = 0;  // exactly on the origin meridian
  sphere.ForwardPoint(b, l);
  EXPECT_NEAR(b, 6371000 * 0.5, tolerance::kSameFormulaMetres);
}

}  // namespace
}  // namespace zel_cs::geomath
