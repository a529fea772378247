#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

class DesignTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_ = fs::temp_directory_path() /
              ("geomath_design_" +
               std::string(testing::UnitTest::GetInstance()->current_test_info()->name()));
    fs::remove_all(folder_);
    fs::create_directories(folder_);
  }
  void TearDown() override { fs::remove_all(folder_); }

  ProgramRun Run(const std::string& arguments) {
    return RunProgram(folder_, "design " + arguments);
  }
  void Write(const std::string& name, const std::string& text) { WriteText(folder_ / name, text); }
  std::string Read(const std::string& name) { return ReadText(folder_ / name); }
  json ReadJson(const std::string& name) { return json::parse(Read(name)); }

  // An ASCII raster of 0.02° pixels, 0.6° wide and 0.8° high, with its south-western corner at a
  // place; `height` of pixel row (from the north) and column.
  template <class Height>
  void WriteRaster(const std::string& name, double west, double south, Height height) {
    std::string text = "ncols 30\nnrows 40\nxllcorner " + std::to_string(west) + "\nyllcorner " +
                       std::to_string(south) + "\ncellsize 0.02\nNODATA_value -9999\n";
    for (int row = 0; row < 40; ++row) {
      for (int column = 0; column < 30; ++column) text += std::to_string(height(row, column)) + " ";
      text += "\n";
    }
    Write(name, text);
  }

  fs::path folder_;
};

// Level ground at 1000 m: the meridian is the middle one, the scale that of the height less half of
// the sagitta, δ = (k0 − 1) − h/R + x²/2R² with a mean of 0.
TEST_F(DesignTest, ZoneOfLevelGroundHasTheMiddleMeridian) {
  WriteRaster("level.asc", -121.3, 44, [](int, int) { return 1000.0; });
  const ProgramRun run =
      Run("--heights level.asc --crs EPSG:6318 --family tm --limit 20ppm --name Bend --beside 6556 "
          "-o zone.json --report zone.html");
  ASSERT_EQ(run.status, 0) << run.err;
  const json zone = ReadJson("zone.json");
  const json& projection = zone["projection"];
  EXPECT_EQ(projection["name"], "TMERC");
  EXPECT_EQ(projection["Central Meridian"], -121);
  constexpr double R = 6379e3;  // metres, about
  const double halfWidth = 0.3 * M_PI / 180 * R * std::cos(44.4 * M_PI / 180);
  const double expected = 1 + 1000 / R - halfWidth * halfWidth / 3 / (2 * R * R);
  EXPECT_NEAR(projection["Scale"], expected, 1e-6);
  EXPECT_EQ(zone["crs"]["geographic"], "EPSG:6318");
  EXPECT_NE(run.out.find("share within 20 ppm"), std::string::npos);
  EXPECT_NE(run.out.find("UTM 10N"), std::string::npos);
  // The system file is one that converts.
  EXPECT_EQ(RunProgram(folder_, "factors --system zone.json --at 44.4,-121,1000").status, 0);
  // The page is whole and says all that was asked for.
  const std::string page = Read("zone.html");
  for (const char* part :
       {"id=\"map\"", "id=\"histogram\"", "class=\"contour\"", "id=\"figures\"", "PROJCRS[",
        "+proj=", "&quot;Central Meridian&quot;", "Oregon", "</html>"})
    EXPECT_NE(page.find(part), std::string::npos) << part;
  EXPECT_EQ(page.find("http"), page.find("http://www.w3.org"));
}

TEST_F(DesignTest, LimitThatNoZoneMeetsAsksForSeveral) {
  WriteRaster("steps.asc", 10, 50, [](int row, int) { return row < 20 ? 900.0 : 200.0; });
  const ProgramRun run =
      Run("--heights steps.asc --crs EPSG:4258 --family lambert,tm --criterion largest --limit 15 "
          "--report zones.html");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.err.find("No single zone meets 15 ppm; 2 zones would"), std::string::npos)
      << run.err;
  EXPECT_NE(Read("zones.html").find("id=\"zones\""), std::string::npos);
}

