#include "geomath/geoid/boehm.h"

#include <gtest/gtest.h>

#include <cmath>

#include "geomath/base/angle.h"

namespace zel_cs::geomath {
namespace {

struct Case {
  double mjd, lat, lon, h;                   // radians, metres
  double pressure, temperature, undulation;  // hPa, degrees Celsius, metres
};

// The first row is the test case printed with routine GPT (IERS Conventions 2010, revision of
// 2011-10-18); the others the explicit factorial form of the Legendre functions in 40 digits.
constexpr Case kCases[] = {
    {55055, 0.6708665767, -1.393397187, 812.546, 918.07106387574, 19.31914181013, -42.19185643718},
    {58492, 0.760789020944328, 0.026005405854716, 140, 1010.27492792737, 7.33106408506,
     46.27900216595},
    {58492, 0.749444380806365, 0.002443460952792, 2877, 723.33808387371, -9.88044037807,
     46.57029162671},
    {44239, 0, 0, 0, 1012.03940476919, 27.76134751347, 18.89759310529},
    {51544.5, -0.5, -0.5, 500, 959.58161225664, 20.45132379229, -1.45627475219},
    {53750, kHalfPi, 0, 0, 1019.89805772422, -27.80925249457, 14.15004600000},
    {53750, -kHalfPi, 0, 2800, 685.34983528369, -28.19606410692, -28.47650600000},
    {54182.625, 0, -kPi, -30, 1014.21102522905, 27.25592102425, 20.83588627571},
    {56000, 0.4886, 1.5171, 8848, 315.99092415713, -32.86830692794, -52.39343690694},
    {57000, -0.7, 2.9, 50, 1011.21880997429, 15.19738460130, 15.16429366153},
};
constexpr double kPrinted = 1e-10;  // the figures carry eleven decimals; measured 7e-13

TEST(Boehm, ReproducesPublishedAndHighPrecisionValues) {
  for (const Case& c : kCases) {
    double pressure, temperature, undulation;
    Boehm(c.mjd, c.lat, c.lon, c.h, pressure, temperature, undulation);
    EXPECT_NEAR(pressure, c.pressure, kPrinted) << c.mjd << ' ' << c.lat;
    EXPECT_NEAR(temperature, c.temperature, kPrinted) << c.mjd << ' ' << c.lat;
    EXPECT_NEAR(undulation, c.undulation, kPrinted) << c.mjd << ' ' << c.lat;
    EXPECT_EQ(undulation, Boehm_Geoid_Height(c.lat, c.lon));
  }
}

TEST(Boehm, ListsLegendreFunctionsByDegreeAndOrder) {
  const double lat = 0.7, lon = -2.1, s = std::sin(lat), c = std::cos(lat);
  double aP[kBoehmTerms], bP[kBoehmTerms];
  Legendre55(lat, lon, aP, bP);
  constexpr double kRounding = 1e-13;
  EXPECT_EQ(aP[0], 1);
  EXPECT_NEAR(aP[4], 3 * s * c * std::cos(lon), kRounding);                         // P(2, 1)
  EXPECT_NEAR(bP[8], 15 * s * c * c * std::sin(2 * lon), kRounding);                // P(3, 2)
  EXPECT_NEAR(aP[54] / (34459425 * std::pow(c, 9)), std::cos(9 * lon), kRounding);  // P(9, 9)
  EXPECT_NEAR(bP[54] / (34459425 * std::pow(c, 9)), std::sin(9 * lon), kRounding);
}

TEST(Boehm, PressureEndsWhereItsFormulaDoes) {
  double pressure, temperature, undulation;
  Boehm(55055, 0.7, 0.1, 60000, pressure, temperature, undulation);
  EXPECT_TRUE(std::isnan(pressure));
  EXPECT_TRUE(std::isfinite(temperature));
}

}  // namespace
}  // namespace zel_cs::geomath
