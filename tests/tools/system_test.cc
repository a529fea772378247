#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "files/epsg/epsg_system.h"
#include "files/system/system_file.h"
#include "geomath/base/angle.h"
#include "tests/support/reference_data.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

using namespace geomath_files;
using zel_cs::geomath::kRadPerDeg;

namespace {

const DatumWish kNoDatum = {.none = true, .operation = {}, .near = {}};

constexpr double Degrees(double degrees, double minutes, double seconds) {
  return degrees + minutes / 60 + seconds / 3600;
}

// Examples of EPSG Guidance Note 7-2, each of another method, on the datum of the system; the first
// one is of Ordnance Survey, A guide to coordinate systems in Great Britain, annexe C. Northing and
// easting are those of the registry's axes, southing and westing where these point so.
struct Example {
  const char* code;
  double latitude, longitude;  // degrees from Greenwich
  double n, e;                 // in the unit
  double unit = 1;             // metres
};
constexpr double kSurveyFoot = 1200.0 / 3937, kClarkeLink = 0.201166195164;
constexpr double kPrinted = 0.0055;  // half of the last figure, and its rounding

constexpr Example kExamples[] = {
    {"27700", Degrees(52, 39, 27.2531), Degrees(1, 43, 4.5177), 313177.270, 651409.903},
    {"2053", -Degrees(25, 43, 55.302), Degrees(28, 16, 57.479), 2847342.74, 71984.48},
    {"24200", Degrees(17, 55, 55.80), -Degrees(76, 56, 37.26), 142493.51, 255966.58},
    {"32040", 28.5, -96, 254759.80, 2963503.91, kSurveyFoot},
    {"6201", 43.75, -Degrees(83, 10, 0), 160210.48, 2308335.75, kSurveyFoot},
    {"31300", Degrees(50, 40, 46.461), Degrees(5, 48, 26.533), 153034.13, 251763.20},
    {"3174", 42.75, -78.75, 702903.006, 1466493.492},
    {"3001", -3, 120, 569150.82, 5009726.58},
    {"3388", 53, 53, 5171848.07, 165704.29},
    {"30200", 10, -62, 82536.22, 66644.94, kClarkeLink},
    {"28992", 53, 6, 557057.739, 196105.283},
    {"5041", 73, 44, 632668.43, 3320416.75},
    {"3032", -75, 120, 7053389.56, 7255380.79},
    {"2985", -Degrees(66, 36, 18.820), Degrees(140, 4, 17.040), 244055.72, 303169.52},
    {"29873", Degrees(5, 23, 14.1129), Degrees(115, 48, 19.8196), 596562.78, 679245.73},
    {"6247", 4.8, -74.25, 122543.174, 80859.033},
};

TEST(System, ReproducesPublishedExamples) {
  for (const Example& example : kExamples) {
    const auto system =
        ParseSystem(MakeEpsgSystem(example.code, kNoDatum).document.dump(), example.code);
    double n = example.latitude * kRadPerDeg, e = example.longitude * kRadPerDeg, h = 0;
    ASSERT_TRUE(system->Chain().ToLocal(n, e, h)) << example.code;
    EXPECT_NEAR(n / example.unit, example.n, kPrinted) << example.code;
    EXPECT_NEAR(e / example.unit, example.e, kPrinted) << example.code;
  }
}

std::string TextOf(const EpsgSystem& system) {
  std::string text = system.document.at("description");
  for (const std::string& note : system.notes) text += "\n" + note;
  return text;
}

TEST(System, ChoosesTheTransformation) {
  struct Case {
    const char* code;
    const char* operation;
    const Position* near;
    std::vector<std::string> said;
  };
  const Position florida = {27, -81}, prague = {50, 14};
  const Case cases[] = {
      // The best that seven parameters can be, beside a better grid.
      {"27700",
       "",
       nullptr,
       {"by EPSG:1314 ",
        "EPSG:7709 OSGB36 to ETRS89 (2), accuracy 0.03 m, is better and needs the file "
        "OSTN15_NTv2_OSGBtoETRS.gsb or uk_os_OSTN15_NTv2_OSGBtoETRS.tif, which is not found; "
        "without "
        "it: accuracy 2 m",
        "ostn15_plane_shifts.tif"}},
      {"27700", "1195", nullptr, {"by EPSG:1195 ", "accuracy 21 m"}},
      // All of the area before accuracy, unless a place is named.
      {"5514", "", nullptr, {"by EPSG:15965 "}},
      {"5514", "", &prague, {"by EPSG:5239 "}},
      {"26717", "", &florida, {"by EPSG:1173 "}},
      {"26717", "", nullptr, {"covers only", "--near"}},
      // Grids of PROJ's folders: in its own file, and in one that leads the other way.
      {"31467", "", nullptr, {"positions on EPSG:4258 ETRS89 by EPSG:15948 ", "/BETA2007.gsb"}},
      {"27572", "", nullptr, {"positions on EPSG:4171 RGF93 v1 by EPSG:7811 ", "/ntf_r93.gsb"}},
      {"31467", "1777", nullptr, {"positions on WGS 84 by EPSG:1777 ", "accuracy 3 m"}},
      // Null shifts, the second of two steps that cancel.
      {"25832", "", nullptr, {"taken for WGS 84 (EPSG:1149 "}},
      {"8908", "", nullptr, {"no shift"}},
      {"2263",
       "",
       nullptr,
       {"taken for WGS 84",
        "grid coordinates are in units of 0.3048006096012192 m (US survey foot)"}},
      {"32632", "", nullptr, {"positions on EPSG:4326 WGS 84"}},
      {"3303", "", nullptr, {"large rotations are taken exactly"}},
      {"4258", "", nullptr, {"system without projection"}},
  };
  for (const Case& each : cases) {
    DatumWish wish;
    wish.operation = each.operation;
    if (each.near) wish.near = *each.near;
    const EpsgSystem system = MakeEpsgSystem(each.code, wish);
    for (const std::string& said : each.said)
      EXPECT_NE(TextOf(system).find(said), std::string::npos)
          << each.code << ": " << said << " is not in: " << TextOf(system);
    EXPECT_NO_THROW(ParseSystem(system.document.dump(), each.code, ProjectionNeed::optional));
  }
}

TEST(System, NamesWhatReplacesADeprecatedCode) {
  EXPECT_NE(TextOf(MakeEpsgSystem("6996", kNoDatum)).find("is deprecated; in its place: EPSG:7131"),
            std::string::npos);
}

class SystemProgram : public testing::Test {
 protected:
  const ScratchFolder scratch_;
  const std::filesystem::path directory_ = scratch_.Path();
};

TEST_F(SystemProgram, WritesAFileThatConvertTakes) {
  ProgramRun run = RunProgram(directory_, "system --epsg epsg:5513 --no-datum -o s.json");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "");
  EXPECT_NE(run.err.find("geomath: EPSG:5513 of EPSG "), std::string::npos) << run.err;
  EXPECT_EQ(run.err.find("WGS 84"), std::string::npos) << run.err;
  // The example of Guidance Note 7-2 for Krovak: 1050538.643 m south, 568990.997 m west.
  WriteText(directory_ / "p.csv", "lat,lon\n50 12 32.442 N,16 50 59.179 E\n");
  const std::string convert = " convert --system s.json p.csv -o - --fixed-height 0 --decimals 1";
  run = RunProgram(directory_, convert);
  EXPECT_NE(run.out.find(",1050538.6,568991.0"), std::string::npos) << run.out;
  ASSERT_EQ(RunProgram(directory_, "system --epsg 5514 --no-datum -o s.json").status, 0);
  run = RunProgram(directory_, convert);
  EXPECT_NE(run.out.find(",-1050538.6,-568991.0"), std::string::npos) << run.out;
}

