#include <fmt/chrono.h>
#include <fmt/format.h>
#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <array>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "files/site/calibration.h"
#include "files/site/calibration_report.h"
#include "files/site/control_file.h"
#include "files/site/site_judgement.h"
#include "geomath/base/angle.h"
#include "geomath/base/axis_rotation.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

using namespace geomath_files;
using zel_cs::geomath::AxisRotation;
using zel_cs::geomath::CoordinateChain;
using zel_cs::geomath::kDegPerRad;
using zel_cs::geomath::kRadPerDeg;
using zel_cs::geomath::kTwoPi;
using zel_cs::geomath::SiteCovariance;

namespace {

namespace fs = std::filesystem;
const std::string kExample = GEOMATH_SOURCE_DIR "/examples/site/";

class Calibrate : public ::testing::Test {
 protected:
  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }
  std::string Read(const char* name) { return ReadText(directory_ / name); }
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "calibrate " + arguments);
  }
  ProgramRun RunExample(const std::string& arguments) {
    return Run(kExample + "control.csv --system " + kExample + arguments);
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

int CountOf(const std::string& text, const std::string& part) {
  int count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

// Parameters and residuals of this site by an independent 40-digit evaluation.
TEST_F(Calibrate, PrintsParametersResidualsAndEstimates) {
  const ProgramRun run = RunExample("system.json -o site.json");
  ASSERT_EQ(run.status, 0) << run.err;
  for (const char* part : {"509102.7477", "173052.6319", "0.9999247072", "-42.5814", "14.333",
                           "Horizontal rms 0.0328 m", "0.778 arc-seconds",
                           "30010487 both          0.0461   -0.0143    0.0016"})
    EXPECT_TRUE(Contains(run.out, part)) << part << "\n" << run.out;
  EXPECT_FALSE(Contains(run.out, "Warning"));
}

// The same site with local coordinates in feet: the same parameters, lengths in feet.
TEST_F(Calibrate, TakesControlInFeet) {
  const auto control = ReadControl({kExample + "control.csv"}).points;
  std::string feet = "name,lat,lon,h,local_n,local_e,local_h\n";
  for (const ControlPoint& point : control) {
    const auto& p = point.given;
    feet += fmt::format("{},{:.12f},{:.12f},{},{:.7f},{:.7f},{:.7f}\n", point.name, p.globalN,
                        p.globalE, p.globalH, p.localN * 3937 / 1200, p.localE * 3937 / 1200,
                        p.localH / 0.3048);
  }
  Write("feet.csv", feet);
  const std::string system = " --system " + kExample + "system.json ";
  const ProgramRun run = Run("feet.csv" + system + "-o site.json --unit us-ft,ft --report r.html");
  ASSERT_EQ(run.status, 0) << run.err;
  for (const char* part : {"Shift N, US ft", "Shift H, ft", "0.9999247072", "14.333",
                           "Horizontal rms 0.1076 US ft", "(given minus computed, US ft, heights"})
    EXPECT_TRUE(Contains(run.out, part)) << part << "\n" << run.out;
  EXPECT_TRUE(Contains(Read("r.html"), "local ones in US ft, heights ft"));
  // The new system has the units, so that convert gives what the control has.
  const auto saved = ParseSystem(Read("site.json"), "site.json");
  EXPECT_EQ(saved->Units().plane.metres, 1200.0 / 3937);
  EXPECT_EQ(saved->Units().height.metres, 0.3048);
  const ProgramRun again = Run("feet.csv --system site.json -o - --report again.html");
  EXPECT_TRUE(Contains(again.err, "Shift N, US ft")) << again.err;
}

TEST_F(Calibrate, ConvertReproducesTheResidualsDigitForDigit) {
  for (const char* system : {"system.json", "netherlands.json"}) {
    for (const char* option : {"", " --fixed-scale", " --placement first"}) {
      const ProgramRun run = RunExample(system + std::string(" -o site.json") + option);
      ASSERT_EQ(run.status, 0) << run.err;
      const ProgramRun converted = RunProgram(
          directory_, "convert --system site.json " + kExample + "control.csv -o - --decimals 9");
      ASSERT_EQ(converted.status, 0) << converted.err;
      const auto rows = Lines(converted.out);
      ASSERT_EQ(rows.size(), 13u);
      for (std::size_t i = 1; i < rows.size(); ++i) {
        double given[3], computed[3];
        ASSERT_EQ(
            std::sscanf(rows[i].c_str(), "%*[^,],%*[^,],%*[^,],%*[^,],%lf,%lf,%lf,both,%lf,%lf,%lf",
                        &given[0], &given[1], &given[2], &computed[0], &computed[1], &computed[2]),
            6)
            << rows[i];
        const std::string name = rows[i].substr(0, 8);
        char expected[80];
        std::snprintf(expected, sizeof expected, "%s both       %9.4f %9.4f %9.4f", name.c_str(),
                      given[0] - computed[0], given[1] - computed[1], given[2] - computed[2]);
        EXPECT_TRUE(Contains(run.out, expected)) << expected << "\n" << run.out;
      }
    }
  }
}

// The same without the rounding of a table, in both directions.
TEST_F(Calibrate, SavedSystemIsTheSolvedOne) {
  const std::string text = ReadText(kExample + "netherlands.json");
  const auto system = ParseSystem(text, "netherlands.json", ProjectionNeed::optional);
  const auto control = ReadControl({kExample + "control.csv"}).points;
  const Calibration calibration(*system, control, {});
  const auto saved = ParseSystem(calibration.SystemText(text, "a.json", "b.json"), "site.json");
  for (std::size_t i = 0; i < control.size(); ++i) {
    const auto& given = control[i].given;
    double n = given.globalN * kRadPerDeg, e = given.globalE * kRadPerDeg, h = given.globalH;
    ASSERT_TRUE(saved->Chain().ToLocal(n, e, h));
    EXPECT_NEAR(given.localN - n, calibration.Points()[i].residualN, 1e-9);
    EXPECT_NEAR(given.localE - e, calibration.Points()[i].residualE, 1e-9);
    EXPECT_NEAR(given.localH - h, calibration.Points()[i].residualH, 1e-9);
    ASSERT_TRUE(saved->Chain().ToGlobal(n, e, h));
    EXPECT_NEAR(n, given.globalN * kRadPerDeg, 1e-11);
    EXPECT_NEAR(h, given.globalH, 1e-8);
  }
}

// At the pivot the shifts' standard deviations, three times as far from the control much more; and what
// was not checked by surplus control counts as exact, which is said.
TEST_F(Calibrate, ConvertTakesTheUncertaintyOfTheSite) {
  ASSERT_EQ(RunExample("netherlands.json -o site.json").status, 0);
  const auto saved = ParseSystem(Read("site.json"), "site.json");
  ASSERT_TRUE(saved->SiteUncertainty());
  const SiteCovariance& covariance = saved->SiteUncertainty()->covariance;
  const auto sigmasAt = [&](double awayN, double awayE) {
    CoordinateChain grid = saved->Chain();
    grid.SetLocalization(nullptr);
    double b = covariance.pivotN + awayN, l = covariance.pivotE + awayE, h = 0;
    EXPECT_TRUE(grid.ToGlobal(b, l, h));
    char arguments[160];
    std::snprintf(arguments, sizeof arguments,
                  "convert --system site.json %.12f %.12f %.4f --sigma 0,0,0 --decimals 9",
                  b * kDegPerRad, l * kDegPerRad, h);
    const ProgramRun run = RunProgram(directory_, arguments);
    EXPECT_EQ(run.err, "");
    std::array<double, 3> sigmas;
    const auto lines = Lines(run.out);
    for (std::size_t k = 0; k < 3; ++k)
      sigmas[k] = std::stod(lines.at(3 + k).substr(lines.at(3 + k).find_first_of(' ')));
    return sigmas;
  };
  constexpr double kPrinted = 1e-9;
  const auto here = sigmasAt(0, 0), there = sigmasAt(30000, 0);
  EXPECT_NEAR(here[0], std::sqrt(covariance.ofPlane[0][0]), kPrinted);
  EXPECT_NEAR(here[2], std::sqrt(covariance.ofHeight[0][0]), kPrinted);
  // The shifts of the centroid, and scale and rotation over the distance, are independent.
  const auto& plane = covariance.ofPlane;
  const double turned = 30000 * std::sqrt(plane[2][2] + plane[3][3]);  // the scale is nearly 1
  EXPECT_NEAR(std::hypot(there[0], there[1]),
              std::hypot(std::sqrt(plane[0][0] + plane[1][1]), turned), 1e-4 * turned);

  std::string control = ReadText(kExample + "control.csv");
  std::size_t end = 0;
  for (int line = 0; line < 4; ++line) end = control.find('\n', end) + 1;
  Write("three.csv", control.substr(0, end));
  ASSERT_EQ(Run("three.csv --system " + kExample + "netherlands.json -o three.json").status, 0);
  const ProgramRun run =
      RunProgram(directory_, "convert --system three.json 52.6 5.5 50 --sigma 0.01,0.01,0.01");
  EXPECT_TRUE(Contains(run.err, "the site has no covariance of heights, which counts as exact"))
      << run.err;
}

TEST_F(Calibrate, WarnsAndSavesWhatThePointsAllow) {
  Write("system.json", R"({"global": {"ellipsoid": "GRS80"}})");
  Write("few.csv",
        "lat,lon,h,local_n,local_e,local_h,use\n52,5,40,1000,2000,,horizontal\n"
        "52.01,5,,2112,2000,,2\n\n52.5,5,,,,,none\n");
  const ProgramRun run = Run("few.csv --system system.json -o site.json");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "Warning: Only 2 horizontal control point(s)"));
  EXPECT_TRUE(Contains(run.out, "Warning: No control heights"));
  EXPECT_TRUE(Contains(run.out, "3 lies ")) << "named by its place in the file";
  const auto site = nlohmann::json::parse(Read("site.json"));
  EXPECT_TRUE(site["localization"].contains("scale"));
  EXPECT_FALSE(site["localization"].contains("shiftH"));
  EXPECT_EQ(site["projection"]["name"], "STER");
  const ProgramRun converted =
      RunProgram(directory_, "convert --system site.json few.csv -o - --fixed-height 7");
  EXPECT_TRUE(Contains(converted.out, "52,5,40,1000,2000,,horizontal,1000.0000,2000.0000,7.0000"))
      << converted.out << converted.err;
}

