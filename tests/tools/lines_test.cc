// geomath factors, measure and traverse.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

constexpr const char* kMga55 =
    R"({"local": {"ellipsoid": "GRS80"}, "projection": {"name": "TMERC", "Central Meridian": 147,
    "Scale": 0.9996, "Lat0": 0, "East0": 500000, "North0": 10000000}, "axes": {"grid": "EN"})";

// GDA technical manual: Flinders Peak and Buninyong with their published positions, and the grid
// coordinates of the exact projection.
constexpr const char* kMarks =
    "name,lat,lon,h\n"
    "Flinders Peak,-37 57 03.7203,144 25 29.5244,351\n"
    "Buninyong,-37 39 10.1561,143 55 35.3839,745\n";

class Lines : public ::testing::Test {
 protected:
  void SetUp() override {
    Write("mga55.json", std::string(kMga55) + "}");
    Write("marks.csv", kMarks);
  }

  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }
  ProgramRun Run(const std::string& arguments) { return RunProgram(directory_, arguments); }

  // The fields of a row of CSV output by their names; empty ones are NaN.
  static std::map<std::string, double> Row(const std::string& text, std::size_t row) {
    const std::vector<std::string> lines = ::Lines(text);
    std::map<std::string, double> fields;
    std::istringstream names(lines.at(0)), values(lines.at(row));
    for (std::string name, value; std::getline(names, name, ',');) {
      std::getline(values, value, ',');
      char* end = nullptr;
      const double number = std::strtod(value.c_str(), &end);
      fields[name] = end == value.c_str() ? std::nan("") : number;
    }
    return fields;
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

// The figures are the exact projection and geodesic in 40 digits, those of the manual among them.
constexpr double kMetres = 6e-5, kSeconds = 1.1e-4, kPrinted = 1e-9;

}  // namespace

TEST_F(Lines, MeasureThePublishedLine) {
  const ProgramRun run = Run("measure --system mga55.json marks.csv -o -");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(std::isnan(Row(run.out, 1)["grid_distance"]));  // no line leads to the first point
  auto line = Row(run.out, 2);
  EXPECT_NEAR(line["grid_distance"], 54992.27923, kMetres);
  EXPECT_NEAR(line["grid_bearing"], 305 + 17 / 60.0 + 21.18499 / 3600, kSeconds / 3600);
  EXPECT_NEAR(line["geodesic_distance"], 54972.271139, kMetres);
  EXPECT_NEAR(line["azimuth"], 306 + 52 / 60.0 + 5.3731 / 3600, kSeconds / 3600);
  EXPECT_NEAR(line["back_azimuth"], 127 + 10 / 60.0 + 25.0703 / 3600, kSeconds / 3600);
  EXPECT_NEAR(line["arc_to_chord_1"], 19.4591, kSeconds);
  EXPECT_NEAR(line["arc_to_chord_2"], -20.6668, kSeconds);
  EXPECT_NEAR(line["scale_1"], 1.000230559, kPrinted);
  EXPECT_NEAR(line["scale_2"], 1.000505669, kPrinted);
  EXPECT_NEAR(line["line_scale"], 1.0003639669705, kPrinted);
  EXPECT_NEAR(line["combined_factor"], line["line_scale"] * line["elevation_factor"], kPrinted);
  EXPECT_NEAR(line["ground_distance"], line["grid_distance"] / line["combined_factor"], 2e-4);

  // From the grid, in its axes, and in degrees, minutes and seconds.
  ASSERT_EQ(Run("convert --system mga55.json marks.csv -o grid.csv").status, 0);
  const ProgramRun again = Run("measure --grid --angles dms --system mga55.json grid.csv -o -");
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_TRUE(Contains(again.out, ",305 17 21.1850,")) << again.out;
  EXPECT_TRUE(Contains(again.out, ",1 35 03.647"));
}

