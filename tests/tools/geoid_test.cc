#include <gdal_priv.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/harmonic_model.h"
#include "tests/support/scratch_folder.h"
#include "tests/tools/program.h"

namespace {

namespace fs = std::filesystem;

const fs::path kData = fs::path(GEOMATH_SOURCE_DIR) / "tests/data";
constexpr double kPrinted = 5.1e-5;  // four decimals are written

// The plane that the grids of these tests sample; every scheme reproduces it.
double Plane(double lat, double lon) { return 40 + 2 * lat - 0.5 * lon; }

class Geoid : public ::testing::Test {
 protected:
  ProgramRun Run(const std::string& arguments) {
    return RunProgram(directory_, "geoid " + arguments);
  }
  void Write(const char* name, const std::string& text) { WriteText(directory_ / name, text); }

  // Rows of a CSV text below its header, as numbers; an empty field ends its row.
  static std::vector<std::vector<double>> Numbers(const std::string& text) {
    std::istringstream in(text);
    return ReadRows(in, 1);
  }

  // A grid of 11 by 13 nodes from 50° N 9° E, every half degree, written by one of GDAL's drivers;
  // the node 52.5° N 13° E is a hole.
  void WriteGrid(const char* name, const char* driver, double scale = 1, const char* unit = "") {
    GDALAllRegister();
    GDALDriverManager* drivers = GetGDALDriverManager();
    std::unique_ptr<GDALDataset, void (*)(GDALDataset*)> grid(
        drivers->GetDriverByName("MEM")->Create("", 13, 11, 1, GDT_Float32, nullptr),
        [](GDALDataset* dataset) { GDALClose(dataset); });
    double transform[] = {8.75, 0.5, 0, 55.25, 0, -0.5};
    grid->SetGeoTransform(transform);
    grid->GetRasterBand(1)->SetNoDataValue(-9999);
    if (scale != 1) grid->GetRasterBand(1)->SetScale(scale);
    if (*unit) grid->GetRasterBand(1)->SetUnitType(unit);
    std::vector<float> z;
    for (int r = 0; r < 11; ++r)
      for (int c = 0; c < 13; ++c)
        z.push_back(r == 5 && c == 8 ? -9999.0F
                                     : static_cast<float>(Plane(55 - 0.5 * r, 9 + 0.5 * c)));
    ASSERT_EQ(grid->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, 13, 11, z.data(), 13, 11,
                                               GDT_Float32, 0, 0),
              CE_None);
    GDALClose(drivers->GetDriverByName(driver)->CreateCopy((directory_ / name).c_str(), grid.get(),
                                                           FALSE, nullptr, nullptr, nullptr));
  }

  // The degree-36 model as lines "n m C S" from the first or the second pair of its columns; in
  // the first, `zonals` are put back into the coefficients of degree 2, 4, … and order 0.
  static std::string Lines36(const char* key, std::size_t column,
                             const std::vector<double>& zonals = {}) {
    std::ostringstream text;
    text.precision(17);
    for (const auto& row : ReadRows(kData / "egm96_degree36.csv")) {
      const int n = static_cast<int>(row[0]), m = static_cast<int>(row[1]);
      const auto zonal = static_cast<std::size_t>(n / 2 - 1);
      const bool has = m == 0 && n >= 2 && n % 2 == 0 && zonal < zonals.size();
      text << key << n << ' ' << m << ' ' << row[column] + (has ? zonals[zonal] : 0) << ' '
           << row[column + 1] << '\n';
    }
    return text.str();
  }

  const ScratchFolder scratch_;
  const fs::path directory_ = scratch_.Path();
};

}  // namespace

TEST_F(Geoid, ReadsGridsOfManyFormatsAndTheirHoles) {
  Write("in.csv", "lat,lon,h\n50.3,9.1,100\n54.9,14.9,0\n52.3,12.7,0\n49,9,0\n");
  for (const auto& [name, driver] : {std::pair("g.tif", "GTiff"), std::pair("g.asc", "AAIGrid"),
                                     std::pair("g.bil", "EHdr"), std::pair("g.gtx", "GTX")}) {
    SCOPED_TRACE(driver);
    WriteGrid(name, driver);
    const ProgramRun run = Run(std::string("--grid ") + name + " in.csv -o -");
    EXPECT_EQ(run.status, 1) << run.err;
    const auto rows = Numbers(run.out);
    ASSERT_EQ(rows.size(), 4u);
    ASSERT_EQ(rows[0].size(), 6u);
    EXPECT_NEAR(rows[0][3], Plane(50.3, 9.1), kPrinted);
    EXPECT_EQ(rows[0][4], 100);
    EXPECT_NEAR(rows[0][5], 100 - Plane(50.3, 9.1), kPrinted);
    EXPECT_NEAR(rows[1][3], Plane(54.9, 14.9), kPrinted);
    EXPECT_EQ(rows[2].size(), 3u);
    EXPECT_EQ(rows[3].size(), 3u);
    EXPECT_TRUE(Contains(run.err, "in.csv, line 4: no geoid height"));
  }
}

