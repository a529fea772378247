#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "geomath/proj/procedural/projection_functions.h"
#include "tests/support/proj_peer.h"
#include "tests/support/tolerance.h"

// The methods without a class against PROJ over lattices of their domains.
namespace {

using tolerance::kDegree;
using Function = bool (*)(const double*, double*, const double*, const double*);

constexpr double kD = kDegree;
constexpr double kWgs84[] = {6378137.0, 1 / 298.257223563};
// PROJ's arc misses the exact one (40-digit quadrature) by 4.8e-6 m at 75°, ours by 5e-8 m; the cone
// constant of an equidistant conic carries that to 2.8e-5 m at its far side.
constexpr double kArcMetres = 5e-5;

struct PeerCase {
  const char* name;
  Function forward;
  std::vector<double> param;
  std::string definition;
  PeerLattice lattice;
  double tolerance;
};

// Our image of a lattice point minus PROJ's, the largest over the lattice.
double WorstDifference(const PeerCase& c, double northShift, double eastShift) {
  const ProjPeer peer(c.definition + " +ellps=WGS84");
  double worst = 0;
  int points = 0;
  for (int i = 0; i < c.lattice.rows; ++i)
    for (int j = 0; j < c.lattice.columns; ++j) {
      const double south = c.lattice.south, west = c.lattice.west;
      const double lat = south + (c.lattice.north - south) * i / (c.lattice.rows - 1);
      const double lon = west + (c.lattice.east - west) * j / (c.lattice.columns - 1);
      const double blh[3] = {lat * kDegree, lon * kDegree, 0};
      double neh[3], north, east;
      if (!peer.Forward(blh[0], blh[1], north, east)) continue;
      if (!c.forward(blh, neh, kWgs84, c.param.data())) return std::nan("");
      worst = std::max(worst, std::hypot(neh[0] - north - northShift, neh[1] - east - eastShift));
      ++points;
    }
  return points == c.lattice.rows * c.lattice.columns ? worst : std::nan("");
}

TEST(MethodsWithoutClassPeer, AgreeWithProjOverTheirDomains) {
  const PeerCase cases[] = {
      {"Bonne",
       TBLHToBonne,
       {45 * kD, 10 * kD, 1e5, 2e5},
       "+proj=bonne +lat_1=45 +lon_0=10 +x_0=100000 +y_0=200000",
       {-60, 85, -100, 100},
       kArcMetres},
      {"Bonne south",
       TBLHToBonne,
       {-30 * kD, 10 * kD, 0, 0},
       "+proj=bonne +lat_1=-30 +lon_0=10",
       {-85, 60, -100, 100},
       kArcMetres},
      {"Sinusoidal",
       TBLHToSinusoidal,
       {10 * kD, 1e5, 2e5},
       "+proj=sinu +lon_0=10 +x_0=100000 +y_0=200000",
       {-89, 89, -160, 180},
       kArcMetres},
      {"Conic",
       TBLHToEquidistant,
       {30 * kD, 60 * kD, 10 * kD, 45 * kD, 1e5, 2e5},
       "+proj=eqdc +lat_1=30 +lat_2=60 +lon_0=10 +lat_0=45 +x_0=100000 +y_0=200000",
       {-40, 89, -160, 180},
       kArcMetres},
      {"Conic south",
       TBLHToEquidistant,
       {-20 * kD, -20 * kD, 10 * kD, -25 * kD, 0, 0},
       "+proj=eqdc +lat_1=-20 +lat_2=-20 +lon_0=10 +lat_0=-25",
       {-89, 40, -160, 180},
       kArcMetres},
      // PROJ measures geodesics, the method normal sections: 0.55 mm at 45 km.
      {"Azimuthal, 50 km",
       TBLHToEquidistantAz,
       {48 * kD, 9 * kD, 1e5, 2e5},
       "+proj=aeqd +lat_0=48 +lon_0=9 +x_0=100000 +y_0=200000",
       {47.7, 48.3, 8.6, 9.4},
       1e-3},
  };
  for (const PeerCase& c : cases) {
    const double worst = WorstDifference(c, 0, 0);
    EXPECT_LE(worst, c.tolerance) << c.name;
  }
}

// PROJ counts u of a line through two points from its centre, the function from the natural origin.
TEST(MethodsWithoutClassPeer, TwoPointObliqueMercatorAgreesWithProj) {
  constexpr double kAlpha = -35.5120501752 * kDegree;  // azimuth of the line at the centre
  constexpr double kCentre = 5432384.8068;             // u of the centre there, metres
  constexpr double kPrinted = 3e-4;                    // their digits: 5e-11° of 1e7 m, 5e-5 m
  const PeerCase c = {"Two points",
                      TBLHToOM2P,
                      {47 * kD, -87 * kD, 40 * kD, -80 * kD, 43 * kD, 0.9996, 1e5, 2e5},
                      "+proj=omerc +lat_0=43 +lat_1=47 +lon_1=-87 +lat_2=40 +lon_2=-80 +k=0.9996 "
                      "+x_0=100000 +y_0=200000",
                      {30, 55, -100, -70},
                      kPrinted};
  EXPECT_LE(WorstDifference(c, kCentre * std::cos(kAlpha), kCentre * std::sin(kAlpha)),
            c.tolerance);
}

}  // namespace
