#include "geomath/proj/methods/math/conformal_sphere.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

struct Row {
  double phi, chi;
};

struct Case {
  double a, invF, normal, R, alpha, chi0, K;
  Row rows[4];
};

// The tangent forms of Snyder 1987, eq. 3-1 and p. 160, with 50 digits (mpmath): Bessel's ellipsoid
// at the Swiss and the Dutch origin, WGS84 at a southern latitude.
constexpr Case kCases[] = {
    {6377397.155,
     299.1528128,
     0.81947406867610995,
     6378815.9036478204117,
     1.0007291384305087398,
     8.1869435858161697755e-1,
     3.0667323778185500183e-3,
     {{0.8, 7.992526023862581103e-1},
      {-1.2, -1.1970597287929014311},
      {1.55, 1.5499938300836100288},
      {1.0e-5, 3.076668022905614787e-3}}},
    {6377397.155,
     299.1528128,
     0.9102967268944,
     6382644.5710354136056,
     1.0004758566842418277,
     9.0968475674584865169e-1,
     3.7739538319434690554e-3,
     {{0.8, 7.995871729464283331e-1},
      {-1.2, -1.1966471132464637685},
      {1.55, 1.5499845176426179539},
      {1.0e-5, 3.783882785535494473e-3}}},
    {6378137,
     298.257223563,
     -0.59999999999999998,
     6370348.6113632300591,
     1.0015623584746546217,
     -5.9893318950839203381e-1,
     -1.4971074803135875907e-3,
     {{0.8, 7.965781262406283717e-1},
      {-1.2, -1.1992204030306987538},
      {1.55, 1.5499774953290957766},
      {1.0e-5, -1.4871583569420049772e-3}}},
};

constexpr double kRounding = 1e-15;  // radians and plain numbers; worst 4.4e-16
constexpr double kMetres = 3e-9;     // two units in the last place of 6.4e6

TEST(ConformalSphere, TouchesAtItsNormalLatitude) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.normal);
    const ConformalSphere sphere(MakeEllipsoid(c.a, c.invF), c.normal);
    EXPECT_NEAR(sphere.R, c.R, kMetres);
    EXPECT_NEAR(sphere.alpha, c.alpha, kRounding);
    EXPECT_NEAR(sphere.chi0, c.chi0, kRounding);
    EXPECT_NEAR(sphere.K, c.K, kRounding);
    EXPECT_NEAR(sphere.Latitude(c.normal), c.chi0, kRounding);
    for (const Row& row : c.rows) {
      EXPECT_NEAR(sphere.Latitude(row.phi), row.chi, kRounding);
      const SineCosine chi = sphere.Latitude(std::sin(row.phi), std::cos(row.phi));
      EXPECT_NEAR(chi.sin, std::sin(row.chi), kRounding);
      EXPECT_NEAR(chi.cos, std::cos(row.chi), kRounding);
      EXPECT_NEAR(sphere.Geodetic(row.chi), row.phi, kRounding);
      EXPECT_NEAR(sphere.Geodetic(chi), row.phi, kRounding);
    }
  }
}

TEST(ConformalSphere, CarriesPoleToPole) {
  const ConformalSphere sphere(MakeEllipsoid(6377397.155, 299.1528128), 0.9);
  for (const double sign : {1.0, -1.0}) {
    EXPECT_EQ(sphere.Geodetic(sign * kHalfPi), sign * kHalfPi);
    EXPECT_NEAR(sphere.Latitude(sign * kHalfPi), sign * kHalfPi, kRounding);
    const SineCosine chi = sphere.Latitude(sign, 0.0);
    EXPECT_EQ(chi.sin, sign);
    EXPECT_EQ(chi.cos, 0);
    EXPECT_EQ(sphere.Geodetic(chi), sign * kHalfPi);
  }
}

}  // namespace
}  // namespace zel_cs::geomath