TEST_F(Calibrate, SaysWhatIsWrong) {
  const std::string header = "lat,lon,h,local_n,local_e,local_h,use\n";
  Write("system.json", R"({"global": {"ellipsoid": "WGS84"}})");
  struct Row {
    const char* name;
    std::string file, arguments, complaint;
  };
  const Row rows[] = {
      {"column", "lat,lon,h,local_n,local_e,use\n", "", "no column \"local_h\""},
      {"use", header + "52,5,1,2,3,4,maybe\n", "", "line 2: use is \"maybe\""},
      {"angle", header + "95,5,1,2,3,4,1\n", "", "lat 95 degrees is outside"},
      {"number", header + "52,5,1,x,3,4,1\n", "", "line 2: local_n"},
      {"short", header + "52,5\n", "", "line 2"},
      {"empty", header, "", "do not give a calibration"},
      {"unused", header + "52,5,1,2,3,4,0\n", "", "do not give a calibration"},
      {"place", header + "52,5,1,2,3,4,3\n", "--report nowhere/r.html", "cannot be written"},
      {"same", header + "52,5,1,2,3,4,3\n", "--report in.csv", "in.csv"},
  };
  for (const Row& row : rows) {
    Write("in.csv", row.file);
    const ProgramRun run = Run("in.csv --system system.json -o site.json " + row.arguments);
    EXPECT_EQ(run.status, 2) << row.name;
    EXPECT_TRUE(Contains(run.err, row.complaint)) << row.name << ": " << run.err;
  }
  Write("rd.json",
        R"({"global": {"ellipsoid": "WGS84"}, "projection": {"name": "RDPROJ", "Lon0": 5,
            "Lat0": 52, "East0": 0, "North0": 0}})");
  Write("in.csv", header + "52,5,1,2,3,4,3\n52.1,5,1,2000,3,4,3\n");
  const ProgramRun run = Run("in.csv --system rd.json -o other.json --pipeline");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "RDPROJ cannot be written for PROJ")) << run.err;
  EXPECT_FALSE(fs::exists(directory_ / "other.json"));
}