// Wherever a command takes a system file it takes the code that the file is made from.
TEST_F(SystemProgram, ACodeStandsForItsFile) {
  ASSERT_EQ(RunProgram(directory_, "system --epsg 27700 -o s.json").status, 0);
  WriteText(directory_ / "p.csv", "lat,lon,h\n52.6,1.7,100\n52.7,1.6,90\n52.8,1.8,80\n");
  WriteText(directory_ / "c.csv",
            "lat,lon,h,local_n,local_e,local_h,use\n52.6,1.7,100,0,0,50,both\n"
            "52.7,1.6,90,11250,-6190,40,both\n52.8,1.8,80,21750,7400,30,both\n");
  for (const char* command : {"convert p.csv -o -", "convert 52.6 1.7 100", "factors p.csv -o -",
                              "measure p.csv -o -", "calibrate c.csv -o - --report r.html"}) {
    const auto by = [&](const char* system) {
      return RunProgram(directory_, std::string(command) + " --system " + system);
    };
    const ProgramRun file = by("s.json"), code = by("EPSG:27700");
    EXPECT_EQ(code.status, 0) << command << code.err;
    EXPECT_EQ(code.out, file.out) << command;
    EXPECT_NE(code.err.find("geomath: EPSG:27700 of EPSG "), std::string::npos) << code.err;
    EXPECT_EQ(file.err.find("EPSG:27700 of EPSG "), std::string::npos) << file.err;
  }
  const ProgramRun unknown = RunProgram(directory_, "convert --system EPSG:99999 52 1");
  EXPECT_EQ(unknown.status, 2);
  EXPECT_NE(unknown.err.find("no coordinate reference system"), std::string::npos) << unknown.err;
}

