#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>

#include "tests/support/reference_data.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

class Declination : public ::testing::Test {
 protected:
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "declination " + arguments);
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

// The number that follows a name at the start of a line.
double Printed(const std::string& text, const std::string& name) {
  const std::size_t at = text.find(name);
  return at == std::string::npos ? -999 : std::stod(text.substr(at + name.size()));
}

// Technical report of WMM-2010, 2012.5 (2 July), latitude 80, longitude 0, 100 km.
TEST_F(Declination, OnePoint) {
  const ProgramRun run = Run("--date 2012-07-02 80 0 100000");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_NEAR(Printed(run.out, "declination"), -5.63, 0.005);
  EXPECT_NEAR(Printed(run.out, "inclination"), 83.05, 0.005);
  EXPECT_NEAR(Printed(run.out, "total"), 52648.9, 0.05);
  EXPECT_NEAR(Printed(run.out, "down"), 52261.9, 0.05);
  EXPECT_FALSE(Contains(run.out, "+-"));
  EXPECT_EQ(Run("--date 2012-07-02 \"80 0 0 N\" 360").out, Run("--date 2012-07-02 80 0 0").out);
  EXPECT_EQ(Run("--date 2012-07-02 90 10 --angles gon").out, Run("--date 2012-07-02 81 9").out);
  EXPECT_EQ(Run("--date 2012-7-2 80 0").out, Run("--date 2012-07-02 80 0").out);
  EXPECT_EQ(Run("--date 2012.0 80 0").out, Run("--date 2012-01-01 80 0").out);
  EXPECT_EQ(Run("--date 1750-01-01 80 0").status, 0);
}

TEST_F(Declination, WarnsOutsideTheYearsOfTheModel) {
  const ProgramRun run = Run("--model WMM-2010 --date 2016-01-01 -33.875 151.25");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(Contains(run.err, "outside the years of WMM-2010, 2010 to 2015")) << run.err;
  EXPECT_TRUE(Contains(Run("--date 2030-02-01 1 2").err, "WMM-2025, 2025 to 2030"));
}

// Tables of WMM-2020 and WMM-2025 at 80° N 0° E on the ellipsoid.
TEST_F(Declination, TakesTheBuiltInModelOfTheDate) {
  EXPECT_NEAR(Printed(Run("--date 2020-01-01 80 0").out, "declination"), -1.28, 0.005);
  EXPECT_NEAR(Printed(Run("--date 2025-01-01 80 0").out, "declination"), 1.28, 0.005);
  EXPECT_EQ(Run("--date 2026-11-23 50 14").err, "");
}

TEST_F(Declination, TableOfYears) {
  const auto rows = Lines(Run("--years 2010:2025:5 80 0").out);
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[0], "year,declination,inclination,grid_variation,total_nt,model");
  EXPECT_NEAR(Printed(rows[1], "2010,"), -6.13, 0.005);
  EXPECT_TRUE(rows[4].starts_with("2025,") && rows[4].ends_with(",WMM-2025")) << rows[4];
  EXPECT_EQ(Run("--years 2010:2025:5 80 0 -o table.csv").status, 0);
  EXPECT_EQ(Lines(ReadText(directory_ / "table.csv")), rows);

  WriteText(directory_ / "old.shc",
            "# IGRF 0\n1 1 2 2 1\n1900 1905\n1 0 -30000 -30000\n1 1 0 0\n1 -1 5000 6000\n");
  const ProgramRun old = Run("--model old.shc --years 1899:1901 0 0");
  EXPECT_TRUE(Contains(old.err, "1899 is outside the years of IGRF 0, 1900 to 1905")) << old.err;
  EXPECT_EQ(Lines(old.out).size(), 4u);
  // At the equator and longitude 0 east is -h(1,1), north -g(1,0), both times (a/r)³.
  constexpr double kDegrees = 57.29577951308232, kPrinted = 5.1e-5;
  EXPECT_NEAR(Printed(old.out, "1901,"), std::atan2(-5200, 30000) * kDegrees, kPrinted);
}

TEST_F(Declination, NamesTheZonesOfWeakFields) {
  EXPECT_TRUE(Contains(Run("--date 2026-11-23 85 -130").err, "the blackout zone (below 2000 nT)"));
  EXPECT_TRUE(Contains(Run("--date 2026-11-23 75 -110").err, "the caution zone (below 6000 nT)"));
  WriteText(directory_ / "in.csv", "lat,lon,h\n85,-130,0\n50,14,0\n84,-130,0\n75,-110,0\n");
  const std::string err = Run("--date 2026-11-23 --points in.csv -o out.csv").err;
  EXPECT_TRUE(Contains(err, "2 of the points lie in the blackout zone")) << err;
  EXPECT_TRUE(Contains(err, "1 of the points lie in the caution zone")) << err;
}

