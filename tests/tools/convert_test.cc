#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "tests/shift/ntv2_bytes.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

// A directory of its own with the system file, for every test.
class Convert : public ::testing::Test {
 protected:
  void SetUp() override { Write("system.json", BritainSystem()); }

  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }
  std::string Read(const char* name) { return ReadText(directory_ / name); }
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "convert --system system.json " + arguments);
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

// Published position of TP03 and its grid coordinates by an independent evaluation of the
// seven-parameter chain, to 0.1 mm.
constexpr const char* kHeader = "name,lat,lon,h\n";
constexpr const char* kTp03 = "TP03,50.43885825610,-4.10864563561,215.251";
constexpr const char* kTp03Grid = "62015.2109,250357.8185,165.6607";

}  // namespace

TEST_F(Convert, AddsResultsAndLeavesOtherColumnsAlone) {
  Write("in.csv",
        "id,remark,lat0,lon, LAT ,h,lon2\n"
        "007,\"a \"\"b\"\", c\",1,-4.10864563561,50.43885825610,215.251,1.50\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(Read("out.csv"),
            "id,remark,lat0,lon, LAT ,h,lon2,n,e,h_local\n"
            "007,\"a \"\"b\"\", c\",1,-4.10864563561,50.43885825610,215.251,1.50," +
                std::string(kTp03Grid) + "\n");
}

TEST_F(Convert, ReadsAnglesAsTextSeparatorsAndLineEnds) {
  Write("in.csv", "B;L;H\r\n50 26 19.88972196 N;W 4\xC2\xB0 6' 31.12428820\";215.251\r\n");
  const ProgramRun run = Run("in.csv -o - --columns B,L,H --results y,x,z");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "B;L;H;y;x;z\r\n50 26 19.88972196 N;W 4\xC2\xB0 6' 31.12428820\";215.251;"
            "62015.2109;250357.8185;165.6607\r\n");
}

// EPSG Guidance Note 7-2, Lambert Conic Conformal (2SP), NAD27 / Texas South Central: the note prints
// hundredths of US survey feet.
TEST_F(Convert, GridCoordinatesAreInTheUnitsOfTheSystem) {
  constexpr double kPrinted = 0.0055;
  const auto numbers = [](const ProgramRun& run) {
    std::istringstream lines(run.out);
    std::array<double, 3> values{};
    std::string name, rest;
    for (double& value : values) {
      lines >> name >> value;
      std::getline(lines, rest);
    }
    return values;
  };
  const auto convert = [&](const std::string& arguments) {
    return RunProgram(directory_, "convert --system texas.json " + arguments);
  };
  ASSERT_EQ(RunProgram(directory_, "system --epsg 32040 --no-datum -o texas.json").status, 0);
  const ProgramRun run = convert("28.5 -96 100");
  EXPECT_TRUE(Contains(run.out, " US ft\n")) << run.out << run.err;
  const auto feet = numbers(run);
  EXPECT_NEAR(feet[0], 254759.80, kPrinted);
  EXPECT_NEAR(feet[1], 2963503.91, kPrinted);
  EXPECT_EQ(feet[2], 100);
  const auto metres = numbers(convert("28.5 -96 100 --unit m,ft --decimals 9"));
  EXPECT_NEAR(metres[0], feet[0] * 1200 / 3937, 1e-4);
  EXPECT_NEAR(metres[2], 100 / 0.3048, 1e-9);
  for (const char* way : {"254759.80 2963503.91 100", "77650.9423 903277.7980 100 --unit m",
                          "254760.3095 2963509.837 328.0839895 --unit foot"}) {
    const auto back = numbers(convert(std::string("--inverse ") + way));
    EXPECT_NEAR(back[0], 28.5, 2e-8) << way;
    EXPECT_NEAR(back[1], -96, 2e-8) << way;
    EXPECT_NEAR(back[2], 100, 1e-6) << way;
  }
  EXPECT_TRUE(Contains(convert("28.5 -96 0 --unit fot").err, "did you mean \"foot\""));
}

TEST_F(Convert, WorksBetweenStandardInputAndOutput) {
  Write("in.csv", std::string(kHeader) + kTp03 + "\n");
  const ProgramRun run = Run("- -o - --decimals 1 < in.csv");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out,
            "name,lat,lon,h,n,e,h_local\n" + std::string(kTp03) + ",62015.2,250357.8,165.7\n");
}

