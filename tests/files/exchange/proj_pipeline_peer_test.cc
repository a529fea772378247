#include <gtest/gtest.h>
#include <proj.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "files/exchange/proj_pipeline.h"
#include "files/site/calibration.h"
#include "files/site/control_file.h"
#include "files/words/user_error.h"
#include "geomath/base/angle.h"
#include "tests/support/site_points.h"

using namespace geomath_files;
using nlohmann::json;
using zel_cs::geomath::kRadPerDeg;
using zel_cs::geomath::kTwoPi;

namespace {

const std::string kExample = GEOMATH_SOURCE_DIR "/examples/site/";

json On(const char* ellipsoid, const std::string& projection) {
  return {{"global", {{"ellipsoid", ellipsoid}}}, {"projection", json::parse(projection)}};
}

json Transverse(const char* name, double centralMeridian) {
  json system = On("GRS80", R"({"Scale": 0.9996, "Lat0": 0, "East0": 500000, "North0": 0})");
  system["projection"]["name"] = name;
  system["projection"]["Central Meridian"] = centralMeridian;
  return system;
}

json Krovak(double lon0) {
  json system = On("Bessel 1841", R"({"name": "KROVAK", "Lat0": 49.5, "dLon": 0,
      "Uq": 59.7118602472, "S0": 78.5, "Scale": 0.9999, "East0": 0, "North0": 0})");
  system["projection"]["Lon0"] = lon0;
  return system;
}

// One set of parameters under the names of several projections, with what one of them has besides.
json Conic(const std::string& more) {
  return On("GRS80", R"({"SouthLat": 51, "NorthLat": 54, "Lon0": 5, "Lat0": 52, "East0": 100000,
      "North0": 200000, )" +
                         more);
}
json Oblique(const std::string& more) {
  return On("GRS80", R"({"AxisAzimuth": -36.869897646, "Scale": 0.9999, "Lon0": -133.6666667,
      "Lat0": 57, "East0": 5000000, "North0": -5000000, )" +
                         more);
}
json Cassini(const std::string& more) {
  return On("GRS80", R"({"name": "CASSINI", "Lat0": 2.1, "Lon0": 103.4, "East0": -14810,
      "North0": 8758, )" +
                         more);
}

// The site of the Netherlands, carried to another place: what the local coordinates fit is no
// matter here.
constexpr double kSiteLat = 52.57, kSiteLon = 5.65;  // degrees

struct Row {
  std::string name;
  json system;
  double lat = kSiteLat, lon = kSiteLon;

  double MovedLat(double degrees) const { return degrees + lat - kSiteLat; }
  double MovedLon(double degrees) const {
    const double narrower = std::cos(kSiteLat * kRadPerDeg) / std::cos(lat * kRadPerDeg);
    return lon + (degrees - kSiteLon) * narrower;
  }
  std::string Text() const {
    return system.is_null() ? ReadSystemText(kExample + "netherlands.json") : system.dump();
  }
  std::vector<ControlPoint> Control() const {
    std::vector<ControlPoint> control = ReadControl({kExample + "control.csv"}).points;
    for (ControlPoint& point : control) {
      point.given.globalN = MovedLat(point.given.globalN);
      point.given.globalE = MovedLon(point.given.globalE);
    }
    return control;
  }
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

std::vector<Row> Rows() {
  const json wgs84 = {{"global", {{"ellipsoid", "WGS84"}}}};
  json datum = wgs84, ground = wgs84;
  datum["local"] = {{"ellipsoid", "Bessel 1841"}};
  datum["datum"] = json::parse(R"({"dX": 565.7381, "dY": 50.4018, "dZ": 465.2904, "rX": 0.395026,
      "rY": -0.330772, "rZ": 1.876074, "ppm": 4.07244, "rotation": "position-vector"})");
  ground["ground"] = json::parse(R"({"height": 800, "gridScaleFactor": 0.9997, "rotation": 12,
      "originN": 500000, "originE": 170000, "offsetN": 1000, "offsetE": -2000})");
  // The grid of Germany, of Debian's package proj-data, which comes with PROJ.
  json grid =
      On("Bessel 1841", R"({"name": "TMERCSPHER", "Central Meridian": 9, "Scale": 1, "Lat0": 0,
      "East0": 3500000, "North0": 0})");
  grid["shifts"] = json::parse(R"([{"file": "/usr/share/proj/BETA2007.gsb", "place": "before datum",
      "inverse": "yes", "outside": "identity"}])");
  return {
      {"BehindAGrid", grid, 52.5, 9.5},
      {"OwnStereographic", wgs84},
      {"OwnStereographicAfterDatum", datum},
      {"OwnStereographicToGround", ground},
      {"OwnStereographicAtTheHalfTurn", wgs84, -17, 180},
      {"DoubleStereographic", json()},
      {"TransverseMercator", Transverse("TMERC", 6)},
      {"TransverseMercatorFar", Transverse("TMERC", 9.5)},
      {"RomanNumerals", Transverse("TM", 6)},
      {"RomanNumeralsFar", Transverse("TM", 2)},
      {"Kruger", Transverse("TMERCSPHER", -20)},
      {"ScaledTransverseMercator", Transverse("TMERC_NZ", 173), -41, 174.5},
      {"StatePlaneTransverse",
       On("GRS80", R"({"name": "TM83", "CentralMeridian": -74.5, "Scale": 0.9999,
                       "Lat0": 38.83333333, "East0": 150000, "North0": 0, "Zone number": 1})"),
       40, -74},
      {"LambertConic", Conic(R"("name": "LC", "Scale": 1})")},
      {"StatePlaneLambert", Conic(R"("name": "LC83", "Zone number": 1})")},
      {"Albers", Conic(R"("name": "AlbersConic"})")},
      {"ObliqueMercator", Oblique(R"("name": "OM"})"), 58, -134},
      {"StatePlaneOblique", Oblique(R"("name": "OM83", "Zone number": 1})"), 58, -134},
      {"SkewOrthomorphic", Oblique(R"("name": "RSO"})"), 58, -134},
      {"Cassini", Cassini(R"("AxisAzimuth": 0})"), 2.3, 103.6},
      {"CassiniTurned", Cassini(R"("AxisAzimuth": 10})"), 2.3, 103.6},
      {"Swiss", On("Bessel 1841", R"({"name": "SWISS", "L0": 7.439583333, "B0": 46.952405556,
                             "East0": 2600000, "North0": 1200000})"),
       47.3, 8.5},
      {"Mercator",
       On("GRS80", R"({"name": "MERCATOR", "Lon0": 51, "Lat0": 42, "FEast": 1, "FNorth": 2})"), 45,
       52},
      {"Colombia", On("GRS80", R"({"name": "COLOMBIA", "Lat0": 4.68, "Lon0": -74.15, "East0": 90000,
                       "North0": 100000})"),
       4.65, -74.1},
      {"GaussSchreiber",
       On("International 1924", R"({"name": "TMSPHER", "Lat0": -21, "Lon0": 55.533333333,
                                    "LatNormal": -21.117, "_k1": 1.0001})"),
       -21, 55.4},
      {"NewZealand",
       On("International 1924", R"({"name": "NZMG", "Lat0": -41, "Lon0": 173, "East0": 2510000,
                                    "North0": 6023150})"),
       -41.3, 174.8},
      {"Krovak", Krovak(24.83333333333333), 50, 15},
  };
}