TEST_F(Lines, MeasureInPairsAndFromOnePoint) {
  const std::string more =
      std::string(kMarks) + "\nbad,95,1,0\nthird,-37.7,144,0\nlast,-37.8,144,0\n";
  Write("more.csv", more);
  const ProgramRun run = Run("measure --system mga55.json more.csv -o -");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "more.csv, line 5: not measured: lat 95 degrees")) << run.err;
  EXPECT_TRUE(
      Contains(run.err, "more.csv, line 6: not measured: the point that the line comes from"));
  const double last = Row(run.out, 6)["grid_distance"];  // row 3 is blank
  EXPECT_NEAR(last, 11100, 50);

  const ProgramRun pairs = Run("measure --pairs --system mga55.json more.csv -o -");
  EXPECT_NEAR(Row(pairs.out, 2)["geodesic_distance"], 54972.2711, kMetres);
  EXPECT_TRUE(std::isnan(Row(pairs.out, 5)["geodesic_distance"]));
  const ProgramRun fan = Run("measure --from-first --system mga55.json more.csv -o -");
  const ProgramRun station =
      Run("measure --from \"-37 57 03.7203,144 25 29.5244,351\" --system mga55.json more.csv -o -");
  EXPECT_EQ(Row(fan.out, 6)["slope_distance"], Row(station.out, 6)["slope_distance"]);
  EXPECT_EQ(Row(station.out, 1)["slope_distance"], 0);

  EXPECT_EQ(Run("measure --pairs --from-first --system mga55.json marks.csv -o -").status, 2);
  EXPECT_EQ(Run("measure --from 1 --system mga55.json marks.csv -o -").status, 2);
  EXPECT_EQ(Run("measure --system mga55.json marks.csv").status, 2);
}

// A geoid that is a plane in latitude and longitude: its slopes over the radii (Heiskanen and Moritz
// 1967, 2-22), Laplace's correction and those of the sight by their formulas.
TEST_F(Lines, MeasureDeflectionsOfThePlumbLine) {
  std::string nodes = "ncols 4\nnrows 4\nxllcenter 143\nyllcenter -39\ncellsize 1\n";
  for (int row = 3; row >= 0; --row)
    for (int column = 0; column < 4; ++column)
      nodes += std::to_string(5 + 2 * row - 3 * column) + (column < 3 ? " " : "\n");
  Write("plane.asc", nodes);
  Write("geoid.json", std::string(kMga55) + R"(, "geoid": {"grid": "plane.asc"}})");
  const ProgramRun run = Run("measure --deflections --system geoid.json marks.csv -o -");
  ASSERT_EQ(run.status, 0) << run.err;
  auto line = Row(run.out, 2);
  constexpr double kB = -(37 + 57 / 60.0 + 3.7203 / 3600) * 3.14159265358979 / 180;
  const double w2 = 1 - 0.00669438002290 * std::sin(kB) * std::sin(kB), N = 6378137 / std::sqrt(w2);
  const double M = N * (1 - 0.00669438002290) / w2, h = 351;
  constexpr double kSecondsOfDegree = 3600 * 180 / 3.14159265358979 * 180 / 3.14159265358979;
  const double xi = -2 * kSecondsOfDegree / (M + h);
  const double eta = 3 * kSecondsOfDegree / ((N + h) * std::cos(kB));
  constexpr double kWritten = 6e-4, kUndulation = 2e-4;  // seconds; 10 m of height in the radii
  EXPECT_NEAR(line["xi_1"], xi, kWritten + kUndulation);
  EXPECT_NEAR(line["eta_1"], eta, kWritten + kUndulation);
  EXPECT_NEAR(line["azimuth_correction_1"], -eta * std::tan(kB), kWritten);
  const double azimuth = line["azimuth"] * 3.14159265358979 / 180;
  EXPECT_NEAR(line["zenith_correction_1"], xi * std::cos(azimuth) + eta * std::sin(azimuth),
              kWritten + kUndulation);
  EXPECT_LT(std::abs(line["direction_correction_1"]), 0.1);  // a level sight
  EXPECT_TRUE(std::isnan(Row(run.out, 1)["xi_1"]));
  EXPECT_EQ(Run("measure --deflections --system mga55.json marks.csv -o -").status, 2);
}