TEST_F(Calibrate, ReadsAndWritesStandardStreams) {
  const std::string system = kExample + "system.json", control = kExample + "control.csv";
  const ProgramRun files = RunExample("system.json -o site.json --report report.html");
  ASSERT_EQ(files.status, 0) << files.err;
  const std::string streams[] = {control + " --system - -o - <" + system,
                                 "- --system " + system + " -o - <" + control};
  for (const std::string& arguments : streams) {
    const ProgramRun run = Run(arguments);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, Read("site.json"));
    EXPECT_EQ(run.err, files.out);
  }
  EXPECT_TRUE(RunExample("system.json -o b.json --report -").out.starts_with("<!DOCTYPE html>"));
  const ProgramRun converted =
      RunProgram(directory_, "convert --system - 52 5 40 <" + kExample + "netherlands.json");
  EXPECT_EQ(converted.status, 0) << converted.err;

  for (const char* refused :
       {"- --system - -o c.json", "system.json -o - --report -", "system.json -o - --pipeline"}) {
    const ProgramRun run = *refused == '-' ? Run(refused) : RunExample(refused);
    EXPECT_EQ(run.status, 2) << refused;
    EXPECT_EQ(run.out, "") << refused;
    EXPECT_TRUE(Contains(run.err, "standard ")) << run.err;
  }
  EXPECT_EQ(RunProgram(directory_, "convert --system - - -o - <" + system).err,
            "geomath: -: standard input can be read once; name a file for the other\n");
}

// Whatever the file looks like, the site is that of the plain one.
TEST_F(Calibrate, ReadsControlAsOthersWriteIt) {
  const std::string system = " --system system.json -o ";
  Write("system.json", R"({"global": {"ellipsoid": "WGS84"}})");
  Write("plain.csv",
        "name,lat,lon,h,local_n,local_e,local_h\n"
        "A,52.5,5.25,40.5,1000.25,2000.5,1.5\nB,52.51,5.26,41.5,2112.25,2679.5,2.5\n");
  ASSERT_EQ(Run("plain.csv" + system + "plain.json").status, 0);
  const struct {
    const char* name;
    std::string text, options, said;
  } files[] = {
      {"comma",
       "# Bad \nPunkt;Breite;L\xC3\xA4nge;h;Hochwert;Rechtswert;h_local;\n"
       "A;52,5;5,25;40,5;1000,25;2000,5;1,5;\n# B again\n"
       "B;52 30,6;5,26;41,5;2112,25;2679,5;2,5;\n",
       "", "with a decimal comma"},
      {"sep",
       "sep=|\r\nname|Latitude|Longitude|h_global|Northing|Easting|Elevation\r\n"
       "A|52.5|5.25|40.5|1000.25|2000.5|1.5\r\nB|52.51|5.26|41.5|2112.25|2679.5|2.5\r\n",
       "", ""},
      {"own",
       "n,e,lat,lon,h,local_n,local_e,local_h\n"
       "9,9,52.5,5.25,40.5,1000.25,2000.5,1.5\n9,9,52.51,5.26,41.5,2112.25,2679.5,2.5\n",
       "", ""},
      {"said",
       "lat;lon;h;n;e;z\n;;;1,000;2,000;1,000\n52,5;5,25;40,5;1000,25;2000,5;1,5\n"
       "52,51;5,26;41,5;2112,25;2679,5;2,5\n",
       " --decimal-comma", ""},
      {"bare",
       "\xEF\xBB\xBF"
       "A,52.5,5.25,40.5,1000.25,2000.5,1.5\nB,52.51,5.26,41.5,2112.25,2679.5,2.5\n",
       " --no-header --columns name,lat,lon,h,n,e,z", ""},
  };
  for (const auto& file : files) {
    Write("in.csv", file.text);
    const ProgramRun run = Run("in.csv" + system + "site.json" + file.options);
    EXPECT_EQ(run.status, 0) << file.name << run.err;
    EXPECT_TRUE(file.said.empty() ? run.err.empty() : Contains(run.err, file.said)) << run.err;
    EXPECT_EQ(Read("site.json"), Read("plain.json")) << file.name;
  }
  EXPECT_TRUE(Contains(Run("plain.csv" + system + "none.json --columns lat,lon").err,
                       "--columns: goes with --no-header"));
  const char* refused[][2] = {
      {"lat,Lat,lon,h,n,e,z\n", "\"lat\", \"Lat\" could each be meant by \"lat\""},
      {"lat,lon,h,n,northing,e,z\n", "\"n\", \"northing\" could each be meant by \"local_n\""},
      {"lat,lat,lon,h,n,e,z\n", "two columns are called \"lat\""},
      {"lat,lon,height,n,e,z\n", "there is no column \"h\""},
      {"lat,lon,h,y,x,z\n", "there is no column \"local_n\""},
      {"lat,lon,h,n,e,z\n52,361,1,2,3,4\n", "line 2: lon 361 degrees is outside"},
      {"lat;lon;h;n;e;z\n52;5;1;1,234;3;4\n", "may have a decimal comma or one of thousands"},
      {"lat;lon;h;n;e;z\n52,5;5;1.5;1;3;4\n", "has a decimal point where others"},
  };
  for (const auto& [text, complaint] : refused) {
    Write("in.csv", text);
    const ProgramRun run = Run("in.csv" + system + "none.json");
    EXPECT_EQ(run.status, 2) << text;
    EXPECT_TRUE(Contains(run.err, complaint)) << run.err;
  }
}

