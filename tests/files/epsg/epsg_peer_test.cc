#include "tests/files/epsg/epsg_peer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "files/epsg/epsg_projection.h"
#include "files/epsg/epsg_system.h"
#include "files/system/system_file.h"
#include "geomath/base/angle.h"
#include "tests/support/proj_peer.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;

namespace {

// How far a class may be from PROJ over the whole area of a system, metres on the ground.
struct Tolerance {
  double forward, inverse;
};
// Two evaluations of closed formulas, coordinates up to 1e7 m. A cone through parallels that lie
// close together (EPSG:6141) loses digits: 0.3 µm.
constexpr Tolerance kClosed = {4e-7, 4e-7};
// What TDenmarkTMProj states: 1 µm forward, 4 µm back.
constexpr Tolerance kTransverse = {1e-6, 4e-6};
// PROJ ends the iteration of Krovak's latitude at 1e-10 rad on the sphere.
constexpr Tolerance kKrovak = {2e-6, 2e-6};
// Polar latitudes come back from a series to e⁸: 2e-12 rad.
constexpr Tolerance kPolar = {1e-8, 1.3e-5};
// The registry rounds the angle of the skew grid, TRSOProj derives it.
constexpr Tolerance kRoundedSkew = {1.5e-3, 1.5e-3};
// The class's own: the inverse Cassini series within 1°, the polynomial of NZMG.
constexpr Tolerance kCassini = {4e-7, 2e-4};
constexpr Tolerance kNzmg = {1e-8, 1e-4};
// The ellipsoid that is lifted instead of Colombia's plane.
constexpr Tolerance kCity = {1e-4, 1e-4};
// PROJ rounds the ellipsoid of Namibia, in German legal metres, by 0.3 mm.
constexpr Tolerance kNamibia = {3e-4, 3e-4};

struct Row {
  const char* code;
  const char* projection;  // that is expected in the system file
  Tolerance tolerance;
};

void PrintTo(const Row& row, std::ostream* out) { *out << "EPSG:" << row.code; }

constexpr Row kRows[] = {
    // Transverse Mercator: zones to both sides of the equator and the date line, wide national
    // grids, feet, yards and other meridians.
    {"32632", "TMERCSPHER", kTransverse},
    {"32701", "TMERCSPHER", kTransverse},
    {"32660", "TMERCSPHER", kTransverse},
    {"27700", "TMERCSPHER", kTransverse},
    {"2193", "TMERCSPHER", kTransverse},
    {"3067", "TMERCSPHER", kTransverse},
    {"3006", "TMERCSPHER", kTransverse},
    {"2100", "TMERCSPHER", kTransverse},
    {"31467", "TMERCSPHER", kTransverse},
    {"28404", "TMERCSPHER", kTransverse},
    {"22192", "TMERCSPHER", kTransverse},
    {"2180", "TMERCSPHER", kTransverse},
    {"3400", "TMERCSPHER", kTransverse},
    {"2443", "TMERCSPHER", kTransverse},
    {"26729", "TMERCSPHER", kTransverse},
    {"6447", "TMERCSPHER", kTransverse},
    {"2136", "TMERCSPHER", kTransverse},
    {"27391", "TMERCSPHER", kTransverse},
    {"31285", "TMERCSPHER", kTransverse},
    {"2995", "TMERCSPHER", kTransverse},
    {"5170", "TMERCSPHER", kTransverse},
    {"9895", "TMERCSPHER", kTransverse},
    {"29333", "TMERCSPHER", kNamibia},
    // South-orientated.
    {"2053", "TMERCSPHER", kTransverse},
    {"22275", "TMERCSPHER", kTransverse},
    {"29375", "TMERCSPHER", kNamibia},
    // Lambert, one parallel and two, both hemispheres, grads and Paris, feet, chains.
    {"24200", "LC", kClosed},
    {"27572", "LC", kClosed},
    {"30791", "LC", kClosed},
    {"2154", "LC", kClosed},
    {"31370", "LC", kClosed},
    {"21500", "LC", kClosed},
    {"3112", "LC", kClosed},
    {"5479", "LC", kClosed},
    {"2263", "LC", kClosed},
    {"32040", "LC", kClosed},
    {"3034", "LC", kClosed},
    {"6141", "LC", kClosed},
    {"6201", "LC", kClosed},
    // Albers.
    {"3577", "AlbersConic", kClosed},
    {"5070", "AlbersConic", kClosed},
    {"3338", "AlbersConic", kClosed},
    // Mercator with a scale, with a parallel, and on a sphere.
    {"3001", "MERCATOR", kClosed},
    {"3395", "MERCATOR", kClosed},
    {"3388", "MERCATOR", kClosed},
    {"3994", "MERCATOR", kClosed},
    {"3857", "MERCATOR", kClosed},
    // Cassini.
    {"30200", "CASSINI", kCassini},
    {"3068", "CASSINI", kCassini},
    {"3377", "CASSINI", kCassini},
    {"24500", "CASSINI", kCassini},
    // Stereographic.
    {"28992", "DSTER", kClosed},
    {"31700", "DSTER", kClosed},
    {"2953", "DSTER", kClosed},
    {"22780", "DSTER", kClosed},
    {"32661", "STER", kPolar},
    {"5042", "STER", kPolar},
    {"3031", "STER", kPolar},
    {"3413", "STER", kPolar},
    {"3032", "STER", kPolar},
    // Oblique Mercator.
    {"26931", "OM83", kClosed},
    {"3078", "OM83", kClosed},
    {"23700", "OM83", kClosed},
    {"29702", "OM83", kClosed},
    {"29873", "RSO", kRoundedSkew},
    {"3375", "RSO", kRoundedSkew},
    {"24571", "RSO", kRoundedSkew},
    {"21781", "SWISS", kClosed},
    {"2056", "SWISS", kClosed},
    {"21780", "SWISS", kClosed},
    // Others.
    {"5514", "KROVAK", kKrovak},
    {"5513", "KROVAK", kKrovak},
    {"2065", "KROVAK", kKrovak},
    {"27200", "NZMG", kNzmg},
    {"6247", "COLOMBIA", kCity},
    {"6244", "COLOMBIA", kCity},
};

double GroundDistance(double phi1, double lambda1, double phi2, double lambda2) {
  constexpr double kRadius = 6.4e6;
  const double turn = std::remainder(lambda2 - lambda1, kTwoPi);
  return kRadius * std::hypot(phi2 - phi1, turn * std::cos(phi1));
}

class EpsgProjections : public testing::TestWithParam<Row> {};

TEST_P(EpsgProjections, AgreeWithProjBothWays) {
  const Row& row = GetParam();
  const EpsgSystem made = MakeEpsgSystem(row.code, {.none = true, .operation = {}, .near = {}});
  EXPECT_EQ(made.document.at("projection").at("name"), row.projection);
  const auto system = ParseSystem(made.document.dump(), row.code);
  const EpsgPeer peer(row.code);
  double worstForward = 0, worstInverse = 0;
  int points = 0;
  for (const EpsgPeer::Place& place : peer.Lattice(7, 7)) {
    const EpsgPeer::GridPoint grid = peer.Project(place);
    if (!std::isfinite(grid.n + grid.e)) continue;
    ++points;
    const double phi = place.latitude * kRadPerDeg, lambda = place.longitude * kRadPerDeg;
    double n = phi, e = lambda, h = 0;
    ASSERT_TRUE(system->Chain().ToLocal(n, e, h)) << place.latitude << " " << place.longitude;
    worstForward = std::max(worstForward, std::hypot(n - grid.n, e - grid.e));
    double b = grid.n, l = grid.e;
    ASSERT_TRUE(system->Chain().ToGlobal(b, l, h)) << grid.n << " " << grid.e;
    worstInverse = std::max(worstInverse, GroundDistance(phi, lambda, b, l));
  }
  std::cout << "EPSG:" << row.code << " " << row.projection << ": worst forward " << worstForward
            << " m, inverse " << worstInverse << " m at " << points << " points\n";
  EXPECT_GE(points, 40);
  EXPECT_LE(worstForward, row.tolerance.forward);
  EXPECT_LE(worstInverse, row.tolerance.inverse);
}

INSTANTIATE_TEST_SUITE_P(Codes, EpsgProjections, testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string("Epsg") + row.param.code; });

