// Dates of positions, through the program. Budd in Denmark in 2015.0, published by the Nordic Geodetic
// Commission in ITRF2014 and ETRF2014; its coordinates on the ellipsoid and in zone 32 by PROJ.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/files/models/made_tiff.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

class Epoch : public ::testing::Test {
 protected:
  void SetUp() override { WriteSystem(R"({"from": "ITRF2014", "to": "ETRF2014"})"); }

  // "frame", or an entry of "shifts".
  void WriteSystem(const std::string& section, const char* key = "frame") {
    Write("system.json", R"({"global": {"ellipsoid": "GRS80"},
      "projection": {"name": "TMERC_KMS", "Central Meridian": 9, "Scale": 0.9996, "Lat0": 0,
                     "East0": 500000, "North0": 0}, ")" +
                             std::string(key) + "\": " + section + "}");
  }
  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }
  ProgramRun Run(const std::string& arguments, const char* command = "convert") {
    return RunProgram(directory_, std::string(command) + " --system system.json " + arguments);
  }

  const ScratchFolder scratch_;
  const std::filesystem::path directory_ = scratch_.Path();
};

const std::string kBudd = "55.739020874599,12.500026960021,94.032814702";
const std::string kGrid = "6182582.5632,719707.2527,94.0316";

}  // namespace

TEST_F(Epoch, IsGivenForAllRowsOrEach) {
  Write("in.csv", "lat,lon,h\n" + kBudd + "\n");
  for (const char* epoch : {"2015", "2015.0", "2015-01-01", "2015-01-01T00:00:00Z"}) {
    const ProgramRun run = Run(std::string("in.csv -o - --epoch ") + epoch);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.out, "lat,lon,h,n,e,h_local\n" + kBudd + "," + kGrid + "\n");
  }
  Write("each.csv", "lat,lon,h,day\n" + kBudd + ",2015-01-01\n" + kBudd + ",2015\n" + kBudd +
                        ",\n" + kBudd + ",01.01.2015\n");
  const ProgramRun run = Run("each.csv -o - --epoch-column day");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, "lat,lon,h,day,n,e,h_local\n" + kBudd + ",2015-01-01," + kGrid + "\n" + kBudd +
                         ",2015," + kGrid + "\n" + kBudd + ",,,,\n" + kBudd + ",01.01.2015,,,\n");
  EXPECT_TRUE(Contains(run.err, "each.csv, line 4: not converted: day \"\" is no date")) << run.err;
  EXPECT_TRUE(Contains(run.err, "line 5: not converted: day \"01.01.2015\" is no date")) << run.err;
}

TEST_F(Epoch, LeadsBack) {
  Write("in.csv", "n,e,h_local\n" + kGrid + "\n");
  const ProgramRun run = Run("in.csv -o - --inverse --epoch 2015 --decimals 2");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "n,e,h_local,lat,lon,h_global\n" + kGrid + ",55.73902087,12.50002696,94.03\n");
}

TEST_F(Epoch, IsNeverAssumed) {
  Write("in.csv", "lat,lon,h\n" + kBudd + "\n");
  const ProgramRun run = Run("in.csv -o out.csv");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "system.json: has a frame that moves and needs the date"))
      << run.err;
  EXPECT_TRUE(Contains(run.err, "--epoch 2026.9")) << run.err;
  EXPECT_FALSE(std::filesystem::exists(directory_ / "out.csv"));
  EXPECT_EQ(Run("--at 55.7,12.5,94", "factors").status, 2);
  EXPECT_EQ(Run("--at 55.7,12.5,94 --epoch 2015", "factors").status, 0);
  EXPECT_TRUE(Contains(Run("in.csv -o - --epoch 15").err, "--epoch: \"15\" is no date"));
  EXPECT_TRUE(Contains(Run("in.csv -o - --epoch-column day").err, "no column \"day\""));
}

TEST_F(Epoch, StandsInTheSystemToo) {
  WriteSystem(R"({"from": "ITRF2014", "to": "ETRF2014", "date": "2015-01-01"})");
  Write("in.csv", "lat,lon,h\n" + kBudd + "\n");
  EXPECT_TRUE(Contains(Run("in.csv -o -").out, kGrid));
  EXPECT_FALSE(Contains(Run("in.csv -o - --epoch 2016").out, kGrid));
  EXPECT_TRUE(Contains(Run("55.739020874599 12.500026960021 94.032814702").out, "6182582.5632"));
}

TEST_F(Epoch, OfOtherYearsIsABadRow) {
  WriteSystem(R"([{"place": "before datum", "similarity": {"dX": 1, "dY": 0, "dZ": 0, "rX": 0,
                  "rY": 0, "rZ": 0, "ppm": 0, "validAt": 2015}}])",
              "shifts");
  Write("in.csv", "lat,lon,h,t\n55,12,94,2015\n55,12,94,2016\n");
  const ProgramRun run = Run("in.csv -o - --epoch-column t");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.out, "2016,,,\n")) << run.out;
  EXPECT_TRUE(Contains(run.err, "line 3: not converted: its date is outside of the years"))
      << run.err;
}

