// The guide's worked example of the Ordnance Survey (A guide to coordinate systems in Great
// Britain, annexe C): Caister water tower on the national grid.
#include <cmath>
#include <cstdio>

#include "geomath/geomath.h"

int main() {
  using namespace zel_cs::geomath;
  TTMProj grid(6377563.396, 299.3249646, -2 * kRadPerDeg, 0.9996012717, 49 * kRadPerDeg, 400000,
               -100000);
  double north = 52.6575703055556 * kRadPerDeg, east = 1.7179215833333 * kRadPerDeg;
  const bool ok = grid.Forward(north, east);
  std::printf("N %.3f  E %.3f\n", north, east);
  return ok && std::abs(north - 313177.270) < 1e-3 && std::abs(east - 651409.903) < 1e-3 ? 0 : 1;
}