// Some writers leave the factor of an integer grid 0, which would make every height 0.
// 51.3 degrees are 57 gons, 11.7 are 13.
TEST_F(Geoid, TakesAnglesInGons) {
  WriteGrid("g.tif", "GTiff");
  Write("deg.csv", "name,lat,lon,h\nA,51 18 0 N,11.7,50\n");
  Write("gon.csv", "name,lat_gon,lon_gon,h\nA,57,13,50\n");
  const ProgramRun degrees = Run("--grid g.tif deg.csv -o -");
  const ProgramRun gons = Run("--grid g.tif gon.csv -o - --angles gon");
  EXPECT_EQ(Lines(gons.out).at(1).substr(10), Lines(degrees.out).at(1).substr(19)) << gons.out;
  EXPECT_EQ(Run("--grid g.tif 57 13 --angles gon").out, Run("--grid g.tif 51.3 11.7").out);
  EXPECT_TRUE(Contains(Run("--grid g.tif 57 445 --angles gon").err, "LON: 400.5 degrees"));
  EXPECT_EQ(Run("--grid g.tif --extent 50,9,51,10 --step 1 -o - --angles gon").status, 2);
}

TEST_F(Geoid, AppliesTheScaleOfAGridAndRefusesZero) {
  Write("in.csv", "lat,lon,h\n50.3,9.1,100\n");
  WriteGrid("half.tif", "GTiff", 0.5);
  const auto rows = Numbers(Run("--grid half.tif in.csv -o -").out);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_NEAR(rows[0][3], 0.5 * Plane(50.3, 9.1), kPrinted);

  WriteGrid("none.tif", "GTiff", 0);
  const ProgramRun run = Run("--grid none.tif in.csv -o out.csv");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "none.tif: its scale factor is 0")) << run.err;
}

TEST_F(Geoid, HonoursTheUnitOfAGrid) {
  Write("in.csv", "lat,lon,h\n50.3,9.1,100\n");
  for (const auto& [unit, metres] :
       {std::pair("m", 1.0), std::pair("cm", 0.01), std::pair("US survey foot", 1200.0 / 3937)}) {
    WriteGrid("unit.tif", "GTiff", 1, unit);
    const auto rows = Numbers(Run("--grid unit.tif in.csv -o -").out);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_NEAR(rows[0].at(3), metres * Plane(50.3, 9.1), kPrinted) << unit;
  }
  WriteGrid("unit.tif", "GTiff", 1, "furlong");
  const ProgramRun run = Run("--grid unit.tif in.csv -o -");
  EXPECT_EQ(run.status, 2);
  EXPECT_TRUE(Contains(run.err, "unit.tif: its unit \"furlong\"")) << run.err;
}

TEST_F(Geoid, GivesHeightsOnEveryEdge) {
  WriteGrid("g.tif", "GTiff");
  Write("in.csv", "lat,lon,h\n50,9,0\n50,11.25,0\n51.75,9,0\n55,15,0\n51.75,-351,0\n");
  const auto rows = Numbers(Run("--grid g.tif in.csv -o -").out);
  ASSERT_EQ(rows.size(), 5u);
  for (std::size_t i = 0; i < 5; ++i)
    EXPECT_NEAR(rows[i].at(3), Plane(rows[i][0], i == 4 ? 9 : rows[i][1]), kPrinted) << i;
}

