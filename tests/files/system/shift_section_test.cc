#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "files/system/system_file.h"
#include "files/words/user_error.h"
#include "tests/support/reference_data.h"
#include "tests/support/tolerance.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;
using tolerance::kDegree;

namespace {

constexpr double kEarth = 6378137;  // metres for a radian

json Grid() {
  return json::parse(R"({"global": {"ellipsoid": "GRS80"}, "projection": {"name": "TMERC_KMS",
    "Central Meridian": -2, "Scale": 0.9996012717, "Lat0": 49, "East0": 400000,
    "North0": -100000}})");
}

json Netherlands() {
  return json::parse(R"({"global": {"ellipsoid": "GRS80"}, "local": {"ellipsoid": "Bessel 1841"},
    "datum": {"dX": 565.7381, "dY": 50.4018, "dZ": 465.2904, "rX": 0.395026, "rY": -0.330772,
              "rZ": 1.876074, "ppm": 4.07244, "fixedHeight": 43},
    "geoid": {"grid": "nl_nsgi_nlgeo2018.tif"},
    "shifts": [{"file": "nl_nsgi_rdcorr2018.tif", "place": "after datum", "inverse": "yes",
                "outside": "identity"}],
    "projection": {"name": "DSTER", "Lon0": 5.3876388888889,
      "Lat0": 52.1561605555556, "Scale": 0.9999079, "East0": 155000, "North0": 463000}})");
}

std::string Complaint(const json& system) {
  try {
    ParseSystem(system.dump(), "site.json");
  } catch (const UserError& error) {
    return error.what();
  }
  return "no complaint";
}

// Rows of numbers behind a name; NaN for an empty field.
std::vector<std::vector<double>> Rows(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::string line, field;
  std::getline(file, line);
  std::vector<std::vector<double>> rows;
  while (std::getline(file, line)) {
    std::istringstream fields(line + ",");
    std::getline(fields, field, ',');
    rows.emplace_back();
    while (std::getline(fields, field, ','))
      rows.back().push_back(field.empty() ? std::nan("") : std::stod(field));
  }
  return rows;
}

struct Miss {
  int points = 0;
  double horizontal = 0, vertical = 0;
};

// The largest miss of latitude, longitude, height against easting, northing, height, one way. Rows
// without a local height are positions alone.
Miss Compare(const CoordinateSystem& system, const std::vector<std::vector<double>>& rows,
             bool inverse, bool heights) {
  Miss miss;
  for (const auto& row : rows) {
    const bool height = heights && std::isfinite(row[5]);
    double b = row[0] * kDegree, l = row[1] * kDegree, h = row[2];
    double n = row[4], e = row[3], up = height ? row[5] : h;
    const double b0 = b, l0 = l, n0 = n, e0 = e, h0 = h, up0 = up;
    if (inverse) {
      if (!system.Chain().ToGlobal(n, e, up)) continue;
      miss.horizontal =
          std::max(miss.horizontal, kEarth * std::hypot(n - b0, (e - l0) * std::cos(b0)));
      if (height) miss.vertical = std::max(miss.vertical, std::abs(up - h0));
    } else {
      if (!system.Chain().ToLocal(b, l, h)) continue;
      miss.horizontal = std::max(miss.horizontal, std::hypot(b - n0, l - e0));
      if (height) miss.vertical = std::max(miss.vertical, std::abs(h - up0));
    }
    ++miss.points;
  }
  return miss;
}

}  // namespace

// All points that Ordnance Survey publishes with OSTN15, printed to the millimetre.
TEST(ShiftSection, HoldsThePlaneGridOfGreatBritain) {
  REQUIRE_REFERENCE_FILE(grid, "grids/ostn15_plane_shifts.tif");
  REQUIRE_REFERENCE_FILE(points, "survey_points/gb_ostn15_points.csv");
  constexpr double kPrinted = 1.1e-3;
  json text = Grid();
  text["shifts"] = {{{"file", grid.string()}, {"place", "after projection"}, {"unit", "metre"}}};
  const auto system = ParseSystem(text.dump(), "gb.json");
  EXPECT_EQ(system->Files().back(), grid.string());
  const auto rows = Rows(points);
  for (const bool inverse : {false, true}) {
    const Miss miss = Compare(*system, rows, inverse, false);
    EXPECT_EQ(miss.points, 40);
    EXPECT_LT(miss.horizontal, kPrinted) << inverse;
  }
  double b = 40 * kDegree, l = 0, h = 0;
  EXPECT_EQ(system->Chain().ToLocal(b, l, h).failedAt, ChainStep::planeShift);
}

