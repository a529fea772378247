#include "geomath/proj/methods/math/latitude.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

// Angles of order one in doubles: four units in the last place. The isometric latitude itself
// carries the rounding of the cosine, a few parts in 1e16 of one.
constexpr double kRounding = 9e-16;

// Closed definitions in 40 digits (mpmath 1.2) at latitudes that are doubles: inverse flattening,
// φ, ψ, sin χ, cos χ.
struct Row {
  double invF, phi, psi, sinChi, cosChi;
};
// clang-format off
constexpr Row kRows[] = {
    {297, -1.57079458146564455, -13.94497672168649992, -0.9999999999984562495, 1.757128630517712358e-6},
    {297, -1.04719755119659785, -1.311126079344748859, -0.8645600653063146765, 0.5025294951319185023},
    {297, 0.0000174532925199432965, 0.00001733595979442043224, 0.00001733595979268374178, 0.999999999849732249},
    {297, 0.523598775598298927, 0.5459429243261816508, 0.4974733456734344688, 0.8674792621985147945},
    {297, 0.794124809657419939, 0.8889688265974891522, 0.710884042013491399, 0.7033092341286019227},
    {297, 1.30899693899574721, 2.021082193196663827, 0.9654871736670454935, 0.2604506046919844165},
    {297, 1.57079632662036373, 23.15531727325185961, 1.0, 1.757128314957812414e-10},
    {299.1528128, -1.57079458146564455, -13.94502523646817832, -0.9999999999984563993, 1.757043385873651418e-6},
    {299.1528128, -1.04719755119659785, -1.311168047184662487, -0.864570663307723466, 0.5025112617122556279},
    {299.1528128, 0.0000174532925199432965, 0.00001733680274988659818, 0.00001733680274814965437, 0.9999999998497176352},
    {299.1528128, 0.523598775598298927, 0.5459671002224602195, 0.4974915383066339677, 0.8674688290153709884},
    {299.1528128, 0.794124809657419939, 0.8890033535193068023, 0.7109011201248398278, 0.7032919716627284614},
    {299.1528128, 1.30899693899574721, 2.021129040757407579, 0.9654903514049901712, 0.2604388245708934113},
    {299.1528128, 1.57079632662036373, 23.15536578803353809, 1.0, 1.757043070329060159e-10},
    {10, -1.57079458146564455, -13.74809059853471346, -0.9999999999977112928, 2.139489266398529893e-6},
    {10, -1.04719755119659785, -1.143852375481848533, -0.8157072393943120578, 0.5784649510555591811},
    {10, 0.0000174532925199432965, 0.00001413716694214454841, 0.00001413716694120273275, 0.9999999999000702554},
    {10, 0.523598775598298927, 0.4527575985312839064, 0.4241631147652257748, 0.9055858060242894003},
    {10, 0.794124809657419939, 0.7536132487378399982, 0.6372996202689559393, 0.7706161132529247627},
    {10, 1.30899693899574721, 1.831895708221799408, 0.9500112000803690621, 0.3122158223438667783},
    {10, 1.57079632662036373, 22.95843115009972619, 1.0, 2.139488882172638578e-10},
};
// clang-format on

TEST(ConformalLatitude, AgreesWithHighPrecisionBothWays) {
  for (const Row& row : kRows) {
    SCOPED_TRACE(::testing::Message() << "1/f " << row.invF << ", latitude " << row.phi);
    const ConformalLatitude latitude(MakeEllipsoid(6378137, row.invF));
    const double s = std::sin(row.phi), c = std::cos(row.phi);
    EXPECT_NEAR(latitude.Isometric(s, c), row.psi, kRounding * (1 + std::abs(row.psi)));
    const SineCosine chi = latitude.FromGeodetic(s, c);
    EXPECT_NEAR(chi.sin, row.sinChi, kRounding);
    EXPECT_NEAR(chi.cos, row.cosChi, kRounding * row.cosChi * 2);
    EXPECT_NEAR(latitude.ToGeodetic({row.sinChi, row.cosChi}), row.phi, kRounding);
    EXPECT_NEAR(latitude.FromIsometric(row.psi), row.phi, kRounding);
  }
}

// The loop of the classical methods, as printed (Snyder 1987, eq. 3-4), 20 steps from χ.
double TwentySteps(double chi, double e) {
  double phi = chi;
  for (int i = 0; i < 20; ++i) {
    const double es = e * std::sin(phi);
    phi =
        2 * std::atan(std::tan(kPi / 4 + chi / 2) * std::pow((1 + es) / (1 - es), e / 2)) - kHalfPi;
  }
  return phi;
}

TEST(ConformalLatitude, IsTheFixedPointOfTheClassicalSteps) {
  constexpr double kStepRounding = 2e-15;  // the arctangent form rounds at π
  for (const double invF : {150.0, 293.465, 298.257223563, 1000.0}) {
    const Ellipsoid ell = MakeEllipsoid(6378137, invF);
    const ConformalLatitude latitude(ell);
    for (double chi = -1.57; chi <= 1.57; chi += 0.01)
      EXPECT_NEAR(latitude.ToGeodetic({std::sin(chi), std::cos(chi)}), TwentySteps(chi, ell.e),
                  kStepRounding)
          << "1/f " << invF << ", conformal latitude " << chi;
  }
}

TEST(ConformalLatitude, HoldsAtThePolesAndOnTheSphere) {
  const ConformalLatitude latitude(MakeEllipsoid(6378137, 298.257223563));
  const double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(latitude.FromIsometric(infinity), kHalfPi);
  EXPECT_EQ(latitude.FromIsometric(-infinity), -kHalfPi);
  EXPECT_EQ(latitude.ToGeodetic({-1, 0}), -kHalfPi);
  EXPECT_EQ(latitude.ToGeodetic({0, 1}), 0);
  EXPECT_TRUE(std::isnan(latitude.FromIsometric(std::nan(""))));

  const ConformalLatitude sphere;
  EXPECT_NEAR(sphere.FromIsometric(std::asinh(std::tan(0.7))), 0.7, kRounding);
}

}  // namespace
}  // namespace zel_cs::geomath
