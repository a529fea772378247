#include "files/models/shift_file.h"

#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "files/gdal/ogr.h"
#include "files/models/kept_shifts.h"
#include "files/words/user_error.h"
#include "geomath/shift/shift_grid.h"
#include "geomath/shift/triangulation.h"
#include "tests/files/models/made_tiff.h"
#include "tests/support/reference_data.h"
#include "tests/support/tolerance.h"

using namespace geomath_files;
using namespace zel_cs::geomath;
using nlohmann::json;
using tolerance::kDegree;

namespace {

constexpr double kSecond = kDegree / 3600;
constexpr double kNodeSeconds = 3e-7;  // arc-seconds: single precision of shifts of 4

std::shared_ptr<const CoordinateShift> Open(const std::vector<Directory>& directories,
                                            ShiftChoice choice = {}) {
  choice.file = Write(directories);
  return OpenShift(choice);
}

std::string Complaint(const std::function<void()>& action) {
  try {
    action();
  } catch (const UserError& error) {
    return error.what();
  }
  return "no complaint";
}

// The shift at a place of degrees, in arc-seconds, east positive; the status where it is refused.
struct Shifted {
  ShiftStatus status;
  double north, east, up;
};
Shifted At(const CoordinateShift& shift, double north, double east) {
  double b = north * kDegree, l = east * kDegree, h = 0;
  const ShiftResult result = shift.Forward(b, l, h);
  return {result.status, (b - north * kDegree) / kSecond, (l - east * kDegree) / kSecond, h};
}

const std::pair<std::string, std::string> kHorizontal{"TYPE", "HORIZONTAL_OFFSET"};

Directory Outer(const std::string& name = "") {
  return {10,
          52,
          1,
          {{"longitude_offset", "arc-second", {2}, "west"}, {"latitude_offset", "arc-second", {1}}},
          {kHorizontal, {"grid_name", name}}};
}

Directory Inner(const std::string& parent = "") {
  Directory d{
      10.5,
      51.5,
      0.5,
      {{"latitude_offset", "degree", {3.0 / 3600}}, {"longitude_offset", "arc-second", {4}}},
      {kHorizontal}};
  if (!parent.empty()) d.metadata.push_back({"parent_grid_name", parent});
  return d;
}

json Triangle() {
  return json::parse(R"({"file_type": "triangulation_file", "format_version": "1.1",
    "input_crs": "EPSG:4326", "transformed_components": ["horizontal", "vertical"],
    "fallback_strategy": "nearest_side",
    "vertices_columns": ["offset_z", "source_x", "source_y", "target_x", "target_y"],
    "triangles_columns": ["idx_vertex1", "idx_vertex2", "idx_vertex3"],
    "vertices": [[1, 10, 50, 20, 60], [2, 11, 50, 21, 60], [3, 10, 51, 20, 62]],
    "triangles": [[0, 1, 2]]})");
}

}  // namespace

// Samples in any order, with the sign and unit that each states; the inner grid counts where it lies,
// by its parent's name or because it is contained, in either order of the file.
TEST(ShiftFile, ReadsGeodeticTiffsByWhatTheySay) {
  const std::vector<std::vector<Directory>> files = {
      {Outer(), Inner()}, {Inner(), Outer()}, {Outer("land"), Inner("land")}};
  for (const auto& file : files) {
    const auto shift = Open(file);
    EXPECT_EQ(shift->Space(), ShiftSpace::geographic);
    const Shifted outer = At(*shift, 50.2, 10.2), inner = At(*shift, 51.2, 10.7);
    EXPECT_NEAR(outer.north, 1, kNodeSeconds);
    EXPECT_NEAR(outer.east, -2, kNodeSeconds);
    EXPECT_NEAR(inner.north, 3, kNodeSeconds);
    EXPECT_NEAR(inner.east, 4, kNodeSeconds);
    EXPECT_EQ(At(*shift, 53, 11).status, ShiftStatus::outside);
  }
}