TEST_F(Convert, InverseUndoesForwardOverThePublishedPoints) {
  const std::string points = GEOMATH_SOURCE_DIR "/examples/great_britain/points.csv";
  ASSERT_EQ(Run("'" + points + "' -o grid.csv --decimals 6").status, 0);
  const ProgramRun run = Run("grid.csv -o back.csv --inverse --decimals 6");
  ASSERT_EQ(run.status, 0) << run.err;
  const auto lines = Lines(Read("back.csv"));
  ASSERT_EQ(lines.size(), 41u);
  EXPECT_EQ(lines[0],
            "name,lat,lon,h,easting_m,northing_m,height_m,n,e,h_local,lat_2,lon_2,h_global_2");
  // The inverse series of TTMProj ends its footpoint search at 1 mm; St Kilda is 6.6 degrees out.
  constexpr double kBackDegrees = 1e-6;
  constexpr double kBackMetres = 1e-5;  // heights are not touched by the projection
  for (std::size_t i = 1; i < lines.size(); ++i) {
    double lat, lon, h, lat2, lon2, h2;
    ASSERT_EQ(
        std::sscanf(lines[i].c_str(),
                    "%*[^,],%lf,%lf,%lf,%*[^,],%*[^,],%*[^,],%*[^,],%*[^,],%*[^,],%lf,%lf,%lf",
                    &lat, &lon, &h, &lat2, &lon2, &h2),
        6)
        << lines[i];
    EXPECT_NEAR(lat2, lat, kBackDegrees) << lines[i];
    EXPECT_NEAR(lon2, lon, kBackDegrees) << lines[i];
    EXPECT_NEAR(h2, h, kBackMetres) << lines[i];
  }
}

TEST_F(Convert, FailingRowsKeepTheirPlaceAndAreReported) {
  Write("in.csv", std::string(kHeader) + kTp03 + "\n" +
                      "short,50\n"
                      "nan,nan,0,0\n"
                      "\"two\nlines\",50,0,\n"
                      "pole,95,0,0\n"
                      "\n"
                      "comma,50,0,1e400\n"
                      "long,50,0,0,0\n"
                      "deep,50,0,-1.79e308\n" +
                      kTp03 + "\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 1);
  const std::string good = std::string(kTp03) + "," + kTp03Grid + "\n";
  EXPECT_EQ(Read("out.csv"), "name,lat,lon,h,n,e,h_local\n" + good +
                                 "short,50,,,,,\n"
                                 "nan,nan,0,0,,,\n"
                                 "\"two\nlines\",50,0,,,,\n"
                                 "pole,95,0,0,,,\n"
                                 "\n"
                                 "comma,50,0,1e400,,,\n"
                                 "long,50,0,0,0,,,\n"
                                 "deep,50,0,-1.79e308,,,\n" +
                                 good);
  const auto reports = Lines(run.err);
  ASSERT_EQ(reports.size(), 8u) << run.err;
  EXPECT_EQ(reports[0],
            "in.csv, line 3: not converted: the row has 2 fields where the header has 4");
  EXPECT_TRUE(Contains(reports[1], "in.csv, line 4: not converted: lat \"nan\" is not an angle"));
  EXPECT_EQ(reports[2], "in.csv, line 5: not converted: h is empty");
  EXPECT_TRUE(Contains(reports[3], "line 7: not converted: lat 95 degrees is outside -90 to 90"));
  EXPECT_TRUE(Contains(reports[4], "line 9: not converted: h \"1e400\" is not a finite number"));
  EXPECT_TRUE(Contains(reports[5], "line 10: not converted: the row has 5 fields"));
  EXPECT_TRUE(Contains(reports[6], "line 11: not converted: h -1.79e+308 m is outside"));
  EXPECT_EQ(reports[7], "geomath: 7 of 9 rows could not be converted; their results are empty");
}

TEST_F(Convert, NamesTheStepThatRefusesAPoint) {
  Write("in.csv", "n,e,h\n3e7,4e5,0\n");  // farther north than the pole
  const ProgramRun run = Run("in.csv -o - --inverse");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "n,e,h,lat,lon,h_global\n3e7,4e5,0,,,\n");
  EXPECT_EQ(Lines(run.err).at(0),
            "in.csv, line 2: not converted: the projection cannot convert this point");
}