// The registry's transformation by its code, as PROJ runs it, before the projection.
struct ShiftRow {
  const char* code;
  const char* operation;
  double tolerance;  // metres on the ground
};

void PrintTo(const ShiftRow& row, std::ostream* out) { *out << "EPSG:" << row.operation; }

// PROJ takes the sines of the rotations for their angles: R·r²/2 in the horizontal, r to 10″.
constexpr double kTranslated = 1e-5, kRotated = 3e-3;
// PROJ has Paris at 2°20′14.025″, the registry at 2.5969213 grads.
constexpr double kParis = 3e-4;
// A matrix of rotations without squares: 26″.
constexpr double kLargeRotations = 0.05;

constexpr ShiftRow kShifts[] = {
    {"23032", "1133", kTranslated},     // three translations
    {"27700", "1314", kRotated},        // position vector
    {"28992", "4833", kRotated},        // coordinate frame, microradians
    {"24719", "1096", kRotated},        // Molodensky-Badekas, far pivot
    {"2997", "1931", kLargeRotations},  // 26″
    {"27572", "8094", kParis},          // from Paris
    {"2065", "5242", kRotated},         // from Ferro, with rotations
    {"5170", "5192", kRotated},         // a rotation of longitude that is no prime meridian's
    {"6991", "9189", kRotated},         // published from WGS 84
};