TEST_F(Calibrate, TakesTheGeoidAndNamesItsFileFromTheNewPlace) {
  // A geoid of 40 m everywhere: heights are calibrated above it.
  Write("flat.asc",
        "ncols 3\nnrows 3\nxllcorner 4\nyllcorner 51\ncellsize 1\n40 40 40\n40 40 40\n40 40 40\n");
  nlohmann::json system = nlohmann::json::parse(ReadText(kExample + "netherlands.json"));
  system["geoid"] = {{"grid", "flat.asc"}};
  Write("system.json", system.dump());
  fs::create_directories(directory_ / "saved");
  ProgramRun run = Run(kExample + "control.csv --system system.json -o saved/site.json --pipeline");
  EXPECT_TRUE(Contains(run.err, "heights above a geoid cannot be written")) << run.err;
  run = Run(kExample + "control.csv --system system.json -o saved/site.json");
  ASSERT_EQ(run.status, 0) << run.err;
  const auto site = nlohmann::json::parse(Read("saved/site.json"));
  EXPECT_EQ(site["geoid"]["grid"], "../flat.asc");
  // The shift of an independent 40-digit evaluation with heights above WGS84, less the geoid.
  EXPECT_NEAR(site["localization"]["shiftH"].get<double>(), -49.6795282 + 40, 1e-6);
  EXPECT_EQ(RunProgram(directory_,
                       "convert --system saved/site.json " + kExample + "check.csv -o out.csv")
                .status,
            0);
}

// Local coordinates turned by a quarter and doubled about zero: behind the ground system lies the
// site of the 40-digit evaluation, and convert reaches the turned coordinates with the residuals of
// the site, doubled and turned alike.
TEST_F(Calibrate, StandsBeforeTheGroundSystemAndKeepsIt) {
  nlohmann::json system = nlohmann::json::parse(ReadText(kExample + "system.json"));
  system["ground"] = {{"scale", 2}, {"rotation", 90}};
  Write("system.json", system.dump());
  std::string control = "name,lat,lon,h,local_n,local_e,local_h\n";
  std::vector<ControlPoint> points = ReadControl({kExample + "control.csv"}).points;
  for (const ControlPoint& point : points) {
    const auto& p = point.given;
    control += fmt::format("{},{},{},{},{},{},{}\n", point.name, p.globalN, p.globalE, p.globalH,
                           -2 * p.localE, 2 * p.localN, p.localH);
  }
  Write("control.csv", control);
  const ProgramRun run = Run("control.csv --system system.json -o site.json");
  ASSERT_EQ(run.status, 0) << run.err;
  for (const char* part : {"509102.7477", "173052.6319", "0.9999247072", "-42.5814",
                           "30010487 both          0.0461   -0.0143    0.0016"})
    EXPECT_TRUE(Contains(run.out, part)) << part << "\n" << run.out;
  EXPECT_EQ(nlohmann::json::parse(Read("site.json"))["ground"], system["ground"]);
  const auto site = ParseSystem(Read("site.json"), "site.json");
  double n = points[3].given.globalN * kRadPerDeg, e = points[3].given.globalE * kRadPerDeg, h = 0;
  ASSERT_EQ(points[3].name, "30010487");
  ASSERT_TRUE(site->Chain().ToLocal(n, e, h));
  EXPECT_NEAR(-2 * points[3].given.localE - n, -2 * -0.0143, 2e-4);
  EXPECT_NEAR(2 * points[3].given.localN - e, 2 * 0.0461, 2e-4);

  Write("half.csv", "lat,lon,h,local_n,local_e,local_h\n52,5,0,1,,2\n");
  EXPECT_TRUE(Contains(Run("half.csv --system system.json -o x.json").err, "one local coordinate"));
}

// Whatever axes a system has, its control gives the site of north and east, and the saved system
// gives the coordinates of north and east, turned: with a ground system behind the site, both ways.
TEST_F(Calibrate, EveryAxesTextGivesTheSiteOfNorthAndEast) {
  constexpr double kMetres = 1e-9, kRadians = 1e-15;  // the rounding of the site's shifts
  nlohmann::json json = nlohmann::json::parse(ReadText(kExample + "netherlands.json"));
  json["ground"] = {{"scale", 1.25},    {"rotation", 30}, {"originN", 5e5},
                    {"originE", 1.7e5}, {"offsetN", -7},  {"offsetE", 4e3}};
  const auto plainSystem = ParseSystem(json.dump(), "plain");
  const auto control = ReadControl({kExample + "control.csv"}).points;
  const Calibration plain(*plainSystem, control, {});
  const auto plainSaved = ParseSystem(plain.SystemText(json.dump(), "a", "a"), "plain");
  const auto plane = [](const SiteSolution& s, int i) { return s.Site().GetPlaneParam(i, 0); };

  constexpr const char* texts[] = {"NE", "NW", "SE", "SW", "EN", "WN", "ES", "WS"};
  for (const std::string grid : texts) {
    for (const std::string geographic : texts) {
      SCOPED_TRACE(grid + " from " + geographic);
      const auto sign = [](const std::string& axes, char against) {
        return axes.find(against) == std::string::npos ? 1.0 : -1.0;
      };
      std::vector<ControlPoint> turned = control;
      for (ControlPoint& point : turned) {
        point.given.globalN *= sign(geographic, 'S');
        point.given.globalE *= sign(geographic, 'W');
        point.given.localN *= sign(grid, 'S');
        point.given.localE *= sign(grid, 'W');
      }
      json["axes"] = {{"grid", grid}, {"geographic", geographic}};
      const auto system = ParseSystem(json.dump(), "turned");
      const Calibration calibration(*system, turned, {});
      for (int i = 0; i < 4; ++i) EXPECT_EQ(plane(calibration, i), plane(plain, i)) << i;
      const auto saved = ParseSystem(calibration.SystemText(json.dump(), "a", "a"), "saved");
      const AxisRotation ofGrid(std::wstring(grid.begin(), grid.end()).c_str());
      const AxisRotation ofGlobal(std::wstring(geographic.begin(), geographic.end()).c_str());
      for (std::size_t i = 0; i < control.size(); ++i) {
        EXPECT_EQ(calibration.Points()[i].residualE, plain.Points()[i].residualE);
        const auto& given = control[i].given;
        double n = given.globalN * kRadPerDeg, e = given.globalE * kRadPerDeg, h = given.globalH;
        double x = n, y = e, z = h;
        ofGlobal.Rotate(0, x, y);
        ASSERT_TRUE(plainSaved->Chain().ToLocal(n, e, h) && saved->Chain().ToLocal(x, y, z));
        ofGrid.Rotate(0, n, e);
        EXPECT_NEAR(x, n, kMetres);
        EXPECT_NEAR(y, e, kMetres);
        EXPECT_NEAR(z, h, kMetres);
        ofGrid.Rotate(1, n, e);
        ASSERT_TRUE(plainSaved->Chain().ToGlobal(n, e, h) && saved->Chain().ToGlobal(x, y, z));
        ofGlobal.Rotate(0, n, e);
        EXPECT_NEAR(x, n, kRadians);
        EXPECT_NEAR(y, e, kRadians);
      }
    }
  }
}