// Bilinear by hand on a grid of 10 degrees around the Earth whose neighbours differ much.
TEST_F(Geoid, InterpolatesWorldGridsBilinearlyToo) {
  const auto node = [](int row, int column) {  // from the south and from longitude -180
    return 20 + (7 * row * row + 13 * (column % 36)) % 29;
  };
  std::string grid = "ncols 36\nnrows 19\nxllcenter -180\nyllcenter -90\ncellsize 10\n";
  for (int r = 18; r >= 0; --r)
    for (int c = 0; c < 36; ++c) grid += std::to_string(node(r, c)) + (c < 35 ? " " : "\n");
  Write("world.asc", grid);
  std::string points = "lat,lon,h\n";
  std::vector<double> expected;
  for (int i = 0; i < 60; ++i) {
    const double lat = -88 + 2.9 * i, lon = -176.5 + 12.1 * i, x = (lat + 90) / 10,
                 y = (lon + 180) / 10;
    const int r = static_cast<int>(x), c = static_cast<int>(y);
    const double u = x - r, v = y - c;
    points += std::to_string(lat) + ',' + std::to_string(lon > 360 ? lon - 360 : lon) + ",0\n";
    expected.push_back((1 - u) * ((1 - v) * node(r, c) + v * node(r, c + 1)) +
                       u * ((1 - v) * node(r + 1, c) + v * node(r + 1, c + 1)));
  }
  Write("in.csv", points);
  for (const char* scheme :
       {"", "--interpolation RegGeoid2x2NW", "--interpolation RegGeoid2x2Denmark"}) {
    const ProgramRun run = Run(std::string("--grid world.asc in.csv -o - ") + scheme);
    EXPECT_EQ(run.status, 0) << run.err;
    const auto rows = Numbers(run.out);
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
      EXPECT_NEAR(rows[i].at(3), expected[i], kPrinted) << scheme << i;
  }
}

TEST_F(Geoid, TakesTheInterpolationByName) {
  WriteGrid("g.tif", "GTiff");
  Write("in.csv", "lat,lon,h\n50.8,10.7,0\n");
  for (const char* name :
       {"RegGeoid2x2NW", "RegGeoid2x2Denmark", "RegionalGeoid", "RegGeoidSwedishInterpalation3",
        "RegGeoidInterpalation4", "RegGeoidInterpalation4x4SW", "RegGeoidIntrp_Lagrange4x4SW",
        "reggeoidintrpspline4x4sw", "RegGeoidInterpalation_GG2008SW"}) {
    const ProgramRun run =
        Run(std::string("--grid g.tif --interpolation ") + name + " in.csv -o -");
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_NEAR(Numbers(run.out).at(0).at(3), Plane(50.8, 10.7), kPrinted) << name;
  }
  const ProgramRun wrong = Run("--grid g.tif --interpolation RegGeoid2x2S in.csv -o -");
  EXPECT_EQ(wrong.status, 2);
  EXPECT_TRUE(Contains(wrong.err, "did you mean \"RegGeoid2x2SW\"")) << wrong.err;
}

// High-precision undulations from the same coefficients; the normal field's terms are the published
// even zonals of WGS84.
TEST_F(Geoid, EvaluatesModelsFromBothKindsOfFile) {
  Write("pot.txt", Lines36("", 2));
  Write("corr.txt", Lines36("", 4));
  Write("full.gfc",
        "product_type gravity_field\nearth_gravity_constant 3.986004418D+14\nradius 6378137.0\n"
        "norm fully_normalized\nend_of_head ====\n" +
            Lines36("gfc ", 2,
                    {-0.0004841667749835221, 7.9030373351e-7, -1.687249611513883e-9,
                     3.460524683954118e-12, -2.650022257475667e-15}));
  std::string points = "lat,lon,h\n";
  const auto expected = ReadRows(kData / "egm96_degree36_points.csv");
  for (const auto& row : expected)
    points += std::to_string(row[0]) + "," + std::to_string(row[1]) + ",0\n";
  Write("in.csv", points);
  const struct {
    const char* arguments;
    std::size_t column;
  } models[] = {{"--model pot.txt --correction corr.txt", 2},
                {"--model pot.txt", 3},
                {"--model full.gfc --subtract-normal-field", 3}};
  for (const auto& model : models) {
    const ProgramRun run = Run(std::string(model.arguments) + " in.csv -o -");
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(run.err, "");
    const auto rows = Numbers(run.out);
    ASSERT_EQ(rows.size(), expected.size());
    for (std::size_t i = 0; i < rows.size(); ++i)
      EXPECT_NEAR(rows[i][3], expected[i][model.column], kPrinted) << model.arguments << i;
  }
  EXPECT_TRUE(Contains(Run("--model full.gfc in.csv -o -").err, "--subtract-normal-field"));
  EXPECT_TRUE(
      Contains(Run("--model pot.txt --subtract-normal-field in.csv -o -").err, "leave out"));
  Write("bad.txt", "2 0 1e-9 0\n2 3 1 1\n");
  const ProgramRun bad = Run("--model bad.txt in.csv -o -");
  EXPECT_EQ(bad.status, 2);
  EXPECT_TRUE(Contains(bad.err, "bad.txt, line 2")) << bad.err;
}