// The cone's radii, which are the coordinates, are proportional to its scale: the example of Guidance
// Note 7-2 for Krovak over 0.9999, rounded there to 3 cm.
TEST_F(SystemProgram, AppliesAScaleThatTheClassKeepsWaiting) {
  WriteText(directory_ / "s.json", R"({"local": {"ellipsoid": "Bessel 1841"}, "projection": {
      "name": "KROVAK", "Lat0": 49.5, "Lon0": 42.5, "dLon": 17.666666666666668,
      "Uq": 59.711860247222224, "S0": 78.5, "Scale": 1, "East0": 0, "North0": 0}})");
  WriteText(directory_ / "p.csv", "lat,lon\n50 12 32.442 N,16 50 59.179 E\n");
  const ProgramRun run =
      RunProgram(directory_, "convert --system s.json p.csv -o - --fixed-height 0 --decimals 1");
  EXPECT_NE(run.out.find(",1050643.7,569047.9"), std::string::npos) << run.out << run.err;
}

TEST_F(SystemProgram, ListsTransformationsBestFirst) {
  const ProgramRun run =
      RunProgram(directory_, "system --epsg 27700 --list-operations --near 51.5,-0.1");
  EXPECT_EQ(run.status, 0);
  const auto at = [&](const char* text) { return run.out.find(text); };
  EXPECT_LT(at("NTv2: needs the file OSTN15_NTv2_OSGBtoETRS.gsb or"),
            at("EPSG:1314 OSGB36 to WGS 84 (6)\n"));
  EXPECT_LT(at("EPSG:1314 "), at("EPSG:1196 "));
  EXPECT_EQ(at("EPSG:1198 "), std::string::npos) << "only used in Scotland";
}

// A stand-in is found by its name, in folders that come one before the other.
TEST_F(SystemProgram, LooksForGridsInFolders) {
  constexpr const char* kName = "ostn15_ntv2_OSGBtoETRS.GSB";  // in any letter case
  const std::string proj = MakeEpsgSystem("31467", {}).document.at("shifts")[0].at("file");
  const std::string program = "system --epsg 27700 --operation 7709 -o s.json";
  const auto used = [&](const std::string& arguments) {
    const ProgramRun run = RunProgram(directory_, program + arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.err.find("geomath: grid "), std::string::npos) << run.err;
    return ReadSystemFile((directory_ / "s.json").string())->Files().back();
  };
  EXPECT_EQ(RunProgram(directory_, program).status, 2);
  for (const char* folder : {"", "environment", "named"}) {
    std::filesystem::create_directories(directory_ / folder);
    std::filesystem::copy_file(proj, directory_ / folder / kName);
  }
  std::filesystem::create_directory(directory_ / "empty");
  const std::filesystem::path beside = directory_ / kName;
  EXPECT_EQ(std::filesystem::path(used("")), beside);
  // The name alone, so that both files can be moved together.
  EXPECT_NE(ReadText(directory_ / "s.json").find(fmt::format("\"{}\"", kName)), std::string::npos);
  setenv("GEOMATH_GRIDS", ":nowhere:environment", 1);
  EXPECT_EQ(std::filesystem::path(used("")), directory_ / "environment" / kName);
  EXPECT_EQ(std::filesystem::path(used(" --grids empty --grids named")),
            directory_ / "named" / kName);
  unsetenv("GEOMATH_GRIDS");
}

// The routes of the publishers, where their files are: figures published for each.
TEST_F(SystemProgram, TakesTheRouteOfThePublisher) {
  REQUIRE_REFERENCE_FILE(grid, "grids/ostn15_plane_shifts.tif");
  struct Route {
    const char* code;
    double latitude, longitude, n, e;
    double tolerance;  // metres
  };
  constexpr double kDefinition = 1.1e-3;
  const Route routes[] = {
      // Ordnance Survey, OSTN15 developer pack, TP01.
      {"27700", 49.92226393730, -6.29977752014, 11318.804, 91492.146, kDefinition},
      // NSGI, self-validation of RDNAPTRANS2018, a point beyond the grid.
      {"28992", 53.999759140, 5.144478208, 668306.0460, 139079.8850, kDefinition},
  };
  for (const Route& route : routes) {
    const EpsgSystem made =
        MakeEpsgSystem(route.code, {.grids = {grid.parent_path().string()}, .output = "s.json"});
    const auto system = ParseSystem(made.document.dump(), "s.json");
    double n = route.latitude * kRadPerDeg, e = route.longitude * kRadPerDeg, h = 0;
    ASSERT_TRUE(system->Chain().ToLocal(n, e, h)) << route.code;
    EXPECT_NEAR(n, route.n, route.tolerance) << route.code;
    EXPECT_NEAR(e, route.e, route.tolerance) << route.code;
    EXPECT_EQ(system->GeographicCrs(), "EPSG:4258");
  }
}

