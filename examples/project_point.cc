// A WGS84 position in UTM zone 32, and back.
#include <cstdio>

#include "geomath/geomath.h"

int main() {
  using namespace zel_cs::geomath;
  TUTMProj utm(kWgs84A, kWgs84InvF, 9 * kRadPerDeg, 0.9996, 0, 500000, 0);
  double x = 48.137 * kRadPerDeg, y = 11.575 * kRadPerDeg;
  if (!utm.Forward(x, y)) return 1;
  std::printf("N %.3f m  E %.3f m  scale %.8f\n", x, y, utm.GetScale());
  if (!utm.Inverse(x, y)) return 1;
  std::printf("B %.9f  L %.9f degrees\n", x * kDegPerRad, y * kDegPerRad);
}
