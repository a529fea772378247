// The oblique classes, the New Zealand grid and the Alaskan zones against PROJ over their domains.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "geomath/geomath.h"
#include "tests/support/proj_peer.h"
#include "tests/support/tolerance.h"

namespace zel_cs::geomath {
namespace {

using tolerance::kDegree;

// Both sides evaluate closed formulas in doubles; coordinates of the lattices reach 2e7 m. PROJ's
// omerc loses digits towards the ends of the cylinder, its somerc holds a quarter turn to each side:
// the lattices stay inside.
constexpr double kClosedFormula = 5e-8;
constexpr double kSeries = 5e-8;        // Cassini-Soldner, 1.2e-8 measured
constexpr double kZones1927 = 7e-5;     // their published series; 0.053 mm measured
constexpr double kZonesFactors = 3e-8;  // their published scale; 2.3e-8 measured
// Our factors are those of the ellipsoid of the positions, PROJ's those of the enlarged axes.
constexpr double kEnlargedAxes = 1.2e-4;
constexpr double kOtherEccentricity = 1.2e-5;  // of PROJ's nzmg, which sets the axis alone

std::vector<PeerCase> Cases() {
  const double deg = kDegree;
  return {
      {"ObliqueMercator",
       std::make_shared<TOMercatorProj>(6378137.0, 298.257223563, 30 * deg, 0.9996, 10 * deg,
                                        47 * deg, 5e5, -1e5),
       "+proj=omerc +lat_0=47 +lonc=10 +alpha=30 +k_0=0.9996 +x_0=500000 +y_0=-100000 +no_uoff "
       "+a=6378137 +rf=298.257223563",
       {-10, 80, -40, 60},
       kClosedFormula},
      {"ObliqueMercatorSouth",
       std::make_shared<TOMercatorProj>(6378388.0, 297.0, 18.9 * deg, 0.9995, 46.4375 * deg,
                                        -18.9 * deg, 4e5, 8e5),
       "+proj=omerc +lat_0=-18.9 +lonc=46.4375 +alpha=18.9 +k_0=0.9995 +x_0=400000 +y_0=800000 "
       "+no_uoff +a=6378388 +rf=297",
       {-85, 20, 0, 100},
       kClosedFormula},
      {"RectifiedSkewOrthomorphic",
       std::make_shared<TRSOProj>(6377298.556, 300.8017, 53.3158204722222 * deg, 0.99984, 115 * deg,
                                  4 * deg, 0, 0),
       "+proj=omerc +lat_0=4 +lonc=115 +alpha=53.3158204722222 +gamma=53.130102347338175 "
       "+k_0=0.99984 "
       "+no_uoff +a=6377298.556 +rf=300.8017",
       {-40, 50, 70, 160},
       kClosedFormula},
      {"Alaska1Of1983",
       std::make_shared<TSPC_OM83Proj>(6378137.0, 298.257222101, -std::atan(0.75), 0.9999,
                                       -(133 + 40 / 60.0) * deg, 57 * deg, 5e6, -5e6, 5001),
       "+proj=omerc +lat_0=57 +lonc=-133.66666666666666 +alpha=-36.86989764584402 +k_0=0.9999 "
       "+x_0=5000000 +y_0=-5000000 +no_uoff +a=6378137 +rf=298.257222101",
       {40, 75, -160, -110},
       kClosedFormula},
      {"CountyOblique",
       std::make_shared<TMinnesota_OMProj>(6378137.0, 298.257222101, -94 * deg, 46 * deg, 0, 0, 1,
                                           5e4, 1.2e5, 6378100.0, 6356715.0, 430.0, 30 * deg,
                                           -30.0),
       "+proj=omerc +lat_0=46 +lonc=-94 +alpha=30 +k_0=1 +x_0=120000 +y_0=50000 +no_uoff "
       "+a=6378500 +b=6357115",
       {20, 70, -130, -60},
       kClosedFormula,
       kEnlargedAxes},
      {"Swiss",
       std::make_shared<TSwissProj>(6377397.155, 299.1528128, 7.4395833333333 * deg,
                                    46.952405555556 * deg, 6e5, 2e5),
       "+proj=somerc +lat_0=46.952405555556 +lon_0=7.4395833333333 +x_0=600000 +y_0=200000 "
       "+a=6377397.155 +rf=299.1528128",
       {20, 75, -40, 55},
       kClosedFormula},
      {"StateCassini",
       std::make_shared<TMalaysia_CS2000Proj>(6378137.0, 298.257222101, 0, 1, 103.4 * deg,
                                              2.1 * deg),
       "+proj=cass +lat_0=2.1 +lon_0=103.4 +a=6378137 +rf=298.257222101",
       {1, 7, 101, 105},
       kSeries},
      {"NewZealand",
       std::make_shared<TNZMGProj>(),
       "+proj=nzmg",
       {-48, -34, 166, 179},
       kClosedFormula,
       kOtherEccentricity},
      {"Alaska1Of1927",
       std::make_shared<TAK01Proj>(),
       "+proj=omerc +lat_0=57 +lonc=-133.66666666666666 +alpha=-36.86989764584402 +k_0=0.9999 "
       "+x_0=5000000 +y_0=-5000000 +no_uoff +a=6378206.4 +b=6356583.8",
       {54, 60.5, -138, -130},
       kZones1927},
      {"Alaska7Of1927",
       std::make_shared<TAK29Proj>(700000, 583200, 5007),
       "+proj=tmerc +lat_0=54 +lon_0=-162 +k_0=0.9999 +x_0=213360.42672085344 +a=6378206.4 "
       "+b=6356583.8",
       {54, 71, -165, -159},
       kZones1927,
       kZonesFactors},
  };
}

class ObliquePeer : public ::testing::TestWithParam<PeerCase> {};

TEST_P(ObliquePeer, AgreesWithProj) { ExpectAgreesWithPeer(GetParam()); }

INSTANTIATE_TEST_SUITE_P(Class, ObliquePeer, ::testing::ValuesIn(Cases()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace zel_cs::geomath