TEST_F(Declination, ModelFile) {
  REQUIRE_REFERENCE_FILE(path, "wmm/WMM2025.COF");
  const ProgramRun run = Run("--model '" + path.string() + "' --date 2025-01-01 -80 240 100000");
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_NEAR(Printed(run.out, "declination"), 68.21, 0.005);
  EXPECT_TRUE(Contains(run.out, "+-138 nT")) << run.out;

  // A file that was cut off reads as a model and gives wrong results: refused.
  WriteText(directory_ / "cut.COF", ReadText(path).substr(0, 3000));
  const ProgramRun cut = Run("--model cut.COF --date 2025-01-01 1 2 3");
  EXPECT_EQ(cut.status, 2);
  EXPECT_TRUE(Contains(cut.err, "cut.COF, line 62: holds no magnetic model")) << cut.err;

  WriteText(directory_ / "own.COF", ReadText(path));
  EXPECT_EQ(Run("--model own.COF --date 2025-01-01 --grid=0,0,1,1,1 -o own.COF").status, 2);
  EXPECT_EQ(ReadText(directory_ / "own.COF"), ReadText(path));
}

TEST_F(Declination, PointsOfAFile) {
  WriteText(directory_ / "in.csv", "id,lat,lon,h\na,80,0,100000\nb,north,0,1\nc,-80,240,0\n");
  const ProgramRun run = Run("--date 2012-07-02 --points in.csv -o out.csv");
  EXPECT_EQ(run.status, 1);
  EXPECT_TRUE(Contains(run.err, "in.csv, line 3")) << run.err;
  const auto lines = Lines(ReadText(directory_ / "out.csv"));
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "id,lat,lon,h,declination,inclination,total_nt");
  EXPECT_NEAR(Printed(lines[1], "100000,"), -5.63, 0.005);
  EXPECT_EQ(lines[2], "b,north,0,1,,,");
  EXPECT_NEAR(Printed(lines[3], "240,0,"), 70.04, 0.005);
  EXPECT_EQ(Run("--date 2012-07-02 --points in.csv -o in.csv").status, 2);
}

TEST_F(Declination, Raster) {
  const ProgramRun run =
      Run("--date 2012-07-02 --fixed-height 100000 --grid=79,-2,80.5,1,0.5 -o grid.tif");
  EXPECT_EQ(run.status, 0) << run.err;
  GDALAllRegister();
  const std::string path = (directory_ / "grid.tif").string();
  auto* raster = GDALDataset::FromHandle(GDALOpen(path.c_str(), GA_ReadOnly));
  ASSERT_NE(raster, nullptr);
  EXPECT_EQ(raster->GetRasterXSize(), 7);
  EXPECT_EQ(raster->GetRasterYSize(), 4);
  double transform[6] = {};
  raster->GetGeoTransform(transform);
  EXPECT_EQ(transform[0], -2.25);  // the node is the centre of its pixel
  EXPECT_EQ(transform[3], 80.75);
  float declination = 0, total = 0;
  const auto read = [&](int band, float& value) {
    return raster->GetRasterBand(band)->RasterIO(GF_Read, 4, 1, 1, 1, &value, 1, 1, GDT_Float32, 0,
                                                 0);
  };
  EXPECT_EQ(read(1, declination), CE_None);
  EXPECT_EQ(read(3, total), CE_None);
  EXPECT_NEAR(declination, -5.63, 0.005);
  EXPECT_NEAR(total, 52648.9, 0.05);
  GDALClose(raster);
}

// Output is held back until the end: what fails then must not pass for success.
TEST_F(Declination, ReportsOutputThatCannotBeWrittenOut) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
  const ProgramRun run = Run("--date 2012-01-01 --grid=0,0,10,10,1 -o /dev/full");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "/dev/full: cannot be written")) << run.err;
  // '#' hides the redirections that the test adds.
  EXPECT_EQ(Run("--date 2012-01-01 1 2 >/dev/full 2>stderr.txt #").status, 2);
}

TEST_F(Declination, SaysWhatIsWrong) {
  const char* wrong[] = {
      "--date 2012-13-01 1 2 3",
      "--date 2012-1-1x 1 2 3",
      "--date 2012-01-01",
      "--date 2012-01-01 1",
      "--date 2012-01-01 91 0",
      "--date 2012-01-01 1 2 x",
      "--date 2012-01-01 1 2 --points in.csv -o out.csv",
      "--date 2012-01-01 --grid=0,0,1,1,0 -o g.tif",
      "--date 2012-01-01 --grid=0,0,nan,1,1 -o g.tif",
      "--date 2012-01-01 --grid=0,0,90,90,1e-9 -o g.tif",
      "--date 2012-01-01 --grid=0,0,1,1,1",
      "--date 2012-01-01 --grid=0,0,1,1,1 -o no/such/directory/g.tif",
      "--date 2012-01-01 --model no.COF 1 2",
      "--date 2012-01-01 --points none.csv -o out.csv",
      "1 2",
      "--years 2010:2020 --date 2012-01-01 1 2",
      "--years 2010 1 2",
      "--years 2020:2010 1 2",
      "--years 2010:2020:0 1 2",
      "--years 2010:2020x 1 2",
      "--years 2010:2020 --points in.csv -o out.csv",
  };
  for (const char* arguments : wrong) {
    const ProgramRun run = Run(arguments);
    EXPECT_EQ(run.status, 2) << arguments;
    EXPECT_FALSE(run.err.empty()) << arguments;
  }
}

}  // namespace