TEST_F(Calibrate, RefusesControlInOnePlace) {
  Write("control.csv",
        "name,lat,lon,h,local_n,local_e,local_h\na,52,5,10,1,2,3\nb,52,5,10,1,2,3\n"
        "c,52,5,10,1,2,3\nd,52,5,10,1,2,3\n");
  for (const char* option : {"", " --fixed-scale"}) {
    const ProgramRun run = Run("control.csv --system " + kExample +
                               "netherlands.json -o site.json" + std::string(option));
    EXPECT_EQ(run.status, 2) << option;
    EXPECT_NE(run.err.find("one place"), std::string::npos) << run.err;
  }
}

// The columns of files keep their names: easting first changes nothing that a user sees.
TEST_F(Calibrate, ControlAndResultColumnsAreThoseOfNorthEastWithEastFirst) {
  std::string converted[2], localization[2];
  for (const bool eastFirst : {false, true}) {
    auto system = nlohmann::json::parse(ReadText(kExample + "netherlands.json"));
    if (eastFirst) system["axes"] = {{"grid", "EN"}, {"geographic", "EN"}};
    Write("system.json", system.dump());
    const ProgramRun run = Run(kExample + "control.csv --system system.json -o site.json");
    ASSERT_EQ(run.status, 0) << run.err;
    localization[eastFirst] = nlohmann::json::parse(Read("site.json"))["localization"].dump();
    for (const char* way : {"check.csv -o n.csv", "n.csv -o - --inverse --columns n,e,h_local"}) {
      const std::string from = way[0] == 'c' ? kExample : "";
      const ProgramRun pass = RunProgram(directory_, "convert --system site.json " + from + way);
      ASSERT_EQ(pass.status, 0) << pass.err;
      converted[eastFirst] += way[0] == 'c' ? Read("n.csv") : pass.out;
    }
  }
  EXPECT_EQ(localization[true], localization[false]);
  EXPECT_EQ(converted[true], converted[false]);
}

// The columns "without" of a point are its residuals where it is not used.
TEST_F(Calibrate, ReportSaysWhatTheOthersPredict) {
  const auto rowOf30010487 = [&](const std::string& control) {
    Write("control.csv", control);
    const ProgramRun run =
        Run("control.csv --system " + kExample + "netherlands.json -o site.json");
    for (const std::string& row : Lines(run.out))
      if (row.starts_with("30010487 ")) return row;
    return run.err;
  };
  std::string control = ReadText(kExample + "control.csv");
  const std::string used = rowOf30010487(control);
  double v[9];
  ASSERT_EQ(std::sscanf(used.c_str(), "%*s both %lf %lf %lf %lf %lf %lf %lf %lf %lf", v, v + 1,
                        v + 2, v + 3, v + 4, v + 5, v + 6, v + 7, v + 8),
            9)
      << used;
  control.replace(control.find("both", control.find("30010487")), 4, "none");
  const std::string unused = rowOf30010487(control);
  EXPECT_TRUE(
      Contains(unused, fmt::format("none       {:9.4f} {:9.4f} {:9.4f} ", v[6], v[7], v[8])))
      << used << "\n"
      << unused;
  EXPECT_NE(v[6], v[0]) << "the point itself takes part";
}

TEST_F(Calibrate, MeetsTheOnlyPointOfAFixedScale) {
  const auto system = ParseSystem(ReadText(kExample + "netherlands.json"), "netherlands.json");
  std::vector<ControlPoint> control = ReadControl({kExample + "control.csv"}).points;
  control.resize(1);
  for (const bool fixedScale : {false, true}) {
    const Calibration calibration(*system, control, {fixedScale, false});
    EXPECT_NEAR(calibration.Points()[0].residualN, 0, 1e-9) << fixedScale;
    EXPECT_NEAR(calibration.Points()[0].residualE, 0, 1e-9) << fixedScale;
    EXPECT_EQ(calibration.Site().GetPlaneParam(2, 0) == 1, fixedScale);
  }
  control[0].given.localN = HUGE_VAL;
  try {
    const Calibration calibration(*system, control, {true, false});
    ADD_FAILURE();
  } catch (const std::exception& error) {
    EXPECT_TRUE(Contains(error.what(), "30010209: the site misses its only horizontal point"));
  }
}