TEST_F(SystemProgram, FindsSystemsByNameAndPlace) {
  const ProgramRun byName = RunProgram(directory_, "system --find 'BRITISH national'");
  EXPECT_EQ(byName.status, 0);
  EXPECT_NE(byName.out.find("EPSG:27700 OSGB36 / British National Grid\n"), std::string::npos);
  EXPECT_EQ(byName.out.find("EPSG:31467"), std::string::npos);
  const std::string byPlace = RunProgram(directory_, "system --find 52.5,-1.7").out;
  EXPECT_NE(byPlace.find("EPSG:27700 "), std::string::npos);
  EXPECT_LT(byPlace.find("EPSG:27700 "), byPlace.find("EPSG:3857 "));  // the world comes last
  EXPECT_EQ(byPlace.find("EPSG:31467 "), std::string::npos);
  EXPECT_EQ(RunProgram(directory_, "system --find xyzzy").status, 2);
}

TEST_F(SystemProgram, PointsOutsideTheAreaAreReported) {
  ASSERT_EQ(RunProgram(directory_, "system --epsg 31467 -o s.json").status, 0);
  EXPECT_EQ(RunProgram(directory_, "convert --system s.json 50 9").err, "");
  const ProgramRun outside = RunProgram(directory_, "convert --system s.json 50 13");
  EXPECT_EQ(outside.status, 0);
  EXPECT_NE(outside.err.find("1 point lies outside the area"), std::string::npos) << outside.err;
}

TEST_F(SystemProgram, RefusesWhatItCannotHold) {
  const struct {
    const char* arguments;
    std::vector<std::string> said;
  } cases[] = {
      {"--epsg 99999", {"EPSG:99999: no coordinate reference system of the registry"}},
      {"--epsg 1314", {"no coordinate reference system"}},
      {"--epsg OSGB", {"--epsg: \"OSGB\" is no EPSG code"}},
      {"--epsg 3035", {"LAEA Europe", "Lambert Azimuthal Equal Area (EPSG method 9820)"}},
      {"--epsg 32600", {"Transverse Mercator Zoned Grid System (EPSG method 9824)"}},
      {"--epsg 7415", {"give the horizontal one, EPSG:28992"}},
      {"--epsg 5705", {"is a system of heights"}},
      {"--epsg 4978", {"has geocentric coordinates"}},
      {"--epsg 9367", {"none of its 2 transformations", "NTv2 needs the file", "--no-datum"}},
      {"--epsg 27700 --near -33,151", {"has no transformation to WGS 84", "--no-datum"}},
      {"--epsg 27700 --near 91,0", {"--near: ", "91"}},
      {"--epsg 27700 --near 52", {"a latitude and a longitude belong there"}},
      {"--epsg 27700 --operation 7710",
       {"by NTv2: needs the file OSTN15_NTv2_OSGBtoETRS.gsb or", "--grids"}},
      {"--epsg 27700 --operation 1133", {"EPSG:1133 is none of its transformations"}},
      {"--epsg 27700 --grids nowhere", {"nowhere: is no folder"}},
      {"--epsg 27700 --operation 7710 --grids broken", {"OSTN15_NTv2_OSGBtoETRS.gsb: at byte"}},
      {"--epsg 27700 --operation 1314 --no-datum", {"--no-datum"}},
      {"", {"--epsg"}},
  };
  WriteText(directory_ / "s.json", "old");
  std::filesystem::create_directory(directory_ / "broken");
  WriteText(directory_ / "broken" / "OSTN15_NTv2_OSGBtoETRS.gsb", "no grid at all");
  for (const auto& each : cases) {
    const ProgramRun run =
        RunProgram(directory_, std::string("system -o s.json ") + each.arguments);
    EXPECT_EQ(run.status, 2) << each.arguments;
    EXPECT_EQ(run.out, "") << each.arguments;
    for (const std::string& said : each.said)
      EXPECT_NE(run.err.find(said), std::string::npos) << each.arguments << ": " << run.err;
    EXPECT_EQ(ReadText(directory_ / "s.json"), "old") << each.arguments;
  }
  const ProgramRun nowhere = RunProgram(directory_, "system --epsg 27700 -o missing/s.json");
  EXPECT_EQ(nowhere.status, 2);
  EXPECT_NE(nowhere.err.find("missing/s.json: cannot be written"), std::string::npos);
  EXPECT_NE(RunProgram(directory_, "system --epsg 27700").err.find("--output"), std::string::npos);
}

}  // namespace