// A ground system of k times the grid, turned: all scales are k times as large, its bearings turn and
// the convergence goes the other way; what is on the ellipsoid stays.
TEST_F(Lines, SiteAndGroundBelongToTheGrid) {
  constexpr double kScale = 1.0002, kTurned = 10;
  Write("ground.json", std::string(kMga55) +
                           R"(, "ground": {"scale": 1.0002, "rotation": 10,
                           "originN": 5800000, "originE": 250000}})");
  const ProgramRun plain = Run("measure --system mga55.json marks.csv -o -");
  const ProgramRun run = Run("measure --system ground.json marks.csv -o -");
  ASSERT_EQ(run.status, 0) << run.err;
  auto expected = Row(plain.out, 2), line = Row(run.out, 2);
  EXPECT_NEAR(line["grid_distance"], kScale * expected["grid_distance"], 2 * kMetres);
  EXPECT_NEAR(line["scale_1"], kScale * expected["scale_1"], kPrinted);
  EXPECT_NEAR(line["geodesic_distance"], expected["geodesic_distance"], 2 * kMetres);
  EXPECT_NEAR(line["arc_to_chord_1"], expected["arc_to_chord_1"], 2 * kSeconds);
  const double turned = std::remainder(line["grid_bearing"] - expected["grid_bearing"], 360);
  EXPECT_NEAR(std::abs(turned), kTurned, 1e-7);
  EXPECT_NEAR(line["convergence_1"] + turned, expected["convergence_1"], 1e-7);
}

// Krovak's grid counts south and west; bearings and convergence count from north all the same.
TEST_F(Lines, BearingsCountFromNorthInEveryGrid) {
  Write("krovak.json", R"({"local": {"ellipsoid": "Bessel 1841"}, "projection": {"name": "KROVAK",
      "Lat0": 49.5, "Lon0": 42.5, "dLon": 17.66666666666667, "Uq": 59.7118602500,
      "S0": 78.5, "Scale": 0.9999, "East0": 0, "North0": 0}})");
  Write("two.csv", "lat,lon,h\n50,15,300\n50.1,15,300\n");
  const ProgramRun run = Run("measure --system krovak.json two.csv -o -");
  ASSERT_EQ(run.status, 0) << run.err;
  auto line = Row(run.out, 2);
  EXPECT_NEAR(std::remainder(line["azimuth"], 360), 0, 1e-7);
  EXPECT_NEAR(std::remainder(line["grid_bearing"] + line["convergence_1"], 360), 0, 0.01);
  EXPECT_LT(std::abs(line["convergence_1"]), 10);
}

TEST_F(Lines, FactorsOfPointsAndOfOne) {
  const ProgramRun run = Run("factors --system mga55.json marks.csv -o -");
  ASSERT_EQ(run.status, 0) << run.err;
  auto factors = Row(run.out, 1);
  EXPECT_NEAR(factors["scale"], 1.000230559, kPrinted);
  EXPECT_NEAR(factors["convergence"], 1 + 35 / 60.0 + 3.6473 / 3600, kSeconds / 3600);
  EXPECT_NEAR(factors["areal_scale"], 1.000230559 * 1.000230559, 2 * kPrinted);
  EXPECT_NEAR(factors["elevation_factor"], 1 - 351 / 6372e3, 1e-7);
  const ProgramRun one = Run("factors --system mga55.json --at \"-37 57 03.7203,144 25 29.5244\"");
  EXPECT_EQ(one.status, 0);
  EXPECT_TRUE(Contains(one.out, "scale                   1.00023055")) << one.out;
  const ProgramRun grid = Run("factors --grid --at 5796489.777,273741.297 --system mga55.json");
  EXPECT_TRUE(Contains(grid.out, "scale                   1.00023055")) << grid.out << grid.err;
  EXPECT_EQ(Run("factors --system mga55.json --at 89,147,0").status, 0);
  EXPECT_EQ(Run("factors --system mga55.json --at 90,147,0").status, 1);
  EXPECT_EQ(Run("factors --system mga55.json").status, 2);
  EXPECT_EQ(Run("factors --system mga55.json --at 1").status, 2);
}