// Points of the publisher's self-validation of RDNAPTRANS2018, in variant 1; beyond the grid the
// correction is none, and heights are not defined where the file has none.
TEST(ShiftSection, HoldsTheDutchDefinition) {
  REQUIRE_REFERENCE_FILE(points, "rd/rdnaptrans2018_points.csv");
  REQUIRE_REFERENCE_FILE(grids, "grids/nl_nsgi_rdcorr2018.tif");
  constexpr double kPublished = 1e-3;
  const auto rows = Rows(points);
  json text = Netherlands();
  const std::string file = (grids.parent_path() / "nl.json").string();
  const auto withHeights = ParseSystem(text.dump(), file);
  text.erase("geoid");
  const auto positions = ParseSystem(text.dump(), file);
  int defined = 0;
  for (const auto& row : rows) defined += std::isfinite(row[5]);
  for (const bool inverse : {false, true}) {
    const Miss all = Compare(*positions, rows, inverse, false);
    EXPECT_EQ(all.points, static_cast<int>(rows.size()));
    EXPECT_LT(all.horizontal, kPublished) << inverse;
    const Miss high = Compare(*withHeights, rows, inverse, true);
    EXPECT_GE(high.points, defined);
    EXPECT_LT(high.horizontal, kPublished) << inverse;
    EXPECT_LT(high.vertical, kPublished) << inverse;
  }
}

// A fixed height makes positions independent of heights, which pass; at that height the plain datum
// gives the same.
TEST(ShiftSection, TakesPositionsThroughTheDatumAtAFixedHeight) {
  constexpr double kRounding = 2e-9;  // metres, of coordinates of 5e5 m
  json text = Netherlands();
  text.erase("geoid");
  text.erase("shifts");
  const auto fixed = ParseSystem(text.dump(), "nl.json");
  text["datum"].erase("fixedHeight");
  const auto plain = ParseSystem(text.dump(), "nl.json");
  double expected[] = {52.2 * kDegree, 5.1 * kDegree, 43};
  ASSERT_TRUE(plain->Chain().ToLocal(expected[0], expected[1], expected[2]));
  for (const double height : {0.0, 43.0, 300.0}) {
    double b = 52.2 * kDegree, l = 5.1 * kDegree, h = height;
    ASSERT_TRUE(fixed->Chain().ToLocal(b, l, h));
    EXPECT_NEAR(b, expected[0], kRounding);
    EXPECT_NEAR(l, expected[1], kRounding);
    EXPECT_EQ(h, height);
    ASSERT_TRUE(fixed->Chain().ToGlobal(b, l, h));
    EXPECT_NEAR(kEarth * (b - 52.2 * kDegree), 0, 2 * kRounding);
    EXPECT_NEAR(kEarth * (l - 5.1 * kDegree), 0, 2 * kRounding);
  }
}

// Offsets of each kind, with an inverse, where each belongs; at the origin of the projection the
// expected figures are sums.
TEST(ShiftSection, HoldsParameters) {
  constexpr double kPrinted = 6e-3;
  json text = Grid();
  text["projection"] = {{"name", "TMERC"}, {"Central Meridian", 0}, {"Scale", 1},
                        {"Lat0", 0},       {"East0", 500000},       {"North0", 0}};
  text["shifts"] = json::parse(R"([
    {"place": "after projection", "offset": {"north": 10, "east": 20}},
    {"place": "after projection", "inverse": "yes", "affine":
      {"a0": 1, "a1": 1, "a2": 0, "b0": 2, "b1": 0, "b2": 1}},
    {"place": "heights", "slope": {"latitude": 0, "longitude": 0, "offset": -0.5,
      "slopeLatitude": 0, "slopeLongitude": 0}},
    {"place": "before datum", "offset": {"height": 2}},
    {"place": "before datum", "inverse": "yes", "offset": {"height": 2}}])");
  const auto system = ParseSystem(text.dump(), "site.json");
  double b = 0, l = 0, h = 100;
  ASSERT_TRUE(system->Chain().ToLocal(b, l, h));
  EXPECT_NEAR(b, 8, kPrinted);
  EXPECT_NEAR(l, 500019, kPrinted);
  EXPECT_NEAR(h, 99.5, 1e-8);
  ASSERT_TRUE(system->Chain().ToGlobal(b, l, h));
  EXPECT_NEAR(b, 0, 1e-15);
  EXPECT_NEAR(l, 0, 1e-15);
}

TEST(ShiftSection, SaysWhatIsWrongAndWhere) {
  const std::pair<const char*, const char*> cases[] = {
      {R"({"place": "heights"})", "\"shifts\" must be a list"},
      {R"([{"offset": {"height": 1}}])", "\"shifts[0].place\" is missing"},
      {R"([{"place": "there", "offset": {"height": 1}}])", "\"shifts[0].place\" is \"there\""},
      {R"([{"place": "heights"}])", "\"shifts[0].file\" is missing"},
      {R"([{"place": "heights", "file": "no.tif"}])", "no.tif: cannot be read"},
      {R"([{"place": "heights", "offset": {"north": 1}}])", "\"shifts[0].place\" is one for"},
      {R"([{"place": "heights", "offset": {"north": 1, "x": 1}}])", "\"shifts[0].offset.x\""},
      {R"([{"place": "heights", "offset": {"height": 1}, "slope": {}}])", "cannot stand beside"},
      {R"([{"place": "heights", "offset": {"height": 1}, "outside": "identity"}])",
       "\"shifts[0].outside\" is said of a \"file\" only"},
      {R"([{"place": "after datum", "similarity": {"dX": 1}}])", "\"shifts[0].similarity.dY\""}};
  for (const auto& [shifts, expected] : cases) {
    json text = Grid();
    text["shifts"] = json::parse(shifts);
    const std::string said = Complaint(text);
    EXPECT_NE(said.find(expected), std::string::npos) << said;
  }
}