TEST_F(Convert, WrongInputIsExplainedAndLeavesTheOutputAlone) {
  Write("out.csv", "kept");
  Write("good.csv", std::string(kHeader) + kTp03 + "\n");
  Write("empty.csv", "");
  Write("blank.csv", "\n\n");
  Write("names.csv", "name,lattitude,lon,h\n");
  Write("flat.csv", "lat,lon\n50,0\n");
  Write("binary.csv", std::string("PK\0\3\0", 5));
  Write("text.gpkg", "no database");
  struct Case {
    const char* arguments;
    std::vector<const char*> parts;
  };
  const Case cases[] = {
      {"absent.csv -o out.csv", {"absent.csv: cannot be read: No such file"}},
      {"absent.gpkg -o out.csv", {"absent.gpkg: cannot be read: No such file"}},
      {". -o out.csv", {"is a directory"}},
      {"empty.csv -o out.csv", {"empty.csv: is empty", "names of the columns"}},
      {"blank.csv -o out.csv", {"blank.csv: is empty"}},
      {"binary.csv -o out.csv", {"binary.csv: is not a text file"}},
      {"text.gpkg -o out.csv", {"text.gpkg: is no point file"}},
      {"names.csv -o out.csv", {"no column \"lat\"", "did you mean \"lattitude\"", "--columns"}},
      {"good.csv -o out.csv --columns lat,lon,height", {"no column \"height\"", "\"h\""}},
      {"good.csv -o out.csv --columns lat", {"--columns", "names separated by commas"}},
      {"good.csv -o out.csv --inverse", {"no column \"n\"", "N,E,H"}},
      {"flat.csv -o out.csv", {"no column \"h\"", "--fixed-height"}},
      {"good.csv -o good.csv", {"good.csv: is a file that is read"}},
      {"good.csv -o out.xyz", {"out.xyz", ".gpkg"}},
      {"good.csv -o absent/out.csv", {"absent/out.csv: cannot be written"}},
      {"good.csv -o out.csv --results a,b,name", {"--results", "\"name\" already"}},
      {"good.csv", {"name the output with --output FILE"}},
      {"good.csv -o out.csv --system none.json", {"--system"}},
  };
  for (const Case& c : cases) {
    const ProgramRun run = Run(c.arguments);
    EXPECT_EQ(run.status, 2) << c.arguments;
    EXPECT_EQ(run.out, "") << c.arguments;
    for (const char* part : c.parts)
      EXPECT_TRUE(Contains(run.err, part)) << part << " in: " << run.err;
    EXPECT_EQ(Read("out.csv"), "kept") << c.arguments;
  }
  Write("system.json", "{\"global\": 1}");
  const ProgramRun run = Run("good.csv -o out.csv");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "geomath: system.json: ")) << run.err;
}

TEST_F(Convert, HeaderAloneAndFixedHeightAreFine) {
  Write("none.csv", kHeader);
  EXPECT_EQ(Run("none.csv -o out.csv").status, 0);
  EXPECT_EQ(Read("out.csv"), "name,lat,lon,h,n,e,h_local\n");
  Write("flat.csv", "lat,lon\n50.43885825610,-4.10864563561\n");
  const ProgramRun run = Run("flat.csv -o - --fixed-height 215.251");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(Lines(run.out).at(1), std::string("50.43885825610,-4.10864563561,") + kTp03Grid);
}

TEST_F(Convert, WhatWasReadBeforeABreakIsWritten) {
  std::string text = kHeader;
  for (int i = 0; i < 5000; ++i) text += std::string(kTp03) + "\n";
  Write("in.csv", text + "\"never closed,1,2,3\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "line 5002: a quotation mark")) << run.err;
  const auto lines = Lines(Read("out.csv"));
  ASSERT_EQ(lines.size(), 5001u);
  EXPECT_TRUE(Contains(lines.back(), kTp03Grid));
}

TEST_F(Convert, FullDiskIsReported) {
  if (!fs::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  Write("in.csv", std::string(kHeader) + kTp03 + "\n");
  fs::create_symlink("/dev/full", directory_ / "full.csv");
  const ProgramRun run = Run("in.csv -o full.csv");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "full.csv: cannot be written: No space left")) << run.err;
}