// West of 10.3° the ground is high; the area, or the road, has only the low east of it.
TEST_F(DesignTest, AreaCorridorAndWeightsChooseTheGround) {
  WriteRaster("both.asc", 10, 50, [](int, int column) { return column < 15 ? 2000.0 : 100.0; });
  WriteRaster("people.asc", 10, 50, [](int, int column) { return column < 15 ? 0.0 : 5.0; });
  Write("east.geojson",
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{},"geometry":
{"type":"Polygon","coordinates":[[[10.31,50],[10.6,50],[10.6,50.8],[10.31,50.8],[10.31,50]]]}}]})");
  Write("road.geojson",
        R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{},"geometry":
{"type":"LineString","coordinates":[[10.45,50.1],[10.45,50.7]]}}]})");
  for (const char* choice :
       {"--area east.geojson", "--along road.geojson --corridor 6000", "--weights people.asc"}) {
    const ProgramRun run = Run(std::string("--heights both.asc --crs EPSG:4258 --family lambert "
                                           "-o zone.json ") +
                               choice);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_NEAR(ReadJson("zone.json")["projection"]["Scale"], 1 + 100 / 6382e3, 1e-5) << choice;
  }
  Write("far.geojson", R"({"type":"Polygon","coordinates":[[[0,0],[1,0],[1,1],[0,0]]]})");
  const ProgramRun none = Run("--heights both.asc --crs EPSG:4258 --area far.geojson -o none.json");
  EXPECT_EQ(none.status, 2);
  EXPECT_NE(none.err.find("has no heights in the area"), std::string::npos) << none.err;
  EXPECT_FALSE(fs::exists(folder_ / "none.json"));
}

TEST_F(DesignTest, PointsServeToo) {
  std::string text = "lat,lon,h,people\n";
  for (int i = 0; i <= 10; ++i)
    for (int j = 0; j <= 10; ++j)
      text += std::to_string(47 + i * 0.02) + "," + std::to_string(8 + j * 0.02) + "," +
              (j > 5 ? "1500,0" : "400,3") + "\n";
  Write("points.csv", text + "47.05,8.05,,3\n");
  const ProgramRun run = Run("--heights points.csv --weights people --family tm -o zone.json");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NEAR(ReadJson("zone.json")["projection"]["Scale"], 1 + 400 / 6381e3, 1e-5);
  EXPECT_NE(run.err.find("1 rows are left out"), std::string::npos) << run.err;
}

TEST_F(DesignTest, BadInputIsNamed) {
  WriteRaster("holes.asc", 10, 50, [](int, int) { return -9999.0; });
  WriteRaster("pole.asc", 10, 89.1, [](int, int) { return 0.0; });
  WriteRaster("seam.asc", 179.8, -17, [](int, int) { return 0.0; });
  Write("one.csv", "lat,lon,h\n47,8,400\n");
  struct Row {
    const char* arguments;
    const char* message;
  };
  constexpr Row kRows[] = {
      {"--heights holes.asc -o z.json", "all of it is holes"},
      {"--heights pole.asc -o z.json", "reaches a pole"},
      {"--heights seam.asc --family oblique -o z.json", "across the date line"},
      {"--heights one.csv -o z.json", "all heights are at one place"},
      {"--heights gone.tif -o z.json", "gone.tif: cannot be read"},
      {"--heights one.csv", "--output FILE"},
      {"--heights one.csv -o z.json --limit fast", "--limit"},
      {"--heights one.csv -o z.json --criterion p200", "--criterion"},
      {"--heights one.csv -o z.json --beside ten", "no EPSG code"},
      {"--heights one.csv -o one.csv", "one.csv"},
  };
  for (const Row& row : kRows) {
    const ProgramRun run = Run(row.arguments);
    EXPECT_EQ(run.status, 2) << row.arguments;
    EXPECT_NE(run.err.find(row.message), std::string::npos) << row.arguments << "\n" << run.err;
    EXPECT_FALSE(fs::exists(folder_ / "z.json")) << row.arguments;
  }
  EXPECT_EQ(Run("--heights seam.asc -o seam.json").status, 0);
}

}  // namespace