// A site of its own projection is the same at every longitude.
TEST_F(Calibrate, HoldsAcrossTheAntimeridian) {
  constexpr double kMetres = 2e-8, kRadians = 1e-14;  // longitudes of pi, differences from them
  const auto system =
      ParseSystem(R"({"global": {"ellipsoid": "WGS84"}})", "system.json", ProjectionNeed::optional);
  const std::vector<ControlPoint> original = ReadControl({kExample + "control.csv"}).points;
  const Calibration expected(*system, original, {});
  for (const double turn : {174.4, 174.4 - 360, 174.4 + 360}) {
    for (const bool centreOnFirst : {false, true}) {
      const Calibration there(*system, original, {false, centreOnFirst});
      std::vector<ControlPoint> control = original;
      for (ControlPoint& point : control) {  // from 5.5 to 5.8 degrees: on both sides of 180
        point.given.globalE += turn;
        if (turn < 180) point.given.globalE = std::remainder(point.given.globalE, 360.0);
      }
      const Calibration moved(*system, control, {false, centreOnFirst});
      for (std::size_t i = 0; i < control.size(); ++i) {
        EXPECT_NEAR(moved.Points()[i].globalN, there.Points()[i].globalN, kMetres);
        EXPECT_NEAR(moved.Points()[i].globalE, there.Points()[i].globalE, kMetres);
      }
      EXPECT_NEAR(*moved.Rms(), *there.Rms(), kMetres);
      const std::string text = R"({"global": {"ellipsoid": "WGS84"}})";
      const auto saved = ParseSystem(moved.SystemText(text, "a", "a"), "site.json");
      const auto& given = control[3].given;
      double n = given.globalN * kRadPerDeg, e = given.globalE * kRadPerDeg, h = given.globalH;
      ASSERT_TRUE(saved->Chain().ToLocal(n, e, h));
      EXPECT_NEAR(given.localN - n, moved.Points()[3].residualN, kMetres);
      ASSERT_TRUE(saved->Chain().ToGlobal(n, e, h));
      EXPECT_NEAR(std::remainder(e - given.globalE * kRadPerDeg, kTwoPi), 0, kRadians);
    }
  }
}

TEST_F(Calibrate, LeavesHeightsWithoutControlWithoutResiduals) {
  std::vector<ControlPoint> control = ReadControl({kExample + "control.csv"}).points;
  for (ControlPoint& point : control) point.given.use = 2;  // horizontal
  const auto system = ParseSystem(ReadText(kExample + "netherlands.json"), "netherlands.json");
  const Calibration calibration(*system, control, {});
  EXPECT_TRUE(Contains(CalibrationText(calibration), "No control heights"));
  for (const auto& point : calibration.Points()) EXPECT_EQ(point.residualH, DBL_MAX);
  EXPECT_TRUE(calibration.Rms() && calibration.RotationError());
}

// Four heights on one meridian, 43 m lower on average: the solver gives no plane.
TEST_F(Calibrate, ShiftsHeightsInOneLineAndSaysSo) {
  Write("system.json", R"({"global": {"ellipsoid": "GRS80"}})");
  Write("line.csv",
        "name,lat,lon,h,local_n,local_e,local_h\nA,52,5,100,0,0,57.01\nB,52.01,5,110,1112.7,0,67\n"
        "C,52.02,5,120,2225.5,0,76.98\nD,52.03,5,130,3338.2,0,87.01\n");
  const ProgramRun run = Run("line.csv --system system.json -o site.json");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "Warning: The 4 control heights lie in one line")) << run.out;
  EXPECT_TRUE(Contains(run.out, fmt::format("Shift H, m{:>30}{:>16}", "-43.0000", "0.0071")));
  EXPECT_TRUE(Contains(run.out, "Fits worst in height: C, 0.0267 m"));
  const auto site = nlohmann::json::parse(Read("site.json"))["localization"];
  EXPECT_NEAR(site["shiftH"].get<double>(), -43, 1e-9);
  EXPECT_EQ(site["slopeN"], 0);
  const ProgramRun converted = RunProgram(directory_, "convert --system site.json line.csv -o -");
  EXPECT_TRUE(Contains(Lines(converted.out)[1], ",57.0000")) << converted.out;
}

TEST_F(Calibrate, NamesNorthAndEastExchanged) {
  std::string control = ReadText(kExample + "control.csv");
  Write("control.csv", control.replace(control.find("local_n,local_e"), 15, "local_e,local_n"));
  const ProgramRun run = Run("control.csv --system " + kExample + "system.json -o site.json");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "Warning: The control does not fit (rms 12948.")) << run.out;
  EXPECT_TRUE(Contains(run.out, "its mirror image does (rms 0.03")) << run.out;
}

TEST_F(Calibrate, ReportCarriesItsOrigin) {
  const std::string arguments = kExample + "control.csv -o site.json --report r.html --system ";
  ASSERT_EQ(Run(arguments + kExample + "netherlands.json").status, 0);
  const std::string page = Read("r.html");
  const std::time_t now = std::time(nullptr);
  EXPECT_TRUE(Contains(page, fmt::format("<td>made</td><td>{:%Y-%m-%d }", fmt::gmtime(now))) ||
              Contains(page, fmt::format("<td>made</td><td>{:%Y-%m-%d }", fmt::gmtime(now - 600))));
  for (const char* part :
       {"<td>program</td><td>geomath " GEOMATH_VERSION "</td>",
        "<td>control</td><td>control.csv</td>",
        "<td>system</td><td>netherlands.json: The national grid of the Netherlands",
        "DSTER: Lat0 52.15616055", "East0 155000", "ellipsoid a 6377397.155, 1/f 299.1528",
        "<td>30010209</td><td>52.4841730140</td><td>5.5194111220</td><td>103.7513</td>"
        "<td>499614.0203</td><td>163980.6239</td><td>61.0486</td><td>499614.0813</td>"
        "<td>163980.6579</td>"})
    EXPECT_TRUE(Contains(page, part)) << part;
  ASSERT_EQ(Run(arguments + kExample + "system.json").status, 0);
  EXPECT_TRUE(Contains(Read("r.html"), "STER: Lat0 52.5692")) << "of the site's own";
}