// The peak is the same to a few blocks of rows. Kept in memory, the larger input alone would take
// 60 MB.
TEST_F(Convert, MemoryStaysFlat) {
  const std::string row = "50.43885825610,-4.10864563561,215.251," + std::string(960, 'x') + "\n";
  const auto peak = [&](int rows) {
    std::ofstream file(directory_ / "in.csv");
    file << "lat,lon,h,remark\n";
    for (int i = 0; i < rows; ++i) file << row;
    file.close();
    const ProgramRun run = Run("in.csv -o out.csv --jobs 3");
    EXPECT_EQ(run.status, 0) << run.err;
    return run.peakKilobytes;
  };
  constexpr long kSlackKilobytes = 16 << 10;
  EXPECT_LT(peak(60000), peak(6000) + kSlackKilobytes);
}

// The Ordnance Survey's worked example on Airy's ellipsoid. Factors by 40-digit evaluation of the
// complex definition of the projection; PROJ has a convergence of 2.95737669 degrees.
TEST_F(Convert, GivesScaleConvergenceAndCombinedFactor) {
  const char* head = R"({"global": {"ellipsoid": "Airy 1830"}, "projection": {"name": "TMERCSPHER",
      "Central Meridian": -2, "Scale": 0.9996012717, "Lat0": 49, "East0": 400000,
      "North0": -100000})";
  const std::string point =
      " convert --system airy.json 52.657570306 1.717921583 1500 --with "
      "scale,convergence,combined";
  for (const char* axes : {"", R"(, "axes": {"grid": "EN"})", R"(, "axes": {"grid": "SW"})"}) {
    Write("airy.json", std::string(head) + axes + "}");
    const auto lines = Lines(RunProgram(directory_, point).out);
    ASSERT_EQ(lines.size(), 6u) << axes;
    EXPECT_TRUE(Contains(lines[3], " 1.000377315")) << axes << lines[3];
    EXPECT_TRUE(Contains(lines[4], " 2.95737669 deg")) << axes << lines[4];
    EXPECT_TRUE(Contains(lines[5], " 1.000142289")) << axes << lines[5];
  }
}

TEST_F(Convert, TakesAndPrintsOnePosition) {
  EXPECT_EQ(Run("50.43885825610 -4.10864563561 215.251").out,
            "n                         62015.2109 m\n"
            "e                        250357.8185 m\n"
            "h_local                     165.6607 m\n");
  const auto dms =
      Lines(Run("--inverse 62015.2109 250357.8185 165.6607 --angles dms --decimals 0").out);
  EXPECT_TRUE(Contains(dms.at(0), " 50 26 19.89 N")) << dms.at(0);
  EXPECT_TRUE(Contains(dms.at(1), " 4 06 31.12 W")) << dms.at(1);
  // Gons are read back where they are called so.
  const std::string gon = Run("--inverse 62015.2109 250357.8185 165.6607 --angles gon").out;
  EXPECT_TRUE(Contains(gon, "lat_gon                56.0431758")) << gon;
  Write("gon.csv", "lat_gon,lon_gon,h\n56.04317584011,-4.56516181734,215.251\n");
  EXPECT_TRUE(Contains(Run("gon.csv -o - --angles gon").out, kTp03Grid));
  EXPECT_EQ(Run("gon.csv -o -").status, 2);
  EXPECT_EQ(Run("95 0").status, 2);
}

// An easting of 1e8 m on Mercator's map is 898 degrees of longitude.
TEST_F(Convert, RefusesWhatLiesBeyondTheMap) {
  Write("mercator.json", R"({"global": {"ellipsoid": "WGS84"}, "projection": {"name": "MERCATOR",
      "Lon0": 0, "Lat0": 0, "FEast": 0, "FNorth": 0}})");
  const ProgramRun run = RunProgram(directory_, "convert --system mercator.json --inverse 0 1e8");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "beyond the map: its longitude would be 898")) << run.err;
}

