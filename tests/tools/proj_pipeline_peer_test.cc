#include <gtest/gtest.h>
#include <proj.h>

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>

#include "geomath/base/angle.h"
#include "tests/support/site_points.h"
#include "tools/calibration.h"
#include "tools/proj_pipeline.h"

using namespace geomath_tools;
using nlohmann::json;
using zel_cs::geomath::kRadPerDeg;

namespace {

const std::string kExample = GEOMATH_SOURCE_DIR "/examples/site/";

json Projection(const char* name, json parameters) {
  parameters["name"] = name;
  return {{"global", {{"ellipsoid", "GRS80"}}}, {"projection", parameters}};
}

constexpr double kPromised = 1e-5;  // metres
constexpr double kMeridianArc =
    5e-5;  // metres: the arc series of our TMERC, 0.027 mm at 52 degrees

struct Row {
  std::string name;
  json system;
  double metres = kPromised;
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

std::vector<Row> Rows() {
  json datum = json{{"global", {{"ellipsoid", "WGS84"}}},
                    {"local", {{"ellipsoid", "Bessel 1841"}}},
                    {"datum",
                     {{"dX", 565.7381},
                      {"dY", 50.4018},
                      {"dZ", 465.2904},
                      {"rX", 0.395026},
                      {"rY", -0.330772},
                      {"rZ", 1.876074},
                      {"ppm", 4.07244},
                      {"rotation", "position-vector"}}}};
  return {
      {"OwnStereographic", {{"global", {{"ellipsoid", "WGS84"}}}}},
      {"OwnStereographicAfterDatum", datum},
      {"Netherlands", json()},
      {"TransverseMercator",
       Projection("TMERC", {{"Central Meridian", 6},
                            {"Scale", 0.9996},
                            {"Lat0", 0},
                            {"East0", 500000},
                            {"North0", 0}}),
       kMeridianArc},
      {"LambertConic", Projection("LC", {{"SouthLat", 51},
                                         {"NorthLat", 54},
                                         {"Lon0", 5},
                                         {"Lat0", 52},
                                         {"East0", 100000},
                                         {"North0", 200000},
                                         {"Scale", 1}})},
      {"Albers", Projection("AlbersConic", {{"SouthLat", 51},
                                            {"NorthLat", 54},
                                            {"Lon0", 5},
                                            {"Lat0", 52},
                                            {"East0", 100000},
                                            {"North0", 200000}})},
  };
}

class Pipeline : public testing::TestWithParam<Row> {};

}  // namespace

TEST_P(Pipeline, RunsInProjBothWays) {
  const double metres = GetParam().metres;
  std::string text = GetParam().system.dump();
  if (GetParam().system.is_null()) text = ReadSystemText(kExample + "netherlands.json");
  const auto system = ParseSystem(text, "system.json", ProjectionNeed::optional);
  const Calibration calibration(*system, ReadControl(kExample + "control.csv", ""), {});
  const auto saved = ParseSystem(calibration.SystemText(text, "a.json", "b.json"), "site.json");
  const std::string pipeline = ProjPipeline(calibration);

  PJ_CONTEXT* context = proj_context_create();
  PJ* peer = proj_create(context, pipeline.c_str());
  ASSERT_NE(peer, nullptr) << pipeline;
  for (const site::Point& p : site::kCheck) {
    const double lat = p.latDeg * kRadPerDeg, lon = p.lonDeg * kRadPerDeg;
    double n = lat, e = lon, h = p.h;
    ASSERT_TRUE(saved->Chain().ToLocal(n, e, h));
    const PJ_COORD local = proj_trans(peer, PJ_FWD, proj_coord(lon, lat, p.h, 0));
    EXPECT_NEAR(local.xyz.y, n, metres) << p.name << pipeline;
    EXPECT_NEAR(local.xyz.x, e, metres) << p.name;
    EXPECT_NEAR(local.xyz.z, h, metres) << p.name;

    const PJ_COORD back = proj_trans(peer, PJ_INV, proj_coord(e, n, h, 0));
    ASSERT_TRUE(saved->Chain().ToGlobal(n, e, h));
    EXPECT_NEAR(back.lpz.phi, n, metres / 6.4e6) << p.name;
    EXPECT_NEAR(back.lpz.lam, e, metres / 6.4e6) << p.name;
    EXPECT_NEAR(back.lpz.z, h, metres) << p.name;
  }
  proj_destroy(peer);
  proj_context_destroy(context);
}

INSTANTIATE_TEST_SUITE_P(Sites, Pipeline, testing::ValuesIn(Rows()),
                         [](const auto& row) { return row.param.name; });