// Rows run from the north: the mean of the four southwestern nodes; a hole there; 360 degrees on.
TEST(ShiftFile, PlacesScalesAndHoles) {
  Directory d{190,
              10,
              1,
              {{"latitude_offset", "arc-second", {0, 0, 0, 10, 20, 0, 30, 40, -9999}},
               {"longitude_offset", "arc-second", {0}}},
              {kHorizontal}};
  d.samples[0].scale = 0.1;
  d.samples[0].offset = 1;
  const auto shift = Open({d});
  EXPECT_NEAR(At(*shift, 8.5, -169.5).north, 3.5, kNodeSeconds);
  EXPECT_NEAR(At(*shift, 8.5, 190.5).north, 3.5, kNodeSeconds);
  EXPECT_EQ(At(*shift, 8.5, 191.5).status, ShiftStatus::hole);
}

TEST(ShiftFile, ReadsHeightsAndPlaneGridsAndMethods) {
  const Directory geoid{10,
                        52,
                        1,
                        {{"geoid_undulation", "metre", {45.5}}},
                        {{"TYPE", "VERTICAL_OFFSET_GEOGRAPHIC_TO_VERTICAL"}}};
  EXPECT_EQ(At(*Open({geoid}), 51, 11).up, -45.5);  // from the ellipsoid to the geoid

  Directory plane{
      0,
      2000,
      1000,
      {{"easting_offset", "metre", {5}, "", "-5000"}, {"northing_offset", "centimetre", {100}}},
      {kHorizontal},
      "EPSG:25832"};
  double n = 500, e = 500, h = 0;
  ASSERT_TRUE(Open({plane})->Forward(n, e, h));
  EXPECT_EQ(n, 501);
  EXPECT_EQ(e, -4495);

  Directory nadcon = Outer();
  nadcon.metadata.push_back({"interpolation_method", "biquadratic"});
  EXPECT_EQ(dynamic_cast<const ShiftGrid&>(*Open({nadcon})).Interpolation(),
            ShiftInterpolation::biquadratic);
}

TEST(ShiftFile, SaysWhatIsWrongWithATiffAndWhere) {
  const auto complaint = [](const std::function<void(std::vector<Directory>&)>& change) {
    std::vector<Directory> file = {Outer(), Inner()};
    change(file);
    return Complaint([&] { Open(file); });
  };
  using Change = std::function<void(std::vector<Directory>&)>;
  const std::pair<Change, std::string> cases[] = {
      {[](auto& f) { f[0].metadata[0].second = "SLOPE"; }, "TYPE \"SLOPE\", which is no"},
      {[](auto& f) { f[1].samples[1].description = "rest"; },
       "directory 2: has no sample \"longit"},
      {[](auto& f) { f[1].samples[0].unit = "metre"; }, "directory 2: has the unit \"metre\""},
      {[](auto& f) { f[1] = Inner("sea"); }, "its parent \"sea\" is not in the file"},
      {[](auto& f) {
         f[1] = Inner("me");
         f[1].metadata.push_back({"grid_name", "me"});
       },
       "is its own parent"},
      {[](auto& f) { f[0].samples[0].positive = "up"; }, "positive_value \"up\""},
      {[](auto& f) { f[0].samples[0].constant = "5 m"; }, "constant_offset \"5 m\""},
      {[](auto& f) {
         f[0].metadata.push_back({"interpolation_method", "spline"});
       },
       "\"spline\""},
      {[](auto& f) { f[0].system = "EPSG:25832"; }, "has no sample \"northing_offset\""}};
  for (const auto& [change, expected] : cases) {
    const std::string said = complaint(change);
    EXPECT_NE(said.find(expected), std::string::npos) << said;
    EXPECT_NE(said.find("shift.tif"), std::string::npos) << said;
  }
}

