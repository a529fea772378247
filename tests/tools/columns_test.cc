// How the program finds coordinates in the files that surveyors have, and what it refuses to guess.
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

// TP03 of the published points of Great Britain; grid coordinates by an independent evaluation of
// the seven-parameter chain, to 0.1 mm.
constexpr const char* kTp03 = "50.43885825610,-4.10864563561,215.251";
constexpr const char* kTp03Grid = "62015.2109,250357.8185,165.6607";

class Columns : public ::testing::Test {
 protected:
  void SetUp() override { WriteText(directory_ / "system.json", BritainSystem()); }

  ProgramRun Convert(const std::string& text, const std::string& options = "") {
    WriteText(directory_ / "in.csv", text);
    return Run("in.csv -o - " + options);
  }
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "convert --system system.json " + arguments);
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

}  // namespace

TEST_F(Columns, AreThoseThatInstrumentsWrite) {
  struct Case {
    const char* text;
    const char* options;
    std::string out;
  };
  const std::string tp03 = kTp03, grid = kTp03Grid, results = std::string(",") + kTp03Grid + "\n";
  const Case cases[] = {
      {"Longitude,Latitude,Height\n-4.10864563561,50.43885825610,215.251\n", "",
       "Longitude,Latitude,Height,n,e,h_local\n-4.10864563561,50.43885825610,215.251" + results},
      // Blanks as separator, a name in quotation marks, a row that fails.
      {"name lat lon h\n\"TP 03\"  50.43885825610 -4.10864563561 215.251\nbad x 1 2\n", "",
       "name lat lon h n e h_local\n\"TP 03\"  50.43885825610 -4.10864563561 215.251 62015.2109 "
       "250357.8185 165.6607\nbad x 1 2 \"\" \"\" \"\"\n"},
      // A line for spreadsheets, remarks, separators at the ends of rows, a decimal comma.
      {"sep=;\n# measured\nlat;lon;h;\n50,43885825610;-4,10864563561;215,251;\n# end\n", "",
       "sep=;\n# measured\nlat;lon;h;n;e;h_local\n50,43885825610;-4,10864563561;215,251;"
       "62015,2109;250357,8185;165,6607\n# end\n"},
      // A point may be called "#1".
      {"name,lat,lon,h\n#1,50.43885825610,-4.10864563561,215.251\n", "",
       "name,lat,lon,h,n,e,h_local\n#1," + tp03 + results},
      // No header in, none out.
      {"7;50,43885825610;-4,10864563561;215,251;x\n", "--no-header --columns code,lat,lon,h,remark",
       "7;50,43885825610;-4,10864563561;215,251;x;62015,2109;250357,8185;165,6607\n"},
      {"\"Lat, deg\",lon,h\n50.43885825610,-4.10864563561,215.251\n",
       "--columns '\"Lat, deg\",lon,h'", "\"Lat, deg\",lon,h,n,e,h_local\n" + tp03 + results},
      // A comma that may be one of thousands is decimal when the user says so.
      {"lat;lon;h\n50,43885825610;-4,10864563561;215,251\n", "--decimal-comma",
       "lat;lon;h;n;e;h_local\n50,43885825610;-4,10864563561;215,251;62015,2109;250357,8185;"
       "165,6607\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(Convert(c.text, c.options).out, c.out) << c.text;
  EXPECT_TRUE(
      Contains(Convert(cases[2].text).err, "in.csv: numbers are read with a decimal comma"));

  const ProgramRun inverse =
      Convert("Rechtswert;Hochwert;Z\n250357.8185;62015.2109;165.6607\n", "--inverse --decimals 1");
  EXPECT_EQ(inverse.out,
            "Rechtswert;Hochwert;Z;lat;lon;h_global\n"
            "250357.8185;62015.2109;165.6607;50.4388583;-4.1086456;215.3\n");
}

TEST_F(Columns, ThatCouldEachBeMeantAreRefused) {
  struct Case {
    const char* header;
    const char* options;
    const char* part;
  };
  constexpr Case cases[] = {
      {"lat,LAT,lon,h", "", "\"lat\", \"LAT\" could each be meant"},
      {"n,e,h_local,n_2,e_2,h_local_2", "--inverse",
       "choose with --columns n,e,h_local or --columns n_2,e_2,h_local_2"},
      {"lat,lon,h,lat_2,lon_2,h_global_2", "", "--columns lat_2,lon_2,h_global_2"},
      {"y,x,h", "--inverse", "--columns x,y,H when x is north, --columns y,x,H when y is"},
      {"a,lat,lon,a,h", "", "two columns are called \"a\""},
      {"b,lat,lon", "--no-header", "name all columns"},
      {"b,lat,lon", "--no-header --columns a,b,a", "\"a\" stands there twice"},
  };
  for (const Case& c : cases) {
    const ProgramRun run = Convert(std::string(c.header) + "\n", c.options);
    EXPECT_EQ(run.status, 2) << c.header;
    EXPECT_TRUE(Contains(run.err, c.part)) << run.err;
    EXPECT_EQ(run.out, "") << c.header;
  }
}

// A column n of the user's own: the results of the way out are the input of the way back.
TEST_F(Columns, OfOneRunBelongTogetherInTheNext) {
  const ProgramRun out = Convert(std::string("n,lat,lon,h\n17,") + kTp03 + "\n");
  ASSERT_EQ(out.out,
            std::string("n,lat,lon,h,n_2,e_2,h_local_2\n17,") + kTp03 + "," + kTp03Grid + "\n");
  const ProgramRun back = Convert(out.out, "--inverse --decimals 0");
  EXPECT_EQ(Lines(back.out).at(1),
            std::string("17,") + kTp03 + "," + kTp03Grid + ",50.438858,-4.108646,215");
  EXPECT_TRUE(Contains(back.err, "taken from \"n_2\", \"e_2\", \"h_local_2\"")) << back.err;
  // The height of the inverse is its own, not the local one that stands beside it.
  const ProgramRun local = Convert(std::string("n,e,h\n") + kTp03Grid + "\n", "--inverse");
  EXPECT_TRUE(Lines(Convert(local.out, "--results y,x,z").out).at(1).ends_with(",165.6607"));
}

TEST_F(Columns, ThatDifferFromTheGeometryAreReported) {
  WriteText(directory_ / "moved.geojson", R"({"type": "FeatureCollection", "features": [
    {"type": "Feature", "properties": {"lat": 50.4388582561, "lon": -4.10864563561, "h": 215.251},
     "geometry": {"type": "Point", "coordinates": [-4.10864563561, 50.4388582561, 215.251]}},
    {"type": "Feature", "properties": {"lat": 50, "lon": -4, "h": 0},
     "geometry": {"type": "Point", "coordinates": [-4.10864563561, 50.4388582561, 215.251]}}]})");
  const ProgramRun columns = Run("moved.geojson -o -");
  EXPECT_EQ(columns.status, 0);
  EXPECT_TRUE(Contains(columns.err, "moved.geojson, feature 1: \"lat\", \"lon\", \"h\" say"))
      << columns.err;
  const ProgramRun geometry = Run("moved.geojson -o - --from-geometry");
  EXPECT_EQ(geometry.err, "");
  EXPECT_TRUE(Contains(Lines(geometry.out).at(2), kTp03Grid)) << geometry.out;
}

// The answer to a row comes before the next row is asked for.
TEST_F(Columns, AreAnsweredLineByLineInAPipe) {
  WriteText(directory_ / "talk.sh",
            std::string("mkfifo in out\n'") + GEOMATH_PROGRAM +
                "' convert --system system.json - -o - <in >out &\n"
                "exec 3>in 4<out\n"
                "echo lat,lon,h >&3; echo 50.43885825610,-4.10864563561,215.251 >&3\n"
                "read -t 20 header <&4 && read -t 20 answer <&4 && echo \"$answer\"\n"
                "exec 3>&-; wait\n");
  const std::string command = "cd '" + directory_.string() + "' && bash talk.sh > answer.txt";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(ReadText(directory_ / "answer.txt"), std::string(kTp03) + "," + kTp03Grid + "\n");
}
