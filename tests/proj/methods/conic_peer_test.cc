// The conic and stereographic classes against PROJ over their domains.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "geomath/geomath.h"
#include "tests/support/proj_peer.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// Both sides evaluate closed formulas in doubles; coordinates of the lattices reach 3e7 m.
constexpr double kClosedFormula = 5e-8;

// What PROJ 9.1 is off the formulas of the method in 40 digits, 1e-12 of the radius; ours are not
// (KrovakProj.AgreesWithHighPrecision).
constexpr double kKrovakOfProj = 2e-6;

std::vector<PeerCase> Cases() {
  const double deg = kDegree;
  return {
      {"LambertTwoParallels",
       std::make_shared<TLCProj>(6378206.4, 294.9786982138982, 33 * deg, 45 * deg, -96 * deg,
                                 23 * deg, 1e5, 2e5, 1.0),
       "+proj=lcc +lat_1=33 +lat_2=45 +lon_0=-96 +lat_0=23 +x_0=100000 +y_0=200000 +a=6378206.4 "
       "+rf=294.9786982138982",
       {-60, 89.9, -275, 83},
       kClosedFormula},
      {"LambertOneSouthernParallel",
       std::make_shared<TLCProj>(6378137.0, 298.257222101, -36 * deg, -36 * deg, 175 * deg,
                                 -30 * deg, 0.0, 0.0, 0.9999),
       "+proj=lcc +lat_1=-36 +lat_0=-30 +k_0=0.9999 +lon_0=175 +a=6378137 +rf=298.257222101",
       {-89.9, 40, 0, 350},
       kClosedFormula},
      {"StereographicOblique",
       std::make_shared<TSterProj>(6378137.0, 298.257222101, 40 * deg, -100 * deg, 0.9999, 5e5,
                                   0.0),
       "+proj=stere +lat_0=40 +lon_0=-100 +k_0=0.9999 +x_0=500000 +a=6378137 +rf=298.257222101",
       {0, 89.9, -250, 50},
       kClosedFormula},
      {"StereographicEquatorial",
       std::make_shared<TSterProj>(6378388.0, 297.0, 0.0, 170 * deg, 1.0, 0.0, 0.0),
       "+proj=stere +lat_0=0 +lon_0=170 +a=6378388 +rf=297",
       {-89, 89, 30, 310},
       kClosedFormula},
      {"StereographicNorth",
       std::make_shared<TSterProj>(6378137.0, 298.257223563, 90 * deg, 0.0, 0.994, 2e6, 2e6),
       "+proj=stere +lat_0=90 +k_0=0.994 +x_0=2000000 +y_0=2000000 +a=6378137 +rf=298.257223563",
       {-30, 89.99, -180, 180},
       kClosedFormula},
      {"StereographicSouth",
       std::make_shared<TSterProj>(6378137.0, 298.257223563, -90 * deg, 30 * deg, 0.994, 2e6, 2e6),
       "+proj=stere +lat_0=-90 +lon_0=30 +k_0=0.994 +x_0=2000000 +y_0=2000000 +a=6378137 "
       "+rf=298.257223563",
       {-89.99, 30, -150, 210},
       kClosedFormula},
      {"DoubleStereographic",
       std::make_shared<TDoubleSter>(6377397.155, 299.1528128, 52.1561605555556 * deg,
                                     5.3876388888889 * deg, 0.9999079, 155000.0, 463000.0),
       "+proj=sterea +lat_0=52.1561605555556 +lon_0=5.3876388888889 +k=0.9999079 +x_0=155000 "
       "+y_0=463000 +a=6377397.155 +rf=299.1528128",
       {-30, 89.9, -100, 110},
       kClosedFormula},
      {"DoubleStereographicSouth",
       std::make_shared<TDoubleSter>(6378388.0, 297.0, -45 * deg, 20 * deg, 1.0, 0.0, 0.0),
       "+proj=sterea +lat_0=-45 +lon_0=20 +a=6378388 +rf=297",
       {-89.9, 30, -80, 120},
       kClosedFormula},
      {"StatePlaneLambert",
       std::make_shared<TSPC_LC83Proj>(6378137.0, 298.257222101, 41.2 * deg, 41.9 * deg,
                                       -72.75 * deg, 40 * deg, 3e5, 15e4, 600),
       "+proj=lcc +lat_1=41.2 +lat_2=41.9 +lat_0=40 +lon_0=-72.75 +x_0=300000 +y_0=150000 "
       "+a=6378137 +rf=298.257222101",
       {35, 48, -82, -63},
       kClosedFormula},
      {"Albers",
       std::make_shared<TAlbersEAConicProj>(6378206.4, 294.9786982138982, 29.5 * deg, 45.5 * deg,
                                            -96 * deg, 23 * deg, 0.0, 0.0),
       "+proj=aea +lat_1=29.5 +lat_2=45.5 +lat_0=23 +lon_0=-96 +a=6378206.4 +rf=294.9786982138982",
       {-85, 89, -275, 83},
       kClosedFormula},
      {"AlbersSouth",
       std::make_shared<TAlbersEAConicProj>(6378137.0, 298.257222101, -36 * deg, -18 * deg,
                                            132 * deg, 0.0, 0.0, 0.0),
       "+proj=aea +lat_1=-18 +lat_2=-36 +lat_0=0 +lon_0=132 +a=6378137 +rf=298.257222101",
       {-89, 85, -40, 300},
       kClosedFormula},
      {"Krovak",
       std::make_shared<TKrovakProj>(6377397.155, 299.1528128, 49.5 * deg, 42.5 * deg,
                                     (17 + 40 / 60.0) * deg, 1.04216856380474, 1.37008346281555,
                                     0.9999, 0.0, 0.0),
       "+proj=krovak +lat_0=49.5 +lon_0=24.8333333333333333 +k=0.9999 +axis=wsu "
       "+a=6377397.155 +rf=299.1528128",
       {47, 52, 11, 24},
       kKrovakOfProj},
  };
}

class ConicPeer : public ::testing::TestWithParam<PeerCase> {};

TEST_P(ConicPeer, AgreesWithProj) { ExpectAgreesWithPeer(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Class, ConicPeer, ::testing::ValuesIn(Cases()),
                         [](const auto& c) { return std::string(c.param.name); });

}  // namespace
}  // namespace zel_cs::geomath