// Values with commas are one argument, whatever follows them.
TEST_F(Lines, ListsEndBeforeTheNextArgument) {
  const std::string system = " --system mga55.json";
  Write("field.csv", "angle,distance,h\n90,100,\n");
  for (const char* arguments :
       {"factors marks.csv -o -", "measure -o - --from -37,144 marks.csv",
        "convert -o - --with scale,combined marks.csv", "factors --at -37,144,3",
        "traverse -o - --azimuth 1 --end 5800000,300100 --start 5800000,300000,100 field.csv",
        "traverse -o - --start 5800000,300000 --backsight 5800000,300100 field.csv"}) {
    const ProgramRun run = Run(arguments + system);
    EXPECT_EQ(run.status, 0) << arguments << ": " << run.err;
  }
}

// Observations of lines that `measure` gives lead back to their points, in every kind of distance.
TEST_F(Lines, TraverseComesBackToItsMarks) {
  Write("stations.csv",
        "n,e,h\n5800000,300000,100\n5800400,300500,130\n5800300,301100,90\n5800900,301300,110\n");
  const ProgramRun sheet = Run("measure --grid --decimals 6 --system mga55.json stations.csv -o -");
  ASSERT_EQ(sheet.status, 0) << sheet.err;
  const std::string ends = " --start 5800000,300000,100 --azimuth 12.5";
  for (const char* kind : {"slope", "ground", "geodesic", "grid"}) {
    std::string field = "angle,distance,h,remark\n";
    double back = 12.5;
    for (std::size_t leg = 2; leg <= 4; ++leg) {
      auto line = Row(sheet.out, leg);
      std::ostringstream row;
      row.precision(14);
      row << line["azimuth"] - back << ',' << line[std::string(kind) + "_distance"] << ','
          << line["h"] << ",x\n";
      field += row.str();
      back = line["back_azimuth"];
    }
    Write("field.csv", field + "# done\n");
    const ProgramRun run =
        Run("traverse field.csv -o - --system mga55.json --distances " + std::string(kind) + ends);
    ASSERT_EQ(run.status, 0) << run.err;
    auto last = Row(run.out, 3);
    EXPECT_NEAR(last["n"], 5800900, 1e-4) << kind;
    EXPECT_NEAR(last["e"], 301300, 1e-4) << kind;
    EXPECT_TRUE(Contains(run.out, "# done\n"));
  }

  const std::string known = ends + " --end 5800900.010,301300.000,110 --adjust ";
  for (const char* adjust : {"bowditch", "least-squares"}) {
    const ProgramRun run =
        Run("traverse field.csv -o out.csv --system mga55.json --distances grid" + known + adjust);
    ASSERT_EQ(run.status, 0) << run.err;
    EXPECT_TRUE(Contains(run.out, "misclosure, north            -0.0100 m")) << run.out;
    EXPECT_NEAR(Row(ReadText(directory_ / "out.csv"), 3)["n"], 5800900.010, 1e-4);
  }
}

TEST_F(Lines, TraverseRefusesWhatCannotBe) {
  Write("field.csv", "angle,distance,h\n90,100,\n100,50,\n80,,\n");
  const std::string begin = "traverse field.csv -o out.csv --system mga55.json ";
  const std::string start = begin + "--start 5800000,300000,100 --azimuth 1 ";
  const auto refused = [&](const std::string& arguments, const char* why) {
    const ProgramRun run = Run(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_TRUE(Contains(run.err, why)) << run.err;
  };
  EXPECT_EQ(Run(start).status, 0);
  refused(begin + "--start 5800000,300000", "where the first angle counts from");
  refused(begin + "--start 5800000 --azimuth 1", "--start: must be N,E");
  refused(start + "--backsight 1,2", "exclude each other");
  refused(start + "--adjust bowditch", "--adjust: needs the known --end");
  refused(start + "--foresight 5800000,300000", "which is not given");
  refused(start + "--distances taped", "--distances");
  Write("field.csv", "angle,distance\n90,100\n100,-5\n");
  refused(start, "cannot be computed");
  refused(start + "--end 5800000,300000 --end-azimuth 3", "closing angle");
  Write("field.csv", "angle,distance\n90,100\n80,\n100,5\n");
  refused(start, "field.csv, line 4: a row without distance is the last one");
  Write("field.csv", "angle,distance\n90 61 00,100\n");
  refused(start, "field.csv, line 2: angle");
  Write("field.csv", "angle,length\n90,100\n");
  refused(start, "has no column \"distance\"");
}