// The same heights from coefficients of another GM and radius, those of EGM96 as published.
TEST_F(Geoid, ScalesModelsOfAnotherGmAndRadius) {
  constexpr double kGm = 3.986004415e14, kRadius = 6378136.3;
  std::string text =
      "earth_gravity_constant 0.3986004415D+15\nradius 6378136.3\nmax_degree 36\n"
      "end_of_head\n";
  char line[120];
  for (const auto& row : ReadRows(kData / "egm96_degree36.csv")) {
    const double to = 3.986004418e14 / kGm * std::pow(6378137 / kRadius, row[0]);
    std::snprintf(line, sizeof line, "gfc %d %d %.17g %.17g 0 0\n", static_cast<int>(row[0]),
                  static_cast<int>(row[1]), row[2] * to, row[3] * to);
    text += line;
  }
  Write("egm96.gfc", text);
  std::string points = "lat,lon,h\n";
  const auto expected = ReadRows(kData / "egm96_degree36_points.csv");
  for (const auto& row : expected)
    points += std::to_string(row[0]) + "," + std::to_string(row[1]) + ",0\n";
  Write("in.csv", points);
  const ProgramRun run = Run("--model egm96.gfc in.csv -o -");
  EXPECT_EQ(run.err, "");
  const auto rows = Numbers(run.out);
  ASSERT_EQ(rows.size(), expected.size());
  for (std::size_t i = 0; i < rows.size(); ++i) EXPECT_NEAR(rows[i][3], expected[i][3], kPrinted);
}

// A damaged model gives heights that look right and are wrong.
TEST_F(Geoid, RefusesDamagedModelsAndSaysWhere) {
  Write("in.csv", "lat,lon,h\n50,9,0\n");
  const std::string two = "2 0 1e-9 0\n2 1 1D-9 2d-9\n2 2 1E-9 0\n",
                    head = "earth_gravity_constant 3.986004415E+14\nradius 6378136.3\n",
                    terms = "end_of_head\ngfc 2 0 1e-9 0\ngfc 2 1 0 0\ngfc 2 2 0 0\n";
  const struct {
    const char* file;
    std::string text;
    const char* message;
  } cases[] = {
      {"a.txt", "2 0 oops 0\n", "a.txt, line 1: cosine coefficient: \"oops\" is not a number"},
      {"a.txt", "# c\n2 0 1e-6x 0\n", "a.txt, line 2: cosine coefficient: \"1e-6x\""},
      {"a.txt", "2 0 0 -1,5e-6\n",
       "a.txt, line 1: sine coefficient: \"-1,5e-6\" is not a number (write"},
      {"a.txt", "2 0 1 nan\n", "a.txt, line 1: sine"},
      {"a.txt", "2 0 1e-9\n", "a.txt, line 1: degree, order and two"},
      {"a.txt", "2.0 0 1e-9 0\n", "a.txt, line 1: degree, order and two"},
      {"a.txt", two + "2 1 0 0\n",
       "a.txt, line 4: the term of degree 2 and order 1 is given twice"},
      {"a.txt", "2 0 1e-9 0\n2 2 1e-9 0\n", "a.txt: holds no term of degree 2 and order 1"},
      {"a.txt", two + "3 0 1e-9 0\n3 1 0 0\n", "a.txt: holds no term of degree 3 and order 2"},
      {"a.txt", "", "a.txt: holds no coefficients"},
      {"a.gfc", head + "max_degree 3\n" + terms, "a.gfc: ends with degree 2, its head says 3"},
      {"a.gfc", "earth_gravity_constant 398600.4415\nradius 6378136.3\n" + terms,
       "a.gfc, line 1: earth_gravity_constant 398600.4415 is not that of the Earth in m3/s2"},
      {"a.gfc", "earth_gravity_constant 3.986004415E+14\nradius 6378.1363\n" + terms,
       "a.gfc, line 2: radius"},
      {"a.gfc", "earth_gravity_constant 3,986004415E+14\nradius 6378136.3\n" + terms,
       "a.gfc, line 1: earth_gravity_constant: \"3,986004415E+14\" is not a number"},
      {"a.gfc", "radius 6378136.3\n" + terms, "has no line \"earth_gravity_constant\""},
      {"a.gfc", head + terms + "gfc 2 2 1 1\n", "a.gfc, line 7: the term"},
      {"a.gfc", head, "end_of_head"},
      {"a.txt", "2 0 1e-9 0 " + std::string(1 << 17, '0'), "a.txt, line 1: a line of more than"},
  };
  for (const auto& c : cases) {
    Write(c.file, c.text);
    const ProgramRun run = Run(std::string("--model ") + c.file + " in.csv -o out.csv");
    EXPECT_EQ(run.status, 2) << c.text;
    EXPECT_TRUE(Contains(run.err, c.message)) << run.err;
    EXPECT_FALSE(fs::exists(directory_ / "out.csv")) << c.text;
  }
  const ProgramRun endless = Run("--model /dev/zero in.csv -o out.csv");
  EXPECT_TRUE(Contains(endless.err, "/dev/zero, line 1: a line of more than")) << endless.err;
  // Sound: degrees 0 and 1 left out, free text before the head, a gfct given for two spans of time.
  Write("a.txt", "\xEF\xBB\xBF" + two);
  EXPECT_EQ(Run("--model a.txt in.csv -o out.csv").err, "");
  Write("a.gfc", "radius of the Earth\nbegin_of_head\n" + head + terms +
                     "gfct 3 0 1e-9 0 0 0 20000101\ngfct 3 0 2e-9 0 0 0 20100101\ntrnd 3 0 1 1\n"
                     "gfc 3 1 0 0\ngfc 3 2 0 0\ngfc 3 3 0 0\n");
  EXPECT_EQ(Run("--model a.gfc in.csv -o out.csv").err, "");
  Write("short.txt", "0 0 0 0\n1 0 0 0\n1 1 0 0\n");
  EXPECT_TRUE(Contains(Run("--model a.txt --correction short.txt in.csv -o out.csv").err,
                       "short.txt: ends with degree 1, the model with 2"));
  EXPECT_EQ(Run("--model a.txt --correction a.txt in.csv -o out.csv").status, 2);  // from degree 0
}

