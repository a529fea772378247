// Every output of every command: whole or not at all, and never in place of what is read.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

struct Subject {
  const char* name;
  const char* command;
  std::vector<const char*> outputs;  // the first is the one that the messages name
  unsigned long tooSmall;            // bytes that do not hold it
};

void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }

const std::vector<const char*> kShapefile = {"out.shp", "out.dbf", "out.shx"};

const Subject kSubjects[] = {
    {"ConvertCsv", "convert --system system.json in.csv -o out.csv", {"out.csv"}, 100000},
    {"ConvertGeoJson",
     "convert --system system.json in.csv -o out.geojson",
     {"out.geojson"},
     300000},
    {"ConvertGeoPackage", "convert --system system.json in.csv -o out.gpkg", {"out.gpkg"}, 200000},
    {"ConvertShapefile", "convert --system system.json in.csv -o out.shp", kShapefile, 100000},
    {"GeoidGeoJson", "geoid --model pot.txt in.csv -o out.geojson", {"out.geojson"}, 300000},
    {"GeoidCsvGrid",
     "geoid --model pot.txt --extent 0,0,9,9 --step 0.1 -o out.csv",
     {"out.csv"},
     9000},
    {"GeoidGrid",
     "geoid --model pot.txt --extent 0,0,20,20 --step 0.1 -o out.tif",
     {"out.tif"},
     9000},
    {"DeclinationGeoJson",
     "declination --date 2012-01-01 --points in.csv -o out.geojson",
     {"out.geojson"},
     300000},
    {"DeclinationGrid",
     "declination --date 2012-01-01 --grid=0,0,20,20,0.1 -o out.tif",
     {"out.tif"},
     9000},
    {"System", "system --epsg 27700 -o out.json", {"out.json"}, 500},
    {"Calibrate",
     "calibrate control.csv --system site.json -o site_out.json --report out.html",
     {"out.html", "site_out.json"},
     3000},
};

using Snapshot = std::map<std::string, std::string>;

class Output : public ::testing::Test {
 protected:
  void SetUp() override {
    Write("system.json", BritainSystem());
    Write("pot.txt", "2 0 1e-9 0\n2 1 0 0\n2 2 2e-6 -1e-6\n");
    const fs::path site = fs::path(GEOMATH_SOURCE_DIR) / "examples/site";
    fs::copy_file(site / "control.csv", directory_ / "control.csv");
    fs::copy_file(site / "system.json", directory_ / "site.json");
    std::string rows = "lat,lon,h\n";
    for (int i = 0; i < 5000; ++i) rows += "50.43885825610,-4.10864563561,215.251\n";
    Write("in.csv", rows);
  }

  void Write(const std::string& name, const std::string& text) {
    WriteText(directory_ / name, text);
  }
  std::string Read(const std::string& name) { return ReadText(directory_ / name); }
  ProgramRun Run(const std::string& arguments, unsigned long largestFile = 0) {
    return RunProgram(directory_, arguments, largestFile);
  }
  Snapshot Files() const {
    Snapshot files;
    for (const auto& entry : fs::recursive_directory_iterator(directory_))
      files[entry.path().filename().string()] =
          entry.is_regular_file() ? ReadText(entry.path()) : "no file";
    return files;
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

class EveryOutput : public Output, public ::testing::WithParamInterface<Subject> {
 protected:
  void SetUp() override {
    Output::SetUp();
    for (const char* file : GetParam().outputs) Write(file, "old");
  }
};

}  // namespace

TEST_P(EveryOutput, LeavesTheOldFilesWhereTheDiskIsFull) {
  const Snapshot before = Files();
  const ProgramRun run = Run(GetParam().command, GetParam().tooSmall);
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, GetParam().outputs[0] + std::string(": cannot be written")))
      << run.err;
  EXPECT_EQ(Files(), before);
}

TEST_P(EveryOutput, ReplacesWholeFilesAndKeepsTheirPermissions) {
  constexpr auto kGroupReads = static_cast<fs::perms>(0640);
  const std::string first = GetParam().outputs[0];
  fs::permissions(directory_ / first, kGroupReads);
  const Snapshot before = Files();
  const ProgramRun run = Run(GetParam().command);
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(fs::status(directory_ / first).permissions(), kGroupReads);
  for (const auto& [name, text] : Files()) {
    EXPECT_NE(text, "old") << name;
    EXPECT_TRUE(before.contains(name) || name == "out.prj" || name == "out.cpg") << name;
  }
}

TEST_P(EveryOutput, IsRefusedWhereTheFileIsReadOnly) {
  fs::permissions(directory_ / GetParam().outputs[0], static_cast<fs::perms>(0444));
  const Snapshot before = Files();
  const ProgramRun run = Run(GetParam().command);
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "read-only")) << run.err;
  EXPECT_EQ(Files(), before);
}