TEST_F(Calibrate, SystemFileRefusesHalfALocalization) {
  nlohmann::json site = nlohmann::json::parse(ReadText(kExample + "netherlands.json"));
  const auto complaint = [&](const nlohmann::json& localization) -> std::string {
    site["localization"] = localization;
    try {
      ParseSystem(site.dump(), "site.json");
    } catch (const std::exception& error) {
      return error.what();
    }
    return "";
  };
  using nlohmann::json;
  EXPECT_TRUE(Contains(complaint(json::object()), "localization.shiftN\" is missing"));
  EXPECT_TRUE(Contains(complaint({{"shiftN", 1}, {"shiftE", 1}, {"scale", 1}}), "rotationDegrees"));
  EXPECT_TRUE(Contains(complaint({{"shiftN", 1}, {"shiftE", 1}, {"scale", 0}, {"rotation", 0}}),
                       "scale\" must be above 0"));
  EXPECT_TRUE(Contains(complaint({{"shiftH", 1}, {"slopeN", 0}, {"slope", 0}}), "slope"));
  EXPECT_EQ(complaint({{"shiftH", 1}, {"slopeN", 0}, {"slopeE", 0}}), "");
  json errors = {{"pivotN", 0}, {"pivotE", 0}, {"height", {1, 0, 0, 1, 0}}};
  const auto uncertain = [&] {
    return complaint({{"shiftH", 1}, {"slopeN", 0}, {"slopeE", 0}, {"covariance", errors}});
  };
  EXPECT_TRUE(Contains(uncertain(), "\"localization.covariance.height\" must be a list of 6"));
  errors["height"] = {1, 0, 2, 1, 0, 1};
  EXPECT_TRUE(Contains(uncertain(), "covariance.height\" is no covariance"));
  errors["height"] = {1, 0, 0, 1, 0, 1};
  EXPECT_EQ(uncertain(), "");
  errors.erase("pivotE");
  EXPECT_TRUE(Contains(uncertain(), "pivotE\" is missing"));

  json plane = {{"shiftN", 1}, {"shiftE", 1}, {"scale", 1}, {"rotationDegrees", 30}};
  const auto rotation = [&] {
    site["localization"] = plane;
    return ParseSystem(site.dump(), "s")->Chain().GetLocalization()->GetPlaneParam(3, 0);
  };
  EXPECT_EQ(rotation(), 30 * kRadPerDeg);
  plane["rotation"] = 0.5;
  EXPECT_TRUE(Contains(complaint(plane), "rotation\" (radians) cannot stand beside"));
  plane.erase("rotationDegrees");
  EXPECT_EQ(rotation(), 0.5) << "radians, as older files have it";
  plane["rotation"] = 12.5;  // degrees where radians belong
  EXPECT_TRUE(Contains(complaint(plane), "\"localization.rotation\" is beyond a full turn"));
}

namespace {

// Pixels of a picture that have a colour, within the softening of edges.
int PixelsOf(const fs::path& picture, int red, int green, int blue) {
  GDALAllRegister();
  const GDALDatasetUniquePtr image(GDALDataset::Open(picture.c_str(), GDAL_OF_RASTER));
  if (!image || image->GetRasterCount() < 3) return -1;
  const int width = image->GetRasterXSize(), height = image->GetRasterYSize();
  std::vector<unsigned char> bands[3];
  for (int b = 0; b < 3; ++b) {
    bands[b].resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    if (image->GetRasterBand(b + 1)->RasterIO(GF_Read, 0, 0, width, height, bands[b].data(), width,
                                              height, GDT_Byte, 0, 0) != CE_None)
      return -1;
  }
  const auto near = [](int a, int b) { return std::abs(a - b) < 12; };
  int count = 0;
  for (std::size_t i = 0; i < bands[0].size(); ++i)
    count += near(bands[0][i], red) && near(bands[1][i], green) && near(bands[2][i], blue);
  return count;
}

}  // namespace

// The site of twelve points as it is, with a point that is 0.5 m off, and with so few that nothing
// is checked.
TEST_F(Calibrate, SaysWhatTheSiteIsWorth) {
  const std::string files = " --system " + kExample + "system.json -o site.json";
  ProgramRun run = Run(kExample + "control.csv" + files);
  EXPECT_TRUE(Contains(run.out, "\nUsable: the control agrees with itself")) << run.out;
  EXPECT_TRUE(Contains(run.out, "20 surplus observations")) << run.out;
  EXPECT_TRUE(Contains(run.out, "The weakest point is point ")) << run.out;
  EXPECT_TRUE(Contains(run.out, "Measure next near grid northing ")) << run.out;

  std::string control = ReadText(kExample + "control.csv");
  const std::string northing = "517342.5074";
  control.replace(control.find(northing), northing.size(), "517343.0074");
  Write("wrong.csv", control);
  run = Run("wrong.csv --report r.html" + files);
  EXPECT_TRUE(Contains(run.out, "Not usable as it is: point 30010378 (northing) does not fit"))
      << run.out;
  EXPECT_TRUE(Contains(run.out, "gives no weight to 30010378")) << run.out;
  EXPECT_TRUE(Contains(Read("r.html"), "<p class=\"verdict\">Not usable as it is: point 30010378"));

  std::size_t end = 0;
  for (int line = 0; line < 3; ++line) end = control.find('\n', end) + 1;
  Write("two.csv", control.substr(0, end));
  run = Run("two.csv" + files);
  EXPECT_TRUE(Contains(run.out, "Not to be judged: the positions are fitted exactly")) << run.out;
}

// A point of small weight may be half a metre off.
TEST_F(Calibrate, TakesStandardDeviationsOfControl) {
  std::string control = ReadText(kExample + "control.csv"), weighted;
  const std::string northing = "517342.5074";
  control.replace(control.find(northing), northing.size(), "517343.0074");
  std::istringstream lines(control);
  for (std::string line; std::getline(lines, line);) {
    const bool header = weighted.empty(), off = Contains(line, "30010378");
    weighted += line +
                (header ? ",sigma_n,sigma_e,sigma_h"
                 : off  ? ",1,1,1"
                        : ",0.03,0.03,0.03") +
                "\n";
  }
  Write("weighted.csv", weighted);
  const std::string files = " --system " + kExample + "system.json -o site.json";
  const ProgramRun run = Run("weighted.csv" + files);
  EXPECT_TRUE(Contains(run.out, "\nUsable: ")) << run.out << run.err;
  weighted.replace(weighted.find(",1,1,1"), 6, ",0,1,1");
  Write("none.csv", weighted);
  EXPECT_TRUE(Contains(Run("none.csv" + files).err, "sigma_n: a standard deviation is above 0"));

  // What is said is tested: of the millimetres that are stated here the residuals make nothing.
  std::string small = weighted;
  for (auto at = small.find("0.03,0.03"); at != std::string::npos; at = small.find("0.03,0.03"))
    small.replace(at, 4, "0.001");
  small.replace(small.find(",0,1,1"), 6, ",1,1,1");
  Write("small.csv", small);
  const ProgramRun known = Run("small.csv --sigma-known --sigma-common 0.3,0.4,0.02" + files);
  EXPECT_TRUE(Contains(known.out, "The residuals of positions are larger than the standard"))
      << known.out << known.err;
  EXPECT_TRUE(Contains(known.out, "share, 500 mm in position and 20 mm in height")) << known.out;
  const double shift =
      ParseSystem(Read("site.json"), "s")->SiteUncertainty()->covariance.ofPlane[1][1];
  EXPECT_GT(shift, 0.16);
  EXPECT_LT(shift, 0.17);
  EXPECT_TRUE(Contains(Run("small.csv --sigma-common 1,1,-1" + files).err, "--sigma-common"));
}