// Whatever the cut, a complaint or a grid; nothing else.
TEST(ShiftFile, SurvivesFilesThatEndAnywhere) {
  const std::string tiff = ReadShiftBytes(Write({Outer(), Inner()})).at(""),
                    text = Triangle().dump();
  for (std::size_t size = 0; size < tiff.size(); ++size)
    Complaint([&] { ParseShift({{"", tiff.substr(0, size)}}, {"cut.tif"}); });
  for (std::size_t size = 0; size < text.size(); ++size)
    EXPECT_NE(Complaint([&] {
                ParseShift({{"", text.substr(0, size)}}, {"cut.json"});
              }),
              "no complaint");
}

TEST(ShiftFile, IsReadAgainWhenTheFileWasWritten) {
  ShiftChoice choice;
  choice.file = Write({Outer()});
  const auto first = OpenShift(choice);
  EXPECT_EQ(OpenShift(choice), first);
  ShiftChoice other = choice;
  other.position = GridPosition::target;
  EXPECT_NE(OpenShift(other), first);
  namespace fs = std::filesystem;
  fs::last_write_time(choice.file, fs::last_write_time(choice.file) + std::chrono::seconds(1));
  EXPECT_NE(OpenShift(choice), first);
  fs::remove(choice.file);
  EXPECT_THROW(OpenShift(choice), UserError);
}

TEST(ShiftFile, KeepsWhatWasAskedForLastWithinBounds) {
  KeptShifts kept;
  const KeptShifts::Shift shift = Open({Outer()});
  constexpr std::uintmax_t kMegabyte = 1 << 20;
  const auto file = [](const char* name, std::uintmax_t size) {
    return FileState{name, size * kMegabyte, {}};
  };
  kept.Keep({}, file("a", 30), shift);
  kept.Keep({}, file("b", 30), shift);
  EXPECT_EQ(kept.Find({}, file("a", 30)), shift);
  kept.Keep({}, file("c", 30), shift);
  EXPECT_EQ(kept.Find({}, file("a", 30)), shift);
  EXPECT_EQ(kept.Find({}, file("b", 30)), nullptr);
  EXPECT_EQ(kept.Find({}, file("c", 30)), shift);
  kept.Keep({}, file("d", 65), shift);
  EXPECT_EQ(kept.Find({}, file("d", 65)), nullptr);
  EXPECT_EQ(kept.Find({}, file("c", 31)), nullptr);
}

TEST(ShiftFile, ReadsTriangulations) {
  const auto shift = ParseShift({{"", Triangle().dump()}}, {"made.json"});
  EXPECT_EQ(shift->Space(), ShiftSpace::geographic);
  double b = 50.25 * kDegree, l = 10.5 * kDegree, h = 0;
  ASSERT_TRUE(shift->Forward(b, l, h));
  EXPECT_NEAR(b / kDegree, 60.5, 1e-12);
  EXPECT_NEAR(l / kDegree, 20.5, 1e-12);
  EXPECT_NEAR(h, 0.25 * 1 + 0.5 * 2 + 0.25 * 3, 1e-12);
  EXPECT_EQ(At(*shift, 49, 10.5).status, ShiftStatus::extrapolated);

  json plane = Triangle();
  plane.erase("input_crs");
  ShiftChoice choice{"made.json"};
  choice.space = ShiftSpace::plane;
  EXPECT_EQ(ParseShift({{"", plane.dump()}}, choice)->Space(), ShiftSpace::plane);
}