INSTANTIATE_TEST_SUITE_P(Program, EveryOutput, ::testing::ValuesIn(kSubjects),
                         [](const auto& subject) { return std::string(subject.param.name); });

// Killed while it waits for more rows: the old file stands.
TEST_F(Output, SurvivesAKill) {
  Write("out.geojson", "old");
  Write("run.sh",
        "mkfifo pipe; exec 3<>pipe; cat in.csv >&3 &\n"
        "'" GEOMATH_PROGRAM
        "' convert --system system.json --layer '' - -o out.geojson <pipe & pid=$!\n"
        "for try in $(seq 100); do ls -d .geomath-* && break; sleep 0.1; done\n"
        "kill -KILL $pid; wait $pid; test $? -eq 137\n");
  ASSERT_EQ(std::system(("cd '" + directory_.string() + "' && sh run.sh >log.txt 2>&1").c_str()), 0)
      << Read("log.txt");
  EXPECT_EQ(Read("out.geojson"), "old");
}

TEST_F(Output, FollowsLinks) {
  fs::create_directory(directory_ / "away");
  Write("away/real.csv", "old");
  fs::create_symlink("away/real.csv", directory_ / "out.csv");
  fs::create_symlink("away/points.shp", directory_ / "out.shp");  // leads to no file yet
  Write("in.csv", "lat,lon,h\n50.43885825610,-4.10864563561,215.251\n");
  EXPECT_EQ(Run("convert --system system.json in.csv -o out.csv").status, 0);
  EXPECT_TRUE(fs::is_symlink(directory_ / "out.csv"));
  EXPECT_EQ(Lines(Read("away/real.csv")).size(), 2u);
  EXPECT_EQ(Run("convert --system system.json in.csv -o out.shp").status, 0);
  EXPECT_EQ(Lines(Run("convert --system system.json --inverse away/points.shp -o -").out).size(),
            2u);
}

// An index of the points that were there would show the new ones elsewhere.
TEST_F(Output, AReplacedShapefileLosesItsIndex) {
  Write("in.csv", "lat,lon,h\n50.43885825610,-4.10864563561,215.251\n");
  for (const char* file : {"out.shp", "out.qix", "out.shp.xml", "outer.qix"}) Write(file, "old");
  EXPECT_EQ(Run("convert --system system.json in.csv -o out.shp").status, 0);
  EXPECT_FALSE(fs::exists(directory_ / "out.qix"));
  EXPECT_FALSE(fs::exists(directory_ / "out.shp.xml"));
  EXPECT_EQ(Read("outer.qix"), "old");
}

TEST_F(Output, IsNeverWhatIsRead) {
  Write("in.csv", "lat,lon,h\n50.43885825610,-4.10864563561,215.251\n");
  Write("corr.txt", Read("pot.txt"));
  ASSERT_EQ(Run("convert --system system.json in.csv -o points.shp").status, 0);
  ASSERT_EQ(Run("geoid --model pot.txt --extent 45,-9,55,9 --step 1 -o grid.tif").status, 0);
  Write("geoid.json",
        R"({"local": {"ellipsoid": "WGS84"}, "projection": {"name": "TM", "central meridian": -3,
            "scale": 1, "lat0": 0, "east0": 0, "north0": 0}, "geoid": {"grid": "grid.tif"}})");
  fs::create_hard_link(directory_ / "grid.tif", directory_ / "hard.csv");
  fs::create_symlink("system.json", directory_ / "soft.csv");
  fs::create_symlink("in.csv", directory_ / "in.txt");
  const Snapshot before = Files();
  for (const char* arguments : {
           "convert --system system.json in.csv -o soft.csv",
           "convert --system geoid.json in.csv -o hard.csv",
           "convert --system system.json in.csv -o ./in.txt",
           "convert --system system.json in.csv -o - >>in.csv #",
           "convert --system system.json points.dbf --fixed-height 1 --columns lat,lon -o "
           "points.shp",
           "geoid --model pot.txt --correction corr.txt in.csv -o corr.txt",
           "geoid --grid grid.tif in.csv -o hard.csv",
           "geoid --grid grid.tif --extent 46,0,47,1 --step 1 -o grid.tif",
           "declination --date 2012-01-01 --points in.csv -o in.txt",
           "calibrate control.csv --system site.json -o control.csv",
           "calibrate control.csv --system site.json -o new.json --report site.json",
           "calibrate control.csv --system site.json -o new.json --report ./new.json",
       }) {
    const ProgramRun run = Run(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_EQ(Files(), before) << arguments;
  }
}

// Calibration and report come together or not at all.
TEST_F(Output, NoneOfTwoWhereOneFails) {
  EXPECT_EQ(
      Run("calibrate control.csv --system site.json -o new.json --report no/such/page.html").status,
      2);
  EXPECT_FALSE(fs::exists(directory_ / "new.json"));
}