// 3 × 3 nodes at 48 to 50 degrees north, 10 to 12 east, whose southern row has no values.
TEST_F(Epoch, PlacesWithoutVelocityAreBadRows) {
  const std::vector<double> holes = {1, 1, 1, 1, 1, 1, -9999, -9999, -9999};
  geomath_files::Write(
      {{10,
        50,
        1,
        {{"east_velocity", "", holes}, {"north_velocity", "", holes}, {"up_velocity", "", holes}},
        {{"TYPE", "VELOCITY"}},
        "EPSG:4258"}},
      (directory_ / "velocities.tif").string());
  WriteSystem(R"({"epoch": 2000, "motion": {"file": "velocities.tif"}})");
  Write("in.csv", "lat,lon,h\n49.5,11,0\n51,11,0\n48.5,11,0\n");
  const ProgramRun run = Run("in.csv -o - --epoch 2026.9 --decimals 0");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.out, "\n51,11,0,,,\n48.5,11,0,,,\n")) << run.out;
  for (const char* row : {"line 3: ", "line 4: "})
    EXPECT_TRUE(Contains(run.err, std::string(row) +
                                      "not converted: the velocity grid or deformation model "
                                      "cannot convert this point"))
        << run.err;
  EXPECT_FALSE(Contains(run.err, "line 2")) << run.err;
}

TEST_F(Epoch, ChangesNothingWhereNoFrameMoves) {
  WriteSystem(R"([{"place": "heights", "offset": {"height": 1}}])", "shifts");
  Write("in.csv", "lat,lon,h\n" + kBudd + "\n");
  const ProgramRun run = Run("in.csv -o - --epoch 2015");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Contains(run.err, "no frame of system.json moves: the date changes nothing"));
}

// The control of a site observed in a global frame: the same local coordinates by it.
TEST_F(Epoch, CalibratesASite) {
  Write("control.csv",
        "name,lat,lon,h,local_n,local_e,local_h\n"
        "a," +
            kBudd +
            ",1000,2000,10\n"
            "b,55.749,12.500,94,2110.9,2001,10\nc,55.740,12.520,94,1109,3255,10\n");
  EXPECT_EQ(Run("control.csv -o site.json", "calibrate").status, 2);
  const ProgramRun run = Run("control.csv -o site.json --epoch 2015", "calibrate");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(ReadText(directory_ / "site.json"), "\"ETRF2014\""));
}

TEST_F(Epoch, IsNeededBySystemsOfTheRegistryFromAFrame) {
  const auto make = [&](const std::string& arguments) {
    return RunProgram(directory_, "system -o system.json --epsg " + arguments);
  };
  Write("in.csv", "lat,lon,h\n" + kBudd + "\n");
  ProgramRun run = make("25832 --from-frame ITRF2014 --to-frame ETRF2014");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.err, "come in ITRF2014, to ETRF2014 by EPSG:8880")) << run.err;
  EXPECT_TRUE(Contains(ReadText(directory_ / "system.json"), "\"geographic\": \"EPSG:9000\""));
  EXPECT_EQ(Run("in.csv -o -").status, 2);
  EXPECT_TRUE(Contains(Run("in.csv -o - --epoch 2015").out, kGrid));
  make("25832 --from-frame ITRF2014 --to-frame ETRF2014 --epoch 2015-01-01");
  EXPECT_TRUE(Contains(Run("in.csv -o -").out, kGrid));
  run = make("25832 --from-frame ITRF2014");
  EXPECT_TRUE(Contains(run.err, "ETRS89 is taken for ETRF2000; --to-frame")) << run.err;

  // GDA2020 Technical Manual: ITRF2014 at 2018.0 in Alice Springs; zone 53 by PROJ.
  run = make("7853 --from-frame ITRF2014");
  EXPECT_EQ(run.status, 0) << run.err;
  Write("in.csv", "lat,lon,h\n-23.670111193112,133.885521022255,603.243355621584\n");
  EXPECT_TRUE(
      Contains(Run("in.csv -o - --epoch 2018 --decimals 3").out, "7381852.300,386353.238,603.243"));

  // Through ETRS89.
  run = make("31467 --operation 1777 --from-frame ITRF2020");
  EXPECT_EQ(run.status, 2);
  run = make("31467 --from-frame ITRF2020");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(Contains(run.err, "DHDN to ETRS89")) << run.err;
  EXPECT_EQ(Run("50 9 100 --epoch 2026.9").status, 0);
}

TEST_F(Epoch, FramesOfTheRegistryAreTold) {
  const auto said = [&](const std::string& arguments) {
    return RunProgram(directory_, "system -o other.json --epsg " + arguments).err;
  };
  EXPECT_TRUE(
      Contains(said("25832 --from-frame ITRF2021"), "--from-frame: is \"ITRF2021\", which"));
  EXPECT_TRUE(Contains(said("25832 --to-frame ETRF2014"), "--from-frame"));
  EXPECT_TRUE(Contains(said("25832 --epoch 2020"), "--epoch: no frame of the system moves"));
  EXPECT_TRUE(
      Contains(said("5387 --from-frame ITRF2020"), "no transformation to a system that is"));
  EXPECT_FALSE(std::filesystem::exists(directory_ / "other.json"));
  // A frame that moves is told by itself.
  EXPECT_TRUE(Contains(said("9000"), "come in ITRF2014"));
  EXPECT_TRUE(Contains(ReadText(directory_ / "other.json"), "\"to\": \"ITRF2014\""));
}