class Pipeline : public testing::TestWithParam<Row> {};

}  // namespace

TEST_P(Pipeline, RunsInProjBothWays) {
  constexpr double metres = 1e-5;  // what the program promises
  const Row& row = GetParam();
  const std::string text = row.Text();
  const auto system = ParseSystem(text, "system.json", ProjectionNeed::optional);
  const Calibration calibration(*system, row.Control(), {});
  const auto saved = ParseSystem(calibration.SystemText(text, "a.json", "b.json"), "site.json");
  const std::string pipeline = ProjPipeline(calibration);

  PJ_CONTEXT* context = proj_context_create();
  PJ* peer = proj_create(context, pipeline.c_str());
  ASSERT_NE(peer, nullptr) << pipeline;
  for (const site::Point& p : site::kCheck) {
    const double lat = row.MovedLat(p.latDeg) * kRadPerDeg;
    const double lon = row.MovedLon(p.lonDeg) * kRadPerDeg;
    double n = lat, e = lon, h = p.h;
    ASSERT_TRUE(saved->Chain().ToLocal(n, e, h));
    const PJ_COORD local = proj_trans(peer, PJ_FWD, proj_coord(lon, lat, p.h, 0));
    EXPECT_NEAR(local.xyz.y, n, metres) << p.name << pipeline;
    EXPECT_NEAR(local.xyz.x, e, metres) << p.name;
    EXPECT_NEAR(local.xyz.z, h, metres) << p.name;

    const PJ_COORD back = proj_trans(peer, PJ_INV, proj_coord(e, n, h, 0));
    ASSERT_TRUE(saved->Chain().ToGlobal(n, e, h));
    EXPECT_NEAR(back.lpz.phi, n, metres / 6.4e6) << p.name;
    EXPECT_NEAR(std::remainder(back.lpz.lam - e, kTwoPi), 0, metres / 6.4e6) << p.name;
    EXPECT_NEAR(back.lpz.z, h, metres) << p.name;
  }
  proj_destroy(peer);
  proj_context_destroy(context);
}

INSTANTIATE_TEST_SUITE_P(Sites, Pipeline, testing::ValuesIn(Rows()),
                         [](const auto& row) { return row.param.name; });

// Refused with the figure: series that end too early for the distance from their meridian, and
// constants other than those that PROJ's method has built in.
TEST(ProjPipeline, RefusesWhatProjComputesDifferently) {
  const Row rows[] = {{"RomanNumerals", Transverse("TM", -2)},
                      {"TransverseMercator", Transverse("TMERC", -5)},
                      {"Krovak", Krovak(24.9), 50, 15}};
  for (const Row& row : rows) {
    const auto system = ParseSystem(row.Text(), "system.json");
    const Calibration calibration(*system, row.Control(), {});
    try {
      ProjPipeline(calibration);
      ADD_FAILURE() << row.name;
    } catch (const UserError& error) {
      EXPECT_NE(std::string(error.what()).find("PROJ's formulas differ by"), std::string::npos)
          << error.what();
    }
  }
}