TEST(ShiftFile, SaysWhatIsWrongWithATriangulationAndWhere) {
  const std::pair<std::function<void(json&)>, std::string> cases[] = {
      {[](json& j) { j["file_type"] = "triangles"; }, "\"file_type\""},
      {[](json& j) { j["format_version"] = "2.0"; }, "\"format_version\" is \"2.0\""},
      {[](json& j) { j["input_crs"] = "here"; }, "\"coordinates\""},
      {[](json& j) { j["vertices"][1][2] = "x"; }, "\"vertices[1]\""},
      {[](json& j) { j["vertices"][2].erase(4); }, "\"vertices[2]\""},
      {[](json& j) {
         j["vertices"][1] = {{"x", 1}, {"y", 2}};
       },
       "\"vertices[1]\" is no list"},
      {[](json& j) { j["vertices"][1] = 7; }, "\"vertices[1]\""},
      {[](json& j) { j["triangles"][0][1] = 1.5; }, "\"triangles[0]\""},
      {[](json& j) { j["triangles"][0][1] = 3; }, "\"triangles[0]\" names a vertex"},
      {[](json& j) { j["triangles"][0][1] = -1; }, "\"triangles[0]\""},
      {[](json& j) { j["vertices_columns"][0] = "z"; }, "has no column \"source_z\""},
      {[](json& j) { j["fallback_strategy"] = "guess"; }, "\"fallback_strategy\" is \"guess\""},
      {[](json& j) { j.erase("triangles"); }, "\"triangles\" is missing"}};
  for (const auto& [change, expected] : cases) {
    json file = Triangle();
    change(file);
    const std::string said = Complaint([&, &f = file] {
      ParseShift({{"", f.dump()}}, {"made.json"});
    });
    EXPECT_NE(said.find("made.json: "), std::string::npos) << said;
    EXPECT_NE(said.find(expected), std::string::npos) << said;
  }
  EXPECT_NE(Complaint([] {
              ParseShift({{"", std::string(500, 'x')}}, {"a.bin"});
            }).find("a.bin: is no grid"),
            std::string::npos);
}

// YKJ to ETRS-TM35FIN, the point that was checked against the Finnish map service, and N60 to N2000
// there, as published with the grids.
TEST(ShiftFile, ReadsTheFinnishTriangulations) {
  REQUIRE_REFERENCE_FILE(plane, "grids/fi_nls_ykj_etrs35fin.json");
  REQUIRE_REFERENCE_FILE(heights, "grids/fi_nls_n60_n2000.json");
  constexpr double kPrinted = 6e-5;
  double n = 6700000, e = 3210000, h = 0;
  ASSERT_TRUE(OpenShift({plane.string()})->Forward(n, e, h));
  EXPECT_NEAR(e, 209948.3217, kPrinted);
  EXPECT_NEAR(n, 6697187.0009, kPrinted);
  n = 6700000;
  e = 3210000;
  ASSERT_TRUE(OpenShift({heights.string()})->Forward(n, e, h));
  EXPECT_NEAR(h, 0.2886, kPrinted);
}

// DHDN to ETRS89 at the worked point of BETA2007, PROJ's and an own evaluation of the file.
TEST(ShiftFile, ReadsTheGermanGrid) {
  REQUIRE_REFERENCE_FILE(path, "grids/de_adv_BETA2007.tif");
  constexpr double kPrinted = 1e-10;
  double b = 52.5 * kDegree, l = 13.4 * kDegree, h = 0;
  ASSERT_TRUE(OpenShift({path.string()})->Forward(b, l, h));
  EXPECT_NEAR(b / kDegree, 52.4985944130, kPrinted);
  EXPECT_NEAR(l / kDegree, 13.3982568056, kPrinted);
}

// The interpolated shifts that Ordnance Survey prints for TP01. The file's unit belongs to its values
// before the scale, and it is no geodetic TIFF: the caller says what is meant.
TEST(ShiftFile, AsksForTheUnitOfAScaledFileThatDoesNotSayIt) {
  REQUIRE_REFERENCE_FILE(path, "grids/ostn15_plane_shifts.tif");
  ShiftChoice choice{path.string()};
  EXPECT_NE(Complaint([&] { OpenShift(choice); }).find("say their \"unit\""), std::string::npos);
  choice.unit = "metre";
  constexpr double kPrinted = 1.1e-5;
  double n = 11318.804 + 81.19532, e = 91492.146 - 92.14556, h = 0;
  const double n0 = n, e0 = e;
  ASSERT_TRUE(OpenShift(choice)->Forward(n, e, h));
  EXPECT_NEAR(n - n0, -81.19532, kPrinted);
  EXPECT_NEAR(e - e0, 92.14556, kPrinted);
}