// A receiver's covariances are those of the grid, but for the convergence of the meridian (0.3 degrees)
// and the scale; with and without a projection in the system.
TEST_F(Calibrate, CarriesCovariancesOfPositionsToTheGrid) {
  std::istringstream lines(ReadText(kExample + "control.csv"));
  std::string control;
  for (std::string line; std::getline(lines, line);)
    control += line +
               (control.empty() ? ",global_sigma_n,global_sigma_e,global_sigma_h,global_corr_ne"
                                : ",0.01,0.05,0.03,0.3") +
               "\n";
  Write("control.csv", control);
  const auto points = ReadControl({(directory_ / "control.csv").string()}).points;
  for (const char* name : {"netherlands.json", "system.json"}) {
    const auto system = ParseSystem(ReadText(kExample + name), name, ProjectionNeed::optional);
    const Calibration calibration(*system, points, {});
    for (const PointCovariance& covariance : calibration.GridCovariances()) {
      EXPECT_NEAR(std::sqrt(covariance.of[0][0]), 0.01, 2e-4) << name;
      EXPECT_NEAR(std::sqrt(covariance.of[1][1]), 0.05, 2e-4) << name;
      EXPECT_NEAR(std::sqrt(covariance.of[2][2]), 0.03, 2e-4) << name;
      EXPECT_NEAR(covariance.of[0][1] / (0.01 * 0.05), 0.3, 0.04) << name;
    }
    const auto adjusted = AdjustSite(calibration);
    ASSERT_TRUE(adjusted);
    // A northing is five times as good as an easting, and checks itself better.
    EXPECT_LT(adjusted->At(0, 0).detectable, adjusted->At(0, 1).detectable) << name;
  }
  const auto complaint = [&](const char* columns, const char* values) {
    Write("wrong.csv", std::string("name,lat,lon,h,local_n,local_e,local_h,") + columns +
                           "\nA,52,5,0,1,1,1," + values + "\n");
    return Run("wrong.csv --system " + kExample + "system.json -o s.json").err;
  };
  EXPECT_TRUE(Contains(complaint("sigma_n", "0.1"), "sigma_n and sigma_e go together"));
  EXPECT_TRUE(Contains(complaint("corr_ne", "0.1"), "corr_ne wants sigma_n and sigma_e"));
  EXPECT_TRUE(Contains(complaint("sigma_n,sigma_e,corr_ne", "1,1,1.5"), "between -1 and 1"));
  EXPECT_TRUE(Contains(complaint("global_sigma_n,global_sigma_e,global_sigma_h,global_corr_ne,"
                                 "global_corr_nh,global_corr_eh",
                                 "1,1,1,0.9,0.9,-0.9"),
                       "contradict each other"));
}

TEST_F(Calibrate, ReportIsOnePageThatABrowserDraws) {
  std::string control = ReadText(kExample + "control.csv");
  control.replace(control.find("30010209"), 8, "<b>&1</b>");
  Write("control.csv", control);
  ASSERT_EQ(
      Run("control.csv --system " + kExample + "system.json -o site.json --report r.html").status,
      0);
  const std::string page = Read("r.html");
  EXPECT_EQ(CountOf(page, "<circle"), 3 * 12);  // residuals, uncertainty, heights
  EXPECT_EQ(CountOf(page, "<ellipse"), 12);
  EXPECT_EQ(CountOf(page, "<line"), 12);
  EXPECT_TRUE(Contains(page, "2 km") && Contains(page, "residuals: 50 mm"));
  EXPECT_TRUE(Contains(page, "&lt;b&gt;&amp;1&lt;/b&gt;") && !Contains(page, "<b>"));
  EXPECT_FALSE(Contains(page, "src=") || Contains(page, "href=") || Contains(page, "@import"));

  if (std::system("command -v chromium >/dev/null 2>&1") != 0)
    GTEST_SKIP() << "chromium is absent: the page was not looked at in a browser";
  const std::string browse =
      "cd '" + directory_.string() +
      "' && timeout 100 chromium --headless --no-sandbox --disable-gpu --disable-quic "
      "--no-first-run --disable-background-networking --disable-component-update --disable-sync "
      "--user-data-dir=profile --window-size=900,4600 ";
  const std::string address = " 'file://" + (directory_ / "r.html").string() + "'";
  ASSERT_EQ(std::system((browse + "--screenshot=shot.png" + address + " 2>chromium.txt").c_str()),
            0)
      << Read("chromium.txt");
  // Twelve discs of radius 4 (50 pixels each, less arrows over them) and twice twelve of radius 3, and
  // the arrows; ellipses, and the darkest shading.
  const int blue = PixelsOf(directory_ / "shot.png", 0x1a, 0x5f, 0xb4);
  EXPECT_GT(blue, 36 * 10);
  EXPECT_LT(blue, 36 * 60);
  EXPECT_GT(PixelsOf(directory_ / "shot.png", 0x81, 0x3d, 0x9c), 12 * 10);
  EXPECT_GT(PixelsOf(directory_ / "shot.png", 110, 160, 215), 500);
  EXPECT_GT(PixelsOf(directory_ / "shot.png", 0xc0, 0x1c, 0x28), 12 * 10);
  ASSERT_EQ(std::system((browse + "--dump-dom" + address + " >dom.txt 2>chromium.txt").c_str()), 0);
  EXPECT_EQ(CountOf(Read("dom.txt"), "<td>both</td>"), 12);
}