// A grid around the Earth that the program wrote itself is read back without a seam.
TEST_F(Geoid, WritesGridsAndClosesTheSeam) {
  Write("pot.txt", Lines36("", 2));
  EXPECT_EQ(Run("--model pot.txt --extent=-90,-180,90,179 --step 1 -o world.tif").status, 0);
  Write("in.csv", "lat,lon,h\n10,179.5,0\n10,-179.75,0\n-60.25,179.95,0\n0.5,-120.25,0\n");
  const auto grid =
      Numbers(Run("--grid world.tif --interpolation RegGeoidIntrp_Spline4x4SW in.csv -o -").out);
  const auto model = Numbers(Run("--model pot.txt in.csv -o -").out);
  ASSERT_EQ(grid.size(), 4u);
  constexpr double kSmooth = 0.02;  // metres: degree 36 has waves of 10 degrees
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(grid[i].at(3), model[i].at(3), kSmooth) << i;

  const ProgramRun csv = Run("--model pot.txt --extent 10,20,11,20.5 --step 0.5 -o -");
  EXPECT_EQ(csv.status, 0);
  const auto nodes = Numbers(csv.out);
  ASSERT_EQ(nodes.size(), 6u);
  EXPECT_EQ(nodes[0][0], 11);
  EXPECT_EQ(nodes[5][1], 20.5);
  EXPECT_EQ(Run("--model pot.txt --extent 10,20,9,21 --step 1 -o x.tif").status, 2);
  EXPECT_EQ(Run("--model pot.txt -o x.tif").status, 2);
  EXPECT_EQ(Run("--model pot.txt --extent 10,20,11,21 --step 1 -o pot.txt").status, 2);
}

TEST_F(Geoid, ServesConvertThroughTheSystemFile) {
  WriteGrid("g.tif", "GTiff");
  const std::string system =
      R"({"local": {"ellipsoid": "WGS84"},
          "projection": {"name": "TM", "central meridian": 12, "scale": 1, "lat0": 0, "east0": 0, "north0": 0},
          "geoid": {"grid": "g.tif", "interpolation": "RegionalGeoid"}})";
  Write("system.json", system);
  Write("in.csv", "lat,lon,h\n51.2,11.3,300\n");
  const ProgramRun run = RunProgram(directory_, "convert --system system.json in.csv -o out.csv");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NEAR(Numbers(ReadText(directory_ / "out.csv")).at(0).at(5), 300 - Plane(51.2, 11.3),
              kPrinted);
  const ProgramRun back = RunProgram(
      directory_, "convert --system system.json --inverse --columns n,e,h_local out.csv -o -");
  EXPECT_EQ(back.status, 0) << back.err;
  EXPECT_NEAR(Numbers(back.out).at(0).at(8), 300, kPrinted);
}