// A datum and a transverse Mercator, whose scale there is 0.99988 and whose convergence 1.62 degrees:
// centimetres stay, sqrt(1 + 0.03^2) m become 1.0003 m.
TEST_F(Convert, CarriesUncertainties) {
  Write("in.csv",
        "name,lat,lon,h,sn,se,su\nTP03,50.43885825610,-4.10864563561,215.251,0.03,0.01,0.02\n");
  ProgramRun run = Run("in.csv -o - --sigma sn,se,su");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(
      Contains(run.out, "h_local,sigma_n,sigma_e,sigma_h,ellipse_a,ellipse_b,ellipse_bearing\n"))
      << run.out;
  EXPECT_TRUE(Contains(run.out, std::string(kTp03Grid) + ",0.0300,0.0100,0.0200,0.0300,0.0100,"))
      << run.out;
  run = Run("--sigma 0.0009,0,0,0.0001,0,0.0004 in.csv -o - --sigma-datum 1");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, ",1.0003,0.9999,1.0002,1.0003,0.9999,1.6")) << run.out;
  // Geocentric variances that are equal are equal in every frame; and back.
  run = Run("50.43885825610 -4.10864563561 215.251 --sigma 0.05,0.05,0.05 --sigma-frame xyz");
  EXPECT_TRUE(Contains(run.out, "sigma_n                       0.0500 m")) << run.out;
  run = Run("--inverse 250357.8185 62015.2109 165.6607 --sigma 0.03,0.01,0.02");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.out, "sigma_h                       0.0200 m")) << run.out;
}

// Nodes that state 0.25 in latitude, and in longitude the number of their row.
TEST_F(Convert, TakesTheAccuraciesOfNodes) {
  const auto none = [](double, double) { return 0.0; };
  const Ntv2SubGrid grid{"ALL", "NONE", 180000, 183600, -3600, 3600, 900, 900, none, none};
  std::vector<std::byte> bytes = Ntv2Bytes({{grid}});
  Write("grid.gsb", {reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  Write("shifted.json", R"({"global": {"ellipsoid": "GRS80"}, "local": {"ellipsoid": "GRS80"},
      "projection": {"name": "TMERC", "Central Meridian": 0, "Scale": 1, "Lat0": 0, "East0": 0,
      "North0": 0}, "shifts": [{"file": "grid.gsb", "place": "before datum"}]})");
  // The third row, 0.25 ft and 2 ft.
  ProgramRun run = RunProgram(
      directory_, "convert --system shifted.json 50.5 0 0 --sigma 0,0,0.01 --sigma-nodes ft");
  EXPECT_TRUE(Contains(run.out, "sigma_n                       0.0762 m")) << run.out << run.err;
  EXPECT_TRUE(Contains(run.out, "sigma_e                       0.6096 m")) << run.out;
  EXPECT_TRUE(Contains(Run("50 -4 0 --sigma 1,1,1 --sigma-nodes m").err, "no shift grid"));
  EXPECT_TRUE(Contains(Run("50 -4 0 --sigma 1,1,1 --sigma-nodes x").err, "--sigma-nodes"));
}

TEST_F(Convert, RefusesUncertaintiesThatAreNone) {
  Write("in.csv", "lat,lon,h,s\n50.4,-4.1,215,0.03\n50.4,-4.1,215,-0.03\n50.4,-4.1,215,x\n");
  const ProgramRun run = Run("in.csv -o - --sigma s,s,s");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "line 3")) << run.err;
  EXPECT_TRUE(Contains(run.err, "line 4: not converted: s ")) << run.err;
  EXPECT_TRUE(Contains(Run("in.csv -o - --sigma s,t,s").err, "there is no column \"t\""));
  EXPECT_TRUE(Contains(Run("in.csv -o - --sigma s,s").err, "--sigma: three"));
  EXPECT_TRUE(Contains(Run("in.csv -o - --sigma 1,s,s").err, "--sigma: give numbers"));
  EXPECT_TRUE(Contains(Run("in.csv -o - --sigma 1,1,1 --sigma-datum -1").err, "--sigma-datum"));
  EXPECT_TRUE(Contains(Run("--inverse 1 2 --sigma 1,1,1 --sigma-frame xyz").err, "--sigma-frame"));
}