class EpsgOperations : public testing::TestWithParam<ShiftRow> {};

TEST_P(EpsgOperations, AgreeWithProjBothWays) {
  const ShiftRow& row = GetParam();
  const EpsgSystem made =
      MakeEpsgSystem(row.code, {.none = false, .operation = row.operation, .near = {}});
  const auto system = ParseSystem(made.document.dump(), row.code);
  const EpsgPeer peer(row.code);
  double worst = 0;
  for (const EpsgPeer::Place& place : peer.Lattice(5, 5)) {
    const EpsgPeer::GridPoint grid = peer.Project(peer.ToOwnDatum(place, row.operation));
    const double phi = place.latitude * kRadPerDeg, lambda = place.longitude * kRadPerDeg;
    double n = phi, e = lambda, h = 0;
    ASSERT_TRUE(system->Chain().ToLocal(n, e, h));
    worst = std::max(worst, std::hypot(n - grid.n, e - grid.e));
    // Back with the height that the shift gave.
    ASSERT_TRUE(system->Chain().ToGlobal(n, e, h));
    EXPECT_LE(GroundDistance(phi, lambda, n, e), 1e-5);
  }
  std::cout << "EPSG:" << row.operation << ": worst " << worst << " m\n";
  EXPECT_LE(worst, row.tolerance);
}

INSTANTIATE_TEST_SUITE_P(Codes, EpsgOperations, testing::ValuesIn(kShifts),
                         [](const auto& row) { return std::string("Epsg") + row.param.operation; });

// Methods that PROJ reads no code of, beside its projection with the same parameters.
TEST(EpsgMethods, WestOrientedConeIsTheConeMirrored) {
  const EpsgSystem made = MakeEpsgSystem("2218", {.none = true, .operation = {}, .near = {}});
  const auto system = ParseSystem(made.document.dump(), "2218");
  const ProjPeer cone("+proj=lcc +lat_1=70.5 +lat_0=70.5 +lon_0=-24 +ellps=intl");
  double north, east, n = 71 * kRadPerDeg, w = -22 * kRadPerDeg, h = 0;
  ASSERT_TRUE(cone.Forward(n, w, north, east));
  ASSERT_TRUE(system->Chain().ToLocal(n, w, h));
  EXPECT_NEAR(n, north, kClosed.forward);
  EXPECT_NEAR(w, -east, kClosed.forward);
}

// Method 1102, which the registry of PROJ 9.1 has no system of.
TEST(EpsgMethods, OneParallelConeCountsFromAFalseOrigin) {
  const auto parameter = [](int code, double value, const char* unit) {
    return json{{"value", value}, {"unit", unit}, {"id", {{"authority", "EPSG"}, {"code", code}}}};
  };
  const json axes = {{{"direction", "east"}}, {{"direction", "north"}}};
  const json projected = {
      {"base_crs",
       {{"datum",
         {{"ellipsoid", {{"semi_major_axis", 6378137}, {"inverse_flattening", 298.257222101}}}}}}},
      {"conversion",
       {{"method", {{"name", "variant B"}, {"id", {{"authority", "EPSG"}, {"code", 1102}}}}},
        {"parameters",
         {parameter(8801, 46, "degree"), parameter(8805, 0.9998, "unity"),
          parameter(8821, 47, "degree"), parameter(8822, 3, "degree"),
          parameter(8826, 600000, "metre"), parameter(8827, 200000, "metre")}}}},
      {"coordinate_system", {{"axis", axes}}}};
  json document = {{"local", {{"ellipsoid", "GRS80"}}}};
  document["projection"] = ProjectionOf(projected, "test").section;
  const auto system = ParseSystem(document.dump(), "test");
  const ProjPeer cone(
      "+proj=lcc +lat_1=46 +k_0=0.9998 +lat_0=47 +lon_0=3 +x_0=600000 +y_0=200000 +ellps=GRS80");
  double north, east, n = 45 * kRadPerDeg, e = 5 * kRadPerDeg, h = 0;
  ASSERT_TRUE(cone.Forward(n, e, north, east));
  ASSERT_TRUE(system->Chain().ToLocal(n, e, h));
  EXPECT_NEAR(n, north, kClosed.forward);
  EXPECT_NEAR(e, east, kClosed.forward);
}

}  // namespace
