#include "geomath/proj/methods/math/hotine.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

// EPSG Guidance Note 7-2 (2019), Hotine oblique Mercator, Timbalai 1948 / RSO Borneo; γ0 and λ0 to
// 1e-9 rad, lengths to 0.001 m as printed.
TEST(Hotine, ReproducesTheIntermediateValuesOfTheGuidanceNote) {
  constexpr double kPrintedRadians = 0.6e-9, kPrintedMetres = 0.0006;
  const Hotine h(MakeEllipsoid(6377298.556, 300.8017),
                 {.azimuth = (53 + 18 / 60.0 + 56.9537 / 3600) * kRadPerDeg,
                  .k0 = 0.99984,
                  .phiC = 4 * kRadPerDeg,
                  .lambdaC = 115 * kRadPerDeg});
  EXPECT_NEAR(h.B, 1.003303209, kPrintedRadians);
  EXPECT_NEAR(h.A, 6376278.686, kPrintedMetres);
  EXPECT_NEAR(std::atan2(h.sinGamma0, h.cosGamma0), 0.927295218, kPrintedRadians);
  EXPECT_NEAR(h.lambda0, 1.914373469, kPrintedRadians);

  const auto [u, v] = h.Project<simd::Scalar>((5 + 23 / 60.0 + 14.1129 / 3600) * kRadPerDeg,
                                              (115 + 48 / 60.0 + 19.8196 / 3600) * kRadPerDeg)
                          .skew;
  EXPECT_NEAR(u, 901334.257, kPrintedMetres);
  EXPECT_NEAR(v, -69702.787, kPrintedMetres);
}

TEST(Hotine, KeepsItsConstantsWithACentreOnTheEquator) {
  const Hotine h(MakeEllipsoid(6377304.063, 300.8017), {0.3, 1, 0, 1});  // D rounds to above 1
  EXPECT_EQ(h.C, 0.0);
  EXPECT_EQ(h.lambda0, 1.0);
  EXPECT_EQ(h.sinGamma0, std::sin(0.3));
}

}  // namespace
}  // namespace zel_cs::geomath
